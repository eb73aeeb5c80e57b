#include "invoice/shared/regionaldefaults.h"

#include <string>

#include "invoice/shared/options.h"
#include "invoice/shared/taxoptions.h"
#include "llib/gen/locale.h"

namespace {

constexpr std::string_view kSalesTaxAccount = "Taxe à la vente perçue";
constexpr std::string_view kVatAccount = "TVA perçue";
constexpr std::string_view kGstAccount = "TPS perçue";

constexpr LTaxDefault kFrance[] = {
    {"TVA 20 %", {20, 0, false}, {}, false, kSalesTaxAccount},
    {"TVA 10 %", {10, 0, false}, {}, false, kSalesTaxAccount},
    {"TVA 5,5 %", {5.5, 0, false}, {}, false, kSalesTaxAccount},
    {"TVA 2,1 %", {2.1, 0, false}, {}, false, kSalesTaxAccount},
};
constexpr LTaxDefault kUnitedKingdom[] = {
    {"TVA 20 %", {20, 0, false}, {}, false, kVatAccount},
    {"TVA 5 %", {5, 0, false}, {}, false, kVatAccount},
    {"TVA 0 %", {0, 0, false}, {}, true, kVatAccount},
};
constexpr LTaxDefault kIreland[] = {
    {"TVA 23 %", {23, 0, false}, {}, false, kVatAccount},
    {"TVA 13,5 %", {13.5, 0, false}, {}, false, kVatAccount},
    {"TVA 9 %", {9, 0, false}, {}, false, kVatAccount},
    {"TVA 0 %", {0, 0, false}, {}, true, kVatAccount},
};
constexpr LTaxDefault kSouthAfrica[] = {
    {"TVA 15 %", {15, 0, false}, {}, false, kVatAccount},
    {"TVA 0 %", {0, 0, false}, {}, true, kVatAccount},
};
constexpr LTaxDefault kAustralia[] = {{"TPS", {10, 0, false}, {}, false, kGstAccount}};
constexpr LTaxDefault kNewZealand[] = {{"TPS", {15, 0, false}, {}, false, kGstAccount}};
constexpr LTaxDefault kElsewhere[] = {{"Taxe à la vente", {0, 0, false}, {}, false, kSalesTaxAccount}};

// Canada: the federal TPS and TVH go to the sales tax account, the provincial TVP and TVQ to
// accounts of their own (they are remitted to another authority).
constexpr std::string_view kPstAccount = "TVP perçue";
constexpr std::string_view kQstAccount = "TVQ perçue";
constexpr LTaxDefault kGst = {"TPS", {5, 0, false}, {}, false, kSalesTaxAccount};

struct Province {
  std::string_view name;
  double hst;  // TVH rate, 0 when the province has none
  double pst;  // TVP rate, 0 when none
};

constexpr Province kProvinces[kCanadaProvinceCount] = {
    {"Alberta", 0, 0},
    {"Colombie-Britannique", 0, 7},
    {"Île-du-Prince-Édouard", 15, 0},
    {"Manitoba", 0, 7},
    {"Nouveau-Brunswick", 15, 0},
    {"Nouvelle-Écosse", 14, 0},
    {"Nunavut", 0, 0},
    {"Ontario", 13, 0},
    {"Québec", 0, 0},
    {"Saskatchewan", 0, 6},
    {"Terre-Neuve-et-Labrador", 15, 0},
    {"Territoires du Nord-Ouest", 0, 0},
    {"Yukon", 0, 0},
};

void ClearTaxes(LTaxOptions& tax) {
  int count = tax.GetTaxCount();
  for (int n = 1; n <= count; ++n)
    for (std::string_view prefix : {"TaxName", "TaxRate", "TaxCombined", "ZeroRate", "TaxAccountPayable"})
      tax.DeleteField(LTaxOptions::TaxField(prefix, n));
}

void SetPaymentTerms(LRecord& documentOptions, int days) {
  documentOptions.SetInt("PaymentTerms", 2);
  documentOptions.SetInt("PaymentTermsDays", days);
}

}  // namespace

