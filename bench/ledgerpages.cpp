// The ledger pages' server time, in process (no socket: the page is written into memory, so the
// figure is the server's work alone): "viewjournal" showing a month of a 1,000,000-line ledger
// (one year of day files, about 83,000 lines a month) a page at a time, narrowed or not to one
// account, and "acclist" with 500 accounts. Each request runs as the web server runs it: session
// loaded from its file, access checked, route handler called.
#include <benchmark/benchmark.h>

#include <string>

#include "accounts/accounts.h"
#include "accounts/ledger.h"
#include "accounts/webpages.h"
#include "bench/benchfolder.h"
#include "bench/benchpages.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/file.h"

namespace {

constexpr long kLedgerLines = 1000000;
constexpr int kLedgerDays = 365;
constexpr int kExtraAccounts = 500;

struct Books {
  LBenchHome home{"ledgerpages"};
  LBenchPages pages;

  Books() {
    LProfile profile(home.Business());
    LOptions options;
    options.OpenFrom(profile);
    options.SetString("CountryCode", "FR");
    LBenchRequire(options.Flush(), "options");
    LBenchRequire(LAccountListCreateDefault(profile), "LAccountListCreateDefault");
    for (int i = 0; i < kExtraAccounts; ++i)
      LBenchRequire(LCreateAccount(profile, std::to_string(7000 + i), "Compte analytique " + std::to_string(i),
                                   kAccountExpense, false, 1, kClassificationNone),
                    "LCreateAccount");
    // The day files written directly, as the ledger writes its rows: two lines a transaction.
    LTextBuffer folder;
    LLegderGetBaseFolder(profile, folder);
    const char* accounts[] = {"6410", "6420", "6510", "4110"};
    long perDay = kLedgerLines / kLedgerDays;
    long reference = 10000;
    for (int day = 0; day < kLedgerDays; ++day) {
      std::string date = LDate(2025, 1, 1).AddDays(day).ToText();
      std::string rows;
      for (long i = 0; i < perDay; i += 2, ++reference) {
        LLedgerTransaction txn(date, "GJ" + std::to_string(reference), "General");
        txn.AddLine(accounts[reference % 4], "Écriture de test", 12345, "bench", "", "");
        txn.AddLine("1110", "Écriture de test", -12345, "bench", "", "");
        for (const auto& line : txn.Lines()) rows += line.BuildCSVRow();
      }
      LBenchRequire(LFile::WriteAllAtomic(std::string(folder) + "/" + date + ".csv", rows), "day file");
    }
    pages.OpenSession(home.Business());
    LAccountsInstallWebPages();
  }
};

Books& TheBooks() {
  static Books books;
  return books;
}

void BM_ViewJournalMonth(benchmark::State& state) {
  Books& books = TheBooks();
  std::string query = "prd=custom&from=2025-06-01&to=2025-06-30";
  if (state.range(0) == 1) query += "&account=6420";
  if (state.range(1) > 1) query += "&page=" + std::to_string(state.range(1));
  std::size_t bytes = 0;
  for (auto _ : state) bytes = books.pages.Get("viewjournal", query);
  state.SetLabel((state.range(0) == 1 ? "one account, " : "every account, ") + std::string("page ") +
                 std::to_string(state.range(1)) + ", " + std::to_string(bytes) + " bytes");
}
BENCHMARK(BM_ViewJournalMonth)->Args({0, 1})->Args({0, 200})->Args({1, 1})->Unit(benchmark::kMillisecond);

void BM_AccountList500(benchmark::State& state) {
  Books& books = TheBooks();
  std::size_t bytes = 0;
  for (auto _ : state) bytes = books.pages.Get("acclist", "");
  state.SetLabel(std::to_string(bytes) + " bytes");
}
BENCHMARK(BM_AccountList500)->Unit(benchmark::kMillisecond);

}  // namespace
