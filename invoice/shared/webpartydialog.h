// The dialog of one record of a party list (items, sales persons, customer groups, ...: see
// partyfields.h) on the web: each field bound by its name takes its label and width from the
// page, and what is typed is checked and stored as the command line and the CSV import store it
// ("5,5" -> "5.500000", "Service" -> "service"); a value that does not read is refused on its
// control with the same message.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "invoice/shared/partyfields.h"
#include "invoice/shared/webdialogkv.h"

class LWebPartyDialog : public LWebDialogExKv {
 public:
  LWebPartyDialog(LWebletForm& form, std::string_view routeName, LPartyKind kind, std::string_view currentTab);

 protected:
  // A field of the kind on control id: an amount field as money, any other as text.
  void BindPartyField(int id, std::string_view field, std::string_view label, int width = 30);
  bool CheckValues(LRecord& record) override;

 private:
  LPartyKind kind_;
  std::vector<std::pair<int, std::string>> checked_;  // control, field stored through its rule
};
