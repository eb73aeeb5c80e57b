// kontavo bank import|lines|accept|post|reconcile|rollback: bank statements read into a bank
// account, matched against its ledger lines, what is new posted, and the account reconciled
// with the statement's closing balance. Every step is a routine of the ledger side (or of the
// sales side for customer payments); this file only reads the words and prints the results.
#include <nlohmann/json.hpp>
#include <ostream>

#include "accounts/accounts.h"
#include "accounts/bankaccept.h"
#include "accounts/bankimport.h"
#include "accounts/bankpost.h"
#include "accounts/reconcile.h"
#include "app/cli.h"
#include "app/cliasker.h"
#include "app/commands.h"
#include "invoice/sales/bankpayment.h"
#include "invoice/shared/profile.h"
#include "llib/gen/datemessage.h"
#include "llib/gen/processterminal.h"
#include "llib/gen/system.h"
#include "llib/gen/jsontext.h"

namespace {

// "matched GJ10003", "new", "known"...
std::string StatusText(const LBankLine& line, bool known) {
  if (known) return "known";
  std::string status(LBankLineStatusName(line.status));
  return line.IsPaired() ? status + " " + line.ledgerReference : status;
}

nlohmann::ordered_json LineJson(const LProfile& profile, const LBankLine& line, bool known) {
  nlohmann::ordered_json json = {{"id", line.id}, {"date", line.date}, {"amount", line.amount}, {"text", line.text},
                                 {"status", known ? std::string("known") : std::string(LBankLineStatusName(line.status))}};
  if (line.IsPaired()) json["reference"] = line.ledgerReference, json["ledgerDate"] = line.ledgerDate;
  if (!line.chequeNumber.empty()) json["cheque"] = line.chequeNumber;
  if (line.status == LBankLineStatus::kNew && !known) {
    std::string account = LBankSuggestAccount(profile, line.text);
    if (!account.empty()) json["suggestedAccount"] = account;
  }
  return json;
}

void PrintLines(LCliContext& context, const LProfile& profile, const std::vector<std::pair<const LBankLine*, bool>>& lines) {
  if (context.json) {
    nlohmann::ordered_json all = nlohmann::ordered_json::array();
    for (const auto& [line, known] : lines) all.push_back(LineJson(profile, *line, known));
    context.out << LJsonDump(all) << "\n";
    return;
  }
  for (const auto& [line, known] : lines)
    context.out << line->id << "\t" << line->date << "\t" << LCliFormatAmount(profile, line->amount) << "\t"
                << line->text << "\t" << StatusText(*line, known) << "\n";
}

int Import(LCliContext& context, LProfile& profile, LCliArgs& args) {
  LBankImportData data;
  data.profile = &profile;
  std::string format;
  bool accountGiven = args.TakeOption("--account", data.request.account);
  bool formatGiven = args.TakeOption("--format", format);
  args.TakeOption("--csv-map", data.request.csvMap);
  args.TakeOption("--statement-account", data.request.statementAccount);
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 2, 2)) return kExitUsage;
  if (!accountGiven) return context.Usage();
  if (formatGiven && !LStatementFormatFromName(format, data.request.format))
    return context.Usage("format inconnu : " + format);
  data.request.path = words[1];
  LProcessTerminal progress("Import du relevé");
  LProcessResult result = Process(progress, data);
  progress.SetResultCode(result, nullptr, 0);
  if (result != kProcessFinished) return context.Fail(data.error.empty() ? "Import annulé." : data.error);
  if (!data.otherAccounts.empty() && !context.json) {
    std::string others;
    for (const std::string& id : data.otherAccounts) others += (others.empty() ? "" : ", ") + id;
    context.err << "Comptes du relevé non importés : " << others << "\n";
  }
  std::vector<std::pair<const LBankLine*, bool>> lines;
  for (const LBankImportedLine& imported : data.lines) lines.emplace_back(&imported.line, imported.known);
  PrintLines(context, profile, lines);
  return kExitOk;
}

