#include "llib/gen/processid.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>

namespace {

std::atomic<pid_t> gKnown{0};  // 0: ask the system

void ForgetInChild() { gKnown.store(0, std::memory_order_relaxed); }

}  // namespace

pid_t LProcessId() {
  // A child made by fork(2) runs the handler before anything else of it can ask.
  static const bool registered = ::pthread_atfork(nullptr, nullptr, ForgetInChild) == 0;
  pid_t pid = gKnown.load(std::memory_order_relaxed);
  if (pid != 0 && registered) return pid;
  pid = ::getpid();
  if (registered) gKnown.store(pid, std::memory_order_relaxed);
  return pid;
}
