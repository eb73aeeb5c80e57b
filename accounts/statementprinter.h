// Laying out a section of a financial statement: the accounts of one type (and sub-class) in
// number order, heading accounts grouping their sub-accounts with a "Total %s" row, into a
// report table with one amount column per totalled period (one for a profit and loss or a
// balance sheet, two for a comparison). Like the folds of the totaller, printing consumes the
// items it visits, so no account appears twice.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "accounts/accounttotaller.h"
#include "llib/gen/reporttable.h"

class LProfile;

// Which accounts a section takes and how their debit-positive amounts turn into its sign.
struct LStatementSection {
  AccountType type;
  int subClass = 0;
  bool filterSubClass = false;
  long long multiplier = 1;
};

class LStatementPrinter {
 public:
  // lists: one totalled list per amount column (items matched by account number); includeZero:
  // the "IncludeZeroBalances" option.
  LStatementPrinter(LReportTable& table, std::vector<LAccountTotalerList*> lists, bool includeZero);

  // Whether an account of the section below header (anywhere in the section when header is
  // empty) has a non-zero amount in some column; headings themselves carry nothing.
  bool SubAccountsNonZero(std::string_view header, const LStatementSection& section) const;
  // Prints the section's accounts below header at indent (the rows are only added when print)
  // and returns the column totals times the multiplier. Consumes every item visited.
  std::vector<long long> PrintSubAccounts(std::string_view header, int indent, const LStatementSection& section,
                                          bool print = true);
  // A whole section: heading row, accounts, total row; left out entirely (but still consumed
  // and totalled) when includeZero is off and no account of it is non-zero.
  std::vector<long long> PrintSection(std::string_view heading, std::string_view totalLabel,
                                      const LStatementSection& section);

  std::size_t Columns() const { return lists_.size(); }
  static std::vector<std::optional<long long>> Values(const std::vector<long long>& amounts);

 private:
  bool InSection(const LAccountTotalerItem& item, std::string_view header, const LStatementSection& section) const;

  LReportTable& table_;
  std::vector<LAccountTotalerList*> lists_;
  bool includeZero_;
};

// "%s %s": account number and description.
std::string LStatementAccountLabel(const LAccountTotalerItem& item);
// The "IncludeZeroBalances" option of the business.
bool LStatementIncludeZero(const LProfile& profile);
// "Du 2024-01-01 au 2024-12-31", or "Jusqu'au 2024-12-31" without a start.
std::string LStatementPeriodText(const LDTPeriod& period);

// Runs the totaller over the period for the open business, or for businesses when not empty.
// false when the dates are not calendar days.
bool LStatementTotal(LProfile& profile, const LDTPeriod& period, const std::vector<LProfilesAndRates>& businesses,
                     LAccountTotalerList& result);
