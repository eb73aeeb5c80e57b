#include "invoice/shared/receiptform.h"

#include "invoice/shared/formparts.h"
#include "invoice/shared/options.h"
#include "invoice/shared/payment.h"
#include "invoice/shared/profile.h"
#include "llib/gen/pdftable.h"

namespace {

std::string_view ReceiptTitle(const LPayment& payment) { return payment.IsRefund() ? "Remboursement" : "Reçu"; }

}  // namespace

std::string LReceiptPdfName(const LPayment& payment) {
  return LFormPdfName(ReceiptTitle(payment), payment.GetPrimaryKey());
}

bool LReceiptPdf(LProfile& profile, LPayment& payment, std::string& pdf, std::string* error, std::string* warning) {
  if (warning != nullptr) warning->clear();
  LPrintFormat format(profile);
  LFormSeller seller(profile);
  LRecord customer;
  (void)profile.MainList("Customers").Open(customer, payment.GetCustomer());  // absent: its key is printed
  LRecord receiptOptions;
  (void)profile.List(kMiscList).Open(receiptOptions, "Receipt");

  std::string title(ReceiptTitle(payment));
  std::string continued = title + " N° " + payment.GetPrimaryKey() + " (suite)";
  LPdfCanvas canvas(seller.paper);
  LFormBegin(canvas, seller, format, title + " " + payment.GetPrimaryKey());
  double y = LFormDrawHeader(canvas, seller, title,
                             {"N° " + payment.GetPrimaryKey(), "Date : " + format.Date(payment.GetDate())}, warning);
  std::string name = customer.GetString("Name");
  y = LFormDrawParty(canvas, "Client", name.empty() ? payment.GetCustomer() : name,
                     {customer.GetString("Address")}, y);

  LTextStyle amountStyle;
  amountStyle.sizePt = 12;
  amountStyle.bold = true;
  std::string received = (payment.IsRefund() ? "Montant remboursé : " : "Montant reçu : ") + format.Money(payment.GetAmount());
  y += canvas.Text(canvas.Left(), y, canvas.Right() - canvas.Left(), received, amountStyle) + 14;

  payment.UpdateInvoiceAmounts(profile);  // a payment older than its amounts list gets it first
  std::vector<LAppliedAmount> applied = LReadAppliedAmounts(payment);
  if (!applied.empty()) {
    double width = canvas.Right() - canvas.Left();
    LPdfTable table(canvas,
                    {{"Facture", width - 3 * 100, LTextAlign::kLeft},
                     {"Date", 100, LTextAlign::kLeft},
                     {"Total facture", 100, LTextAlign::kRight},
                     {payment.IsRefund() ? "Remboursé" : "Réglé", 100, LTextAlign::kRight}},
                    canvas.Left(), [&continued](LPdfCanvas& c) { return LFormContinuedTop(c, continued); });
    table.Heading(y);
    long long sum = 0;
    for (const LAppliedAmount& entry : applied) {
      LRecord invoice;
      bool known = profile.MainList("Invoices").Open(invoice, entry.invoice);
      table.Row({entry.invoice, known ? format.Date(invoice.GetString("Date")) : "",
                 known ? format.Money(invoice.GetInt64("Total", 0)) : "", format.Money(entry.amount)},
                y);
      sum += entry.amount;
    }
    long long unapplied = payment.GetAmount() - sum;
    if (unapplied != 0) table.Row({"Non imputé", "", "", format.Money(unapplied)}, y);
    table.Row({"Total", "", "", format.Money(payment.GetAmount())}, y, true);
    y += 10;
  }
  LFormNotesAndFooter(canvas, continued, receiptOptions, nullptr, y);
  return canvas.Finish(pdf, error);
}
