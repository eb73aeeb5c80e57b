// kontavo bill add and kontavo billpayment add: supplier bills and the payments made on them,
// saved in "Bills" and "BillPayments" and posted to the ledger.
#include <nlohmann/json.hpp>
#include <ostream>

#include "accounts/accounts.h"
#include "accounts/billimport.h"
#include "accounts/billpayments.h"
#include "accounts/bills.h"
#include "accounts/ledger.h"
#include "accounts/linkedaccounts.h"
#include "accounts/transactiondate.h"
#include "app/cli.h"
#include "app/cliasker.h"
#include "app/commands.h"
#include "invoice/shared/profile.h"
#include "llib/gen/datemessage.h"
#include "llib/gen/system.h"
#include "llib/gen/jsontext.h"

namespace {

// What every purchase posting checks first: the linked accounts, then the date guard.
bool CanPost(LCliContext& context, LProfile& profile, const LDate& date, std::string& message) {
  if (LDefAccountListNeedsUpdate(profile)) {
    message = kNeededAccountsWarning;
    return false;
  }
  LCliAsker asker(context);
  return LCheckTransactionDate(profile, asker, date, &message);
}

int PrintReference(LCliContext& context, const std::string& reference) {
  if (context.json) context.out << LJsonDump(nlohmann::json({{"reference", reference}})) << "\n";
  else context.out << reference << "\n";
  return kExitOk;
}

// "ACCOUNT:AMOUNT[:TAXTEXT]" into a bill's item line. false when it is not so; amountText is then
// the amount's text when that is what could not be read, empty otherwise.
bool ParseItem(const LProfile& profile, const std::string& word, std::string& account, std::string& amountText,
               long long& amount, std::string& taxText) {
  std::size_t first = word.find(':');
  if (first == std::string::npos) return false;
  std::size_t second = word.find(':', first + 1);
  account = word.substr(0, first);
  taxText = second == std::string::npos ? std::string() : word.substr(second + 1);
  amountText = word.substr(first + 1, second == std::string::npos ? std::string::npos : second - first - 1);
  if (account.empty() || amountText.empty()) return amountText.clear(), false;
  return LCliParseAmount(profile, amountText, amount);
}

// bill import FILE [--supplier KEY]: a received e-invoice as a posted bill.
int Import(LCliContext& context, LCliArgs& args) {
  std::string supplier;
  args.TakeOption("--supplier", supplier);
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  LEInvoice invoice;
  if (!LEInvoiceReadFile(words[0], invoice, &error)) return context.Fail(error);
  LBillImport plan;
  if (!LBillImportPrepare(*profile, invoice, supplier, plan, &error)) return context.Fail(error);
  LDate date;
  if (!LDate::Parse(plan.date, date)) return context.Fail(LInvalidDateMessage(plan.date));
  if (!CanPost(context, *profile, date, error)) return context.Fail(error);
  std::string reference;
  if (!LBillImportPost(*profile, plan, LGetPostingUserName(), reference, &error)) return context.Fail(error);
  return PrintReference(context, reference);
}

}  // namespace

