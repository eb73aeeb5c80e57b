#include "invoice/shared/salesreports.h"

#include <algorithm>
#include <map>

#include "invoice/shared/customer.h"
#include "invoice/shared/partyfields.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "llib/gen/money.h"

namespace {

void StartTable(LReportTable& table, std::string title, std::string subtitle, std::vector<std::string> columns) {
  table = LReportTable();
  table.title = std::move(title);
  table.subtitle = std::move(subtitle);
  table.columns = std::move(columns);
}

// Invoices one a row; the third column is the status or, for unpaid invoices, the due date.
void InvoiceRows(LReportTable& table, const std::vector<LSalesReportDocument>& invoices, bool unpaidOnly) {
  long long total = 0, paid = 0;
  for (const auto& invoice : invoices) {
    if (unpaidOnly && invoice.Outstanding() <= 0) continue;
    std::string third = unpaidOnly ? invoice.due : std::string(LInvoiceStatusText(invoice.status));
    LSalesReportAddRow(table, LReportRowKind::kAccount, invoice.key,
                       {invoice.date, invoice.customer, third, invoice.total, invoice.paid, invoice.Outstanding()});
    total += invoice.total;
    paid += invoice.paid;
  }
  LSalesReportAddRow(table, LReportRowKind::kTotal, "Total :", {"", "", "", total, paid, total - paid});
}

// Orders or quotes one a row with their sub-total, taxes and total.
void DocumentRows(LReportTable& table, const std::vector<LSalesReportDocument>& documents) {
  long long subTotal = 0, taxes = 0, total = 0;
  for (const auto& document : documents) {
    LSalesReportAddRow(table, LReportRowKind::kAccount, document.key,
                       {document.date, document.customer, document.subTotal, document.taxTotal, document.total});
    subTotal += document.subTotal;
    taxes += document.taxTotal;
    total += document.total;
  }
  LSalesReportAddRow(table, LReportRowKind::kTotal, "Total :", {"", "", subTotal, taxes, total});
}

struct SalesSums {
  long long count = 0;
  long long subTotal = 0;
  long long total = 0;
  long long paid = 0;
  void Add(const LSalesReportDocument& invoice) {
    ++count;
    subTotal += invoice.subTotal;
    total += invoice.total;
    paid += invoice.paid;
  }
  void AddRow(LReportTable& table, LReportRowKind kind, std::string_view label) const {
    LSalesReportAddRow(table, kind, label, {std::to_string(count), subTotal, total, paid, total - paid});
  }
};

// The invoices summed per group (in key order), then the total.
template <class GroupOf>
void GroupedSalesRows(LReportTable& table, const std::vector<LSalesReportDocument>& invoices, GroupOf groupOf) {
  std::map<std::string, SalesSums> groups;
  SalesSums all;
  for (const auto& invoice : invoices) {
    groups[groupOf(invoice)].Add(invoice);
    all.Add(invoice);
  }
  for (const auto& [group, sums] : groups) sums.AddRow(table, LReportRowKind::kAccount, group);
  all.AddRow(table, LReportRowKind::kTotal, "Total :");
}

const std::vector<std::string> kGroupedSalesColumns = {"Factures", "Ventes HT", "Total", "Payé", "Solde dû"};

}  // namespace

void LReportInvoices::GenerateReport(LReportTable& table) {
  StartTable(table, "Factures", PeriodText(), {"Date", "Client", "Statut", "Total", "Payé", "Solde dû"});
  InvoiceRows(table, Documents("Invoices"), false);
}

void LReportUnpaidInvoices::GenerateReport(LReportTable& table) {
  StartTable(table, "Factures impayées", PeriodText(), {"Date", "Client", "Échéance", "Total", "Payé", "Solde dû"});
  InvoiceRows(table, Documents("Invoices"), true);
}

void LReportOrders::GenerateReport(LReportTable& table) {
  StartTable(table, "Commandes", PeriodText(), {"Date", "Client", "Sous-total", "Taxes", "Total"});
  DocumentRows(table, Documents("Orders"));
}

void LReportQuotes::GenerateReport(LReportTable& table) {
  StartTable(table, "Devis", PeriodText(), {"Date", "Client", "Sous-total", "Taxes", "Total"});
  DocumentRows(table, Documents("Quotes"));
}

