// The journal on the web: the journal-entry dialog ("journalentry", its buttons on "rectranj"),
// the journal view ("viewjournal" with its refilters and period dialog), the delete, the CSV
// export and the report.
#include <algorithm>
#include <cmath>
#include <memory>

#include "accounts/accounts.h"
#include "accounts/journalentry.h"
#include "accounts/journalview.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "accounts/ledgerexport.h"
#include "accounts/txntemplates.h"
#include "accounts/webbank.h"
#include "accounts/webledger.h"
#include "accounts/webpagemainex.h"
#include "accounts/webquestion.h"
#include "invoice/shared/weblistperiod.h"
#include "invoice/shared/profile.h"
#include "llib/gen/datemessage.h"
#include "llib/gen/money.h"
#include "llib/gen/moneyinput.h"
#include "llib/gen/textnum.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/webletroutes.h"
#include "llib/web/weblogon.h"

namespace {

// ---- Journal entry controls ----------------------------------------------------------------------
constexpr int kDateControl = 101;
constexpr int kTypeControl = 102;
constexpr int kReferenceControl = 103;
constexpr int kDescriptionControl = 104;
constexpr int kBalanceControl = 105;
constexpr int kTemplateControl = 106;
constexpr int kTemplateNameControl = 107;
constexpr int kTemplateAmountControl = 108;
constexpr int kFirstLineControl = 1000;  // line i: account 1000 + 10 i, debit + 1, credit + 2
constexpr int kLineStride = 10;
constexpr int kMinLines = 6;
constexpr int kMaxLines = 99;

constexpr std::string_view kSaveButton = "Enregistrer";
constexpr std::string_view kLoadTemplateButton = "Charger le modèle";
constexpr std::string_view kSaveTemplateButton = "Enregistrer comme modèle";
constexpr std::string_view kSavedMessage = "La transaction a été enregistrée.";

constexpr std::size_t kViewPageLines = 200;

int AccountControl(int line) { return kFirstLineControl + line * kLineStride; }

// The live accounts that take postings, after an empty choice.
void AccountChoices(const LProfile& profile, std::vector<std::string>& texts, std::vector<std::string>& values) {
  texts = {""};
  values = {""};
  WLAccountChoices(profile, false, texts, values);
}

std::string Money(const LProfile& profile, long long amount) { return LFormatNumber(amount, profile.GetCurrencyFormat()); }

int TypeIndexOf(std::string_view type) {
  for (std::size_t i = 0; i < kJournalEntryTypes.size(); ++i)
    if (kJournalEntryTypes[i] == type) return static_cast<int>(i);
  return kJournalEntryGeneralType;
}

// The control a refusal of the journal entry belongs to.
int ControlOfMessage(const std::string& message) {
  if (message.find("équilibrée") != std::string::npos) return kBalanceControl;
  if (message.find("date") != std::string::npos || message.find("transaction future") != std::string::npos)
    return kDateControl;
  if (message.find("référence") != std::string::npos) return kReferenceControl;
  if (message.find("description") != std::string::npos) return kDescriptionControl;
  return AccountControl(0);
}

// ---- "journalentry" and "rectranj" ---------------------------------------------------------------

class LWebJournalEntryDialog : public LWebLedgerDialog {
 public:
  explicit LWebJournalEntryDialog(LWebletForm& form) : LWebLedgerDialog(form, "rectranj", "viewjournal") {
    SetTitle("Écriture de journal");
    SetOkText(kSaveButton);
    SetOkPage("journalentry");
    SetCancelPage("viewjournal");
    AddSpecialSubmit(kLoadTemplateButton, "");
    AddSpecialSubmit(kSaveTemplateButton, "");
    if (!form.GetParam("saved").empty()) SetMessage(std::string(kSavedMessage) + " (" + form.GetParam("saved") + ")");
  }

