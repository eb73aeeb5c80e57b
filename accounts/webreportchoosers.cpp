// The choosers of the report centre: one dialog, laid out by its route, that asks a report's
// period (reportperiod), two periods (reportperiod1), an "as at" day (reportdate) or an end day
// with an optional first day (reportdatef), with the customer or bank account the report needs.
// Each pull-down of named periods fills the date fields through its AJAX route, and the count of
// the report's lines follows the choices (getreportitemcount). OK shows the report
// (generatereport) with the chosen values in its address. The chooser of a customer's statement
// (customstatement) is the period chooser with exactly one customer; its OK goes to
// generateStatement. A consolidated report's businesses ("cons") pass through the chooser to
// generateconsreport. The chooser of a budget report (budgetreports) asks the budget, whose
// fiscal year fills the period (cbudselchange); that of the mileage report (mileagereports) asks a
// vehicle or every vehicle.
#include <initializer_list>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "accounts/budgets.h"
#include "accounts/reportperiods.h"
#include "accounts/webbank.h"
#include "accounts/webreports.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesreports.h"
#include "invoice/shared/webcustomerchoice.h"
#include "invoice/shared/weblistperiod.h"
#include "llib/gen/textnum.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/webletroutes.h"
#include "llib/web/weblogon.h"

namespace {

// Controls: a pull-down of named choices is followed by the date field(s) it fills.
constexpr int kPeriodChoice = 201;
constexpr int kFrom = 202;
constexpr int kTo = 203;
constexpr int kCustomer = 204;
constexpr int kAccount = 205;
constexpr int kSubject = 206;
constexpr int kCompareChoice = 211;
constexpr int kCompareFrom = 212;
constexpr int kCompareTo = 213;
constexpr int kDateChoice = 221;
constexpr int kDate = 222;
constexpr int kFromChoice = 231;
constexpr int kFromDate = 232;

// The chooser of a customer's statement: one period and exactly one customer.
constexpr char kStatementRoute[] = "customstatement";
// The chooser of a budget report: one period and a budget, whose year fills the period.
constexpr char kBudgetRoute[] = "budgetreports";
// The chooser of the mileage report: one period and a vehicle (or every vehicle).
constexpr char kMileageRoute[] = "mileagereports";

// The report a chooser route is for: its own, or the request's.
const LReportEntry* EntryOf(LWebletForm& form, std::string_view route) {
  if (route == kStatementRoute) return LReportFind("statement");
  if (route == kBudgetRoute) return LReportFind("budget");
  if (route == kMileageRoute) return LReportFind("mileage");
  return WLReportEntryOf(form);
}

enum class Layout { kPeriod, kTwoPeriods, kDate, kDateWithFrom };

Layout LayoutOf(std::string_view route) {
  if (route == "reportperiod1") return Layout::kTwoPeriods;
  if (route == "reportdate") return Layout::kDate;
  if (route == "reportdatef") return Layout::kDateWithFrom;
  return Layout::kPeriod;
}

std::string Param(LWebletForm& form, int id) { return form.GetParam(std::to_string(id)); }

// A chosen date of control id: required unless optional (then empty leaves date invalid).
bool ReadDate(LWebletForm& form, int id, bool optional, LDate& date, int& errorId, std::string& error) {
  std::string text = Param(form, id);
  if (text.empty() && optional) return true;
  if (text.empty()) error = "Veuillez entrer la date.";
  else if (!LDate::Parse(text, date)) error = "Date invalide : " + text + " (AAAA-MM-JJ).";
  else return true;
  errorId = id;
  return false;
}

bool ReadPeriod(LWebletForm& form, int fromId, int toId, LDate& from, LDate& to, int& errorId, std::string& error) {
  if (!ReadDate(form, fromId, false, from, errorId, error) || !ReadDate(form, toId, false, to, errorId, error))
    return false;
  if (from <= to) return true;
  errorId = toId;
  error = "La date de fin précède la date de début.";
  return false;
}

// The request of the chooser's controls for entry laid out as layout; false with the control at
// fault and the French message.
bool ReadChosen(LWebletForm& form, const LReportEntry& entry, Layout layout, LReportRequest& request, int& errorId,
                std::string& error) {
  bool read = true;
  switch (layout) {
    case Layout::kPeriod:
      read = ReadPeriod(form, kFrom, kTo, request.from, request.to, errorId, error);
      break;
    case Layout::kTwoPeriods:
      read = ReadPeriod(form, kFrom, kTo, request.from, request.to, errorId, error) &&
             ReadPeriod(form, kCompareFrom, kCompareTo, request.compareFrom, request.compareTo, errorId, error);
      break;
    case Layout::kDate:
      read = ReadDate(form, kDate, false, request.date, errorId, error);
      break;
    case Layout::kDateWithFrom:
      read = ReadDate(form, kFromDate, true, request.from, errorId, error) &&
             ReadDate(form, kDate, false, request.date, errorId, error);
      request.to = request.date;
      if (read && request.from.IsValid() && request.date < request.from) {
        errorId = kDate;
        error = "La date de fin précède la date de début.";
        read = false;
      }
      break;
  }
  if (!read) return false;
  if (!request.date.IsValid()) request.date = request.to.IsValid() ? request.to : LDate::Today();
  std::string customer = Param(form, kCustomer);
  if ((entry.asks & (kReportAsksCustomers | kReportAsksOneCustomer)) && !customer.empty()) request.customers = {customer};
  if ((entry.asks & kReportAsksOneCustomer) && customer.empty()) {
    errorId = kCustomer;
    error = "Choisissez un client.";
    return false;
  }
  if (entry.asks & kReportAsksSubject) {
    request.subject = Param(form, kSubject);
    if (request.subject.empty() && entry.subjectAll.empty()) {
      errorId = kSubject;
      error = "Faites un choix dans la liste.";
      return false;
    }
  }
  if (entry.asks & kReportAsksAccount) {
    request.account = Param(form, kAccount);
    if (request.account.empty()) {
      errorId = kAccount;
      error = "Veuillez choisir un compte bancaire.";
      return false;
    }
  }
  // A consolidated report carries its businesses through the chooser.
  if ((entry.asks & kReportConsolidates) && !WLReportBusinessesFromQuery(form, request.businesses, error)) {
    errorId = kPeriodChoice;
    return false;
  }
  return true;
}

// The pull-down texts and codes of choices.
void Choices(std::span<const LReportChoice> choices, std::vector<std::string>& texts, std::vector<std::string>& codes) {
  for (const LReportChoice& choice : choices) {
    texts.emplace_back(choice.text);
    codes.emplace_back(choice.code);
  }
}

// The named periods of the lists but "all": a report's period has two ends.
void PeriodChoices(std::vector<std::string>& texts, std::vector<std::string>& codes) {
  for (const LWebNamedPeriod& period : LWebNamedPeriods()) {
    if (std::string_view(period.code) == "all") continue;
    texts.emplace_back(period.text);
    codes.emplace_back(period.code);
  }
}

class LWebReportChooserDialog : public LWebDialogEx {
 public:
  explicit LWebReportChooserDialog(LWebletForm& form, std::string_view route)
      : LWebDialogEx(form, route),
        entry_(EntryOf(form, route)),
        layout_(LayoutOf(route)) {
    SetTitle(entry_ != nullptr ? entry_->title : std::string_view("Rapports"));
    SetOkText("Afficher le rapport");
    SetCancelText("Annuler");
    SetCancelPage("reports");
    AddNavLink("reports", "Rapports");
    AddNavLink("logoff", "Déconnexion");
  }

