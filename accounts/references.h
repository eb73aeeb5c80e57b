// Ledger references: a prefix and a counter kept in the "Options" record, written "%s%d"
// (GJ10000, PRC10000, ...). Every counter starts at 10000. A number is taken under the ledger
// lock and, within it, read and moved on under the "Options" record's own lock, so two processes
// posting at once never get the same reference, even when one of them went on without the ledger
// lock after the whole wait.
#pragma once

#include <functional>
#include <string>
#include <string_view>

class LProfile;

struct LReferenceCounter {
  std::string_view prefixField;    // option holding the prefix
  std::string_view numberField;    // option holding the next number
  std::string_view defaultPrefix;  // prefix when the option is empty
};

inline constexpr int kFirstReferenceNumber = 10000;
inline constexpr LReferenceCounter kGeneralJournalCounter{"RefPrefixGenJournal", "RefNumberGenJournal", "GJ"};
inline constexpr LReferenceCounter kPurchasesCounter{"RefPrefixPurchases", "RefNumberPurchases", "PRC"};
inline constexpr LReferenceCounter kBillPaymentCounter{"RefPrefixPayment", "RefNumberPayment", "PMT"};
inline constexpr LReferenceCounter kSalesCounter{"RefPrefixSales", "RefNumberSales", "SLS"};
inline constexpr LReferenceCounter kReceiptCounter{"RefPrefixReceipt", "RefNumberReceipt", "REC"};

// "%s%d" of prefix and number.
std::string LFormatReference(std::string_view prefix, int number);
// The counter's prefix (its default when the option is empty).
std::string LReferencePrefix(const LProfile& profile, const LReferenceCounter& counter);
// The counter's next number, without taking it.
int LPeekReferenceNumber(const LProfile& profile, const LReferenceCounter& counter);
// Stores the counter's next number.
// false when the counter could not be written.
[[nodiscard]] bool LStoreReferenceNumber(const LProfile& profile, const LReferenceCounter& counter, int next);

// Takes the counter's next number under the ledger lock and stores the one after it at once.
// While isTaken says a number is already in use, the next one is tried (and skipped for good).
// 0 when the counter could not be written: no number is taken and nothing may be posted.
//   int number = LTakeReferenceNumber(profile, kGeneralJournalCounter);   // 10000, counter 10001
int LTakeReferenceNumber(LProfile& profile, const LReferenceCounter& counter,
                         const std::function<bool(int number)>& isTaken = {});
