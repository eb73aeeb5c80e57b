#include "llib/net/emailsendbg.h"

#include <unistd.h>

#include "llib/gen/process.h"
#include "llib/net/email.h"
#include "llib/net/emailsettings.h"

namespace {

using Clock = std::chrono::steady_clock;

// The progress interface of a background send: nobody watches; the thread's stop ends it.
class ThreadProcess : public LProcessInterfaceRecorder {
 public:
  explicit ThreadProcess(const LThread& thread) : thread_(thread) {}
  bool IsToStop() override { return thread_.IsToStop(); }
  bool ProcessWait(unsigned int ms) override { return thread_.StopSignal().Wait(ms); }

 private:
  const LThread& thread_;
};

}  // namespace

LEmailSendBackgroundThread& LEmailSendBackgroundThread::Get() {
  static LEmailSendBackgroundThread thread;
  return thread;
}

LEmailSendBackgroundThread::~LEmailSendBackgroundThread() { StopAndWait(); }

void LEmailSendBackgroundThread::Add(Item item) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    // A stopped thread starts a new run below. What the last run left queued went with its
    // service, and the counters begin again; a stop only ends sends, so they stay readable until
    // this point.
    if (!IsRunning()) {
      pending_.clear();
      retry_.clear();
      state_ = LEmailSendBackgroundState();
    }
    pending_.push_back(std::move(item));
  }
  wake_.Set();
  Start();
}

void LEmailSendBackgroundThread::SetTimings(const LEmailSendBackgroundTimings& timings) {
  std::lock_guard<std::mutex> lock(mutex_);
  timings_ = timings;
}

LEmailSendBackgroundState LEmailSendBackgroundThread::GetState() {
  std::lock_guard<std::mutex> lock(mutex_);
  LEmailSendBackgroundState state = state_;
  state.pending = pending_.size();
  state.retrying = retry_.size();
  return state;
}

bool LEmailSendBackgroundThread::TakeNext(Item& item, unsigned& sleepMs) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (!pending_.empty()) {
    item = std::move(pending_.front());
    pending_.pop_front();
    return true;
  }
  Clock::time_point now = Clock::now();
  for (auto it = retry_.begin(); it != retry_.end(); ++it) {
    auto waitedMs = std::chrono::duration_cast<std::chrono::milliseconds>(now - it->lastAttempt).count();
    if (waitedMs > static_cast<long long>(it->failedAttempts) * timings_.retryStepMs) {
      item = std::move(*it);
      retry_.erase(it);
      return true;
    }
  }
  sleepMs = retry_.empty() ? timings_.idleMs : timings_.idleWithRetriesMs;
  // Reset under the mutex: an Add after this point sets the signal again and ends the sleep.
  wake_.Reset();
  return false;
}

void LEmailSendBackgroundThread::SendOne(Item& item) {
  EmailSMTPSendProcess request;
  LEmailSettingsFillRequest(LEmailSettingsLoad(), request);
  request.recipients = item.recipients;
  if (!item.sender.empty()) request.sender = item.sender;
  request.subject = item.subject;
  request.text = item.text;
  request.attachments = item.attachments;
  item.lastAttempt = Clock::now();
  {
    std::lock_guard<std::mutex> lock(mutex_);
    ++state_.attempts;
  }
  ThreadProcess process(*this);
  LProcessResult result = Process(process, request);
  Finish(item, result, process.GetError());
}

void LEmailSendBackgroundThread::Finish(Item& item, LProcessResult result, const std::string& error) {
  bool keep = false;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (result == kProcessFinished) {
      ++state_.sent;
    } else if (result == kProcessFailed) {
      state_.lastError = error;
      keep = item.failedAttempts++ < kMaxRetries;
      if (!keep) ++state_.dropped;
    }
    if (keep) retry_.push_back(item);
  }
  if (item.report && result != kProcessCancelled) item.report(result, error, keep);
  if (!keep && item.deleteAttachmentsWhenDone)
    for (const auto& path : item.attachments) ::unlink(path.c_str());
}

void LEmailSendBackgroundThread::ThreadMain() {
  LSignalObjectGroup wakeOrStop;
  wakeOrStop.Add(&StopSignal());
  wakeOrStop.Add(&wake_);
  while (!IsToStop()) {
    Item item;
    unsigned sleepMs = 0;
    if (TakeNext(item, sleepMs)) SendOne(item);
    else wakeOrStop.Wait(sleepMs);
  }
}

// ---- Free functions ---------------------------------------------------------------------------

void LSendEmailBackground(std::string_view recipients, std::string_view sender, std::string_view subject,
                          std::string_view text, const std::vector<std::string>& attachments,
                          bool deleteAttachmentsWhenDone, LEmailSendReport report) {
  LEmailSendBackgroundThread::Item item;
  item.report = std::move(report);
  item.recipients = recipients;
  item.sender = sender;
  item.subject = subject;
  item.text = text;
  item.attachments = attachments;
  item.deleteAttachmentsWhenDone = deleteAttachmentsWhenDone;
  LEmailSendBackgroundThread::Get().Add(std::move(item));
}

void LSendEmailBackgroundStopSoon() { LEmailSendBackgroundThread::Get().StopThreadSoon(); }

void LSendEmailBackgroundStopNow() { LEmailSendBackgroundThread::Get().StopAndWait(); }

void LSendEmailBackgroundSetTimings(const LEmailSendBackgroundTimings& timings) {
  LEmailSendBackgroundThread::Get().SetTimings(timings);
}

LEmailSendBackgroundState LSendEmailBackgroundGetState() { return LEmailSendBackgroundThread::Get().GetState(); }
