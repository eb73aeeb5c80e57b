#include "invoice/shared/regionalsettings.h"

#include <string_view>

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/utf8.h"

namespace {

// One character (UTF-8, so that a narrow no-break space fits) that is no digit, sign or quote,
// which money parsing could not tell from the amount itself; a blank (space, no-break spaces)
// only where blanks are allowed, as between groups of thousands.
bool IsSymbolCharacter(std::string_view text, bool blankAllowed) {
  if (text.empty() || LUtf8CharLength(text) != text.size()) return false;
  if (!blankAllowed && (text == " " || text == "\u00a0" || text == "\u202f")) return false;
  return text.find_first_of("0123456789+-'\"") == std::string_view::npos;
}

}  // namespace

void LRegionalSettingsLoad(const LProfile& profile, LRegionalSettings& settings) {
  const LCurrencyFormat& currency = profile.GetCurrencyFormat();
  settings.currencySymbol = currency.symbol;
  settings.currencyOrder = currency.order;
  settings.decimalSymbol = currency.decimal;
  settings.thousandsSymbol = currency.thousands;
  LOptions options;
  options.OpenFrom(profile);
  settings.dateOrder = options.GetPrintedDateOrder();
}

std::string LRegionalSettingsCheck(const LRegionalSettings& settings, std::string& field) {
  auto fault = [&field](std::string_view name, std::string_view message) {
    field.assign(name);
    return std::string(message);
  };
  if (settings.currencySymbol.empty() || settings.currencySymbol.size() > 8)
    return fault("currencySymbol", "Veuillez entrer le symbole monétaire (8 caractères au plus).");
  if (settings.currencyOrder < 0 || settings.currencyOrder > 3)
    return fault("currencyOrder", "Position du symbole monétaire non valide.");
  if (!IsSymbolCharacter(settings.decimalSymbol, false))
    return fault("decimalSymbol", "Le symbole décimal doit être un seul caractère, autre qu'un chiffre ou une espace.");
  if (!settings.thousandsSymbol.empty() && !IsSymbolCharacter(settings.thousandsSymbol, true))
    return fault("thousandsSymbol", "Le séparateur des milliers doit être un seul caractère, autre qu'un chiffre.");
  if (settings.thousandsSymbol == settings.decimalSymbol)
    return fault("thousandsSymbol", "Le séparateur des milliers doit différer du symbole décimal.");
  if (settings.dateOrder < 0 || settings.dateOrder > 2) return fault("dateOrder", "Ordre des dates non valide.");
  field.clear();
  return {};
}

bool LRegionalSettingsStore(LProfile& profile, const LRegionalSettings& settings) {
  {
    LOptions options;
    options.OpenFrom(profile);
    options.SetString("CurrencySymbol", settings.currencySymbol);
    options.SetInt("CurrencyOrder", settings.currencyOrder);
    options.SetString("DecimalSymbol", settings.decimalSymbol);
    options.SetString("ThousandsSymbol", settings.thousandsSymbol);
    options.SetInt("PrintedDateOrder", settings.dateOrder);
    if (!options.Flush()) return false;
  }
  profile.Reload();
  return true;
}
