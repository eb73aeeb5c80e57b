// MainDialog: the main window's hold on the business data. At start-up it chooses the business
// to open: the one open when the user last changed business (the setting
// "MultipleBusiness"/"WorkingFolder"), when that folder still exists, else the primary business.
// It remembers a change of business for the next start, and it backs the data root up, noting
// every attempt in the setting "Setting"/"LastBackup" (the to-do list's backup reminder).
#pragma once

#include <string>
#include <string_view>

#include "llib/gen/process.h"

class LFolderCopier;
class LRestoreServiceSwitch;
class LProfile;

inline constexpr std::string_view kWorkingFolderNotStored = "Impossible d'enregistrer l'entreprise de travail.";

class MainDialog {
 public:
  // The folder start-up opens, without opening it: the remembered working folder when the
  // setting exists and names an existing folder; otherwise the primary business.
  static std::string GetStartupFolder();
  // Start-up: switches profile to the remembered working folder when the setting exists,
  // differs from the profile's folder and names an existing folder; otherwise nothing changes.
  static void InitDialog(LProfile& profile);
  // Makes folder the working folder for the next start; false when it could not be stored.
  [[nodiscard]] static bool SetWorkingFolder(const std::string& folder);
  // Forgets the working folder when it is folder (a business being deleted); false when the
  // setting could not be written.
  [[nodiscard]] static bool ForgetWorkingFolder(const std::string& folder);

  // Backs the data root up into destination (LBackupFolder) and then, whatever the outcome,
  // stores the current time as "LastBackup". Result, backupPath and error as LBackupFolder.
  static LProcessResult CmBackup(LFolderCopier& copier, const std::string& destination, std::string& backupPath,
                                 std::string& error);
  // Restores the data root from backup (checked beforehand with LBackupIsUsableFor), the old
  // root set aside in the application folder until the copy succeeded. service, error and detail
  // as LRestoreFolder.
  static LProcessResult CmRestore(LFolderCopier& copier, const std::string& backup, LRestoreServiceSwitch* service,
                                  std::string& error, std::string* detail);
};
