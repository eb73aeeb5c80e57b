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

  std::vector<LLetteringNode> nodes;
  std::unordered_map<std::string, std::size_t> nodeOf;
  std::vector<std::pair<std::string, std::string>> joins;  // (applier key, settled document key)

  auto add = [&](const std::string& key, const std::string& reference, const LDate& date, long long amount,
                 const std::string& party, bool customer) {
    Document& document = documents_[key];
    document.reference = LFecReferenceKey(reference);
    document.line.amount = amount;
    document.line.auxNumber = party;
    document.line.auxName = nameOf(customer ? customers : suppliers, party);
    nodeOf[key] = nodes.size();
    nodes.push_back({key, date, amount, nodes.size()});
  };
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
      add(key, reference, date, amount, party, customer);
      if (family == 'C' || family == 'R')
        for (const auto& applied : LReadAppliedAmounts(*it)) joins.emplace_back(key, "I" + applied.invoice);
      if (family != 'P') continue;
      for (const auto& applied : LReadAppliedAmounts(*it, kBillPaymentKeysField, kBillPaymentAmountsField))
        joins.emplace_back(key, "B" + applied.invoice);
      std::string voidReference = it->GetString("VoidTxnRef");
      if (!LBillPaymentIsVoid(*it) || voidReference.empty()) continue;
      LDate voidDate;
      LDate::Parse(it->GetString("VoidDate"), voidDate);
      std::string reversal = 'V' + it->GetPrimaryKey();
      add(reversal, voidReference, voidDate, -amount, party, false);
      joins.emplace_back(reversal, key);
    }
  };
  read(LSalesDocumentKindOf(LSalesDocumentType::kInvoice).recordedList, 'I', "Customer", "Total", +1, true);
  read(LSalesDocumentKindOf(LSalesDocumentType::kCreditNote).recordedList, 'C', "Customer", "Total", -1, true);
  read(kPaymentsList, 'R', "Customer", "Amount", -1, true);
  read(kBillsList, 'B', "Supplier", "Total", -1, false);
  read(kBillPaymentsList, 'P', "Supplier", "Amount", +1, false);

  // The groups that applications join.
  for (const auto& [applier, settledKey] : joins) {
    auto found = nodeOf.find(settledKey);
    if (found == nodeOf.end()) continue;
    nodes[Root(nodes, nodeOf[applier])].parent = Root(nodes, found->second);
  }
  std::map<std::size_t, LSettledGroup> groups;
  std::map<std::size_t, long long> sums;
  for (std::size_t n = 0; n < nodes.size(); ++n) {
    std::size_t root = Root(nodes, n);
    LSettledGroup& group = groups[root];
    group.keys.push_back(nodes[n].key);
    if (group.keys.size() == 1 || group.date < nodes[n].date) group.date = nodes[n].date;
    sums[root] += nodes[n].amount;
  }
  std::vector<LSettledGroup> settled;
  for (auto& [root, group] : groups)
    if (group.keys.size() > 1 && sums[root] == 0 && !(lastLetteringDay < group.date)) settled.push_back(group);

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
                         : type == kTxnTypeBillPayment ? "PV"
                                                       : "";
  std::string upperReference = LFecReferenceKey(reference);
  for (char family : families) {
    auto found = documents_.find(family + std::string(document));
    if (found != documents_.end() && found->second.reference == upperReference) return &found->second.line;
  }
  return nullptr;
}
