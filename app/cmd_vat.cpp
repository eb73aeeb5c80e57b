// kontavo vat ...: the UK VAT return through HMRC (configuration, authorization, obligations,
// submission, viewing). The texts of HMRC's side are the system's own English ones.
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "invoice/shared/mtdvat.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/vatfigures.h"
#include "invoice/shared/vatreturnsteps.h"
#include "invoice/shared/vatobligationsreport.h"
#include "invoice/shared/vatreturnreport.h"
#include "llib/gen/date.h"
#include "llib/gen/file.h"
#include "llib/gen/money.h"
#include "llib/gen/openbrowser.h"
#include "llib/gen/processterminal.h"
#include "llib/gen/reporttable.h"
#include "llib/gen/system.h"
#include "llib/gen/usersettings.h"
#include "llib/gen/jsontext.h"

extern char** environ;

namespace {

// The alert's caption above its message; a refusal before any call has no caption.
int FailAlert(LCliContext& context, const FKVatAlert& alert) {
  return context.Fail(alert.caption.empty() ? alert.message : alert.caption + "\n" + alert.message);
}

void PrintTable(LCliContext& context, LProfile& profile, const LReportTable& table) {
  if (context.json) {
    context.out << LReportWriteJson(table) << "\n";
    return;
  }
  LReportStyle style;
  style.currency = profile.GetCurrencyFormat();
  context.out << LReportWriteText(table, style);
}

int VatConfig(LCliContext& context, LCliArgs& args) {
  std::string vrn, api, caFile, timeout;
  bool setVrn = args.TakeOption("--vrn", vrn), setApi = args.TakeOption("--api", api);
  bool setCa = args.TakeOption("--ca-file", caFile), setTimeout = args.TakeOption("--timeout", timeout);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 0, 0)) return kExitUsage;
  LProfile* profile = context.Profile();
  if (!profile) return kExitFailed;

  if (setCa && !caFile.empty()) {
    std::string content;
    if (!LFile::ReadAll(caFile, content)) return context.Fail("Fichier de certificats illisible : " + caFile);
    std::error_code error;
    caFile = std::filesystem::absolute(caFile, error).string();
  }
  long seconds = setTimeout ? std::atol(timeout.c_str()) : 0;
  if (setTimeout && (seconds < 1 || seconds > 3599 || timeout.find_first_not_of("0123456789") != std::string::npos))
    return context.Usage("--timeout attend un nombre de secondes de 1 à 3599");

  std::string error;
  if (!FKVatConfigure(*profile, setVrn ? std::optional(vrn) : std::nullopt, setApi ? std::optional(api) : std::nullopt,
                      error))
    return context.Fail(error);
  if ((setCa && !LUserSettingSetString("HTTPS", "CAFile", caFile)) ||
      (setTimeout && !LUserSettingSetString("HTTPS", "TimeoutSeconds", std::to_string(seconds))))
    return context.Fail(kVatSettingNotStored);

  std::string vatNumber = FKVatRegistrationNumber(*profile);
  bool authorized = FKMTDforVATAuthorized();
  LHttpOptions http = LOAuthHttpOptions();
  if (context.json) {
    context.out << LJsonDump(nlohmann::json({{"vrn", vatNumber}, {"api", FKMTDApiBaseUrl()},
                                   {"caFile", http.caFile}, {"timeoutSeconds", http.timeoutMs / 1000},
                                   {"authorized", authorized}}))
                << "\n";
    return kExitOk;
  }
  context.out << "vrn=" << vatNumber << "\n"
              << "api=" << FKMTDApiBaseUrl() << "\n"
              << "ca-file=" << http.caFile << "\n"
              << "timeout=" << http.timeoutMs / 1000 << "\n"
              << "authorized=" << (authorized ? "yes" : "no") << "\n";
  return kExitOk;
}

int VatAuth(LCliContext& context, LCliArgs& args) {
  std::string code;
  bool hasCode = args.TakeOption("--code", code);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 0, 0)) return kExitUsage;

  LProcessTerminal progress("HMRC");
  FKMTDforVATAuthDlg dialog(progress);
  std::string url = dialog.AuthorizeUrl();
  if (!hasCode) {
    context.err << FKMTDforVATAuthDlg::kTitle << "\n";
    context.out << url << "\n" << std::flush;
    (void)LOpenInBrowser(url);  // the address is printed above either way
    if (LIsTerminal(STDIN_FILENO)) context.err << "Code d'autorisation : " << std::flush;
    std::getline(std::cin, code);
  }
  if (!dialog.Authorize(code)) return FailAlert(context, dialog.Alert());
  if (context.json) context.out << LJsonDump(nlohmann::json({{"authorized", true}})) << "\n";
  return kExitOk;
}

