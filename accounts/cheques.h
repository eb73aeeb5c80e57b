// Cheques: money paid from a bank account to a payee, numbered per account. A cheque is a record
// of the "Cheques" list whose key is its ledger reference (a "PMT" number of the payments
// counter, as every "Paiements" transaction), so the ledger finds it again from a transaction.
//
//   - An ordinary cheque splits its amount over expense lines (accounts/splitlines.h) and is
//     posted as one "Paiements" transaction: each line's account debited, the bank credited.
//   - A cheque to a supplier pays bills: it is a bill payment (accounts/billpayments.h) made by
//     cheque, which posts the payable account against the bank and is applied to bills as any
//     bill payment is; the cheque keeps its key.
//   - Voiding keeps the cheque, marks it "Void" and posts the reversal of its transaction on the
//     void date, under the cheque's reference followed by "V"; a cheque to a supplier voids its
//     bill payment too (the bills and the supplier's balance as before the cheque). Deleting that
//     reversal from the journal brings the cheque back; deleting the cheque's own transaction
//     deletes the cheque.
//
// Fields: "Account" (the bank account's number), "Number" (digits), "Payee", "Date", "Amount"
// (cents), "Memo", the lines, "JournalTxnRef", "Supplier" and "BillPayment" (a cheque that pays
// bills), "Void" ("1"), "VoidDate", "VoidTxnRef". The bank account record keeps the next number
// to write in "NextChequeNumber" (1 when never set).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "accounts/splitlines.h"
#include "invoice/shared/payment.h"
#include "llib/gen/date.h"
#include "llib/gen/record.h"

class LAsker;
class LProfile;
struct LCheckReport;

inline constexpr std::string_view kChequesList = "Cheques";
inline constexpr std::string_view kChequeVoidSuffix = "V";
inline constexpr std::string_view kChequeMethod = "Chèque";

class LCheque : public LRecord {
 public:
  std::string GetAccount() const { return GetString("Account"); }
  std::string GetNumber() const { return GetString("Number"); }
  std::string GetPayee() const { return GetString("Payee"); }
  std::string GetDate() const { return GetString("Date"); }
  long long GetAmount() const { return GetInt64("Amount", 0); }
  bool IsVoid() const { return GetBool("Void", false); }
  // The bill payment it is, for a cheque that pays bills; empty otherwise.
  std::string GetBillPayment() const { return GetString("BillPayment"); }
};

struct LChequeRequest {
  std::string account;   // the bank account's number
  std::string number;    // digits; empty: the account's next number
  std::string payee;
  long long amount = 0;  // cents
  LDate date;
  std::string memo;      // the description of the posting; empty: "Chèque n° N; payee"
  std::vector<LSplitLine> lines;  // expense lines (none for a cheque that pays a supplier)
  std::string supplier;  // a supplier's key: the cheque pays that supplier's bills
  std::vector<LAppliedAmount> applications = {};  // for a supplier: the bills it settles (reference, cents)
  bool autoApply = false;  // instead: spread over the supplier's open bills, first due first
};

// The next number the account's cheques take.
long LChequeNextNumber(const LProfile& profile, std::string_view account);
// Sets it. false with message set when number is not a positive whole number or the account is
// not a bank account.
[[nodiscard]] bool LChequeSetNextNumber(const LProfile& profile, std::string_view account, std::string_view number,
                                        std::string* message);

// Writes and posts the cheque. Refused, with message set and nothing written: an account that is
// not a live cash account, an empty payee, an amount that is not positive, a number that is not
// digits or that the account's cheques already hold, for a supplier a key that names none, the
// lines' checks (LSplitLinesCheck), the applications' checks (LBillPaymentCreate), the date
// guard (its question asked through asker). On
// success key holds the new cheque's key (its reference) and the account's next number stands
// past the cheque's.
[[nodiscard]] bool LChequeWrite(LProfile& profile, LAsker& asker, const LChequeRequest& request, std::string& key,
                                std::string* message);

// Voids the cheque: its transaction reversed on date, the cheque (and its bill payment) marked.
// Refused (message set):
// no such cheque, already void, a date before the cheque's, the date guard, or the cheque's
// transaction gone from the ledger.
[[nodiscard]] bool LChequeVoid(LProfile& profile, LAsker& asker, std::string_view key, const LDate& date,
                               std::string* message);

// Deletes the cheque with its postings (its void reversal too; for a cheque that pays bills, its
// bill payment). false with message set when there is no such cheque.
[[nodiscard]] bool LChequeDelete(LProfile& profile, std::string_view key, std::string* message);

// The cheques whose account and number are these (normally one).
std::vector<std::string> LChequeFind(const LProfile& profile, std::string_view account, std::string_view number);
// The key of the cheque word names: a key ("PMT10003"), else a number (of account when account is
// not empty). false with "Le chèque n° N n'existe pas." or, when several accounts have a cheque
// of that number, "Plusieurs comptes ont un chèque n° N : précisez --account." in message.
[[nodiscard]] bool LChequeResolve(const LProfile& profile, std::string_view word, std::string_view account,
                                  std::string& key, std::string* message);
// The key of the cheque that made the bill payment payment; empty when no cheque did.
std::string LChequeOfBillPayment(const LProfile& profile, std::string_view payment);
// Every cheque's key, in key order.
std::vector<std::string> LChequeKeys(const LProfile& profile);

// Part of `kontavo check`: each cheque that pays bills against its bill payment, reported as
// problems (nothing a fix could choose between): a payment gone, an amount or a supplier that
// differs, one of the two void and not the other.
void LCheckChequePayments(LProfile& profile, LCheckReport& report);

// The ledger's route: reference is a cheque's own transaction (the cheque is deleted) or its void
// reversal (the cheque is void no more). false when it is neither.
bool LChequeDeleteForLedger(LProfile& profile, std::string_view document, std::string_view reference);
