// Items and their stock at scale: the CSV import of 10,000 customers and of 10,000 items into an
// empty business (each iteration in a fresh one; a second run of the same file updates instead),
// and the inventory report at a date over 10,000 items carrying 100,000 movements between them.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <memory>
#include <random>
#include <string>

#include "bench/benchfolder.h"
#include "invoice/shared/csvimport.h"
#include "invoice/shared/inventory.h"
#include "invoice/shared/item.h"
#include "invoice/shared/profile.h"
#include "llib/gen/csvtable.h"
#include "llib/gen/textnum.h"

namespace {

constexpr int kRecords = 10000;
constexpr int kMovesPerItem = 10;

std::string CustomersCsv() {
  std::string text;
  LCsvTableAppendRow(text, {"Code", "Raison sociale", "Adresse", "E-mail", "N° TVA", "Délai de paiement"});
  for (int i = 1; i <= kRecords; ++i) {
    std::string n = std::to_string(i);
    LCsvTableAppendRow(text, {"C" + n, "Société " + n + " SARL", n + " rue de la Paix, Lyon", "contact" + n + "@exemple.fr",
                              "FR" + std::to_string(10000000000LL + i), "30"});
  }
  return text;
}

std::string ItemsCsv() {
  std::string text = "Référence;Désignation;Prix de vente;Coût d'achat;Seuil\r\n";
  for (int i = 1; i <= kRecords; ++i) {
    std::string n = std::to_string(i);
    text += "A" + n + ";Article " + n + ";" + std::to_string(i % 500) + ",99;" + std::to_string(i % 300) + ",5;10\r\n";
  }
  return text;
}

void Import(benchmark::State& state, LPartyKind kind, const std::string& csv) {
  int n = 0;
  for (auto _ : state) {
    state.PauseTiming();
    auto folder = std::make_unique<LBenchFolder>("import");
    ::setenv("KONTAVO_HOME", folder->Path().c_str(), 1);
    auto profile = std::make_unique<LProfile>(folder->Path() + "/Shared");
    state.ResumeTiming();
    LCsvImportReport report;
    std::string error;
    if (!LCsvImportBytes(*profile, kind, csv, {}, false, nullptr, report, &error) || report.nCreated != kRecords)
      state.SkipWithError(("import: " + error).c_str());
    state.PauseTiming();
    profile.reset();
    folder.reset();
    state.ResumeTiming();
    ++n;
  }
  state.counters["rows_per_second"] =
      benchmark::Counter(static_cast<double>(kRecords) * n, benchmark::Counter::kIsRate);
}

void BM_ImportCustomers(benchmark::State& state) { Import(state, LPartyKind::kCustomer, CustomersCsv()); }
void BM_ImportItems(benchmark::State& state) { Import(state, LPartyKind::kItem, ItemsCsv()); }

// 10,000 stocked items, 100,000 movements: receipts at varying costs and invoices, over 2024.
struct Stock {
  LBenchFolder folder{"stock"};
  std::unique_ptr<LProfile> profile;

  Stock() {
    ::setenv("KONTAVO_HOME", folder.Path().c_str(), 1);
    profile = std::make_unique<LProfile>(folder.Path() + "/Shared");
    std::mt19937 random(24);
    std::uniform_int_distribution<long> day(0, 365);
    std::uniform_int_distribution<int> quantity(1, 20);
    std::uniform_int_distribution<long long> cost(100, 9999);
    long first = LDate(2024, 1, 1).DayNumber();
    int document = 0;
    for (int i = 1; i <= kRecords; ++i) {
      LItem item;
      profile->MainList(kItemsList).OpenAlways(item, "A" + std::to_string(i));
      item.SetString("Description", "Article " + std::to_string(i));
      for (int m = 0; m < kMovesPerItem; ++m) {
        bool receipt = m % 2 == 0;
        std::string date = LDate::FromDayNumber(first + day(random)).ToText();
        std::string moved = (receipt ? "POrders/" : "Invoices/") + std::to_string(++document);
        int qty = receipt ? quantity(random) : -quantity(random) / 2;
        item.SetString("Move" + std::to_string(m + 1),
                       date + "|" + moved + "|" + std::to_string(qty) + "|" + std::to_string(cost(random)));
      }
      item.SetInt("MoveCount", kMovesPerItem);
      LBenchRequire(item.Flush(), "item.Flush");
    }
  }
};

void BM_InventoryAtADate(benchmark::State& state) {
  static Stock stock;
  for (auto _ : state) {
    LReportInventory report(*stock.profile, LDate(2024, 6, 30));
    LReportTable table;
    report.GenerateReport(table);
    benchmark::DoNotOptimize(table.rows.size());
  }
  state.counters["movements_per_second"] = benchmark::Counter(
      static_cast<double>(kRecords) * kMovesPerItem * static_cast<double>(state.iterations()),
      benchmark::Counter::kIsRate);
}

}  // namespace

BENCHMARK(BM_ImportCustomers)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_ImportItems)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_InventoryAtADate)->Unit(benchmark::kMillisecond)->Iterations(3);
