#include "llib/web/webletrequest.h"

#include "llib/gen/percent.h"
#include "llib/gen/textcase.h"
#include "llib/gen/textnum.h"

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// The next word of text from pos, skipping blanks first; pos ends after the word.
std::string_view NextWord(std::string_view text, std::size_t& pos) {
  while (pos < text.size() && IsBlank(text[pos])) ++pos;
  std::size_t start = pos;
  while (pos < text.size() && !IsBlank(text[pos])) ++pos;
  return text.substr(start, pos - start);
}

}  // namespace

LWebletRequestLine LWebletParseRequestLine(std::string_view line) {
  line = LTruncated(line, kWebletLineBytes);
  LWebletRequestLine request;
  std::size_t pos = 0;
  request.method = NextWord(line, pos);
  request.uri = NextWord(line, pos);
  std::string_view protocol = NextWord(line, pos);
  std::size_t slash = protocol.find('/');
  if (slash != std::string_view::npos) request.version = ttofl(protocol.substr(slash + 1));
  return request;
}

int LWebletRequestKind(std::string_view method) {
  if (method == "GET") return kWebletGet;
  if (method == "POST") return kWebletPost;
  return -1;
}

void LWebletSplitUri(std::string_view uri, std::string& path, LHashTable& parameters) {
  std::size_t question = uri.find('?');
  if (question != std::string_view::npos) {
    parameters.LoadHTTPStringUTF8(uri.substr(question + 1));
    uri = uri.substr(0, question);
  }
  path = LPercentDecode(uri);
  if (path.size() > kWebletLineBytes) path.resize(kWebletLineBytes);
}

bool LWebletParseHeaderLine(std::string_view line, std::string& name, std::string& value) {
  name.clear();
  value.clear();
  std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) return false;
  std::size_t start = colon + 1;
  while (start < line.size() && static_cast<unsigned char>(line[start]) < 33) ++start;
  name.assign(line.substr(0, colon));
  value.assign(line.substr(start));
  return true;
}

const char* LWebletFindHeader(const LHashTable& headers, std::string_view name) {
  if (const char* exact = headers.GetParm(name, nullptr)) return exact;
  for (const auto& [headerName, headerValue] : headers)
    if (LSameText(headerName, name))
      return headerValue.c_str();
  return nullptr;
}

void LWebletCookieData::LoadCookieData(std::string_view header, LHashTable& cookies) {
  while (!header.empty()) {
    std::size_t semicolon = header.find(';');
    std::string_view item = header.substr(0, semicolon);
    header = semicolon == std::string_view::npos ? std::string_view() : header.substr(semicolon + 1);
    std::size_t start = 0;
    while (start < item.size() && static_cast<unsigned char>(item[start]) < 33) ++start;
    item.remove_prefix(start);
    std::size_t equals = item.find('=');
    std::string_view name = item.substr(0, equals);
    if (name.empty()) continue;
    std::string value;
    if (equals != std::string_view::npos) value = LPercentDecode(item.substr(equals + 1));
    if (value.size() > kMaxTextBytes) value.resize(kMaxTextBytes);
    cookies.SetParm(name, value);
  }
}

bool LWebletKeepAlive(double version, int kind, std::string_view connectionHeader) {
  // 1.1 read back from text may sit a hair below 1.1.
  return version >= 1.1 - 1e-9 && kind == kWebletGet &&
         connectionHeader.find("close") == std::string_view::npos;
}
