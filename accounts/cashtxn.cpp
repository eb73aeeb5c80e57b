#include "accounts/cashtxn.h"

#include "accounts/accounts.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "accounts/ledgerlock.h"
#include "accounts/references.h"
#include "accounts/transactiondate.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/record.h"
#include "llib/gen/system.h"

namespace {

constexpr std::string_view kNotPositive = "Le montant de l'opération doit être positif.";
constexpr std::string_view kNoRecord = "Cette opération de caisse n'existe pas.";
constexpr std::string_view kNotSaved = "Impossible d'enregistrer l'opération de caisse.";

}  // namespace

bool LCashTxnRecord(LProfile& profile, LAsker& asker, const LCashTxnRequest& request, std::string& key,
                    std::string* message) {
  if (!LSplitPayingAccountCheck(profile, request.account, message)) return false;
  if (request.amount <= 0) return LSplitRefuse(message, kNotPositive);
  if (!LSplitLinesCheck(profile, request.lines, request.amount, request.account, message)) return false;
  if (!LCheckTransactionDate(profile, asker, request.date, message)) return false;

  const LReferenceCounter& counter = request.receipt ? kReceiptCounter : kBillPaymentCounter;
  std::string description(LTruncated(request.description, kMaxTextBytes));
  if (description.empty()) description = request.receipt ? "Encaissement" : "Décaissement";
  LFileStoreListBase list = profile.List(kCashTransactionsList);
  LLedgerLock lock(profile);
  std::string prefix = LReferencePrefix(profile, counter);
  key = LFormatReference(prefix, LTakeReferenceNumber(profile, counter, [&](int n) {
                           return list.TestRecordExists(LFormatReference(prefix, n));
                         }));
  long long sign = request.receipt ? -1 : 1;  // the lines' side: credited for money in
  LLedgerTransaction txn(request.date.ToText(), key, request.receipt ? kTxnTypeReceipt : kTxnTypeBillPayment);
  std::string userName = LGetPostingUserName();
  txn.AddLine(request.account, description, -sign * request.amount, userName, "", key);
  for (const LSplitLine& line : request.lines)
    txn.AddLine(line.account, line.memo.empty() ? description : line.memo, sign * line.amount, userName, "", key);
  if (!LAccountTransactionRecord(profile, txn)) return LSplitRefuse(message, kLedgerNotWrittenMessage);

  LRecord record;
  list.CreateNewRecord(record, key);
  record.SetString("Account", request.account);
  record.SetString("Kind", request.receipt ? "Receipt" : "Payment");
  record.SetString("Date", request.date.ToText());
  record.SetInt64("Amount", request.amount);
  record.SetString("Description", description);
  LSplitLinesStore(record, request.lines);
  record.SetString("JournalTxnRef", key);
  if (!record.Flush()) {
    record.DetachWithoutSave();
    (void)LAccountTransactionDelete(profile, request.date.ToText(), key);
    return LSplitRefuse(message, kNotSaved);
  }
  return true;
}

bool LCashTxnDelete(LProfile& profile, std::string_view key, std::string* message) {
  LFileStoreListBase list = profile.List(kCashTransactionsList);
  LRecord record;
  if (!list.Open(record, key)) return LSplitRefuse(message, kNoRecord);
  record.DetachWithoutSave();
  LLedgerLock lock(profile);
  // A posting already gone from the ledger leaves nothing to take out: the record goes all the same.
  (void)LAccountTransactionDelete(profile, record.GetString("Date"), record.GetString("JournalTxnRef"));
  return list.Delete(key) || LSplitRefuse(message, kNotSaved);
}

bool LCashTxnDeleteForLedger(LProfile& profile, std::string_view, std::string_view reference) {
  return LDocumentPostedAs(profile, kCashTransactionsList, reference, reference) &&
         LCashTxnDelete(profile, reference, nullptr);
}
