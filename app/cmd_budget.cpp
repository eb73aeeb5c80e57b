// kontavo budget add NAME --year YYYY [ACCOUNT=AMOUNT[/AMOUNT...12]]... / budget list /
// budget delete NAME: budgets per account and month (accounts/budgets.h). One amount is the
// year's, spread over its twelve months; twelve amounts are the months in order. A budget of an
// existing name is replaced. `report budget NAME` compares it with the books.
#include <nlohmann/json.hpp>
#include <ostream>

#include "accounts/budgets.h"
#include "app/cli.h"
#include "app/cliasker.h"
#include "app/commands.h"
#include "invoice/shared/profile.h"
#include "llib/gen/jsontext.h"
#include "llib/gen/money.h"
#include "llib/gen/textnum.h"

namespace {

// ACCOUNT=AMOUNT or ACCOUNT=AMOUNT/.../AMOUNT (twelve); false with the problem.
bool ParseLine(const LProfile& profile, const std::string& word, LBudgetLine& line, std::string& problem) {
  std::string amounts;
  if (!LCliSplitAssignment(word, line.account, amounts)) {
    problem = "ligne de budget invalide : " + word;
    return false;
  }
  std::vector<long long> parsed;
  for (std::size_t start = 0; start <= amounts.size();) {
    std::size_t slash = std::min(amounts.find('/', start), amounts.size());
    long long amount = 0;
    if (!LParseAmount(amounts.substr(start, slash - start), profile.GetCurrencyDigits(), amount)) {
      problem = LCliBadAmountMessage(profile, amounts.substr(start, slash - start));
      return false;
    }
    parsed.push_back(amount);
    start = slash + 1;
  }
  if (parsed.size() == 1) line.months = LBudgetSpread(parsed[0]);
  else if (parsed.size() == 12) std::copy(parsed.begin(), parsed.end(), line.months.begin());
  else {
    problem = "un montant annuel ou douze montants mensuels : " + word;
    return false;
  }
  return true;
}

int BudgetAdd(LCliContext& context, LProfile& profile, LCliArgs& args) {
  std::string year;
  if (!args.TakeOption("--year", year)) return context.Usage();
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 1)) return kExitUsage;
  if (year.size() != 4 || year.find_first_not_of("0123456789") != std::string::npos)
    return context.Usage("année invalide : " + year);
  LBudget budget{words[0], LTextToInt(year), {}};
  for (std::size_t i = 1; i < words.size(); ++i) {
    LBudgetLine line;
    if (!ParseLine(profile, words[i], line, error)) return context.Usage(error);
    budget.lines.push_back(line);
  }
  if (!LBudgetSave(profile, budget, true, error)) return context.Fail(error);
  return kExitOk;
}

int BudgetList(LCliContext& context, LProfile& profile) {
  nlohmann::json all = nlohmann::json::array();
  for (const std::string& name : LBudgetNames(profile)) {
    LBudget budget;
    if (!LBudgetLoad(profile, name, budget)) continue;
    if (!context.json) {
      context.out << name << "\t" << budget.year << "\t" << budget.lines.size() << "\t"
                  << LFormatAmountPlain(budget.Total(), profile.GetCurrencyDigits()) << "\n";
      continue;
    }
    nlohmann::json lines = nlohmann::json::array();
    for (const LBudgetLine& line : budget.lines) lines.push_back({{"account", line.account}, {"months", line.months}});
    all.push_back({{"name", name}, {"year", budget.year}, {"lines", lines}, {"total", budget.Total()}});
  }
  if (context.json) context.out << LJsonDump(all) << "\n";
  return kExitOk;
}

}  // namespace

int LCmdBudget(LCliContext& context, LCliArgs& args) {
  std::string verb = args.TakeVerb();
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  if (verb == "add") return BudgetAdd(context, *profile, args);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  if (verb == "list" && words.empty()) return BudgetList(context, *profile);
  if (verb == "delete" && words.size() == 1) {
    if (!LBudgetDelete(*profile, words[0])) return context.Fail(LBudgetNotFoundMessage(words[0]));
    return kExitOk;
  }
  return context.Usage();
}
