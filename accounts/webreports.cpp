// The report centre, the report page and its CSV download, the routes that show a report over a
// named period or day, and the count of a report's lines for the choosers.
#include "accounts/webreports.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>

#include "accounts/reportperiods.h"
#include "accounts/webbudgets.h"
#include "accounts/webpagemainex.h"
#include "accounts/webvehicles.h"
#include "invoice/shared/customerstatementreport.h"
#include "invoice/shared/formparts.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/webaccess.h"
#include "llib/gen/log.h"
#include "llib/gen/money.h"
#include "llib/gen/textnum.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/webletroutes.h"
#include "llib/web/weblogon.h"

namespace {

constexpr std::string_view kReportsTab = "reports";

// "&name=value" of a valid date; nothing for an invalid one.
std::string DateArg(const char* name, const LDate& date) {
  return date.IsValid() ? LWebFormat("&%s=%s", name, date.ToText().c_str()) : std::string();
}

std::string TextArg(const char* name, std::string_view value) {
  return value.empty() ? std::string() : LWebFormat("&%s=%U", name, std::string(value).c_str());
}

// An optional date parameter: empty leaves date invalid.
bool ReadDate(LWebletForm& form, const char* name, LDate& date, std::string& error) {
  std::string text = form.GetParam(name);
  if (text.empty() || LDate::Parse(text, date)) return true;
  error = "Date invalide : " + text;
  return false;
}

// A factor as the pages write it: ftotl's decimals without their trailing zeros ("0.5", "1").
std::string FactorText(double factor) {
  std::string text = ftotl(factor);
  if (text.find('.') != std::string::npos) {
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
  }
  return text;
}

// "cons": "INDEX=FACTOR,..." with the businesses numbered as LWebBusinessList lists them; each
// must be one the session's user may open.
bool ReadBusinesses(LWebletForm& form, std::string_view list, std::vector<LProfilesAndRates>& out,
                    std::string& error) {
  if (list.empty()) return true;
  std::vector<LWebBusiness> businesses = LWebBusinessList();
  std::vector<LWebBusiness> allowed = WLSessionBusinesses(form);
  while (!list.empty()) {
    std::size_t comma = list.find(',');
    std::string part(list.substr(0, comma));
    list = comma == std::string_view::npos ? std::string_view() : list.substr(comma + 1);
    std::size_t equals = part.find('=');
    std::string index = part.substr(0, equals);
    LProfilesAndRates business;
    if (equals == std::string::npos || index.empty() || index.size() > 4 ||
        index.find_first_not_of("0123456789") != std::string::npos ||
        LTextToInt(index) >= static_cast<int>(businesses.size()) ||
        !LReportParseFactor(std::string_view(part).substr(equals + 1), business.factor)) {
      error = "Entreprise ou taux de conversion invalide : " + part;
      return false;
    }
    const LWebBusiness& chosen = businesses[LTextToInt(index)];
    if (std::none_of(allowed.begin(), allowed.end(), [&](const LWebBusiness& b) { return b.folder == chosen.folder; })) {
      error = "Vous n'avez pas accès à l'entreprise " + chosen.name + ".";
      return false;
    }
    business.databaseName = chosen.folder;
    out.push_back(business);
  }
  return true;
}

// A customer's statement downloaded is an issued statement: it goes to the customer's log.
void LogStatement(LWebletForm& form, LProfile& profile, const LReportRequest& request, const LReportTable& table,
                  const char* format) {
  LCustomerStatementIssue issue;
  issue.customer = request.customers.front();
  issue.from = request.from.IsValid() ? request.from.ToText() : "";
  issue.to = (request.to.IsValid() ? request.to : request.date).ToText();
  for (const LReportRow& row : table.rows)
    if (row.kind == LReportRowKind::kResult && row.values.size() == 4 && row.values[3]) issue.closing = *row.values[3];
  issue.issued = LDateTimeText(std::time(nullptr));
  issue.user = WLSessionUserName(form);
  if (issue.user.empty()) issue.user = "Bureau";
  issue.format = format;
  if (!LCustomerStatementLogAdd(profile, issue)) LLogError("Relevé de %s : journal non écrit.", issue.customer.c_str());
}

// The report as a downloaded file (format "csv" or "pdf", the PDF that `kontavo report --format
// pdf` writes), named after the report and its last day.
void AnswerDownload(LWebletForm& form, const LReportEntry& entry, const LReportRequest& request, bool pdf) {
  LProfile profile(WLSessionBusinessFolder(form));
  LReportTable table;
  std::string error, content;
  LOptions options;
  options.OpenFrom(profile);
  LReportStyle style{profile.GetCurrencyFormat(), options.GetBool("UseParenthesesForNegative", false)};
  bool made = entry.build(profile, request, table, error);
  if (made && pdf) made = LFormReportPdf(profile, table, style, content, &error);
  if (!made) {
    LWebReportPage(form, entry, request).Open();
    return;
  }
  if (!pdf) content = LReportWriteCsv(table, style);
  LDate last = request.to.IsValid() ? request.to : request.date;
  form.WriteHeader(LWebFormat("HTTP/1.1 200 OK\r\nContent-Type: %s\r\n"
                              "Content-Disposition: attachment; filename=\"%s%s-%s.%s\"\r\nContent-Length: %zu\r\n"
                              "Cache-Control: no-store\r\n\r\n",
                              pdf ? "application/pdf" : "text/csv; charset=utf-8", pdf ? "Rapport-" : "",
                              std::string(entry.name).c_str(), last.ToText().c_str(), pdf ? "pdf" : "csv",
                              content.size()));
  form.Write(content);
  if (entry.asks & kReportAsksOneCustomer) LogStatement(form, profile, request, table, pdf ? "PDF" : "CSV");
}

// The report of the query, or its CSV or PDF file; the centre when the query names no report.
void ShowReport(LWebletForm& form, const LReportEntry* entry, LReportRequest request) {
  if (entry == nullptr) {
    WLRedirect(form, kReportsTab);
    return;
  }
  std::string format = form.GetParam("format");
  if (format == "csv" || format == "pdf") AnswerDownload(form, *entry, request, format == "pdf");
  else LWebReportPage(form, *entry, std::move(request)).Open();
}

// A page that shows error in place of a report (a query that does not read).
class LWebReportErrorPage : public LWebReportSectionPage {
 public:
  LWebReportErrorPage(LWebletForm& form, std::string error)
      : LWebReportSectionPage(form, "Rapports"), error_(std::move(error)) {}
  void Generate() override {
    form_.wfprintf("<p class=error id=errorTag>%H</p><p><a href='reports' class=actionlink>Tous les rapports</a></p>",
                   error_.c_str());
  }

