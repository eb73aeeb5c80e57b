// Fuzzes the amounts of the command line, CSV files and forms (LParseAmount) with every number
// of currency digits a damaged option could hold: no input may crash it, an amount read lies
// within the one ceiling, and formatting it then reading it back gives it again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "llib/gen/money.h"
#include "llib/gen/moneybounds.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  int digits = static_cast<int8_t>(data[0]);  // -128 .. 127, as "CurrencyDigits" might say
  std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);
  long long amount = 0;
  if (!LParseAmount(text, digits, amount)) return 0;
  if (!LMoneyIsWithinBounds(amount)) std::abort();
  long long again = 0;
  if (!LParseAmount(LFormatAmountPlain(amount, digits), digits, again) || again != amount) std::abort();
  return 0;
}
