#include "app/websettings.h"

#include <string_view>

#include "invoice/shared/companydetails.h"
#include "invoice/shared/profile.h"
#include "llib/web/webletform.h"

namespace {

// The fields of the page: control id, member, label, width.
struct Field {
  int id;
  std::string LCompanyDetails::*member;
  std::string_view name;  // as LCompanyDetailsCheck names it
  std::string_view label;
  int width;
};
constexpr int kAddressControl = 102;
constexpr int kVatExemptControl = 120;
const Field kFields[] = {
    {101, &LCompanyDetails::name, "name", "Nom de l'entreprise :", 40},
    {103, &LCompanyDetails::contact, "contact", "Contact :", 40},
    {104, &LCompanyDetails::email, "email", "Courriel :", 40},
    {105, &LCompanyDetails::phone, "phone", "Téléphone :", 20},
    {106, &LCompanyDetails::legalForm, "legalForm", "Forme juridique :", 12},
    {107, &LCompanyDetails::shareCapital, "shareCapital", "Capital social :", 14},
    {108, &LCompanyDetails::siren, "siren", "SIREN :", 12},
    {109, &LCompanyDetails::siret, "siret", "SIRET :", 16},
    {110, &LCompanyDetails::rcs, "rcs", "RCS :", 20},
    {111, &LCompanyDetails::vatNumber, "vatNumber", "N° de TVA intracommunautaire :", 16},
    {112, &LCompanyDetails::latePenaltyRate, "latePenaltyRate", "Taux des pénalités de retard (%) :", 8},
};

}  // namespace

LWebCompanySettingsDialog::LWebCompanySettingsDialog(LWebletForm& form)
    : LWebSettingsDialog(form, "settings", "coordonnées de l'entreprise") {}

void LWebCompanySettingsDialog::InitDialog() {
  LProfile profile(WLSessionBusinessFolder(form_));
  LCompanyDetails details;
  LCompanyDetailsLoad(profile, details);
  for (const Field& field : kFields) SetText(field.id, details.*field.member);
  SetText(kAddressControl, details.address);
  SetCheck(kVatExemptControl, details.vatExempt);
}

void LWebCompanySettingsDialog::Generate() {
  AddInput(kFields[0].id, kFields[0].label, "", kFields[0].width);
  AddEdit(kAddressControl, "Adresse :", 40, 3);
  for (std::size_t i = 1; i < std::size(kFields); ++i) {
    if (kFields[i].id == 106) StartGroupBox("Mentions légales des documents");
    AddInput(kFields[i].id, kFields[i].label, "", kFields[i].width);
  }
  AddCheckBox(kVatExemptControl, "TVA non applicable, art. 293 B du CGI (franchise en base)");
  EndGroupBox();
}

bool LWebCompanySettingsDialog::CmOk() {
  LCompanyDetails details;
  for (const Field& field : kFields) details.*field.member = GetTextAndTrim(field.id);
  details.address = GetTextAndTrim(kAddressControl);
  details.vatExempt = IsChecked(kVatExemptControl);
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string faulty;
  std::string message = LCompanyDetailsCheck(profile, details, faulty);
  if (!message.empty()) {
    int control = kFields[0].id;
    for (const Field& field : kFields)
      if (field.name == faulty) control = field.id;
    PopupControlDataInvalid(control, message);
    return false;
  }
  if (!LCompanyDetailsStore(profile, details)) {
    PopupBoxError("Impossible d'enregistrer les coordonnées de l'entreprise.");
    return false;
  }
  return true;
}
