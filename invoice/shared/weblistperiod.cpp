#include "invoice/shared/weblistperiod.h"

#include <algorithm>

#include "invoice/shared/profile.h"
#include "llib/gen/datemessage.h"
#include "llib/gen/textnum.h"
#include "llib/web/webformat.h"
#include "llib/web/weblist.h"
#include "llib/web/weblogon.h"

namespace {

std::string Route(const LWebPeriodList& list, std::string_view kind) { return LWebPeriodListRoute(list, kind); }

// The first and last day of the calendar quarter that holds date.
LDTPeriod QuarterOf(const LDate& date) {
  int first = (date.month - 1) / 3 * 3 + 1;
  return {LDate(date.year, first, 1).ToText(), LDate(date.year, first + 2, LDaysInMonth(date.year, first + 2)).ToText()};
}

LDTPeriod MonthOf(const LDate& date) {
  return {LDate(date.year, date.month, 1).ToText(), LDate(date.year, date.month, LDaysInMonth(date.year, date.month)).ToText()};
}

// The first day of the month before date's month.
LDate PreviousMonth(const LDate& date) {
  return date.month == 1 ? LDate(date.year - 1, 12, 1) : LDate(date.year, date.month - 1, 1);
}

// A pull-down of texts and values, value chosen selected.
std::string SelectHtml(std::string_view name, std::string_view onChange, const std::vector<std::string>& texts,
                       const std::vector<std::string>& values, std::string_view chosen) {
  std::string html = LWebFormat("<select name=%s onchange=\"%s\">", std::string(name).c_str(),
                                std::string(onChange).c_str());
  for (std::size_t i = 0; i < texts.size() && i < values.size(); ++i)
    html += LWebFormat("<option value='%H'%s>%H</option>", values[i].c_str(), values[i] == chosen ? " selected" : "",
                       texts[i].c_str());
  return html + "</select>";
}

// The query of the filter alone.
std::string FilterQuery(const LWebPeriodList& list, const LWebListFilter& filter) {
  std::string query = LWebFormat("prd=%U&from=%U&to=%U&%s=%U", filter.periodCode.c_str(), filter.period.from.c_str(),
                                 filter.period.to.c_str(), list.partyParam, filter.party.c_str());
  if (list.extraParam != nullptr) query += LWebFormat("&%s=%U", list.extraParam, filter.extra.c_str());
  return query;
}

void PeriodChoices(std::vector<std::string>& texts, std::vector<std::string>& values) {
  for (const LWebNamedPeriod& named : LWebNamedPeriods()) {
    texts.emplace_back(named.text);
    values.emplace_back(named.code);
  }
}

}  // namespace

std::string LWebPeriodListRoute(const LWebPeriodList& list, std::string_view kind) {
  const char* own = kind == "periodchange"   ? list.periodChangeRoute
                    : kind == "datechange"   ? list.dateChangeRoute
                    : kind == "partychange"  ? list.partyChangeRoute
                    : kind == "period"       ? list.dialogRoute
                    : kind == "prdselchange" ? list.periodSelectRoute
                                             : nullptr;
  if (own != nullptr) return own;
  if (kind == "prdselchange") return std::string(kind);
  if (kind == "partychange") return std::string(list.listRoute) + list.partyParam + "change";
  return std::string(list.listRoute) + std::string(kind);
}

// ---- Periods ------------------------------------------------------------------------------------

const std::vector<LWebNamedPeriod>& LWebNamedPeriods() {
  static const std::vector<LWebNamedPeriod> periods = {
      {"fy", "Cet exercice"},          {"pfy", "Exercice précédent"},       {"m", "Ce mois-ci"},
      {"pm", "Le mois dernier"},       {"q", "Ce trimestre"},               {"pq", "Le trimestre dernier"},
      {"y", "Cette année civile"},     {"py", "L'année civile dernière"},    {"all", "Toutes les dates"},
      {kLWebPeriodCustom, "Dates choisies"},
  };
  return periods;
}

