// LThread's start rules: a running thread is not started twice; a finished one runs anew.
#include "llib/gen/thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>

namespace {

// Counts its runs; each run waits until told to stop.
class CountingThread : public LThread {
 public:
  explicit CountingThread(std::atomic<int>& returned) : returned_(returned) {}
  ~CountingThread() override { StopAndWait(); }
  std::atomic<int> runs{0};

 protected:
  void ThreadMain() override {
    ++runs;
    while (!IsToStop()) StopSignal().Wait(1000);
    ++returned_;
  }

 private:
  std::atomic<int>& returned_;  // counts the returns of ThreadMain, outliving the thread object
};

}  // namespace

TEST(Thread, StartWhileRunningDoesNothingAndAfterFinishingRunsAnew) {
  std::atomic<int> returned{0};
  CountingThread thread(returned);
  thread.Start();
  ASSERT_TRUE(thread.StartedSignal().Wait(5000));
  thread.Start();  // still running: nothing happens
  EXPECT_TRUE(thread.IsRunning());
  thread.StopThreadSoon();
  ASSERT_TRUE(thread.FinishedSignal().Wait(5000));
  EXPECT_EQ(thread.runs, 1);

  thread.Start();  // finished: joined, signals reset, run again
  ASSERT_TRUE(thread.StartedSignal().Wait(5000));
  EXPECT_FALSE(thread.IsToStop());
  EXPECT_FALSE(thread.FinishedSignal().IsSet());
  thread.StopThreadSoon();
  ASSERT_TRUE(thread.FinishedSignal().Wait(5000));
  EXPECT_EQ(thread.runs, 2);
}

TEST(Thread, DestructionStopsAndWaitsForTheThread) {
  std::atomic<int> returned{0};
  {
    CountingThread thread(returned);
    thread.Start();
    ASSERT_TRUE(thread.StartedSignal().Wait(5000));
    EXPECT_EQ(returned, 0);
  }
  EXPECT_EQ(returned, 1);  // the destructor asked it to stop and waited for it
}
