// Postings and deletions that survive a crash. A posting changes two things that must agree: the
// rows of a day file and the balances cached in the account records (month bucket, total,
// "BalanceFirst", "IsAccountUsed"). Before it touches either, it writes an intent record into the
// ledger lock file "Ledger/Ledger.lock" (only the holder of the lock writes there): the day file,
// what changes there, where the audit trail ends (the change's entry comes next), and for every
// account the values it held before and the amount it moves by. The intent is marked ended once
// both are written.
//
// A process killed in between leaves its intent behind. The next holder of the ledger lock (every
// posting, deletion, check and renumbering takes it, and every command opens the books through
// it) finds it and settles it before doing anything else: when the day file shows the change
// whole, the balances are set to the old values plus the amounts; otherwise the day file is cut
// back to where it was, the balances are set back to the old values and the change's audit entry,
// when it was written, is taken back off the trail. All are written as absolute values, so
// settling twice is harmless. Each settled intent is logged.
//
// Order of a posting: intent, audit entry, rows, balances, intent removed; of a deletion: intent,
// audit entry, day file rewritten, balances, intent removed. So rows in effect mean an audit
// entry written, and a change refused or undone takes its entry back.
//
// One that waited the whole 10,000 ms for the ledger lock goes on without it, and must not harm
// the holder: it writes no intent into the holder's lock file and no entry into the audit trail
// (whose end only holders may know). Its intent goes to a change file of its own in the intents
// folder, locked while it runs, with the change's audit entry pending in it; when the change is
// complete the file is marked done and left unlocked, and the next holder of the lock writes the
// entry into the trail. A refused change simply empties its file: nothing was in the trail. One
// killed midway is settled by the next holder from its day file: a change not in effect never
// moved a balance (balances come after the rows); one in effect has its entry written and every
// account's balances recomputed from the day files, as the holder may have moved the same
// accounts since, which values noted before the change would undo.
//
// The intent is the first line of the lock file: a file that is empty or begins with a line end
// holds none, and what follows that first line (the rest of an earlier, longer intent) is never
// read. Writing an intent takes two writes over the start of the file, the line end first (so a
// writer killed midway leaves no intent, see WriteIntentText); ending it writes the line end back
// over its first byte. The file is never cut: cutting frees its block and journals the change, ten
// times the cost of such a write.
//
// With nothing interrupted, a lock holder looks at the lock file's size and first byte and lists
// the folder of sales intents, and a posting pays three small writes of a file that exists: no
// file is created, cut or removed per posting (creating and removing files is what a file system
// does slowest).
//
//     LLedgerIntent intent(profile);
//     intent.AddTransaction(txn, +1);            // reads the accounts' current balances
//     if (!intent.BeginPosting(txn, sizeBefore, rows)) return false;
//     if (!intent.RecordInTrail()) ...        // intent.Refuse() when this or the rows fail
//     ... append the rows ...
//     intent.ApplyBalances();
//     intent.End();
//
// Callers hold the ledger lock (accounts/ledgerlock.h) from AddTransaction to End.
#pragma once

#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "accounts/accounts.h"
#include "accounts/audittrail.h"
#include "accounts/ledgerlock.h"
#include "llib/gen/file.h"
#include "llib/gen/filelock.h"
#include "llib/gen/filestoreinplace.h"

class LBooksChangeIntent;
class LProfile;
class LLedgerTransaction;

class LLedgerIntent {
 public:
  explicit LLedgerIntent(const LProfile& profile);
  ~LLedgerIntent();
  LLedgerIntent(const LLedgerIntent&) = delete;
  LLedgerIntent& operator=(const LLedgerIntent&) = delete;

  // Opens the account of every line of txn (lines naming no account are skipped, as postings
  // always have) and adds line amount * sign to what that account will move by.
  void AddTransaction(const LLedgerTransaction& txn, int sign);
  // As AddTransaction(txn, +1), each account record being held under its exclusive lock until
  // ApplyBalances writes it: read once, written back with nothing to merge. Record locks come
  // after a day file's: call it with txn's day file locked.
  void AddPosting(const LLedgerTransaction& txn);
  // Writes the intent of appending rows (txn's) at sizeBefore of its day file. false (nothing
  // written, the failure logged) when the intent cannot be written: the posting must not go on.
  [[nodiscard]] bool BeginPosting(const LLedgerTransaction& txn, long long sizeBefore, std::string_view rows);
  // Writes the intent of taking txn's rows out of its day file.
  [[nodiscard]] bool BeginDeleting(const LLedgerTransaction& txn);
  // Writes the change's audit entry; without the ledger lock it stays pending in the intent, for
  // the next holder. false when the trail could not be written: the change is refused.
  [[nodiscard]] bool RecordInTrail();
  // Writes the new balances, one save per account. false when a save failed (the intent stays,
  // and the next holder of the lock settles it).
  [[nodiscard]] bool ApplyBalances();
  // Removes the intent: the change is complete (or, after a refused change, never began).
  void End();
  // The change is refused after its audit entry was written (its rows could not be written): the
  // entry is taken back off the trail, then the intent removed.
  void Refuse();

