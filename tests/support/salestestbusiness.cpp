#include "tests/support/salestestbusiness.h"

#include <gtest/gtest.h>

#include "accounts/accounts.h"
#include "accounts/check.h"
#include "invoice/shared/itemcollection.h"
#include "invoice/shared/options.h"
#include "invoice/shared/regionaldefaults.h"
#include "invoice/shared/taxoptions.h"
#include "invoice/sales/salesbook.h"
#include "llib/gen/process.h"
#include "llib/gen/textnum.h"

void LSalesTestBusiness::SetUp() {
  profile_ = std::make_unique<LProfile>(home_.SharedFolder());
  EXPECT_TRUE(LAccountListCreateDefault(*profile_));
  LTaxOptions tax;
  tax.OpenFrom(*profile_);
  // No account: each tax posts to the linked sales tax account.
  const LTaxDefault taxes[] = {{"A", {10, 0, false}, "", false, ""},        {"B", {5, 0, false}, "", false, ""},
                               {"C", {9.975, 0, false}, "", false, ""},     {"AB", {10, 5, false}, "A+B", false, ""},
                               {"BC", {5, 9.975, true}, "*B+C", false, ""}, {"Z", {0, 0, false}, "", true, ""},
                               {"T", {10, 5, false}, "", false, ""}};
  LTaxOptionsSetTaxes(tax, taxes, 1);
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

std::string LSalesTestBusiness::RecordUntaxed(LSalesDocumentType type, long long total, const std::string& date) {
  LRecord content;
  content.SetString("Customer", "C1");
  content.SetString("Date", date);
  content.SetInt("TaxRate", kDocumentUntaxed);
  AddLine(content, total, -1, 1, 0, "", "");
  std::string key, error;
  EXPECT_TRUE(LSalesDocumentCreate(Profile(), LSalesDocumentKindOf(type), content, false, {}, key, &error)) << error;
  return key;
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

void LSalesTestBusiness::ExpectBooksCheckClean() {
  LBookCheckProcess check;
  check.profile = profile_.get();
  LProcessInterfaceVoid quiet;
  ASSERT_EQ(Process(quiet, check), kProcessFinished);
  EXPECT_TRUE(check.report.differences.empty() && check.report.problems.empty());
}
