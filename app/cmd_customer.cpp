// kontavo customer add|list|show|retotal: customers, with the balance and oldest due date that
// each customer record keeps. The balance follows the documents and is never set by hand.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "app/partycommand.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/money.h"
#include "llib/gen/processterminal.h"
#include "llib/gen/jsontext.h"

namespace {

int List(LCliContext& context, LProfile& profile) {
  std::vector<std::string> keys;
  LCustomer customer;
  const LFileStoreListBase& list = profile.MainList(kCustomersList);
  for (LFileStoreIteratorBase it(list, customer); customer.IsAttached(); it.Next(customer))
    keys.push_back(customer.GetPrimaryKey());
  std::sort(keys.begin(), keys.end());
  nlohmann::ordered_json all = nlohmann::ordered_json::array();
  for (const auto& key : keys) {
    LCustomer one;
    if (!list.Open(one, key)) continue;
    if (context.json) {
      all.push_back({{"key", key}, {"Name", one.GetString("Name")}, {"Balance", one.GetBalance()},
                     {"OldestDue", one.GetOldestDue()}});
    } else {
      context.out << key << "\t" << one.GetString("Name") << "\t"
                  << LFormatAmountPlain(one.GetBalance(), profile.GetCurrencyDigits()) << "\t" << one.GetOldestDue()
                  << "\n";
    }
  }
  if (context.json) context.out << LJsonDump(all) << "\n";
  return kExitOk;
}

int Show(LCliContext& context, LProfile& profile, const std::string& key) {
  LCustomer customer;
  if (!profile.MainList(kCustomersList).Open(customer, key)) return context.Fail(LCustomerNotFoundMessage(key));
  if (context.json) {
    nlohmann::ordered_json fields = nlohmann::ordered_json::object();
    for (const auto& field : customer.Fields())
      if (!field.deleted) fields[field.name] = field.text;
    context.out << LJsonDump(nlohmann::ordered_json({{"key", key}, {"fields", fields}, {"Balance", customer.GetBalance()}}))
                << "\n";
  } else {
    for (const auto& field : customer.Fields())
      if (!field.deleted) context.out << field.name << "=" << field.text << "\n";
  }
  return kExitOk;
}

int Retotal(LCliContext& context, LProfile& profile, const std::vector<std::string>& words) {
  LCoreDataRetotalCustomerData data;
  data.profile = &profile;
  if (words.size() == 2) {
    if (!profile.MainList(kCustomersList).TestRecordExists(words[1]))
      return context.Fail(LCustomerNotFoundMessage(words[1]));
    data.customers.push_back(words[1]);
  }
  LProcessTerminal progress("Recalcul des soldes des clients");
  if (Process(progress, data) != kProcessFinished) return context.Fail(progress.GetError());
  return kExitOk;
}

}  // namespace

int LCmdCustomer(LCliContext& context, LCliArgs& args) {
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 1)) return kExitUsage;
  const std::string& verb = words[0];
  bool shapeOk = (verb == "add" && words.size() >= 2) || (verb == "list" && words.size() == 1) ||
                 (verb == "show" && words.size() == 2) || (verb == "retotal" && words.size() <= 2);
  if (!shapeOk) return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  if (verb == "add") return LCliPartyAdd(context, *profile, LPartyKind::kCustomer, words);
  if (verb == "list") return List(context, *profile);
  if (verb == "show") return Show(context, *profile, words[1]);
  return Retotal(context, *profile, words);
}
