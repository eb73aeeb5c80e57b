// The report centre of the web access: the page "reports" lists every report of the catalogue
// (accounts/reportcatalog.h) by group; a report is then asked for in a chooser suited to it and
// shown as the HTML table of the shared report table, with links to download it as CSV and PDF. The
// page and `kontavo report` run the same builders, so their figures agree cell for cell.
//
// Routes:
//   reports               the centre
//   reportredirect        ?report=NAME: to the report's chooser (or straight to it when it asks
//                         nothing), the query's choices carried over
//   reportperiod          chooser of one period (and a customer, for the sales reports)
//   reportperiod1         chooser of two periods side by side (the comparison)
//   reportdate            chooser of one "as at" day (and a customer or a bank account)
//   reportdatef           chooser of an end day and an optional first day (trial balance)
//   generatereport        the report of its query: report, from, to, date, cfrom, cto, customer,
//                         account, subject, cons (the businesses consolidated: "INDEX=FACTOR,...",
//                         as LWebBusinessList numbers them); "format=csv" answers the CSV file,
//                         "format=pdf" the PDF of `kontavo report --format pdf`
//   consolreport          the choice of a consolidated report: the report, the businesses the
//                         user may open, each with its factor; then the report's chooser
//   generateconsreport    the consolidated report of its query (as generatereport, "cons" required)
//   generatereportperiod  ?report=NAME&period=CODE: the report over a named period as of today
//                         (accounts/reportperiods.h), a link that stays current
//   generatereportdate    ?report=NAME&when=CODE: the same with a named day
//   customstatement       chooser of a customer's statement (one period, one customer)
//   generateStatement     the statement of its query (customer, from, to); its CSV download is
//                         logged as an issued statement
//   generatelog           ?customer=KEY: the statements issued to the customer
//   budgetreports         chooser of a budget report (the budget, its period); cbudselchange puts
//                         the chosen budget's fiscal year into the dates
//   mileagereports        chooser of the mileage report (a vehicle or every vehicle, the period)
//   getreportitemcount    AJAX of the choosers: how many lines the chosen report has
//   cbrpselchange, cbrpselchangeforcustomers, cbdtselchange, cbdtfselchange
//                         AJAX of the choosers' pull-down lists: the dates of the chosen period,
//                         day or first day put into the date fields
#pragma once

#include <string>

#include "accounts/reportcatalog.h"
#include "invoice/shared/webnavtabs.h"

class LWebletForm;

// The choice of the businesses of a consolidated report and their factors (webconsolidation.cpp).
inline constexpr char kConsolidationRoute[] = "consolreport";

// The query of generatereport for entry and request (dates, customer, account and subject as set;
// consolidated businesses as "cons").
std::string WLReportQuery(const LReportEntry& entry, const LReportRequest& request);

// The request of a query as WLReportQuery writes it: dates not given stay invalid but the "as at"
// day, which defaults to today. false with error (French) for a date that does not read, an
// unknown business or a factor that does not read.
bool WLReportRequestFromQuery(LWebletForm& form, LReportRequest& request, std::string& error);
// The businesses of the request's "cons", each one the session's user may open; false with error
// (French) otherwise.
[[nodiscard]] bool WLReportBusinessesFromQuery(LWebletForm& form, std::vector<LProfilesAndRates>& businesses, std::string& error);
// The entry of the request's "report"; null when it names none.
const LReportEntry* WLReportEntryOf(LWebletForm& form);

// A page of the report centre's section (tab "reports" marked).
class LWebReportSectionPage : public LWebPageWithNavTabs {
 public:
  LWebReportSectionPage(LWebletForm& form, std::string_view title);
};

// The page of one report: its links (change the choices, CSV) and its table; the builder's
// refusal in place of the table when it fails.
class LWebReportPage : public LWebReportSectionPage {
 public:
  LWebReportPage(LWebletForm& form, const LReportEntry& entry, LReportRequest request);
  void Generate() override;

 private:
  // The businesses of a consolidated report, each with its factor.
  void WriteConsolidated();

  const LReportEntry& entry_;
  LReportRequest request_;
};

// The consolidation dialog.
void LAccountsInstallConsolidationPages();
// The report choosers (webreportchoosers.cpp) and their AJAX routes.
void LAccountsInstallReportChoosers();
// Every route of the report centre, choosers included.
void LAccountsInstallReportPages();
