// kontavo settings ...: the per-user settings store.
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "llib/gen/usersettings.h"
#include "llib/gen/jsontext.h"

int LCmdSettings(LCliContext& context, LCliArgs& args) {
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  if (words.size() == 3 && words[0] == "get") {
    std::string value;
    if (!_LUserSettingGetString(words[1], words[2], value)) return context.Fail("Réglage introuvable.");
    if (context.json) context.out << LJsonDump(nlohmann::json(value)) << "\n";
    else context.out << value << "\n";
    return kExitOk;
  }
  if (words.size() == 4 && words[0] == "set") {
    if (!LUserSettingSetString(words[1], words[2], words[3]))
      return context.Fail("Impossible d'enregistrer le réglage.");
    return kExitOk;
  }
  return context.Usage();
}
