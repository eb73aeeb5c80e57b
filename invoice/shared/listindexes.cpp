#include "invoice/shared/listindexes.h"

#include "invoice/shared/customer.h"
#include "invoice/shared/partyfields.h"
#include "invoice/shared/payment.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/purchaselists.h"
#include "invoice/shared/salesdocument.h"
#include "llib/gen/filestoreindex.h"

namespace {

constexpr std::string_view kDateField = "Date";
constexpr std::string_view kNameField = "Name";

}  // namespace

const std::vector<LListIndex>& LListIndexes() {
  static const std::vector<LListIndex> indexes = [] {
    std::vector<LListIndex> all{{kPaymentsList, kDateField},     {kBillsList, kDateField},
                                {kBillPaymentsList, kDateField}, {kCustomersList, kNameField},
                                {kSalesPersonList, kNameField}};
    for (LSalesDocumentType type : {LSalesDocumentType::kInvoice, LSalesDocumentType::kOrder,
                                    LSalesDocumentType::kQuote, LSalesDocumentType::kCreditNote,
                                    LSalesDocumentType::kPOrder}) {
      all.push_back({LSalesDocumentKindOf(type).recordedList, kDateField});
      all.push_back({LSalesDocumentKindOf(type).draftsList, kDateField});
    }
    return all;
  }();
  return indexes;
}

void LListIndexesDeclare(std::string_view folder) {
  for (const LListIndex& index : LListIndexes()) LFileStoreIndexDeclare(folder, index.list, index.field);
}

std::vector<std::string> LDocumentKeysDated(LProfile& profile, std::string_view listName,
                                            const std::function<bool(std::string_view date)>& holds) {
  std::vector<std::string> keys;
  for (LFileStoreIndexEntry& entry : LFileStoreIndexRead(profile.MainList(listName), kDateField))
    if (holds(entry.value)) keys.push_back(std::move(entry.key));
  return keys;
}

std::vector<std::pair<std::string, std::string>> LPartyNames(LProfile& profile, std::string_view listName) {
  std::vector<std::pair<std::string, std::string>> names;
  for (LFileStoreIndexEntry& entry : LFileStoreIndexRead(profile.MainList(listName), kNameField))
    names.emplace_back(std::move(entry.key), std::move(entry.value));
  return names;
}
