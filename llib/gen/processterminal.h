// LProcessTerminal: the progress display of a long operation run from the command line. When its
// output (standard error by default) is a terminal it draws the title once, then one line that
// it redraws in place: a bar, the percentage and the first status line,
//
//     Fichiers de sauvegarde
//     [##########--------------------]  33 %  Customers
//
// and a bouncing block while the progress is indeterminate. On anything else (a file, a pipe) it
// writes nothing, so scripts see only the command's own output.
//
// Ctrl-C asks the operation to stop: while the object lives, SIGINT sets the stop flag that
// IsToStop reports, and the operation ends at its next safe point as cancelled. One terminal
// display lives at a time (the flag is the process's); the previous SIGINT handling is put back
// on destruction.
#pragma once

#include <signal.h>

#include <chrono>
#include <string>
#include <string_view>

#include "llib/gen/process.h"

class LProcessTerminal : public LProcessInterface {
 public:
  explicit LProcessTerminal(std::string_view title, int fd = 2);
  ~LProcessTerminal() override;
  LProcessTerminal(const LProcessTerminal&) = delete;
  LProcessTerminal& operator=(const LProcessTerminal&) = delete;

  // true once Ctrl-C was pressed (SIGINT received) while the display lived.
  bool IsToStop() override;
  // Sleeps ms, ended early by Ctrl-C; true when stopped.
  bool ProcessWait(unsigned int ms) override;
  // Kept for the caller (GetError); not drawn.
  void SetError(std::string_view text) override;
  void SetStatus(std::string_view text, int line) override;
  void SetProgress(double fraction) override;
  void SetProgressIndeterminateOn() override;
  void SetProgressIndeterminateOff() override;
  // Ends the display: the bar line is finished with a line end.
  void SetResultCode(LProcessResult result, const void* data, unsigned long size) override;

  const std::string& GetError() const { return error_; }
  bool IsDrawing() const { return drawing_; }

 private:
  using Clock = std::chrono::steady_clock;
  // Redraws the bar line; at most every 100 ms unless forced.
  void Draw(bool force);
  void EndLine();

  int fd_;                          // where the display goes
  bool drawing_;                    // fd_ is a terminal
  std::string title_;               // shown once above the bar
  bool titleShown_ = false;
  bool lineOpen_ = false;           // a bar line is on screen without its line end
  std::string status_;              // status line 0
  std::string error_;               // the last error text
  double fraction_ = 0;             // 0 to 1
  bool indeterminate_ = false;
  int bounce_ = 0;                  // position of the indeterminate block
  bool drawn_ = false;              // lastDraw_ is meaningful
  Clock::time_point lastDraw_;
  struct sigaction previousInt_;    // SIGINT handling to put back
};

// Runs Process(display, data) under a terminal display titled title. error (may be null)
// receives the error text of a failure.
template <class T>
LProcessResult LProcessRunOnTerminal(std::string_view title, T& data, std::string* error = nullptr) {
  LProcessTerminal display(title);
  LProcessResult result = Process(display, data);
  display.SetResultCode(result, nullptr, 0);
  if (error != nullptr) *error = display.GetError();
  return result;
}
