// Customer balances and the oldest due date, and the derived values of an invoice that they
// rest on (status, due date, draft flag, amount paid, tax total).
#include <gtest/gtest.h>

#include <memory>
#include <tuple>

#include "invoice/shared/customer.h"
#include "invoice/sales/salesbook.h"
#include "invoice/shared/totals.h"
#include "llib/gen/date.h"
#include "llib/gen/file.h"
#include "tests/support/salestestbusiness.h"

namespace {

class CustomerBalance : public LSalesTestBusiness {
 protected:
  std::unique_ptr<LCustomer> Customer(const std::string& key) {
    auto customer = std::make_unique<LCustomer>();
    EXPECT_TRUE(Profile().MainList(kCustomersList).Open(*customer, key));
    return customer;
  }
  void SetCustomer(const std::string& key, long long balance, const std::string& oldestDue = "") {
    LCustomer customer;
    Profile().MainList(kCustomersList).OpenAlways(customer, key);
    customer.SetInt64("Balance", balance);
    if (!oldestDue.empty()) customer.SetString("OldestDue", oldestDue);
  }
  // A recorded invoice due on its date (terms "at once").
  void AddDueInvoice(const std::string& key, const std::string& customer, const std::string& date, long long total) {
    LInvoice invoice;
    Profile().MainList("Invoices").OpenAlways(invoice, key);
    invoice.SetString("Customer", customer);
    invoice.SetString("Date", date);
    invoice.SetInt("PaymentTerms", 1);
    invoice.SetInt64("Total", total);
  }
  // Recomputes the oldest due dates (of keys, or of every customer) and returns the first's.
  std::string Retotal(const std::string& key, std::vector<std::string> keys = {}) {
    LCoreDataRetotalCustomerData data{&Profile(), std::move(keys)};
    LProcessInterfaceRecorder process;
    EXPECT_EQ(Process(process, data), kProcessFinished);
    EXPECT_EQ(process.GetStatus(0), "Nouveau total client");
    EXPECT_EQ(process.GetStatus(1), "Veuillez patienter...");
    return Customer(key)->GetOldestDue();
  }
  static std::string DueText(const std::string& date) { return date + " 01:00:00"; }
};

TEST_F(CustomerBalance, ChangeAddsToTheStoredBalanceAndIgnoresUnknownKeys) {
  AddCustomer("C1");
  EXPECT_TRUE(LCustomerChangeBalance(Profile(), "C1", 1500));
  EXPECT_TRUE(LCustomerChangeBalance(Profile(), "C1", -200));
  EXPECT_EQ(Customer("C1")->GetBalance(), 1300);
  EXPECT_TRUE(LCustomerChangeBalance(Profile(), "Nobody", 100));
  EXPECT_FALSE(Profile().MainList(kCustomersList).TestRecordExists("Nobody"));
}

// Walking the invoices oldest first, the oldest due is the first after which the rest no
// longer covers the balance. Over 100/200/300 (S = 600): balance 350 stops at April (after
// March 500, after April 300 < 350); 600 at March (after March 500 < 600).
TEST_F(CustomerBalance, OldestDueIsTheFirstInvoiceTheBalanceStillCovers) {
  AddCustomer("C1");
  AddDueInvoice("1", "C1", "2024-03-01", 100);
  AddDueInvoice("2", "C1", "2024-04-01", 200);
  AddDueInvoice("3", "C1", "2024-05-01", 300);
  SetCustomer("C1", 350);
  EXPECT_EQ(Retotal("C1"), DueText("2024-04-01"));
  SetCustomer("C1", 600);
  EXPECT_EQ(Retotal("C1", {"C1"}), DueText("2024-03-01"));
}

TEST_F(CustomerBalance, NoBalanceOrCreditOrTooLittleInvoicedClearsOldestDue) {
  AddCustomer("C1");
  AddDueInvoice("1", "C1", "2024-03-01", 100);
  for (long long balance : {0LL, -50LL, 101LL}) {
    SetCustomer("C1", balance, "2000-01-01 01:00:00");
    EXPECT_EQ(Retotal("C1"), "") << balance;
  }
}

TEST_F(CustomerBalance, KeysDifferingOnlyInCaseCollectInvoicesAndZeroTotalsAreSkipped) {
  AddCustomer("Dupont");
  AddDueInvoice("1", "DUPONT", "2024-01-15", 0);  // total 0: not noted
  AddDueInvoice("2", "dupont", "2024-02-01", 100);
  AddDueInvoice("3", "Other", "2024-01-01", 100);
  SetCustomer("Dupont", 100);
  EXPECT_EQ(Retotal("Dupont"), DueText("2024-02-01"));
}

// Stops at its first question.
class StopAtOnce : public LProcessInterfaceVoid {
 public:
  bool IsToStop() override { return true; }
};

TEST_F(CustomerBalance, CancellationLeavesOldestDueUnchanged) {
  AddCustomer("C1");
  AddDueInvoice("1", "C1", "2024-03-01", 100);
  SetCustomer("C1", 100, "1999-12-31 01:00:00");
  LCoreDataRetotalCustomerData data{&Profile(), {}};
  StopAtOnce stop;
  EXPECT_EQ(Process(stop, data), kProcessCancelled);
  EXPECT_EQ(Customer("C1")->GetOldestDue(), "1999-12-31 01:00:00");
}

// ---- The totaller and the balance ---------------------------------------------------------

TEST_F(CustomerBalance, RecordedInvoiceMovesTheBalanceByTheChangeOfItsTotalOnly) {
  AddCustomer("C1");
  LInvoice invoice;
  Profile().MainList("Invoices").OpenAlways(invoice, "7");
  invoice.SetString("Customer", "C1");
  AddLine(invoice, 10000, -1, 1, 0, "2", "");
  EXPECT_TRUE(invoice.Flush());
  EXPECT_TRUE(LInvoiceSumTotals(Profile(), invoice).TotalChanged());
  EXPECT_EQ(Customer("C1")->GetBalance(), 11000);
  // Unchanged: nothing is written, the balance stays.
  std::string path = Profile().MainList("Invoices").MakeRecordPath("7");
  std::string before = LReadFile(path);
  LInvoice again;
  ASSERT_TRUE(Profile().MainList("Invoices").Open(again, "7"));
  EXPECT_FALSE(LInvoiceSumTotals(Profile(), again).TotalChanged());
  EXPECT_FALSE(again.IsDirty());
  again.Invalidate();
  EXPECT_EQ(LReadFile(path), before);
  EXPECT_EQ(Customer("C1")->GetBalance(), 11000);
  // A second line: the balance moves by the difference.
  LInvoice edited;
  ASSERT_TRUE(Profile().MainList("Invoices").Open(edited, "7"));
  AddLine(edited, 1000, -1, 1, 0, "2", "");
  ASSERT_TRUE(LInvoiceSumTotals(Profile(), edited).written);
  EXPECT_EQ(Customer("C1")->GetBalance(), 12100);
}

TEST_F(CustomerBalance, DraftsAndOtherKindsLeaveTheBalanceAlone) {
  AddCustomer("C1");
  LInvoice draft;
  Profile().MainList("InvoicesDrafts").OpenAlways(draft, "DFT1");
  LOrder order;
  Profile().MainList("Orders").OpenAlways(order, "1");
  for (LSalesDocument* document : std::initializer_list<LSalesDocument*>{&draft, &order}) {
    document->SetString("Customer", "C1");
    AddLine(*document, 5000, -1, 1, 0, "2", "");
  }
  ASSERT_TRUE(LInvoiceSumTotals(Profile(), draft).written);
  ASSERT_TRUE(LOrderSumTotals(Profile(), order).written);
  EXPECT_EQ(draft.GetTotal() + order.GetTotal(), 11000);
  EXPECT_EQ(Customer("C1")->GetBalance(), 0);
}

// ---- Derived values -------------------------------------------------------------------------

// Total 0 is "nothing due" even when paid; a refund (negative paid) leaves it partly paid;
// paying more than the total is paid.
TEST_F(CustomerBalance, InvoiceStatusFromTotalAndAmountPaid) {
  LInvoice invoice;
  invoice.SetPrimaryKey("1");
  for (auto [total, paid, status] : {std::tuple{0, 500, kInvoiceNothingDue}, {1000, 500, kInvoicePartlyPaid},
                                     {1000, 1000, kInvoicePaid}, {1000, 1200, kInvoicePaid}, {1000, 0, kInvoiceUnpaid},
                                     {1000, -300, kInvoicePartlyPaid}}) {
    invoice.SetInt64("Total", total);
    invoice.SetInt64("AmountPaid", paid);
    EXPECT_EQ(LInvoiceGetStatus(Profile(), invoice), status) << total << " " << paid;
  }
}

TEST_F(CustomerBalance, InvoiceStatusDraftsAndKeylessRecordsHaveNothingPaid) {
  LInvoice invoice;
  invoice.SetInt64("Total", 1000);
  invoice.SetInt64("AmountPaid", 1000);
  EXPECT_EQ(invoice.GetAmountPaid(Profile()), 0);
  invoice.SetPrimaryKey("DFT3");
  EXPECT_TRUE(invoice.IsDraft());
  EXPECT_EQ(invoice.GetAmountPaid(Profile()), 0);
  invoice.SetBool("IsDraft", false);
  EXPECT_FALSE(invoice.IsDraft());
  EXPECT_EQ(invoice.GetAmountPaid(Profile()), 1000);
}

TEST(InvoiceDueDate, TermsInDaysOrAtOnceFromOneInTheMorning) {
  LInvoice invoice;
  invoice.SetString("Date", "2024-02-20");
  EXPECT_EQ(LDateTimeText(LInvoiceCalculateDueDate(invoice)), "2024-03-21 01:00:00");  // 30 days, leap year
  invoice.SetInt("PaymentTermsDays", 10);
  EXPECT_EQ(LDateTimeText(LInvoiceCalculateDueDate(invoice)), "2024-03-01 01:00:00");
  invoice.SetInt("PaymentTerms", 1);
  EXPECT_EQ(LDateTimeText(LInvoiceCalculateDueDate(invoice)), "2024-02-20 01:00:00");
  invoice.SetString("Date", "");  // no date: now
  time_t before = ::time(nullptr);
  time_t due = LInvoiceCalculateDueDate(invoice);
  EXPECT_GE(due, before);
  EXPECT_LE(due, ::time(nullptr));
}

TEST(InvoiceTaxTotal, ReadsThreeAmountsWhenTheCountIsAbsent) {
  LInvoice invoice;
  for (int n = 1; n <= 4; ++n) invoice.SetInt64("TaxAmount" + std::to_string(n), n * 100);
  invoice.SetInt64("Total", 5000);
  invoice.SetInt64("ShippingCosts", 400);
  EXPECT_EQ(invoice.GetTaxTotal(), 600);
  EXPECT_EQ(invoice.GetSubTotal(), 5000 - 400 - 600);
  invoice.SetInt("TaxAmountCount", 0);
  EXPECT_EQ(invoice.GetTaxTotal(), 0);
}

}  // namespace
