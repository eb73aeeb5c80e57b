// The main pages of the web access: the pages at the top of a section, reached from the tab bar,
// with the business at a glance in their side pane (the current fiscal year's income, expenses,
// profit, assets, and what customers owe and suppliers are owed); and the home page itself
// (routes "" and "main"): the open business's name and where the user can go from here.
#pragma once

#include <string_view>

#include "app/webnavtabs.h"

// A section's main page: tab currentTab marked, the header links to change business and to log
// off, the year's figures in the side pane.
class LWebPageMainEx : public LWebPageWithNavTabsEx {
 public:
  LWebPageMainEx(LWebletForm& form, std::string_view currentTab, std::string_view title);
  void GenerateInfoPane() override;
};

class LWebPageMain : public LWebPageMainEx {
 public:
  explicit LWebPageMain(LWebletForm& form);
  // An administrator whose business has no company name yet is sent to the start wizard.
  bool Authenticate() override;
  void Generate() override;

 private:
  // The business's accounts with their balances, in number order.
  void WriteChartOfAccounts();
};
