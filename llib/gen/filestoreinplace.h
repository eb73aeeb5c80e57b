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

class LFileStoreListBase;
class LRecord;

// Saves r, attached to list under its stored key, in place; a record that is new, renamed, of a
// page or more, or of a list that keeps an index (filestoreindex.h) is saved by
// LFileStoreListBase::Save instead. false when the write failed (the
// file then holds its old text).
[[nodiscard]] bool LFileStoreSaveInPlace(const LFileStoreListBase& list, LRecord& r);
