// kontavo report NAME [--from D] [--to D] [--date D] [--compare-from D --compare-to D]
//                     [--customer KEY]... [--consolidate B=FACTOR,...] [--account NUMBER]
//                     [--format text|csv|json|html]
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "app/reportcommand.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"

namespace {

bool TakeDate(LCliArgs& args, std::string_view option, LDate& date, std::string& error) {
  std::string text;
  if (!args.TakeOption(option, text)) return true;
  if (LDate::Parse(text, date)) return true;
  error = "date invalide pour " + std::string(option) + " : " + text;
  return false;
}

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
  request.customers = args.TakeOptionAll("--customer");
  args.TakeOption("--consolidate", request.consolidate);
  args.TakeOption("--account", request.account);
  if (!TakeDate(args, "--from", request.from, error) || !TakeDate(args, "--to", request.to, error) ||
      !TakeDate(args, "--date", request.date, error) || !TakeDate(args, "--compare-from", request.compareFrom, error) ||
      !TakeDate(args, "--compare-to", request.compareTo, error))
    return context.Usage(error);
  std::vector<std::string> words;
  if (!args.Finish(words, error)) return context.Usage(error);
  if (words.size() != 1) return context.Usage();
  if (format != "text" && format != "csv" && format != "json" && format != "html")
    return context.Usage("format inconnu : " + format);
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
  if (format == "json") context.out << LReportWriteJson(table) << "\n";
  else if (format == "csv") context.out << LReportWriteCsv(table, style);
  else if (format == "html") context.out << LReportWriteHtml(table, style);
  else context.out << LReportWriteText(table, style);
  return kExitOk;
}
