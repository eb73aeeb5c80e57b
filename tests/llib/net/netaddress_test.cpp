// Host and port texts, and the reading of mail exchanger answers from a name server.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "llib/net/dnsmx.h"
#include "llib/net/ipaddress.h"

namespace {

TEST(IPAddress, HostAndPortTexts) {
  LIPAddressWithPort address;
  ASSERT_TRUE(LIPAddressWithPort::Parse("smtp.exemple.fr", 587, address));
  EXPECT_EQ(address.Host(), "smtp.exemple.fr");
  EXPECT_EQ(address.Port(), 587);
  ASSERT_TRUE(LIPAddressWithPort::Parse(" smtp.exemple.fr:2525 ", 587, address));
  EXPECT_EQ(address.Port(), 2525);
  ASSERT_TRUE(LIPAddressWithPort::Parse("[::1]:25", 587, address));
  EXPECT_EQ(address.Host(), "::1");
  EXPECT_EQ(address.Port(), 25);
  EXPECT_EQ(address.ToText(), "[::1]:25");
  ASSERT_TRUE(LIPAddressWithPort::Parse("fe80::1", 587, address));
  EXPECT_EQ(address.Host(), "fe80::1");
  EXPECT_EQ(address.Port(), 587);
  ASSERT_TRUE(LIPAddressWithPort::Parse("[::1]", 25, address));
  EXPECT_EQ(address.Port(), 25);
}

TEST(IPAddress, RefusedTextsLeaveTheAddressAlone) {
  LIPAddressWithPort address("kept.fr", 25);
  for (const char* text : {"", "  ", ":25", "h:", "h:0", "h:65536", "h:25x", "h:-1", "[::1", "[::1]x", "[]:25"})
    EXPECT_FALSE(LIPAddressWithPort::Parse(text, 587, address)) << text;
  EXPECT_EQ(address.ToText(), "kept.fr:25");
}

TEST(IPAddress, LocalNameIsNeverEmpty) {
  std::string name;
  LIPGetLocalFQDN(name);
  EXPECT_FALSE(name.empty());
  std::string again;
  LIPGetLocalFQDN(again);
  EXPECT_EQ(name, again);
}

// Builds DNS responses by hand: header, one question, answer records.
class DnsAnswer {
 public:
  explicit DnsAnswer(int answers) {
    Put16(0x1234);          // id
    Put16(0x8180);          // response, recursion desired and available, no error
    Put16(1);               // one question
    Put16(static_cast<uint16_t>(answers));
    Put16(0);
    Put16(0);
    questionNameAt_ = bytes_.size();
    PutName("exemple.fr");
    Put16(15);  // MX
    Put16(1);   // IN
  }
  // An MX answer for the question's name (compressed) naming exchanger.
  DnsAnswer& Mx(int preference, const std::string& exchanger, uint16_t type = 15) {
    PutPointer(questionNameAt_);
    Put16(type);
    Put16(1);
    Put16(0);
    Put16(300);  // TTL
    std::vector<uint8_t> data;
    data.push_back(static_cast<uint8_t>(preference >> 8));
    data.push_back(static_cast<uint8_t>(preference));
    std::vector<uint8_t> name = Name(exchanger);
    data.insert(data.end(), name.begin(), name.end());
    Put16(static_cast<uint16_t>(data.size()));
    bytes_.insert(bytes_.end(), data.begin(), data.end());
    return *this;
  }
  const std::vector<uint8_t>& Bytes() const { return bytes_; }

 private:
  static std::vector<uint8_t> Name(const std::string& name) {
    std::vector<uint8_t> out;
    std::size_t start = 0;
    while (start < name.size()) {
      std::size_t dot = name.find('.', start);
      if (dot == std::string::npos) dot = name.size();
      out.push_back(static_cast<uint8_t>(dot - start));
      out.insert(out.end(), name.begin() + static_cast<long>(start), name.begin() + static_cast<long>(dot));
      start = dot + 1;
    }
    out.push_back(0);
    return out;
  }
  void Put16(uint16_t value) {
    bytes_.push_back(static_cast<uint8_t>(value >> 8));
    bytes_.push_back(static_cast<uint8_t>(value));
  }
  void PutName(const std::string& name) {
    std::vector<uint8_t> encoded = Name(name);
    bytes_.insert(bytes_.end(), encoded.begin(), encoded.end());
  }
  void PutPointer(std::size_t offset) { Put16(static_cast<uint16_t>(0xC000 | offset)); }

  std::vector<uint8_t> bytes_;
  std::size_t questionNameAt_ = 0;
};

LMXAnswer ParseAnswer(const std::vector<uint8_t>& bytes, std::string& host) {
  return LParseMXAnswer(bytes.data(), bytes.size(), host);
}

TEST(MXAnswer, TheLowestPreferenceWinsAndTheFirstOfEquals) {
  std::string host;
  DnsAnswer answer(3);
  answer.Mx(20, "mx2.exemple.fr").Mx(10, "mx1.exemple.fr").Mx(10, "mx1b.exemple.fr");
  ASSERT_EQ(ParseAnswer(answer.Bytes(), host), LMXAnswer::kFound);
  EXPECT_EQ(host, "mx1.exemple.fr");
}

TEST(MXAnswer, OtherRecordTypesAndEmptyAnswersNameNoExchanger) {
  std::string host = "unchanged";
  DnsAnswer cname(1);
  cname.Mx(10, "ailleurs.exemple.fr", 5);
  EXPECT_EQ(ParseAnswer(cname.Bytes(), host), LMXAnswer::kNone);
  EXPECT_EQ(ParseAnswer(DnsAnswer(0).Bytes(), host), LMXAnswer::kNone);
  EXPECT_EQ(host, "unchanged");
}

TEST(MXAnswer, ANullExchangerMeansTheDomainTakesNoMail) {
  std::string host;
  DnsAnswer answer(1);
  answer.Mx(0, "");
  EXPECT_EQ(ParseAnswer(answer.Bytes(), host), LMXAnswer::kNoMail);
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

}  // namespace
