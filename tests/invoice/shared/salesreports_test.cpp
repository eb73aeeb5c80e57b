// The sales reports over real record files: the aging buckets at their edges and the aging
// table, then the rows and totals of the document, customer, grouped-sales and item reports.
#include <gtest/gtest.h>

#include <cstdint>

#include "invoice/shared/agingreport.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/itemsreport.h"
#include "invoice/shared/options.h"
#include "invoice/shared/salesreports.h"
#include "tests/support/salestestbusiness.h"

namespace {

LDateTime At(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  LDateTime moment;
  moment.SetDateTime(year - 1900, month, day, hour, minute, second);
  return moment;
}

LDateTime Plus(const LDateTime& moment, long long seconds) {
  LDate date = moment.GetDate();
  LDateTime later;
  later.SetDateTime(date.year - 1900, date.month, date.day + static_cast<int>(seconds / kAgingOneDay),
                    moment.GetHour(), moment.GetMinute(),
                    moment.GetSecond() + static_cast<int>(seconds % kAgingOneDay));
  return later;
}

const LReportRow& RowOf(const LReportTable& table, const std::string& label) {
  for (const auto& row : table.rows)
    if (row.label == label) return row;
  static const LReportRow none;
  ADD_FAILURE() << "no row " << label;
  return none;
}

std::vector<std::string> Labels(const LReportTable& table) {
  std::vector<std::string> labels;
  for (const auto& row : table.rows) labels.push_back(row.label);
  return labels;
}

using Values = std::vector<std::optional<long long>>;

class SalesReports : public LSalesTestBusiness {
 protected:
  // A recorded document of list, written by Save.
  LSalesDocument& Document(const std::string& list, const std::string& key, const std::string& customer,
                           const std::string& date, long long total) {
    documents_.push_back(std::make_unique<LSalesDocument>());
    LSalesDocument& document = *documents_.back();
    Profile().List(list).OpenAlways(document, key);
    document.SetString("Customer", customer);
    document.SetString("Date", date);
    document.SetInt64("Total", total);
    return document;
  }
  LSalesDocument& Invoice(const std::string& key, const std::string& customer, const std::string& date,
                          long long total, long long paid) {
    LSalesDocument& invoice = Document("Invoices", key, customer, date, total);
    invoice.SetInt64("AmountPaid", paid);
    return invoice;
  }
  void Payment(const std::string& key, const std::string& customer, const std::string& date, long long amount,
               bool refund, const std::string& invoices) {
    LRecord payment;
    Profile().List("Payments").OpenAlways(payment, key);
    payment.SetString("Customer", customer);
    payment.SetString("Date", date);
    payment.SetInt64("Amount", amount);
    payment.SetBool("IsRefund", refund);
    payment.SetString("InvoiceNumber", invoices);
  }
  // Writes every document made so far.
  void Save() {
    for (auto& document : documents_) EXPECT_TRUE(document->Flush());
  }
  template <class Report>
  LReportTable Make(LSalesReportFilter filter = {}) {
    Save();
    Report report(Profile(), std::move(filter));
    LReportTable table;
    report.GenerateReport(table);
    return table;
  }

