// The "fichier des écritures comptables" (FEC): the file of every journal line of a fiscal year
// that a French business hands to the tax administration at the start of an audit. One header
// line, then one line per journal line, eighteen fields in this order:
//
//     JournalCode|JournalLib|EcritureNum|EcritureDate|CompteNum|CompteLib|CompAuxNum|CompAuxLib|
//     PieceRef|PieceDate|EcritureLib|Debit|Credit|EcritureLet|DateLet|ValidDate|Montantdevise|Idevise
//
// Fields are separated by "|" (a tab is also allowed), dates are AAAAMMJJ, amounts have a decimal
// comma and no thousands separator, and each line fills one of Debit and Credit (the other reads
// "0,00"). An entry (écriture) is the set of lines of one journal that share an EcritureNum; the
// numbers run 1, 2, 3... within each journal in date order. The file is named
// SIRENFECAAAAMMJJ.txt from the company's SIREN and the last day of the fiscal year.
//
// fecexport.h writes the file from the books; feccheck.h checks any such file.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "llib/gen/date.h"

inline constexpr std::size_t kFecFieldCount = 18;
inline constexpr std::array<std::string_view, kFecFieldCount> kFecFieldNames = {
    "JournalCode", "JournalLib", "EcritureNum", "EcritureDate", "CompteNum",   "CompteLib",
    "CompAuxNum",  "CompAuxLib", "PieceRef",    "PieceDate",    "EcritureLib", "Debit",
    "Credit",      "EcritureLet", "DateLet",    "ValidDate",    "Montantdevise", "Idevise"};

// The position of each field in a line.
enum LFecField : std::size_t {
  kFecJournalCode, kFecJournalLib, kFecEcritureNum, kFecEcritureDate, kFecCompteNum, kFecCompteLib,
  kFecCompAuxNum, kFecCompAuxLib, kFecPieceRef, kFecPieceDate, kFecEcritureLib, kFecDebit,
  kFecCredit, kFecEcritureLet, kFecDateLet, kFecValidDate, kFecMontantdevise, kFecIdevise
};

// A day as AAAAMMJJ ("20241231").
std::string LFecDateText(const LDate& date);
// AAAAMMJJ back to a day; false (out unchanged) for anything but eight digits of a calendar day.
bool LFecParseDate(std::string_view text, LDate& out);
// Cents as an unsigned amount with a decimal comma: 123456 -> "1234,56", 0 -> "0,00"; the sign
// is dropped (the column says the side).
std::string LFecAmountText(long long cents, int digits);
// An amount field back to cents: digits with at most one decimal comma (or point), an optional
// leading sign. false (out unchanged) for anything else, an empty text included.
bool LFecParseAmount(std::string_view text, int digits, long long& out);
// The file name of the fiscal year that ends on closing: "123456789FEC20241231.txt".
std::string LFecFileName(std::string_view siren, const LDate& closing);
// A ledger reference as transactions are told apart: the ledger matches references without
// regard to letter case, so they are compared upper-cased.
std::string LFecReferenceKey(std::string_view reference);
// true when siren is nine digits.
bool LFecIsSiren(std::string_view siren);
