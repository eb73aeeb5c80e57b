#include "invoice/sales/webitems.h"

#include <algorithm>
#include <climits>

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

// An amount as a list order key: the keys hold an int, larger prices sort last.
int PriceOrder(long long price) { return static_cast<int>(std::clamp<long long>(price, INT_MIN + 1, INT_MAX - 1)); }

}  // namespace

// ---- "itemlist" -----------------------------------------------------------------------------------

LWebItemsPage::LWebItemsPage(LWebletForm& form) : LWebPageMainEx(form, "itemlist", "Articles") {}

void LWebItemsPage::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  LHtmlList list(form_, 0, true);
  list.AddColumn("Code", 18, kListAlignLeft, true);
  list.AddColumn("Description", 37, kListAlignLeft, true);
  list.AddColumn("Prix unitaire", 15, kListAlignRight, true);
  list.AddColumn("Compte de revenus", 20, kListAlignLeft, true);
  list.AddColumn("", 10, kListAlignCenter, false);
  bool mayChange = WLMayChangeData(form_);
  LItem item;
  for (LFileStoreIteratorBase it(profile.MainList(kItemsList), item); item.IsAttached(); it.Next(item)) {
    const std::string& code = item.GetPrimaryKey();
    auto row = std::make_unique<LHtmlListRow>();
    row->AddCellTextLink(LWebFormat("itemprop?id=%U&onok=itemlist&oncancel=itemlist", code.c_str()), code);
    row->AddCellText(item.GetDescription());
    row->AddCellWithOrder(PriceOrder(item.GetPrice()),
                          LHtmlEscape(LFormatMoney(item.GetPrice(), profile.GetCurrencyFormat())));
    row->AddCellText(item.GetPLAccount());
    if (mayChange)
      row->AddCell("", LWebFormat("<a href='itemdelete?id=%U' class=deletelink onclick=\"return confirm('%s')\">"
                                  "Supprimer</a>",
                                  code.c_str(), LHtmlEscape(LJScriptEscape("Supprimer l'article " + code + " ?")).c_str()));
    else
      row->AddCell("", "");
    list.AddRow(std::move(row));
  }
  UseListScript();
  list.Write(form_, 100);
  if (mayChange)
    form_.Write("<p><a href='itemprop?onok=itemlist&oncancel=itemlist' class=actionlink>Ajouter un nouvel article</a></p>");
}

// ---- "itemprop" -----------------------------------------------------------------------------------

LWebItemDialog::LWebItemDialog(LWebletForm& form) : LWebDialogExKv(form, "itemprop", kItemsList, "itemlist") {
  SetTitle("Article");
  AddNavLink("itemlist", "Articles");
  AddNavLink("main", "Page principale");
  SetOkPage("itemlist");
  SetCancelPage("itemlist");
  BindKey(kCodeControl, "Code :", 20);
  BindField(kDescriptionControl, "Description", "Description :", LWebKVKind::kText, 40);
  BindField(kPriceControl, "Price", "Prix unitaire :", LWebKVKind::kMoney, 12);
  BindField(kAccountControl, "PLAccount", "Compte de revenus :", LWebKVKind::kText, 30);
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
