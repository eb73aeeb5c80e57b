// Fuzzes the consolidation factors that a report's address and the consolidation page carry
// ("cons=0=1,1=0.5", "0,85" typed): no input may crash the reading, and a factor read is a
// finite number from a text of digits, one sign and one decimal separator at most.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "accounts/reportcatalog.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  double factor = 0;
  if (!LReportParseFactor(text, factor)) return 0;
  if (!std::isfinite(factor) || text.find_first_not_of("0123456789.,-") != std::string_view::npos) std::abort();
  return 0;
}
