#include "app/cliprogress.h"

#include <ostream>
#include <string>

namespace {
constexpr int kBarWidth = 30;  // characters between the brackets
}

LCliProgress::~LCliProgress() {
  if (drawing_ && lastPercent_ >= 0) err_ << "\n";
}

void LCliProgress::SetProgress(double fraction) {
  if (!drawing_) return;
  if (fraction < 0) fraction = 0;
  if (fraction > 1) fraction = 1;
  int percent = static_cast<int>(fraction * 100);
  if (percent == lastPercent_) return;  // redraw only when the figure changes
  lastPercent_ = percent;
  int filled = percent * kBarWidth / 100;
  err_ << "\r[" << std::string(static_cast<std::size_t>(filled), '#')
       << std::string(static_cast<std::size_t>(kBarWidth - filled), ' ') << "] " << percent << " % "
       << GetStatus(0) << std::flush;
}
