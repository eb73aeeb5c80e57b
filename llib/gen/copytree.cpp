#include "llib/gen/copytree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <vector>

#include "llib/gen/file.h"
#include "llib/gen/optionalerror.h"

namespace {

constexpr std::size_t kCopyBufferBytes = 128 * 1024;  // read/write fallback of copy_file_range

std::string FailureText(const std::string& path, int err) {
  return "Impossible de copier \"" + path + "\" : " + LIoFailureReason(err);
}

// An entry of a folder, with its type when the file system gives it (DT_UNKNOWN otherwise).
struct Entry {
  std::string name;
  unsigned char type;
};

// The entries of an open folder (no "." or ".."), read through a duplicate of dirFd.
// 0, or the errno of the failure.

int ListEntries(int dirFd, std::vector<Entry>& entries) {
  entries.clear();
  int own = ::fcntl(dirFd, F_DUPFD_CLOEXEC, 0);
  if (own < 0) return errno;
  DIR* dir = ::fdopendir(own);
  if (dir == nullptr) {
    int err = errno;
    ::close(own);
    return err;
  }
  ::rewinddir(dir);  // a duplicate shares the position of dirFd
  errno = 0;
  while (dirent* entry = ::readdir(dir)) {
    std::string_view name = entry->d_name;
    if (name != "." && name != "..") entries.push_back({std::string(name), entry->d_type});
  }
  int err = errno;
  ::closedir(dir);
  return err;
}

unsigned char TypeOf(int dirFd, const Entry& entry) {
  if (entry.type != DT_UNKNOWN) return entry.type;
  struct stat st;
  if (::fstatat(dirFd, entry.name.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) return DT_UNKNOWN;
  if (S_ISDIR(st.st_mode)) return DT_DIR;
  if (S_ISREG(st.st_mode)) return DT_REG;
  if (S_ISLNK(st.st_mode)) return DT_LNK;
  return DT_UNKNOWN;
}

int OpenFolderAt(int dirFd, const char* name) {
  int fd;
  do {
    fd = ::openat(dirFd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  } while (fd < 0 && errno == EINTR);
  return fd;
}

// Copies the bytes of one open file into another: in the kernel when it can, else by reading
// and writing. 0, or the errno of the failure.
int CopyContent(int from, int to, long long& nBytes) {
  bool inKernel = true;
  std::vector<char> buffer;
  for (;;) {
    if (inKernel) {
      ssize_t n = ::copy_file_range(from, nullptr, to, nullptr, 1 << 30, 0);
      if (n > 0) {
        nBytes += n;
        continue;
      }
      if (n == 0) return 0;
      if (errno == EINTR) continue;
      if (errno != EXDEV && errno != ENOSYS && errno != EINVAL && errno != EOPNOTSUPP) return errno;
      inKernel = false;  // nothing was copied by the failed call: go on from the same offsets
      buffer.resize(kCopyBufferBytes);
    }
    long long n = LRobustRead(from, buffer.data(), buffer.size());
    if (n < 0) return errno;
    if (n == 0) return 0;
    if (!LRobustWrite(to, buffer.data(), static_cast<std::size_t>(n))) return errno;
    nBytes += n;
    if (n < static_cast<long long>(buffer.size())) return 0;
  }
}

class TreeCopier {
 public:
  TreeCopier(LProcessInterface& process, LCopyFolderData& data) : process_(process), data_(data) {}

  LProcessResult Run() {
    LFileDescriptor source(LRobustOpen(data_.source, O_RDONLY | O_DIRECTORY));
    LFileDescriptor destination(LRobustOpen(data_.destination, O_RDONLY | O_DIRECTORY));
    if (!source.IsOpen()) return Fail(data_.source, errno);
    if (!destination.IsOpen()) return Fail(data_.destination, errno);

    process_.SetProgressIndeterminateOn();
    if (LProcessResult result = Count(source.Get(), data_.source); result != kProcessFinished) return result;
    process_.SetProgressIndeterminateOff();
    process_.SetProgress(0);

    LProcessResult result = CopyFolder(source.Get(), destination.Get(), data_.source);
    if (result != kProcessFinished) return result;
    if (::syncfs(destination.Get()) != 0) return Fail(data_.destination, errno);
    process_.SetProgress(1.0);
    return kProcessFinished;
  }

 private:
  LProcessResult Fail(const std::string& path, int err) {
    data_.error = FailureText(path, err);
    process_.SetError(data_.error);
    return kProcessFailed;
  }

  LProcessResult Count(int dirFd, const std::string& path) {
    std::vector<Entry> entries;
    if (int err = ListEntries(dirFd, entries)) return Fail(path, err);
    for (const Entry& entry : entries) {
      unsigned char type = TypeOf(dirFd, entry);
      if (type == DT_REG || type == DT_LNK) {
        ++nTotal_;
      } else if (type == DT_DIR) {
        std::string childPath = path + "/" + entry.name;
        LFileDescriptor child(OpenFolderAt(dirFd, entry.name.c_str()));
        if (!child.IsOpen()) return Fail(childPath, errno);
        if (LProcessResult result = Count(child.Get(), childPath); result != kProcessFinished) return result;
      }
    }
    return kProcessFinished;
  }

  LProcessResult CopyFolder(int fromFd, int toFd, const std::string& path) {
    ShowFolder(path);
    std::vector<Entry> entries;
    if (int err = ListEntries(fromFd, entries)) return Fail(path, err);
    for (const Entry& entry : entries) {
      if (process_.IsToStop()) return kProcessCancelled;
      const char* name = entry.name.c_str();
      unsigned char type = TypeOf(fromFd, entry);
      LProcessResult result = kProcessFinished;
      if (type == DT_DIR) result = CopySubFolder(fromFd, toFd, path, name);
      else if (type == DT_REG) result = CopyFile(fromFd, toFd, path, name);
      else if (type == DT_LNK) result = CopyLink(fromFd, toFd, path, name);
      if (result != kProcessFinished) return result;
    }
    return kProcessFinished;
  }

  LProcessResult CopySubFolder(int fromFd, int toFd, const std::string& path, const char* name) {
    std::string childPath = path + "/" + name;
    LFileDescriptor from(OpenFolderAt(fromFd, name));
    if (!from.IsOpen()) return Fail(childPath, errno);
    struct stat st;
    if (::fstat(from.Get(), &st) != 0) return Fail(childPath, errno);
    if (::mkdirat(toFd, name, 0700) != 0 && errno != EEXIST) return Fail(childPath, errno);
    LFileDescriptor to(OpenFolderAt(toFd, name));
    if (!to.IsOpen()) return Fail(childPath, errno);
    LProcessResult result = CopyFolder(from.Get(), to.Get(), childPath);
    // The permissions last, so a read-only folder can still be filled first.
    if (result == kProcessFinished && ::fchmod(to.Get(), st.st_mode & 07777) != 0) return Fail(childPath, errno);
    ShowFolder(path);
    return result;
  }

  LProcessResult CopyFile(int fromFd, int toFd, const std::string& path, const char* name) {
    std::string filePath = path + "/" + name;
    LFileDescriptor from(::openat(fromFd, name, O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    if (!from.IsOpen()) return Fail(filePath, errno);
    struct stat st;
    if (::fstat(from.Get(), &st) != 0) return Fail(filePath, errno);
    LFileDescriptor to(::openat(toFd, name, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!to.IsOpen()) return Fail(filePath, errno);
    if (int err = CopyContent(from.Get(), to.Get(), data_.nBytes)) return Fail(filePath, err);
    const timespec times[2] = {st.st_atim, st.st_mtim};
    if (::fchmod(to.Get(), st.st_mode & 07777) != 0 || ::futimens(to.Get(), times) != 0)
      return Fail(filePath, errno);
    // close(2) is where some file systems report a write that did not make it.
    if (::close(to.Release()) != 0) return Fail(filePath, errno);
    return Copied();
  }

  LProcessResult CopyLink(int fromFd, int toFd, const std::string& path, const char* name) {
    std::string linkPath = path + "/" + name;
    std::vector<char> target(4096);
    ssize_t n = ::readlinkat(fromFd, name, target.data(), target.size() - 1);
    if (n < 0) return Fail(linkPath, errno);
    target[static_cast<std::size_t>(n)] = '\0';
    ::unlinkat(toFd, name, 0);
    if (::symlinkat(target.data(), toFd, name) != 0) return Fail(linkPath, errno);
    return Copied();
  }

  // Status line 0: the folder being copied, relative to the source ("" for the source itself).
  void ShowFolder(const std::string& path) {
    process_.SetStatus(path.size() > data_.source.size() ? path.substr(data_.source.size() + 1) : std::string(), 0);
  }

  LProcessResult Copied() {
    ++data_.nFiles;
    if (nTotal_ > 0) process_.SetProgress(static_cast<double>(data_.nFiles) / static_cast<double>(nTotal_));
    return kProcessFinished;
  }

  LProcessInterface& process_;
  LCopyFolderData& data_;
  long long nTotal_ = 0;  // files and links counted before copying
};

}  // namespace

LProcessResult Process(LProcessInterface& process, LCopyFolderData& data) {
  return TreeCopier(process, data).Run();
}

bool LMoveFolder(const std::string& from, const std::string& to, std::string* error) {
  if (::rename(from.c_str(), to.c_str()) == 0) return true;
  int err = errno;
  if (err != EXDEV) return LFail(error, "Impossible de déplacer \"" + from + "\" : " + LIoFailureReason(err));
  struct stat st;
  if (::stat(from.c_str(), &st) != 0 || ::mkdir(to.c_str(), 0700) != 0) {
    return LFail(error, "Impossible de déplacer \"" + from + "\" : " + LIoFailureReason(errno));
  }
  LProcessInterfaceVoid silent;
  LCopyFolderData data;
  data.source = from;
  data.destination = to;
  if (Process(silent, data) != kProcessFinished || ::chmod(to.c_str(), st.st_mode & 07777) != 0) {
    if (error != nullptr) *error = data.error;
    LFile::RemoveTree(to);
    return false;
  }
  if (!LFile::RemoveTree(from)) return LFail(error, "Impossible de supprimer \"" + from + "\" après sa copie.");
  return true;
}
