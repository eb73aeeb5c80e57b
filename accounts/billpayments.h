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

// Posts the payment (the record must already have its key). Reference: "JournalTxnRef" when set,
// otherwise the next bill-payment number (taken at once). Without notes the description is
// "Paiements; " and the supplier, saved into "Notes" as well. Afterwards "JournalTxnRef" holds
// the reference (the caller saves the record). false when the ledger could not be written.
[[nodiscard]] bool LBillPaymentRecordTransactions(LProfile& profile, LBillPayment& payment, std::string_view userName);

// What saving a new bill payment does, from the command line as from the web: payment (detached,
// its fields set) is created in "BillPayments" under the first free key, which it needs before
// posting as it is the payment's identifier in the ledger, then posted and saved again with its
// reference. false when the record or the ledger could not be written, with the French message
// in error (may be null): no payment is left behind then.
[[nodiscard]] bool LBillPaymentCreate(LProfile& profile, LBillPayment& payment, std::string_view userName,
                                      std::string* error = nullptr);

// The ledger's route for "Paiements": the bill payment document, when its "JournalTxnRef" is
// reference, is deleted with its postings. false when there is no such payment.
bool LBillPaymentDeleteForLedger(LProfile& profile, std::string_view document, std::string_view reference);
