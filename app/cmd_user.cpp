// kontavo user add|list|delete|passwd: the web accounts, with the checks and messages of the
// "userprop" dialog. Without --password-stdin a password of 8 random letters is made and
// printed.
#include <iostream>
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "app/webuser.h"
#include "llib/gen/randomtext.h"
#include "llib/gen/jsontext.h"

namespace {

constexpr std::string_view kNoSuchUser = "Cet utilisateur n'existe pas dans le Kontavo - Logiciel de comptabilité Système";

// The password: the first line of stdin, or a new random one (printed).
std::string TakePassword(LCliContext& context, bool fromStdin, bool& generated) {
  generated = !fromStdin;
  if (!fromStdin) return LStringGenerateRandomPassword(8);
  std::string line;
  std::getline(std::cin, line);
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return line;
}

void PrintGenerated(LCliContext& context, bool generated, const std::string& password) {
  if (generated) context.out << "Mot de passe : " << password << "\n";
}

int Add(LCliContext& context, LCliArgs& args) {
  std::string name;
  args.TakeOption("--name", name);
  bool fromStdin = args.TakeFlag("--password-stdin");
  bool admin = args.TakeFlag("--admin");
  bool user = args.TakeFlag("--user");
  bool viewer = args.TakeFlag("--viewer");
  std::vector<std::string> profileNames = args.TakeOptionAll("--profile");
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 2, 2)) return kExitUsage;
  if (admin + user + viewer > 1) return context.Usage();
  int privilege = admin ? kWebPrivilegeAdministrator : viewer ? kWebPrivilegeViewer : kWebPrivilegeUser;

  std::vector<LWebBusiness> businesses = LWebBusinessList();
  std::string profiles;
  auto addProfile = [&profiles](const std::string& company) {
    if (!profiles.empty()) profiles += ",";
    profiles += company;
  };
  if (admin) {
    for (const LWebBusiness& business : businesses) addProfile(business.name);
  } else {
    for (const std::string& company : profileNames) {
      LWebBusiness found;
      if (!LWebFindBusiness(company, found)) return context.Fail("Société inconnue : " + company);
      addProfile(company);
    }
  }
  bool generated = false;
  LAppWebAccountInput input;
  input.email = words[1];
  input.displayName = name;
  input.password = TakePassword(context, fromStdin, generated);
  input.confirmation = input.password;
  std::string refusal = LAppWebAccountCheck(input);
  if (!refusal.empty()) return context.Fail(refusal);
  if (!LAppWebAccountStore(input, true, privilege, profiles)) return context.Fail("Le compte n'a pas pu être enregistré.");
  PrintGenerated(context, generated, input.password);
  return kExitOk;
}

const char* PrivilegeName(const LAppWebAccount& account) {
  if (account.IsAdministrator()) return "Administrateur";
  return account.GetPriviligies() == kWebPrivilegeViewer ? "Afficheur" : "Utilisateur";
}

int List(LCliContext& context) {
  nlohmann::json all = nlohmann::json::array();
  std::vector<std::vector<std::string>> rows;
  LAppWebAccount account;
  LFileStoreListBase accounts = LWebAccountList();
  for (LFileStoreIteratorBase it(accounts, account); account.IsAttached(); it.Next(account)) {
    if (context.json) {
      nlohmann::json record = {{"ID", account.GetId()}};
      for (const LRecordField& field : account.Fields())
        if (!field.deleted && field.name != "Password" && field.name != "PasswordHash") record[field.name] = field.text;
      all.push_back(record);
    }
    rows.push_back({account.GetId(), account.GetDisplayName(), PrivilegeName(account),
                    account.IsEnabled() ? "activé" : "désactivé", account.GetProfiles()});
  }
  std::sort(rows.begin(), rows.end());
  if (context.json) {
    std::sort(all.begin(), all.end(), [](const nlohmann::json& a, const nlohmann::json& b) { return a["ID"] < b["ID"]; });
    context.out << LJsonDump(all) << "\n";
    return kExitOk;
  }
  for (const auto& row : rows) context.out << row[0] << "\t" << row[1] << "\t" << row[2] << "\t" << row[3] << "\t" << row[4] << "\n";
  return kExitOk;
}

int Delete(LCliContext& context, const std::string& email) {
  if (!LWebAccountList().Delete(LWebAccountIdFromEmail(email))) return context.Fail(kNoSuchUser);
  return kExitOk;
}

int Passwd(LCliContext& context, LCliArgs& args) {
  bool fromStdin = args.TakeFlag("--password-stdin");
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 2, 2)) return kExitUsage;
  LAppWebAccount account;
  if (!LWebAccountList().Open(account, LWebAccountIdFromEmail(words[1]))) return context.Fail(kNoSuchUser);
  bool generated = false;
  std::string password = TakePassword(context, fromStdin, generated);
  if (password.size() < static_cast<std::size_t>(kWebPasswordMinLength))
    return context.Fail("Veuillez entrer le mot de passe du compte.\nIl doit contenir au moins 6 caractères.");
  // A new password also lifts a lock-out.
  account.SetInt("LogonFailures", 0);
  account.SetInt64("LogonFailTime", 0);
  if (!account.SetPassword(password) || !account.Flush()) return context.Fail("Le compte n'a pas pu être enregistré.");
  PrintGenerated(context, generated, password);
  return kExitOk;
}

}  // namespace

int LCmdUser(LCliContext& context, LCliArgs& args) {
  std::vector<std::string> peek;
  // The sub-command is the first positional word; options are taken by each sub-command.
  LCliArgs copy = args;
  std::string error;
  copy.TakeOption("--name", error);
  copy.TakeOptionAll("--profile");
  for (const char* flag : {"--password-stdin", "--admin", "--user", "--viewer"}) copy.TakeFlag(flag);
  if (!copy.Finish(peek, error) || peek.empty()) return context.Usage(error);
  if (peek[0] == "add") return Add(context, args);
  if (peek[0] == "passwd") return Passwd(context, args);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  if (words.size() == 1 && words[0] == "list") return List(context);
  if (words.size() == 2 && words[0] == "delete") return Delete(context, words[1]);
  return context.Usage();
}
