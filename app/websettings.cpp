#include "app/websettings.h"

#include <string_view>

#include "app/webcompanyfields.h"
#include "invoice/shared/companydetails.h"
#include "invoice/shared/profile.h"
#include "llib/web/webletform.h"

namespace {

constexpr int kBase = 100;
constexpr int kNameControl = 101;
constexpr int kAddressControl = 102;
constexpr int kContactControl = 103;

}  // namespace

LWebCompanySettingsDialog::LWebCompanySettingsDialog(LWebletForm& form)
    : LWebSettingsDialog(form, "settings", "coordonnées de l'entreprise") {}

void LWebCompanySettingsDialog::InitDialog() {
  LProfile profile(WLSessionBusinessFolder(form_));
  LCompanyDetails details;
  LCompanyDetailsLoad(profile, details);
  SetText(kNameControl, details.name);
  SetText(kAddressControl, details.address);
  SetText(kContactControl, details.contact);
  for (const LWebCompanyField& field : LWebCompanyFields()) SetText(kBase + field.offset, details.*field.member);
  SetCheck(kBase + kWebCompanyVatExemptOffset, details.vatExempt);
}

void LWebCompanySettingsDialog::Generate() {
  AddInput(kNameControl, "Nom de l'entreprise :", "", 40);
  AddEdit(kAddressControl, "Adresse :", 40, 3);
  AddInput(kContactControl, "Contact :", "", 40);
  for (const LWebCompanyField& field : LWebCompanyFields()) {
    if (field.offset == kWebCompanyFirstLegalOffset) StartGroupBox(kWebCompanyLegalHeading);
    AddInput(kBase + field.offset, field.label, "", field.width);
  }
  AddCheckBox(kBase + kWebCompanyVatExemptOffset, kWebCompanyVatExemptLabel);
  EndGroupBox();
}

bool LWebCompanySettingsDialog::CmOk() {
  LCompanyDetails details;
  details.name = GetTextAndTrim(kNameControl);
  details.address = GetTextAndTrim(kAddressControl);
  details.contact = GetTextAndTrim(kContactControl);
  for (const LWebCompanyField& field : LWebCompanyFields()) details.*field.member = GetTextAndTrim(kBase + field.offset);
  details.vatExempt = IsChecked(kBase + kWebCompanyVatExemptOffset);
  LProfile profile(WLSessionBusinessFolder(form_));
  std::string faulty;
  std::string message = LCompanyDetailsCheck(profile, details, faulty);
  if (!message.empty()) {
    PopupControlDataInvalid(LWebCompanyFieldControl(kBase, faulty, kNameControl), message);
    return false;
  }
  if (!LCompanyDetailsStore(profile, details)) {
    PopupBoxError("Impossible d'enregistrer les coordonnées de l'entreprise.");
    return false;
  }
  return true;
}
