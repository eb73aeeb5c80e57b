#include "llib/web/webdesk.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "llib/gen/file.h"
#include "llib/gen/filelock.h"
#include "llib/gen/randomtext.h"

namespace {

constexpr unsigned kDeskTokenLockMs = 1000;
constexpr std::size_t kMaxTokenFileBytes = 256;

// Compares every byte whatever the first difference, so the time of a refusal tells nothing
// about how much of a guessed token was right.
bool SameSecret(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  unsigned char difference = 0;
  for (std::size_t i = 0; i < a.size(); ++i) difference |= static_cast<unsigned char>(a[i] ^ b[i]);
  return difference == 0;
}

}  // namespace

std::string LWebDeskTokenPath() { return LFile::GetUserDataFolderApp() + "/" + std::string(kDeskTokenFileName); }

bool LWebDeskIssueToken(std::time_t now, std::string& token) {
  std::string fresh = LRandomHexText(kDeskTokenBytes);
  std::string content = fresh + " " + std::to_string(static_cast<long long>(now)) + "\n";
  if (!LFile::WriteAllAtomic(LWebDeskTokenPath(), content, 0600)) return false;
  token = std::move(fresh);
  return true;
}

bool LWebDeskRedeemToken(std::string_view token, std::time_t now) {
  std::string path = LWebDeskTokenPath();
  LLockedFile file(path, O_RDONLY, LOCK_EX, kDeskTokenLockMs);
  if (!file.IsOpen() || !file.Locked()) return false;
  // A request that held the lock before this one may have used the token and removed the file;
  // a new link written meanwhile is another file under the same name.
  struct stat held;
  struct stat named;
  if (::fstat(file.Get(), &held) != 0 || held.st_nlink == 0 || ::stat(path.c_str(), &named) != 0 ||
      named.st_ino != held.st_ino || named.st_dev != held.st_dev)
    return false;
  char buffer[kMaxTokenFileBytes + 1];
  long long nRead = LRobustRead(file.Get(), buffer, kMaxTokenFileBytes);
  if (nRead <= 0) return false;
  buffer[nRead] = '\0';
  char stored[kMaxTokenFileBytes + 1];
  long long madeAt = 0;
  if (std::sscanf(buffer, "%256s %lld", stored, &madeAt) != 2) return false;
  long long age = static_cast<long long>(now) - madeAt;
  if (age < 0 || age > kDeskTokenLifetimeSeconds) {
    ::unlink(path.c_str());
    return false;
  }
  if (token.size() != 2 * kDeskTokenBytes || !SameSecret(token, stored)) return false;
  return ::unlink(path.c_str()) == 0;
}

bool LWebIsLoopbackAddress(const unsigned char address[4]) { return address[0] == 127; }
