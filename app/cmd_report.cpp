// kontavo report NAME [--from D] [--to D] [--date D] [--compare-from D --compare-to D]
//                     [--customer KEY]... [--consolidate B=FACTOR,...] [--account NUMBER]
//                     [--format text|csv|json|html|pdf] [--out FILE]
#include <ostream>

#include "app/cli.h"
#include "app/cmd_print.h"
#include "app/commands.h"
#include "app/reportcommand.h"
#include "invoice/sales/documentprint.h"
#include "invoice/shared/formparts.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"

namespace {

const LReportEntry* FindReport(std::string_view name) {
  for (const LReportEntry* entry = LReportEntries(); entry->build != nullptr; ++entry)
    if (entry->name == name) return entry;
  return nullptr;
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
  args.TakeOption("--consolidate", request.consolidate);
  args.TakeOption("--account", request.account);
  if (!LCliTakeDate(args, "--from", request.from, error) || !LCliTakeDate(args, "--to", request.to, error) ||
      !LCliTakeDate(args, "--date", request.date, error) || !LCliTakeDate(args, "--compare-from", request.compareFrom, error) ||
      !LCliTakeDate(args, "--compare-to", request.compareTo, error))
    return context.Usage(error);
  std::vector<std::string> words;
  if (!args.Finish(words, error)) return context.Usage(error);
  if (words.size() != 1) return context.Usage();
  if (format != "text" && format != "csv" && format != "json" && format != "html" && format != "pdf")
    return context.Usage("format inconnu : " + format);
  if (!out.empty() && format != "pdf") return context.Usage("--out va avec --format pdf");
  const LReportEntry* entry = FindReport(words[0]);
  if (entry == nullptr) return context.Usage("rapport inconnu : " + words[0]);
  if (!request.date.IsValid()) request.date = LDate::Today();

  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  LReportTable table;
  if (!entry->build(context, *profile, request, table, error)) return context.Fail(error);

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
