#include "accounts/accountrenumber.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>
#include <vector>

#include "accounts/accounts.h"
#include "accounts/auditpending.h"
#include "accounts/audittrail.h"
#include "accounts/banklines.h"
#include "accounts/bills.h"
#include "accounts/check.h"
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
#include "llib/gen/optionalerror.h"
#include "llib/gen/textnum.h"

namespace {

constexpr std::string_view kRenumberIntentExtension = ".renumber";
// The notes of a renumbering's change file, one a line, in this order.
constexpr std::string_view kNoteRenumber = "renumber";  // then the old number, the new one, the trail's size
constexpr std::string_view kNoteBegun = "begun";  // files may change; without the lock, then the pending entry
constexpr std::string_view kNoteDone = "done";    // without the lock: every file changed

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

// The trail's "Reference" of a renumbering.
std::string Announcement(std::string_view oldNumber, std::string_view newNumber) {
  return std::string(oldNumber) + " -> " + std::string(newNumber);
}

// A renumbering as its change file tells it: the intent, then whether its files began to change.
struct LRenumberNoted {
  std::string oldNumber, newNumber;
  std::string logSize;       // the trail's size before the announcement; empty without the ledger lock
  bool begun = false;        // the announcement is in the trail, or pending in the file
  std::string pendingEntry;  // without the ledger lock: the announcement, for the next holder to write
  bool done = false;         // without the ledger lock: every file changed
};

// The renumberings of the notes of killed processes' files, each file's lines in order.
std::vector<LRenumberNoted> ReadNotes(const std::vector<std::string>& notes) {
  std::vector<LRenumberNoted> noted;
  for (const std::string& note : notes) {
    std::vector<std::string_view> parts = LIntentNoteParts(note);
    if (parts[0] == kNoteRenumber && parts.size() >= 4) {
      LRenumberNoted& renumbering = noted.emplace_back();
      renumbering.oldNumber = parts[1];
      renumbering.newNumber = parts[2];
      renumbering.logSize = parts[3];
    } else if (noted.empty()) {
      continue;
    } else if (parts[0] == kNoteBegun) {
      noted.back().begun = true;
      if (parts.size() > 1) noted.back().pendingEntry = parts[1];
    } else if (parts[0] == kNoteDone) {
      noted.back().done = true;
    }
  }
  return noted;
}

// A renumbering whose process died, or that went on without the ledger lock, as its own notes
// tell it: one noted begun is finished (every file change runs again, leaving what is done);
// one not begun changed nothing, and the announcement its killed holder may have written is
// cancelled. One made without the lock has its announcement written now, and its steps
// run again all the same: the holder it passed may have posted under the old number since.
void SettleRenumbering(const LProfile& profile, const std::vector<std::string>& notes) {
  LProfile books(profile.GetDataStore().GetFolder());
  for (const LRenumberNoted& noted : ReadNotes(notes)) {
    const char* from = noted.oldNumber.c_str();
    const char* to = noted.newNumber.c_str();
    if (!noted.begun) {
      // Other settlers may have written entries after it since: it is cancelled, not cut off.
      LAuditEvent announcement{std::string(kAuditRenumber), Announcement(noted.oldNumber, noted.newNumber), {}, 0, {}, {}, {}};
      if (!noted.logSize.empty() && LAuditCancelWritten(books, LTextToInt64(noted.logSize), announcement) < 0)
        LLogError("Le changement de numéro du compte %s en %s, interrompu avant d'avoir commencé : son annonce dans la "
                  "piste d'audit n'a pas pu être annulée.", from, to);
      else
        LLogWarning("Le changement de numéro du compte %s en %s, interrompu avant d'avoir commencé, n'a pas eu lieu.",
                    from, to);
      continue;
    }
    LAccountRenumberProcess data{&books, noted.oldNumber, noted.newNumber};
    LProcessInterfaceVoid process;
    bool finished = RenumberFiles(process, data);
    bool unlocked = !noted.pendingEntry.empty();
    if (unlocked) {
      if (!LAuditAppend(books, LAuditEventOfLine(noted.pendingEntry)))
        LLogError("Piste d'audit : le changement de numéro du compte %s en %s, fait sans le verrou du grand livre, n'a "
                  "pas pu y être inscrit.", from, to);
      // Postings of the holder may have moved either number while the files changed.
      LCheckReport report;
      LCheckFixAccountBalances(books, report);
    }
    if (!finished)
      LLogError("Le changement de numéro du compte %s en %s, interrompu, n'a pas pu être achevé.", from, to);
    else if (!unlocked)
      LLogWarning("Le changement de numéro du compte %s en %s, interrompu, a été achevé (%ld lignes d'écritures "
                  "reprises).", from, to, data.nRowsChanged);
    else if (noted.done)
      LLogWarning("Le changement de numéro du compte %s en %s, fait sans le verrou du grand livre, a été inscrit dans "
                  "la piste d'audit (%ld lignes d'écritures passées entre-temps sous l'ancien numéro reprises, soldes "
                  "des comptes recalculés d'après le grand livre).", from, to, data.nRowsChanged);
    else
      LLogWarning("Le changement de numéro du compte %s en %s, fait sans le verrou du grand livre et interrompu, a été "
                  "achevé (%ld lignes d'écritures reprises), inscrit dans la piste d'audit et les soldes des comptes "
                  "recalculés d'après le grand livre.", from, to, data.nRowsChanged);
  }
}

// The refusal of number while a renumbering not yet settled names it; empty when none does.
std::string PendingRefusal(const LProfile& profile, std::string_view number) {
  for (const LRenumberNoted& noted : ReadNotes(LLedgerChangesPending(profile, kRenumberIntentExtension))) {
    if (noted.oldNumber != number && noted.newNumber != number) continue;
    return "Le numéro " + std::string(number) + " ne peut pas servir pour l'instant : le changement de numéro du "
           "compte " + noted.oldNumber + " en " + noted.newNumber + " n'est pas encore achevé. Réessayez dans un "
           "instant.";
  }
  return {};
}

// Notes the intent and announces the renumbering, before any file changes. With the ledger lock
// the announcement goes into the trail, then the renumbering is noted begun; without it the trail
// is not touched (its end is the holder's to know): the announcement waits in the begun note for
// the next holder. false (with the error set) when the renumbering is refused: nothing changed.
bool Announce(LProcessInterface& process, LAccountRenumberProcess& data, LBooksChangeIntent& intent, bool locked) {
  const LProfile& profile = *data.profile;
  // Without the lock the trail's end is the holder's to know: none is noted.
  std::string logSize = locked ? std::to_string(LAuditLogSize(profile)) : std::string();
  // Without its notes a killed renumbering could be neither finished nor known never begun.
  if (!intent.Note(std::string(kNoteRenumber) + "\t" + data.oldNumber + "\t" + data.newNumber + "\t" + logSize)) {
    process.SetError(kRenumberFailedMessage);
    return false;
  }
  LAuditEvent announcement{std::string(kAuditRenumber), Announcement(data.oldNumber, data.newNumber), {}, 0, {}, {}, {}};
  if (!locked) {
    LLogWarning("Grand livre : verrou non obtenu en %u ms ; le changement de numéro du compte %s en %s se fait sans "
                "lui, son entrée de la piste d'audit sera inscrite par le prochain détenteur du verrou.",
                kLedgerLockTimeoutMs, data.oldNumber.c_str(), data.newNumber.c_str());
    LHashTable fields;
    LAuditSetPendingFields(announcement, fields);
    std::string entry;
    fields.SaveHTTPString(entry);
    if (intent.Note(std::string(kNoteBegun) + "\t" + entry)) return true;
    process.SetError(kRenumberFailedMessage);
    return false;
  }
  if (!LAuditAppend(profile, announcement)) {
    process.SetError(std::string(kAuditNotWrittenMessage));
    return false;
  }
  if (intent.Note(kNoteBegun)) return true;
  // Not noted begun, the renumbering does not go on: its announcement is taken back.
  if (!LAuditCutBack(profile, LTextToInt64(logSize))) intent.Keep();  // the next holder cancels it
  process.SetError(kRenumberFailedMessage);
  return false;
}

}  // namespace

