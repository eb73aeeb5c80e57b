#include "invoice/sales/webvatpage.h"

#include <utility>

#include "invoice/shared/webaccess.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"

LWebVatPage::LWebVatPage(LWebletForm& form, std::string_view title) : LWebReportSectionPage(form, title) {
  AddNavLink("vatreturn", "Déclaration de TVA");
}

bool LWebVatPage::Authenticate() { return AuthenticateAdministrator(form_); }

void LWebVatPage::SetOutcome(FKVatAlert alert, bool success) {
  outcome_ = std::move(alert);
  success_ = success;
}

void LWebVatPage::WriteOutcome() {
  if (outcome_.message.empty()) return;
  std::string caption =
      outcome_.caption.empty() ? std::string() : LWebFormat("<p class=alertcaption>%H</p>", outcome_.caption.c_str());
  form_.wfprintf("<div class='vatalert %s' id=vatalert role=alert>%s<p class=alertmessage>%H</p></div>",
                 success_ ? "success" : "failure", caption.c_str(), outcome_.message.c_str());
}
