// Importing a bank statement of 10,000 lines into a bank account whose ledger holds 1,000,000
// lines (ten years of 274 lines a day), and matching them: every statement line stands for one
// of the ledger lines of its last 37 days, with amounts spread so that a few share one. Then the
// same statement imported again, every line known. The ledger's day files are written directly
// (one balancing row a day), as posting a million transactions one by one would take the whole
// run.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <memory>
#include <random>
#include <string>

#include "accounts/accounts.h"
#include "accounts/bankimport.h"
#include "accounts/ledger.h"
#include "bench/benchfolder.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/file.h"
#include "llib/gen/money.h"

namespace {

constexpr int kLedgerDays = 3650;
constexpr int kLinesPerDay = 274;  // 1,000,100 lines on the bank account
constexpr int kStatementLines = 10000;
const LDate kFirstDay(2016, 1, 1);

struct Business {
  LBenchFolder folder{"bankimport"};
  std::unique_ptr<LProfile> profile;
  std::string statement;
  Business() {
    ::setenv("KONTAVO_HOME", folder.Path().c_str(), 1);
    ::setenv("KONTAVO_COUNTRY", "FR", 1);
    profile = std::make_unique<LProfile>(folder.Path() + "/Shared");
    LBenchRequire(LAccountListCreateDefault(*profile), "LAccountListCreateDefault");
    std::string bank = LGetAccountNumberUsingDescription(*profile, "Compte-chèque");
    LTextBuffer ledgerFolder;
    LLegderGetBaseFolder(*profile, ledgerFolder);
    std::mt19937 random(42);
    std::uniform_int_distribution<long long> amounts(-500000, 500000);
    std::string csv = "Date,Libellé,Montant\n";
    int nStatement = 0;
    for (int day = 0; day < kLedgerDays; ++day) {
      std::string date = kFirstDay.AddDays(day).ToText();
      std::string rows;
      long long dayTotal = 0;
      bool inStatement = day >= kLedgerDays - (kStatementLines + kLinesPerDay - 1) / kLinesPerDay;
      for (int i = 0; i < kLinesPerDay; ++i) {
        long long amount = amounts(random);
        if (amount == 0) amount = 1;
        std::string reference = "B" + std::to_string(day * kLinesPerDay + i);
        LLedgerJournalLine line;
        line.date = date;
        line.reference = reference;
        line.type = "General";
        line.account = bank;
        line.description = "Opération " + reference;
        line.amount = amount;
        rows += line.BuildCSVRow();
        dayTotal += amount;
        if (inStatement && nStatement < kStatementLines) {
          ++nStatement;
          csv += date + ",VIR SEPA CLIENT " + reference + "," + LFormatAmountPlain(amount, 2) + "\n";
        }
      }
      LLedgerJournalLine balancing;
      balancing.date = date;
      balancing.reference = "J" + std::to_string(day);
      balancing.type = "General";
      balancing.account = "6410";
      balancing.amount = -dayTotal;
      rows += balancing.BuildCSVRow();
      LBenchRequire(LFile::WriteAllAtomic(LFile::MakeFilePath(std::string(ledgerFolder), date + ".csv"), rows), "day file");
    }
    statement = folder.Path() + "/statement.csv";
    LBenchRequire(LFile::WriteAllAtomic(statement, csv), "statement");
  }
  void ForgetImports() { LFile::RemoveTree(profile->GetDataStore().GetFolder() + "/BankLines"); }
  bool Import(int& nMatched) {
    LBankImportData data;
    data.profile = profile.get();
    data.request.account = LGetAccountNumberUsingDescription(*profile, "Compte-chèque");
    data.request.path = statement;
    data.request.format = LStatementFormat::kCSV;
    LProcessInterfaceVoid process;
    if (Process(process, data) != kProcessFinished) return false;
    nMatched = 0;
    for (const auto& line : data.lines) nMatched += line.line.status == LBankLineStatus::kMatched;
    return data.lines.size() == kStatementLines;
  }
};

Business& Shared() {
  static Business business;
  return business;
}

void BM_ImportAndMatch10000LinesAgainstOneMillion(benchmark::State& state) {
  Business& business = Shared();
  int nMatched = 0;
  for (auto _ : state) {
    state.PauseTiming();
    business.ForgetImports();
    state.ResumeTiming();
    if (!business.Import(nMatched)) state.SkipWithError("import failed");
  }
  state.counters["matched"] = nMatched;
  state.SetItemsProcessed(state.iterations() * kStatementLines);
}
BENCHMARK(BM_ImportAndMatch10000LinesAgainstOneMillion)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_ReimportAllKnown(benchmark::State& state) {
  Business& business = Shared();
  int nMatched = 0;
  business.ForgetImports();
  if (!business.Import(nMatched)) state.SkipWithError("first import failed");
  for (auto _ : state)
    if (!business.Import(nMatched)) state.SkipWithError("import failed");
  state.SetItemsProcessed(state.iterations() * kStatementLines);
}
BENCHMARK(BM_ReimportAllKnown)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
