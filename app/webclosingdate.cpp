// Route "settingsclosing": the closing date of the books.
#include "accounts/closingdate.h"
#include "app/websettings.h"
#include "invoice/shared/profile.h"
#include "llib/web/webletform.h"

namespace {
constexpr int kEnabledControl = 101;
constexpr int kDateControl = 102;
}  // namespace

LWebClosingDateDialog::LWebClosingDateDialog(LWebletForm& form)
    : LWebSettingsDialog(form, "settingsclosing", "date de clôture") {}

void LWebClosingDateDialog::InitDialog() {
  LProfile profile(WLSessionBusinessFolder(form_));
  LClosingDate closing;
  LClosingDateLoad(profile, closing);
  SetCheck(kEnabledControl, closing.enabled);
  SetText(kDateControl, closing.date);
}

void LWebClosingDateDialog::Generate() {
  AddCheckBox(kEnabledControl, "Clôturer les livres jusqu'à la date ci-dessous", true);
  AddDateInput(kDateControl, "Date de clôture :", "");
  AddStaticSmall("Aucune écriture ne peut être passée ni modifiée à cette date ou avant tant que la clôture est active.");
  EnableControlRangeOnCheck(kEnabledControl, kDateControl, kDateControl);
}

bool LWebClosingDateDialog::CmOk() {
  LClosingDate closing;
  closing.enabled = IsChecked(kEnabledControl);
  closing.date = GetTextAndTrim(kDateControl);
  if (std::string message = LClosingDateCheck(closing); !message.empty()) {
    PopupControlDataInvalid(kDateControl, message);
    return false;
  }
  LProfile profile(WLSessionBusinessFolder(form_));
  if (!LClosingDateStore(profile, closing)) {
    PopupBoxError("Impossible d'enregistrer la date de clôture.");
    return false;
  }
  return true;
}
