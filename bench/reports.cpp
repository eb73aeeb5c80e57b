// Financial statements on a big book: 1,000,000 journal lines over ten years (2015 to 2024)
// with the default chart. Times a full-year profit and loss, a balance sheet, and a trial
// balance whose period has partial months at both ends; then ledger-cli's `balance` over the
// same entries and periods, with the ratio of its time to Kontavo's as the counter
// "peer_over_kontavo".
//
// The book is written the way postings leave it, but in bulk: each day's lines are appended to
// its day file in one transaction and the month buckets of every account are summed in memory
// and stored once, since posting a million lines one by one would dominate the run.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <string>

#include "accounts/accounts.h"
#include "accounts/balancesheet.h"
#include "accounts/ledger.h"
#include "accounts/profitandloss.h"
#include "accounts/trialbalance.h"
#include "bench/benchfolder.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/money.h"

namespace {

constexpr long kLines = 1000000;
const LDTPeriod kYear{"2024-01-01", "2024-12-31"};
const LDTPeriod kPartial{"2022-02-10", "2024-04-15"};
const std::string kBalanceDate = "2024-12-31";

struct Book {
  LBenchHome home{"reports"};
  std::unique_ptr<LProfile> profile;
  std::string journal;  // the same entries for ledger-cli

  Book() {
    ::setenv("KONTAVO_COUNTRY", "FR", 1);
    profile = std::make_unique<LProfile>(home.Business());
    LBenchRequire(LAccountListCreateDefault(*profile), "LAccountListCreateDefault");
    std::vector<std::string> postable;
    {
      LAccountList accounts(*profile);
      for (LDataStoreListIterator<LFileStoreDataStore, LAccount> it(accounts); it.IsValid(); it.Next())
        if (!it->IsHeader()) postable.push_back(it->GetNumber());
    }
    journal = home.Path() + "/book.ledger";
    std::ofstream peer(journal);
    std::mt19937 random(1000000);
    std::uniform_int_distribution<std::size_t> account(0, postable.size() - 1);
    std::uniform_int_distribution<long long> amount(1, 500000);
    std::map<std::string, std::map<int, long long>> buckets;
    long first = LDate(2015, 1, 1).DayNumber();
    long days = LDate(2024, 12, 31).DayNumber() - first + 1;
    long pairsPerDay = kLines / 2 / days;
    long extraPairs = kLines / 2 - pairsPerDay * days;  // spread over the first days
    for (long d = 0; d < days; ++d) {
      LDate date = LDate::FromDayNumber(first + d);
      LLedgerTransaction txn(date.ToText(), "GJ" + std::to_string(d + 1), "General");
      long pairs = pairsPerDay + (d < extraPairs ? 1 : 0);
      for (long p = 0; p < pairs; ++p) {
        const std::string& debit = postable[account(random)];
        const std::string& credit = postable[account(random)];
        long long cents = amount(random);
        txn.AddLine(debit, "écriture", cents, "", "", "");
        txn.AddLine(credit, "écriture", -cents, "", "", "");
        buckets[debit][date.MonthIndex()] += cents;
        buckets[credit][date.MonthIndex()] -= cents;
        peer << date.ToText() << " GJ\n    " << debit << "  " << LFormatAmountPlain(cents, 2) << "\n    " << credit
             << "  " << LFormatAmountPlain(-cents, 2) << "\n\n";
      }
      if (!LLedgerTransactionRecord(*profile, txn)) std::fprintf(stderr, "day file %s not written\n", date.ToText().c_str());
    }
    LAccountList accounts(*profile);
    for (const auto& [number, months] : buckets) {
      LAccount record;
      accounts.Open(record, number);
      long long total = record.GetOpeningBalance();
      for (const auto& [monthIndex, cents] : months) {
        record.SetInt64(LAccountBucketField(monthIndex), cents);
        total += cents;
      }
      record.SetInt64("BalanceFirst", months.begin()->first);
      record.SetInt64("TotalBalance", total);
      record.SetBool("IsAccountUsed", true);
      LBenchRequire(record.Flush(), "record.Flush");
    }
  }
};

Book& TheBook() {
  static Book book;
  return book;
}

std::map<std::string, double> kontavoSeconds;  // mean time of each Kontavo report

template <class Report>
void RunKontavo(benchmark::State& state, const char* name, Report report) {
  Book& book = TheBook();
  double seconds = 0;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    LReportTable table;
    benchmark::DoNotOptimize(report(*book.profile, table));
    seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }
  kontavoSeconds[name] = seconds / static_cast<double>(state.iterations());
}

void RunPeer(benchmark::State& state, const char* name, const std::string& period) {
  Book& book = TheBook();
  std::string command = "ledger -f '" + book.journal + "' balance --flat" + period + " > /dev/null";
  double seconds = 0;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    if (std::system(command.c_str()) != 0) state.SkipWithError("ledger failed (is the ledger package installed?)");
    seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }
  double mean = seconds / static_cast<double>(state.iterations());
  if (kontavoSeconds.count(name) != 0 && kontavoSeconds[name] > 0)
    state.counters["peer_over_kontavo"] = mean / kontavoSeconds[name];
}

void BM_KontavoProfitAndLossYear(benchmark::State& state) {
  RunKontavo(state, "pl", [](LProfile& p, LReportTable& t) { return LProfitAndLoss(p, kYear, {}, t); });
}
void BM_KontavoBalanceSheet(benchmark::State& state) {
  RunKontavo(state, "bs", [](LProfile& p, LReportTable& t) { return LBalanceSheet(p, kBalanceDate, {}, t); });
}
void BM_KontavoTrialBalancePartialMonths(benchmark::State& state) {
  RunKontavo(state, "tb", [](LProfile& p, LReportTable& t) { return LTrialBalance(p, kPartial, {}, t); });
}
void BM_PeerProfitAndLossYear(benchmark::State& state) { RunPeer(state, "pl", " -b 2024-01-01 -e 2025-01-01"); }
void BM_PeerBalanceSheet(benchmark::State& state) { RunPeer(state, "bs", " -e 2025-01-01"); }
void BM_PeerTrialBalancePartialMonths(benchmark::State& state) {
  RunPeer(state, "tb", " -b 2022-02-10 -e 2024-04-16");
}

}  // namespace

BENCHMARK(BM_KontavoProfitAndLossYear)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KontavoBalanceSheet)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KontavoTrialBalancePartialMonths)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PeerProfitAndLossYear)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_PeerBalanceSheet)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_PeerTrialBalancePartialMonths)->Unit(benchmark::kMillisecond)->Iterations(2);