  void InitDialog() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    LDate today = LDate::Today();
    SetText(kDateControl, today.ToText());
    SetText(kTypeControl, LJournalEntryTypeText(kJournalEntryGeneralType));
    SetText(kReferenceControl, "GJ[auto]");
    std::vector<LJournalEntryLine> lines;
    if (std::string date = form_.GetParam("date"), ref = form_.GetParam("ref"); !date.empty() && !ref.empty()) {
      LLedgerTransaction stored;
      if (LLedgerTransactionLoad(profile, stored, date, ref) && stored.HasLines()) {
        SetText(kDateControl, stored.GetDate());
        SetText(kTypeControl, LJournalEntryTypeText(TypeIndexOf(stored.GetType())));
        SetText(kReferenceControl, stored.GetReference());
        SetText(kDescriptionControl, stored.Lines().front().description);
        for (const auto& line : stored.Lines())
          lines.push_back({line.account, line.amount < 0 ? -line.amount : line.amount, line.amount < 0 ? "CR" : "DR"});
        AddHiddenField("storeddate", stored.GetDate());
        AddHiddenField("storedref", stored.GetReference());
      }
    } else if (std::string name = form_.GetParam("template"); !name.empty()) {
      LTxnTemplate tpl;
      if (LTxnTemplateLoad(profile, name, tpl)) {
        LJournalEntryDlg entry(profile, unused_);
        long long total = 0;
        std::string amount = form_.GetParam("amount");
        if (!amount.empty()) (void)LParseAmount(LPlainAmountText(amount, profile.GetCurrencyFormat()), profile.GetCurrencyDigits(), total);
        LTxnTemplateFillEntry(tpl, today, total, entry);
        SetText(kTypeControl, LJournalEntryTypeText(entry.typeIndex));
        SetText(kReferenceControl, entry.reference);
        SetText(kDescriptionControl, entry.description);
        SetText(kTemplateControl, name);
        lines = entry.lines;
      }
    }
    for (std::size_t i = 0; i < lines.size(); ++i) {
      int id = AccountControl(static_cast<int>(i));
      SetText(id, lines[i].account);
      SetText(id + (lines[i].IsCredit() ? 2 : 1), Money(profile, lines[i].amount));
    }
    nLines_ = std::clamp(static_cast<int>(lines.size()) + 2, kMinLines, kMaxLines);
  }

  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    if (nLines_ == 0) nLines_ = std::clamp(LTextToInt(form_.GetParam("jelines")), kMinLines, kMaxLines);
    AddHiddenField("jelines", std::to_string(nLines_));
    if (!form_.GetParam("storeddate").empty()) {
      AddHiddenField("storeddate", form_.GetParam("storeddate"));
      AddHiddenField("storedref", form_.GetParam("storedref"));
    }
    AddDateInput(kDateControl, "Date :", "");
    std::vector<std::string> types(kJournalEntryTypes.begin(), kJournalEntryTypes.end());
    AddPullDownList(kTypeControl, "Type :", types);
    AddInput(kReferenceControl, "Référence :", "", 20);
    SetToolTip(kReferenceControl, "Un « [ » prend le numéro suivant du type : GJ[auto]");
    AddInput(kDescriptionControl, "Description :", "", 50);

