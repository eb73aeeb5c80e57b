#include "invoice/sales/salesbook.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

#include "accounts/auditpending.h"
#include "accounts/audittrail.h"
#include "accounts/ledger.h"
#include "llib/gen/log.h"
#include "accounts/ledgerlock.h"
#include "accounts/linkedaccounts.h"
#include "invoice/sales/applicationaudit.h"
#include "invoice/sales/paymentbook.h"
#include "invoice/sales/salesledger.h"
#include "invoice/sales/salesposting.h"
#include "invoice/sales/salesstock.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/documentconversion.h"
#include "invoice/shared/documenthistory.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/system.h"

namespace {

constexpr std::string_view kSuppliersList = "Suppliers";
constexpr std::string_view kLedgerNotWritten = "Impossible d'écrire dans le grand livre.";

// A write failed: the user is told and the change goes no further.
bool NotSaved(std::string* error) { return LFail(error, kDocumentNotSavedMessage); }

bool DeleteRefused(std::string_view key, std::string* error) {
  return LFail(error, "Impossible de supprimer le document " + std::string(key) + ".");
}

bool IsPosted(const LSalesDocumentKind& kind) {
  return kind.type == LSalesDocumentType::kInvoice || kind.type == LSalesDocumentType::kCreditNote;
}

bool IsDraftKey(std::string_view key) { return key.compare(0, kDraftKeyPrefix.size(), kDraftKeyPrefix) == 0; }

}  // namespace

bool LSalesCheckParty(LProfile& profile, const LSalesDocumentKind& kind, const std::string& party, std::string* error) {
  bool purchase = kind.type == LSalesDocumentType::kPOrder;
  if (party.empty()) {
    return LFail(error, purchase ? "Veuillez sélectionner un fournisseur." : "Veuillez sélectionner un client.");
  }
  if (!profile.MainList(purchase ? kSuppliersList : kCustomersList).TestRecordExists(party)) {
    return LFail(error, (purchase ? "Le fournisseur « " : "Le client « ") + party + " » n'existe pas.");
  }
  return true;
}

bool LSalesReserveKey(const LFileStoreListBase& list, const std::string& key) {
  // The list's first record makes its folder, as a save does.
  std::string path = list.MakeRecordPath(key);
  int fd = LRobustOpen(path, O_RDWR | O_CREAT | O_EXCL, 0666);
  if (fd < 0 && errno == ENOENT && LFile::MakeFolder(list.GetFolder())) fd = LRobustOpen(path, O_RDWR | O_CREAT | O_EXCL, 0666);
  if (fd < 0) return false;
  ::close(fd);
  return true;
}

std::string LSalesReserveFirstFreeKey(const LFileStoreListBase& list, std::string_view prefix) {
  for (long number = 1;; ++number) {
    std::string key = std::string(prefix) + std::to_string(number);
    if (LSalesReserveKey(list, key)) return key;
    if (!list.TestRecordExists(key)) return {};  // the folder cannot be written
  }
}

