// Fuzz target: the CSV statement reader and its column mapping over arbitrary bytes. The first
// line of the input is taken as the mapping text (when it reads as one), the rest as the file;
// the mapping guessed from the headings is tried too. See statement_support.h.
#include <cstdint>

#include "accounts/statementcsv.h"
#include "accounts/statementreaders.h"
#include "llib/gen/money.h"
#include "fuzz/statement_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  std::size_t lineEnd = bytes.find('\n');
  std::string_view mapText = bytes.substr(0, lineEnd);
  std::string_view file = lineEnd == std::string_view::npos ? std::string_view() : bytes.substr(lineEnd + 1);
  LStatementCsvMap map;
  std::string error;
  if (LStatementCsvMapParse(mapText, map, error)) {
    LStatementCsvMap again;
    LFuzzCheck(LStatementCsvMapParse(LStatementCsvMapText(map), again, error));
    LFuzzCheck(LStatementCsvMapText(again) == LStatementCsvMapText(map));
    std::vector<LStatementAccount> statements;
    bool read = LStatementReadCSV(file, LCurrencyFormat{}, map, statements, error);
    LFuzzCheckStatements(read, statements, error);
  }
  LStatementCsvMap guessed;
  if (LStatementCsvMapGuess(bytes, guessed)) {
    std::vector<LStatementAccount> statements;
    bool read = LStatementReadCSV(bytes, LCurrencyFormat{}, guessed, statements, error);
    LFuzzCheckStatements(read, statements, error);
  }
  return 0;
}
