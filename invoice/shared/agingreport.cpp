#include "invoice/shared/agingreport.h"

#include <cstdint>

#include "invoice/shared/customer.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"

namespace {

constexpr std::uint32_t k30Days = 2592000;
constexpr std::uint32_t k60Days = 5184000;
constexpr std::uint32_t k90Days = 7776000;

std::vector<std::string> AllCustomerKeys(const LProfile& profile) {
  std::vector<std::string> keys;
  LRecord customer;
  for (LFileStoreIteratorBase it(profile.List(kCustomersList), customer); customer.IsAttached(); it.Next(customer))
    keys.push_back(customer.GetPrimaryKey());
  return keys;
}

// "Date" at 00:00:00; an unreadable date is the start of the clock.
LDateTime InvoiceMoment(const LSalesDocument& invoice) {
  LDate date;
  LDateTime moment;
  if (LDate::Parse(invoice.GetDate(), date)) moment.SetDateTime(date.year - 1900, date.month, date.day, 0, 0, 0);
  return moment;
}

long long TermsSeconds(const LSalesDocument& invoice) {
  if (invoice.GetInt("PaymentTerms", 2) == 1) return kAgingOneDay;
  return invoice.GetInt("PaymentTermsDays", 30) * kAgingOneDay;
}

}  // namespace

LAgingBucket LAgingBucketOf(const LDateTime& now, const LDateTime& invoiceDate, long long termsSeconds) {
  long long age = now.GetSeconds() - invoiceDate.GetSeconds();
  auto overdue = static_cast<std::uint32_t>((now.GetSeconds() - termsSeconds) - invoiceDate.GetSeconds());
  if (termsSeconds > age) return LAgingBucket::kCurrent;
  if (overdue <= k30Days) return LAgingBucket::kDays1To30;
  if (overdue <= k60Days) return LAgingBucket::kDays31To60;
  if (overdue <= k90Days) return LAgingBucket::kDays61To90;
  if (static_cast<std::int32_t>(overdue) > 0) return LAgingBucket::kOver90;
  return LAgingBucket::kNone;
}

LReportAccountsReceivableAgingReport::LReportAccountsReceivableAgingReport(LProfile& profile,
                                                                           std::vector<std::string> customers,
                                                                           const LDateTime& now, const LDate& lastDate)
    : LSalesReport(profile, {{}, lastDate, customers}), now_(now) {
  if (customers.empty()) SelectCustomers(AllCustomerKeys(profile));
}

void LReportAccountsReceivableAgingReport::AddCustomer(const std::string& customer, long long current,
                                                       long long outstanding, long long days1To30,
                                                       long long days31To60, long long days61To90, long long over90) {
  rows_[customer] += {outstanding, current, days1To30, days31To60, days61To90, over90};
}

LReportAccountsReceivableAgingReport::CustomerRow& LReportAccountsReceivableAgingReport::CustomerRow::operator+=(
    const CustomerRow& other) {
  outstanding += other.outstanding;
  current += other.current;
  days1To30 += other.days1To30;
  days31To60 += other.days31To60;
  days61To90 += other.days61To90;
  over90 += other.over90;
  return *this;
}

void LReportAccountsReceivableAgingReport::GenerateReport(LReportTable& table) {
  LOptions options;
  options.OpenFrom(profile_);
  useParentheses_ = options.GetBool("UseParenthesesForNegative", false);

  rows_.clear();
  WalkDocuments("Invoices", [this](LSalesDocument& invoice) {
    long long outstanding = invoice.GetTotal() - invoice.GetAmountPaid(Profile());
    long long buckets[5] = {};  // current, 1–30, 31–60, 61–90, over 90
    LAgingBucket bucket = LAgingBucketOf(now_, InvoiceMoment(invoice), TermsSeconds(invoice));
    if (bucket != LAgingBucket::kNone) buckets[static_cast<int>(bucket)] = outstanding;
    AddCustomer(invoice.GetCustomer(), buckets[0], outstanding, buckets[1], buckets[2], buckets[3], buckets[4]);
  });

  table = LReportTable();
  table.title = "Classement chronologique des comptes clients";
  table.subtitle = "Au " + now_.GetDateTimeText();
  table.columns = {"Solde", "Courant", "1 à 30 jours", "31 à 60 jours", "61 à 90 jours", "Plus de 90 jours"};
  CustomerRow total;
  for (const auto& [customer, row] : rows_) {
    table.AddRow(LReportRowKind::kAccount, customer,
                 {row.outstanding, row.current, row.days1To30, row.days31To60, row.days61To90, row.over90});
    total += row;
  }
  table.AddRow(LReportRowKind::kTotal, "Total :",
               {total.outstanding, total.current, total.days1To30, total.days31To60, total.days61To90, total.over90});
  LSalesReportAddRow(table, LReportRowKind::kResult, "Nombre de clients :", {std::to_string(rows_.size())});
  table.AddRow(LReportRowKind::kResult, "Montant échu total :",
               {total.days1To30 + total.days31To60 + total.days61To90 + total.over90});
}
