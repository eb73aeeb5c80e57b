// The journal as the journal view shows it: the lines of the day files in a range of dates, in
// date order and file order, narrowed to one account and one transaction type, read a page at a
// time. Only the lines of the page asked for are read whole; the others are counted, and their
// account and type looked at only when the view is narrowed to them, so a page of a month of a
// large ledger costs little more than reading the month's files.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "accounts/ledger.h"

class LProfile;

struct LJournalViewFilter {
  std::string from;     // first day "YYYY-MM-DD", empty: open
  std::string to;       // last day, empty: open
  std::string account;  // an account number, empty: every account
  std::string type;     // a transaction type ("General", "Paiements", ...), empty: every type
  bool Matches(const LLedgerJournalLine& line) const;
};

struct LJournalViewPage {
  std::vector<LLedgerJournalLine> lines;  // the lines of the page, in journal order
  long long nMatching = 0;                // every line the filter keeps
};

// Reads the matching lines from number offset (0 the first) on, at most limit of them, and
// counts all matching lines. Each day file is read under its shared lock.
void LJournalViewRead(const LProfile& profile, const LJournalViewFilter& filter, long long offset, std::size_t limit,
                      LJournalViewPage& page);
// Calls visit for every matching line, in journal order.
void LJournalViewForEach(const LProfile& profile, const LJournalViewFilter& filter,
                         const std::function<void(const LLedgerJournalLine& line)>& visit);
