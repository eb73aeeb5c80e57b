// Payments over a large customer: one payment spread over the unpaid invoices of a customer who
// has 10,000 of them (loading and sorting the candidates, applying to each, posting), and the
// loading and sorting alone. Each applied payment is deleted again, untimed, so that every
// iteration starts from the same unpaid invoices; the deletion is timed on its own, and so is a
// payment applied as typed to many invoices.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <memory>
#include <string>
#include <vector>

#include "accounts/accounts.h"
#include "app/appinstall.h"
#include "bench/benchfolder.h"
#include "invoice/sales/paymentbook.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/sortedinvoice.h"

namespace {

constexpr int kInvoices = 10000;
constexpr long long kInvoiceTotal = 1500;

// One customer "C1" with kInvoices unpaid invoices, due over a year.
struct Business {
  LBenchFolder folder{"payments"};
  std::unique_ptr<LProfile> profile;
  Business() {
    ::setenv("KONTAVO_HOME", folder.Path().c_str(), 1);
    ::setenv("KONTAVO_COUNTRY", "FR", 1);
    LAppInstall();
    profile = std::make_unique<LProfile>(folder.Path() + "/Shared");
    LBenchRequire(LAccountListCreateDefault(*profile), "LAccountListCreateDefault");
    LCustomer customer;
    profile->MainList(kCustomersList).OpenAlways(customer, "C1");
    customer.SetString("Name", "Client");
    const LFileStoreListBase& invoices = profile->MainList("Invoices");
    for (int i = 1; i <= kInvoices; ++i) {
      LInvoice invoice;
      invoices.OpenAlways(invoice, std::to_string(i));
      invoice.SetString("Customer", "C1");
      int month = i % 12 + 1, day = i % 28 + 1;
      invoice.SetString("Date", "2025-" + std::string(month < 10 ? "0" : "") + std::to_string(month) + "-" +
                                    std::string(day < 10 ? "0" : "") + std::to_string(day));
      invoice.SetInt64("Total", kInvoiceTotal);
      invoice.SetInt64("AmountPaid", 0);
      invoice.SetInt64("AmountRefunded", 0);
    }
    LBenchRequire(LCustomerChangeBalance(*profile, "C1", kInvoices * kInvoiceTotal), "LCustomerChangeBalance");
  }
};

void BM_LoadUnpaidInvoicesOf10000(benchmark::State& state) {
  Business business;
  for (auto _ : state) {
    LSortedInvoiceList list(*business.profile);
    list.LoadUnpaidInvoices("C1");
    benchmark::DoNotOptimize(list.Entries().size());
  }
  state.SetItemsProcessed(state.iterations() * kInvoices);
}
BENCHMARK(BM_LoadUnpaidInvoicesOf10000)->Unit(benchmark::kMillisecond)->Iterations(3);

// A payment settling n of the invoices, spread automatically, the last one partly.
LPaymentRequest SpreadOver(long long n) {
  LPaymentRequest request;
  request.customer = "C1";
  request.date = "2026-01-15";
  request.amount = n * kInvoiceTotal - kInvoiceTotal / 2;
  request.automatic = true;
  return request;
}

// state.range(0): how many of the invoices the payment settles.
void BM_PaymentOverUnpaidInvoicesOf10000(benchmark::State& state) {
  Business business;
  LPaymentRequest request = SpreadOver(state.range(0));
  for (auto _ : state) {
    std::string key;
    bool made = LPaymentCreate(*business.profile, request, key, nullptr);
    benchmark::DoNotOptimize(made);
    state.PauseTiming();
    LPaymentDelete(*business.profile, key, nullptr);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_PaymentOverUnpaidInvoicesOf10000)->Arg(10)->Arg(1000)->Arg(kInvoices)->Unit(benchmark::kMillisecond)->Iterations(2);

// The deletion of such a payment: every invoice given back its share, the lists written once.
void BM_DeletePaymentOverInvoicesOf10000(benchmark::State& state) {
  Business business;
  LPaymentRequest request = SpreadOver(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    std::string key;
    LBenchRequire(LPaymentCreate(*business.profile, request, key, nullptr), "LPaymentCreate");
    state.ResumeTiming();
    bool deleted = LPaymentDelete(*business.profile, key, nullptr);
    benchmark::DoNotOptimize(deleted);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_DeletePaymentOverInvoicesOf10000)->Arg(1000)->Arg(kInvoices)->Unit(benchmark::kMillisecond)->Iterations(2);

// An unapplied payment applied as typed to the first n invoices, each settled whole.
void BM_PaymentAppliedAsTypedToInvoicesOf10000(benchmark::State& state) {
  Business business;
  LPaymentRequest request;
  request.customer = "C1";
  request.date = "2026-01-15";
  request.amount = state.range(0) * kInvoiceTotal;
  std::vector<LAppliedAmount> applications;
  for (int i = 1; i <= state.range(0); ++i) applications.push_back({std::to_string(i), kInvoiceTotal});
  for (auto _ : state) {
    state.PauseTiming();
    std::string key, error;
    LBenchRequire(LPaymentCreate(*business.profile, request, key, nullptr), "LPaymentCreate");
    state.ResumeTiming();
    LBenchRequire(LPaymentApply(*business.profile, key, applications, &error), "LPaymentApply");
    state.PauseTiming();
    LBenchRequire(LPaymentDelete(*business.profile, key, nullptr), "LPaymentDelete");
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_PaymentAppliedAsTypedToInvoicesOf10000)->Arg(1000)->Arg(kInvoices)->Unit(benchmark::kMillisecond)->Iterations(2);

}  // namespace
