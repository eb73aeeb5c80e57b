#include "accounts/webpostingdialog.h"

#include "accounts/linkedaccounts.h"
#include "accounts/question.h"
#include "accounts/transactiondate.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/webnavtabs.h"
#include "llib/gen/date.h"
#include "llib/gen/money.h"
#include "llib/gen/moneyinput.h"
#include "llib/gen/system.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/weblogon.h"

LWebPostingDialog::LWebPostingDialog(LWebletForm& form, std::string_view routeName, std::string_view currentTab)
    : LWebDialogEx(form, routeName), currentTab_(currentTab) {
  if (!WLMayChangeData(form)) SetMessage(kWebViewerRefusal);
}

LWebPostingDialog::~LWebPostingDialog() = default;

void LWebPostingDialog::PrintHeader() {
  LWebDialogEx::PrintHeader();
  WLWriteNavTabs(form_, currentTab_);
}

LProfile& LWebPostingDialog::Profile() {
  if (!profile_) profile_ = std::make_unique<LProfile>(WLSessionBusinessFolder(form_));
  return *profile_;
}

void LWebPostingDialog::AddDateAnswerField() { AddHiddenField("dateok", ""); }

bool LWebPostingDialog::MayPost(const LDate& date, int dateControl) {
  if (LDefAccountListNeedsUpdate(Profile())) {
    PopupBoxError(kNeededAccountsWarning);
    return false;
  }
  bool confirmed = form_.GetParam("dateok") == "1";
  LFixedAsker asker(confirmed);
  std::string message;
  if (LCheckTransactionDate(Profile(), asker, date, &message)) return true;
  if (asker.nAsked > 0 && !confirmed) {
    WriteAnswerScript(LWebFormat("if (confirm('%s')) { document.getElementsByName('dateok')[0].value = '1';"
                                 " document.pressed = '%s'; CmSubmit(); } else { DisableSubmits(false); }\n",
                                 LJScriptEscape(message).c_str(), LJScriptEscape(GetOkText()).c_str()));
    SetAnswerWritten();
    return false;
  }
  PopupControlDataInvalid(dateControl, message);
  return false;
}

bool WLReadAmount(LProfile& profile, const std::string& typed, long long& cents, std::string* error) {
  return LReadTypedAmount(typed, profile.GetCurrencyFormat(), cents, error);
}

std::string WLAmountText(LProfile& profile, long long cents) {
  LCurrencyFormat number = profile.GetCurrencyFormat();
  number.symbol.clear();
  return LFormatNumber(cents, number);
}

std::string WLPostingUserName(LWebletForm& form) {
  std::string name = WLSessionUserName(form);
  return name.empty() ? LGetPostingUserName() : name;
}

void WLPurchaseDelete(LWebletForm& form, std::string_view list,
                      const std::function<bool(LProfile& profile, const std::string& key, std::string& error)>& remove) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  std::string key = form.GetParam("id"), error;
  if (!WLMayChangeData(form)) {
    error = kWebViewerRefusal;
  } else {
    LProfile profile(WLSessionBusinessFolder(form));
    if (remove(profile, key, error)) error.clear();
  }
  std::string target(list);
  WLRedirect(form, error.empty() ? target : LWebFormat("%s?msg=%U", target.c_str(), error.c_str()));
}
