// kontavo payment add|show|list|delete: customer payments and refunds, applied to invoices
// (named, or spread over the unpaid ones in the order payments settle them), posted to the ledger
// and kept in the customer's balance.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "accounts/billpayments.h"
#include "accounts/transactiondate.h"
#include "app/cli.h"
#include "app/cliasker.h"
#include "app/cmd_print.h"
#include "app/commands.h"
#include "app/paymentinput.h"
#include "invoice/sales/paymentbook.h"
#include "invoice/shared/payment.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/datemessage.h"
#include "llib/gen/filestore.h"
#include "llib/gen/jsontext.h"

namespace {

int Add(LCliContext& context, LCliArgs& args) {
  LPaymentRequest request;
  std::string amountText, dateText;
  bool customerGiven = args.TakeOption("--customer", request.customer);
  bool amountGiven = args.TakeOption("--amount", amountText);
  bool dateGiven = args.TakeOption("--date", dateText);
  args.TakeOption("--account", request.depositAccount);
  request.refund = args.TakeFlag("--refund");
  request.automatic = args.TakeFlag("--auto");
  std::vector<std::string> applications = args.TakeOptionAll("--apply");
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  // "--apply 3=60 4=40": the words after the verb that name an invoice belong to --apply too.
  if (!applications.empty()) {
    for (std::size_t i = 1; i < words.size();) {
      if (words[i].find('=') != std::string::npos) {
        applications.push_back(words[i]);
        words.erase(words.begin() + static_cast<long>(i));
      } else {
        ++i;
      }
    }
  }
  if (!customerGiven || !amountGiven || words.size() != 1) return context.Usage();
  if (request.automatic == !applications.empty()) return context.Usage("donnez --apply ou --auto");
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;

  if (!LCliParseAmount(*profile, amountText, request.amount)) return context.Usage(LCliBadAmountMessage(*profile, amountText));
  if (!LCliParseApplications(*profile, applications, request.applications, error)) return context.Usage(error);
  LDate date;
  if (!LCliParseDate(dateGiven, dateText, date)) return context.Fail(LInvalidDateMessage(dateText));
  request.date = date.ToText();
  LCliAsker asker(context);
  if (!LCheckTransactionDate(*profile, asker, date, &error)) return context.Fail(error);

  std::string key;
  if (!LPaymentCreate(*profile, request, key, &error)) return context.Fail(error);
  if (context.json) context.out << LJsonDump(nlohmann::json({{"key", key}})) << "\n";
  else context.out << key << "\n";
  return kExitOk;
}

nlohmann::ordered_json PaymentJson(LProfile& profile, LPayment& payment) {
  nlohmann::ordered_json json;
  json["key"] = payment.GetPrimaryKey();
  nlohmann::ordered_json fields = nlohmann::ordered_json::object();
  payment.UpdateInvoiceAmounts(profile);
  for (const auto& field : payment.Fields())
    if (!field.deleted) fields[field.name] = field.text;
  json["fields"] = fields;
  nlohmann::ordered_json applications = nlohmann::ordered_json::array();
  for (const auto& entry : LReadAppliedAmounts(payment))
    applications.push_back({{"invoice", entry.invoice}, {"amount", entry.amount}});
  json["applications"] = applications;
  json["amount"] = payment.GetAmount();
  json["refund"] = payment.IsRefund();
  json["unapplied"] = payment.GetUnappliedAmount(profile);
  return json;
}

void PrintPayment(LProfile& profile, LPayment& payment, std::ostream& out) {
  auto money = [&](long long amount) { return LCliFormatAmount(profile, amount); };
  out << (payment.IsRefund() ? "Remboursement " : "Paiement ") << payment.GetPrimaryKey() << "\n";
  out << "Client : " << payment.GetCustomer() << "\n";
  out << "Date : " << payment.GetDate() << "\n";
  out << "Montant : " << money(payment.GetAmount()) << "\n";
  out << "Compte : " << payment.GetString("DepositAccount", kDefaultPaymentAccount) << "\n";
  if (payment.TestFieldExists("JournalTxnRef")) out << "Référence : " << payment.GetString("JournalTxnRef") << "\n";
  payment.UpdateInvoiceAmounts(profile);
  for (const auto& entry : LReadAppliedAmounts(payment))
    out << "Facture " << entry.invoice << " : " << money(entry.amount) << "\n";
  out << "Non imputé : " << money(payment.GetUnappliedAmount(profile)) << "\n";
}

int Show(LCliContext& context, LProfile& profile, const std::string& key) {
  LPayment payment;
  std::string error;
  if (!LPaymentOpen(profile, key, payment, &error)) return context.Fail(error);
  if (context.json) context.out << LJsonDump(PaymentJson(profile, payment)) << "\n";
  else PrintPayment(profile, payment, context.out);
  return kExitOk;
}

int List(LCliContext& context, LProfile& profile) {
  const LFileStoreListBase& list = profile.MainList(kPaymentsList);
  std::vector<std::string> keys;
  LPayment payment;
  for (LFileStoreIteratorBase it(list, payment); payment.IsAttached(); it.Next(payment))
    keys.push_back(payment.GetPrimaryKey());
  std::sort(keys.begin(), keys.end(), [](const std::string& a, const std::string& b) { return LDocumentKeyLess(a, b); });
  nlohmann::ordered_json all = nlohmann::ordered_json::array();
  for (const auto& key : keys) {
    if (!list.Open(payment, key)) continue;
    if (context.json) {
      all.push_back(PaymentJson(profile, payment));
      continue;
    }
    context.out << key << "\t" << payment.GetDate() << "\t" << payment.GetCustomer() << "\t"
                << LCliFormatAmount(profile, payment.GetAmount());
    if (payment.IsRefund()) context.out << "\tremboursement";
    context.out << "\n";
  }
  if (context.json) context.out << LJsonDump(all) << "\n";
  return kExitOk;
}

}  // namespace

int LCmdPayment(LCliContext& context, LCliArgs& args) {
  std::string verb = LCliPeekVerb(args, {"--customer", "--amount", "--date", "--account", "--apply", "--out"},
                                  {"--refund", "--auto"});
  if (verb == "add") return Add(context, args);
  if (verb == "pdf") return LCmdPaymentPdf(context, args);
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  bool known = (verb == "list" && words.size() == 1) || ((verb == "show" || verb == "delete") && words.size() == 2);
  if (!known) return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  if (verb == "list") return List(context, *profile);
  if (verb == "show") return Show(context, *profile, words[1]);
  if (!LPaymentDelete(*profile, words[1], &error)) return context.Fail(error);
  return kExitOk;
}
