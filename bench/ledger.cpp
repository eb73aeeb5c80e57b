// Posting and checking throughput.
//   - Balanced two-line transactions posted per second through LAccountTransactionRecord into a
//     business with the default chart: each posting takes the ledger lock, appends two rows to a
//     day file under its lock, and reads, changes and rewrites two account records.
//   - The bare file work of one posting, in the same run: an append of two rows under flock to
//     the same day file as that posting (created by the first posting of its day, as a posting
//     creates it), and a read-rewrite-truncate of two small files. The ratio of the two rates is the cost of
//     everything else (paths, parsing, record merging, the ledger lock).
//   - Opening the books: the look for interrupted postings that every command makes, with nothing
//     to settle, and with a posting interrupted between its rows and its balances.
//   - The time of `kontavo check` over 1,000,000 journal lines spread over ten years of day
//     files (generated once, in a temporary folder).
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "accounts/accounts.h"
#include "bench/benchfolder.h"
#include "accounts/ledger.h"
#include "accounts/ledgerintent.h"
#include "accounts/ledgerlock.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/file.h"

namespace {

// Posting number i: a rent of 123.45 on one of the days of 2024.
LLedgerTransaction Rent(long i) {
  LLedgerTransaction txn(LDate(2024, 1, 1).AddDays(i % 365).ToText(), "GJ" + std::to_string(10000 + i), "General");
  txn.AddLine("6410", "Loyer", 12345, "bench", "", "");
  txn.AddLine("1110", "Loyer", -12345, "bench", "", "");
  return txn;
}

void BM_PostBalancedTransaction(benchmark::State& state) {
  LBenchHome home("ledger");
  LProfile profile(home.Business());
  LBenchRequire(LAccountListCreateDefault(profile), "LAccountListCreateDefault");
  long i = 0;
  for (auto _ : state) {
    if (!LAccountTransactionRecord(profile, Rent(i))) state.SkipWithError("posting failed");
    ++i;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_PostBalancedTransaction)->Unit(benchmark::kMicrosecond);

void RewriteSmallFile(const std::string& path) {
  int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  ::flock(fd, LOCK_EX);
  char buffer[4096];
  ssize_t n = ::read(fd, buffer, sizeof buffer);
  std::string text(buffer, n > 0 ? static_cast<std::size_t>(n) : 0);
  text += "x";
  if (text.size() > 600) text.resize(300);
  ::lseek(fd, 0, SEEK_SET);
  if (::write(fd, text.data(), text.size()) < 0) std::abort();
  if (::ftruncate(fd, static_cast<off_t>(text.size())) != 0) std::abort();
  ::close(fd);
}

void BM_BareFileOperations(benchmark::State& state) {
  LBenchHome home("ledger");
  LProfile profile(home.Business());
  LTextBuffer folder;
  LLegderGetBaseFolder(profile, folder);
  std::string first = home.Path() + "/a.dat", second = home.Path() + "/b.dat";
  // The day files and rows of the postings above, so that each day file is created where a
  // posting creates it.
  std::vector<std::pair<std::string, std::string>> days;
  for (long i = 0; i < 365; ++i) {
    LLedgerTransaction txn = Rent(i);
    std::string rows;
    for (const auto& line : txn.Lines()) rows += line.BuildCSVRow();
    days.emplace_back(LFile::MakeFilePath(folder, txn.GetDate() + ".csv"), std::move(rows));
  }
  long i = 0;
  for (auto _ : state) {
    const auto& [day, rows] = days[static_cast<std::size_t>(i++ % 365)];
    int fd = ::open(day.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    ::flock(fd, LOCK_EX);
    ::lseek(fd, 0, SEEK_END);
    if (::write(fd, rows.data(), rows.size()) < 0) std::abort();
    ::close(fd);
    RewriteSmallFile(first);
    RewriteSmallFile(second);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_BareFileOperations)->Unit(benchmark::kMicrosecond);

// What every command pays before it answers: one look for interrupted changes.
void BM_OpenBooksNothingToSettle(benchmark::State& state) {
  LBenchHome home("ledger");
  LProfile profile(home.Business());
  LBenchRequire(LAccountListCreateDefault(profile), "LAccountListCreateDefault");
  for (auto _ : state) LLedgerSettleInterrupted(profile);
}
BENCHMARK(BM_OpenBooksNothingToSettle)->Unit(benchmark::kMicrosecond);

// Leaves txn as a posting killed after its audit entry and rows and before its balances leaves
// it: a child process takes the ledger lock, writes the intent, the entry and the rows, and ends
// there, its lock going with it. The intent must be written under the lock, where every posting
// writes it: written without it, it would be taken for a posting that went on past the lock's wait.
void LeaveInterruptedPosting(const LProfile& profile, const LLedgerTransaction& txn) {
  pid_t child = ::fork();
  if (child == 0) {
    LLedgerLock lock(profile);
    LTextBuffer day;
    std::string text;
    if (!lock.Locked() || !LLedgerGetCSVFilePath(profile, day, txn.GetDate())) ::_exit(1);
    long long size = LFile::ReadAll(std::string(day), text) ? static_cast<long long>(text.size()) : 0;
    std::string rows;
    for (const auto& line : txn.Lines()) rows += line.BuildCSVRow();
    LLedgerIntent intent(profile);
    intent.AddTransaction(txn, +1);
    bool left = intent.BeginPosting(txn, size, rows) && intent.RecordInTrail() && LLedgerTransactionRecord(profile, txn);
    ::_exit(left ? 0 : 1);
  }
  int status = 0;
  LBenchRequire(child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0,
                "interrupted posting");
}

// A posting killed between its rows and its balances, then settled by the next opening of the
// books (its balances completed from the intent). There is never more than one to settle: the
// intent lives in the ledger lock file, and whoever takes the lock settles it before posting
// anything else; so the cost after 1,000 interrupted postings is 1,000 times this one.
void BM_OpenBooksAfterAnInterruptedPosting(benchmark::State& state) {
  LBenchHome home("ledger");
  LProfile profile(home.Business());
  LBenchRequire(LAccountListCreateDefault(profile), "LAccountListCreateDefault");
  long i = 0;
  for (auto _ : state) {
    state.PauseTiming();
    LeaveInterruptedPosting(profile, Rent(i++));
    state.ResumeTiming();
    LLedgerSettleInterrupted(profile);
  }
}
BENCHMARK(BM_OpenBooksAfterAnInterruptedPosting)->Unit(benchmark::kMicrosecond);

// Ten years of day files, 1,000,000 lines in all, posted to eight accounts; the balances are
// then fixed once so that the timed check finds nothing to report.
void BM_CheckOneMillionLines(benchmark::State& state) {
  LBenchHome home("ledger");
  {
    LProfile profile(home.Business());
    LBenchRequire(LAccountListCreateDefault(profile), "LAccountListCreateDefault");
    LTextBuffer folder;
    LLegderGetBaseFolder(profile, folder);
    const char* accounts[] = {"1110", "1120", "1210", "2210", "4110", "6110", "6410", "6420"};
    constexpr long kLines = 1000000;
    LDate first(2015, 1, 1);
    long nDays = LDate(2025, 1, 1).DayNumber() - first.DayNumber();
    long perDay = kLines / nDays + 1;
    long written = 0;
    for (long d = 0; d < nDays && written < kLines; ++d) {
      std::string date = first.AddDays(d).ToText();
      std::string text;
      for (long j = 0; j + 1 < perDay + 1 && written < kLines; j += 2) {
        LLedgerTransaction txn(date, "GJ" + std::to_string(written), "General");
        long long amount = 100 + written % 9999;
        txn.AddLine(accounts[written % 8], "Écriture", amount, "bench", "", "");
        txn.AddLine(accounts[(written + 3) % 8], "Écriture", -amount, "bench", "", "");
        for (const auto& line : txn.Lines()) text += line.BuildCSVRow();
        written += 2;
      }
      int fd = ::open(LFile::MakeFilePath(folder, date + ".csv").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
      if (::write(fd, text.data(), text.size()) < 0) std::abort();
      ::close(fd);
    }
    state.counters["lines"] = static_cast<double>(written);
  }
  std::string fixCommand = std::string(KONTAVO_BIN) + " check --fix >/dev/null";
  if (std::system(fixCommand.c_str()) != 0) state.SkipWithError("check --fix failed");
  std::string checkCommand = std::string(KONTAVO_BIN) + " check";
  for (auto _ : state) {
    int status = std::system(checkCommand.c_str());
    if (status != 0) state.SkipWithError("check found differences");
  }
}
BENCHMARK(BM_CheckOneMillionLines)->Unit(benchmark::kSecond)->Iterations(1)->UseRealTime();

}  // namespace
