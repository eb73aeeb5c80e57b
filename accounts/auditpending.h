// An audit entry kept in step, through a crash, with the record its change writes.
//
// A change of a document writes its record and its entry in the trail one after the other: a new
// document is saved, then its "record" entry written (the entry names the number the save took);
// an edit or a deletion is written to the trail first, so that a trail that cannot be written
// refuses it before anything changes. A process killed between the two would leave the log and
// the books disagreeing: an entry for an edit that never happened, or a document the trail never
// heard of. So, before either, the change notes its entry in an intent file of its own
// (extension ".audit", in the ledger's intents folder, accounts/ledgerintent.h) together with the
// fingerprint of the record file as it stands and where the log ends.
//
// When the change ends, returning or refused (LAuditPending's destructor), or killed and found by
// the next holder of the ledger lock (LAuditSettlePending), one rule brings the two in step,
// from whether the entry is in the log after where it ended and whether the record file changed:
//   record changed, no entry      the entry is written now, with the change's own time and user;
//   entry written, record as it was   the change did not take effect: a "cancel" entry naming it
//                                 (its "Seq") follows. The log is never rewritten: it is
//                                 append-only and hash-chained, and an entry that a reader may
//                                 already have seen does not vanish;
//   otherwise                     nothing.
// A record file the change created and left empty (a number taken for a document never written)
// is removed. Settling twice is harmless: the entry, or the entry and its "cancel", are found.
//
// A change made without the ledger lock, after the whole wait, writes nothing into the trail,
// whose end only holders know: its note is left for the next holder, who applies the rule.
//
// The fingerprint is the file's identity, size and time of change: every save writes a new file
// and renames it into place, so a save changes it even when it writes the same text. Cost of a
// change: one line in the process's change file, two looks at the record file and one read of the
// log's entries written since. A change writing many entries of one record (a payment spread over
// thousands of invoices) notes them all in one file and settles them over one read of the log.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "accounts/audittrail.h"
#include "accounts/ledgerintent.h"

class LProfile;

inline constexpr std::string_view kAuditPendingExtension = ".audit";

class LAuditPending {
 public:
  // Notes event (its time and user fixed now) as the entry of a change of the record file
  // recordPath, before anything of the change is written. Callers hold the ledger lock from
  // before this to the end of the object's life.
  LAuditPending(const LProfile& profile, LAuditEvent event, std::string recordPath);
  // A change of recordPath whose entries are noted and written one by one (Add).
  LAuditPending(const LProfile& profile, std::string recordPath);
  // Brings the log in step with the record (the rule above) and removes the notes.
  ~LAuditPending();
  LAuditPending(const LAuditPending&) = delete;
  LAuditPending& operator=(const LAuditPending&) = delete;

  // Writes the entry noted last where the change has it. false when the trail could not be
  // written: the change is refused and leaves its record as it was (or takes the new one away).
  [[nodiscard]] bool Append();
  // Notes event, then writes it (Append).
  [[nodiscard]] bool Add(LAuditEvent event);

 private:
  struct LNoted {
    LAuditEvent event;
    std::string note;   // the pending entry and what it is checked against, one line
    bool left = false;  // made without the ledger lock: the entry is the next holder's to write
  };
  void Note(LAuditEvent event);

  const LProfile& profile_;
  std::string recordPath_;
  std::vector<LNoted> noted_;
  LBooksChangeIntent intent_;  // the file that keeps the notes for the settler should this process die
};

// Cancels the entry of event (its action, reference and lines) written after offset size of the
// trail: the change it records did not take effect. The log is append-only: a "cancel" entry
// naming its "Seq" follows it. Returns that "Seq"; 0 when there is no such entry or it is
// cancelled already, -1 when the trail could not be written. Callers hold the ledger lock.
long long LAuditCancelWritten(const LProfile& profile, long long size, const LAuditEvent& event);

// Sets in fields the entry of a change whose writing is left to the next holder of the ledger lock
// (here, a posting's or a renumbering's past the wait): event under the entry's names, its time
// and author fixed now when not yet, so that the entry written later tells when and by whom the
// change was made. LAuditEventOfLine reads it back.
void LAuditSetPendingFields(LAuditEvent& event, LHashTable& fields);

// Brings in step the entries noted by changes killed midway (one note a line). The ledger's
// intent settling calls it before any other settler, which may write the records again.
void LAuditSettlePending(const LProfile& profile, const std::vector<std::string>& notes);

