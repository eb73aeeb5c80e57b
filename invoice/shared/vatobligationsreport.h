// The VAT obligations report: the return periods stored by the last successful retrieval
// ("VATObligations"), one row a period labelled with its period key, sorted by start date; the
// columns are text cells.
#pragma once

class LProfile;
class LReportTable;

// Fills table (title "VAT Obligations"; columns "Start Date", "End Date", "Due Date", "Status",
// "Received Date"). An empty list gives a table without rows.
void LReportVatObligations(LProfile& profile, LReportTable& table);
