#include "accounts/billpayments.h"

#include <algorithm>

#include "accounts/accounts.h"
#include "accounts/auditpending.h"
#include "accounts/audittrail.h"
#include "accounts/bills.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "accounts/ledgerlock.h"
#include "accounts/purchaseintent.h"
#include "accounts/references.h"
#include "accounts/suppliers.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "llib/gen/filestore.h"
#include "llib/gen/money.h"
#include "llib/gen/system.h"

namespace {

constexpr std::string_view kVoidKeysField = "VoidBillNumber";
constexpr std::string_view kVoidAmountsField = "VoidBillAmounts";
constexpr std::string_view kChequeNumberField = "ChequeNumber";

std::vector<LAppliedAmount> Applications(const LRecord& payment) {
  return LReadAppliedAmounts(payment, kBillPaymentKeysField, kBillPaymentAmountsField);
}
void WriteApplications(LRecord& payment, const std::vector<LAppliedAmount>& entries) {
  LWriteAppliedAmounts(payment, entries, kBillPaymentKeysField, kBillPaymentAmountsField);
}

// One entry per bill (amounts of a bill named twice added up), empty amounts left out.
std::vector<LAppliedAmount> Merged(const std::vector<LAppliedAmount>& entries) {
  std::vector<LAppliedAmount> merged;
  for (const LAppliedAmount& entry : entries) {
    auto same = std::find_if(merged.begin(), merged.end(), [&](const auto& m) { return m.invoice == entry.invoice; });
    if (same != merged.end()) same->amount += entry.amount;
    else merged.push_back(entry);
  }
  std::erase_if(merged, [](const LAppliedAmount& entry) { return entry.amount == 0; });
  return merged;
}

// Moves the bill's "AmountPaid" by delta cents; false when it could not be saved.
bool MovePaid(LProfile& profile, std::string_view bill, long long delta) {
  LBill record;
  if (delta == 0 || !profile.List(kBillsList).Open(record, bill)) return true;
  record.SetInt64("AmountPaid", record.GetInt64("AmountPaid", 0) + delta);
  return record.Flush();
}

// The amounts of a payment of supplier, amount cents, applied to bills; held: what the payment
// held before, which its bills may take again.
bool CheckApplications(LProfile& profile, std::string_view supplier, long long amount,
                       const std::vector<LAppliedAmount>& entries, const std::vector<LAppliedAmount>& held,
                       std::string& error) {
  const LCurrencyFormat& money = profile.GetCurrencyFormat();
  long long sum = 0;
  for (const LAppliedAmount& entry : entries) {
    LBill bill;
    if (!profile.List(kBillsList).Open(bill, entry.invoice)) {
      error = "La facture fournisseur « " + entry.invoice + " » n'existe pas.";
      return false;
    }
    if (bill.GetString("Supplier") != supplier) {
      error = "La facture " + entry.invoice + " n'est pas une facture du fournisseur « " + std::string(supplier) + " ».";
      return false;
    }
    long long room = bill.GetInt64("Total", 0) - bill.GetInt64("AmountPaid", 0) + LAppliedAmountOf(held, entry.invoice);
    if (entry.amount < 0 || entry.amount > room) {
      error = "Le montant appliqué à la facture " + entry.invoice + " doit être compris entre 0 et ce qu'elle doit encore (" +
              LFormatMoney(room, money) + ").";
      return false;
    }
    sum += entry.amount;
  }
  if (sum > amount) {
    error = "Le total appliqué aux factures (" + LFormatMoney(sum, money) + ") dépasse le montant du règlement (" +
            LFormatMoney(amount, money) + ").";
    return false;
  }
  return true;
}

// amount cents over the supplier's open bills, first due first.
std::vector<LAppliedAmount> Spread(LProfile& profile, std::string_view supplier, long long amount) {
  std::vector<LAppliedAmount> entries;
  for (const LOpenBill& bill : LOpenBills(profile, supplier)) {
    if (amount <= 0) break;
    long long applied = std::min(amount, bill.Outstanding());
    entries.push_back({bill.key, applied});
    amount -= applied;
  }
  return entries;
}

// Every bill is moved even when one fails; false when one could not be saved.
bool MovePaidAll(LProfile& profile, const std::vector<LAppliedAmount>& entries, int sign) {
  bool written = true;
  for (const LAppliedAmount& entry : entries) written = MovePaid(profile, entry.invoice, sign * entry.amount) && written;
  return written;
}

// The refusal of an operation whose document was written but not every figure following it.
bool FiguresNotWritten(std::string& error) {
  error = kSupplierFiguresNotWrittenMessage;
  return false;
}

// Appends to a refusal that putting the bills back failed too.
void AddUndoFailure(bool undone, std::string& error) {
  if (!undone) error += " " + std::string(kSupplierFiguresNotWrittenMessage);
}

// The payments of the list in their order of entry (by number), the latest last.
std::vector<std::string> PaymentKeysInOrder(LProfile& profile) {
  std::vector<std::string> keys;
  LRecord payment;
  for (LFileStoreIteratorBase it(profile.List(kBillPaymentsList), payment); payment.IsAttached(); it.Next(payment))
    keys.push_back(payment.GetPrimaryKey());
  std::sort(keys.begin(), keys.end(), [](const std::string& a, const std::string& b) { return LDocumentKeyLess(a, b); });
  return keys;
}

// Opens the stored payment key; false with the refusal in error.
bool OpenPayment(LProfile& profile, std::string_view key, LBillPayment& payment, std::string& error) {
  if (!key.empty() && profile.List(kBillPaymentsList).Open(payment, key)) return true;
  error = "Le règlement « " + std::string(key) + " » n'existe pas.";
  return false;
}

// A void payment is kept as it was voided.
bool MayChange(const LRecord& payment, std::string& error) {
  if (!LBillPaymentIsVoid(payment)) return true;
  error = "Le règlement « " + payment.GetPrimaryKey() + " » est annulé : il ne peut plus être modifié.";
  return false;
}

// Saves a payment voided or brought back, the audit trail first; false (detached, the message in
// error) when either could not be written.
bool SaveChanged(const LProfile& profile, LBillPayment& payment, std::string& error) {
  std::string key = payment.GetPrimaryKey();
  LAuditPending audit(profile, LAuditDocumentEvent(kAuditEdit, kBillPaymentTitle, key, payment),
                      profile.List(kBillPaymentsList).MakeRecordPath(key));
  bool audited = audit.Append();
  if (audited && payment.Flush()) return true;
  payment.DetachWithoutSave();
  error = audited ? "Impossible d'enregistrer le règlement « " + key + " »." : std::string(kAuditNotWrittenMessage);
  return false;
}

// A cheque's payment keeps the cheque's figures: only its applications and notes may change.
bool ChequeFiguresKept(const LRecord& payment, const LBillPaymentRequest& request, std::string& error) {
  std::string cheque = payment.GetString(kChequeNumberField);
  if (cheque.empty() ||
      (request.supplier == payment.GetString("Supplier") && request.amount == payment.GetInt64("Amount", 0) &&
       request.date == payment.GetString("Date") &&
       (request.payingAccount.empty() ? std::string(kDefaultPaymentAccount) : request.payingAccount) ==
           payment.GetString("DepositAccount", kDefaultPaymentAccount)))
    return true;
  error = "Le règlement « " + payment.GetPrimaryKey() + " » est le chèque n° " + cheque +
          " : seules ses imputations et ses notes peuvent changer.";
  return false;
}

}  // namespace

