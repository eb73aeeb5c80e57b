#include "llib/gen/thread.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

LThread::~LThread() { StopAndWait(); }

void LThread::Start(int priority) {
  std::lock_guard<std::mutex> lock(startMutex_);
  if (thread_.joinable()) {
    if (running_) return;
    thread_.join();
  }
  stop_.Reset();
  started_.Reset();
  finished_.Reset();
  running_ = true;
  priority_ = priority;
  thread_ = std::thread(&LThread::Run, this);
}

void LThread::Run() {
  started_.Set();
  if (priority_ != 0)
    ::setpriority(PRIO_PROCESS, static_cast<id_t>(::syscall(SYS_gettid)), priority_);
  ThreadMain();
  running_ = false;
  finished_.Set();
}

void LThread::StopAndWait() {
  std::lock_guard<std::mutex> lock(startMutex_);
  stop_.Set();
  if (thread_.joinable()) thread_.join();
}
