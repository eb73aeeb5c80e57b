#include "llib/gen/filestoreindex.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <functional>
#include <map>
#include <mutex>
#include <unordered_map>

#include "llib/gen/file.h"
#include "llib/gen/filelock.h"
#include "llib/gen/filestore.h"
#include "llib/gen/percent.h"
#include "llib/gen/record.h"

namespace {

constexpr std::string_view kHeaderWord = "kontavo-index ";
constexpr long long kCompactSlackBytes = 65536;

std::mutex& RegistryMutex() {
  static std::mutex mutex;
  return mutex;
}

std::map<std::string, std::string, std::less<>>& Registry() {
  static std::map<std::string, std::string, std::less<>> fields;  // list folder -> field
  return fields;
}

std::string IndexPath(std::string_view listFolder, std::string_view field) {
  return std::string(listFolder) + "/.index." + std::string(field);
}

std::string Line(ino_t inode, std::string_view key, std::string_view value) {
  std::string line = std::to_string(static_cast<unsigned long long>(inode));
  line.push_back(' ');
  LPercentEncodeAppend(key, line);
  if (inode != 0) {
    line.push_back(' ');
    LPercentEncodeAppend(value, line);
  }
  line.push_back('\n');
  return line;
}

struct Entry {
  ino_t inode = 0;
  std::string value;
};
using EntryMap = std::unordered_map<std::string, Entry>;

// The entries of the index text, the last line of a key winning; a line cut short by a crash
// (no line end) or not in the index's form is passed over. compacted gets the header's size.
EntryMap Parse(std::string_view text, long long* compacted = nullptr) {
  EntryMap entries;
  std::size_t start = 0;
  std::size_t end;
  while ((end = text.find('\n', start)) != std::string_view::npos) {
    std::string_view line = text.substr(start, end - start);
    start = end + 1;
    if (line.substr(0, kHeaderWord.size()) == kHeaderWord) {
      if (compacted != nullptr) std::from_chars(line.data() + kHeaderWord.size(), line.data() + line.size(), *compacted);
      continue;
    }
    std::size_t space = line.find(' ');
    unsigned long long inode = 0;
    if (space == std::string_view::npos ||
        std::from_chars(line.data(), line.data() + space, inode).ec != std::errc())
      continue;
    std::string_view rest = line.substr(space + 1);
    std::size_t second = rest.find(' ');
    std::string key = LPercentDecode(rest.substr(0, second));
    if (inode == 0) {
      entries.erase(key);
    } else {
      entries[key] = {static_cast<ino_t>(inode),
                      second == std::string_view::npos ? std::string() : LPercentDecode(rest.substr(second + 1))};
    }
  }
  return entries;
}

std::string ReadText(int fd) {
  std::string text;
  struct stat st;
  if (::fstat(fd, &st) != 0 || st.st_size <= 0) return text;
  text.resize(static_cast<std::size_t>(st.st_size));
  long long n = ::pread(fd, text.data(), text.size(), 0);
  text.resize(n < 0 ? 0 : static_cast<std::size_t>(n));
  return text;
}

// The whole index in one line per key, written beside the index and renamed over it.
bool WriteCompacted(const std::string& path, const EntryMap& entries) {
  std::string body;
  for (const auto& [key, entry] : entries) body += Line(entry.inode, key, entry.value);
  std::string header = std::string(kHeaderWord) + std::to_string(body.size()) + "\n";
  return LFile::WriteAllAtomic(path, header + body);
}

// Appends the lines that makeLines gives, called under the index's lock, to the index; compacts
// it when it has grown too long. An index that cannot be written is left as it is: readers mend it.
void AppendUnderLock(const std::string& listFolder, std::string_view field,
                     const std::function<std::string()>& makeLines) {
  std::string path = IndexPath(listFolder, field);
  LLockedFile file =
      LLockedFile::OpenCurrent(path, O_RDWR | O_CREAT | O_APPEND, LOCK_EX, kRecordLockTimeoutMs);
  if (!file.IsOpen()) return;
  struct stat st;
  if (::fstat(file.Get(), &st) != 0) return;
  long long size = st.st_size;
  char last = '\n';
  if (size > 0 && ::pread(file.Get(), &last, 1, size - 1) == 1 && last != '\n') {
    // A line cut short by a crash goes, or the new lines would complete it into a wrong one.
    std::size_t end = ReadText(file.Get()).rfind('\n');
    size = end == std::string::npos ? 0 : static_cast<long long>(end + 1);
    if (!LRobustTruncate(file.Get(), size)) return;
  }
  std::string lines = makeLines();
  if (lines.empty()) return;
  std::string text = size == 0 ? std::string(kHeaderWord) + "0\n" + lines : lines;
  if (!LRobustWrite(file.Get(), text.data(), text.size())) return;
  size += static_cast<long long>(text.size());
  long long compacted = 0;
  char head[64];
  long long n = ::pread(file.Get(), head, sizeof head, 0);
  Parse(std::string_view(head, n < 0 ? 0 : static_cast<std::size_t>(n)), &compacted);
  if (size > 2 * compacted + kCompactSlackBytes) (void)WriteCompacted(path, Parse(ReadText(file.Get())));
}

void Append(const std::string& listFolder, std::string_view field, const std::string& lines) {
  AppendUnderLock(listFolder, field, [&lines] { return lines; });
}

// A batch keeps at most this many lines before appending them.
constexpr std::size_t kBatchLines = 1000;

thread_local LFileStoreIndexBatch* tBatch = nullptr;

// The record file at path: false when there is none.
bool StatOf(const std::string& path, ino_t& inode, long long& size, long long& changedNs) {
  struct stat st;
  if (::stat(path.c_str(), &st) != 0) return false;
  inode = st.st_ino;
  size = st.st_size;
  changedNs = static_cast<long long>(st.st_ctim.tv_sec) * 1000000000LL + st.st_ctim.tv_nsec;
  return true;
}

// The record files of a list folder: key -> inode.
std::unordered_map<std::string, ino_t> RecordFiles(const std::string& folder) {
  std::unordered_map<std::string, ino_t> files;
  DIR* dir = ::opendir(folder.c_str());
  if (dir == nullptr) return files;
  while (dirent* entry = ::readdir(dir)) {
    std::string_view name = entry->d_name;
    if (name.size() < 4 || name.substr(name.size() - 4) != ".dat") continue;
    std::string key = LPercentDecode(name.substr(0, name.size() - 4));
    key.resize(std::min(key.size(), kMaxTextBytes));
    files.emplace(std::move(key), entry->d_ino);
  }
  ::closedir(dir);
  return files;
}

// The field of the record of key as it is now; inode gets the file read, 0 when the file
// changed while it was read (the value is then still the best known).
std::string ReadField(const LFileStoreListBase& list, const std::string& key, ino_t listed, std::string_view field,
                      ino_t& inode) {
  LRecord record;
  std::string value;
  if (list.Load(key, record)) value = record.GetString(field);
  inode = LFileStoreInodeOf(list.MakeRecordPath(key)) == listed ? listed : 0;
  return value;
}

}  // namespace

