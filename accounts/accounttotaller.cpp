#include "accounts/accounttotaller.h"

#include "accounts/ledgerintent.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "accounts/ledgeriterator.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/money.h"
#include "llib/gen/moneybounds.h"

namespace {

constexpr std::size_t kTextLimit = 259;

std::string Cut(std::string text) {
  if (text.size() > kTextLimit) text.resize(kTextLimit);
  return text;
}

std::string DayText(int year, int month, int day) {
  char text[32];
  std::snprintf(text, sizeof text, "%.4d-%.2d-%.2d", year, month, day);
  return text;
}

// Amount times a business's factor, truncated toward zero. The product is whole once truncated: the
// rounding only holds it inside 64 bits (a huge amount or factor converts to no undefined value).
long long Scale(long long amount, double factor) {
  return LRoundHalfAwayFromZero(std::trunc(static_cast<double>(amount) * factor));
}

// The account's contribution from its record: opening balance when the period has no start,
// plus the buckets of the whole months.
long long RecordAmount(const LAccount& account, const LAccountTotalerSplit& split) {
  long long amount = split.includeOpening ? account.GetOpeningBalance() : 0;
  long long first = account.GetInt64("BalanceFirst", split.startIndex);
  if (first <= 0) return amount;
  long long lowest = std::max<long long>(first, split.startIndex);
  for (const LRecordField& field : account.Fields()) {
    int monthIndex = 0;
    if (field.deleted || !LAccountParseBucketField(field.name, monthIndex)) continue;
    if (monthIndex >= lowest && monthIndex <= split.endIndex) amount = LMoneySum(amount, std::strtoll(field.text.c_str(), nullptr, 10));
  }
  return amount;
}

void AddJournalRange(const LProfile& profile, std::string_view from, std::string_view to, double factor,
                     const std::string& filter, LAccountTotalerList& result) {
  if (from.empty()) return;
  LLedgerAccountLineIterator it(profile, from, to);
  for (it.SkipToValidLine(); it.valid; it.SkipToValidLine()) {
    if (!filter.empty() && it.line.account != filter) continue;
    result.AddBalanceToAccount(it.line.account, Scale(it.line.amount, factor));
  }
}

// Totals one business into the result; false when a stop was asked after its accounts.
bool TotalBusiness(LProcessInterface& process, const LProfile& profile, double factor,
                   const LAccountTotalerSplit& split, LAccountTotalerProcess& totaler) {
  LLedgerSettleInterrupted(profile);  // the month buckets read below must match the day files
  LAccountList accounts(profile);
  for (LDataStoreListIterator<LFileStoreDataStore, LAccount> it(accounts); it.IsValid(); it.Next()) {
    const LAccount& account = it.Get();
    LAccountTotalerItem item;
    item.number = Cut(account.GetNumber());
    if (!totaler.filter.empty() && item.number != totaler.filter) continue;
    item.description = Cut(account.GetDescription());
    item.type = account.GetType();
    item.subClass = account.GetSubClass();
    item.classification = account.GetClassification();
    item.header = account.IsHeader();
    item.deleted = account.IsDeleted();
    item.amount = Scale(RecordAmount(account, split), factor);
    totaler.result.AddOrInsert(item);
  }
  if (process.IsToStop()) return false;
  AddJournalRange(profile, split.rangeAFrom, split.rangeATo, factor, totaler.filter, totaler.result);
  AddJournalRange(profile, split.rangeBFrom, split.rangeBTo, factor, totaler.filter, totaler.result);
  return true;
}

bool StartsWith(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && text.compare(0, prefix.size(), prefix) == 0;
}

}  // namespace

void LAccountTotalerList::AddBalanceToAccount(std::string_view number, long long amount) {
  for (auto& item : items_)
    if (item.number == number) {
      item.amount = LMoneySum(item.amount, amount);
      return;
    }
}

void LAccountTotalerList::AddOrInsert(const LAccountTotalerItem& item) {
  auto it = items_.begin();
  for (; it != items_.end() && it->number <= item.number; ++it)
    if (it->number == item.number && it->description == item.description) {
      it->amount = LMoneySum(it->amount, item.amount);
      return;
    }
  items_.insert(it, item);
}

const LAccountTotalerItem* LAccountTotalerList::Find(std::string_view number) const {
  for (const auto& item : items_)
    if (item.number == number) return &item;
  return nullptr;
}

