#include "invoice/sales/webitems.h"

#include <algorithm>
#include <cmath>

#include "invoice/sales/webparties.h"
#include "invoice/shared/inventory.h"
#include "invoice/shared/item.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/log.h"
#include "llib/gen/money.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/weblist.h"
#include "llib/web/weblogon.h"

namespace {

constexpr int kCodeControl = 101;
constexpr int kDescriptionControl = 102;
constexpr int kPriceControl = 103;
constexpr int kAccountControl = 104;
constexpr int kKindControl = 105;
constexpr int kCostControl = 106;
constexpr int kReorderLevelControl = 107;
constexpr int kReorderQtyControl = 108;

// The order key of a quantity (fractions of units included), by its value: 10 sorts after 9 and
// -2.5 before 0. Amounts take LHtmlListRow::Int64OrderKey, whatever their size.
std::string QuantityOrder(double quantity) {
  constexpr double kMillionths = 1e6;
  constexpr double kLimit = 9e18;
  return LHtmlListRow::Int64OrderKey(std::llround(std::clamp(quantity * kMillionths, -kLimit, kLimit)));
}

}  // namespace

// ---- "itemlist" -----------------------------------------------------------------------------------

LWebItemsPage::LWebItemsPage(LWebletForm& form) : LWebPageMainEx(form, "itemlist", "Articles") {}

void LWebItemsPage::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  const LCurrencyFormat& currency = profile.GetCurrencyFormat();
  LHtmlList list(form_, 0, true);
  list.AddColumn("Code", 12, kListAlignLeft, true);
  list.AddColumn("Description", 24, kListAlignLeft, true);
  list.AddColumn("Type", 12, kListAlignLeft, true);
  list.AddColumn("Prix unitaire", 10, kListAlignRight, true);
  list.AddColumn("Stock", 8, kListAlignRight, true);
  list.AddColumn("Coût moyen", 10, kListAlignRight, true);
  list.AddColumn("Valeur", 10, kListAlignRight, true);
  list.AddColumn("Seuil", 6, kListAlignRight, true);
  list.AddColumn("", 8, kListAlignCenter, false);
  bool mayChange = WLMayChangeData(form_);
  for (const LInventoryItem& item : LInventoryAt(profile, {})) {
    const std::string& code = item.code;
    bool stocked = item.kind == LItemKind::kStocked;
    auto row = std::make_unique<LHtmlListRow>();
    row->AddCellTextLink(LWebFormat("itemprop?id=%U&onok=itemlist&oncancel=itemlist", code.c_str()), code);
    row->AddCellText(item.description);
    row->AddCellText(LItemKindTitle(item.kind));
    row->AddCell(LHtmlListRow::Int64OrderKey(item.price), LHtmlEscape(LFormatMoney(item.price, currency)));
    if (stocked) {
      // An item at or under its reorder level is shown to be reordered.
      std::string quantity = LHtmlEscape(LQuantityText(item.stock.quantity));
      if (item.IsToReorder()) quantity = "<span class=reorder title='À commander'>" + quantity + " !</span>";
      row->AddCell(QuantityOrder(item.stock.quantity),
                   LWebFormat("<a href='itemstock?id=%U'>", code.c_str()) + quantity + "</a>");
      row->AddCell(LHtmlListRow::Int64OrderKey(item.stock.AverageCost()),
                            LHtmlEscape(LFormatMoney(item.stock.AverageCost(), currency)));
      row->AddCell(LHtmlListRow::Int64OrderKey(item.stock.value), LHtmlEscape(LFormatMoney(item.stock.value, currency)));
    } else {
      for (int i = 0; i < 3; ++i) row->AddCell("", "");
    }
    if (item.hasReorderLevel)
      row->AddCell(QuantityOrder(item.reorderLevel), LHtmlEscape(LQuantityText(item.reorderLevel)));
    else
      row->AddCell("", "");
    LWebListDeleteCell(*row, mayChange, LWebFormat("itemdelete?id=%U", code.c_str()),
                       "Supprimer l'article " + code + " ?");
    list.AddRow(std::move(row));
  }
  UseListScript();
  list.Write(form_, 100);
  if (mayChange)
    form_.Write("<p><a href='itemprop?onok=itemlist&oncancel=itemlist' class=actionlink>Ajouter un nouvel article</a> "
                "<a href='importcsv?kind=items' class=actionlink>Importer un fichier CSV</a></p>");
}