    std::vector<std::string> texts, values;
    AccountChoices(profile, texts, values);
    std::string rows;
    for (int i = 0; i < nLines_; ++i) {
      int id = AccountControl(i);
      rows += "<tr class=jeline><td>" + SelectMarkup(id, texts, values, false, "") + "</td>";
      for (int side = 1; side <= 2; ++side)
        rows += LWebFormat("<td><input id=%d name=%d type=text size=12 class=%s value='%H' oninput='JeBalance()'></td>",
                           id + side, id + side, side == 1 ? "debit" : "credit", GetText(id + side).c_str());
      rows += "</tr>";
    }
    form_.Write("<tr><td colspan=2><table id=jelines class=report><tr><th>Compte</th><th>Débit</th><th>Crédit</th></tr>" +
                rows + "</table></td></tr>");
    AddInputReadOnly(kBalanceControl, "Écart :", "", 14);
    StartGroupBox("Modèles");
    std::vector<std::string> names = LTxnTemplateNames(profile);
    names.insert(names.begin(), "");
    AddPullDownList(kTemplateControl, "Modèle :", names);
    AddInput(kTemplateAmountControl, "Nouveau montant (facultatif) :", "", 14);
    AddInput(kTemplateNameControl, "Enregistrer sous le nom :", "", 30);
    form_.Write("<tr><td colspan=2><span id=jeinfo class=info></span></td></tr>");
    EndGroupBox();
    // The out-of-balance field follows the typing, amounts read and written the business's way.
    const LCurrencyFormat& currency = profile.GetCurrencyFormat();
    AddJScript(LWebFormat(
        "var jeDecimal = '%s', jeThousands = '%s', jeUnit = %d;\n"
        "function JeAmount(text) { text = String(text).replace(/[\\s\\u00a0\\u202f]/g, '');"
        " if (jeThousands && jeThousands != jeDecimal) text = text.split(jeThousands).join('');"
        " text = text.split(jeDecimal).join('.').replace(/[^0-9.-]/g, '');"
        " var value = parseFloat(text); return isNaN(value) ? 0 : Math.round(value * jeUnit); }\n"
        "function JeBalance() { var sum = 0; var rows = document.querySelectorAll('#jelines input');"
        " for (var i = 0; i < rows.length; i++) sum += (rows[i].className == 'debit' ? 1 : -1) * JeAmount(rows[i].value);"
        " document.getElementById('105').value = sum == 0 ? '' : (sum / jeUnit).toFixed(%d).replace('.', jeDecimal); }\n"
        "LAddEventListener(window, 'onload', JeBalance);\n",
        LJScriptEscape(currency.decimal).c_str(), LJScriptEscape(currency.thousands).c_str(),
        static_cast<int>(std::pow(10, currency.digits)), currency.digits));
  }

  bool CmOk() override {
    if (RefuseViewer()) return false;
    LProfile profile(WLSessionBusinessFolder(form_));
    std::string pressed = form_.GetParam("submit");
    if (pressed == kLoadTemplateButton) {
      std::string name = GetText(kTemplateControl);
      if (name.empty()) {
        PopupControlDataInvalid(kTemplateControl, "Veuillez choisir un modèle.");
        return false;
      }
      WriteAnswerScript(LWebFormat("window.location = 'journalentry?template=%U&amount=%U';\n", name.c_str(),
                                   GetTextAndTrim(kTemplateAmountControl).c_str()));
      SetAnswerWritten();
      return false;
    }
    LWebAsker asker(form_);
    LJournalEntryDlg entry(profile, asker);
    if (!ReadEntry(profile, entry)) return false;
    if (pressed == kSaveTemplateButton) return SaveTemplate(profile, entry);
    std::string message;
    if (!entry.CmOk(&message)) {
      AskOrRefuse(asker, ControlOfMessage(message), message);
      return false;
    }
    WriteAnswerScript(entry.existing ? std::string("window.location = 'viewjournal';\n")
                                     : LWebFormat("window.location = 'journalentry?saved=%U';\n",
                                                  entry.GetSavedReference().c_str()));
    SetAnswerWritten();
    return false;
  }

 private:
  // The controls into the entry; false after an error answer (an amount that is not one, a line
  // without account or amount).
  bool ReadEntry(const LProfile& profile, LJournalEntryDlg& entry) {
    std::string date = GetTextAndTrim(kDateControl);
    if (!LDate::Parse(date, entry.date)) {
      PopupControlDataInvalid(kDateControl, LInvalidDateMessage(date));
      return false;
    }
    entry.typeIndex = TypeIndexOf(GetText(kTypeControl));
    entry.reference = GetText(kReferenceControl);
    entry.description = GetText(kDescriptionControl);
    if (std::string stored = form_.GetParam("storeddate"); !stored.empty()) {
      entry.existing = true;
      entry.storedDate = stored;
      entry.storedReference = form_.GetParam("storedref");
    }
    int nLines = std::clamp(LTextToInt(form_.GetParam("jelines")), 0, kMaxLines);
    for (int i = 0; i < nLines; ++i) {
      int id = AccountControl(i);
      std::string account = GetText(id);
      long long amounts[2] = {0, 0};
      for (int side = 0; side < 2; ++side) {
        std::string text = GetTextAndTrim(id + 1 + side);
        std::string refusal;
        if (!text.empty() && !LReadTypedAmount(text, profile.GetCurrencyFormat(), amounts[side], &refusal)) {
          PopupControlDataInvalid(id + 1 + side, refusal);
          return false;
        }
      }
      if (account.empty() && amounts[0] == 0 && amounts[1] == 0) continue;
      if (account.empty()) {
        PopupControlDataInvalid(id, "Veuillez choisir le compte de cette ligne.");
        return false;
      }
      if ((amounts[0] == 0) == (amounts[1] == 0)) {
        PopupControlDataInvalid(id + 1, "Veuillez entrer un montant au débit ou au crédit.");
        return false;
      }
      bool credit = amounts[1] != 0;
      long long amount = credit ? amounts[1] : amounts[0];
      if (amount < 0) amount = -amount, credit = !credit;
      entry.lines.push_back({account, amount, credit ? "CR" : "DR"});
    }
    return true;
  }

  bool SaveTemplate(const LProfile& profile, const LJournalEntryDlg& entry) {
    LTxnTemplate tpl;
    tpl.name = GetTextAndTrim(kTemplateNameControl);
    tpl.description = entry.description;
    tpl.typeIndex = entry.typeIndex;
    tpl.reference = entry.reference.find('[') != std::string::npos ? entry.reference : std::string(kTemplateDefaultReference);
    tpl.lines = entry.lines;
    std::string message;
    if (!LTxnTemplateSave(profile, tpl, &message)) {
      PopupControlDataInvalid(tpl.name.empty() ? kTemplateNameControl : ControlOfMessage(message), message);
      return false;
    }
    WriteAnswerScript(LWebFormat("document.getElementById('jeinfo').textContent = '%s';\nDisableSubmits(false);\n",
                                 LJScriptEscape("Le modèle « " + tpl.name + " » a été enregistré.").c_str()));
    SetAnswerWritten();
    return false;
  }

  int nLines_ = 0;
  LFixedAsker unused_{false};
};

