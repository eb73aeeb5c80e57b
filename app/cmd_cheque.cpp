// kontavo cheque, cash and template: the further ledger records. Cheques written from a bank
// account (to a supplier: applied to bills with --apply BILL=AMOUNT or --auto; voided, deleted), cash receipts and payments, and transaction templates recalled as
// journal entries. Each verb calls the routine the web pages call (accounts/cheques.h,
// cashtxn.h, txntemplates.h).
#include <nlohmann/json.hpp>
#include <ostream>

#include "accounts/cashtxn.h"
#include "accounts/chequeform.h"
#include "accounts/cheques.h"
#include "accounts/txntemplates.h"
#include "app/cli.h"
#include "app/cliasker.h"
#include "app/cmd_print.h"
#include "app/commands.h"
#include "app/paymentinput.h"
#include "invoice/sales/documentprint.h"
#include "invoice/shared/profile.h"
#include "llib/gen/datemessage.h"
#include "llib/gen/jsontext.h"
#include "llib/gen/money.h"

namespace {

// The LINE words (ACCOUNT:AMOUNT[:MEMO]) into lines; false after a usage message.
bool ParseSplitLines(LCliContext& context, const LProfile& profile, const std::vector<std::string>& words,
                     std::vector<LSplitLine>& lines, int& status) {
  for (const std::string& word : words) {
    LSplitLine line;
    std::string problem;
    if (!LSplitLineParse(word, profile.GetCurrencyFormat(), line, problem)) {
      status = context.Usage(problem);
      return false;
    }
    lines.push_back(std::move(line));
  }
  return true;
}

int PrintKey(LCliContext& context, const std::string& key) {
  if (context.json) context.out << LJsonDump(nlohmann::json({{"reference", key}})) << "\n";
  else context.out << key << "\n";
  return kExitOk;
}

// ---- cheque ---------------------------------------------------------------------------------------

int ChequeAdd(LCliContext& context, LProfile& profile, LCliArgs& args) {
  LChequeRequest request;
  std::string amount, date;
  bool amountGiven = args.TakeOption("--amount", amount);
  args.TakeOption("--account", request.account);
  args.TakeOption("--payee", request.payee);
  args.TakeOption("--number", request.number);
  args.TakeOption("--memo", request.memo);
  args.TakeOption("--supplier", request.supplier);
  bool dateGiven = args.TakeOption("--date", date);
  std::vector<std::string> applied = args.TakeOptionAll("--apply");
  request.autoApply = args.TakeFlag("--auto");
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  if (!amountGiven || request.account.empty() || (request.autoApply && !applied.empty())) return context.Usage();
  if (!LCliParseApplications(profile, applied, request.applications, error)) return context.Usage(error);
  if (!LCliParseAmount(profile, amount, request.amount)) return context.Usage(LCliBadAmountMessage(profile, amount));
  if (!LCliParseDate(dateGiven, date, request.date)) return context.Fail(LInvalidDateMessage(date));
  int status = kExitOk;
  if (!ParseSplitLines(context, profile, words, request.lines, status)) return status;
  LCliAsker asker(context);
  std::string key;
  if (!LChequeWrite(profile, asker, request, key, &error)) return context.Fail(error);
  return PrintKey(context, key);
}

int ChequeList(LCliContext& context, LProfile& profile, LCliArgs& args) {
  std::string account;
  args.TakeOption("--account", account);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 0, 0)) return kExitUsage;
  nlohmann::ordered_json json = nlohmann::ordered_json::array();
  LFileStoreListBase list = profile.List(kChequesList);
  for (const std::string& key : LChequeKeys(profile)) {
    LCheque cheque;
    if (!list.Open(cheque, key) || (!account.empty() && cheque.GetAccount() != account)) continue;
    std::string amount = LFormatAmountPlain(cheque.GetAmount(), profile.GetCurrencyDigits());
    if (context.json) {
      nlohmann::ordered_json row;
      for (const auto& field : cheque.Fields()) if (!field.deleted) row[field.name] = field.text;
      row["ID"] = key;
      json.push_back(row);
    } else {
      context.out << key << "\t" << cheque.GetAccount() << "\t" << cheque.GetNumber() << "\t" << cheque.GetDate()
                  << "\t" << cheque.GetPayee() << "\t" << amount << (cheque.IsVoid() ? "\tannulé " + cheque.GetString("VoidDate") : "")
                  << "\n";
    }
  }
  if (context.json) context.out << LJsonDump(json) << "\n";
  return kExitOk;
}

