// The navigation tabs of the web access: one tab per section of the business (home, customers,
// invoices, items, ...) under the header bar, the page's own section marked. A tab is shown only
// when its section's page is served (its route is installed), so sections appear as their pages
// are added; the users tab only to administrators.
//
//     class LWebItemsPage : public LWebPageMainEx {   // tab "itemlist" marked
//       LWebItemsPage(LWebletForm& form) : LWebPageMainEx(form, "itemlist", "Articles") {}
//     };
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/webaccess.h"

// One tab: the route of its section's page and its text.
struct LWebNavTab {
  const char* target;
  const char* text;
  bool administratorOnly;
};

// The tabs the session's user sees, in order: installed routes only, the users tab only for an
// administrator.
std::vector<LWebNavTab> WLVisibleNavTabs(LWebletForm& form);
// Writes the tab bar: "<div class=navtabs>", one link per visible tab (class "navtab", and
// "navtab navtabcurrent" for the tab whose target is current), "</div>".
void WLWriteNavTabs(LWebletForm& form, std::string_view current);

// An application page with the tab bar under its header.
class LWebPageWithNavTabs : public LWebPageEx {
 public:
  // currentTab: the route of the section the page belongs to.
  LWebPageWithNavTabs(LWebletForm& form, std::string_view currentTab)
      : LWebPageEx(form), currentTab_(currentTab) {}
  void PrintHeader() override;

 private:
  std::string currentTab_;
};

// A tabbed page with a side pane (GenerateInfoPane) beside its content.
class LWebPageWithNavTabsEx : public LWebPageWithNavTabs {
 public:
  LWebPageWithNavTabsEx(LWebletForm& form, std::string_view currentTab, int infoPaneWidthPercent)
      : LWebPageWithNavTabs(form, currentTab) {
    SetInfoPaneWidth(infoPaneWidthPercent);
  }
};
