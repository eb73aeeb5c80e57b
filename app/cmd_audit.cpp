// kontavo audit verify: the hash chain of the audit trail.
#include <nlohmann/json.hpp>
#include <ostream>

#include "accounts/audittrail.h"
#include "app/cli.h"
#include "app/commands.h"
#include "invoice/shared/profile.h"
#include "llib/gen/jsontext.h"

int LCmdAudit(LCliContext& context, LCliArgs& args) {
  if (args.TakeVerb() != "verify") return context.Usage();
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 0, 0)) return kExitUsage;
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  LAuditVerifyResult result = LAuditVerify(*profile);
  if (context.json)
    context.out << LJsonDump(nlohmann::json({{"entries", result.entryCount},
                                             {"brokenEntry", result.brokenEntry},
                                             {"message", result.message}}))
                << "\n";
  else if (result.message.empty())
    context.out << "Piste d'audit intègre : " << result.entryCount << " entrées.\n";
  if (!result.message.empty()) return context.Fail(result.message);
  return kExitOk;
}
