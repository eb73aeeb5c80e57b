// The parent side of a worker process: a real child started through LProcessRunWorker, its
// messages replayed on the parent's interface, a cancel forwarded as the stop request.
#include "llib/gen/processworker.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

// Records what reaches the parent, and asks to stop once a time has passed.
class ParentDisplay : public LProcessInterfaceRecorder {
 public:
  explicit ParentDisplay(int stopAfterMs = -1) : stopAfterMs_(stopAfterMs), start_(Clock::now()) {}
  bool IsToStop() override {
    return stopAfterMs_ >= 0 && Clock::now() - start_ >= std::chrono::milliseconds(stopAfterMs_);
  }
  void SetProgress(double fraction) override { progress.push_back(fraction); }
  void SetProgressIndeterminateOn() override { ++nIndeterminate; }
  void SetResultCode(LProcessResult result, const void*, unsigned long) override { results.push_back(result); }
  std::vector<double> progress;
  std::vector<LProcessResult> results;
  int nIndeterminate = 0;

 private:
  int stopAfterMs_;
  Clock::time_point start_;
};

}  // namespace

TEST(ProcessWorker, ReplaysTheWorkersMessagesAndReturnsItsResult) {
  ParentDisplay display;
  std::string data;
  EXPECT_EQ(LProcessRunWorker(display, KONTAVO_PROGRAM_workerprobe, {"report"}, &data), kProcessFinished);
  EXPECT_EQ(data, "OK");
  EXPECT_EQ(display.GetStatus(0), "Comptage");
  EXPECT_EQ(display.nIndeterminate, 1);
  ASSERT_FALSE(display.progress.empty());
  EXPECT_EQ(display.progress.front(), 0.25);  // the first progress goes out at once
  EXPECT_EQ(display.progress.back(), 1.0);    // and the last one always
  EXPECT_EQ(display.results, std::vector<LProcessResult>{kProcessFinished});
}

TEST(ProcessWorker, CancelIsForwardedAndTheWorkerEndsCancelled) {
  ParentDisplay display(300);
  Clock::time_point start = Clock::now();
  EXPECT_EQ(LProcessRunWorker(display, KONTAVO_PROGRAM_workerprobe, {"waitstop"}), kProcessCancelled);
  auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
  EXPECT_GE(elapsed, 290);
  EXPECT_LT(elapsed, 2000);
  EXPECT_EQ(display.GetStatus(0), "En attente");
}

TEST(ProcessWorker, FailureCarriesTheWorkersErrorText) {
  ParentDisplay display;
  EXPECT_EQ(LProcessRunWorker(display, KONTAVO_PROGRAM_workerprobe, {"fail"}), kProcessFailed);
  EXPECT_EQ(display.GetError(), "Impossible de copier \"x\" : accès refusé");
}

TEST(ProcessWorker, WorkerThatDiesWithoutResultOrCannotStartIsAFailure) {
  ParentDisplay crashed;
  EXPECT_EQ(LProcessRunWorker(crashed, KONTAVO_PROGRAM_workerprobe, {"crash"}), kProcessFailed);
  EXPECT_EQ(crashed.GetStatus(0), "Presque");
  EXPECT_EQ(crashed.GetError(), "Le processus de travail s'est arrêté sans donner de résultat.");
  EXPECT_TRUE(crashed.results.empty());

  ParentDisplay missing;
  EXPECT_EQ(LProcessRunWorker(missing, "/nonexistent/worker", {}), kProcessFailed);
  EXPECT_EQ(missing.GetError(), "Impossible de lancer le processus de travail.");
}