void LBillPaymentBuildTransaction(LProfile& profile, const LRecord& payment, std::string_view reference,
                                  std::string_view userName, LLedgerTransaction& txn) {
  std::string description = payment.GetString("Notes");
  if (description.empty()) description = "Paiements; " + payment.GetString("Supplier");
  LBillOptions billOptions;
  billOptions.OpenFrom(profile);
  std::string payable = LGetAccountNumberUsingDescription(profile, billOptions.GetAccountsPayable(profile));
  std::string paying = LGetAccountNumberUsingDescription(profile, payment.GetString("DepositAccount", kDefaultPaymentAccount));
  long long amount = payment.GetInt64("Amount", 0);
  std::string document = payment.GetPrimaryKey();
  txn = LLedgerTransaction(payment.GetString("Date"), std::string(reference), kTxnTypeBillPayment);
  txn.AddLine(payable, description, amount, userName, "", document);
  txn.AddLine(paying, description, -amount, userName, "", document);
}

bool LBillPaymentRecordTransactions(LProfile& profile, LBillPayment& payment, std::string_view userName) {
  std::string reference = payment.GetString("JournalTxnRef");
  if (reference.empty()) {
    int number = LTakeReferenceNumber(profile, kBillPaymentCounter);
    if (number == 0) return false;
    reference = LFormatReference(LReferencePrefix(profile, kBillPaymentCounter), number);
  }
  if (payment.GetString("Notes").empty()) payment.SetString("Notes", "Paiements; " + payment.GetString("Supplier"));
  LLedgerTransaction txn;
  LBillPaymentBuildTransaction(profile, payment, reference, userName, txn);
  bool recorded = LAccountTransactionRecord(profile, txn);
  payment.SetString("JournalTxnRef", reference);
  return recorded;
}

