#include "accounts/ledgerlock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <map>

#include "accounts/audittrail.h"
#include "accounts/ledger.h"
#include "accounts/ledgerintent.h"
#include "invoice/shared/profile.h"
#include "llib/gen/processid.h"

namespace {

// The descriptor of the lock file that this thread holds, or kept open between holds.
struct LHeld {
  int depth = 0;         // how deep this thread holds the lock
  bool locked = false;   // whether the outermost holder got it in time
  LFileDescriptor fd;
  LLedgerLockFile file;  // fd, as the intent sees it, while locked
  unsigned long long hold = 0;  // numbered by gHolds once locked
  std::string dataFolder;       // the business data folder as the outermost holder's profile names it
};
thread_local std::map<std::string, LHeld> tHeld;

// The descriptor of the last lock file this thread released, kept for its next hold. One only:
// a process that goes through many businesses keeps one descriptor per thread, not one each.
struct LKept {
  std::string path;
  pid_t pid = 0;  // a forked child shares the descriptor, and would share the lock with it
  LFileDescriptor fd;
};
thread_local LKept tKept;

std::atomic<unsigned long long> gHolds{0};  // holds taken by the process, numbering them

// The plain 10,000 ms schedule sleeps 313 ms and more between attempts: right for a record
// that is rarely contended, far too coarse for a lock that every posting holds for about a
// millisecond. Short rounds of flocktimed keep a waiter within a few milliseconds of the
// release while the whole wait stays bounded like every other lock.
constexpr unsigned kRoundMs = 32;

bool LockWithin(int fd, unsigned timeoutMs) {
  auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  do {
    if (flocktimed(fd, LOCK_EX, kRoundMs)) return true;
  } while (std::chrono::steady_clock::now() < deadline);
  return false;
}

// The lock file opened, the ledger folder made first when it is missing.
LFileDescriptor OpenLockFile(const std::string& folder, const std::string& path) {
  int fd = LRobustOpen(path, O_RDWR | O_CREAT, 0666);
  if (fd < 0 && errno == ENOENT && LFile::MakeFolder(folder)) fd = LRobustOpen(path, O_RDWR | O_CREAT, 0666);
  return LFileDescriptor(fd);
}

// Takes the lock on held.fd, kept from an earlier hold when there is one. A kept descriptor
// whose file was removed since (st_nlink 0) locks nothing anyone else sees: the file is opened
// anew. The size read on the way, and the file's first byte when it has one, tell whether an
// intent waits in the file.
void Take(const std::string& folder, const std::string& path, LHeld& held) {
  if (tKept.path == path && tKept.pid == LProcessId()) held.fd = std::move(tKept.fd);
  tKept.path.clear();
  for (int attempt = 0; attempt < 2; ++attempt) {
    if (!held.fd.IsOpen()) held.fd = OpenLockFile(folder, path);
    if (!held.fd.IsOpen()) return;
    held.locked = LockWithin(held.fd.Get(), kRecordLockTimeoutMs);
    struct stat info {};
    if (::fstat(held.fd.Get(), &info) != 0) info.st_nlink = 1;  // cannot tell: keep it
    if (info.st_nlink > 0) {
      held.file = {held.fd.Get(), held.locked && (info.st_size == 0 || !LLedgerIntentWaits(held.fd.Get()))};
      held.hold = ++gHolds;
      return;
    }
    if (held.locked) ::flock(held.fd.Get(), LOCK_UN);
    held.locked = false;
    held.fd.Close();
  }
}

}  // namespace

void LLedgerLetGoOfFiles() {
  tKept.path.clear();
  tKept.fd.Close();
  LAuditLetGoOfFiles();
}

namespace {

// A posting asks several times whether it holds the lock. A thread holds one or two ledger locks
// at a time, so they are first told apart by the profile's data folder, without building the lock
// file's path; the path is built only for a profile that names the folder in other words.
LHeld* HeldLock(const LProfile& profile) {
  if (tHeld.empty()) return nullptr;
  const std::string& dataFolder = profile.GetDataStore().GetFolder();
  LHeld* found = nullptr;
  for (auto& [path, held] : tHeld)
    if (held.dataFolder == dataFolder) found = &held;
  if (found == nullptr) {
    LTextBuffer folder;
    LLegderGetBaseFolder(profile, folder);
    auto it = tHeld.find(LFile::MakeFilePath(folder, kLedgerLockFile));
    if (it != tHeld.end()) found = &it->second;
  }
  return found == nullptr || !found->locked ? nullptr : found;
}

}  // namespace

LLedgerLockFile* LLedgerHeldLockFile(const LProfile& profile) {
  LHeld* held = HeldLock(profile);
  return held == nullptr ? nullptr : &held->file;
}

unsigned long long LLedgerHoldNumber(const LProfile& profile) {
  LHeld* held = HeldLock(profile);
  return held == nullptr ? 0 : held->hold;
}

LLedgerLock::LLedgerLock(const LProfile& profile) {
  LTextBuffer folder;
  LLegderGetBaseFolder(profile, folder);
  path_ = LFile::MakeFilePath(folder, kLedgerLockFile);
  LHeld& held = tHeld[path_];
  if (held.depth == 0) {
    held.dataFolder = profile.GetDataStore().GetFolder();
    Take(std::string(folder), path_, held);
    // Whatever a killed holder left half done is settled before this one looks at the books.
    // Without the lock another live holder may be midway: its intent is not to be touched.
    if (held.locked) {
      ++held.depth;  // settling saves records and may come back here: no second wait
      LLedgerSettleIntents(profile);
      --held.depth;
    }
  }
  // Counted even when the wait ran out, so that inner holders do not wait a second time.
  ++held.depth;
  locked_ = held.locked;
}

LLedgerLock::~LLedgerLock() {
  auto it = tHeld.find(path_);
  if (it == tHeld.end() || --it->second.depth > 0) return;
  LHeld& held = it->second;
  if (held.locked) ::flock(held.fd.Get(), LOCK_UN);
  if (held.fd.IsOpen()) {
    tKept.path = path_;
    tKept.pid = LProcessId();
    tKept.fd = std::move(held.fd);
  }
  tHeld.erase(it);
}