ino_t LFileStoreInodeOf(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0 ? st.st_ino : 0;
}

void LFileStoreIndexDeclare(std::string_view dataFolder, std::string_view listName, std::string_view field) {
  std::string listFolder = LFile::MakeFilePath(dataFolder, listName);  // as the store's lists make it
  std::lock_guard<std::mutex> lock(RegistryMutex());
  Registry().insert_or_assign(std::move(listFolder), std::string(field));
}

std::string LFileStoreIndexedField(std::string_view listFolder) {
  std::lock_guard<std::mutex> lock(RegistryMutex());
  auto it = Registry().find(listFolder);
  return it == Registry().end() ? std::string() : it->second;
}

void LFileStoreIndexNoteSave(const std::string& listFolder, std::string_view key, const LRecord& r, ino_t inode) {
  std::string field = LFileStoreIndexedField(listFolder);
  if (field.empty() || inode == 0) return;
  std::string line = Line(inode, key, r.GetString(field));
  if (tBatch == nullptr || !tBatch->Keep(listFolder, key, std::move(line), inode)) Append(listFolder, field, line);
}

LFileStoreIndexBatch::LFileStoreIndexBatch(const LFileStoreListBase& list)
    : folder_(list.GetFolder()), field_(LFileStoreIndexedField(folder_)), outer_(tBatch) {
  tBatch = this;
}

