// The pages around logging on: the logon page of the application (which business to open
// next), the business chooser, changing one's password and the lost-password pages.
#pragma once

#include "invoice/shared/webaccess.h"
#include "llib/web/weblogon.h"

// Route "logon". A request that already has a session goes straight to "onok" (or "main").
class LAppWebAccountLogonPage : public LWebLogon {
 public:
  explicit LAppWebAccountLogonPage(LWebletForm& form) : LWebLogon(form) {}

 protected:
  // The next page: "chooseprofile" unless the last used business can be opened again, in which
  // case the session's "profile" is set to it and the next page is "main".
  bool LogonSucceeded(const std::string& user, bool remember) override;
};
void WLLogon(LWebletForm& form);

// Route "chooseprofile": the businesses the user may open; OK sets the session's "profile" and
// the account's "LastUsedProfiles".
class LWebSelectProfileDialog : public LWebDialog {
 public:
  explicit LWebSelectProfileDialog(LWebletForm& form);
  bool Authenticate() override;
  void PrintHeader() override;
  void InitDialog() override;
  void Generate() override;
  bool CmOk() override;

 private:
  std::vector<LWebBusiness> allowed_;  // radio buttons 301, 302, ...
  bool administrator_ = false;
};

// Route "changepassword" and its result page "changepasswordchanged".
class LWebChangePasswordDialog : public LWebDialogEx {
 public:
  explicit LWebChangePasswordDialog(LWebletForm& form);
  bool Authenticate() override;
  void Generate() override;
  bool CmOk() override;
};
class LWebChangePasswordChangedPage : public LWebPageEx {
 public:
  explicit LWebChangePasswordChangedPage(LWebletForm& form);
  void Generate() override;
};

// Route "lostpassword" (no session needed) and its result page "lostpasswordsent".
class LWebLostPasswordDialog : public LWebDialog {
 public:
  explicit LWebLostPasswordDialog(LWebletForm& form);
  void Generate() override;
  bool CmOk() override;
};
class LWebLostPasswordSentPage : public LWebPage {
 public:
  explicit LWebLostPasswordSentPage(LWebletForm& form);
  void Generate() override;
};
