// kontavo account ...: the chart of accounts: listing, adding, editing (renumbering included),
// deleting and restoring accounts, the linked accounts and the default chart.
#include <nlohmann/json.hpp>
#include <ostream>

#include "accounts/accountlistwindow.h"
#include "accounts/accounts.h"
#include "accounts/accountsdlg.h"
#include "accounts/linkedaccounts.h"
#include "app/cli.h"
#include "app/cliasker.h"
#include "app/commands.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/process.h"
#include "llib/gen/processterminal.h"
#include "llib/gen/jsontext.h"

namespace {

// "asset", "liability", ... to the account type; 0 for any other word.
int TypeFromWord(std::string_view word) {
  constexpr std::string_view kWords[] = {"asset", "liability", "equity", "income", "expense"};
  for (int type = 1; type <= 5; ++type)
    if (kWords[type - 1] == word) return type;
  return 0;
}

// "on"/"off" into flag; false for any other word.
bool ParseOnOff(std::string_view word, bool& flag) {
  if (word != "on" && word != "off") return false;
  flag = word == "on";
  return true;
}

// A whole number in [low, high]; false for anything else.
bool ParseSmallInt(std::string_view text, int low, int high, int& value) {
  if (text.empty() || text.size() > 3) return false;
  int parsed = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
    parsed = parsed * 10 + (c - '0');
  }
  if (parsed < low || parsed > high) return false;
  value = parsed;
  return true;
}

// --linked: a slot number (0 none, 1 to 9) or a slot's name, into the slot's name.
bool ParseSlot(std::string_view word, std::string& slotName) {
  int slot = 0;
  if (ParseSmallInt(word, 0, kDefAccountSlots, slot)) {
    slotName = LDefAccountSlotName(slot);
    return true;
  }
  if (word == LDefAccountSlotName(0) || LDefAccountSlotFromName(word) != 0) {
    slotName = word;
    return true;
  }
  return false;
}

int List(LCliContext& context, LProfile& profile, LCliArgs& args) {
  bool all = args.TakeFlag("--all");
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 0, 0)) return kExitUsage;
  LAccountList accounts(profile);
  nlohmann::ordered_json json = nlohmann::ordered_json::array();
  LAccount account;
  for (const std::string& number : accounts.GetNumbers()) {
    if (!accounts.Open(account, number)) continue;
    bool deleted = account.IsDeleted();
    if (deleted && !all) continue;
    if (context.json) {
      json.push_back({{"ID", number},
                      {"Description", account.GetDescription()},
                      {"Type", account.GetType()},
                      {"TypeName", account.GetTypeString()},
                      {"Side", account.GetNormalSideString()},
                      {"TotalBalance", account.GetTotalBalance()},
                      {"Deleted", deleted}});
    } else {
      context.out << number << "\t" << account.GetDescription() << "\t" << account.GetTypeString() << "\t"
                  << account.GetNormalSideString() << "\t" << LCliFormatAmount(profile, account.GetTotalBalance())
                  << (deleted ? "\tsupprimé" : "") << "\n";
    }
    account.DetachWithoutSave();
  }
  if (context.json) context.out << LJsonDump(json) << "\n";
  return kExitOk;
}

int Add(LCliContext& context, LProfile& profile, LCliArgs& args) {
  LNewAccountDlg dialog;
  std::string type, subClass, classification, linked;
  args.TakeOption("--name", dialog.name);
  bool typeGiven = args.TakeOption("--type", type);
  bool subClassGiven = args.TakeOption("--subclass", subClass);
  bool classGiven = args.TakeOption("--class", classification);
  dialog.header = args.TakeFlag("--header");
  dialog.cash = args.TakeFlag("--cash");
  dialog.taxIncluded = args.TakeFlag("--tax-included");
  args.TakeOption("--opening", dialog.openingBalance);
  bool linkedGiven = args.TakeOption("--linked", linked);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;
  dialog.number = words[0];
  if (typeGiven && (dialog.type = TypeFromWord(type)) == 0) return context.Usage("type inconnu : " + type);
  if (subClassGiven) {
    int value = 0;
    if (!ParseSmallInt(subClass, 0, 9, value)) return context.Usage("sous-classe invalide : " + subClass);
    dialog.subTypeEntry = value + 1;
  } else if (dialog.type == kAccountAsset || dialog.type == kAccountLiability) {
    // Their sub-type lists do not set "SubClass": the first entry stands for them.
    dialog.subTypeEntry = 1;
  }
  if (classGiven && !ParseSmallInt(classification, 1, 3, dialog.classificationEntry))
    return context.Usage("classification invalide : " + classification);
  if (linkedGiven && !ParseSlot(linked, dialog.linkedSlot)) return context.Usage("compte associé inconnu : " + linked);
  std::string message;
  if (!dialog.CmAddNewAcct(profile, &message)) return context.Fail(message);
  return kExitOk;
}

