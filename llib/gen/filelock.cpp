#include "llib/gen/filelock.h"

#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

std::vector<unsigned> LFlockPauseSchedule(unsigned timeoutMs) {
  std::vector<unsigned> pauses;
  for (unsigned long long pause = timeoutMs / 32 + 1; pause < timeoutMs; pause *= 2)
    pauses.push_back(static_cast<unsigned>(pause));
  return pauses;
}

namespace {

// One non-blocking attempt. true: locked; false with busy set: another holder has it.
bool TryLock(int fd, int operation, bool& busy) {
  int result;
  do {
    result = ::flock(fd, operation | LOCK_NB);
  } while (result != 0 && errno == EINTR);
  busy = result != 0 && LIoErrorFromErrno(errno) == LIoError::kLockBusy;
  return result == 0;
}

}  // namespace

bool flocktimed(int fd, int operation, unsigned timeoutMs) {
  bool busy = false;
  std::vector<unsigned> pauses = LFlockPauseSchedule(timeoutMs);
  if (pauses.empty()) return TryLock(fd, operation, busy);
  for (unsigned pause : pauses) {
    if (TryLock(fd, operation, busy)) return true;
    if (!busy) return false;
    LSleepMs(pause);
  }
  return false;
}

LLockedFile::LLockedFile(const std::string& path, int flags, int lockOperation,
                         unsigned timeoutMs, unsigned mode)
    : fd_(LRobustOpen(path, flags, mode)) {
  if (!fd_.IsOpen()) {
    openErrno_ = errno;
    return;
  }
  locked_ = flocktimed(fd_.Get(), lockOperation, timeoutMs);
}

namespace {

// Bounds the reopening of a file replaced again and again while this writer waits.
constexpr int kMaxReopenAttempts = 1000;

// size: the opened file's, as one look tells it along the way. A file that is only ever replaced
// or removed has lost its one link when it left path; one linked twice (for an instant, while a
// new file is linked into place) is looked for under path as any other.
bool IsFileUnderPath(int fd, const std::string& path, LPathChange change, long long& size) {
  struct stat opened, named;
  if (::fstat(fd, &opened) != 0) return false;
  size = opened.st_size;
  if (change == LPathChange::kReplaced && opened.st_nlink == 1) return true;
  if (::stat(path.c_str(), &named) != 0) return false;
  return opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

}  // namespace

LLockedFile LLockedFile::OpenCurrent(const std::string& path, int flags, int lockOperation, unsigned timeoutMs,
                                     unsigned mode, LPathChange change) {
  for (int attempt = 1;; ++attempt) {
    LLockedFile file(path, flags, lockOperation, timeoutMs, mode);
    if (!file.IsOpen() || attempt == kMaxReopenAttempts || IsFileUnderPath(file.Get(), path, change, file.size_))
      return file;
  }
}

void LLockedFile::Close() {
  if (fd_.IsOpen() && locked_) ::flock(fd_.Get(), LOCK_UN);
  locked_ = false;
  size_ = -1;
  fd_.Close();
}
