// The purchase book: suppliers' balances and bills' amounts paid kept in step with every save,
// edit and delete of bills and bill payments (the ledger's own deletes included); applications
// refused when they do not fit; `kontavo check` finding and fixing a balance or amount paid that
// drifted; bills moving stock, and a purchase order made a bill bringing its goods in once.
#include <gtest/gtest.h>

#include "accounts/billpayments.h"
#include "accounts/bills.h"
#include "accounts/check.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "accounts/porderbill.h"
#include "accounts/suppliers.h"
#include "invoice/sales/porderconversion.h"
#include "invoice/sales/salesbook.h"
#include "invoice/shared/inventory.h"
#include "invoice/shared/item.h"
#include "llib/gen/filestore.h"
#include "llib/gen/process.h"
#include "tests/support/salestestbusiness.h"

namespace {

class PurchaseBook : public LSalesTestBusiness {
 protected:
  void SetUp() override {
    LSalesTestBusiness::SetUp();
    for (const char* key : {"DUP", "MAR"}) {
      LRecord supplier;
      Profile().List(kSuppliersList).OpenAlways(supplier, key);
      supplier.SetString("Name", key);
      supplier.SetInt("PaymentTermsDays", 10);
      ASSERT_TRUE(supplier.Flush());
    }
  }
  // A bill of supplier on date: one line of amount cents on the default expense account (slot 9's
  // 6110 here), plus tax 1 when given; its reference.
  std::string Bill(const char* supplier, const char* date, long long amount, long long tax = 0,
                   const std::string& reference = "") {
    LBill bill;
    bill.SetString("Supplier", supplier);
    bill.SetString("Date", date);
    bill.AddItemLine("6110", amount, "");
    if (tax != 0) bill.SetInt64("TaxAmount1", tax);
    if (!reference.empty()) bill.SetString("JournalTxnRef", reference);
    EXPECT_TRUE(LBillSave(Profile(), bill, "test"));
    return bill.GetPrimaryKey();
  }
  std::string Pay(const char* supplier, long long amount, std::vector<LAppliedAmount> applications, bool spread = false,
                  std::string* refusal = nullptr) {
    LBillPaymentRequest request{supplier, amount, "2026-03-20", "", "", "", std::move(applications), spread};
    std::string reference, error;
    bool made = LBillPaymentCreate(Profile(), request, reference, error);
    if (refusal != nullptr) *refusal = error;
    else EXPECT_TRUE(made) << error;
    return made ? LastPaymentKey() : std::string();
  }
  std::string LastPaymentKey() {
    std::string last;
    LRecord payment;
    for (LFileStoreIteratorBase it(Profile().List(kBillPaymentsList), payment); payment.IsAttached(); it.Next(payment))
      if (last.empty() || LDocumentKeyLess(last, payment.GetPrimaryKey())) last = payment.GetPrimaryKey();
    return last;
  }
  long long Field(std::string_view list, const std::string& key, const char* field) {
    LRecord record;
    EXPECT_TRUE(Profile().List(list).Open(record, key)) << key;
    return record.GetInt64(field, 0);
  }
  long long Balance(const char* supplier) { return Field(kSuppliersList, supplier, "Balance"); }
  long long Paid(const std::string& bill) { return Field(kBillsList, bill, "AmountPaid"); }
  LCheckReport Check(bool fix) {
    LBookCheckProcess data;
    data.profile = &Profile();
    data.fix = fix;
    LProcessInterfaceVoid process;
    EXPECT_EQ(Process(process, data), kProcessFinished);
    return data.report;
  }
};

TEST_F(PurchaseBook, BalancesAndAmountsPaidFollowEveryChange) {
  std::string first = Bill("DUP", "2026-03-01", 10000, 2000);  // 120.00, due 2026-03-11
  std::string second = Bill("DUP", "2026-02-01", 5000);        // 50.00, due first
  EXPECT_EQ(Balance("DUP"), 17000);
  std::vector<LOpenBill> open = LOpenBills(Profile(), "DUP");
  ASSERT_EQ(open.size(), 2u);
  EXPECT_EQ(open[0].key, second);
  EXPECT_EQ(open[0].due, "2026-02-11");

  // 80.00 spread: the bill due first is settled, 30.00 goes to the other.
  std::string spread = Pay("DUP", 8000, {}, true);
  EXPECT_EQ(Paid(second), 5000);
  EXPECT_EQ(Paid(first), 3000);
  EXPECT_EQ(Balance("DUP"), 9000);
  std::string named = Pay("DUP", 9000, {{first, 6000}});
  EXPECT_EQ(Paid(first), 9000);
  EXPECT_EQ(Balance("DUP"), 0);

  // The bill lowered below what it holds gives the excess back, the latest payment first.
  Bill("DUP", "2026-03-01", 6000, 1200, first);  // 72.00
  EXPECT_EQ(Paid(first), 7200);
  LBillPayment payment;
  ASSERT_TRUE(Profile().List(kBillPaymentsList).Open(payment, named));
  EXPECT_EQ(payment.GetString("BillNumber"), first);
  EXPECT_EQ(payment.GetString("BillAmounts"), "4200");
  EXPECT_EQ(LBillPaymentUnapplied(payment), 4800);
  payment.DetachWithoutSave();
  EXPECT_EQ(Balance("DUP"), 12200 - 17000);

  // Another supplier's bill lets the payments go.
  Bill("MAR", "2026-03-01", 6000, 1200, first);
  EXPECT_EQ(Paid(first), 0);
  EXPECT_EQ(Balance("MAR"), 7200);
  EXPECT_EQ(Balance("DUP"), 5000 - 17000);

  // The ledger's delete of a payment's transaction deletes the payment through the book.
  LBillPayment spreadRecord;
  ASSERT_TRUE(Profile().List(kBillPaymentsList).Open(spreadRecord, spread));
  std::string reference = spreadRecord.GetString("JournalTxnRef");
  spreadRecord.DetachWithoutSave();
  ASSERT_TRUE(LedgerTransactionDelete(Profile(), "2026-03-20", reference));
  EXPECT_FALSE(Profile().List(kBillPaymentsList).TestRecordExists(spread));
  EXPECT_EQ(Paid(second), 0);
  EXPECT_EQ(Balance("DUP"), 5000 - 9000);
  std::string error;
  ASSERT_TRUE(LBillDelete(Profile(), second, &error)) << error;
  EXPECT_EQ(Balance("DUP"), -9000);
  EXPECT_FALSE(Check(false).HasUnresolved());

  // Editing the payment moves the balance by the difference and applies it anew.
  std::string third = Bill("DUP", "2026-03-02", 10000);
  LBillPaymentRequest request{"DUP", 4000, "2026-03-21", "", "Acompte", "Virement", {{third, 4000}}, false};
  ASSERT_TRUE(LBillPaymentEdit(Profile(), named, request, error)) << error;
  EXPECT_EQ(Paid(third), 4000);
  EXPECT_EQ(Balance("DUP"), 10000 - 4000);
  ASSERT_TRUE(LBillPaymentApply(Profile(), named, third, 2500, error)) << error;
  EXPECT_EQ(Paid(third), 2500);
  ASSERT_TRUE(LBillPaymentDelete(Profile(), named, error)) << error;
  EXPECT_EQ(Paid(third), 0);
  EXPECT_EQ(Balance("DUP"), 10000);
  EXPECT_FALSE(Check(false).HasUnresolved());
}

TEST_F(PurchaseBook, ApplicationsThatDoNotFitAreRefusedAndNothingIsWritten) {
  std::string dup = Bill("DUP", "2026-03-01", 10000);
  std::string mar = Bill("MAR", "2026-03-01", 5000);
  std::string refusal;
  EXPECT_EQ(Pay("DUP", 5000, {{mar, 1000}}, false, &refusal), "");
  EXPECT_EQ(refusal, "La facture " + mar + " n'est pas une facture du fournisseur « DUP ».");
  EXPECT_EQ(Pay("DUP", 20000, {{dup, 10001}}, false, &refusal), "");
  EXPECT_NE(refusal.find("doit être compris entre 0 et ce qu'elle doit encore"), std::string::npos) << refusal;
  EXPECT_EQ(Pay("DUP", 5000, {{dup, 6000}}, false, &refusal), "");
  EXPECT_NE(refusal.find("dépasse le montant du règlement"), std::string::npos) << refusal;
  EXPECT_EQ(Pay("DUP", 5000, {{"PRC99999", 100}}, false, &refusal), "");
  EXPECT_EQ(refusal, "La facture fournisseur « PRC99999 » n'existe pas.");
  EXPECT_EQ(LastPaymentKey(), "");
  EXPECT_EQ(Balance("DUP"), 10000);
  EXPECT_EQ(Paid(dup), 0);

  std::string payment = Pay("DUP", 3000, {{dup, 3000}});
  std::string error;
  EXPECT_FALSE(LBillPaymentApply(Profile(), payment, dup, 3001, error));
  EXPECT_FALSE(LBillPaymentApply(Profile(), "999", dup, 10, error));
  EXPECT_EQ(error, "Le règlement « 999 » n'existe pas.");
  EXPECT_EQ(Paid(dup), 3000);
  EXPECT_FALSE(LBillDelete(Profile(), "PRC99999", &error));

  // A supplier named by a document stays; one named by none goes.
  EXPECT_FALSE(LSupplierDelete(Profile(), "DUP", &error));
  EXPECT_EQ(error, "Le fournisseur « DUP » ne peut pas être supprimé : la facture " + dup + " le nomme.");
  LRecord lone;
  Profile().List(kSuppliersList).OpenAlways(lone, "SEUL");
  lone.SetString("Name", "Seul");
  ASSERT_TRUE(lone.Flush());
  EXPECT_TRUE(LSupplierDelete(Profile(), "SEUL", &error)) << error;
}

TEST_F(PurchaseBook, CheckFindsAndFixesABalanceOrAnAmountPaidThatDrifted) {
  std::string bill = Bill("DUP", "2026-03-01", 10000);
  Pay("DUP", 4000, {{bill, 4000}});
  EXPECT_FALSE(Check(false).HasUnresolved());
  {
    LRecord supplier, record;
    ASSERT_TRUE(Profile().List(kSuppliersList).Open(supplier, "DUP"));
    supplier.SetInt64("Balance", 1);
    ASSERT_TRUE(Profile().List(kBillsList).Open(record, bill));
    record.SetInt64("AmountPaid", 2);
  }
  LCheckReport report = Check(false);
  ASSERT_EQ(report.differences.size(), 2u);
  EXPECT_EQ(report.differences[0].field, "Balance");
  EXPECT_EQ(report.differences[0].computed, 6000);
  EXPECT_EQ(report.differences[1].key, bill);
  EXPECT_EQ(report.differences[1].computed, 4000);
  EXPECT_TRUE(report.HasUnresolved());
  EXPECT_TRUE(Check(true).differences[0].fixed);
  EXPECT_FALSE(Check(false).HasUnresolved());
  EXPECT_EQ(Balance("DUP"), 6000);
  EXPECT_EQ(Paid(bill), 4000);
}

TEST_F(PurchaseBook, BillsBringGoodsInAndAnOrderMadeABillBringsThemOnce) {
  LItemInput widget;
  widget.description = "Widget";
  ASSERT_TRUE(LItemSave(Profile(), "W", widget, true, nullptr));
  auto stock = [&](const std::string& date = {}) {
    LInventoryItem item;
    EXPECT_TRUE(LInventoryItemAt(Profile(), "W", date, item));
    return item.stock;
  };
  LBill bill;
  bill.SetString("Supplier", "DUP");
  bill.SetString("Date", "2026-03-01");
  bill.AddItemLine("6110", 400, "");
  bill.SetString("Item1Code", "W");
  bill.SetFloat("Item1Qty", 5);
  ASSERT_TRUE(LBillSave(Profile(), bill, "test"));
  EXPECT_EQ(stock().quantity, 5);
  EXPECT_EQ(stock().value, 2000);
  bill.SetFloat("Item1Qty", 3);  // edited under its reference
  ASSERT_TRUE(LBillSave(Profile(), bill, "test"));
  EXPECT_EQ(stock().quantity, 3);
  std::string error;
  ASSERT_TRUE(LBillDelete(Profile(), bill.GetPrimaryKey(), &error));
  EXPECT_EQ(stock().quantity, 0);

  // A purchase order of 4 W at 6.00 plus 20.00 shipping, taxed at "A" (10 %).
  LRecord content;
  content.SetString("Customer", "DUP");
  content.SetString("Date", "2026-03-05");
  AddLine(content, 600, -1, 4, 0, "", "A");
  content.SetString("Item1Code", "W");
  content.SetInt64("ShippingCosts", 2000);
  std::string order, reference;
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(LSalesDocumentType::kPOrder);
  ASSERT_TRUE(LSalesDocumentCreate(Profile(), kind, content, false, {}, order, &error)) << error;
  LSalesDocument stored;
  ASSERT_TRUE(LSalesDocumentOpen(Profile(), kind, order, stored));
  long long orderTotal = stored.GetTotal();
  stored.DetachWithoutSave();
  ASSERT_TRUE(LPOrderConvertToBill(Profile(), order, "2026-03-09", reference, &error)) << error;
  EXPECT_EQ(stock().quantity, 4);
  EXPECT_EQ(stock("2026-03-08").quantity, 0);  // received with the bill's date
  EXPECT_EQ(Field(kBillsList, reference, "Total"), orderTotal);
  EXPECT_EQ(Balance("DUP"), orderTotal);
  EXPECT_FALSE(LPOrderConvertToBill(Profile(), order, "2026-03-09", reference, &error));
  EXPECT_NE(error.find("a déjà été facturé"), std::string::npos) << error;
  // The bill edited or deleted leaves the order's receipt alone.
  std::string billKey = reference;
  ASSERT_TRUE(LBillDelete(Profile(), billKey, &error));
  EXPECT_EQ(stock().quantity, 4);
  EXPECT_FALSE(Check(false).HasUnresolved());
}

}  // namespace
