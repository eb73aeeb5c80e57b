// Signals between threads as pipes: a signal is set when its read end is readable, so a thread
// can wait for a signal together with sockets and other descriptors in one poll(2).
#pragma once

#include <vector>

class LSignalObject {
 public:
  LSignalObject();
  ~LSignalObject();
  LSignalObject(const LSignalObject&) = delete;
  LSignalObject& operator=(const LSignalObject&) = delete;

  void Set();         // writes one byte; setting twice is the same as once for waiters
  void Reset();       // drains the pipe
  bool IsSet() const; // the read end is readable
  // Waits up to ms for the signal; true when it is set.
  bool Wait(unsigned ms) const;
  int ReadFd() const { return fds_[0]; }

 private:
  int fds_[2] = {-1, -1};  // [0] read end, [1] write end, both non-blocking and close-on-exec
};

using LSignalObjectRef = const LSignalObject*;

// Several signals waited on together.
class LSignalObjectGroup {
 public:
  void Add(LSignalObjectRef signal) { signals_.push_back(signal); }
  // Index of a set signal within ms, or -1 on time-out.
  int Wait(unsigned ms) const;
  const std::vector<LSignalObjectRef>& Signals() const { return signals_; }

 private:
  std::vector<LSignalObjectRef> signals_;
};
