// The start wizard: sets up a new business page by page.
//
//   country          the country, and for Canada the province whose tax rates go into "Tax"
//   company details  "Name", "Address", "Contact", "FiscalYearEnd" (month), "FiscalYearEndDay"
//                    and the legal mentions printed documents carry ("SIREN", "SIRET",
//                    "VATNumber", "LegalForm", "ShareCapital", "RCS", "LatePenaltyRate",
//                    "VATExempt", "Email", "Phone", checked as the settings check them) into
//                    "Company", then the country's default options
//   currency         "CurrencySymbol", "CurrencyName", "CurrencySubunit" into "Options"
//   accounting       "ManualCreateAccounts" into "Company"; the chart of accounts (the French
//                    "Plan comptable général" or the generic chart); the opening balances of the
//                    checking account (1110, 512000) and the credit card (2110, 519000)
//   business usage   invoice layout for the way the business sells
//
// Each page takes its answers (given beforehand, or asked on a terminal through a prompter) and
// checks them with its own message; on a terminal a refused page is asked again. Nothing is
// written until every page is confirmed, so an abandoned or refused wizard leaves the business
// exactly as it was.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/companydetails.h"

class LProfile;

inline constexpr std::string_view kWizardEmptyNameMessage = "Veuillez entrer le nom de l'entreprise.";
inline constexpr std::string_view kWizardDuplicateNameMessage = "Le nom de l'entreprise (raison sociale) existe déjà.";
inline constexpr std::string_view kWizardCheckingMessage = "Veuillez entrer un solde initial pour le compte-chèque.";
inline constexpr std::string_view kWizardCreditCardMessage = "Veuillez entrer un solde de compte de carte de crédit.";
inline constexpr std::string_view kWizardAbandonedMessage = "Création de l'entreprise abandonnée.";

struct LStartWizardAnswers {
  // Country page.
  std::string country;                           // ISO 3166 code; "" the system locale's
  int province = 0;                              // Canada: 1 to 13 (LCanadaProvinceName); 0 none
  // Company details page.
  std::string name;
  std::string address;
  std::string contact;
  std::string fiscalYearEnd;                     // "MM-DD"; "" the country's
  LCompanyDetails legal;                         // the legal mentions; its name, address and contact
                                                 // are not read: the three above are the business's
  // Currency page ("" keeps the country's currency).
  std::string currencySymbol;
  std::string currencyName;
  std::string currencySubunit;
  // Accounting page. A balance that is present says the business has that account; its text is
  // the opening balance in currency units ("1234.56"), and an empty text is a missing balance.
  bool manualAccounts = false;
  std::string chart;                             // "pcg" or "generic"; "" PCG in France, else generic
  std::optional<std::string> openingChecking;
  std::optional<std::string> openingCreditCard;
  // Business usage page: "products" ("" too) or "services" (billed by the hour).
  std::string usage;
};

// Asks the wizard's questions on a terminal: the prompt on out, the answer from in.
class LStartWizardPrompter {
 public:
  LStartWizardPrompter(std::istream& in, std::ostream& out) : in_(in), out_(out) {}
  // Shows "prompt [def] : " and reads one line; an empty line takes def. false at the end of
  // the input: the user abandons the wizard.
  bool Ask(std::string_view prompt, std::string_view def, std::string& answer);
  // A yes-or-no question ("o"/"oui" or "n"/"non"), asked again until answered.
  bool AskYesNo(std::string_view prompt, bool def, bool& answer);
  // Shows a page's message before the page is asked again.
  void Show(std::string_view message);

 private:
  std::istream& in_;
  std::ostream& out_;
};

// The default end of the fiscal year in a country: AU 30 June; CA, NZ, ZA 31 March; GB 5 April;
// every other country 31 December.
void LStartWizardFiscalYearEnd(std::string_view country, int& month, int& day);

// Runs the wizard on the open business of profile, asking through prompter when not null
// (otherwise the answers are taken as they are). true when every page was confirmed and written
// (the profile is then reloaded). false when a page refused its answers (message holds the
// page's message) or the user abandoned (message empty); nothing was written then.
bool LStartWizardRun(LProfile& profile, LStartWizardAnswers& answers, LStartWizardPrompter* prompter,
                     std::string& message);
