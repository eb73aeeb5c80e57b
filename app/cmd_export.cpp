// kontavo export fec|csv|journal: the "fichier des écritures comptables" of a fiscal year and the
// check of any such file; the records as CSV that `import csv` reads back
// (invoice/shared/csvimport.h), the journal lines as CSV, or the whole books as a journal for
// ledger-cli and hledger (accounts/ledgerexport.h). Without --out the CSV and journal text goes
// to standard output; a file is written whole or not at all (written aside, then renamed).
#include <nlohmann/json.hpp>
#include <ostream>

#include "accounts/feccheck.h"
#include "accounts/fecexport.h"
#include "accounts/ledgerexport.h"
#include "app/cli.h"
#include "app/commands.h"
#include "invoice/shared/csvimport.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/jsontext.h"
#include "llib/gen/textnum.h"

namespace {

int CheckFec(LCliContext& context, const std::string& path) {
  LFecCheckReport report = LFecCheckFile(path);
  if (context.json) {
    context.out << LJsonDump(nlohmann::json({{"passed", report.Passed()},
                                             {"faults", report.faults},
                                             {"lines", report.lineCount},
                                             {"entries", report.entryCount},
                                             {"debit", report.debitTotal},
                                             {"credit", report.creditTotal}}))
                << "\n";
  } else if (report.Passed()) {
    context.out << "Fichier conforme : " << report.lineCount << " lignes, " << report.entryCount << " écritures.\n";
  }
  for (const auto& fault : report.faults) context.err << fault << "\n";
  return report.Passed() ? kExitOk : kExitFailed;
}

int ExportFec(LCliContext& context, LCliArgs& args) {
  std::string yearText, folder, checked;
  bool yearGiven = args.TakeOption("--year", yearText);
  bool folderGiven = args.TakeOption("--out", folder);
  bool checkGiven = args.TakeOption("--check", checked);
  bool utf8 = args.TakeFlag("--utf8");
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 0, 0)) return kExitUsage;
  if (checkGiven) {
    if (yearGiven || folderGiven || utf8) return context.Usage();
    return CheckFec(context, checked);
  }
  bool yearValid = yearText.size() == 4 && yearText.find_first_not_of("0123456789") == std::string::npos;
  if (!yearGiven || !yearValid) return context.Usage("année invalide : " + yearText);
  LFecExportOptions options;
  options.year = LTextToInt(yearText);
  options.folder = folder;
  options.utf8 = utf8;
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  LFecExportResult result;
  if (!LFecExport(*profile, options, result, &error)) return context.Fail(error);
  if (result.replacedCount > 0)
    context.err << result.replacedCount
                << " caractère(s) sans équivalent ISO-8859-15 remplacé(s) par « ? » (--utf8 les conserve).\n";
  if (context.json)
    context.out << LJsonDump(nlohmann::json({{"path", result.path},
                                             {"lines", result.lineCount},
                                             {"entries", result.entryCount},
                                             {"debit", result.debitTotal},
                                             {"credit", result.creditTotal},
                                             {"replaced", result.replacedCount}}))
                << "\n";
  else
    context.out << result.path << "\n";
  return kExitOk;
}


// export csv customers|items|suppliers|salespersons|groups|ledger and export journal.
int ExportText(LCliContext& context, LCliArgs& args, const std::string& what) {
  std::string out, error;
  bool toFile = args.TakeOption("--out", out);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  LPartyKind kind = LPartyKind::kCustomer;
  bool journal = what == "journal" && words.empty();
  bool ledger = what == "csv" && words.size() == 1 && words[0] == "ledger";
  bool records = what == "csv" && words.size() == 1 && LPartyKindFromWord(words[0], kind);
  if (!journal && !ledger && !records) return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  std::string text = journal  ? LLedgerExportJournal(*profile)
                     : ledger ? LLedgerExportCsv(*profile)
                              : LCsvExport(*profile, kind);
  if (!toFile) {
    context.out << text;
    return kExitOk;
  }
  if (!LFile::WriteAllAtomic(out, text, 0666)) return context.Fail("Impossible d'écrire le fichier " + out + ".");
  context.out << out << "\n";
  return kExitOk;
}

}  // namespace

int LCmdExport(LCliContext& context, LCliArgs& args) {
  std::string what = args.TakeVerb();
  if (what == "fec") return ExportFec(context, args);
  return ExportText(context, args, what);
}
