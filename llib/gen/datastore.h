// Typed views over the record stores, and the in-memory store.
//
// LDataStoreList<LFileStoreDataStore, T> is a file list that holds records of class T;
// LDataStoreListIterator walks it with one T record:
//
//     LDataStoreList<LFileStoreDataStore, LCustomer> customers(store, "Customers");
//     for (LDataStoreListIterator<LFileStoreDataStore, LCustomer> it(customers); it.IsValid(); it.Next())
//       total += it->GetInt64("Balance", 0);
//
// LFKTempRecordStorage keeps records that are built for one operation and never reach disk
// (temporary documents); a record opened from it is a copy that writes itself back when released.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "llib/gen/filestore.h"

template <class Store, class T>
class LDataStoreList : public LFileStoreListBase {
 public:
  LDataStoreList(const Store& store, std::string_view listName) : LFileStoreListBase(store, listName) {}
};

template <class Store, class T>
class LDataStoreListIterator {
 public:
  explicit LDataStoreListIterator(const LDataStoreList<Store, T>& list)
      : iterator_(std::make_unique<LFileStoreIteratorBase>(list, record_)) {}
  // The iterator goes first, then the record (which saves itself if it is dirty).
  ~LDataStoreListIterator() { iterator_.reset(); }

  bool IsValid() const { return record_.IsAttached(); }
  void Next() { iterator_->Next(record_); }
  T& Get() { return record_; }
  T* operator->() { return &record_; }
  T& operator*() { return record_; }

 private:
  T record_;                                   // the current record
  std::unique_ptr<LFileStoreIteratorBase> iterator_;  // positioned on record_
};

class LFKTempRecordStorage {
 public:
  // The held record whose key equals key in its first 259 bytes; null when none.
  LRecord* FindRecord(std::string_view key);
  // Adds an empty record under key unless one exists, then opens it into r.
  bool CreateNewRecord(LRecord& r, std::string_view key);
  // Copies the held record into r (r becomes dirty: it is written back when released) and
  // attaches r to this storage. false when no record holds key.
  bool Open(LRecord& r, std::string_view key);
  // Replaces the held record's fields by a copy of r's. Always false: callers do not test it.
  bool Save(LRecord& r);
  // Removes the first held record with key; true if one was removed.
  bool Delete(std::string_view key);
  // Removes the record at index (past the end: nothing), moving the later ones down.
  void DeleteAt(std::size_t index);

  std::size_t Count() const { return records_.size(); }
  LRecord& At(std::size_t index) { return *records_[index]; }

 private:
  std::vector<std::unique_ptr<LRecord>> records_;  // in insertion order, each with its key
};

class LFKTempRecordStore : public LRecordStore {
 public:
  explicit LFKTempRecordStore(LFKTempRecordStorage* storage) : storage_(storage) {}
  bool Save(LRecord& record) override { return storage_->Save(record); }

 private:
  LFKTempRecordStorage* storage_;  // owned by the profile
};