int ChequeVoidOrDelete(LCliContext& context, LProfile& profile, LCliArgs& args, bool voiding) {
  std::string account, date;
  args.TakeOption("--account", account);
  bool dateGiven = args.TakeOption("--date", date);
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;
  std::string key;
  if (!LChequeResolve(profile, words[0], account, key, &error)) return context.Fail(error);
  if (voiding) {
    LDate when;
    if (!LCliParseDate(dateGiven, date, when)) return context.Fail(LInvalidDateMessage(date));
    LCliAsker asker(context);
    if (!LChequeVoid(profile, asker, key, when, &error)) return context.Fail(error);
  } else if (!LChequeDelete(profile, key, &error)) {
    return context.Fail(error);
  }
  return PrintKey(context, key);
}

// kontavo cheque pdf NUMBER [--account NUMBER] [--out FILE]: the printed cheque with its stub.
int ChequePdf(LCliContext& context, LProfile& profile, LCliArgs& args) {
  std::string account, out;
  args.TakeOption("--account", account);
  args.TakeOption("--out", out);
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;
  LPrintedForm form;
  if (!LPrintCheque(profile, words[0], account, form.pdf, form.fileName, &error)) return context.Fail(error);
  return LCmdWritePrintedForm(context, out, form);
}

int ChequeNextNumber(LCliContext& context, LProfile& profile, LCliArgs& args) {
  std::string account;
  args.TakeOption("--account", account);
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 0, 1)) return kExitUsage;
  if (account.empty()) return context.Usage();
  if (words.size() == 1 && !LChequeSetNextNumber(profile, account, words[0], &error)) return context.Fail(error);
  context.out << LChequeNextNumber(profile, account) << "\n";
  return kExitOk;
}

// ---- template ---------------------------------------------------------------------------------------

int TemplateAdd(LCliContext& context, LProfile& profile, LCliArgs& args) {
  LTxnTemplate tpl;
  std::string type;
  args.TakeOption("--desc", tpl.description);
  args.TakeOption("--ref", tpl.reference);
  bool typeGiven = args.TakeOption("--type", type);
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 1)) return kExitUsage;
  if (typeGiven) {
    if (type.size() != 1 || type[0] < '0' || type[0] > '4') return context.Usage("--type attend 0 à 4");
    tpl.typeIndex = type[0] - '0';
  }
  tpl.name = words[0];
  for (std::size_t i = 1; i < words.size(); ++i) {
    LJournalEntryLine line;
    std::string problem;
    if (!LCliParseEntryLine(profile, words[i], line, problem)) return context.Usage(problem);
    tpl.lines.push_back(std::move(line));
  }
  if (!LTxnTemplateSave(profile, tpl, &error)) return context.Fail(error);
  return PrintKey(context, tpl.name);
}

int TemplateList(LCliContext& context, LProfile& profile, LCliArgs& args) {
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 0, 0)) return kExitUsage;
  nlohmann::ordered_json json = nlohmann::ordered_json::array();
  for (const std::string& name : LTxnTemplateNames(profile)) {
    LTxnTemplate tpl;
    if (!LTxnTemplateLoad(profile, name, tpl)) continue;
    std::string debits = LFormatAmountPlain(tpl.Debits(), profile.GetCurrencyDigits());
    if (context.json) {
      nlohmann::ordered_json lines = nlohmann::ordered_json::array();
      for (const auto& line : tpl.lines)
        lines.push_back({{"account", line.account}, {"amount", line.IsCredit() ? -line.amount : line.amount}});
      json.push_back({{"name", name}, {"description", tpl.description}, {"type", tpl.typeIndex},
                      {"reference", tpl.reference}, {"lines", lines}});
    } else {
      context.out << name << "\t" << tpl.description << "\t" << tpl.lines.size() << " lignes\t" << debits << "\n";
    }
  }
  if (context.json) context.out << LJsonDump(json) << "\n";
  return kExitOk;
}

