#include "invoice/sales/salesledger.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "accounts/accounts.h"
#include "accounts/bankpost.h"
#include "accounts/check.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "invoice/sales/bankpayment.h"
#include "invoice/sales/paymentbook.h"
#include "invoice/sales/recurringrecord.h"
#include "invoice/sales/salesbook.h"
#include "invoice/sales/salesposting.h"
#include "invoice/sales/salesstock.h"
#include "invoice/sales/sourceclaim.h"
#include "invoice/sales/taxaccounts.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/listindexes.h"
#include "invoice/shared/payment.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/filestore.h"
#include "llib/gen/filestoreindex.h"
#include "llib/gen/log.h"

namespace {

constexpr std::string_view kNotePosting = "post";
constexpr std::string_view kNoteDeleting = "delete";
constexpr std::string_view kNoteReserving = "reserve";
constexpr std::string_view kNoteApplying = "apply";
constexpr std::string_view kNoteUnlocked = "unlocked";  // the change went on without the ledger lock

// What the notes of an interrupted change say about one document.
struct LNotedDocument {
  bool deleting = false;
  std::string oldDate;    // where its posting was before the change, when it had one
  std::string reference;  // the last reference noted
};

// Brings one noted document and its posting back in step. The document record is what the user
// asked for and what every page shows, and it is written before its posting, so a record or an
// edit cut short is completed: the document is posted again as it now stands. A deletion is
// completed too, not undone: it was written to the audit trail before it began, and it may
// already have let go of the payments and credit notes applied to the invoice, which nothing
// could put back. A record file left empty was a number reserved for a document never written.
void SettleDocument(LProfile& profile, const std::string& list, const std::string& key, const LNotedDocument& noted) {
  const LFileStoreListBase& store = profile.MainList(list);
  LSalesDocument document;
  if (!store.Open(document, key)) return;
  if (document.Fields().empty()) {
    document.DetachWithoutSave();
    if (!store.Delete(key)) LLogWriteFailure("unlink", store.MakeRecordPath(key), errno);
    return;
  }
  if (noted.deleting) {
    document.DetachWithoutSave();
    if (list == kPaymentsList) {
      (void)LPaymentFinishDelete(profile, key);
      return;
    }
    for (LSalesDocumentType type : {LSalesDocumentType::kInvoice, LSalesDocumentType::kCreditNote})
      if (LSalesDocumentKindOf(type).recordedList == list) (void)LSalesDocumentFinishDelete(profile, LSalesDocumentKindOf(type), key);
    return;
  }
  // A document killed between its save and its totalling holds no total yet: its figures are
  // worked out again from its lines before it is posted (the balances are computed afterwards).
  for (LSalesDocumentType type : {LSalesDocumentType::kInvoice, LSalesDocumentType::kCreditNote})
    if (LSalesDocumentKindOf(type).recordedList == list && !LSalesDocumentSumTotals(profile, LSalesDocumentKindOf(type), document).written)
      LLogWriteFailure("write", store.MakeRecordPath(key), errno);
  if (LSalesDocumentRepost(profile, list, document, noted.oldDate, noted.reference))
    LLogWarning("%s %s : son écriture, interrompue, a été refaite d'après le document.", list.c_str(), key.c_str());
}

// Takes back the numbers of list reserved by changes that died before writing their document: the
// empty record files. Sales changes run under the ledger lock, which the settler holds, so no
// live change is between reserving a number and writing its document, unless one went on
// without the lock: its numbers are then left for a later settler.
void TakeBackReservations(LProfile& profile, const std::string& list) {
  if (LLedgerChangesRunning(profile, kSalesChangeIntentExtension)) return;
  const LFileStoreListBase& store = profile.MainList(list);
  for (const std::string& name : LFile::ListFolder(store.GetFolder())) {
    if (!name.ends_with(".dat")) continue;
    std::string path = LFile::MakeFilePath(store.GetFolder(), name);
    struct stat info {};
    if (::stat(path.c_str(), &info) == 0 && info.st_size == 0 && ::unlink(path.c_str()) != 0)
      LLogWriteFailure("unlink", path, errno);
  }
}

// A sales change killed midway may have saved a document without its posting, or the other way
// round, and moved its customer's balance or an invoice's amount paid or not: the documents it
// noted are settled, then every balance and amount paid is computed again from the documents.
void SettleSalesChange(const LProfile& profile, const std::vector<std::string>& notes) {
  LProfile books(profile.GetDataStore().GetFolder());
  std::map<std::pair<std::string, std::string>, LNotedDocument> documents;
  std::set<std::string> reserving, applied;  // lists; invoices
  bool unlocked = false;
  for (const std::string& note : notes) {
    std::vector<std::string_view> parts = LIntentNoteParts(note);
    unlocked = unlocked || parts[0] == kNoteUnlocked;
    if (parts.size() == 2 && parts[0] == kNoteReserving) reserving.emplace(parts[1]);
    if (parts.size() == 4 && parts[0] == kNoteApplying) applied.emplace(parts[3]);
    if (parts.size() < 3 || (parts[0] != kNotePosting && parts[0] != kNoteDeleting)) continue;
    LNotedDocument& noted = documents[{std::string(parts[1]), std::string(parts[2])}];
    if (parts[0] == kNoteDeleting) noted.deleting = true;
    if (parts[0] != kNotePosting || parts.size() < 5) continue;
    if (noted.oldDate.empty()) noted.oldDate = parts[3];
    if (!parts[4].empty()) noted.reference = parts[4];
  }
  if (unlocked)
    LLogWarning("Ventes : une modification faite sans le verrou du grand livre est remise en accord avec les "
                "documents (soldes des clients, montants payés des factures, stock, écritures).");
  // Claims first: a claim whose document was never written lets go of its source, whose mark
  // names a number taken back next.
  LSalesClaimsSettle(books, notes);
  LRecurringSettle(books, notes);
  for (const std::string& list : reserving) TakeBackReservations(books, list);
  // Stock first: an invoice's posting reads the cost of what left.
  LCheckReport stock;
  std::set<std::pair<std::string, std::string>> changed;
  for (const auto& entry : documents) changed.insert(entry.first);
  LSalesSettleStock(books, notes, changed, stock);
  for (const LCheckDifference& difference : stock.differences)
    LLogWarning("Stock interrompu : article %s, %s remis à %lld (au lieu de %lld).", difference.key.c_str(),
                difference.field.c_str(), difference.computed, difference.stored);
  for (const auto& [document, noted] : documents) SettleDocument(books, document.first, document.second, noted);
  LCheckReport report;
  LCheckCustomerBalances(books, true, report);
  LCheckInvoiceAmounts(books, true, report);
  for (const LCheckDifference& difference : report.differences)
    LLogWarning("Ventes interrompues : %s/%s « %s » remis à %lld (au lieu de %lld).", difference.list.c_str(),
                difference.key.c_str(), difference.field.c_str(), difference.computed, difference.stored);
  std::string_view invoiceList = LSalesDocumentKindOf(LSalesDocumentType::kInvoice).recordedList;
  const LFileStoreListBase& invoices = books.MainList(invoiceList);
  // An invoice edit killed before its lower total gave back what its payments and credit notes held
  // beyond it, or an application killed after its applier was saved, before the others gave back
  // what the invoice then held beyond its total: given back now, latest first, as the change would
  // have. Each applier that lets go gets its "unapply" entry: the give-back is the settler's own
  // change of the appliers' lists, which the trail hears of as it does of every other one.
  std::set<std::string> givingBack = applied;
  for (const auto& [document, noted] : documents)
    if (document.first == invoiceList && !noted.deleting) givingBack.insert(document.second);
  for (const std::string& key : givingBack) {
    LSalesDocument invoice;
    if (invoices.Open(invoice, key) && LInvoiceRemoveExcessApplications(books, invoice))
      LLogWarning("Facture %s : ce qui lui était imputé au-delà de son total, interrompu, a été rendu.", key.c_str());
  }
}

}  // namespace

