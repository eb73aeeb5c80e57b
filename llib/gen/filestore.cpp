#include "llib/gen/filestore.h"

#include <fcntl.h>
#include <stdio.h>
#include <strings.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "llib/gen/file.h"
#include "llib/gen/filelock.h"
#include "llib/gen/percent.h"

// ---- Paths ------------------------------------------------------------------------------------

std::string LFileStoreDataStore::MakeDataFilePath(std::string_view listFolder, std::string_view key) {
  std::string encoded;
  for (unsigned char byte : key) {
    std::size_t width = LPercentIsKept(byte) ? 1 : 3;
    if (encoded.size() + width > kMaxEncodedKeyBytes) break;  // an escape is never cut
    LPercentEncodeAppend(std::string_view(reinterpret_cast<const char*>(&byte), 1), encoded);
  }
  std::string path(listFolder);
  path.push_back('/');
  path += encoded;
  path += ".dat";
  return path;
}

LFileStoreListBase::LFileStoreListBase(const LFileStoreDataStore& store, std::string_view listName,
                                       std::string_view /*keyField: the key lives in the file name*/)
    : folder_(LFile::MakeFilePath(store.GetFolder(), listName)) {
  if (!LFile::IsFolder(folder_)) ::mkdir(folder_.c_str(), 0777);
}

std::string LFileStoreListBase::MakeRecordPath(std::string_view key) const {
  return LFileStoreDataStore::MakeDataFilePath(folder_, key);
}

// ---- Reading ----------------------------------------------------------------------------------

namespace {

// Reads the whole of an open file from its start.
std::string ReadWholeFile(int fd) {
  std::string content;
  struct stat st;
  if (::fstat(fd, &st) == 0 && st.st_size > 0) {
    content.resize(static_cast<std::size_t>(st.st_size));
    long long n = LRobustRead(fd, content.data(), content.size());
    content.resize(n < 0 ? 0 : static_cast<std::size_t>(n));
  }
  return content;
}

void ParseFields(std::string_view content, LRecord& r) {
  LParseHTTPString(content, [&r](std::string&& name, std::string&& value) {
    if (!name.empty()) r.AppendLoadedField(name, value);
  });
}

}  // namespace

bool LFileStoreListBase::TestRecordExists(std::string_view key) const {
  return LFile::Exists(MakeRecordPath(key));
}

bool LFileStoreListBase::Load(std::string_view key, LRecord& r) const {
  if (key.empty()) return false;
  LLockedFile file(MakeRecordPath(key), O_RDONLY, LOCK_SH, kRecordLockTimeoutMs);
  if (!file.IsOpen()) return false;
  std::string content = ReadWholeFile(file.Get());
  file.Close();
  r.ClearFields();
  ParseFields(content, r);
  r.SetDirty(false);
  return true;
}

void LFileStoreListBase::Attach(LRecord& r) const {
  r.Attach(std::make_unique<LDataStoreRecordStore<LFileStoreListBase>>(*this));
}

void LFileStoreListBase::CreateNewRecord(LRecord& r) const {
  r.Invalidate();
  Attach(r);
}

void LFileStoreListBase::CreateNewRecord(LRecord& r, std::string_view key) const {
  r.Invalidate();
  if (key.empty()) return;
  Attach(r);
  r.SetPrimaryKey(key);
}

bool LFileStoreListBase::Open(LRecord& r, std::string_view key) const {
  r.Invalidate();
  if (!Load(key, r)) return false;
  Attach(r);
  r.SetKeys(key, key);
  return true;
}

bool LFileStoreListBase::OpenAlways(LRecord& r, std::string_view key) const {
  r.Invalidate();
  bool loaded = Load(key, r);
  Attach(r);
  r.SetKeys(key, loaded ? key : std::string_view());
  return loaded;
}

bool LFileStoreListBase::Delete(std::string_view key) const {
  return ::unlink(MakeRecordPath(key).c_str()) == 0;
}

// ---- Writing ----------------------------------------------------------------------------------

