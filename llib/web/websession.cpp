#include "llib/web/websession.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>

#include "llib/gen/file.h"
#include "llib/gen/randomtext.h"

namespace {

constexpr std::string_view kSessionExtension = ".sess";
constexpr std::size_t kSessionLetters = 8;

std::atomic<int> gSessionSerial{0};  // serial of the next new session id of this process

bool EndsWith(std::string_view text, std::string_view suffix) {
  return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

}  // namespace

std::string LWebletSessionDataFileBased::GetSessionFolder() {
  return LFile::GetUserDataFolderAppSubFolder("SessionData");
}

void LWebletSessionDataFileBased::CleanUpSessionFiles(const std::string& folder, std::time_t now) {
  for (const std::string& name : LFile::ListFolder(folder)) {
    if (!EndsWith(name, kSessionExtension)) continue;
    std::string path = folder + "/" + name;
    struct stat st;
    if (::stat(path.c_str(), &st) != 0) continue;
    long long age = static_cast<long long>(now) - static_cast<long long>(st.st_mtime);
    long long limit = name[0] == 'l' ? kSessionLongAgeSeconds : kSessionShortAgeSeconds;
    if (age > limit) ::unlink(path.c_str());
  }
}

bool LWebletSessionDataFileBased::IsAcceptableId(std::string_view id) {
  return !id.empty() && id.find('/') == std::string_view::npos &&
         id.find('\\') == std::string_view::npos && id.find("..") == std::string_view::npos;
}

bool LWebletSessionDataFileBased::LoadSession(std::string_view id) {
  std::string folder = GetSessionFolder();
  CleanUpSessionFiles(folder, std::time(nullptr));
  if (!IsAcceptableId(id)) return false;
  Clear();
  held_.Close();
  id_.assign(LTruncated(id, kMaxTextBytes));
  path_ = LFile::MakeFilePath(folder, id_, kSessionExtension);
  LLockedFile file(path_, O_RDONLY, LOCK_SH, kSessionLockTimeoutMs);
  std::string content;
  bool read = false;
  if (file.IsOpen() && file.Locked()) {
    struct stat st;
    if (::fstat(file.Get(), &st) == 0 && S_ISREG(st.st_mode)) {
      content.resize(static_cast<std::size_t>(st.st_size));
      long long n = LRobustRead(file.Get(), content.data(), content.size());
      if (n >= 0) {
        content.resize(static_cast<std::size_t>(n));
        read = true;
      }
    }
  }
  if (!read) {
    path_.clear();
    id_.clear();
    return false;
  }
  LoadHTTPStringUTF8(content);
  return true;
}

void LWebletSessionDataFileBased::CreateNewSession(bool longLived) {
  held_.Close();
  Clear();
  id_ = std::string(longLived ? "l" : "s") + LStringGenerateRandomPassword(kSessionLetters) +
        std::to_string(gSessionSerial.fetch_add(1));
  path_ = LFile::MakeFilePath(GetSessionFolder(), id_, kSessionExtension);
}

void LWebletSessionDataFileBased::SetString(std::string_view name, std::string_view value) {
  LHashTable::SetString(name, value);
  SetDirty();
}

void LWebletSessionDataFileBased::DeleteField(std::string_view name) {
  LHashTable::DeleteField(name);
  SetDirty();
}

void LWebletSessionDataFileBased::SetDirty() {
  if (held_.IsOpen() || path_.empty()) return;
  held_ = LLockedFile(path_, O_RDWR | O_CREAT, LOCK_EX, kSessionLockTimeoutMs, 0666);
  if (held_.IsOpen()) (void)::ftruncate(held_.Get(), 0);
}

void LWebletSessionDataFileBased::FlushSession() {
  if (!held_.IsOpen()) return;
  std::string content;
  SaveHTTPString(content);
  if (!LRobustWrite(held_.Get(), content.data(), content.size())) LLogWriteFailure("write", path_, errno);
  held_.Close();
}

void LWebletSessionDataFileBased::DestroySession() {
  held_.Close();
  Clear();
  if (!path_.empty()) ::unlink(path_.c_str());
  path_.clear();
  id_.clear();
}