int Lines(LCliContext& context, LProfile& profile, LCliArgs& args) {
  std::string account;
  bool accountGiven = args.TakeOption("--account", account);
  bool unmatched = args.TakeFlag("--unmatched");
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;
  if (!accountGiven) return context.Usage();
  if (!LAccountIsLive(profile, account)) return context.Fail(LAccountNotInChartMessage(account));
  LBankLineStore store(profile, account);
  std::vector<std::pair<const LBankLine*, bool>> lines;
  for (const LBankLine& line : store.Lines())
    if (!unmatched || !line.HoldsLedgerLine()) lines.emplace_back(&line, false);
  PrintLines(context, profile, lines);
  return kExitOk;
}

int Accept(LCliContext& context, LProfile& profile, LCliArgs& args) {
  std::string account;
  bool accountGiven = args.TakeOption("--account", account);
  bool allMatched = args.TakeFlag("--all-matched");
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  if (!accountGiven || (words.size() == 1 && !allMatched)) return context.Usage();
  std::vector<LBankAcceptance> entries;
  for (std::size_t i = 1; i < words.size(); ++i) {
    std::string line, reference;
    if (words[i].find('=') == std::string::npos) line = words[i];
    else if (!LCliSplitAssignment(words[i], line, reference)) return context.Usage("LIGNE=RÉFÉRENCE : " + words[i]);
    entries.push_back({line, reference});
  }
  int count = 0;
  if (!LBankAccept(profile, account, entries, allMatched, count, error)) return context.Fail(error);
  if (context.json) context.out << LJsonDump(nlohmann::json({{"accepted", count}})) << "\n";
  else context.out << count << "\n";
  return kExitOk;
}

int Post(LCliContext& context, LProfile& profile, LCliArgs& args) {
  std::string account, to, description, customer, supplier;
  bool accountGiven = args.TakeOption("--account", account);
  bool toGiven = args.TakeOption("--to", to);
  args.TakeOption("--desc", description);
  bool customerGiven = args.TakeOption("--customer", customer);
  bool supplierGiven = args.TakeOption("--supplier", supplier);
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 2, 2)) return kExitUsage;
  if (!accountGiven || toGiven + customerGiven + supplierGiven > 1) return context.Usage();
  const std::string& lineId = words[1];
  std::string reference, paymentKey;
  bool posted = false;
  if (customerGiven) {
    posted = LBankPostCustomerPayment(profile, account, lineId, customer, reference, paymentKey, error);
  } else if (supplierGiven) {
    posted = LBankPostBillPayment(profile, account, lineId, supplier, reference, error);
  } else {
    if (!toGiven) {
      // The account remembered for the line's payee.
      LBankLineStore store(profile, account);
      const LBankLine* line = store.Find(lineId);
      if (line != nullptr) to = LBankSuggestAccount(profile, line->text);
      if (to.empty()) return context.Usage("donnez --to, --customer ou --supplier");
    }
    posted = LBankPostToAccount(profile, account, lineId, to, description, reference, error);
  }
  if (!posted) return context.Fail(error);
  if (context.json) {
    nlohmann::ordered_json json = {{"reference", reference}};
    if (!paymentKey.empty()) json["payment"] = paymentKey;
    context.out << LJsonDump(json) << "\n";
  } else {
    context.out << reference << "\n";
  }
  return kExitOk;
}

void PrintState(LCliContext& context, const LProfile& profile, const LReconcileState& state) {
  auto money = [&](long long amount) { return LCliFormatAmount(profile, amount); };
  if (context.json) {
    nlohmann::ordered_json items = nlohmann::ordered_json::array();
    for (const LReconcileItem& item : state.items)
      items.push_back({{"date", item.date}, {"reference", item.reference}, {"description", item.description},
                       {"amount", item.amount}, {"cleared", item.ticked}});
    nlohmann::ordered_json json = {{"account", state.account}, {"date", state.statementDate},
                                   {"balance", state.statementBalance}, {"inProgress", state.inProgress},
                                   {"cleared", state.clearedBalance}, {"book", state.bookBalance},
                                   {"difference", state.difference}, {"items", items}};
    context.out << LJsonDump(json) << "\n";
    return;
  }
  for (const LReconcileItem& item : state.items)
    context.out << (item.ticked ? "[x]" : "[ ]") << "\t" << item.date << "\t" << item.reference << "\t"
                << money(item.amount) << "\t" << item.description << "\n";
  context.out << "Solde du relevé : " << money(state.statementBalance) << "\n"
              << "Solde pointé : " << money(state.clearedBalance) << "\n"
              << "Écart : " << money(state.difference) << "\n";
}

