// The readers of the statement formats, one per format, all filling the one statement model
// (accounts/statementfile.h). Each takes the file's bytes as they are (character set found by
// the reader), the business's currency (its digits; its format for the refusal of an amount
// beyond the ceiling, which names the ceiling), and appends one LStatementAccount per statement
// of the file. false with a French message in error when the file cannot be read as that
// format or a line cannot be read whole (its date or amount): a statement is imported whole or
// not at all. statements may then hold part of what was read; callers drop it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "accounts/statementfile.h"

struct LCurrencyFormat;
struct LStatementCsvMap;

// OFX and QFX, SGML or XML form: every bank ("BANKMSGSRSV*") and credit-card
// ("CREDITCARDMSGSRSV*") statement, one entry each. A file without any (an investment
// statement) is refused.
[[nodiscard]] bool LStatementReadOFX(std::string_view bytes, const LCurrencyFormat& currency,
                                     std::vector<LStatementAccount>& statements, std::string& error);
// camt.053 (and the same entries of camt.052 reports): one entry per "Stmt"; booked entries
// only; opening balance "OPBD" (or "PRCD"), closing "CLBD".
[[nodiscard]] bool LStatementReadCamt(std::string_view bytes, const LCurrencyFormat& currency,
                                      std::vector<LStatementAccount>& statements, std::string& error);
// CFONB 120: records 01 (old balance), 04 (movement), 05 (complement of the movement before),
// 07 (new balance), of 120 characters, with or without line ends. Successive statements of one
// account whose balances follow on are one entry.
[[nodiscard]] bool LStatementReadCFONB(std::string_view bytes, const LCurrencyFormat& currency,
                                       std::vector<LStatementAccount>& statements, std::string& error);
// QIF: the records of bank, cash and card sections ("!Type:Bank", "!Type:CCard", ...); an
// "!Account" block names the account of the sections after it.
[[nodiscard]] bool LStatementReadQIF(std::string_view bytes, const LCurrencyFormat& currency,
                                     std::vector<LStatementAccount>& statements, std::string& error);
// MT940: fields :25: (account), :60F:/:60M: (opening), :61: and :86: (lines), :62F:/:62M:
// (closing); successive statements of one account are one entry.
[[nodiscard]] bool LStatementReadMT940(std::string_view bytes, const LCurrencyFormat& currency,
                                       std::vector<LStatementAccount>& statements, std::string& error);
// CSV through a column mapping (accounts/statementcsv.h).
[[nodiscard]] bool LStatementReadCSV(std::string_view bytes, const LCurrencyFormat& currency, const LStatementCsvMap& map,
                                     std::vector<LStatementAccount>& statements, std::string& error);
