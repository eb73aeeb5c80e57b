// The reports of "kontavo report": each name and the builder that fills its table from the
// command's period and customer options. Periods not given default to the calendar year of the end date
// (profit and loss, cash flow) or to everything up to it (trial balance); the end date
// defaults to --date, itself today by default.
#include <cstdlib>

#include "accounts/accounts.h"
#include "accounts/accounttotaller.h"
#include "accounts/balancesheet.h"
#include "accounts/ca3.h"
#include "accounts/cfstmt.h"
#include "accounts/chartofaccounts.h"
#include "accounts/profitandloss.h"
#include "accounts/reconcile.h"
#include "accounts/trialbalance.h"
#include "app/cli.h"
#include "app/reportcommand.h"
#include "invoice/shared/agingreport.h"
#include "invoice/shared/inventory.h"
#include "invoice/shared/itemsreport.h"
#include "invoice/shared/salesreports.h"
#include "invoice/shared/vatobligationsreport.h"

namespace {

std::string EndDate(const LReportRequest& request) {
  return (request.to.IsValid() ? request.to : request.date).ToText();
}

// --from, or the first of January of the end date's year.
LDTPeriod YearPeriod(const LReportRequest& request) {
  LDate end = request.to.IsValid() ? request.to : request.date;
  LDate from = request.from.IsValid() ? request.from : LDate(end.year, 1, 1);
  return {from.ToText(), end.ToText()};
}

// --consolidate B=FACTOR,...: businesses as --business names them, factors as decimals.
bool Businesses(const LReportRequest& request, std::vector<LProfilesAndRates>& out, std::string& error) {
  std::string_view rest = request.consolidate;
  while (!rest.empty()) {
    std::size_t comma = rest.find(',');
    std::string_view part = rest.substr(0, comma);
    rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
    std::size_t equals = part.rfind('=');
    std::string factorText(equals == std::string_view::npos ? std::string_view() : part.substr(equals + 1));
    char* end = nullptr;
    double factor = std::strtod(factorText.c_str(), &end);
    LProfilesAndRates business;
    if (equals == std::string_view::npos || factorText.empty() || *end != '\0' ||
        !LCliResolveBusiness(part.substr(0, equals), business.databaseName)) {
      error = "Entreprise ou taux de conversion invalide : " + std::string(part);
      return false;
    }
    business.factor = factor;
    out.push_back(business);
  }
  return true;
}

constexpr std::string_view kBadPeriod = "Période invalide.";

bool BuildChart(LCliContext&, LProfile& profile, const LReportRequest&, LReportTable& table, std::string&) {
  LChartOfAccounts(profile).GenerateReport(table);
  return true;
}

bool BuildProfitAndLoss(LCliContext&, LProfile& profile, const LReportRequest& request, LReportTable& table,
                        std::string& error) {
  std::vector<LProfilesAndRates> businesses;
  if (!Businesses(request, businesses, error)) return false;
  if (LProfitAndLoss(profile, YearPeriod(request), businesses, table)) return true;
  error = kBadPeriod;
  return false;
}

// The compared period defaults to the same dates one year earlier.
bool BuildProfitAndLossCompare(LCliContext&, LProfile& profile, const LReportRequest& request, LReportTable& table,
                               std::string& error) {
  std::vector<LProfilesAndRates> businesses;
  if (!Businesses(request, businesses, error)) return false;
  LDTPeriod period = YearPeriod(request);
  LDate from, to;
  LDate::Parse(period.from, from);
  LDate::Parse(period.to, to);
  auto yearBefore = [](LDate date) {
    date.year -= 1;
    date.day = std::min(date.day, LDaysInMonth(date.year, date.month));
    return date;
  };
  LDTPeriod compared{(request.compareFrom.IsValid() ? request.compareFrom : yearBefore(from)).ToText(),
                     (request.compareTo.IsValid() ? request.compareTo : yearBefore(to)).ToText()};
  if (LProfitAndLossCompare(profile, period, compared, businesses, table)) return true;
  error = kBadPeriod;
  return false;
}

bool BuildBalanceSheet(LCliContext&, LProfile& profile, const LReportRequest& request, LReportTable& table,
                       std::string& error) {
  std::vector<LProfilesAndRates> businesses;
  if (!Businesses(request, businesses, error)) return false;
  if (LBalanceSheet(profile, request.date.ToText(), businesses, table)) return true;
  error = kBadPeriod;
  return false;
}

bool BuildTrialBalance(LCliContext&, LProfile& profile, const LReportRequest& request, LReportTable& table,
                       std::string& error) {
  std::vector<LProfilesAndRates> businesses;
  if (!Businesses(request, businesses, error)) return false;
  LDTPeriod period{request.from.IsValid() ? request.from.ToText() : std::string(), EndDate(request)};
  if (LTrialBalance(profile, period, businesses, table)) return true;
  error = kBadPeriod;
  return false;
}

bool BuildCashFlow(LCliContext&, LProfile& profile, const LReportRequest& request, LReportTable& table,
                   std::string& error) {
  std::vector<LProfilesAndRates> businesses;
  if (!Businesses(request, businesses, error)) return false;
  if (LCashFlowStatement(profile, YearPeriod(request), businesses, table)) return true;
  error = kBadPeriod;
  return false;
}

// The periods of the last successful retrieval from HMRC; nothing to ask of the command line.
bool BuildVatObligations(LCliContext&, LProfile& profile, const LReportRequest&, LReportTable& table,
                         std::string&) {
  LReportVatObligations(profile, table);
  return true;
}

// A sales report over the documents dated from --from to --to (each open when not given) of the
// --customer keys (every customer when none).
template <class Report>
bool BuildSales(LCliContext&, LProfile& profile, const LReportRequest& request, LReportTable& table, std::string&) {
  Report report(profile, {request.from, request.to, request.customers});
  report.GenerateReport(table);
  return true;
}

// The stock at the end of --date (today by default).
bool BuildInventory(LCliContext&, LProfile& profile, const LReportRequest& request, LReportTable& table,
                    std::string&) {
  LReportInventory(profile, request.date).GenerateReport(table);
  return true;
}

bool BuildReorder(LCliContext&, LProfile& profile, const LReportRequest&, LReportTable& table, std::string&) {
  LReportReorder(profile).GenerateReport(table);
  return true;
}

bool BuildItemMovements(LCliContext&, LProfile& profile, const LReportRequest& request, LReportTable& table,
                        std::string&) {
  LReportItemMovements(profile, request.from, request.to).GenerateReport(table);
  return true;
}

// Invoices are aged as at the last second of --date (today by default): invoices fall due at
// midnight, so this gives the buckets of any moment of that day after midnight.
bool BuildAging(LCliContext&, LProfile& profile, const LReportRequest& request, LReportTable& table, std::string&) {
  LDateTime now;
  now.SetDateTime(request.date.year - 1900, request.date.month, request.date.day, 23, 59, 59);
  LReportAccountsReceivableAgingReport report(profile, request.customers, now);
  report.GenerateReport(table);
  return true;
}

// The French VAT return of --from to --to; without --from, the calendar quarter of the end date.
bool BuildVatCa3(LCliContext&, LProfile& profile, const LReportRequest& request, LReportTable& table, std::string&) {
  LDate to = request.to.IsValid() ? request.to : request.date;
  LDate from = request.from.IsValid() ? request.from : LDate(to.year, (to.month - 1) / 3 * 3 + 1, 1);
  LCa3Report(LCa3Compute(profile, from, to), from, to, table);
  return true;
}

// The reconciliation of the bank account --account: the one in progress, else the last finished
// on or before --date.
bool BuildReconcile(LCliContext&, LProfile& profile, const LReportRequest& request, LReportTable& table,
                    std::string& error) {
  if (request.account.empty()) {
    error = "Indiquez le compte bancaire (--account).";
    return false;
  }
  LReconcileState state;
  if (!LReconcileLoad(profile, request.account, request.date.ToText(), state, error)) return false;
  LAccount account;
  (void)LAccountList(profile).Open(account, request.account);
  LReconcileReport(state, account.GetDescription(), table);
  return true;
}

constexpr LReportEntry kReports[] = {
    {"coa", BuildChart},
    {"pl", BuildProfitAndLoss},
    {"pl-compare", BuildProfitAndLossCompare},
    {"bs", BuildBalanceSheet},
    {"tb", BuildTrialBalance},
    {"cf", BuildCashFlow},
    {"vat-obligations", BuildVatObligations},
    {"tva-ca3", BuildVatCa3},
    {"aging", BuildAging},
    {"unpaid", BuildSales<LReportUnpaidInvoices>},
    {"invoices", BuildSales<LReportInvoices>},
    {"payments", BuildSales<LReportPayments>},
    {"quotes", BuildSales<LReportQuotes>},
    {"orders", BuildSales<LReportOrders>},
    {"customers", BuildSales<LReportCustomers>},
    {"customer-sales", BuildSales<LReportCustomerSales>},
    {"items", BuildSales<LReportItems>},
    {"items-per-customer", BuildSales<LReportItemsPerCustomer>},
    {"salesperson", BuildSales<LReportSalesPerson>},
    {"inventory", BuildInventory},
    {"reorder", BuildReorder},
    {"movements", BuildItemMovements},
    {"reconcile", BuildReconcile},
    {{}, nullptr},
};

}  // namespace

const LReportEntry* LReportEntries() { return kReports; }