int LCmdBill(LCliContext& context, LCliArgs& args) {
  std::string verb = args.TakeVerb();
  if (verb == "import") return Import(context, args);
  if (verb != "add") return context.Usage();
  std::string supplier, dateText, notes, account, reference;
  bool supplierGiven = args.TakeOption("--supplier", supplier);
  bool dateGiven = args.TakeOption("--date", dateText);
  args.TakeOption("--notes", notes);
  bool accountGiven = args.TakeOption("--account", account);
  bool referenceGiven = args.TakeOption("--ref", reference);
  std::vector<std::string> taxes = args.TakeOptionAll("--tax");
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 1)) return kExitUsage;
  if (!supplierGiven) return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;

  LBill bill;  // detached until it has its reference
  bill.SetString("Supplier", supplier);
  bill.SetString("Notes", notes);
  for (const std::string& word : words) {
    std::string itemAccount, taxText;
    long long amount = 0;
    std::string amountText;
    if (!ParseItem(*profile, word, itemAccount, amountText, amount, taxText))
      return context.Usage(amountText.empty() ? "ligne attendue sous la forme COMPTE:MONTANT[:TAXE] : " + word
                                              : LCliBadAmountMessage(*profile, amountText));
    if (!LAccountIsLive(*profile, itemAccount)) return context.Fail(LAccountNotInChartMessage(itemAccount));
    bill.AddItemLine(itemAccount, amount, taxText);
  }
  int nTaxes = LBillTaxCount(*profile);
  for (const std::string& tax : taxes) {
    std::size_t equals = tax.find('=');
    int number = equals == 1 && tax[0] >= '1' && tax[0] <= '9' ? tax[0] - '0' : 0;
    long long amount = 0;
    if (number == 0) return context.Usage("taxe attendue sous la forme K=MONTANT : " + tax);
    if (!LCliParseAmount(*profile, tax.substr(equals + 1), amount))
      return context.Usage(LCliBadAmountMessage(*profile, tax.substr(equals + 1)));
    if (number > nTaxes) return context.Fail("La taxe " + std::to_string(number) + " n'est pas définie.");
    bill.SetInt64("TaxAmount" + std::to_string(number), amount);
  }
  if (accountGiven) {
    if (!LAccountIsLive(*profile, account)) return context.Fail(LAccountNotInChartMessage(account));
    bill.SetString("DepositAccount", account);
  }
  LDate date;
  if (!LCliParseDate(dateGiven, dateText, date)) return context.Fail(LInvalidDateMessage(dateText));
  bill.SetString("Date", date.ToText());
  std::string message;
  if (!CanPost(context, *profile, date, message)) return context.Fail(message);

  // A bill posted again under its reference replaces its previous posting.
  if (referenceGiven) bill.SetString("JournalTxnRef", reference);
  std::string warning;
  if (!LBillSave(*profile, bill, LGetPostingUserName(), &warning)) return context.Fail(kLedgerNotWrittenMessage);
  if (!warning.empty()) context.err << warning << "\n";  // the bill stands: told, not refused
  return PrintReference(context, bill.GetPrimaryKey());
}

int LCmdBillPayment(LCliContext& context, LCliArgs& args) {
  if (args.TakeVerb() != "add") return context.Usage();
  std::string supplier, amountText, dateText, account, notes, method;
  bool supplierGiven = args.TakeOption("--supplier", supplier);
  bool amountGiven = args.TakeOption("--amount", amountText);
  bool dateGiven = args.TakeOption("--date", dateText);
  bool accountGiven = args.TakeOption("--account", account);
  args.TakeOption("--notes", notes);
  bool methodGiven = args.TakeOption("--method", method);
  std::vector<std::string> applied = args.TakeOptionAll("--apply");
  bool spread = args.TakeFlag("--auto");
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 0, 0)) return kExitUsage;
  if (!supplierGiven || !amountGiven || (spread && !applied.empty())) return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  long long amount = 0;
  if (!LCliParseAmount(*profile, amountText, amount)) return context.Usage(LCliBadAmountMessage(*profile, amountText));
  LDate date;
  if (!LCliParseDate(dateGiven, dateText, date)) return context.Fail(LInvalidDateMessage(dateText));
  std::string paying = accountGiven ? account : std::string(kDefaultPaymentAccount);
  if (LGetAccountNumberUsingDescription(*profile, paying).empty())
    return context.Fail("Le compte \"" + paying + "\" n'existe pas dans le plan comptable.");
  std::string message;
  if (!CanPost(context, *profile, date, message)) return context.Fail(message);

  LBillPaymentRequest request{supplier, amount, date.ToText(), accountGiven ? account : "", notes,
                              methodGiven ? method : "", {}, spread};
  for (const std::string& entry : applied) {
    std::size_t equals = entry.find('=');
    long long part = 0;
    if (equals == std::string::npos || !LCliParseAmount(*profile, entry.substr(equals + 1), part))
      return context.Usage("application attendue sous la forme FACTURE=MONTANT : " + entry);
    request.applications.push_back({entry.substr(0, equals), part});
  }
  std::string reference;
  if (!LBillPaymentCreate(*profile, request, reference, error)) return context.Fail(error);
  return PrintReference(context, reference);
}