// ---- "viewjournal", its refilters and its period dialog ------------------------------------------

void JournalAccountChoices(LProfile& profile, std::vector<std::string>& texts, std::vector<std::string>& values) {
  AccountChoices(profile, texts, values);
}

void JournalTypeChoices(LProfile&, std::vector<std::string>& texts, std::vector<std::string>& values) {
  texts = {"Tous"};
  values = {""};
  for (std::string_view type : kJournalEntryTypes) {
    texts.emplace_back(type);
    values.emplace_back(type);
  }
}

// The journal view is a list with a period (invoice/shared/weblistperiod.h) narrowed to an
// account and a type, whose routes keep the journal's own names; a month unless asked otherwise.
const LWebPeriodList kJournalList{.listRoute = "viewjournal",
                                  .partyParam = "account",
                                  .partyLabel = "Compte",
                                  .partyChoices = JournalAccountChoices,
                                  .extraParam = "type",
                                  .extraLabel = "Type",
                                  .extraChoices = JournalTypeChoices,
                                  .periodChangeRoute = "cbvjselchange",
                                  .dateChangeRoute = "vjdatechange",
                                  .partyChangeRoute = "vjdatechange",
                                  .dialogRoute = "journalperiod",
                                  .periodSelectRoute = "cbjvpselchange",
                                  .defaultPeriod = "m"};

// The view's filter of the request; listFilter receives the list's.
LJournalViewFilter ViewFilterOf(const LWebletForm& form, LProfile& profile, LWebListFilter& listFilter) {
  listFilter = LWebReadListFilter(form, profile, kJournalList);
  return {listFilter.period.from, listFilter.period.to, listFilter.party, listFilter.extra};
}

// The address of the view as the request filters it.
std::string ViewAddress(const LWebletForm& form, LProfile& profile) {
  LWebListFilter listFilter;
  (void)ViewFilterOf(form, profile, listFilter);
  return "viewjournal?" + LWebListFilterQuery(kJournalList, listFilter, form);
}

