// What was sold, item by item: the lines of the invoices dated within the period, summed per
// item code ("Item<n>Code"; lines without a code under "Sans code"). A line's amount is its
// total as the document totaller takes it (before the document's taxes, shipping and
// fixed-percentage discount; the discount line itself is not an item sold and is left out).
// Line discounts count only when "DontShowDiscountColumn" is off, as in the totals. Beside the
// amount, what the items cost and the margin: a stocked product costs what the invoice took out
// of stock, another item its "Cost"; the two cells stay empty when a line's cost is unknown.
#pragma once

#include "invoice/shared/salesreport.h"

// "Ventes par article": one row per code, in code order. Columns "Description" (of the line
// on the earliest invoice), "Quantité" (the quantities summed), "Montant", "Coût", "Marge";
// then "Total :".
class LReportItems : public LSalesReport {
 public:
  using LSalesReport::LSalesReport;
  void GenerateReport(LReportTable& table) override;
};

// "Articles par client": a heading per customer (in key order), its items as above, and a
// "Total <customer> :" row; then "Total :" over all customers.
class LReportItemsPerCustomer : public LSalesReport {
 public:
  using LSalesReport::LSalesReport;
  void GenerateReport(LReportTable& table) override;
};
