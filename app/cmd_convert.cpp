#include "app/cmd_convert.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "invoice/sales/salesconversion.h"
#include "llib/gen/jsontext.h"

int LCmdDocumentConvert(LCliContext& context, LCliArgs& args, const LSalesDocumentKind& kind) {
  bool draft = args.TakeFlag("--draft");
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 2, 2)) return kExitUsage;
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  std::string key;
  if (!LSalesDocumentConvertToInvoice(*profile, kind, words[1], draft, key, error)) return context.Fail(error);
  if (context.json) context.out << LJsonDump(nlohmann::json({{"key", key}})) << "\n";
  else context.out << key << "\n";
  return kExitOk;
}
