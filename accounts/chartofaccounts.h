// The chart-of-accounts report: the live accounts of the business grouped by type, each with
// its normal side. The sections come in the fixed order asset, income, liability, expense,
// equity, which is deliberately not the order of the statements.
#pragma once

#include "llib/gen/reporttable.h"

class LProfile;

class LChartOfAccounts {
 public:
  explicit LChartOfAccounts(LProfile& profile) : profile_(profile) {}
  // One heading row a type (its name), then one row an account that is not deleted, in number
  // order: label "%s %s" (number, description), detail "Débit" or "Crédit".
  void GenerateReport(LReportTable& table) const;

 private:
  LProfile& profile_;
};
