// The small readings every statement format needs: the file's bytes as UTF-8 (byte-order marks
// of UTF-8 and UTF-16 honoured, anything that is not valid UTF-8 read as Windows-1252, of which
// Latin-1 is a part), amounts written with a decimal comma or point, and dates in the orders
// banks write them.
#pragma once

#include <string>
#include <string_view>

#include "llib/gen/utf8.h"

struct LCurrencyFormat;

// The text as UTF-8: a UTF-8 mark is dropped, UTF-16 (either byte order, with its mark, or
// without a mark when every other byte is NUL) converted, and text that is not valid UTF-8
// converted from Windows-1252.
std::string LStatementTextToUtf8(std::string_view bytes);

// An amount as banks write it: optional sign (or trailing sign, or parentheses), digits with
// blanks, apostrophes or the other separator between thousands, and decimalMark ('.' or ',')
// before at most digits decimals; decimalMark 0 takes whichever of '.' and ',' comes last.
// false for anything else (out unchanged).
[[nodiscard]] bool LStatementParseAmount(std::string_view text, char decimalMark, int digits, long long& out);
// Why LStatementParseAmount refused text, when it is an amount beyond the ceiling: "Montant trop
// grand pour <what> : <text> (plafond 99 999 999 999,99 €)." (llib/gen/moneybounds.h), the
// ceiling in the business's currency. Empty for anything else: the reader then says that the
// amount cannot be read.
std::string LStatementAmountBeyondCeiling(std::string_view what, std::string_view text, char decimalMark,
                                          const LCurrencyFormat& currency);

// Dates: "YYYYMMDD", "YYYY-MM-DD", "DD/MM/YYYY", "DD.MM.YYYY", "DD-MM-YYYY", two-digit years as
// 20xx, and with dayFirst false "MM/DD/YYYY". The result is "YYYY-MM-DD" of a real day; false
// otherwise.
[[nodiscard]] bool LStatementParseDate(std::string_view text, bool dayFirst, std::string& out);

// Text with its blanks at both ends and runs of blanks inside made one blank.
std::string LStatementCleanText(std::string_view text);

// The number of a cheque named at the start of a statement text ("CHEQUE 1234", "CHQ N°
// 0001234", "Chèque 1234"); empty when the text does not begin so.
std::string LStatementChequeNumber(std::string_view text);

// The decimal digits of text, in order.
std::string LStatementDigits(std::string_view text);
// ASCII letters of text in capitals (references are compared so).
std::string LAsciiUpper(std::string_view text);
