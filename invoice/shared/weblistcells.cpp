#include "invoice/shared/weblistcells.h"

#include "llib/gen/money.h"
#include "llib/web/webformat.h"
#include "llib/web/weblist.h"

void LWebListDeleteCell(LHtmlListRow& row, bool mayChange, const std::string& href, const std::string& question) {
  if (!mayChange) {
    row.AddCell("", "");
    return;
  }
  row.AddCell("", "<a href='" + LHtmlEscape(href) + "' class=deletelink onclick=\"return confirm('" +
                      LHtmlEscape(LJScriptEscape(question)) + "')\">Supprimer</a>");
}

void LWebListAmountCell(LHtmlListRow& row, long long amount, const LCurrencyFormat& format) {
  row.AddCell(LHtmlListRow::Int64OrderKey(amount), LHtmlEscape(LFormatMoney(amount, format)));
}