 private:
  std::vector<std::unique_ptr<LSalesDocument>> documents_;
};

// ---- Aging ------------------------------------------------------------------------------------

TEST(AgingBuckets, EdgesOfEachBucket) {
  const LDateTime date = At(2024, 3, 1);
  const long long terms = 30 * kAgingOneDay;
  const LDateTime due = Plus(date, terms);
  EXPECT_EQ(LAgingBucketOf(Plus(due, -1), date, terms), LAgingBucket::kCurrent);
  EXPECT_EQ(LAgingBucketOf(due, date, terms), LAgingBucket::kDays1To30);  // overdue 0: due, not current
  EXPECT_EQ(LAgingBucketOf(Plus(due, 30 * kAgingOneDay), date, terms), LAgingBucket::kDays1To30);
  EXPECT_EQ(LAgingBucketOf(Plus(due, 30 * kAgingOneDay + 1), date, terms), LAgingBucket::kDays31To60);
  EXPECT_EQ(LAgingBucketOf(Plus(due, 60 * kAgingOneDay), date, terms), LAgingBucket::kDays31To60);
  EXPECT_EQ(LAgingBucketOf(Plus(due, 60 * kAgingOneDay + 1), date, terms), LAgingBucket::kDays61To90);
  EXPECT_EQ(LAgingBucketOf(Plus(due, 90 * kAgingOneDay), date, terms), LAgingBucket::kDays61To90);
  EXPECT_EQ(LAgingBucketOf(Plus(due, 90 * kAgingOneDay + 1), date, terms), LAgingBucket::kOver90);
  // Long before its date an invoice is only current; overdue past 2^31 seconds fits no bucket,
  // and past 2^32 seconds it wraps round to a fresh overdue.
  EXPECT_EQ(LAgingBucketOf(At(2000, 1, 1), date, terms), LAgingBucket::kCurrent);
  EXPECT_EQ(LAgingBucketOf(Plus(due, 2147483648LL), date, terms), LAgingBucket::kNone);
  EXPECT_EQ(LAgingBucketOf(Plus(due, 4294967296LL + 5), date, terms), LAgingBucket::kDays1To30);
}

TEST_F(SalesReports, AgingSumsEachCustomersInvoicesIntoBuckets) {
  for (const char* key : {"C1", "C2", "C3"}) AddCustomer(key);
  const LDateTime now = At(2024, 6, 30, 23, 59, 59);
  Invoice("1", "C1", "2024-06-10", 10000, 2500);                         // due 07-10: current
  Invoice("2", "C1", "2024-05-01", 20000, 0);                            // due 05-31: 30 days 86399 s
  LSalesDocument& oneDay = Invoice("3", "C1", "2024-06-29", 3000, 0);  // one day, not 60: due 06-30
  oneDay.SetInt("PaymentTerms", 1);
  oneDay.SetInt("PaymentTermsDays", 60);
  Invoice("4", "C2", "2024-01-02", 5000, 1000);                          // due 02-01: 150 days
  Invoice("5", "C2", "2024-03-20", 1500, 0);                             // due 04-19: 72 days
  Invoice("6", "X", "2024-05-31", 999, 0);                               // not a customer
  Save();
  LOptions options;
  options.OpenFrom(Profile());
  options.SetBool("UseParenthesesForNegative", true);
  EXPECT_TRUE(options.Flush());

  LReportAccountsReceivableAgingReport report(Profile(), {}, now);
  LReportTable table;
  report.GenerateReport(table);
  EXPECT_TRUE(report.UseParenthesesForNegative());
  EXPECT_EQ(Labels(table), (std::vector<std::string>{"C1", "C2", "Total :", "Nombre de clients :",
                                                     "Montant échu total :"}));
  EXPECT_EQ(RowOf(table, "C1").values, (Values{30500, 7500, 3000, 20000, 0, 0}));
  EXPECT_EQ(RowOf(table, "C2").values, (Values{5500, 0, 0, 0, 1500, 4000}));
  EXPECT_EQ(RowOf(table, "Total :").values, (Values{36000, 7500, 3000, 20000, 1500, 4000}));
  EXPECT_EQ(RowOf(table, "Nombre de clients :").texts[0], "2");
  EXPECT_EQ(RowOf(table, "Montant échu total :").values[0], 28500);

  LReportAccountsReceivableAgingReport named(Profile(), {"C2", "X"}, now);
  named.GenerateReport(table);
  EXPECT_EQ(Labels(table), (std::vector<std::string>{"C2", "X", "Total :", "Nombre de clients :",
                                                     "Montant échu total :"}));
  EXPECT_EQ(RowOf(table, "X").values, (Values{999, 0, 999, 0, 0, 0}));
  EXPECT_EQ(RowOf(table, "Montant échu total :").values[0], 6499);
}

// ---- Document lists ---------------------------------------------------------------------------

TEST_F(SalesReports, InvoicesAndUnpaidInvoicesOfAPeriod) {
  Invoice("10", "C1", "2024-02-01", 5000, 5000);
  Invoice("9", "C2", "2024-02-01", 3000, 1000).SetInt("PaymentTerms", 1);
  Invoice("2", "C1", "2024-01-15", 2000, 0);
  Invoice("3", "C1", "2023-12-31", 7000, 0);
  LSalesReportFilter january = {LDate(2024, 1, 1), LDate(2024, 12, 31), {}};

  LReportTable all = Make<LReportInvoices>(january);
  EXPECT_EQ(all.subtitle, "Du 2024-01-01 au 2024-12-31");
  EXPECT_EQ(Labels(all), (std::vector<std::string>{"2", "9", "10", "Total :"}));
  EXPECT_EQ(RowOf(all, "9").texts[0], "2024-02-01");
  EXPECT_EQ(RowOf(all, "9").texts[1], "C2");
  EXPECT_EQ(RowOf(all, "9").texts[2], "Partiellement payée");
  EXPECT_EQ(RowOf(all, "10").texts[2], "Payée");
  EXPECT_EQ(RowOf(all, "9").values, (Values{std::nullopt, std::nullopt, std::nullopt, 3000, 1000, 2000}));
  EXPECT_EQ(RowOf(all, "Total :").values, (Values{std::nullopt, std::nullopt, std::nullopt, 10000, 6000, 4000}));

  LReportTable unpaid = Make<LReportUnpaidInvoices>({{}, LDate(2024, 12, 31), {"C1", "C2"}});
  EXPECT_EQ(Labels(unpaid), (std::vector<std::string>{"3", "2", "9", "Total :"}));
  EXPECT_EQ(RowOf(unpaid, "2").texts[2], "2024-02-14");  // 30 days
  EXPECT_EQ(RowOf(unpaid, "9").texts[2], "2024-02-01");  // due at once
  EXPECT_EQ(RowOf(unpaid, "Total :").values[5], 7000 + 2000 + 2000);

  LReportTable one = Make<LReportUnpaidInvoices>({{}, {}, {"C2"}});
  EXPECT_EQ(Labels(one), (std::vector<std::string>{"9", "Total :"}));
}

TEST_F(SalesReports, OrdersQuotesAndPayments) {
  LSalesDocument& order = Document("Orders", "1", "C1", "2024-03-01", 11500);
  order.SetInt64("ShippingCosts", 500);
  order.SetInt("TaxAmountCount", 1);
  order.SetInt64("TaxAmount1", 1000);
  Document("Orders", "2", "C2", "2024-03-02", 2000).SetInt("TaxAmountCount", 0);
  Document("Quotes", "1", "C1", "2024-04-01", 400).SetInt("TaxAmountCount", 0);
  LReportTable orders = Make<LReportOrders>();
  EXPECT_EQ(orders.title, "Commandes");
  EXPECT_EQ(RowOf(orders, "1").values[2], 10000);  // sub-total without tax and shipping
  EXPECT_EQ(RowOf(orders, "Total :").values, (Values{std::nullopt, std::nullopt, 12000, 1000, 13500}));
  LReportTable quotes = Make<LReportQuotes>();
  EXPECT_EQ(Labels(quotes), (std::vector<std::string>{"1", "Total :"}));
  EXPECT_EQ(RowOf(quotes, "Total :").values[4], 400);

  Payment("1", "C1", "2024-03-05", 8000, false, "1,2");
  Payment("2", "C1", "2024-03-06", 500, true, "2");
  Payment("3", "C2", "2024-04-01", 100, false, "");
  LReportTable payments = Make<LReportPayments>({LDate(2024, 3, 1), LDate(2024, 3, 31), {}});
  EXPECT_EQ(Labels(payments), (std::vector<std::string>{"1", "2", "Total :"}));
  EXPECT_EQ(RowOf(payments, "1").texts[3], "1,2");
  EXPECT_EQ(RowOf(payments, "2").texts[2], "Remboursement");
  EXPECT_EQ(RowOf(payments, "2").values[4], -500);
  EXPECT_EQ(RowOf(payments, "Total :").values[4], 7500);
}

TEST_F(SalesReports, CustomersAndSalesPerCustomerAndSalesPerson) {
  for (const char* key : {"C10", "C2", "C1"}) AddCustomer(key);
  {
    LCustomer customer;
    Profile().List(kCustomersList).Open(customer, "C2");
    customer.SetInt64("Balance", 1500);
    customer.SetString("OldestDue", "2024-02-01 01:00:00");
  }
  LReportTable customers = Make<LReportCustomers>();
  EXPECT_EQ(Labels(customers), (std::vector<std::string>{"C1", "C10", "C2", "Total :", "Nombre de clients :"}));
  EXPECT_EQ(RowOf(customers, "C2").texts[0], "C2");
  EXPECT_EQ(RowOf(customers, "C2").texts[2], "2024-02-01 01:00:00");
  EXPECT_EQ(RowOf(customers, "Total :").values[1], 1500);
  EXPECT_EQ(RowOf(customers, "Nombre de clients :").texts[0], "3");
  EXPECT_EQ(Labels(Make<LReportCustomers>({{}, {}, {"C2"}})),
            (std::vector<std::string>{"C2", "Total :", "Nombre de clients :"}));

  Invoice("1", "C1", "2024-01-01", 1100, 1100).SetString("SalesPerson", "Anne");
  Invoice("2", "C1", "2024-01-02", 2200, 0).SetString("SalesPerson", "Bruno");
  Invoice("3", "C2", "2024-01-03", 3300, 300).SetString("SalesPerson", "Anne");
  Invoice("4", "C2", "2024-01-04", 4400, 0);
  Invoice("5", "C2", "2025-01-04", 9900, 0);
  LSalesReportFilter year = {LDate(2024, 1, 1), LDate(2024, 12, 31), {}};
  LReportTable perCustomer = Make<LReportCustomerSales>(year);
  EXPECT_EQ(Labels(perCustomer), (std::vector<std::string>{"C1", "C2", "Total :"}));
  EXPECT_EQ(RowOf(perCustomer, "C2").texts[0], "2");
  EXPECT_EQ(RowOf(perCustomer, "C2").values, (Values{std::nullopt, 7700, 7700, 300, 7400}));
  EXPECT_EQ(RowOf(perCustomer, "Total :").texts[0], "4");
  EXPECT_EQ(RowOf(perCustomer, "Total :").values, (Values{std::nullopt, 11000, 11000, 1400, 9600}));

  // Anne earns 5.5 % of her sales before tax; Bruno has no record, so no commission.
  LRecord anne;
  Profile().List("SalesPerson").OpenAlways(anne, "Anne");
  anne.SetString("CommissionRate", "5.500000");
  ASSERT_TRUE(anne.Flush());
  LReportTable perPerson = Make<LReportSalesPerson>(year);
  EXPECT_EQ(Labels(perPerson), (std::vector<std::string>{"Anne", "Bruno", "Sans vendeur", "Total :"}));
  EXPECT_EQ(perPerson.columns.back(), "Commission");
  EXPECT_EQ(RowOf(perPerson, "Anne").values, (Values{std::nullopt, 4400, 4400, 1400, 3000, 242}));
  EXPECT_EQ(RowOf(perPerson, "Bruno").values.back(), 0);
  EXPECT_EQ(RowOf(perPerson, "Total :").values.back(), 242);
  EXPECT_EQ(RowOf(perPerson, "Sans vendeur").texts[0], "1");
}

TEST_F(SalesReports, ItemsAndItemsPerCustomer) {
  LSalesDocument& first = Invoice("1", "C1", "2024-05-01", 0, 0);
  AddLine(first, 1999, 3, 2, 0, "", "A");  // 1.999 × 2 in a 2-digit currency: 399.8 -> 400
  first.SetString("Item1Code", "W");
  first.SetString("Item1Description", "Widget");
  AddLine(first, 1000, -1, 1.5, 0, "", "A");  // no code
  AddLine(first, 0, -1, 1, 10, "", "");       // the fixed-percentage discount line
  first.SetString("Item3Code", "REMISE");
  first.SetInt("FixedPercentageDiscountItem", 3);
  LSalesDocument& second = Invoice("2", "C2", "2024-05-02", 0, 0);
  AddLine(second, 500, -1, 0.5, 50, "", "A");  // line discounts are ignored by default
  second.SetString("Item1Code", "W");
  second.SetString("Item1Description", "Autre texte");

  LReportTable items = Make<LReportItems>();
  EXPECT_EQ(Labels(items), (std::vector<std::string>{"Sans code", "W", "Total :"}));
  EXPECT_EQ(RowOf(items, "W").texts[0], "Widget");
  EXPECT_EQ(RowOf(items, "W").texts[1], "2.5");
  EXPECT_EQ(RowOf(items, "W").values[2], 400 + 250);
  EXPECT_EQ(RowOf(items, "Sans code").values[2], 1500);
  EXPECT_EQ(RowOf(items, "Total :").values[2], 2150);

  LReportTable perCustomer = Make<LReportItemsPerCustomer>();
  EXPECT_EQ(Labels(perCustomer), (std::vector<std::string>{"C1", "Sans code", "W", "Total C1 :", "C2", "W",
                                                           "Total C2 :", "Total :"}));
  EXPECT_EQ(perCustomer.rows[0].kind, LReportRowKind::kHeading);
  EXPECT_EQ(perCustomer.rows[5].values[2], 250);
  EXPECT_EQ(perCustomer.rows[5].texts[1], "0.5");
  EXPECT_EQ(RowOf(perCustomer, "Total C1 :").values[2], 1900);
  EXPECT_EQ(RowOf(perCustomer, "Total :").values[2], 2150);
}

}  // namespace
