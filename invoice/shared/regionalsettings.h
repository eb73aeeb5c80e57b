// The regional settings of a business as the administrator edits them: how money is written
// (currency symbol and its place, decimal and thousands symbols, stored in "Options" of "Misc"
// as "CurrencySymbol", "CurrencyOrder", "DecimalSymbol", "ThousandsSymbol") and the order of
// day, month and year on printed documents ("PrintedDateOrder", an LDateOrder). The currency's
// digits are left alone: changing them would change the meaning of every stored amount.
#pragma once

#include <string>

class LProfile;

struct LRegionalSettings {
  std::string currencySymbol;
  int currencyOrder = 0;      // 0 "$1.00", 1 "1.00$", 2 "$ 1.00", 3 "1.00 $"
  std::string decimalSymbol;
  std::string thousandsSymbol;  // may be empty: no grouping
  int dateOrder = 0;          // LDateOrder: 0 month-day-year, 1 day-month-year, 2 year-month-day
};

// The settings of the open business (the printed date order: the system's when not stored).
void LRegionalSettingsLoad(const LProfile& profile, LRegionalSettings& settings);
// "" when settings can be stored; otherwise the French message of the first fault, and field
// names the faulty member ("currencySymbol", "currencyOrder", "decimalSymbol",
// "thousandsSymbol", "dateOrder").
std::string LRegionalSettingsCheck(const LRegionalSettings& settings, std::string& field);
// Stores checked settings into "Options" and reloads the profile so that it formats money the
// new way. false when the record cannot be written.
[[nodiscard]] bool LRegionalSettingsStore(LProfile& profile, const LRegionalSettings& settings);
