#include "accounts/purchaseintent.h"

#include <map>
#include <set>
#include <string>
#include <vector>

#include "accounts/accounts.h"
#include "accounts/billpayments.h"
#include "accounts/bills.h"
#include "accounts/cheques.h"
#include "accounts/check.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "accounts/ledgeriterator.h"
#include "accounts/suppliers.h"
#include "invoice/shared/profile.h"
#include "llib/gen/log.h"
#include "llib/gen/system.h"

namespace {

constexpr std::string_view kNoteBill = "bill";
constexpr std::string_view kNoteBillPayment = "billpayment";
constexpr std::string_view kNoteCheque = "cheque";
constexpr std::string_view kNoteChequeVoid = "chequevoid";
constexpr std::string_view kNoteChequeUnvoid = "chequeunvoid";
constexpr std::string_view kNoteChequeDelete = "chequedelete";

// A cheque noted but not saved: its posting taken out, or, for one paying a supplier, the bill
// payment that was to be its own (of that number on that bank, which no cheque names).
void SettleCheque(LProfile& profile, const std::string& account, const std::string& number, const std::string& key,
                  const std::string& date) {
  if (!LChequeFind(profile, account, number).empty()) return;  // saved: the cheque is whole
  bool undone = false;
  if (!key.empty()) {
    undone = LLedgerTransactionTestExists(profile, date, key) && LAccountTransactionDelete(profile, date, key);
  } else {
    LAccount bank;
    if (!LAccountList(profile).Open(bank, account)) return;
    std::string bankName = bank.GetDescription();
    bank.DetachWithoutSave();
    std::vector<std::string> made;
    LBillPayment payment;
    for (LFileStoreIteratorBase it(profile.List(kBillPaymentsList), payment); payment.IsAttached(); it.Next(payment))
      if (payment.GetString("ChequeNumber") == number && payment.GetString("DepositAccount") == bankName &&
          LChequeOfBillPayment(profile, payment.GetPrimaryKey()).empty())
        made.push_back(payment.GetPrimaryKey());
    payment.Invalidate();
    for (const std::string& madeKey : made) {
      std::string error;
      undone = LBillPaymentDelete(profile, madeKey, error) || undone;
    }
  }
  if (undone)
    LLogWarning("Chèque n° %s du compte %s : interrompu avant d'être enregistré, ce qu'il avait passé a été retiré.",
                number.c_str(), account.c_str());
}

// A cheque's voiding killed before the cheque was saved void: its reversal on date leaves the
// ledger and its bill payment, voided already, counts again.
void SettleChequeVoid(LProfile& profile, const std::string& key, const std::string& date) {
  LCheque cheque;
  if (!profile.List(kChequesList).Open(cheque, key)) return;
  cheque.DetachWithoutSave();
  if (cheque.IsVoid()) return;  // saved void: the voiding is whole
  std::string reversal = cheque.GetString("JournalTxnRef") + std::string(kChequeVoidSuffix);
  bool undone = LLedgerTransactionTestExists(profile, date, reversal) && LAccountTransactionDelete(profile, date, reversal);
  LBillPayment payment;
  if (!cheque.GetBillPayment().empty() && profile.List(kBillPaymentsList).Open(payment, cheque.GetBillPayment())) {
    bool voided = LBillPaymentIsVoid(payment) && payment.GetString("VoidTxnRef") == reversal;
    payment.DetachWithoutSave();
    std::string error;
    if (voided && !LBillPaymentUnvoid(profile, cheque.GetBillPayment(), error))
      LLogError("Chèque n° %s du compte %s : %s", cheque.GetNumber().c_str(), cheque.GetAccount().c_str(), error.c_str());
    undone = undone || voided;
  }
  if (undone)
    LLogWarning("Chèque n° %s du compte %s : son annulation, interrompue avant que le chèque soit enregistré annulé, a été défaite.",
                cheque.GetNumber().c_str(), cheque.GetAccount().c_str());
}

// The taking back of a cheque's voiding, or its deletion, killed midway: finished, as the user
// asked (the reversal, or the cheque's own posting, may have left the ledger already).
void SettleChequeUnvoidOrDelete(LProfile& profile, const std::string& key, bool deleting) {
  LCheque cheque;
  if (!profile.List(kChequesList).Open(cheque, key)) return;  // deleted: whole
  cheque.DetachWithoutSave();
  std::string reversal = cheque.GetString("VoidTxnRef");
  if (!deleting && reversal.empty()) return;  // saved without its voiding: whole
  bool finished = deleting ? LChequeDelete(profile, key, nullptr) : LChequeDeleteForLedger(profile, {}, reversal);
  LLogWarning(finished ? "Chèque n° %s du compte %s : %s, interrompue, a été achevée."
                       : "Chèque n° %s du compte %s : %s, interrompue, n'a pas pu être achevée.",
              cheque.GetNumber().c_str(), cheque.GetAccount().c_str(),
              deleting ? "sa suppression" : "la reprise de son annulation");
}

// The bill payment document's postings on the dates: (date, reference) of each.
std::set<std::pair<std::string, std::string>> PostingsOf(const LProfile& profile, const std::string& document,
                                                         const std::vector<std::string>& dates) {
  std::set<std::pair<std::string, std::string>> found;
  for (const std::string& date : std::set<std::string>(dates.begin(), dates.end())) {
    if (date.empty()) continue;
    LLedgerAccountLineIterator it(profile, date, date);
    for (it.SkipToValidLine(); it.valid; it.SkipToValidLine())
      if (it.line.type == kTxnTypeBillPayment && it.line.document == document) found.insert({it.line.date, it.line.reference});
  }
  return found;
}

// Brings the posting of the bill payment key and its link in step with its record: the record
// posted as it stands on its date under "JournalTxnRef" (or, when the crash came before the link
// was saved, the reference it was posted under), saved naming it; any other posting of the
// payment on the dates noted taken out, all of them when the record is gone.
void SettleBillPayment(LProfile& profile, const std::string& key, const std::vector<std::string>& dates) {
  LBillPayment payment;
  bool present = profile.List(kBillPaymentsList).Open(payment, key);
  std::vector<std::string> looked = dates;
  if (present) looked.push_back(payment.GetString("Date"));
  std::set<std::pair<std::string, std::string>> posted = PostingsOf(profile, key, looked);
  // A void payment's reversal (its cheque's, cheques.h) is its own too.
  if (present && LBillPaymentIsVoid(payment)) posted.erase({payment.GetString("VoidDate"), payment.GetString("VoidTxnRef")});
  std::string reference = present ? payment.GetString("JournalTxnRef") : std::string();
  if (present && reference.empty())  // posted, killed before the link was saved
    for (const auto& [date, found] : posted)
      if (reference.empty() || date == payment.GetString("Date")) reference = found;
  bool changed = false;
  for (const auto& [date, found] : posted) {
    if (present && date == payment.GetString("Date") && found == reference) continue;
    changed = LAccountTransactionDelete(profile, date, found) || changed;
  }
  if (present) {
    bool linked = !reference.empty() && payment.GetString("JournalTxnRef") == reference;
    LLedgerTransaction wanted, current;
    LBillPaymentBuildTransaction(profile, payment, reference, LGetPostingUserName(), wanted);
    bool loaded = !reference.empty() && LLedgerTransactionLoad(profile, current, wanted.GetDate(), reference);
    if (!loaded || !LLedgerTransactionEqual(current, wanted)) {
      if (loaded) (void)LAccountTransactionDelete(profile, wanted.GetDate(), reference);
      payment.SetString("JournalTxnRef", reference);  // empty: the next number is taken
      if (!LBillPaymentRecordTransactions(profile, payment, LGetPostingUserName()))
        LLogError("Règlement fournisseur %s : son écriture n'a pas pu être refaite.", key.c_str());
      linked = false;
    } else if (!linked) {
      payment.SetString("JournalTxnRef", reference);
    }
    if (!linked) {
      if (!payment.Flush()) LLogError("Règlement fournisseur %s : le lien vers son écriture n'a pas pu être enregistré.", key.c_str());
      changed = true;
    }
    payment.DetachWithoutSave();
  }
  if (changed)
    LLogWarning("Règlement fournisseur %s : son écriture, interrompue, a été remise en accord avec le document.", key.c_str());
}

// Brings the bill key's posting in step with its record: posted as the record stands, on its date
// only; a bill without its record (a recording cut short before it, or a deletion after) has no
// posting left on either date noted.
void SettleBill(LProfile& profile, const std::string& key, const std::vector<std::string>& dates) {
  LBill bill;
  LLedgerTransaction wanted;
  bool present = profile.List(kBillsList).Open(bill, key);
  if (present) {
    LBillBuildTransaction(profile, bill, key, LGetPostingUserName(), wanted);
    bill.DetachWithoutSave();
  }
  bool changed = false;
  for (const std::string& date : dates) {
    if (date.empty() || (present && date == wanted.GetDate())) continue;
    if (LLedgerTransactionTestExists(profile, date, key)) changed = LAccountTransactionDelete(profile, date, key) || changed;
  }
  if (present) {
    LLedgerTransaction current;
    bool loaded = LLedgerTransactionLoad(profile, current, wanted.GetDate(), key);
    if (!loaded || !LLedgerTransactionEqual(current, wanted)) {
      if (loaded) (void)LAccountTransactionDelete(profile, wanted.GetDate(), key);
      changed = LAccountTransactionRecord(profile, wanted) || changed;
    }
  }
  if (changed)
    LLogWarning("Facture fournisseur %s : son écriture, interrompue, a été remise en accord avec le document.", key.c_str());
}

void SettlePurchaseChange(const LProfile& profile, const std::vector<std::string>& notes) {
  LProfile books(profile.GetDataStore().GetFolder());
  // By key, the dates its posting was or was to be on: of bills, of bill payments.
  std::map<std::string, std::vector<std::string>> bills, payments;
  for (const std::string& note : notes) {
    std::vector<std::string_view> parts = LIntentNoteParts(note);
    // Cheques first: they may take a bill payment out, or change whether it counts.
    if (parts.size() == 5 && parts[0] == kNoteCheque)
      SettleCheque(books, std::string(parts[1]), std::string(parts[2]), std::string(parts[3]), std::string(parts[4]));
    if (parts.size() == 3 && parts[0] == kNoteChequeVoid) SettleChequeVoid(books, std::string(parts[1]), std::string(parts[2]));
    if (parts.size() == 2 && (parts[0] == kNoteChequeUnvoid || parts[0] == kNoteChequeDelete))
      SettleChequeUnvoidOrDelete(books, std::string(parts[1]), parts[0] == kNoteChequeDelete);
    if (parts.size() != 4) continue;
    auto* noted = parts[0] == kNoteBill ? &bills : parts[0] == kNoteBillPayment ? &payments : nullptr;
    if (noted == nullptr) continue;
    std::vector<std::string>& dates = (*noted)[std::string(parts[1])];
    dates.insert(dates.end(), {std::string(parts[2]), std::string(parts[3])});
  }
  for (const auto& [key, dates] : bills) SettleBill(books, key, dates);
  for (const auto& [key, dates] : payments) SettleBillPayment(books, key, dates);
  LCheckReport report;
  LCheckSupplierBalances(books, true, report);
  for (const LCheckDifference& difference : report.differences)
    LLogWarning("Achats interrompus : %s/%s « %s » remis à %lld (au lieu de %lld).", difference.list.c_str(), difference.key.c_str(),
                difference.field.c_str(), difference.computed, difference.stored);
}

}  // namespace

