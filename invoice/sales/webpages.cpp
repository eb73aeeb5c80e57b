#include "invoice/sales/webpages.h"

#include "invoice/sales/webitems.h"
#include "invoice/shared/webnavtabs.h"
#include "llib/web/webletroutes.h"

namespace {

const LWebletRoute kSalesRoutes[] = {
    {"itemlist", WLWebPageRun<LWebItemsPage>},
    {"itemprop", WLWebDialogRun<LWebItemDialog>},
    {"itemdelete", WLItemDelete},
};

}  // namespace

void LSalesInstallWebPages() {
  LWebletInstallScripts(kSalesRoutes);
  for (const LWebNavTab& tab : {LWebNavTab{"customerlist", "Clients", 20}, LWebNavTab{"quotelist", "Devis", 30},
                                LWebNavTab{"orderlist", "Commandes", 40}, LWebNavTab{"invoicelist", "Factures", 50},
                                LWebNavTab{"creditnotelist", "Avoirs", 60}, LWebNavTab{"paymentlist", "Paiements", 70},
                                LWebNavTab{"supplierlist", "Fournisseurs", 80},
                                LWebNavTab{"porderlist", "Bons de commande", 90},
                                LWebNavTab{"itemlist", "Articles", 120}})
    LWebNavTabInstall(tab);
}
