// Changes of the purchase book that survive a crash. A bill, a bill payment or a cheque moves
// figures kept in other records: the bill's posting, the bills' "AmountPaid", the suppliers'
// "Balance". Each such change holds the ledger lock from start to end and a locked intent file
// ".purchases" (accounts/ledgerintent.h) in which it notes each bill and each bill payment whose
// posting it writes or takes out, before it does. The next holder of the ledger lock that finds
// the file of a killed change brings the noted documents and their postings in step (a record
// present is posted as it stands and names its posting in "JournalTxnRef", a posting left without
// its document is taken out; a cheque whose record was never saved has its posting, or the bill
// payment it made, taken out; a cheque's voiding cut short before the cheque was saved void is
// taken back; the taking back of a voiding, or a deletion, cut short is finished), then computes
// every supplier's balance and every bill's amount paid again from the documents
// (LCheckSupplierBalances), and logs it.
#pragma once

#include <string_view>

#include "accounts/ledgerintent.h"

class LProfile;

inline constexpr std::string_view kPurchaseChangeIntentExtension = ".purchases";

class LPurchaseChangeIntent : public LBooksChangeIntent {
 public:
  explicit LPurchaseChangeIntent(const LProfile& profile)
      : LBooksChangeIntent(profile, kPurchaseChangeIntentExtension) {}
  // The bill key is about to be posted on date (empty: taken out), having been posted on oldDate
  // (empty: it had no posting).
  void NoteBill(std::string_view key, std::string_view oldDate, std::string_view date);
  // The same for the bill payment key, before its record or its posting changes.
  void NoteBillPayment(std::string_view key, std::string_view oldDate, std::string_view date);
  // The cheque number of account is about to be written on date, posted under key (empty: by the
  // bill payment it makes). Killed before the cheque record is saved, the posting or the bill
  // payment goes: the cheque never was.
  void NoteCheque(std::string_view account, std::string_view number, std::string_view key, std::string_view date);
  // The cheque key is about to be voided on date: its reversal posted, its bill payment voided,
  // then the cheque saved void. Killed before that save, the reversal goes and the bill payment
  // counts again: the cheque never was void.
  void NoteChequeVoid(std::string_view key, std::string_view date);
  // The cheque key is about to lose its void reversal (deleted from the journal), or to be
  // deleted with its postings: whichever step was reached, the next holder of the lock finishes it.
  void NoteChequeUnvoid(std::string_view key);
  void NoteChequeDelete(std::string_view key);
};

// Registers the settler of those intents. Call once at start-up; calling it again changes nothing.
void LPurchaseLedgerInstall();
