// The log of the service: one line per event, in French, on standard error, each line opened by
// the local date and time and its level:
//
//     2024-05-01 09:12:44 [info] Démarrage du serveur Web...
//     2024-05-01 09:12:44 [erreur] Un autre programme utilise peut-être le port 1098.
//
// Lines come from any thread; each is written by one write(2), so lines of two threads never
// mix. Tests may divert the lines to a sink of their own.
#pragma once

#include <functional>
#include <string_view>

enum class LLogLevel { kInfo, kWarning, kError };

void LLogInfo(const char* format, ...) __attribute__((format(printf, 1, 2)));
void LLogWarning(const char* format, ...) __attribute__((format(printf, 1, 2)));
void LLogError(const char* format, ...) __attribute__((format(printf, 1, 2)));
void LLogLine(LLogLevel level, std::string_view text);

// Replaces where lines go (null: back to standard error). The sink receives the level and the
// text without date or line end; it is called under the log's mutex.
void LLogSetSink(std::function<void(LLogLevel, std::string_view)> sink);
