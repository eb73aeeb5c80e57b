// The sales pages of a real `kontavo serve` over a business of 10,000 invoices (spread over this
// fiscal year) and 1,000 customers, each request on a new loopback connection, timed from the
// request sent to the answer read: the invoice list of this month (page 1 of about 830 rows) and
// of the whole fiscal year (page 1 of 10,000), opening an invoice's dialog, and saving an edit
// of an invoice through its route (re-totalled and re-posted). Figures only; the business is
// made and shown once before the measures (a first showing stores each invoice's cached amounts).
#include <benchmark/benchmark.h>

#include <string>

#include "accounts/accounts.h"
#include "app/appinstall.h"
#include "bench/benchserver.h"
#include "invoice/sales/salesbook.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/fiscalyear.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"

namespace {

constexpr int kInvoices = 10000;
constexpr int kCustomers = 1000;

// 1,000 customers and 10,000 invoices of three lines, spread over this fiscal year.
void MakeInvoices(const std::string& business) {
  LAppInstall();
  LProfile profile(business);
  for (int c = 0; c < kCustomers; ++c) {
    LCustomer customer;
    profile.MainList(kCustomersList).OpenAlways(customer, "C" + std::to_string(c));
    customer.SetString("Name", "Client " + std::to_string(c));
  }
  LDate first;
  LDate::Parse(LFiscalYearOf(profile, LDate::Today()).from, first);
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(LSalesDocumentType::kInvoice);
  for (int n = 0; n < kInvoices; ++n) {
    LRecord content;
    content.SetString("Customer", "C" + std::to_string(n % kCustomers));
    content.SetString("Date", first.AddDays(n % 365).ToText());
    for (int i = 0; i < 3; ++i) {
      std::string prefix = "Item" + std::to_string(i + 1);
      content.SetString(prefix + "Description", "Article");
      content.SetString(prefix + "Qty", "2.000000");
      content.SetInt64(prefix + "UnitValue", 1999 + 137 * i + n % 100);
      content.SetString(prefix + "TaxRate", "20/0/0");
    }
    content.SetInt("ItemCount", 3);
    std::string key;
    if (!LSalesDocumentCreate(profile, kind, content, false, {}, key, nullptr)) break;
  }
}

// The first showing of an invoice stores the amounts paid and refunded that it lacks (once per
// invoice, a write each): done before the measures, so that they are those of every day.
const LBenchServer& Web() { return LBenchServerOnce("salesweb", MakeInvoices, "/invoicelist?prd=all"); }

void BM_InvoiceListThisMonth(benchmark::State& state) {
  LBenchMeasureAnswer(state, Web(), "document(s)", [](const LBenchServer& web) { return web.Get("/invoicelist?prd=m"); });
}
BENCHMARK(BM_InvoiceListThisMonth)->Unit(benchmark::kMillisecond)->Iterations(20);

void BM_InvoiceListThisFiscalYear(benchmark::State& state) {
  LBenchMeasureAnswer(state, Web(), "10000 document(s)", [](const LBenchServer& web) { return web.Get("/invoicelist"); });
}
BENCHMARK(BM_InvoiceListThisFiscalYear)->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_InvoiceDialogOpen(benchmark::State& state) {
  LBenchMeasureAnswer(state, Web(), "fktotals", [](const LBenchServer& web) { return web.Get("/invoiceprop?id=5000"); });
}
BENCHMARK(BM_InvoiceDialogOpen)->Unit(benchmark::kMillisecond)->Iterations(20);

void BM_InvoiceSaveThroughRoute(benchmark::State& state) {
  int n = 0;
  LBenchMeasureAnswer(state, Web(), "window.location = 'invoicelist';", [&n](const LBenchServer& web) {
    std::string key = std::to_string(100 + n++ % 50);
    return web.Post("/invoiceprop",
                      "id=" + key + "&101=C7&102=" + LDate::Today().ToText() +
                          "&103=30&fklines=2&10001=Conseil&10002=2&10003=125%2C50&10011=Livraison&10012=1&10013=9%2C90"
                          "&submit=Enregistrer");
  });
}
BENCHMARK(BM_InvoiceSaveThroughRoute)->Unit(benchmark::kMillisecond)->Iterations(20);

}  // namespace
