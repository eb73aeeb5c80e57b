// Mail that nobody waits for (the web server's password mails) goes out through one background
// thread of the service process. LSendEmailBackground queues a message and returns at once; the
// thread sends it with the user's e-mail settings (emailsettings.h). A message that fails is
// kept on a retry list and tried again, the n-th retry n × 10 minutes after the previous
// attempt, until 15 retries have failed; then it is dropped. The queue lives in memory only:
// messages still queued when the service stops are lost, and never sent by a later start of the
// thread in the same process.
//
// Mutex rules: the thread's mutex guards the pending queue, the retry list and the counters;
// it is never held while a message is being sent.
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/process.h"
#include "llib/gen/signalobject.h"
#include "llib/gen/thread.h"

// What became of one attempt to send a queued message, told to whoever queued it (a document's
// history): kProcessFinished when the server took it; kProcessFailed with the server's reason
// (or why the connection failed) in error, willRetry saying whether another attempt will come.
// Called on the background thread, without its mutex held.
using LEmailSendReport = std::function<void(LProcessResult result, const std::string& error, bool willRetry)>;

// Queues one message and wakes (or starts) the background thread. sender empty: the one of the
// settings. With deleteAttachmentsWhenDone the attached files are removed once the message was
// sent or given up (files made only to be mailed, such as a PDF of an invoice). report (may be
// empty) hears of every attempt.
void LSendEmailBackground(std::string_view recipients, std::string_view sender, std::string_view subject,
                          std::string_view text, const std::vector<std::string>& attachments,
                          bool deleteAttachmentsWhenDone, LEmailSendReport report = {});
// Asks the thread to stop; does not wait. A send under way ends at its next wait.
void LSendEmailBackgroundStopSoon();
// Asks the thread to stop and waits until it has.
void LSendEmailBackgroundStopNow();

// The waits of the thread, in milliseconds. Real values by default; tests shorten them.
struct LEmailSendBackgroundTimings {
  unsigned retryStepMs = 600000;         // the n-th retry comes n times this after the last attempt
  unsigned idleWithRetriesMs = 600000;   // longest sleep while messages wait for a retry
  unsigned idleMs = 86400000;            // longest sleep with nothing to do
};
// Applies from the thread's next sleep on.
void LSendEmailBackgroundSetTimings(const LEmailSendBackgroundTimings& timings);

// What the thread has done since it last started (the first message queued after a stop starts
// it again, from zero).
struct LEmailSendBackgroundState {
  std::size_t pending = 0;    // queued, never tried
  std::size_t retrying = 0;   // waiting on the retry list
  unsigned long attempts = 0; // sends tried
  unsigned long sent = 0;     // messages the server took
  unsigned long dropped = 0;  // messages given up after their last retry
  std::string lastError;      // message of the last failed send
};
LEmailSendBackgroundState LSendEmailBackgroundGetState();

class LEmailSendBackgroundThread : public LThread {
 public:
  // Retries after the first attempt before a message is dropped.
  static constexpr int kMaxRetries = 15;

  struct Item {
    std::string recipients;
    std::string sender;
    std::string subject;
    std::string text;
    std::vector<std::string> attachments;
    bool deleteAttachmentsWhenDone = false;
    LEmailSendReport report;                           // may be empty
    int failedAttempts = 0;                            // failed sends so far
    std::chrono::steady_clock::time_point lastAttempt; // when the last send began
  };

  // The one thread of the process.
  static LEmailSendBackgroundThread& Get();
  ~LEmailSendBackgroundThread() override;

  void Add(Item item);
  void SetTimings(const LEmailSendBackgroundTimings& timings);
  LEmailSendBackgroundState GetState();

 protected:
  void ThreadMain() override;

 private:
  LEmailSendBackgroundThread() = default;
  // The next item to send (removed from its list); false with sleepMs set when none is due.
  bool TakeNext(Item& item, unsigned& sleepMs);
  void SendOne(Item& item);
  // Drops the item (sent, cancelled, or out of retries) or puts it on the retry list.
  void Finish(Item& item, LProcessResult result, const std::string& error);

  std::mutex mutex_;
  std::deque<Item> pending_;           // guarded by mutex_
  std::vector<Item> retry_;            // guarded by mutex_, oldest first
  LEmailSendBackgroundTimings timings_;  // guarded by mutex_
  LEmailSendBackgroundState state_;    // guarded by mutex_ (queue sizes filled on demand)
  LSignalObject wake_;                 // set by Add: something new is queued
};
