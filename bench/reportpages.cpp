// The report pages' server time, in process (the page is written into memory, so the figure is
// the server's work alone), on a 1,000,000-line ledger of one year whose month buckets agree
// with its day files: each financial statement page ("generatereport") over a period that ends
// in mid-month (so the totaller reads a half month of day files), a customer's statement
// ("generateStatement") of a customer with 1,000 invoices, and the main page with its charts.
#include <benchmark/benchmark.h>

#include <map>
#include <string>

#include "accounts/accounts.h"
#include "accounts/ledger.h"
#include "accounts/webpages.h"
#include "app/appinstall.h"
#include "app/webmain.h"
#include "bench/benchfolder.h"
#include "bench/benchpages.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/file.h"
#include "llib/gen/record.h"

namespace {

constexpr long kLedgerLines = 1000000;
constexpr int kLedgerDays = 365;
constexpr int kInvoices = 1000;

struct Books {
  LBenchHome home{"reportpages"};
  LBenchPages pages;

  Books() {
    LAppInstall();
    LProfile profile(home.Business());
    LBenchRequire(LAccountListCreateDefault(profile), "LAccountListCreateDefault");
    LRecord company;  // a business with a name: the main page does not send it to the start wizard
    (void)profile.MainList("Misc").OpenAlways(company, "Company");  // false: new, made by the flush
    company.SetString("Name", "Atelier SARL");
    LBenchRequire(company.Flush(), "Company");
    // The day files written directly, as the ledger writes its rows, and each account's month
    // buckets set to their sums, as the posting API would have kept them.
    LTextBuffer folder;
    LLegderGetBaseFolder(profile, folder);
    const char* accounts[] = {"6410", "6420", "4110", "1210"};
    std::map<std::pair<std::string, int>, long long> buckets;
    long perDay = kLedgerLines / kLedgerDays;
    long reference = 10000;
    for (int day = 0; day < kLedgerDays; ++day) {
      LDate date = LDate(2025, 1, 1).AddDays(day);
      std::string rows;
      for (long i = 0; i < perDay; i += 2, ++reference) {
        const char* account = accounts[reference % 4];
        long long amount = account[0] == '6' ? 12345 : -12345;
        LLedgerTransaction txn(date.ToText(), "GJ" + std::to_string(reference), "General");
        txn.AddLine(account, "Écriture de test", amount, "bench", "", "");
        txn.AddLine("1110", "Écriture de test", -amount, "bench", "", "");
        for (const auto& line : txn.Lines()) rows += line.BuildCSVRow();
        buckets[{account, date.MonthIndex()}] += amount;
        buckets[{"1110", date.MonthIndex()}] -= amount;
      }
      LBenchRequire(LFile::WriteAllAtomic(std::string(folder) + "/" + date.ToText() + ".csv", rows), "day file");
    }
    LAccountList chart(profile);
    for (const auto& [key, amount] : buckets) {
      LAccount account;
      LBenchRequire(chart.Open(account, key.first), "account");
      account.SetInt64(LAccountBucketField(key.second), amount);
      if (account.GetInt64("BalanceFirst", key.second) >= key.second) account.SetInt64("BalanceFirst", key.second);
      account.SetInt64("TotalBalance", account.GetInt64("TotalBalance", 0) + amount);
      LBenchRequire(account.Flush(), "account");
    }
    // One customer with a thousand invoices over the year, half of them paid.
    LRecord customer;
    (void)profile.MainList("Customers").OpenAlways(customer, "C1");  // false: new, made by the flush
    customer.SetString("Name", "Client fidèle");
    LBenchRequire(customer.Flush(), "customer");
    for (int i = 1; i <= kInvoices; ++i) {
      LRecord invoice;
      profile.MainList("Invoices").CreateNewRecord(invoice, std::to_string(i));
      invoice.SetString("Customer", "C1");
      invoice.SetString("Date", LDate(2025, 1, 1).AddDays(i * 364 / kInvoices).ToText());
      invoice.SetInt64("Total", 10000 + i);
      invoice.SetInt64("AmountPaid", i % 2 == 0 ? 10000 + i : 0);
      LBenchRequire(invoice.Flush(), "invoice");
    }
    pages.OpenSession(home.Business());
    LAccountsInstallWebPages();
    LWebletInstallScript("main", WLWebPageRun<LWebPageMain>);
  }
};

Books& TheBooks() {
  static Books books;
  return books;
}

const char* const kStatements[] = {"pl", "pl-compare", "bs", "tb", "cf"};

void BM_StatementPage(benchmark::State& state) {
  Books& books = TheBooks();
  std::string name = kStatements[state.range(0)];
  std::string query = "report=" + name + "&from=2025-01-01&to=2025-06-15&date=2025-06-15&cfrom=2025-01-01&cto=2025-03-15";
  std::size_t bytes = 0;
  for (auto _ : state) bytes = books.pages.Get("generatereport", query);
  state.SetLabel(name + ", " + std::to_string(bytes) + " bytes");
}
BENCHMARK(BM_StatementPage)->DenseRange(0, 4)->Unit(benchmark::kMillisecond);

void BM_CustomerStatement1000Invoices(benchmark::State& state) {
  Books& books = TheBooks();
  std::size_t bytes = 0;
  for (auto _ : state) bytes = books.pages.Get("generateStatement", "customer=C1&from=2025-01-01&to=2025-12-31");
  state.SetLabel(std::to_string(bytes) + " bytes");
}
BENCHMARK(BM_CustomerStatement1000Invoices)->Unit(benchmark::kMillisecond);

void BM_MainPageWithCharts(benchmark::State& state) {
  Books& books = TheBooks();
  std::size_t bytes = 0;
  for (auto _ : state) bytes = books.pages.Get("main", "");
  state.SetLabel(std::to_string(bytes) + " bytes");
}
BENCHMARK(BM_MainPageWithCharts)->Unit(benchmark::kMillisecond);

}  // namespace
