// Route "settingstax": the taxes as one table, a row per tax and an empty row to add one. The
// taxes kept are those up to the last row with a name (clearing the last name removes that
// tax); the whole table goes through the same change as `kontavo tax set`, so a rate that does
// not read is refused with its message and a renamed tax is renamed in the documents.
#include "app/websettings.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/taxoptions.h"
#include "invoice/shared/taxsettings.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

namespace {

constexpr int kDefaultControl = 101;
constexpr int kInclusiveControl = 102;
constexpr int kTrackPaidControl = 103;

// The controls of tax n (1 to 99) in its row, one hundred apart per column.
struct Column {
  LTaxSettingField field;
  int base;
  const char* heading;
  int width;
};
constexpr Column kColumns[] = {
    {LTaxSettingField::kName, 1000, "Nom", 16},
    {LTaxSettingField::kRate, 1100, "Taux (%) ou T1/T2/C", 12},
    {LTaxSettingField::kZero, 1200, "Taux zéro", 0},
    {LTaxSettingField::kAccount, 1300, "Compte de la taxe perçue", 24},
    {LTaxSettingField::kCombined, 1400, "Combinaison", 14},
};

std::string CellValue(const LTaxOptions& tax, LTaxSettingField field, int n) {
  switch (field) {
    case LTaxSettingField::kName: return tax.GetString(LTaxOptions::TaxField("TaxName", n));
    case LTaxSettingField::kRate: return tax.GetTaxRateText(n);
    case LTaxSettingField::kZero: return tax.IsZeroRate(n) ? "on" : "";
    case LTaxSettingField::kAccount: return tax.GetTaxAccountPayable(n);
    case LTaxSettingField::kCombined: return tax.GetTaxCombined(n);
  }
  return {};
}

// The refusal of one cell, said in the table's terms rather than the command line's "K=VALUE".
std::string CellRefusal(LTaxSettingField field, int n, const std::string& value) {
  if (field == LTaxSettingField::kRate)
    return LWebFormat("Taux invalide pour la taxe %d : « %s ». Entrez un pourcentage (par exemple 20 ou 5.5), "
                      "ou deux taux et 0 ou 1 pour une taxe composée (par exemple 5/9.975/1).",
                      n, value.c_str());
  if (field == LTaxSettingField::kName)
    return LWebFormat("Nom invalide pour la taxe %d : « %s ».", n, value.c_str());
  return LWebFormat("Valeur invalide pour la taxe %d : « %s ».", n, value.c_str());
}

}  // namespace

LWebTaxSettingsDialog::LWebTaxSettingsDialog(LWebletForm& form) : LWebSettingsDialog(form, "settingstax", "taxes") {}

void LWebTaxSettingsDialog::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  LTaxOptions tax;
  tax.OpenFrom(profile);
  int nRows = std::min(tax.GetTaxCount() + 1, kMaxTaxes);
  std::string table = "<table class=taxtable><tr>";
  for (const Column& column : kColumns) table += LWebFormat("<th>%H</th>", column.heading);
  table += "</tr>";
  for (int n = 1; n <= nRows; ++n) {
    table += "<tr>";
    for (const Column& column : kColumns) {
      int id = column.base + n;
      std::string value = CellValue(tax, column.field, n);
      if (column.field == LTaxSettingField::kZero)
        table += LWebFormat("<td class=center><input type=checkbox id=%d name=%d%s></td>", id, id,
                            value.empty() ? "" : " checked");
      else
        table += LWebFormat("<td><input type=text id=%d name=%d size=%d value='%H'></td>", id, id, column.width,
                            value.c_str());
    }
    table += "</tr>";
  }
  form_.Write("<tr><td colspan=2>" + table + "</table></td></tr>");
  AddStaticSmall("Pour ajouter une taxe, remplissez la dernière ligne ; pour retirer la dernière taxe, effacez son nom.");

  std::vector<std::string> names, numbers;
  for (int n = 1; n <= tax.GetTaxCount(); ++n) {
    names.push_back(tax.GetTaxName(n));
    numbers.push_back(std::to_string(n));
  }
  SetInt(kDefaultControl, tax.GetDefaultRate());
  SetCheck(kInclusiveControl, tax.IsTaxInclusive());
  SetCheck(kTrackPaidControl, tax.IsTrackTaxPaid());
  AddPullDownList(kDefaultControl, "Taxe par défaut :", names, numbers);
  AddCheckBox(kInclusiveControl, "Les prix comprennent les taxes");
  AddCheckBox(kTrackPaidControl, "Suivre la taxe versée sur les achats");
}

bool LWebTaxSettingsDialog::CmOk() {
  int count = 0;
  for (int n = 1; n <= kMaxTaxes; ++n)
    if (!GetTextAndTrim(kColumns[0].base + n).empty()) count = n;
  LTaxSettingsChange change;
  change.count = count;
  int defaultRate = GetControlValueInt(kDefaultControl);
  change.defaultRate = defaultRate >= 1 && defaultRate <= count ? defaultRate : 1;
  change.inclusive = IsChecked(kInclusiveControl);
  change.trackPaid = IsChecked(kTrackPaidControl);
  struct Cell {
    int control;
    int n;
    std::string value;
  };
  std::vector<Cell> cells;  // the cell of each assignment
  for (int n = 1; n <= count; ++n)
    for (const Column& column : kColumns) {
      std::string value = GetTextAndTrim(column.base + n);
      if (column.field == LTaxSettingField::kZero) value = IsChecked(column.base + n) ? "on" : "off";
      // A combination has no rate of its own: an empty rate is left as it is.
      if (column.field == LTaxSettingField::kRate && value.empty()) continue;
      change.assignments.push_back({column.field, std::to_string(n) + "=" + value});
      cells.push_back({column.base + n, n, value});
    }
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string error;
  if (!LTaxSettingsApply(profile, change, &error)) {
    for (std::size_t i = 0; i < change.assignments.size(); ++i)
      if (error == LTaxSettingsInvalidMessage(change.assignments[i].text)) {
        PopupControlDataInvalid(cells[i].control, CellRefusal(change.assignments[i].field, cells[i].n, cells[i].value));
        return false;
      }
    PopupBoxError(error);
    return false;
  }
  return true;
}