LProcessResult Process(LProcessInterface& process, LAccountRenumberProcess& data) {
  LProfile& profile = *data.profile;
  LLedgerLock lock(profile);
  process.SetStatus("Modifier le numéro de compte", 0);
  // Taking the lock settled those left to its holder; one running beside it may have begun since
  // the caller looked.
  for (const std::string& number : {data.oldNumber, data.newNumber}) {
    if (std::string refusal = PendingRefusal(profile, number); !refusal.empty()) {
      process.SetError(refusal);
      return kProcessFailed;
    }
  }
  LBooksChangeIntent intent(profile, kRenumberIntentExtension);
  if (!Announce(process, data, intent, lock.Locked())) return kProcessFailed;
  bool finished = RenumberFiles(process, data);
  // Without the lock the file stays for the next holder: its announcement waits there, and the
  // holder may have posted under the old number after this passed.
  if (finished && !lock.Locked()) (void)intent.Note(kNoteDone);
  if (!finished || !lock.Locked()) intent.Keep();  // half renumbered: the next holder finishes
  return finished ? kProcessFinished : kProcessFailed;
}

bool LAccountNumberClearOfRenumbering(const LProfile& profile, std::string_view number, std::string* message) {
  std::string refusal = PendingRefusal(profile, number);
  if (refusal.empty()) return true;
  // Done without the lock, it waits only for a holder to settle it: this thread, when it can.
  if (LLedgerHoldNumber(profile) == 0) {
    LLedgerSettleInterrupted(profile);
    refusal = PendingRefusal(profile, number);
  }
  return refusal.empty() || LFail(message, refusal);
}

void LAccountRenumberInstall() { LLedgerAddIntentSettler(kRenumberIntentExtension, SettleRenumbering, true); }
