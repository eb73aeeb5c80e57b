#include "invoice/shared/taxrename.h"

#include "invoice/shared/itemcollection.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"

namespace {

constexpr std::string_view kDocumentLists[] = {
    "Invoices",  "InvoicesDrafts", "InvoicesRecurring", "Quotes",      "QuotesDrafts",      "Orders",
    "OrdersDrafts", "OrdersRecurring", "CreditNotes", "CreditNotesDrafts", "POrders", "POrdersDrafts"};

// Sets field to newName when it holds oldName; true when it did.
bool Rename(LRecord& record, const std::string& field, std::string_view oldName, std::string_view newName) {
  if (!record.TestFieldExists(field) || record.GetString(field) != oldName) return false;
  record.SetString(field, newName);
  return true;
}

template <class Change>
int ChangeInList(const LFileStoreListBase& list, Change change) {
  int changed = 0;
  LRecord record;
  for (LFileStoreIteratorBase it(list, record); record.IsAttached(); it.Next(record))
    if (change(record)) ++changed;  // the iterator saves the changed record as it moves on
  return changed;
}

}  // namespace

int ChangeTaxNameInList(const LFileStoreListBase& list, std::string_view oldName, std::string_view newName) {
  return ChangeInList(list, [&](LRecord& record) {
    bool changed = false;
    int count = record.GetInt("ItemCount", 0);
    for (int i = 0; i < count; ++i)
      changed |= Rename(record, LFKItemCollectionRecord::ItemField(i, "TaxName"), oldName, newName);
    return changed;
  });
}

int ChangeShippingTaxNameInList(const LFileStoreListBase& list, std::string_view oldName, std::string_view newName) {
  return ChangeInList(list, [&](LRecord& record) { return Rename(record, "ShippingTaxName", oldName, newName); });
}

LProcessResult ProcessChangeTaxName(LProcessInterface& process, LChangeTaxNameData& data) {
  data.changedRecords = 0;
  if (data.oldName == data.newName || data.oldName.empty()) return kProcessFinished;
  double done = 0;
  for (std::string_view listName : kDocumentLists) {
    if (process.IsToStop()) return kProcessCancelled;
    LFileStoreListBase list = data.profile->List(listName);
    data.changedRecords += ChangeTaxNameInList(list, data.oldName, data.newName);
    data.changedRecords += ChangeShippingTaxNameInList(list, data.oldName, data.newName);
    process.SetProgress(++done / std::size(kDocumentLists));
  }
  return kProcessFinished;
}
