// The businesses of the application as pages for the administrator (the desk's business
// selection): route "businesslist" lists them with the open one marked, "businessopen?id=N"
// switches the session to one (and, at the desk, remembers it for the next start), and
// "businessdelete?id=N" asks the confirmation question before deleting a further business.
// Adding goes through the start wizard ("startwizard?mode=add").
#pragma once

#include "app/multiplebusiness.h"
#include "invoice/shared/webnavtabs.h"

class LWebBusinessesPage : public LWebPageWithNavTabs {
 public:
  explicit LWebBusinessesPage(LWebletForm& form);
  bool Authenticate() override;
  void Generate() override;
};

void WLBusinessOpen(LWebletForm& form);

class LWebBusinessDeleteDialog : public LWebDialogEx {
 public:
  explicit LWebBusinessDeleteDialog(LWebletForm& form);
  bool Authenticate() override;
  void Generate() override;
  bool CmOk() override;

 private:
  LBusinessEntry business_;  // the business named by "id"
  bool found_ = false;
};