LFileStoreIndexBatch::~LFileStoreIndexBatch() {
  Flush();
  tBatch = outer_;
}

bool LFileStoreIndexBatch::Keep(const std::string& listFolder, std::string_view key, std::string&& line,
                                ino_t inode) {
  if (listFolder != folder_) return outer_ != nullptr && outer_->Keep(listFolder, key, std::move(line), inode);
  Kept kept{LFileStoreDataStore::MakeDataFilePath(folder_, key), std::move(line)};
  // A file replaced since the save has its writer's line, which this one must not follow.
  if (!StatOf(kept.path, kept.inode, kept.size, kept.changedNs) || kept.inode != inode) return true;
  kept_.push_back(std::move(kept));
  if (kept_.size() >= kBatchLines) Flush();
  return true;
}

void LFileStoreIndexBatch::Flush() {
  if (kept_.empty() || field_.empty()) return;
  // Checked under the index's lock: a writer that replaces a file appends its line after its
  // rename, so a file found unchanged here has no newer line yet, and any comes after these.
  AppendUnderLock(folder_, field_, [this] {
    std::string lines;
    for (const Kept& kept : kept_) {
      ino_t inode = 0;
      long long size = 0, changedNs = 0;
      if (StatOf(kept.path, inode, size, changedNs) && inode == kept.inode && size == kept.size &&
          changedNs == kept.changedNs)
        lines += kept.line;
    }
    return lines;
  });
  kept_.clear();
}

void LFileStoreIndexNoteDelete(const std::string& listFolder, std::string_view key) {
  std::string field = LFileStoreIndexedField(listFolder);
  if (!field.empty()) Append(listFolder, field, Line(0, key, {}));
}

std::vector<LFileStoreIndexEntry> LFileStoreIndexRead(const LFileStoreListBase& list, std::string_view field) {
  std::string text;
  (void)LFile::ReadAll(IndexPath(list.GetFolder(), field), text);
  EntryMap indexed = Parse(text);
  std::vector<LFileStoreIndexEntry> entries;
  std::string mended;
  for (auto& [key, listed] : RecordFiles(list.GetFolder())) {
    auto it = indexed.find(key);
    if (it != indexed.end() && it->second.inode == listed) {
      entries.push_back({key, std::move(it->second.value)});
      continue;
    }
    ino_t inode = 0;
    std::string value = ReadField(list, key, listed, field, inode);
    if (inode != 0) mended += Line(inode, key, value);
    entries.push_back({key, std::move(value)});
  }
  if (!mended.empty()) Append(list.GetFolder(), field, mended);
  return entries;
}

std::vector<LFileStoreIndexMismatch> LFileStoreIndexVerify(const LFileStoreListBase& list, std::string_view field,
                                                           bool fix) {
  std::string path = IndexPath(list.GetFolder(), field);
  std::string text;
  (void)LFile::ReadAll(path, text);
  EntryMap indexed = Parse(text);
  EntryMap actual;
  std::vector<LFileStoreIndexMismatch> mismatches;
  std::string mended;
  for (const auto& [key, listed] : RecordFiles(list.GetFolder())) {
    ino_t inode = 0;
    std::string value = ReadField(list, key, listed, field, inode);
    auto it = indexed.find(key);
    if (it == indexed.end() || it->second.inode != listed) {
      if (inode != 0) mended += Line(inode, key, value);  // stale: mended as a reader would
    } else if (it->second.value != value) {
      mismatches.push_back({key, it->second.value, value});
    }
    actual[key] = {listed, std::move(value)};
  }
  if (fix && !mismatches.empty()) {
    LLockedFile lock = LLockedFile::OpenCurrent(path, O_RDWR | O_CREAT, LOCK_EX, kRecordLockTimeoutMs);
    (void)WriteCompacted(path, actual);
  } else if (!mended.empty()) {
    Append(list.GetFolder(), field, mended);
  }
  return mismatches;
}