namespace {

// Fields a new document never takes from its content: the totaller recomputes the total (and
// moves the balance from 0), the posting takes a new reference, recording ends the draft, and
// nothing is paid or refunded on a document that did not exist.
bool IsCarriedToNewDocument(std::string_view field) {
  return field != "Total" && field != "IsDraft" && field != "JournalTxnRef" && field != "AmountPaid" &&
         field != "AmountRefunded";
}

// Reopens document from its list so that fields deleted by the last save are gone for good
// (a deleted field would come back on a second save of the same object). The document must
// have been flushed.
bool Reopen(const LFileStoreListBase& list, LSalesDocument& document) {
  std::string key = document.GetPrimaryKey();
  document.Invalidate();
  return list.Open(document, key);
}

// Invoices are neither made nor changed while a linked account is missing: their postings would
// have nowhere to go.
bool CheckLinkedAccounts(LProfile& profile, const LSalesDocumentKind& kind, std::string* error) {
  if (kind.type != LSalesDocumentType::kInvoice || !LDefAccountListNeedsUpdate(profile)) return true;
  return LFail(error, kNeededAccountsWarning);
}

// The audit entry of a change of the recorded document, with the total the document will have
// (worked out on a copy, which moves no balance).
LAuditEvent DocumentEvent(LProfile& profile, const LSalesDocumentKind& kind, std::string_view action,
                          std::string_view key, const LSalesDocument& document) {
  LSalesDocument totalled;  // detached and without a key: totalling it moves no balance
  totalled.CopyRecord(document);
  (void)LSalesDocumentSumTotals(profile, kind, totalled);  // a detached copy: nothing to write
  return LAuditDocumentEvent(action, kind.title, key, totalled);
}

// Writes the entry the change noted; false with the refusal in *error when the trail cannot be
// written.
bool AuditWritten(LAuditPending& pending, std::string* error) {
  if (pending.Append()) return true;
  return LFail(error, kAuditNotWrittenMessage);
}

// Posts a recorded invoice or credit note under its reference (a new one when it has none, noted
// in the intent before anything is posted under it).
bool Post(LProfile& profile, const LSalesDocumentKind& kind, LSalesDocument& document, LSalesChangeIntent& intent,
          std::string_view oldDate, std::string* error) {
  std::string had = document.GetString("JournalTxnRef");
  std::string reference = LSalesDocumentTakeReference(profile, document, false);
  if (reference.empty()) return LFail(error, kLedgerNotWritten);
  if (reference != had) intent.NotePosting(kind.recordedList, document.GetPrimaryKey(), oldDate, reference);
  std::string userName = LGetPostingUserName();
  bool posted = kind.type == LSalesDocumentType::kInvoice
                    ? LInvoiceRecordTransactions(profile, document, userName, false)
                    : LCreditNoteRecordTransactions(profile, document, userName);
  bool saved = document.Flush();  // keeps "JournalTxnRef"
  if (!posted) LSetError(error, kLedgerNotWritten);
  else if (!saved) LSetError(error, kDocumentNotSavedMessage);
  return posted && saved;
}

}  // namespace

bool LCoreDataCreditNoteApply(LProfile& profile, const LSalesDocument& creditNote, int sign) {
  return LCustomerChangeBalance(profile, creditNote.GetCustomer(), -sign * creditNote.GetTotal());
}

LFKTotalsChange LSalesDocumentSumTotals(LProfile& profile, const LSalesDocumentKind& kind, LSalesDocument& document) {
  switch (kind.type) {
    case LSalesDocumentType::kInvoice: return LInvoiceSumTotals(profile, document);
    case LSalesDocumentType::kOrder: return LOrderSumTotals(profile, document);
    case LSalesDocumentType::kQuote: return LQuoteSumTotals(profile, document);
    case LSalesDocumentType::kCreditNote: return LCreditNoteSumTotals(profile, document);
    case LSalesDocumentType::kPOrder: return LPOrderSumTotals(profile, document);
  }
  return {};
}

