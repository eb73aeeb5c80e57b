#include "invoice/shared/salesreport.h"

#include <algorithm>

#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "llib/gen/datastore.h"

LSalesReport::LSalesReport(LProfile& profile, LSalesReportFilter filter)
    : profile_(profile),
      filter_(std::move(filter)),
      fromText_(filter_.from.IsValid() ? filter_.from.ToText() : std::string()),
      toText_(filter_.to.IsValid() ? filter_.to.ToText() : std::string()),
      everyCustomer_(filter_.customers.empty()),
      selected_(filter_.customers.begin(), filter_.customers.end()) {}

bool LSalesReport::InPeriod(std::string_view date) const {
  return (fromText_.empty() || date >= fromText_) && (toText_.empty() || date <= toText_);
}

bool LSalesReport::CustomerSelected(std::string_view customer) const {
  return everyCustomer_ || selected_.find(customer) != selected_.end();
}

void LSalesReport::SelectCustomers(const std::vector<std::string>& keys) {
  everyCustomer_ = false;
  selected_.clear();
  selected_.insert(keys.begin(), keys.end());
}

namespace {

// Walks a list with records of class T, visiting those that keep accepts.
template <class T, class Keep, class Visit>
void WalkList(const LProfile& profile, std::string_view listName, Keep keep, Visit visit) {
  LDataStoreList<LFileStoreDataStore, T> list(profile.GetDataStore(), listName);
  for (LDataStoreListIterator<LFileStoreDataStore, T> it(list); it.IsValid(); it.Next())
    if (keep(*it)) visit(*it);
}

}  // namespace

bool LSalesReport::Keeps(const LRecord& record) const {
  return InPeriod(record.GetString("Date")) && CustomerSelected(record.GetString("Customer"));
}

void LSalesReport::Walk(std::string_view listName, const std::function<void(const LRecord&)>& visit) const {
  WalkList<LRecord>(profile_, listName, [this](const LRecord& r) { return Keeps(r); }, visit);
}

void LSalesReport::WalkDocuments(std::string_view listName,
                                 const std::function<void(LSalesDocument&)>& visit) const {
  WalkList<LSalesDocument>(profile_, listName, [this](const LRecord& r) { return Keeps(r); }, visit);
}

std::vector<LSalesReportDocument> LSalesReport::Documents(std::string_view listName) const {
  std::vector<LSalesReportDocument> documents;
  // Only invoices are paid: reading an amount paid may recompute and store it, which must never
  // happen to an order or a quote that shares an invoice's key.
  bool invoices = listName == LSalesDocumentKindOf(LSalesDocumentType::kInvoice).recordedList;
  WalkDocuments(listName, [this, invoices, &documents](LSalesDocument& document) {
    LSalesReportDocument row{document.GetPrimaryKey(), document.GetDate(), document.GetCustomer(),
                             document.GetString("SalesPerson"), "", document.GetTotal(), document.GetSubTotal(),
                             document.GetTaxTotal()};
    if (invoices) {
      row.due = LDate::FromTime(LInvoiceCalculateDueDate(document)).ToText();
      row.paid = document.GetAmountPaid(profile_);
      row.status = LInvoiceGetStatus(profile_, document);
    }
    documents.push_back(std::move(row));
  });
  std::sort(documents.begin(), documents.end(), [](const LSalesReportDocument& a, const LSalesReportDocument& b) {
    if (a.date != b.date) return a.date < b.date;
    return LDocumentKeyLess(a.key, b.key);
  });
  return documents;
}

std::string LSalesReport::PeriodText() const { return LSalesReportPeriodText(filter_.from, filter_.to); }

std::string LSalesReportPeriodText(const LDate& from, const LDate& to) {
  if (from.IsValid() && to.IsValid()) return "Du " + from.ToText() + " au " + to.ToText();
  if (from.IsValid()) return "Depuis le " + from.ToText();
  if (to.IsValid()) return "Jusqu'au " + to.ToText();
  return {};
}

LReportRow& LSalesReportAddRow(LReportTable& table, LReportRowKind kind, std::string_view label,
                               const std::vector<LSalesReportCell>& cells) {
  LReportRow& row = table.AddRow(kind, label, {});
  for (const auto& cell : cells) {
    if (const long long* amount = std::get_if<long long>(&cell)) {
      row.values.emplace_back(*amount);
      row.texts.emplace_back();
    } else {
      row.values.emplace_back(std::nullopt);
      row.texts.push_back(std::get<std::string>(cell));
    }
  }
  return row;
}

