#include "llib/gen/locale.h"

#include <cctype>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace {

struct CurrencyRow {
  const char* country;
  const char* code;
  const char* symbol;
  int digits;
};

constexpr CurrencyRow kCurrencies[] = {
    {"FR", "EUR", "€", 2}, {"BE", "EUR", "€", 2}, {"LU", "EUR", "€", 2}, {"MC", "EUR", "€", 2},
    {"DE", "EUR", "€", 2}, {"AT", "EUR", "€", 2}, {"IT", "EUR", "€", 2}, {"ES", "EUR", "€", 2},
    {"PT", "EUR", "€", 2}, {"NL", "EUR", "€", 2}, {"IE", "EUR", "€", 2}, {"FI", "EUR", "€", 2},
    {"GR", "EUR", "€", 2}, {"SK", "EUR", "€", 2}, {"SI", "EUR", "€", 2}, {"EE", "EUR", "€", 2},
    {"LV", "EUR", "€", 2}, {"LT", "EUR", "€", 2}, {"MT", "EUR", "€", 2}, {"CY", "EUR", "€", 2},
    {"HR", "EUR", "€", 2}, {"GB", "GBP", "£", 2}, {"US", "USD", "$", 2}, {"CA", "CAD", "$", 2},
    {"AU", "AUD", "$", 2}, {"NZ", "NZD", "$", 2}, {"ZA", "ZAR", "R", 2}, {"CH", "CHF", "CHF", 2},
    {"JP", "JPY", "¥", 0}, {"SN", "XOF", "CFA", 0}, {"CI", "XOF", "CFA", 0}, {"MA", "MAD", "DH", 2},
    {"TN", "TND", "DT", 3}, {"DZ", "DZD", "DA", 2},
};

// Countries that write dates year first, and those that write month first.
constexpr const char* kYearFirst[] = {"JP", "CN", "KR", "TW", "HU", "LT", "SE", "MN", "IR"};
constexpr const char* kMonthFirst[] = {"US", "PH", "BZ", "FM"};
// Countries that do not use metric units.
constexpr const char* kImperial[] = {"US", "LR", "MM"};

template <std::size_t N>
bool Contains(const char* const (&list)[N], const std::string& value) {
  for (const char* item : list)
    if (value == item) return true;
  return false;
}

std::string LocaleName() {
  for (const char* variable : {"LC_ALL", "LC_MONETARY", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return value;
  }
  return {};
}

void SetNumberSymbols(LSystemLocale& locale) {
  const std::string& lang = locale.language;
  if (lang == "fr" || lang == "ru" || lang == "pl" || lang == "cs" || lang == "sv" || lang == "fi" ||
      lang == "nb" || lang == "sk") {
    locale.decimalSymbol = ",";
    locale.thousandsSymbol = " ";
    locale.currencyOrder = 3;
  } else if (lang == "de" || lang == "es" || lang == "it" || lang == "pt" || lang == "nl" ||
             lang == "da" || lang == "el" || lang == "tr" || lang == "id") {
    locale.decimalSymbol = ",";
    locale.thousandsSymbol = ".";
    locale.currencyOrder = lang == "nl" ? 2 : 3;
  } else {
    locale.decimalSymbol = ".";
    locale.thousandsSymbol = ",";
    locale.currencyOrder = 0;
  }
  // Swiss French and German write 1'234.50.
  if (locale.countryCode == "CH") {
    locale.decimalSymbol = ".";
    locale.thousandsSymbol = "'";
    locale.currencyOrder = 2;
  }
}

}  // namespace

void LCurrencyOfCountry(const std::string& countryCode, std::string& code, std::string& symbol, int& digits) {
  for (const auto& row : kCurrencies) {
    if (countryCode == row.country) {
      code = row.code;
      symbol = row.symbol;
      digits = row.digits;
      return;
    }
  }
  code = "USD";
  symbol = "$";
  digits = 2;
}

namespace {

// The main language of the countries whose number symbols differ from English ones.
struct CountryLanguage {
  const char* country;
  const char* language;
};
constexpr CountryLanguage kCountryLanguages[] = {
    {"FR", "fr"}, {"BE", "fr"}, {"LU", "fr"}, {"MC", "fr"}, {"CH", "fr"}, {"DE", "de"}, {"AT", "de"},
    {"ES", "es"}, {"IT", "it"}, {"PT", "pt"}, {"BR", "pt"}, {"NL", "nl"}, {"DK", "da"}, {"GR", "el"},
    {"TR", "tr"}, {"ID", "id"}, {"SE", "sv"}, {"FI", "fi"}, {"NO", "nb"}, {"PL", "pl"}, {"CZ", "cs"},
    {"SK", "sk"}, {"RU", "ru"},
};

void SetCountryDefaults(LSystemLocale& locale) {
  LCurrencyOfCountry(locale.countryCode, locale.currencyCode, locale.currencySymbol, locale.currencyDigits);
  SetNumberSymbols(locale);
  if (Contains(kYearFirst, locale.countryCode)) locale.dateOrder = kDateOrderYMD;
  else if (Contains(kMonthFirst, locale.countryCode)) locale.dateOrder = kDateOrderMDY;
  else locale.dateOrder = kDateOrderDMY;
  locale.metric = !Contains(kImperial, locale.countryCode);
}

}  // namespace

LSystemLocale LLocaleOfCountry(const std::string& countryCode) {
  LSystemLocale locale;
  locale.countryCode = countryCode;
  locale.language = "en";
  for (const CountryLanguage& row : kCountryLanguages)
    if (countryCode == row.country) locale.language = row.language;
  SetCountryDefaults(locale);
  return locale;
}

LSystemLocale LGetSystemLocale() {
  LSystemLocale locale;
  std::string name = LocaleName();
  // language[_COUNTRY][.codeset][@modifier]
  std::string_view view = name;
  view = view.substr(0, view.find_first_of(".@"));
  if (!view.empty() && view != "C" && view != "POSIX") {
    std::size_t underscore = view.find('_');
    locale.language = std::string(view.substr(0, underscore));
    if (underscore != std::string_view::npos) locale.countryCode = std::string(view.substr(underscore + 1));
    else locale.countryCode.clear();
  }
  if (const char* country = std::getenv("KONTAVO_COUNTRY"); country != nullptr && *country != '\0')
    locale.countryCode = country;
  for (char& c : locale.countryCode) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  if (locale.countryCode.empty()) locale.countryCode = locale.language == "fr" ? "FR" : "US";

  SetCountryDefaults(locale);
  return locale;
}