int Edit(LCliContext& context, LProfile& profile, LCliArgs& args) {
  std::string number, name, header, cash, taxIncluded, subClass, classification, opening, linked;
  bool numberGiven = args.TakeOption("--number", number);
  bool nameGiven = args.TakeOption("--name", name);
  bool headerGiven = args.TakeOption("--header", header);
  bool cashGiven = args.TakeOption("--cash", cash);
  bool taxGiven = args.TakeOption("--tax-included", taxIncluded);
  bool subClassGiven = args.TakeOption("--subclass", subClass);
  bool classGiven = args.TakeOption("--class", classification);
  bool openingGiven = args.TakeOption("--opening", opening);
  bool linkedGiven = args.TakeOption("--linked", linked);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;

  LAccountDlg dialog;
  if (!dialog.Load(profile, words[0])) return context.Fail(LAccountNotInChartMessage(words[0]));
  if (numberGiven) dialog.number = number;
  if (nameGiven) dialog.name = name;
  if (headerGiven && !ParseOnOff(header, dialog.header)) return context.Usage("--header on|off");
  if (cashGiven && !ParseOnOff(cash, dialog.cash)) return context.Usage("--cash on|off");
  if (taxGiven && !ParseOnOff(taxIncluded, dialog.taxIncluded)) return context.Usage("--tax-included on|off");
  if (subClassGiven && !ParseSmallInt(subClass, 0, 9, dialog.subClass))
    return context.Usage("sous-classe invalide : " + subClass);
  if (classGiven && !ParseSmallInt(classification, 0, 3, dialog.classificationEntry))
    return context.Usage("classification invalide : " + classification);
  if (openingGiven) dialog.openingBalance = opening;
  if (linkedGiven && !ParseSlot(linked, dialog.linkedSlot)) return context.Usage("compte associé inconnu : " + linked);

  LCliAsker asker(context);
  LProcessTerminal process("Modification du compte");  // a new number rewrites every day file
  std::string message;
  if (!dialog.CmOk(profile, asker, process, &message)) return context.Fail(message);
  return kExitOk;
}

int Delete(LCliContext& context, LProfile& profile, const std::vector<std::string>& numbers) {
  std::vector<std::string> messages;
  std::vector<std::string> known;
  LAccountList accounts(profile);
  for (const std::string& number : numbers) {
    if (accounts.TestRecordExists(number)) known.push_back(number);
    else messages.push_back(LAccountNotInChartMessage(number));
  }
  LCliAsker asker(context);
  LAccountListWindow window(profile, asker);
  window.CmRemove(known, messages);
  for (const std::string& message : messages) context.err << message << "\n";
  return messages.empty() ? kExitOk : kExitFailed;
}

int Linked(LCliContext& context, LProfile& profile, const std::vector<std::string>& words) {
  LNeededAccountsDlg dialog;
  dialog.Fill(profile);
  if (!words.empty()) {
    // SLOT=NUMBER, or SLOT=NUMBER:DESCRIPTION to name an account that does not exist yet.
    for (std::size_t i = 0; i < words.size(); ++i) {
      std::size_t equals = words[i].find('=');
      int slot = 0;
      if (equals == std::string::npos || !ParseSmallInt(words[i].substr(0, equals), 1, kDefAccountSlots, slot))
        return context.Usage("SLOT=NUMÉRO attendu : " + words[i]);
      std::string value = words[i].substr(equals + 1);
      std::size_t colon = value.find(':');
      dialog.SetSlotNumber(profile, slot, value.substr(0, colon));
      if (colon != std::string::npos) dialog.Slot(slot).description = value.substr(colon + 1);
    }
    std::string message;
    if (!dialog.CmOk(profile, &message)) return context.Fail(message);
    return kExitOk;
  }
  nlohmann::ordered_json json = nlohmann::ordered_json::array();
  for (int slot = 1; slot <= kDefAccountSlots; ++slot) {
    const auto& boxes = dialog.Slot(slot);
    if (context.json)
      json.push_back({{"slot", slot},
                      {"name", LDefAccountSlotName(slot)},
                      {"number", boxes.number},
                      {"description", boxes.description}});
    else
      context.out << slot << "\t" << LDefAccountSlotName(slot) << "\t" << boxes.number << "\t" << boxes.description
                  << "\n";
  }
  if (context.json) context.out << LJsonDump(json) << "\n";
  return kExitOk;
}

}  // namespace

int LCmdAccount(LCliContext& context, LCliArgs& args) {
  std::string verb = args.TakeVerb();
  bool known = verb == "list" || verb == "add" || verb == "edit" || verb == "delete" || verb == "restore" ||
               verb == "linked" || verb == "defaults";
  if (!known) return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  if (verb == "list") return List(context, *profile, args);
  if (verb == "add") return Add(context, *profile, args);
  if (verb == "edit") return Edit(context, *profile, args);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  if (verb == "delete") return words.empty() ? context.Usage() : Delete(context, *profile, words);
  if (verb == "linked") return Linked(context, *profile, words);
  if (verb == "restore") {
    if (words.size() != 1) return context.Usage();
    LCliAsker asker(context);
    if (!LAccountListWindow(*profile, asker).CmRestore(words[0])) return context.Fail(LAccountNotInChartMessage(words[0]));
    return kExitOk;
  }
  // defaults
  if (!words.empty()) return context.Usage();
  if (!LAccountListCreateDefault(*profile)) return context.Fail(kRecordNotSavedMessage);
  return kExitOk;
}
