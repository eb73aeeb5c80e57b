#include "accounts/accountrenumber.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "accounts/accounts.h"
#include "accounts/audittrail.h"
#include "accounts/banklines.h"
#include "accounts/bills.h"
#include "accounts/ledger.h"
#include "accounts/ledgerintent.h"
#include "accounts/ledgerlock.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/csv.h"
#include "llib/gen/file.h"
#include "llib/gen/filelock.h"
#include "llib/gen/hashtable.h"
#include "llib/gen/log.h"
#include "llib/gen/textnum.h"

namespace {

constexpr std::string_view kRenumberIntentExtension = ".renumber";
constexpr std::string_view kNoteRenumber = "renumber";  // then the old number, the new one, the trail's size

// Rewrites the rows of one day file that name the old number; the other rows keep their text.
// The file stays locked (exclusively) from the read until its new text, written beside it, is
// renamed over it. Returns the rows changed, or -1 when the new text could not be written (the
// file is then unchanged).
long RenumberDayFile(const std::string& path, const LAccountRenumberProcess& data) {
  LLockedFile file = LLockedFile::OpenCurrent(path, O_RDWR, LOCK_EX, kLedgerLockTimeoutMs);
  if (!file.IsOpen()) return 0;
  // Our own exclusive lock stands in for the reader's shared one: it tries once and goes on.
  LCSVFileReader reader(path, 0);
  std::string content;
  long nChanged = 0;
  LLedgerJournalLine line;
  for (; reader.HasRow(); reader.Next()) {
    line.LoadFromCSVRow(reader.GetLine());
    if (line.account == data.oldNumber) {
      line.account = data.newNumber;
      content += line.BuildCSVRow();
      ++nChanged;
    } else {
      content += reader.GetLine();
      content += "\r\n";
    }
  }
  reader.Close();
  if (nChanged == 0) return 0;
  return LFile::WriteAllAtomic(path, content) ? nChanged : -1;
}

bool RenumberBills(const LProfile& profile, const LAccountRenumberProcess& data) {
  for (std::string_view listName : {kBillsList, kBillsDraftsList}) {
    LFileStoreListBase list = profile.List(listName);
    LBill bill;
    for (LFileStoreIteratorBase it(list, bill); bill.IsAttached(); it.Next(bill)) {
      if (bill.GetString("DepositAccount") == data.oldNumber) bill.SetString("DepositAccount", data.newNumber);
      for (int line = 1; line <= bill.GetItemCount(); ++line) {
        char field[32];
        std::snprintf(field, sizeof field, "Item%dAccount", line);
        if (bill.GetString(field) == data.oldNumber) bill.SetString(field, data.newNumber);
      }
      if (!bill.Flush()) return false;
    }
  }
  return true;
}

bool RenumberOptions(const LProfile& profile, const LAccountRenumberProcess& data) {
  LOptions options;
  options.OpenFrom(profile);
  for (int slot = 1; slot <= kDefAccountSlots; ++slot)
    if (options.GetDefAccountNumber(profile, slot) == data.oldNumber) options.SetDefAccountNumber(slot, data.newNumber);
  if (options.GetString("LastAccountJournalApplied") == data.oldNumber)
    options.SetString("LastAccountJournalApplied", data.newNumber);
  return options.Flush();
}

// Every file change of the renumbering, each of which finds what is already done and leaves it:
// run again over a renumbering cut short, they finish it. false (with the error set) when a file
// could not be written.
bool RenumberFiles(LProcessInterface& process, LAccountRenumberProcess& data) {
  LProfile& profile = *data.profile;
  LTextBuffer folder;
  LLegderGetBaseFolder(profile, folder);
  std::vector<std::string> names = LFile::ListFolder(folder);
  std::sort(names.begin(), names.end());
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string& name = names[i];
    if (name.size() < 5 || name.compare(name.size() - 4, 4, ".csv") != 0) continue;
    long nChanged = RenumberDayFile(LFile::MakeFilePath(folder, name), data);
    if (nChanged < 0) {
      process.SetError(kRenumberFailedMessage);
      return false;
    }
    data.nRowsChanged += nChanged;
    if (nChanged > 0) ++data.nDayFilesChanged;
    process.SetProgress(static_cast<double>(i + 1) / static_cast<double>(names.size()));
  }