int TemplateUse(LCliContext& context, LProfile& profile, LCliArgs& args) {
  std::string date, amount, reference;
  bool dateGiven = args.TakeOption("--date", date);
  bool amountGiven = args.TakeOption("--amount", amount);
  bool referenceGiven = args.TakeOption("--ref", reference);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;
  LTxnTemplate tpl;
  if (!LTxnTemplateLoad(profile, words[0], tpl)) return context.Fail("Le modèle « " + words[0] + " » n'existe pas.");
  LDate when;
  if (!LCliParseDate(dateGiven, date, when)) return context.Fail(LInvalidDateMessage(date));
  long long total = 0;
  if (amountGiven && (!LCliParseAmount(profile, amount, total) || total <= 0))
    return context.Usage(LCliBadAmountMessage(profile, amount));
  LCliAsker asker(context);
  LJournalEntryDlg entry(profile, asker);
  LTxnTemplateFillEntry(tpl, when, total, entry);
  if (referenceGiven) entry.reference = reference;
  std::string message;
  if (!entry.CmOk(&message)) return context.Fail(message);
  return PrintKey(context, entry.GetSavedReference());
}

}  // namespace

int LCmdCheque(LCliContext& context, LCliArgs& args) {
  std::string verb = args.TakeVerb();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  if (verb == "add") return ChequeAdd(context, *profile, args);
  if (verb == "list") return ChequeList(context, *profile, args);
  if (verb == "void") return ChequeVoidOrDelete(context, *profile, args, true);
  if (verb == "pdf") return ChequePdf(context, *profile, args);
  if (verb == "delete") return ChequeVoidOrDelete(context, *profile, args, false);
  if (verb == "next") return ChequeNextNumber(context, *profile, args);
  return context.Usage();
}

int LCmdCash(LCliContext& context, LCliArgs& args) {
  if (args.TakeVerb() != "add") return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  LCashTxnRequest request;
  std::string amount, date;
  args.TakeOption("--account", request.account);
  bool amountGiven = args.TakeOption("--amount", amount);
  bool dateGiven = args.TakeOption("--date", date);
  args.TakeOption("--desc", request.description);
  bool receipt = args.TakeFlag("--receipt");
  bool payment = args.TakeFlag("--payment");
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  if (receipt == payment || !amountGiven || request.account.empty()) return context.Usage();
  request.receipt = receipt;
  if (!LCliParseAmount(*profile, amount, request.amount)) return context.Usage(LCliBadAmountMessage(*profile, amount));
  if (!LCliParseDate(dateGiven, date, request.date)) return context.Fail(LInvalidDateMessage(date));
  int status = kExitOk;
  if (!ParseSplitLines(context, *profile, words, request.lines, status)) return status;
  LCliAsker asker(context);
  std::string key;
  if (!LCashTxnRecord(*profile, asker, request, key, &error)) return context.Fail(error);
  return PrintKey(context, key);
}

int LCmdTemplate(LCliContext& context, LCliArgs& args) {
  std::string verb = args.TakeVerb();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  if (verb == "add") return TemplateAdd(context, *profile, args);
  if (verb == "list") return TemplateList(context, *profile, args);
  if (verb == "use") return TemplateUse(context, *profile, args);
  if (verb == "delete") {
    std::vector<std::string> words;
    if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;
    if (!LTxnTemplateDelete(*profile, words[0])) return context.Fail("Le modèle « " + words[0] + " » n'existe pas.");
    return kExitOk;
  }
  return context.Usage();
}