int Reconcile(LCliContext& context, LProfile& profile, LCliArgs& args) {
  std::string account, dateText, balanceText;
  bool accountGiven = args.TakeOption("--account", account);
  bool dateGiven = args.TakeOption("--date", dateText);
  bool balanceGiven = args.TakeOption("--balance", balanceText);
  std::vector<std::string> clear = args.TakeOptionAll("--clear");
  std::vector<std::string> unclear = args.TakeOptionAll("--unclear");
  bool finish = args.TakeFlag("--finish");
  bool cancel = args.TakeFlag("--cancel");
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  // "--clear A B": the references after the verb belong to --clear too.
  if (!clear.empty()) clear.insert(clear.end(), words.begin() + 1, words.end()), words.resize(1);
  if (!accountGiven || words.size() != 1) return context.Usage();
  if (cancel) {
    if (!LReconcileCancel(profile, account, error)) return context.Fail(error);
    return kExitOk;
  }
  if (dateGiven != balanceGiven) return context.Usage("donnez --date et --balance ensemble");
  if (dateGiven) {
    long long balance = 0;
    LDate date;
    if (!LCliParseDate(true, dateText, date)) return context.Fail(LInvalidDateMessage(dateText));
    if (!LCliParseAmount(profile, balanceText, balance)) return context.Usage(LCliBadAmountMessage(profile, balanceText));
    if (!LReconcileUpdate(profile, account, date.ToText(), balance, clear, unclear, error)) return context.Fail(error);
  } else if (!clear.empty() || !unclear.empty()) {
    LReconcileState current;
    if (!LReconcileLoad(profile, account, "", current, error)) return context.Fail(error);
    if (!current.inProgress) return context.Usage("donnez --date et --balance du relevé");
    if (!LReconcileUpdate(profile, account, current.statementDate, current.statementBalance, clear, unclear, error))
      return context.Fail(error);
  }
  if (finish && !LReconcileFinish(profile, account, error)) return context.Fail(error);
  LReconcileState state;
  if (!LReconcileLoad(profile, account, "", state, error)) return context.Fail(error);
  PrintState(context, profile, state);
  return kExitOk;
}

int Rollback(LCliContext& context, LProfile& profile, LCliArgs& args) {
  std::string account;
  bool accountGiven = args.TakeOption("--account", account);
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;
  if (!accountGiven) return context.Usage();
  std::string date;
  if (!LReconcileRollback(profile, account, date, error)) return context.Fail(error);
  if (context.json) context.out << LJsonDump(nlohmann::json({{"date", date}})) << "\n";
  else context.out << date << "\n";
  return kExitOk;
}

}  // namespace

int LCmdBank(LCliContext& context, LCliArgs& args) {
  std::string verb = LCliPeekVerb(args,
                                  {"--account", "--format", "--csv-map", "--statement-account", "--to", "--desc",
                                   "--customer", "--supplier", "--date", "--balance", "--clear", "--unclear"},
                                  {"--unmatched", "--all-matched", "--finish", "--cancel"});
  if (verb != "import" && verb != "lines" && verb != "accept" && verb != "post" && verb != "reconcile" &&
      verb != "rollback")
    return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  if (verb == "import") return Import(context, *profile, args);
  if (verb == "lines") return Lines(context, *profile, args);
  if (verb == "accept") return Accept(context, *profile, args);
  if (verb == "post") return Post(context, *profile, args);
  if (verb == "reconcile") return Reconcile(context, *profile, args);
  return Rollback(context, *profile, args);
}
