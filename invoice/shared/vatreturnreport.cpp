#include "invoice/shared/vatreturnreport.h"

#include "invoice/shared/mtdvat.h"
#include "llib/gen/money.h"
#include "llib/gen/reporttable.h"

const char* FKVatBoxLabel(int box) {
  static const char* const kLabels[] = {"",
                                        "Box 1 VAT due on sales",
                                        "Box 2 VAT due on acquisitions",
                                        "Box 3 Total VAT due",
                                        "Box 4 VAT reclaimed",
                                        "Box 5 Net VAT due",
                                        "Box 6 Total sales excluding VAT",
                                        "Box 7 Total purchases excluding VAT",
                                        "Box 8 Total goods supplied excluding VAT",
                                        "Box 9 Total acquisitions excluding VAT"};
  return box >= 1 && box <= 9 ? kLabels[box] : "";
}

void FKReportVatReturn(const FKVatReturns& r, LReportTable& table) {
  table.title = "VAT Return";
  table.subtitle = "Period " + r.periodKey;
  table.columns = {"Amount"};
  table.rows.clear();
  auto pence = [](double pounds) { return LRoundHalfAwayFromZero(pounds * 100); };
  const long long boxes[] = {0,
                             pence(r.vatDueSales),
                             pence(r.vatDueAcquisitions),
                             pence(r.totalVatDue),
                             pence(r.vatReclaimedCurrPeriod),
                             pence(r.netVatDue),
                             r.totalValueSalesExVAT * 100,
                             r.totalValuePurchasesExVAT * 100,
                             r.totalValueGoodsSuppliedExVAT * 100,
                             r.totalAcquisitionsExVAT * 100};
  for (int box = 1; box <= 9; ++box) table.AddRow(LReportRowKind::kAccount, FKVatBoxLabel(box), {boxes[box]});
}
