#include "llib/net/emailmime.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <ctime>
#include <optional>
#include <utility>

#include "tests/support/envscope.h"

namespace {

// Decodes a run of "=?utf-8?B?...?=" words joined by separator; fails the test on anything else.
std::string DecodeWords(std::string_view encoded, std::string_view separator) {
  std::string decoded;
  while (!encoded.empty()) {
    EXPECT_EQ(encoded.substr(0, 10), "=?utf-8?B?");
    std::size_t end = encoded.find("?=", 10);
    EXPECT_NE(end, std::string_view::npos);
    if (end == std::string_view::npos) return decoded;
    EXPECT_LE(end + 2, 75u) << "encoded word longer than 75 characters";
    std::string_view base64 = encoded.substr(10, end - 10);
    std::string bytes(base64.size(), '\0');
    int size = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()),
                               reinterpret_cast<const unsigned char*>(base64.data()), static_cast<int>(base64.size()));
    bytes.resize(static_cast<std::size_t>(size));
    while (base64.ends_with('=')) base64.remove_suffix(1), bytes.pop_back();  // padding decodes as NUL bytes
    // Each word must hold whole UTF-8 characters.
    EXPECT_NE(static_cast<unsigned char>(bytes.front()) & 0xC0, 0x80);
    decoded += bytes;
    encoded.remove_prefix(end + 2);
    if (!encoded.empty()) {
      EXPECT_EQ(encoded.substr(0, separator.size()), separator);
      encoded.remove_prefix(separator.size());
    }
  }
  return decoded;
}

// TZ set for the life of the object, the C library told both times.
class ZoneGuard {
 public:
  explicit ZoneGuard(const char* zone) {
    tz_.emplace("TZ", zone);
    ::tzset();
  }
  ~ZoneGuard() {
    tz_.reset();
    ::tzset();
  }

 private:
  std::optional<LEnvScope> tz_;
};

TEST(EmailMime, PlainAsciiTextIsLeftAsItIs) {
  std::string out = "old";
  LRFC2047Encode(out, "Facture 1042 - \"Dupont\" (mars)");
  EXPECT_EQ(out, "Facture 1042 - \"Dupont\" (mars)");
  LRFC2047Encode(out, "");
  EXPECT_EQ(out, "");
}

TEST(EmailMime, NonAsciiTextBecomesEncodedWordsCutBetweenCharacters) {
  std::string out;
  LRFC2047Encode(out, "Facture été");
  EXPECT_EQ(out, "=?utf-8?B?RmFjdHVyZSDDqXTDqQ==?=");
  // 60 two-byte characters do not fit one word; the cut never splits a character.
  std::string accents;
  for (int i = 0; i < 60; ++i) accents += "é";
  std::string text = "x" + accents + "€";
  LRFC2047Encode(out, text);
  EXPECT_NE(out.find("\r\n "), std::string::npos);
  EXPECT_EQ(DecodeWords(out, "\r\n "), text);
}

TEST(EmailMime, LineBreaksAndEncodedWordLookalikesAreEncodedSoNoHeaderCanBeInjected) {
  std::string out;
  LRFC2047Encode(out, "Facture\r\nBcc: espion@exemple.fr");
  // Every line break is a fold: a blank follows, so no line of its own begins.
  for (std::size_t at = out.find('\n'); at != std::string::npos; at = out.find('\n', at + 1))
    EXPECT_EQ(out[at + 1], ' ');
  EXPECT_EQ(out.find("Bcc"), std::string::npos);
  EXPECT_EQ(DecodeWords(out, "\r\n "), "Facture\r\nBcc: espion@exemple.fr");
  LRFC2047Encode(out, "=?utf-8?B?eA==?=");
  EXPECT_EQ(DecodeWords(out, "\r\n "), "=?utf-8?B?eA==?=");
}

TEST(EmailMime, QuotedParametersAlsoEncodeQuotesAndBackslashesAndJoinWordsWithABlank) {
  std::string out;
  LRFC2047Encode(out, "devis \"final\".pdf", LRFC2047Use::kQuotedParameter);
  EXPECT_EQ(out.find('"'), std::string::npos);
  EXPECT_EQ(DecodeWords(out, " "), "devis \"final\".pdf");
  LRFC2047Encode(out, "devis-final.pdf", LRFC2047Use::kQuotedParameter);
  EXPECT_EQ(out, "devis-final.pdf");
  std::string longName(100, 'n');
  LRFC2047Encode(out, longName + "é", LRFC2047Use::kQuotedParameter);
  EXPECT_EQ(out.find("\r\n"), std::string::npos);
  EXPECT_EQ(DecodeWords(out, " "), longName + "é");
}

