// What every web page of the application checks and shows: the businesses a web user may open
// (each known by its company name), the access check of every page (AuthenticateEx), and the
// page and dialog bases that run it and show the user's name in the header bar.
//
// Session values: "user" the account id, "profile" the data folder of the business the user
// works in (empty: the primary business), "desk" "1" in the session of the person at the desk,
// who has no web account and the rights of an administrator (llib/web/webdesk.h).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "llib/web/webdialog.h"
#include "llib/web/webpage.h"

class LWebletForm;

// A business as the web pages list it.
struct LWebBusiness {
  std::string folder;  // its data folder
  std::string name;    // the "Name" of its "Company" record in "Misc"
};

// The company name of the business in folder ("" for the primary business).
std::string LWebCompanyName(std::string_view folder);
// The primary business first, then each folder of "MultiBus" in directory order.
std::vector<LWebBusiness> LWebBusinessList();
// The first business of that company name; false when none.
bool LWebFindBusiness(std::string_view companyName, LWebBusiness& found);
// The businesses the session's user may open, in the order of LWebBusinessList: all at the desk
// and for an administrator, those its "Profiles" name otherwise; none without an enabled account.
std::vector<LWebBusiness> WLSessionBusinesses(LWebletForm& form);

// true in a session opened by the desk's one-time link.
bool WLIsDeskSession(LWebletForm& form);
// true when the page may run: a desk session always may. Otherwise the session (if any) is
// destroyed and the answer is a redirect to "logon": no session; an account that is missing or
// disabled; a user who is not an administrator and whose "Profiles" do not name the session's
// business. A page that may run has the session's business opened first (LWebSetBooksOpener).
bool AuthenticateEx(LWebletForm& form);
// What opens the books of a business before a page reads them: the ledger side installs it
// (accounts/webpages.cpp) to bring back in step what a change cut short left, as every command
// does before it answers. folder: an existing business folder. Set once at start-up; none at first.
using LWebBooksOpener = void (*)(const std::string& folder);
void LWebSetBooksOpener(LWebBooksOpener opener);
// AuthenticateEx for the AJAX calls of a page: without a session the answer is script that
// sends the browser to "logon" (false), as a redirect would only bring the logon page into the
// script.
bool WLAjaxAuthenticate(LWebletForm& form);
// AuthenticateEx for the pages of administrators: anyone else is sent to the main page (false).
bool AuthenticateAdministrator(LWebletForm& form);
// The "Administrator" flag of the session's user; true at the desk.
bool WLIsAdministator(LWebletForm& form);
// false for a user who may only view the data ("Priviligies" 3, "Afficheur", not an
// administrator): pages that change records refuse it.
bool WLMayChangeData(LWebletForm& form);
// What such a user is told when a page would change something.
inline constexpr char kWebViewerRefusal[] = "Votre compte permet seulement de consulter les données.";
// The "DisplayName" of the session's user ("" without session).
std::string WLSessionUserName(LWebletForm& form);
// The data folder of the session's business.
std::string WLSessionBusinessFolder(LWebletForm& form);

// A standard page of the application: AuthenticateEx, and the header bar with the user's name.
class LWebPageEx : public LWebPage {
 public:
  explicit LWebPageEx(LWebletForm& form) : LWebPage(form) {}
  bool Authenticate() override { return AuthenticateEx(form_); }
  void PrintHeader() override;
};

// A dialog of the application, with the same check and header.
class LWebDialogEx : public LWebDialog {
 public:
  LWebDialogEx(LWebletForm& form, std::string_view routeName) : LWebDialog(form, routeName) {}
  bool Authenticate() override { return AuthenticateEx(form_); }
  void PrintHeader() override;

 protected:
  // true, after alerting kWebViewerRefusal, when the session's user may only view the data: the
  // first check of a dialog that changes records.
  bool RefuseViewer();
};
