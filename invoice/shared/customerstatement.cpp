#include "invoice/shared/customerstatement.h"

#include <algorithm>
#include <tuple>
#include <vector>

#include "invoice/shared/agingreport.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "llib/gen/filestore.h"
#include "llib/gen/record.h"

namespace {

// The order of a day's documents: what is owed before what settles it.
enum class EntryKind { kInvoice, kRefund, kCreditNote, kPayment };

struct Entry {
  std::string date;
  EntryKind kind;
  std::string key;
  std::string due;       // invoices
  long long amount = 0;  // debit-positive: what it adds to the balance
};

std::string Label(const Entry& entry) {
  switch (entry.kind) {
    case EntryKind::kInvoice: return "Facture " + entry.key;
    case EntryKind::kRefund: return "Remboursement " + entry.key;
    case EntryKind::kCreditNote: return "Avoir " + entry.key;
    case EntryKind::kPayment: return "Paiement " + entry.key;
  }
  return entry.key;
}

constexpr const char* kBuckets[] = {"Courant", "1 à 30 jours", "31 à 60 jours", "61 à 90 jours", "Plus de 90 jours"};

}  // namespace

LReportCustomerStatement::LReportCustomerStatement(LProfile& profile, std::string customer, const LDate& from,
                                                   const LDate& to)
    : LSalesReport(profile, {LDate(), to.IsValid() ? to : LDate::Today(), {customer}}),
      customer_(std::move(customer)),
      from_(from),
      to_(to.IsValid() ? to : LDate::Today()) {}

void LReportCustomerStatement::GenerateReport(LReportTable& table) {
  // Everything up to the last day: what lies before the first day is brought forward.
  std::vector<Entry> entries;
  for (const LSalesReportDocument& invoice : Documents("Invoices"))
    entries.push_back({invoice.date, EntryKind::kInvoice, invoice.key, invoice.due, invoice.total});
  for (const LSalesReportDocument& note : Documents(LSalesDocumentKindOf(LSalesDocumentType::kCreditNote).recordedList))
    entries.push_back({note.date, EntryKind::kCreditNote, note.key, "", -note.total});
  Walk("Payments", [&entries](const LRecord& payment) {
    bool refund = payment.GetBool("IsRefund", false);
    long long amount = payment.GetInt64("Amount", 0);
    entries.push_back({payment.GetString("Date"), refund ? EntryKind::kRefund : EntryKind::kPayment,
                       payment.GetPrimaryKey(), "", refund ? amount : -amount});
  });
  std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
    return std::tie(a.date, a.kind) < std::tie(b.date, b.kind) ||
           (std::tie(a.date, a.kind) == std::tie(b.date, b.kind) && LDocumentKeyLess(a.key, b.key));
  });

  LCustomer customer;
  std::string name = profile_.MainList(kCustomersList).Open(customer, customer_) ? customer.GetString("Name") : "";
  customer.DetachWithoutSave();
  table = LReportTable();
  table.title = "Relevé de compte";
  table.subtitle = (name.empty() ? customer_ : name + " (" + customer_ + ")") + " — " +
                   LSalesReportPeriodText(from_, to_);
  table.columns = {"Date", "Échéance", "Débit", "Crédit", "Solde"};

  std::string first = from_.IsValid() ? from_.ToText() : std::string();
  opening_ = 0;
  auto firstInPeriod = entries.begin();
  while (firstInPeriod != entries.end() && firstInPeriod->date < first) opening_ += (firstInPeriod++)->amount;
  LSalesReportAddRow(table, LReportRowKind::kResult, "Solde reporté", {first, "", "", "", opening_});
  long long balance = opening_, debits = 0, credits = 0;
  for (auto entry = firstInPeriod; entry != entries.end(); ++entry) {
    balance += entry->amount;
    LSalesReportCell debit = entry->amount >= 0 ? LSalesReportCell(entry->amount) : LSalesReportCell("");
    LSalesReportCell credit = entry->amount < 0 ? LSalesReportCell(-entry->amount) : LSalesReportCell("");
    (entry->amount >= 0 ? debits : credits) += entry->amount >= 0 ? entry->amount : -entry->amount;
    LSalesReportAddRow(table, LReportRowKind::kAccount, Label(*entry), {entry->date, entry->due, debit, credit, balance});
  }
  closing_ = balance;
  LSalesReportAddRow(table, LReportRowKind::kTotal, "Total de la période", {"", "", debits, credits, ""});
  LSalesReportAddRow(table, LReportRowKind::kResult, "Solde au " + to_.ToText(), {to_.ToText(), "", "", "", closing_});

  // The age of what the invoices still owe, as at the end of the last day.
  LDateTime endOfDay;
  endOfDay.SetDateTime(to_.year - 1900, to_.month, to_.day, 23, 59, 59);
  LReportTable aging;
  LReportAccountsReceivableAgingReport(profile_, {customer_}, endOfDay).GenerateReport(aging);
  table.AddHeading("Ancienneté du solde");
  const LReportRow* row = aging.rows.empty() || aging.rows.front().label != customer_ ? nullptr : &aging.rows.front();
  for (std::size_t bucket = 0; bucket < std::size(kBuckets); ++bucket) {
    long long amount = row != nullptr && bucket + 1 < row->values.size() && row->values[bucket + 1] ? *row->values[bucket + 1] : 0;
    LSalesReportAddRow(table, LReportRowKind::kAccount, kBuckets[bucket], {"", "", "", "", amount}).indent = 1;
  }
}

bool LCustomerStatementLogAdd(LProfile& profile, const LCustomerStatementIssue& issue) {
  LRecord record;
  profile.MainList(kStatementLogList).CreateNewRecord(record);
  record.SetString("Customer", issue.customer);
  record.SetString("From", issue.from);
  record.SetString("To", issue.to);
  record.SetString("Closing", std::to_string(issue.closing));
  record.SetString("Issued", issue.issued);
  record.SetString("User", issue.user);
  record.SetString("Format", issue.format);
  return record.Flush();
}

std::vector<LCustomerStatementIssue> LCustomerStatementLog(LProfile& profile, std::string_view customer) {
  std::vector<LCustomerStatementIssue> issues;
  LRecord record;
  for (LFileStoreIteratorBase it(profile.MainList(kStatementLogList), record); record.IsAttached(); it.Next(record))
    if (record.GetString("Customer") == customer)
      issues.push_back({record.GetString("Customer"), record.GetString("From"), record.GetString("To"),
                        record.GetInt64("Closing", 0), record.GetString("Issued"), record.GetString("User"),
                        record.GetString("Format")});
  std::stable_sort(issues.begin(), issues.end(),
                   [](const LCustomerStatementIssue& a, const LCustomerStatementIssue& b) { return a.issued > b.issued; });
  return issues;
}
