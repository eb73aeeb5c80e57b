// The accounts-receivable aging report over a big sales book: 100,000 recorded invoices of 1,000
// customers, dated over two years, some partly paid, with 30-day, 14-day and one-day terms.
// Times the report for every customer and for ten named ones (the walk over the invoices is the
// same; only the rows differ), and the invoice list of one month for comparison.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <memory>
#include <random>
#include <string>

#include "bench/benchfolder.h"
#include "invoice/shared/agingreport.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "invoice/shared/salesreports.h"

namespace {

constexpr int kInvoices = 100000;
constexpr int kCustomers = 1000;

struct Book {
  LBenchFolder folder{"salesreports"};
  std::unique_ptr<LProfile> profile;
  LDateTime now;

  Book() {
    ::setenv("KONTAVO_HOME", folder.Path().c_str(), 1);
    ::setenv("KONTAVO_COUNTRY", "FR", 1);
    profile = std::make_unique<LProfile>(folder.Path() + "/Shared");
    for (int c = 1; c <= kCustomers; ++c) {
      LRecord customer;
      profile->List("Customers").OpenAlways(customer, "C" + std::to_string(c));
      customer.SetString("Name", "Client " + std::to_string(c));
    }
    std::mt19937 random(100000);
    std::uniform_int_distribution<long> day(0, 729);
    std::uniform_int_distribution<long long> total(1000, 500000);
    std::uniform_int_distribution<int> pick(0, 9);
    long first = LDate(2023, 1, 1).DayNumber();
    const LFileStoreListBase& invoices = profile->MainList("Invoices");
    for (int i = 1; i <= kInvoices; ++i) {
      LInvoice invoice;
      invoices.CreateNewRecord(invoice, std::to_string(i));
      long long amount = total(random);
      invoice.SetString("Customer", "C" + std::to_string(i % kCustomers + 1));
      invoice.SetString("Date", LDate::FromDayNumber(first + day(random)).ToText());
      invoice.SetInt64("Total", amount);
      int kind = pick(random);
      invoice.SetInt64("AmountPaid", kind < 5 ? amount : kind < 7 ? amount / 2 : 0);
      if (kind == 8) invoice.SetInt("PaymentTerms", 1);
      if (kind == 9) invoice.SetInt("PaymentTermsDays", 14);
    }
    now.SetDateTime(124, 12, 31, 23, 59, 59);
  }
};

Book& TheBook() {
  static Book book;
  return book;
}

void BM_AgingEveryCustomer(benchmark::State& state) {
  Book& book = TheBook();
  for (auto _ : state) {
    LReportAccountsReceivableAgingReport report(*book.profile, {}, book.now);
    LReportTable table;
    report.GenerateReport(table);
    benchmark::DoNotOptimize(table.rows.size());
  }
  state.counters["invoices_per_second"] =
      benchmark::Counter(static_cast<double>(kInvoices) * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate);
}

void BM_AgingTenCustomers(benchmark::State& state) {
  Book& book = TheBook();
  std::vector<std::string> customers;
  for (int c = 1; c <= 10; ++c) customers.push_back("C" + std::to_string(c));
  for (auto _ : state) {
    LReportAccountsReceivableAgingReport report(*book.profile, customers, book.now);
    LReportTable table;
    report.GenerateReport(table);
    benchmark::DoNotOptimize(table.rows.size());
  }
}

void BM_InvoicesOfOneMonth(benchmark::State& state) {
  Book& book = TheBook();
  for (auto _ : state) {
    LReportInvoices report(*book.profile, {LDate(2024, 6, 1), LDate(2024, 6, 30), {}});
    LReportTable table;
    report.GenerateReport(table);
    benchmark::DoNotOptimize(table.rows.size());
  }
}

}  // namespace

BENCHMARK(BM_AgingEveryCustomer)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_AgingTenCustomers)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_InvoicesOfOneMonth)->Unit(benchmark::kMillisecond)->Iterations(3);
