#include "app/cmd_documentsend.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "invoice/sales/documentsend.h"
#include "invoice/sales/salesbook.h"
#include "invoice/shared/documenthistory.h"
#include "invoice/shared/profile.h"
#include "llib/gen/jsontext.h"
#include "llib/gen/processterminal.h"
#include "llib/gen/system.h"

int LCmdDocumentSend(LCliContext& context, LCliArgs& args, const LSalesDocumentKind& kind) {
  LDocumentMail mail;
  args.TakeOption("--to", mail.to);
  args.TakeOption("--subject", mail.subject);
  args.TakeOption("--body", mail.body);
  bool facturX = args.TakeFlag("--facturx");
  bool plain = args.TakeFlag("--no-facturx");
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 2, 2)) return kExitUsage;
  if (facturX && plain) return context.Usage();
  std::optional<bool> asFacturX;
  if (facturX || plain) asFacturX = facturX;
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  LProcessTerminal progress("Envoi du courriel");
  LProcessResult result =
      LSendSalesDocument(progress, *profile, kind, words[1], mail, asFacturX, LGetPostingUserName());
  if (result == kProcessCancelled) return context.Fail("Envoi annulé.");
  if (result != kProcessFinished) return context.Fail(progress.GetError());
  LDocumentHistory history = LDocumentHistoryRead(*profile, kind.recordedList, words[1]);
  if (history.events.empty()) history = LDocumentHistoryRead(*profile, kind.draftsList, words[1]);
  std::string to = history.events.empty() ? std::string() : history.events.back().detail;
  if (context.json) context.out << LJsonDump(nlohmann::json({{"to", to}})) << "\n";
  else context.out << to << "\n";
  return kExitOk;
}

int LCmdDocumentLog(LCliContext& context, LCliArgs& args, const LSalesDocumentKind& kind) {
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words, 2, 2)) return kExitUsage;
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  LSalesDocument document;
  if (!LSalesDocumentOpen(*profile, kind, words[1], document)) return context.Fail(LSalesDocumentNotFoundMessage(words[1]));
  LDocumentHistory history =
      LDocumentHistoryRead(*profile, document.IsDraft() ? kind.draftsList : kind.recordedList, words[1]);
  if (context.json) {
    nlohmann::json events = nlohmann::json::array();
    for (const LDocumentHistoryEvent& event : history.events)
      events.push_back({{"time", event.time}, {"user", event.user}, {"action", event.action}, {"detail", event.detail}});
    context.out << LJsonDump(nlohmann::json({{"events", events}, {"emailState", history.emailState},
                                             {"emailError", history.emailError}}))
                << "\n";
    return kExitOk;
  }
  for (const LDocumentHistoryEvent& event : history.events)
    context.out << event.time << "\t" << event.user << "\t" << event.action << "\t" << event.detail << "\n";
  if (!history.emailState.empty()) context.out << "Courriel : " << history.emailState << "\n";
  return kExitOk;
}
