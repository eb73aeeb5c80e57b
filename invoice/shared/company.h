// The business's own identity: the record "Company" of "Misc". Beside "Name", "Address" and
// "Contact" it holds what French law asks a seller to print on an invoice: "SIREN" (9 digits),
// "SIRET" (14 digits), "VATNumber" (intra-community VAT number), "LegalForm" ("SARL"),
// "ShareCapital" (minor units, integer text), "RCS" ("RCS Lyon"), and "Email", "Phone",
// "VATExempt" ("1" under the franchise of art. 293 B du CGI), "LatePenaltyRate" (percent) and
// "Logo" (a PNG file: a path, or a file name inside the business folder).
#pragma once

#include <string>
#include <string_view>

#include "llib/gen/record.h"

class LProfile;

inline constexpr std::string_view kCompanyRecord = "Company";
// The mention of a business under the VAT franchise.
inline constexpr std::string_view kVatExemptMention = "TVA non applicable, art. 293 B du CGI";

class LCompany : public LRecord {
 public:
  // Loads the record "Company" of the profile's "Misc" list; an absent record reads empty.
  void OpenFrom(const LProfile& profile);

  std::string GetName() const { return GetString("Name"); }
  std::string GetAddress() const { return GetString("Address"); }
  std::string GetSiren() const { return GetString("SIREN"); }
  std::string GetSiret() const { return GetString("SIRET"); }
  std::string GetVatNumber() const { return GetString("VATNumber"); }
  std::string GetLegalForm() const { return GetString("LegalForm"); }
  // "ShareCapital" in minor units; 0 when not set.
  long long GetShareCapital() const { return GetInt64("ShareCapital", 0); }
  std::string GetRcs() const { return GetString("RCS"); }
  std::string GetEmail() const { return GetString("Email"); }
  std::string GetPhone() const { return GetString("Phone"); }
  bool IsVatExempt() const { return GetBool("VATExempt", false); }
  // "LatePenaltyRate" in percent; 0 when not set.
  double GetLatePenaltyRate() const { return GetFloat("LatePenaltyRate", 0); }
  // The path of the logo file; empty when none is set.
  std::string GetLogoPath(const LProfile& profile) const;
};
