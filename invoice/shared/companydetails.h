// The company details as the settings page edits them: the identity of the business and the
// legal mentions its printed documents carry. The checks are those of French registration
// numbers: a SIREN of 9 digits, a SIRET of 14 digits that begins with the SIREN, an
// intra-community VAT number of two letters and 2 to 13 letters or digits.
#pragma once

#include <string>

class LProfile;

struct LCompanyDetails {
  std::string name;
  std::string address;
  std::string contact;
  std::string email;
  std::string phone;
  std::string siren;
  std::string siret;
  std::string vatNumber;
  std::string legalForm;
  std::string shareCapital;     // amount in currency units as typed ("10000.00"); "" none
  std::string rcs;
  bool vatExempt = false;
  std::string latePenaltyRate;  // percent as typed ("10.5"); "" none
};

// Reads the "Company" record of the business into details (amounts as decimal text).
void LCompanyDetailsLoad(const LProfile& profile, LCompanyDetails& details);
// "" when the details can be stored; otherwise the French message of the first fault, and field
// names the faulty member ("name", "siren", ...).
std::string LCompanyDetailsCheck(const LProfile& profile, const LCompanyDetails& details, std::string& field);
// Stores checked details into "Company" ("ShareCapital" in minor units, "LatePenaltyRate" as
// "%.6lf"). false when the record cannot be written.
[[nodiscard]] bool LCompanyDetailsStore(LProfile& profile, const LCompanyDetails& details);
