// Fuzz target: the whole-file OFX reader (both forms) over arbitrary bytes (see
// statement_support.h).
#include <cstdint>

#include "accounts/statementreaders.h"
#include "llib/gen/money.h"
#include "fuzz/statement_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  std::vector<LStatementAccount> statements;
  std::string error;
  bool read = LStatementReadOFX(bytes, LCurrencyFormat{}, statements, error);
  LFuzzCheckStatements(read, statements, error);
  return 0;
}
