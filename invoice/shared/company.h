// The business's own identity: the record "Company" of the list "Misc". Beside the "Name",
// "Address" and "Contact" that the start wizard writes, it holds the legal mentions ("SIREN", 9
// digits; "SIRET", 14; "VATNumber"; "LegalForm"; "ShareCapital" in cents; "RCS"; "Email";
// "Phone"; "VATExempt") and the end of the fiscal year ("FiscalYearEnd" month,
// "FiscalYearEndDay" day; accounts/fiscalyear.h reads them).
#pragma once

#include <string>

#include "llib/gen/record.h"

class LProfile;

inline constexpr std::string_view kCompanyRecord = "Company";

class LCompanyOptions : public LRecord {
 public:
  // Opens (always) the record "Company" of the profile's "Misc" list into this object.
  void OpenFrom(const LProfile& profile);

  std::string GetName() const { return GetString("Name"); }
  std::string GetSIREN() const { return GetString("SIREN"); }
  std::string GetSIRET() const { return GetString("SIRET"); }
  std::string GetVATNumber() const { return GetString("VATNumber"); }
};
