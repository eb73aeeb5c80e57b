// kontavo export csv customers|items|suppliers|salespersons|groups|ledger [--out FILE] and
// export journal [--out FILE]: the records as CSV that `import csv` reads back
// (invoice/shared/csvimport.h), the journal lines as CSV, or the whole books as a journal for
// ledger-cli and hledger (accounts/ledgerexport.h). Without --out the text goes to standard
// output; a file is written whole or not at all (written aside, then renamed).
#include <ostream>

#include "accounts/ledgerexport.h"
#include "app/cli.h"
#include "app/commands.h"
#include "invoice/shared/csvimport.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"

int LCmdExport(LCliContext& context, LCliArgs& args) {
  std::string out, error;
  bool toFile = args.TakeOption("--out", out);
  std::vector<std::string> words;
  if (!args.Finish(words, error)) return context.Usage(error);
  LPartyKind kind = LPartyKind::kCustomer;
  bool journal = words.size() == 1 && words[0] == "journal";
  bool ledger = words.size() == 2 && words[0] == "csv" && words[1] == "ledger";
  bool records = words.size() == 2 && words[0] == "csv" && LPartyKindFromWord(words[1], kind);
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
