// Cells that the list pages of both sides share: an amount that sorts by its value, and the
// "Supprimer" link that asks before it deletes.
#pragma once

#include <string>

class LHtmlListRow;
struct LCurrencyFormat;

// The last cell of a list row: a "Supprimer" link to href that asks question first; empty for a
// user who may not change the data.
void LWebListDeleteCell(LHtmlListRow& row, bool mayChange, const std::string& href, const std::string& question);

// An amount in cents written the business's way ("1 234,56 €"), ordered by its value.
void LWebListAmountCell(LHtmlListRow& row, long long amount, const LCurrencyFormat& format);
