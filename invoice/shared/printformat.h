// How a business writes amounts, dates, quantities and rates on its printed documents: the
// currency format of the profile and the printed date order and separator of "Options".
#pragma once

#include <string>
#include <string_view>

#include "llib/gen/money.h"

class LProfile;

class LPrintFormat {
 public:
  explicit LPrintFormat(LProfile& profile);

  // "1 234,56 €" in the business's currency format.
  std::string Money(long long amountCents) const { return LFormatMoney(amountCents, currency_, false); }
  // A stored date "YYYY-MM-DD" in the printed order and separator ("24/11/2026"); a text that is
  // not such a date is returned as it is.
  std::string Date(std::string_view storedDate) const;
  // A unit price stored with digits decimals (-1: the currency's), as a number with the
  // business's separators and no symbol ("1 234,567").
  std::string UnitPrice(long long value, int digits) const;
  // A quantity with at most 3 decimals, trailing zeros dropped, with the decimal symbol ("1,5").
  std::string Quantity(double quantity) const;
  // A percentage the same way, followed by " %" ("5,5 %").
  std::string Percent(double percent) const;
  const LCurrencyFormat& Currency() const { return currency_; }

 private:
  LCurrencyFormat currency_;  // the profile's currency format
  int dateOrder_;             // LDateOrder: day, month and year order
  char dateSeparator_;        // between day, month and year
};
