#include "invoice/shared/webdialogfk.h"

#include <algorithm>

#include "invoice/shared/documentinput.h"
#include "invoice/shared/item.h"
#include "invoice/shared/itemcollection.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "invoice/shared/stock.h"
#include "invoice/shared/taxoptions.h"
#include "invoice/shared/taxrate.h"
#include "llib/gen/filestore.h"
#include "llib/gen/money.h"
#include "llib/gen/moneyinput.h"
#include "llib/gen/textnum.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

namespace {

constexpr char kLineCountParam[] = "fklines";

// The grid column a refusal of the line is about.
int ColumnOfError(LDocumentLineError error) {
  switch (error) {
    case LDocumentLineError::kBadQuantity: return kFKGridQuantity;
    case LDocumentLineError::kBadUnitPrice:
    case LDocumentLineError::kTooLarge: return kFKGridUnitPrice;
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

bool LWebDialogFK::LineDiscountsShown() {
  if (lineDiscounts_ < 0) {
    LRecord options;
    bool hidden = !Profile().List(kMiscList).Open(options, "Options") || options.GetBool("DontShowDiscountColumn", true);
    options.DetachWithoutSave();
    lineDiscounts_ = hidden ? 0 : 1;
  }
  return lineDiscounts_ == 1;
}

std::string LWebDialogFK::AmountText(long long amount, int digits) {
  if (digits != Profile().GetCurrencyDigits()) {  // a price finer than the currency: no grouping
    std::string text = LFormatAmountPlain(amount, digits);
    if (std::size_t point = text.find('.'); point != std::string::npos)
      text.replace(point, 1, Profile().GetCurrencyFormat().decimal);
    return text;
  }
  return LAmountInputText(amount, Profile().GetCurrencyFormat());
}

std::string LWebDialogFK::RateText(double rate) {
  std::string text = LFKFormatPercent(rate);
  const std::string& decimal = Profile().GetCurrencyFormat().decimal;
  if (std::size_t point = text.find('.'); point != std::string::npos) text.replace(point, 1, decimal);
  return text;
}

std::string LWebDialogFK::PlainNumber(int id) {
  std::string text = GetTextAndTrim(id);
  return text.empty() ? text : LPlainAmountText(text, Profile().GetCurrencyFormat());
}

void LWebDialogFK::SetItemLines(const LSalesDocument& document) {
  LFKItemCollectionRecord items = document.Items();
  int fixed = items.GetFixedPercentageDiscountItem();
  int count = std::min(items.GetItemCount(), kFKGridMaxLines);
  int row = 0;
  for (int i = 0; i < count; ++i) {
    if (i == fixed) {
      SetText(kFKDocumentDiscountControl, RateText(items.GetItemDiscount(i)));
      SetText(kFKDocumentDiscountTextControl, items.GetItemDescription(i));
      continue;
    }
    int digits = items.GetItemUnitValueDigits(i);
    if (digits < 0) digits = Profile().GetCurrencyDigits();
    std::string taxName = items.GetItemTaxName(i);
    double discount = items.GetItemDiscount(i);
    SetText(GridControl(row, kFKGridCode), items.GetItemCode(i));
    SetText(GridControl(row, kFKGridDescription), items.GetItemDescription(i));
    SetText(GridControl(row, kFKGridQuantity), RateText(items.GetItemQty(i)));
    SetText(GridControl(row, kFKGridUnitPrice), AmountText(items.GetItemUnitValue(i), digits));
    SetText(GridControl(row, kFKGridTax), taxName.empty() ? std::string(kTaxNameDefault) : taxName);
    SetText(GridControl(row, kFKGridDiscount), discount == 0 ? std::string() : RateText(discount));
    SetText(GridControl(row, kFKGridOrigin), std::to_string(i + 1));
    ++row;
  }
  form_.parameters.SetString(kLineCountParam, std::to_string(row));
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
      "<th>Article</th><th>Description</th><th>Quantité</th><th>Prix unitaire</th><th>Taxe</th>%s"
      "<th>Montant</th><th></th></tr></thead><tbody>",
      kFKGridFirstControl, kFKGridStride, Profile().GetCurrencyDigits(),
      LineDiscountsShown() ? "<th>Remise %</th>" : "");
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
    if (LineDiscountsShown()) html += input(line, kFKGridDiscount, 5, " class=fknumber");
    int origin = GridControl(line, kFKGridOrigin);
    html += LWebFormat("<td class=fkamount><input type=hidden id=%d name=%d data-col=%d value='%H'></td>", origin, origin,
                       kFKGridOrigin, GetText(origin).c_str());
    html += "<td><a href='#' class=fkremove title='Effacer la ligne' "
            "onclick='return FKClearLine(this)'>&times;</a></td></tr>";
  }
  html += LWebFormat("</tbody></table><input type=hidden id=%s name=%s value=%d>", kLineCountParam, kLineCountParam,
                     rows);
  html += "<input type=button class='button fkadd' value='Ajouter une ligne' onclick='FKAddLine()'>";
  html += LWebFormat("<p class=fkdiscount><label for=%d>Remise sur le document (%%) :</label> "
                     "<input id=%d name=%d type=text size=5 class=fknumber value='%H'> "
                     "<label for=%d>Libellé :</label> <input id=%d name=%d type=text size=24 value='%H'></p>",
                     kFKDocumentDiscountControl, kFKDocumentDiscountControl, kFKDocumentDiscountControl,
                     GetText(kFKDocumentDiscountControl).c_str(), kFKDocumentDiscountTextControl,
                     kFKDocumentDiscountTextControl, kFKDocumentDiscountTextControl,
                     GetText(kFKDocumentDiscountTextControl).c_str());
  html += "<datalist id=fkitems>";
  LItem item;
  for (LFileStoreIteratorBase it(Profile().MainList(kItemsList), item); item.IsAttached(); it.Next(item))
    html += LWebFormat("<option value='%H'>%H</option>", item.GetPrimaryKey().c_str(), item.GetDescription().c_str());
  html += "</datalist><script type='text/javascript' src='itemgrid.js'></script></td></tr>";
  form_.Write(html);
}

bool LWebDialogFK::GetItemLines(LSalesDocument& document) {
  LTaxOptions tax;
  tax.OpenFrom(Profile());
  LSalesDocument stored;  // the lines as they were, for what a row keeps of its stored line
  stored.CopyRecord(document);
  LFKItemCollectionRecord old = stored.Items();
  int oldFixed = old.GetFixedPercentageDiscountItem();
  LRemoveDocumentLines(document);
  auto refuse = [&](int control, const std::string& message) {
    tax.DetachWithoutSave();
    PopupControlDataInvalid(control, message);
    return false;
  };
  auto keep = [&](int from, int to, std::string_view field) {
    std::string name = LFKItemCollectionRecord::ItemField(to, field);
    std::string value = stored.GetString(LFKItemCollectionRecord::ItemField(from, field));
    if (value.empty()) document.DeleteField(name);
    else document.SetString(name, value);
  };
  int index = 0;
  for (int line = 0; line < GridLineCount(); ++line) {
    if (IsEmptyRow(line)) continue;
    LDocumentLineInput typed{GetTextAndTrim(GridControl(line, kFKGridCode)),
                             GetTextAndTrim(GridControl(line, kFKGridDescription)),
                             GetTextAndTrim(GridControl(line, kFKGridQuantity)),
                             GetTextAndTrim(GridControl(line, kFKGridUnitPrice)),
                             GetTextAndTrim(GridControl(line, kFKGridTax)),
                             GetTextAndTrim(GridControl(line, kFKGridDiscount))};
    LDocumentLineInput input = typed;  // the numbers as the line input reads them
    input.quantity = PlainNumber(GridControl(line, kFKGridQuantity));
    input.unitPrice = PlainNumber(GridControl(line, kFKGridUnitPrice));
    input.discount = PlainNumber(GridControl(line, kFKGridDiscount));
    LDocumentLineError refusal = LApplyDocumentLine(Profile(), tax, document, index, input);
    if (refusal != LDocumentLineError::kNone)
      return refuse(GridControl(line, ColumnOfError(refusal)), LDocumentLineErrorMessage(refusal, typed, Profile().GetCurrencyFormat()));
    int origin = LTextToInt(GetTextAndTrim(GridControl(line, kFKGridOrigin))) - 1;
    if (origin >= 0 && origin < old.GetItemCount() && origin != oldFixed) {
      LFKItemCollectionRecord items = document.Items();
      if (items.GetItemTaxName(index) == old.GetItemTaxName(origin)) {
        keep(origin, index, "TaxRate");
        keep(origin, index, "CombinedTaxName");
      }
      if (items.GetItemCode(index) == old.GetItemCode(origin)) keep(origin, index, "Account");
      if (!LineDiscountsShown()) keep(origin, index, "Discount");
    }
    ++index;
  }
  if (std::string rate = PlainNumber(kFKDocumentDiscountControl); !rate.empty() && rate != "0") {
    std::string text = GetTextAndTrim(kFKDocumentDiscountTextControl);
    LDocumentLineInput input{"", text.empty() ? "Remise" : text, "1", "0", std::string(kTaxNameNone), rate};
    double percent = 0;
    if (!LParseQuantity(rate, percent) || percent < 0 || percent > 100)
      return refuse(kFKDocumentDiscountControl, "Remise invalide : " + GetTextAndTrim(kFKDocumentDiscountControl) + ".");
    if (LApplyDocumentLine(Profile(), tax, document, index, input) != LDocumentLineError::kNone)
      return refuse(kFKDocumentDiscountControl, "Remise invalide : " + GetTextAndTrim(kFKDocumentDiscountControl) + ".");
    document.SetInt("FixedPercentageDiscountItem", index + 1);
    ++index;
  }
  tax.DetachWithoutSave();
  document.SetInt("ItemCount", index);
  return true;
}
