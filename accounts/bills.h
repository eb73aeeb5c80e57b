// Bills: a supplier's invoice, posted to the ledger as one "Achats" transaction under a "PRC"
// reference that is also the bill's identifier (its key in the "Bills" list). The payable account
// is credited with the total, each item line's account debited with the line's amount, and each
// tax's paid account debited with the tax amount.
//
// Fields used: "JournalTxnRef", "Date", "Notes", "Supplier", "Total" (cents, tax included),
// "DepositAccount" (the payable account's number; empty: linked slot 7), "TaxAmount%d" (cents,
// for each tax 1 to "TaxSystem" of the tax options), and the item lines "ItemCount",
// "Item%dAccount", "Item%dQty", "Item%dUnitValue", "Item%dUnitValueDigits", "Item%dTaxName".
//
// What the purchase book adds: the supplier's "Balance" follows the bill's "Total" (suppliers.h);
// "AmountPaid" (cents) is what bill payments settle of it (billpayments.h); "DueDate" when the
// bill names its own; a line may name an item ("Item%dCode"), whose goods then come into stock on
// the bill's date at the line's net unit cost, unless the bill was made from a purchase order
// ("POrderNumber"), whose receipt already brought them in.
#pragma once

#include <string>
#include <string_view>

#include "invoice/shared/purchaselists.h"
#include "llib/gen/record.h"

class LLedgerTransaction;
class LProfile;

inline constexpr std::string_view kBillsDraftsList = "BillsDrafts";

class LBill : public LRecord {
 public:
  // "DepositAccount", or the account of linked slot 7 ("Comptes fournisseurs") when empty.
  std::string GetAccount(const LProfile& profile) const;
  int GetItemCount() const { return GetInt("ItemCount", 0); }
  std::string GetItemAccount(int line) const;
  std::string GetItemTaxName(int line) const;
  // Its lines move stock: it was not made from a purchase order.
  bool MovesStock() const;
  // Quantity times unit value, the unit value scaled from its own digits to the currency's,
  // rounded half up. line counts from 1.
  long long GetItemAmount(const LProfile& profile, int line) const;
  long long GetTaxAmount(int tax) const;
  // Appends an item line of quantity 1 (stored in the currency's digits).
  void AddItemLine(std::string_view account, long long amount, std::string_view taxName);
};

// The "Bill" option record.
class LBillOptions : public LRecord {
 public:
  void OpenFrom(const LProfile& profile);
  // The description of the account bill payments are owed from: "AccountsPayable", or the
  // description of linked slot 7's account when empty.
  std::string GetAccountsPayable(const LProfile& profile) const;
};

// The number of taxes defined ("TaxSystem" of the "Tax" option record).
int LBillTaxCount(const LProfile& profile);
// The account into which tax k paid is posted: the account described by "TaxAccountPaid%d" of
// the tax options; when that is empty or names no account, linked slot 6 ("Taxe à la vente
// versée").
std::string LBillTaxPaidAccountNumber(const LProfile& profile, int tax);

// Posts the bill. Reference: "JournalTxnRef" when set (no number used); otherwise the next
// purchases number not already a bill's identifier (the counter then stands one past it). The
// tax lines carry the reference in their tax value and leave the document column empty, unlike
// the other lines: that is how they have always been written. Afterwards the bill's key and
// "JournalTxnRef" are the reference (the caller saves the bill). false when the ledger could
// not be written.
[[nodiscard]] bool LBillRecordTransactions(LProfile& profile, LBill& bill, std::string_view userName);
// Takes the next purchases number not already a bill's identifier, as a new bill's posting does;
// empty when the counter could not be written.
std::string LBillTakeReference(LProfile& profile);
// The transaction that posting makes under reference, into txn.
void LBillBuildTransaction(const LProfile& profile, const LBill& bill, std::string_view reference,
                           std::string_view userName, LLedgerTransaction& txn);

// The bill's "Total": the amounts of its item lines plus its tax amounts (taxes 1 to
// LBillTaxCount).
long long LBillSumTotal(const LProfile& profile, const LBill& bill);

// What saving a bill does, from the command line as from the web: "Total" is summed
// (LBillSumTotal), the bill posted (LBillRecordTransactions) and, once posted, stored in "Bills"
// under its reference. A bill whose "JournalTxnRef" names a stored bill replaces it: the old
// posting is deleted and the new one recorded under one hold of the ledger lock, so nobody sees
// the bill posted twice or not at all; it keeps the payments applied to it (given back beyond a
// lower total, let go when the supplier changed). The supplier's balance moves by what changed,
// and the bill's goods come into stock. bill need not be attached; afterwards its key and
// "JournalTxnRef" are the reference. false when the ledger or the record could not be written:
// the books are then as they were, the old posting back in place. An item whose stock, or a
// supplier's balance or payment that could not be written does not undo the bill: warning (may be
// null) names it.
[[nodiscard]] bool LBillSave(LProfile& profile, LBill& bill, std::string_view userName,
                             std::string* warning = nullptr);

// Deletes the bill key: its posting leaves the ledger, the payments applied to it let go, its
// total leaves the supplier's balance and its goods leave stock. false with the message in
// *error (may be null) when there is no such bill or it could not be deleted; true with *error set
// when the bill went but an item's stock or the supplier's balance could not follow.
[[nodiscard]] bool LBillDelete(LProfile& profile, std::string_view key, std::string* error);

// The ledger's route for "Achats": the bill document, when its "JournalTxnRef" is reference, is
// deleted with its postings (LBillDelete). false when there is no such bill.
bool LBillDeleteForLedger(LProfile& profile, std::string_view document, std::string_view reference);
