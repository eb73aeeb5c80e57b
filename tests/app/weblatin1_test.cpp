// Names stored in Latin-1 or Windows-1252 by an older program (a customer, an item, an account)
// show as they were meant in every page that names them, read as JSON output reads them: each
// page stays valid UTF-8 and says "Société Générale", never a lone byte E9.
#include <gtest/gtest.h>

#include <string>

#include "llib/gen/utf8.h"
#include "tests/app/websalestest.h"

namespace {

TEST_F(WebSalesTest, Latin1NamesOfOlderProgramsShowInEveryPage) {
  // The bytes an older program wrote: E9 "é", 80 "€", 92 "’".
  ASSERT_EQ(LRunKontavo({"customer", "add", "LAT", "Name=Soci\xE9t\xE9 G\xE9n\xE9rale"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"item", "add", "CAFE", "--description", "Caf\xE9 l\x92\xE9t\xE9 \x80", "--price", "3"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"account", "add", "531800", "--name", "Caisse d\x92\xE9t\xE9", "--type", "asset", "--class", "1"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"invoice", "new", "--customer", "LAT", "--line", "CAFE||2||"}).exitCode, 0);
  std::string session = Session();
  const std::string customer = "Soci\xC3\xA9t\xC3\xA9 G\xC3\xA9n\xC3\xA9rale";
  const std::string item = "Caf\xC3\xA9 l\xE2\x80\x99\xC3\xA9t\xC3\xA9 \xE2\x82\xAC";
  struct Page {
    const char* route;
    std::string shows;
  };
  for (const Page& page : {Page{"/customerlist", customer}, Page{"/customerprop?id=LAT", customer},
                           Page{"/itemlist", item}, Page{"/itemprop?id=CAFE", item}, Page{"/invoicelist", customer},
                           Page{"/invoiceprop?id=1", item}, Page{"/acclist", "Caisse d\xE2\x80\x99\xC3\xA9t\xC3\xA9"}}) {
    std::string body = LHttpGet(port_, page.route, session).body;
    EXPECT_TRUE(LIsValidUtf8(body)) << page.route;
    EXPECT_NE(body.find(page.shows), std::string::npos) << page.route << "\n" << body.substr(0, 4000);
  }
}

}  // namespace
