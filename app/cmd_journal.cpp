// kontavo journal ... and kontavo transfer: general transactions typed in by the user, saved
// with the checks of the journal-entry window, and transfers between two accounts.
#include <nlohmann/json.hpp>
#include <ostream>

#include "accounts/journalentry.h"
#include "accounts/ledger.h"
#include "accounts/transfer.h"
#include "app/cli.h"
#include "app/cliasker.h"
#include "app/commands.h"
#include "invoice/shared/profile.h"
#include "llib/gen/datemessage.h"
#include "llib/gen/jsontext.h"

namespace {

// The type index of a stored transaction's type text; the general journal's for other texts.
int TypeIndexOf(std::string_view type) {
  for (std::size_t i = 0; i < kJournalEntryTypes.size(); ++i)
    if (kJournalEntryTypes[i] == type) return static_cast<int>(i);
  return kJournalEntryGeneralType;
}

// journal add / journal edit: the options of the entry, then CmOk.
int Save(LCliContext& context, LProfile& profile, LCliArgs& args, bool editing) {
  std::string date, type, reference, description;
  bool dateGiven = args.TakeOption("--date", date);
  bool typeGiven = args.TakeOption("--type", type);
  bool referenceGiven = args.TakeOption("--ref", reference);
  bool descriptionGiven = args.TakeOption("--desc", description);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  if (editing && words.size() < 2) return context.Usage();

  LCliAsker asker(context);
  LJournalEntryDlg dialog(profile, asker);
  std::size_t firstLine = 0;
  if (editing) {
    // The stored entry fills in whatever the command leaves out.
    LLedgerTransaction stored;
    if (!LLedgerTransactionLoad(profile, stored, words[0], words[1]))
      return context.Fail("La transaction " + words[1] + " du " + words[0] + " n'existe pas dans le grand livre.");
    dialog.existing = true;
    dialog.storedDate = stored.GetDate();
    dialog.storedReference = stored.GetReference();
    LDate::Parse(stored.GetDate(), dialog.date);
    dialog.typeIndex = TypeIndexOf(stored.GetType());
    dialog.reference = stored.GetReference();
    dialog.description = stored.Lines().front().description;
    for (const auto& line : stored.Lines())
      dialog.lines.push_back({line.account, line.amount < 0 ? -line.amount : line.amount, line.amount < 0 ? "CR" : "DR"});
    firstLine = 2;
  } else {
    dialog.date = LDate::Today();
  }
  if (dateGiven && !LDate::Parse(date, dialog.date)) return context.Fail(LInvalidDateMessage(date));
  if (typeGiven) {
    if (type.size() != 1 || type[0] < '0' || type[0] > '4') return context.Usage("--type attend 0 à 4");
    dialog.typeIndex = type[0] - '0';
  }
  if (referenceGiven) dialog.reference = reference;
  if (descriptionGiven) dialog.description = description;
  if (words.size() > firstLine) {
    dialog.lines.clear();
    for (std::size_t i = firstLine; i < words.size(); ++i) {
      LJournalEntryLine line;
      std::string problem;
      if (!LCliParseEntryLine(profile, words[i], line, problem)) return context.Usage(problem);
      dialog.lines.push_back(std::move(line));
    }
  }
  std::string message;
  if (!dialog.CmOk(&message)) return context.Fail(message);
  if (context.json)
    context.out << LJsonDump(nlohmann::json({{"reference", dialog.GetSavedReference()}, {"written", dialog.WroteLedger()}}))
                << "\n";
  else
    context.out << dialog.GetSavedReference() << "\n";
  return kExitOk;
}

}  // namespace

int LCmdJournal(LCliContext& context, LCliArgs& args) {
  std::string verb = args.TakeVerb();
  if (verb != "add" && verb != "edit") return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  return Save(context, *profile, args, verb == "edit");
}

int LCmdTransfer(LCliContext& context, LCliArgs& args) {
  std::string from, to, amountText, dateText;
  args.TakeOption("--from", from);
  args.TakeOption("--to", to);
  bool amountGiven = args.TakeOption("--amount", amountText);
  bool dateGiven = args.TakeOption("--date", dateText);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 0, 0)) return kExitUsage;
  if (!amountGiven) return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  long long amount = 0;
  if (!LCliParseAmount(*profile, amountText, amount)) return context.Usage(LCliBadAmountMessage(*profile, amountText));
  LDate date;
  if (!LCliParseDate(dateGiven, dateText, date)) return context.Fail(LInvalidDateMessage(dateText));
  LCliAsker asker(context);
  std::string reference, message;
  if (!LAccountTransfer(*profile, asker, from, to, amount, date, &reference, &message)) return context.Fail(message);
  if (context.json) context.out << LJsonDump(nlohmann::json({{"reference", reference}})) << "\n";
  else context.out << reference << "\n";
  return kExitOk;
}
