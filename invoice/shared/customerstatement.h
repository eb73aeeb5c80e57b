// The statement of one customer's account over a period: the balance brought forward from
// before the period, then each invoice, credit note, payment and refund of the period in date
// order with the running balance, the period's totals, the closing balance, and how old that
// balance is (the buckets of the aging report, as at the period's last day).
//
// Invoices and refunds are debits (the customer owes more), credit notes and payments credits;
// the balance is the one the customer's "Balance" keeps (LCustomerBalanceFromDocuments).
//
//     LReportCustomerStatement statement(profile, "C1", LDate(2024, 1, 1), LDate(2024, 12, 31));
//     LReportTable table;
//     statement.GenerateReport(table);
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/salesreport.h"

class LReportCustomerStatement : public LSalesReport {
 public:
  // from invalid: from the first document (nothing brought forward); to invalid: up to today.
  LReportCustomerStatement(LProfile& profile, std::string customer, const LDate& from, const LDate& to);

  // Title "Relevé de compte", subtitle the customer and the period; columns "Date", "Échéance",
  // "Débit", "Crédit", "Solde". Rows: "Solde reporté" (result), one row per document labelled
  // "Facture N", "Avoir N", "Paiement N" or "Remboursement N" (date and, for invoices, due date
  // as text cells), "Total de la période" (total), "Solde au JJ" (result), then the heading
  // "Ancienneté du solde" and the aging buckets "Courant" to "Plus de 90 jours" in "Solde".
  void GenerateReport(LReportTable& table) override;

  // The balance brought forward and the closing balance of the last GenerateReport.
  long long Opening() const { return opening_; }
  long long Closing() const { return closing_; }

 private:
  std::string customer_;
  LDate from_, to_;
  long long opening_ = 0;
  long long closing_ = 0;
};

// The statements issued to customers (downloaded or printed), one record each in the list
// "StatementLog": "Customer", "From" and "To" (the period, "" when open), "Closing" (cents),
// "Issued" ("YYYY-MM-DD HH:MM:SS", local time), "User" (who issued it), "Format" ("CSV", "PDF").
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
