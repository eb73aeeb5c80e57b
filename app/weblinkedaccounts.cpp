// Route "settingslinked": the linked accounts, a number and a description per slot, stored by
// the "Comptes associés" dialog's own OK (which creates the accounts it names).
#include "accounts/linkedaccounts.h"
#include "app/websettings.h"
#include "invoice/shared/profile.h"
#include "llib/web/webletform.h"

namespace {
// The controls of a slot: its number box and its description box.
int NumberControl(int slot) { return 100 + slot; }
int DescriptionControl(int slot) { return 200 + slot; }
}  // namespace

LWebLinkedAccountsDialog::LWebLinkedAccountsDialog(LWebletForm& form)
    : LWebSettingsDialog(form, "settingslinked", "comptes associés") {}

void LWebLinkedAccountsDialog::InitDialog() {
  LProfile profile(WLSessionBusinessFolder(form_));
  LNeededAccountsDlg dialog;
  dialog.Fill(profile);
  for (int slot : LNeededAccountsDlg::kSlotOrder) {
    SetText(NumberControl(slot), dialog.Slot(slot).number);
    SetText(DescriptionControl(slot), dialog.Slot(slot).description);
  }
}

void LWebLinkedAccountsDialog::Generate() {
  AddStaticSmall("Un numéro de compte qui n'existe pas encore crée le compte sous la description donnée.");
  for (int slot : LNeededAccountsDlg::kSlotOrder) {
    StartGroupBox(LDefAccountSlotName(slot));
    AddInput(NumberControl(slot), "Numéro :", "", 10);
    AddInput(DescriptionControl(slot), "Description :", "", 40);
    EndGroupBox();
  }
}

bool LWebLinkedAccountsDialog::CmOk() {
  LProfile profile(WLSessionBusinessFolder(form_));
  LNeededAccountsDlg dialog;
  dialog.Fill(profile);
  for (int slot : LNeededAccountsDlg::kSlotOrder) {
    // As `account linked SLOT=NUMBER[:DESCRIPTION]`: the number names the account; the typed
    // description names one that does not exist yet (an existing account keeps its own).
    dialog.SetSlotNumber(profile, slot, GetTextAndTrim(NumberControl(slot)));
    if (dialog.Slot(slot).description.empty()) dialog.Slot(slot).description = GetTextAndTrim(DescriptionControl(slot));
  }
  std::string message;
  if (!dialog.CmOk(profile, &message)) {
    PopupBoxError(message);
    return false;
  }
  return true;
}
