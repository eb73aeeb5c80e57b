// The "report" command: one command line for every report. Each report is a builder that fills
// the shared report table from the open business; the command parses the period options, runs
// the builder and renders the table in the asked format (text, csv, json or html).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/date.h"
#include "llib/gen/reporttable.h"

class LCliContext;
class LProfile;

// What the command line asked of a report; dates not given are left invalid (year 0).
struct LReportRequest {
  LDate from;                          // --from
  LDate to;                            // --to
  LDate date;                          // --date (today when not given)
  LDate compareFrom;                   // --compare-from
  LDate compareTo;                     // --compare-to
  std::vector<std::string> customers;  // --customer KEY...
  std::string consolidate;             // --consolidate B=FACTOR,... as given
  std::string account;                 // --account NUMBER (the reconciliation report)
};

// Fills table; false with error set when the report cannot be made (exit 1, error on stderr).
using LReportBuilder = bool (*)(LCliContext& context, LProfile& profile, const LReportRequest& request,
                                LReportTable& table, std::string& error);

struct LReportEntry {
  std::string_view name;  // "pl", "bs", "aging", ...
  LReportBuilder build;
};

// The reports the command knows, ending with an entry whose build is null.
const LReportEntry* LReportEntries();
