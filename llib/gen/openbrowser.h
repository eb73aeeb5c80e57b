// Opening a page in the user's browser: the desktop's own handler (xdg-open) chooses the browser.
// The call never waits for the browser, and does nothing without a graphical session.
#pragma once

#include <string>

// Starts xdg-open on url when a display (X11 or Wayland) is present. true when it was started;
// false without a display or when xdg-open cannot be run (the caller then shows the address).
[[nodiscard]] bool LOpenInBrowser(const std::string& url);
