#include "llib/gen/hashtable.h"

#include "llib/gen/percent.h"
#include "llib/gen/textnum.h"

void LHashTable::SetString(std::string_view name, std::string_view value) {
  auto it = nodes_.find(name);
  if (it != nodes_.end()) {
    it->second.assign(value);
  } else {
    nodes_.emplace(std::string(name), std::string(value));
  }
}

const char* LHashTable::GetParm(std::string_view name, const char* def) const {
  auto it = nodes_.find(name);
  return it == nodes_.end() ? def : it->second.c_str();
}

void LHashTable::GetString(std::string_view name, std::string_view def, LTextBuffer& out) const {
  auto it = nodes_.find(name);
  LCopyTruncated(out, it == nodes_.end() ? def : std::string_view(it->second));
}

void LHashTable::GetString(std::string_view name, std::string_view def, std::string& out) const {
  auto it = nodes_.find(name);
  out.assign(it == nodes_.end() ? def : std::string_view(it->second));
}

int LHashTable::GetInt(std::string_view name, int def) const {
  auto it = nodes_.find(name);
  if (it == nodes_.end() || it->second.empty()) return def;
  return LTextToInt(LTruncated(it->second, kMaxTextBytes));
}

bool LHashTable::GetBool(std::string_view name, bool def) const {
  auto it = nodes_.find(name);
  if (it == nodes_.end() || it->second.empty()) return def;
  return it->second[0] == '1';
}

bool LHashTable::TestFieldExists(std::string_view name) const {
  return nodes_.find(name) != nodes_.end();
}

void LHashTable::DeleteField(std::string_view name) {
  auto it = nodes_.find(name);
  if (it != nodes_.end()) nodes_.erase(it);
}

void LHashTable::LoadHTTPStringUTF8(std::string_view text) {
  LParseHTTPString(text, [this](std::string&& name, std::string&& value) {
    if (!name.empty()) nodes_.emplace(std::move(name), std::move(value));
  });
}

void LHashTable::SaveHTTPString(std::string& out) const {
  out.clear();
  bool first = true;
  for (const auto& [name, value] : nodes_) {
    if (!first) out.push_back('&');
    first = false;
    LPercentEncodeAppend(name, out);
    out.push_back('=');
    LPercentEncodeAppend(value, out);
  }
}
