#include "llib/gen/system.h"

#include <unistd.h>

#include <cstdlib>

std::string LGetPostingUserName() {
  for (const char* variable : {"LOGNAME", "USER"}) {
    const char* value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return value;
  }
  return {};
}

bool LIsTerminal(int fd) { return ::isatty(fd) == 1; }

std::string LGetHostName() {
  char name[256] = {};
  if (::gethostname(name, sizeof name - 1) != 0) return "localhost";
  return name;
}
