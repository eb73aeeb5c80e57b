#include "invoice/sales/documentprint.h"

#include "invoice/sales/paymentbook.h"
#include "invoice/sales/salesbook.h"
#include "invoice/shared/customerstatement.h"
#include "invoice/shared/documentform.h"
#include "invoice/shared/documenthistory.h"
#include "invoice/shared/packingslipform.h"
#include "invoice/shared/payment.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/receiptform.h"
#include "llib/gen/file.h"
#include "llib/gen/optionalerror.h"

namespace {

// The history of the printed record gains "Imprimé" with the file's name; a trace only, so a
// failure to write it does not fail the printing.
void Printed(LProfile& profile, std::string_view list, std::string_view key, const LPrintedForm& form,
             std::string_view user) {
  (void)LDocumentHistoryAdd(profile, list, key, kHistoryPrinted, user, form.fileName);
}

std::string_view ListOf(const LSalesDocumentKind& kind, const LSalesDocument& document) {
  return document.IsDraft() ? kind.draftsList : kind.recordedList;
}

}  // namespace

bool LMakeSalesDocumentPdf(LProfile& profile, const LSalesDocumentKind& kind, const LSalesDocument& document,
                           std::optional<LFacturXProfile> facturX, std::string_view formName, LPrintedForm& form,
                           std::string* error) {
  form = LPrintedForm();
  LTemplateForm layout;
  std::string formWarning;
  if (!LTemplateFormLoad(profile, kind, formName, layout, error, formWarning)) return false;
  if (!LSalesDocumentPdf(profile, kind, document, layout, form.pdf, error, &form.warning)) return false;
  if (!formWarning.empty()) form.warning = formWarning + (form.warning.empty() ? "" : "\n" + form.warning);
  if (facturX) {
    std::string plain = std::move(form.pdf);
    if (!LFacturXPdf(profile, kind, document, *facturX, plain, form.pdf, error)) return false;
  }
  form.fileName = LSalesDocumentPdfName(kind, document.GetPrimaryKey());
  return true;
}

bool LPrintSalesDocument(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                         std::optional<LFacturXProfile> facturX, std::string_view formName, std::string_view user,
                         LPrintedForm& form, std::string* error) {
  form = LPrintedForm();
  LSalesDocument document;
  if (!LSalesDocumentOpen(profile, kind, key, document)) return LFail(error, LSalesDocumentNotFoundMessage(key));
  if (!LMakeSalesDocumentPdf(profile, kind, document, facturX, formName, form, error)) return false;
  Printed(profile, ListOf(kind, document), key, form, user);
  return true;
}

bool LPrintReceipt(LProfile& profile, std::string_view key, std::string_view user, LPrintedForm& form,
                   std::string* error) {
  form = LPrintedForm();
  LPayment payment;
  if (!LPaymentOpen(profile, key, payment, error)) return false;
  if (!LReceiptPdf(profile, payment, form.pdf, error, &form.warning)) return false;
  form.fileName = LReceiptPdfName(payment);
  Printed(profile, kPaymentsList, key, form, user);
  return true;
}

bool LPrintPackingSlip(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key, bool label,
                       std::string_view user, LPrintedForm& form, std::string* error) {
  form = LPrintedForm();
  LSalesDocument document;
  if (!LSalesDocumentOpen(profile, kind, key, document)) return LFail(error, LSalesDocumentNotFoundMessage(key));
  if (label) {
    if (!LShippingLabelPdf(profile, document, form.pdf, error)) return false;
    form.fileName = LShippingLabelPdfName(key);
  } else {
    if (!LPackingSlipPdf(profile, kind, document, form.pdf, error, &form.warning)) return false;
    form.fileName = LPackingSlipPdfName(key);
  }
  Printed(profile, ListOf(kind, document), key, form, user);
  return true;
}

bool LPrintStatement(LProfile& profile, std::string_view customer, const LDate& from, const LDate& to,
                     LPrintedForm& form, std::string* error) {
  form = LPrintedForm();
  LCustomerStatement statement;
  std::string buildError;
  if (!LCustomerStatementBuild(profile, customer, from, to, statement, buildError)) return LFail(error, buildError);
  if (!LCustomerStatementPdf(profile, statement, form.pdf, error, &form.warning)) return false;
  form.fileName = LStatementPdfName(customer);
  return true;
}

bool LWritePrintedForm(const LPrintedForm& form, const std::string& path, std::string* error) {
  if (LFile::WriteAllAtomic(path, form.pdf)) return true;
  return LFail(error, "Impossible d'écrire le fichier « " + path + " ».");
}
