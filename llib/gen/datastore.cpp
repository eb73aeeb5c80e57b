#include "llib/gen/datastore.h"

namespace {

bool SameKey(const LRecord& r, std::string_view key) {
  return r.GetPrimaryKey() == LTruncated(key, kMaxTextBytes);
}

}  // namespace

LRecord* LFKTempRecordStorage::FindRecord(std::string_view key) {
  for (auto& record : records_)
    if (SameKey(*record, key)) return record.get();
  return nullptr;
}

bool LFKTempRecordStorage::CreateNewRecord(LRecord& r, std::string_view key) {
  if (FindRecord(key) == nullptr) {
    auto record = std::make_unique<LRecord>();
    record->SetKeys(key, key);
    records_.push_back(std::move(record));
  }
  return Open(r, key);
}

bool LFKTempRecordStorage::Open(LRecord& r, std::string_view key) {
  LRecord* held = FindRecord(key);
  if (held == nullptr) return false;
  r.Invalidate();
  r.SetKeys(key, key);
  r.CopyRecord(*held);
  r.Attach(std::make_unique<LFKTempRecordStore>(this));
  return true;
}

bool LFKTempRecordStorage::Save(LRecord& r) {
  if (LRecord* held = FindRecord(r.GetPrimaryKey())) {
    held->CopyRecord(r);
    held->SetDirty(false);
  }
  return false;
}

bool LFKTempRecordStorage::Delete(std::string_view key) {
  for (auto it = records_.begin(); it != records_.end(); ++it) {
    if (SameKey(**it, key)) {
      records_.erase(it);
      return true;
    }
  }
  return false;
}

void LFKTempRecordStorage::DeleteAt(std::size_t index) {
  if (index < records_.size()) records_.erase(records_.begin() + static_cast<long>(index));
}
