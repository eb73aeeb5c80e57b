#include "invoice/shared/vatreturnreport.h"

#include "invoice/shared/mtdvat.h"
#include "llib/gen/money.h"
#include "llib/gen/reporttable.h"

void FKReportVatReturn(const FKVatReturns& r, LReportTable& table) {
  table.title = "VAT Return";
  table.subtitle = "Period " + r.periodKey;
  table.columns = {"Amount"};
  table.rows.clear();
  auto pence = [](double pounds) { return LRoundHalfAwayFromZero(pounds * 100); };
  const std::pair<const char*, long long> boxes[] = {
      {"Box 1 VAT due on sales", pence(r.vatDueSales)},
      {"Box 2 VAT due on acquisitions", pence(r.vatDueAcquisitions)},
      {"Box 3 Total VAT due", pence(r.totalVatDue)},
      {"Box 4 VAT reclaimed", pence(r.vatReclaimedCurrPeriod)},
      {"Box 5 Net VAT due", pence(r.netVatDue)},
      {"Box 6 Total sales excluding VAT", r.totalValueSalesExVAT * 100},
      {"Box 7 Total purchases excluding VAT", r.totalValuePurchasesExVAT * 100},
      {"Box 8 Total goods supplied excluding VAT", r.totalValueGoodsSuppliedExVAT * 100},
      {"Box 9 Total acquisitions excluding VAT", r.totalAcquisitionsExVAT * 100},
  };
  for (const auto& [label, amount] : boxes) table.AddRow(LReportRowKind::kAccount, label, {amount});
}
