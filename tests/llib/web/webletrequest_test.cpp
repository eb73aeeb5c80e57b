// Parsing of requests and the pieces of static-file answers, without a socket.
#include <gtest/gtest.h>

#include "llib/web/webletfile.h"
#include "llib/web/webletrequest.h"

namespace {

TEST(WebletRequestLine, SplitsAtBlanksAndReadsTheVersionNumber) {
  LWebletRequestLine line = LWebletParseRequestLine("GET /main HTTP/1.1");
  EXPECT_EQ(line.method, "GET");
  EXPECT_EQ(line.uri, "/main");
  EXPECT_NEAR(line.version, 1.1, 1e-9);
  line = LWebletParseRequestLine("POST \t /a?b=c   HTTP/1.0");
  EXPECT_EQ(line.uri, "/a?b=c");
  EXPECT_NEAR(line.version, 1.0, 1e-9);
  EXPECT_EQ(LWebletParseRequestLine("GET /x").version, 0.0);
  EXPECT_EQ(LWebletParseRequestLine("").method, "");
  // The line is cut at 259 bytes before it is split: the version is lost past that.
  std::string longUri = "/" + std::string(300, 'a');
  line = LWebletParseRequestLine("GET " + longUri + " HTTP/1.1");
  EXPECT_EQ(line.uri.size(), 255u);
  EXPECT_EQ(line.version, 0.0);
}

TEST(WebletRequestLine, OnlyGetAndPostAreKinds) {
  EXPECT_EQ(LWebletRequestKind("GET"), kWebletGet);
  EXPECT_EQ(LWebletRequestKind("POST"), kWebletPost);
  EXPECT_EQ(LWebletRequestKind("get"), -1);
  EXPECT_EQ(LWebletRequestKind("HEAD"), -1);
}

TEST(WebletRequestLine, UriQueryGoesToParametersAndPathIsDecoded) {
  std::string path;
  LHashTable parameters;
  LWebletSplitUri("/user%20prop?id=a%40b.fr&x=1+2&x2=%41", path, parameters);
  EXPECT_EQ(path, "/user prop");
  EXPECT_STREQ(parameters.GetParm("id", ""), "a@b.fr");
  EXPECT_STREQ(parameters.GetParm("x", ""), "1 2");
  EXPECT_STREQ(parameters.GetParm("x2", ""), "A");
  LWebletSplitUri("/%2e%2e/x", path, parameters);
  EXPECT_EQ(path, "/../x");
  LWebletSplitUri("/a%00b", path, parameters);
  EXPECT_EQ(path.find('\0'), std::string::npos);
  LWebletSplitUri("/" + std::string(400, 'z'), path, parameters);
  EXPECT_EQ(path.size(), 259u);
}

TEST(WebletRequestLine, HeaderLinesSplitAtTheFirstColon) {
  std::string name, value;
  ASSERT_TRUE(LWebletParseHeaderLine("Host: \t127.0.0.1:1098", name, value));
  EXPECT_EQ(name, "Host");
  EXPECT_EQ(value, "127.0.0.1:1098");
  ASSERT_TRUE(LWebletParseHeaderLine("X-Empty:", name, value));
  EXPECT_EQ(value, "");
  ASSERT_TRUE(LWebletParseHeaderLine("X-Ctl:\x01\x1f value", name, value));
  EXPECT_EQ(value, "value");
  EXPECT_FALSE(LWebletParseHeaderLine("no colon here", name, value));
  LHashTable headers;
  headers.SetParm("content-length", "12");
  EXPECT_STREQ(LWebletFindHeader(headers, "Content-Length"), "12");
  EXPECT_EQ(LWebletFindHeader(headers, "Cookie"), nullptr);
}

TEST(WebletRequestLine, CookiesAreSplitDecodedAndCut) {
  LHashTable cookies;
  LWebletCookieData::LoadCookieData(" theme=clair;  kontavo_sess=s%2Fx;=nameless; flag;\tlong=" + std::string(300, 'v'),
                                    cookies);
  EXPECT_STREQ(cookies.GetParm("theme", ""), "clair");
  EXPECT_STREQ(cookies.GetParm("kontavo_sess", ""), "s/x");
  EXPECT_TRUE(cookies.TestFieldExists("flag"));
  EXPECT_FALSE(cookies.TestFieldExists(""));
  EXPECT_EQ(std::string(cookies.GetParm("long", "")).size(), 259u);
}

TEST(WebletRequestLine, KeepAliveOnlyForHttp11GetWithoutClose) {
  EXPECT_TRUE(LWebletKeepAlive(1.1, kWebletGet, ""));
  EXPECT_TRUE(LWebletKeepAlive(2.0, kWebletGet, "keep-alive"));
  EXPECT_FALSE(LWebletKeepAlive(1.0, kWebletGet, ""));
  EXPECT_FALSE(LWebletKeepAlive(1.1, kWebletPost, ""));
  EXPECT_FALSE(LWebletKeepAlive(1.1, kWebletGet, "keep-alive, close"));
}

TEST(WebletFile, RangesOfAThousandByteFile) {
  long long start = 0, end = 0;
  ASSERT_TRUE(LWebletParseRange("bytes=-100", 1000, start, end));
  EXPECT_EQ(start, 900);
  EXPECT_EQ(end, 999);
  ASSERT_TRUE(LWebletParseRange("bytes=-5000", 1000, start, end));
  EXPECT_EQ(start, 0);
  ASSERT_TRUE(LWebletParseRange("bytes=100-", 1000, start, end));
  EXPECT_EQ(end, 999);
  ASSERT_TRUE(LWebletParseRange("bytes=100-5000", 1000, start, end));
  EXPECT_EQ(end, 999);
  ASSERT_TRUE(LWebletParseRange("bytes=500-400", 1000, start, end));
  EXPECT_GT(start, end);
  EXPECT_FALSE(LWebletParseRange("items=1-2", 1000, start, end));
  EXPECT_FALSE(LWebletParseRange("bytes=12", 1000, start, end));
}

TEST(WebletFile, DatesTagsAndMimeTypes) {
  EXPECT_EQ(LWebletHttpDate(1700000000), "Tue, 14 Nov 2023 22:13:20 GMT");
  // The year is written "20" and two digits, whatever the century.
  EXPECT_EQ(LWebletHttpDate(0), "Thu, 01 Jan 2070 00:00:00 GMT");
  EXPECT_EQ(LWebletEntityTag(1700000000, 42), "042");
  EXPECT_EQ(LWebletEntityTag(1712345678, 7), "23456787");
  EXPECT_STREQ(LExtToMimeType("A.CSS").type, "text/css");
  EXPECT_TRUE(LExtToMimeType("a.js").cache);
  EXPECT_STREQ(LExtToMimeType("x.JPEG").type, "image/jpeg");
  LWebletMimeType pdf = LExtToMimeType("facture.pdf");
  EXPECT_STREQ(pdf.type, "application/pdf");
  EXPECT_FALSE(pdf.cache);
  EXPECT_FALSE(pdf.isInline);
  EXPECT_STREQ(LExtToMimeType("archive.tar.gz").type, "application/octet-stream");
  EXPECT_STREQ(LExtToMimeType("dir.css/file").type, "application/octet-stream");
  EXPECT_STREQ(LExtToMimeType("noextension").type, "application/octet-stream");
  EXPECT_EQ(LWebletFileBaseName("a/b\\c.pdf"), "c.pdf");
  EXPECT_EQ(LWebletFileBaseName(std::string(300, 'n')).size(), 258u);
}

}  // namespace
