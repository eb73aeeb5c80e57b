// CSV throughput: rows read per second from a file of 1,000,000 ledger-like rows (generated once,
// in a temporary folder, when the first benchmark starts), with and without splitting the rows
// into columns; and rows appended per second, each append opening, locking and closing the file
// as an export does.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "bench/benchfolder.h"
#include "llib/gen/csv.h"
#include "llib/gen/file.h"

namespace {

constexpr int kFileRows = 1000000;
constexpr std::size_t kWriteChunkBytes = 1 << 20;

const LBenchFolder& Folder() {
  static LBenchFolder folder("csv");
  return folder;
}

// Nine columns, as the ledger writes a journal line.
void AddLedgerColumns(LCSVWriterRow& row, int index) {
  std::string number = std::to_string(10000 + index);
  row.AddCol("2024-03-" + std::to_string(10 + index % 20));
  row.AddCol("SLS" + number);
  row.AddCol("Recettes");
  row.AddCol(index % 2 == 0 ? "4000" : "1200");
  row.AddCol("Facture " + number + " \"Dupont & fils\", Lyon");
  row.AddCol(std::to_string((index % 2 == 0 ? -1 : 1) * (index * 37 % 100000)));
  row.AddCol("marie");
  row.AddCol("1");
  row.AddCol("INV" + number);
}

const std::string& MillionRowFile() {
  static const std::string path = [] {
    std::string file = Folder().Path() + "/million.csv";
    LFileDescriptor fd(LRobustOpen(file, O_WRONLY | O_CREAT | O_TRUNC, 0600));
    std::string chunk;
    LCSVWriterRow row;
    for (int index = 0; index < kFileRows; ++index) {
      row.Clear();
      AddLedgerColumns(row, index);
      chunk.append(row.GetText()).append("\r\n");
      if (chunk.size() >= kWriteChunkBytes || index + 1 == kFileRows) {
        if (!LRobustWrite(fd.Get(), chunk.data(), chunk.size())) std::abort();
        chunk.clear();
      }
    }
    return file;
  }();
  return path;
}

void BM_ReadRowsIntoColumns(benchmark::State& state) {
  const std::string& path = MillionRowFile();
  long long nRows = 0;
  for (auto _ : state) {
    LCSVFileReader reader(path, 10000);
    for (; reader.HasRow(); reader.Next()) {
      LCSVReaderRow row(reader.GetLine());
      LTextBuffer date, ref, type, account, description, amount, user, tax, document;
      LCSVGetCols(row, {date, ref, type, account, description, amount, user, tax, document});
      benchmark::DoNotOptimize(amount);
      ++nRows;
    }
  }
  state.SetItemsProcessed(nRows);
  state.counters["rows"] = static_cast<double>(nRows) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_ReadRowsIntoColumns)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_ReadLines(benchmark::State& state) {
  const std::string& path = MillionRowFile();
  long long nRows = 0;
  for (auto _ : state) {
    LCSVFileReader reader(path, 10000);
    for (; reader.HasRow(); reader.Next()) ++nRows;
  }
  state.SetItemsProcessed(nRows);
  state.counters["rows"] = static_cast<double>(nRows) / static_cast<double>(state.iterations());
}
BENCHMARK(BM_ReadLines)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_AppendRows(benchmark::State& state) {
  std::string path = Folder().Path() + "/appended.csv";
  ::unlink(path.c_str());
  for (auto _ : state) {
    if (!LCSVWriteRow(path, {"2024-03-15", "SLS10042", "Recettes", "4000", "Facture 10042 Dupont", "-12345", "marie",
                             "1", "INV10042"}))
      state.SkipWithError("the row could not be appended");
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_AppendRows)->Unit(benchmark::kMicrosecond);

}  // namespace
