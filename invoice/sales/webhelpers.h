// The small AJAX answers of the sales pages and the invoice search. Each answer is script for
// HandleAjaxJSReturn (ajax.js): it fills the element of the page that shows what was asked, so a
// page that lacks the element is left as it is.
//   "cbitemselchange"     an item chosen on a line ("code", "line"): FKItemFill fills the line's
//                         description, unit price (the business's format) and tax where empty;
//   "cbcustselchange"     a customer chosen in a document ("customer"): its address, balance and
//                         oldest due date into "customerinfo";
//   "cbuseselchange"      a sales person chosen in a document ("salesperson"): its name and
//                         commission rate into "salespersoninfo";
//   "pdltaxselchange",    a line's tax or the document's taxation changed: the totals of the
//   "ratechanged"         document dialog "kind" (invoice, quote, order, creditnote) as the
//                         saved document will have them, into "fktotals";
//   "getCustomerBalance"  "customer": what it owes, into "customerbalance";
//   "getInvoiceInfo"      "id": the invoice's date, total, amount paid and what it owes, into
//                         "invoiceinfo";
//   "getInvoiceDueInfo"   "id": its due date and what it owes, into "invoicedueinfo".
// "searchinvoices" is a page: the invoices (drafts too) whose number, customer (key or name),
// notes or line descriptions hold the text "q" without regard to case, or whose total is the
// amount typed, newest first, a page of 100 at a time.
#pragma once

#include "accounts/webpagemainex.h"

class LWebletForm;

void WLItemSelectionChange(LWebletForm& form);
void WLCustomerSelectionChange(LWebletForm& form);
void WLSalesPersonSelectionChange(LWebletForm& form);
void WLDocumentTotalsChange(LWebletForm& form);
void WLGetCustomerBalance(LWebletForm& form);
void WLGetInvoiceInfo(LWebletForm& form);
void WLGetInvoiceDueInfo(LWebletForm& form);

class LWebInvoiceSearchPage : public LWebPageMainEx {
 public:
  explicit LWebInvoiceSearchPage(LWebletForm& form);
  void Generate() override;
};
