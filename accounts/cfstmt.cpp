#include "accounts/cfstmt.h"

#include "accounts/statementprinter.h"
#include "llib/gen/date.h"

namespace {

bool IsBalanceSheetAccount(const LAccountTotalerItem& item) {
  return item.type == kAccountAsset || item.type == kAccountLiability || item.type == kAccountEquity;
}

// Net income of the totalled period: revenue and other revenue less every expense.
long long NetIncome(LProfile& profile, LAccountTotalerList& totals) {
  LAccountTotalerProcess folding(profile);
  folding.result = std::move(totals);
  long long income = 0;
  long long expense = 0;
  CalculateSubAccounts(folding, "", income, kAccountIncome, 0, -1, true);
  CalculateSubAccounts(folding, "", expense, kAccountExpense, 0, +1, true);
  CalculateSubAccounts(folding, "", expense, kAccountExpense, 1, +1, true);
  CalculateSubAccounts(folding, "", income, kAccountIncome, 1, -1, true);
  CalculateSubAccounts(folding, "", expense, kAccountExpense, 2, +1, true);
  totals = std::move(folding.result);
  return income - expense;
}

// The cash held at the end of the day before the period starts.
bool CashAtStart(LProfile& profile, const LDTPeriod& period, const std::vector<LProfilesAndRates>& businesses,
                 long long& cash) {
  cash = 0;
  if (period.from.empty()) return true;
  LDate from;
  if (!LDate::Parse(period.from, from)) return false;
  LAccountTotalerList before;
  if (!LStatementTotal(profile, LDTPeriod{"", from.AddDays(-1).ToText()}, businesses, before)) return false;
  for (const auto& item : before.Items())
    if (IsBalanceSheetAccount(item) && item.classification == kClassificationNone && !item.header)
      cash += item.amount;
  return true;
}

}  // namespace

long long CalculateAccountsForClassification(LAccountTotalerList& totals, int classification, bool includeZero,
                                             LReportTable& table) {
  long long net = 0;
  auto& items = totals.Items();
  for (auto it = items.begin(); it != items.end();) {
    if (!IsBalanceSheetAccount(*it) || it->header || it->classification != classification) {
      ++it;
      continue;
    }
    long long change = -it->amount;
    if (change != 0 || includeZero)
      table.AddRow(LReportRowKind::kAccount, LStatementAccountLabel(*it), {change}, 1);
    net += change;
    it = items.erase(it);
  }
  return net;
}

bool LCashFlowStatement(LProfile& profile, const LDTPeriod& period, const std::vector<LProfilesAndRates>& businesses,
                        LReportTable& table) {
  LAccountTotalerList totals;
  long long cashAtStart = 0;
  if (!LStatementTotal(profile, period, businesses, totals) || !CashAtStart(profile, period, businesses, cashAtStart))
    return false;
  bool includeZero = LStatementIncludeZero(profile);
  table.title = "État des flux de trésorerie";
  table.subtitle = LStatementPeriodText(period);
  table.columns = {LStatementPeriodText(period)};

  long long netIncome = NetIncome(profile, totals);
  table.AddHeading("ACTIVITÉS D'EXPLOITATION");
  table.AddRow(LReportRowKind::kAccount, "Revenu net", {netIncome}, 1);
  table.AddHeading("Ajustements pour rapprocher le revenu net au net à payer réalisé par l'exploitation :", 1);
  long long operating = netIncome + CalculateAccountsForClassification(totals, kClassificationOperating, includeZero, table);
  table.AddRow(LReportRowKind::kTotal, "Net à payer réalisé par les activités d'exploitation", {operating});

  table.AddHeading("ACTIVITÉS D'INVESTISSEMENT");
  long long investing = CalculateAccountsForClassification(totals, kClassificationInvesting, includeZero, table);
  table.AddRow(LReportRowKind::kTotal, "Net à payer réalisé par les activités d'investissement", {investing});

  table.AddHeading("ACTIVITÉS DE FINANCEMENT");
  long long financing = CalculateAccountsForClassification(totals, kClassificationFinancing, includeZero, table);
  table.AddRow(LReportRowKind::kTotal, "Net à payer réalisé par les activités de financement", {financing});

  long long change = operating + investing + financing;
  table.AddRow(LReportRowKind::kResult, "Net à payer modifié pour la période", {change});
  table.AddRow(LReportRowKind::kResult, "Trésorerie au début de la période", {cashAtStart});
  table.AddRow(LReportRowKind::kResult, "Trésorerie à la fin de la période", {cashAtStart + change});
  return true;
}
