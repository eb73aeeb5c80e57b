// Customer balances and the oldest due date, and the derived values of an invoice that they
// rest on (status, due date, draft flag, amount paid).
#include <gtest/gtest.h>

#include "invoice/shared/customer.h"
#include "invoice/sales/salesbook.h"
#include "invoice/shared/totals.h"
#include "llib/gen/date.h"
#include "llib/gen/file.h"
#include "tests/support/salestestbusiness.h"

namespace {

class CustomerBalance : public LSalesTestBusiness {
 protected:
  long long Balance(const std::string& key) {
    LCustomer customer;
    EXPECT_TRUE(Profile().MainList(kCustomersList).Open(customer, key));
    return customer.GetBalance();
  }
  std::string OldestDue(const std::string& key) {
    LCustomer customer;
    EXPECT_TRUE(Profile().MainList(kCustomersList).Open(customer, key));
    return customer.GetOldestDue();
  }
  void SetBalance(const std::string& key, long long balance) {
    LCustomer customer;
    Profile().MainList(kCustomersList).OpenAlways(customer, key);
    customer.SetInt64("Balance", balance);
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
  LProcessResult Retotal(std::vector<std::string> keys = {}) {
    LCoreDataRetotalCustomerData data{&Profile(), std::move(keys)};
    LProcessInterfaceRecorder process;
    LProcessResult result = Process(process, data);
    EXPECT_EQ(process.GetStatus(0), "Nouveau total client");
    EXPECT_EQ(process.GetStatus(1), "Veuillez patienter...");
    return result;
  }
  static std::string DueText(const std::string& date) {
    LInvoice invoice;
    invoice.SetString("Date", date);
    invoice.SetInt("PaymentTerms", 1);
    return LDateTimeText(LInvoiceCalculateDueDate(invoice));
  }
};

TEST_F(CustomerBalance, ChangeAddsToTheStoredBalanceAndIgnoresUnknownKeys) {
  AddCustomer("C1");
  LCustomerChangeBalance(Profile(), "C1", 1500);
  LCustomerChangeBalance(Profile(), "C1", -200);
  EXPECT_EQ(Balance("C1"), 1300);
  LCustomerChangeBalance(Profile(), "Nobody", 100);
  EXPECT_FALSE(Profile().MainList(kCustomersList).TestRecordExists("Nobody"));
}

TEST_F(CustomerBalance, OldestDueIsTheFirstInvoiceTheBalanceStillCovers) {
  AddCustomer("C1");
  AddDueInvoice("1", "C1", "2024-03-01", 100);
  AddDueInvoice("2", "C1", "2024-04-01", 200);
  AddDueInvoice("3", "C1", "2024-05-01", 300);
  // S = 600; after March 500, after April 300 < 350.
  SetBalance("C1", 350);
  EXPECT_EQ(Retotal(), kProcessFinished);
  EXPECT_EQ(OldestDue("C1"), DueText("2024-04-01"));
  // After March S = 500 < 600.
  SetBalance("C1", 600);
  EXPECT_EQ(Retotal({"C1"}), kProcessFinished);
  EXPECT_EQ(OldestDue("C1"), DueText("2024-03-01"));
  EXPECT_EQ(OldestDue("C1").substr(0, 10), "2024-03-01");
}

TEST_F(CustomerBalance, NoBalanceOrCreditOrTooLittleInvoicedClearsOldestDue) {
  AddCustomer("C1");
  AddDueInvoice("1", "C1", "2024-03-01", 100);
  for (long long balance : {0LL, -50LL, 101LL}) {
    SCOPED_TRACE(balance);
    {
      LCustomer customer;
      Profile().MainList(kCustomersList).OpenAlways(customer, "C1");
      customer.SetString("OldestDue", "2000-01-01 01:00:00");
      customer.SetInt64("Balance", balance);
    }
    EXPECT_EQ(Retotal(), kProcessFinished);
    EXPECT_EQ(OldestDue("C1"), "");
  }
}

TEST_F(CustomerBalance, KeysDifferingOnlyInCaseCollectInvoicesAndZeroTotalsAreSkipped) {
  AddCustomer("Dupont");
  AddDueInvoice("1", "DUPONT", "2024-01-15", 0);  // total 0: not noted
  AddDueInvoice("2", "dupont", "2024-02-01", 100);
  AddDueInvoice("3", "Other", "2024-01-01", 100);
  SetBalance("Dupont", 100);
  EXPECT_EQ(Retotal(), kProcessFinished);
  EXPECT_EQ(OldestDue("Dupont"), DueText("2024-02-01"));
}

// Stops at its first question.
class StopAtOnce : public LProcessInterfaceVoid {
 public:
  bool IsToStop() override { return true; }
};

TEST_F(CustomerBalance, CancellationLeavesOldestDueUnchanged) {
  AddCustomer("C1");
  AddDueInvoice("1", "C1", "2024-03-01", 100);
  {
    LCustomer customer;
    Profile().MainList(kCustomersList).OpenAlways(customer, "C1");
    customer.SetString("OldestDue", "1999-12-31 01:00:00");
    customer.SetInt64("Balance", 100);
  }
  LCoreDataRetotalCustomerData data{&Profile(), {}};
  StopAtOnce stop;
  EXPECT_EQ(Process(stop, data), kProcessCancelled);
  EXPECT_EQ(OldestDue("C1"), "1999-12-31 01:00:00");
}

// ---- The totaller and the balance ---------------------------------------------------------

TEST_F(CustomerBalance, RecordedInvoiceMovesTheBalanceByTheChangeOfItsTotalOnly) {
  AddCustomer("C1");
  LInvoice invoice;
  Profile().MainList("Invoices").OpenAlways(invoice, "7");
  invoice.SetString("Customer", "C1");
  AddLine(invoice, 10000, -1, 1, 0, "2", "");
  invoice.Flush();
  EXPECT_TRUE(LInvoiceSumTotals(Profile(), invoice).TotalChanged());
  EXPECT_EQ(Balance("C1"), 11000);

  // Unchanged: nothing is written, the balance stays.
  std::string path = Profile().MainList("Invoices").MakeRecordPath("7");
  std::string before;
  ASSERT_TRUE(LFile::ReadAll(path, before));
  LInvoice again;
  ASSERT_TRUE(Profile().MainList("Invoices").Open(again, "7"));
  EXPECT_FALSE(LInvoiceSumTotals(Profile(), again).TotalChanged());
  EXPECT_FALSE(again.IsDirty());
  again.Invalidate();
  std::string after;
  ASSERT_TRUE(LFile::ReadAll(path, after));
  EXPECT_EQ(before, after);
  EXPECT_EQ(Balance("C1"), 11000);

  // A second line: the balance moves by the difference.
  LInvoice edited;
  ASSERT_TRUE(Profile().MainList("Invoices").Open(edited, "7"));
  AddLine(edited, 1000, -1, 1, 0, "2", "");
  LInvoiceSumTotals(Profile(), edited);
  EXPECT_EQ(Balance("C1"), 12100);
}

TEST_F(CustomerBalance, DraftsAndOtherKindsLeaveTheBalanceAlone) {
  AddCustomer("C1");
  LInvoice draft;
  Profile().MainList("InvoicesDrafts").OpenAlways(draft, "DFT1");
  draft.SetString("Customer", "C1");
  AddLine(draft, 5000, -1, 1, 0, "2", "");
  LInvoiceSumTotals(Profile(), draft);
  LOrder order;
  Profile().MainList("Orders").OpenAlways(order, "1");
  order.SetString("Customer", "C1");
  AddLine(order, 5000, -1, 1, 0, "2", "");
  LOrderSumTotals(Profile(), order);
  EXPECT_EQ(draft.GetTotal(), 5500);
  EXPECT_EQ(order.GetTotal(), 5500);
  EXPECT_EQ(Balance("C1"), 0);
}

// ---- Derived values -------------------------------------------------------------------------

TEST_F(CustomerBalance, InvoiceStatusZeroTotalIsNothingDueEvenWhenPaid) {
  LInvoice invoice;
  invoice.SetPrimaryKey("1");
  invoice.SetInt64("AmountPaid", 500);
  EXPECT_EQ(LInvoiceGetStatus(Profile(), invoice), kInvoiceNothingDue);
  invoice.SetInt64("Total", 1000);
  EXPECT_EQ(LInvoiceGetStatus(Profile(), invoice), kInvoicePartlyPaid);
  invoice.SetInt64("AmountPaid", 1000);
  EXPECT_EQ(LInvoiceGetStatus(Profile(), invoice), kInvoicePaid);
  invoice.SetInt64("AmountPaid", 1200);
  EXPECT_EQ(LInvoiceGetStatus(Profile(), invoice), kInvoicePaid);
  invoice.SetInt64("AmountPaid", 0);
  EXPECT_EQ(LInvoiceGetStatus(Profile(), invoice), kInvoiceUnpaid);
  invoice.SetInt64("AmountPaid", -300);  // a refund: below the total
  EXPECT_EQ(LInvoiceGetStatus(Profile(), invoice), kInvoicePartlyPaid);
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
  invoice.SetString("Date", "");
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