int VatObligations(LCliContext& context, LCliArgs& args) {
  std::string from, to;
  bool hasFrom = args.TakeOption("--from", from), hasTo = args.TakeOption("--to", to);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 0, 0)) return kExitUsage;
  if (hasFrom != hasTo) return context.Usage();
  LDate start, end;
  if (hasFrom && (!LDate::Parse(from, start) || !LDate::Parse(to, end)))
    return context.Usage("--from et --to attendent des dates AAAA-MM-JJ");
  LProfile* profile = context.Profile();
  if (!profile) return kExitFailed;

  LProcessTerminal progress("HMRC");
  FKMTDforVATDlg dialog(*profile, progress);
  if (hasFrom) dialog.SetObligationsRange(from, to);
  if (!dialog.RetrieveVatObligations(true)) return FailAlert(context, dialog.Alert());
  LReportTable table;
  LReportVatObligations(*profile, table);
  PrintTable(context, *profile, table);
  return kExitOk;
}

// The boxes "vat submit" is given, by their names in the JSON body: money in pounds and pence,
// the "ExVAT" boxes in whole pounds.
bool TakeFigures(LCliArgs& args, FKVatGivenFigures& given, std::string& problem) {
  const char* names[10] = {nullptr,
                           "--vatDueSales",
                           "--vatDueAcquisitions",
                           "--totalVatDue",
                           "--vatReclaimedCurrPeriod",
                           "--netVatDue",
                           "--totalValueSalesExVAT",
                           "--totalValuePurchasesExVAT",
                           "--totalValueGoodsSuppliedExVAT",
                           "--totalAcquisitionsExVAT"};
  for (int box = 1; box <= 9; ++box) {
    std::string text;
    if (!args.TakeOption(names[box], text)) continue;
    bool pounds = box >= 6;
    long long value = 0;
    if (!LParseAmount(text, pounds ? 0 : 2, value)) {
      problem = std::string(names[box]) + (pounds ? " : nombre entier de livres attendu" : " : montant non valide");
      return false;
    }
    given.box[box] = value;
  }
  return true;
}

int VatSubmit(LCliContext& context, LCliArgs& args) {
  LProfile* profile = context.Profile();
  if (!profile) return kExitFailed;
  FKVatGivenFigures given;
  std::string problem;
  if (!TakeFigures(args, given, problem)) return context.Usage(problem);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;
  LProcessTerminal progress("HMRC");
  FKVatAlert alert;
  std::string receipt;
  if (!FKVatSubmitReturn(*profile, progress, words[0], given, alert, &receipt)) return FailAlert(context, alert);

  nlohmann::json answer = nlohmann::json::parse(receipt, nullptr, false);
  if (!answer.is_object()) answer = nlohmann::json::object();
  if (context.json) {
    context.out << LJsonDump(nlohmann::json({{"message", alert.message}, {"receipt", answer}})) << "\n";
    return kExitOk;
  }
  context.out << alert.caption << "\n" << alert.message << "\n";
  for (const char* field : {"processingDate", "formBundleNumber", "paymentIndicator", "chargeRefNumber"}) {
    auto found = answer.find(field);
    if (found != answer.end() && found->is_string()) context.out << field << "=" << found->get<std::string>() << "\n";
  }
  return kExitOk;
}

int VatView(LCliContext& context, LCliArgs& args) {
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;
  LProfile* profile = context.Profile();
  if (!profile) return kExitFailed;
  std::string refusal;
  if (!FKVatChoosePeriod(*profile, words[0], true, refusal)) return context.Fail(refusal);

  LProcessTerminal progress("HMRC");
  FKMTDforVATDlg dialog(*profile, progress);
  FKVatReturns vatReturn;
  if (!dialog.ViewVatReturn(words[0], vatReturn)) return FailAlert(context, dialog.Alert());
  LReportTable table;
  FKReportVatReturn(vatReturn, table);
  PrintTable(context, *profile, table);
  return kExitOk;
}

}  // namespace

int LCmdVat(LCliContext& context, LCliArgs& args) {
  std::string verb = args.TakeVerb();
  if (verb == "config") return VatConfig(context, args);
  if (verb == "auth") return VatAuth(context, args);
  if (verb == "obligations") return VatObligations(context, args);
  if (verb == "submit") return VatSubmit(context, args);
  if (verb == "view") return VatView(context, args);
  return context.Usage();
}
