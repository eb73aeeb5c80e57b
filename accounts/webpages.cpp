#include "accounts/webpages.h"

#include "accounts/ledgerintent.h"
#include "accounts/webbank.h"
#include "accounts/webbillpayments.h"
#include "accounts/webbills.h"
#include "accounts/webfec.h"
#include "accounts/webledger.h"
#include "accounts/webreports.h"
#include "accounts/websuppliers.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/webaccess.h"
#include "invoice/shared/weblistperiod.h"
#include "invoice/shared/webnavtabs.h"
#include "llib/web/webletroutes.h"

namespace {

const LWebletRoute kAccountsRoutes[] = {
    {"fecexport", WLWebPageRun<LWebFecPage>},
    {"fecdownload", WLFecDownload},
    {"supplierlist", WLWebPageRun<LWebSuppliersPage>},
    {"supplierprop", WLWebDialogRun<LWebSupplierDialog>},
    {"supplierdelete", WLSupplierDelete},
    {"suppliercantdelete", WLWebPageRun<LWebSupplierCantDeletePage>},
    {"supplierinfo", WLWebPageRun<LWebSupplierInfoPage>},
    {"getSupplierBalance", VWAJAXSupplierBalance},
    {"cbsupselchange", VWAJAXSupplierSelChange},
    {"vendorchange", VWAJAXVendorChange},
    {"billlist", WLWebPageRun<LWebBillsPage>},
    {"billprop", WLWebDialogRun<LWebBillDialog>},
    {"billdelete", WLBillDelete},
    {"billlistperiod", WLWebDialogRun<LWebListPeriodDialogOf<kLWebBillPeriodList>>},
    {"billlistperiodchange", WLWebListRefilterRun<LWebBillsPage>},
    {"billlistdatechange", WLWebListRefilterRun<LWebBillsPage>},
    {"billlistsupplierchange", WLWebListRefilterRun<LWebBillsPage>},
    {"getBillInfo", VWAJAXBillInfo},
    {"accpayable", WLWebPageRun<LWebAccPayablePage>},
    {"billpaymentlist", WLWebPageRun<LWebBillPaymentsPage>},
    {"billpaymentprop", WLWebDialogRun<LWebBillPaymentDialog>},
    {"billpaymentdelete", WLBillPaymentDelete},
    {"billpaymentlistperiod", WLWebDialogRun<LWebListPeriodDialogOf<kLWebBillPaymentPeriodList>>},
    {"billpaymentlistperiodchange", WLWebListRefilterRun<LWebBillPaymentsPage>},
    {"billpaymentlistdatechange", WLWebListRefilterRun<LWebBillPaymentsPage>},
    {"billpaymentlistsupplierchange", WLWebListRefilterRun<LWebBillPaymentsPage>},
    {"applybillpayment", WLApplyBillPayment},
    // The period dialogs of every list with a period, sales side included.
    {"prdselchange", WLPeriodSelectionChange},
};

// A page reads the books as a command does: once what a change cut short left is settled.
void SettleBeforeAnswering(const std::string& folder) {
  LProfile profile(folder);
  LLedgerSettleInterrupted(profile);
}

}  // namespace

void LAccountsInstallWebPages() {
  LWebletInstallScripts(kAccountsRoutes);
  LWebSetBooksOpener(SettleBeforeAnswering);
  LAccountsInstallBankPages();
  LAccountsInstallReportPages();
  LAccountsInstallLedgerPages();
  // Each tab shows once a page serves its route.
  for (const LWebNavTab& tab : {LWebNavTab{"billlist", "Factures fournisseurs", 100},
                                LWebNavTab{"billpaymentlist", "Règlements fournisseurs", 110},
                                LWebNavTab{"acclist", "Comptes", 130}, LWebNavTab{"viewjournal", "Journal", 140},
                                LWebNavTab{"recon", "Banque", 145}, LWebNavTab{"reports", "Rapports", 150},
                                LWebNavTab{"fecexport", "FEC", 165, true}})
    LWebNavTabInstall(tab);
}