bool LAccountTotalerSplitPeriod(std::string_view from, std::string_view to, LAccountTotalerSplit& split) {
  split = LAccountTotalerSplit{};
  LDate end;
  if (!LDate::Parse(to, end)) return false;
  LDate start;
  if (!from.empty()) {
    if (!LDate::Parse(from, start)) return false;
    split.startIndex = start.MonthIndex();
    if (start.day >= 2) {
      // Day 31 closes any month: day files are compared by name.
      split.startIndex += 1;
      split.rangeAFrom = start.ToText();
      split.rangeATo = DayText(start.year, start.month, 31);
    }
  } else {
    split.includeOpening = true;
  }
  split.endIndex = end.MonthIndex();
  if (end.day != LDaysInMonth(end.year, end.month)) {
    split.endIndex -= 1;
    split.rangeBFrom = DayText(end.year, end.month, 1);
    split.rangeBTo = end.ToText();
  }
  if (!split.rangeAFrom.empty() && !split.rangeBFrom.empty() && split.rangeAFrom > split.rangeBFrom) {
    split.rangeATo = split.rangeBTo;
    split.rangeBFrom.clear();
    split.rangeBTo.clear();
  }
  return true;
}

LProcessResult Process(LProcessInterface& process, LAccountTotalerProcess& totaler) {
  LAccountTotalerSplit split;
  if (!LAccountTotalerSplitPeriod(totaler.from, totaler.to, split)) return kProcessFailed;
  if (process.IsToStop()) return kProcessCancelled;
  if (totaler.businesses.empty())
    return TotalBusiness(process, totaler.profile, 1.0, split, totaler) ? kProcessFinished : kProcessCancelled;
  for (const auto& business : totaler.businesses) {
    LProfile profile(business.databaseName);
    if (!TotalBusiness(process, profile, business.factor, split, totaler)) return kProcessCancelled;
  }
  return kProcessFinished;
}

bool LAccountIsHeaderOf(std::string_view header, std::string_view number) {
  if (header.empty() || StartsWith(number, header)) return false;
  std::size_t kept = header.find_last_not_of('0');
  if (kept == std::string_view::npos) return false;
  return StartsWith(number, header.substr(0, kept + 1));
}

void CalculateSubAccounts(LAccountTotalerProcess& totaler, std::string_view header, long long& total,
                          AccountType type, int subClass, long long multiplier, bool filterSubClass) {
  auto& items = totaler.result.Items();
  for (auto it = items.begin(); it != items.end();) {
    bool inSection = it->type == type && (header.empty() || LAccountIsHeaderOf(header, it->number)) &&
                     (!filterSubClass || it->subClass == subClass);
    if (!inSection) {
      ++it;
      continue;
    }
    if (it->header) {
      // The sub-accounts come after their heading in number order and never include it, so the
      // recursive walk leaves this element in place.
      long long sub = 0;
      std::string number = it->number;
      CalculateSubAccounts(totaler, number, sub, type, subClass, multiplier, true);
      total = LMoneySum(total, sub);
    } else {
      total = LMoneySum(total, it->amount * multiplier);
    }
    it = items.erase(it);
  }
}

void LGetTotalIncomeExpenseProfit(LProfile& profile, const LDTPeriod& period, long long& income,
                                  long long& expense, long long& profit) {
  LAccountTotalerProcess totaler(profile);
  totaler.from = period.from;
  totaler.to = period.to;
  LProcessInterfaceVoid quiet;
  income = expense = profit = 0;
  if (Process(quiet, totaler) != kProcessFinished) return;
  CalculateSubAccounts(totaler, "", income, kAccountIncome, 0, -1, true);
  CalculateSubAccounts(totaler, "", income, kAccountIncome, 1, -1, true);
  for (int subClass = 0; subClass <= 2; ++subClass)
    CalculateSubAccounts(totaler, "", expense, kAccountExpense, subClass, +1, true);
  profit = income - expense;
}

void LGetAssets(LProfile& profile, long long& assets) {
  LAccountTotalerProcess totaler(profile);
  totaler.to = LDate::Today().ToText();
  LProcessInterfaceVoid quiet;
  assets = 0;
  if (Process(quiet, totaler) != kProcessFinished) return;
  CalculateSubAccounts(totaler, "", assets, kAccountAsset, 0, +1, false);
}
