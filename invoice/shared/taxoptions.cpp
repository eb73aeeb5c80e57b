#include "invoice/shared/taxoptions.h"

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestorecache.h"

std::string LTaxOptions::TaxField(std::string_view prefix, int taxNumber) {
  std::string name(prefix);
  name += std::to_string(taxNumber);
  return name;
}

void LTaxOptions::OpenFrom(const LProfile& profile) {
  (void)LFileStoreOpenAlwaysCached(profile.List(kMiscList), *this, kTaxOptionsRecord);  // as the options
}

std::string LTaxOptions::GetTaxName(int taxNumber) const {
  std::string name = GetString(TaxField("TaxName", taxNumber));
  if (!name.empty()) return name;
  if (taxNumber == 1) return std::string(kDefaultTaxName);
  int defaultRate = GetDefaultRate();
  if (defaultRate == taxNumber) return {};
  name = GetString(TaxField("TaxName", defaultRate));
  if (name.empty() && defaultRate == 1) return std::string(kDefaultTaxName);
  return name;
}

std::string LTaxOptions::GetTaxRateText(int taxNumber) const { return GetString(TaxField("TaxRate", taxNumber)); }

LFKTaxRate LTaxOptions::GetTaxRate(int taxNumber) const { return LFKParseTaxRate(GetTaxRateText(taxNumber)); }

std::string LTaxOptions::GetTaxCombined(int taxNumber) const { return GetString(TaxField("TaxCombined", taxNumber)); }

bool LTaxOptions::IsZeroRate(int taxNumber) const { return GetBool(TaxField("ZeroRate", taxNumber), false); }

std::string LTaxOptions::GetTaxAccountPayable(int taxNumber) const {
  return GetString(TaxField("TaxAccountPayable", taxNumber));
}

void LTaxOptions::SetTaxName(int taxNumber, std::string_view name) { SetString(TaxField("TaxName", taxNumber), name); }

void LTaxOptions::SetTaxRate(int taxNumber, const LFKTaxRate& rate) {
  if (rate.rate2 == 0 && !rate.compound) {
    SetString(TaxField("TaxRate", taxNumber), LFKFormatPercent(rate.rate1));
  } else {
    SetString(TaxField("TaxRate", taxNumber), LFKFormatTaxRateTriple(rate));
  }
}

void LTaxOptions::SetTaxCombined(int taxNumber, std::string_view combined) {
  if (combined.empty()) {
    DeleteField(TaxField("TaxCombined", taxNumber));
  } else {
    SetString(TaxField("TaxCombined", taxNumber), combined);
  }
}

void LTaxOptions::SetZeroRate(int taxNumber, bool zeroRated) { SetBool(TaxField("ZeroRate", taxNumber), zeroRated); }

void LTaxOptions::SetTaxAccountPayable(int taxNumber, std::string_view description) {
  SetString(TaxField("TaxAccountPayable", taxNumber), description);
}

int LTaxOptions::GetTaxNumberFromName(std::string_view name) const {
  int count = GetTaxCount();
  for (int n = 1; n <= count; ++n)
    if (GetTaxName(n) == name) return n;
  return 0;
}

int LTaxOptions::ListNameToTax(std::string_view name) const {
  if (name == kTaxNameNone) return 0;
  if (name == kTaxNameDefault) return GetDefaultRate();
  int number = GetTaxNumberFromName(name);
  return number > 0 ? number : -1;
}
