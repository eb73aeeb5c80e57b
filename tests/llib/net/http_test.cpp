// The HTTPS client's reading of addresses and answers: lengths, chunks, answers that end with
// the connection, and the malformed or oversized ones it must refuse.
#include <gtest/gtest.h>

#include <string>

#include "llib/net/http.h"

namespace {

TEST(HttpUrlTest, AddressesAreSplitAndOnlyHttpsIsTaken) {
  std::string host, target;
  int port = 0;
  ASSERT_TRUE(LHttpSplitUrl("https://test-api.service.hmrc.gov.uk/oauth/token", host, port, target));
  EXPECT_EQ(host, "test-api.service.hmrc.gov.uk");
  EXPECT_EQ(port, 443);
  EXPECT_EQ(target, "/oauth/token");
  ASSERT_TRUE(LHttpSplitUrl("https://127.0.0.1:8443?a=b", host, port, target));
  EXPECT_EQ(port, 8443);
  EXPECT_EQ(target, "/?a=b");
  ASSERT_TRUE(LHttpSplitUrl("https://[::1]:9/x", host, port, target));
  EXPECT_EQ(host, "::1");
  EXPECT_FALSE(LHttpSplitUrl("http://example.com/", host, port, target));
  EXPECT_FALSE(LHttpSplitUrl("https://host:0/", host, port, target));
  EXPECT_FALSE(LHttpSplitUrl("https://host:99999/", host, port, target));
  EXPECT_FALSE(LHttpSplitUrl("https:///path", host, port, target));
}

TEST(HttpAnswerTest, ALengthDelimitedAnswerIsCompleteOnceItsBodyArrived) {
  LHttpResponse response;
  std::string answer = "HTTP/1.1 201 Created\r\nContent-Type: application/json\r\ncontent-length: 5\r\nReceipt-ID: r1\r\n\r\n";
  EXPECT_EQ(LHttpParseAnswer(answer + "{\"a\"", false, 100, response), LHttpAnswerState::kIncomplete);
  ASSERT_EQ(LHttpParseAnswer(answer + "{\"a\"}extra", false, 100, response), LHttpAnswerState::kComplete);
  EXPECT_EQ(response.status, 201);
  EXPECT_EQ(response.body, "{\"a\"}");
  EXPECT_EQ(response.Header("Receipt-Id"), "r1");
  EXPECT_EQ(response.Header("CONTENT-LENGTH"), "5");
  EXPECT_EQ(response.Header("Missing"), "");
}

TEST(HttpAnswerTest, ChunksAreJoinedAndAnUnlengthedBodyEndsWithTheConnection) {
  LHttpResponse response;
  std::string chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nabcd\r\n3;x=y\r\nefg\r\n0\r\n";
  EXPECT_EQ(LHttpParseAnswer(chunked, false, 100, response), LHttpAnswerState::kIncomplete);
  ASSERT_EQ(LHttpParseAnswer(chunked + "\r\n", false, 100, response), LHttpAnswerState::kComplete);
  EXPECT_EQ(response.body, "abcdefg");
  EXPECT_EQ(LHttpParseAnswer("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n", false, 100, response),
            LHttpAnswerState::kBad);

  std::string open = "HTTP/1.0 404 Not Found\r\n\r\n{\"code\":\"NOT_FOUND\"}";
  EXPECT_EQ(LHttpParseAnswer(open, false, 100, response), LHttpAnswerState::kIncomplete);
  ASSERT_EQ(LHttpParseAnswer(open, true, 100, response), LHttpAnswerState::kComplete);
  EXPECT_EQ(response.status, 404);
  EXPECT_EQ(response.body, "{\"code\":\"NOT_FOUND\"}");
}

TEST(HttpAnswerTest, MalformedAndOversizedAnswersAreRefused) {
  LHttpResponse response;
  for (const char* answer : {"SMTP 220 hello\r\n\r\n", "HTTP/1.1 2x0 OK\r\n\r\n", "HTTP/1.1\r\n\r\n",
                             "HTTP/1.1 099 Low\r\n\r\n", "HTTP/1.1 200 OK\r\nContent-Length: 5x\r\n\r\n",
                             "HTTP/1.1 200 OK\r\nContent-Length: 101\r\n\r\n"})
    EXPECT_EQ(LHttpParseAnswer(answer, true, 100, response), LHttpAnswerState::kBad) << answer;
  EXPECT_EQ(LHttpParseAnswer(std::string(70000, 'x'), false, 100, response), LHttpAnswerState::kBad);
  EXPECT_EQ(LHttpParseAnswer("HTTP/1.1 200 OK\r\n\r\n" + std::string(101, 'x'), false, 100, response),
            LHttpAnswerState::kBad);
  EXPECT_EQ(LHttpParseAnswer("HTTP/1.1 204 No Content\r\n\r\n", false, 100, response), LHttpAnswerState::kComplete);
}

}  // namespace
