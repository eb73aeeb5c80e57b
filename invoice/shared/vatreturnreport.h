// The report of one VAT return (as submitted or as HMRC gives it back): one row a box, in box
// order, with its amount; the whole-pound boxes 6 to 9 shown in pounds.
#pragma once

struct FKVatReturns;
class LReportTable;

// The label of box 1 to 9 ("Box 1 VAT due on sales", ...), as the report and the return's form
// show it.
const char* FKVatBoxLabel(int box);

// Fills table (title "VAT Return", subtitle "Period " and the period key, one column "Amount").
void FKReportVatReturn(const FKVatReturns& vatReturn, LReportTable& table);
