// The report catalogue: every report of the business, by name, with its title, its group in the
// report centre, what it asks for (a period, a date, customers, ...) and the builder that fills
// the shared report table from the open business. The command `kontavo report` and the web report
// pages both run the builders of this one table, so a report reads the same wherever it is asked.
//
//     const LReportEntry* entry = LReportFind("pl");
//     LReportRequest request;
//     request.from = LDate(2024, 1, 1);
//     request.to = request.date = LDate(2024, 12, 31);
//     LReportTable table;
//     std::string error;
//     if (!entry->build(profile, request, table, error)) ...;  // error: the French refusal
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "accounts/accounttotaller.h"
#include "llib/gen/date.h"
#include "llib/gen/reporttable.h"

class LProfile;

// What was asked of a report; dates not given are left invalid (year 0).
struct LReportRequest {
  LDate from;                                // first day of the period
  LDate to;                                  // last day of the period
  LDate date;                                // the "as at" day (the caller sets it: today by default)
  LDate compareFrom;                         // the compared period (profit and loss comparison)
  LDate compareTo;
  std::vector<std::string> customers;        // customer keys; empty: every customer
  std::vector<LProfilesAndRates> businesses; // consolidation: businesses and factors; empty: the open one
  std::string account;                       // a bank account number (the reconciliation report)
  std::string subject;                       // the report's own subject: a budget's name, a vehicle's key
};

// Fills table; false with error set (a French message) when the report cannot be made.
using LReportBuilder = bool (*)(LProfile& profile, const LReportRequest& request, LReportTable& table,
                                std::string& error);

// What a report asks of the one who runs it, as bits of LReportEntry::asks.
enum LReportAsks : unsigned {
  kReportAsksPeriod = 1u << 0,      // from and to
  kReportAsksDate = 1u << 1,        // one "as at" day
  kReportAsksComparison = 1u << 2,  // a second period beside the first
  kReportAsksCustomers = 1u << 3,   // a customer selection
  kReportAsksAccount = 1u << 4,     // a bank account
  kReportAsksOptionalFrom = 1u << 5,// an end day and an optional first day (from the beginning)
  kReportAsksSubject = 1u << 6,     // a budget or a vehicle (LReportRequest::subject)
  kReportConsolidates = 1u << 7,    // may total several businesses with factors
  kReportAsksOneCustomer = 1u << 8, // exactly one customer (a customer's statement)
};

// The subjects a report may be asked about (budget names, vehicle keys), in the order offered.
using LReportSubjects = std::vector<std::string> (*)(LProfile& profile);

struct LReportEntry {
  std::string_view name;   // "pl", "bs", "aging", ... as `kontavo report` names it
  std::string_view title;  // the report's name in the report centre
  std::string_view group;  // its group there: "États financiers", "Ventes", ...
  unsigned asks = 0;       // LReportAsks bits
  LReportBuilder build;
  std::string_view chooser = {};     // the web route that asks for it, when it has its own
  LReportSubjects subjects = nullptr;  // with kReportAsksSubject: what may be chosen
  std::string_view subjectLabel = {};  // and the label of that choice ("Budget :")
  std::string_view subjectAll = {};    // when the subject may be left out: what that choice reads
                                       // ("Tous les véhicules"); empty: a subject is required
};

// A consolidation factor as typed: a finite decimal number with "." or "," before its decimals
// ("0.5", "1,25", "2"); false for anything else.
[[nodiscard]] bool LReportParseFactor(std::string_view text, double& factor);

// Every report, grouped: the entries of one group follow each other.
std::span<const LReportEntry> LReportEntries();
// The report of that name; null when none.
const LReportEntry* LReportFind(std::string_view name);
