#include "invoice/sales/salesposting.h"

#include <cmath>

#include "accounts/accounts.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "accounts/ledgerlock.h"
#include "accounts/references.h"
#include "invoice/sales/salesstock.h"
#include "invoice/shared/item.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/stock.h"
#include "invoice/shared/taxcalc.h"
#include "invoice/shared/taxoptions.h"
#include "llib/gen/money.h"
#include "llib/gen/system.h"
#include "llib/gen/textnum.h"

namespace {

constexpr std::string_view kDefaultReceivable = "Comptes clients";
constexpr std::string_view kDefaultFreight = "Frais de port perçus";
constexpr std::string_view kDefaultIncome = "Recettes générales";
constexpr std::string_view kDefaultDeposit = "Compte-chèque";

constexpr int kSlotDeposit = 1;
constexpr int kSlotReceivable = 2;
constexpr int kSlotIncome = 3;
constexpr int kSlotShipping = 4;
constexpr int kSlotTaxCollected = 5;

// x truncated toward zero; whole once truncated, the rounding only holds it inside 64 bits.
long long Truncate(double x) { return LRoundHalfAwayFromZero(std::trunc(x)); }

// The number of the account described description; the linked slot's account when the
// description is empty or names no account.
std::string AccountOrSlot(const LProfile& profile, std::string_view description, int slot) {
  std::string number = description.empty() ? std::string() : LGetAccountNumberUsingDescription(profile, description);
  if (number.empty()) LOptions::GetDefAccountNumber(profile, slot, number);
  return number;
}

std::string TaxAccount(const LProfile& profile, const LTaxOptions& tax, int taxNumber) {
  std::string number = AccountOrSlot(profile, tax.GetTaxAccountPayable(taxNumber), kSlotTaxCollected);
  return LAccountIsLive(profile, number) ? number : std::string(kLostTaxAccount);
}

std::string LineAccount(LProfile& profile, const LFKItemCollectionRecord& items, int index) {
  std::string code = items.GetItemCode(index);
  LItem item;
  if (!code.empty() && profile.MainList(kItemsList).Open(item, code))
    return AccountOrSlot(profile, item.GetPLAccount(), kSlotIncome);
  return AccountOrSlot(profile, kDefaultIncome, kSlotIncome);
}

// The tax inside an amount of a tax-inclusive business, for a tax given as a rate text ("a/b/c",
// a tax number plus one, or empty).
long long InclusiveTax(const LTaxOptions& tax, std::string_view rateText, long long amount) {
  if (LFKIsTaxRateTriple(rateText) || rateText.empty()) {
    LFKTaxRate rate = LFKParseTaxRate(rateText);
    return LCalculateTax(tax, rate.rate1, rate.rate2, amount, true, rate.compound);
  }
  int index = LTextToInt(rateText);
  int taxNumber = index == 0 ? tax.GetDefaultRate() : index - 1;
  return LCalculateTaxByNumber(tax, taxNumber, amount, true);
}

// Empty when the counter could not be written.
std::string NewReference(LProfile& profile, const LReferenceCounter& counter) {
  std::string prefix = LReferencePrefix(profile, counter);
  int number = LTakeReferenceNumber(profile, counter);
  return number == 0 ? std::string() : LFormatReference(prefix, number);
}

}  // namespace

// ---- Options ----------------------------------------------------------------------------------

void LInvoiceOptions::OpenFrom(const LProfile& profile, std::string_view record) {
  profile.List(kMiscList).OpenAlways(*this, record);
}

std::string LInvoiceOptions::GetAccountsReceivable() const {
  return GetString("AccountsReceivable", kDefaultReceivable);
}

std::string LInvoiceOptions::GetFreightCollected() const { return GetString("FreightCollected", kDefaultFreight); }

// ---- Building ---------------------------------------------------------------------------------

