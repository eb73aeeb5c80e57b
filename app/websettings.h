// Route "settings": the company details of the open business for the administrator, with the
// legal mentions its printed documents carry (SIREN, SIRET, VAT number, legal form, share
// capital, RCS, VAT franchise, late-payment penalty rate).
#pragma once

#include "invoice/shared/companydetails.h"
#include "invoice/shared/webaccess.h"

class LWebCompanySettingsDialog : public LWebDialogEx {
 public:
  explicit LWebCompanySettingsDialog(LWebletForm& form);
  bool Authenticate() override { return AuthenticateAdministrator(form_); }
  void InitDialog() override;
  void Generate() override;
  bool CmOk() override;
};
