#include "accounts/bills.h"

#include <cmath>
#include <cstdio>
#include <vector>

#include "accounts/accounts.h"
#include "accounts/auditpending.h"
#include "accounts/audittrail.h"
#include "accounts/billpayments.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "accounts/ledgerlock.h"
#include "accounts/purchaseintent.h"
#include "accounts/references.h"
#include "accounts/suppliers.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/stock.h"
#include "llib/gen/money.h"
#include "llib/gen/moneybounds.h"

namespace {

std::string ItemField(int line, std::string_view name) {
  char field[64];
  std::snprintf(field, sizeof field, "Item%d%.*s", line, static_cast<int>(name.size()), name.data());
  return field;
}

std::string NumberedField(std::string_view name, int number) {
  char field[64];
  std::snprintf(field, sizeof field, "%.*s%d", static_cast<int>(name.size()), name.data(), number);
  return field;
}

std::string SlotAccount(const LProfile& profile, int slot) {
  std::string number;
  LOptions::GetDefAccountNumber(profile, slot, number);
  return number;
}

// The stock movement identifier of a bill: "Bills/PRC10000".
std::string StockDocument(std::string_view key) { return std::string(kBillsList) + "/" + std::string(key); }

std::vector<std::string> StockCodes(const LBill& bill) {
  std::vector<std::string> codes;
  if (!bill.MovesStock()) return codes;
  for (int line = 1; line <= bill.GetItemCount(); ++line) codes.push_back(bill.GetString(ItemField(line, "Code")));
  return codes;
}

// The goods of the bill come in on its date at their net unit cost; previousCodes are the items
// its stored version moved.
bool MoveStock(LProfile& profile, const LBill& bill, const std::vector<std::string>& previousCodes, std::string* error) {
  std::vector<LStockLine> lines;
  if (bill.MovesStock()) {
    for (int line = 1; line <= bill.GetItemCount(); ++line) {
      std::string code = bill.GetString(ItemField(line, "Code"));
      double quantity = bill.GetFloat(ItemField(line, "Qty"), 1.0);
      if (code.empty() || quantity == 0) continue;
      lines.push_back({code, quantity, LStockMoveValue(1 / quantity, bill.GetItemAmount(profile, line))});
    }
  }
  if (lines.empty() && previousCodes.empty()) return true;
  return LStockReplaceDocumentMoves(profile, StockDocument(bill.GetPrimaryKey()), bill.GetString("Date").substr(0, 10),
                                    lines, previousCodes, error);
}

}  // namespace

// ---- The bill ---------------------------------------------------------------------------------

std::string LBill::GetAccount(const LProfile& profile) const {
  std::string account = GetString("DepositAccount");
  return account.empty() ? SlotAccount(profile, 7) : account;
}

std::string LBill::GetItemAccount(int line) const { return GetString(ItemField(line, "Account")); }
std::string LBill::GetItemTaxName(int line) const { return GetString(ItemField(line, "TaxName")); }
bool LBill::MovesStock() const { return GetString("POrderNumber").empty(); }
long long LBill::GetTaxAmount(int tax) const { return GetInt64(NumberedField("TaxAmount", tax), 0); }

long long LBill::GetItemAmount(const LProfile& profile, int line) const {
  int currencyDigits = profile.GetCurrencyDigits();
  int digits = GetInt(ItemField(line, "UnitValueDigits"), -1);
  if (digits < 0) digits = currencyDigits;
  // A bill's line is a document's line without discount, scaled the same way.
  return LLineAmount(GetInt64(ItemField(line, "UnitValue"), 0), GetFloat(ItemField(line, "Qty"), 1.0), 0,
                     std::abs(digits - currencyDigits));
}

void LBill::AddItemLine(std::string_view account, long long amount, std::string_view taxName) {
  int line = GetItemCount() + 1;
  SetString(ItemField(line, "Account"), account);
  SetFloat(ItemField(line, "Qty"), 1.0);
  SetInt64(ItemField(line, "UnitValue"), amount);
  SetString(ItemField(line, "TaxName"), taxName);
  SetInt("ItemCount", line);
}

// ---- Options ----------------------------------------------------------------------------------

void LBillOptions::OpenFrom(const LProfile& profile) { profile.List(kMiscList).OpenAlways(*this, "Bill"); }

std::string LBillOptions::GetAccountsPayable(const LProfile& profile) const {
  std::string description = GetString("AccountsPayable");
  if (!description.empty()) return description;
  LAccount account;
  if (LAccountList(profile).Open(account, SlotAccount(profile, 7))) return account.GetDescription();
  return {};
}

int LBillTaxCount(const LProfile& profile) {
  LRecord tax;
  profile.List(kMiscList).Open(tax, "Tax");
  return tax.GetInt("TaxSystem", 0);
}

