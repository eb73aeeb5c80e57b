// LThread: a background thread with three pipe signals, so its owner can wait for it together
// with other descriptors: stop (asked by StopThreadSoon, seen through IsToStop), started, and
// finished (set when the thread function returns).
//
// Derived classes implement ThreadMain and must call StopAndWait() in their own destructor:
// by the time ~LThread runs, the derived part that ThreadMain uses is already gone.
#pragma once

#include <atomic>
#include <mutex>
#include <thread>

#include "llib/gen/signalobject.h"

class LThread {
 public:
  LThread() = default;
  virtual ~LThread();
  LThread(const LThread&) = delete;
  LThread& operator=(const LThread&) = delete;

  // Under the start mutex: a thread still running is left alone; a finished one is joined;
  // then the signals are reset and a new thread is started with the priority (a nice value).
  void Start(int priority = 0);
  // Asks the thread to stop; does not wait.
  void StopThreadSoon() { stop_.Set(); }
  bool IsToStop() const { return stop_.IsSet(); }
  bool IsRunning() const { return running_; }
  // Asks to stop and waits without limit until the thread function has returned.
  void StopAndWait();

  const LSignalObject& StopSignal() const { return stop_; }
  const LSignalObject& StartedSignal() const { return started_; }
  const LSignalObject& FinishedSignal() const { return finished_; }

 protected:
  virtual void ThreadMain() = 0;

 private:
  void Run();

  LSignalObject stop_;             // set: the thread should stop
  LSignalObject started_;          // set by the thread when it begins
  LSignalObject finished_;         // set by the thread when ThreadMain returned
  std::atomic<bool> running_{false};
  int priority_ = 0;               // nice value applied to the thread
  std::mutex startMutex_;          // guards thread_ and the start sequence
  std::thread thread_;
};