LSalesChangeIntent::LSalesChangeIntent(const LProfile& profile)
    : LBooksChangeIntent(profile, kSalesChangeIntentExtension), unlocked_(LLedgerHeldLockFile(profile) == nullptr) {
  if (!unlocked_) return;
  LLogWarning("Ventes : verrou du grand livre non obtenu en %u ms ; la modification se fait sans lui, le prochain "
              "détenteur du verrou remettra ses chiffres en accord avec les documents.",
              kLedgerLockTimeoutMs);
  // Noted first, so that the next holder settles the file even when the change noted nothing else.
  (void)Note(kNoteUnlocked);
}

LSalesChangeIntent::~LSalesChangeIntent() {
  if (unlocked_) Keep();
}

void LSalesChangeIntent::NotePosting(std::string_view list, std::string_view key, std::string_view oldDate,
                                     std::string_view reference) {
  (void)Note(std::string(kNotePosting) + "\t" + std::string(list) + "\t" + std::string(key) + "\t" +
             std::string(oldDate) + "\t" + std::string(reference));
}

void LSalesChangeIntent::NoteApplying(std::string_view list, std::string_view key, std::string_view invoice) {
  (void)Note(std::string(kNoteApplying) + "\t" + std::string(list) + "\t" + std::string(key) + "\t" + std::string(invoice));
}

void LSalesChangeIntent::NoteReserving(std::string_view list) {
  (void)Note(std::string(kNoteReserving) + "\t" + std::string(list));
}

bool LSalesChangeIntent::LeaveUnfinished(std::string_view document, std::string* error) {
  Keep();
  if (error != nullptr && !error->empty())
    *error += " Le document " + std::string(document) + " et les livres seront remis en accord à la prochaine ouverture.";
  return false;
}

