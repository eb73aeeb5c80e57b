// The company details as the pages ask them, one table for the settings page and the start
// wizard so that both show the same labels and map the same checks to their controls. A page
// gives each field the control id base + offset.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "invoice/shared/companydetails.h"

struct LWebCompanyField {
  int offset;
  std::string LCompanyDetails::*member;
  std::string_view name;  // as LCompanyDetailsCheck names it
  std::string_view label;
  int width;
};

// The contact of the business (e-mail, phone) then its legal mentions (legal form, capital,
// SIREN, SIRET, RCS, VAT number, late-payment penalty rate); the first legal one at
// kWebCompanyFirstLegalOffset.
std::span<const LWebCompanyField> LWebCompanyFields();
inline constexpr int kWebCompanyFirstLegalOffset = 6;
// The check box "TVA non applicable, art. 293 B du CGI" comes at base + this offset.
inline constexpr int kWebCompanyVatExemptOffset = 20;
inline constexpr std::string_view kWebCompanyVatExemptLabel = "TVA non applicable, art. 293 B du CGI (franchise en base)";
inline constexpr std::string_view kWebCompanyLegalHeading = "Mentions légales des documents";

// The control (base + offset) of the field LCompanyDetailsCheck named; fallback when none is.
int LWebCompanyFieldControl(int base, std::string_view name, int fallback);
