// The tab bar: tabs installed by several layers in any order come out by rank, a tab waits for
// its route, installing again replaces, and administrators' tabs stay hidden from other users.
#include <gtest/gtest.h>

#include "invoice/shared/webnavtabs.h"
#include "llib/web/webletform.h"
#include "llib/web/webletroutes.h"

namespace {

void Page(LWebletForm&) {}

std::string Bar(std::string_view current) {
  LWebletForm form(nullptr);  // no session: not an administrator
  WLWriteNavTabs(form, current);
  return form.Captured();
}

TEST(WebNavTabs, TabsShowByRankOnceTheirRouteIsInstalled) {
  LWebNavTabInstall({"navlast", "Dernier", 900});
  LWebNavTabInstall({"navfirst", "Premier & seul", 5});
  LWebNavTabInstall({"navmiddle", "Milieu", 500});
  LWebNavTabInstall({"navadmin", "Admin", 600, true});
  EXPECT_EQ(Bar("navfirst"), "<div class=navtabs></div>");

  for (const char* route : {"navlast", "navfirst", "navadmin"}) LWebletInstallScript(route, Page);
  EXPECT_EQ(Bar("navfirst"),
            "<div class=navtabs><a href='navfirst' class='navtab navtabcurrent'>Premier &amp; seul</a>"
            "<a href='navlast' class=navtab>Dernier</a></div>");

  // A second install of a target replaces its tab, text and place alike.
  LWebletInstallScript("navmiddle", Page);
  LWebNavTabInstall({"navlast", "Tout premier", 1});
  EXPECT_EQ(Bar("navmiddle"),
            "<div class=navtabs><a href='navlast' class=navtab>Tout premier</a>"
            "<a href='navfirst' class=navtab>Premier &amp; seul</a>"
            "<a href='navmiddle' class='navtab navtabcurrent'>Milieu</a></div>");
}

}  // namespace
