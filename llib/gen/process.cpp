#include "llib/gen/process.h"

#include <cstdarg>
#include <cstdio>

#include "llib/gen/file.h"

namespace {

std::string FormatV(const char* format, va_list args) {
  va_list copy;
  va_copy(copy, args);
  int size = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  std::string text(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
  if (size > 0) std::vsnprintf(text.data(), text.size() + 1, format, args);
  return text;
}

// Waits in slices so a stop request is seen within one slice.
constexpr unsigned kWaitSliceMs = 100;

}  // namespace

void LProcessInterface::SetStatusF(int line, const char* format, ...) {
  va_list args;
  va_start(args, format);
  std::string text = FormatV(format, args);
  va_end(args);
  SetStatus(text, line);
}

void LProcessInterface::SetErrorF(const char* format, ...) {
  va_list args;
  va_start(args, format);
  std::string text = FormatV(format, args);
  va_end(args);
  SetError(text);
}

bool LProcessInterface::ProcessWaitSignal(LSignalObjectRef signal, unsigned int ms) {
  for (;;) {
    if (IsToStop()) return false;
    unsigned slice = ms < kWaitSliceMs ? ms : kWaitSliceMs;
    if (signal->Wait(slice)) return true;
    if (ms != UINT_MAX) {
      ms -= slice;
      if (ms == 0) return false;
    }
  }
}

int LProcessInterface::ProcessWaitSignalObjectGroup(LSignalObjectGroup& group, unsigned int ms) {
  for (;;) {
    if (IsToStop()) return -1;
    unsigned slice = ms < kWaitSliceMs ? ms : kWaitSliceMs;
    int index = group.Wait(slice);
    if (index >= 0) return index;
    if (ms != UINT_MAX) {
      ms -= slice;
      if (ms == 0) return -1;
    }
  }
}

bool LProcessInterfaceVoid::ProcessWait(unsigned int ms) {
  LSleepMs(ms);
  return false;
}
