// kontavo backup DEST and kontavo restore SRC: the data root ("Shared", every business) copied
// into a new backup folder, or replaced by a backup's content. The copies run in a worker
// process with a progress bar on the terminal; Ctrl-C cancels them cleanly.
#include <signal.h>

#include <ctime>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/cliask.h"
#include "app/commands.h"
#include "app/maindialog.h"
#include "app/restoreservice.h"
#include "app/worker.h"
#include "llib/gen/backup.h"
#include "llib/gen/file.h"
#include "llib/gen/jsontext.h"

namespace {

constexpr std::string_view kBackupCancelledMessage = "Sauvegarde annulée.";
constexpr std::string_view kRestoreTitle = "Restaurer les données";
constexpr std::string_view kRestoreYesButton = "Restaurer à partir de la sauvegarde";
constexpr std::string_view kRestoreNoButton = "Ne pas restaurer";
constexpr std::string_view kRestoreErrorTitle = "Erreur de restauration des données";
constexpr std::string_view kChooseFolderButton = "Choisir le dossier";
constexpr std::string_view kNoButton = "Non";
constexpr std::string_view kChooseFolderPrompt = "Restaurer le nom du dossier";

std::string Absolute(const std::string& path) {
  std::error_code error;
  std::filesystem::path absolute = std::filesystem::absolute(path, error);
  return error ? path : absolute.lexically_normal().string();
}

// The one positional word, a folder, made absolute: the data root may move under a relative
// path while a restore runs. Empty, with the usage printed, when the words are not that.
std::string TakeFolder(LCliContext& context, LCliArgs& args) {
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 1, 1)) return {};
  if (words[0].empty()) return context.Usage(), std::string();
  return Absolute(words[0]);
}

// Ctrl-C is ignored for the life of the object. A restore is stopped only while it copies (its
// progress display then turns Ctrl-C into a cancel); a process killed while it moves the data
// root aside or back could leave it in two halves.
class IgnoreInterrupts {
 public:
  IgnoreInterrupts() {
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    sigemptyset(&ignore.sa_mask);
    ::sigaction(SIGINT, &ignore, &previous_);
  }
  ~IgnoreInterrupts() { ::sigaction(SIGINT, &previous_, nullptr); }
  IgnoreInterrupts(const IgnoreInterrupts&) = delete;
  IgnoreInterrupts& operator=(const IgnoreInterrupts&) = delete;

 private:
  struct sigaction previous_;
};

}  // namespace

int LCmdBackup(LCliContext& context, LCliArgs& args) {
  std::string destination = TakeFolder(context, args);
  if (destination.empty()) return kExitUsage;
  LFolderCopierWorker copier;
  std::string backupPath, error;
  LProcessResult result = MainDialog::CmBackup(copier, destination, backupPath, error);
  if (result == kProcessCancelled) return context.Fail(kBackupCancelledMessage);
  if (result != kProcessFinished) return context.Fail(error);
  if (context.json) context.out << LJsonDump(nlohmann::json({{"path", backupPath}})) << "\n";
  else context.out << backupPath << "\n";
  context.err << kBackupDoneMessage << "\n";
  return kExitOk;
}

int LCmdRestore(LCliContext& context, LCliArgs& args) {
  std::string backup = TakeFolder(context, args);
  if (backup.empty()) return kExitUsage;
  if (!LCliConfirm(context, kRestoreTitle, kRestoreQuestion, kRestoreYesButton, kRestoreNoButton)) return kExitFailed;
  while (!LBackupIsUsableFor(backup, LFile::GetSharedDataFolderApp())) {
    if (!LCliCanAsk()) return context.Fail(kRestoreBadFolderMessage);
    if (!LCliConfirm(context, kRestoreErrorTitle, kRestoreBadFolderMessage, kChooseFolderButton, kNoButton) ||
        !LCliAskLine(context, kChooseFolderPrompt, backup))
      return kExitFailed;
    backup = Absolute(backup);
  }
  LFolderCopierWorker copier;
  std::string error, detail;
  IgnoreInterrupts untilRestored;
  LProcessResult result = MainDialog::CmRestore(copier, backup, LGetRestoreServiceSwitch(), error, &detail);
  if (result != kProcessFinished) return context.Fail(detail.empty() ? error : error + "\n" + detail);
  if (context.json) context.out << LJsonDump(nlohmann::json({{"restored", backup}})) << "\n";
  else context.out << kRestoreDoneMessage << "\n";
  return kExitOk;
}
