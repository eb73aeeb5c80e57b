// The system locale as the business sees it: country, currency, number symbols, date order and
// units. Read from LC_ALL, else LC_MONETARY, else LANG ("fr_FR.UTF-8" -> country FR, language
// fr, currency EUR); KONTAVO_COUNTRY overrides the country (and with it the currency). A missing
// or "C" locale reads as en_US.
#pragma once

#include <string>

enum LDateOrder : int {
  kDateOrderMDY = 0,
  kDateOrderDMY = 1,
  kDateOrderYMD = 2,
};

// Where the currency symbol stands: 0 "$1.00", 1 "1.00$", 2 "$ 1.00", 3 "1.00 $".
struct LSystemLocale {
  std::string language = "en";        // ISO 639-1
  std::string countryCode = "US";     // ISO 3166-1 alpha-2
  std::string currencyCode = "USD";   // ISO 4217
  std::string currencySymbol = "$";
  int currencyOrder = 0;
  int currencyDigits = 2;             // decimals of money amounts
  std::string decimalSymbol = ".";
  std::string thousandsSymbol = ",";
  int dateOrder = kDateOrderMDY;
  bool metric = false;
};

LSystemLocale LGetSystemLocale();
// The usual settings of a country (ISO 3166 code, upper case) whatever the system's locale: its
// main language, currency, number symbols, date order and units. A business set up for another
// country than the computer's takes these.
LSystemLocale LLocaleOfCountry(const std::string& countryCode);
// The currency of a country (ISO 4217 code, symbol, digits); USD for unknown countries.
void LCurrencyOfCountry(const std::string& countryCode, std::string& code, std::string& symbol, int& digits);
