// LRecord: one business object (invoice, customer, account, option set, web account, ...) as a
// primary key plus an ordered list of named text fields. Typed business classes derive from it
// and read and write named fields through the operations below; the record knows nothing of
// what the fields mean.
//
// A record is detached, or attached to one record store through a handle it owns. While
// attached, a change is written back by Flush, Invalidate, the destructor, or an iterator moving
// on; there is no "discard": code that does not mean to keep a change must not make it.
//
// Numbers are stored as text ("%d", "%lld", ftotl), booleans as "1" and "0". Reading has
// deliberate asymmetries that callers rely on: GetInt reads an existing empty field as 0 while
// GetInt64 and GetFloat(name, def) give the default for it.
//
// A deleted field stays in the list (marked) until the record is cleared; after the save that
// dropped it from the file it keeps its deleted mark, and a later save of the same object writes
// it again with its old text. That is how records have always behaved, and it is kept.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/text.h"

class LRecord;

// What the user is told when a record could not be written.
inline constexpr std::string_view kRecordNotSavedMessage = "Impossible d'enregistrer la fiche.";

// The handle through which an attached record saves itself. The record owns it and releases it
// when it detaches.
class LRecordStore {
 public:
  virtual ~LRecordStore() = default;
  // Writes the record to its store; true on success.
  [[nodiscard]] virtual bool Save(LRecord& record) = 0;
};

struct LRecordField {
  std::string name;                   // at most 63 bytes, compared case-sensitively
  bool binary = false;                // true: the value is bytes, text is empty
  std::string text;                   // value of a text field
  LSizedArray<unsigned char> bytes;   // value of a binary field
  bool modified = true;               // set or deleted since the last load or save
  bool deleted = false;               // deleted; kept in the list until the record is cleared
};

class LRecord {
 public:
  LRecord() = default;
  // Saves through the store when attached and dirty, then releases the handle.
  virtual ~LRecord();
  LRecord(const LRecord&) = delete;
  LRecord& operator=(const LRecord&) = delete;

  // ---- Key -------------------------------------------------------------------------------
  // An empty key is ignored; a different key is copied (at most 259 bytes) and makes the record
  // dirty.
  void SetPrimaryKey(std::string_view key);
  const std::string& GetPrimaryKey() const { return key_; }
  // The key under which the record was last loaded or saved; empty if never stored.
  const std::string& GetStoredKey() const { return storedKey_; }

  // ---- Setters ---------------------------------------------------------------------------
  void SetString(std::string_view name, std::string_view value);
  void SetInt(std::string_view name, int value);
  // value == def deletes the field instead: default values are never stored.
  void SetInt(std::string_view name, int value, int def);
  void SetInt64(std::string_view name, long long value);
  void SetFloat(std::string_view name, double value);
  void SetBool(std::string_view name, bool value) { SetInt(name, value ? 1 : 0); }
  // A binary field; the record takes over the bytes. Stored on disk as an empty text.
  void SetBinary(std::string_view name, LSizedArray<unsigned char> bytes);

  // ---- Getters ---------------------------------------------------------------------------
  // The field's text (at most 259 bytes); def when absent or deleted; empty for a binary field.
  void GetString(std::string_view name, std::string_view def, LTextBuffer& out) const;
  // The same without the length limit.
  void GetString(std::string_view name, std::string_view def, std::string& out) const;
  std::string GetString(std::string_view name, std::string_view def = {}) const;
  // Existing non-deleted text field: strtol of its text (so "" reads 0); otherwise def.
  int GetInt(std::string_view name, int def) const;
  // GetInt(name, def) != 0.
  bool GetBool(std::string_view name, bool def) const;
  // Empty or absent text: def; otherwise the decimal value.
  long long GetInt64(std::string_view name, long long def) const;
  // ttofl of the text ("" when absent, giving 0).
  double GetFloat(std::string_view name) const;
  // Empty or absent text: def; otherwise ttofl of the text.
  double GetFloat(std::string_view name, double def) const;

  // Marks the field deleted and modified and makes the record dirty; an absent name does
  // nothing. The field stays in the list.
  void DeleteField(std::string_view name);
  // True when a field of that name exists and is not deleted (binary fields count).
  bool TestFieldExists(std::string_view name) const;

  // Replaces all own fields by copies of src's non-deleted fields, each marked modified; makes
  // the record dirty. Key, stored key and store are not copied.
  void CopyRecord(const LRecord& src);
  // Saves if attached and dirty, detaches, then empties key, stored key and fields.
  void Invalidate();
  // Attached and dirty: the store's Save result (dirty is cleared even when it fails);
  // otherwise true.
  [[nodiscard]] bool Flush();
  // Flush for writes whose caller cannot be told at once: a failed save leaves the record dirty,
  // so that the next Flush, which the code able to tell the user checks, tries again and reports.
  void FlushOrKeepDirty();

  bool IsDirty() const { return dirty_; }
  bool IsAttached() const { return store_ != nullptr; }

  // ---- Store side -----------------------------------------------------------------------
  // Used by the record stores to attach, load and write records; business code does not call
  // these.
  void Attach(std::unique_ptr<LRecordStore> store) { store_ = std::move(store); }
  // Releases the handle without saving.
  void DetachWithoutSave() { store_.reset(); }
  void SetKeys(std::string_view key, std::string_view storedKey);
  void SetStoredKey(std::string_view storedKey);
  void SetDirty(bool dirty) { dirty_ = dirty; }
  void ClearFields() { fields_.clear(); }
  // Appends a field as loaded from a store: modified and deleted clear, name cut to 63 bytes.
  void AppendLoadedField(std::string_view name, std::string_view value);
  std::vector<LRecordField>& Fields() { return fields_; }
  const std::vector<LRecordField>& Fields() const { return fields_; }
  // The field of that exact name, deleted or not; null when absent.
  LRecordField* FindField(std::string_view name);
  const LRecordField* FindField(std::string_view name) const;

 private:
  std::unique_ptr<LRecordStore> store_;  // null: detached
  std::string key_;                      // primary key, at most 259 bytes
  std::string storedKey_;                // key of the last load or save, at most 259 bytes
  std::vector<LRecordField> fields_;     // insertion order
  bool dirty_ = false;                   // a change differs from what was there
};