 private:
  struct LAccountMove {
    LAccount account;     // open on the account record
    LFileStoreInPlaceUpdate held;  // the record under its lock, for a posting
    int monthIndex = 0;   // year * 12 + month - 1 of the transaction's date
    long long delta = 0;  // cents this change adds to the bucket and the total
  };
  const LProfile& profile_;
  std::list<LAccountMove> moves_;  // one per account, in the order first named
  LLedgerLockFile* heldFile_ = nullptr;  // the lock file as this thread holds it, once written
  std::unique_ptr<LBooksChangeIntent> unlocked_;  // the intent of one that went on without the lock
  LAuditEvent entry_;               // the change's audit entry
  long long auditSize_ = -1;        // the audit trail's size when the intent was written
  void Add(const LLedgerTransaction& txn, int sign, bool holdRecords);
  bool Write(std::string_view kind, const LLedgerTransaction& txn, long long sizeBefore, std::string_view rows);
  bool WriteUnlocked(std::string_view text);
};

// A change that spans many records outside the ledger lock (a sales document or a payment with the
// customer balances it moves) announces itself with an intent file of its own extension, which
// its owner keeps exclusively locked while it runs. As it learns what it touches, the change notes
// it in the file, one line each (LBooksChangeIntent::Note). The lock dies with its owner: a holder
// of the ledger lock that can take it knows the change was interrupted and runs the settler
// registered for the extension with the complete lines of every such file (a line cut short by
// the crash is dropped), so that it brings what they name back in step.
using LIntentSettler = void (*)(const LProfile& profile, const std::vector<std::string>& notes);
// The tab-separated parts of a note, as views into it: how changes write their notes.
std::vector<std::string_view> LIntentNoteParts(std::string_view note);
// Registers the settler of extension (".sales"); call once at start-up. reportsEach: the settler
// logs what became of each change itself (a renumbering finished, or made without the lock), so
// the general line on an interrupted change of the documents does not follow it.
void LLedgerAddIntentSettler(std::string_view extension, LIntentSettler settler, bool reportsEach = false);
// Whether a change of extension is running now in another process or thread (its file holds
// notes and is locked by its owner). Called by a holder of the ledger lock, whose changes of that
// kind take the lock: what runs beside it went on without the lock, after the whole wait.
bool LLedgerChangesRunning(const LProfile& profile, std::string_view extension);
// The notes of every change of extension not yet settled, each file's complete lines in order:
// those running now, in this process or another, and those left for the next holder of the
// ledger lock (cut short, or made without the lock).
std::vector<std::string> LLedgerChangesPending(const LProfile& profile, std::string_view extension);

//
// Creating and removing a file is what a file system does slowest, so a process keeps its change
// files: each is created on first need ("<process id>-<counter><extension>"), locked for the life
// of the process, written from its start by each change and emptied when the change is complete,
// and removed when the process exits. An empty file says there is nothing to settle: one left
// by a killed process is removed by the next holder of the ledger lock.
struct LBooksChangeFile;

class LBooksChangeIntent {
 public:
  // Takes a change file of the process that no change is using (creating and locking one when
  // there is none); a failure only loses the crash protection, and is logged.
  LBooksChangeIntent(const LProfile& profile, std::string_view extension);
  // The change is complete: the file is emptied for the process's next change.
  ~LBooksChangeIntent();
  LBooksChangeIntent(const LBooksChangeIntent&) = delete;
  LBooksChangeIntent& operator=(const LBooksChangeIntent&) = delete;

  // Adds line (no line end in it) for the settler. false when it could not be written (logged):
  // the change then runs without that protection, as when the file could not be created.
  bool Note(std::string_view line);
  // The change failed midway and is left to the settler: the file stays, its lock is released,
  // and the next holder of the ledger lock (this process's included) settles it.
  void Keep();

 private:
  LBooksChangeFile* file_ = nullptr;  // the process's file this change writes; null without protection
};

// Whether the ledger lock file open on fd holds an intent waiting to be settled (one read of its
// first byte; true when it cannot be read, for the holder of the lock to try).
bool LLedgerIntentWaits(int fd);

// Settles every intent left by an interrupted change (see above). Callers hold the ledger lock;
// LLedgerLock calls it when it takes the lock. Returns the number settled.
int LLedgerSettleIntents(const LProfile& profile);
// For whoever opens the books without the ledger lock (a command, a report): when an intent is
// waiting, takes the lock, which settles it. With none, one look at an empty folder.
void LLedgerSettleInterrupted(const LProfile& profile);
