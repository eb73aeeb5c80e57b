#include "accounts/cheques.h"

#include <algorithm>

#include "accounts/accounts.h"
#include "accounts/billpayments.h"
#include "accounts/check.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "accounts/ledgerlock.h"
#include "accounts/purchaseintent.h"
#include "accounts/references.h"
#include "accounts/transactiondate.h"
#include "invoice/shared/partyfields.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/filestorekeys.h"
#include "llib/gen/log.h"
#include "llib/gen/system.h"

namespace {

constexpr std::string_view kNoPayee = "Veuillez entrer le bénéficiaire du chèque.";
constexpr std::string_view kNotPositive = "Le montant du chèque doit être positif.";
constexpr std::string_view kBadNumber = "Le numéro de chèque doit être un nombre entier positif.";
constexpr std::string_view kNumberTaken = "Le chèque n° %s de ce compte existe déjà.";
constexpr std::string_view kNoSupplier = "Le fournisseur %s n'existe pas.";
constexpr std::string_view kBillsWithoutSupplier = "Seul un chèque à un fournisseur peut régler des factures.";
constexpr std::string_view kNoCheque = "Ce chèque n'existe pas.";
constexpr std::string_view kAlreadyVoid = "Ce chèque est déjà annulé.";
constexpr std::string_view kVoidBefore = "La date d'annulation ne peut pas précéder la date du chèque.";
constexpr std::string_view kNotPosted = "La transaction de ce chèque n'est plus dans le grand livre.";
constexpr std::string_view kNotSaved = "Impossible d'enregistrer le chèque.";
constexpr std::string_view kNextNumberField = "NextChequeNumber";

// A positive whole number of at most nine digits, without leading zeros lost: "0042" stays as
// typed, and is the number 42.
bool ParseChequeNumber(std::string_view text, long& number) {
  if (text.empty() || text.size() > 9 || text.find_first_not_of("0123456789") != std::string_view::npos) return false;
  number = std::stol(std::string(text));
  return number > 0;
}

LFileStoreListBase Cheques(const LProfile& profile) { return profile.List(kChequesList); }

// Posts the reversal of the cheque's transaction on voidDate, under reference + "V".
bool PostReversal(LProfile& profile, const LCheque& cheque, const std::string& voidDate, std::string* message) {
  LLedgerTransaction posted;
  std::string reference = cheque.GetString("JournalTxnRef");
  if (!LLedgerTransactionLoad(profile, posted, cheque.GetDate(), reference)) return LSplitRefuse(message, kNotPosted);
  std::string description = "Annulation du chèque n° " + cheque.GetNumber();
  LLedgerTransaction reversal(voidDate, reference + std::string(kChequeVoidSuffix), kTxnTypeBillPayment);
  std::string userName = LGetPostingUserName();
  // Each line keeps its document: a cheque to a supplier stays its bill payment's.
  for (const LLedgerJournalLine& line : posted.Lines())
    reversal.AddLine(line.account, description, -line.amount, userName, "", line.document);
  if (!LAccountTransactionRecord(profile, reversal)) return LSplitRefuse(message, kLedgerNotWrittenMessage);
  return true;
}

// Takes the void reversal back out of the ledger.
void DeleteReversal(LProfile& profile, const LCheque& cheque) {
  std::string reversal = cheque.GetString("VoidTxnRef");
  if (!reversal.empty()) (void)LAccountTransactionDelete(profile, cheque.GetString("VoidDate"), reversal);
}

}  // namespace

long LChequeNextNumber(const LProfile& profile, std::string_view account) {
  LAccount record;
  if (!LAccountList(profile).Open(record, account)) return 1;
  return std::max(1, record.GetInt(kNextNumberField, 1));
}

bool LChequeSetNextNumber(const LProfile& profile, std::string_view account, std::string_view number,
                          std::string* message) {
  long next = 0;
  if (!ParseChequeNumber(number, next)) return LSplitRefuse(message, kBadNumber);
  if (!LSplitPayingAccountCheck(profile, account, message)) return false;
  LAccount record;
  if (!LAccountList(profile).Open(record, account)) return false;
  record.SetInt(kNextNumberField, static_cast<int>(next));
  return record.Flush() || LSplitRefuse(message, kNotSaved);
}