  void InitDialog() override {
    // The choices of the address (a report's "Modifier les choix"), else the usual periods.
    auto prefill = [&](int choiceId, std::initializer_list<std::pair<int, const char*>> fields,
                       std::string_view fallback) {
      bool given = false;
      for (const auto& [id, parameter] : fields) {
        std::string value = form_.GetParam(parameter);
        SetText(id, value);
        given = given || !value.empty();
      }
      SetText(choiceId, given ? std::string_view("custom") : fallback);
    };
    // The kilometric scale is by calendar year: the mileage report's period is one by default.
    prefill(kPeriodChoice, {{kFrom, "from"}, {kTo, "to"}}, GetRouteName() == kMileageRoute ? "y" : "fy");
    prefill(kCompareChoice, {{kCompareFrom, "cfrom"}, {kCompareTo, "cto"}}, "pfy");
    prefill(kDateChoice, {{kDate, layout_ == Layout::kDateWithFrom ? "to" : "date"}}, "today");
    prefill(kFromChoice, {{kFromDate, "from"}}, "beginning");
    LProfile profile(WLSessionBusinessFolder(form_));
    LDate today = LDate::Today(), from, to;
    if (LReportPeriodOf(profile, GetText(kPeriodChoice), today, from, to)) {
      SetText(kFrom, from.ToText());
      SetText(kTo, to.ToText());
    }
    if (LReportPeriodOf(profile, GetText(kCompareChoice), today, from, to)) {
      SetText(kCompareFrom, from.ToText());
      SetText(kCompareTo, to.ToText());
    }
    if (LReportDateOf(profile, GetText(kDateChoice), today, to)) SetText(kDate, to.ToText());
    if (LReportFromOf(profile, GetText(kFromChoice), today, from)) SetText(kFromDate, from.IsValid() ? from.ToText() : "");
    SetText(kCustomer, form_.GetParam("customer"));
    SetText(kAccount, form_.GetParam("account"));
    SetText(kSubject, form_.GetParam("subject"));
  }

