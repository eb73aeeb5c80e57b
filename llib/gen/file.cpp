#include "llib/gen/file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <cstring>
#include <filesystem>

#include "llib/gen/processid.h"
#include "llib/gen/log.h"
#include "llib/gen/syscallfault.h"

LIoError LIoErrorFromErrno(int err) {
  switch (err) {
    case 0:
      return LIoError::kNone;
    case EWOULDBLOCK:
      return LIoError::kLockBusy;
    case ENOENT:
    case ENOTDIR:
      return LIoError::kNotFound;
    case EILSEQ:
    case EINVAL:
      return LIoError::kBadData;
    default:
      return LIoError::kIoFailure;
  }
}

LFileDescriptor& LFileDescriptor::operator=(LFileDescriptor&& other) noexcept {
  if (this != &other) {
    Close();
    fd_ = other.Release();
  }
  return *this;
}

void LFileDescriptor::Close() {
  if (fd_ >= 0) {
    ::close(fd_);  // never retried: on Linux the descriptor is gone even after EINTR
    fd_ = -1;
  }
}

int LRobustOpen(const std::string& path, int flags, unsigned mode) {
  int fd;
  do {
    fd = ::open(path.c_str(), flags | O_CLOEXEC, mode);
  } while (fd < 0 && errno == EINTR);
  return fd;
}

long long LRobustRead(int fd, void* buffer, std::size_t size) {
  std::size_t done = 0;
  auto* bytes = static_cast<char*>(buffer);
  while (done < size) {
    ssize_t n = ::read(fd, bytes + done, size - done);
    if (n < 0) {
      if (errno == EINTR) continue;
      return -1;
    }
    if (n == 0) break;
    done += static_cast<std::size_t>(n);
  }
  return static_cast<long long>(done);
}

bool LRobustWrite(int fd, const void* data, std::size_t size) {
  const auto* bytes = static_cast<const char*>(data);
  while (size > 0) {
    if (LSyscallFaultFires(LSyscall::kWrite)) return false;
    ssize_t n = ::write(fd, bytes, size);
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes += n;
    size -= static_cast<std::size_t>(n);
  }
  return true;
}

bool LRobustWriteAt(int fd, const void* data, std::size_t size, long long offset) {
  const auto* bytes = static_cast<const char*>(data);
  while (size > 0) {
    if (LSyscallFaultFires(LSyscall::kWrite)) return false;
    ssize_t n = ::pwrite(fd, bytes, size, static_cast<off_t>(offset));
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes += n;
    offset += n;
    size -= static_cast<std::size_t>(n);
  }
  return true;
}

bool LRobustRename(const std::string& from, const std::string& to, bool replace) {
  if (LSyscallFaultFires(LSyscall::kRename)) return false;
  if (replace) return ::rename(from.c_str(), to.c_str()) == 0;
  return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0;
}

