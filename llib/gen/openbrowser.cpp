#include "llib/gen/openbrowser.h"

#include <spawn.h>
#include <sys/wait.h>

#include <cstdlib>

extern char** environ;

bool LOpenInBrowser(const std::string& url) {
  if (!std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY")) return false;
  pid_t pid = -1;
  const char* argv[] = {"xdg-open", url.c_str(), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", 1, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", 1, 0);
  bool started = posix_spawnp(&pid, "xdg-open", &actions, nullptr, const_cast<char**>(argv), environ) == 0;
  // xdg-open hands the page over and ends; reap it if it already has, never wait for it.
  if (started) ::waitpid(pid, nullptr, WNOHANG);
  posix_spawn_file_actions_destroy(&actions);
  return started;
}
