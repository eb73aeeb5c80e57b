#include "app/webstartwizard.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>

#include "app/multiplebusiness.h"
#include "app/startwizardpages.h"
#include "app/webcompanyfields.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/regionaldefaults.h"
#include "llib/gen/locale.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

namespace {

constexpr int kLastStep = 5;
constexpr std::string_view kPreviousText = "< Précédent";

// Controls, by step.
constexpr int kCountryControl = 101;
constexpr int kProvinceControl = 102;
constexpr int kNameControl = 201;
constexpr int kAddressControl = 202;
constexpr int kContactControl = 203;
constexpr int kFiscalYearEndControl = 204;
constexpr int kLegalBase = 210;  // the company's contact and legal mentions: 214 to 222, 230
constexpr int kCurrencySymbolControl = 311;
constexpr int kCurrencyNameControl = 312;
constexpr int kCurrencySubunitControl = 313;
constexpr int kManualAccountsControl = 401;
constexpr int kHasCheckingControl = 402;
constexpr int kOpeningCheckingControl = 403;
constexpr int kHasCreditCardControl = 404;
constexpr int kOpeningCreditCardControl = 405;
constexpr int kProductsRadio = 501;
constexpr int kServicesRadio = 502;

constexpr const char* kStepTitles[] = {"Pays", "Coordonnées de l'entreprise", "Devise", "Comptabilité",
                                       "Utilisation de l'entreprise"};

// The countries offered first; any other two-letter code can be typed on the command line.
struct Country {
  const char* code;
  const char* name;
};
constexpr Country kCountries[] = {
    {"FR", "France"},      {"BE", "Belgique"},    {"CH", "Suisse"},     {"LU", "Luxembourg"}, {"MC", "Monaco"},
    {"CA", "Canada"},      {"DE", "Allemagne"},   {"ES", "Espagne"},    {"IT", "Italie"},     {"PT", "Portugal"},
    {"NL", "Pays-Bas"},    {"GB", "Royaume-Uni"}, {"US", "États-Unis"}, {"AU", "Australie"},  {"NZ", "Nouvelle-Zélande"},
    {"ZA", "Afrique du Sud"},
};

// Session keys of the answers.
constexpr std::string_view kKeyCountry = "wizard.country";
constexpr std::string_view kKeyProvince = "wizard.province";
constexpr std::string_view kKeyName = "wizard.name";
constexpr std::string_view kKeyAddress = "wizard.address";
constexpr std::string_view kKeyContact = "wizard.contact";
constexpr std::string_view kKeyFiscalYearEnd = "wizard.fiscalYearEnd";
constexpr std::string_view kKeySymbol = "wizard.currencySymbol";
constexpr std::string_view kKeyCurrencyName = "wizard.currencyName";
constexpr std::string_view kKeySubunit = "wizard.currencySubunit";
constexpr std::string_view kKeyManual = "wizard.manualAccounts";
constexpr std::string_view kKeyChecking = "wizard.openingChecking";
constexpr std::string_view kKeyCreditCard = "wizard.openingCreditCard";
constexpr std::string_view kKeyUsage = "wizard.usage";
constexpr std::string_view kKeyLegalPrefix = "wizard.legal.";  // then the field's name
constexpr std::string_view kKeyVatExempt = "wizard.legal.vatExempt";
constexpr std::string_view kKeys[] = {kKeyCountry, kKeyProvince,     kKeyName,   kKeyAddress,  kKeyContact,
                                      kKeyFiscalYearEnd, kKeySymbol, kKeyCurrencyName, kKeySubunit, kKeyManual,
                                      kKeyChecking, kKeyCreditCard,  kKeyUsage};

// An optional balance is kept as "1" and its text, so that an empty balance stays a missing one.
std::optional<std::string> LoadOptional(const LWebletForm& form, std::string_view key) {
  std::string value = form.session.GetString(key, "");
  if (value.empty()) return std::nullopt;
  return value.substr(1);
}

std::string SaveOptional(const std::optional<std::string>& value) { return value ? "1" + *value : ""; }

std::string LegalKey(const LWebCompanyField& field) { return std::string(kKeyLegalPrefix) + std::string(field.name); }

std::unique_ptr<LStartWizardPage> PageOfStep(int step) {
  switch (step) {
    case 1:
      return std::make_unique<LStartWizardCountryPage>();
    case 2:
      return std::make_unique<LStartWizardPageCompanyInfo>();
    case 3:
      return std::make_unique<LStartWizardPageCurrencySettings>();
    case 4:
      return std::make_unique<LStartWizardPageAccounting>();
    default:
      return std::make_unique<LStartWizardPageBusinessUsage>();
  }
}

int ControlOfStep(int step) {
  static constexpr int kFirstControls[] = {kCountryControl, kNameControl, kCurrencySymbolControl,
                                           kManualAccountsControl, kProductsRadio};
  return kFirstControls[step - 1];
}

}  // namespace

