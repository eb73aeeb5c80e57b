#include "app/cmd_print.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "invoice/sales/documentprint.h"
#include "invoice/shared/customerstatement.h"
#include "invoice/shared/profile.h"
#include "llib/gen/jsontext.h"
#include "llib/gen/system.h"

namespace {

// The words "pdf KEY" and --out; false (usage already reported in exit) otherwise.
bool TakePdfWords(LCliContext& context, LCliArgs& args, std::string& out, std::string& key, int& exit) {
  args.TakeOption("--out", out);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 2, 2)) return exit = kExitUsage, false;
  if (words[0] != "pdf") return exit = context.Usage(), false;
  key = words[1];
  return true;
}

}  // namespace

int LCmdWritePrintedForm(LCliContext& context, std::string out, const LPrintedForm& form) {
  if (out.empty()) out = form.fileName;
  std::string error;
  if (!LWritePrintedForm(form, out, &error)) return context.Fail(error);
  if (!form.warning.empty()) context.err << form.warning << "\n";
  if (context.json) context.out << LJsonDump(nlohmann::json({{"path", out}})) << "\n";
  else context.out << out << "\n";
  return kExitOk;
}

int LCmdDocumentPdf(LCliContext& context, LCliArgs& args, const LSalesDocumentKind& kind) {
  std::string profileName, formName;
  bool facturX = args.TakeFlag("--facturx");
  bool formGiven = args.TakeOption("--form", formName);
  bool hasProfile = args.TakeOption("--profile", profileName);
  std::string out, key;
  int exit = kExitOk;
  if (!TakePdfWords(context, args, out, key, exit)) return exit;
  std::optional<LFacturXProfile> facturXProfile;
  if (facturX) {
    facturXProfile = LFacturXProfile::kEn16931;
    if (hasProfile && !LFacturXProfileFromName(profileName, *facturXProfile))
      return context.Usage("--profile : en16931 ou basic");
  } else if (hasProfile) {
    return context.Usage("--profile va avec --facturx");
  }
  if (formGiven && formName.empty()) return context.Usage("--form attend le nom d'un formulaire");
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  LPrintedForm form;
  std::string error;
  if (!LPrintSalesDocument(*profile, kind, key, facturXProfile, formName, LGetPostingUserName(), form, &error))
    return context.Fail(error);
  return LCmdWritePrintedForm(context, out, form);
}

int LCmdPaymentPdf(LCliContext& context, LCliArgs& args) {
  std::string out, key;
  int exit = kExitOk;
  if (!TakePdfWords(context, args, out, key, exit)) return exit;
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  LPrintedForm form;
  std::string error;
  if (!LPrintReceipt(*profile, key, LGetPostingUserName(), form, &error)) return context.Fail(error);
  return LCmdWritePrintedForm(context, out, form);
}

namespace {

// kontavo packingslip pdf KEY [--order] [--out FILE] / kontavo shiplabel pdf KEY [--order] [--out FILE]:
// KEY is an invoice, or a sales order with --order.
int PrintParcelForm(LCliContext& context, LCliArgs& args, bool label) {
  bool order = args.TakeFlag("--order");
  std::string out, key;
  int exit = kExitOk;
  if (!TakePdfWords(context, args, out, key, exit)) return exit;
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  const LSalesDocumentKind& kind =
      LSalesDocumentKindOf(order ? LSalesDocumentType::kOrder : LSalesDocumentType::kInvoice);
  LPrintedForm form;
  std::string error;
  if (!LPrintPackingSlip(*profile, kind, key, label, LGetPostingUserName(), form, &error)) return context.Fail(error);
  return LCmdWritePrintedForm(context, out, form);
}

}  // namespace

int LCmdPackingSlip(LCliContext& context, LCliArgs& args) { return PrintParcelForm(context, args, false); }
int LCmdShipLabel(LCliContext& context, LCliArgs& args) { return PrintParcelForm(context, args, true); }

// kontavo statement pdf CUSTOMER [--date D] [--from D] [--out FILE]: the statement at --date
// (today) from --from (the first day of --date's month).
int LCmdStatement(LCliContext& context, LCliArgs& args) {
  LDate date = LDate::Today(), from;
  std::string error;
  if (!LCliTakeDate(args, "--date", date, error) || !LCliTakeDate(args, "--from", from, error)) return context.Usage(error);
  std::string out, customer;
  int exit = kExitOk;
  if (!TakePdfWords(context, args, out, customer, exit)) return exit;
  if (!from.IsValid()) from = LStatementDefaultStart(date);
  if (date.DayNumber() < from.DayNumber()) return context.Usage("--from après --date");
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  LPrintedForm form;
  if (!LPrintStatement(*profile, customer, from, date, form, &error)) return context.Fail(error);
  return LCmdWritePrintedForm(context, out, form);
}
