// Route "settingsregional": how the business writes money and dates.
#include "app/websettings.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/regionalsettings.h"
#include "llib/gen/money.h"
#include "llib/web/webletform.h"

namespace {

constexpr int kSymbolControl = 101;
constexpr int kOrderControl = 102;
constexpr int kDecimalControl = 103;
constexpr int kThousandsControl = 104;
constexpr int kDateOrderControl = 105;

struct Control {
  std::string_view field;  // as LRegionalSettingsCheck names it
  int id;
};
constexpr Control kControls[] = {{"currencySymbol", kSymbolControl}, {"currencyOrder", kOrderControl},
                                 {"decimalSymbol", kDecimalControl}, {"thousandsSymbol", kThousandsControl},
                                 {"dateOrder", kDateOrderControl}};

}  // namespace

LWebRegionalSettingsDialog::LWebRegionalSettingsDialog(LWebletForm& form)
    : LWebSettingsDialog(form, "settingsregional", "réglages régionaux") {}

void LWebRegionalSettingsDialog::InitDialog() {
  LProfile profile(WLSessionBusinessFolder(form_));
  LRegionalSettings settings;
  LRegionalSettingsLoad(profile, settings);
  SetText(kSymbolControl, settings.currencySymbol);
  SetInt(kOrderControl, settings.currencyOrder);
  SetText(kDecimalControl, settings.decimalSymbol);
  SetText(kThousandsControl, settings.thousandsSymbol);
  SetInt(kDateOrderControl, settings.dateOrder);
}

void LWebRegionalSettingsDialog::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  // The places of the symbol, each shown on an example amount in the business's own format.
  LCurrencyFormat example = profile.GetCurrencyFormat();
  std::vector<std::string> orders, values;
  for (int order = 0; order <= 3; ++order) {
    example.order = order;
    orders.push_back(LFormatMoney(123456, example));
    values.push_back(std::to_string(order));
  }
  AddInput(kSymbolControl, "Symbole monétaire :", "", 8);
  AddPullDownList(kOrderControl, "Position du symbole :", orders, values);
  AddInput(kDecimalControl, "Symbole décimal :", "", 2);
  AddInput(kThousandsControl, "Séparateur des milliers :", "", 2);
  AddStaticSmall("Un séparateur des milliers vide écrit les nombres sans groupes de chiffres.");
  AddPullDownList(kDateOrderControl, "Ordre des dates imprimées :",
                  {"mois/jour/année", "jour/mois/année", "année/mois/jour"}, {"0", "1", "2"});
}

bool LWebRegionalSettingsDialog::CmOk() {
  LRegionalSettings settings;
  settings.currencySymbol = GetTextAndTrim(kSymbolControl);
  settings.currencyOrder = GetControlValueInt(kOrderControl);
  settings.decimalSymbol = GetText(kDecimalControl);
  settings.thousandsSymbol = GetText(kThousandsControl);
  settings.dateOrder = GetControlValueInt(kDateOrderControl);
  std::string faulty;
  std::string message = LRegionalSettingsCheck(settings, faulty);
  if (!message.empty()) {
    int control = kSymbolControl;
    for (const Control& one : kControls)
      if (one.field == faulty) control = one.id;
    PopupControlDataInvalid(control, message);
    return false;
  }
  LProfile profile(WLSessionBusinessFolder(form_));
  if (!LRegionalSettingsStore(profile, settings)) {
    PopupBoxError("Impossible d'enregistrer les réglages régionaux.");
    return false;
  }
  return true;
}
