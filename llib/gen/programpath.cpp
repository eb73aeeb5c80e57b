#include "llib/gen/programpath.h"

#include <unistd.h>

#include <climits>

std::string LProgramPath() {
  char path[PATH_MAX];
  ssize_t n = ::readlink("/proc/self/exe", path, sizeof path);
  return n > 0 && static_cast<std::size_t>(n) < sizeof path ? std::string(path, static_cast<std::size_t>(n))
                                                               : std::string();
}
