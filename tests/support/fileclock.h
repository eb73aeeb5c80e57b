// Waiting past the tick of the clock that file times come from, so that what a test reads next
// is settled (llib/gen/filestamp.h) and a per-process copy of it is trusted without reading again.
#pragma once

#include <time.h>

#include <chrono>
#include <thread>

inline void LWaitFileClockTick() {
  timespec tick{0, 10000000};
  (void)::clock_getres(CLOCK_REALTIME_COARSE, &tick);
  std::this_thread::sleep_for(std::chrono::nanoseconds(2 * (tick.tv_sec * 1000000000LL + tick.tv_nsec)));
}
