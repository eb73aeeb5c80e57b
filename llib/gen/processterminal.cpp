#include "llib/gen/processterminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "llib/gen/file.h"
#include "llib/gen/system.h"

namespace {

volatile sig_atomic_t gInterrupted = 0;  // set by SIGINT while a terminal display lives

void OnInterrupt(int) { gInterrupted = 1; }

constexpr int kRedrawIntervalMs = 100;   // the eye does not need more
constexpr int kWaitSliceMs = 50;         // how soon a Ctrl-C ends a wait
constexpr int kBarWidth = 30;            // characters between the brackets
constexpr int kBounceWidth = 6;          // the indeterminate block

int TerminalColumns(int fd) {
  winsize size{};
  if (::ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  return 80;
}

// At most maxBytes of text, not cutting a UTF-8 character in two.
std::string_view CutUtf8(std::string_view text, std::size_t maxBytes) {
  if (text.size() <= maxBytes) return text;
  std::size_t end = maxBytes;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return text.substr(0, end);
}

}  // namespace

LProcessTerminal::LProcessTerminal(std::string_view title, int fd)
    : fd_(fd), drawing_(LIsTerminal(fd)), title_(title) {
  gInterrupted = 0;
  struct sigaction onInterrupt {};
  onInterrupt.sa_handler = OnInterrupt;
  sigemptyset(&onInterrupt.sa_mask);
  ::sigaction(SIGINT, &onInterrupt, &previousInt_);
}

LProcessTerminal::~LProcessTerminal() {
  EndLine();
  ::sigaction(SIGINT, &previousInt_, nullptr);
}

bool LProcessTerminal::IsToStop() { return gInterrupted != 0; }

bool LProcessTerminal::ProcessWait(unsigned int ms) {
  for (;;) {
    if (IsToStop()) return true;
    if (ms == 0) return false;
    unsigned slice = std::min<unsigned>(ms, kWaitSliceMs);
    LSleepMs(slice);  // a signal cuts it short only to resume it: the slice keeps it short
    if (ms != UINT_MAX) ms -= slice;
  }
}

void LProcessTerminal::SetError(std::string_view text) { error_.assign(text); }

void LProcessTerminal::SetStatus(std::string_view text, int line) {
  if (line != 0) return;
  status_.assign(text);
  Draw(false);
}

void LProcessTerminal::SetProgress(double fraction) {
  fraction_ = std::clamp(std::isnan(fraction) ? 0.0 : fraction, 0.0, 1.0);
  Draw(fraction_ >= 1.0);
}

void LProcessTerminal::SetProgressIndeterminateOn() {
  indeterminate_ = true;
  Draw(true);
}

void LProcessTerminal::SetProgressIndeterminateOff() {
  indeterminate_ = false;
  Draw(true);
}

void LProcessTerminal::SetResultCode(LProcessResult, const void*, unsigned long) { EndLine(); }

void LProcessTerminal::Draw(bool force) {
  if (!drawing_) return;
  Clock::time_point now = Clock::now();
  if (!force && drawn_ && now - lastDraw_ < std::chrono::milliseconds(kRedrawIntervalMs)) return;
  drawn_ = true;
  lastDraw_ = now;

  std::string screen;
  if (!titleShown_) {
    screen.append(title_).append("\n");
    titleShown_ = true;
  }
  std::string bar(kBarWidth, '-');
  char percent[16] = "";
  if (indeterminate_) {
    bar.assign(kBarWidth, ' ');
    int span = kBarWidth - kBounceWidth;
    int step = bounce_++ % (2 * span);
    int at = step < span ? step : 2 * span - step;
    bar.replace(static_cast<std::size_t>(at), kBounceWidth, kBounceWidth, '#');
  } else {
    int filled = static_cast<int>(fraction_ * kBarWidth + 0.5);
    bar.replace(0, static_cast<std::size_t>(filled), static_cast<std::size_t>(filled), '#');
    std::snprintf(percent, sizeof percent, " %3d %%", static_cast<int>(fraction_ * 100 + 0.5));
  }
  std::string line = "[" + bar + "]" + percent;
  if (!status_.empty()) line.append("  ");
  int room = TerminalColumns(fd_) - 1 - static_cast<int>(line.size());
  if (room > 0) line.append(CutUtf8(status_, static_cast<std::size_t>(room)));
  // Back to the start of the line, the new line, then clear what the longer old one left.
  screen.append("\r").append(line).append("\x1b[K");
  (void)LRobustWrite(fd_, screen.data(), screen.size());  // a lost progress line harms nothing
  lineOpen_ = true;
}

void LProcessTerminal::EndLine() {
  if (!lineOpen_) return;
  Draw(true);
  (void)LRobustWrite(fd_, "\n", 1);
  lineOpen_ = false;
}