bool LWebNamedPeriodDates(LProfile& profile, std::string_view code, const LDate& today, LDTPeriod& period) {
  if (code == "fy") period = LFiscalYearOf(profile, today);
  else if (code == "pfy") {
    LDate start;
    if (!LDate::Parse(LFiscalYearOf(profile, today).from, start)) return false;
    period = LFiscalYearOf(profile, start.AddDays(-1));
  } else if (code == "m") period = MonthOf(today);
  else if (code == "pm") period = MonthOf(PreviousMonth(today));
  else if (code == "q") period = QuarterOf(today);
  else if (code == "pq") {
    LDate start;
    if (!LDate::Parse(QuarterOf(today).from, start)) return false;
    period = QuarterOf(start.AddDays(-1));
  } else if (code == "y") period = {LDate(today.year, 1, 1).ToText(), LDate(today.year, 12, 31).ToText()};
  else if (code == "py") period = {LDate(today.year - 1, 1, 1).ToText(), LDate(today.year - 1, 12, 31).ToText()};
  else if (code == "all") period = {};
  else return false;
  return true;
}

bool LWebListFilter::Holds(std::string_view date) const {
  std::string_view day = date.substr(0, 10);
  return (period.from.empty() || day >= period.from) && (period.to.empty() || day <= period.to);
}

LWebListFilter LWebReadListFilter(const LWebletForm& form, LProfile& profile, const LWebPeriodList& list) {
  LWebListFilter filter;
  LDate today = LDate::Today();
  std::string code = form.GetParam("prd");
  std::string from = form.GetParam("from");
  std::string to = form.GetParam("to");
  filter.party = form.GetParam(list.partyParam);
  if (list.extraParam != nullptr) filter.extra = form.GetParam(list.extraParam);
  filter.page = std::max(1, LTextToInt(form.GetParam("page")));
  if (!code.empty() && code != kLWebPeriodCustom && LWebNamedPeriodDates(profile, code, today, filter.period)) {
    filter.periodCode = code;
    return filter;
  }
  std::string_view fallback = list.defaultPeriod != nullptr ? list.defaultPeriod : "fy";
  if (!LWebNamedPeriodDates(profile, fallback, today, filter.period)) filter.period = LFiscalYearOf(profile, today);
  filter.periodCode = fallback;
  if (from.empty() && to.empty() && code != kLWebPeriodCustom) return filter;
  filter.periodCode = kLWebPeriodCustom;
  for (auto [text, bound] : {std::pair{&from, &filter.period.from}, std::pair{&to, &filter.period.to}}) {
    LDate date;
    if (text->empty()) bound->clear();
    else if (LDate::Parse(*text, date)) *bound = date.ToText();
    else filter.error = LInvalidDateMessage(*text);
  }
  return filter;
}

std::string LWebListFilterQuery(const LWebPeriodList& list, const LWebListFilter& filter, const LWebletForm& form) {
  std::string query = FilterQuery(list, filter);
  for (const char* name : {"iCol", "bAsc"}) {
    std::string value = form.GetParam(name);
    if (!value.empty()) query += LWebFormat("&%s=%U", name, value.c_str());
  }
  return query;
}

std::string LWebListRefilterRoute(const LWebPeriodList& list) { return Route(list, "periodchange"); }

// ---- The filter bar and the rows --------------------------------------------------------------

void LWebWritePeriodListPage(LWebletForm& form, LProfile& profile, const LWebPeriodList& list,
                             std::string_view newLink, const std::function<void(LWebletForm& out)>& writeBlock) {
  std::string message = form.GetParam("msg");
  if (!message.empty()) form.Write(LWebFormat("<p class=errormessage>%H</p>", message.c_str()));
  LWebWriteListFilterBar(form, profile, list, LWebReadListFilter(form, profile, list));
  if (!newLink.empty()) form.Write("<p>" + std::string(newLink) + "</p>");
  form.Write("<div id=listblock>");
  writeBlock(form);
  form.Write("</div>");
}

