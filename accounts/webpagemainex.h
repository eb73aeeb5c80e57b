// The main pages of the web access: the pages at the top of a section, reached from the tab bar,
// with the business at a glance in their side pane (the current fiscal year's income, expenses,
// profit, assets, and what customers owe and suppliers are owed). The pane needs the account
// totals, so the base sits on the ledger side; sales-side sections build on it from above.
#pragma once

#include <string_view>

#include "invoice/shared/webnavtabs.h"

// A section's main page: tab currentTab marked, the header links to change business and to log
// off, the year's figures in the side pane.
class LWebPageMainEx : public LWebPageWithNavTabsEx {
 public:
  LWebPageMainEx(LWebletForm& form, std::string_view currentTab, std::string_view title);
  void GenerateInfoPane() override;
};
