#include "accounts/transfer.h"

#include "accounts/accounts.h"
#include "accounts/ledger.h"
#include "accounts/ledgerlock.h"
#include "accounts/references.h"
#include "accounts/transactiondate.h"
#include "invoice/shared/profile.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/system.h"

namespace {

constexpr std::string_view kNoSource = "Vous devez sélectionner un compte duquel transférer.";
constexpr std::string_view kNoDestination = "Vous devez sélectionner un compte vers lequel transférer.";
constexpr std::string_view kSameAccounts = "Les comptes de départ et d'arrivée ne peuvent pas êtres les mêmes.";
constexpr std::string_view kNotPositive = "Vous devez transférer un montant positif.";
constexpr std::string_view kFutureDate = "Vous ne pouvez pas planifier un transfert avec une date future";
constexpr std::string_view kAboveBalance = "Le solde de ce compte est inexact.";
constexpr std::string_view kTransferDescription = "Transférer";

}  // namespace

std::string LTransferAccountNumber(const LProfile& profile, std::string_view nameOrNumber) {
  if (nameOrNumber.empty()) return {};
  std::string number = LGetAccountNumberUsingDescription(profile, nameOrNumber);
  if (number.empty() && LAccountList(profile).TestRecordExists(nameOrNumber)) number = nameOrNumber;
  return number;
}

bool LAccountTransfer(LProfile& profile, LAsker& asker, std::string_view from, std::string_view to,
                      long long amount, const LDate& date, std::string* reference, std::string* message,
                      const LDate& today) {
  std::string source = LTransferAccountNumber(profile, from);
  std::string destination = LTransferAccountNumber(profile, to);
  if (source.empty()) return LFail(message, kNoSource);
  if (destination.empty()) return LFail(message, kNoDestination);
  if (source == destination) return LFail(message, kSameAccounts);
  if (amount <= 0) return LFail(message, kNotPositive);
  if (date > today) return LFail(message, kFutureDate);
  LAccount account;
  LAccountList(profile).Open(account, source);
  if (amount > account.GetTotalBalance()) return LFail(message, kAboveBalance);
  if (!LCheckTransactionDate(profile, asker, date, message, today)) return false;

  // The number is consumed only once the transaction is in the ledger.
  LLedgerLock lock(profile);
  int number = LPeekReferenceNumber(profile, kGeneralJournalCounter);
  std::string txnReference = LFormatReference(LReferencePrefix(profile, kGeneralJournalCounter), number);
  LLedgerTransaction txn(date.ToText(), txnReference, kTxnTypeGeneral);
  std::string userName = LGetPostingUserName();
  txn.AddLine(destination, kTransferDescription, amount, userName, "", "");
  txn.AddLine(source, kTransferDescription, -amount, userName, "", "");
  if (!LAccountTransactionRecord(profile, txn)) return LFail(message, kLedgerNotWrittenMessage);
  if (reference != nullptr) *reference = txnReference;
  if (!LStoreReferenceNumber(profile, kGeneralJournalCounter, number + 1))
    return LFail(message, kRecordNotSavedMessage);
  return true;
}
