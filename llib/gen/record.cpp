#include "llib/gen/record.h"

#include <cstdio>

#include "llib/gen/textnum.h"

// The implicit saves of the destructor and Invalidate have no caller to tell: the store logs a
// failure, and code whose write matters calls Flush first and checks it.
LRecord::~LRecord() {
  if (store_ && dirty_) (void)store_->Save(*this);
  store_.reset();
}

void LRecord::SetPrimaryKey(std::string_view key) {
  if (key.empty()) return;
  key = LTruncated(key, kMaxTextBytes);
  if (key == key_) return;
  key_.assign(key);
  dirty_ = true;
}

void LRecord::SetKeys(std::string_view key, std::string_view storedKey) {
  key_.assign(LTruncated(key, kMaxTextBytes));
  storedKey_.assign(LTruncated(storedKey, kMaxTextBytes));
}

void LRecord::SetStoredKey(std::string_view storedKey) {
  storedKey_.assign(LTruncated(storedKey, kMaxTextBytes));
}

LRecordField* LRecord::FindField(std::string_view name) {
  for (auto& field : fields_)
    if (field.name == name) return &field;
  return nullptr;
}

const LRecordField* LRecord::FindField(std::string_view name) const {
  for (const auto& field : fields_)
    if (field.name == name) return &field;
  return nullptr;
}

void LRecord::SetString(std::string_view name, std::string_view value) {
  LRecordField* field = FindField(name);
  if (field == nullptr) {
    LRecordField added;
    added.name.assign(LTruncated(name, kMaxFieldNameBytes));
    added.text.assign(value);
    fields_.push_back(std::move(added));
    dirty_ = true;
    return;
  }
  if (field->binary) return;  // a binary field is never overwritten with text
  if (field->deleted) {
    field->text.assign(value);
    field->deleted = false;
  } else {
    if (field->text == value) return;
    field->text.assign(value);
  }
  field->modified = true;
  dirty_ = true;
}

void LRecord::SetInt(std::string_view name, int value) {
  char buffer[kTextBufferSize];
  std::snprintf(buffer, sizeof buffer, "%d", value);
  SetString(name, buffer);
}

void LRecord::SetInt(std::string_view name, int value, int def) {
  if (value == def) {
    DeleteField(name);
  } else {
    SetInt(name, value);
  }
}

void LRecord::SetInt64(std::string_view name, long long value) {
  char buffer[kTextBufferSize];
  std::snprintf(buffer, sizeof buffer, "%lld", value);
  SetString(name, buffer);
}

void LRecord::SetFloat(std::string_view name, double value) { SetString(name, ftotl(value)); }

void LRecord::SetBinary(std::string_view name, LSizedArray<unsigned char> bytes) {
  LRecordField* field = FindField(name);
  if (field == nullptr) {
    fields_.emplace_back();
    field = &fields_.back();
    field->name.assign(LTruncated(name, kMaxFieldNameBytes));
  }
  field->binary = true;
  field->text.clear();
  field->bytes = std::move(bytes);
  field->deleted = false;
  field->modified = true;
  dirty_ = true;
}

void LRecord::GetString(std::string_view name, std::string_view def, LTextBuffer& out) const {
  const LRecordField* field = FindField(name);
  if (field == nullptr || field->deleted) {
    LCopyTruncated(out, def);
  } else {
    LCopyTruncated(out, field->binary ? std::string_view() : std::string_view(field->text));
  }
}

void LRecord::GetString(std::string_view name, std::string_view def, std::string& out) const {
  const LRecordField* field = FindField(name);
  if (field == nullptr || field->deleted) {
    out.assign(def);
  } else if (field->binary) {
    out.clear();
  } else {
    out.assign(field->text);
  }
}

std::string LRecord::GetString(std::string_view name, std::string_view def) const {
  std::string out;
  GetString(name, def, out);
  return out;
}

int LRecord::GetInt(std::string_view name, int def) const {
  const LRecordField* field = FindField(name);
  if (field == nullptr || field->binary || field->deleted) return def;
  return LTextToInt(field->text);
}

bool LRecord::GetBool(std::string_view name, bool def) const { return GetInt(name, def) != 0; }

long long LRecord::GetInt64(std::string_view name, long long def) const {
  LTextBuffer text;
  GetString(name, "", text);
  if (text[0] == '\0') return def;
  return LTextToInt64(text);
}

double LRecord::GetFloat(std::string_view name) const {
  LTextBuffer text;
  GetString(name, "", text);
  return ttofl(text);
}

double LRecord::GetFloat(std::string_view name, double def) const {
  LTextBuffer text;
  GetString(name, "", text);
  if (text[0] == '\0') return def;
  return ttofl(text);
}

void LRecord::DeleteField(std::string_view name) {
  LRecordField* field = FindField(name);
  if (field == nullptr) return;
  field->modified = true;
  field->deleted = true;
  dirty_ = true;
}

bool LRecord::TestFieldExists(std::string_view name) const {
  const LRecordField* field = FindField(name);
  return field != nullptr && !field->deleted;
}

void LRecord::CopyRecord(const LRecord& src) {
  if (&src == this) return;
  fields_.clear();
  for (const auto& field : src.fields_) {
    if (field.deleted) continue;
    LRecordField copy = field;
    copy.modified = true;
    fields_.push_back(std::move(copy));
  }
  dirty_ = true;
}

void LRecord::Invalidate() {
  if (store_) {
    if (dirty_) (void)store_->Save(*this);
    store_.reset();
  }
  key_.clear();
  storedKey_.clear();
  fields_.clear();
  dirty_ = false;
}

bool LRecord::Flush() {
  if (!dirty_ || !store_) return true;
  bool saved = store_->Save(*this);
  dirty_ = false;
  return saved;
}

void LRecord::FlushOrKeepDirty() {
  if (!Flush()) dirty_ = true;
}

void LRecord::AppendLoadedField(std::string_view name, std::string_view value) {
  LRecordField field;
  field.name.assign(LTruncated(name, kMaxFieldNameBytes));
  field.text.assign(value);
  field.modified = false;
  fields_.push_back(std::move(field));
}
