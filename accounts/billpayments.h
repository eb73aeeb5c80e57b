// Bill payments: money paid to a supplier, posted as one "Paiements" transaction under a "PMT"
// reference: the payable account debited, the paying account credited, both lines carrying the
// payment's identifier (its key in the "BillPayments" list) as their document.
//
// Fields used: "Amount" (cents), "Date", "JournalTxnRef", "Notes", "Supplier", "DepositAccount"
// (the paying account's description, default "Compte-chèque"), "BillPaymentMethod". Unlike a
// bill, which stores its payable account as a number, a bill payment names its paying account
// by description.
//
// A payment settles bills of its supplier: "BillNumber" and "BillAmounts" are parallel
// comma-separated lists of the bills' references and the cents applied to each, and every bill
// caches the sum applied to it as "AmountPaid". The supplier's "Balance" falls by the payment's
// "Amount" whether it is applied or not (suppliers.h). Every change of a payment, its postings,
// its applications and the balances it moves happens under the ledger lock.
//
// A payment made by cheque names it in "ChequeNumber"; it can then only be applied, not changed
// (the cheque holds its figures). When the cheque is voided, the payment stays listed but counts
// for nothing: "Void" ("1"), "VoidDate" and "VoidTxnRef" (the reversal of its posting), its
// applications let go into "VoidBillNumber" and "VoidBillAmounts", from which they come back if
// the voiding is undone.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/payment.h"
#include "invoice/shared/purchaselists.h"
#include "llib/gen/record.h"

class LLedgerTransaction;
class LProfile;

inline constexpr std::string_view kDefaultPaymentAccount = "Compte-chèque";
inline constexpr std::string_view kBillPaymentKeysField = "BillNumber";
inline constexpr std::string_view kBillPaymentAmountsField = "BillAmounts";

class LBillPayment : public LRecord {};

struct LBillPaymentRequest {
  std::string supplier;       // supplier key
  long long amount = 0;       // cents paid
  std::string date;           // "YYYY-MM-DD"
  std::string payingAccount;  // description of the paying account; empty: "Compte-chèque"
  std::string notes;          // empty: "Paiements; " and the supplier
  std::string method;         // "BillPaymentMethod"; empty: none stored
  std::vector<LAppliedAmount> applications = {};  // bills settled (reference, cents), in order
  bool autoApply = false;     // instead: spread over the supplier's open bills, first due first
  std::string cheque = {};    // "ChequeNumber": the number of the cheque that is this payment
};

// What saving a new bill payment does, from the command line, the bank statements and the web:
// the payment is saved under the first free number of "BillPayments" (its key is its identifier
// in the ledger, so it is taken before posting), posted, and saved again with its reference;
// reference receives it; its applications are made and the supplier's balance falls by the
// amount. false with the French message in error when an application is refused (a bill that is
// not the supplier's, more than the bill still owes, more in all than the payment), or the record
// could not be made or the ledger written: no payment and no posting are left behind then.
[[nodiscard]] bool LBillPaymentCreate(LProfile& profile, const LBillPaymentRequest& request, std::string& reference,
                                      std::string& error);

// Changes the stored payment key to what request says (its key field aside): its applications
// are replaced, its posting made again under the same reference, the balances moved by what
// changed. Refused for a void payment, and for a cheque's payment anything but its applications
// and notes. false with the message in error; nothing is changed then.
[[nodiscard]] bool LBillPaymentEdit(LProfile& profile, std::string_view key, const LBillPaymentRequest& request,
                                    std::string& error);

// Sets what the payment key holds for bill to amount (0: lets go of the bill), the bill's
// "AmountPaid" following. Refused as LBillPaymentCreate refuses an application, and for a void
// payment. false with the message in error; nothing is changed then.
[[nodiscard]] bool LBillPaymentApply(LProfile& profile, std::string_view key, std::string_view bill, long long amount,
                                     std::string& error);

// Deletes the payment key: its applications are undone, its posting (and the reversal of a void
// payment) leaves the ledger, its amount goes back onto the supplier's balance. false with the message in error when there is no
// such payment.
[[nodiscard]] bool LBillPaymentDelete(LProfile& profile, std::string_view key, std::string& error);

// The part of the payment that settles no bill, in cents (none for a void payment).
long long LBillPaymentUnapplied(const LRecord& payment);
// Whether the payment was voided (its cheque cancelled).
bool LBillPaymentIsVoid(const LRecord& payment);
// What the payment takes off its supplier's balance: its "Amount", 0 once void.
long long LBillPaymentCountedAmount(const LRecord& payment);

// Voids the payment key, whose posting the caller reverses on date under voidReference: its
// applications are let go (the bills' "AmountPaid" falling back) and the supplier's balance takes
// the amount back. false with the message in error (no such payment, already void, not saved);
// nothing is changed then.
[[nodiscard]] bool LBillPaymentVoid(LProfile& profile, std::string_view key, std::string_view date,
                                    std::string_view voidReference, std::string& error);
// Undoes LBillPaymentVoid once the reversal has left the ledger: the payment counts again and
// takes back its former applications, each as far as its bill still owes it.
[[nodiscard]] bool LBillPaymentUnvoid(LProfile& profile, std::string_view key, std::string& error);

// What undoes a bill's applications when it goes: every payment lets go of bill (the bill's own
// "AmountPaid" is left to its caller). Callers hold the ledger lock.
void LBillPaymentsLetGo(LProfile& profile, std::string_view bill);
// A bill whose "Total" fell below its "AmountPaid" gives the excess back, taken off the latest
// payments first. Callers hold the ledger lock. false when a payment or the bill could not be saved.
[[nodiscard]] bool LBillGiveBackExcess(LProfile& profile, std::string_view bill);

// The posting of the payment under reference, as LBillPaymentRecordTransactions writes it.
void LBillPaymentBuildTransaction(LProfile& profile, const LRecord& payment, std::string_view reference,
                                  std::string_view userName, LLedgerTransaction& txn);
// Posts the payment (the record must already have its key). Reference: "JournalTxnRef" when set,
// otherwise the next bill-payment number (taken at once). Without notes the description is
// "Paiements; " and the supplier, saved into "Notes" as well. Afterwards "JournalTxnRef" holds
// the reference (the caller saves the record). false when the ledger could not be written.
[[nodiscard]] bool LBillPaymentRecordTransactions(LProfile& profile, LBillPayment& payment, std::string_view userName);

// The ledger's route for "Paiements": the bill payment document, when its "JournalTxnRef" is
// reference, is deleted with its postings. false when there is no such payment.
bool LBillPaymentDeleteForLedger(LProfile& profile, std::string_view document, std::string_view reference);
