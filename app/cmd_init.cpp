// kontavo init: opens the business, initialising its options on first use.
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "invoice/shared/profile.h"

int LCmdInit(LCliContext& context, LCliArgs& args) {
  std::vector<std::string> words;
  std::string error;
  if (!args.Finish(words, error)) return context.Usage(error);
  if (!words.empty()) return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  if (context.json) context.out << nlohmann::json({{"folder", profile->GetDatabaseName()}}).dump() << "\n";
  else context.out << profile->GetDatabaseName() << "\n";
  return kExitOk;
}