namespace {

// The trail's entry of an edit, written before the payment changes: its new date and amount.
LAuditEvent EditEvent(std::string_view key, const LBillPayment& payment, const LBillPaymentRequest& request) {
  LRecord edited;
  edited.CopyRecord(payment);
  edited.SetString("Date", request.date);
  edited.SetInt64("Amount", request.amount);
  return LAuditDocumentEvent(kAuditEdit, kBillPaymentTitle, key, edited);
}

// The first number no payment has: the key of a new one. Payments are made only under the ledger
// lock, so it stays free until the payment is saved.
std::string FreeKey(const LFileStoreListBase& payments) {
  for (long number = 1;; ++number)
    if (std::string key = std::to_string(number); !payments.TestRecordExists(key)) return key;
}

}  // namespace

bool LBillPaymentCreate(LProfile& profile, const LBillPaymentRequest& request, std::string& reference,
                        std::string& error) {
  LLedgerLock lock(profile);
  LPurchaseChangeIntent intent(profile);
  std::vector<LAppliedAmount> entries =
      request.autoApply ? Spread(profile, request.supplier, request.amount) : Merged(request.applications);
  if (!CheckApplications(profile, request.supplier, request.amount, entries, {}, error)) return false;
  LFileStoreListBase payments = profile.List(kBillPaymentsList);
  LBillPayment payment;
  payments.CreateNewRecord(payment, FreeKey(payments));
  payment.SetString("Supplier", request.supplier);
  payment.SetInt64("Amount", request.amount);
  payment.SetString("Date", request.date);
  payment.SetString("Notes", request.notes);
  if (!request.payingAccount.empty()) payment.SetString("DepositAccount", request.payingAccount);
  if (!request.method.empty()) payment.SetString("BillPaymentMethod", request.method);
  if (!request.cheque.empty()) payment.SetString(kChequeNumberField, request.cheque);
  WriteApplications(payment, entries);
  // The payment's key is its identifier in the ledger: it is taken before posting. The "record"
  // entry follows the save; a crash between is settled from the note.
  std::string key = payment.GetPrimaryKey();
  intent.NoteBillPayment(key, {}, request.date);
  LAuditPending audit(profile, LAuditDocumentEvent(kAuditRecord, kBillPaymentTitle, key, payment),
                      payments.MakeRecordPath(key));
  if (!payment.Flush()) {
    payment.DetachWithoutSave();
    error = "Impossible de créer la fiche.";
    return false;
  }
  if (!audit.Append()) {
    payment.DetachWithoutSave();
    (void)payments.Delete(key);  // nothing else was written yet
    error = kAuditNotWrittenMessage;
    return false;
  }
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
  bool figures = MovePaidAll(profile, entries, +1);
  if (!(LSupplierChangeBalance(profile, request.supplier, -request.amount) && figures)) return FiguresNotWritten(error);
  return true;
}