void LSalesChangeIntent::NoteDeleting(std::string_view list, std::string_view key) {
  (void)Note(std::string(kNoteDeleting) + "\t" + std::string(list) + "\t" + std::string(key));
}

void LSalesLedgerInstall() {
  static std::once_flag installed;
  std::call_once(installed, [] {
    LLedgerSetDocumentDeleteRoute(kTxnTypeSales, LSalesDeleteForLedger);
    LLedgerSetDocumentDeleteRoute(kTxnTypeReceipt, LPaymentDeleteForLedger);
    LCheckAddBookCheck(LCheckCustomerBalances);
    LCheckAddBookCheck(LCheckInvoiceAmounts);
    LCheckAddBookCheck(LCheckListIndexes);
    LCheckAddBookCheck(LCheckStockMovements);
    LLedgerAddIntentSettler(kSalesChangeIntentExtension, SettleSalesChange);
    LAccountsSetTaxAccountsCreator(LTaxOptionsCreateDefaultTaxAccounts);
    LBankSetCustomerPaymentPoster(LBankPostCustomerPayment);
  });
}

void LCheckCustomerBalances(LProfile& profile, bool fix, LCheckReport& report) {
  std::map<std::string, long long> computed = LCustomerBalancesFromDocuments(profile);
  const LFileStoreListBase& customers = profile.MainList(kCustomersList);
  LCustomer customer;
  for (LFileStoreIteratorBase it(customers, customer); customer.IsAttached(); it.Next(customer)) {
    long long stored = customer.GetBalance();
    long long expected = computed[customer.GetPrimaryKey()];
    if (stored == expected) continue;
    report.differences.push_back({std::string(kCustomersList), customer.GetPrimaryKey(), "Balance", stored, expected, fix});
    if (fix) customer.SetInt64("Balance", expected);  // saved as the iterator moves on
  }
}

void LCheckInvoiceAmounts(LProfile& profile, bool fix, LCheckReport& report) {
  // What each invoice holds of its own customer's payments, refunds and credit notes, by side.
  std::map<std::pair<std::string, std::string>, long long> held[2];  // [refund side][invoice, customer]
  std::set<std::string> unknown;  // named by a payment of an older program, whose amounts are worked out on reading
  LPayment payment;
  for (LFileStoreIteratorBase it(profile.MainList(kPaymentsList), payment); payment.IsAttached(); it.Next(payment)) {
    bool oldLists = !payment.TestFieldExists("InvoiceAmounts") && !payment.GetString("InvoiceNumber").empty();
    for (const LAppliedAmount& entry : LReadAppliedAmounts(payment)) {
      if (oldLists) unknown.insert(entry.invoice);
      else held[payment.IsRefund()][{entry.invoice, payment.GetCustomer()}] += entry.amount;
    }
  }
  const LSalesDocumentKind& creditNotes = LSalesDocumentKindOf(LSalesDocumentType::kCreditNote);
  LSalesDocument document;
  for (LFileStoreIteratorBase it(profile.MainList(creditNotes.recordedList), document); document.IsAttached(); it.Next(document))
    for (const LAppliedAmount& entry : LReadAppliedAmounts(document))
      held[1][{entry.invoice, document.GetCustomer()}] += entry.amount;
  const LSalesDocumentKind& invoices = LSalesDocumentKindOf(LSalesDocumentType::kInvoice);
  for (LFileStoreIteratorBase it(profile.MainList(invoices.recordedList), document); document.IsAttached(); it.Next(document)) {
    if (unknown.contains(document.GetPrimaryKey())) continue;
    for (int side = 0; side < 2; ++side) {
      std::string_view field = side == 0 ? "AmountPaid" : "AmountRefunded";
      if (!document.TestFieldExists(field)) continue;  // worked out when first read
      long long stored = document.GetInt64(field, 0);
      long long expected = held[side][{document.GetPrimaryKey(), document.GetCustomer()}];
      if (stored == expected) continue;
      report.differences.push_back({std::string(invoices.recordedList), document.GetPrimaryKey(), std::string(field),
                                    stored, expected, fix});
      if (fix) document.SetInt64(field, expected);  // saved as the iterator moves on
    }
  }
}

void LCheckListIndexes(LProfile& profile, bool fix, LCheckReport& report) {
  for (const LListIndex& index : LListIndexes()) {
    for (const LFileStoreIndexMismatch& mismatch : LFileStoreIndexVerify(profile.MainList(index.list), index.field, fix)) {
      if (fix) continue;  // rebuilt
      report.problems.push_back({std::string(index.list) + "/.index." + std::string(index.field), 0,
                                 "L'index « " + std::string(index.field) + " » ne suit pas l'enregistrement « " +
                                     mismatch.key + " » (kontavo check --fix le reconstruit)",
                                 "index « " + mismatch.indexed + " », enregistrement « " + mismatch.actual + " »"});
    }
  }
}
