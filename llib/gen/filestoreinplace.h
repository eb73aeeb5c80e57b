// Saving a record in place, for records rewritten at every posting (the balances of the account
// records), where creating and renaming a temporary file per save (what LFileStoreListBase::Save
// does) is most of the cost of a posting: creating files is what a file system does slowest.
//
// The new text is written over the old one by one write at the start of the file, under the
// record's exclusive lock, padded with "&" (empty fields, which every reader skips) up to the old
// size, so the file is never cut and holds the old text or the new one, never a mix: a write of
// less than one page, at the start of the file, is not split by a process being killed. No fsync
// follows, as with every save of the store: a crash of the machine may lose the last saves, never
// the file system's own consistency. The balances themselves are also guarded by the ledger's
// intents (accounts/ledgerintent.h), which rewrite them whole after a crash.
#pragma once

#include <string>
#include <string_view>

#include "llib/gen/filelock.h"

class LFileStoreListBase;
class LRecord;

// Saves r, attached to list under its stored key, in place; one of a page or more replaces its
// file under the lock; a record that is new, renamed, or of a list that keeps an index
// (filestoreindex.h) is saved by LFileStoreListBase::Save instead. false when the write failed
// (the file then holds its old text).
[[nodiscard]] bool LFileStoreSaveInPlace(const LFileStoreListBase& list, LRecord& r);

// A record held under its exclusive lock from its reading to its in-place save, for a change
// that reads a record and writes it back at once (a posting's balances): the file is read once,
// where an open and a save in place read it twice, and nothing needs merging, as no one could
// write it in between.
//
//     LFileStoreInPlaceUpdate update;
//     if (update.Open(list, key, record)) { ...change record...; ok = update.Save(record); }
//
// The same serves any read-modify-write of a record that two writers may make at once (the
// application lists of a payment or credit note): a record of a list with an index, or of a page
// or more, is saved by a new file renamed over the held one before the lock is let go. Hold it in
// the order of the record locks (after a ledger day file's, for instance). A record that cannot be
// opened for writing (a missing file: nothing is created) is opened the ordinary way and Save
// falls back to LRecord::Flush.
class LFileStoreInPlaceUpdate {
 public:
  // Opens key of list into r (attached as by LFileStoreListBase::Open). false: r stays detached
  // and empty. change: LPathChange::kReplaced when the caller keeps the record's key from changing
  // (by a lock that every change of key takes).
  bool Open(const LFileStoreListBase& list, std::string_view key, LRecord& r,
            LPathChange change = LPathChange::kRenamed);
  // Writes r over the file in place (LFileStoreSaveInPlace's rules), then lets the file go.
  [[nodiscard]] bool Save(LRecord& r);
  // Whether a record is held (opened and not saved yet).
  bool IsHolding() const { return file_.IsOpen(); }

 private:
  LLockedFile file_;    // the record file, locked while held
  std::string folder_;  // its list's
  std::string path_;
  std::string stored_;  // its text as read
};
