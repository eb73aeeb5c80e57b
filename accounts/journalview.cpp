#include "accounts/journalview.h"

#include <algorithm>

#include "llib/gen/csv.h"
#include "llib/gen/file.h"

namespace {

// Columns 3 (type) and 4 (account) of a row, read without copying the others.
void PeekTypeAndAccount(std::string_view row, std::string& type, std::string& account) {
  LCSVReaderRow columns(row);
  columns.GetCol();
  columns.GetCol();
  columns.GetCol(type);
  columns.GetCol(account);
}

// The day files of the range, in date order.
std::vector<std::string> DayFiles(const LProfile& profile, const LJournalViewFilter& filter, std::string& folder) {
  LTextBuffer base;
  LLegderGetBaseFolder(profile, base);
  folder = base;
  std::vector<std::string> names;
  for (std::string& name : LFile::ListFolder(folder)) {
    if (name.size() != 14 || name.compare(10, 4, ".csv") != 0) continue;
    std::string_view day(name.data(), 10);
    if ((!filter.from.empty() && day < filter.from) || (!filter.to.empty() && day > filter.to)) continue;
    names.push_back(std::move(name));
  }
  std::sort(names.begin(), names.end());
  return names;
}

// Walks the matching rows: wanted(index) says whether the row numbered index among the matching
// ones is to be read whole, then take(line) gets it.
void Walk(const LProfile& profile, const LJournalViewFilter& filter, long long& nMatching,
          const std::function<bool(long long index)>& wanted, const std::function<void(LLedgerJournalLine&)>& take) {
  std::string folder;
  bool narrowed = !filter.account.empty() || !filter.type.empty();
  std::string type, account;
  for (const std::string& name : DayFiles(profile, filter, folder)) {
    for (LCSVFileReader reader(folder + "/" + name, kLedgerIterateLockTimeoutMs); reader.HasRow(); reader.Next()) {
      if (narrowed) {
        PeekTypeAndAccount(reader.GetLine(), type, account);
        if ((!filter.type.empty() && type != filter.type) || (!filter.account.empty() && account != filter.account))
          continue;
      }
      if (wanted(nMatching)) {
        LLedgerJournalLine line;
        line.LoadFromCSVRow(reader.GetLine());
        take(line);
      }
      ++nMatching;
    }
  }
}

}  // namespace

bool LJournalViewFilter::Matches(const LLedgerJournalLine& line) const {
  return (from.empty() || line.date >= from) && (to.empty() || line.date <= to) &&
         (account.empty() || line.account == account) && (type.empty() || line.type == type);
}

void LJournalViewRead(const LProfile& profile, const LJournalViewFilter& filter, long long offset, std::size_t limit,
                      LJournalViewPage& page) {
  page = LJournalViewPage();
  long long end = offset + static_cast<long long>(limit);
  Walk(profile, filter, page.nMatching, [&](long long index) { return index >= offset && index < end; },
       [&](LLedgerJournalLine& line) { page.lines.push_back(std::move(line)); });
}

void LJournalViewForEach(const LProfile& profile, const LJournalViewFilter& filter,
                         const std::function<void(const LLedgerJournalLine& line)>& visit) {
  long long nMatching = 0;
  Walk(profile, filter, nMatching, [](long long) { return true; }, [&](LLedgerJournalLine& line) { visit(line); });
}
