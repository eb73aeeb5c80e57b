// The sales documents on the web, one set of pages per kind (invoices, quotes, orders, credit
// notes), named after the kind's command word: "<kind>list", "<kind>prop", "<kind>delete".
//
// The list shows one period and optionally one customer, sorted by any column and paged, with
// its period dialog and refilters ("<kind>listperiod", "<kind>listperiodchange",
// "<kind>listdatechange", "<kind>listcustomerchange": invoice/shared/weblistperiod.h); drafts
// are listed with the recorded documents.
//
// The dialog ("id" = the document's key; none: a new document) edits the header (customer,
// date, payment terms, shipping, untaxed, notes, draft) and the item lines on the grid of
// LWebDialogFK; the totals under the grid are worked out by the server as lines change, by the
// same totaller as the saved document. OK creates or edits the document through the sales book,
// as the command line does; unticking "Brouillon" on a draft records it.
//
// Quotes and orders also have "quoteci" / "orderci": the document becomes an invoice
// (salesconversion.h) and the browser goes to that invoice; "quoteco" turns a quote into an
// order the same way. Purchase orders name a supplier instead of a customer, and have
// "porderbill": the order becomes a bill.
#pragma once

#include "accounts/webpagemainex.h"
#include "accounts/websuppliers.h"
#include "invoice/shared/salesdocument.h"
#include "invoice/sales/webcustomers.h"
#include "invoice/shared/webdialogfk.h"
#include "invoice/shared/weblistperiod.h"

inline constexpr LWebPeriodList kLWebInvoicePeriodList{"invoicelist", "customer", "Client", LWebCustomerChoices};
inline constexpr LWebPeriodList kLWebQuotePeriodList{"quotelist", "customer", "Client", LWebCustomerChoices};
inline constexpr LWebPeriodList kLWebOrderPeriodList{"orderlist", "customer", "Client", LWebCustomerChoices};
inline constexpr LWebPeriodList kLWebCreditNotePeriodList{"creditnotelist", "customer", "Client",
                                                          LWebCustomerChoices};
inline constexpr LWebPeriodList kLWebPOrderPeriodList{"porderlist", "supplier", "Fournisseur", LWebSupplierChoices};
// The period list of a kind's page.
const LWebPeriodList& LWebSalesPeriodList(LSalesDocumentType type);

class LWebSalesDocumentsPage : public LWebPageMainEx {
 public:
  LWebSalesDocumentsPage(LWebletForm& form, LSalesDocumentType type);
  void Generate() override;
  const LWebPeriodList& PeriodList() const;
  // The table of the request's filter, its pager and summary.
  void WriteListBlock(LWebletForm& out);

 private:
  const LSalesDocumentKind& kind_;
};

class LWebSalesDocumentDialog : public LWebDialogFK {
 public:
  LWebSalesDocumentDialog(LWebletForm& form, LSalesDocumentType type);
  void PrintHeader() override;
  void InitDialog() override;
  void Generate() override;
  bool CmOk() override;
  void CmCancel() override;
  // The totals control: the totals of what the dialog holds, as script.
  void CommandAJAX(int controlId, const std::string& controlIdText) override;
  // Script that shows the totals of what the dialog holds (nothing when a line cannot be read).
  void WriteTotalsScript();

 private:
  // The document as the controls describe it, on top of the stored one when editing. false
  // after the error at the offending control (quiet: without error script).
  bool BuildDocument(LSalesDocument& document, bool quiet);
  // The totals of document, as the table shown under the grid.
  std::string TotalsHtml(LSalesDocument& document);
  std::string EditedKey() const;
  // The session value of this document's unsaved values.
  std::string DraftName() const;
  bool SaveDocument();
  // The actions of a recorded document: pay an invoice, convert a quote or an order.
  std::string DocumentLinks(const std::string& key);

  const LSalesDocumentKind& kind_;
  bool draftRestored_ = false;  // the controls hold the session's draft
};

template <LSalesDocumentType T>
class LWebSalesDocumentsPageOf : public LWebSalesDocumentsPage {
 public:
  explicit LWebSalesDocumentsPageOf(LWebletForm& form) : LWebSalesDocumentsPage(form, T) {}
};

template <LSalesDocumentType T>
class LWebSalesDocumentDialogOf : public LWebSalesDocumentDialog {
 public:
  explicit LWebSalesDocumentDialogOf(LWebletForm& form) : LWebSalesDocumentDialog(form, T) {}
};

// "<kind>itemssave": what the document dialog holds, kept in the session (value
// LWebSalesDocumentDraftName) as the user types, until OK or Cancel; shown again, with a message,
// when the user comes back to the dialog (a document of that key, or a new one).
inline constexpr std::size_t kLWebDraftMaxBytes = 1000000;
std::string LWebSalesDocumentDraftName(LSalesDocumentType type, std::string_view key);
void WLSalesDocumentItemsSave(LWebletForm& form, LSalesDocumentType type);
template <LSalesDocumentType T>
void WLSalesDocumentItemsSaveOf(LWebletForm& form) {
  WLSalesDocumentItemsSave(form, T);
}

// "<kind>delete": deletes the document "id" (recorded or draft) and goes back to the list, with
// the refusal in "msg" when there is one. A user who may only view the data deletes nothing.
void WLSalesDocumentDelete(LWebletForm& form, LSalesDocumentType type);
// "porderbill": the purchase order "id" becomes a bill dated today (porderconversion.h); the
// browser goes to the bill.
void WLPOrderToBill(LWebletForm& form);
// "quoteci", "orderci": the quote or order "id" becomes an invoice; the browser goes to it.
void WLSalesDocumentToInvoice(LWebletForm& form, LSalesDocumentType type);

// "quoteco": the quote "id" becomes an order; the browser goes to it.
void WLQuoteToOrder(LWebletForm& form);

template <LSalesDocumentType T>
void WLSalesDocumentDeleteOf(LWebletForm& form) {
  WLSalesDocumentDelete(form, T);
}
template <LSalesDocumentType T>
void WLSalesDocumentToInvoiceOf(LWebletForm& form) {
  WLSalesDocumentToInvoice(form, T);
}
