// The budget pages: the list ("budgetlist"), a new budget ("budgetnew": name and fiscal year,
// optionally a copy of another budget), the budget's grid ("budgetprop?id=NAME": one line per
// account, twelve months or a yearly figure spread over them) and the delete ("budgetdelete").
// Their report is the report centre's "budget" (chooser "budgetreports").
#include "accounts/webbudgets.h"

#include "accounts/budgets.h"
#include "accounts/webbank.h"
#include "accounts/webreports.h"
#include "invoice/shared/fiscalyear.h"
#include "invoice/shared/profile.h"
#include "llib/gen/log.h"
#include "llib/gen/money.h"
#include "llib/gen/moneybounds.h"
#include "llib/gen/textnum.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/webletroutes.h"
#include "llib/web/weblogon.h"

namespace {

constexpr int kNameControl = 101;
constexpr int kYearControl = 102;
constexpr int kCopyControl = 103;
constexpr int kNewLines = 3;  // empty lines offered under a budget's accounts

constexpr const char* kMonthHeads[] = {"M1", "M2", "M3", "M4", "M5", "M6", "M7", "M8", "M9", "M10", "M11", "M12"};

// ---- "budgetlist" -------------------------------------------------------------------------------

class LWebBudgetsPage : public LWebReportSectionPage {
 public:
  explicit LWebBudgetsPage(LWebletForm& form) : LWebReportSectionPage(form, "Budgets") {}
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    bool mayChange = WLMayChangeData(form_);
    form_.Write("<p class=reportlinks>");
    if (mayChange) form_.Write("<a href='budgetnew' class=actionlink>Nouveau budget</a> ");
    form_.Write("<a href='budgetreports' class=actionlink>Budget et réalisé</a> "
                "<a href='reports' class=actionlink>Tous les rapports</a></p>"
                "<table class=report id=budgets><thead><tr><th>Budget</th><th>Exercice</th><th>Comptes</th>"
                "<th>Total</th><th></th></tr></thead><tbody>");
    std::vector<std::string> names = LBudgetNames(profile);
    for (const std::string& name : names) {
      LBudget budget;
      if (!LBudgetLoad(profile, name, budget)) continue;
      LDTPeriod year = LBudgetPeriod(profile, budget.year);
      std::string total = LFormatMoney(budget.Total(), profile.GetCurrencyFormat());
      std::string actions = LWebFormat("<a href='budgetreports?subject=%U' class=actionlink>Rapport</a>", name.c_str());
      if (mayChange)
        actions += LWebFormat(" <a href='budgetdelete?id=%U' class=deletelink onclick=\"return confirm('%H')\">"
                              "Supprimer</a>",
                              name.c_str(), LJScriptEscape("Supprimer le budget « " + name + " » ?").c_str());
      form_.wfprintf("<tr><td><a href='budgetprop?id=%U'>%H</a></td><td>%H au %H</td><td>%zu</td>"
                     "<td class=amount>%H</td><td>%s</td></tr>",
                     name.c_str(), name.c_str(), year.from.c_str(), year.to.c_str(), budget.lines.size(),
                     total.c_str(), actions.c_str());
    }
    if (names.empty()) form_.Write("<tr><td colspan=5>Aucun budget.</td></tr>");
    form_.Write("</tbody></table>");
  }
};

// ---- "budgetnew" --------------------------------------------------------------------------------

class LWebBudgetNewDialog : public LWebDialogEx {
 public:
  explicit LWebBudgetNewDialog(LWebletForm& form) : LWebDialogEx(form, "budgetnew") {
    SetTitle("Nouveau budget");
    SetCancelPage("budgetlist");
    AddNavLink("budgetlist", "Budgets");
  }
  // The fiscal year in progress, named like every budget by the year it ends in.
  void InitDialog() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    SetText(kYearControl, LFiscalYearOf(profile, LDate::Today()).to.substr(0, 4));
  }
  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    AddInput(kNameControl, "Nom :", GetText(kNameControl), 30);
    AddInput(kYearControl, "Exercice clos en :", GetText(kYearControl), 6);
    std::vector<std::string> names = LBudgetNames(profile);
    names.insert(names.begin(), "");
    AddPullDownList(kCopyControl, "Reprendre les montants de :", names, names, false, {});
  }
  bool CmOk() override {
    if (RefuseViewer()) return false;
    LProfile profile(WLSessionBusinessFolder(form_));
    LBudget budget;
    (void)LBudgetLoad(profile, GetText(kCopyControl), budget);
    budget.name = GetTextAndTrim(kNameControl);
    std::string yearText = GetTextAndTrim(kYearControl);
    budget.year = yearText.find_first_not_of("0123456789") == std::string::npos ? LTextToInt(yearText) : 0;
    std::string error;
    if (!LBudgetSave(profile, budget, false, error)) {
      PopupControlDataInvalid(budget.year == 0 || error.rfind("Exercice", 0) == 0 ? kYearControl : kNameControl, error);
      return false;
    }
    LLogInfo("Le budget \"%s\" a été créé.", budget.name.c_str());
    Redirect(LWebFormat("budgetprop?id=%U", budget.name.c_str()));
    SetAnswerWritten();
    return true;
  }
};

// ---- "budgetprop" -------------------------------------------------------------------------------

// The grid's fields: "a<row>" the account, "y<row>" a yearly figure, "m<row>_<month>" a month.
std::string Field(const char* kind, int row, int month = 0) {
  return month == 0 ? LWebFormat("%s%d", kind, row) : LWebFormat("%s%d_%d", kind, row, month);
}