namespace {

// Whether a new document of content may be made at all: its customer and, for an invoice, the
// linked accounts.
bool MayCreate(LProfile& profile, const LSalesDocumentKind& kind, const LRecord& content, std::string* error) {
  return CheckLinkedAccounts(profile, kind, error) && LSalesCheckParty(profile, kind, content.GetString("Customer"), error);
}

// Writes the new document of content under takenKey, a number of its list taken already (an empty
// file), then totals, moves and posts it. newKey is set once its record is written; a failure
// before that gives the number back.
bool CreateTaken(LProfile& profile, const LSalesDocumentKind& kind, const LRecord& content, bool draft,
                 const std::string& takenKey, LSalesChangeIntent& intent, std::string& newKey, std::string* error) {
  const LFileStoreListBase& list = profile.MainList(draft ? kind.draftsList : kind.recordedList);
  if (!draft && IsPosted(kind)) intent.NotePosting(kind.recordedList, takenKey, {}, {});
  LSalesDocument document;
  list.Open(document, takenKey);
  for (const auto& field : content.Fields())
    if (!field.deleted && IsCarriedToNewDocument(field.name)) document.SetString(field.name, field.text);
  // A recorded invoice holds its amounts paid and refunded from the start, so that no list or
  // report showing it has to work them out and write them on the way.
  if (!draft && kind.type == LSalesDocumentType::kInvoice) {
    document.SetInt64("AmountPaid", 0);
    document.SetInt64("AmountRefunded", 0);
  }
  // The "record" entry follows the save, which it names; a crash between is settled from the note.
  std::optional<LAuditPending> audit;
  if (!draft) audit.emplace(profile, DocumentEvent(profile, kind, kAuditRecord, takenKey, document), list.MakeRecordPath(takenKey));
  document.SetDirty(true);  // an empty document still takes its key
  if (!document.Flush()) {
    document.DetachWithoutSave();
    (void)list.Delete(takenKey);  // the number goes back
    return NotSaved(error);
  }
  newKey = document.GetPrimaryKey();
  if (!draft && !AuditWritten(*audit, error)) {
    document.DetachWithoutSave();
    (void)list.Delete(newKey);  // nothing else was written yet
    newKey.clear();
    return false;
  }
  auto finish = [&] {
    // The reference is taken before the totals are written, which keep it: the posting then writes
    // the document no more (each write of a record is a new file, what a file system does slowest).
    if (IsPosted(kind) && !draft) {
      std::string reference = LSalesDocumentTakeReference(profile, document, false);
      if (reference.empty()) return LFail(error, kLedgerNotWritten);
      intent.NotePosting(kind.recordedList, newKey, {}, reference);
    }
    // The history is a trace, not the document: a failure to write it does not undo the document.
    (void)LDocumentHistoryAdd(profile, draft ? kind.draftsList : kind.recordedList, newKey,
                              draft ? kHistoryCreated : kHistoryRecorded, LGetPostingUserName());
    if (!LSalesDocumentSumTotals(profile, kind, document).written) return NotSaved(error);
    if (!draft && kind.type == LSalesDocumentType::kCreditNote && !LCoreDataCreditNoteApply(profile, document, +1))
      return NotSaved(error);
    if (!document.Flush()) return NotSaved(error);
    if (draft) return true;
    // Stock moves first: the posting of an invoice reads the cost of what left.
    bool stocked = LSalesDocumentMoveStock(profile, kind, newKey, nullptr, &document, error);
    if (IsPosted(kind) && !Post(profile, kind, document, intent, {}, error)) return false;
    return stocked;
  };
  if (finish()) return true;
  return draft ? false : intent.LeaveUnfinished(newKey, error);
}

}  // namespace

bool LSalesDocumentCreate(LProfile& profile, const LSalesDocumentKind& kind, const LRecord& content, bool draft,
                          std::string_view key, std::string& newKey, std::string* error) {
  LLedgerLock lock(profile);  // one sales change at a time (salesledger.h)
  LSalesChangeIntent intent(profile);
  if (!MayCreate(profile, kind, content, error)) return false;
  if (draft && !key.empty() && !IsDraftKey(key)) {
    return LFail(error, "Le numéro d'un brouillon doit commencer par DFT.");
  }
  if (!draft && IsDraftKey(key)) return LFail(error, "Le numéro DFT… est réservé aux brouillons.");
  const LFileStoreListBase& list = profile.MainList(draft ? kind.draftsList : kind.recordedList);
  // The number is taken (an empty file) before anything is written, so that the intent can name
  // the document from its first write on; should the change die between, the settler takes
  // back the empty file.
  std::string takenKey(key);
  if (!draft && IsPosted(kind)) intent.NoteReserving(kind.recordedList);
  if (key.empty()) {
    takenKey = LSalesReserveFirstFreeKey(list, draft ? kDraftKeyPrefix : std::string_view());
    if (takenKey.empty()) return NotSaved(error);
  } else if (!LSalesReserveKey(list, takenKey)) {
    return LFail(error, "Un document porte déjà le numéro " + takenKey + ".");
  }
  return CreateTaken(profile, kind, content, draft, takenKey, intent, newKey, error);
}

