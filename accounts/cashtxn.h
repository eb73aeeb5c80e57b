// Cash transactions: money received into or paid out of a cash or bank account, split over the
// accounts it came from or went to (accounts/splitlines.h). A receipt is posted as a "Reçus"
// transaction under the next receipts reference ("REC"), the cash account debited and each line
// credited; a payment as a "Paiements" transaction under the next payments reference ("PMT"), each
// line debited and the cash account credited. The record, in the list "CashTransactions", is keyed
// by that reference, so deleting the transaction from the journal deletes the record too.
//
// Fields: "Account", "Kind" ("Receipt" or "Payment"), "Date", "Amount" (cents), "Description",
// the lines, "JournalTxnRef".
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "accounts/splitlines.h"
#include "llib/gen/date.h"

class LAsker;
class LProfile;

inline constexpr std::string_view kCashTransactionsList = "CashTransactions";

struct LCashTxnRequest {
  std::string account;       // the cash or bank account's number
  bool receipt = true;       // money in; false: money out
  long long amount = 0;      // cents
  LDate date;
  std::string description;   // empty: "Encaissement" or "Décaissement"
  std::vector<LSplitLine> lines;
};

// Records and posts the transaction. Refused with message set and nothing written: an account
// that is not a live cash account, an amount that is not positive, the lines' checks, the date
// guard (its question asked through asker). On success key holds its key (its reference).
[[nodiscard]] bool LCashTxnRecord(LProfile& profile, LAsker& asker, const LCashTxnRequest& request, std::string& key,
                                  std::string* message);
// Deletes the record with its posting. false with message set when there is none.
[[nodiscard]] bool LCashTxnDelete(LProfile& profile, std::string_view key, std::string* message);
// The ledger's route: the record keyed by reference is deleted with its posting.
bool LCashTxnDeleteForLedger(LProfile& profile, std::string_view document, std::string_view reference);
