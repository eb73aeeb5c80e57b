// LHashTable: an ordered name/value text table, kept in byte-wise (strcmp) order of the names.
// It holds option blobs, web forms and parameter strings, and reads and writes them as HTTP
// strings ("name=value&name=value", percent-encoded). Loading does not replace an existing name:
// a duplicate is inserted beside it, and a lookup then finds one of the two.
#pragma once

#include <map>
#include <string>
#include <string_view>

#include "llib/gen/text.h"

class LHashTable {
 public:
  // Replaces the value of name, or inserts the pair.
  void SetString(std::string_view name, std::string_view value);
  // SetParm and SetParmBottom are exactly SetString: the table keeps no insertion order, so
  // "bottom" means nothing. Both names stay because callers use both.
  void SetParm(std::string_view name, std::string_view value) { SetString(name, value); }
  void SetParmBottom(std::string_view name, std::string_view value) { SetString(name, value); }

  // The stored text, or def when absent. The pointer lives until the table changes.
  const char* GetParm(std::string_view name, const char* def) const;
  const char* GetString(std::string_view name, const char* def) const { return GetParm(name, def); }
  // At most 259 bytes of the above.
  void GetString(std::string_view name, std::string_view def, LTextBuffer& out) const;
  // The whole text.
  void GetString(std::string_view name, std::string_view def, std::string& out) const;

  // Empty or absent: def; otherwise strtol of at most 259 bytes of the text.
  int GetInt(std::string_view name, int def) const;
  // Empty or absent: def; otherwise true exactly when the text begins with "1" (unlike
  // LRecord::GetBool, which is true for any non-zero number).
  bool GetBool(std::string_view name, bool def) const;

  bool TestFieldExists(std::string_view name) const;
  void DeleteField(std::string_view name);

  // Inserts every pair of text whose decoded name is non-empty. The table is not cleared first.
  void LoadHTTPStringUTF8(std::string_view text);
  void LoadHTTPString(std::string_view text) { LoadHTTPStringUTF8(text); }
  // Writes every pair in ascending name order, encoded, joined by "&"; empty table, empty text.
  void SaveHTTPString(std::string& out) const;

  bool IsEmpty() const { return nodes_.empty(); }
  std::size_t Count() const { return nodes_.size(); }
  void Clear() { nodes_.clear(); }

  // Pairs in ascending name order.
  using const_iterator = std::multimap<std::string, std::string, std::less<>>::const_iterator;
  const_iterator begin() const { return nodes_.begin(); }
  const_iterator end() const { return nodes_.end(); }

 private:
  std::multimap<std::string, std::string, std::less<>> nodes_;  // name -> value, strcmp order
};
