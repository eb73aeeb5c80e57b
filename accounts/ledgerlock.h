// The ledger lock of a business: one exclusive file lock ("Ledger/Ledger.lock") that keeps the
// day files and the balances cached in the account records in step. Whoever appends or removes
// journal rows together with their balance changes, or takes a reference number from a counter,
// or reads the whole ledger to compare it with the balances, holds it; so a posting is seen
// either whole (rows and balances) or not at all, and two processes adding to the same account
// never lose one another's amount.
//
// Lock order: ledger lock, then a day file's lock, then a record file's lock. Nothing that holds
// a day-file or record lock asks for the ledger lock.
//
// Taking the lock settles first what a killed holder left half done (accounts/ledgerintent.h), so
// every holder finds the day files and the balances in step.
//
// The lock is re-entrant within one thread (a posting inside a journal-entry save takes it
// again without waiting on itself). Between threads and processes it excludes: every holder opens
// its own descriptor, and flock locks belong to the open file description. Like every lock of
// the system it is bounded: after 10,000 ms the holder proceeds without it.
#pragma once

#include <string>
#include <string_view>

#include "llib/gen/filelock.h"

class LProfile;

inline constexpr std::string_view kLedgerLockFile = "Ledger.lock";  // in the ledger folder

// The lock file as held by this thread, where the holder writes the intent of its change
// (accounts/ledgerintent.h). empty: the file is known to hold no intent (it was emptied when the
// lock was taken and after each change), so writing the next one needs no truncation first.
struct LLedgerLockFile {
  int fd = -1;
  bool empty = false;
  // The intent's change is whole in its day file and only some balances could not be saved: the
  // next change of this hold settles it before it reads any balance.
  bool balancesPending = false;
};
// The lock file of profile's ledger while this thread holds its lock; nullptr otherwise.
LLedgerLockFile* LLedgerHeldLockFile(const LProfile& profile);
// The number of this thread's hold of profile's ledger lock, unique in the process and never 0;
// 0 when this thread does not hold it. What a holder found of the shared files during one hold
// stays true until the hold ends, as every writer of them holds the lock. It is kept apart from
// LLedgerLockFile, which the intent rewrites whole.
unsigned long long LLedgerHoldNumber(const LProfile& profile);

// Closes the files that postings keep open between holds: this thread's descriptor of the lock
// file and the process's of the audit trail. For one that lets go of the disk the books are on
// (unmounts it); they are opened again when next needed.
void LLedgerLetGoOfFiles();

class LLedgerLock {
 public:
  explicit LLedgerLock(const LProfile& profile);
  ~LLedgerLock();
  LLedgerLock(const LLedgerLock&) = delete;
  LLedgerLock& operator=(const LLedgerLock&) = delete;

  // true when this thread holds the lock (also when an outer LLedgerLock took it).
  bool Locked() const { return locked_; }

 private:
  std::string path_;   // the lock file
  bool locked_ = false;
};
