// kontavo record ...: the records of a business's lists, field by field.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/filestore.h"
#include "llib/gen/jsontext.h"

namespace {

constexpr std::string_view kRecordMissing = "Fiche introuvable.";
constexpr std::string_view kFieldMissing = "Champ introuvable.";
constexpr std::string_view kKeyTaken = "Une autre fiche porte déjà cette clé.";

// A list name must stay one folder inside the business.
bool IsListName(std::string_view name) {
  return !name.empty() && name != "." && name != ".." && name.size() <= kMaxTextBytes &&
         name.find_first_of(std::string_view("/\\\0", 3)) == std::string_view::npos;
}

// "NAME=VALUE" into its two parts; false without "=" or with an empty name.
bool SplitAssignment(std::string_view word, std::string& name, std::string& value) {
  std::size_t equals = word.find('=');
  if (equals == std::string_view::npos || equals == 0) return false;
  name = std::string(word.substr(0, equals));
  value = std::string(word.substr(equals + 1));
  return true;
}

bool SetAssignments(LRecord& record, const std::vector<std::string>& words, std::size_t from) {
  for (std::size_t i = from; i < words.size(); ++i) {
    std::string name, value;
    if (!SplitAssignment(words[i], name, value)) return false;
    record.SetString(name, value);
  }
  return true;
}

bool AreAssignments(const std::vector<std::string>& words, std::size_t from) {
  std::string name, value;
  for (std::size_t i = from; i < words.size(); ++i)
    if (!SplitAssignment(words[i], name, value)) return false;
  return true;
}

int List(LCliContext& context, const LFileStoreListBase& list) {
  std::vector<std::string> keys;
  LRecord record;
  for (LFileStoreIteratorBase it(list, record); record.IsAttached(); it.Next(record))
    keys.push_back(record.GetPrimaryKey());
  std::sort(keys.begin(), keys.end());
  if (context.json) {
    context.out << LJsonDump(nlohmann::json(keys)) << "\n";
  } else {
    for (const auto& key : keys) context.out << key << "\n";
  }
  return kExitOk;
}

int Get(LCliContext& context, const LFileStoreListBase& list, const std::vector<std::string>& words) {
  LRecord record;
  if (!list.Open(record, words[2])) return context.Fail(kRecordMissing);
  if (words.size() == 4) {
    if (!record.TestFieldExists(words[3])) return context.Fail(kFieldMissing);
    std::string value = record.GetString(words[3]);
    if (context.json) context.out << LJsonDump(nlohmann::json(value)) << "\n";
    else context.out << value << "\n";
    return kExitOk;
  }
  if (context.json) {
    nlohmann::ordered_json fields = nlohmann::ordered_json::object();
    for (const auto& field : record.Fields()) fields[field.name] = field.text;
    context.out << LJsonDump(fields) << "\n";
  } else {
    for (const auto& field : record.Fields()) context.out << field.name << "=" << field.text << "\n";
  }
  return kExitOk;
}

}  // namespace

int LCmdRecord(LCliContext& context, LCliArgs& args) {
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 2)) return kExitUsage;
  const std::string& verb = words[0];
  if (!IsListName(words[1])) return context.Usage("nom de liste invalide : " + words[1]);

  auto need = [&](std::size_t minimum, std::size_t maximum) {
    return words.size() >= minimum && words.size() <= maximum;
  };
  constexpr std::size_t kAny = static_cast<std::size_t>(-1);
  bool shapeOk = (verb == "list" && need(2, 2)) || (verb == "get" && need(3, 4)) ||
                 (verb == "set" && need(4, kAny) && AreAssignments(words, 3)) ||
                 (verb == "unset" && need(4, kAny)) ||
                 (verb == "new" && need(2, kAny) && AreAssignments(words, 2)) ||
                 (verb == "rename" && need(4, 4)) || (verb == "delete" && need(3, 3));
  if (!shapeOk) return context.Usage();

  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  LFileStoreListBase list = profile->List(words[1]);

  if (verb == "list") return List(context, list);
  if (verb == "get") return Get(context, list, words);
  if (verb == "set") {
    LRecord record;
    list.OpenAlways(record, words[2]);
    SetAssignments(record, words, 3);
    if (!record.Flush()) return context.Fail(kRecordNotSavedMessage);
    return kExitOk;
  }
  if (verb == "unset") {
    LRecord record;
    if (!list.Open(record, words[2])) return context.Fail(kRecordMissing);
    for (std::size_t i = 3; i < words.size(); ++i) record.DeleteField(words[i]);
    if (!record.Flush()) return context.Fail(kRecordNotSavedMessage);
    return kExitOk;
  }
  if (verb == "new") {
    LRecord record;
    list.CreateNewRecord(record);
    SetAssignments(record, words, 2);
    record.SetDirty(true);  // an empty new record still takes its key
    if (!record.Flush()) return context.Fail("Impossible de créer la fiche.");
    context.out << record.GetPrimaryKey() << "\n";
    return kExitOk;
  }
  if (verb == "rename") {
    LRecord record;
    if (!list.Open(record, words[2])) return context.Fail(kRecordMissing);
    record.SetPrimaryKey(words[3]);
    bool saved = record.Flush();
    if (record.GetStoredKey() != record.GetPrimaryKey()) return context.Fail(kKeyTaken);
    if (!saved) return context.Fail(kRecordNotSavedMessage);
    return kExitOk;
  }
  // delete
  if (!list.Delete(words[2])) return context.Fail(kRecordMissing);
  return kExitOk;
}