bool LChequeResolve(const LProfile& profile, std::string_view word, std::string_view account, std::string& key,
                    std::string* message) {
  if (profile.List(kChequesList).TestRecordExists(word)) {
    key = word;
    return true;
  }
  std::vector<std::string> found = LChequeFind(profile, account, word);
  if (found.size() == 1) {
    key = found.front();
    return true;
  }
  return LSplitRefuse(message,
                      found.empty() ? "Le chèque n° %s n'existe pas." : "Plusieurs comptes ont un chèque n° %s : précisez --account.",
                      word);
}

std::vector<std::string> LChequeKeys(const LProfile& profile) {
  return LFileStoreSortedKeys(Cheques(profile));
}

std::string LChequeOfBillPayment(const LProfile& profile, std::string_view payment) {
  LFileStoreListBase list = Cheques(profile);
  LCheque cheque;
  for (LFileStoreIteratorBase it(list, cheque); cheque.IsAttached(); it.Next(cheque))
    if (!payment.empty() && cheque.GetBillPayment() == payment) return cheque.GetPrimaryKey();
  return {};
}

std::vector<std::string> LChequeFind(const LProfile& profile, std::string_view account, std::string_view number) {
  std::vector<std::string> found;
  long wanted = 0;
  if (!ParseChequeNumber(number, wanted)) return found;
  LFileStoreListBase list = Cheques(profile);
  LCheque cheque;
  for (LFileStoreIteratorBase it(list, cheque); cheque.IsAttached(); it.Next(cheque)) {
    long held = 0;
    if ((account.empty() || cheque.GetAccount() == account) && ParseChequeNumber(cheque.GetNumber(), held) &&
        held == wanted)
      found.push_back(cheque.GetPrimaryKey());
  }
  std::sort(found.begin(), found.end());
  return found;
}

