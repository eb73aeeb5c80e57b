#include "accounts/bills.h"

#include <cmath>
#include <cstdio>

#include "accounts/accounts.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "accounts/ledgerlock.h"
#include "accounts/references.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/money.h"

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

}  // namespace

// ---- The bill ---------------------------------------------------------------------------------

std::string LBill::GetAccount(const LProfile& profile) const {
  std::string account = GetString("DepositAccount");
  return account.empty() ? SlotAccount(profile, 7) : account;
}

std::string LBill::GetItemAccount(int line) const { return GetString(ItemField(line, "Account")); }
std::string LBill::GetItemTaxName(int line) const { return GetString(ItemField(line, "TaxName")); }
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

bool LBillRecordTransactions(LProfile& profile, LBill& bill, std::string_view userName) {
  std::string reference = bill.GetString("JournalTxnRef");
  if (reference.empty()) {
    std::string prefix = LReferencePrefix(profile, kPurchasesCounter);
    LFileStoreListBase bills = profile.List(kBillsList);
    int number = LTakeReferenceNumber(profile, kPurchasesCounter, [&](int candidate) {
      return bills.TestRecordExists(LFormatReference(prefix, candidate));
    });
    reference = LFormatReference(prefix, number);
  }
  std::string notes = bill.GetString("Notes");
  LLedgerTransaction txn(bill.GetString("Date"), reference, kTxnTypePurchase);
  txn.AddLine(bill.GetAccount(profile), notes, -bill.GetInt64("Total", 0), userName, "", reference);
  for (int line = 1; line <= bill.GetItemCount(); ++line)
    txn.AddLine(bill.GetItemAccount(line), notes, bill.GetItemAmount(profile, line), userName,
                bill.GetItemTaxName(line), reference);
  for (int tax = 1, nTaxes = LBillTaxCount(profile); tax <= nTaxes; ++tax) {
    long long amount = bill.GetTaxAmount(tax);
    if (amount != 0) txn.AddLine(LBillTaxPaidAccountNumber(profile, tax), notes, amount, userName, reference, "");
  }
  bool recorded = LAccountTransactionRecord(profile, txn);
  bill.SetPrimaryKey(reference);
  bill.SetString("JournalTxnRef", reference);
  return recorded;
}

long long LBillSumTotal(const LProfile& profile, const LBill& bill) {
  long long total = 0;
  for (int line = 1; line <= bill.GetItemCount(); ++line) total += bill.GetItemAmount(profile, line);
  for (int tax = 1, nTaxes = LBillTaxCount(profile); tax <= nTaxes; ++tax) total += bill.GetTaxAmount(tax);
  return total;
}

bool LBillSave(LProfile& profile, LBill& bill, std::string_view userName) {
  bill.SetInt64("Total", LBillSumTotal(profile, bill));
  LFileStoreListBase bills = profile.List(kBillsList);
  LLedgerLock lock(profile);
  // The posting a stored bill of that reference made, taken out first and put back on failure.
  std::string reference = bill.GetString("JournalTxnRef");
  LLedgerTransaction previous;
  bool replacing = false;
  if (LBill stored; !reference.empty() && bills.Open(stored, reference)) {
    std::string previousDate = stored.GetString("Date");
    stored.DetachWithoutSave();
    replacing = LLedgerTransactionLoad(profile, previous, previousDate, reference) &&
                LAccountTransactionDelete(profile, previousDate, reference);
  }
  auto restore = [&] { return !replacing || LAccountTransactionRecord(profile, previous); };
  if (!LBillRecordTransactions(profile, bill, userName)) {
    (void)restore();  // a ledger that refused the new posting may refuse the old one: nothing more to do
    return false;
  }
  LBill stored;
  bills.OpenAlways(stored, bill.GetPrimaryKey());
  stored.CopyRecord(bill);
  if (stored.Flush()) return true;
  stored.DetachWithoutSave();
  (void)LAccountTransactionDelete(profile, bill.GetString("Date"), bill.GetPrimaryKey());
  (void)restore();
  return false;
}

bool LBillDeleteForLedger(LProfile& profile, std::string_view document, std::string_view reference) {
  LFileStoreListBase bills = profile.List(kBillsList);
  LBill bill;
  if (!bills.Open(bill, document) || bill.GetString("JournalTxnRef") != reference) return false;
  std::string date = bill.GetString("Date");
  bill.DetachWithoutSave();
  LLedgerLock lock(profile);
  // A posting already gone from the ledger leaves nothing to take out: the document goes all the same.
  (void)LAccountTransactionDelete(profile, date, reference);
  return bills.Delete(document);
}
