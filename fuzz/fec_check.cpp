// Fuzz target: the FEC checker over arbitrary bytes. A file handed in for checking comes from
// anywhere; no input may crash the checker, and its counts must stay within what the input
// holds: no more lines than line ends, no more entries than lines.
#include <cstdint>
#include <string_view>

#include "accounts/feccheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  LFecCheckReport report = LFecCheckText("732829320FEC20251231.txt", bytes);
  long long nLineEnds = 0;
  for (char c : bytes) nLineEnds += c == '\n';
  if (report.lineCount > nLineEnds || report.entryCount > report.lineCount) __builtin_trap();
  if (report.Passed() != report.faults.empty()) __builtin_trap();
  return 0;
}