 private:
  std::string error_;
};

// Reads the query; on failure answers with the error page and returns false.
bool QueryRequest(LWebletForm& form, LReportRequest& request) {
  std::string error;
  if (WLReportRequestFromQuery(form, request, error)) return true;
  LWebReportErrorPage(form, error).Open();
  return false;
}

// ---- "reports" --------------------------------------------------------------------------------

// Links to a report over the first named periods or days, as of today.
std::string QuickLinks(const LReportEntry& entry) {
  std::string links;
  auto add = [&](const char* route, const char* parameter, std::string_view code, std::string_view text) {
    links += LWebFormat("%s<a href='%s?report=%U&%s=%s'>%H</a>", links.empty() ? "" : ", ", route,
                        std::string(entry.name).c_str(), parameter, std::string(code).c_str(), std::string(text).c_str());
  };
  // A report about one chosen thing (a budget, a customer's statement, a bank account) cannot be
  // run from a name alone.
  if (entry.asks & (kReportAsksSubject | kReportAsksOneCustomer | kReportAsksAccount)) return {};
  if (entry.asks & (kReportAsksPeriod | kReportAsksComparison)) {
    add("generatereportperiod", "period", "fy", "exercice en cours");
    add("generatereportperiod", "period", "pfy", "exercice précédent");
  } else if (entry.asks & (kReportAsksDate | kReportAsksOptionalFrom)) {
    add("generatereportdate", "when", "today", "aujourd'hui");
    add("generatereportdate", "when", "endlastfy", "fin de l'exercice précédent");
  }
  return links.empty() ? links : " <span class=quicklinks>(" + links + ")</span>";
}

// Pages of other report subjects, shown when their route is served.
struct LReportCentreLink {
  const char* route;
  const char* group;
  const char* text;
  bool administratorOnly = false;
};
constexpr LReportCentreLink kCentreLinks[] = {
    {"budgetlist", "Budgets", "Budgets"},
    {"vehiclelist", "Kilométrage", "Véhicules et trajets"},
    {"vatreturn", "TVA", "Déclaration de TVA (HMRC au Royaume-Uni, CA3 en France)", true},
    {"consolreport", "Rapports consolidés", "Rapport consolidé de plusieurs entreprises"},
};

class LWebReportsPage : public LWebPageMainEx {
 public:
  explicit LWebReportsPage(LWebletForm& form) : LWebPageMainEx(form, kReportsTab, "Rapports") {}
  void Generate() override {
    bool administrator = WLIsAdministator(form_);
    auto shown = [&](const LReportCentreLink& link) {
      return (administrator || !link.administratorOnly) && LWebletFindScript(link.route);
    };
    std::vector<std::string_view> groups;
    for (const LReportEntry& entry : LReportEntries())
      if (groups.empty() || groups.back() != entry.group) groups.push_back(entry.group);
    for (const LReportCentreLink& link : kCentreLinks)
      if (std::find(groups.begin(), groups.end(), link.group) == groups.end() && shown(link))
        groups.push_back(link.group);
    for (std::string_view group : groups) {
      std::string name(group);
      form_.wfprintf("<div class=reportgroup><h3>%H</h3><ul class=reportlist>", name.c_str());
      for (const LReportEntry& entry : LReportEntries()) {
        if (entry.group != group) continue;
        form_.wfprintf("<li><a href='reportredirect?report=%U'>%H</a>%s</li>", std::string(entry.name).c_str(),
                       std::string(entry.title).c_str(), QuickLinks(entry).c_str());
      }
      for (const LReportCentreLink& link : kCentreLinks)
        if (group == link.group && shown(link))
          form_.wfprintf("<li><a href='%s'>%H</a></li>", link.route, link.text);
      form_.Write("</ul></div>");
    }
  }
};

// ---- Routes -------------------------------------------------------------------------------------

void WLGenerateReport(LWebletForm& form) {
  LReportRequest request;
  if (QueryRequest(form, request)) ShowReport(form, WLReportEntryOf(form), std::move(request));
}

// A consolidated report: without businesses to total, the choice of them first.
void WLGenerateConsolidatedReport(LWebletForm& form) {
  LReportRequest request;
  if (!QueryRequest(form, request)) return;
  const LReportEntry* entry = WLReportEntryOf(form);
  if (entry != nullptr && (entry->asks & kReportConsolidates) == 0) {
    LWebReportErrorPage(form, std::string("Ce rapport ne peut pas être consolidé : ") + std::string(entry->title)).Open();
    return;
  }
  if (entry == nullptr || request.businesses.empty()) {
    WLRedirect(form, entry == nullptr ? std::string(kConsolidationRoute)
                                      : LWebFormat("%s?report=%U", kConsolidationRoute, std::string(entry->name).c_str()));
    return;
  }
  ShowReport(form, entry, std::move(request));
}

// The named period ("period") or day ("when") replaces the query's dates.
void WLGenerateReportNamed(LWebletForm& form, bool period) {
  LReportRequest request;
  if (!QueryRequest(form, request)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  LDate today = LDate::Today();
  std::string code = form.GetParam(period ? "period" : "when");
  bool known = period ? LReportPeriodOf(profile, code, today, request.from, request.to)
                      : LReportDateOf(profile, code, today, request.date);
  if (!known) {
    LWebReportErrorPage(form, (period ? "Période inconnue : " : "Date inconnue : ") + code).Open();
    return;
  }
  if (!period) request.to = request.date;  // the trial balance ends on the day
  ShowReport(form, WLReportEntryOf(form), std::move(request));
}

void WLGenerateReportPeriod(LWebletForm& form) { WLGenerateReportNamed(form, true); }
void WLGenerateReportDate(LWebletForm& form) { WLGenerateReportNamed(form, false); }

// To the chooser that the report needs, the query carried over; a report that asks nothing is
// shown at once.
void WLReportRedirect(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  const LReportEntry* entry = WLReportEntryOf(form);
  if (entry == nullptr) {
    WLRedirect(form, kReportsTab);
    return;
  }
  const char* route = "generatereport";
  std::string chooser(entry->chooser);
  if (!chooser.empty()) route = chooser.c_str();
  else if (entry->asks & kReportAsksComparison) route = "reportperiod1";
  else if (entry->asks & kReportAsksOptionalFrom) route = "reportdatef";
  else if (entry->asks & kReportAsksPeriod) route = "reportperiod";
  else if (entry->asks & (kReportAsksDate | kReportAsksSubject)) route = "reportdate";
  std::string query;
  for (const char* name : {"from", "to", "date", "cfrom", "cto", "customer", "account", "subject", "cons"})
    query += TextArg(name, form.GetParam(name));
  WLRedirect(form, LWebFormat("%s?report=%U", route, std::string(entry->name).c_str()) + query);
}

// ---- Customer statements -------------------------------------------------------------------------

void WLGenerateStatement(LWebletForm& form) {
  LReportRequest request;
  if (QueryRequest(form, request)) ShowReport(form, LReportFind("statement"), std::move(request));
}

// "generatelog?customer=KEY": the statements issued to the customer.
class LWebStatementLogPage : public LWebReportSectionPage {
 public:
  explicit LWebStatementLogPage(LWebletForm& form) : LWebReportSectionPage(form, "Relevés émis") {}
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    std::string customer = form_.GetParam("customer");
    std::vector<LCustomerStatementIssue> issues = LCustomerStatementLog(profile, customer);
    form_.wfprintf("<p class=reportlinks><a href='customstatement?customer=%U' class=actionlink>Nouveau relevé</a> "
                   "<a href='reports' class=actionlink>Tous les rapports</a></p>"
                   "<table class=report id=statementlog><caption>Relevés émis pour %H</caption>"
                   "<thead><tr><th>Émis le</th><th>Du</th><th>Au</th><th>Solde</th><th>Par</th><th>Format</th></tr>"
                   "</thead><tbody>",
                   customer.c_str(), customer.c_str());
    for (const LCustomerStatementIssue& issue : issues) {
      std::string closing = LFormatMoney(issue.closing, profile.GetCurrencyFormat());
      form_.wfprintf("<tr><td>%H</td><td>%H</td><td>%H</td><td class=amount>%H</td><td>%H</td><td>%H</td></tr>",
                     issue.issued.c_str(), issue.from.c_str(), issue.to.c_str(), closing.c_str(), issue.user.c_str(),
                     issue.format.c_str());
    }
    if (issues.empty()) form_.Write("<tr><td colspan=6>Aucun relevé émis pour ce client.</td></tr>");
    form_.Write("</tbody></table>");
  }
};

const LWebletRoute kReportRoutes[] = {
    {"reports", WLWebPageRun<LWebReportsPage>},
    {"generatereport", WLGenerateReport},
    {"generatereportperiod", WLGenerateReportPeriod},
    {"generatereportdate", WLGenerateReportDate},
    {"reportredirect", WLReportRedirect},
    {"generateconsreport", WLGenerateConsolidatedReport},
    {"generateStatement", WLGenerateStatement},
    {"generatelog", WLWebPageRun<LWebStatementLogPage>},
};

}  // namespace

