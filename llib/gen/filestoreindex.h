// An index of one field of a file list's records by key (the "Date" of sales documents), so that
// the list of one month reads that month's records instead of every record of the list. It is a
// cache beside the records, never their truth.
//
// The hidden file "<list>/.index.<field>" starts with a line "kontavo-index <bytes>" (its size
// when last compacted), then holds one line per saved record, "<inode> <key> <value>" (key and
// value percent-encoded), the inode being that of the record file written. A save writes a new
// record file (a new inode) and, while the record is still locked, appends its line under the
// index's own lock (taken after the record's, never before one); a delete appends "0 <key>". The
// last line of a key wins. An appender that finds the file grown past twice its compacted size
// (plus 64 KiB) rewrites it with one line per key.
//
// A reader takes an entry only when its inode is the one the folder lists for that key now, so an
// index left behind by a crash between a record's rename and the append, by a copied folder (a
// restored backup has new inodes) or by a program that does not keep it, is mended entry by
// entry: a record whose entry does not match is read itself and its line appended.
//
//     LFileStoreIndexDeclare(business, "Invoices", "Date");   // once, before lists are written
//     for (const LFileStoreIndexEntry& e : LFileStoreIndexRead(list, "Date"))
//       if (period.Holds(e.value)) ...open e.key...
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

class LFileStoreListBase;
class LRecord;

// The list listName of the data folder (a business) keeps an index of field, one field per list,
// for the rest of the process. Declared per folder: a list of the same name in another folder
// (another business not opened as one, a bare store) keeps none. Declaring again is harmless.
void LFileStoreIndexDeclare(std::string_view dataFolder, std::string_view listName, std::string_view field);
// The field indexed for the list folder (data folder + "/" + list name), "" when none.
std::string LFileStoreIndexedField(std::string_view listFolder);

// The inode of the file at path, 0 when there is none.
ino_t LFileStoreInodeOf(const std::string& path);

// Called by the store while the record is locked: r was written as the file of inode under key.
void LFileStoreIndexNoteSave(const std::string& listFolder, std::string_view key, const LRecord& r, ino_t inode);
// Called by the store when the record of key was removed.
void LFileStoreIndexNoteDelete(const std::string& listFolder, std::string_view key);

// While a batch lives, the index lines of this thread's saves into its list are kept and appended
// together, by one write per thousand records and when it ends, instead of one locked append per
// record: for an import of many records. A crash before the append leaves records the index does
// not name yet, which readers mend as they mend any stale entry. A kept line whose record file has
// been replaced meanwhile (another writer's save, whose own line stands) is left out: the file's
// inode, size and change time, taken after the save, must still be the path's when appending.
class LFileStoreIndexBatch {
 public:
  explicit LFileStoreIndexBatch(const LFileStoreListBase& list);
  ~LFileStoreIndexBatch();
  LFileStoreIndexBatch(const LFileStoreIndexBatch&) = delete;
  LFileStoreIndexBatch& operator=(const LFileStoreIndexBatch&) = delete;

  // Appends the lines kept so far.
  void Flush();

 private:
  friend void LFileStoreIndexNoteSave(const std::string& listFolder, std::string_view key, const LRecord& r,
                                      ino_t inode);
  struct Kept {
    std::string path;  // the record file
    std::string line;
    ino_t inode = 0;
    long long size = 0;
    long long changedNs = 0;
  };
  // Keeps the line of a save into this batch's list or an outer batch's; false when none of them
  // is of that list.
  bool Keep(const std::string& listFolder, std::string_view key, std::string&& line, ino_t inode);

  std::string folder_;
  std::string field_;
  std::vector<Kept> kept_;
  LFileStoreIndexBatch* outer_;  // the thread's batch when this one began
};

struct LFileStoreIndexEntry {
  std::string key;
  std::string value;  // the field's text in the record ("" when absent)
};

// One entry per record file of the list, in no particular order, mended where stale.
std::vector<LFileStoreIndexEntry> LFileStoreIndexRead(const LFileStoreListBase& list, std::string_view field);

// For a check of the books: the keys whose entry names the record's own file but not its value,
// which only a fault makes, each with the value the index gives and the record's; with fix the
// index is then rewritten whole from the records. Missing and stale entries are mended on the
// way, as LFileStoreIndexRead does, and not reported.
struct LFileStoreIndexMismatch {
  std::string key;
  std::string indexed;
  std::string actual;
};
std::vector<LFileStoreIndexMismatch> LFileStoreIndexVerify(const LFileStoreListBase& list, std::string_view field,
                                                           bool fix);