void LReportPayments::GenerateReport(LReportTable& table) {
  struct Payment {
    std::string key, date, customer, invoices;
    bool refund;
    long long amount;
  };
  std::vector<Payment> payments;
  Walk("Payments", [&payments](const LRecord& payment) {
    bool refund = payment.GetBool("IsRefund", false);
    long long amount = payment.GetInt64("Amount", 0);
    payments.push_back({payment.GetPrimaryKey(), payment.GetString("Date"), payment.GetString("Customer"),
                        payment.GetString("InvoiceNumber"), refund, refund ? -amount : amount});
  });
  std::sort(payments.begin(), payments.end(), [](const Payment& a, const Payment& b) {
    return a.date != b.date ? a.date < b.date : LDocumentKeyLess(a.key, b.key);
  });
  StartTable(table, "Paiements reçus", PeriodText(), {"Date", "Client", "Type", "Factures", "Montant"});
  long long total = 0;
  for (const auto& payment : payments) {
    LSalesReportAddRow(table, LReportRowKind::kAccount, payment.key,
                       {payment.date, payment.customer, payment.refund ? "Remboursement" : "Paiement",
                        payment.invoices, payment.amount});
    total += payment.amount;
  }
  LSalesReportAddRow(table, LReportRowKind::kTotal, "Total :", {"", "", "", "", total});
}

void LReportCustomers::GenerateReport(LReportTable& table) {
  struct Customer {
    std::string key, name, oldestDue;
    long long balance;
  };
  std::vector<Customer> customers;
  LCustomer customer;
  for (LFileStoreIteratorBase it(profile_.List(kCustomersList), customer); customer.IsAttached(); it.Next(customer))
    if (CustomerSelected(customer.GetPrimaryKey()))
      customers.push_back(
          {customer.GetPrimaryKey(), customer.GetString("Name"), customer.GetOldestDue(), customer.GetBalance()});
  std::sort(customers.begin(), customers.end(),
            [](const Customer& a, const Customer& b) { return LDocumentKeyLess(a.key, b.key); });

  StartTable(table, "Clients", {}, {"Nom", "Solde", "Échéance la plus ancienne"});
  long long total = 0;
  for (const auto& one : customers) {
    LSalesReportAddRow(table, LReportRowKind::kAccount, one.key, {one.name, one.balance, one.oldestDue});
    total += one.balance;
  }
  LSalesReportAddRow(table, LReportRowKind::kTotal, "Total :", {"", total, ""});
  LSalesReportAddRow(table, LReportRowKind::kResult, "Nombre de clients :", {std::to_string(customers.size())});
}

void LReportCustomerSales::GenerateReport(LReportTable& table) {
  StartTable(table, "Ventes par client", PeriodText(), kGroupedSalesColumns);
  GroupedSalesRows(table, Documents("Invoices"), [](const LSalesReportDocument& invoice) { return invoice.customer; });
}

void LReportSalesPerson::GenerateReport(LReportTable& table) {
  StartTable(table, "Ventes par vendeur", PeriodText(), kGroupedSalesColumns);
  GroupedSalesRows(table, Documents("Invoices"), [](const LSalesReportDocument& invoice) {
    return invoice.salesPerson.empty() ? std::string("Sans vendeur") : invoice.salesPerson;
  });
  // Each sales person earns the "CommissionRate" of the sales before tax.
  constexpr std::size_t kSalesColumn = 1;
  table.columns.push_back("Commission");
  long long total = 0;
  for (LReportRow& row : table.rows) {
    long long commission = total;
    if (row.kind == LReportRowKind::kAccount) {
      LRecord person;
      double rate = 0;
      if (profile_.MainList(kSalesPersonList).Open(person, row.label)) rate = person.GetFloat("CommissionRate", 0);
      person.DetachWithoutSave();
      commission = LRoundHalfAwayFromZero(static_cast<double>(row.values[kSalesColumn].value_or(0)) * rate / 100);
      total += commission;
    }
    row.values.push_back(commission);
    if (!row.texts.empty()) row.texts.emplace_back();
  }
}
