#include "invoice/sales/webpages.h"

#include "invoice/sales/webcustomers.h"
#include "invoice/sales/webdocumentoutput.h"
#include "invoice/sales/webhelpers.h"
#include "invoice/sales/webimportcsv.h"
#include "invoice/sales/webitems.h"
#include "invoice/sales/webparties.h"
#include "invoice/sales/webpayments.h"
#include "invoice/sales/webrecurring.h"
#include "invoice/sales/websalesdocuments.h"
#include "invoice/sales/webvatreturn.h"
#include "invoice/shared/webnavtabs.h"
#include "llib/web/webletroutes.h"

namespace {

const LWebletRoute kSalesRoutes[] = {
    {"itemlist", WLWebPageRun<LWebItemsPage>},
    {"itemprop", WLWebDialogRun<LWebItemDialog>},
    {"itemdelete", WLItemDelete},
    {"itemstock", WLWebPageRun<LWebItemStockPage>},
    {"salespersonlist", WLWebPageRun<LWebSalesPersonsPage>},
    {"salespersonprop", WLWebDialogRun<LWebSalesPersonDialog>},
    {"salespersondelete", WLSalesPersonDelete},
    {"grouplist", WLWebPageRun<LWebGroupsPage>},
    {"groupprop", WLWebDialogRun<LWebGroupDialog>},
    {"groupdelete", WLGroupDelete},
    {"customerlist", WLWebPageRun<LWebCustomersPage>},
    {"customerprop", WLWebDialogRun<LWebCustomerDialog>},
    {"customerdelete", WLCustomerDelete},
    {"invoicelist", WLWebPageRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kInvoice>>},
    {"invoiceprop", WLWebDialogRun<LWebSalesDocumentDialogOf<LSalesDocumentType::kInvoice>>},
    {"invoicedelete", WLSalesDocumentDeleteOf<LSalesDocumentType::kInvoice>},
    {"invoiceitemssave", WLSalesDocumentItemsSaveOf<LSalesDocumentType::kInvoice>},
    {"invoicelistperiod", WLWebDialogRun<LWebListPeriodDialogOf<kLWebInvoicePeriodList>>},
    {"invoicelistperiodchange", WLWebListRefilterRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kInvoice>>},
    {"invoicelistdatechange", WLWebListRefilterRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kInvoice>>},
    {"invoicelistcustomerchange", WLWebListRefilterRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kInvoice>>},
    {"quotelist", WLWebPageRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kQuote>>},
    {"quoteprop", WLWebDialogRun<LWebSalesDocumentDialogOf<LSalesDocumentType::kQuote>>},
    {"quotedelete", WLSalesDocumentDeleteOf<LSalesDocumentType::kQuote>},
    {"quoteitemssave", WLSalesDocumentItemsSaveOf<LSalesDocumentType::kQuote>},
    {"quotelistperiod", WLWebDialogRun<LWebListPeriodDialogOf<kLWebQuotePeriodList>>},
    {"quotelistperiodchange", WLWebListRefilterRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kQuote>>},
    {"quotelistdatechange", WLWebListRefilterRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kQuote>>},
    {"quotelistcustomerchange", WLWebListRefilterRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kQuote>>},
    {"quoteci", WLSalesDocumentToInvoiceOf<LSalesDocumentType::kQuote>},
    {"quoteco", WLQuoteToOrder},
    {"orderlist", WLWebPageRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kOrder>>},
    {"orderprop", WLWebDialogRun<LWebSalesDocumentDialogOf<LSalesDocumentType::kOrder>>},
    {"orderdelete", WLSalesDocumentDeleteOf<LSalesDocumentType::kOrder>},
    {"orderitemssave", WLSalesDocumentItemsSaveOf<LSalesDocumentType::kOrder>},
    {"orderlistperiod", WLWebDialogRun<LWebListPeriodDialogOf<kLWebOrderPeriodList>>},
    {"orderlistperiodchange", WLWebListRefilterRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kOrder>>},
    {"orderlistdatechange", WLWebListRefilterRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kOrder>>},
    {"orderlistcustomerchange", WLWebListRefilterRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kOrder>>},
    {"orderci", WLSalesDocumentToInvoiceOf<LSalesDocumentType::kOrder>},
    {"creditnotelist", WLWebPageRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kCreditNote>>},
    {"creditnoteprop", WLWebDialogRun<LWebSalesDocumentDialogOf<LSalesDocumentType::kCreditNote>>},
    {"creditnotedelete", WLSalesDocumentDeleteOf<LSalesDocumentType::kCreditNote>},
    {"creditnoteitemssave", WLSalesDocumentItemsSaveOf<LSalesDocumentType::kCreditNote>},
    {"creditnotelistperiod", WLWebDialogRun<LWebListPeriodDialogOf<kLWebCreditNotePeriodList>>},
    {"creditnotelistperiodchange", WLWebListRefilterRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kCreditNote>>},
    {"creditnotelistdatechange", WLWebListRefilterRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kCreditNote>>},
    {"creditnotelistcustomerchange", WLWebListRefilterRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kCreditNote>>},
    {"paymentlist", WLWebPageRun<LWebPaymentsPage>},
    {"paymentprop", WLWebDialogRun<LWebPaymentDialog>},
    {"paymentdelete", WLPaymentDelete},
    {"paymentlistperiod", WLWebDialogRun<LWebListPeriodDialogOf<kLWebPaymentPeriodList>>},
    {"paymentlistperiodchange", WLWebListRefilterRun<LWebPaymentsPage>},
    {"paymentlistdatechange", WLWebListRefilterRun<LWebPaymentsPage>},
    {"paymentlistcustomerchange", WLWebListRefilterRun<LWebPaymentsPage>},
    {"invoicepay", WLWebDialogRun<LWebInvoicePayDialog>},
    {"applypayment", WLWebDialogRun<LWebPaymentApplyDialog>},
    {"invoiceapplypayment", WLWebDialogRun<LWebInvoiceApplyPaymentDialog>},
    {"invoiceschedule", WLWebPageRun<LWebRecurringPageOf<LSalesDocumentType::kInvoice>>},
    {"invoiceschedulesave", WLRecurringScheduleSaveOf<LSalesDocumentType::kInvoice>},
    {"runrecurringinvoice", WLRecurringRunOf<LSalesDocumentType::kInvoice>},
    {"orderschedule", WLWebPageRun<LWebRecurringPageOf<LSalesDocumentType::kOrder>>},
    {"orderschedulesave", WLRecurringScheduleSaveOf<LSalesDocumentType::kOrder>},
    {"runrecurringorder", WLRecurringRunOf<LSalesDocumentType::kOrder>},
    {"searchinvoices", WLWebPageRun<LWebInvoiceSearchPage>},
    {"cbitemselchange", WLItemSelectionChange},
    {"cbcustselchange", WLCustomerSelectionChange},
    {"cbuseselchange", WLSalesPersonSelectionChange},
    {"pdltaxselchange", WLDocumentTotalsChange},
    {"ratechanged", WLDocumentTotalsChange},
    {"getCustomerBalance", WLGetCustomerBalance},
    {"getInvoiceInfo", WLGetInvoiceInfo},
    {"getInvoiceDueInfo", WLGetInvoiceDueInfo},
    {"importcsv", WLWebDialogRun<LWebImportCsvDialog>},
    {"porderlist", WLWebPageRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kPOrder>>},
    {"porderprop", WLWebDialogRun<LWebSalesDocumentDialogOf<LSalesDocumentType::kPOrder>>},
    {"porderdelete", WLSalesDocumentDeleteOf<LSalesDocumentType::kPOrder>},
    {"porderlistperiod", WLWebDialogRun<LWebListPeriodDialogOf<kLWebPOrderPeriodList>>},
    {"porderlistperiodchange", WLWebListRefilterRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kPOrder>>},
    {"porderlistdatechange", WLWebListRefilterRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kPOrder>>},
    {"porderlistsupplierchange", WLWebListRefilterRun<LWebSalesDocumentsPageOf<LSalesDocumentType::kPOrder>>},
    {"porderitemssave", WLSalesDocumentItemsSaveOf<LSalesDocumentType::kPOrder>},
    {"porderbill", WLPOrderToBill},
};

}  // namespace

void LSalesInstallWebPages() {
  LWebletInstallScripts(kSalesRoutes);
  LSalesInstallDocumentOutputPages();
  LWebletInstallPostScript("importcsv", WLWebUploadDialogRun<LWebImportCsvDialog>);
  LSalesInstallVatReturnPages();
  for (const LWebNavTab& tab : {LWebNavTab{"customerlist", "Clients", 20}, LWebNavTab{"quotelist", "Devis", 30},
                                LWebNavTab{"orderlist", "Commandes", 40}, LWebNavTab{"invoicelist", "Factures", 50},
                                LWebNavTab{"creditnotelist", "Avoirs", 60}, LWebNavTab{"paymentlist", "Paiements", 70},
                                LWebNavTab{"supplierlist", "Fournisseurs", 80},
                                LWebNavTab{"porderlist", "Bons de commande", 90},
                                LWebNavTab{"itemlist", "Articles", 120},
                                LWebNavTab{"salespersonlist", "Vendeurs", 125},
                                LWebNavTab{"grouplist", "Groupes", 126}})
    LWebNavTabInstall(tab);
}