// ---- "itemstock" ----------------------------------------------------------------------------------

LWebItemStockPage::LWebItemStockPage(LWebletForm& form) : LWebPageMainEx(form, "itemlist", "Stock de l'article") {}

void LWebItemStockPage::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  const LCurrencyFormat& currency = profile.GetCurrencyFormat();
  LInventoryItem item;
  if (!LInventoryItemAt(profile, form_.GetParam("id"), {}, item)) {
    form_.Write("<p class=error>Article introuvable.</p>");
    return;
  }
  form_.Write("<h2>" + LHtmlEscape(item.code + " " + item.description) + "</h2><p>Stock : <b>" +
              LHtmlEscape(LQuantityText(item.stock.quantity)) + "</b> ; coût moyen : <b>" +
              LHtmlEscape(LFormatMoney(item.stock.AverageCost(), currency)) + "</b> ; valeur : <b>" +
              LHtmlEscape(LFormatMoney(item.stock.value, currency)) + "</b>" +
              (item.hasReorderLevel ? " ; seuil de commande : <b>" + LHtmlEscape(LQuantityText(item.reorderLevel)) +
                                          "</b>, quantité à commander : <b>" +
                                          LHtmlEscape(LQuantityText(item.reorderQuantity)) + "</b>"
                                    : std::string()) +
              "</p>");
  LHtmlList list(form_, 0, true);
  list.AddColumn("Date", 14, kListAlignLeft, true);
  list.AddColumn("Document", 30, kListAlignLeft, true);
  list.AddColumn("Quantité", 14, kListAlignRight, true);
  list.AddColumn("Coût unitaire", 14, kListAlignRight, true);
  list.AddColumn("Valeur", 14, kListAlignRight, true);
  for (const LStockMove& move : item.moves) {
    auto row = std::make_unique<LHtmlListRow>();
    row->AddCellText(move.date == kOpeningDate ? std::string() : move.date);
    row->AddCellText(LStockDocumentTitle(move.document));
    row->AddCell(QuantityOrder(move.quantity), LHtmlEscape(LQuantityText(move.quantity)));
    row->AddCell(LHtmlListRow::Int64OrderKey(move.unitCost), LHtmlEscape(LFormatMoney(move.unitCost, currency)));
    long long value = LStockMoveValue(move.quantity, move.unitCost);
    row->AddCell(LHtmlListRow::Int64OrderKey(value), LHtmlEscape(LFormatMoney(value, currency)));
    list.AddRow(std::move(row));
  }
  UseListScript();
  list.Write(form_, 100);
}

// ---- "itemprop" -----------------------------------------------------------------------------------

LWebItemDialog::LWebItemDialog(LWebletForm& form) : LWebPartyDialog(form, "itemprop", LPartyKind::kItem, "itemlist") {
  SetTitle("Article");
  AddNavLink("help/itemlist.html", "Aide");
  AddNavLink("itemlist", "Articles");
  AddNavLink("main", "Page principale");
  SetOkPage("itemlist");
  SetCancelPage("itemlist");
  BindKey(kCodeControl, "Code :", 20);
  BindPartyField(kDescriptionControl, "Description", "Description :", 40);
  BindPartyField(kPriceControl, "Price", "Prix unitaire :", 12);
  BindPartyField(kAccountControl, "PLAccount", "Compte de revenus :", 30);
  BindPartyField(kKindControl, "Kind", "Type (stock, product ou service) :", 12);
  BindPartyField(kCostControl, "Cost", "Coût d'achat :", 12);
  BindPartyField(kReorderLevelControl, "ReorderLevel", "Seuil de commande :", 8);
  BindPartyField(kReorderQtyControl, "ReorderQty", "Quantité à commander :", 8);
  SetKeyMessages("Veuillez entrer le code de l'article.", "L'article « %s » existe déjà.");
}

// ---- "itemdelete" ---------------------------------------------------------------------------------

void WLItemDelete(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  std::string code = form.GetParam("id");
  if (!code.empty() && WLMayChangeData(form)) {
    LProfile profile(WLSessionBusinessFolder(form));
    if (profile.MainList(kItemsList).Delete(code)) LLogInfo("L'article \"%s\" a été supprimé.", code.c_str());
  }
  WLRedirect(form, "itemlist");
}
