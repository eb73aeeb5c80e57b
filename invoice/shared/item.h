// Items (LItem, list "Items", key = the item code that document lines carry in "Item<n>Code"):
// a description, a unit price and the income account, by description, that sales of the item
// are posted to ("PLAccount").
#pragma once

#include <string>
#include <string_view>

#include "llib/gen/record.h"

inline constexpr std::string_view kItemsList = "Items";

class LItem : public LRecord {
 public:
  std::string GetDescription() const { return GetString("Description"); }
  // "Price": unit price in minor currency units, 0 when absent.
  long long GetPrice() const { return GetInt64("Price", 0); }
  // "PLAccount": the description of the item's income account; empty when not set.
  std::string GetPLAccount() const { return GetString("PLAccount"); }
};
