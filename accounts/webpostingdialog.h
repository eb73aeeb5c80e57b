// The dialogs of the ledger side that post what they save (bills, bill payments): under the tab
// bar of their section, the session's business at hand, and the guard of the posting date asked
// as a question in the page: a date more than a year old makes the browser ask the question of
// the books' date guard (accounts/transactiondate.h), and "OK" sends the same press again with
// the answer (hidden field "dateok"); a refused date is shown at its control.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "invoice/shared/webaccess.h"

class LProfile;
struct LDate;

// An amount typed the business's way ("1 234,56") in cents; false when it is not one (cents
// unchanged), with the refusal in *error when given (LReadTypedAmount).
bool WLReadAmount(LProfile& profile, const std::string& typed, long long& cents, std::string* error = nullptr);
// cents as the business writes them, without the currency symbol, for a control.
std::string WLAmountText(LProfile& profile, long long cents);
// A delete action of the purchase pages: the session checked, a viewer refused, remove run on the
// request's "id", then back to list with the refusal in "msg" when there is one. remove returns
// false with its message.
void WLPurchaseDelete(LWebletForm& form, std::string_view list,
                      const std::function<bool(LProfile& profile, const std::string& key, std::string& error)>& remove);
// The name that the postings of a web user carry.
std::string WLPostingUserName(LWebletForm& form);

class LWebPostingDialog : public LWebDialogEx {
 public:
  LWebPostingDialog(LWebletForm& form, std::string_view routeName, std::string_view currentTab);
  ~LWebPostingDialog() override;
  void PrintHeader() override;

 protected:
  LProfile& Profile();
  // The hidden field that carries the answer to the date question; in Generate.
  void AddDateAnswerField();
  // The checks every posting runs before it writes: the linked accounts, then the date guard.
  // false after the answer (a question, or an error at dateControl).
  bool MayPost(const LDate& date, int dateControl);

 private:
  std::string currentTab_;
  std::unique_ptr<LProfile> profile_;
};
