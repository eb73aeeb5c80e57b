#include "tests/support/killpoints.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <utility>

bool LRunKilledAt(LSyscall kind, unsigned nth, const std::function<void()>& change) {
  pid_t child = ::fork();
  if (child < 0) {
    ADD_FAILURE() << "fork";
    return false;
  }
  if (child == 0) {
    LSyscallFaultArmKill(kind, nth);
    change();
    ::_exit(0);
  }
  int status = 0;
  if (::waitpid(child, &status, 0) != child) {
    ADD_FAILURE() << "waitpid";
    return false;
  }
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) return true;
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the change died otherwise than killed";
  return false;
}

int LKillAtEachStep(const std::function<void()>& prepare, const std::function<void()>& change,
                    const std::function<void(const std::string& where)>& inspect) {
  int nKilled = 0;
  for (auto [kind, name] : {std::pair{LSyscall::kWrite, "write"}, std::pair{LSyscall::kRename, "rename"},
                            std::pair{LSyscall::kTruncate, "truncate"}}) {
    for (unsigned nth = 1;; ++nth) {
      if (nth > 2000) {
        ADD_FAILURE() << "the change never ran whole: its steps grow with each run";
        return nKilled;
      }
      prepare();
      if (!LRunKilledAt(kind, nth, change)) break;  // the change ran whole before its nth call of that kind
      ++nKilled;
      inspect(std::string(name) + " " + std::to_string(nth));
      if (::testing::Test::HasFailure()) return nKilled;  // one place is enough to look at
    }
  }
  return nKilled;
}