class LWebJournalPage : public LWebPageMainEx {
 public:
  explicit LWebJournalPage(LWebletForm& form) : LWebPageMainEx(form, "viewjournal", "Journal") {}
  const LWebPeriodList& PeriodList() const { return kJournalList; }

  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    LWebListFilter listFilter;
    (void)ViewFilterOf(form_, profile, listFilter);
    std::string query = LWebListFilterQuery(kJournalList, listFilter, form_);
    std::string links;
    if (WLMayChangeData(form_))
      links += "<a href='journalentry' class=actionlink id=newentry>Nouvelle écriture</a> "
               "<a href='cashtxn' class=actionlink>Chèque, encaissement ou décaissement</a> ";
    links += LWebFormat("<a href='jvexprt?%s' class=actionlink id=jvexport>Exporter (CSV)</a> "
                        "<a href='jvrprt?%s' class=actionlink id=jvreport target=_blank>Rapport</a> "
                        "<a href='checklist' class=actionlink>Chèques</a>",
                        query.c_str(), query.c_str());
    LWebWritePeriodListPage(form_, profile, kJournalList, links, [this](LWebletForm& out) { WriteListBlock(out); });
  }

  // One page of the view's lines, in journal order, with the pages' links.
  void WriteListBlock(LWebletForm& out) {
    LProfile profile(WLSessionBusinessFolder(form_));
    LWebListFilter listFilter;
    LJournalViewFilter filter = ViewFilterOf(form_, profile, listFilter);
    bool mayChange = WLMayChangeData(form_);
    long long pageIndex = listFilter.page - 1;
    LJournalViewPage page;
    LJournalViewRead(profile, filter, pageIndex * static_cast<long long>(kViewPageLines), kViewPageLines, page);
    std::string query = LWebListFilterQuery(kJournalList, listFilter, form_);
    std::string html = "<table class='hltbl report' id=jvtable style='width:100%'><thead><tr class=hlhtr><th>Date</th>"
                       "<th>Référence</th><th>Type</th><th>Compte</th><th>Description</th><th class=debit>Débit</th>"
                       "<th class=credit>Crédit</th><th>Document</th><th></th></tr></thead><tbody>";
    std::string previous;
    for (const LLedgerJournalLine& line : page.lines) {
      std::string key = line.date + "\n" + line.reference;
      bool first = key != previous;
      previous = key;
      std::string txn = LWebFormat("date=%U&ref=%U", line.date.c_str(), line.reference.c_str());
      html += LWebFormat("<tr class='%s'><td>%H</td><td>", first ? "jvfirst" : "jvnext", line.date.c_str());
      html += first ? LWebFormat("<a href='journalentry?%s'>%H</a>", txn.c_str(), line.reference.c_str())
                    : LHtmlEscape(line.reference);
      html += LWebFormat("</td><td>%H</td><td>%H</td><td>%H</td><td class=debit>%H</td><td class=credit>%H</td>"
                         "<td>%H</td><td>",
                         line.type.c_str(), line.account.c_str(), line.description.c_str(),
                         line.amount > 0 ? Money(profile, line.amount).c_str() : "",
                         line.amount < 0 ? Money(profile, -line.amount).c_str() : "", line.document.c_str());
      if (first && mayChange)
        html += LWebFormat("<a href='journaldelete?%s&%s' class=deletelink>Supprimer</a>", txn.c_str(), query.c_str());
      html += "</td></tr>";
    }
    if (page.lines.empty())
      html += "<tr style='height:20px'><td colspan=9 style='text-align:center' class=hltd>Cette liste est vide</td></tr>";
    html += LWebFormat("</tbody></table><p class=listsummary id=jvcount>%lld lignes", page.nMatching);
    long long nPages = (page.nMatching + static_cast<long long>(kViewPageLines) - 1) / static_cast<long long>(kViewPageLines);
    if (nPages > 1) {
      html += LWebFormat(" &mdash; page %lld sur %lld", pageIndex + 1, nPages);
      if (pageIndex > 0)
        html += LWebFormat(" <a href='viewjournal?%s&page=%lld' class=pagelink>« Précédente</a>", query.c_str(), pageIndex);
      if (pageIndex + 1 < nPages)
        html += LWebFormat(" <a href='viewjournal?%s&page=%lld' class=pagelink>Suivante »</a>", query.c_str(), pageIndex + 2);
    }
    out.Write(html + "</p>");
  }
};

// ---- "journaldelete" --------------------------------------------------------------------------------

void WLJournalDelete(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  std::string back = ViewAddress(form, profile);
  if (!WLMayChangeData(form)) {
    WLRedirect(form, back + LWebFormat("&msg=%U", kWebViewerRefusal));
    return;
  }
  std::string date = form.GetParam("date"), reference = form.GetParam("ref");
  LLedgerTransaction txn;
  if (!LLedgerTransactionLoad(profile, txn, date, reference)) {
    WLRedirect(form, back + LWebFormat("&msg=%U", ("La transaction " + reference + " du " + date +
                                                   " n'existe pas dans le grand livre.").c_str()));
    return;
  }
  std::string document;
  for (const auto& line : txn.Lines())
    if (document.empty()) document = line.document;
  LQuestion question{document.empty() ? "Voulez-vous vraiment supprimer la transaction " + txn.GetReference() + " du " +
                                            date + " ?"
                                      : "La transaction " + txn.GetReference() + " du " + date + " est celle du document " +
                                            document + " : le document sera supprimé avec elle. Voulez-vous vraiment "
                                            "la supprimer ?",
                     "Confirmer la suppression", "Supprimer", "Annuler", false};
  LWebAsker asker(form);
  if (!asker.Ask(question).confirmed) {
    asker.WriteQuestionPage(form, back);
    return;
  }
  if (!LedgerTransactionDelete(profile, date, reference)) {
    WLRedirect(form, back + LWebFormat("&msg=%U", std::string(kLedgerNotWrittenMessage).c_str()));
    return;
  }
  WLRedirect(form, back);
}

