#include "llib/gen/filestamp.h"

#include <sys/stat.h>

namespace {

bool Before(const timespec& a, const timespec& b) {
  return a.tv_sec < b.tv_sec || (a.tv_sec == b.tv_sec && a.tv_nsec < b.tv_nsec);
}

bool Same(const timespec& a, const timespec& b) { return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec; }

}  // namespace

LFileStamp LFileStampOf(const std::string& path) {
  LFileStamp stamp;
  // The coarse clock is the one file times are taken from; read before stat, a change after the
  // stat is stamped at this tick or later.
  timespec now{};
  bool clockRead = ::clock_gettime(CLOCK_REALTIME_COARSE, &now) == 0;
  struct stat st;
  if (::stat(path.c_str(), &st) != 0) return stamp;
  stamp.exists = true;
  stamp.device = st.st_dev;
  stamp.inode = st.st_ino;
  stamp.size = st.st_size;
  stamp.ctime = st.st_ctim;
  stamp.settled = clockRead && Before(st.st_ctim, now);
  return stamp;
}

bool LFileStampStillHolds(const LFileStamp& cached, const LFileStamp& now) {
  return cached.exists && cached.settled && now.exists && cached.device == now.device && cached.inode == now.inode &&
         cached.size == now.size && Same(cached.ctime, now.ctime);
}
