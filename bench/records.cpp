// Record store throughput: saves and loads in a list of 10,000 records, and the cost of a new
// key when the first free number is found by probing from 1.
#include <benchmark/benchmark.h>

#include <string>

#include "bench/benchfolder.h"
#include "llib/gen/filestore.h"

namespace {

constexpr int kRecords = 10000;

// A business folder whose "Customers" list holds kRecords records.
struct Fixture {
  LBenchFolder folder{"records"};
  LFileStoreDataStore store{folder.Path()};
  LFileStoreListBase list{store, "Customers"};
  Fixture() {
    for (int i = 1; i <= kRecords; ++i) {
      LRecord record;
      list.CreateNewRecord(record, std::to_string(i));
      record.SetString("Name", "Client " + std::to_string(i));
      record.SetString("Address", "12 rue de la Paix, 75002 Paris");
      record.SetInt64("Balance", i * 100LL);
    }
  }
};

Fixture& Shared() {
  static Fixture fixture;
  return fixture;
}

void BM_SaveRecord(benchmark::State& state) {
  Fixture& f = Shared();
  int i = 0;
  for (auto _ : state) {
    LRecord record;
    f.list.OpenAlways(record, std::to_string(i++ % kRecords + 1));
    record.SetInt64("Balance", i);
    benchmark::DoNotOptimize(record.Flush());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SaveRecord);

void BM_LoadRecord(benchmark::State& state) {
  Fixture& f = Shared();
  int i = 0;
  for (auto _ : state) {
    LRecord record;
    benchmark::DoNotOptimize(f.list.Open(record, std::to_string(i++ % kRecords + 1)));
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LoadRecord);

void BM_IterateList(benchmark::State& state) {
  Fixture& f = Shared();
  for (auto _ : state) {
    LRecord record;
    int n = 0;
    for (LFileStoreIteratorBase it(f.list, record); record.IsAttached(); it.Next(record)) ++n;
    benchmark::DoNotOptimize(n);
  }
  state.SetItemsProcessed(state.iterations() * kRecords);
}
BENCHMARK(BM_IterateList)->Unit(benchmark::kMillisecond);

// Every new key probes 1, 2, ... until a free number: one failed exclusive create per record.
void BM_NewKeyInFullList(benchmark::State& state) {
  Fixture& f = Shared();
  for (auto _ : state) {
    LRecord record;
    f.list.CreateNewRecord(record);
    record.SetString("Name", "x");
    LBenchRequire(record.Flush(), "record.Flush");
    state.PauseTiming();
    LBenchRequire(f.list.Delete(record.GetPrimaryKey()), "f.list.Delete");
    state.ResumeTiming();
  }
}
BENCHMARK(BM_NewKeyInFullList)->Unit(benchmark::kMillisecond);

}  // namespace
