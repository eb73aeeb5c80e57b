// The settings of the open business as pages for the administrator, each a thin dialog over
// the routine its command uses (the checks and their messages are the routine's):
//
//   "settingsmenu"       the list of the settings pages (the tab "Réglages")
//   "settings"           company details and legal mentions      (companydetails.h)
//   "settingsregional"   currency symbol and place, number symbols, date order (regionalsettings.h)
//   "settingstax"        the taxes, as `kontavo tax set`          (taxsettings.h)
//   "settingsdocuments"  notes, footer and terms of each kind of document, line discounts
//                        (documentoptions.h)
//   "settingslinked"     the linked accounts, as `kontavo account linked` (linkedaccounts.h)
//   "settingsmail"       the e-mail settings, as `kontavo mail config`, and a test message
//   "settingsweb"        the web server, as `kontavo web enable|disable|port`
//   "settingsclosing"    the closing date of the books            (closingdate.h)
//
// Every route refuses anyone but an administrator (or the desk): other users are sent to the
// main page.
#pragma once

#include "invoice/shared/webaccess.h"
#include "invoice/shared/webnavtabs.h"

// A settings dialog: administrators only, links back to the settings list and to help.
class LWebSettingsDialog : public LWebDialogEx {
 public:
  LWebSettingsDialog(LWebletForm& form, std::string_view routeName, std::string_view title);
  bool Authenticate() override { return AuthenticateAdministrator(form_); }
};

class LWebSettingsMenuPage : public LWebPageWithNavTabs {
 public:
  explicit LWebSettingsMenuPage(LWebletForm& form);
  bool Authenticate() override { return AuthenticateAdministrator(form_); }
  void Generate() override;
};

class LWebCompanySettingsDialog : public LWebSettingsDialog {
 public:
  explicit LWebCompanySettingsDialog(LWebletForm& form);
  void InitDialog() override;
  void Generate() override;
  bool CmOk() override;
};

class LWebRegionalSettingsDialog : public LWebSettingsDialog {
 public:
  explicit LWebRegionalSettingsDialog(LWebletForm& form);
  void InitDialog() override;
  void Generate() override;
  bool CmOk() override;
};

class LWebTaxSettingsDialog : public LWebSettingsDialog {
 public:
  explicit LWebTaxSettingsDialog(LWebletForm& form);
  void Generate() override;
  bool CmOk() override;
};

class LWebDocumentOptionsDialog : public LWebSettingsDialog {
 public:
  explicit LWebDocumentOptionsDialog(LWebletForm& form);
  void InitDialog() override;
  void Generate() override;
  bool CmOk() override;
};

class LWebLinkedAccountsDialog : public LWebSettingsDialog {
 public:
  explicit LWebLinkedAccountsDialog(LWebletForm& form);
  void InitDialog() override;
  void Generate() override;
  bool CmOk() override;
};

class LWebMailSettingsDialog : public LWebSettingsDialog {
 public:
  explicit LWebMailSettingsDialog(LWebletForm& form);
  void InitDialog() override;
  void Generate() override;
  bool CmOk() override;
};

class LWebServerSettingsDialog : public LWebSettingsDialog {
 public:
  explicit LWebServerSettingsDialog(LWebletForm& form);
  void InitDialog() override;
  void Generate() override;
  bool CmOk() override;
};

class LWebClosingDateDialog : public LWebSettingsDialog {
 public:
  explicit LWebClosingDateDialog(LWebletForm& form);
  void InitDialog() override;
  void Generate() override;
  bool CmOk() override;
};
