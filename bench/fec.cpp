// The French books at scale:
//   - the FEC of a year of 1,000,000 journal lines (sales, purchases, receipts and general
//     entries, with their invoices, bills and payments for the auxiliary accounts and lettering),
//     written by `kontavo export fec` and then passed through our own checker;
//   - `kontavo audit verify` over a trail of 1,000,000 entries.
// The books are generated once per run in a temporary folder.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "accounts/accounts.h"
#include "accounts/audittrail.h"
#include "accounts/feccheck.h"
#include "accounts/ledger.h"
#include "bench/benchfolder.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/file.h"
#include "llib/gen/hashtable.h"

namespace {

constexpr long kLines = 1000000;
constexpr long kDocuments = 20000;  // invoices, payments, bills: their transactions carry a document

void WriteFile(const std::string& path, const std::string& text) {
  int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
  if (fd < 0 || ::write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size())) std::abort();
  ::close(fd);
}

// A year of day files; the first kDocuments transactions are invoices paid by payments.
void MakeYear(LProfile& profile) {
  LBenchRequire(LAccountListCreateDefault(profile), "LAccountListCreateDefault");
  LRecord company;
  profile.List(kMiscList).OpenAlways(company, "Company");
  company.SetString("SIREN", "732829320");
  LBenchRequire(company.Flush(), "company.Flush");
  LTextBuffer folder;
  LLegderGetBaseFolder(profile, folder);
  std::string store = profile.GetDataStore().GetFolder();
  LFile::MakeFolder(store + "/Invoices");
  LFile::MakeFolder(store + "/Payments");
  LFile::MakeFolder(store + "/Customers");
  WriteFile(store + "/Customers/C1.dat", "ID=C1&Name=Dupont");
  const char* accounts[] = {"1110", "1120", "4110", "6110", "6410", "6420", "2210", "1210"};
  long written = 0, txnNumber = 0;
  for (int d = 0; d < 365; ++d) {
    std::string date = LDate(2025, 1, 1).AddDays(d).ToText();
    std::string text;
    for (; written < kLines * (d + 1) / 365; written += 2, ++txnNumber) {
      long long amount = 100 + txnNumber % 9999;
      if (txnNumber < kDocuments) {
        // Invoice n on even numbers, the payment that settles it on the next one.
        std::string key = std::to_string(txnNumber / 2 + 1);
        bool invoice = txnNumber % 2 == 0;
        std::string reference = (invoice ? "SLS" : "REC") + std::to_string(10000 + txnNumber / 2);
        LLedgerTransaction txn(date, reference, invoice ? "Recettes" : "Reçus");
        long long total = 100 + (txnNumber / 2) % 9999;
        txn.AddLine("1210", "Client", invoice ? total : -total, "bench", "", key);
        txn.AddLine(invoice ? "4110" : "1110", "Client", invoice ? -total : total, "bench", "", key);
        for (const auto& line : txn.Lines()) text += line.BuildCSVRow();
        std::string fields = "Customer=C1&Date=" + date + "&JournalTxnRef=" + reference + "&";
        if (invoice) WriteFile(store + "/Invoices/" + key + ".dat", "ID=" + key + "&" + fields + "Total=" + std::to_string(total));
        else
          WriteFile(store + "/Payments/" + key + ".dat", "Amount=" + std::to_string(total) + "&" + fields + "ID=" + key +
                                                             "&InvoiceAmounts=" + std::to_string(total) +
                                                             "&InvoiceNumber=" + key);
        continue;
      }
      LLedgerTransaction txn(date, "GJ" + std::to_string(txnNumber), "General");
      txn.AddLine(accounts[txnNumber % 8], "Écriture", amount, "bench", "", "");
      txn.AddLine(accounts[(txnNumber + 3) % 8], "Écriture", -amount, "bench", "", "");
      for (const auto& line : txn.Lines()) text += line.BuildCSVRow();
    }
    WriteFile(LFile::MakeFilePath(folder, date + ".csv"), text);
  }
}

void BM_FecOfOneMillionLines(benchmark::State& state) {
  LBenchHome home("fec");
  {
    LProfile profile(home.Business());
    MakeYear(profile);
  }
  std::string command = std::string(KONTAVO_BIN) + " export fec --year 2025 --out " + home.Path() + " >/dev/null";
  for (auto _ : state)
    if (std::system(command.c_str()) != 0) state.SkipWithError("export failed");
  LFecCheckReport report = LFecCheckFile(home.Path() + "/732829320FEC20251231.txt");
  if (!report.Passed() || report.lineCount != kLines) state.SkipWithError("the file does not pass the checker");
  state.counters["lines"] = static_cast<double>(report.lineCount);
}
BENCHMARK(BM_FecOfOneMillionLines)->Unit(benchmark::kSecond)->Iterations(1)->UseRealTime();

// A trail of 1,000,000 posting entries, chained as postings chain them.
void BM_AuditVerifyOneMillionEntries(benchmark::State& state) {
  LBenchHome home("audit");
  {
    LProfile profile(home.Business());
    std::string log, previous;
    for (long n = 1; n <= kLines; ++n) {
      LHashTable entry;
      entry.SetString("Seq", std::to_string(n));
      entry.SetString("Prev", n == 1 ? std::string(kAuditFirstPrev) : LAuditHash(previous));
      entry.SetString("Time", "2025-03-01T10:00:00Z");
      entry.SetString("User", "bench");
      entry.SetString("Action", "post");
      entry.SetString("Reference", "GJ" + std::to_string(n));
      entry.SetString("Date", "2025-03-01");
      entry.SetString("Amount", std::to_string(n % 9999));
      entry.SetString("Lines", "\"2025-03-01\",\"GJ" + std::to_string(n) +
                                   "\",\"General\",\"6410\",\"\",\"Loyer\",\"+12.34\",\"Tax=&UserName=bench\",\"\"\r\n"
                                   "\"2025-03-01\",\"GJ" + std::to_string(n) +
                                   "\",\"General\",\"1110\",\"\",\"Loyer\",\"-12.34\",\"Tax=&UserName=bench\",\"\"\r\n");
      previous.clear();
      entry.SaveHTTPString(previous);
      log += previous + "\n";
    }
    WriteFile(home.Business() + "/" + std::string(kAuditTrailFile), log);
    WriteFile(home.Business() + "/" + std::string(kAuditTrailHeadFile),
              std::to_string(kLines) + " " + LAuditHash(previous) + "\n");
  }
  std::string command = std::string(KONTAVO_BIN) + " audit verify >/dev/null";
  for (auto _ : state)
    if (std::system(command.c_str()) != 0) state.SkipWithError("the chain does not hold");
  state.counters["entries"] = static_cast<double>(kLines);
}
BENCHMARK(BM_AuditVerifyOneMillionEntries)->Unit(benchmark::kSecond)->Iterations(1)->UseRealTime();

}  // namespace
