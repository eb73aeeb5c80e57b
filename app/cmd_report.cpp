// kontavo report NAME [SUBJECT] [--from D] [--to D] [--date D] [--compare-from D --compare-to D]
//                     [--customer KEY]... [--consolidate B=FACTOR,...] [--account NUMBER]
//                     [--format text|csv|json|html|pdf] [--out FILE]
// The report is built by the catalogue (accounts/reportcatalog.h), as the web report pages do;
// the command parses the options and writes the table in the asked format.
#include <ostream>

#include "accounts/reportcatalog.h"
#include "app/cli.h"
#include "app/cmd_print.h"
#include "app/commands.h"
#include "invoice/sales/documentprint.h"
#include "invoice/shared/formparts.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"

namespace {

// --consolidate B=FACTOR,...: businesses as --business names them, factors as decimals.
bool Businesses(std::string_view list, std::vector<LProfilesAndRates>& out, std::string& error) {
  std::string_view rest = list;
  while (!rest.empty()) {
    std::size_t comma = rest.find(',');
    std::string_view part = rest.substr(0, comma);
    rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
    std::size_t equals = part.rfind('=');
    LProfilesAndRates business;
    if (equals == std::string_view::npos || !LReportParseFactor(part.substr(equals + 1), business.factor) ||
        !LCliResolveBusiness(part.substr(0, equals), business.databaseName)) {
      error = "Entreprise ou taux de conversion invalide : " + std::string(part);
      return false;
    }
    out.push_back(business);
  }
  return true;
}

}  // namespace

int LCmdReport(LCliContext& context, LCliArgs& args) {
  LReportRequest request;
  std::string error;
  std::string format = context.json ? "json" : "text";
  args.TakeOption("--format", format);
  std::string out;
  args.TakeOption("--out", out);
  request.customers = args.TakeOptionAll("--customer");
  std::string consolidate;
  args.TakeOption("--consolidate", consolidate);
  args.TakeOption("--account", request.account);
  if (!LCliTakeDate(args, "--from", request.from, error) || !LCliTakeDate(args, "--to", request.to, error) ||
      !LCliTakeDate(args, "--date", request.date, error) || !LCliTakeDate(args, "--compare-from", request.compareFrom, error) ||
      !LCliTakeDate(args, "--compare-to", request.compareTo, error))
    return context.Usage(error);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 1, 2)) return kExitUsage;
  if (format != "text" && format != "csv" && format != "json" && format != "html" && format != "pdf")
    return context.Usage("format inconnu : " + format);
  if (!out.empty() && format != "pdf") return context.Usage("--out va avec --format pdf");
  const LReportEntry* entry = LReportFind(words[0]);
  if (entry == nullptr) return context.Usage("rapport inconnu : " + words[0]);
  if (words.size() == 2) {
    if ((entry->asks & kReportAsksSubject) == 0) return context.Usage();
    request.subject = words[1];
  }
  if (!request.date.IsValid()) request.date = LDate::Today();

  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  if (!Businesses(consolidate, request.businesses, error)) return context.Fail(error);
  LReportTable table;
  if (!entry->build(*profile, request, table, error)) return context.Fail(error);

  LOptions options;
  options.OpenFrom(*profile);
  LReportStyle style{profile->GetCurrencyFormat(), options.GetBool("UseParenthesesForNegative", false)};
  if (format == "pdf") {
    LPrintedForm form;
    if (!LFormReportPdf(*profile, table, style, form.pdf, &error)) return context.Fail(error);
    form.fileName = "Rapport-" + words[0] + ".pdf";
    return LCmdWritePrintedForm(context, out, form);
  }
  if (format == "json") context.out << LReportWriteJson(table) << "\n";
  else if (format == "csv") context.out << LReportWriteCsv(table, style);
  else if (format == "html") context.out << LReportWriteHtml(table, style);
  else context.out << LReportWriteText(table, style);
  return kExitOk;
}
