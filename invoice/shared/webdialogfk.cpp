#include "invoice/shared/webdialogfk.h"

#include <algorithm>

#include "invoice/shared/documentinput.h"
#include "invoice/shared/item.h"
#include "invoice/shared/itemcollection.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "invoice/shared/taxoptions.h"
#include "invoice/shared/taxrate.h"
#include "llib/gen/filestore.h"
#include "llib/gen/money.h"
#include "llib/gen/textnum.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

namespace {

constexpr char kLineCountParam[] = "fklines";

// The grid column a refusal of the line is about.
int ColumnOfError(LDocumentLineError error) {
  switch (error) {
    case LDocumentLineError::kBadQuantity: return kFKGridQuantity;
    case LDocumentLineError::kBadUnitPrice: return kFKGridUnitPrice;
    case LDocumentLineError::kBadDiscount: return kFKGridDiscount;
    case LDocumentLineError::kUnknownTax: return kFKGridTax;
    case LDocumentLineError::kNone: break;
  }
  return kFKGridCode;
}

}  // namespace

LWebDialogFK::LWebDialogFK(LWebletForm& form, std::string_view routeName) : LWebDialogEx(form, routeName) {}

LWebDialogFK::~LWebDialogFK() = default;

LProfile& LWebDialogFK::Profile() {
  if (!profile_) profile_ = std::make_unique<LProfile>(WLSessionBusinessFolder(form_));
  return *profile_;
}

int LWebDialogFK::GridLineCount() const {
  return std::clamp(LTextToInt(form_.GetParam(kLineCountParam)), 0, kFKGridMaxLines);
}

bool LWebDialogFK::IsEmptyRow(int line) const {
  for (int column : {kFKGridCode, kFKGridDescription, kFKGridUnitPrice})
    if (!GetTextAndTrim(GridControl(line, column)).empty()) return false;
  return true;
}

void LWebDialogFK::SetItemLines(const LSalesDocument& document) {
  LFKItemCollectionRecord items = document.Items();
  int count = std::min(items.GetItemCount(), kFKGridMaxLines);
  for (int i = 0; i < count; ++i) {
    int digits = items.GetItemUnitValueDigits(i);
    if (digits < 0) digits = Profile().GetCurrencyDigits();
    std::string taxName = items.GetItemTaxName(i);
    double discount = items.GetItemDiscount(i);
    // Quantities and discounts are shown as percentages are: "2.5", not "2.500000".
    SetText(GridControl(i, kFKGridCode), items.GetItemCode(i));
    SetText(GridControl(i, kFKGridDescription), items.GetItemDescription(i));
    SetText(GridControl(i, kFKGridQuantity), LFKFormatPercent(items.GetItemQty(i)));
    SetText(GridControl(i, kFKGridUnitPrice), LFormatAmountPlain(items.GetItemUnitValue(i), digits));
    SetText(GridControl(i, kFKGridTax), taxName.empty() ? std::string(kTaxNameDefault) : taxName);
    SetText(GridControl(i, kFKGridDiscount), discount == 0 ? std::string() : LFKFormatPercent(discount));
  }
  form_.parameters.SetString(kLineCountParam, std::to_string(count));
}

void LWebDialogFK::AddItemGrid() {
  LTaxOptions tax;
  tax.OpenFrom(Profile());
  std::vector<std::string> taxNames = {std::string(kTaxNameDefault), std::string(kTaxNameNone)};
  for (int n = 1; n <= tax.GetTaxCount(); ++n) taxNames.push_back(tax.GetTaxName(n));
  tax.DetachWithoutSave();

  int rows = GridLineCount();
  if (rows < kFKGridMaxLines && (rows == 0 || !IsEmptyRow(rows - 1))) ++rows;
  std::string html = LWebFormat(
      "<tr><td colspan=2><table id=itemgrid class=itemgrid data-first=%d data-stride=%d data-digits=%d><thead><tr>"
      "<th>Article</th><th>Description</th><th>Quantité</th><th>Prix unitaire</th><th>Taxe</th><th>Remise %%</th>"
      "<th>Montant</th><th></th></tr></thead><tbody>",
      kFKGridFirstControl, kFKGridStride, Profile().GetCurrencyDigits());
  auto input = [&](int line, int column, int size, const char* extra) {
    int id = GridControl(line, column);
    std::string value = GetText(id);
    return LWebFormat("<td><input id=%d name=%d data-col=%d type=text value='%H' size=%d%s></td>", id, id, column,
                      value.c_str(), size, extra);
  };
  for (int line = 0; line < rows; ++line) {
    html += "<tr class=fkline>";
    html += input(line, kFKGridCode, 10, " list=fkitems class=fkcode");
    html += input(line, kFKGridDescription, 30, "");
    html += input(line, kFKGridQuantity, 6, " class=fknumber");
    html += input(line, kFKGridUnitPrice, 10, " class=fknumber");
    html += "<td>" + SelectMarkup(GridControl(line, kFKGridTax), taxNames, {}, false, {}) + "</td>";
    html += input(line, kFKGridDiscount, 5, " class=fknumber");
    html += "<td class=fkamount></td><td><a href='#' class=fkremove title='Effacer la ligne' "
            "onclick='return FKClearLine(this)'>&times;</a></td></tr>";
  }
  html += LWebFormat("</tbody></table><input type=hidden id=%s name=%s value=%d>", kLineCountParam, kLineCountParam,
                     rows);
  html += "<input type=button class='button fkadd' value='Ajouter une ligne' onclick='FKAddLine()'>";
  html += "<datalist id=fkitems>";
  LItem item;
  for (LFileStoreIteratorBase it(Profile().MainList(kItemsList), item); item.IsAttached(); it.Next(item)) {
    std::string price = LFormatAmountPlain(item.GetPrice(), Profile().GetCurrencyDigits());
    std::string description = item.GetDescription();
    html += LWebFormat("<option value='%H' data-description='%H' data-price='%H'>%H</option>",
                       item.GetPrimaryKey().c_str(), description.c_str(), price.c_str(), description.c_str());
  }
  html += "</datalist><script type='text/javascript' src='itemgrid.js'></script></td></tr>";
  form_.Write(html);
}

bool LWebDialogFK::GetItemLines(LSalesDocument& document) {
  LTaxOptions tax;
  tax.OpenFrom(Profile());
  LRemoveDocumentLines(document);
  int index = 0;
  for (int line = 0; line < GridLineCount(); ++line) {
    if (IsEmptyRow(line)) continue;
    LDocumentLineInput input{GetTextAndTrim(GridControl(line, kFKGridCode)),
                             GetTextAndTrim(GridControl(line, kFKGridDescription)),
                             GetTextAndTrim(GridControl(line, kFKGridQuantity)),
                             GetTextAndTrim(GridControl(line, kFKGridUnitPrice)),
                             GetTextAndTrim(GridControl(line, kFKGridTax)),
                             GetTextAndTrim(GridControl(line, kFKGridDiscount))};
    LDocumentLineError refusal = LApplyDocumentLine(Profile(), tax, document, index, input);
    if (refusal != LDocumentLineError::kNone) {
      tax.DetachWithoutSave();
      PopupControlDataInvalid(GridControl(line, ColumnOfError(refusal)), LDocumentLineErrorMessage(refusal, input));
      return false;
    }
    ++index;
  }
  tax.DetachWithoutSave();
  document.SetInt("ItemCount", index);
  return true;
}
