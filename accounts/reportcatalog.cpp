// The report catalogue: each report's name, title, group and the builder that fills its table
// from the request's period and customer choices. Periods not given default to the fiscal year
// of the end date (profit and loss, cash flow) or to everything up to it (trial balance); the end
// date defaults to the request's date.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "accounts/accounts.h"
#include "accounts/accounttotaller.h"
#include "accounts/balancesheet.h"
#include "accounts/budgetreport.h"
#include "accounts/ca3.h"
#include "accounts/cfstmt.h"
#include "accounts/mileagereport.h"
#include "accounts/chartofaccounts.h"
#include "accounts/profitandloss.h"
#include "accounts/reconcile.h"
#include "accounts/reportcatalog.h"
#include "accounts/trialbalance.h"
#include "accounts/vehicles.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/agingreport.h"
#include "invoice/shared/customerstatementreport.h"
#include "invoice/shared/fiscalyear.h"
#include "invoice/shared/inventory.h"
#include "invoice/shared/itemsreport.h"
#include "invoice/shared/salesreports.h"
#include "invoice/shared/vatobligationsreport.h"

namespace {

std::string EndDate(const LReportRequest& request) {
  return (request.to.IsValid() ? request.to : request.date).ToText();
}

// The from day, or the first day of the fiscal year that holds the end date.
LDTPeriod FiscalYearPeriod(LProfile& profile, const LReportRequest& request) {
  LDate end = request.to.IsValid() ? request.to : request.date;
  if (request.from.IsValid()) return {request.from.ToText(), end.ToText()};
  return {LFiscalYearOf(profile, end).from, end.ToText()};
}

constexpr std::string_view kBadPeriod = "Période invalide.";

bool BuildChart(LProfile& profile, const LReportRequest&, LReportTable& table, std::string&) {
  LChartOfAccounts(profile).GenerateReport(table);
  return true;
}

bool BuildProfitAndLoss(LProfile& profile, const LReportRequest& request, LReportTable& table,
                        std::string& error) {
  if (LProfitAndLoss(profile, FiscalYearPeriod(profile, request), request.businesses, table)) return true;
  error = kBadPeriod;
  return false;
}

// The compared period defaults to the same dates one year earlier.
bool BuildProfitAndLossCompare(LProfile& profile, const LReportRequest& request, LReportTable& table,
                               std::string& error) {
  LDTPeriod period = FiscalYearPeriod(profile, request);
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
  if (LProfitAndLossCompare(profile, period, compared, request.businesses, table)) return true;
  error = kBadPeriod;
  return false;
}

bool BuildBalanceSheet(LProfile& profile, const LReportRequest& request, LReportTable& table,
                       std::string& error) {
  if (LBalanceSheet(profile, request.date.ToText(), request.businesses, table)) return true;
  error = kBadPeriod;
  return false;
}

bool BuildTrialBalance(LProfile& profile, const LReportRequest& request, LReportTable& table,
                       std::string& error) {
  LDTPeriod period{request.from.IsValid() ? request.from.ToText() : std::string(), EndDate(request)};
  if (LTrialBalance(profile, period, request.businesses, table)) return true;
  error = kBadPeriod;
  return false;
}

bool BuildCashFlow(LProfile& profile, const LReportRequest& request, LReportTable& table,
                   std::string& error) {
  if (LCashFlowStatement(profile, FiscalYearPeriod(profile, request), request.businesses, table)) return true;
  error = kBadPeriod;
  return false;
}

// The periods of the last successful retrieval from HMRC; nothing to ask of the command line.
bool BuildVatObligations(LProfile& profile, const LReportRequest&, LReportTable& table,
                         std::string&) {
  LReportVatObligations(profile, table);
  return true;
}

// A sales report over the documents dated within the period (each bound open when not given) of the
// chosen customers (every customer when none).
template <class Report>
bool BuildSales(LProfile& profile, const LReportRequest& request, LReportTable& table, std::string&) {
  Report report(profile, {request.from, request.to, request.customers});
  report.GenerateReport(table);
  return true;
}

// The statement of the one customer asked for, over the period (up to the request's date when it
// has no last day; from the first of that month when it has no first day).
bool BuildStatement(LProfile& profile, const LReportRequest& request, LReportTable& table, std::string& error) {
  if (request.customers.size() != 1) {
    error = "Choisissez un client.";
    return false;
  }
  LDate to = request.to.IsValid() ? request.to : request.date;
  LDate from = request.from.IsValid() ? request.from : LStatementDefaultStart(to);
  LCustomerStatement statement;
  if (!LCustomerStatementBuild(profile, request.customers.front(), from, to, statement, error)) return false;
  LCustomerStatementReport(statement, table);
  return true;
}

// The stock at the end of the request's date.
bool BuildInventory(LProfile& profile, const LReportRequest& request, LReportTable& table,
                    std::string&) {
  LReportInventory(profile, request.date).GenerateReport(table);
  return true;
}

bool BuildReorder(LProfile& profile, const LReportRequest&, LReportTable& table, std::string&) {
  LReportReorder(profile).GenerateReport(table);
  return true;
}

bool BuildItemMovements(LProfile& profile, const LReportRequest& request, LReportTable& table,
                        std::string&) {
  LReportItemMovements(profile, request.from, request.to).GenerateReport(table);
  return true;
}

// Invoices are aged as at the last second of the request's date: invoices fall due at
// midnight, so this gives the buckets of any moment of that day after midnight.
bool BuildAging(LProfile& profile, const LReportRequest& request, LReportTable& table, std::string&) {
  LDateTime now;
  now.SetDateTime(request.date.year - 1900, request.date.month, request.date.day, 23, 59, 59);
  LReportAccountsReceivableAgingReport report(profile, request.customers, now);
  report.GenerateReport(table);
  return true;
}

// The French VAT return of the period; without a first day, the calendar quarter of the end date:
// returns are filed by calendar month or quarter whatever the fiscal year.
bool BuildVatCa3(LProfile& profile, const LReportRequest& request, LReportTable& table, std::string&) {
  LDate to = request.to.IsValid() ? request.to : request.date;
  LDate from = request.from.IsValid() ? request.from : LDate(to.year, (to.month - 1) / 3 * 3 + 1, 1);
  LCa3Report(LCa3Compute(profile, from, to), from, to, table);
  return true;
}

// The reconciliation of the request's bank account: the one in progress, else the last finished
// on or before the request's date.
bool BuildReconcile(LProfile& profile, const LReportRequest& request, LReportTable& table,
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

constexpr std::string_view kStatements = "États financiers";
constexpr std::string_view kSales = "Ventes";
constexpr std::string_view kStock = "Articles et stock";
constexpr std::string_view kVat = "TVA";
constexpr std::string_view kBank = "Banque";

constexpr unsigned kSalesAsks = kReportAsksPeriod | kReportAsksCustomers;

// The budget named by the request's subject against the books, over the period (the budget's
// fiscal year when none is given).
bool BuildBudget(LProfile& profile, const LReportRequest& request, LReportTable& table, std::string& error) {
  LBudget budget;
  if (request.subject.empty()) {
    error = "Choisissez un budget.";
    return false;
  }
  if (!LBudgetLoad(profile, request.subject, budget)) {
    error = LBudgetNotFoundMessage(request.subject);
    return false;
  }
  LDTPeriod period = LBudgetPeriod(profile, budget.year);
  if (request.from.IsValid()) period.from = request.from.ToText();
  if (request.to.IsValid()) period.to = request.to.ToText();
  return LBudgetReport(profile, budget, period, table, error);
}

// The trips and allowances of the vehicle named by the request's subject (every vehicle when none)
// over the period (the calendar year of the end date when none is given: the kilometric scale and
// its yearly distance bands run by calendar year whatever the fiscal year).
bool BuildMileage(LProfile& profile, const LReportRequest& request, LReportTable& table, std::string& error) {
  LDate to = request.to.IsValid() ? request.to : request.date;
  LDate from = request.from.IsValid() ? request.from : LDate(to.year, 1, 1);
  return LMileageReport(profile, request.subject, from, to, table, error);
}

constexpr LReportEntry kReports[] = {
    {"pl", "Compte de résultat", kStatements, kReportAsksPeriod | kReportConsolidates, BuildProfitAndLoss},
    {"pl-compare", "Compte de résultat comparatif", kStatements,
     kReportAsksPeriod | kReportAsksComparison | kReportConsolidates, BuildProfitAndLossCompare},
    {"bs", "Bilan", kStatements, kReportAsksDate | kReportConsolidates, BuildBalanceSheet},
    {"tb", "Balance de vérification", kStatements, kReportAsksOptionalFrom | kReportConsolidates, BuildTrialBalance},
    {"cf", "Tableau des flux de trésorerie", kStatements, kReportAsksPeriod | kReportConsolidates, BuildCashFlow},
    {"coa", "Plan comptable", kStatements, 0, BuildChart},
    {"statement", "Relevé de compte client", kSales, kReportAsksPeriod | kReportAsksOneCustomer, BuildStatement, "customstatement"},
    {"aging", "Balance âgée des clients", kSales, kReportAsksDate | kReportAsksCustomers, BuildAging},
    {"unpaid", "Factures impayées", kSales, kSalesAsks, BuildSales<LReportUnpaidInvoices>},
    {"invoices", "Factures", kSales, kSalesAsks, BuildSales<LReportInvoices>},
    {"payments", "Paiements reçus", kSales, kSalesAsks, BuildSales<LReportPayments>},
    {"quotes", "Devis", kSales, kSalesAsks, BuildSales<LReportQuotes>},
    {"orders", "Commandes", kSales, kSalesAsks, BuildSales<LReportOrders>},
    {"customers", "Clients", kSales, kSalesAsks, BuildSales<LReportCustomers>},
    {"customer-sales", "Ventes par client", kSales, kSalesAsks, BuildSales<LReportCustomerSales>},
    {"salesperson", "Ventes par vendeur", kSales, kSalesAsks, BuildSales<LReportSalesPerson>},
    {"items", "Articles vendus", kStock, kSalesAsks, BuildSales<LReportItems>},
    {"items-per-customer", "Articles vendus par client", kStock, kSalesAsks, BuildSales<LReportItemsPerCustomer>},
    {"inventory", "Inventaire", kStock, kReportAsksDate, BuildInventory},
    {"reorder", "Articles à réapprovisionner", kStock, 0, BuildReorder},
    {"movements", "Mouvements de stock", kStock, kReportAsksPeriod, BuildItemMovements},
    {"tva-ca3", "Déclaration de TVA (CA3)", kVat, kReportAsksPeriod, BuildVatCa3},
    {"vat-obligations", "Obligations de TVA (HMRC)", kVat, 0, BuildVatObligations},
    {"budget", "Budget et réalisé", "Budgets", kReportAsksPeriod | kReportAsksSubject, BuildBudget, "budgetreports",
     LBudgetNames, "Budget :"},
    {"mileage", "Indemnités kilométriques", "Kilométrage", kReportAsksPeriod | kReportAsksSubject, BuildMileage,
     "mileagereports", LVehicleKeys, "Véhicule :", "Tous les véhicules"},
    {"reconcile", "Rapprochement bancaire", kBank, kReportAsksDate | kReportAsksAccount, BuildReconcile},
};

}  // namespace

bool LReportParseFactor(std::string_view text, double& factor) {
  std::string number(text);
  if (number.empty() || number.find_first_not_of("0123456789.,-") != std::string::npos) return false;
  if (std::size_t comma = number.find(','); comma != std::string::npos) number[comma] = '.';
  char* end = nullptr;
  factor = std::strtod(number.c_str(), &end);
  return *end == '\0' && std::isfinite(factor);
}

std::span<const LReportEntry> LReportEntries() { return kReports; }

const LReportEntry* LReportFind(std::string_view name) {
  for (const LReportEntry& entry : kReports)
    if (entry.name == name) return &entry;
  return nullptr;
}
