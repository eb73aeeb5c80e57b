#include "invoice/shared/vatobligationsreport.h"

#include "invoice/shared/mtdvat.h"
#include "invoice/shared/profile.h"
#include "llib/gen/reporttable.h"

void LReportVatObligations(LProfile& profile, LReportTable& table) {
  table.title = "VAT Obligations";
  table.columns = {"Start Date", "End Date", "Due Date", "Status", "Received Date"};
  table.rows.clear();
  for (const auto& obligation : LVATObligationsLoad(profile)) {
    LReportRow& row = table.AddRow(LReportRowKind::kAccount, obligation->GetPeriodKey(), {});
    for (const char* field : {"StartDate", "EndDate", "DueDate", "Status", "ReceivedDate"})
      row.texts.push_back(obligation->GetString(field));
  }
}
