// JSON output that never fails on its text. The JSON library refuses to write a string that is
// not valid UTF-8 (it throws out of dump()), and record text written by older programs is often
// Latin-1 or Windows-1252: every JSON document the program prints goes through LJsonDump, which
// reads such bytes as Windows-1252 (llib/gen/utf8.h) in values and names alike, then writes the
// document with any byte still invalid replaced, so no output ever throws.
#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <utility>

#include "llib/gen/utf8.h"

// Makes every string of value, and every member name, valid UTF-8 (see LTextAsUtf8).
template <class Json>
void LJsonMakeTextReadable(Json& value) {
  if (value.is_string()) {
    auto& text = value.template get_ref<typename Json::string_t&>();
    if (!LIsValidUtf8(text)) text = LTextAsUtf8(text);
  } else if (value.is_array()) {
    for (auto& item : value) LJsonMakeTextReadable(item);
  } else if (value.is_object()) {
    bool namesValid = true;
    for (auto it = value.begin(); it != value.end(); ++it) {
      namesValid = namesValid && LIsValidUtf8(it.key());
      LJsonMakeTextReadable(it.value());
    }
    if (namesValid) return;
    Json renamed = Json::object();
    for (auto it = value.begin(); it != value.end(); ++it) renamed[LTextAsUtf8(it.key())] = std::move(it.value());
    value = std::move(renamed);
  }
}

// The document as JSON text (one line, or indented by indent spaces).
template <class Json>
std::string LJsonDump(Json document, int indent = -1) {
  LJsonMakeTextReadable(document);
  return document.dump(indent, ' ', false, Json::error_handler_t::replace);
}
