// The file record store. A business is one folder (the data store); each list of records is a
// sub-folder ("Customers", "Invoices", "Misc", ...); each record is one file named by its
// percent-encoded key with ".dat", holding its fields as one HTTP string with no line end:
//
//     Customers/42.dat:   A=x%20%26%20y&B=120.500000&C=1
//
// Reading takes a shared lock, writing an exclusive one (flocktimed, 10,000 ms). A save reads
// the file again under its lock and keeps what another writer stored in the fields this record
// did not change, so two processes editing different fields of one record both win. New keys
// "1", "2", ... are the first free number, taken by exclusive create, so two processes never
// get the same key. Nothing is cached: every Open reads the file, every Save rewrites it.
//
// A save writes the new text to a hidden temporary file in the list folder and renames it over
// the record file, so a failed write (a full disk) or a crash leaves the old record whole. A
// writer therefore locks the record file and then checks that the path still names that file
// (LLockedFile::OpenCurrent); readers simply read the file they opened.
//
// Lock order: a list folder has no lock; only one record file is locked at a time by a save or
// a load, so these operations cannot deadlock against each other.
#pragma once

#include <dirent.h>

#include <memory>
#include <string>
#include <string_view>

#include "llib/gen/record.h"

// Longest encoded key used as a file name: the file system allows 255 bytes, ".dat" included.
inline constexpr std::size_t kMaxEncodedKeyBytes = 251;

class LFileStoreDataStore {
 public:
  LFileStoreDataStore() = default;
  explicit LFileStoreDataStore(std::string_view folder) { SetFolder(folder); }
  void SetFolder(std::string_view folder) { folder_.assign(LTruncated(folder, kMaxTextBytes)); }
  const std::string& GetFolder() const { return folder_; }

  // listFolder + "/" + percent-encoded key + ".dat". The encoded key is cut before an escape
  // that does not fit whole. An empty key gives ".dat".
  static std::string MakeDataFilePath(std::string_view listFolder, std::string_view key);

 private:
  std::string folder_;  // business data folder, at most 259 bytes
};

class LFileStoreListBase {
 public:
  // Creates the list folder (mode 0777 less the umask) when missing.
  LFileStoreListBase(const LFileStoreDataStore& store, std::string_view listName,
                     std::string_view keyField = "ID");
  const std::string& GetFolder() const { return folder_; }
  std::string MakeRecordPath(std::string_view key) const;

  bool TestRecordExists(std::string_view key) const;
  // Invalidates r and attaches it with an empty key: its first save takes a new number.
  void CreateNewRecord(LRecord& r) const;
  // Invalidates r; an empty key leaves it detached, otherwise attaches it under key (the stored
  // key stays empty). Nothing is written before the save.
  void CreateNewRecord(LRecord& r, std::string_view key) const;
  // Invalidates r and loads the record. false: r stays detached and empty.
  bool Open(LRecord& r, std::string_view key) const;
  // As Open, but r is attached under key in any case; a record that did not exist is created
  // by its first save.
  bool OpenAlways(LRecord& r, std::string_view key) const;
  // Reads the file into r's fields (cleared first). false when the key is empty or the file
  // cannot be opened; r is then unchanged.
  bool Load(std::string_view key, LRecord& r) const;
  // Writes r with the rename, new-key and merge rules. false when a new numeric key could not be
  // created or the new text could not be written (the file keeps its old content, r stays dirty
  // and the failure is logged); a record file that cannot be opened is reported as saved.
  [[nodiscard]] bool Save(LRecord& r) const;
  // true when the file was removed.
  [[nodiscard]] bool Delete(std::string_view key) const;

 private:
  std::string folder_;  // data folder + "/" + list name
  void Attach(LRecord& r) const;
  [[nodiscard]] bool SaveUnderNewKey(LRecord& r) const;
};

// The handle of a record attached to a file list. It keeps its own copy of the list (a folder
// path), so a record may outlive the list object it was opened from.
template <class List>
class LDataStoreRecordStore : public LRecordStore {
 public:
  explicit LDataStoreRecordStore(const List& list) : list_(list) {}
  [[nodiscard]] bool Save(LRecord& record) override { return list_.Save(record); }

 private:
  List list_;
};

// Walks a list folder in the order the file system gives (not sorted). The record is attached
// while the iteration lasts and detached when no file is left:
//     LFileStoreIteratorBase it(list, record);
//     while (record.IsAttached()) { ...; it.Next(record); }
// A dirty record is saved before moving on. Records created or deleted meanwhile may or may not
// be visited.
class LFileStoreIteratorBase {
 public:
  LFileStoreIteratorBase(const LFileStoreListBase& list, LRecord& r);
  ~LFileStoreIteratorBase();
  LFileStoreIteratorBase(const LFileStoreIteratorBase&) = delete;
  LFileStoreIteratorBase& operator=(const LFileStoreIteratorBase&) = delete;
  void Next(LRecord& r);

 private:
  LFileStoreListBase list_;
  DIR* dir_ = nullptr;
};
