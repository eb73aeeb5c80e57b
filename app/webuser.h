// Web user administration: the list of web accounts ("userlist"), the account dialog
// ("userprop", parameter "id"; no id: a new account), the delete action ("userdelete"), and the
// checks that the dialog and `kontavo user` share. Only administrators reach these pages.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/webaccess.h"
#include "invoice/shared/webnavtabs.h"
#include "llib/web/webaccount.h"

// A web account of the application.
class LAppWebAccount : public LWebAccount {};

// What a new or changed account holds before it is stored.
struct LAppWebAccountInput {
  std::string originalId;  // the account being edited; empty for a new one
  std::string email;
  std::string displayName;
  std::string password;
  std::string confirmation;
};

// The first refusal of the account checks, in the dialog's order (name, address, address used
// by another account, password length, password typed twice alike); "" when all pass. An
// account being edited may leave both password fields empty to keep its password.
std::string LAppWebAccountCheck(const LAppWebAccountInput& input);

// Stores the account: "DisplayName", the hash of a given password, "Enabled", "Administrator", "Priviligies",
// "Profiles"; a changed address renames the record. Logs "Le compte a été activé pour " or
// "Le compte a été désactivé pour " and the id when "Enabled" changes. false when it could not
// be written.
bool LAppWebAccountStore(const LAppWebAccountInput& input, bool enabled, int privilege,
                         const std::string& profiles);

class LAppWebAccountsPage : public LWebPageWithNavTabs {
 public:
  explicit LAppWebAccountsPage(LWebletForm& form);
  bool Authenticate() override;
  void Generate() override;
};

class LAppWebAccountDialog : public LWebDialogEx {
 public:
  explicit LAppWebAccountDialog(LWebletForm& form);
  bool Authenticate() override;
  void InitDialog() override;
  void Generate() override;
  bool CmOk() override;
  void EnableControls() override;

 private:
  std::vector<LWebBusiness> businesses_;  // one check box each, ids from kFirstBusinessControl
};

// Route "userdelete": deletes the account named by "id" (never the caller's own) and goes back
// to "userlist".
void WLUserDelete(LWebletForm& form);
