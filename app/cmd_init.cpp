// kontavo init: opens the business, initialising its options on first use; with the start
// wizard's options, sets up a business that has no company name yet.
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "app/multiplebusiness.h"
#include "app/startwizardoptions.h"
#include "invoice/shared/profile.h"
#include "llib/gen/jsontext.h"

int LCmdInit(LCliContext& context, LCliArgs& args) {
  LStartWizardAnswers answers;
  bool given = false, named = false;
  std::string error;
  if (!LStartWizardTakeOptions(args, answers, given, named, error)) return context.Usage(error);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 0, 0)) return kExitUsage;
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  if (given && LBusinessGetName(profile->GetDatabaseName()).empty()) {
    auto prompter = LStartWizardTerminalPrompter(context, named);
    std::string message;
    if (!LStartWizardRun(*profile, answers, prompter.get(), message))
      return context.Fail(message.empty() ? std::string(kWizardAbandonedMessage) : message);
  }
  if (context.json) context.out << LJsonDump(nlohmann::json({{"folder", profile->GetDatabaseName()}})) << "\n";
  else context.out << profile->GetDatabaseName() << "\n";
  return kExitOk;
}