void LWebWriteListFilterBar(LWebletForm& out, LProfile& profile, const LWebPeriodList& list,
                            const LWebListFilter& filter) {
  auto refilter = [&](std::string_view suffix) {
    return LWebFormat("return ListRefilter('%s')", Route(list, suffix).c_str());
  };
  std::vector<std::string> periodTexts, periodValues, partyTexts, partyValues;
  PeriodChoices(periodTexts, periodValues);
  list.partyChoices(profile, partyTexts, partyValues);
  if (!partyTexts.empty()) partyTexts.front() = "Tous";
  std::string html = LWebFormat("<form id=listfilter method=get action='%s' class=listfilters onsubmit=\"%s\">",
                                list.listRoute, refilter("datechange").c_str());
  if (!filter.error.empty()) html += LWebFormat("<p class=errormessage>%H</p>", filter.error.c_str());
  html += "<label>Période " +
          SelectHtml("prd", refilter("periodchange"), periodTexts, periodValues, filter.periodCode) + "</label> ";
  html += LWebFormat("<label>Du <input type=date name=from value='%H' onchange=\"%s\"></label> "
                     "<label>au <input type=date name=to value='%H' onchange=\"%s\"></label> ",
                     filter.period.from.c_str(), refilter("datechange").c_str(), filter.period.to.c_str(),
                     refilter("datechange").c_str());
  html += LWebFormat("<label>%H ", list.partyLabel) +
          SelectHtml(list.partyParam, refilter("partychange"), partyTexts, partyValues, filter.party) + "</label> ";
  if (list.extraParam != nullptr) {
    std::vector<std::string> extraTexts, extraValues;
    list.extraChoices(profile, extraTexts, extraValues);
    html += LWebFormat("<label>%H ", list.extraLabel) +
            SelectHtml(list.extraParam, refilter("partychange"), extraTexts, extraValues, filter.extra) + "</label> ";
  }
  // The sort of the request goes with the refilters; none: the list's own default.
  html += LWebFormat("<input type=hidden name=iCol value='%H'><input type=hidden name=bAsc value='%H'>",
                     out.GetParam("iCol").c_str(), out.GetParam("bAsc").c_str());
  html += LWebFormat("<input type=submit class=button value='Afficher'> <a href='%s?%s' class=actionlink>"
                     "Période…</a></form>",
                     Route(list, "period").c_str(), LWebListFilterQuery(list, filter, out).c_str());
  out.Write(html);
}

void LWebWritePagedRows(LWebletForm& out, LHtmlList& list, const LWebPeriodList& periodList,
                        const LWebListFilter& filter, std::string_view summary) {
  std::vector<const LHtmlListRow*> rows = list.SortedRows();
  int pages = std::max<int>(1, static_cast<int>((rows.size() + kLWebListPageRows - 1) / kLWebListPageRows));
  int page = std::clamp(filter.page, 1, pages);
  if (pages > 1) list.SetRefilterRoute(LWebListRefilterRoute(periodList));
  list.WriteHeader(out, 100);
  std::size_t first = static_cast<std::size_t>(page - 1) * kLWebListPageRows;
  for (std::size_t i = first; i < rows.size() && i < first + kLWebListPageRows; ++i) list.WriteDirectRow(out, *rows[i]);
  list.WriteDirectEnd(out);
  std::string pager = LWebFormat("<p class=listsummary>%H", std::string(summary).c_str());
  std::string query = FilterQuery(periodList, filter) + LWebFormat("&iCol=%d&bAsc=%d", list.GetSortColumn(), list.IsAscending() ? 1 : 0);
  auto pageLink = [&](int to, const char* text) {
    return LWebFormat(" <a href='%s?%s&page=%d' class=pagelink>%H</a>", periodList.listRoute, query.c_str(), to, text);
  };
  if (pages > 1) {
    pager += LWebFormat(" &mdash; page %d sur %d", page, pages);
    if (page > 1) pager += pageLink(page - 1, "« Précédente");
    if (page < pages) pager += pageLink(page + 1, "Suivante »");
  }
  out.Write(pager + "</p>");
}

// ---- The refilters --------------------------------------------------------------------------------


void WLWebListRefilter(LWebletForm& form, const LWebPeriodList& list,
                       const std::function<void(LWebletForm& out)>& writeBlock) {
  if (!WLAjaxAuthenticate(form)) return;
  if (form.scriptName == Route(list, "datechange")) form.parameters.SetString("prd", kLWebPeriodCustom);
  form.parameters.DeleteField("page");
  LProfile profile(WLSessionBusinessFolder(form));
  LWebListFilter filter = LWebReadListFilter(form, profile, list);
  LWebletForm block(nullptr);
  if (!filter.error.empty()) block.Write(LWebFormat("<p class=errormessage>%H</p>", filter.error.c_str()));
  writeBlock(block);
  std::string address = std::string(list.listRoute) + "?" + LWebListFilterQuery(list, filter, form);
  WLWriteScriptAnswerHeader(form);
  form.Write(LWebFormat("ListFilterShow('%s', '%s', '%s', '%s', '%s');\n", LJScriptEscape(filter.periodCode).c_str(),
                        LJScriptEscape(filter.period.from).c_str(), LJScriptEscape(filter.period.to).c_str(),
                        LJScriptEscape(block.Captured()).c_str(), LJScriptEscape(address).c_str()));
}