  LTextBuffer oldReconcile, newReconcile;
  LReconcileGetCSVFilePath(profile, oldReconcile, data.oldNumber);
  LReconcileGetCSVFilePath(profile, newReconcile, data.newNumber);
  if (LFile::Exists(oldReconcile) && !LFile::Exists(newReconcile) && !LRobustRename(oldReconcile, newReconcile)) {
    LLogWriteFailure("rename", oldReconcile, errno);
    process.SetError(kRenumberFailedMessage);
    return false;
  }
  if (!LBankLinesRenumber(profile, data.oldNumber, data.newNumber) || !RenumberOptions(profile, data) ||
      !RenumberBills(profile, data)) {
    process.SetError(kRenumberFailedMessage);
    return false;
  }

  // The record goes last, in one rename: a record still under its old number means "not finished".
  LAccountList accounts(profile);
  LAccount account;
  if (!accounts.Open(account, data.oldNumber)) return true;
  account.SetPrimaryKey(data.newNumber);
  bool saved = account.Flush();
  process.SetProgress(1.0);
  if (!saved || account.GetStoredKey() != data.newNumber) {
    process.SetError(kRenumberFailedMessage);
    return false;
  }
  return true;
}

// Whether the trail holds, after offset size, the entry announcing the renumbering of data.
bool AnnouncedAfter(const LProfile& profile, long long size, std::string_view announced) {
  std::string text = LAuditReadFrom(profile, size);
  for (std::size_t at = 0, end; (end = text.find('\n', at)) != std::string::npos; at = end + 1) {
    LHashTable entry;
    entry.LoadHTTPString(std::string_view(text).substr(at, end - at));
    if (entry.GetParm("Action", "") == kAuditRenumber && entry.GetParm("Reference", "") == announced) return true;
  }
  return false;
}

std::string Announcement(const LAccountRenumberProcess& data) { return data.oldNumber + " -> " + data.newNumber; }

// A renumbering whose process died: its files are changed again from the start when the trail
// announced it (every file change follows the announcement); otherwise nothing had changed.
void SettleRenumbering(const LProfile& profile, const std::vector<std::string>& notes) {
  LProfile books(profile.GetDataStore().GetFolder());
  for (const std::string& note : notes) {
    std::vector<std::string_view> parts = LIntentNoteParts(note);
    if (parts.size() != 4 || parts[0] != kNoteRenumber) continue;
    LAccountRenumberProcess data{&books, std::string(parts[1]), std::string(parts[2])};
    if (!AnnouncedAfter(books, LTextToInt64(parts[3]), Announcement(data))) {
      LLogWarning("Le changement de numéro du compte %s en %s, interrompu avant d'avoir commencé, n'a pas eu lieu.",
                  data.oldNumber.c_str(), data.newNumber.c_str());
      continue;
    }
    LProcessInterfaceVoid process;
    if (RenumberFiles(process, data))
      LLogWarning("Le changement de numéro du compte %s en %s, interrompu, a été achevé (%ld lignes d'écritures "
                  "reprises).", data.oldNumber.c_str(), data.newNumber.c_str(), data.nRowsChanged);
    else
      LLogError("Le changement de numéro du compte %s en %s, interrompu, n'a pas pu être achevé.",
                data.oldNumber.c_str(), data.newNumber.c_str());
  }
}

}  // namespace

LProcessResult Process(LProcessInterface& process, LAccountRenumberProcess& data) {
  LProfile& profile = *data.profile;
  LLedgerLock lock(profile);
  process.SetStatus("Modifier le numéro de compte", 0);
  // Noted before the announcement, so that a process killed from here on is finished by the next
  // holder of the ledger lock.
  LBooksChangeIntent intent(profile, kRenumberIntentExtension);
  (void)intent.Note(std::string(kNoteRenumber) + "\t" + data.oldNumber + "\t" + data.newNumber + "\t" +
                    std::to_string(LAuditLogSize(profile)));
  // The trail announces the renumbering before any file changes; without it nothing changes.
  if (!LAuditAppend(profile, {std::string(kAuditRenumber), Announcement(data), {}, 0, {}, {}, {}})) {
    process.SetError(std::string(kAuditNotWrittenMessage));
    return kProcessFailed;
  }
  if (RenumberFiles(process, data)) return kProcessFinished;
  intent.Keep();  // half renumbered: the next holder of the ledger lock tries again to finish
  return kProcessFailed;
}

void LAccountRenumberInstall() { LLedgerAddIntentSettler(kRenumberIntentExtension, SettleRenumbering); }
