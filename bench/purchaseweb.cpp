// The purchase pages of a real `kontavo serve` over a business of 10,000 bills (spread over this
// fiscal year, three lines each, posted) and 1,000 suppliers, each request on a new loopback
// connection, timed from the request sent to the answer read: the bill list of this month (page
// 1 of about 830 rows) and of the whole fiscal year (page 1 of 10,000), opening a bill's dialog,
// and saving an edit of a bill through its route (re-posted under its reference). Figures only;
// the business is made and shown once before the measures.
#include <benchmark/benchmark.h>

#include <string>

#include "accounts/bills.h"
#include "accounts/suppliers.h"
#include "app/appinstall.h"
#include "bench/benchserver.h"
#include "invoice/shared/fiscalyear.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"

namespace {

constexpr int kBills = 10000;
constexpr int kSuppliers = 1000;
constexpr int kFirstBill = 10000;  // the first bill's number: "PRC10000"

// 1,000 suppliers and 10,000 bills of three lines, spread over this fiscal year, posted.
void MakeBills(const std::string& business) {
  LAppInstall();
  LProfile profile(business);
  for (int s = 0; s < kSuppliers; ++s) {
    LRecord supplier;
    profile.List(kSuppliersList).OpenAlways(supplier, "S" + std::to_string(s));
    supplier.SetString("Name", "Fournisseur " + std::to_string(s));
    (void)supplier.Flush();
  }
  LDate first;
  LDate::Parse(LFiscalYearOf(profile, LDate::Today()).from, first);
  for (int n = 0; n < kBills; ++n) {
    LBill bill;
    bill.SetString("Supplier", "S" + std::to_string(n % kSuppliers));
    bill.SetString("Date", first.AddDays(n % 365).ToText());
    for (int i = 0; i < 3; ++i) bill.AddItemLine("607000", 1999 + 137 * i + n % 100, "");
    if (!LBillSave(profile, bill, "bench")) break;
  }
}

const LBenchServer& Web() { return LBenchServerOnce("purchaseweb", MakeBills, "/billlist?prd=all"); }

void BM_BillListThisMonth(benchmark::State& state) {
  LBenchMeasureAnswer(state, Web(), "facture(s)", [](const LBenchServer& web) { return web.Get("/billlist?prd=m"); });
}
BENCHMARK(BM_BillListThisMonth)->Unit(benchmark::kMillisecond)->Iterations(20);

void BM_BillListThisFiscalYear(benchmark::State& state) {
  LBenchMeasureAnswer(state, Web(), "10000 facture(s)", [](const LBenchServer& web) { return web.Get("/billlist"); });
}
BENCHMARK(BM_BillListThisFiscalYear)->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_BillDialogOpen(benchmark::State& state) {
  std::string path = "/billprop?id=PRC" + std::to_string(kFirstBill + kBills / 2);
  LBenchMeasureAnswer(state, Web(), "billlines", [&path](const LBenchServer& web) { return web.Get(path); });
}
BENCHMARK(BM_BillDialogOpen)->Unit(benchmark::kMillisecond)->Iterations(20);

void BM_BillSaveThroughRoute(benchmark::State& state) {
  int n = 0;
  LBenchMeasureAnswer(state, Web(), "window.location = 'billlist';", [&n](const LBenchServer& web) {
    std::string key = "PRC" + std::to_string(kFirstBill + 100 + n++ % 50);
    return web.Post("/billprop", "id=" + key + "&101=S7&102=" + LDate::Today().ToText() +
                                       "&billlines=2&20000=607000&20002=Papier&20003=2&20004=125%2C50"
                                       "&20010=607000&20012=Livraison&20013=1&20014=9%2C90&submit=Enregistrer");
  });
}
BENCHMARK(BM_BillSaveThroughRoute)->Unit(benchmark::kMillisecond)->Iterations(20);

}  // namespace
