// A business for the sales tests: a private home with the primary business opened, two
// currency digits, the default chart of accounts, the sales side's ledger hooks installed, and a fixed set of taxes that every test of totals refers to by name:
//   1 "A"  10 %            (the default tax)
//   2 "B"  5 %
//   3 "C"  9.975 %
//   4 "AB" combined "A+B" (rate 10/5/0)
//   5 "BC" combined "*B+C", compound (rate 5/9.975/1)
//   6 "Z"  0 %, zero-rated
//   7 "T"  two rates 10/5/0 without a combination
// A line refers to tax n by "Item<k>TaxRate" = n + 1 ("2" is A, "6" is BC).
#pragma once

#include <memory>
#include <string>

#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

class LSalesTestBusiness : public LHomeTest {
 protected:
  void SetUp() override;
  LProfile& Profile() { return *profile_; }

  // Prices include tax / line discounts count, business-wide.
  void SetTaxInclusive(bool inclusive);
  void SetDiscountsShown(bool shown);

  void AddCustomer(const std::string& key);
  // The books as the next command finds them after a crash: the check takes the ledger lock, which
  // settles what was left midway, then finds no difference and no problem (a test failure else).
  void ExpectBooksCheckClean();
  // Records an untaxed document of type for customer C1 on date, one line of total cents; its key,
  // empty (and the test failed) when it was refused.
  std::string RecordUntaxed(LSalesDocumentType type, long long total, const std::string& date);

 public:
  // Appends a line to document: unit value (stored integer), its digits (-1: currency),
  // quantity, discount %, tax rate text and tax name.
  static void AddLine(LRecord& document, long long unitValue, int digits, double qty, double discount,
                      const std::string& taxRate, const std::string& taxName);

 private:
  LEnvScope country_{"KONTAVO_COUNTRY", "US"};
  std::unique_ptr<LProfile> profile_;
};
