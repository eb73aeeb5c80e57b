// Route "startwizard": the start wizard as pages of the browser, one page a step (country,
// company details, currency, accounting, business usage). Each step checks its answers with the
// rules and messages of the wizard's own page and keeps them in the session ("wizard.*"); the
// last step runs the same wizard routine as `business add`.
//
// Two uses, told by the parameter "mode":
//   ""     first run: the session's business has no company name; the wizard sets it up and the
//          main page of the new business follows (the main page sends an administrator here);
//   "add"  a new business in "MultiBus" (LMultipleBusinessDlg::CmAdd): the folder exists only
//          once the last step succeeds, and the business list follows.
// Administrators only.
#pragma once

#include "app/startwizard.h"
#include "invoice/shared/webaccess.h"

class LWebStartWizardDialog : public LWebDialogEx {
 public:
  explicit LWebStartWizardDialog(LWebletForm& form);
  bool Authenticate() override;
  void InitDialog() override;
  void Generate() override;
  bool CmOk() override;

 private:
  void GenerateCountry();
  void GenerateCompany();
  void GenerateCurrency();
  void GenerateAccounting();
  void GenerateUsage();
  // Reads the controls of the current step into answers_.
  void ReadStep();
  // Checks the current step with the wizard page's rules; false after showing its message.
  bool CheckStep();
  // The last step: the wizard routine on the business; false after showing its message.
  bool Finish();

  int step_ = 1;                  // 1 country, 2 company, 3 currency, 4 accounting, 5 usage
  bool adding_ = false;           // mode "add": a new business of "MultiBus"
  LStartWizardAnswers answers_;   // what the session keeps of the earlier steps
};

// The answers kept in the session between the steps, and their removal once the wizard ends.
void LWebStartWizardLoad(LWebletForm& form, LStartWizardAnswers& answers);
void LWebStartWizardSave(LWebletForm& form, const LStartWizardAnswers& answers);
void LWebStartWizardForget(LWebletForm& form);
