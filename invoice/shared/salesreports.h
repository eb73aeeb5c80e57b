// The sales reports that list or sum documents: invoices (all or unpaid), orders, quotes and
// payments over a period, the customers with their balances, and sales summed per customer and
// per sales person. Only recorded documents count (drafts live in other lists). Each detail row
// is labelled with the document's key, rows go oldest first, and a "Total :" row closes every
// table. Amounts are in minor units; dates, customers and statuses are text cells.
#pragma once

#include "invoice/shared/salesreport.h"

// "Factures": every invoice dated within the period. Columns "Date", "Client", "Statut",
// "Total", "Payé", "Solde dû".
class LReportInvoices : public LSalesReport {
 public:
  using LSalesReport::LSalesReport;
  void GenerateReport(LReportTable& table) override;
};

// "Factures impayées": the invoices of the period whose total exceeds the amount paid. Columns
// "Date", "Client", "Échéance" (the invoice's due date), "Total", "Payé", "Solde dû".
class LReportUnpaidInvoices : public LSalesReport {
 public:
  using LSalesReport::LSalesReport;
  void GenerateReport(LReportTable& table) override;
};

// "Commandes" and "Devis": the recorded orders or quotes of the period. Columns "Date",
// "Client", "Sous-total", "Taxes", "Total".
class LReportOrders : public LSalesReport {
 public:
  using LSalesReport::LSalesReport;
  void GenerateReport(LReportTable& table) override;
};
class LReportQuotes : public LSalesReport {
 public:
  using LSalesReport::LSalesReport;
  void GenerateReport(LReportTable& table) override;
};

// "Paiements reçus": the payments ("Payments") of the period. Columns "Date", "Client", "Type"
// ("Paiement" or "Remboursement"), "Factures" (the invoices it is applied to), "Montant"; a
// refund's amount is shown negative, so the total is what was received net.
class LReportPayments : public LSalesReport {
 public:
  using LSalesReport::LSalesReport;
  void GenerateReport(LReportTable& table) override;
};

// "Clients": the selected customers (every customer by default; the period is not used), by key.
// Columns "Nom", "Solde", "Échéance la plus ancienne"; "Total :" sums the balances and
// "Nombre de clients :" counts the rows.
class LReportCustomers : public LSalesReport {
 public:
  using LSalesReport::LSalesReport;
  void GenerateReport(LReportTable& table) override;
};

// "Ventes par client" and "Ventes par vendeur": the invoices of the period summed per customer,
// or per "SalesPerson" ("Sans vendeur" when empty). Columns "Factures" (their number),
// "Ventes HT" (the sub-totals), "Total", "Payé", "Solde dû"; per sales person also "Commission":
// the sales before tax at the sales person's "CommissionRate" (percent, "SalesPerson" list).
class LReportCustomerSales : public LSalesReport {
 public:
  using LSalesReport::LSalesReport;
  void GenerateReport(LReportTable& table) override;
};
class LReportSalesPerson : public LSalesReport {
 public:
  using LSalesReport::LSalesReport;
  void GenerateReport(LReportTable& table) override;
};