// ---- Answers in the session -----------------------------------------------------------------------

void LWebStartWizardLoad(LWebletForm& form, LStartWizardAnswers& answers) {
  const LWebletSessionDataFileBased& session = form.session;
  answers.country = session.GetString(kKeyCountry, "");
  if (answers.country.empty()) answers.country = LGetSystemLocale().countryCode;
  answers.province = std::atoi(session.GetString(kKeyProvince, "0"));
  answers.name = session.GetString(kKeyName, "");
  answers.address = session.GetString(kKeyAddress, "");
  answers.contact = session.GetString(kKeyContact, "");
  answers.fiscalYearEnd = session.GetString(kKeyFiscalYearEnd, "");
  answers.currencySymbol = session.GetString(kKeySymbol, "");
  answers.currencyName = session.GetString(kKeyCurrencyName, "");
  answers.currencySubunit = session.GetString(kKeySubunit, "");
  answers.manualAccounts = std::string_view(session.GetString(kKeyManual, "")) == "1";
  answers.openingChecking = LoadOptional(form, kKeyChecking);
  answers.openingCreditCard = LoadOptional(form, kKeyCreditCard);
  answers.usage = session.GetString(kKeyUsage, "");
  for (const LWebCompanyField& field : LWebCompanyFields())
    answers.legal.*field.member = session.GetString(LegalKey(field), "");
  answers.legal.vatExempt = std::string_view(session.GetString(kKeyVatExempt, "")) == "1";
}

void LWebStartWizardSave(LWebletForm& form, const LStartWizardAnswers& answers) {
  LWebletSessionDataFileBased& session = form.session;
  session.SetString(kKeyCountry, answers.country);
  session.SetString(kKeyProvince, std::to_string(answers.province));
  session.SetString(kKeyName, answers.name);
  session.SetString(kKeyAddress, answers.address);
  session.SetString(kKeyContact, answers.contact);
  session.SetString(kKeyFiscalYearEnd, answers.fiscalYearEnd);
  session.SetString(kKeySymbol, answers.currencySymbol);
  session.SetString(kKeyCurrencyName, answers.currencyName);
  session.SetString(kKeySubunit, answers.currencySubunit);
  session.SetString(kKeyManual, answers.manualAccounts ? "1" : "0");
  session.SetString(kKeyChecking, SaveOptional(answers.openingChecking));
  session.SetString(kKeyCreditCard, SaveOptional(answers.openingCreditCard));
  session.SetString(kKeyUsage, answers.usage);
  for (const LWebCompanyField& field : LWebCompanyFields()) session.SetString(LegalKey(field), answers.legal.*field.member);
  session.SetString(kKeyVatExempt, answers.legal.vatExempt ? "1" : "0");
}

void LWebStartWizardForget(LWebletForm& form) {
  for (std::string_view key : kKeys) form.session.DeleteField(key);
  for (const LWebCompanyField& field : LWebCompanyFields()) form.session.DeleteField(LegalKey(field));
  form.session.DeleteField(kKeyVatExempt);
}

// ---- The dialog -----------------------------------------------------------------------------------

LWebStartWizardDialog::LWebStartWizardDialog(LWebletForm& form) : LWebDialogEx(form, "startwizard") {
  step_ = std::clamp(std::atoi(form.GetParam("step", "1").c_str()), 1, kLastStep);
  adding_ = form.GetParam("mode") == "add";
  SetTitle(LWebFormat("%s - étape %d sur %d : %s", adding_ ? "Nouvelle entreprise" : "Bienvenue dans Kontavo", step_,
                      kLastStep, kStepTitles[step_ - 1]));
  AddNavLink("help/startwizard.html", "Aide");
  std::string mode = adding_ ? "&mode=add" : "";
  SetOkText(step_ == kLastStep ? "Terminer" : "Suivant >");
  SetOkPage(step_ == kLastStep ? (adding_ ? "businesslist" : "main") : LWebFormat("startwizard?step=%d%s", step_ + 1,
                                                                                  mode.c_str()));
  // A first run has nowhere to go back to: the business needs its name.
  if (adding_) SetCancelPage("businesslist");
  else SetCancelText("");
  if (step_ > 1) AddSpecialSubmit(kPreviousText, LWebFormat("startwizard?step=%d%s", step_ - 1, mode.c_str()));
  SetFocusControl(ControlOfStep(step_));
}

