#include "tests/support/salestestbusiness.h"

#include "accounts/accounts.h"
#include "invoice/shared/itemcollection.h"
#include "invoice/shared/options.h"
#include "invoice/shared/taxoptions.h"
#include "llib/gen/textnum.h"

void LSalesTestBusiness::SetUp() {
  profile_ = std::make_unique<LProfile>(home_.SharedFolder());
  EXPECT_TRUE(LAccountListCreateDefault(*profile_));
  LTaxOptions tax;
  tax.OpenFrom(*profile_);
  struct Tax {
    const char* name;
    LFKTaxRate rate;
    const char* combined;
  };
  const Tax taxes[] = {{"A", {10, 0, false}, ""},      {"B", {5, 0, false}, ""},
                       {"C", {9.975, 0, false}, ""},   {"AB", {10, 5, false}, "A+B"},
                       {"BC", {5, 9.975, true}, "*B+C"}, {"Z", {0, 0, false}, ""},
                       {"T", {10, 5, false}, ""}};
  int n = 0;
  for (const auto& entry : taxes) {
    ++n;
    tax.SetTaxName(n, entry.name);
    tax.SetTaxRate(n, entry.rate);
    tax.SetTaxCombined(n, entry.combined);
    tax.SetZeroRate(n, n == 6);
  }
  tax.SetInt("TaxSystem", n);
  tax.SetInt("DefaultRate", 1);
  tax.SetBool("TaxInclusive", false);
}

void LSalesTestBusiness::SetTaxInclusive(bool inclusive) {
  LTaxOptions tax;
  tax.OpenFrom(*profile_);
  tax.SetBool("TaxInclusive", inclusive);
}

void LSalesTestBusiness::SetDiscountsShown(bool shown) {
  LOptions options;
  options.OpenFrom(*profile_);
  options.SetBool("DontShowDiscountColumn", !shown);
}

void LSalesTestBusiness::AddLine(LRecord& document, long long unitValue, int digits, double qty, double discount,
                                 const std::string& taxRate, const std::string& taxName) {
  int index = document.GetInt("ItemCount", 0);
  auto field = [index](const char* suffix) { return LFKItemCollectionRecord::ItemField(index, suffix); };
  document.SetInt64(field("UnitValue"), unitValue);
  document.SetInt(field("UnitValueDigits"), digits);
  document.SetString(field("Qty"), ftotl(qty));
  document.SetString(field("Discount"), ftotl(discount));
  if (!taxRate.empty()) document.SetString(field("TaxRate"), taxRate);
  if (!taxName.empty()) document.SetString(field("TaxName"), taxName);
  document.SetInt("ItemCount", index + 1);
}

void LSalesTestBusiness::AddCustomer(const std::string& key) {
  LRecord customer;
  profile_->List("Customers").OpenAlways(customer, key);
  customer.SetString("Name", key);
}
