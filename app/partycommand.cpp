#include "app/partycommand.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/jsontext.h"


int LCliPartyAdd(LCliContext& context, LProfile& profile, LPartyKind kind, const std::vector<std::string>& words) {
  std::vector<std::pair<std::string, std::string>> fields;
  for (std::size_t i = 2; i < words.size(); ++i) {
    std::string name, value;
    if (!LCliSplitAssignment(words[i], name, value)) return context.Usage("champ invalide : " + words[i]);
    fields.emplace_back(name, value);
  }
  std::string error;
  if (!LPartySave(profile, kind, words[1], fields, LPartySaveMode::kCreate, nullptr, &error))
    return context.Fail(error);
  return kExitOk;
}

int LCliPartyList(LCliContext& context, LProfile& profile, LPartyKind kind) {
  const LFileStoreListBase& list = profile.MainList(LPartyKindOf(kind).list);
  std::vector<std::string> keys;
  LRecord record;
  for (LFileStoreIteratorBase it(list, record); record.IsAttached(); it.Next(record))
    keys.push_back(record.GetPrimaryKey());
  std::sort(keys.begin(), keys.end());
  nlohmann::ordered_json all = nlohmann::ordered_json::array();
  for (const std::string& key : keys) {
    LRecord one;
    if (!list.Open(one, key)) continue;
    nlohmann::ordered_json json = {{"key", key}};
    std::string line = key;
    for (const LPartyField& field : LPartyFields(kind)) {
      std::string text = LPartyFieldText(field, one.GetString(field.name), profile.GetCurrencyDigits());
      json[std::string(field.name)] = text;
      line += "\t" + text;
    }
    one.DetachWithoutSave();
    if (context.json) all.push_back(json);
    else context.out << line << "\n";
  }
  if (context.json) context.out << LJsonDump(all) << "\n";
  return kExitOk;
}

int LCliPartyCommand(LCliContext& context, LCliArgs& args, LPartyKind kind) {
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  bool add = words.size() >= 2 && words[0] == "add";
  bool list = words.size() == 1 && words[0] == "list";
  if (!add && !list) return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  return add ? LCliPartyAdd(context, *profile, kind, words) : LCliPartyList(context, *profile, kind);
}