bool LChequeWrite(LProfile& profile, LAsker& asker, const LChequeRequest& request, std::string& key,
                  std::string* message) {
  if (!LSplitPayingAccountCheck(profile, request.account, message)) return false;
  std::string payee(LTruncated(request.payee, kMaxTextBytes));
  if (payee.find_first_not_of(" \t") == std::string::npos) return LSplitRefuse(message, kNoPayee);
  if (request.amount <= 0) return LSplitRefuse(message, kNotPositive);
  std::string number = request.number.empty() ? std::to_string(LChequeNextNumber(profile, request.account))
                                              : request.number;
  long numberValue = 0;
  if (!ParseChequeNumber(number, numberValue)) return LSplitRefuse(message, kBadNumber);
  if (!LChequeFind(profile, request.account, number).empty()) return LSplitRefuse(message, kNumberTaken, number);
  if (!request.supplier.empty()) {
    if (!profile.List(kSuppliersList).TestRecordExists(request.supplier))
      return LSplitRefuse(message, kNoSupplier, request.supplier);
  } else if (!request.applications.empty() || request.autoApply) {
    return LSplitRefuse(message, kBillsWithoutSupplier);
  } else if (!LSplitLinesCheck(profile, request.lines, request.amount, request.account, message)) {
    return false;
  }
  if (!LCheckTransactionDate(profile, asker, request.date, message)) return false;

  std::string description = request.memo.empty() ? "Chèque n° " + number + "; " + payee : request.memo;
  LAccount bank;
  (void)LAccountList(profile).Open(bank, request.account);
  LCheque cheque;
  LLedgerLock lock(profile);
  // Killed before the cheque is saved, what it posted is taken back by the next holder of the lock.
  LPurchaseChangeIntent intent(profile);
  if (!request.supplier.empty()) {
    intent.NoteCheque(request.account, number, {}, request.date.ToText());
    // The bill payment posts the cheque: payable debited, this bank credited.
    LBillPaymentRequest payment{.supplier = request.supplier,
                                .amount = request.amount,
                                .date = request.date.ToText(),
                                .payingAccount = bank.GetDescription(),
                                .notes = description,
                                .method = std::string(kChequeMethod),
                                .applications = request.applications,
                                .autoApply = request.autoApply,
                                .cheque = number};
    std::string error;
    if (!LBillPaymentCreate(profile, payment, key, error)) return LSplitRefuse(message, error);
    Cheques(profile).CreateNewRecord(cheque, key);
    LFileStoreListBase payments = profile.List(kBillPaymentsList);
    LRecord made;
    for (LFileStoreIteratorBase it(payments, made); made.IsAttached(); it.Next(made))
      if (made.GetString("JournalTxnRef") == key) cheque.SetString("BillPayment", made.GetPrimaryKey());
    cheque.SetString("Supplier", request.supplier);
  } else {
    key = LFormatReference(LReferencePrefix(profile, kBillPaymentCounter),
                           LTakeReferenceNumber(profile, kBillPaymentCounter,
                                                [&](int n) { return Cheques(profile).TestRecordExists(
                                                                 LFormatReference(LReferencePrefix(profile, kBillPaymentCounter), n)); }));
    intent.NoteCheque(request.account, number, key, request.date.ToText());
    LLedgerTransaction txn(request.date.ToText(), key, kTxnTypeBillPayment);
    std::string userName = LGetPostingUserName();
    for (const LSplitLine& line : request.lines)
      txn.AddLine(line.account, line.memo.empty() ? description : line.memo, line.amount, userName, "", key);
    txn.AddLine(request.account, description, -request.amount, userName, "", key);
    if (!LAccountTransactionRecord(profile, txn)) return LSplitRefuse(message, kLedgerNotWrittenMessage);
    Cheques(profile).CreateNewRecord(cheque, key);
    LSplitLinesStore(cheque, request.lines);
  }
  cheque.SetString("Account", request.account);
  cheque.SetString("Number", number);
  cheque.SetString("Payee", payee);
  cheque.SetString("Date", request.date.ToText());
  cheque.SetInt64("Amount", request.amount);
  cheque.SetString("Memo", description);
  cheque.SetString("JournalTxnRef", key);
  if (!cheque.Flush()) {
    cheque.DetachWithoutSave();
    (void)LedgerTransactionDelete(profile, request.date.ToText(), key);
    return LSplitRefuse(message, kNotSaved);
  }
  if (numberValue >= LChequeNextNumber(profile, request.account)) {
    bank.SetInt(kNextNumberField, static_cast<int>(numberValue + 1));
    // Only the number proposed next: a number taken twice is refused when the cheque is written.
    if (!bank.Flush())
      LLogError("Le prochain numéro de chèque du compte %s n'a pas pu être enregistré.", request.account.c_str());
  }
  return true;
}

bool LChequeVoid(LProfile& profile, LAsker& asker, std::string_view key, const LDate& date, std::string* message) {
  LFileStoreListBase list = Cheques(profile);
  LCheque cheque;
  if (!list.Open(cheque, key)) return LSplitRefuse(message, kNoCheque);
  if (cheque.IsVoid()) return LSplitRefuse(message, kAlreadyVoid);
  if (date.ToText() < cheque.GetDate()) return LSplitRefuse(message, kVoidBefore);
  if (!LCheckTransactionDate(profile, asker, date, message)) return false;
  LLedgerLock lock(profile);
  // Killed before the cheque is saved void, the reversal and the payment's voiding are taken back.
  LPurchaseChangeIntent intent(profile);
  intent.NoteChequeVoid(key, date.ToText());
  if (!PostReversal(profile, cheque, date.ToText(), message)) return false;
  std::string reversal = cheque.GetString("JournalTxnRef") + std::string(kChequeVoidSuffix);
  std::string payment = cheque.GetBillPayment(), error;
  if (!payment.empty() && !LBillPaymentVoid(profile, payment, date.ToText(), reversal, error)) {
    (void)LAccountTransactionDelete(profile, date.ToText(), reversal);
    cheque.DetachWithoutSave();
    return LSplitRefuse(message, error);
  }
  cheque.SetBool("Void", true);
  cheque.SetString("VoidDate", date.ToText());
  cheque.SetString("VoidTxnRef", reversal);
  if (!cheque.Flush()) {
    if (!payment.empty()) (void)LBillPaymentUnvoid(profile, payment, error);
    (void)LAccountTransactionDelete(profile, date.ToText(), reversal);
    cheque.DetachWithoutSave();
    return LSplitRefuse(message, kNotSaved);
  }
  return true;
}

