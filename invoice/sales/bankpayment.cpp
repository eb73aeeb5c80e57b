#include "invoice/sales/bankpayment.h"

#include <cstdlib>

#include "accounts/accounts.h"
#include "accounts/banklines.h"
#include "accounts/bankmatch.h"
#include "accounts/bankpost.h"
#include "invoice/sales/paymentbook.h"
#include "invoice/shared/payment.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"

namespace {

// The customer's recorded invoices whose keys are words of text, each given the whole amount
// (the payment gives each at most what it still owes).
std::vector<LAppliedAmount> NamedInvoices(LProfile& profile, std::string_view customer, std::string_view text,
                                          long long amount) {
  std::vector<LAppliedAmount> named;
  const LFileStoreListBase& invoices = profile.MainList(LSalesDocumentKindOf(LSalesDocumentType::kInvoice).recordedList);
  for (const std::string& word : LBankTextWords(text)) {
    LSalesDocument invoice;
    bool already = false;
    for (const LAppliedAmount& entry : named) already = already || entry.invoice == word;
    if (already || !invoices.Open(invoice, word) || invoice.GetCustomer() != customer) continue;
    named.push_back({word, amount});
  }
  return named;
}

}  // namespace

bool LBankPostCustomerPayment(LProfile& profile, std::string_view account, std::string_view lineId,
                              std::string_view customer, std::string& reference, std::string& paymentKey,
                              std::string& error) {
  LAccount bank;
  if (!LAccountList(profile).Open(bank, account)) {
    error = LAccountNotInChartMessage(account);
    return false;
  }
  auto poster = [&](const LBankLine& line, std::string& ledgerDate, std::string& ref, std::string& message) {
    LPaymentRequest request;
    request.customer = customer;
    request.date = line.date;
    request.amount = std::llabs(line.amount);
    request.refund = line.amount < 0;
    request.depositAccount = bank.GetDescription();
    request.applications = NamedInvoices(profile, customer, line.text, request.amount);
    request.automatic = request.applications.empty();
    if (!LPaymentCreate(profile, request, paymentKey, &message)) return false;
    LPayment payment;
    if (!profile.MainList(kPaymentsList).Open(payment, paymentKey)) return false;
    ref = payment.GetString("JournalTxnRef");
    ledgerDate = line.date;
    return true;
  };
  return LBankPostLine(profile, account, lineId, poster, reference, error);
}
