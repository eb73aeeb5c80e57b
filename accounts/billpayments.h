// Bill payments: money paid to a supplier, posted as one "Paiements" transaction under a "PMT"
// reference: the payable account debited, the paying account credited, both lines carrying the
// payment's identifier (its key in the "BillPayments" list) as their document.
//
// Fields used: "Amount" (cents), "Date", "JournalTxnRef", "Notes", "Supplier", "DepositAccount"
// (the paying account's description, default "Compte-chèque"), "BillPaymentMethod". Unlike a
// bill, which stores its payable account as a number, a bill payment names its paying account
// by description.
#pragma once

#include <string>
#include <string_view>

#include "llib/gen/record.h"

class LProfile;

inline constexpr std::string_view kBillPaymentsList = "BillPayments";
inline constexpr std::string_view kDefaultPaymentAccount = "Compte-chèque";

class LBillPayment : public LRecord {};

struct LBillPaymentRequest {
  std::string supplier;       // supplier key
  long long amount = 0;       // cents paid
  std::string date;           // "YYYY-MM-DD"
  std::string payingAccount;  // description of the paying account; empty: "Compte-chèque"
  std::string notes;          // empty: "Paiements; " and the supplier
  std::string method;         // "BillPaymentMethod"; empty: none stored
};

// What saving a new bill payment does, from the command line, the bank statements and the web:
// the payment is saved under the first free number of "BillPayments" (its key is its identifier
// in the ledger, so it is taken before posting), posted, and saved again with its reference;
// reference receives it. false with the French message in error when the record could not be
// made or the ledger written: no payment and no posting are left behind then.
[[nodiscard]] bool LBillPaymentCreate(LProfile& profile, const LBillPaymentRequest& request, std::string& reference,
                                      std::string& error);

// Posts the payment (the record must already have its key). Reference: "JournalTxnRef" when set,
// otherwise the next bill-payment number (taken at once). Without notes the description is
// "Paiements; " and the supplier, saved into "Notes" as well. Afterwards "JournalTxnRef" holds
// the reference (the caller saves the record). false when the ledger could not be written.
[[nodiscard]] bool LBillPaymentRecordTransactions(LProfile& profile, LBillPayment& payment, std::string_view userName);

// The ledger's route for "Paiements": the bill payment document, when its "JournalTxnRef" is
// reference, is deleted with its postings. false when there is no such payment.
bool LBillPaymentDeleteForLedger(LProfile& profile, std::string_view document, std::string_view reference);
