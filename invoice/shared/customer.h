// Customers (LCustomer, list "Customers", key = the text documents store in "Customer") and the
// two values each customer record caches for lists and reports: "Balance", what the customer
// owes in minor units (recorded invoices raise it, payments and credit notes lower it), and
// "OldestDue", the due moment ("YYYY-MM-DD HH:MM:SS") of the oldest invoice that the balance
// still covers, empty when nothing is outstanding.
//
// The balance is moved in step by the code that changes documents (LCustomerChangeBalance);
// "OldestDue" is recomputed by a long process over the invoices.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/process.h"
#include "llib/gen/record.h"

class LProfile;

inline constexpr std::string_view kCustomersList = "Customers";

// What a lookup in "Customers" says when no customer has that key: "Client introuvable : KEY."
std::string LCustomerNotFoundMessage(std::string_view key);

class LCustomer : public LRecord {
 public:
  long long GetBalance() const { return GetInt64("Balance", 0); }
  std::string GetOldestDue() const { return GetString("OldestDue"); }
};

// When "Customers" holds a record of that key, adds delta to its "Balance" (see below); an
// unknown key is ignored without a message. false when the customer could not be written.
[[nodiscard]] bool LCustomerChangeBalance(LProfile& profile, std::string_view customer, long long delta);
// "Balance" (0 when absent) + delta, flushed at once; false when it could not be written.
[[nodiscard]] bool LCustomerChangeBalance(LProfile& profile, LCustomer& customer, long long delta);

// The balance a customer should have according to the documents: the totals of its recorded
// invoices, less its recorded credit notes and the amounts of its payments ("Payments"), plus
// the amounts of its refunds (payments with "IsRefund"). Keys are compared exactly. `kontavo check` compares it with the stored "Balance".
long long LCustomerBalanceFromDocuments(LProfile& profile, std::string_view customer);
// The same for every customer named by a document, in one walk of the lists.
std::map<std::string, long long> LCustomerBalancesFromDocuments(LProfile& profile);

// The recomputation of "OldestDue", run under a progress display:
//     LCoreDataRetotalCustomerData data{&profile, {"C1"}};
//     LProcessResult result = Process(process, data);
struct LCoreDataRetotalCustomerData {
  LProfile* profile = nullptr;         // the open business
  std::vector<std::string> customers;  // keys to recompute; empty: every customer
};

// For each customer: a balance B below 1 clears "OldestDue"; otherwise the invoices with a
// non-zero "Total" whose "Customer" equals the key without regard to letter case are taken,
// oldest due first, and the first one after whose removal the remaining sum falls below B is
// the oldest outstanding (payments settle the oldest invoices first). No invoice, or a sum below
// B, clears "OldestDue". Status: title "Nouveau total client", message "Veuillez patienter...";
// a cancellation between invoices leaves every "OldestDue" unchanged and returns
// kProcessCancelled.
LProcessResult Process(LProcessInterface& process, LCoreDataRetotalCustomerData& data);
