#include "accounts/webpages.h"

#include "accounts/webbank.h"
#include "invoice/shared/webnavtabs.h"

void LAccountsInstallWebPages() {
  LAccountsInstallBankPages();
  // Each tab shows once a page serves its route.
  for (const LWebNavTab& tab : {LWebNavTab{"billlist", "Factures fournisseurs", 100},
                                LWebNavTab{"billpaymentlist", "Règlements fournisseurs", 110},
                                LWebNavTab{"acclist", "Comptes", 130}, LWebNavTab{"viewjournal", "Journal", 140},
                                LWebNavTab{"recon", "Banque", 145}, LWebNavTab{"reports", "Rapports", 150}})
    LWebNavTabInstall(tab);
}