namespace {

// With perpetual inventory, the cost of the goods that left stock with the document (came back
// with a credit note) goes from the stock account to the cost of sales. Without both accounts
// there is nowhere to post it, and nothing is posted.
template <class Add>
void AddCostOfSales(LProfile& profile, const LSalesDocument& document, bool creditNote, const Add& add) {
  LPerpetualInventory inventory = LPerpetualInventoryOf(profile);
  if (!inventory.enabled) return;
  std::string stock = LGetAccountNumberUsingDescription(profile, inventory.stockAccount);
  std::string costOfSales = LGetAccountNumberUsingDescription(profile, inventory.costOfSalesAccount);
  if (stock.empty() || costOfSales.empty()) return;
  const LSalesDocumentKind& kind =
      LSalesDocumentKindOf(creditNote ? LSalesDocumentType::kCreditNote : LSalesDocumentType::kInvoice);
  std::vector<std::string> codes;
  LFKItemCollectionRecord lines = document.Items();
  for (int i = 0; i < lines.GetItemCount(); ++i) codes.push_back(lines.GetItemCode(i));
  long long cost = LStockDocumentCost(profile, LSalesStockDocument(kind, document.GetPrimaryKey()), codes);
  if (cost == 0) return;
  add(costOfSales, cost);
  add(stock, -cost);
}

}  // namespace

void LSalesDocumentBuildTransaction(LProfile& profile, const LSalesDocument& document, bool creditNote,
                                    std::string_view date, std::string_view reference, std::string_view userName,
                                    LLedgerTransaction& txn) {
  // sign turns "credit" into the right side: an invoice credits (negative), a credit note debits.
  const long long sign = creditNote ? 1 : -1;
  const std::string& key = document.GetPrimaryKey();
  std::string description = (creditNote ? "Avoir; " : "Recette; ") + document.GetCustomer();
  txn = LLedgerTransaction(date, reference, kTxnTypeSales);
  auto add = [&](const std::string& account, long long amount) {
    txn.AddLine(account, description, amount, userName, "", key);
  };

  LTaxOptions tax;
  tax.OpenFrom(profile);
  LInvoiceOptions options;
  options.OpenFrom(profile, creditNote ? "CreditNote" : "Invoice");
  long long credited = 0;
  std::string lastAccount;

  for (int n = 1, count = tax.GetTaxCount(); n <= count; ++n) {
    long long amount = document.GetInt64("TaxAmount" + std::to_string(n), 0);
    if (amount == 0) continue;
    lastAccount = TaxAccount(profile, tax, n);
    add(lastAccount, sign * amount);
    credited += amount;
  }

  bool removeTax = document.GetDocumentTaxMode() != kDocumentUntaxed && tax.IsTaxInclusive();
  LFKItemCollectionRecord items = document.Items();
  for (int i = 0, count = items.GetItemCount(); i < count; ++i) {
    long long amount = Truncate(items.GetItemQty(i) * static_cast<double>(items.GetItemUnitValue(i)));
    long long net = Truncate(items.GetItemDiscount(i) * static_cast<double>(amount) / -100 + static_cast<double>(amount));
    if (removeTax) net -= InclusiveTax(tax, items.GetItemTaxRate(i), net);
    if (net == 0) continue;
    lastAccount = LineAccount(profile, items, i);
    add(lastAccount, sign * net);
    credited += net;
  }

  long long shipping = document.GetShippingCosts();
  if (shipping != 0) {
    if (removeTax) shipping -= InclusiveTax(tax, document.GetString("ShippingTaxRate"), shipping);
    if (shipping != 0) {
      add(AccountOrSlot(profile, options.GetFreightCollected(), kSlotShipping), sign * shipping);
      credited += shipping;
    }
  }

  long long total = document.GetTotal();
  std::string receivable = AccountOrSlot(profile, options.GetAccountsReceivable(), kSlotReceivable);
  if (total != 0) add(receivable, -sign * total);
  if (total != credited) {
    // Rounding of the totals against the truncated lines; a document without any line has no
    // last account and balances on its income account.
    if (lastAccount.empty()) lastAccount = AccountOrSlot(profile, kDefaultIncome, kSlotIncome);
    add(lastAccount, sign * (total - credited));
  }
  AddCostOfSales(profile, document, creditNote, add);
}

// ---- Posting ----------------------------------------------------------------------------------

namespace {

bool PostSalesDocument(LProfile& profile, LSalesDocument& document, bool creditNote, std::string_view userName) {
  std::string reference = LSalesDocumentTakeReference(profile, document, false);
  if (reference.empty()) return false;
  LLedgerTransaction txn;
  LSalesDocumentBuildTransaction(profile, document, creditNote, document.GetDate(), reference, userName, txn);
  return LAccountTransactionRecord(profile, txn);
}

}  // namespace

