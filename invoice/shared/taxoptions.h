// The tax options of a business (LTaxOptions): the record "Tax" of the list "Misc". A business
// defines "TaxSystem" taxes numbered from 1, each with a name ("TaxName<n>"), a rate
// ("TaxRate<n>": a percentage or the triple rate1/rate2/compound), an optional combined
// definition ("TaxCombined<n>": the names of other taxes joined by "+", with a leading "*" when
// each part is taken on the amount plus the parts before it), a zero-rated VAT flag
// ("ZeroRate<n>") and the account, by description, into which the tax collected is posted
// ("TaxAccountPayable<n>"). "DefaultRate" is the number of the tax that lines without a tax of
// their own get; "TaxInclusive" says that prices include tax; "TrackTaxPaid" that the tax paid
// on purchases is tracked in its own account.
//
// Documents name taxes by name; two names are reserved: "Aucun" (no tax) and "Valeur/défaut"
// (the document's default tax).
#pragma once

#include <string>
#include <string_view>

#include "invoice/shared/taxrate.h"
#include "llib/gen/record.h"

class LProfile;

inline constexpr std::string_view kTaxOptionsRecord = "Tax";
inline constexpr std::string_view kTaxNameNone = "Aucun";
inline constexpr std::string_view kTaxNameDefault = "Valeur/défaut";
inline constexpr std::string_view kDefaultTaxName = "Taxe à la vente";

class LTaxOptions : public LRecord {
 public:
  // Opens (always) "Tax" of the profile's "Misc" list into this object.
  void OpenFrom(const LProfile& profile);

  // "TaxSystem": how many taxes are defined (0 when absent).
  int GetTaxCount() const { return GetInt("TaxSystem", 0); }
  // "DefaultRate", 1 when absent.
  int GetDefaultRate() const { return GetInt("DefaultRate", 1); }
  bool IsTaxInclusive() const { return GetBool("TaxInclusive", false); }
  bool IsTrackTaxPaid() const { return GetBool("TrackTaxPaid", false); }

  // "TaxName<n>"; when empty or absent: "Taxe à la vente" for tax 1, otherwise the name of the
  // default tax (which may itself be empty).
  std::string GetTaxName(int taxNumber) const;
  // "TaxRate<n>" parsed; all zero when absent.
  LFKTaxRate GetTaxRate(int taxNumber) const;
  std::string GetTaxRateText(int taxNumber) const;
  // "TaxCombined<n>", empty when the tax is not a combination.
  std::string GetTaxCombined(int taxNumber) const;
  bool IsZeroRate(int taxNumber) const;
  // "TaxAccountPayable<n>": a description, empty when not set.
  std::string GetTaxAccountPayable(int taxNumber) const;

  void SetTaxName(int taxNumber, std::string_view name);
  // Writes a single rate as a plain percentage, two rates as the triple "%s/%s/%d".
  void SetTaxRate(int taxNumber, const LFKTaxRate& rate);
  void SetTaxCombined(int taxNumber, std::string_view combined);
  void SetZeroRate(int taxNumber, bool zeroRated);
  void SetTaxAccountPayable(int taxNumber, std::string_view description);

  // The first n in 1..TaxSystem whose stored name equals name exactly, else 0.
  int GetTaxNumberFromName(std::string_view name) const;
  // A document's tax name to a tax number: "Aucun" gives 0 (no tax), "Valeur/défaut" the
  // default tax, a defined name its number; -1 when the name is unknown.
  int ListNameToTax(std::string_view name) const;

  // Field names of tax n: TaxField("TaxRate", 2) == "TaxRate2".
  static std::string TaxField(std::string_view prefix, int taxNumber);
};