class LWebBudgetDialog : public LWebDialogEx {
 public:
  explicit LWebBudgetDialog(LWebletForm& form) : LWebDialogEx(form, "budgetprop") {
    SetTitle("Budget");
    SetOkPage("budgetlist");
    SetCancelPage("budgetlist");
    AddNavLink("budgetlist", "Budgets");
    SetControlTableWidth("auto");
  }

  void Generate() override {
    LProfile profile(WLSessionBusinessFolder(form_));
    LBudget budget;
    std::string name = form_.GetParam("id");
    if (!LBudgetLoad(profile, name, budget)) {
      AddRowError(LBudgetNotFoundMessage(name));
      return;
    }
    LDTPeriod year = LBudgetPeriod(profile, budget.year);
    AddHiddenField("id", name);
    AddStaticBold(budget.name + " — exercice du " + year.from + " au " + year.to);
    AddStatic("Un montant annuel est réparti sur les douze mois ; sinon, saisissez chaque mois (M1 est le premier "
              "mois de l'exercice). Videz le compte d'une ligne pour la retirer du budget.");
    std::vector<std::string> texts, values;
    WLAccountChoices(profile, false, texts, values);
    texts.insert(texts.begin(), "");
    values.insert(values.begin(), "");
    int digits = profile.GetCurrencyDigits();
    std::string html = "<tr><td colspan=2><table class=budgetgrid><thead><tr><th>Compte</th><th>Annuel</th>";
    for (const char* head : kMonthHeads) html += LWebFormat("<th>%s</th>", head);
    html += "</tr></thead><tbody>";
    int rows = static_cast<int>(budget.lines.size()) + kNewLines;
    for (int row = 0; row < rows; ++row) {
      const LBudgetLine* line = row < static_cast<int>(budget.lines.size()) ? &budget.lines[row] : nullptr;
      std::string account = form_.GetParam(Field("a", row), line ? line->account : "");
      html += LWebFormat("<tr><td><select id=%s name=%s>", Field("a", row).c_str(), Field("a", row).c_str());
      for (std::size_t i = 0; i < texts.size(); ++i)
        html += LWebFormat("<option value='%H'%s>%H</option>", values[i].c_str(), values[i] == account ? " selected" : "",
                           texts[i].c_str());
      html += LWebFormat("</select></td><td><input id=%s name=%s size=9 value='%H'></td>", Field("y", row).c_str(),
                         Field("y", row).c_str(), form_.GetParam(Field("y", row)).c_str());
      for (int month = 1; month <= 12; ++month) {
        std::string shown = line ? LFormatAmountPlain(line->months[month - 1], digits) : "";
        html += LWebFormat("<td><input id=%s name=%s size=7 value='%H'></td>", Field("m", row, month).c_str(),
                           Field("m", row, month).c_str(), form_.GetParam(Field("m", row, month), shown).c_str());
      }
      html += "</tr>";
    }
    form_.Write(html + "</tbody></table></td></tr>");
    AddHiddenField("rows", std::to_string(rows));
  }

  bool CmOk() override {
    if (RefuseViewer()) return false;
    LProfile profile(WLSessionBusinessFolder(form_));
    LBudget budget;
    if (!LBudgetLoad(profile, form_.GetParam("id"), budget)) {
      PopupBoxError(LBudgetNotFoundMessage(form_.GetParam("id")));
      return false;
    }
    budget.lines.clear();
    int digits = profile.GetCurrencyDigits();
    int rows = LTextToInt(form_.GetParam("rows"));
    for (int row = 0; row < rows; ++row) {
      LBudgetLine line{form_.GetParam(Field("a", row)), {}};
      if (line.account.empty()) continue;
      long long amount = 0;
      if (std::string yearly = form_.GetParam(Field("y", row)); !yearly.empty()) {
        if (!LParseAmount(yearly, digits, amount)) return Refuse(profile, Field("y", row), yearly);
        line.months = LBudgetSpread(amount);
      } else {
        for (int month = 1; month <= 12; ++month) {
          std::string text = form_.GetParam(Field("m", row, month));
          if (!text.empty() && !LParseAmount(text, digits, amount)) return Refuse(profile, Field("m", row, month), text);
          line.months[month - 1] = text.empty() ? 0 : amount;
        }
      }
      budget.lines.push_back(std::move(line));
    }
    std::string error;
    if (!LBudgetSave(profile, budget, true, error)) {
      PopupBoxError(error);
      return false;
    }
    return true;
  }

 private:
  bool Refuse(const LProfile& profile, const std::string& field, const std::string& text) {
    PopupControlDataInvalid(field, LAmountRefusal("", text, text, profile.GetCurrencyFormat()));
    return false;
  }
};

// ---- "budgetdelete" -----------------------------------------------------------------------------

void WLBudgetDelete(LWebletForm& form) {
  if (!WLValidateSession(form) || !AuthenticateEx(form)) return;
  std::string name = form.GetParam("id");
  if (WLMayChangeData(form)) {
    LProfile profile(WLSessionBusinessFolder(form));
    if (LBudgetDelete(profile, name)) LLogInfo("Le budget \"%s\" a été supprimé.", name.c_str());
  }
  WLRedirect(form, "budgetlist");
}

const LWebletRoute kBudgetRoutes[] = {
    {"budgetlist", WLWebPageRun<LWebBudgetsPage>},
    {"budgetnew", WLWebDialogRun<LWebBudgetNewDialog>},
    {"budgetprop", WLWebDialogRun<LWebBudgetDialog>},
    {"budgetdelete", WLBudgetDelete},
};

}  // namespace

void LAccountsInstallBudgetPages() { LWebletInstallScripts(kBudgetRoutes); }