std::string WLReportQuery(const LReportEntry& entry, const LReportRequest& request) {
  std::string query = LWebFormat("report=%U", std::string(entry.name).c_str());
  // The "as at" day defaults to today: it is written only where the report reads it.
  query += DateArg("from", request.from) + DateArg("to", request.to) +
           ((entry.asks & kReportAsksDate) ? DateArg("date", request.date) : std::string()) +
           DateArg("cfrom", request.compareFrom) + DateArg("cto", request.compareTo);
  if (!request.customers.empty()) query += TextArg("customer", request.customers.front());
  query += TextArg("account", request.account) + TextArg("subject", request.subject);
  if (!request.businesses.empty()) {
    std::vector<LWebBusiness> businesses = LWebBusinessList();
    std::string list;
    for (const LProfilesAndRates& chosen : request.businesses)
      for (std::size_t i = 0; i < businesses.size(); ++i)
        if (businesses[i].folder == chosen.databaseName)
          list += LWebFormat("%s%zu=%s", list.empty() ? "" : ",", i, FactorText(chosen.factor).c_str());
    query += TextArg("cons", list);
  }
  return query;
}

bool WLReportRequestFromQuery(LWebletForm& form, LReportRequest& request, std::string& error) {
  if (!ReadDate(form, "from", request.from, error) || !ReadDate(form, "to", request.to, error) ||
      !ReadDate(form, "date", request.date, error) || !ReadDate(form, "cfrom", request.compareFrom, error) ||
      !ReadDate(form, "cto", request.compareTo, error))
    return false;
  if (!request.date.IsValid()) request.date = LDate::Today();
  if (std::string customer = form.GetParam("customer"); !customer.empty()) request.customers = {customer};
  request.account = form.GetParam("account");
  request.subject = form.GetParam("subject");
  return WLReportBusinessesFromQuery(form, request.businesses, error);
}

