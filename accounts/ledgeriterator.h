// Walks every journal line of the day files in a range of dates, file by file in date order
// (the listing is sorted by name, and the names are dates), rows in file order:
//
//     LLedgerAccountLineIterator it(profile, "2024-01-01", "2024-03-31");
//     for (it.SkipToValidLine(); it.valid; it.SkipToValidLine())
//       total += it.line.amount;
//
// Both ends are included and compared as text with the file name without ".csv"; an empty end
// is open. A to date such as "2024-02-31" therefore closes any month. Each file is read under a
// shared lock (5,000 ms) held while the iterator is on it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "accounts/ledger.h"
#include "llib/gen/csv.h"

class LLedgerAccountLineIterator {
 public:
  LLedgerAccountLineIterator(const LProfile& profile, std::string_view from, std::string_view to);

  // Opens the next listed day file in range; false when none is left.
  bool SkipToValidCSVAndOpen();
  // Loads the next row into line and sets valid; when no row is left in any file in range,
  // valid becomes false.
  void SkipToValidLine();

  LLedgerJournalLine line;  // the current line
  bool valid = false;       // line holds a row

  // Where the current line comes from: the day file's name ("2024-03-31.csv"), the row's number
  // in it (1 for the first non-empty line) and its text.
  const std::string& GetFileName() const { return fileName_; }
  long GetRowNumber() const { return rowNumber_; }
  const std::string& GetRowText() const { return rowText_; }
  // Column 7 of the current row as written.
  const std::string& GetAmountText() const { return amountText_; }
  // How many day files the listing holds, and how many of them were looked at so far.
  std::size_t GetFileCount() const { return names_.size(); }
  std::size_t GetFilesPassed() const { return nextName_; }

 private:
  std::string folder_;               // the ledger folder
  std::string from_;                 // first day file name (without ".csv"), empty: open
  std::string to_;                   // last day file name, empty: open
  std::vector<std::string> names_;   // "*.csv" of the folder, sorted
  std::size_t nextName_ = 0;         // next entry of names_ to look at
  LCSVFileReader reader_;            // the open day file
  bool open_ = false;                // reader_ is on a file
  std::string fileName_;
  long rowNumber_ = 0;
  std::string rowText_;
  std::string amountText_;
};
