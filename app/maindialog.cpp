#include "app/maindialog.h"

#include <ctime>

#include "invoice/shared/profile.h"
#include "llib/gen/backup.h"
#include "llib/gen/file.h"
#include "llib/gen/log.h"
#include "llib/gen/usersettings.h"

namespace {

constexpr std::string_view kBusinessGroup = "MultipleBusiness";
constexpr std::string_view kWorkingFolderKey = "WorkingFolder";
constexpr std::string_view kSettingGroup = "Setting";
constexpr std::string_view kLastBackupKey = "LastBackup";

// The remembered working folder when it still exists; "" otherwise.
std::string ExistingWorkingFolder() {
  if (!LUserSettingTestExists(kBusinessGroup, kWorkingFolderKey)) return {};
  std::string folder;
  _LUserSettingGetString(kBusinessGroup, kWorkingFolderKey, folder);
  return !folder.empty() && LFile::Exists(folder) ? folder : std::string();
}

}  // namespace

std::string MainDialog::GetStartupFolder() {
  std::string folder = ExistingWorkingFolder();
  return folder.empty() ? LFile::GetSharedDataFolderApp() : folder;
}

void MainDialog::InitDialog(LProfile& profile) {
  std::string folder = ExistingWorkingFolder();
  if (!folder.empty() && folder != profile.GetDatabaseName()) profile.SetDatabaseName(folder);
}

bool MainDialog::SetWorkingFolder(const std::string& folder) {
  return LUserSettingSetString(kBusinessGroup, kWorkingFolderKey, folder);
}

bool MainDialog::ForgetWorkingFolder(const std::string& folder) {
  std::string remembered;
  if (_LUserSettingGetString(kBusinessGroup, kWorkingFolderKey, remembered) && remembered == folder)
    return LUserSettingDelete(kBusinessGroup, kWorkingFolderKey);
  return true;
}

LProcessResult MainDialog::CmBackup(LFolderCopier& copier, const std::string& destination, std::string& backupPath,
                                    std::string& error) {
  LProcessResult result =
      LBackupFolder(copier, LFile::GetSharedDataFolderApp(), destination, std::time(nullptr), backupPath, error);
  // Every attempt resets the reminder, a cancelled or failed one too.
  // An unremembered attempt only brings the reminder back early; the backup itself stands.
  if (!LUserSettingSetString(kSettingGroup, kLastBackupKey, std::to_string(static_cast<long long>(std::time(nullptr)))))
    LLogWarning("Backup: the time of the last backup could not be stored");
  return result;
}

LProcessResult MainDialog::CmRestore(LFolderCopier& copier, const std::string& backup, LRestoreServiceSwitch* service,
                                     std::string& error, std::string* detail) {
  return LRestoreFolder(copier, LFile::GetSharedDataFolderApp(), LFile::GetUserDataFolderApp(), backup,
                        std::time(nullptr), service, error, detail);
}