bool WLReportBusinessesFromQuery(LWebletForm& form, std::vector<LProfilesAndRates>& businesses, std::string& error) {
  return ReadBusinesses(form, form.GetParam("cons"), businesses, error);
}

const LReportEntry* WLReportEntryOf(LWebletForm& form) { return LReportFind(form.GetParam("report")); }

LWebReportSectionPage::LWebReportSectionPage(LWebletForm& form, std::string_view title)
    : LWebPageWithNavTabs(form, kReportsTab) {
  SetTitle(title);
  AddNavLink("reports", "Rapports");
  AddNavLink("logoff", "Déconnexion");
}

LWebReportPage::LWebReportPage(LWebletForm& form, const LReportEntry& entry, LReportRequest request)
    : LWebReportSectionPage(form, entry.title), entry_(entry), request_(std::move(request)) {}

void LWebReportPage::Generate() {
  LProfile profile(WLSessionBusinessFolder(form_));
  LReportTable table;
  std::string error;
  bool built = entry_.build(profile, request_, table, error);
  std::string query = WLReportQuery(entry_, request_);
  form_.Write("<p class=reportlinks>");
  if (entry_.asks != 0)
    form_.wfprintf("<a href='reportredirect?%s' class=actionlink>Modifier les choix</a> ", query.c_str());
  if (!request_.businesses.empty())
    form_.wfprintf("<a href='%s?%s' class=actionlink>Changer d'entreprises</a> ", kConsolidationRoute, query.c_str());
  if (built)
    form_.wfprintf("<a href='generatereport?%s&format=csv' class=actionlink download>Télécharger en CSV</a> "
                   "<a href='generatereport?%s&format=pdf' class=actionlink download>Télécharger en PDF</a> ",
                   query.c_str(), query.c_str());
  if ((entry_.asks & kReportAsksOneCustomer) && !request_.customers.empty())
    form_.wfprintf("<a href='generatelog?customer=%U' class=actionlink>Relevés émis</a> ",
                   request_.customers.front().c_str());
  form_.Write("<a href='reports' class=actionlink>Tous les rapports</a></p>");
  if (!request_.businesses.empty()) WriteConsolidated();
  if (!built) {
    form_.wfprintf("<p class=error id=errorTag>%H</p>", error.c_str());
    return;
  }
  LOptions options;
  options.OpenFrom(profile);
  form_.Write(LReportWriteHtml(table, {profile.GetCurrencyFormat(), options.GetBool("UseParenthesesForNegative", false)}));
}

void LWebReportPage::WriteConsolidated() {
  std::string list;
  for (const LProfilesAndRates& business : request_.businesses) {
    std::string name = LWebCompanyName(business.databaseName);
    list += LWebFormat("<li>%H <span class=factor>× %s</span></li>", name.c_str(), FactorText(business.factor).c_str());
  }
  form_.wfprintf("<div class=consolidated><p>Entreprises consolidées, chaque montant multiplié par son taux :</p>"
                 "<ul id=consolidated>%s</ul></div>",
                 list.c_str());
}

void LAccountsInstallReportPages() {
  LWebletInstallScripts(kReportRoutes);
  LAccountsInstallReportChoosers();
  LAccountsInstallConsolidationPages();
  LAccountsInstallBudgetPages();
  LAccountsInstallVehiclePages();
}