  void Generate() override {
    if (entry_ == nullptr) {
      AddRowError("Ce rapport n'existe pas.");
      return;
    }
    AddHiddenField("report", entry_->name);
    AddHiddenField("chooser", GetRouteName());
    if (std::string businesses = form_.GetParam("cons"); !businesses.empty() && (entry_->asks & kReportConsolidates)) {
      AddHiddenField("cons", businesses);
      AddStatic("Rapport consolidé des entreprises choisies.");
    }
    LProfile profile(WLSessionBusinessFolder(form_));
    if ((entry_->asks & kReportAsksSubject) && entry_->subjects != nullptr) {
      std::vector<std::string> values = entry_->subjects(profile);
      values.insert(values.begin(), "");
      std::vector<std::string> texts = values;
      texts.front() = entry_->subjectAll;
      AddPullDownList(kSubject, entry_->subjectLabel, texts, values, false, {});
      if (entry_->chooser == kBudgetRoute)
        AddJScript(LWebFormat("LAddEventListener(document.getElementById('%d'), 'change', function() "
                              "{ReportChoice('cbudselchange', %d);});\n",
                              kSubject, kSubject));
    }
    switch (layout_) {
      case Layout::kPeriod:
        AddPeriod(kPeriodChoice, kFrom, kTo, "Période :");
        break;
      case Layout::kTwoPeriods:
        AddPeriod(kPeriodChoice, kFrom, kTo, "Période :");
        AddPeriod(kCompareChoice, kCompareFrom, kCompareTo, "Comparée à :");
        break;
      case Layout::kDate:
        AddDate(kDateChoice, kDate, "Au :", LReportDateChoices(), "cbdtselchange");
        break;
      case Layout::kDateWithFrom:
        AddDate(kFromChoice, kFromDate, "Depuis :", LReportFromChoices(), "cbdtfselchange");
        AddDate(kDateChoice, kDate, "Jusqu'au :", LReportDateChoices(), "cbdtselchange");
        break;
    }
    if (entry_->asks & (kReportAsksCustomers | kReportAsksOneCustomer)) {
      std::vector<std::string> texts, values;
      LWebCustomerChoices(profile, texts, values);
      texts.front() = (entry_->asks & kReportAsksOneCustomer) ? "" : "Tous les clients";
      AddPullDownList(kCustomer, "Client :", texts, values, false, {});
    }
    if (entry_->asks & kReportAsksAccount) {
      std::vector<std::string> texts, values;
      WLAccountChoices(profile, true, texts, values);
      AddPullDownList(kAccount, "Compte bancaire :", texts, values, false, {});
    }
    form_.Write("<tr><td colspan=2 class=dlgstatic><span id=itemcount></span></td></tr>");
    AddJScript("function RefreshReportCount() {SimpleAjaxCall('getreportitemcount', GetParams('dialogform'), "
               "HandleAjaxJSReturn);}\n"
               "function ReportChoice(route, id) {SimpleAjaxCall(route, GetParams('dialogform') + 'MainControlId=' + id, "
               "HandleAjaxJSReturn);}\n"
               "LAddEventListener(window, 'onload', RefreshReportCount);\n");
  }

