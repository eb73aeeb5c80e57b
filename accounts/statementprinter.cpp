#include "accounts/statementprinter.h"

#include <algorithm>

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"

namespace {

// Takes the item of list that stands for the same account as item (same number and
// description, else the same number) out of list; its amount, 0 when there is none.
long long TakeMatching(LAccountTotalerList& list, const LAccountTotalerItem& item) {
  auto& items = list.Items();
  auto match = std::find_if(items.begin(), items.end(), [&](const LAccountTotalerItem& other) {
    return other.number == item.number && other.description == item.description;
  });
  if (match == items.end())
    match = std::find_if(items.begin(), items.end(),
                         [&](const LAccountTotalerItem& other) { return other.number == item.number; });
  if (match == items.end()) return 0;
  long long amount = match->amount;
  items.erase(match);
  return amount;
}

const LAccountTotalerItem* FindMatching(const LAccountTotalerList& list, const LAccountTotalerItem& item) {
  for (const auto& other : list.Items())
    if (other.number == item.number && other.description == item.description) return &other;
  return list.Find(item.number);
}

}  // namespace

LStatementPrinter::LStatementPrinter(LReportTable& table, std::vector<LAccountTotalerList*> lists, bool includeZero)
    : table_(table), lists_(std::move(lists)), includeZero_(includeZero) {}

bool LStatementPrinter::InSection(const LAccountTotalerItem& item, std::string_view header,
                                  const LStatementSection& section) const {
  return item.type == section.type && (header.empty() || LAccountIsHeaderOf(header, item.number)) &&
         (!section.filterSubClass || item.subClass == section.subClass);
}

bool LStatementPrinter::SubAccountsNonZero(std::string_view header, const LStatementSection& section) const {
  for (const auto& item : lists_.front()->Items()) {
    if (item.header || !InSection(item, header, section)) continue;
    for (const LAccountTotalerList* list : lists_) {
      const LAccountTotalerItem* match = list == lists_.front() ? &item : FindMatching(*list, item);
      if (match != nullptr && match->amount != 0) return true;
    }
  }
  return false;
}

std::vector<std::optional<long long>> LStatementPrinter::Values(const std::vector<long long>& amounts) {
  return {amounts.begin(), amounts.end()};
}

std::vector<long long> LStatementPrinter::PrintSubAccounts(std::string_view header, int indent,
                                                           const LStatementSection& section, bool print) {
  std::vector<long long> totals(lists_.size(), 0);
  auto& items = lists_.front()->Items();
  for (auto it = items.begin(); it != items.end();) {
    if (!InSection(*it, header, section)) {
      ++it;
      continue;
    }
    const LAccountTotalerItem item = *it;
    std::vector<long long> amounts(lists_.size(), 0);
    if (item.header) {
      // A heading shows when something below it does (or zero balances are wanted); its
      // sub-accounts are consumed either way. They follow it in number order and never include
      // it, so this element stays in place meanwhile.
      bool shown = print && (includeZero_ || SubAccountsNonZero(item.number, section));
      if (shown) table_.AddRow(LReportRowKind::kHeading, item.description, {}, indent);
      amounts = PrintSubAccounts(item.number, indent + 1, section, shown);
      if (shown) table_.AddRow(LReportRowKind::kTotal, "Total " + item.description, Values(amounts), indent);
      for (std::size_t c = 1; c < lists_.size(); ++c) TakeMatching(*lists_[c], item);
    } else {
      amounts[0] = item.amount * section.multiplier;
      for (std::size_t c = 1; c < lists_.size(); ++c) amounts[c] = TakeMatching(*lists_[c], item) * section.multiplier;
      bool nonZero = std::any_of(amounts.begin(), amounts.end(), [](long long a) { return a != 0; });
      if (print && (nonZero || includeZero_))
        table_.AddRow(LReportRowKind::kAccount, LStatementAccountLabel(item), Values(amounts), indent);
    }
    for (std::size_t c = 0; c < totals.size(); ++c) totals[c] += amounts[c];
    it = items.erase(it);
  }
  return totals;
}

std::vector<long long> LStatementPrinter::PrintSection(std::string_view heading, std::string_view totalLabel,
                                                       const LStatementSection& section) {
  bool shown = includeZero_ || SubAccountsNonZero("", section);
  if (shown) table_.AddHeading(heading);
  std::vector<long long> totals = PrintSubAccounts("", 1, section, shown);
  if (shown) table_.AddRow(LReportRowKind::kTotal, totalLabel, Values(totals));
  return totals;
}

std::string LStatementAccountLabel(const LAccountTotalerItem& item) { return item.number + " " + item.description; }

bool LStatementIncludeZero(const LProfile& profile) {
  LOptions options;
  options.OpenFrom(profile);
  return options.GetBool("IncludeZeroBalances", false);
}

std::string LStatementPeriodText(const LDTPeriod& period) {
  if (period.from.empty()) return "Jusqu'au " + period.to;
  return "Du " + period.from + " au " + period.to;
}

bool LStatementTotal(LProfile& profile, const LDTPeriod& period, const std::vector<LProfilesAndRates>& businesses,
                     LAccountTotalerList& result) {
  LAccountTotalerProcess totaler(profile);
  totaler.from = period.from;
  totaler.to = period.to;
  totaler.businesses = businesses;
  LProcessInterfaceVoid quiet;
  if (Process(quiet, totaler) != kProcessFinished) return false;
  result = std::move(totaler.result);
  return true;
}
