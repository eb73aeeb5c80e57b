#include "llib/net/emailmime.h"

#include <cstdio>

#include "llib/gen/base64.h"
#include "llib/gen/textcase.h"

namespace {

// Bytes of text in one encoded word: 45 bytes give 60 base64 characters, and with
// "=?utf-8?B?" and "?=" the word stays within the 75 characters RFC 2047 allows.
constexpr std::size_t kEncodedWordTextBytes = 45;
constexpr std::size_t kMaxAttachmentNameBytes = 258;
constexpr int kBoundaryCandidates = 100;

bool IsUtf8Continuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// Moves a cut position back to the start of a UTF-8 character; keeps it when it cannot.
std::size_t CharacterStart(std::string_view text, std::size_t cut) {
  std::size_t start = cut;
  while (start > 0 && start < text.size() && IsUtf8Continuation(text[start])) --start;
  return start > 0 ? start : cut;
}

bool NeedsEncoding(std::string_view text, LRFC2047Use use) {
  for (char c : text) {
    auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x7F || (byte < 0x20 && c != '\t')) return true;
    if (use == LRFC2047Use::kQuotedParameter && (c == '"' || c == '\\')) return true;
  }
  return text.find("=?") != std::string_view::npos;
}

}  // namespace

void LRFC2047Encode(std::string& out, std::string_view text, LRFC2047Use use) {
  if (!NeedsEncoding(text, use)) {
    out.assign(text);
    return;
  }
  out.clear();
  std::string_view separator = use == LRFC2047Use::kHeaderText ? "\r\n " : " ";
  while (!text.empty()) {
    std::size_t take = text.size() <= kEncodedWordTextBytes ? text.size() : CharacterStart(text, kEncodedWordTextBytes);
    if (!out.empty()) out += separator;
    out += "=?utf-8?B?";
    LBase64EncodeAppend(text.substr(0, take), out);
    out += "?=";
    text.remove_prefix(take);
  }
}

std::string LEmailFormatDate(std::time_t when) {
  static constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  std::tm local{};
  ::localtime_r(&when, &local);
  long offsetMinutes = local.tm_gmtoff / 60;
  const char* sign = offsetMinutes < 0 ? "-" : "+";
  if (offsetMinutes < 0) offsetMinutes = -offsetMinutes;
  char text[64];
  std::snprintf(text, sizeof text, "%s, %.2d %s 20%.2d %.2d:%.2d:%.2d %s%.2ld%.2ld", kDays[local.tm_wday],
                local.tm_mday, kMonths[local.tm_mon], local.tm_year % 100, local.tm_hour, local.tm_min,
                local.tm_sec, sign, offsetMinutes / 60, offsetMinutes % 60);
  return text;
}

std::string LEmailChooseBoundary(std::string_view text, std::string_view html) {
  std::string boundary;
  for (int suffix = 0; suffix < kBoundaryCandidates; ++suffix) {
    boundary = "gc0p4Jq0M2Yt08jU534c" + std::to_string(suffix);
    if (text.find(boundary) == std::string_view::npos && html.find(boundary) == std::string_view::npos) break;
  }
  return boundary;
}

std::string_view LEmailAttachmentContentType(std::string_view path) {
  if (LEndsWithText(path, ".wav")) return "audio/wav";
  if (LEndsWithText(path, ".mp3")) return "audio/mpeg";
  return "application/octet-stream";
}

std::string LEmailAttachmentName(std::string_view path) {
  std::size_t slash = path.find_last_of('/');
  std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
  if (name.size() > kMaxAttachmentNameBytes) name = name.substr(0, CharacterStart(name, kMaxAttachmentNameBytes));
  return std::string(name);
}

std::size_t LEmailCutLength(std::string_view line) {
  if (line.size() <= kEmailMaxLineBytes) return line.size();
  std::size_t blank = line.substr(0, kEmailMaxLineBytes).find_last_of(' ');
  if (blank != std::string_view::npos) return blank + 1;
  return CharacterStart(line, kEmailMaxLineBytes);
}
