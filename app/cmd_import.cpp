// kontavo import ofx FILE (and import csv: cmd_importcsv.cpp): reads a bank or credit-card statement as the reconciliation does and
// shows it: account, period, ledger balance, then the lines in the statement's list order (the
// reverse of the file's). What was read is shown even when the reader reports a fault in the
// statement's text; the fault's text then goes to stderr and the exit status is 1. A file that
// could not be read at all shows nothing but its message.
#include <nlohmann/json.hpp>
#include <ostream>

#include "accounts/ofx.h"
#include "app/cli.h"
#include "app/commands.h"
#include "invoice/shared/profile.h"
#include "llib/gen/money.h"
#include "llib/gen/jsontext.h"

namespace {

// Statements come in the bank's character set (often Windows-1252); bytes that are not UTF-8
// are shown as U+FFFD rather than refused.
std::string JsonText(const nlohmann::ordered_json& document) {
  return LJsonDump(document);
}

void PrintJson(LCliContext& context, const LBankStatement& statement) {
  // Members in the order the command's documentation lists them.
  nlohmann::ordered_json lines = nlohmann::ordered_json::array();
  for (const LBankStatementItem* line = statement.GetFirstLine(); line != nullptr; line = line->GetNext())
    lines.push_back({{"date", line->date}, {"id", line->id}, {"description", line->description}, {"amount", line->amount}});
  nlohmann::ordered_json document = {{"account", statement.accountId},
                             {"start", statement.periodStart.GetDateTimeText()},
                             {"end", statement.periodEnd.GetDateTimeText()},
                             {"balance", statement.ledgerBalance},
                             {"lines", std::move(lines)}};
  context.out << JsonText(document) << "\n";
}

void PrintText(LCliContext& context, const LBankStatement& statement, int currencyDigits) {
  context.out << "Compte : " << statement.accountId << "\n"
              << "Période : " << statement.periodStart.GetDateTimeText() << " au "
              << statement.periodEnd.GetDateTimeText() << "\n"
              << "Solde : " << LFormatAmountPlain(statement.ledgerBalance, currencyDigits) << "\n";
  for (const LBankStatementItem* line = statement.GetFirstLine(); line != nullptr; line = line->GetNext())
    context.out << line->date << "\t" << line->id << "\t" << LFormatAmountPlain(line->amount, currencyDigits)
                << "\t" << line->description << "\n";
}

// Whether the reader got as far as the statement: a file refused before its body was parsed
// leaves it as it was made.
bool HoldsAnything(const LBankStatement& statement) {
  return !statement.accountId.empty() || statement.ledgerBalance != 0 || statement.GetFirstLine() != nullptr;
}

}  // namespace

int LCmdImport(LCliContext& context, LCliArgs& args) {
  if (LCliPeekVerb(args, {"--map"}, {"--dry-run"}) == "csv") return LCmdImportCsv(context, args);
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 2, 2)) return kExitUsage;
  if (words[0] != "ofx") return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;

  LBankStatement statement;
  bool read = LOFXImportTransaction(*profile, nullptr, words[1], statement, error);
  if (read || HoldsAnything(statement)) {
    if (context.json) PrintJson(context, statement);
    else PrintText(context, statement, profile->GetCurrencyDigits());
  }
  return read ? kExitOk : context.Fail(error);
}
