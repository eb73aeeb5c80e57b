// The day files: where they are, appending a transaction, reading it back, taking it out, and
// the balance update that follows a posting.
#include "accounts/ledger.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "accounts/accounts.h"
#include "accounts/audittrail.h"
#include "accounts/ledgerlock.h"
#include "invoice/shared/profile.h"
#include "llib/gen/csv.h"
#include "llib/gen/date.h"
#include "llib/gen/file.h"
#include "llib/gen/filelock.h"

namespace {

bool SameReference(std::string_view a, std::string_view b) {
  return a.size() == b.size() && ::strncasecmp(a.data(), b.data(), a.size()) == 0;
}

// Column 2 of a row, cut as every reader cuts it.
std::string ReferenceOfRow(std::string_view rowText) {
  LCSVReaderRow row(rowText);
  LTextBuffer column;
  row.GetCol(column);
  row.GetCol(column);
  return column;
}

}  // namespace

// ---- Files ------------------------------------------------------------------------------------

void LLegderGetBaseFolder(const LProfile& profile, LTextBuffer& out) {
  LFile::_MakeFilePath(out, profile.GetDataStore().GetFolder(), "Ledger", "");
  if (!LFile::IsFolder(out)) ::mkdir(out, 0777);
}

bool LLedgerGetCSVFilePath(const LProfile& profile, LTextBuffer& out, std::string_view date) {
  out[0] = '\0';
  LDate day;
  if (!LDate::Parse(date, day)) return false;
  LTextBuffer folder;
  LLegderGetBaseFolder(profile, folder);
  LFile::_MakeFilePath(out, folder, day.ToText(), ".csv");
  return true;
}

void LReconcileGetCSVFilePath(const LProfile& profile, LTextBuffer& out, std::string_view account) {
  LTextBuffer folder;
  LFile::_MakeFilePath(folder, profile.GetDataStore().GetFolder(), "Reconcile", "");
  LFile::_MakeFilePath(out, folder, account, ".csv");
}

// ---- Posting ----------------------------------------------------------------------------------

bool LLedgerTransactionRecord(const LProfile& profile, const LLedgerTransaction& txn) {
  LTextBuffer path;
  if (!LLedgerGetCSVFilePath(profile, path, txn.GetDate())) return false;
  LLockedFile file(path, O_RDWR | O_CREAT, LOCK_EX, kLedgerLockTimeoutMs, 0666);
  if (!file.IsOpen()) return false;
  if (::lseek(file.Get(), 0, SEEK_END) < 0) return false;
  bool written = true;
  for (const auto& line : txn.Lines()) written = line.AppendToCSV(file.Get()) && written;
  return written;
}

bool LAccountTransactionRecord(LProfile& profile, const LLedgerTransaction& txn) {
  if (!txn.HasLines()) return true;
  LLedgerLock lock(profile);
  if (!LLedgerTransactionRecord(profile, txn)) return false;
  _LAccountTransactionRecord(profile, txn, +1);
  LAuditAppendTransaction(profile, kAuditPost, txn);
  return true;
}

void _LAccountTransactionRecord(LProfile& profile, const LLedgerTransaction& txn, int sign) {
  LDate day;
  if (!LDate::Parse(txn.GetDate(), day)) return;  // never recorded: there is nothing to undo
  LAccountList accounts(profile);
  LAccount account;
  for (const auto& line : txn.Lines()) {
    if (!accounts.Open(account, line.account)) continue;
    long long amount = line.amount * sign;
    account.AddBalance(day.year, day.month, amount);
    account.IncrementTotalBalance(amount);
    account.Invalidate();
  }
}

// ---- Reading ----------------------------------------------------------------------------------

bool LLedgerTransactionLoad(const LProfile& profile, LLedgerTransaction& txn, std::string_view date,
                            std::string_view reference) {
  txn.ClearLines();
  LTextBuffer path;
  if (!LLedgerGetCSVFilePath(profile, path, date) || !LFile::Exists(path)) return false;
  std::string type;
  for (LCSVFileReader reader(path, kLedgerLockTimeoutMs); reader.HasRow(); reader.Next()) {
    if (!SameReference(ReferenceOfRow(reader.GetLine()), LTruncated(reference, kMaxTextBytes))) continue;
    LLedgerJournalLine& line = txn.AppendLine({});
    line.LoadFromCSV(reader);
    type = line.type;
  }
  if (!txn.HasLines()) return false;
  txn.SetDate(date);
  txn.SetReference(reference);
  txn.SetType(type);
  return true;
}

bool LLedgerTransactionLoadAndReverse(const LProfile& profile, LLedgerTransaction& txn, std::string_view date,
                                      std::string_view reference) {
  txn.ClearLines();
  LTextBuffer path;
  // The editor would create a missing file; a day without a file has nothing to take out.
  if (!LLedgerGetCSVFilePath(profile, path, date) || !LFile::Exists(path)) return false;
  std::string type;
  {
    LCSVFileEditor editor(path, kLedgerLockTimeoutMs);
    for (; editor.HasRow(); editor.Next()) {
      if (!SameReference(ReferenceOfRow(editor.GetLine()), LTruncated(reference, kMaxTextBytes))) {
        editor.RowAccept();
        continue;
      }
      LLedgerJournalLine& line = txn.AppendLine({});
      line.LoadFromCSVRow(editor.GetLine());
      type = line.type;
    }
  }  // the editor writes the kept rows back here
  if (!txn.HasLines()) return false;
  txn.SetDate(date);
  txn.SetReference(reference);
  txn.SetType(type);
  return true;
}

bool LLedgerTransactionTestExists(const LProfile& profile, std::string_view date, std::string_view reference) {
  LTextBuffer path;
  if (!LLedgerGetCSVFilePath(profile, path, date) || !LFile::Exists(path)) return false;
  for (LCSVFileReader reader(path, kLedgerLockTimeoutMs); reader.HasRow(); reader.Next())
    if (SameReference(ReferenceOfRow(reader.GetLine()), LTruncated(reference, kMaxTextBytes))) return true;
  return false;
}
