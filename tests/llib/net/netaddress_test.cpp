// Host and port texts, and the reading of mail exchanger answers from a name server.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "llib/net/dnsmx.h"
#include "llib/net/ipaddress.h"

namespace {

TEST(IPAddress, HostAndPortTexts) {
  // Blanks trimmed; the default port when none is given; IPv6 addresses bare or in brackets.
  const struct {
    const char* text;
    const char* host;
    int port;
  } cases[] = {{"smtp.exemple.fr", "smtp.exemple.fr", 587}, {" smtp.exemple.fr:2525 ", "smtp.exemple.fr", 2525},
               {"[::1]:25", "::1", 25}, {"fe80::1", "fe80::1", 587}, {"[::1]", "::1", 587}};
  for (const auto& test : cases) {
    LIPAddressWithPort address;
    ASSERT_TRUE(LIPAddressWithPort::Parse(test.text, 587, address)) << test.text;
    EXPECT_EQ(address.Host(), test.host);
    EXPECT_EQ(address.Port(), test.port) << test.text;
  }
  EXPECT_EQ(LIPAddressWithPort("::1", 25).ToText(), "[::1]:25");
}

TEST(IPAddress, RefusedTextsLeaveTheAddressAlone) {
  LIPAddressWithPort address("kept.fr", 25);
  for (const char* text : {"", "  ", ":25", "h:", "h:0", "h:65536", "h:25x", "h:-1", "[::1", "[::1]x", "[]:25"})
    EXPECT_FALSE(LIPAddressWithPort::Parse(text, 587, address)) << text;
  EXPECT_EQ(address.ToText(), "kept.fr:25");
  std::string name;
  LIPGetLocalFQDN(name);
  EXPECT_FALSE(name.empty());
}

// Builds DNS responses by hand: header, one question for "exemple.fr" MX, answer records.
class DnsAnswer {
 public:
  explicit DnsAnswer(int answers) {
    for (int value : {0x1234, 0x8180, 1, answers, 0, 0}) Put16(value);  // id, flags, counts
    PutName("exemple.fr");
    Put16(15);  // MX
    Put16(1);   // IN
  }
  // An MX answer for the question's name (a pointer to it) naming exchanger.
  DnsAnswer& Mx(int preference, const std::string& exchanger, int type = 15) {
    int dataSize = 2 + (exchanger.empty() ? 1 : static_cast<int>(exchanger.size()) + 2);
    for (int value : {0xC000 | kQuestionNameAt, type, 1, 0, 300, dataSize, preference}) Put16(value);
    PutName(exchanger);
    return *this;
  }
  const std::vector<uint8_t>& Bytes() const { return bytes_; }

 private:
  static constexpr int kQuestionNameAt = 12;
  void Put16(int value) {
    bytes_.push_back(static_cast<uint8_t>(value >> 8));
    bytes_.push_back(static_cast<uint8_t>(value));
  }
  // Labels with their lengths, then the root.
  void PutName(const std::string& name) {
    for (std::size_t start = 0; start < name.size();) {
      std::size_t dot = std::min(name.find('.', start), name.size());
      bytes_.push_back(static_cast<uint8_t>(dot - start));
      bytes_.insert(bytes_.end(), name.begin() + static_cast<long>(start), name.begin() + static_cast<long>(dot));
      start = dot + 1;
    }
    bytes_.push_back(0);
  }

  std::vector<uint8_t> bytes_;
};

LMXAnswer ParseAnswer(const std::vector<uint8_t>& bytes, std::string& host) {
  return LParseMXAnswer(bytes.data(), bytes.size(), host);
}

// The lowest preference wins, the first of equals; other record types and empty answers name no
// exchanger and leave the host alone; a null exchanger means the domain takes no mail.
TEST(MXAnswer, WhichExchangerAnAnswerNames) {
  const struct {
    DnsAnswer answer;
    LMXAnswer result;
    const char* host;
  } cases[] = {
      {DnsAnswer(3).Mx(20, "mx2.exemple.fr").Mx(10, "mx1.exemple.fr").Mx(10, "mx1b.exemple.fr"), LMXAnswer::kFound,
       "mx1.exemple.fr"},
      {DnsAnswer(1).Mx(10, "ailleurs.exemple.fr", 5), LMXAnswer::kNone, "unchanged"},
      {DnsAnswer(0), LMXAnswer::kNone, "unchanged"},
      {DnsAnswer(1).Mx(0, ""), LMXAnswer::kNoMail, nullptr},
  };
  for (const auto& test : cases) {
    std::string host = "unchanged";
    EXPECT_EQ(ParseAnswer(test.answer.Bytes(), host), test.result);
    if (test.host != nullptr) {
      EXPECT_EQ(host, test.host);
    }
  }
}

TEST(MXAnswer, BrokenMessagesAreRefused) {
  std::string host;
  DnsAnswer answer(2);
  answer.Mx(10, "mx.exemple.fr").Mx(20, "mx2.exemple.fr");
  std::vector<uint8_t> bytes = answer.Bytes();
  for (std::size_t cut = 0; cut + 1 < bytes.size(); cut += 3) {
    std::vector<uint8_t> truncated(bytes.begin(), bytes.begin() + static_cast<long>(cut));
    EXPECT_EQ(ParseAnswer(truncated, host), LMXAnswer::kBroken) << "cut at " << cut;
  }
  // A name whose last label runs past the end of the message.
  std::vector<uint8_t> looping = bytes;
  looping[looping.size() - 2] = 0xC0;
  looping[looping.size() - 1] = 0xFF;
  EXPECT_EQ(ParseAnswer(looping, host), LMXAnswer::kBroken);
}

TEST(MXLookup, DomainsThatCannotExistFindNoExchanger) {
  // ".invalid" never resolves (RFC 6761), with or without a reachable name server.
  LIPAddressWithPort out("kept.fr", 25);
  EXPECT_FALSE(LIPAddressWithPort::EmailMXLookup("", out));
  EXPECT_FALSE(LIPAddressWithPort::EmailMXLookup("exemple.invalid", out));
  EXPECT_EQ(out.ToText(), "kept.fr:25");
}

}  // namespace