bool LBillPaymentEdit(LProfile& profile, std::string_view key, const LBillPaymentRequest& request,
                      std::string& error) {
  LLedgerLock lock(profile);
  LPurchaseChangeIntent intent(profile);
  LBillPayment payment;
  if (!OpenPayment(profile, key, payment, error)) return false;
  if (!MayChange(payment, error) || !ChequeFiguresKept(payment, request, error)) {
    payment.DetachWithoutSave();
    return false;
  }
  // Should the edit not take effect after its entry, a "cancel" entry follows (auditpending.h).
  LAuditPending audit(profile, EditEvent(key, payment, request), profile.List(kBillPaymentsList).MakeRecordPath(key));
  if (!audit.Append()) {
    payment.DetachWithoutSave();
    error = kAuditNotWrittenMessage;
    return false;
  }
  std::vector<LAppliedAmount> held = Applications(payment);
  std::string oldSupplier = payment.GetString("Supplier"), oldDate = payment.GetString("Date");
  std::string reference = payment.GetString("JournalTxnRef");
  long long oldAmount = payment.GetInt64("Amount", 0);
  // What the payment held is let go first, so that spreading it again sees the bills as they
  // would be without it.
  if (!MovePaidAll(profile, held, -1)) {
    payment.DetachWithoutSave();
    error = "Impossible d'enregistrer le règlement « " + std::string(key) + " ».";
    AddUndoFailure(MovePaidAll(profile, held, +1), error);
    return false;
  }
  std::vector<LAppliedAmount> entries =
      request.autoApply ? Spread(profile, request.supplier, request.amount) : Merged(request.applications);
  if (!CheckApplications(profile, request.supplier, request.amount, entries, {}, error)) {
    AddUndoFailure(MovePaidAll(profile, held, +1), error);
    payment.DetachWithoutSave();
    return false;
  }
  intent.NoteBillPayment(key, oldDate, request.date);
  LLedgerTransaction previous;
  bool hadPosting = !reference.empty() && LLedgerTransactionLoad(profile, previous, oldDate, reference) &&
                    LAccountTransactionDelete(profile, oldDate, reference);
  payment.SetString("Supplier", request.supplier);
  payment.SetInt64("Amount", request.amount);
  payment.SetString("Date", request.date);
  payment.SetString("Notes", request.notes);
  if (request.payingAccount.empty()) payment.DeleteField("DepositAccount");
  else payment.SetString("DepositAccount", request.payingAccount);
  if (payment.GetString(kChequeNumberField).empty()) {  // a cheque's payment stays made by cheque
    if (request.method.empty()) payment.DeleteField("BillPaymentMethod");
    else payment.SetString("BillPaymentMethod", request.method);
  }
  WriteApplications(payment, entries);
  if (!LBillPaymentRecordTransactions(profile, payment, LGetPostingUserName()) || !payment.Flush()) {
    std::string date = payment.GetString("Date");
    payment.DetachWithoutSave();
    (void)LAccountTransactionDelete(profile, date, reference);  // nothing to take out when the posting failed
    if (hadPosting) (void)LAccountTransactionRecord(profile, previous);
    error = kLedgerNotWrittenMessage;
    AddUndoFailure(MovePaidAll(profile, held, +1), error);
    return false;
  }
  bool figures = MovePaidAll(profile, entries, +1);
  figures = LSupplierChangeBalance(profile, oldSupplier, oldAmount) && figures;
  if (!(LSupplierChangeBalance(profile, request.supplier, -request.amount) && figures)) return FiguresNotWritten(error);
  return true;
}

bool LBillPaymentApply(LProfile& profile, std::string_view key, std::string_view bill, long long amount,
                       std::string& error) {
  LLedgerLock lock(profile);
  LPurchaseChangeIntent intent(profile);
  LBillPayment payment;
  if (!OpenPayment(profile, key, payment, error)) return false;
  if (!MayChange(payment, error)) {
    payment.DetachWithoutSave();
    return false;
  }
  std::vector<LAppliedAmount> held = Applications(payment);
  std::vector<LAppliedAmount> entries = held;
  std::erase_if(entries, [&](const LAppliedAmount& entry) { return entry.invoice == bill; });
  entries.push_back({std::string(bill), amount});
  if (!CheckApplications(profile, payment.GetString("Supplier"), payment.GetInt64("Amount", 0), entries, held, error)) {
    payment.DetachWithoutSave();
    return false;
  }
  WriteApplications(payment, Merged(entries));
  if (!payment.Flush()) {
    error = "Impossible d'enregistrer le règlement « " + std::string(key) + " ».";
    return false;
  }
  if (!MovePaid(profile, bill, amount - LAppliedAmountOf(held, bill))) return FiguresNotWritten(error);
  return true;
}

