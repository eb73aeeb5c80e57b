// The progress of a long operation on the command line: a bar redrawn on stderr when stderr is a
// terminal, nothing otherwise. The operation's title (status line 0) is shown beside the bar.
#pragma once

#include <iosfwd>

#include "llib/gen/process.h"

class LCliProgress : public LProcessInterfaceRecorder {
 public:
  // Draws on err when drawing is true (callers pass LIsTerminal(2)).
  LCliProgress(std::ostream& err, bool drawing) : err_(err), drawing_(drawing) {}
  // Ends the bar's line when one was drawn.
  ~LCliProgress() override;

  void SetProgress(double fraction) override;

 private:
  std::ostream& err_;
  bool drawing_;       // stderr is a terminal
  int lastPercent_ = -1;  // last percentage drawn, -1 before the first
};