std::string LBillTaxPaidAccountNumber(const LProfile& profile, int tax) {
  LRecord taxOptions;
  profile.List(kMiscList).Open(taxOptions, "Tax");
  std::string description = taxOptions.GetString(NumberedField("TaxAccountPaid", tax));
  std::string number = description.empty() ? std::string() : LGetAccountNumberUsingDescription(profile, description);
  return number.empty() ? SlotAccount(profile, 6) : number;
}

// ---- Posting ----------------------------------------------------------------------------------

namespace {

// The bill's "JournalTxnRef", or the next purchases number not already a bill's identifier (empty
// when the counter could not be written).
std::string BillReference(LProfile& profile, const LBill& bill) {
  std::string reference = bill.GetString("JournalTxnRef");
  return reference.empty() ? LBillTakeReference(profile) : reference;
}

}  // namespace

std::string LBillTakeReference(LProfile& profile) {
  std::string prefix = LReferencePrefix(profile, kPurchasesCounter);
  LFileStoreListBase bills = profile.List(kBillsList);
  int number = LTakeReferenceNumber(profile, kPurchasesCounter, [&](int candidate) {
    return bills.TestRecordExists(LFormatReference(prefix, candidate));
  });
  return number == 0 ? std::string() : LFormatReference(prefix, number);
}

bool LBillRecordTransactions(LProfile& profile, LBill& bill, std::string_view userName) {
  std::string reference = BillReference(profile, bill);
  if (reference.empty()) return false;
  LLedgerTransaction txn;
  LBillBuildTransaction(profile, bill, reference, userName, txn);
  bool recorded = LAccountTransactionRecord(profile, txn);
  bill.SetPrimaryKey(reference);
  bill.SetString("JournalTxnRef", reference);
  return recorded;
}

void LBillBuildTransaction(const LProfile& profile, const LBill& bill, std::string_view reference,
                           std::string_view userName, LLedgerTransaction& txn) {
  std::string notes = bill.GetString("Notes");
  txn = LLedgerTransaction(bill.GetString("Date"), reference, kTxnTypePurchase);
  txn.AddLine(bill.GetAccount(profile), notes, -bill.GetInt64("Total", 0), userName, "", reference);
  for (int line = 1; line <= bill.GetItemCount(); ++line)
    txn.AddLine(bill.GetItemAccount(line), notes, bill.GetItemAmount(profile, line), userName,
                bill.GetItemTaxName(line), reference);
  for (int tax = 1, nTaxes = LBillTaxCount(profile); tax <= nTaxes; ++tax) {
    long long amount = bill.GetTaxAmount(tax);
    if (amount != 0) txn.AddLine(LBillTaxPaidAccountNumber(profile, tax), notes, amount, userName, reference, "");
  }
}

long long LBillSumTotal(const LProfile& profile, const LBill& bill) {
  long long total = 0;
  for (int line = 1; line <= bill.GetItemCount(); ++line) total = LMoneySum(total, bill.GetItemAmount(profile, line));
  for (int tax = 1, nTaxes = LBillTaxCount(profile); tax <= nTaxes; ++tax) total = LMoneySum(total, bill.GetTaxAmount(tax));
  return total;
}