// ---- "jvexprt" and "jvrprt" ---------------------------------------------------------------------------

void WLJournalExport(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  LWebListFilter listFilter;
  LJournalViewFilter filter = ViewFilterOf(form, profile, listFilter);
  std::string content = LLedgerExportCsv(profile, filter);
  std::string name = "journal" + (filter.from.empty() ? std::string() : "-" + filter.from) +
                     (filter.to.empty() ? std::string() : "-" + filter.to) + ".csv";
  form.WriteHeader(LWebFormat("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Type: text/csv; charset=UTF-8\r\n"
                              "Content-Disposition: attachment; filename=\"%s\"\r\nContent-Length: %zu\r\n"
                              "Cache-Control: no-store\r\n\r\n",
                              name.c_str(), content.size()));
  form.Write(content);
}

class LWebJournalReportPage : public LWebPageEx {
 public:
  explicit LWebJournalReportPage(LWebletForm& form) : LWebPageEx(form) { SetTitle("Journal"); }
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    LWebListFilter listFilter;
    LJournalViewFilter filter = ViewFilterOf(form_, profile, listFilter);
    std::string heading = filter.from.empty() && filter.to.empty() ? std::string("Journal")
                                                                     : "Journal du " + filter.from + " au " + filter.to;
    if (!filter.account.empty()) heading += ", compte " + filter.account;
    if (!filter.type.empty()) heading += ", type " + filter.type;
    form_.Write(LWebFormat("<h2 class=companyname>%H</h2><h3>%H</h3><table class=report id=jvreport>"
                           "<tr><th>Date</th><th>Référence</th><th>Compte</th><th>Description</th><th>Débit</th>"
                           "<th>Crédit</th></tr>",
                           LWebCompanyName(WLSessionBusinessFolder(form_)).c_str(), heading.c_str()));
    long long debits = 0, credits = 0;
    std::string previous;
    LJournalViewForEach(profile, filter, [&](const LLedgerJournalLine& line) {
      std::string key = line.date + "\n" + line.reference;
      bool first = key != previous;
      previous = key;
      (line.amount > 0 ? debits : credits) += line.amount > 0 ? line.amount : -line.amount;
      form_.Write(LWebFormat("<tr%s><td>%H</td><td>%H</td><td>%H</td><td>%H</td><td class=amount>%H</td>"
                             "<td class=amount>%H</td></tr>",
                             first ? " class=jvfirst" : "", first ? line.date.c_str() : "",
                             first ? line.reference.c_str() : "", line.account.c_str(), line.description.c_str(),
                             line.amount > 0 ? Money(profile, line.amount).c_str() : "",
                             line.amount < 0 ? Money(profile, -line.amount).c_str() : ""));
    });
    form_.Write(LWebFormat("<tr class=total id=jvtotals><td colspan=4>Total</td><td class=amount>%H</td>"
                           "<td class=amount>%H</td></tr></table>",
                           Money(profile, debits).c_str(), Money(profile, credits).c_str()));
  }
};

}  // namespace

void LAccountsInstallLedgerPages() {
  static const LWebletRoute kRoutes[] = {
      {"journalentry", WLWebDialogRun<LWebJournalEntryDialog>},
      {"rectranj", WLWebDialogRun<LWebJournalEntryDialog>},
      {"viewjournal", WLWebPageRun<LWebJournalPage>},
      {"cbvjselchange", WLWebListRefilterRun<LWebJournalPage>},
      {"vjdatechange", WLWebListRefilterRun<LWebJournalPage>},
      {"journalperiod", WLWebDialogRun<LWebListPeriodDialogOf<kJournalList>>},
      {"cbjvpselchange", WLPeriodSelectionChange},
      {"journaldelete", WLJournalDelete},
      {"jvexprt", WLJournalExport},
      {"jvrprt", WLWebPageRun<LWebJournalReportPage>},
  };
  LWebletInstallScripts(kRoutes);
  LAccountsInstallChartPages();
  LAccountsInstallChequePages();
}
