#include "app/startwizardpages.h"

#include <cctype>
#include <cstdio>

#include "app/multiplebusiness.h"
#include "app/startwizardledger.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/regionaldefaults.h"
#include "invoice/shared/taxoptions.h"
#include "llib/gen/locale.h"
#include "llib/gen/money.h"

namespace {

constexpr std::string_view kServicesUsage = "services";
constexpr std::string_view kProductsUsage = "products";

// Opens (always) a record of the business's "Misc" list; written when it goes out of scope.
void OpenMisc(const LProfile& profile, LRecord& record, std::string_view key) {
  profile.List(kMiscList).OpenAlways(record, key);
}

std::string TwoDigits(int value) {
  char text[8];
  std::snprintf(text, sizeof text, "%02d", value);
  return text;
}

// "MM-DD" of a day that exists in some year (29 February included). false otherwise.
bool ParseMonthDay(std::string_view text, int& month, int& day) {
  if (text.size() != 5 || text[2] != '-') return false;
  for (std::size_t i : {0u, 1u, 3u, 4u})
    if (!std::isdigit(static_cast<unsigned char>(text[i]))) return false;
  month = (text[0] - '0') * 10 + (text[1] - '0');
  day = (text[3] - '0') * 10 + (text[4] - '0');
  static constexpr int kLongestMonth[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month >= 1 && month <= 12 && day >= 1 && day <= kLongestMonth[month - 1];
}

}  // namespace

std::string LStartWizardFiscalYearEndText(const LStartWizardAnswers& answers) {
  if (!answers.fiscalYearEnd.empty()) return answers.fiscalYearEnd;
  int month, day;
  LStartWizardFiscalYearEnd(answers.country, month, day);
  return TwoDigits(month) + "-" + TwoDigits(day);
}

namespace {

// The name and the name of the hundredth of a currency, for the currency page's defaults.
struct CurrencyNames {
  std::string_view code;
  std::string_view name;
  std::string_view subunit;
};

constexpr CurrencyNames kCurrencyNames[] = {
    {"EUR", "Euro", "Centime"},
    {"USD", "Dollar américain", "Cent"},
    {"CAD", "Dollar canadien", "Cent"},
    {"AUD", "Dollar australien", "Cent"},
    {"NZD", "Dollar néo-zélandais", "Cent"},
    {"GBP", "Livre sterling", "Penny"},
    {"ZAR", "Rand", "Cent"},
    {"CHF", "Franc suisse", "Centime"},
};

}  // namespace

void LStartWizardCurrencyDefaults(const LStartWizardAnswers& answers, std::string& symbol, std::string& name,
                                  std::string& subunit) {
  std::string code;
  int digits = 2;
  LCurrencyOfCountry(answers.country, code, symbol, digits);
  name = code;
  subunit.clear();
  for (const CurrencyNames& names : kCurrencyNames) {
    if (names.code == code) {
      name = names.name;
      subunit = names.subunit;
    }
  }
  if (!answers.currencySymbol.empty()) symbol = answers.currencySymbol;
  if (!answers.currencyName.empty()) name = answers.currencyName;
  if (!answers.currencySubunit.empty()) subunit = answers.currencySubunit;
}

namespace {

bool ParseOpening(const std::optional<std::string>& text, const LProfile& profile, long long& amountCents) {
  return text.has_value() && LParseAmount(*text, profile.GetCurrencyDigits(), amountCents);
}

// Asks whether the business has an account, then its opening balance.
bool AskOpening(LStartWizardPrompter& prompter, std::string_view hasPrompt, std::string_view balancePrompt,
                std::optional<std::string>& balance) {
  bool has = balance.has_value();
  if (!prompter.AskYesNo(hasPrompt, has, has)) return false;
  if (!has) {
    balance.reset();
    return true;
  }
  std::string text;
  if (!prompter.Ask(balancePrompt, balance.value_or(""), text)) return false;
  balance = text;
  return true;
}

// The company details the settings page edits, as the wizard's answers give them.
LCompanyDetails CompanyDetails(const LStartWizardAnswers& answers) {
  LCompanyDetails details = answers.legal;
  details.name = answers.name;
  details.address = answers.address;
  details.contact = answers.contact;
  return details;
}

// The French general chart: asked for, or by default for a business in France.
bool IsPcgChart(const LStartWizardAnswers& answers) {
  return answers.chart.empty() ? answers.country == "FR" : answers.chart == kStartWizardPcgChart;
}

}  // namespace

// ---- Country -----------------------------------------------------------------------------------

bool LStartWizardCountryPage::Ask(LStartWizardPrompter& prompter, const LProfile&, LStartWizardAnswers& answers) {
  std::string country;
  if (!prompter.Ask("Pays (code à deux lettres)", answers.country, country)) return false;
  for (char& c : country) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  answers.country = country;
  if (country != "CA") {
    answers.province = 0;
    return true;
  }
  for (int province = 1; province <= kCanadaProvinceCount; ++province)
    prompter.Show(std::to_string(province) + ". " + std::string(LCanadaProvinceName(province)));
  std::string province;
  if (!prompter.Ask("Province (numéro)", answers.province > 0 ? std::to_string(answers.province) : "", province))
    return false;
  answers.province = province.empty() ? 0 : std::atoi(province.c_str());
  return true;
}

bool LStartWizardCountryPage::Check(const LProfile&, const LStartWizardAnswers& answers, std::string& message) {
  const std::string& country = answers.country;
  if (country.size() != 2 || !std::isupper(static_cast<unsigned char>(country[0])) ||
      !std::isupper(static_cast<unsigned char>(country[1]))) {
    message = "Veuillez entrer le code du pays en deux lettres (par exemple FR).";
    return false;
  }
  if (answers.province != 0 && (country != "CA" || LCanadaProvinceName(answers.province).empty())) {
    message = "Veuillez choisir une province du Canada dans la liste.";
    return false;
  }
  return true;
}

bool LStartWizardCountryPage::Write(LProfile& profile, const LStartWizardAnswers& answers) {
  {
    LOptions options;
    options.OpenFrom(profile);
    options.SetString("CountryCode", answers.country);
    // The business was initialised with the computer's regional settings; a business of another
    // country keeps its books in that country's currency and writes its numbers its way.
    if (answers.country != LGetSystemLocale().countryCode) {
      LSystemLocale country = LLocaleOfCountry(answers.country);
      options.SetString("CurrencyType", country.currencyCode);
      options.SetString("CurrencySymbol", country.currencySymbol);
      options.SetInt("CurrencyOrder", country.currencyOrder);
      options.SetInt("CurrencyDigits", country.currencyDigits);
      options.SetString("DecimalSymbol", country.decimalSymbol);
      options.SetString("ThousandsSymbol", country.thousandsSymbol);
      options.SetInt("MeasurementUnits", country.metric ? 0 : 1);
      options.SetInt("PrintedDateOrder", country.dateOrder);
    }
    if (!options.Flush()) return false;
  }
  if (answers.province <= 0) return true;
  LTaxOptions tax;
  tax.OpenFrom(profile);
  LTaxOptionsSetCanadaRates(tax, answers.province);
  return tax.Flush();
}

// ---- Company details ---------------------------------------------------------------------------

bool LStartWizardPageCompanyInfo::Ask(LStartWizardPrompter& prompter, const LProfile&, LStartWizardAnswers& answers) {
  std::string fiscalYearEnd = LStartWizardFiscalYearEndText(answers);
  if (!prompter.Ask("Nom de l'entreprise", answers.name, answers.name) ||
      !prompter.Ask("Adresse", answers.address, answers.address) ||
      !prompter.Ask("Contact", answers.contact, answers.contact) ||
      !prompter.Ask("Fin de l'exercice (MM-JJ)", fiscalYearEnd, answers.fiscalYearEnd))
    return false;
  LCompanyDetails& legal = answers.legal;
  bool asked = !legal.siren.empty() || !legal.vatNumber.empty() || !legal.legalForm.empty();
  if (!prompter.AskYesNo("Saisir les mentions légales (SIREN, n° de TVA, forme juridique…) ?", asked, asked)) return false;
  if (!asked) return true;
  std::pair<const char*, std::string*> questions[] = {
      {"SIREN (9 chiffres)", &legal.siren},
      {"SIRET (14 chiffres)", &legal.siret},
      {"N° de TVA intracommunautaire", &legal.vatNumber},
      {"Forme juridique (SARL, SAS…)", &legal.legalForm},
      {"Capital social", &legal.shareCapital},
      {"RCS (par exemple RCS Lyon)", &legal.rcs},
      {"Taux des pénalités de retard (%)", &legal.latePenaltyRate},
      {"E-mail", &legal.email},
      {"Téléphone", &legal.phone},
  };
  for (auto& [prompt, value] : questions)
    if (!prompter.Ask(prompt, *value, *value)) return false;
  return prompter.AskYesNo("TVA non applicable (franchise en base, art. 293 B du CGI) ?", legal.vatExempt,
                           legal.vatExempt);
}

bool LStartWizardPageCompanyInfo::Check(const LProfile& profile, const LStartWizardAnswers& answers,
                                        std::string& message) {
  if (answers.name.empty()) {
    message = kWizardEmptyNameMessage;
    return false;
  }
  if (LMultipleBusinessNameExists(answers.name, profile.GetDatabaseName())) {
    message = kWizardDuplicateNameMessage;
    return false;
  }
  int month, day;
  if (!ParseMonthDay(LStartWizardFiscalYearEndText(answers), month, day)) {
    message = "Veuillez entrer une fin d'exercice valide (MM-JJ).";
    return false;
  }
  std::string field;
  message = LCompanyDetailsCheck(profile, CompanyDetails(answers), field);
  return message.empty();
}

bool LStartWizardPageCompanyInfo::Write(LProfile& profile, const LStartWizardAnswers& answers) {
  int month = 12, day = 31;
  ParseMonthDay(LStartWizardFiscalYearEndText(answers), month, day);
  if (!LCompanyDetailsStore(profile, CompanyDetails(answers))) return false;
  {
    LRecord company;
    OpenMisc(profile, company, "Company");
    company.SetInt("FiscalYearEnd", month);
    company.SetInt("FiscalYearEndDay", day);
    if (!company.Flush()) return false;
  }
  // The country's default options, on the records as the pages before left them.
  LOptions options;
  options.OpenFrom(profile);
  LTaxOptions tax;
  tax.OpenFrom(profile);
  LRecord invoice, order;
  OpenMisc(profile, invoice, "Invoice");
  OpenMisc(profile, order, "Order");
  LOptionsSetRegionalDefaults(profile, options, tax, invoice, order);
  // Canada's defaults take the locale's province: the one chosen on the country page stays.
  if (answers.province > 0) LTaxOptionsSetCanadaRates(tax, answers.province);
  return options.Flush() && tax.Flush() && invoice.Flush() && order.Flush();
}

// ---- Currency ------------------------------------------------------------------------------------

bool LStartWizardPageCurrencySettings::Ask(LStartWizardPrompter& prompter, const LProfile&,
                                           LStartWizardAnswers& answers) {
  std::string symbol, name, subunit;
  LStartWizardCurrencyDefaults(answers, symbol, name, subunit);
  return prompter.Ask("Symbole monétaire", symbol, answers.currencySymbol) &&
         prompter.Ask("Nom de la devise", name, answers.currencyName) &&
         prompter.Ask("Nom de la subdivision (centimes)", subunit, answers.currencySubunit);
}

bool LStartWizardPageCurrencySettings::Check(const LProfile&, const LStartWizardAnswers&, std::string&) {
  return true;  // every answer has a default
}

bool LStartWizardPageCurrencySettings::Write(LProfile& profile, const LStartWizardAnswers& answers) {
  std::string symbol, name, subunit;
  LStartWizardCurrencyDefaults(answers, symbol, name, subunit);
  LOptions options;
  options.OpenFrom(profile);
  options.SetString("CurrencySymbol", symbol);
  options.SetString("CurrencyName", name);
  options.SetString("CurrencySubunit", subunit);
  return options.Flush();
}

// ---- Accounting ----------------------------------------------------------------------------------

bool LStartWizardPageAccounting::Ask(LStartWizardPrompter& prompter, const LProfile&, LStartWizardAnswers& answers) {
  if (answers.country == "FR") {
    bool pcg = IsPcgChart(answers);
    if (!prompter.AskYesNo("Utiliser le plan comptable général (PCG) ?", pcg, pcg)) return false;
    answers.chart = pcg ? kStartWizardPcgChart : kStartWizardGenericChart;
  }
  return prompter.AskYesNo("Créer vous-même les comptes du plan comptable ?", answers.manualAccounts,
                           answers.manualAccounts) &&
         AskOpening(prompter, "L'entreprise a-t-elle un compte-chèque ?", "Solde initial du compte-chèque",
                    answers.openingChecking) &&
         AskOpening(prompter, "L'entreprise a-t-elle une carte de crédit ?", "Solde du compte de carte de crédit",
                    answers.openingCreditCard);
}

bool LStartWizardPageAccounting::Check(const LProfile& profile, const LStartWizardAnswers& answers,
                                       std::string& message) {
  if (!answers.chart.empty() && answers.chart != kStartWizardPcgChart && answers.chart != kStartWizardGenericChart) {
    message = "Veuillez choisir le plan comptable : pcg (plan comptable général) ou generic.";
    return false;
  }
  long long amountCents;
  if (answers.openingChecking.has_value() && !ParseOpening(answers.openingChecking, profile, amountCents)) {
    message = kWizardCheckingMessage;
    return false;
  }
  if (answers.openingCreditCard.has_value() && !ParseOpening(answers.openingCreditCard, profile, amountCents)) {
    message = kWizardCreditCardMessage;
    return false;
  }
  return true;
}

bool LStartWizardPageAccounting::Write(LProfile& profile, const LStartWizardAnswers& answers) {
  {
    LRecord company;
    OpenMisc(profile, company, "Company");
    company.SetString("ManualCreateAccounts", answers.manualAccounts ? "1" : "0");
    if (!company.Flush()) return false;
  }
  // The opening balances go on accounts of the chart: it comes first.
  bool pcg = IsPcgChart(answers);
  if (!LStartWizardCreateDefaultAccounts(profile, pcg)) return false;
  long long amountCents;
  if (ParseOpening(answers.openingChecking, profile, amountCents) &&
      !LStartWizardSetOpeningBalance(profile, LStartWizardCheckingAccount(pcg), amountCents))
    return false;
  if (ParseOpening(answers.openingCreditCard, profile, amountCents) &&
      !LStartWizardSetOpeningBalance(profile, LStartWizardCreditCardAccount(pcg), amountCents))
    return false;
  return true;
}

// ---- Business usage ------------------------------------------------------------------------------

bool LStartWizardPageBusinessUsage::Ask(LStartWizardPrompter& prompter, const LProfile&,
                                        LStartWizardAnswers& answers) {
  bool services = answers.usage == kServicesUsage;
  if (!prompter.AskYesNo("Facturez-vous des services à l'heure ?", services, services)) return false;
  answers.usage = services ? kServicesUsage : kProductsUsage;
  return true;
}

bool LStartWizardPageBusinessUsage::Check(const LProfile&, const LStartWizardAnswers& answers, std::string& message) {
  if (answers.usage.empty() || answers.usage == kProductsUsage || answers.usage == kServicesUsage) return true;
  message = "Veuillez choisir l'utilisation de l'entreprise : products ou services.";
  return false;
}

bool LStartWizardPageBusinessUsage::Write(LProfile& profile, const LStartWizardAnswers& answers) {
  if (answers.usage != kServicesUsage) return true;
  LRecord style;
  OpenMisc(profile, style, "InvoiceStyle");
  style.SetInt("TextBlockBottomRight", 0);
  LRecord invoice;
  OpenMisc(profile, invoice, "Invoice");
  invoice.SetString("QuantityColumnTitle", "Hres");
  invoice.SetString("ItemcodeColumnTitle", "Code taux");
  return style.Flush() && invoice.Flush();
}
