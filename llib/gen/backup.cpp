#include "llib/gen/backup.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "llib/gen/copytree.h"
#include "llib/gen/file.h"

namespace {

// A new folder path "base", else "base-2", "base-3", ...; created with mode. false when no
// folder could be created (errno set).
bool MakeFreshFolder(const std::string& base, unsigned mode, std::string& made) {
  for (int n = 1;; ++n) {
    made = n == 1 ? base : base + "-" + std::to_string(n);
    if (::mkdir(made.c_str(), mode) == 0) return true;
    if (errno != EEXIST) return false;
  }
}

// The set-aside folder "%d" of the Unix time, counted up while the name is taken.
bool MakeAsideFolderPath(const std::string& parent, std::time_t when, std::string& aside) {
  for (long long seconds = static_cast<long long>(when);; ++seconds) {
    aside = LFile::MakeFilePath(parent, std::to_string(seconds));
    struct stat st;
    if (::lstat(aside.c_str(), &st) != 0) return errno == ENOENT;
  }
}

std::string Resolved(const std::string& path) {
  std::error_code error;
  std::filesystem::path resolved = std::filesystem::weakly_canonical(path, error);
  return error ? path : resolved.string();
}

// Switches the service off for the life of the object when it runs, and on again after.
class ServicePause {
 public:
  explicit ServicePause(LRestoreServiceSwitch* service)
      : service_(service), switchedOff_(service != nullptr && service->SwitchOff()) {}
  ~ServicePause() {
    if (switchedOff_) service_->SwitchOn();
  }
  ServicePause(const ServicePause&) = delete;
  ServicePause& operator=(const ServicePause&) = delete;

 private:
  LRestoreServiceSwitch* service_;
  bool switchedOff_;
};

}  // namespace

LProcessResult LFolderCopierInProcess::CopyFolder(std::string_view, const std::string& from, const std::string& to,
                                                  std::string& error) {
  LCopyFolderData data;
  data.source = from;
  data.destination = to;
  LProcessResult result = Process(process_, data);
  if (result == kProcessFailed) error = data.error;
  return result;
}

std::string LBackupFolderName(std::time_t when) {
  std::tm local{};
  ::localtime_r(&when, &local);
  char stamp[32];
  std::strftime(stamp, sizeof stamp, "%Y-%m-%d-%H%M%S", &local);
  return std::string("Kontavo-Sauvegarder-") + stamp;
}

bool LBackupIsUsable(const std::string& folder) {
  struct stat st;
  return ::stat(LFile::MakeFilePath(folder, "Misc/Options.dat").c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

bool LBackupIsUsableFor(const std::string& folder, const std::string& dataRoot) {
  return LBackupIsUsable(folder) && !LPathIsInside(folder, dataRoot);
}

bool LPathIsInside(const std::string& path, const std::string& folder) {
  std::string inner = Resolved(path);
  std::string outer = Resolved(folder);
  while (outer.size() > 1 && outer.back() == '/') outer.pop_back();
  return inner == outer || (inner.size() > outer.size() && inner.compare(0, outer.size(), outer) == 0 &&
                            (inner[outer.size()] == '/' || outer == "/"));
}

LProcessResult LBackupFolder(LFolderCopier& copier, const std::string& source, const std::string& destination,
                             std::time_t when, std::string& backupPath, std::string& error) {
  backupPath.clear();
  // access(2) sees a read-only mount even for the superuser, who passes every permission bit.
  if (!LFile::IsFolder(destination) || ::access(destination.c_str(), W_OK | X_OK) != 0) {
    error = kBackupNotWritableMessage;
    return kProcessFailed;
  }
  // A backup inside the data root would be copied into itself, and lost by the next restore.
  if (LPathIsInside(destination, source)) {
    error = kBackupInsideDataMessage;
    return kProcessFailed;
  }
  std::string folder;
  if (!MakeFreshFolder(LFile::MakeFilePath(destination, LBackupFolderName(when)), 0777, folder)) {
    error = kBackupNotWritableMessage;
    return kProcessFailed;
  }
  LProcessResult result = copier.CopyFolder(kBackupProgressTitle, source, folder, error);
  // Half a backup looks like a whole one to a later restore: it does not stay.
  if (result != kProcessFinished) LFile::RemoveTree(folder);
  else backupPath = folder;
  return result;
}

LProcessResult LRestoreFolder(LFolderCopier& copier, const std::string& target, const std::string& asideParent,
                              const std::string& backup, std::time_t when, LRestoreServiceSwitch* service,
                              std::string& error, std::string* detail) {
  ServicePause pause(service);
  std::string why;
  auto failed = [&](std::string reason) {
    error = kRestoreFailedMessage;
    if (detail != nullptr) *detail = std::move(reason);
    return kProcessFailed;
  };
  // Puts the set-aside root back in place of whatever target holds now.
  auto putBack = [&](const std::string& aside, std::string reason) {
    std::string backError;
    if (!LFile::RemoveTree(target) || !LMoveFolder(aside, target, &backError))
      reason += "\nLes données précédentes sont conservées dans \"" + aside + "\". " + backError;
    return failed(std::move(reason));
  };

  std::string aside;
  if (!MakeAsideFolderPath(asideParent, when, aside)) return failed(std::strerror(errno));
  if (!LMoveFolder(target, aside, &why)) {
    // A copy across file systems whose original could not be removed completely: the copy is
    // whole, the original is not any more.
    if (LFile::Exists(aside)) return putBack(aside, why);
    return failed(why);
  }
  if (!LFile::MakeFolder(target, 0777)) return putBack(aside, "Impossible de créer \"" + target + "\".");
  LProcessResult result = copier.CopyFolder(kRestoreProgressTitle, backup, target, why);
  if (result != kProcessFinished) return putBack(aside, result == kProcessCancelled ? "Restauration annulée." : why);
  LFile::RemoveTree(aside);
  return kProcessFinished;
}
