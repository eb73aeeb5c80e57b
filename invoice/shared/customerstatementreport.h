// A customer's statement (invoice/shared/customerstatement.h) as a report table, for the report
// centre and `kontavo report statement`, and the log of the statements issued to customers.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/customerstatement.h"
#include "llib/gen/reporttable.h"

// Title "Relevé de compte", subtitle the customer and the period; columns "Date", "Débit",
// "Crédit", "Solde". Rows: "Solde reporté" (result), one row per entry labelled with its
// document ("Facture 12"; the date as a text cell), "Total de la période" (total), "Solde au
// YYYY-MM-DD" (result), then the heading "Ancienneté du solde" and the buckets "Courant" to
// "Plus de 90 jours" in "Solde".
void LCustomerStatementReport(const LCustomerStatement& statement, LReportTable& table);

// The statements issued to customers (downloaded or printed), one record each in the list
// "StatementLog": "Customer", "From" and "To" (the period), "Closing" (cents), "Issued"
// ("YYYY-MM-DD HH:MM:SS", local time), "User" (who issued it), "Format" ("CSV", "PDF").
inline constexpr std::string_view kStatementLogList = "StatementLog";

struct LCustomerStatementIssue {
  std::string customer, from, to;
  long long closing = 0;
  std::string issued, user, format;
};

// Adds an issue to the log; false when it could not be written.
[[nodiscard]] bool LCustomerStatementLogAdd(LProfile& profile, const LCustomerStatementIssue& issue);
// The issues of one customer, latest first.
std::vector<LCustomerStatementIssue> LCustomerStatementLog(LProfile& profile, std::string_view customer);
