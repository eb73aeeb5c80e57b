// The navigation tabs of the web access: one tab per section of the business (home, customers,
// invoices, items, ...) under the header bar, the page's own section marked. Each layer that
// serves pages installs its sections' tabs beside its routes (LWebNavTabInstall); a tab is shown
// only when its section's page is served (its route is installed), so sections appear as their
// pages are added; an administrator's tab only to administrators. The bar orders tabs by rank:
// home 10, customers 20, quotes 30, orders 40, invoices 50, credit notes 60, payments 70,
// suppliers 80, purchase orders 90, bills 100, bill payments 110, items 120, accounts 130,
// journal 140, reports 150, users 160, FEC 165, businesses 170, settings 180.
//
//     class LWebItemsPage : public LWebPageMainEx {   // tab "itemlist" marked
//       LWebItemsPage(LWebletForm& form) : LWebPageMainEx(form, "itemlist", "Articles") {}
//     };
//     LWebNavTabInstall({"itemlist", "Articles", 120});
//
// The tabs, like the routes, are installed before the server listens; a mutex guards the list
// all the same, as tests install them while other servers run.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/webaccess.h"

// One tab: the route of its section's page and its text.
struct LWebNavTab {
  std::string target;              // the route of the section's page
  std::string text;                // the tab's text
  int rank = 0;                    // its place in the bar, lowest first
  bool administratorOnly = false;  // shown to administrators only
};

// Adds tab to the bar, or replaces the tab of the same target (installing twice is harmless).
void LWebNavTabInstall(const LWebNavTab& tab);

// The tabs the session's user sees, by rank: installed routes only, administrators' tabs only for
// an administrator.
std::vector<LWebNavTab> WLVisibleNavTabs(LWebletForm& form);
// Writes the tab bar: "<div class=navtabs>", one link per visible tab (class "navtab", and
// "navtab navtabcurrent" for the tab whose target is current), "</div>".
void WLWriteNavTabs(LWebletForm& form, std::string_view current);

// An application page with the tab bar under its header.
class LWebPageWithNavTabs : public LWebPageEx {
 public:
  // currentTab: the route of the section the page belongs to; its help page is
  // "help/<currentTab>.html", the header's "Aide" link.
  LWebPageWithNavTabs(LWebletForm& form, std::string_view currentTab)
      : LWebPageEx(form), currentTab_(currentTab) {
    AddNavLink("help/" + currentTab_ + ".html", "Aide");
  }
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
