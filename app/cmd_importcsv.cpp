// kontavo import csv customers|items|suppliers FILE [--map MAP] [--dry-run]: the CSV import of
// invoice/shared/csvimport.h. Prints what was found (encoding, separator, the column of each
// field), the counts, and the refused rows with their line numbers; the other rows go in. A file
// refused whole writes nothing and exits 1 with its reason.
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "invoice/shared/csvimport.h"
#include "invoice/shared/profile.h"
#include "llib/gen/jsontext.h"
#include "llib/gen/processterminal.h"

namespace {

std::string SeparatorName(char separator) {
  if (separator == '\t') return "tabulation";
  return std::string("« ") + separator + " »";
}

void PrintText(LCliContext& context, const LCsvImportReport& report, bool dryRun) {
  context.out << "Encodage : " << LCsvEncodingName(report.encoding) << " ; séparateur : "
              << SeparatorName(report.separator) << "\n";
  for (const std::string& line : report.mapping) context.out << "  " << line << "\n";
  context.out << (dryRun ? "Essai sans écriture : " : "") << report.nRows << " ligne(s) lue(s), " << report.nCreated
              << " créée(s), " << report.nUpdated << " mise(s) à jour, " << report.errors.GetErrorCount()
              << " refusée(s).\n";
  context.out << report.errors.GetText();
}

void PrintJson(LCliContext& context, const LCsvImportReport& report, bool dryRun) {
  nlohmann::ordered_json json = {{"encoding", LCsvEncodingName(report.encoding)},
                                 {"separator", std::string(1, report.separator)},
                                 {"mapping", report.mapping},
                                 {"dryRun", dryRun},
                                 {"rows", report.nRows},
                                 {"created", report.nCreated},
                                 {"updated", report.nUpdated},
                                 {"refused", report.errors.GetErrorCount()},
                                 {"errors", report.errors.GetLines()}};
  context.out << LJsonDump(json) << "\n";
}

}  // namespace

int LCmdImportCsv(LCliContext& context, LCliArgs& args) {
  std::string map, error;
  args.TakeOption("--map", map);
  bool dryRun = args.TakeFlag("--dry-run");
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  LPartyKind kind;
  if (words.size() != 3 || words[0] != "csv" || !LPartyKindFromWord(words[1], kind)) return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  LCsvImportReport report;
  {
    LProcessTerminal progress("Importation " + words[2]);
    if (!LCsvImport(*profile, kind, words[2], map, dryRun, &progress, report, &error)) return context.Fail(error);
  }
  if (context.json) PrintJson(context, report, dryRun);
  else PrintText(context, report, dryRun);
  return kExitOk;
}
