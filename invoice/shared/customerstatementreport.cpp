#include "invoice/shared/customerstatementreport.h"

#include <algorithm>

#include "invoice/shared/profile.h"
#include "invoice/shared/salesreport.h"
#include "llib/gen/filestore.h"
#include "llib/gen/record.h"

namespace {

constexpr const char* kBuckets[] = {"Courant", "1 à 30 jours", "31 à 60 jours", "61 à 90 jours", "Plus de 90 jours"};

}  // namespace

void LCustomerStatementReport(const LCustomerStatement& statement, LReportTable& table) {
  table = LReportTable();
  table.title = "Relevé de compte";
  table.subtitle = (statement.name == statement.customer ? statement.customer
                                                         : statement.name + " (" + statement.customer + ")") +
                   " — " + LSalesReportPeriodText(statement.from, statement.to);
  table.columns = {"Date", "Débit", "Crédit", "Solde"};
  LSalesReportAddRow(table, LReportRowKind::kResult, "Solde reporté", {statement.from.ToText(), "", "", statement.opening});
  long long charges = 0, credits = 0;
  for (const LCustomerStatementEntry& entry : statement.entries) {
    LSalesReportCell charge = entry.charge != 0 ? LSalesReportCell(entry.charge) : LSalesReportCell("");
    LSalesReportCell credit = entry.credit != 0 ? LSalesReportCell(entry.credit) : LSalesReportCell("");
    LSalesReportAddRow(table, LReportRowKind::kAccount, entry.document, {entry.date, charge, credit, entry.balance});
    charges += entry.charge;
    credits += entry.credit;
  }
  LSalesReportAddRow(table, LReportRowKind::kTotal, "Total de la période", {"", charges, credits, ""});
  std::string last = statement.to.ToText();
  LSalesReportAddRow(table, LReportRowKind::kResult, "Solde au " + last, {last, "", "", statement.closing});
  table.AddHeading("Ancienneté du solde");
  for (std::size_t bucket = 0; bucket < std::size(kBuckets); ++bucket)
    LSalesReportAddRow(table, LReportRowKind::kAccount, kBuckets[bucket], {"", "", "", statement.aging[bucket + 1]})
        .indent = 1;
}

bool LCustomerStatementLogAdd(LProfile& profile, const LCustomerStatementIssue& issue) {
  LRecord record;
  profile.MainList(kStatementLogList).CreateNewRecord(record);
  record.SetString("Customer", issue.customer);
  record.SetString("From", issue.from);
  record.SetString("To", issue.to);
  record.SetString("Closing", std::to_string(issue.closing));
  record.SetString("Issued", issue.issued);
  record.SetString("User", issue.user);
  record.SetString("Format", issue.format);
  return record.Flush();
}

std::vector<LCustomerStatementIssue> LCustomerStatementLog(LProfile& profile, std::string_view customer) {
  std::vector<LCustomerStatementIssue> issues;
  LRecord record;
  for (LFileStoreIteratorBase it(profile.MainList(kStatementLogList), record); record.IsAttached(); it.Next(record))
    if (record.GetString("Customer") == customer)
      issues.push_back({record.GetString("Customer"), record.GetString("From"), record.GetString("To"),
                        record.GetInt64("Closing", 0), record.GetString("Issued"), record.GetString("User"),
                        record.GetString("Format")});
  std::stable_sort(issues.begin(), issues.end(),
                   [](const LCustomerStatementIssue& a, const LCustomerStatementIssue& b) { return a.issued > b.issued; });
  return issues;
}
