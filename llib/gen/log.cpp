#include "llib/gen/log.h"

#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <string>

#include "llib/gen/date.h"
#include "llib/gen/file.h"

namespace {

std::mutex& LogMutex() {
  static std::mutex mutex;
  return mutex;
}

std::function<void(LLogLevel, std::string_view)>& Sink() {
  static std::function<void(LLogLevel, std::string_view)> sink;
  return sink;
}

std::string_view LevelName(LLogLevel level) {
  switch (level) {
    case LLogLevel::kInfo: return "info";
    case LLogLevel::kWarning: return "avertissement";
    case LLogLevel::kError: return "erreur";
  }
  return "info";
}

void LogV(LLogLevel level, const char* format, va_list args) {
  char buffer[2048];
  int n = std::vsnprintf(buffer, sizeof buffer, format, args);
  if (n < 0) return;
  std::size_t length = std::min<std::size_t>(static_cast<std::size_t>(n), sizeof buffer - 1);
  LLogLine(level, std::string_view(buffer, length));
}

}  // namespace

void LLogLine(LLogLevel level, std::string_view text) {
  std::lock_guard<std::mutex> lock(LogMutex());
  if (Sink()) {
    Sink()(level, text);
    return;
  }
  std::string line = LDateTimeText(std::time(nullptr));
  line += " [";
  line += LevelName(level);
  line += "] ";
  line += text;
  line += '\n';
  (void)LRobustWrite(STDERR_FILENO, line.data(), line.size());  // nowhere left to report it
}

void LLogInfo(const char* format, ...) {
  va_list args;
  va_start(args, format);
  LogV(LLogLevel::kInfo, format, args);
  va_end(args);
}

void LLogWarning(const char* format, ...) {
  va_list args;
  va_start(args, format);
  LogV(LLogLevel::kWarning, format, args);
  va_end(args);
}

void LLogError(const char* format, ...) {
  va_list args;
  va_start(args, format);
  LogV(LLogLevel::kError, format, args);
  va_end(args);
}

void LLogSetSink(std::function<void(LLogLevel, std::string_view)> sink) {
  std::lock_guard<std::mutex> lock(LogMutex());
  Sink() = std::move(sink);
}
