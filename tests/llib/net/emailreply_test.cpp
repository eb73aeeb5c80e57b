// The SMTP reply reader on its own bytes; over real connections see emailbadserver_test.cpp.
#include "llib/net/emailreply.h"

#include <gtest/gtest.h>

namespace {

// Feeds text whole and returns the parser.
LSmtpReplyParser Parse(std::string_view text, std::size_t* used = nullptr) {
  LSmtpReplyParser parser;
  std::size_t count = parser.Feed(text);
  if (used != nullptr) *used = count;
  return parser;
}

TEST(SmtpReply, CodeTextAndStartTlsOfAWholeReply) {
  // Continuation lines end at the first line without a hyphen as fourth character.
  LSmtpReplyParser parser = Parse("250-mail.test\r\n250-SIZE 1000\r\n250-8BITMIME\r\n250 HELP\r\n");
  ASSERT_TRUE(parser.IsComplete());
  EXPECT_EQ(parser.Code(), 250);
  EXPECT_TRUE(Parse("2500-x\r\n").IsComplete());
  // The text is what follows the first colon of the last line.
  parser = Parse("550-first: ignored\r\n550 5.1.1 <a@b.fr>: Recipient rejected: inconnu\r\n");
  EXPECT_EQ(parser.Code(), 550);
  EXPECT_EQ(parser.Text(), " Recipient rejected: inconnu");
  EXPECT_EQ(Parse("220 pas de deux-points\n").Text(), "");
  EXPECT_EQ(Parse("220 fin:\r\n").Text(), "");
  // STARTTLS is noticed on any line, in capitals only.
  EXPECT_TRUE(Parse("250-mail.test\r\n250-STARTTLS\r\n250 HELP\r\n").OffersStartTls());
  EXPECT_FALSE(Parse("250-starttls\r\n250 OK\r\n").OffersStartTls());
  EXPECT_FALSE(Parse("250 HELP\r\n").OffersStartTls());
}

TEST(SmtpReply, ShortLinesAndOddCodesEndTheReply) {
  EXPECT_EQ(Parse("250\r\n").Code(), 250);
  EXPECT_EQ(Parse("25\n").Code(), 25);
  EXPECT_EQ(Parse("\r\n").Code(), 0);
  EXPECT_EQ(Parse("abc-\r\nxyz OK\r\n").Code(), 0);
  EXPECT_EQ(Parse("99999999999999 huge\r\n").Code(), 999999999);  // nine digits at most: no overflow
}

TEST(SmtpReply, BytesAfterTheReplyAreLeftForTheNextOne) {
  std::size_t used = 0;
  std::string_view two = "250 OK\r\n354 go on\r\n";
  LSmtpReplyParser first = Parse(two, &used);
  EXPECT_EQ(used, 8u);
  EXPECT_EQ(first.Code(), 250);
  EXPECT_EQ(first.Feed("more"), 0u);
  EXPECT_EQ(Parse(two.substr(used)).Code(), 354);
}

TEST(SmtpReply, RepliesCanArriveByteByByte) {
  std::string_view text = "220-bienvenue: un\r\n220 mail.test: prêt\r\n";
  LSmtpReplyParser parser;
  for (char c : text) {
    ASSERT_FALSE(parser.IsComplete());
    EXPECT_EQ(parser.Feed(std::string_view(&c, 1)), 1u);
  }
  EXPECT_EQ(parser.Code(), 220);
  EXPECT_EQ(parser.Text(), " prêt");
}

TEST(SmtpReply, OnlyTheFirst258CharactersOfALineAreKept) {
  std::string line = "554 " + std::string(254, 'a') + ":" + std::string(600, 'b') + "\r\n";
  // The colon is byte 259: beyond what is kept, so no text.
  EXPECT_EQ(Parse(line).Text(), "");
  std::string early = "554 x:" + std::string(600, 'b') + "\r\n";
  EXPECT_EQ(Parse(early).Text(), std::string(252, 'b'));
}

TEST(SmtpReply, AReplyThatNeverEndsIsCutAtItsByteLimit) {
  LSmtpReplyParser parser;
  std::string line = "250-" + std::string(100, 'x') + "\r\n";
  std::size_t total = 0;
  while (!parser.IsTooLong() && total < 2 * LSmtpReplyParser::kMaxReplyBytes) total += parser.Feed(line);
  EXPECT_TRUE(parser.IsTooLong());
  EXPECT_FALSE(parser.IsComplete());
  EXPECT_EQ(total, LSmtpReplyParser::kMaxReplyBytes);
  EXPECT_EQ(parser.Feed("250 OK\r\n"), 0u);
}

}  // namespace