bool LRobustFsync(int fd) {
  if (LSyscallFaultFires(LSyscall::kFsync)) return false;
  int result;
  do {
    result = ::fsync(fd);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

bool LRobustTruncate(int fd, long long size) {
  if (LSyscallFaultFires(LSyscall::kTruncate)) return false;
  int result;
  do {
    result = ::ftruncate(fd, static_cast<off_t>(size));
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

std::string LIoFailureReason(int err) {
  switch (err) {
    case ENOSPC:
    case EDQUOT:
      return "espace disque insuffisant";
    case EACCES:
    case EPERM:
      return "accès refusé";
    case EROFS:
      return "support en lecture seule";
    case ENOENT:
      return "fichier introuvable";
    case EIO:
      return "erreur de lecture ou d'écriture du disque";
    default:
      return std::strerror(err);
  }
}

void LLogWriteFailure(std::string_view call, std::string_view path, int err) {
  std::string reason = LIoFailureReason(err);
  LLogError("Écriture impossible dans \"%.*s\" (%.*s) : %s", static_cast<int>(path.size()), path.data(),
            static_cast<int>(call.size()), call.data(), reason.c_str());
}

void LSleepMs(unsigned long long ms) {
  timespec wanted{static_cast<time_t>(ms / 1000), static_cast<long>((ms % 1000) * 1000000)};
  timespec remaining{};
  while (nanosleep(&wanted, &remaining) != 0 && errno == EINTR) wanted = remaining;
}

void LFile::_MakeFilePath(LTextBuffer& out, std::string_view folder, std::string_view name,
                          std::string_view extension) {
  std::string path(LTruncated(folder, kMaxTextBytes - 1));
  if (!path.empty() && path.back() != '/' && path.back() != '\\') path.push_back('/');
  path.append(name);
  path.append(extension);
  LCopyTruncated(out, path);
}

std::string LFile::MakeFilePath(std::string_view folder, std::string_view name,
                                std::string_view extension) {
  LTextBuffer out;
  _MakeFilePath(out, folder, name, extension);
  return out;
}

std::string LFile::GetUserDataFolderApp() {
  std::string folder;
  if (const char* home = std::getenv("KONTAVO_HOME"); home != nullptr && *home != '\0') {
    folder = home;
  } else if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg != nullptr && *xdg != '\0') {
    folder = std::string(xdg) + "/Kontavo";
  } else {
    const char* userHome = std::getenv("HOME");
    folder = std::string(userHome != nullptr ? userHome : "") + "/.local/share/Kontavo";
  }
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  MakeFolder(folder);
  return folder;
}

std::string LFile::GetSharedDataFolderApp() {
  std::string folder = GetUserDataFolderApp() + "/Shared";
  MakeFolder(folder);
  return folder;
}

std::string LFile::GetSharedDataFolderAppSubFolder(std::string_view name) {
  std::string folder = GetSharedDataFolderApp() + "/" + std::string(name);
  if (MakeFolder(folder)) ::chmod(folder.c_str(), 0777);
  return folder;
}

std::string LFile::GetUserDataFolderAppSubFolder(std::string_view name) {
  std::string folder = GetUserDataFolderApp() + "/" + std::string(name);
  MakeFolder(folder);
  return folder;
}

bool LFile::Exists(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0;
}

bool LFile::IsFolder(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool LFile::MakeFolder(const std::string& path, unsigned mode) {
  if (path.empty()) return false;
  if (IsFolder(path)) return true;
  std::size_t slash = path.find_last_of('/');
  if (slash != std::string::npos && slash > 0) MakeFolder(path.substr(0, slash), mode);
  if (::mkdir(path.c_str(), mode) == 0) return true;
  return errno == EEXIST && IsFolder(path);
}

bool LFile::ReadAll(const std::string& path, std::string& out) {
  LFileDescriptor fd(LRobustOpen(path, O_RDONLY));
  if (!fd.IsOpen()) return false;
  out.clear();
  char buffer[65536];
  for (;;) {
    long long n = LRobustRead(fd.Get(), buffer, sizeof buffer);
    if (n < 0) return false;
    out.append(buffer, static_cast<std::size_t>(n));
    if (n < static_cast<long long>(sizeof buffer)) return true;
  }
}

std::string LWriteTemporaryBeside(const std::string& path, std::string_view content, unsigned mode) {
  std::string temp = LTempPathBeside(path);
  LFileDescriptor fd(LRobustOpen(temp, O_WRONLY | O_CREAT | O_EXCL, mode));
  if (!fd.IsOpen()) {
    LLogWriteFailure("open", path, errno);
    return {};
  }
  if (!LRobustWrite(fd.Get(), content.data(), content.size())) {
    LLogWriteFailure("write", path, errno);
    fd.Close();
    ::unlink(temp.c_str());
    return {};
  }
  return temp;
}

bool LFile::WriteAllAtomic(const std::string& path, std::string_view content, unsigned mode) {
  std::string temp = LWriteTemporaryBeside(path, content, mode);
  if (temp.empty()) return false;
  if (LRobustRename(temp, path)) return true;
  LLogWriteFailure("rename", path, errno);
  ::unlink(temp.c_str());
  return false;
}

std::string LTempPathBeside(std::string_view path) {
  static std::atomic<unsigned> counter{0};
  std::size_t slash = path.rfind('/');
  std::string temp(slash == std::string_view::npos ? std::string_view() : path.substr(0, slash + 1));
  temp += ".kontavo.";
  temp += std::to_string(LProcessId());
  temp += '.';
  temp += std::to_string(counter.fetch_add(1));
  temp += kTempSuffix;
  return temp;
}

std::vector<std::string> LFile::ListFolder(const std::string& path) {
  std::vector<std::string> names;
  DIR* dir = ::opendir(path.c_str());
  if (dir == nullptr) return names;
  while (dirent* entry = ::readdir(dir)) {
    std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
  ::closedir(dir);
  return names;
}

bool LFile::RemoveTree(const std::string& path) {
  std::error_code error;
  std::filesystem::remove_all(path, error);
  return !Exists(path);
}

std::string LFile::GetTempFolder() {
  const char* tmp = std::getenv("TMPDIR");
  std::string folder = (tmp != nullptr && *tmp != '\0') ? tmp : "/tmp";
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  return folder;
}