bool LBillSave(LProfile& profile, LBill& bill, std::string_view userName, std::string* warning) {
  bill.SetInt64("Total", LBillSumTotal(profile, bill));
  LFileStoreListBase bills = profile.List(kBillsList);
  LLedgerLock lock(profile);
  LPurchaseChangeIntent intent(profile);
  // The reference is taken first: it is the bill's key, which the trail names.
  std::string reference = BillReference(profile, bill);
  if (reference.empty()) return false;
  bill.SetPrimaryKey(reference);
  bill.SetString("JournalTxnRef", reference);
  // The bill stored under that reference, if any. An empty record file is a reference taken for a
  // bill not written yet (a purchase order being billed claims its order with it first): new.
  bool stored = false;
  std::string oldSupplier;
  long long oldTotal = 0, paid = 0;
  std::vector<std::string> oldCodes;
  std::string previousDate;
  if (LBill old; bills.Open(old, reference)) {
    stored = !old.Fields().empty();
    previousDate = old.GetString("Date");
    oldSupplier = old.GetString("Supplier");
    oldTotal = old.GetInt64("Total", 0);
    paid = old.GetInt64("AmountPaid", 0);
    oldCodes = StockCodes(old);
    old.DetachWithoutSave();
  }
  // The trail records the bill as it will stand before anything changes; without it, nothing does.
  // Should the bill's record not be written after all, a "cancel" entry follows (auditpending.h).
  std::string_view action = stored ? kAuditEdit : kAuditRecord;
  LAuditPending audit(profile, LAuditDocumentEvent(action, kBillTitle, reference, bill), bills.MakeRecordPath(reference));
  if (!audit.Append()) return false;
  // The posting a stored bill of that reference made, taken out first and put back on failure.
  LLedgerTransaction previous;
  bool replacing = false;
  intent.NoteBill(reference, previousDate, bill.GetString("Date"));
  if (stored)
    replacing = LLedgerTransactionLoad(profile, previous, previousDate, reference) &&
                LAccountTransactionDelete(profile, previousDate, reference);
  auto restore = [&] { return !replacing || LAccountTransactionRecord(profile, previous); };
  if (!LBillRecordTransactions(profile, bill, userName)) {
    (void)restore();  // a ledger that refused the new posting may refuse the old one: nothing more to do
    return false;
  }
  // The payments applied to the bill stay with it, as long as it is still their supplier's.
  bool keepsPayments = stored && oldSupplier == bill.GetString("Supplier");
  bill.SetInt64("AmountPaid", keepsPayments ? paid : 0);
  LBill record;
  bills.OpenAlways(record, bill.GetPrimaryKey());
  // Field by field, so that what the new bill no longer has (a line fewer, no due date) goes too.
  std::vector<std::string> gone;
  for (const auto& field : record.Fields())
    if (!field.deleted && !bill.TestFieldExists(field.name)) gone.push_back(field.name);
  for (const std::string& name : gone) record.DeleteField(name);
  for (const auto& field : bill.Fields())
    if (!field.deleted) record.SetString(field.name, field.text);
  if (!record.Flush()) {
    record.DetachWithoutSave();
    (void)LAccountTransactionDelete(profile, bill.GetString("Date"), bill.GetPrimaryKey());
    (void)restore();
    return false;
  }
  if (stored && !keepsPayments) LBillPaymentsLetGo(profile, bill.GetPrimaryKey());
  bool figures = !(keepsPayments && paid > bill.GetInt64("Total", 0)) || LBillGiveBackExcess(profile, bill.GetPrimaryKey());
  figures = LSupplierChangeBalance(profile, oldSupplier, -oldTotal) && figures;
  figures = LSupplierChangeBalance(profile, bill.GetString("Supplier"), bill.GetInt64("Total", 0)) && figures;
  std::string error;
  if (!MoveStock(profile, bill, oldCodes, &error) && warning != nullptr) *warning = error;
  if (!figures && warning != nullptr) *warning = kSupplierFiguresNotWrittenMessage;
  return true;
}

bool LBillDelete(LProfile& profile, std::string_view key, std::string* error) {
  LFileStoreListBase bills = profile.List(kBillsList);
  LLedgerLock lock(profile);
  LPurchaseChangeIntent intent(profile);
  LBill bill;
  if (key.empty() || !bills.Open(bill, key)) {
    if (error != nullptr) *error = "La facture fournisseur « " + std::string(key) + " » n'existe pas.";
    return false;
  }
  LAuditPending audit(profile, LAuditDocumentEvent(kAuditDeleteDocument, kBillTitle, key, bill), bills.MakeRecordPath(key));
  if (!audit.Append()) {
    if (error != nullptr) *error = kAuditNotWrittenMessage;
    return false;
  }
  std::string date = bill.GetString("Date"), reference = bill.GetString("JournalTxnRef");
  std::string supplier = bill.GetString("Supplier");
  long long total = bill.GetInt64("Total", 0);
  std::vector<std::string> codes = StockCodes(bill);
  bill.DetachWithoutSave();
  intent.NoteBill(key, date, {});
  if (!bills.Delete(key)) {
    if (error != nullptr) *error = "Impossible de supprimer la facture fournisseur « " + std::string(key) + " ».";
    return false;
  }
  // A posting already gone from the ledger leaves nothing to take out: the document goes all the same.
  if (!reference.empty()) (void)LAccountTransactionDelete(profile, date, reference);
  LBillPaymentsLetGo(profile, key);
  // The bill is gone either way: a balance that could not follow is named like an item's stock.
  if (!LSupplierChangeBalance(profile, supplier, -total) && error != nullptr) *error = kSupplierFiguresNotWrittenMessage;
  if (!codes.empty()) {
    LBill gone;
    gone.SetPrimaryKey(key);
    (void)MoveStock(profile, gone, codes, error);  // an item that could not be written is named in *error
  }
  return true;
}

bool LBillDeleteForLedger(LProfile& profile, std::string_view document, std::string_view reference) {
  return LDocumentPostedAs(profile, kBillsList, document, reference) && LBillDelete(profile, document, nullptr);
}
