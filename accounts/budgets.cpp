#include "accounts/budgets.h"

#include <algorithm>
#include <set>

#include "accounts/accounts.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/filestorekeys.h"
#include "llib/gen/record.h"
#include "llib/gen/textnum.h"

namespace {

std::string MonthField(std::string_view account, int month) {
  return "Budget" + std::string(account) + "M" + std::to_string(month);
}

}  // namespace

long long LBudget::Total() const {
  long long total = 0;
  for (const LBudgetLine& line : lines)
    for (long long amount : line.months) total += amount;
  return total;
}

LBudgetMonths LBudgetSpread(long long yearly) {
  LBudgetMonths months{};
  long long share = yearly / 12, rest = yearly % 12;  // rest has the sign of yearly
  for (int m = 0; m < 12; ++m) months[m] = share + (m < (rest < 0 ? -rest : rest) ? (rest < 0 ? -1 : 1) : 0);
  return months;
}

bool LBudgetLoad(LProfile& profile, std::string_view name, LBudget& budget) {
  LRecord record;
  if (name.empty() || !profile.MainList(kBudgetsList).Open(record, name)) return false;
  LBudget loaded;
  loaded.name = std::string(name);
  loaded.year = record.GetInt("Year", 0);
  std::string accounts = record.GetString("Accounts");
  for (std::size_t start = 0; start < accounts.size();) {
    std::size_t comma = std::min(accounts.find(',', start), accounts.size());
    LBudgetLine line{accounts.substr(start, comma - start), {}};
    for (int m = 0; m < 12; ++m) line.months[m] = record.GetInt64(MonthField(line.account, m + 1), 0);
    if (!line.account.empty()) loaded.lines.push_back(std::move(line));
    start = comma + 1;
  }
  record.DetachWithoutSave();
  budget = std::move(loaded);
  return true;
}

std::vector<std::string> LBudgetNames(LProfile& profile) {
  return LFileStoreSortedKeys(profile.MainList(kBudgetsList));
}

bool LBudgetSave(LProfile& profile, const LBudget& budget, bool replace, std::string& error) {
  if (budget.name.empty()) {
    error = "Veuillez entrer le nom du budget.";
    return false;
  }
  if (budget.year < 1900 || budget.year > 9999) {
    error = "Exercice invalide : " + std::to_string(budget.year);
    return false;
  }
  std::set<std::string> seen;
  std::string accounts;
  LAccountList chart(profile);
  for (const LBudgetLine& line : budget.lines) {
    LAccount account;
    if (!chart.Open(account, line.account) || account.IsDeleted()) {
      error = LAccountNotInChartMessage(line.account);
      return false;
    }
    bool heading = account.IsHeader();
    account.DetachWithoutSave();
    if (heading) {
      error = "Le compte " + line.account + " est un compte de regroupement : budgétez ses sous-comptes.";
      return false;
    }
    if (!seen.insert(line.account).second) {
      error = "Le compte " + line.account + " figure deux fois dans le budget.";
      return false;
    }
    accounts += (accounts.empty() ? "" : ",") + line.account;
  }
  const LFileStoreListBase& list = profile.MainList(kBudgetsList);
  if (!replace && list.TestRecordExists(budget.name)) {
    error = "Un budget porte déjà ce nom : " + budget.name;
    return false;
  }
  LBudget previous;
  bool existed = LBudgetLoad(profile, budget.name, previous);
  LRecord record;
  (void)list.OpenAlways(record, budget.name);
  record.SetString("Name", budget.name);
  record.SetInt("Year", budget.year);
  record.SetString("Accounts", accounts);
  // The months of an account taken out of the budget go with it.
  for (const LBudgetLine& line : existed ? previous.lines : std::vector<LBudgetLine>())
    if (seen.count(line.account) == 0)
      for (int m = 1; m <= 12; ++m) record.DeleteField(MonthField(line.account, m));
  for (const LBudgetLine& line : budget.lines)
    for (int m = 0; m < 12; ++m) record.SetInt64(MonthField(line.account, m + 1), line.months[m]);
  if (record.Flush()) return true;
  error = "Le budget n'a pas pu être enregistré.";
  return false;
}

std::string LBudgetNotFoundMessage(std::string_view name) { return "Budget introuvable : " + std::string(name); }

bool LBudgetDelete(LProfile& profile, std::string_view name) {
  return !name.empty() && profile.MainList(kBudgetsList).Delete(name);
}

LDTPeriod LBudgetPeriod(LProfile& profile, int year) { return LFiscalYearOf(profile, LDate(year, 1, 1)); }
