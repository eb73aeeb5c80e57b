#include "accounts/porderbill.h"

#include <map>

#include "accounts/accounts.h"
#include "accounts/bills.h"
#include "invoice/shared/itemfield.h"
#include "invoice/shared/options.h"
#include "invoice/shared/partyfields.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "invoice/shared/taxoptions.h"
#include "invoice/shared/totals.h"
#include "llib/gen/optionalerror.h"

namespace {

// The account the order's lines are expensed to: the supplier's, else the business's default.
std::string ExpenseAccount(LProfile& profile, std::string_view supplier) {
  LRecord record;
  std::string account;
  if (profile.List(kSuppliersList).Open(record, supplier)) account = record.GetString("ExpenseAccount");
  if (!account.empty() && LAccountIsLive(profile, account)) return account;
  account.clear();
  LOptions::GetDefAccountNumber(profile, 9, account);
  return LAccountIsLive(profile, account) ? account : std::string();
}

}  // namespace

bool LBillLoadFromPOrder(LProfile& profile, std::string_view key, std::string_view date, LBill& bill,
                         std::string* error) {
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(LSalesDocumentType::kPOrder);
  LSalesDocument order;
  if (key.empty() || !profile.List(kind.recordedList).Open(order, key))
    return LFail(error, "Bon de commande introuvable : " + std::string(key) + ".");
  order.DetachWithoutSave();
  std::string billed = order.GetString(kPOrderBillField);
  if (!billed.empty() && profile.List(kBillsList).TestRecordExists(billed))
    return LFail(error, "Le bon de commande " + std::string(key) + " a déjà été facturé (" + billed + ").");
  std::string supplier = order.GetCustomer();
  std::string account = ExpenseAccount(profile, supplier);
  if (account.empty())
    return LFail(error, "Aucun compte de charges : indiquez le compte de charges par défaut (compte associé 9).");

  bill.SetString("Supplier", supplier);
  bill.SetString("Date", date);
  // The order's notes speak to the supplier; the bill's describe its postings.
  bill.SetString("Notes", "Bon de commande " + std::string(key));
  bill.SetString("POrderNumber", key);
  LFKItemCollectionRecord lines = order.Items();
  int currencyDigits = profile.GetCurrencyDigits();
  for (int i = 0; i < lines.GetItemCount(); ++i) {
    long long net = LFKDocumentLineTotal(lines, i, false, currencyDigits);
    bool plain = lines.GetItemDiscount(i) == 0 && i != lines.GetFixedPercentageDiscountItem();
    int line = bill.GetItemCount() + 1;
    bill.AddItemLine(account, net, lines.GetItemTaxName(i));
    if (plain) {
      bill.SetFloat(LItemField(line, "Qty"), lines.GetItemQty(i));
      bill.SetInt64(LItemField(line, "UnitValue"), lines.GetItemUnitValue(i));
      bill.SetInt(LItemField(line, "UnitValueDigits"), lines.GetItemUnitValueDigits(i));
    }
    if (std::string code = lines.GetItemCode(i); !code.empty()) bill.SetString(LItemField(line, "Code"), code);
    if (std::string text = lines.GetItemDescription(i); !text.empty())
      bill.SetString(LItemField(line, "Description"), text);
  }
  if (long long shipping = order.GetShippingCosts(); shipping != 0) {
    std::string shippingAccount;
    LOptions::GetDefAccountNumber(profile, 8, shippingAccount);
    bill.AddItemLine(LAccountIsLive(profile, shippingAccount) ? shippingAccount : account, shipping, "");
    bill.SetString(LItemField(bill.GetItemCount(), "Description"), "Frais de port");
  }
  LTaxOptions taxes;
  taxes.OpenFrom(profile);
  std::map<int, long long> amounts;
  for (int n = 1, count = order.GetInt("TaxAmountCount", 3); n <= count; ++n) {
    long long amount = order.GetInt64("TaxAmount" + std::to_string(n), 0);
    if (amount == 0) continue;
    int number = taxes.GetTaxNumberFromName(order.GetString("TaxAmountName" + std::to_string(n)));
    if (number == 0) number = taxes.GetDefaultRate();
    if (number < 1 || number > taxes.GetTaxCount()) number = 1;
    amounts[number] += amount;
  }
  taxes.DetachWithoutSave();
  for (const auto& [number, amount] : amounts) bill.SetInt64("TaxAmount" + std::to_string(number), amount);
  return true;
}
