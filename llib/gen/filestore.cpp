#include "llib/gen/filestore.h"
#include "llib/gen/filestoreinplace.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "llib/gen/file.h"
#include "llib/gen/filelock.h"
#include "llib/gen/filestoreindex.h"
#include "llib/gen/log.h"
#include "llib/gen/percent.h"
#include "llib/gen/textcase.h"

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
    : folder_(LFile::MakeFilePath(store.GetFolder(), listName)) {}

std::string LFileStoreListBase::MakeRecordPath(std::string_view key) const {
  return LFileStoreDataStore::MakeDataFilePath(folder_, key);
}

// ---- Reading ----------------------------------------------------------------------------------

namespace {

// Reads the whole of an open file from its start; knownSize: its size, when a look at the locked
// file already told it.
std::string ReadWholeFile(int fd, long long knownSize = -1) {
  std::string content;
  struct stat st;
  if (knownSize < 0) knownSize = ::fstat(fd, &st) == 0 ? st.st_size : 0;
  if (knownSize > 0) {
    content.resize(static_cast<std::size_t>(knownSize));
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
  if (::unlink(MakeRecordPath(key).c_str()) != 0) return false;
  LFileStoreIndexNoteDelete(folder_, key);
  return true;
}

// ---- Writing ----------------------------------------------------------------------------------
//
// A save never writes into the record file itself: it writes the whole new text to a hidden
// temporary file in the list folder and renames that over the record file, so a full disk, a
// failed write or a crash at any moment leaves either the old record or the new one, never half
// of one. The exclusive lock is taken on the record file as it was; a writer that waited on a
// file replaced meanwhile opens the new one again (LLockedFile::OpenCurrent), and readers that
// opened the old file read it whole. A record new under its key is linked into place instead
// (CreateLinked), as a new number is (SaveUnderNewKey).
//
// The list's folder is made by the first record stored in it, not when the list is opened: every
// read and every posting opens lists, and a look at the folder each time is a system call more.

namespace {

// The file text of r's fields in list order; a field deleted since the last save is left out.
std::string BuildFileText(const LRecord& r) {
  std::string text;
  bool first = true;
  for (const auto& field : r.Fields()) {
    if (field.modified && field.deleted) continue;
    if (!first) text.push_back('&');
    first = false;
    LPercentEncodeAppend(field.name, text);
    text.push_back('=');
    if (!field.binary) LPercentEncodeAppend(field.text, text);
  }
  return text;
}

// Writes text to a temporary file beside path and renames it over path; inode gets the new file's
// for the list's index, taken before the rename, as another writer may replace the record file as
// soon as it is in place.
bool WriteRecordFile(const std::string& path, std::string_view text, unsigned mode, ino_t& inode) {
  std::string temp = LWriteTemporaryBeside(path, text, mode);
  if (temp.empty()) return false;
  inode = LFileStoreInodeOf(temp);
  if (LRobustRename(temp, path)) return true;
  LLogWriteFailure("rename", path, errno);
  ::unlink(temp.c_str());
  return false;
}

// After a successful write: the record matches its file. A field that stays deleted after that
// save is written again with its old text on a later save of the same object: records have
// always behaved so.
void MarkSaved(LRecord& r) {
  for (auto& field : r.Fields()) field.modified = false;
  r.SetDirty(false);
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

}  // namespace

namespace {

enum class Created { kDone, kTaken, kFailed, kUnsupported };

// Writes text as an unnamed file of the list folder (O_TMPFILE) and links it at path: one name
// made where a named temporary file takes three operations (create, link, remove). kUnsupported
// when the file system (or a missing /proc) does not allow it.
Created CreateUnnamedThenLink(const std::string& path, std::string_view text, ino_t& inode) {
  std::string folder = path.substr(0, path.rfind('/'));
  LFileDescriptor fd(LRobustOpen(folder, O_WRONLY | O_TMPFILE));
  if (!fd.IsOpen() && errno == ENOENT && LFile::MakeFolder(folder)) fd = LFileDescriptor(LRobustOpen(folder, O_WRONLY | O_TMPFILE));
  if (!fd.IsOpen()) return Created::kUnsupported;
  struct stat st;
  if (!LRobustWrite(fd.Get(), text.data(), text.size()) || ::fstat(fd.Get(), &st) != 0) {
    LLogWriteFailure("write", path, errno);
    return Created::kFailed;
  }
  inode = st.st_ino;
  std::string unnamed = "/proc/self/fd/" + std::to_string(fd.Get());
  if (::linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0) return Created::kDone;
  if (errno == EEXIST) return Created::kTaken;
  return Created::kUnsupported;
}

// A record that has never been stored, under a key no file has yet, is written whole and then
// linked into place: it appears whole, and one file is created where the locked save below
// creates two (the empty file it locks, then the one renamed over it); creating files is what a
// file system does slowest. kTaken when a file holds the key: the record is then saved as any
// other, merging into that file. inode gets the new file's for the list's index.
Created CreateLinked(const std::string& path, std::string_view text, ino_t& inode) {
  if (LFile::Exists(path)) return Created::kTaken;
  Created created = CreateUnnamedThenLink(path, text, inode);
  if (created != Created::kUnsupported) return created;
  std::string temp = LWriteTemporaryBeside(path, text);
  if (temp.empty()) return Created::kFailed;
  inode = LFileStoreInodeOf(temp);
  int linked = ::link(temp.c_str(), path.c_str());
  int error = errno;
  ::unlink(temp.c_str());
  if (linked == 0) return Created::kDone;
  if (error == EEXIST) return Created::kTaken;
  LLogWriteFailure("link", path, error);
  return Created::kFailed;
}

}  // namespace

bool LFileStoreListBase::SaveUnderNewKey(LRecord& r) const {
  // The text is written once to a temporary file, then linked under the first free number: the
  // link fails on an existing name exactly as an exclusive create does, and the record appears
  // whole or not at all.
  std::string text = BuildFileText(r);
  (void)LFile::MakeFolder(folder_);  // when it cannot be made, the write below fails and says why
  std::string temp = LWriteTemporaryBeside(MakeRecordPath("1"), text);
  if (temp.empty()) return false;
  ino_t inode = LFileStoreInodeOf(temp);
  bool saved = false;
  for (long number = 1;; ++number) {
    std::string key = std::to_string(number);
    if (::link(temp.c_str(), MakeRecordPath(key).c_str()) == 0) {
      r.SetKeys(key, key);
      saved = true;
      break;
    }
    if (errno != EEXIST) {
      LLogWriteFailure("link", MakeRecordPath(key), errno);
      break;
    }
  }
  ::unlink(temp.c_str());
  if (!saved) return false;
  LFileStoreIndexNoteSave(folder_, r.GetPrimaryKey(), r, inode);
  MarkSaved(r);
  return true;
}

namespace {

// A record whose file another process renamed (a new account number) or deleted while it was
// held: writing it under its old key would bring back the record that change took away.
bool NotRecreated(const std::string& path) {
  LLogWarning("L'enregistrement \"%s\" a été renommé ou supprimé par un autre processus pendant sa modification : "
              "il n'est pas recréé sous son ancienne clé.", path.c_str());
  return false;
}

// Gives a record file its new key under the record's exclusive lock: a writer holding the record
// (a posting's balances) finishes its save first, and one that waits for it afterwards finds the
// old key gone rather than writing the record under it again. A change of letter case only
// renames directly; any other change never replaces a record.
bool RenameRecordFile(const std::string& oldPath, const std::string& newPath) {
  bool replace = LSameText(oldPath, newPath);
  LLockedFile held = LLockedFile::OpenCurrent(oldPath, O_RDONLY, LOCK_EX, kRecordLockTimeoutMs);
  return LRobustRename(oldPath, newPath, replace);
}

}  // namespace

bool LFileStoreListBase::Save(LRecord& r) const {
  std::string writeKey = r.GetPrimaryKey();
  if (!r.GetStoredKey().empty() && r.GetStoredKey() != r.GetPrimaryKey()) {
    if (RenameRecordFile(MakeRecordPath(r.GetStoredKey()), MakeRecordPath(r.GetPrimaryKey()))) {
      r.SetStoredKey(r.GetPrimaryKey());
    } else {
      writeKey = r.GetStoredKey();  // both keys stay as they are
    }
  }
  if (writeKey.empty()) return SaveUnderNewKey(r);

  std::string path = MakeRecordPath(writeKey);
  if (r.GetStoredKey().empty()) {
    ino_t inode = 0;
    Created created = CreateLinked(path, BuildFileText(r), inode);
    if (created == Created::kFailed) return false;
    if (created == Created::kDone) {
      r.SetStoredKey(r.GetPrimaryKey());
      LFileStoreIndexNoteSave(folder_, writeKey, r, inode);
      MarkSaved(r);
      return true;
    }
  }
  // Only a record new under its key may create its file: one read from its file whose file is gone
  // was renamed (a new account number) or deleted by another process since, and writing it under
  // its old key would bring back the record that change took away.
  bool isNew = r.GetStoredKey().empty();
  LLockedFile file = LLockedFile::OpenCurrent(path, isNew ? O_RDWR | O_CREAT : O_RDWR, LOCK_EX, kRecordLockTimeoutMs);
  if (!file.IsOpen() && file.OpenErrno() == ENOENT && !isNew) return NotRecreated(path);
  if (file.IsOpen()) MergeStored(ReadWholeFile(file.Get(), file.Size()), r);
  if (r.GetStoredKey().empty()) r.SetStoredKey(r.GetPrimaryKey());
  // A record file that cannot be opened is reported as saved, as the store has always done. The
  // new file takes the old one's permissions (a settings record is readable by its owner only).
  struct stat st;
  unsigned mode = file.IsOpen() && ::fstat(file.Get(), &st) == 0 ? st.st_mode & 07777 : 0666;
  if (file.IsOpen()) {
    ino_t inode = 0;
    if (!WriteRecordFile(path, BuildFileText(r), mode, inode)) return false;
    LFileStoreIndexNoteSave(folder_, writeKey, r, inode);  // the record is still locked
  }
  MarkSaved(r);
  return true;
}

namespace {

constexpr std::size_t kInPlaceLimit = 4096;  // one page: a write this short is never split by a kill

}  // namespace

namespace {

// Whether r may be saved in place: a list with an index knows its records by their files'
// inodes, and an in-place write would keep the inode and leave the index naming the old value.
bool MayBeSavedInPlace(const LFileStoreListBase& list, const LRecord& r) {
  const std::string& key = r.GetPrimaryKey();
  return !key.empty() && r.GetStoredKey() == key && LFileStoreIndexedField(list.GetFolder()).empty();
}

// Replaces the locked file by a new one holding r, renamed over it before the lock is let go, so
// that no other writer comes between the reading and the writing; the list's index, if any, learns
// the new file. A writer that waited on the old file opens the new one (LLockedFile::OpenCurrent).
bool ReplaceUnderLock(const LLockedFile& file, const std::string& listFolder, const std::string& path,
                      std::string_view text, LRecord& r) {
  struct stat held, named;
  if (::fstat(file.Get(), &held) != 0 || ::stat(path.c_str(), &named) != 0 || held.st_ino != named.st_ino ||
      held.st_dev != named.st_dev)
    return NotRecreated(path);
  unsigned mode = held.st_mode & 07777;
  ino_t inode = 0;
  if (!WriteRecordFile(path, text, mode, inode)) return false;
  LFileStoreIndexNoteSave(listFolder, r.GetPrimaryKey(), r, inode);
  MarkSaved(r);
  return true;
}

// Writes r over the locked file, whose text is stored; a text of a page or more replaces the file
// (ReplaceUnderLock), as one write of it could be split by a kill.
bool OverwriteInPlace(const std::string& listFolder, LLockedFile& file, const std::string& path,
                      std::string_view stored, LRecord& r) {
  std::string text = BuildFileText(r);
  if (text.size() >= kInPlaceLimit || stored.size() >= kInPlaceLimit)
    return ReplaceUnderLock(file, listFolder, path, text, r);
  if (text.size() < stored.size()) text.append(stored.size() - text.size(), '&');
  if (!LRobustWriteAt(file.Get(), text.data(), text.size(), 0)) {
    LLogWriteFailure("write", path, errno);
    return false;
  }
  MarkSaved(r);
  return true;
}

}  // namespace

bool LFileStoreSaveInPlace(const LFileStoreListBase& list, LRecord& r) {
  if (!r.IsDirty()) return true;
  if (!MayBeSavedInPlace(list, r)) return r.Flush();
  std::string path = list.MakeRecordPath(r.GetPrimaryKey());
  LLockedFile file = LLockedFile::OpenCurrent(path, O_RDWR, LOCK_EX, kRecordLockTimeoutMs);
  if (!file.IsOpen()) return r.Flush();
  std::string stored = ReadWholeFile(file.Get(), file.Size());
  MergeStored(stored, r);
  return OverwriteInPlace(list.GetFolder(), file, path, stored, r);
}

bool LFileStoreInPlaceUpdate::Open(const LFileStoreListBase& list, std::string_view key, LRecord& r,
                                   LPathChange change) {
  if (key.empty()) return list.Open(r, key);
  folder_ = list.GetFolder();
  path_ = list.MakeRecordPath(key);
  file_ = LLockedFile::OpenCurrent(path_, O_RDWR, LOCK_EX, kRecordLockTimeoutMs, 0666, change);
  if (!file_.IsOpen()) return list.Open(r, key);
  stored_ = ReadWholeFile(file_.Get(), file_.Size());
  list.CreateNewRecord(r, key);  // attached under key, as an open record is
  ParseFields(stored_, r);
  r.SetKeys(key, key);
  r.SetDirty(false);
  return true;
}

bool LFileStoreInPlaceUpdate::Save(LRecord& r) {
  if (!file_.IsOpen()) return r.Flush();
  bool saved = !r.IsDirty();
  // A list with an index knows its records by their files' inodes: a new file, noted in it.
  if (!saved && !LFileStoreIndexedField(folder_).empty())
    saved = ReplaceUnderLock(file_, folder_, path_, BuildFileText(r), r);
  else if (!saved)
    saved = OverwriteInPlace(folder_, file_, path_, stored_, r);
  file_.Close();
  return saved;
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
  if (r.IsAttached()) (void)r.Flush();  // moving on saves as the destructor does: the store logs a failure
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