void LPurchaseChangeIntent::NoteBill(std::string_view key, std::string_view oldDate, std::string_view date) {
  (void)Note(std::string(kNoteBill) + "\t" + std::string(key) + "\t" + std::string(oldDate) + "\t" + std::string(date));
}

void LPurchaseChangeIntent::NoteBillPayment(std::string_view key, std::string_view oldDate, std::string_view date) {
  (void)Note(std::string(kNoteBillPayment) + "\t" + std::string(key) + "\t" + std::string(oldDate) + "\t" + std::string(date));
}

void LPurchaseChangeIntent::NoteCheque(std::string_view account, std::string_view number, std::string_view key,
                                       std::string_view date) {
  (void)Note(std::string(kNoteCheque) + "\t" + std::string(account) + "\t" + std::string(number) + "\t" +
             std::string(key) + "\t" + std::string(date));
}

void LPurchaseChangeIntent::NoteChequeVoid(std::string_view key, std::string_view date) {
  (void)Note(std::string(kNoteChequeVoid) + "\t" + std::string(key) + "\t" + std::string(date));
}

void LPurchaseChangeIntent::NoteChequeUnvoid(std::string_view key) {
  (void)Note(std::string(kNoteChequeUnvoid) + "\t" + std::string(key));
}

void LPurchaseChangeIntent::NoteChequeDelete(std::string_view key) {
  (void)Note(std::string(kNoteChequeDelete) + "\t" + std::string(key));
}

void LPurchaseLedgerInstall() { LLedgerAddIntentSettler(kPurchaseChangeIntentExtension, SettlePurchaseChange); }