bool LChequeDelete(LProfile& profile, std::string_view key, std::string* message) {
  LFileStoreListBase list = Cheques(profile);
  LCheque cheque;
  if (!list.Open(cheque, key)) return LSplitRefuse(message, kNoCheque);
  cheque.DetachWithoutSave();
  LLedgerLock lock(profile);
  // Killed midway, the deletion is finished by the next holder of the lock.
  LPurchaseChangeIntent intent(profile);
  intent.NoteChequeDelete(key);
  DeleteReversal(profile, cheque);
  std::string reference = cheque.GetString("JournalTxnRef");
  std::string payment = cheque.GetBillPayment();
  // A posting already gone from the ledger leaves nothing to take out: the cheque goes all the same.
  if (payment.empty() || !LBillPaymentDeleteForLedger(profile, payment, reference))
    (void)LAccountTransactionDelete(profile, cheque.GetDate(), reference);
  return list.Delete(key) || LSplitRefuse(message, kNotSaved);
}

bool LChequeDeleteForLedger(LProfile& profile, std::string_view, std::string_view reference) {
  if (LDocumentPostedAs(profile, kChequesList, reference, reference)) return LChequeDelete(profile, reference, nullptr);
  std::string_view suffix = kChequeVoidSuffix;
  if (reference.size() <= suffix.size() || reference.substr(reference.size() - suffix.size()) != suffix) return false;
  LCheque cheque;
  if (!Cheques(profile).Open(cheque, reference.substr(0, reference.size() - suffix.size())) ||
      cheque.GetString("VoidTxnRef") != reference)
    return false;
  LLedgerLock lock(profile);
  // Killed midway, the cheque is made not void by the next holder of the lock.
  LPurchaseChangeIntent intent(profile);
  intent.NoteChequeUnvoid(cheque.GetPrimaryKey());
  DeleteReversal(profile, cheque);
  std::string error;
  // The payment could not count again only if its record could not be saved: `kontavo check` finds it.
  if (!cheque.GetBillPayment().empty()) (void)LBillPaymentUnvoid(profile, cheque.GetBillPayment(), error);
  cheque.DeleteField("Void");
  cheque.DeleteField("VoidDate");
  cheque.DeleteField("VoidTxnRef");
  return cheque.Flush();
}

void LCheckChequePayments(LProfile& profile, LCheckReport& report) {
  LFileStoreListBase list = Cheques(profile);
  LCheque cheque;
  for (LFileStoreIteratorBase it(list, cheque); cheque.IsAttached(); it.Next(cheque)) {
    std::string key = cheque.GetBillPayment();
    if (key.empty()) continue;
    auto problem = [&](const char* message) {
      report.problems.push_back({std::string(kChequesList) + "/" + cheque.GetPrimaryKey(), 0, message, key});
    };
    LRecord payment;
    if (!profile.List(kBillPaymentsList).Open(payment, key)) {
      problem("le chèque paie un règlement fournisseur qui n'existe pas");
      continue;
    }
    payment.DetachWithoutSave();
    if (payment.GetInt64("Amount", 0) != cheque.GetAmount() || payment.GetString("Supplier") != cheque.GetString("Supplier"))
      problem("le montant ou le fournisseur du chèque diffère de son règlement fournisseur");
    if (LBillPaymentIsVoid(payment) != cheque.IsVoid())
      problem(cheque.IsVoid() ? "le chèque est annulé, son règlement fournisseur ne l'est pas"
                              : "le règlement fournisseur du chèque est annulé, le chèque ne l'est pas");
  }
}
