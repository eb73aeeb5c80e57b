#include "accounts/bankpost.h"

#include <atomic>
#include <cctype>
#include <cstdlib>

#include "accounts/accounts.h"
#include "accounts/bankmatch.h"
#include "accounts/banklines.h"
#include "accounts/billpayments.h"
#include "accounts/ledger.h"
#include "accounts/references.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/datemessage.h"
#include "llib/gen/log.h"
#include "llib/gen/system.h"

namespace {

constexpr std::size_t kPayeeWords = 3;

}  // namespace

bool LBankPostLine(LProfile& profile, std::string_view account, std::string_view lineId,
                   const LBankLinePoster& poster, std::string& reference, std::string& error) {
  LBankLineStore store(profile, account);
  LBankLine* line = store.Find(lineId);
  if (line == nullptr) {
    error = LBankLineNotFoundMessage(lineId);
    return false;
  }
  if (line->HoldsLedgerLine()) {
    error = "La ligne de relevé " + std::string(lineId) + " correspond déjà à l'écriture " + line->ledgerReference + ".";
    return false;
  }
  std::string ledgerDate;
  if (!poster(*line, ledgerDate, reference, error)) return false;
  line->status = LBankLineStatus::kPosted;
  line->ledgerDate = ledgerDate;
  line->ledgerReference = reference;
  if (!store.Save()) {
    error = "L'écriture " + reference + " est passée, mais la ligne de relevé n'a pas pu être enregistrée.";
    return false;
  }
  return true;
}

bool LBankRecordTransaction(LProfile& profile, std::string_view account, std::string_view date, long long amount,
                            std::string_view toAccount, std::string_view description, std::string& reference,
                            std::string& error) {
  LDate day;
  if (!LDate::Parse(date, day)) {
    error = LInvalidDateMessage(date);
    return false;
  }
  for (std::string_view number : {account, toAccount}) {
    if (!LAccountIsLive(profile, number)) {
      error = LAccountNotInChartMessage(number);
      return false;
    }
  }
  if (toAccount == account) {
    error = "Le compte de contrepartie doit différer du compte bancaire.";
    return false;
  }
  if (amount == 0) {
    error = "Le montant ne peut pas être nul.";
    return false;
  }
  int number = LTakeReferenceNumber(profile, kGeneralJournalCounter);
  if (number == 0) {
    error = kRecordNotSavedMessage;
    return false;
  }
  reference = LFormatReference(LReferencePrefix(profile, kGeneralJournalCounter), number);
  LLedgerTransaction txn(date, reference, kTxnTypeGeneral);
  std::string user = LGetPostingUserName();
  txn.AddLine(account, description, amount, user, "", "");
  txn.AddLine(toAccount, description, -amount, user, "", "");
  if (LAccountTransactionRecord(profile, txn)) return true;
  error = "Impossible d'écrire la transaction dans le grand livre.";
  return false;
}

bool LBankPostToAccount(LProfile& profile, std::string_view account, std::string_view lineId,
                        std::string_view toAccount, std::string_view description, std::string& reference,
                        std::string& error) {
  auto poster = [&](const LBankLine& line, std::string& ledgerDate, std::string& ref, std::string& message) {
    std::string text = description.empty() ? line.text : std::string(description);
    if (!LBankRecordTransaction(profile, account, line.date, line.amount, toAccount, text, ref, message)) return false;
    ledgerDate = line.date;
    // The posting stands; only the next suggestion for this payee is lost.
    if (!LBankRememberPayee(profile, line.text, toAccount))
      LLogWarning("Bank: the account of a payee could not be remembered");
    return true;
  };
  return LBankPostLine(profile, account, lineId, poster, reference, error);
}

bool LBankPostBillPayment(LProfile& profile, std::string_view account, std::string_view lineId,
                          std::string_view supplier, std::string& reference, std::string& error) {
  LAccount bank;
  if (!LAccountList(profile).Open(bank, account)) {
    error = LAccountNotInChartMessage(account);
    return false;
  }
  auto poster = [&](const LBankLine& line, std::string& ledgerDate, std::string& ref, std::string& message) {
    if (line.amount >= 0) {
      message = "Un paiement de facture fournisseur est une sortie d'argent : la ligne " + line.id + " est un crédit.";
      return false;
    }
    LBillPaymentRequest request;
    request.supplier = supplier;
    request.amount = -line.amount;
    request.date = line.date;
    request.payingAccount = bank.GetDescription();
    request.notes = line.text;
    if (!LBillPaymentCreate(profile, request, ref, message)) return false;
    ledgerDate = line.date;
    return true;
  };
  return LBankPostLine(profile, account, lineId, poster, reference, error);
}

namespace {

std::atomic<LBankCustomerPaymentPoster> customerPaymentPoster{nullptr};

}  // namespace

void LBankSetCustomerPaymentPoster(LBankCustomerPaymentPoster poster) { customerPaymentPoster = poster; }
LBankCustomerPaymentPoster LBankGetCustomerPaymentPoster() { return customerPaymentPoster; }

std::string LBankPayeeKey(std::string_view text) {
  std::string key;
  std::size_t nWords = 0;
  for (const std::string& word : LBankTextWords(text)) {
    bool hasDigit = false;
    for (char c : word) hasDigit = hasDigit || std::isdigit(static_cast<unsigned char>(c));
    if (hasDigit || word.size() < 2) continue;
    key += (key.empty() ? "" : " ") + word;
    if (++nWords == kPayeeWords) break;
  }
  return key;
}

std::string LBankSuggestAccount(const LProfile& profile, std::string_view text) {
  std::string key = LBankPayeeKey(text);
  LRecord payee;
  if (key.empty() || !profile.List(kBankPayeesList).Open(payee, key)) return {};
  return payee.GetString("Account");
}

bool LBankRememberPayee(const LProfile& profile, std::string_view text, std::string_view account) {
  std::string key = LBankPayeeKey(text);
  if (key.empty()) return true;
  LRecord payee;
  (void)profile.List(kBankPayeesList).OpenAlways(payee, key);
  payee.SetString("Account", account);
  return payee.Flush();
}
