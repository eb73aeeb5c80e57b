// Backup and restore of a large business: 50,000 record files in ten lists and 3,650 ledger day
// files (ten years), generated once in a temporary folder. Measured in the same run: "cp -a" of
// the same tree, "cp -a" followed by "sync" (the fair yardstick: a backup or restore counts as
// done only once its copy is on the disk), "kontavo backup" and "kontavo restore" (their copies
// run in a worker process). Every pass starts after a "sync", so that no pass pays for the
// writes of the one before. One pass each (a pass takes tens of seconds on a busy machine);
// compare the figures of one run with each other. Nothing is asserted.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/benchfolder.h"
#include "llib/gen/file.h"

namespace {

constexpr int kLists = 10;
constexpr int kRecordsPerList = 5000;
constexpr int kDayFiles = 3650;

void WriteSmallFile(const std::string& path, const std::string& content) {
  int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) return;
  bool written = LRobustWrite(fd, content.data(), content.size());
  ::close(fd);
  if (!written) std::abort();  // a benchmark over a half-written business measures nothing
}

// The application folder of the benchmark: "Shared" with the business, "drive" for backups.
class Fixture {
 public:
  Fixture() {
    if (home_.Path().empty()) return;
    std::string shared = Shared();
    LFile::MakeFolder(shared);
    LFile::MakeFolder(shared + "/Misc");
    WriteSmallFile(shared + "/Misc/Options.dat", "Init=1&CurrencySymbol=%E2%82%AC");
    for (int list = 0; list < kLists; ++list) {
      std::string folder = shared + "/List" + std::to_string(list);
      LFile::MakeFolder(folder);
      for (int key = 1; key <= kRecordsPerList; ++key)
        WriteSmallFile(folder + "/" + std::to_string(key) + ".dat",
                       "Name=Client%20" + std::to_string(key) + "&Balance=123456&City=Lyon");
    }
    LFile::MakeFolder(shared + "/Ledger");
    for (int day = 0; day < kDayFiles; ++day) {
      char name[32];
      std::snprintf(name, sizeof name, "/Ledger/%04d-%02d-%02d.csv", 2015 + day / 365, day % 365 / 31 + 1,
                    day % 31 + 1);
      WriteSmallFile(shared + name, "2015-01-01,SLS10000,Recettes,4110,Vente,-1000,user,,1\r\n"
                                    "2015-01-01,SLS10000,Recettes,1210,Vente,1000,user,,1\r\n");
    }
    LFile::MakeFolder(Drive());
  }
  std::string Shared() const { return home_.Business(); }
  std::string Drive() const { return home_.Path() + "/drive"; }
  const std::string& Home() const { return home_.Path(); }

 private:
  LBenchHome home_{"backup"};
};

Fixture& TheFixture() {
  static Fixture fixture;
  return fixture;
}

int Run(const std::string& command) { return std::system(command.c_str()); }

// Flushes what earlier passes wrote, outside the measured time.
void StartClean(benchmark::State& state) {
  state.PauseTiming();
  Run("sync");
  state.ResumeTiming();
}

void BM_CpA(benchmark::State& state) {
  Fixture& f = TheFixture();
  const bool thenSync = state.range(0) != 0;
  for (auto _ : state) {
    StartClean(state);
    Run("cp -a '" + f.Shared() + "' '" + f.Drive() + "/cp'" + (thenSync ? " && sync" : ""));
    state.PauseTiming();
    LFile::RemoveTree(f.Drive() + "/cp");
    state.ResumeTiming();
  }
}
BENCHMARK(BM_CpA)->ArgName("sync")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

void BM_KontavoBackup(benchmark::State& state) {
  Fixture& f = TheFixture();
  for (auto _ : state) {
    StartClean(state);
    Run(std::string(KONTAVO_BIN) + " backup '" + f.Drive() + "' > '" + f.Home() + "/last' 2>/dev/null");
    state.PauseTiming();
    LFile::RemoveTree(f.Drive());
    LFile::MakeFolder(f.Drive());
    state.ResumeTiming();
  }
}
BENCHMARK(BM_KontavoBackup)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

void BM_KontavoRestore(benchmark::State& state) {
  Fixture& f = TheFixture();
  std::string backup = f.Home() + "/backup";
  Run("cp -a '" + f.Shared() + "' '" + backup + "'");
  for (auto _ : state) {
    StartClean(state);
    Run(std::string(KONTAVO_BIN) + " --yes restore '" + backup + "' > /dev/null 2>&1");
  }
}
BENCHMARK(BM_KontavoRestore)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

}  // namespace
