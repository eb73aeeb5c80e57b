#include "accounts/webpages.h"

#include "accounts/webbank.h"
#include "accounts/webfec.h"
#include "accounts/webledger.h"
#include "invoice/shared/weblistperiod.h"
#include "invoice/shared/webnavtabs.h"
#include "llib/web/webletroutes.h"

namespace {

const LWebletRoute kAccountsRoutes[] = {
    {"fecexport", WLWebPageRun<LWebFecPage>},
    {"fecdownload", WLFecDownload},
    // The period dialogs of every list with a period, sales side included.
    {"prdselchange", WLPeriodSelectionChange},
};

}  // namespace

void LAccountsInstallWebPages() {
  LWebletInstallScripts(kAccountsRoutes);
  LAccountsInstallBankPages();
  LAccountsInstallLedgerPages();
  // Each tab shows once a page serves its route.
  for (const LWebNavTab& tab : {LWebNavTab{"billlist", "Factures fournisseurs", 100},
                                LWebNavTab{"billpaymentlist", "Règlements fournisseurs", 110},
                                LWebNavTab{"acclist", "Comptes", 130}, LWebNavTab{"viewjournal", "Journal", 140},
                                LWebNavTab{"recon", "Banque", 145}, LWebNavTab{"reports", "Rapports", 150},
                                LWebNavTab{"fecexport", "FEC", 165, true}})
    LWebNavTabInstall(tab);
}