bool LSalesDocumentCreateTaken(LProfile& profile, const LSalesDocumentKind& kind, const LRecord& content, bool draft,
                               const std::string& key, LSalesChangeIntent& intent, std::string& newKey,
                               std::string* error) {
  LLedgerLock lock(profile);
  if (MayCreate(profile, kind, content, error)) return CreateTaken(profile, kind, content, draft, key, intent, newKey, error);
  (void)profile.MainList(draft ? kind.draftsList : kind.recordedList).Delete(key);  // the number goes back
  return false;
}

bool LSalesDocumentOpen(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                        LSalesDocument& document) {
  if (key.empty()) return false;
  if (profile.MainList(kind.recordedList).Open(document, key)) return true;
  return profile.MainList(kind.draftsList).Open(document, key);
}

bool LSalesDocumentEdit(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                        const std::function<void(LSalesDocument&)>& change, std::string* error) {
  LLedgerLock lock(profile);  // one sales change at a time (salesledger.h)
  LSalesChangeIntent intent(profile);
  if (!CheckLinkedAccounts(profile, kind, error)) return false;
  const LFileStoreListBase& recordedList = profile.MainList(kind.recordedList);
  bool recorded = recordedList.TestRecordExists(key);
  const LFileStoreListBase& list = recorded ? recordedList : profile.MainList(kind.draftsList);
  LSalesDocument document;
  if (!list.Open(document, key)) return LFail(error, LSalesDocumentNotFoundMessage(key));
  // The "edit" entry goes first, so that a trail that cannot be written refuses the edit; should the
  // edit not take effect after it, a "cancel" entry follows (auditpending.h).
  std::optional<LAuditPending> audit;
  {
    // The change is tried on a copy first so that a refusal writes nothing.
    LSalesDocument trial;
    trial.CopyRecord(document);
    change(trial);
    if (!LSalesCheckParty(profile, kind, trial.GetCustomer(), error)) return false;
    if (recorded) audit.emplace(profile, DocumentEvent(profile, kind, kAuditEdit, key, trial), list.MakeRecordPath(key));
    if (recorded && !AuditWritten(*audit, error)) return false;
  }
  LSalesDocument before;  // what the recorded document moved in stock until now
  before.CopyRecord(document);
  bool inBooks = recorded && IsPosted(kind);
  std::string oldCustomer = document.GetCustomer();
  long long oldTotal = document.GetTotal();
  std::string oldDate = document.GetDate();
  std::string reference = document.GetString("JournalTxnRef");
  if (inBooks) intent.NotePosting(kind.recordedList, key, reference.empty() ? std::string() : oldDate, reference);

  auto apply = [&] {
    if (inBooks && kind.type == LSalesDocumentType::kCreditNote && !LCoreDataCreditNoteApply(profile, document, -1))
      return NotSaved(error);
    change(document);
    // The reference belongs to the ledger: an edit posts again in the same place.
    if (reference.empty()) document.DeleteField("JournalTxnRef");
    else document.SetString("JournalTxnRef", reference);
    if (!document.Flush() || !Reopen(list, document)) return NotSaved(error);

    // The totaller moves an invoice's balance by the change of its total, on the customer it names
    // now; a change of customer first carries the old total across, and the old customer's
    // payments and credit notes let go of the invoice.
    if (inBooks && kind.type == LSalesDocumentType::kInvoice && document.GetCustomer() != oldCustomer &&
        !(LInvoiceRemoveApplications(profile, document) && LCustomerChangeBalance(profile, oldCustomer, -oldTotal) &&
          LCustomerChangeBalance(profile, document.GetCustomer(), oldTotal)))
      return NotSaved(error);
    if (!LSalesDocumentSumTotals(profile, kind, document).written) return NotSaved(error);
    if (inBooks && kind.type == LSalesDocumentType::kCreditNote && !LCoreDataCreditNoteApply(profile, document, +1))
      return NotSaved(error);
    if (!document.Flush()) return NotSaved(error);
    bool stocked = !recorded || LSalesDocumentMoveStock(profile, kind, key, &before, &document, error);
    if (!inBooks) return stocked;
    if (kind.type == LSalesDocumentType::kInvoice) {
      // A lower total gives back what its payments and credit notes now hold beyond it.
      (void)LInvoiceRemoveExcessApplications(profile, document);
      if (!document.Flush()) return NotSaved(error);
    }
    // A posting that could not be taken out (a failed write) is not posted again beside itself:
    // the change is left to the next holder of the lock, which posts the document anew.
    LLedgerTransaction old;
    if (!LSalesDocumentRemoveTransaction(profile, document, oldDate) &&
        LLedgerTransactionLoad(profile, old, oldDate, document.GetString("JournalTxnRef")))
      return NotSaved(error);
    return Post(profile, kind, document, intent, oldDate, error) && stocked;
  };
  if (apply()) return true;
  return recorded ? intent.LeaveUnfinished(key, error) : false;
}

