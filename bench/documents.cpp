// Printed documents: one-page invoices of ten lines rendered to PDF per second in one process,
// and the whole `kontavo invoice pdf` process (start-up, business, fonts, drawing, file) with
// its peak memory, the way a user or a script runs it.
#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fcntl.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>

#include "bench/benchbusiness.h"
#include "invoice/sales/salesbook.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/documentform.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/textnum.h"

namespace {

// A French business with its legal identity, one customer and the ten-line invoice "1".
struct Business : LBenchBusiness {
  Business() : LBenchBusiness("documents") {
    {
      LRecord company;
      profile->List(kMiscList).OpenAlways(company, "Company");
      company.SetString("Name", "Atelier Dupuis");
      company.SetString("Address", "12 rue des Lilas\n69003 Lyon");
      company.SetString("SIREN", "123456789");
      company.SetString("VATNumber", "FR32123456789");
      company.SetString("LegalForm", "SARL");
      company.SetString("ShareCapital", "1000000");
      LCustomer customer;
      profile->MainList(kCustomersList).OpenAlways(customer, "C1");
      customer.SetString("Name", "Boulangerie Martin");
      customer.SetString("Address", "3 place Bellecour\n69002 Lyon");
      customer.SetString("SIREN", "987654321");
    }
    LRecord content;
    content.SetString("Customer", "C1");
    content.SetString("Date", "2026-11-20");
    for (int i = 0; i < 10; ++i) {
      std::string prefix = "Item" + std::to_string(i + 1);
      content.SetString(prefix + "Code", "A" + std::to_string(i));
      content.SetString(prefix + "Description", "Article de démonstration numéro " + std::to_string(i));
      content.SetString(prefix + "Qty", ftotl(1 + i % 3));
      content.SetInt64(prefix + "UnitValue", 1999 + 137 * i);
      content.SetString(prefix + "TaxName", i % 2 == 0 ? "TVA 20 %" : "TVA 5,5 %");
      content.SetString(prefix + "TaxRate", i % 2 == 0 ? "20/0/0" : "5.5/0/0");
    }
    content.SetInt("ItemCount", 10);
    std::string key, error;
    (void)LSalesDocumentCreate(*profile, LSalesDocumentKindOf(LSalesDocumentType::kInvoice), content, false, "1", key,
                               &error);
  }
};

void BM_OnePageInvoicePdf(benchmark::State& state) {
  Business business;
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(LSalesDocumentType::kInvoice);
  LSalesDocument invoice;
  (void)business.profile->MainList("Invoices").Open(invoice, "1");
  std::size_t bytes = 0;
  for (auto _ : state) {
    std::string pdf, error;
    bool printed = LSalesDocumentPdf(*business.profile, kind, invoice, pdf, &error, nullptr);
    benchmark::DoNotOptimize(printed);
    bytes = pdf.size();
  }
  state.SetItemsProcessed(state.iterations());
  state.counters["pdf_bytes"] = static_cast<double>(bytes);
}
BENCHMARK(BM_OnePageInvoicePdf)->Unit(benchmark::kMillisecond);

// The whole process; the peak resident size is the largest of the children's (ru_maxrss).
void BM_InvoicePdfProcess(benchmark::State& state) {
  Business business;
  std::string out = business.home.Path() + "/Facture-1.pdf";
  long peakKb = 0;
  for (auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    pid_t pid = ::fork();
    if (pid == 0) {
      int devnull = ::open("/dev/null", O_WRONLY);
      ::dup2(devnull, 1);
      ::execl(KONTAVO_BIN, KONTAVO_BIN, "invoice", "pdf", "1", "--out", out.c_str(), static_cast<char*>(nullptr));
      ::_exit(127);
    }
    int status = 0;
    struct rusage usage {};
    ::wait4(pid, &status, 0, &usage);
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) state.SkipWithError("kontavo invoice pdf failed");
    peakKb = std::max(peakKb, usage.ru_maxrss);
  }
  state.counters["peak_MB"] = static_cast<double>(peakKb) / 1024;
}
BENCHMARK(BM_InvoicePdfProcess)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(30);

}  // namespace
