#include "invoice/shared/taxsettings.h"

#include <string_view>

#include "invoice/shared/taxoptions.h"
#include "invoice/shared/taxrename.h"
#include "llib/gen/money.h"
#include "llib/gen/optionalerror.h"

namespace {

// A percentage: decimal text, at most six decimals.
bool ParsePercent(std::string_view text, double& out) {
  long long scaled = 0;
  if (!LParseAmount(text, 6, scaled)) return false;
  out = static_cast<double>(scaled) / 1e6;
  return true;
}

// "RATE" or "R1/R2/C" (C 0 or 1).
bool ParseRate(std::string_view text, LFKTaxRate& rate) {
  rate = {};
  std::size_t slash = text.find('/');
  if (slash == std::string_view::npos) return ParsePercent(text, rate.rate1);
  std::string_view rest = text.substr(slash + 1);
  std::size_t second = rest.find('/');
  if (second == std::string_view::npos) return false;
  std::string_view flag = rest.substr(second + 1);
  if (flag != "0" && flag != "1") return false;
  rate.compound = flag == "1";
  return ParsePercent(text.substr(0, slash), rate.rate1) && ParsePercent(rest.substr(0, second), rate.rate2);
}

// One assignment read: the tax number and the value, checked for its field.
struct Parsed {
  LTaxSettingField field;
  int taxNumber = 0;
  std::string value;
  LFKTaxRate rate;
  bool on = false;
};

bool Parse(const LTaxSettingsChange::Assignment& assignment, Parsed& parsed) {
  std::size_t equals = assignment.text.find('=');
  if (equals == std::string::npos || !LTaxNumberParse(std::string_view(assignment.text).substr(0, equals), parsed.taxNumber))
    return false;
  parsed.field = assignment.field;
  parsed.value = assignment.text.substr(equals + 1);
  switch (assignment.field) {
    case LTaxSettingField::kName:
      return !parsed.value.empty() && parsed.value != kTaxNameNone && parsed.value != kTaxNameDefault;
    case LTaxSettingField::kRate: return ParseRate(parsed.value, parsed.rate);
    case LTaxSettingField::kZero: return LTaxSwitchParse(parsed.value, parsed.on);
    case LTaxSettingField::kAccount:
    case LTaxSettingField::kCombined: return true;
  }
  return false;
}

}  // namespace

bool LTaxSwitchParse(std::string_view text, bool& out) {
  if (text != "on" && text != "off") return false;
  out = text == "on";
  return true;
}

bool LTaxNumberParse(std::string_view text, int& out) {
  if (text.empty() || text.size() > 2 || text.find_first_not_of("0123456789") != std::string_view::npos) return false;
  int number = std::stoi(std::string(text));
  if (number < 1 || number > kMaxTaxes) return false;
  out = number;
  return true;
}

std::string LTaxSettingsInvalidMessage(const std::string& assignment) { return "valeur invalide : " + assignment; }

bool LTaxSettingsApply(LProfile& profile, const LTaxSettingsChange& change, std::string* error) {
  // Everything is read before anything is written.
  std::vector<Parsed> parsed(change.assignments.size());
  for (std::size_t i = 0; i < parsed.size(); ++i)
    if (!Parse(change.assignments[i], parsed[i])) {
      return LFail(error, LTaxSettingsInvalidMessage(change.assignments[i].text));
    }
  LTaxOptions tax;
  tax.OpenFrom(profile);
  if (change.count) tax.SetInt("TaxSystem", *change.count);
  if (change.defaultRate) tax.SetInt("DefaultRate", *change.defaultRate);
  if (change.inclusive) tax.SetBool("TaxInclusive", *change.inclusive);
  if (change.trackPaid) tax.SetBool("TrackTaxPaid", *change.trackPaid);
  std::vector<std::pair<std::string, std::string>> renames;
  for (const Parsed& one : parsed) {
    switch (one.field) {
      case LTaxSettingField::kName: {
        std::string old = tax.GetString(LTaxOptions::TaxField("TaxName", one.taxNumber));
        if (!old.empty() && old != one.value) renames.emplace_back(old, one.value);
        tax.SetTaxName(one.taxNumber, one.value);
        break;
      }
      case LTaxSettingField::kRate: tax.SetTaxRate(one.taxNumber, one.rate); break;
      case LTaxSettingField::kZero: tax.SetZeroRate(one.taxNumber, one.on); break;
      case LTaxSettingField::kAccount: tax.SetTaxAccountPayable(one.taxNumber, one.value); break;
      case LTaxSettingField::kCombined: tax.SetTaxCombined(one.taxNumber, one.value); break;
    }
  }
  if (!tax.Flush()) return LFail(error, "Impossible d'enregistrer les taxes.");
  for (const auto& [oldName, newName] : renames) {
    LChangeTaxNameData data{&profile, oldName, newName};
    LProcessInterfaceVoid silent;
    ProcessChangeTaxName(silent, data);
  }
  return true;
}