bool LSalesDocumentRecordDraft(LProfile& profile, const LSalesDocumentKind& kind, std::string_view draftKey,
                               std::string& newKey, std::string* error) {
  const LFileStoreListBase& drafts = profile.MainList(kind.draftsList);
  LSalesDocument draft;
  if (!drafts.Open(draft, draftKey)) return LFail(error, "Brouillon introuvable : " + std::string(draftKey) + ".");
  if (!LSalesDocumentCreate(profile, kind, draft, false, {}, newKey, error)) return false;
  if (kind.type == LSalesDocumentType::kInvoice && !LConvertedInvoiceMoved(profile, draft, draftKey, newKey))
    return NotSaved(error);
  (void)LDocumentHistoryRecordDraft(profile, kind.draftsList, draftKey, kind.recordedList, newKey,
                                    LGetPostingUserName());  // a trace only, as above
  draft.DetachWithoutSave();
  if (!drafts.Delete(draftKey)) {
    return LFail(error, "Le document " + newKey + " est enregistré, mais le brouillon " + std::string(draftKey) +
                            " n'a pas pu être supprimé.");
  }
  return true;
}

namespace {

// Deletes the recorded document (open in document) with everything it moved.
bool DeleteRecorded(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key, LSalesDocument& document,
                    std::string* error) {
  bool isInvoice = kind.type == LSalesDocumentType::kInvoice;
  if (isInvoice &&
      !(LInvoiceRemoveApplications(profile, document) && LConvertedInvoiceMoved(profile, document, key, {})))
    return NotSaved(error);
  if (kind.type == LSalesDocumentType::kCreditNote) {
    LApplicationAudit applications(profile, kind.title, document, profile.MainList(kind.recordedList).MakeRecordPath(key));
    LCreditNoteUnapply(document, profile);
    // The deletion's entry is written already and lists what the credit note held: a trail that
    // refuses the letting go does not stop it.
    (void)applications.Write(document);
  }
  if (IsPosted(kind)) LSalesDocumentRemoveTransaction(profile, document, document.GetDate());
  if (isInvoice && !LCustomerChangeBalance(profile, document.GetCustomer(), -document.GetTotal()))
    return NotSaved(error);
  if (kind.type == LSalesDocumentType::kCreditNote && !LCoreDataCreditNoteApply(profile, document, -1))
    return NotSaved(error);
  // The record goes before the stock it moved: a refused deletion keeps both, and one killed
  // between leaves its movements to the settler's stock repair, which queues what it takes out for
  // the linked client; the other way round the settler would move and queue the stock again.
  LSalesDocument gone;
  gone.CopyRecord(document);
  document.Invalidate();
  if (!profile.MainList(kind.recordedList).Delete(key)) return DeleteRefused(key, error);
  return LSalesDocumentMoveStock(profile, kind, key, &gone, nullptr, error);
}

}  // namespace

