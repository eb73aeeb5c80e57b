#include "invoice/shared/weblistcells.h"

#include <algorithm>
#include <climits>

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
  int order = static_cast<int>(std::clamp<long long>(amount, INT_MIN + 1, INT_MAX - 1));
  row.AddCellWithOrder(order, LHtmlEscape(LFormatMoney(amount, format)));
}
