// kontavo invoice|quote|order|creditnote|porder new|show|list|edit|record|delete: the sales-side
// documents. Every kind takes the same words; the kind decides the lists and whether recording
// posts to the ledger and moves the customer's balance (invoices and credit notes).
#include <algorithm>
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/cmd_convert.h"
#include "invoice/sales/porderconversion.h"
#include "app/cmd_documentsend.h"
#include "app/cmd_print.h"
#include "app/commands.h"
#include "invoice/shared/documentinput.h"
#include "app/documentview.h"
#include "invoice/shared/profile.h"
#include "invoice/sales/salesbook.h"
#include "invoice/sales/salesstock.h"
#include "llib/gen/date.h"
#include "llib/gen/datemessage.h"
#include "llib/gen/filestore.h"
#include "llib/gen/jsontext.h"

namespace {

// Takes every document option from args (the caller finishes args afterwards).
void TakeDocumentInput(LCliArgs& args, LDocumentInput& input) {
  args.TakeOption("--file", input.file);
  args.TakeOption("--customer", input.customer);
  args.TakeOption("--date", input.date);
  args.TakeOption("--terms", input.terms);
  input.lines = args.TakeOptionAll("--line");
  args.TakeOption("--shipping", input.shipping);
  args.TakeOption("--shipping-tax", input.shippingTax);
  input.untaxed = args.TakeFlag("--untaxed");
  input.hasNotes = args.TakeOption("--notes", input.notes);
  input.hasSalesPerson = args.TakeOption("--salesperson", input.salesPerson);
}

int New(LCliContext& context, const LSalesDocumentKind& kind, LCliArgs& args) {
  bool draft = args.TakeFlag("--draft");
  std::string number;
  args.TakeOption("--number", number);
  LDocumentInput input;
  TakeDocumentInput(args, input);
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;
  if (input.file.empty() && input.customer.empty()) return context.Usage("donnez --file ou --customer");
  if (!input.file.empty() && input.HasFieldOptions()) return context.Usage("--file exclut les autres options");
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;

  LSalesDocument content;
  if (!LApplyDocumentInput(*profile, kind, input, true, content, error)) return context.Fail(error);
  std::string key;
  if (!LSalesDocumentCreate(*profile, kind, content, draft, number, key, &error)) return context.Fail(error);
  if (context.json) context.out << LJsonDump(nlohmann::json({{"key", key}})) << "\n";
  else context.out << key << "\n";
  return kExitOk;
}

int Show(LCliContext& context, const LSalesDocumentKind& kind, const std::string& key) {
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  LSalesDocument document;
  if (!LSalesDocumentOpen(*profile, kind, key, document)) return context.Fail(LSalesDocumentNotFoundMessage(key));
  if (context.json) context.out << LJsonDump(LDocumentToJson(*profile, kind, document)) << "\n";
  else LPrintDocument(*profile, kind, document, context.out);
  return kExitOk;
}

int List(LCliContext& context, const LSalesDocumentKind& kind, LCliArgs& args) {
  std::string from, to, customer, salesPerson;
  args.TakeOption("--from", from);
  args.TakeOption("--to", to);
  args.TakeOption("--customer", customer);
  bool bySalesPerson = args.TakeOption("--salesperson", salesPerson);
  bool drafts = args.TakeFlag("--drafts");
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;

  const LFileStoreListBase& list = profile->MainList(drafts ? kind.draftsList : kind.recordedList);
  std::vector<std::string> keys;
  LSalesDocument document;
  for (LFileStoreIteratorBase it(list, document); document.IsAttached(); it.Next(document)) {
    std::string date = document.GetDate();
    if ((!from.empty() && date < from) || (!to.empty() && date > to)) continue;
    if (!customer.empty() && document.GetCustomer() != customer) continue;
    if (bySalesPerson && document.GetString("SalesPerson") != salesPerson) continue;
    keys.push_back(document.GetPrimaryKey());
  }
  std::sort(keys.begin(), keys.end(), LDocumentKeyLess);
  nlohmann::ordered_json all = nlohmann::ordered_json::array();
  for (const auto& key : keys) {
    LSalesDocument one;
    if (!list.Open(one, key)) continue;
    if (context.json) all.push_back(LDocumentToJson(*profile, kind, one));
    else LPrintDocumentSummary(*profile, kind, one, context.out);
  }
  if (context.json) context.out << LJsonDump(all) << "\n";
  return kExitOk;
}

int Edit(LCliContext& context, const LSalesDocumentKind& kind, LCliArgs& args) {
  LDocumentInput input;
  TakeDocumentInput(args, input);
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 2, 2)) return kExitUsage;
  if (!input.file.empty() && input.HasFieldOptions()) return context.Usage("--file exclut les autres options");
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  const std::string& key = words[1];

  // The options are read once on a copy so that a bad value refuses the edit before anything
  // is written; the edit then applies them again for real.
  LSalesDocument trial;
  if (!LSalesDocumentOpen(*profile, kind, key, trial)) return context.Fail(LSalesDocumentNotFoundMessage(key));
  LSalesDocument copy;
  copy.CopyRecord(trial);
  trial.Invalidate();
  if (!LApplyDocumentInput(*profile, kind, input, false, copy, error)) return context.Fail(error);
  auto change = [&](LSalesDocument& document) {
    std::string ignored;
    (void)LApplyDocumentInput(*profile, kind, input, false, document, ignored);
  };
  if (!LSalesDocumentEdit(*profile, kind, key, change, &error)) return context.Fail(error);
  return kExitOk;
}

