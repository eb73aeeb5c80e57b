// Saving bills and bill payments: a bill saved again under its reference replaces its posting,
// and a ledger that refuses the new posting leaves the books as they were (the old posting back
// in place, no new payment record). The day file of the refused date is made a folder, which no
// process can append to, root included. And a bill line's amount is worked as a document line's.
#include <gtest/gtest.h>

#include <filesystem>

#include "accounts/accounts.h"
#include "accounts/billpayments.h"
#include "accounts/bills.h"
#include "accounts/ledger.h"
#include "tests/support/salestestbusiness.h"

namespace {

constexpr char kExpense[] = "6990";

class BillSaveTest : public LSalesTestBusiness {
 protected:
  void SetUp() override {
    LSalesTestBusiness::SetUp();
    EXPECT_TRUE(LCreateAccount(Profile(), kExpense, "Essais", kAccountExpense, false, 0, kClassificationNone));
  }
  static void Fill(LBill& bill, const char* date, long long amount, const char* reference = "") {
    bill.SetString("Supplier", "Martin");
    bill.SetString("Date", date);
    bill.AddItemLine(kExpense, amount, "");
    if (*reference != '\0') bill.SetString("JournalTxnRef", reference);
  }
  long long ExpenseBalance() {
    LAccount account;
    EXPECT_TRUE(LAccountList(Profile()).Open(account, kExpense));
    return account.GetTotalBalance();
  }
  // Makes the day file of date impossible to append to.
  void BlockDay(const char* date) {
    std::filesystem::create_directories(Profile().GetDatabaseName() + "/Ledger/" + date + ".csv");
  }
  long long PostedAmount(const char* date, const std::string& reference) {
    LLedgerTransaction txn;
    if (!LLedgerTransactionLoad(Profile(), txn, date, reference)) return 0;
    long long sum = 0;
    for (const auto& line : txn.Lines()) if (line.account == kExpense) sum += line.amount;
    return sum;
  }
};

TEST_F(BillSaveTest, SavingUnderAStoredReferenceReplacesThePosting) {
  LBill first;
  Fill(first, "2026-03-02", 5000);
  first.SetInt64("TaxAmount1", 500);
  ASSERT_TRUE(LBillSave(Profile(), first, "test"));
  std::string reference = first.GetPrimaryKey();
  EXPECT_EQ(first.GetInt64("Total", 0), 5500);
  EXPECT_EQ(ExpenseBalance(), 5000);

  LBill again;
  Fill(again, "2026-03-05", 6000, reference.c_str());
  ASSERT_TRUE(LBillSave(Profile(), again, "test"));
  EXPECT_EQ(again.GetPrimaryKey(), reference);
  EXPECT_EQ(PostedAmount("2026-03-02", reference), 0);
  EXPECT_EQ(PostedAmount("2026-03-05", reference), 6000);
  EXPECT_EQ(ExpenseBalance(), 6000);
  LBill stored;
  ASSERT_TRUE(Profile().List(kBillsList).Open(stored, reference));
  EXPECT_EQ(stored.GetString("Date"), "2026-03-05");
  EXPECT_EQ(stored.GetInt64("Total", 0), 6000);
}

TEST_F(BillSaveTest, ARefusedRepostPutsTheOldPostingBack) {
  LBill first;
  Fill(first, "2026-03-02", 5000);
  ASSERT_TRUE(LBillSave(Profile(), first, "test"));
  std::string reference = first.GetPrimaryKey();
  BlockDay("2026-03-09");

  LBill again;
  Fill(again, "2026-03-09", 7000, reference.c_str());
  EXPECT_FALSE(LBillSave(Profile(), again, "test"));
  EXPECT_EQ(PostedAmount("2026-03-02", reference), 5000);
  EXPECT_EQ(ExpenseBalance(), 5000);
  LBill stored;
  ASSERT_TRUE(Profile().List(kBillsList).Open(stored, reference));
  EXPECT_EQ(stored.GetString("Date"), "2026-03-02");
}

TEST_F(BillSaveTest, ARefusedPaymentLeavesNoRecord) {
  LBillPaymentRequest request{"Martin", 1200, "2026-03-09", "", "", "", {}, false};
  BlockDay("2026-03-09");
  std::string reference, error;
  EXPECT_FALSE(LBillPaymentCreate(Profile(), request, reference, error));
  EXPECT_EQ(error, kLedgerNotWrittenMessage);
  EXPECT_FALSE(Profile().List(kBillPaymentsList).TestRecordExists("1"));

  request.date = "2026-03-10";
  ASSERT_TRUE(LBillPaymentCreate(Profile(), request, reference, error)) << error;
  LBillPayment stored;
  ASSERT_TRUE(Profile().List(kBillPaymentsList).Open(stored, "1"));
  EXPECT_EQ(stored.GetString("JournalTxnRef"), reference);
}

}  // namespace

// A bill's line is worked as a document's line (floor(x + 0.5), extra unit decimals divided once):
// 3.33 × 1.5 = 4.995 -> 5.00; -3.33 × 1.5 = -4.995 -> -4.99 (negative halves toward zero, as
// documents); 1.999 at three decimals × 3 = 5.997 -> 6.00.
TEST_F(BillSaveTest, LineAmountsRoundAsDocumentLines) {
  struct Case {
    long long unit;
    const char* qty;
    int digits;
    long long amount;
  };
  LBill bill;
  const Case cases[] = {{333, "1.5", -1, 500}, {-333, "1.5", -1, -499}, {1999, "3", 3, 600}, {1999, "", 3, 200}};
  for (int line = 1; line <= 4; ++line) {
    const Case& c = cases[line - 1];
    bill.SetInt64("Item" + std::to_string(line) + "UnitValue", c.unit);
    if (*c.qty != '\0') bill.SetString("Item" + std::to_string(line) + "Qty", c.qty);
    bill.SetInt("Item" + std::to_string(line) + "UnitValueDigits", c.digits);
    EXPECT_EQ(bill.GetItemAmount(Profile(), line), c.amount) << line;
  }
}
