// kontavo ledger and kontavo check: the journal lines of the day files, deleting a transaction,
// and checking the balances cached in the records against the ledger.
#include <nlohmann/json.hpp>
#include <ostream>

#include "accounts/check.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "accounts/ledgeriterator.h"
#include "app/cli.h"
#include "app/cliasker.h"
#include "app/commands.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/datemessage.h"
#include "llib/gen/process.h"
#include "llib/gen/processterminal.h"
#include "llib/gen/jsontext.h"

namespace {

int Show(LCliContext& context, LProfile& profile, LCliArgs& args) {
  std::string from, to, account;
  bool fromGiven = args.TakeOption("--from", from);
  bool toGiven = args.TakeOption("--to", to);
  bool accountGiven = args.TakeOption("--account", account);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 0, 0)) return kExitUsage;
  LDate day;
  if (fromGiven && !LDate::Parse(from, day)) return context.Fail(LInvalidDateMessage(from));
  if (toGiven && !LDate::Parse(to, day)) return context.Fail(LInvalidDateMessage(to));

  nlohmann::ordered_json json = nlohmann::ordered_json::array();
  LLedgerAccountLineIterator it(profile, from, to);
  for (it.SkipToValidLine(); it.valid; it.SkipToValidLine()) {
    const LLedgerJournalLine& line = it.line;
    if (accountGiven && line.account != account) continue;
    if (context.json) {
      json.push_back({{"date", line.date},
                      {"reference", line.reference},
                      {"type", line.type},
                      {"account", line.account},
                      {"description", line.description},
                      {"amount", line.amount},
                      {"document", line.document}});
    } else {
      context.out << line.date << "\t" << line.reference << "\t" << line.type << "\t" << line.account << "\t"
                  << line.description << "\t" << LCliFormatAmount(profile, line.amount) << "\t" << line.document
                  << "\n";
    }
  }
  if (context.json) context.out << LJsonDump(json) << "\n";
  return kExitOk;
}

}  // namespace

int LCmdLedger(LCliContext& context, LCliArgs& args) {
  std::string verb = args.TakeVerb();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  if (verb.empty()) return Show(context, *profile, args);
  if (verb != "delete") return context.Usage();
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 2, 2)) return kExitUsage;
  if (!LedgerTransactionDelete(*profile, words[0], words[1]))
    return context.Fail("La transaction " + words[1] + " du " + words[0] + " n'existe pas dans le grand livre.");
  return kExitOk;
}

int LCmdCheck(LCliContext& context, LCliArgs& args) {
  bool fix = args.TakeFlag("--fix");
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 0, 0)) return kExitUsage;
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  LBookCheckProcess data;
  data.profile = profile;
  data.fix = fix;
  LProcessTerminal process("Vérification des comptes");
  Process(process, data);
  const LCheckReport& report = data.report;
  if (context.json) {
    nlohmann::ordered_json differences = nlohmann::ordered_json::array();
    for (const auto& d : report.differences)
      differences.push_back({{"list", d.list},
                             {"key", d.key},
                             {"field", d.field},
                             {"stored", d.stored},
                             {"computed", d.computed},
                             {"fixed", d.fixed}});
    nlohmann::ordered_json problems = nlohmann::ordered_json::array();
    for (const auto& p : report.problems)
      problems.push_back({{"file", p.file}, {"row", p.row}, {"message", p.message}, {"text", p.text}});
    context.out << LJsonDump(nlohmann::ordered_json({{"rows", report.nRows}, {"differences", differences}, {"problems", problems}}))
                << "\n";
  } else {
    for (const auto& d : report.differences)
      context.out << d.list << "/" << d.key << "\t" << d.field << "\tenregistré " << d.stored << "\tcalculé "
                  << d.computed << (d.fixed ? "\tcorrigé" : "") << "\n";
    for (const auto& p : report.problems) {
      context.out << p.file;
      if (p.row > 0) context.out << ":" << p.row;
      context.out << "\t" << p.message << "\t" << p.text << "\n";
    }
  }
  if (report.HasUnresolved()) return context.Fail("Le contrôle des livres a trouvé des écarts non corrigés.");
  return kExitOk;
}
