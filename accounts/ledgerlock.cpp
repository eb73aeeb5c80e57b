#include "accounts/ledgerlock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <chrono>
#include <map>

#include "accounts/ledger.h"
#include "accounts/ledgerintent.h"

namespace {

// How deep this thread holds each business's ledger lock, and whether the outermost holder got
// it in time.
struct LHeld {
  int depth = 0;
  bool locked = false;
};
thread_local std::map<std::string, LHeld> tHeld;

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

}  // namespace

LLedgerLock::LLedgerLock(const LProfile& profile) {
  LTextBuffer folder;
  LLegderGetBaseFolder(profile, folder);
  path_ = LFile::MakeFilePath(folder, kLedgerLockFile);
  LHeld& held = tHeld[path_];
  if (held.depth == 0) {
    int fd = LRobustOpen(path_, O_RDWR | O_CREAT, 0666);
    if (fd >= 0) file_ = LLockedFile(fd, LockWithin(fd, kRecordLockTimeoutMs));
    held.locked = file_.Locked();
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
  if (it != tHeld.end() && --it->second.depth == 0) tHeld.erase(it);
  file_.Close();
}
