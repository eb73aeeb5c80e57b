#include "invoice/sales/webrecurring.h"

#include <ctime>

#include "invoice/sales/recurringrecord.h"
#include "invoice/sales/salesbook.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/recurring.h"
#include "llib/gen/date.h"
#include "llib/gen/money.h"
#include "llib/gen/textnum.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/weblist.h"
#include "llib/web/weblogon.h"

namespace {

std::string Route(LSalesDocumentType type, std::string_view prefix, std::string_view suffix) {
  return std::string(prefix) + std::string(LSalesDocumentKindOf(type).command) + std::string(suffix);
}

// Back to the schedule page with what was done, or the refusal.
void BackToSchedule(LWebletForm& form, LSalesDocumentType type, const std::string& message) {
  WLRedirect(form, Route(type, "", "schedule") + LWebFormat("?msg=%U", message.c_str()));
}

// The checks of an action route: true when it may go ahead; otherwise it has answered.
bool ActionAllowed(LWebletForm& form, LSalesDocumentType type) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return false;
  if (WLMayChangeData(form)) return true;
  BackToSchedule(form, type, kWebViewerRefusal);
  return false;
}

}  // namespace

const char* LWebRecurIntervalText(int interval) {
  static const char* const kTexts[] = {"Toutes les semaines", "Toutes les deux semaines", "Tous les mois",
                                       "Tous les deux mois",  "Tous les trimestres",      "Tous les six mois",
                                       "Tous les ans",        "Tous les deux ans"};
  return interval >= 0 && interval < kRecurIntervalNever ? kTexts[interval] : "Jamais";
}

LWebRecurringPage::LWebRecurringPage(LWebletForm& form, LSalesDocumentType type)
    : LWebPageMainEx(form, std::string(LSalesDocumentKindOf(type).command) + "list",
                     type == LSalesDocumentType::kOrder ? "Commandes récurrentes" : "Factures récurrentes"),
      type_(type) {}

void LWebRecurringPage::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(type_);
  std::string_view list = LRecurringListOf(kind);
  const bool mayChange = WLMayChangeData(form_);
  std::string message = form_.GetParam("msg");
  if (!message.empty()) form_.Write(LWebFormat("<p class=errormessage>%H</p>", message.c_str()));

  // A document to make recurring: its first date and period.
  std::string key = form_.GetParam("id");
  if (!key.empty() && mayChange) {
    LSalesDocument document;
    if (!LSalesDocumentOpen(profile, kind, key, document)) {
      form_.Write(LWebFormat("<p class=errormessage>%H « %H » introuvable.</p>", std::string(kind.title).c_str(), key.c_str()));
    } else {
      document.DetachWithoutSave();
      std::string options;
      for (int interval = 0; interval < kRecurIntervalNever; ++interval)
        options += LWebFormat("<option value=%d%s>%H</option>", interval,
                              interval == kRecurIntervalDefault ? " selected" : "", LWebRecurIntervalText(interval));
      form_.Write(LWebFormat("<form method=post action='%s' class=listfilters><input type=hidden name=id value='%H'>"
                             "<b>%H %H</b> devient un modèle : <label>première date <input type=date name=start "
                             "value='%H' required></label> <label>périodicité <select name=interval>%s</select>"
                             "</label> <input type=submit class=button value='Créer le modèle'></form>",
                             Route(type_, "", "schedulesave").c_str(), key.c_str(), std::string(kind.title).c_str(), key.c_str(),
                             LDate::Today().ToText().c_str(), options.c_str()));
    }
  }

  LHtmlList table(form_, 3, true);
  table.AddColumn("Modèle", 10, kListAlignLeft, true);
  table.AddColumn("Client", 30, kListAlignLeft, true);
  table.AddColumn("Périodicité", 20, kListAlignLeft, true);
  table.AddColumn("Prochaine date", 20, kListAlignLeft, true);
  table.AddColumn("Total", 20, kListAlignRight, true);
  int nDue = 0;
  time_t now = ::time(nullptr);
  for (const std::string& templateKey : LRecurringTemplateKeys(profile, list)) {
    LSalesDocument schedule;
    if (!profile.MainList(list).Open(schedule, templateKey)) continue;
    std::string next = LRecurringGetDueDateText(schedule);
    if (LRecurringGetDueDate(schedule) <= now) ++nDue;
    auto row = std::make_unique<LHtmlListRow>();
    row->AddCell(LHtmlListRow::RecordKeyOrderKey(templateKey), LHtmlEscape(templateKey));
    row->AddCellText(schedule.GetCustomer());
    row->AddCellText(LWebRecurIntervalText(schedule.GetInt("RecurInterval", kRecurIntervalDefault)));
    row->AddCell(next.empty() ? "9" : next, next.empty() ? std::string("jamais") : LHtmlEscape(next));
    row->AddCell(LHtmlListRow::Int64OrderKey(schedule.GetTotal()),
                 LHtmlEscape(LFormatMoney(schedule.GetTotal(), profile.GetCurrencyFormat())));
    schedule.DetachWithoutSave();
    table.AddRow(std::move(row));
  }
  UseListScript();
  table.Write(form_, 100);
  std::string summary = nDue == 0 ? std::string("Aucun modèle n'est échu.") : std::to_string(nDue) + " modèle(s) échu(s).";
  form_.Write(LWebFormat("<p class=listsummary>%H", summary.c_str()));
  if (nDue > 0 && mayChange)
    form_.Write(LWebFormat(" <form method=post action='%s' style='display:inline'><input type=submit class=button "
                           "value='Créer les documents échus'></form>",
                           Route(type_, "runrecurring", "").c_str()));
  form_.Write("</p>");
}

void WLRecurringScheduleSave(LWebletForm& form, LSalesDocumentType type) {
  if (!ActionAllowed(form, type)) return;
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(type);
  std::string key = form.GetParam("id");
  std::string start = form.GetParam("start");
  std::string interval = form.GetParam("interval", "2");
  std::string error, newKey;
  LProfile profile(WLSessionBusinessFolder(form));
  if (interval.empty() || interval.find_first_not_of("0123456789") != std::string::npos || interval.size() > 2)
    error = "Périodicité invalide : " + interval + ".";
  else if (LRecurringAddTemplate(profile, kind, key, start, LTextToInt(interval), newKey, error))
    error = "Modèle " + newKey + " créé.";
  BackToSchedule(form, type, error);
}

void WLRecurringRun(LWebletForm& form, LSalesDocumentType type) {
  if (!ActionAllowed(form, type)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  std::vector<LRecurringMade> made;
  std::string error;
  bool done = LRecurringRun(profile, false, ::time(nullptr), made, error, type);
  std::string message;
  for (const LRecurringMade& document : made) message += (message.empty() ? "" : ", ") + document.key;
  message = made.empty() ? std::string("Aucun document créé.") : std::to_string(made.size()) + " document(s) créé(s) : " + message + ".";
  if (!done) message += " " + error;
  BackToSchedule(form, type, message);
}
