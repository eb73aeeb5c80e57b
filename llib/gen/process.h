// Long-running processes. Every long operation is one free function over a data object,
//     LProcessResult Process(LProcessInterface& process, T& data);
// that reports progress and status through the interface and asks it whether to stop, at safe
// points of its own. It does not know whether it runs on a terminal with a progress bar,
// silently (LProcessInterfaceVoid) or in a worker process (LProcessAsExeInterface).
#pragma once

#include <climits>
#include <string>
#include <string_view>

#include "llib/gen/signalobject.h"

// The result of a process.
enum LProcessResult : int {
  kProcessFinished = 0,
  kProcessCancelled = 1,  // the user asked to stop
  kProcessFailed = 2,     // an error text was set
};

class LProcessInterface {
 public:
  virtual ~LProcessInterface() = default;
  // true once the user asked to stop.
  virtual bool IsToStop() = 0;
  // Waits ms milliseconds; true when a stop was asked meanwhile (the wait ends early then).
  virtual bool ProcessWait(unsigned int ms) = 0;
  virtual void SetError(std::string_view text) = 0;
  // line 0, 1 or 2 of the status area.
  virtual void SetStatus(std::string_view text, int line) = 0;
  // fraction from 0 to 1.
  virtual void SetProgress(double fraction) = 0;
  virtual void SetProgressIndeterminateOn() = 0;
  virtual void SetProgressIndeterminateOff() = 0;
  virtual void SetResultCode(LProcessResult result, const void* data, unsigned long size) = 0;
  // Waits up to ms for the signal; true when it was set (false on time-out or stop).
  virtual bool ProcessWaitSignal(LSignalObjectRef signal, unsigned int ms);
  // Index of the signal that was set, or -1 on time-out or stop.
  virtual int ProcessWaitSignalObjectGroup(LSignalObjectGroup& group, unsigned int ms);

  void SetStatusF(int line, const char* format, ...) __attribute__((format(printf, 3, 4)));
  void SetErrorF(const char* format, ...) __attribute__((format(printf, 2, 3)));
  bool ProcessWaitUntilStopped() { return ProcessWait(UINT_MAX); }
  bool ProcessWaitSignalForever(LSignalObjectRef signal) { return ProcessWaitSignal(signal, UINT_MAX); }
  int ProcessWaitSignalObjectGroupForever(LSignalObjectGroup& group) {
    return ProcessWaitSignalObjectGroup(group, UINT_MAX);
  }
};

// No display, never stops; waits sleep.
class LProcessInterfaceVoid : public LProcessInterface {
 public:
  bool IsToStop() override { return false; }
  bool ProcessWait(unsigned int ms) override;
  void SetError(std::string_view) override {}
  void SetStatus(std::string_view, int) override {}
  void SetProgress(double) override {}
  void SetProgressIndeterminateOn() override {}
  void SetProgressIndeterminateOff() override {}
  void SetResultCode(LProcessResult, const void*, unsigned long) override {}
};

// Keeps the last error and status texts; the base of the runners that show them.
class LProcessInterfaceRecorder : public LProcessInterfaceVoid {
 public:
  void SetError(std::string_view text) override { error_.assign(text); }
  void SetStatus(std::string_view text, int line) override {
    if (line >= 0 && line < 3) status_[line].assign(text);
  }
  const std::string& GetError() const { return error_; }
  const std::string& GetStatus(int line) const { return status_[line]; }

 private:
  std::string error_;
  std::string status_[3];
};
