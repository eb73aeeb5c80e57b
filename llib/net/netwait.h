// How waits on the network end: the status of every socket and TLS operation, the deadline a
// wait runs against, and the stop test that lets a user's cancel end any wait early.
#pragma once

#include <chrono>
#include <climits>
#include <functional>

// How a network operation ended.
enum class LNetStatus {
  kOk,
  kTimedOut,  // the time limit passed first
  kClosed,    // the peer closed the connection (or the socket was never connected)
  kStopped,   // the stop test answered true
  kTooLong,   // a line grew past the caller's limit before its end arrived
  kFailed,    // the system or the TLS layer refused; LastError() says why
};

// A point in time after which a wait gives up; Never() waits without limit.
class LNetDeadline {
 public:
  static LNetDeadline After(unsigned ms) { return LNetDeadline(Clock::now() + std::chrono::milliseconds(ms)); }
  static LNetDeadline Never() { return LNetDeadline(Clock::time_point::max()); }
  bool IsOver() const { return Clock::now() >= when_; }
  // Milliseconds left for poll(2), rounded up: -1 without limit, 0 when over.
  int PollMs() const {
    if (when_ == Clock::time_point::max()) return -1;
    auto left = std::chrono::ceil<std::chrono::milliseconds>(when_ - Clock::now()).count();
    if (left <= 0) return 0;
    return left > INT_MAX ? INT_MAX : static_cast<int>(left);
  }

 private:
  using Clock = std::chrono::steady_clock;
  explicit LNetDeadline(Clock::time_point when) : when_(when) {}
  Clock::time_point when_;
};

// Asked between wait slices; true ends the wait with kStopped.
using LNetStopTest = std::function<bool()>;
