#include "llib/gen/filestorecache.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "llib/gen/filestamp.h"
#include "llib/gen/filestore.h"

namespace {

struct LCachedRecord {
  LFileStamp stamp;                                         // the file when it was read
  std::vector<std::pair<std::string, std::string>> fields;  // as loaded
};

std::mutex cacheMutex;  // guards the map and its entries; no other lock is taken under it
std::map<std::string, LCachedRecord>& Cache() {
  static auto* cache = new std::map<std::string, LCachedRecord>;  // outlives every static user
  return *cache;
}

}  // namespace

bool LFileStoreOpenAlwaysCached(const LFileStoreListBase& list, LRecord& r, std::string_view key) {
  std::string path = list.MakeRecordPath(key);
  LFileStamp now = LFileStampOf(path);  // before reading: a change meanwhile shows next time
  std::vector<std::pair<std::string, std::string>> fields;
  bool cached = false;
  {
    std::lock_guard<std::mutex> guard(cacheMutex);
    auto found = Cache().find(path);
    if (found != Cache().end() && LFileStampStillHolds(found->second.stamp, now)) {
      fields = found->second.fields;
      cached = true;
    }
  }
  if (cached) {
    // What OpenAlways does, with the fields from memory.
    r.Invalidate();
    for (const auto& [name, value] : fields) r.AppendLoadedField(name, value);
    r.SetDirty(false);
    r.Attach(std::make_unique<LDataStoreRecordStore<LFileStoreListBase>>(list));
    r.SetKeys(key, key);
    return true;
  }
  bool loaded = list.OpenAlways(r, key);
  if (!loaded || !now.settled) return loaded;
  for (const LRecordField& field : r.Fields()) fields.emplace_back(field.name, field.text);
  std::lock_guard<std::mutex> guard(cacheMutex);
  Cache()[path] = {now, std::move(fields)};
  return loaded;
}
