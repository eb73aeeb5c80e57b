// Regional defaults of a new business, by the country of its "CountryCode":
//   FR     TVA 20 %, 10 %, 5,5 %, 2,1 % (default 20 %), into "Taxe à la vente perçue";
//   GB     TVA 20 %, 5 %, 0 % zero-rated (default 20 %), into "TVA perçue";
//   IE     TVA 23 %, 13,5 %, 9 %, 0 % zero-rated, into "TVA perçue";
//   ZA     TVA 15 %, 0 % zero-rated, into "TVA perçue";
//   AU, NZ TPS 10 % / 15 %, into "TPS perçue";
//   CA     by province (LTaxOptionsSetCanadaRates): Québec for a French-speaking system,
//          Ontario otherwise;
//   others one "Taxe à la vente" at 0 %, to be set by the user.
// Prices exclude tax everywhere. Countries with a recoverable VAT or GST track the tax paid
// ("TrackTaxPaid"). Invoices and orders get payment terms of 30 days (14 in AU and NZ).
#pragma once

#include <span>
#include <string_view>

#include "invoice/shared/taxrate.h"

class LProfile;
class LTaxOptions;

// One tax of a table of taxes as the tax options store it.
struct LTaxDefault {
  std::string_view name;      // "TaxName"
  LFKTaxRate rate;            // "TaxRate"
  std::string_view combined;  // "TaxCombined": the combined definition ("A+B"), empty for a plain tax
  bool zeroRated;             // "ZeroRate"
  std::string_view account;   // "TaxAccountPayable": description of the account the tax is posted to
};

// Replaces the taxes of tax with taxes, numbered from 1 in their order, and makes tax number
// defaultRate the default one. The other tax options are left as they are.
void LTaxOptionsSetTaxes(LTaxOptions& tax, std::span<const LTaxDefault> taxes, int defaultRate);

// Canadian provinces and territories, in the order the start wizard lists them; the province
// number is the position + 1.
inline constexpr int kCanadaProvinceCount = 13;
// The province's French name; empty outside 1..kCanadaProvinceCount.
std::string_view LCanadaProvinceName(int province);
inline constexpr int kProvinceOntario = 8;
inline constexpr int kProvinceQuebec = 9;

// Replaces the taxes of tax with those of the province:
//   TPS 5 % only (Alberta, the territories);
//   TVH (13 % Ontario, 14 % Nouvelle-Écosse, 15 % Nouveau-Brunswick, Île-du-Prince-Édouard,
//   Terre-Neuve-et-Labrador) then TPS 5 % for sales to other provinces;
//   TPS 5 %, TVP (7 % Colombie-Britannique and Manitoba, 6 % Saskatchewan) and the
//   combination "TPS+TVP" as default;
//   Québec: TPS 5 %, TVQ 9.975 % and the compound "*TPS+TVQ" (TVQ on the price plus the TPS) as
//   default.
// false, tax unchanged, for an unknown province.
bool LTaxOptionsSetCanadaRates(LTaxOptions& tax, int province);

