// Fuzzes the dates of the command line and of documents (LDate::Parse): no input may crash it,
// a date read is a real calendar day, and its text reads back as the same day.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "llib/gen/date.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  LDate date;
  if (!LDate::Parse(text, date)) return 0;
  if (!date.IsValid() || date.ToText() != text) std::abort();
  LDate again;
  if (!LDate::Parse(date.ToText(), again) || again != date) std::abort();
  if (LDate::FromDayNumber(date.DayNumber()) != date) std::abort();
  return 0;
}