bool LBillPaymentDelete(LProfile& profile, std::string_view key, std::string& error) {
  LLedgerLock lock(profile);
  LPurchaseChangeIntent intent(profile);
  LFileStoreListBase payments = profile.List(kBillPaymentsList);
  LBillPayment payment;
  if (!OpenPayment(profile, key, payment, error)) return false;
  LAuditPending audit(profile, LAuditDocumentEvent(kAuditDeleteDocument, kBillPaymentTitle, key, payment),
                      payments.MakeRecordPath(key));
  if (!audit.Append()) {
    error = kAuditNotWrittenMessage;
    return false;
  }
  std::string date = payment.GetString("Date"), reference = payment.GetString("JournalTxnRef");
  std::string voidDate = payment.GetString("VoidDate"), voidReference = payment.GetString("VoidTxnRef");
  std::string supplier = payment.GetString("Supplier");
  long long amount = LBillPaymentCountedAmount(payment);
  std::vector<LAppliedAmount> held = Applications(payment);
  payment.DetachWithoutSave();
  intent.NoteBillPayment(key, date, {});
  if (!voidReference.empty()) intent.NoteBillPayment(key, voidDate, {});  // its cheque's reversal goes too
  if (!payments.Delete(key)) {
    error = "Impossible de supprimer le règlement « " + std::string(key) + " ».";
    return false;
  }
  // A posting already gone from the ledger leaves nothing to take out: the document goes all the same.
  if (!reference.empty()) (void)LAccountTransactionDelete(profile, date, reference);
  if (!voidReference.empty()) (void)LAccountTransactionDelete(profile, voidDate, voidReference);
  bool figures = MovePaidAll(profile, held, -1);
  if (!(LSupplierChangeBalance(profile, supplier, amount) && figures)) return FiguresNotWritten(error);
  return true;
}

bool LBillPaymentDeleteForLedger(LProfile& profile, std::string_view document, std::string_view reference) {
  std::string error;
  return LDocumentPostedAs(profile, kBillPaymentsList, document, reference) &&
         LBillPaymentDelete(profile, document, error);
}

long long LBillPaymentUnapplied(const LRecord& payment) {
  long long applied = 0;
  for (const LAppliedAmount& entry : Applications(payment)) applied += entry.amount;
  return LBillPaymentCountedAmount(payment) - applied;
}

bool LBillPaymentIsVoid(const LRecord& payment) { return payment.GetBool("Void", false); }

long long LBillPaymentCountedAmount(const LRecord& payment) {
  return LBillPaymentIsVoid(payment) ? 0 : payment.GetInt64("Amount", 0);
}

bool LBillPaymentVoid(LProfile& profile, std::string_view key, std::string_view date, std::string_view voidReference,
                      std::string& error) {
  LLedgerLock lock(profile);
  LPurchaseChangeIntent intent(profile);
  LBillPayment payment;
  if (!OpenPayment(profile, key, payment, error)) return false;
  if (LBillPaymentIsVoid(payment)) {
    payment.DetachWithoutSave();
    error = "Le règlement « " + std::string(key) + " » est déjà annulé.";
    return false;
  }
  std::vector<LAppliedAmount> held = Applications(payment);
  LWriteAppliedAmounts(payment, held, kVoidKeysField, kVoidAmountsField);
  WriteApplications(payment, {});
  payment.SetBool("Void", true);
  payment.SetString("VoidDate", date);
  payment.SetString("VoidTxnRef", voidReference);
  // Its posting stays; the bills' amounts paid and the balance follow the record.
  intent.NoteBillPayment(key, payment.GetString("Date"), payment.GetString("Date"));
  if (!SaveChanged(profile, payment, error)) return false;
  bool figures = MovePaidAll(profile, held, -1);
  if (!(LSupplierChangeBalance(profile, payment.GetString("Supplier"), payment.GetInt64("Amount", 0)) && figures))
    return FiguresNotWritten(error);
  return true;
}