bool LInvoiceRecordTransactions(LProfile& profile, LSalesDocument& invoice, std::string_view userName, bool) {
  return PostSalesDocument(profile, invoice, false, userName);
}

bool LCreditNoteRecordTransactions(LProfile& profile, LSalesDocument& creditNote, std::string_view userName) {
  return PostSalesDocument(profile, creditNote, true, userName);
}

std::string LSalesDocumentTakeReference(LProfile& profile, LRecord& document, bool payment) {
  std::string reference = document.GetString("JournalTxnRef");
  if (!reference.empty()) return reference;
  reference = NewReference(profile, payment ? kReceiptCounter : kSalesCounter);
  if (!reference.empty()) document.SetString("JournalTxnRef", reference);
  return reference;
}

void LPaymentBuildTransaction(LProfile& profile, const LRecord& payment, std::string_view reference,
                              std::string_view userName, LLedgerTransaction& txn) {
  LInvoiceOptions options;
  options.OpenFrom(profile);
  // A refund is the same transaction the other way round: the money leaves the deposit account.
  bool refund = payment.GetBool("IsRefund", false);
  std::string description = (refund ? "Remboursement; " : "Encaissement; ") + payment.GetString("Customer");
  long long amount = refund ? -payment.GetInt64("Amount", 0) : payment.GetInt64("Amount", 0);
  txn = LLedgerTransaction(payment.GetString("Date"), reference, kTxnTypeReceipt);
  const std::string& key = payment.GetPrimaryKey();
  txn.AddLine(AccountOrSlot(profile, options.GetAccountsReceivable(), kSlotReceivable), description, -amount,
              userName, "", key);
  txn.AddLine(AccountOrSlot(profile, payment.GetString("DepositAccount", kDefaultDeposit), kSlotDeposit),
              description, amount, userName, "", key);
}

bool LPaymentRecordTransactions(LProfile& profile, LRecord& payment, std::string_view userName) {
  std::string reference = LSalesDocumentTakeReference(profile, payment, true);
  if (reference.empty()) return false;
  LLedgerTransaction txn;
  LPaymentBuildTransaction(profile, payment, reference, userName, txn);
  return LAccountTransactionRecord(profile, txn);
}

bool LSalesDocumentRemoveTransaction(LProfile& profile, const LRecord& document, std::string_view date) {
  std::string reference = document.GetString("JournalTxnRef");
  if (reference.empty()) return false;
  LLedgerLock lock(profile);
  return LAccountTransactionDelete(profile, date, reference);
}

bool LSalesDocumentRepost(LProfile& profile, std::string_view list, LSalesDocument& document, std::string_view oldDate,
                          std::string_view reference) {
  bool payment = list == kPaymentsList;
  bool creditNote = list == LSalesDocumentKindOf(LSalesDocumentType::kCreditNote).recordedList;
  LLedgerLock lock(profile);
  bool keptReference = !document.GetString("JournalTxnRef").empty();
  if (!keptReference && !reference.empty()) document.SetString("JournalTxnRef", reference);
  std::string ref = LSalesDocumentTakeReference(profile, document, payment);
  if (ref.empty()) return false;
  // The reference is kept before anything is posted under it, so that a settler that dies here
  // leaves the next one the place to look.
  if (!keptReference && !document.Flush()) return false;
  std::string date = document.GetString("Date");
  LLedgerTransaction wanted;
  if (payment) LPaymentBuildTransaction(profile, document, ref, LGetPostingUserName(), wanted);
  else
    LSalesDocumentBuildTransaction(profile, document, creditNote, date, ref, LGetPostingUserName(), wanted);
  LLedgerTransaction current;
  bool inStep = LLedgerTransactionLoad(profile, current, date, ref) == wanted.HasLines() &&
                (!wanted.HasLines() || LLedgerTransactionEqual(current, wanted)) &&
                (oldDate.empty() || oldDate == date || !LLedgerTransactionTestExists(profile, oldDate, ref));
  if (inStep) return !keptReference;
  if (!oldDate.empty() && oldDate != date) (void)LAccountTransactionDelete(profile, oldDate, ref);
  (void)LAccountTransactionDelete(profile, date, ref);
  return LAccountTransactionRecord(profile, wanted);
}
