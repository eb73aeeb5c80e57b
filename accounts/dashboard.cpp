#include "accounts/dashboard.h"

#include "accounts/accounts.h"

std::vector<LDashboardMonth> LDashboardMonths(LProfile& profile, const LDTPeriod& period, const LDate& today) {
  LDate from, to;
  std::vector<LDashboardMonth> months;
  if (!LDate::Parse(period.from, from) || !LDate::Parse(period.to, to) || to < from) return months;
  int first = from.MonthIndex(), last = to.MonthIndex();
  for (int index = first; index <= last; ++index) {
    LDashboardMonth month;
    month.year = index / 12;
    month.month = index % 12 + 1;
    if (index <= today.MonthIndex()) month.cash = 0;
    months.push_back(month);
  }
  LAccountList accounts(profile);
  LAccount account;
  for (const std::string& number : accounts.GetNumbers()) {
    if (!accounts.Open(account, number)) continue;
    int type = account.GetType();
    bool cash = !account.IsHeader() && (type == kAccountAsset || type == kAccountLiability || type == kAccountEquity) &&
                account.GetClassification() == 0;
    if (type == kAccountIncome || type == kAccountExpense) {
      for (const auto& [index, amount] : account.GetMonthBuckets())
        if (index >= first && index <= last) {
          LDashboardMonth& month = months[index - first];
          (type == kAccountIncome ? month.income : month.expense) += type == kAccountIncome ? -amount : amount;
        }
    } else if (cash) {
      // The balance at each month's end: the opening, the buckets before the year, then month by month.
      long long balance = account.GetOpeningBalance();
      std::vector<std::pair<int, long long>> buckets = account.GetMonthBuckets();
      auto bucket = buckets.begin();
      for (LDashboardMonth& month : months) {
        int index = month.year * 12 + month.month - 1;
        for (; bucket != buckets.end() && bucket->first <= index; ++bucket) balance += bucket->second;
        if (month.cash) *month.cash += balance;
      }
    }
    account.DetachWithoutSave();
  }
  return months;
}
