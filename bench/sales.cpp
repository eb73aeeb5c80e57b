// Sales throughput: invoices of ten lines under two taxes created, totalled, saved (and, with
// the ledger, posted) per second, against the file work such an invoice cannot avoid measured in
// the same run; the oldest-due recomputation over 100,000 invoices.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <unistd.h>

#include <string>

#include "accounts/audittrail.h"
#include "bench/benchbusiness.h"
#include "invoice/sales/salesbook.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/item.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/textnum.h"

namespace {

constexpr int kDueInvoices = 100000;
constexpr int kCustomers = 100;

// A French business (TVA 20 % and 5,5 % among its taxes) with kCustomers customers.
struct Business : LBenchBusiness {
  Business() : LBenchBusiness("sales") {
    for (int c = 0; c < kCustomers; ++c) {
      LCustomer customer;
      profile->MainList(kCustomersList).OpenAlways(customer, "C" + std::to_string(c));
      customer.SetString("Name", "Client " + std::to_string(c));
    }
  }
};

// Ten lines alternating between the first two taxes.
void TenLines(LRecord& content, int seed) {
  content.SetString("Customer", "C" + std::to_string(seed % kCustomers));
  content.SetString("Date", "2024-05-02");
  for (int i = 0; i < 10; ++i) {
    std::string prefix = "Item" + std::to_string(i + 1);
    content.SetString(prefix + "Description", "Article");
    content.SetString(prefix + "Qty", ftotl(1 + i % 3));
    content.SetInt64(prefix + "UnitValue", 1999 + 137 * i + seed % 100);
    content.SetString(prefix + "TaxName", i % 2 == 0 ? "TVA 20 %" : "TVA 5,5 %");
    content.SetString(prefix + "TaxRate", i % 2 == 0 ? "20/0/0" : "5.5/0/0");
  }
  content.SetInt("ItemCount", 10);
}

void BM_InvoiceCreateTotalSavePost(benchmark::State& state) {
  Business business;
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(LSalesDocumentType::kInvoice);
  int n = 0;
  for (auto _ : state) {
    LRecord content;
    TenLines(content, n);
    std::string key, error;
    // Keys given, so that the cost measured is the invoice's and not the search for a free number.
    bool created = LSalesDocumentCreate(*business.profile, kind, content, false, "B" + std::to_string(n++), key, &error);
    benchmark::DoNotOptimize(created);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_InvoiceCreateTotalSavePost)->Unit(benchmark::kMicrosecond);

// The same invoices of ten stocked items: each also moves the items' stock; with a linked client
// (argument 1) it queues its lines in "SyncItems" under numbers noted before (the crash-safe step),
// the queue growing as a client that never picks it up would leave it.
void BM_InvoiceCreateStockQueued(benchmark::State& state) {
  Business business;
  {
    LOptions options;
    options.OpenFrom(*business.profile);
    options.SetBool("ClientEnabled", state.range(0) != 0);
  }
  for (int i = 0; i < 10; ++i)
    LBenchRequire(LItemSave(*business.profile, "A" + std::to_string(i), LItemInput{}, true, nullptr), "LItemSave");
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(LSalesDocumentType::kInvoice);
  int n = 0;
  for (auto _ : state) {
    LRecord content;
    TenLines(content, n);
    for (int i = 0; i < 10; ++i) content.SetString("Item" + std::to_string(i + 1) + "Code", "A" + std::to_string(i));
    std::string key, error;
    bool created = LSalesDocumentCreate(*business.profile, kind, content, false, "B" + std::to_string(n++), key, &error);
    benchmark::DoNotOptimize(created);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_InvoiceCreateStockQueued)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

std::string ReadWhole(const std::string& path) {
  std::string text;
  LBenchRequire(LFile::ReadAll(path, text) && !text.empty(), "ReadAll");
  return text;
}

// Appends text to path under its lock, as the day file and the audit trail are written.
void AppendLocked(const std::string& path, const std::string& text) {
  int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  ::flock(fd, LOCK_EX);
  ::lseek(fd, 0, SEEK_END);
  if (::write(fd, text.data(), text.size()) < 0) std::abort();
  ::close(fd);
}

// The file work of one invoice above and nothing else: its record file created with its content,
// its posting's rows appended to the day file, its audit entry appended to the trail. The bytes
// are those of an invoice recorded by the program.
void BM_BareInvoiceFileOperations(benchmark::State& state) {
  Business business;
  LRecord content;
  TenLines(content, 0);
  std::string key;
  LBenchRequire(LSalesDocumentCreate(*business.profile, LSalesDocumentKindOf(LSalesDocumentType::kInvoice), content,
                                     false, "B0", key, nullptr),
                "LSalesDocumentCreate");
  std::string shared = business.home.Business();
  std::string record = ReadWhole(shared + "/Invoices/B0.dat");
  std::string rows = ReadWhole(shared + "/Ledger/2024-05-02.csv");
  std::string trail = ReadWhole(shared + "/" + std::string(kAuditTrailFile));
  std::size_t lastEntry = trail.rfind('\n', trail.size() - 2);
  std::string entry = trail.substr(lastEntry == std::string::npos ? 0 : lastEntry + 1);
  std::string folder = business.home.Path() + "/bare";
  LBenchRequire(LFile::MakeFolder(folder), "MakeFolder");
  long i = 0;
  for (auto _ : state) {
    std::string path = folder + "/B" + std::to_string(i++) + ".dat";
    int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0 || ::write(fd, record.data(), record.size()) < 0) std::abort();
    ::close(fd);
    AppendLocked(folder + "/day.csv", rows);
    AppendLocked(folder + "/trail.log", entry);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_BareInvoiceFileOperations)->Unit(benchmark::kMicrosecond);

void BM_OldestDueOver100000Invoices(benchmark::State& state) {
  Business business;
  const LFileStoreListBase& invoices = business.profile->MainList("Invoices");
  for (int i = 1; i <= kDueInvoices; ++i) {
    LInvoice invoice;
    invoices.OpenAlways(invoice, std::to_string(i));
    invoice.SetString("Customer", "C" + std::to_string(i % kCustomers));
    invoice.SetString("Date", "2024-" + std::string(i % 12 < 9 ? "0" : "") + std::to_string(i % 12 + 1) + "-15");
    invoice.SetInt64("Total", 1000 + i % 500);
  }
  for (int c = 0; c < kCustomers; ++c)
    LBenchRequire(LCustomerChangeBalance(*business.profile, "C" + std::to_string(c), 50000), "LCustomerChangeBalance");
  for (auto _ : state) {
    LCoreDataRetotalCustomerData data{business.profile.get(), {}};
    LProcessInterfaceVoid silent;
    benchmark::DoNotOptimize(Process(silent, data));
  }
  state.SetItemsProcessed(state.iterations() * kDueInvoices);
}
BENCHMARK(BM_OldestDueOver100000Invoices)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace
