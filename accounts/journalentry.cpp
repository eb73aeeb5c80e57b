#include "accounts/journalentry.h"

#include "accounts/accounts.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "accounts/ledgerlock.h"
#include "accounts/question.h"
#include "accounts/references.h"
#include "accounts/transactiondate.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/csv.h"
#include "llib/gen/file.h"
#include "llib/gen/log.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/system.h"
#include "llib/gen/textcase.h"
#include "llib/gen/trim.h"

namespace {

constexpr std::string_view kNoReference = "Vous devez entrer un numéro de référence de transaction.";
constexpr std::string_view kNoDescription = "Veuillez entrer une description de transaction.";
constexpr std::string_view kReconciledQuestion =
    "Cet enregistrement de transaction a été rapproché. Voulez-vous vraiment l'enregistrer ?";
constexpr std::string_view kSaved = "La transaction a été enregistrée.";

// Whether the reconciliation file of account holds a row of the transaction (date, reference).
bool IsReconciled(const LProfile& profile, std::string_view account, std::string_view date,
                  std::string_view reference) {
  LTextBuffer path;
  LReconcileGetCSVFilePath(profile, path, account);
  if (!LFile::Exists(path)) return false;
  for (LCSVFileReader reader(path, kLedgerLockTimeoutMs); reader.HasRow(); reader.Next()) {
    LCSVReaderRow row(reader.GetLine());
    LTextBuffer rowDate, rowReference;
    row.GetCol(rowDate);
    row.GetCol(rowReference);
    if (LSameText(rowDate, date) && LSameText(rowReference, reference)) return true;
  }
  return false;
}

}  // namespace

const LReferenceCounter& LJournalEntryTypeCounter(int typeIndex) {
  switch (typeIndex) {
    case 0: return kBillPaymentCounter;
    case 1: return kReceiptCounter;
    case 2: return kSalesCounter;
    case 3: return kPurchasesCounter;
    default: return kGeneralJournalCounter;
  }
}

std::string_view LJournalEntryTypeText(int typeIndex) {
  bool known = typeIndex >= 0 && typeIndex < static_cast<int>(kJournalEntryTypes.size());
  return kJournalEntryTypes[static_cast<std::size_t>(known ? typeIndex : kJournalEntryGeneralType)];
}

std::string LJournalEntryAccountFromColumn(std::string_view column) {
  column = LTrim(column);
  std::size_t end = column.find_first_of(" \t");
  std::size_t dash = column.find(" - ");
  if (dash != std::string_view::npos && dash < end) end = dash;
  return std::string(LTrim(column.substr(0, end)));
}

long long LJournalEntryOutOfBalance(const std::vector<LJournalEntryLine>& lines) {
  long long difference = 0;
  for (const auto& line : lines) difference += line.IsCredit() ? -line.amount : line.amount;
  return difference;
}

long long LJournalEntryDlg::GetOutOfBalance() const { return LJournalEntryOutOfBalance(lines); }

bool LJournalEntryDlg::ConfirmReconciledLines(std::string* message) {
  std::string txnDate = existing ? storedDate : date.ToText();
  std::string txnReference = existing ? storedReference : std::string(LTrim(reference));
  if (lines.empty() || txnReference.empty()) return true;
  LAccountList accounts(profile_);
  LAccount account;
  for (const auto& line : lines) {
    if (!accounts.Open(account, line.account) || !account.IsCash()) continue;
    if (!IsReconciled(profile_, line.account, txnDate, txnReference)) continue;
    LQuestion question{std::string(kReconciledQuestion), "", "Enregistrer", "Non", false};
    if (asker_.Ask(question).confirmed) return true;
    return LFail(message, kReconciledQuestion);
  }
  return true;
}

bool LJournalEntryDlg::CmOk(std::string* message) {
  wroteLedger_ = false;
  savedReference_.clear();
  std::string userName = LGetPostingUserName();
  std::string typedReference(LTruncated(LTrim(reference), kMaxTextBytes));
  std::string lineDescription(LTruncated(description, kMaxTextBytes));

  // ---- Checks, in the order the user meets them ------------------------------------------
  if (!ConfirmReconciledLines(message)) return false;
  if (GetOutOfBalance() != 0) return LFail(message, kJournalEntryUnbalancedMessage);
  if (!LCheckTransactionDate(profile_, asker_, date, message)) return false;
  if (typedReference.empty()) return LFail(message, kNoReference);
  if (lineDescription.empty()) return LFail(message, kNoDescription);
  if (lines.empty()) return LFail(message, kJournalEntryNoLineMessage);
  // The desk offers only accounts of the chart; typed numbers are held to the same rule.
  for (const auto& line : lines)
    if (!LAccountIsLive(profile_, line.account)) return LFail(message, LAccountNotInChartMessage(line.account));

  // ---- From here on the entry is good: number, build, post --------------------------------
  std::string txnReference = typedReference;
  if (std::size_t bracket = txnReference.find('['); bracket != std::string::npos) {
    int number = LTakeReferenceNumber(profile_, LJournalEntryTypeCounter(typeIndex));
    if (number == 0) return LFail(message, kRecordNotSavedMessage);
    txnReference = LFormatReference(txnReference.substr(0, bracket), number);
  }
  LLedgerTransaction txn(date.ToText(), txnReference, LJournalEntryTypeText(typeIndex));
  for (const auto& line : lines)
    txn.AddLine(line.account, lineDescription, line.IsCredit() ? -line.amount : line.amount, userName, "", "");

  bool changed = true;
  {
    LLedgerLock lock(profile_);
    if (existing) {
      LLedgerTransaction stored;
      LLedgerTransactionLoad(profile_, stored, storedDate, storedReference);
      changed = !LLedgerTransactionEqual(stored, txn);
      // A stored entry whose rows are already gone is simply recorded anew.
      if (changed) (void)LAccountTransactionDelete(profile_, storedDate, storedReference);
    }
    if (changed && !LAccountTransactionRecord(profile_, txn)) return LFail(message, kLedgerNotWrittenMessage);
  }
  wroteLedger_ = changed;

  LOptions options;
  options.OpenFrom(profile_);
  options.SetString("LastAccountJournalApplied", lines.back().account);
  // Only the next entry's suggested account depends on it: the entry itself is written.
  if (!options.Flush()) LLogWarning("Journal entry: the last account used could not be remembered");
  savedReference_ = txnReference;
  LSetError(message, existing ? std::string_view() : kSaved);
  return true;
}
