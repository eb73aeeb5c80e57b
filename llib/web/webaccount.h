// Web user accounts: the people who may log on to the web server. Each account is a record of
// the list "WebAccounts" in the primary business folder ("Shared"), keyed by the user's e-mail
// address in lower case:
//
//   "DisplayName"       the user's name
//   "PasswordHash"      the salted, slow hash of the password (llib/gen/passwordhash.h); the
//                       password itself (at least 6 characters) is never stored
//   "Password"          only in files of older programs: the password in plain text. It is
//                       accepted and replaced by "PasswordHash" at the next logon, or when the
//                       service starts (LWebAccountHashPlainPasswords)
//   "Enabled"           "1": the account may log on
//   "Administrator"     "1": every business and the user pages
//   "Priviligies"       1 "Administrateur", 2 "Utilisateur", 3 "Afficheur" (spelt so on purpose:
//                       existing files use this name)
//   "Profiles"          comma-separated company names of the businesses the user may open
//   "LastUsedProfiles"  company name of the business chosen last
//   "LogonFailures"     failed passwords in the current lock window
//   "LogonFailTime"     time of the last failure ("%lld" seconds since 1970), 0 after a success
//
// Lock-out: from the seventh wrong password within 20 minutes of the previous failure, every
// attempt is refused without even comparing, until 20 minutes after the last failure.
#pragma once

#include <ctime>
#include <string>
#include <string_view>

#include "llib/gen/filestore.h"
#include "llib/gen/record.h"

inline constexpr std::string_view kWebAccountsList = "WebAccounts";
inline constexpr int kWebPasswordMinLength = 6;
inline constexpr long long kWebLogonLockSeconds = 1200;
inline constexpr int kWebLogonFailuresBeforeLock = 5;  // more failures than this lock the account

// Results of a logon check.
enum LWebLogonResult : int {
  kWebLogonOk = 0,
  kWebLogonWrongPassword = 1,
  kWebLogonNoAccount = 2,
  kWebLogonLocked = 3,
};

// Values of "Priviligies".
enum LWebPrivilege : int {
  kWebPrivilegeAdministrator = 1,
  kWebPrivilegeUser = 2,
  kWebPrivilegeViewer = 3,
};

class LWebAccount : public LRecord {
 public:
  const std::string& GetId() const { return GetPrimaryKey(); }
  std::string GetDisplayName() const { return GetString("DisplayName"); }
  bool IsEnabled() const { return GetBool("Enabled", false); }
  bool IsAdministrator() const { return GetBool("Administrator", false); }
  int GetPriviligies() const { return GetInt("Priviligies", kWebPrivilegeUser); }
  std::string GetProfiles() const { return GetString("Profiles"); }
  std::string GetLastUsedProfiles() const { return GetString("LastUsedProfiles"); }

  // True when companyName is one of the comma-separated items of "Profiles" (exact comparison);
  // an empty list holds nothing.
  bool HasProfile(std::string_view companyName) const;

  // true when password is the account's password ("PasswordHash", else the plain "Password" of
  // an older program). Counts no failure: the change-password page asks the old one with it.
  bool HasPassword(std::string_view password) const;
  // Stores the hash of password and removes a plain "Password" (the record is saved when
  // flushed or released). false when hashing failed; the record is then unchanged.
  [[nodiscard]] bool SetPassword(std::string_view password);
  // true while the stored password is plain text or hashed with fewer iterations than new
  // hashes get.
  bool NeedsPasswordRehash() const;

  // Checks password against the open record at time now and keeps the failure count; returns
  // kWebLogonOk, kWebLogonWrongPassword or kWebLogonLocked. A right password that NeedsPasswordRehash
  // is hashed anew, so that plain passwords of older programs leave the file at their first
  // logon. The record is changed, and saved when released.
  int ValidateLogon(std::string_view password, std::time_t now = std::time(nullptr));
};

// The folder that holds "WebAccounts": the primary business folder.
std::string LWebAccountGetDataStoreFolder();
// The list "WebAccounts" (its folder is created when missing).
LFileStoreListBase LWebAccountList();
// ASCII lower case of an e-mail address (accounts are keyed by it).
std::string LWebAccountIdFromEmail(std::string_view email);

// Opens the account of id (lower-cased first) and checks its password: kWebLogonNoAccount when
// there is none, else as LWebAccount::ValidateLogon.
int LWebAccountValidateLogon(std::string_view id, std::string_view password);

// Number of web accounts.
int LWebAccountCount();

// Replaces every plain "Password" of an older program by its hash; the number of accounts
// rewritten (failures are logged and left for the next logon).
int LWebAccountHashPlainPasswords();

// Gives the account 8 random lower-case letters as its new password. false when there is no such
// account; newPassword then unchanged.
bool LWebAccountForgotPassword(std::string_view id, std::string& newPassword);
// Mails the account its logon details (server addresses, address, password) through the
// background sender of the service.
void LWebAccountSendPassword(std::string_view id, std::string_view password);
