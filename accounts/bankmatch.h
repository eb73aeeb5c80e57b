// Matching imported statement lines against the ledger lines of their bank account that are
// not reconciled yet and not held by another statement line.
//
// Candidates are the account's ledger lines of the same amount in cents (an index by amount)
// within a window of dates around the statement line: a few days either way, and for a cheque
// (the statement line carries a cheque number) from well before, since a cheque is cashed
// days or weeks after it was written. Each pair gets a score: the exact amount to start with,
// less the distance in days, plus the cheque number found in the ledger line, the ledger
// reference or a document number (the invoices a customer payment settles, the payment's own
// key) found in the statement's text, and the customer's or supplier's name found in it once
// both are reduced to plain words (no accents, no letter case, no bank prefixes such as
// "VIR SEPA", "PRLV" or "CB").
//
// Pairs are taken best first, one statement line to one ledger line. A pair whose line or
// ledger line has another candidate nearly as good is only suggested; the rest are matched.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "accounts/banklines.h"

class LProfile;

// One ledger line of the bank account that a statement line may stand for.
struct LBankLedgerLine {
  std::string date;         // "YYYY-MM-DD"
  std::string reference;
  std::string type;         // the transaction type ("Reçus", "Paiements", ...)
  std::string description;
  std::string document;     // the posting document's identifier, empty when none
  long long amount = 0;     // cents, debit-positive: money into the bank is positive
  long dayNumber = 0;       // of date
};

inline constexpr int kBankMatchDaysBefore = 7;        // ledger line this many days before the bank's
inline constexpr int kBankMatchDaysAfter = 7;         // or after it
inline constexpr int kBankMatchChequeDaysBefore = 90;  // a cheque written up to this long before
inline constexpr int kBankMatchNearTie = 15;          // score points that make two candidates a tie

// The plain words of a text: accents taken off, lower case, anything but letters and digits a
// blank, the bank's own prefixes ("vir", "sepa", "prlv", "cb", ...) dropped.
std::vector<std::string> LBankTextWords(std::string_view text);

// The account's ledger lines dated from..to (both "YYYY-MM-DD"), without those in its
// reconciliation file and those whose transaction (date, reference) is in held. present, when
// given, receives every transaction of the account in the range as "DATE REFERENCE" (reference
// in capitals), held ones included.
std::vector<LBankLedgerLine> LBankLoadLedgerLines(const LProfile& profile, std::string_view account,
                                                  std::string_view from, std::string_view to,
                                                  const std::vector<std::pair<std::string, std::string>>& held,
                                                  std::set<std::string>* present = nullptr);

// Pairs the lines of store.Lines() whose indexes are in pending (their status new or
// suggested) with ledger lines: each gets kMatched, kSuggested (ledger date and reference set)
// or kNew. Reads customers, suppliers and payments of profile for names and document numbers.
void LBankMatchLines(LProfile& profile, std::vector<LBankLine>& lines, const std::vector<std::size_t>& pending,
                     const std::vector<LBankLedgerLine>& ledger);
