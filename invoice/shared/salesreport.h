// What every sales report shares: the business it reads, the period of document dates it keeps
// and the customers it is about; the walk over a document list with that filter; and the rows
// of the report table that mix text cells (dates, customer keys, statuses) with amounts.
//
// A report is built once and fills a table in GenerateReport:
//     LReportInvoices report(profile, {from, to, {"C1"}});
//     LReportTable table;
//     report.GenerateReport(table);
#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "llib/gen/date.h"
#include "llib/gen/reporttable.h"

class LProfile;
class LRecord;
class LSalesDocument;

struct LSalesReportFilter {
  LDate from;                          // first "Date" kept; invalid: no lower bound
  LDate to;                            // last "Date" kept; invalid: no upper bound
  std::vector<std::string> customers;  // keys compared exactly with "Customer"; empty: every customer
};

// The main figures of one document, as the document-list reports show them.
struct LSalesReportDocument {
  std::string key;
  std::string date;
  std::string customer;
  std::string salesPerson;  // "SalesPerson"
  std::string due;          // invoices: the due date (LInvoiceCalculateDueDate) as "YYYY-MM-DD"
  long long total = 0;      // "Total"
  long long subTotal = 0;   // before tax and shipping
  long long taxTotal = 0;
  long long paid = 0;       // GetAmountPaid (0 for every kind but invoices)
  int status = 0;           // LInvoiceGetStatus (invoices)
  long long Outstanding() const { return total - paid; }
};

class LSalesReport {
 public:
  LSalesReport(LProfile& profile, LSalesReportFilter filter);
  virtual ~LSalesReport() = default;
  LSalesReport(const LSalesReport&) = delete;
  LSalesReport& operator=(const LSalesReport&) = delete;

  // Replaces the table's title, columns and rows with the report.
  virtual void GenerateReport(LReportTable& table) = 0;

  // The records this report covers. Walk calls visit for every record of listName within the
  // period and the customer selection, in the order of the folder.
  void Walk(std::string_view listName, const std::function<void(const LRecord&)>& visit) const;
  void WalkDocuments(std::string_view listName, const std::function<void(LSalesDocument&)>& visit) const;
  // The documents of listName that Walk keeps, oldest first, keys in number order within a day.
  std::vector<LSalesReportDocument> Documents(std::string_view listName) const;
  LProfile& Profile() const { return profile_; }

 protected:
  // "Date" within the period (text comparison of "YYYY-MM-DD"; an empty date is before any day).
  bool InPeriod(std::string_view date) const;
  bool CustomerSelected(std::string_view customer) const;
  // Restricts the report to exactly these customers (none at all when keys is empty).
  void SelectCustomers(const std::vector<std::string>& keys);
  // Both of the above for a record's "Date" and "Customer".
  bool Keeps(const LRecord& record) const;
  // "Du 2024-01-01 au 2024-12-31", "Depuis le …", "Jusqu'au …" or "" without bounds.
  std::string PeriodText() const;

  LProfile& profile_;
  LSalesReportFilter filter_;

 private:
  std::string fromText_;  // the period's bounds as dates are stored; empty: open
  std::string toText_;
  bool everyCustomer_;                            // no customer was named
  std::set<std::string, std::less<>> selected_;  // the customers named
};

// "Du 2024-01-01 au 2024-12-31", "Depuis le …", "Jusqu'au …" or "" for invalid bounds.
std::string LSalesReportPeriodText(const LDate& from, const LDate& to);

// One cell of a row: a text or an amount in minor units.
using LSalesReportCell = std::variant<std::string, long long>;
// Adds a row whose cells follow the table's columns in order.
LReportRow& LSalesReportAddRow(LReportTable& table, LReportRowKind kind, std::string_view label,
                               const std::vector<LSalesReportCell>& cells);