  bool CmOk() override {
    if (entry_ == nullptr) return false;
    LReportRequest request;
    int errorId = 0;
    std::string error;
    if (!ReadChosen(form_, *entry_, layout_, request, errorId, error)) {
      PopupControlDataInvalid(errorId, error);
      return false;
    }
    const char* route = (entry_->asks & kReportAsksOneCustomer) ? "generateStatement?"
                        : request.businesses.empty()             ? "generatereport?"
                                                                 : "generateconsreport?";
    Redirect(route + WLReportQuery(*entry_, request));
    SetAnswerWritten();
    return true;
  }

 private:
  // A pull-down of named choices (route: its AJAX), and the date field it fills.
  void AddChoice(int choiceId, std::string_view label, const std::vector<std::string>& texts,
                 const std::vector<std::string>& codes, const char* route) {
    AddPullDownList(choiceId, label, texts, codes, false, {});
    AddJScript(LWebFormat("LAddEventListener(document.getElementById('%d'), 'change', function() "
                          "{ReportChoice('%s', %d);});\n",
                          choiceId, route, choiceId));
  }
  // A date field: typing in it makes the choice "custom".
  void AddDateField(int choiceId, int dateId, std::string_view label) {
    AddDateInput(dateId, label, GetText(dateId));
    AddJScript(LWebFormat("LAddEventListener(document.getElementById('%d'), 'change', function() "
                          "{document.getElementById('%d').value = 'custom'; RefreshReportCount();});\n",
                          dateId, choiceId));
  }
  void AddPeriod(int choiceId, int fromId, int toId, std::string_view label) {
    bool customers = (entry_->asks & kReportAsksCustomers) != 0;
    std::vector<std::string> texts, codes;
    PeriodChoices(texts, codes);
    AddChoice(choiceId, label, texts, codes, customers ? "cbrpselchangeforcustomers" : "cbrpselchange");
    AddDateField(choiceId, fromId, "Du :");
    AddDateField(choiceId, toId, "Au :");
  }
  void AddDate(int choiceId, int dateId, std::string_view label, std::span<const LReportChoice> choices,
               const char* route) {
    std::vector<std::string> texts, codes;
    Choices(choices, texts, codes);
    AddChoice(choiceId, label, texts, codes, route);
    AddDateField(choiceId, dateId, "Date :");
  }

