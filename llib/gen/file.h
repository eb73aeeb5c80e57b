// Files and folders: path joining, the per-user application folder and its sub-folders, and the
// few system calls every module uses, each routed through one wrapper that retries on EINTR and
// opens close-on-exec, so no descriptor leaks into a worker process.
//
// Where things live on Linux: the per-user application folder is $KONTAVO_HOME when set, else
// $XDG_DATA_HOME/Kontavo, else ~/.local/share/Kontavo. It holds "Shared" (the primary business),
// "MultiBus" (further businesses), the settings and password stores and "SessionData".
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/text.h"

// The few ways a file operation fails; LIoErrorFromErrno is the one place errno maps to them.
enum class LIoError {
  kNone,
  kLockBusy,   // another holder has the lock: keep trying until the time-out
  kNotFound,   // missing file or folder: an absent record reads as empty
  kBadData,    // content that cannot be understood: report it, do not retry
  kIoFailure,  // anything else the system refused
};
LIoError LIoErrorFromErrno(int err);

// Owns one file descriptor and closes it once.
class LFileDescriptor {
 public:
  LFileDescriptor() = default;
  explicit LFileDescriptor(int fd) : fd_(fd) {}
  ~LFileDescriptor() { Close(); }
  LFileDescriptor(LFileDescriptor&& other) noexcept : fd_(other.Release()) {}
  LFileDescriptor& operator=(LFileDescriptor&& other) noexcept;
  LFileDescriptor(const LFileDescriptor&) = delete;
  LFileDescriptor& operator=(const LFileDescriptor&) = delete;

  int Get() const { return fd_; }
  bool IsOpen() const { return fd_ >= 0; }
  int Release() {
    int fd = fd_;
    fd_ = -1;
    return fd;
  }
  void Close();

 private:
  int fd_ = -1;
};

// open(2) with O_CLOEXEC added, retried on EINTR. -1 on failure with errno set.
int LRobustOpen(const std::string& path, int flags, unsigned mode = 0666);
// Reads exactly size bytes unless the file ends; returns the count read or -1.
long long LRobustRead(int fd, void* buffer, std::size_t size);
// Writes all bytes (retrying short writes and EINTR); true when all were written, false with
// errno set (ENOSPC for a full disk) when the system refused part of them.
[[nodiscard]] bool LRobustWrite(int fd, const void* data, std::size_t size);
// The same at offset (pwrite(2)), leaving the descriptor's position alone: one call instead of a
// seek and a write.
[[nodiscard]] bool LRobustWriteAt(int fd, const void* data, std::size_t size, long long offset);
// rename(2), or renameat2 with RENAME_NOREPLACE when replace is false (then false with EEXIST
// when the target exists). true when the file now has its new name.
[[nodiscard]] bool LRobustRename(const std::string& from, const std::string& to, bool replace = true);
// fsync(2), retried on EINTR; true when the data reached the disk.
[[nodiscard]] bool LRobustFsync(int fd);
// ftruncate(2), retried on EINTR; true when the file has the size asked.
[[nodiscard]] bool LRobustTruncate(int fd, long long size);
// Why a file operation failed, in the user's words: "espace disque insuffisant" for ENOSPC and
// EDQUOT, "accès refusé", "support en lecture seule", ...
std::string LIoFailureReason(int err);
// Logs one failed change of a file: "Écriture impossible dans "<path>" (<call>) : <reason>".
void LLogWriteFailure(std::string_view call, std::string_view path, int err);
// Sleeps ms milliseconds, resuming an interrupted sleep for its remaining time.
void LSleepMs(unsigned long long ms);

// Temporary files written beside their final path and renamed over it end in this suffix, so a
// list walk ("*.dat") never sees them; one left by a crash is ignored.
inline constexpr std::string_view kTempSuffix = ".tmp";
// A hidden file in path's folder, ".kontavo.<process id>.<counter>.tmp": unique among the threads
// and processes writing there, and short enough beside a file name of the longest length.
std::string LTempPathBeside(std::string_view path);
// Writes content to a new temporary file beside path (LTempPathBeside) and returns its path, or
// "" when it could not be written whole (nothing is left behind and the failure is logged).
std::string LWriteTemporaryBeside(const std::string& path, std::string_view content, unsigned mode = 0666);

class LFile {
 public:
  // folder (at most 258 bytes), a "/" unless it already ends in "/" or "\", name, extension;
  // the result cut at 259 bytes.
  static void _MakeFilePath(LTextBuffer& out, std::string_view folder, std::string_view name,
                            std::string_view extension);
  static std::string MakeFilePath(std::string_view folder, std::string_view name,
                                  std::string_view extension = {});

  // The per-user application folder, created if missing (mode 0777).
  static std::string GetUserDataFolderApp();
  // Its sub-folder "Shared", the primary business; created if missing.
  static std::string GetSharedDataFolderApp();
  // A sub-folder of "Shared", created if missing, open to all users.
  static std::string GetSharedDataFolderAppSubFolder(std::string_view name);
  // A sub-folder of the application folder, created if missing.
  static std::string GetUserDataFolderAppSubFolder(std::string_view name);

  static bool Exists(const std::string& path);
  static bool IsFolder(const std::string& path);
  // Creates the folder and any missing parents; true when it exists afterwards.
  static bool MakeFolder(const std::string& path, unsigned mode = 0777);
  // Reads the whole file; false when it cannot be opened or read.
  static bool ReadAll(const std::string& path, std::string& out);
  // Replaces the file's content (written to a temporary beside it, then renamed): false, the
  // file unchanged and the failure logged, when the content could not be written whole.
  [[nodiscard]] static bool WriteAllAtomic(const std::string& path, std::string_view content, unsigned mode = 0666);
  // The names in a folder (no "." or ".."), in the order the file system gives them.
  static std::vector<std::string> ListFolder(const std::string& path);
  // Removes a file or a whole tree; true when nothing is left.
  static bool RemoveTree(const std::string& path);
  // The system's temporary folder ($TMPDIR, else /tmp), without a trailing "/".
  static std::string GetTempFolder();
};
