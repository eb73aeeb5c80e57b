// kontavo form: the template forms of the sales documents (invoice/shared/templateform.h).
//   form list             the business's forms, one name a line
//   form copy FROM TO     a copy to change; print with --form TO, or choose it for good in the
//                         field "Form" of the kind's options ("record set Misc Invoice Form=TO")
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/templateform.h"
#include "llib/gen/jsontext.h"

int LCmdForm(LCliContext& context, LCliArgs& args) {
  std::string verb = args.TakeVerb();
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  if (!(verb == "list" && words.empty()) && !(verb == "copy" && words.size() == 2)) return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  if (verb == "copy") {
    if (!LTemplateFormCopy(*profile, words[0], words[1], &error)) return context.Fail(error);
    context.out << LTemplateFormsFolder(*profile) << "/" << words[1] << ".form\n";
    return kExitOk;
  }
  std::vector<std::string> names = LTemplateFormNames(*profile);
  if (context.json) {
    context.out << LJsonDump(nlohmann::json(names)) << "\n";
    return kExitOk;
  }
  for (const std::string& name : names) context.out << name << "\n";
  return kExitOk;
}
