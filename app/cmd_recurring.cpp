// kontavo recurring add|list|run: recurring invoices and orders. A template is made from an
// existing invoice or order; a run records one occurrence of each template that is due (with
// --all, round after round until none is due) and prints the new documents' keys, one a line.
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "invoice/sales/recurringrecord.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/money.h"
#include "llib/gen/textnum.h"
#include "llib/gen/jsontext.h"

namespace {

struct TemplateList {
  LSalesDocumentType type;
  std::string_view list;
};
constexpr TemplateList kTemplateLists[] = {{LSalesDocumentType::kInvoice, kRecurringInvoicesList},
                                           {LSalesDocumentType::kOrder, kRecurringOrdersList}};

bool IsCode(const std::string& text) {
  return !text.empty() && text.size() < 6 && text.find_first_not_of("0123456789") == std::string::npos;
}

int Add(LCliContext& context, LCliArgs& args) {
  std::string invoice, order, start, interval;
  bool fromInvoice = args.TakeOption("--invoice", invoice);
  bool fromOrder = args.TakeOption("--order", order);
  bool hasStart = args.TakeOption("--start", start);
  bool hasInterval = args.TakeOption("--interval", interval);
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 0, 0)) return kExitUsage;
  if (fromInvoice == fromOrder || !hasStart || !hasInterval) return context.Usage();
  if (!IsCode(interval)) return context.Fail("Périodicité invalide : " + interval + ".");
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  const LSalesDocumentKind& kind =
      LSalesDocumentKindOf(fromInvoice ? LSalesDocumentType::kInvoice : LSalesDocumentType::kOrder);
  std::string key;
  if (!LRecurringAddTemplate(*profile, kind, fromInvoice ? invoice : order, start, LTextToInt(interval), key, error))
    return context.Fail(error);
  if (context.json) context.out << LJsonDump(nlohmann::json({{"key", key}})) << "\n";
  else context.out << key << "\n";
  return kExitOk;
}

int List(LCliContext& context, LProfile& profile) {
  nlohmann::ordered_json all = nlohmann::ordered_json::array();
  for (const TemplateList& source : kTemplateLists) {
    const LSalesDocumentKind& kind = LSalesDocumentKindOf(source.type);
    const LFileStoreListBase& list = profile.MainList(source.list);
    LSalesDocument schedule;
    for (const std::string& key : LRecurringTemplateKeys(profile, source.list)) {
      if (!list.Open(schedule, key)) continue;
      std::string next = LRecurringGetDueDateText(schedule);
      int interval = schedule.GetInt("RecurInterval", kRecurIntervalDefault);
      if (context.json) {
        all.push_back({{"kind", kind.command},
                       {"key", key},
                       {"customer", schedule.GetCustomer()},
                       {"start", schedule.GetString("RecurStart")},
                       {"last", schedule.GetString("RecurLast")},
                       {"interval", interval},
                       {"nextDue", next.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(next)},
                       {"total", schedule.GetTotal()}});
      } else {
        context.out << kind.command << "\t" << key << "\t" << schedule.GetCustomer() << "\t"
                    << LFormatAmountPlain(schedule.GetTotal(), profile.GetCurrencyDigits()) << "\t" << interval
                    << "\t" << (next.empty() ? "jamais" : next) << "\n";
      }
      schedule.DetachWithoutSave();
    }
  }
  if (context.json) context.out << LJsonDump(all) << "\n";
  return kExitOk;
}

int Run(LCliContext& context, LProfile& profile, bool all) {
  std::vector<LRecurringMade> made;
  std::string error;
  bool done = LRecurringRun(profile, all, ::time(nullptr), made, error);
  nlohmann::ordered_json json = nlohmann::ordered_json::array();
  for (const LRecurringMade& one : made) {
    if (context.json)
      json.push_back({{"kind", LSalesDocumentKindOf(one.type).command}, {"key", one.key}, {"date", one.date}});
    else context.out << one.key << "\n";
  }
  if (context.json) context.out << LJsonDump(json) << "\n";
  return done ? kExitOk : context.Fail(error);
}

}  // namespace

int LCmdRecurring(LCliContext& context, LCliArgs& args) {
  std::string verb = args.TakeVerb();
  if (verb == "add") return Add(context, args);
  bool all = verb == "run" && args.TakeFlag("--all");
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 0, 0)) return kExitUsage;
  if (verb != "list" && verb != "run") return context.Usage();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  return verb == "list" ? List(context, *profile) : Run(context, *profile, all);
}
