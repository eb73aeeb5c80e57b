// What the business owes its suppliers. A supplier ("Suppliers" record) caches its "Balance":
// the cents owed to it, raised by the "Total" of each of its bills and lowered by the "Amount" of
// each of its bill payments. Bills and bill payments move it as they are saved, edited and deleted
// (bills.h, billpayments.h), always under the ledger lock, so a web user and the command line
// paying the same supplier at once never lose one another's change. `kontavo check` computes every
// balance again from the documents, and each bill's "AmountPaid" from the payments applied to it.
//
// A bill falls due on its "DueDate" when it has one, otherwise its "Date" plus the supplier's
// "PaymentTermsDays" (30 when absent).
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "invoice/shared/partyfields.h"

class LProfile;
class LRecord;
struct LCheckReport;

// Adds delta cents to the supplier's "Balance" and saves it; an unknown or empty key is ignored.
// Callers hold the ledger lock. false when the balance could not be saved.
[[nodiscard]] bool LSupplierChangeBalance(LProfile& profile, std::string_view supplier, long long delta);

// Told when a document was written but a supplier's balance or a bill's paid amount that follows it
// was not: the document stands, `kontavo check --fix` puts the figure right.
inline constexpr std::string_view kSupplierFiguresNotWrittenMessage =
    "Le solde du fournisseur ou le montant réglé d'une facture n'a pas pu être enregistré : « kontavo check --fix » le recalcule.";

// Each supplier's balance as its documents make it: bills' "Total" less bill payments' "Amount".
std::map<std::string, long long> LSupplierBalancesFromDocuments(LProfile& profile);

// The check of the purchase book: each supplier's "Balance" against its documents, and each
// bill's "AmountPaid" against what the bill payments hold for it. With fix the computed values
// are written.
void LCheckSupplierBalances(LProfile& profile, bool fix, LCheckReport& report);

// The first document that names the supplier, as the refusal of its deletion says it: "la facture
// PRC10000", "le règlement 3", "le bon de commande 2"; empty when none does.
std::string LSupplierFirstDocument(LProfile& profile, std::string_view supplier);
// Deletes the supplier, refused while a document names it ("Le fournisseur « X » ne peut pas être
// supprimé : la facture PRC10000 le nomme.") or when it does not exist. false with the message in
// *error; nothing is written then.
bool LSupplierDelete(LProfile& profile, std::string_view supplier, std::string* error);

// The due date of a bill ("YYYY-MM-DD"), see above.
std::string LBillDueDate(LProfile& profile, const LRecord& bill);

// The due dates of many bills, each supplier's terms read once: for what lists bills.
class LBillDueDates {
 public:
  explicit LBillDueDates(LProfile& profile) : profile_(profile) {}
  // As LBillDueDate.
  std::string Of(const LRecord& bill);

 private:
  LProfile& profile_;
  std::unordered_map<std::string, int> termsDays_;  // supplier key -> "PaymentTermsDays"
};

// A bill that is not paid in full.
struct LOpenBill {
  std::string key;       // the bill's reference
  std::string supplier;  // supplier key
  std::string date;      // "YYYY-MM-DD"
  std::string due;       // LBillDueDate
  long long total = 0;   // cents
  long long paid = 0;    // "AmountPaid", cents
  long long Outstanding() const { return total - paid; }
};
// The bills still owed, of one supplier (every supplier when supplier is empty), by due date then
// reference.
std::vector<LOpenBill> LOpenBills(LProfile& profile, std::string_view supplier);
