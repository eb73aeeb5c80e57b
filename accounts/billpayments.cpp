#include "accounts/billpayments.h"

#include "accounts/accounts.h"
#include "accounts/bills.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "accounts/ledgerlock.h"
#include "accounts/references.h"
#include "invoice/shared/profile.h"
#include "llib/gen/system.h"

bool LBillPaymentRecordTransactions(LProfile& profile, LBillPayment& payment, std::string_view userName) {
  std::string reference = payment.GetString("JournalTxnRef");
  if (reference.empty()) {
    int number = LTakeReferenceNumber(profile, kBillPaymentCounter);
    if (number == 0) return false;
    reference = LFormatReference(LReferencePrefix(profile, kBillPaymentCounter), number);
  }
  std::string description = payment.GetString("Notes");
  if (description.empty()) {
    description = "Paiements; " + payment.GetString("Supplier");
    payment.SetString("Notes", description);
  }
  LBillOptions billOptions;
  billOptions.OpenFrom(profile);
  std::string payable = LGetAccountNumberUsingDescription(profile, billOptions.GetAccountsPayable(profile));
  std::string paying = LGetAccountNumberUsingDescription(profile, payment.GetString("DepositAccount", kDefaultPaymentAccount));
  long long amount = payment.GetInt64("Amount", 0);
  std::string document = payment.GetPrimaryKey();
  LLedgerTransaction txn(payment.GetString("Date"), reference, kTxnTypeBillPayment);
  txn.AddLine(payable, description, amount, userName, "", document);
  txn.AddLine(paying, description, -amount, userName, "", document);
  bool recorded = LAccountTransactionRecord(profile, txn);
  payment.SetString("JournalTxnRef", reference);
  return recorded;
}

bool LBillPaymentDeleteForLedger(LProfile& profile, std::string_view document, std::string_view reference) {
  LFileStoreListBase payments = profile.List(kBillPaymentsList);
  LBillPayment payment;
  if (!payments.Open(payment, document) || payment.GetString("JournalTxnRef") != reference) return false;
  std::string date = payment.GetString("Date");
  payment.DetachWithoutSave();
  LLedgerLock lock(profile);
  // A posting already gone from the ledger leaves nothing to take out: the document goes all the same.
  (void)LAccountTransactionDelete(profile, date, reference);
  return payments.Delete(document);
}

bool LBillPaymentCreate(LProfile& profile, const LBillPaymentRequest& request, std::string& reference,
                        std::string& error) {
  LFileStoreListBase payments = profile.List(kBillPaymentsList);
  LBillPayment payment;
  payments.CreateNewRecord(payment);
  payment.SetString("Supplier", request.supplier);
  payment.SetInt64("Amount", request.amount);
  payment.SetString("Date", request.date);
  payment.SetString("Notes", request.notes);
  if (!request.payingAccount.empty()) payment.SetString("DepositAccount", request.payingAccount);
  if (!request.method.empty()) payment.SetString("BillPaymentMethod", request.method);
  // The payment's key is its identifier in the ledger: it is taken before posting.
  if (!payment.Flush()) {
    payment.DetachWithoutSave();
    error = "Impossible de créer la fiche.";
    return false;
  }
  std::string key = payment.GetPrimaryKey();
  if (!LBillPaymentRecordTransactions(profile, payment, LGetPostingUserName()) || !payment.Flush()) {
    std::string date = payment.GetString("Date"), posted = payment.GetString("JournalTxnRef");
    payment.DetachWithoutSave();
    // Nothing to take out when the posting failed; a record that cannot go is named.
    (void)LAccountTransactionDelete(profile, date, posted);
    error = kLedgerNotWrittenMessage;
    if (!payments.Delete(key)) error += " La fiche " + key + " n'a pas pu être supprimée.";
    return false;
  }
  reference = payment.GetString("JournalTxnRef");
  return true;
}