void LTaxOptionsSetTaxes(LTaxOptions& tax, std::span<const LTaxDefault> taxes, int defaultRate) {
  ClearTaxes(tax);
  int n = 0;
  for (const auto& entry : taxes) {
    ++n;
    tax.SetTaxName(n, entry.name);
    tax.SetTaxRate(n, entry.rate);
    tax.SetTaxCombined(n, entry.combined);
    tax.SetZeroRate(n, entry.zeroRated);
    tax.SetTaxAccountPayable(n, entry.account);
  }
  tax.SetInt("TaxSystem", n);
  tax.SetInt("DefaultRate", defaultRate);
}

std::string_view LCanadaProvinceName(int province) {
  if (province < 1 || province > kCanadaProvinceCount) return {};
  return kProvinces[province - 1].name;
}

bool LTaxOptionsSetCanadaRates(LTaxOptions& tax, int province) {
  if (province < 1 || province > kCanadaProvinceCount) return false;
  const Province& rates = kProvinces[province - 1];
  if (province == kProvinceQuebec) {
    const LTaxDefault taxes[] = {kGst,
                                 {"TVQ", {9.975, 0, false}, {}, false, kQstAccount},
                                 {"TPS+TVQ", {5, 9.975, true}, "*TPS+TVQ", false, kSalesTaxAccount}};
    LTaxOptionsSetTaxes(tax, taxes, 3);
  } else if (rates.hst > 0) {
    const LTaxDefault taxes[] = {{"TVH", {rates.hst, 0, false}, {}, false, kSalesTaxAccount}, kGst};
    LTaxOptionsSetTaxes(tax, taxes, 1);
  } else if (rates.pst > 0) {
    const LTaxDefault taxes[] = {kGst,
                                 {"TVP", {rates.pst, 0, false}, {}, false, kPstAccount},
                                 {"TPS+TVP", {5, rates.pst, false}, "TPS+TVP", false, kSalesTaxAccount}};
    LTaxOptionsSetTaxes(tax, taxes, 3);
  } else {
    const LTaxDefault taxes[] = {kGst};
    LTaxOptionsSetTaxes(tax, taxes, 1);
  }
  tax.SetBool("TrackTaxPaid", true);
  return true;
}

void LOptionsSetRegionalDefaults(LProfile&, LOptions& options, LTaxOptions& tax, LRecord& invoice, LRecord& order) {
  std::string country = options.GetString("CountryCode");
  int termsDays = 30;
  bool tracksTaxPaid = true;
  if (country == "FR") {
    LTaxOptionsSetTaxes(tax, kFrance, 1);
  } else if (country == "GB") {
    LTaxOptionsSetTaxes(tax, kUnitedKingdom, 1);
  } else if (country == "IE") {
    LTaxOptionsSetTaxes(tax, kIreland, 1);
  } else if (country == "ZA") {
    LTaxOptionsSetTaxes(tax, kSouthAfrica, 1);
  } else if (country == "AU") {
    LTaxOptionsSetTaxes(tax, kAustralia, 1);
    termsDays = 14;
  } else if (country == "NZ") {
    LTaxOptionsSetTaxes(tax, kNewZealand, 1);
    termsDays = 14;
  } else if (country == "CA") {
    LTaxOptionsSetCanadaRates(tax, LGetSystemLocale().language == "fr" ? kProvinceQuebec : kProvinceOntario);
  } else {
    LTaxOptionsSetTaxes(tax, kElsewhere, 1);
    tracksTaxPaid = false;
  }
  tax.SetBool("TaxInclusive", false);
  tax.SetBool("TrackTaxPaid", tracksTaxPaid);
  SetPaymentTerms(invoice, termsDays);
  SetPaymentTerms(order, termsDays);
}
