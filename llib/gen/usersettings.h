// The per-user settings store (group, key -> text) and the password store (section, key ->
// secret). Both live in the per-user application folder, one record file per group or section
// ("Preferences/<group>.dat", "Keychain/<section>.dat"), so they share the record store's
// locking and merge rules: two processes changing different keys of one group both keep theirs.
// The "Keychain" folder is mode 0700 and its files mode 0600.
#pragma once

#include <string>
#include <string_view>

bool LUserSettingTestExists(std::string_view group, std::string_view key);
// The stored text; false (out emptied) when the key is absent.
bool _LUserSettingGetString(std::string_view group, std::string_view key, std::string& out);
// The stored text, or def when absent.
std::string LUserSettingGetString(std::string_view group, std::string_view key, std::string_view def = {});
// Each write below: false when the record file could not be written (the store logs why).
[[nodiscard]] bool LUserSettingSetString(std::string_view group, std::string_view key, std::string_view value);
[[nodiscard]] bool LUserSettingDelete(std::string_view group, std::string_view key);

// The stored secret; false (out emptied) when absent.
bool LUserSettingGetPassword(std::string_view section, std::string_view key, std::string& out);
[[nodiscard]] bool LUserSettingSetPassword(std::string_view section, std::string_view key, std::string_view secret);
[[nodiscard]] bool LUserSettingDeletePassword(std::string_view section, std::string_view key);