bool LBillPaymentUnvoid(LProfile& profile, std::string_view key, std::string& error) {
  LLedgerLock lock(profile);
  LPurchaseChangeIntent intent(profile);
  LBillPayment payment;
  if (!OpenPayment(profile, key, payment, error)) return false;
  if (!LBillPaymentIsVoid(payment)) {
    payment.DetachWithoutSave();
    return true;
  }
  // Bills paid meanwhile by other payments, changed or deleted take back only what they still owe.
  std::string supplier = payment.GetString("Supplier");
  std::vector<LAppliedAmount> entries = LReadAppliedAmounts(payment, kVoidKeysField, kVoidAmountsField);
  for (LAppliedAmount& entry : entries) {
    LBill bill;
    if (!profile.List(kBillsList).Open(bill, entry.invoice) || bill.GetString("Supplier") != supplier) {
      entry.amount = 0;
      continue;
    }
    bill.DetachWithoutSave();
    entry.amount = std::clamp(entry.amount, 0LL, bill.GetInt64("Total", 0) - bill.GetInt64("AmountPaid", 0));
  }
  entries = Merged(entries);
  WriteApplications(payment, entries);
  for (std::string_view field : {std::string_view("Void"), std::string_view("VoidDate"), std::string_view("VoidTxnRef"),
                                 kVoidKeysField, kVoidAmountsField})
    payment.DeleteField(field);
  intent.NoteBillPayment(key, payment.GetString("Date"), payment.GetString("Date"));
  if (!SaveChanged(profile, payment, error)) return false;
  bool figures = MovePaidAll(profile, entries, +1);
  if (!(LSupplierChangeBalance(profile, supplier, -payment.GetInt64("Amount", 0)) && figures)) return FiguresNotWritten(error);
  return true;
}

void LBillPaymentsLetGo(LProfile& profile, std::string_view bill) {
  LRecord payment;
  for (LFileStoreIteratorBase it(profile.List(kBillPaymentsList), payment); payment.IsAttached(); it.Next(payment)) {
    // A void payment's former applications too: undoing the voiding must not find the bill again.
    for (auto [keys, amounts] : {std::pair(kBillPaymentKeysField, kBillPaymentAmountsField),
                                 std::pair(kVoidKeysField, kVoidAmountsField)}) {
      std::vector<LAppliedAmount> entries = LReadAppliedAmounts(payment, keys, amounts);
      if (std::erase_if(entries, [&](const LAppliedAmount& entry) { return entry.invoice == bill; }) > 0)
        LWriteAppliedAmounts(payment, entries, keys, amounts);  // saved as the iterator moves on
    }
  }
}

bool LBillGiveBackExcess(LProfile& profile, std::string_view bill) {
  LBill record;
  if (!profile.List(kBillsList).Open(record, bill)) return true;
  long long excess = record.GetInt64("AmountPaid", 0) - record.GetInt64("Total", 0);
  record.DetachWithoutSave();
  std::vector<std::string> keys = PaymentKeysInOrder(profile);
  bool written = true;
  for (auto key = keys.rbegin(); key != keys.rend() && excess > 0; ++key) {
    LRecord payment;
    if (!profile.List(kBillPaymentsList).Open(payment, *key)) continue;
    std::vector<LAppliedAmount> entries = Applications(payment);
    for (LAppliedAmount& entry : entries) {
      if (entry.invoice != bill || entry.amount <= 0) continue;
      long long taken = std::min(entry.amount, excess);
      entry.amount -= taken;
      excess -= taken;
      written = MovePaid(profile, bill, -taken) && written;
    }
    WriteApplications(payment, Merged(entries));
    written = payment.Flush() && written;
  }
  return written;
}
