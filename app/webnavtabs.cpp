#include "app/webnavtabs.h"

#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/webletroutes.h"

namespace {

// The sections of the business, in the order of the bar.
const LWebNavTab kNavTabs[] = {
    {"main", "Accueil", false},
    {"customerlist", "Clients", false},
    {"quotelist", "Devis", false},
    {"orderlist", "Commandes", false},
    {"invoicelist", "Factures", false},
    {"creditnotelist", "Avoirs", false},
    {"paymentlist", "Paiements", false},
    {"supplierlist", "Fournisseurs", false},
    {"porderlist", "Bons de commande", false},
    {"billlist", "Factures fournisseurs", false},
    {"billpaymentlist", "Règlements fournisseurs", false},
    {"itemlist", "Articles", false},
    {"acclist", "Comptes", false},
    {"viewjournal", "Journal", false},
    {"reports", "Rapports", false},
    {"userlist", "Utilisateurs", true},
    {"businesslist", "Entreprises", true},
};

}  // namespace

std::vector<LWebNavTab> WLVisibleNavTabs(LWebletForm& form) {
  bool administrator = WLIsAdministator(form);
  std::vector<LWebNavTab> visible;
  for (const LWebNavTab& tab : kNavTabs)
    if (LWebletFindScript(tab.target) != nullptr && (administrator || !tab.administratorOnly))
      visible.push_back(tab);
  return visible;
}

void WLWriteNavTabs(LWebletForm& form, std::string_view current) {
  std::string bar = "<div class=navtabs>";
  for (const LWebNavTab& tab : WLVisibleNavTabs(form))
    bar += LWebFormat("<a href='%s' class=%s>%H</a>", tab.target,
                      current == tab.target ? "'navtab navtabcurrent'" : "navtab", tab.text);
  bar += "</div>";
  form.Write(bar);
}

void LWebPageWithNavTabs::PrintHeader() {
  LWebPageEx::PrintHeader();
  WLWriteNavTabs(form_, currentTab_);
}