  const LReportEntry* entry_;
  Layout layout_;
};

// ---- AJAX ---------------------------------------------------------------------------------------

// Script that puts text in the field id.
std::string SetField(int id, std::string_view text) {
  return LWebFormat("document.getElementById('%d').value = '%s';\n", id, LJScriptEscape(text).c_str());
}

constexpr std::string_view kRefreshCount = "if (window.RefreshReportCount) RefreshReportCount();\n";

// Answers the choosers' AJAX calls: true when the caller may write its script.
bool StartAnswer(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return false;
  WLWriteScriptAnswerHeader(form);
  return true;
}

int ChoiceControl(LWebletForm& form) { return LTextToInt(form.GetParam("MainControlId")); }

// The period of the chosen name into the two date fields that follow the pull-down.
void AnswerPeriod(LWebletForm& form, LProfile& profile) {
  int choiceId = ChoiceControl(form);
  LDate from, to;
  if (LReportPeriodOf(profile, Param(form, choiceId), LDate::Today(), from, to))
    form.Write(SetField(choiceId + 1, from.ToText()) + SetField(choiceId + 2, to.ToText()));
}

void VWAJAXPeriodChange(LWebletForm& form) {
  if (!StartAnswer(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  AnswerPeriod(form, profile);
  form.Write(kRefreshCount);
}

// The same, and the customer list narrowed to the customers invoiced in the period (the one
// chosen stays).
void VWAJAXPeriodChangeForCustomers(LWebletForm& form) {
  if (!StartAnswer(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  AnswerPeriod(form, profile);
  int choiceId = ChoiceControl(form);
  LDate from, to;
  std::string chosen = Param(form, kCustomer);
  if (LReportPeriodOf(profile, Param(form, choiceId), LDate::Today(), from, to)) {
    std::vector<std::string> texts, values;
    LWebCustomerChoices(profile, texts, values);
    std::set<std::string> invoiced;
    for (const LSalesReportDocument& invoice : LReportInvoices(profile, {from, to, {}}).Documents("Invoices"))
      invoiced.insert(invoice.customer);
    std::string options = "<option value=''>Tous les clients</option>";
    for (std::size_t i = 1; i < values.size(); ++i)
      if (values[i] == chosen || invoiced.count(values[i]) != 0)
        options += LWebFormat("<option value='%H'%s>%H</option>", values[i].c_str(),
                              values[i] == chosen ? " selected" : "", texts[i].c_str());
    form.Write(LWebFormat("document.getElementById('%d').innerHTML = '%s';\n", kCustomer,
                          LJScriptEscape(options).c_str()));
  }
  form.Write(kRefreshCount);
}

// The chosen budget's fiscal year into the period's dates.
void VWAJAXBudgetChange(LWebletForm& form) {
  if (!StartAnswer(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  LBudget budget;
  if (LBudgetLoad(profile, Param(form, kSubject), budget)) {
    LDTPeriod year = LBudgetPeriod(profile, budget.year);
    form.Write(SetField(kPeriodChoice, kLWebPeriodCustom) + SetField(kFrom, year.from) + SetField(kTo, year.to));
  }
  form.Write(kRefreshCount);
}

void VWAJAXDateChange(LWebletForm& form) {
  if (!StartAnswer(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  int choiceId = ChoiceControl(form);
  LDate date;
  if (LReportDateOf(profile, Param(form, choiceId), LDate::Today(), date)) form.Write(SetField(choiceId + 1, date.ToText()));
  form.Write(kRefreshCount);
}

void VWAJAXFromChange(LWebletForm& form) {
  if (!StartAnswer(form)) return;
  LProfile profile(WLSessionBusinessFolder(form));
  int choiceId = ChoiceControl(form);
  LDate from;
  if (LReportFromOf(profile, Param(form, choiceId), LDate::Today(), from))
    form.Write(SetField(choiceId + 1, from.IsValid() ? from.ToText() : ""));
  form.Write(kRefreshCount);
}

// The number of lines of the report the chooser's values give, into "itemcount"; the reason
// when they give none.
void VWAJAXReportItemCount(LWebletForm& form) {
  if (!StartAnswer(form)) return;
  const LReportEntry* entry = WLReportEntryOf(form);
  if (entry == nullptr) return;
  Layout layout = LayoutOf(form.GetParam("chooser"));
  LReportRequest request;
  int errorId = 0;
  std::string error, text;
  LReportTable table;
  LProfile profile(WLSessionBusinessFolder(form));
  if (!ReadChosen(form, *entry, layout, request, errorId, error) || !entry->build(profile, request, table, error))
    text = error;
  else
    text = table.rows.size() == 1 ? "Le rapport compte 1 ligne." : LWebFormat("Le rapport compte %zu lignes.", table.rows.size());
  form.Write(LWebFormat("document.getElementById('itemcount').textContent = '%s';\n", LJScriptEscape(text).c_str()));
}

template <const char* kRoute>
void WLRunChooser(LWebletForm& form) {
  LWebReportChooserDialog(form, kRoute).Run();
}
constexpr char kPeriodRoute[] = "reportperiod";
constexpr char kTwoPeriodsRoute[] = "reportperiod1";
constexpr char kDateRoute[] = "reportdate";
constexpr char kDateWithFromRoute[] = "reportdatef";

const LWebletRoute kChooserRoutes[] = {
    {kPeriodRoute, WLRunChooser<kPeriodRoute>},
    {kTwoPeriodsRoute, WLRunChooser<kTwoPeriodsRoute>},
    {kDateRoute, WLRunChooser<kDateRoute>},
    {kDateWithFromRoute, WLRunChooser<kDateWithFromRoute>},
    {kStatementRoute, WLRunChooser<kStatementRoute>},
    {kBudgetRoute, WLRunChooser<kBudgetRoute>},
    {kMileageRoute, WLRunChooser<kMileageRoute>},
    {"cbudselchange", VWAJAXBudgetChange},
    {"cbrpselchange", VWAJAXPeriodChange},
    {"cbrpselchangeforcustomers", VWAJAXPeriodChangeForCustomers},
    {"cbdtselchange", VWAJAXDateChange},
    {"cbdtfselchange", VWAJAXFromChange},
    {"getreportitemcount", VWAJAXReportItemCount},
};

}  // namespace

void LAccountsInstallReportChoosers() { LWebletInstallScripts(kChooserRoutes); }