bool LWebStartWizardDialog::Authenticate() {
  if (!AuthenticateAdministrator(form_)) return false;
  LWebStartWizardLoad(form_, answers_);
  return true;
}

void LWebStartWizardDialog::InitDialog() {
  // A first showing fills the controls from the answers kept so far, or their defaults.
  std::string symbol, name, subunit;
  LStartWizardCurrencyDefaults(answers_, symbol, name, subunit);
  SetText(kCountryControl, answers_.country);
  SetText(kProvinceControl, std::to_string(answers_.province));
  SetText(kNameControl, answers_.name);
  SetText(kAddressControl, answers_.address);
  SetText(kContactControl, answers_.contact);
  SetText(kFiscalYearEndControl, LStartWizardFiscalYearEndText(answers_));
  for (const LWebCompanyField& field : LWebCompanyFields()) SetText(kLegalBase + field.offset, answers_.legal.*field.member);
  SetCheck(kLegalBase + kWebCompanyVatExemptOffset, answers_.legal.vatExempt);
  SetText(kCurrencySymbolControl, symbol);
  SetText(kCurrencyNameControl, name);
  SetText(kCurrencySubunitControl, subunit);
  SetCheck(kManualAccountsControl, answers_.manualAccounts);
  SetCheck(kHasCheckingControl, answers_.openingChecking.has_value());
  SetText(kOpeningCheckingControl, answers_.openingChecking.value_or(""));
  SetCheck(kHasCreditCardControl, answers_.openingCreditCard.has_value());
  SetText(kOpeningCreditCardControl, answers_.openingCreditCard.value_or(""));
  SetRadioCheck(answers_.usage == "services" ? kServicesRadio : kProductsRadio);
}

void LWebStartWizardDialog::Generate() {
  AddHiddenField("step", std::to_string(step_));
  AddHiddenField("mode", adding_ ? "add" : "");
  switch (step_) {
    case 1:
      return GenerateCountry();
    case 2:
      return GenerateCompany();
    case 3:
      return GenerateCurrency();
    case 4:
      return GenerateAccounting();
    default:
      return GenerateUsage();
  }
}

void LWebStartWizardDialog::GenerateCountry() {
  AddStatic("Choisissez le pays de l'entreprise : il fixe la devise, l'écriture des nombres, les taxes et la fin "
            "de l'exercice proposées.");
  std::vector<std::string> texts, values;
  bool listed = false;
  for (const Country& country : kCountries) {
    texts.emplace_back(country.name);
    values.emplace_back(country.code);
    listed = listed || answers_.country == country.code;
  }
  if (!listed) {
    texts.push_back(answers_.country);
    values.push_back(answers_.country);
  }
  AddPullDownList(kCountryControl, "Pays :", texts, values, true);
  std::vector<std::string> provinces = {"(aucune)"}, numbers = {"0"};
  for (int province = 1; province <= kCanadaProvinceCount; ++province) {
    provinces.emplace_back(LCanadaProvinceName(province));
    numbers.push_back(std::to_string(province));
  }
  AddPullDownList(kProvinceControl, "Province (Canada) :", provinces, numbers);
  EnableControlOnSelectChange(kCountryControl, "CA", kProvinceControl);
}

void LWebStartWizardDialog::GenerateCompany() {
  AddInput(kNameControl, "Nom de l'entreprise :", "", 40);
  AddEdit(kAddressControl, "Adresse :", 40, 3);
  AddInput(kContactControl, "Contact :", "", 40);
  AddInput(kFiscalYearEndControl, "Fin de l'exercice (MM-JJ) :", "", 6);
  for (const LWebCompanyField& field : LWebCompanyFields()) {
    if (field.offset == kWebCompanyFirstLegalOffset) {
      StartGroupBox(kWebCompanyLegalHeading);
      AddStatic("Imprimées sur les factures ; vous pourrez les compléter plus tard dans les paramètres.");
    }
    AddInput(kLegalBase + field.offset, field.label, "", field.width);
  }
  AddCheckBox(kLegalBase + kWebCompanyVatExemptOffset, kWebCompanyVatExemptLabel);
  EndGroupBox();
}

void LWebStartWizardDialog::GenerateCurrency() {
  AddInput(kCurrencySymbolControl, "Symbole monétaire :", "", 6);
  AddInput(kCurrencyNameControl, "Nom de la devise :", "", 30);
  AddInput(kCurrencySubunitControl, "Nom de la subdivision (centimes) :", "", 30);
}

