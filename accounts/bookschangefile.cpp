#include "accounts/bookschangefile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <vector>

#include "llib/gen/file.h"
#include "llib/gen/log.h"
#include "llib/gen/processid.h"

namespace {

class LChangeFiles {
 public:
  // Removes the idle files (at exit); a file in use stays for the settler.
  void RemoveIdle() {
    std::lock_guard<std::mutex> guard(mutex_);
    ForgetInherited();
    for (auto it = files_.begin(); it != files_.end();) {
      LBooksChangeFile& file = **it;
      if (file.busy) {
        ++it;
        continue;
      }
      if (::unlink(file.path.c_str()) != 0 && errno != ENOENT) LLogWriteFailure("unlink", file.path, errno);
      ::close(file.fd);
      it = files_.erase(it);
    }
  }

  LBooksChangeFile* Take(const std::string& folder, std::string_view extension) {
    std::lock_guard<std::mutex> guard(mutex_);
    ForgetInherited();
    std::string key = folder + "\n" + std::string(extension);
    for (auto it = files_.begin(); it != files_.end();) {
      LBooksChangeFile& file = **it;
      if (file.busy || file.key != key) {
        ++it;
        continue;
      }
      // A file whose folder was removed under it (a test's, a restored backup's) protects nothing.
      struct stat info {};
      if (::fstat(file.fd, &info) == 0 && info.st_nlink > 0) {
        file.busy = true;
        return &file;
      }
      ::close(file.fd);
      it = files_.erase(it);
    }
    auto file = Create(folder, extension);
    if (!file) return nullptr;
    file->key = std::move(key);
    file->busy = true;
    files_.push_back(std::move(file));
    return files_.back().get();
  }

  void GiveBack(LBooksChangeFile* file) {
    std::lock_guard<std::mutex> guard(mutex_);
    if (file->size == 0 || LRobustTruncate(file->fd, 0)) {
      file->size = 0;
      file->busy = false;
      return;
    }
    LLogWriteFailure("truncate", file->path, errno);
    if (::unlink(file->path.c_str()) != 0) LLogWriteFailure("unlink", file->path, errno);
    Drop(file);
  }

  void Leave(LBooksChangeFile* file) {
    std::lock_guard<std::mutex> guard(mutex_);
    Drop(file);
  }

 private:
  // After a fork the files and their locks belong to the parent: the child lets go of its copies
  // of the descriptors without unlocking (the lock is the parent's too) and makes its own.
  void ForgetInherited() {
    pid_t self = LProcessId();
    if (owner_ == self) return;
    for (const auto& file : files_) ::close(file->fd);
    files_.clear();
    owner_ = self;
  }

  static std::unique_ptr<LBooksChangeFile> Create(const std::string& folder, std::string_view extension) {
    static unsigned counter = 0;  // under mutex_
    auto file = std::make_unique<LBooksChangeFile>();
    for (int attempt = 0; attempt < 100; ++attempt) {
      // A name of a process that had this id before is taken: the next one is tried.
      file->path = LFile::MakeFilePath(folder, std::to_string(LProcessId()) + "-" + std::to_string(counter++), extension);
      file->fd = LRobustOpen(file->path, O_RDWR | O_CREAT | O_EXCL, 0666);
      if (file->fd < 0 && errno == ENOENT && LFile::MakeFolder(folder))
        file->fd = LRobustOpen(file->path, O_RDWR | O_CREAT | O_EXCL, 0666);
      if (file->fd >= 0 || errno != EEXIST) break;
    }
    if (file->fd < 0) {
      LLogWriteFailure("open", file->path, errno);
      return nullptr;
    }
    if (::flock(file->fd, LOCK_EX | LOCK_NB) != 0) {
      LLogWriteFailure("flock", file->path, errno);
      ::close(file->fd);
      (void)::unlink(file->path.c_str());
      return nullptr;
    }
    return file;
  }

  void Drop(LBooksChangeFile* file) {
    for (auto it = files_.begin(); it != files_.end(); ++it) {
      if (it->get() != file) continue;
      ::close(file->fd);  // releases the lock
      files_.erase(it);
      return;
    }
  }

  std::mutex mutex_;
  pid_t owner_ = LProcessId();
  std::vector<std::unique_ptr<LBooksChangeFile>> files_;
};

// Never destroyed: a change may still run in another static object's destructor at exit.
LChangeFiles& Files() {
  static LChangeFiles* files = [] {
    auto* made = new LChangeFiles;
    std::atexit([] { Files().RemoveIdle(); });
    return made;
  }();
  return *files;
}

}  // namespace

LBooksChangeFile* LBooksChangeFileTake(const std::string& folder, std::string_view extension) {
  return Files().Take(folder, extension);
}

bool LBooksChangeFileNote(LBooksChangeFile& file, std::string_view line) {
  std::string text(line);
  text.push_back('\n');
  if (!LRobustWriteAt(file.fd, text.data(), text.size(), file.size)) {
    LLogWriteFailure("write", file.path, errno);
    (void)LRobustTruncate(file.fd, file.size);  // a line cut short is dropped by the settler anyway
    return false;
  }
  file.size += static_cast<long long>(text.size());
  return true;
}

void LBooksChangeFileGiveBack(LBooksChangeFile* file) { Files().GiveBack(file); }

void LBooksChangeFileLeave(LBooksChangeFile* file) { Files().Leave(file); }