bool LSalesDocumentFinishDelete(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key) {
  LLedgerLock lock(profile);
  LSalesChangeIntent intent(profile);
  LSalesDocument document;
  if (!profile.MainList(kind.recordedList).Open(document, key)) return false;
  intent.NoteDeleting(kind.recordedList, key);
  // Killed between noting the deletion and writing its entry: the entry is written now. The
  // deletion goes on even if it cannot be, as the one cut short would have.
  if (!LAuditSaysDeleted(profile, kind.title, key) &&
      !LAuditAppendDocument(profile, kAuditDeleteDocument, kind.title, key, document))
    LLogError("%s", std::string(kAuditNotWrittenMessage).c_str());
  return DeleteRecorded(profile, kind, key, document, nullptr);
}

bool LSalesDocumentDelete(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                          std::string* error) {
  LLedgerLock lock(profile);  // one sales change at a time (salesledger.h)
  LSalesChangeIntent intent(profile);
  const LFileStoreListBase& recordedList = profile.MainList(kind.recordedList);
  const LFileStoreListBase& draftsList = profile.MainList(kind.draftsList);
  LSalesDocument document;
  bool isInvoice = kind.type == LSalesDocumentType::kInvoice;
  if (recordedList.Open(document, key)) {
    // Noted before its entry, so that a deletion killed after the entry is finished by the next
    // command (LSalesDocumentFinishDelete writes the entry if it is missing). The trail keeps the
    // whole document as it was; without it, nothing is deleted (the note goes with the intent).
    intent.NoteDeleting(kind.recordedList, key);
    std::optional<LAuditPending> pending;
    if (!LAuditDeletionEntry(profile, kind.title, key, document, recordedList.MakeRecordPath(key), pending))
      return LFail(error, kAuditNotWrittenMessage);
    // Announced: what could not be written is finished by the next holder of the ledger lock.
    return DeleteRecorded(profile, kind, key, document, error) || intent.LeaveUnfinished(key, error);
  }
  if (draftsList.Open(document, key)) {
    if (isInvoice && !LConvertedInvoiceMoved(profile, document, key, {})) return NotSaved(error);
    document.DetachWithoutSave();
    if (!draftsList.Delete(key)) return DeleteRefused(key, error);
    return true;
  }
  return LFail(error, LSalesDocumentNotFoundMessage(key));
}

// ---- Deletions asked by the ledger ------------------------------------------------------------

bool LSalesDeleteForLedger(LProfile& profile, std::string_view document, std::string_view reference) {
  for (LSalesDocumentType type : {LSalesDocumentType::kInvoice, LSalesDocumentType::kCreditNote}) {
    const LSalesDocumentKind& kind = LSalesDocumentKindOf(type);
    LSalesDocument found;
    if (!profile.MainList(kind.recordedList).Open(found, document)) continue;
    bool matches = found.GetString("JournalTxnRef") == reference;
    found.DetachWithoutSave();
    if (matches) return LSalesDocumentDelete(profile, kind, document, nullptr);
  }
  return false;
}

bool LPaymentDeleteForLedger(LProfile& profile, std::string_view document, std::string_view reference) {
  LRecord payment;
  if (!profile.MainList(kPaymentsList).Open(payment, document)) return false;
  bool matches = payment.GetString("JournalTxnRef") == reference;
  payment.DetachWithoutSave();
  return matches && LPaymentDelete(profile, document, nullptr);
}
