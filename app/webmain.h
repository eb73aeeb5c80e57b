// The home page of the web access (routes "" and "main"): the open business's name and where the
// user can go from here, with the business at a glance in the side pane.
#pragma once

#include "accounts/webpagemainex.h"

class LWebPageMain : public LWebPageMainEx {
 public:
  explicit LWebPageMain(LWebletForm& form);
  // An administrator whose business has no company name yet is sent to the start wizard.
  bool Authenticate() override;
  void Generate() override;

 private:
  // The business's accounts with their balances, in number order, in groups under their header
  // accounts, closed until clicked.
  void WriteChartOfAccounts();
};
