#include "llib/gen/usersettings.h"

#include <sys/stat.h>

#include "llib/gen/file.h"
#include "llib/gen/filestore.h"

namespace {

constexpr std::string_view kSettingsList = "Preferences";
constexpr std::string_view kPasswordList = "Keychain";

LFileStoreListBase SettingsList() {
  return LFileStoreListBase(LFileStoreDataStore(LFile::GetUserDataFolderApp()), kSettingsList);
}

LFileStoreListBase PasswordList() {
  LFileStoreListBase list(LFileStoreDataStore(LFile::GetUserDataFolderApp()), kPasswordList);
  // Made here, private, rather than by the first save with the store's usual permissions.
  (void)LFile::MakeFolder(list.GetFolder(), 0700);
  ::chmod(list.GetFolder().c_str(), 0700);
  return list;
}

bool GetFrom(const LFileStoreListBase& list, std::string_view group, std::string_view key,
             std::string& out) {
  out.clear();
  LRecord record;
  if (!list.Open(record, group) || !record.TestFieldExists(key)) return false;
  record.GetString(key, "", out);
  return true;
}

bool SetIn(const LFileStoreListBase& list, std::string_view group, std::string_view key,
           std::string_view value) {
  LRecord record;
  list.OpenAlways(record, group);
  record.SetString(key, value);
  return record.Flush();
}

bool DeleteIn(const LFileStoreListBase& list, std::string_view group, std::string_view key) {
  LRecord record;
  if (!list.Open(record, group)) return true;
  record.DeleteField(key);
  return record.Flush();
}

void RestrictToOwner(const LFileStoreListBase& list, std::string_view section) {
  ::chmod(list.MakeRecordPath(section).c_str(), 0600);
}

}  // namespace

bool LUserSettingTestExists(std::string_view group, std::string_view key) {
  std::string ignored;
  return _LUserSettingGetString(group, key, ignored);
}

bool _LUserSettingGetString(std::string_view group, std::string_view key, std::string& out) {
  return GetFrom(SettingsList(), group, key, out);
}

std::string LUserSettingGetString(std::string_view group, std::string_view key, std::string_view def) {
  std::string value;
  if (!_LUserSettingGetString(group, key, value)) value.assign(def);
  return value;
}

bool LUserSettingSetString(std::string_view group, std::string_view key, std::string_view value) {
  return SetIn(SettingsList(), group, key, value);
}

bool LUserSettingDelete(std::string_view group, std::string_view key) {
  return DeleteIn(SettingsList(), group, key);
}

bool LUserSettingGetPassword(std::string_view section, std::string_view key, std::string& out) {
  return GetFrom(PasswordList(), section, key, out);
}

bool LUserSettingSetPassword(std::string_view section, std::string_view key, std::string_view secret) {
  LFileStoreListBase list = PasswordList();
  // Created empty and restricted first, so the secret is never readable by others.
  if (!list.TestRecordExists(section)) {
    LRecord empty;
    list.CreateNewRecord(empty, section);
    if (!empty.Flush()) return false;
  }
  RestrictToOwner(list, section);
  return SetIn(list, section, key, secret);
}

bool LUserSettingDeletePassword(std::string_view section, std::string_view key) {
  return DeleteIn(PasswordList(), section, key);
}
