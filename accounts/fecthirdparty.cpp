#include "accounts/fecthirdparty.h"

#include <algorithm>
#include <map>
#include <vector>

#include "accounts/billpayments.h"
#include "accounts/fec.h"
#include "accounts/ledger.h"
#include "accounts/bills.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/payment.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "llib/gen/datastore.h"

namespace {

using LRecordIterator = LDataStoreListIterator<LFileStoreDataStore, LRecord>;

// Key -> "Name" of a list of third parties.
std::unordered_map<std::string, std::string> ReadNames(const LProfile& profile, std::string_view list) {
  std::unordered_map<std::string, std::string> names;
  LDataStoreList<LFileStoreDataStore, LRecord> records(profile.GetDataStore(), list);
  for (LRecordIterator it(records); it.IsValid(); it.Next()) names[it->GetPrimaryKey()] = it->GetString("Name");
  return names;
}

// One document taking part in lettering.
struct LLetteringNode {
  std::string key;     // family letter and identifier, as in documents_
  LDate date;          // the document's date
  long long amount;    // its third-party amount, debit-positive
  std::size_t parent;  // union-find
};

std::size_t Root(std::vector<LLetteringNode>& nodes, std::size_t n) {
  while (nodes[n].parent != n) n = nodes[n].parent = nodes[nodes[n].parent].parent;
  return n;
}

// A settled group before it has its letter.
struct LSettledGroup {
  LDate date;
  std::vector<std::string> keys;
};

}  // namespace

std::string LFecLetterCode(std::size_t n) {
  std::string code;
  for (++n; n > 0; n = (n - 1) / 26) code.insert(code.begin(), static_cast<char>('A' + (n - 1) % 26));
  return code;
}

void LFecThirdParties::Load(const LProfile& profile, const LDate& lastLetteringDay) {
  documents_.clear();
  auto customers = ReadNames(profile, kCustomersList);
  auto suppliers = ReadNames(profile, "Suppliers");
  auto nameOf = [](const std::unordered_map<std::string, std::string>& names, const std::string& key) {
    auto found = names.find(key);
    return found == names.end() || found->second.empty() ? key : found->second;
  };

  std::vector<LLetteringNode> customerNodes;
  std::unordered_map<std::string, std::size_t> nodeOf;
  std::vector<std::pair<std::string, std::string>> applications;  // (applier key, invoice key)
  std::map<std::string, std::vector<LLetteringNode>> supplierEvents;

  // Reads one list of documents: family letter, the field naming the third party, the sign of
  // the amount field on the third party's side, whether it is a customer document.
  auto read = [&](std::string_view list, char family, std::string_view partyField, std::string_view amountField,
                  long long sign, bool customer) {
    LDataStoreList<LFileStoreDataStore, LRecord> records(profile.GetDataStore(), list);
    for (LRecordIterator it(records); it.IsValid(); it.Next()) {
      std::string reference = it->GetString("JournalTxnRef");
      if (reference.empty()) continue;  // never posted
      LDate date;
      LDate::Parse(it->GetString("Date"), date);
      long long amount = sign * it->GetInt64(amountField, 0);
      if (family == 'R' && it->GetBool("IsRefund", false)) amount = -amount;
      std::string party = it->GetString(partyField);
      std::string key = family + it->GetPrimaryKey();
      Document& document = documents_[key];
      document.reference = LFecReferenceKey(reference);
      document.line.amount = amount;
      document.line.auxNumber = party;
      document.line.auxName = nameOf(customer ? customers : suppliers, party);
      if (customer) {
        nodeOf[key] = customerNodes.size();
        customerNodes.push_back({key, date, amount, customerNodes.size()});
        if (family != 'I')
          for (const auto& applied : LReadAppliedAmounts(*it)) applications.emplace_back(key, "I" + applied.invoice);
      } else {
        supplierEvents[party].push_back({key, date, amount, 0});
      }
    }
  };
  read(LSalesDocumentKindOf(LSalesDocumentType::kInvoice).recordedList, 'I', "Customer", "Total", +1, true);
  read(LSalesDocumentKindOf(LSalesDocumentType::kCreditNote).recordedList, 'C', "Customer", "Total", -1, true);
  read(kPaymentsList, 'R', "Customer", "Amount", -1, true);
  read(kBillsList, 'B', "Supplier", "Total", -1, false);
  read(kBillPaymentsList, 'P', "Supplier", "Amount", +1, false);

  std::vector<LSettledGroup> settled;

  // Customers: the groups that applications join.
  for (const auto& [applier, invoice] : applications) {
    auto found = nodeOf.find(invoice);
    if (found == nodeOf.end()) continue;
    customerNodes[Root(customerNodes, nodeOf[applier])].parent = Root(customerNodes, found->second);
  }
  std::map<std::size_t, LSettledGroup> groups;
  std::map<std::size_t, long long> sums;
  for (std::size_t n = 0; n < customerNodes.size(); ++n) {
    std::size_t root = Root(customerNodes, n);
    LSettledGroup& group = groups[root];
    group.keys.push_back(customerNodes[n].key);
    if (group.keys.size() == 1 || group.date < customerNodes[n].date) group.date = customerNodes[n].date;
    sums[root] += customerNodes[n].amount;
  }
  for (auto& [root, group] : groups)
    if (group.keys.size() > 1 && sums[root] == 0 && !(lastLetteringDay < group.date)) settled.push_back(group);

  // Suppliers: their balance coming back to zero, in date order.
  for (auto& [party, events] : supplierEvents) {
    std::stable_sort(events.begin(), events.end(),
                     [](const LLetteringNode& a, const LLetteringNode& b) { return a.date < b.date; });
    long long balance = 0;
    LSettledGroup group;
    for (const auto& event : events) {
      if (lastLetteringDay < event.date) break;
      balance += event.amount;
      group.keys.push_back(event.key);
      group.date = event.date;
      if (balance != 0) continue;
      if (group.keys.size() > 1) settled.push_back(group);
      group.keys.clear();
    }
  }

  std::stable_sort(settled.begin(), settled.end(),
                   [](const LSettledGroup& a, const LSettledGroup& b) { return a.date < b.date; });
  for (std::size_t n = 0; n < settled.size(); ++n) {
    std::string letter = LFecLetterCode(n);
    for (const auto& key : settled[n].keys) {
      LFecThirdPartyLine& line = documents_[key].line;
      line.letter = letter;
      line.letterDate = settled[n].date;
    }
  }
}

const LFecThirdPartyLine* LFecThirdParties::Find(std::string_view type, std::string_view document,
                                                 std::string_view reference) const {
  if (document.empty()) return nullptr;
  std::string families = type == kTxnTypeSales        ? "IC"
                         : type == kTxnTypeReceipt     ? "R"
                         : type == kTxnTypePurchase    ? "B"
                         : type == kTxnTypeBillPayment ? "P"
                                                       : "";
  std::string upperReference = LFecReferenceKey(reference);
  for (char family : families) {
    auto found = documents_.find(family + std::string(document));
    if (found != documents_.end() && found->second.reference == upperReference) return &found->second.line;
  }
  return nullptr;
}
