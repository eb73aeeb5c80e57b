#include "invoice/shared/companydetails.h"

#include <cctype>
#include <string_view>

#include "invoice/shared/company.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/money.h"
#include "llib/gen/moneybounds.h"

namespace {

constexpr int kRateDigits = 6;

bool AllDigits(std::string_view text, std::size_t count) {
  if (text.size() != count) return false;
  for (char c : text)
    if (!std::isdigit(static_cast<unsigned char>(c))) return false;
  return true;
}

bool IsVatNumber(std::string_view text) {
  if (text.size() < 4 || text.size() > 15) return false;
  if (!std::isupper(static_cast<unsigned char>(text[0])) || !std::isupper(static_cast<unsigned char>(text[1])))
    return false;
  for (char c : text.substr(2))
    if (!std::isdigit(static_cast<unsigned char>(c)) && !std::isupper(static_cast<unsigned char>(c))) return false;
  return true;
}

}  // namespace

void LCompanyDetailsLoad(const LProfile& profile, LCompanyDetails& details) {
  LCompany company;
  company.OpenFrom(profile);
  details.name = company.GetName();
  details.address = company.GetAddress();
  details.contact = company.GetString("Contact");
  details.email = company.GetEmail();
  details.phone = company.GetPhone();
  details.siren = company.GetSiren();
  details.siret = company.GetSiret();
  details.vatNumber = company.GetVatNumber();
  details.legalForm = company.GetLegalForm();
  details.shareCapital =
      company.GetString("ShareCapital").empty() ? "" : LFormatAmountPlain(company.GetShareCapital(), 2);
  details.rcs = company.GetRcs();
  details.vatExempt = company.IsVatExempt();
  details.latePenaltyRate = company.GetString("LatePenaltyRate").empty()
                                ? ""
                                : LFormatAmountPlain(static_cast<long long>(company.GetLatePenaltyRate() * 100 + 0.5), 2);
  company.DetachWithoutSave();
}

std::string LCompanyDetailsCheck(const LProfile& profile, const LCompanyDetails& details, std::string& field) {
  long long value = 0;
  auto fault = [&field](const char* name, std::string message) {
    field = name;
    return message;
  };
  if (details.name.empty()) return fault("name", "Veuillez entrer le nom de l'entreprise.");
  if (!details.siren.empty() && !AllDigits(details.siren, 9))
    return fault("siren", "Le numéro SIREN doit compter 9 chiffres.");
  if (!details.siret.empty() &&
      (!AllDigits(details.siret, 14) || (!details.siren.empty() && details.siret.rfind(details.siren, 0) != 0)))
    return fault("siret", "Le numéro SIRET doit compter 14 chiffres et commencer par le numéro SIREN.");
  if (!details.vatNumber.empty() && !IsVatNumber(details.vatNumber))
    return fault("vatNumber", "Numéro de TVA intracommunautaire non valide (par exemple FR32123456789).");
  if (!details.shareCapital.empty() && (!LParseAmount(details.shareCapital, profile.GetCurrencyDigits(), value) || value < 0)) {
    if (LAmountTextIsBeyondCeiling(details.shareCapital, profile.GetCurrencyDigits()))
      return fault("shareCapital", LAmountRefusal("le capital social", details.shareCapital, details.shareCapital,
                                                  profile.GetCurrencyFormat()));
    return fault("shareCapital", "Veuillez entrer le capital social en chiffres (par exemple 10000).");
  }
  if (!details.latePenaltyRate.empty() && (!LParseAmount(details.latePenaltyRate, kRateDigits, value) || value < 0))
    return fault("latePenaltyRate", "Veuillez entrer le taux des pénalités de retard en pourcentage (par exemple 10).");
  field.clear();
  return {};
}

bool LCompanyDetailsStore(LProfile& profile, const LCompanyDetails& details) {
  LCompany company;
  // OpenAlways says whether the record was there: a new business gets its "Company" now.
  (void)profile.List(kMiscList).OpenAlways(company, kCompanyRecord);
  company.SetString("Name", details.name);
  company.SetString("Address", details.address);
  company.SetString("Contact", details.contact);
  company.SetString("Email", details.email);
  company.SetString("Phone", details.phone);
  company.SetString("SIREN", details.siren);
  company.SetString("SIRET", details.siret);
  company.SetString("VATNumber", details.vatNumber);
  company.SetString("LegalForm", details.legalForm);
  long long capital = 0;
  if (details.shareCapital.empty()) company.DeleteField("ShareCapital");
  else if (LParseAmount(details.shareCapital, profile.GetCurrencyDigits(), capital)) company.SetInt64("ShareCapital", capital);
  company.SetString("RCS", details.rcs);
  company.SetBool("VATExempt", details.vatExempt);
  long long rate = 0;
  if (details.latePenaltyRate.empty()) company.DeleteField("LatePenaltyRate");
  else if (LParseAmount(details.latePenaltyRate, kRateDigits, rate)) company.SetFloat("LatePenaltyRate", rate / 1e6);
  return company.Flush();
}
