#include "accounts/billpayments.h"

#include "accounts/accounts.h"
#include "accounts/bills.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "accounts/ledgerlock.h"
#include "accounts/references.h"
#include "invoice/shared/profile.h"

bool LBillPaymentRecordTransactions(LProfile& profile, LBillPayment& payment, std::string_view userName) {
  std::string reference = payment.GetString("JournalTxnRef");
  if (reference.empty())
    reference = LFormatReference(LReferencePrefix(profile, kBillPaymentCounter),
                                 LTakeReferenceNumber(profile, kBillPaymentCounter));
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

bool LBillPaymentCreate(LProfile& profile, LBillPayment& payment, std::string_view userName, std::string* error) {
  auto fail = [error](std::string_view message) {
    if (error != nullptr) *error = message;
    return false;
  };
  LFileStoreListBase payments = profile.List(kBillPaymentsList);
  LBillPayment created;
  payments.CreateNewRecord(created);
  created.CopyRecord(payment);
  if (!created.Flush()) {
    created.DetachWithoutSave();
    return fail("Impossible de créer la fiche.");
  }
  std::string key = created.GetPrimaryKey();
  if (!LBillPaymentRecordTransactions(profile, created, userName) || !created.Flush()) {
    std::string date = created.GetString("Date"), reference = created.GetString("JournalTxnRef");
    created.DetachWithoutSave();
    (void)LAccountTransactionDelete(profile, date, reference);  // nothing to take out when the posting failed
    (void)payments.Delete(key);
    return fail(kLedgerNotWrittenMessage);
  }
  payment.CopyRecord(created);
  payment.SetPrimaryKey(key);
  return true;
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
