// The day files: where they are, appending a transaction, reading it back, taking it out, and
// the balance update that follows a posting.
#include "accounts/ledger.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "accounts/accounts.h"
#include "accounts/ledgerintent.h"
#include "accounts/ledgerlock.h"
#include "invoice/shared/profile.h"
#include "llib/gen/csv.h"
#include "llib/gen/date.h"
#include "llib/gen/file.h"
#include "llib/gen/filelock.h"
#include "llib/gen/log.h"
#include "llib/gen/moneybounds.h"
#include "llib/gen/textcase.h"

namespace {

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
  // Looked at once per thread and business, not at every path a posting builds; a folder
  // removed later is made again by the next holder of the ledger lock, which every writer is.
  thread_local std::string known;
  if (known == std::string_view(out)) return;
  if (!LFile::IsFolder(out)) ::mkdir(out, 0777);
  known = out;
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

namespace {

// A line beyond the money ceiling would not read back as it was written: the posting is refused
// whole, before anything is written. What reaches here was refused with a message where it was
// typed or imported; this guards the books against every other way in.
bool LinesWithinBounds(const LLedgerTransaction& txn) {
  for (const auto& line : txn.Lines())
    if (!LMoneyIsWithinBounds(line.amount)) {
      LLogError("Écriture %s refusée : montant %lld au-delà du plafond", txn.GetReference().c_str(), line.amount);
      return false;
    }
  return true;
}

// Appends txn's rows; with an intent, writes it once the place of the rows is known.
bool AppendRows(const LProfile& profile, const LLedgerTransaction& txn, LLedgerIntent* intent) {
  if (!LinesWithinBounds(txn)) return false;
  LTextBuffer path;
  if (!LLedgerGetCSVFilePath(profile, path, txn.GetDate())) return false;
  // Deletes replace a day file by renaming a new one over it (nothing renames a day file away):
  // the lock is taken on the file the path names.
  LLockedFile file =
      LLockedFile::OpenCurrent(path, O_RDWR | O_CREAT, LOCK_EX, kLedgerLockTimeoutMs, 0666, LPathChange::kReplaced);
  if (!file.IsOpen()) {
    LLogWriteFailure("open", path, file.OpenErrno());
    return false;
  }
  // The size seen once locked is where the rows go: every appender holds this lock.
  off_t end = file.Locked() && file.Size() >= 0 ? static_cast<off_t>(file.Size()) : ::lseek(file.Get(), 0, SEEK_END);
  if (end < 0) return false;
  // The whole transaction in one write; a write that fails midway is cut back off, so the day
  // file never holds half a transaction.
  std::string rows;
  for (const auto& line : txn.Lines()) rows += line.BuildCSVRow();
  if (intent != nullptr) intent->AddPosting(txn);  // the accounts' records, locked after the day file
  if (intent != nullptr && !intent->BeginPosting(txn, end, rows)) return false;
  // The trail records the posting before the rows exist; a posting it cannot record is refused.
  if (intent != nullptr && !intent->RecordInTrail()) return false;
  if (LRobustWriteAt(file.Get(), rows.data(), rows.size(), end)) return true;
  LLogWriteFailure("write", path, errno);
  if (!LRobustTruncate(file.Get(), end)) LLogWriteFailure("truncate", path, errno);
  return false;
}

}  // namespace

bool LLedgerTransactionRecord(const LProfile& profile, const LLedgerTransaction& txn) {
  return AppendRows(profile, txn, nullptr);
}

bool LAccountTransactionRecord(LProfile& profile, const LLedgerTransaction& txn) {
  if (!txn.HasLines()) return true;
  LLedgerLock lock(profile);
  LLedgerIntent intent(profile);
  if (!AppendRows(profile, txn, &intent)) {
    intent.Refuse();  // the rows were not written (or were cut back): nothing changed
    return false;
  }
  // Balances not saved keep the intent, which the next holder of the ledger lock settles.
  if (intent.ApplyBalances()) intent.End();
  return true;
}

// ---- Reading ----------------------------------------------------------------------------------

bool LLedgerTransactionLoad(const LProfile& profile, LLedgerTransaction& txn, std::string_view date,
                            std::string_view reference) {
  txn.ClearLines();
  LTextBuffer path;
  if (!LLedgerGetCSVFilePath(profile, path, date) || !LFile::Exists(path)) return false;
  std::string type;
  for (LCSVFileReader reader(path, kLedgerLockTimeoutMs); reader.HasRow(); reader.Next()) {
    if (!LSameText(ReferenceOfRow(reader.GetLine()), LTruncated(reference, kMaxTextBytes))) continue;
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
  LCSVFileEditor editor(path, kLedgerLockTimeoutMs);
  for (; editor.HasRow(); editor.Next()) {
    if (!LSameText(ReferenceOfRow(editor.GetLine()), LTruncated(reference, kMaxTextBytes))) {
      editor.RowAccept();
      continue;
    }
    LLedgerJournalLine& line = txn.AppendLine({});
    line.LoadFromCSVRow(editor.GetLine());
    type = line.type;
  }
  // A day file that could not be rewritten still holds the transaction: nothing was taken out.
  if (!editor.Finish()) txn.ClearLines();
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
    if (LSameText(ReferenceOfRow(reader.GetLine()), LTruncated(reference, kMaxTextBytes))) return true;
  return false;
}
