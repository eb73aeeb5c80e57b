#include "invoice/shared/documentdateindex.h"

#include "invoice/shared/payment.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "llib/gen/filestoreindex.h"

const std::vector<std::string_view>& LDocumentDateIndexedLists() {
  static const std::vector<std::string_view> lists = [] {
    std::vector<std::string_view> names{kPaymentsList};
    for (LSalesDocumentType type : {LSalesDocumentType::kInvoice, LSalesDocumentType::kOrder,
                                    LSalesDocumentType::kQuote, LSalesDocumentType::kCreditNote}) {
      names.push_back(LSalesDocumentKindOf(type).recordedList);
      names.push_back(LSalesDocumentKindOf(type).draftsList);
    }
    return names;
  }();
  return lists;
}

void LDocumentDateIndexDeclare() {
  for (std::string_view list : LDocumentDateIndexedLists()) LFileStoreIndexDeclare(list, kDocumentDateField);
}

std::vector<std::string> LDocumentKeysDated(LProfile& profile, std::string_view listName,
                                            const std::function<bool(std::string_view date)>& holds) {
  std::vector<std::string> keys;
  for (LFileStoreIndexEntry& entry : LFileStoreIndexRead(profile.MainList(listName), kDocumentDateField))
    if (holds(entry.value)) keys.push_back(std::move(entry.key));
  return keys;
}