TEST(EmailMime, DateHeaderUsesEnglishNamesAndTheLocalZoneOffset) {
  const std::time_t when = 1709643789;  // 2024-03-05 13:03:09 UTC, a Tuesday
  {
    ZoneGuard zone("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(LEmailFormatDate(when), "Tue, 05 Mar 2024 14:03:09 +0100");
    EXPECT_EQ(LEmailFormatDate(when + 120 * 86400), "Wed, 03 Jul 2024 15:03:09 +0200");
  }
  ZoneGuard zone("NST+3:30");
  EXPECT_EQ(LEmailFormatDate(when), "Tue, 05 Mar 2024 09:33:09 -0330");
}

TEST(EmailMime, BoundaryTakesTheSmallestSuffixFoundInNeitherText) {
  EXPECT_EQ(LEmailChooseBoundary("Bonjour", ""), "gc0p4Jq0M2Yt08jU534c0");
  EXPECT_EQ(LEmailChooseBoundary("voir gc0p4Jq0M2Yt08jU534c0 ici", ""), "gc0p4Jq0M2Yt08jU534c1");
  EXPECT_EQ(LEmailChooseBoundary("gc0p4Jq0M2Yt08jU534c0", "<p>gc0p4Jq0M2Yt08jU534c1</p>"), "gc0p4Jq0M2Yt08jU534c2");
  // "…c1" occurs inside "…c10" as well.
  EXPECT_EQ(LEmailChooseBoundary("gc0p4Jq0M2Yt08jU534c0 gc0p4Jq0M2Yt08jU534c10", ""), "gc0p4Jq0M2Yt08jU534c2");
  std::string all;
  for (int i = 0; i < 100; ++i) all += "gc0p4Jq0M2Yt08jU534c" + std::to_string(i) + "\n";
  EXPECT_EQ(LEmailChooseBoundary(all, ""), "gc0p4Jq0M2Yt08jU534c99");
}

TEST(EmailMime, AttachmentTypesAndNames) {
  using Case = std::pair<const char*, const char*>;
  for (const auto& [path, type] : {Case{"/tmp/SON.WAV", "audio/wav"}, Case{"musique.mp3", "audio/mpeg"},
                                   Case{"Facture-12.pdf", "application/octet-stream"},
                                   Case{"wav", "application/octet-stream"}})
    EXPECT_EQ(LEmailAttachmentContentType(path), type) << path;
  EXPECT_EQ(LEmailAttachmentName("/home/u/Documents/Facture 12.pdf"), "Facture 12.pdf");
  EXPECT_EQ(LEmailAttachmentName("seul.pdf"), "seul.pdf");
  EXPECT_EQ(LEmailAttachmentName(std::string(300, 'n')).size(), 258u);
  // 257 bytes, then a two-byte character across the 258th byte: the character goes whole.
  std::string name = std::string(257, 'n') + "é.pdf";
  EXPECT_EQ(LEmailAttachmentName("/x/" + name), std::string(257, 'n'));
}

TEST(EmailMime, LinesPastSevenHundredBytesAreCutAfterTheirLastBlank) {
  EXPECT_EQ(LEmailCutLength(std::string(700, 'a')), 700u);
  EXPECT_EQ(LEmailCutLength(std::string(1000, 'a')), 700u);
  std::string words = std::string(650, 'a') + " " + std::string(100, 'b');
  EXPECT_EQ(LEmailCutLength(words), 651u);
  // A blank after the 700th byte does not count.
  std::string late = std::string(700, 'a') + " b";
  EXPECT_EQ(LEmailCutLength(late), 700u);
  // Without a blank the cut moves back to the start of a UTF-8 character.
  std::string accents = std::string(699, 'a') + "é" + std::string(10, 'a');
  EXPECT_EQ(LEmailCutLength(accents), 699u);
}

}  // namespace
