// Time-limited file locks. Every record file is read under a shared and written under an
// exclusive lock, ledger day files are appended under an exclusive lock, and CSV exports under
// a 5,000 ms lock. There are no in-process locks around business data: these locks are what keep
// the desk, the web server's threads and worker processes out of each other's way.
//
// Traps of flock(2) that this layer depends on:
//   - a lock belongs to the open file description, so two open() calls on one file in one
//     process exclude each other just as two processes do (threads are safe);
//   - a forked worker shares its parent's descriptors and so its locks;
//   - closing the last descriptor of the description releases the lock;
//   - the lock is advisory only: a program that does not ask for it is not stopped.
//
// flocktimed never fails the operation it guards: after its time-out the caller proceeds
// without the lock, as the files have always been used.
#pragma once

#include <string>
#include <vector>

#include "llib/gen/file.h"

inline constexpr unsigned kRecordLockTimeoutMs = 10000;  // record files and day files
inline constexpr unsigned kCsvWriteLockTimeoutMs = 5000;  // CSV appends

// The pauses between attempts: timeout / 32 + 1 ms, doubling, while below the time-out.
// For 10,000 ms: 313, 626, 1252, 2504, 5008.
std::vector<unsigned> LFlockPauseSchedule(unsigned timeoutMs);

// Requests the lock (LOCK_SH or LOCK_EX) without blocking; while another holder has it, sleeps
// the next pause of the schedule and tries again. One attempt precedes each pause and none
// follows the last, so for 10,000 ms the caller goes on after about 9.7 s. Returns true when
// the lock was obtained; callers proceed either way.
bool flocktimed(int fd, int operation, unsigned timeoutMs);

// How a file may leave its path while a writer waits for its lock (LLockedFile::OpenCurrent).
enum class LPathChange {
  kRenamed,   // replaced by a new file renamed over it, or itself renamed to another name
  // Only replaced (a new file renamed over it) or removed, never renamed to another name: once
  // locked, a link count of 1 says that the descriptor is still the file under path.
  kReplaced,
};

// A descriptor with its lock. The destructor unlocks, then closes: one cleanup path.
class LLockedFile {
 public:
  LLockedFile() = default;
  // Opens path with flags (O_CLOEXEC added) and takes the lock with flocktimed. IsOpen() tells
  // whether the open succeeded; Locked() whether the lock was obtained.
  LLockedFile(const std::string& path, int flags, int lockOperation, unsigned timeoutMs,
              unsigned mode = 0666);
  // As the constructor, for a writer of a file that others replace by renaming a new file over
  // it: once locked, the descriptor must still be the file under path, or a writer that waited
  // on the replaced file would change a file nobody reads any more. When the path names another
  // file by then, the lock is given up and the whole open is made again. change: what others do to
  // the file; kReplaced spares the look at the path.
  static LLockedFile OpenCurrent(const std::string& path, int flags, int lockOperation, unsigned timeoutMs,
                                 unsigned mode = 0666, LPathChange change = LPathChange::kRenamed);
  // Takes over an open descriptor that already holds its lock.
  LLockedFile(int fd, bool locked) : fd_(fd), locked_(locked) {}
  ~LLockedFile() { Close(); }
  LLockedFile(LLockedFile&&) = default;
  LLockedFile& operator=(LLockedFile&&) = default;

  bool IsOpen() const { return fd_.IsOpen(); }
  bool Locked() const { return locked_; }
  int Get() const { return fd_.Get(); }
  int OpenErrno() const { return openErrno_; }
  // The size of the file as OpenCurrent found it once locked (the lock keeps it so for the
  // writers that take it); -1 when not known (the plain constructor does not look).
  long long Size() const { return size_; }
  void Close();

 private:
  LFileDescriptor fd_;
  bool locked_ = false;
  int openErrno_ = 0;  // errno of a failed open
  long long size_ = -1;
};