namespace {

// The file text of r's fields in list order. Clears the modified marks; a field deleted since
// the last save is left out. A field that stays deleted after that save is written again with
// its old text on a later save of the same object: records have always behaved so.
std::string BuildFileText(LRecord& r) {
  std::string text;
  bool first = true;
  for (auto& field : r.Fields()) {
    if (field.modified) {
      field.modified = false;
      if (field.deleted) continue;
    }
    if (!first) text.push_back('&');
    first = false;
    LPercentEncodeAppend(field.name, text);
    text.push_back('=');
    if (!field.binary) LPercentEncodeAppend(field.text, text);
  }
  return text;
}

void WriteFileText(int fd, const std::string& text) {
  ::lseek(fd, 0, SEEK_SET);
  LRobustWrite(fd, text.data(), text.size());
  while (::ftruncate(fd, static_cast<off_t>(text.size())) != 0 && errno == EINTR) {
  }
}

// Takes what another writer stored into the fields this record did not change, and keeps the
// fields only the other writer has.
void MergeStored(std::string_view content, LRecord& r) {
  LParseHTTPString(content, [&r](std::string&& name, std::string&& value) {
    if (name.empty()) return;
    std::string_view cut = LTruncated(name, kMaxFieldNameBytes);
    if (LRecordField* field = r.FindField(cut)) {
      if (!field->modified) field->text = std::move(value);
    } else {
      r.AppendLoadedField(cut, value);
    }
  });
}

// Renames without replacing an existing file; false when the target exists or rename fails.
bool RenameNoReplace(const std::string& from, const std::string& to) {
  return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0;
}

}  // namespace

bool LFileStoreListBase::SaveUnderNewKey(LRecord& r) const {
  for (long number = 1;; ++number) {
    std::string key = std::to_string(number);
    int fd = LRobustOpen(MakeRecordPath(key), O_RDWR | O_CREAT | O_EXCL | O_TRUNC | O_NONBLOCK, 0666);
    if (fd < 0) {
      if (errno == EEXIST) continue;
      return false;
    }
    // Nobody else can know this key yet; the lock only keeps early readers waiting.
    LLockedFile file(fd, ::flock(fd, LOCK_EX | LOCK_NB) == 0);
    r.SetKeys(key, key);
    WriteFileText(file.Get(), BuildFileText(r));
    r.SetDirty(false);
    return true;
  }
}

bool LFileStoreListBase::Save(LRecord& r) const {
  std::string writeKey = r.GetPrimaryKey();
  if (!r.GetStoredKey().empty() && r.GetStoredKey() != r.GetPrimaryKey()) {
    std::string oldPath = MakeRecordPath(r.GetStoredKey());
    std::string newPath = MakeRecordPath(r.GetPrimaryKey());
    bool renamed;
    if (::strcasecmp(oldPath.c_str(), newPath.c_str()) == 0) {
      renamed = ::rename(oldPath.c_str(), newPath.c_str()) == 0;  // a change of letter case only
    } else {
      renamed = RenameNoReplace(oldPath, newPath);
    }
    if (renamed) {
      r.SetStoredKey(r.GetPrimaryKey());
    } else {
      writeKey = r.GetStoredKey();  // both keys stay as they are
    }
  }
  if (writeKey.empty()) return SaveUnderNewKey(r);

  LLockedFile file(MakeRecordPath(writeKey), O_RDWR | O_CREAT, LOCK_EX, kRecordLockTimeoutMs);
  if (file.IsOpen()) MergeStored(ReadWholeFile(file.Get()), r);
  if (r.GetStoredKey().empty()) r.SetStoredKey(r.GetPrimaryKey());
  std::string text = BuildFileText(r);
  if (file.IsOpen()) WriteFileText(file.Get(), text);
  r.SetDirty(false);
  return true;
}

// ---- Iteration --------------------------------------------------------------------------------

LFileStoreIteratorBase::LFileStoreIteratorBase(const LFileStoreListBase& list, LRecord& r)
    : list_(list) {
  r.Invalidate();
  r.Attach(std::make_unique<LDataStoreRecordStore<LFileStoreListBase>>(list_));
  if (LFile::IsFolder(list_.GetFolder())) dir_ = ::opendir(list_.GetFolder().c_str());
  Next(r);
}

LFileStoreIteratorBase::~LFileStoreIteratorBase() {
  if (dir_ != nullptr) ::closedir(dir_);
}

void LFileStoreIteratorBase::Next(LRecord& r) {
  if (r.IsAttached()) r.Flush();
  while (dir_ != nullptr) {
    dirent* entry = ::readdir(dir_);
    if (entry == nullptr) break;
    std::string_view name = entry->d_name;
    if (name.size() < 4 || name.substr(name.size() - 4) != ".dat") continue;
    r.ClearFields();
    std::string key = LPercentDecode(name.substr(0, name.rfind('.')));
    key.resize(std::min(key.size(), kMaxTextBytes));
    if (list_.Load(key, r)) {
      r.SetKeys(key, key);
      return;
    }
  }
  r.Invalidate();
}