void LWebStartWizardDialog::GenerateAccounting() {
  AddCheckBox(kManualAccountsControl, "Je créerai moi-même les comptes du plan comptable");
  AddCheckBox(kHasCheckingControl, "L'entreprise a un compte-chèque", true);
  AddInput(kOpeningCheckingControl, "Solde initial du compte-chèque :", "", 14);
  AddCheckBox(kHasCreditCardControl, "L'entreprise a une carte de crédit", true);
  AddInput(kOpeningCreditCardControl, "Solde du compte de carte de crédit :", "", 14);
  EnableControlRangeOnCheck(kHasCheckingControl, kOpeningCheckingControl, kOpeningCheckingControl);
  EnableControlRangeOnCheck(kHasCreditCardControl, kOpeningCreditCardControl, kOpeningCreditCardControl);
}

void LWebStartWizardDialog::GenerateUsage() {
  AddStaticBold("Comment l'entreprise facture-t-elle ?");
  AddRadioButton(kProductsRadio, "Je vends des produits (quantités et prix unitaires)");
  AddRadioButton(kServicesRadio, "Je facture des services à l'heure (heures et taux)");
}

void LWebStartWizardDialog::ReadStep() {
  switch (step_) {
    case 1:
      answers_.country = GetTextAndTrim(kCountryControl);
      answers_.province = answers_.country == "CA" ? std::atoi(GetText(kProvinceControl).c_str()) : 0;
      break;
    case 2:
      answers_.name = GetTextAndTrim(kNameControl);
      answers_.address = GetTextAndTrim(kAddressControl);
      answers_.contact = GetTextAndTrim(kContactControl);
      answers_.fiscalYearEnd = GetTextAndTrim(kFiscalYearEndControl);
      for (const LWebCompanyField& field : LWebCompanyFields())
        answers_.legal.*field.member = GetTextAndTrim(kLegalBase + field.offset);
      answers_.legal.vatExempt = IsChecked(kLegalBase + kWebCompanyVatExemptOffset);
      break;
    case 3:
      answers_.currencySymbol = GetTextAndTrim(kCurrencySymbolControl);
      answers_.currencyName = GetTextAndTrim(kCurrencyNameControl);
      answers_.currencySubunit = GetTextAndTrim(kCurrencySubunitControl);
      break;
    case 4:
      answers_.manualAccounts = IsChecked(kManualAccountsControl);
      answers_.openingChecking.reset();
      answers_.openingCreditCard.reset();
      if (IsChecked(kHasCheckingControl)) answers_.openingChecking = GetTextAndTrim(kOpeningCheckingControl);
      if (IsChecked(kHasCreditCardControl)) answers_.openingCreditCard = GetTextAndTrim(kOpeningCreditCardControl);
      break;
    default:
      answers_.usage = GetRadioCheck(kServicesRadio) ? "services" : "products";
  }
}

bool LWebStartWizardDialog::CheckStep() {
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string message;
  bool passed = PageOfStep(step_)->Check(profile, answers_, message);
  // The page lets a business keep its own name; a new business's folder does not exist yet, so
  // the open business's name counts as taken too.
  if (passed && adding_ && step_ == 2 && LMultipleBusinessNameExists(answers_.name, {})) {
    message = kWizardDuplicateNameMessage;
    passed = false;
  }
  if (passed) return true;
  int control = ControlOfStep(step_);
  if (step_ == 2) {
    std::string faulty;
    LCompanyDetails details = answers_.legal;
    details.name = answers_.name;
    if (LCompanyDetailsCheck(profile, details, faulty) == message) control = LWebCompanyFieldControl(kLegalBase, faulty, control);
  }
  if (message == kWizardCheckingMessage) control = kOpeningCheckingControl;
  if (message == kWizardCreditCardMessage) control = kOpeningCreditCardControl;
  PopupControlDataInvalid(control, message);
  return false;
}

bool LWebStartWizardDialog::Finish() {
  std::string message;
  bool done;
  if (adding_) {
    LProfile profile(WLSessionBusinessFolder(form_));
    LMultipleBusinessDlg businesses(profile);
    businesses.InitList();
    LBusinessEntry added;
    done = businesses.CmAdd(answers_, nullptr, added, message);
  } else {
    LProfile profile(WLSessionBusinessFolder(form_));
    done = LStartWizardRun(profile, answers_, nullptr, message);
  }
  if (!done) {
    PopupBoxError(message.empty() ? std::string(kWizardAbandonedMessage) : message);
    return false;
  }
  LWebStartWizardForget(form_);
  return true;
}

bool LWebStartWizardDialog::CmOk() {
  ReadStep();
  LWebStartWizardSave(form_, answers_);
  // Going back keeps what was typed without judging it yet.
  if (form_.GetParam("submit") == kPreviousText) return true;
  if (!CheckStep()) return false;
  return step_ < kLastStep || Finish();
}
