#include "llib/web/webaccount.h"

#include "llib/gen/file.h"
#include "llib/gen/log.h"
#include "llib/gen/passwordhash.h"
#include "llib/gen/randomtext.h"
#include "llib/web/webformat.h"
#include "llib/net/emailsendbg.h"
#include "llib/web/webrouting.h"

bool LWebAccount::HasProfile(std::string_view companyName) const {
  std::string profiles = GetProfiles();
  std::string_view rest = profiles;
  while (!rest.empty()) {
    std::size_t comma = rest.find(',');
    if (rest.substr(0, comma) == companyName) return true;
    if (comma == std::string_view::npos) break;
    rest.remove_prefix(comma + 1);
  }
  return false;
}

bool LWebAccount::HasPassword(std::string_view password) const {
  if (TestFieldExists("PasswordHash")) return LPasswordHashMatches(GetString("PasswordHash"), password);
  std::string plain = GetString("Password");
  return !plain.empty() && LSecretEquals(plain, password);
}

bool LWebAccount::SetPassword(std::string_view password) {
  std::string hash = LPasswordHashMake(password);
  if (hash.empty()) return false;
  SetString("PasswordHash", hash);
  if (TestFieldExists("Password")) DeleteField("Password");
  return true;
}

bool LWebAccount::NeedsPasswordRehash() const { return !LPasswordHashIsCurrent(GetString("PasswordHash")); }

int LWebAccount::ValidateLogon(std::string_view password, std::time_t now) {
  long long elapsed = static_cast<long long>(now) - GetInt64("LogonFailTime", 0);
  int failures = GetInt("LogonFailures", 0);
  if (elapsed < kWebLogonLockSeconds && failures > kWebLogonFailuresBeforeLock) return kWebLogonLocked;
  if (!HasPassword(password)) {
    SetInt("LogonFailures", elapsed < kWebLogonLockSeconds ? failures + 1 : 1);
    SetInt64("LogonFailTime", static_cast<long long>(now));
    return kWebLogonWrongPassword;
  }
  SetInt("LogonFailures", 0);
  SetInt64("LogonFailTime", 0);
  if (NeedsPasswordRehash() && !SetPassword(password))
    LLogError("Le mot de passe Web de %s n'a pas pu être chiffré.", GetId().c_str());
  return kWebLogonOk;
}

std::string LWebAccountGetDataStoreFolder() { return LFile::GetSharedDataFolderApp(); }

LFileStoreListBase LWebAccountList() {
  return LFileStoreListBase(LFileStoreDataStore(LWebAccountGetDataStoreFolder()), kWebAccountsList);
}

std::string LWebAccountIdFromEmail(std::string_view email) {
  std::string id(email);
  for (char& c : id)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return id;
}

int LWebAccountValidateLogon(std::string_view id, std::string_view password) {
  LWebAccount account;
  std::string key = LWebAccountIdFromEmail(id);
  if (key.empty() || !LWebAccountList().Open(account, key)) return kWebLogonNoAccount;
  return account.ValidateLogon(password);
}

int LWebAccountCount() {
  int count = 0;
  for (const std::string& name : LFile::ListFolder(LWebAccountList().GetFolder()))
    if (name.size() > 4 && name.compare(name.size() - 4, 4, ".dat") == 0) ++count;
  return count;
}

int LWebAccountHashPlainPasswords() {
  int nHashed = 0;
  LWebAccount account;
  LFileStoreListBase accounts = LWebAccountList();
  for (LFileStoreIteratorBase it(accounts, account); account.IsAttached(); it.Next(account)) {
    if (!account.TestFieldExists("Password")) continue;
    // An account that has both keeps its hash: the plain text is a leftover to remove.
    bool hashed = true;
    if (account.TestFieldExists("PasswordHash"))
      account.DeleteField("Password");
    else
      hashed = account.SetPassword(account.GetString("Password"));
    if (hashed && account.Flush()) {
      ++nHashed;
    } else {
      LLogError("Le mot de passe Web de %s n'a pas pu être chiffré.", account.GetId().c_str());
    }
  }
  return nHashed;
}

bool LWebAccountForgotPassword(std::string_view id, std::string& newPassword) {
  LWebAccount account;
  if (!LWebAccountList().Open(account, LWebAccountIdFromEmail(id))) return false;
  std::string password = LStringGenerateRandomPassword(8);
  if (!account.SetPassword(password)) return false;
  // A new password also lifts a lock-out.
  account.SetInt("LogonFailures", 0);
  account.SetInt64("LogonFailTime", 0);
  if (!account.Flush()) return false;
  newPassword = password;
  return true;
}

void LWebAccountSendPassword(std::string_view id, std::string_view password) {
  std::string email(id);
  std::string secret(password);
  std::string text = LWebFormat(
      "Vous avez reçu les détails de connexion pour Kontavo - Logiciel de comptabilité:\n\n"
      "    Kontavo Serveur: %s (sur Internet)\n    Kontavo Serveur: %s (sur le réseau local)\n"
      "    Courriel: %s\n    Mot de passe: %s\n\n",
      LWebRoutingPublicAddress().c_str(), LWebRoutingLocalAddress().c_str(), email.c_str(), secret.c_str());
  LSendEmailBackground(email, "", "Kontavo - Logiciel de comptabilité: Détails de connexion", text, {}, false);
}