int Record(LCliContext& context, const LSalesDocumentKind& kind, const std::string& key) {
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  std::string newKey, error;
  if (!LSalesDocumentRecordDraft(*profile, kind, key, newKey, &error)) return context.Fail(error);
  if (context.json) context.out << LJsonDump(nlohmann::json({{"key", newKey}})) << "\n";
  else context.out << newKey << "\n";
  return kExitOk;
}

int Delete(LCliContext& context, const LSalesDocumentKind& kind, const std::string& key) {
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  std::string error;
  if (!LSalesDocumentDelete(*profile, kind, key, &error)) return context.Fail(error);
  return kExitOk;
}

// porder receive KEY [--date D] and porder bill KEY [--date D]: the order's goods come into stock
// on D (today by default), or the order becomes a bill dated D whose reference is printed.
int ReceiveOrBill(LCliContext& context, LCliArgs& args, bool bill) {
  std::string dateText, error, reference;
  bool hasDate = args.TakeOption("--date", dateText);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 2, 2)) return kExitUsage;
  LDate date = LDate::Today();
  if (hasDate && !LDate::Parse(dateText, date)) return context.Fail(LInvalidDateMessage(dateText));
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  if (!bill) return LPOrderReceive(*profile, words[1], date.ToText(), &error) ? kExitOk : context.Fail(error);
  if (!LPOrderConvertToBill(*profile, words[1], date.ToText(), reference, &error)) return context.Fail(error);
  if (context.json) context.out << LJsonDump(nlohmann::json({{"reference", reference}})) << "\n";
  else context.out << reference << "\n";
  return kExitOk;
}

int RunDocumentCommand(LCliContext& context, LCliArgs& args, LSalesDocumentType type) {
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(type);
  // The verb decides which options exist.
  std::string verb = LCliPeekVerb(args,
                                  {"--number", "--file", "--customer", "--date", "--terms", "--line", "--shipping",
                                   "--shipping-tax", "--notes", "--salesperson", "--from", "--to", "--out", "--profile",
                                   "--subject", "--body"},
                                  {"--draft", "--untaxed", "--drafts", "--facturx", "--no-facturx"});
  if (verb == "new") return New(context, kind, args);
  if (verb == "list") return List(context, kind, args);
  if (verb == "edit") return Edit(context, kind, args);
  if (verb == "apply" && type == LSalesDocumentType::kCreditNote) return LCmdCreditNoteApply(context, args);
  if (verb == "convert") return LCmdDocumentConvert(context, args, kind);
  if (verb == "pdf") return LCmdDocumentPdf(context, args, kind);
  if (verb == "send") return LCmdDocumentSend(context, args, kind);
  if (verb == "log") return LCmdDocumentLog(context, args, kind);
  if ((verb == "receive" || verb == "bill") && type == LSalesDocumentType::kPOrder)
    return ReceiveOrBill(context, args, verb == "bill");
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 2, 2)) return kExitUsage;
  if (verb == "show") return Show(context, kind, words[1]);
  if (verb == "record") return Record(context, kind, words[1]);
  if (verb == "delete") return Delete(context, kind, words[1]);
  return context.Usage();
}

}  // namespace

int LCmdInvoice(LCliContext& context, LCliArgs& args) {
  return RunDocumentCommand(context, args, LSalesDocumentType::kInvoice);
}
int LCmdQuote(LCliContext& context, LCliArgs& args) {
  return RunDocumentCommand(context, args, LSalesDocumentType::kQuote);
}
int LCmdOrder(LCliContext& context, LCliArgs& args) {
  return RunDocumentCommand(context, args, LSalesDocumentType::kOrder);
}
int LCmdCreditNote(LCliContext& context, LCliArgs& args) {
  return RunDocumentCommand(context, args, LSalesDocumentType::kCreditNote);
}
int LCmdPOrder(LCliContext& context, LCliArgs& args) {
  return RunDocumentCommand(context, args, LSalesDocumentType::kPOrder);
}
