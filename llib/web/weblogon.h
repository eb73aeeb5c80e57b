// Logon and log-off of the web access, and the page a user sees when a session has run out.
//
// LWebLogon is the logon dialog: e-mail address (control 101), password (102), the link to the
// lost-password page, and the remember box (103) beside the button. Its OK checks the address
// and the password against the web accounts (with their lock-out), starts a session ("l" when
// remembered), sets the session cookie in a header of its answer and answers script that goes
// to the next page. The application decides the next page (LogonSucceeded): the business to
// open, or the chooser.
//
// The cookie "kontavo_sess" is HttpOnly (no script of a page, injected or not, can read the
// session id), SameSite=Strict (a request that another site starts, by a link, a form or a
// script, goes without it, so no other site can act in the user's name), and Secure when the
// logon came over HTTPS. It is set by a header, never by script: a cookie set by script cannot
// be HttpOnly.
#pragma once

#include <string>
#include <string_view>

#include "llib/web/webdialog.h"

class LWebletForm;

inline constexpr int kLogonEmailControl = 101;
inline constexpr int kLogonPasswordControl = 102;
inline constexpr int kLogonRememberControl = 103;

class LWebLogon : public LWebDialog {
 public:
  explicit LWebLogon(LWebletForm& form);

  void Generate() override;
  bool CmOk() override;
  // The account exists, is enabled, and the password is right (LWebAccountValidateLogon
  // returned 0, which also counts failures and applies the lock-out).
  virtual bool Validate(const std::string& user, const std::string& password);

 protected:
  // After a successful check: starts the session of user and answers. The base starts the
  // session, sets "user", and goes to the OK target. false: an error was shown at 101.
  virtual bool LogonSucceeded(const std::string& user, bool remember);
  // Starts a new session (long-lived when remember) with "user" set.
  void StartSession(const std::string& user, bool remember);
  // Answers the cookie of the new session (a header line) and the page to go to (script); the
  // answer is then complete.
  void AnswerCookieAndGo(bool remember, std::string_view next);
};

// The "Set-Cookie" header line (without line end) of the form's session: kept until the browser
// closes, or until 2038 when remember.
std::string WLSessionCookieLine(const LWebletForm& form, bool remember);

// The page after log-off.
class LWebLogOff : public LWebPage {
 public:
  explicit LWebLogOff(LWebletForm& form);
  void Generate() override;
};

// true when the request has a session; otherwise writes the session-expired page and returns
// false. Action routes (deletes, saves, log-off) call it first.
bool WLValidateSession(LWebletForm& form);
// The session-expired page.
void WLWriteSessionExpiredPage(LWebletForm& form);

// Route "logoff": requires a session, logs the user's leaving, destroys the session and shows
// the log-off page.
void WLLogout(LWebletForm& form);