void WLPeriodSelectionChange(LWebletForm& form) {
  if (!WLAjaxAuthenticate(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  LDTPeriod period;
  WLWriteScriptAnswerHeader(form);
  if (!LWebNamedPeriodDates(profile, form.GetParam("prd"), LDate::Today(), period)) return;
  form.Write(LWebFormat("document.getElementById('%d').value = '%s';\ndocument.getElementById('%d').value = '%s';\n",
                        LWebListPeriodDialog::kFromControl, LJScriptEscape(period.from).c_str(),
                        LWebListPeriodDialog::kToControl, LJScriptEscape(period.to).c_str()));
}

// ---- "<list>period" -----------------------------------------------------------------------------

LWebListPeriodDialog::LWebListPeriodDialog(LWebletForm& form, const LWebPeriodList& list)
    : LWebDialogEx(form, Route(list, "period")), list_(list) {
  SetTitle("Période de la liste");
  SetOkText("Afficher");
  SetCancelPage(list.listRoute);
}

LWebListPeriodDialog::~LWebListPeriodDialog() = default;

LProfile& LWebListPeriodDialog::Profile() {
  if (!profile_) profile_ = std::make_unique<LProfile>(WLSessionBusinessFolder(form_));
  return *profile_;
}

void LWebListPeriodDialog::InitDialog() {
  LWebListFilter filter = LWebReadListFilter(form_, Profile(), list_);
  SetText(kPeriodControl, filter.periodCode);
  SetText(kFromControl, filter.period.from);
  SetText(kToControl, filter.period.to);
  SetText(kPartyControl, filter.party);
}

void LWebListPeriodDialog::Generate() {
  std::vector<std::string> texts, values;
  PeriodChoices(texts, values);
  AddPullDownList(kPeriodControl, "Période :", texts, values);
  AddDateInput(kFromControl, "Du :", "");
  AddDateInput(kToControl, "Au :", "");
  texts.clear();
  values.clear();
  list_.partyChoices(Profile(), texts, values);
  if (!texts.empty()) texts.front() = "Tous";
  AddPullDownList(kPartyControl, std::string(list_.partyLabel) + " :", texts, values);
  AddHiddenField("iCol", form_.GetParam("iCol"));
  AddHiddenField("bAsc", form_.GetParam("bAsc"));
  if (list_.extraParam != nullptr) AddHiddenField(list_.extraParam, form_.GetParam(list_.extraParam));
  AddJScriptFunctionPrintf("LAddEventListener(window, 'onload', function() {PeriodDialogWire(%d, %d, %d, '%s');});\n",
                           kPeriodControl, kFromControl, kToControl, Route(list_, "prdselchange").c_str());
}

bool LWebListPeriodDialog::CmOk() {
  std::string code = GetTextAndTrim(kPeriodControl);
  std::string from = GetTextAndTrim(kFromControl);
  std::string to = GetTextAndTrim(kToControl);
  LDate fromDate, toDate;
  if (code == kLWebPeriodCustom || code.empty()) {
    if (!from.empty() && !LDate::Parse(from, fromDate)) {
      PopupControlDataInvalid(kFromControl, LInvalidDateMessage(from));
      return false;
    }
    if (!to.empty() && !LDate::Parse(to, toDate)) {
      PopupControlDataInvalid(kToControl, LInvalidDateMessage(to));
      return false;
    }
    if (!from.empty() && !to.empty() && toDate < fromDate) {
      PopupControlDataInvalid(kToControl, "La date de fin précède la date de début.");
      return false;
    }
    code = kLWebPeriodCustom;
  } else {
    LDTPeriod period;
    if (!LWebNamedPeriodDates(Profile(), code, LDate::Today(), period)) {
      PopupControlDataInvalid(kPeriodControl, "Période inconnue : " + code + ".");
      return false;
    }
  }
  std::string column = form_.GetParam("iCol");
  std::string target = LWebFormat("%s?prd=%U&from=%U&to=%U&%s=%U", list_.listRoute, code.c_str(), from.c_str(),
                                  to.c_str(), list_.partyParam, GetTextAndTrim(kPartyControl).c_str());
  if (list_.extraParam != nullptr)
    target += LWebFormat("&%s=%U", list_.extraParam, form_.GetParam(list_.extraParam).c_str());
  if (!column.empty())
    target += LWebFormat("&iCol=%U&bAsc=%U", column.c_str(), form_.GetParam("bAsc").c_str());
  WriteAnswerScript(LWebFormat("window.location = '%s';\n", LJScriptEscape(target).c_str()));
  SetAnswerWritten();
  return true;
}
