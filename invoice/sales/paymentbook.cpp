#include "invoice/sales/paymentbook.h"

#include <list>
#include <map>
#include <memory>
#include <optional>

#include "accounts/auditpending.h"
#include "accounts/audittrail.h"
#include "llib/gen/log.h"
#include "accounts/ledgerlock.h"
#include "invoice/sales/applicationaudit.h"
#include "invoice/sales/salesbook.h"
#include "invoice/sales/salesledger.h"
#include "invoice/sales/salesposting.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/sortedinvoice.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/system.h"

namespace {

constexpr std::string_view kPaymentTitle = "Paiement";  // how the audit trail names a payment

const LFileStoreListBase& Invoices(LProfile& profile) {
  return profile.MainList(LSalesDocumentKindOf(LSalesDocumentType::kInvoice).recordedList);
}

const LFileStoreListBase& CreditNotes(LProfile& profile) {
  return profile.MainList(LSalesDocumentKindOf(LSalesDocumentType::kCreditNote).recordedList);
}

// Every application names a recorded invoice of the customer and an amount above 0.
bool CheckApplications(LProfile& profile, const std::string& customer, const std::vector<LAppliedAmount>& applications,
                       std::string* error) {
  for (const auto& application : applications) {
    if (application.amount <= 0) {
      LSetError(error, "Le montant doit être supérieur à zéro.");
      return false;
    }
    LSalesDocument invoice;
    if (!Invoices(profile).Open(invoice, application.invoice)) {
      LSetError(error, "Facture introuvable : " + application.invoice + ".");
      return false;
    }
    if (invoice.GetCustomer() != customer) {
      LSetError(error, "La facture " + application.invoice + " n'est pas une facture du client " + customer + ".");
      return false;
    }
  }
  return true;
}

// The customer's invoices in the order a payment settles them, each with what this payment
// gives it; null (error set) when an invoice asked for has nothing left to settle.
std::unique_ptr<LSortedInvoiceList> Distribute(LProfile& profile, LPayment& payment, const LPaymentRequest& request,
                                               std::string* error) {
  auto sorted = std::make_unique<LSortedInvoiceList>(profile);
  if (request.refund) sorted->LoadInvoices(payment);
  else sorted->LoadUnpaidInvoices(request.customer);
  if (request.automatic) {
    sorted->ApplyPayment(request.amount, request.refund);
    return sorted;
  }
  auto chosen = std::make_unique<LPrioritySortedInvoiceList>(profile);
  chosen->Initialise(*sorted);
  for (const auto& application : request.applications) {
    bool found = request.refund ? chosen->SetRefundedAppliedAmount(application.invoice, application.amount)
                                : chosen->SetAppliedAmount(application.invoice, application.amount);
    if (!found) {
      LSetError(error, "La facture " + application.invoice +
                          (request.refund ? " est déjà remboursée." : " est déjà payée."));
      return nullptr;
    }
  }
  chosen->ApplyPayment(request.amount, request.refund);
  return chosen;
}

// Writes into distributed (a detached copy of payment, for the trail) the lists the payment will
// hold once the distribution is applied.
void Distributed(const LPayment& payment, const LSortedInvoiceList& distribution, LPayment& distributed) {
  std::vector<LAppliedAmount> entries;
  for (const auto& entry : distribution.Entries()) {
    long long amount = payment.IsRefund() ? entry.GetRefundedAppliedAmount() : entry.GetAppliedAmount();
    if (amount > 0) entries.push_back({entry.GetKey(), amount});
  }
  distributed.CopyRecord(payment);
  LWriteAppliedAmounts(distributed, entries);
}

// Sets the invoices' cached amounts back from the stored payments and credit notes, after a change
// of applications that was refused midway. false when an invoice could not be written.
bool RecomputeInvoices(LProfile& profile, const std::vector<LAppliedAmount>& applications) {
  bool written = true;
  for (const auto& application : applications) {
    LSalesDocument invoice;
    if (!Invoices(profile).Open(invoice, application.invoice)) continue;
    invoice.UpdateAmountPaid(profile);
    invoice.UpdateAmountRefunded(profile);
    written = invoice.Flush() && written;
  }
  return written;
}

// What an applier holds once applications are made: its other entries and the new ones (an
// invoice it already covers takes the new amount).
long long HeldAfter(const std::vector<LAppliedAmount>& entries, const std::vector<LAppliedAmount>& applications) {
  std::map<std::string, long long> held;
  for (const auto& entry : entries) held[entry.invoice] += entry.amount;
  for (const auto& application : applications) held[application.invoice] = application.amount;
  long long total = 0;
  for (const auto& [invoice, amount] : held) total += amount;
  return total;
}

}  // namespace

bool LPaymentOpen(LProfile& profile, std::string_view key, LPayment& payment, std::string* error) {
  if (!key.empty() && profile.MainList(kPaymentsList).Open(payment, key)) return true;
  LSetError(error, "Paiement introuvable : " + std::string(key) + ".");
  return false;
}

bool LPaymentCreate(LProfile& profile, const LPaymentRequest& request, std::string& newKey, std::string* error) {
  // Applications read and write the invoices' cached amounts: one desk at a time.
  LLedgerLock lock(profile);
  LSalesChangeIntent intent(profile);
  if (!LSalesCheckParty(profile, LSalesDocumentKindOf(LSalesDocumentType::kInvoice), request.customer, error))
    return false;
  if (request.amount <= 0) {
    LSetError(error, "Le montant doit être supérieur à zéro.");
    return false;
  }
  if (!CheckApplications(profile, request.customer, request.applications, error)) return false;

  // The distribution is worked out on a detached payment, so that a refusal writes nothing.
  LPayment trial;
  trial.SetString("Customer", request.customer);
  trial.SetBool("IsRefund", request.refund);
  std::unique_ptr<LSortedInvoiceList> distribution = Distribute(profile, trial, request, error);
  if (distribution == nullptr) return false;

  const LFileStoreListBase& payments = profile.MainList(kPaymentsList);
  intent.NoteReserving(kPaymentsList);
  std::string key = LSalesReserveFirstFreeKey(payments, {});
  if (key.empty()) {
    LSetError(error, "Impossible d'enregistrer le paiement.");
    return false;
  }
  intent.NotePosting(kPaymentsList, key, {}, {});
  LPayment payment;
  payments.Open(payment, key);
  payment.SetString("Customer", request.customer);
  payment.SetString("Date", request.date);
  payment.SetInt64("Amount", request.amount);
  if (request.refund) payment.SetBool("IsRefund", true);
  if (!request.depositAccount.empty()) payment.SetString("DepositAccount", request.depositAccount);
  LWriteAppliedAmounts(payment, {});
  // The "record" entry follows the save; a crash between is settled from the note.
  LAuditPending audit(profile, LAuditDocumentEvent(kAuditRecord, kPaymentTitle, key, payment), payments.MakeRecordPath(key));
  bool saved = payment.Flush();
  if (!saved || !audit.Append()) {
    payment.DetachWithoutSave();
    (void)payments.Delete(key);  // nothing else was written yet
    LSetError(error, saved ? std::string(kAuditNotWrittenMessage) : std::string("Impossible d'enregistrer le paiement."));
    return false;
  }
  newKey = key;
  bool unapplied = false;  // the trail refused the applications: the payment stands, whole, without them
  auto finish = [&] {
    if (!LCoreDataPaymentApply(profile, payment, +1)) {
      LSetError(error, std::string(kRecordNotSavedMessage));
      return false;
    }
    std::string reference = LSalesDocumentTakeReference(profile, payment, true);
    if (reference.empty()) {
      LSetError(error, "Impossible d'écrire dans le grand livre.");
      return false;
    }
    intent.NotePosting(kPaymentsList, key, {}, reference);
    bool posted = LPaymentRecordTransactions(profile, payment, LGetPostingUserName());
    // The flush keeps "JournalTxnRef"; the applications are written whatever the posting did, once
    // the trail has them.
    LApplicationAudit applications(profile, kPaymentTitle, payment, payments.MakeRecordPath(key));
    LPayment distributed;
    Distributed(payment, *distribution, distributed);
    if (!applications.Write(distributed)) {
      unapplied = payment.Flush() && posted;
      LSetError(error, "Le paiement " + key + " est enregistré, mais la piste d'audit n'a pas pu recevoir ses imputations : "
                      "il n'est imputé à aucune facture.");
      return false;
    }
    bool written = payment.Flush() && LPaymentApplyList(profile, payment, *distribution);
    if (!posted) LSetError(error, "Impossible d'écrire dans le grand livre.");
    else if (!written) LSetError(error, "Impossible d'enregistrer le paiement.");
    return posted && written;
  };
  if (finish()) return true;
  return unapplied ? false : intent.LeaveUnfinished(key, error);
}

namespace {

// Deletes the payment, noted in the change's intent and announced in the trail already, with
// everything it moved.
bool DeletePayment(LProfile& profile, std::string_view key, LPayment& payment, std::string* error) {
  LApplicationAudit applications(profile, kPaymentTitle, payment, profile.MainList(kPaymentsList).MakeRecordPath(key));
  LPaymentUnapply(payment, profile, payment.IsRefund());
  // The deletion is under way already (its entry is written): the trail's refusal only leaves
  // the letting go unrecorded, which the deletion's entry lists anyway.
  (void)applications.Write(payment);
  LSalesDocumentRemoveTransaction(profile, payment, payment.GetDate());
  if (!LCoreDataPaymentReverse(profile, payment, false)) {
    LSetError(error, std::string(kRecordNotSavedMessage));
    return false;
  }
  payment.Invalidate();
  if (profile.MainList(kPaymentsList).Delete(key)) return true;
  LSetError(error, "Impossible de supprimer le paiement " + std::string(key) + ".");
  return false;
}

}  // namespace

bool LPaymentDelete(LProfile& profile, std::string_view key, std::string* error) {
  // Applications read and write the invoices' cached amounts: one desk at a time.
  LLedgerLock lock(profile);
  LSalesChangeIntent intent(profile);
  LPayment payment;
  if (!LPaymentOpen(profile, key, payment, error)) return false;
  // Noted before its entry, so that a deletion killed after the entry is finished by the next
  // command (LPaymentFinishDelete writes the entry if it is missing). The trail keeps the whole
  // payment as it was; without it, nothing is deleted (the note goes with the intent).
  intent.NoteDeleting(kPaymentsList, key);
  std::optional<LAuditPending> pending;
  if (!LAuditDeletionEntry(profile, kPaymentTitle, key, payment, profile.MainList(kPaymentsList).MakeRecordPath(key), pending))
    return LFail(error, kAuditNotWrittenMessage);
  // Announced: what could not be written is finished by the next holder of the ledger lock.
  return DeletePayment(profile, key, payment, error) || intent.LeaveUnfinished(key, error);
}

bool LPaymentFinishDelete(LProfile& profile, std::string_view key) {
  LLedgerLock lock(profile);
  LSalesChangeIntent intent(profile);
  LPayment payment;
  if (!profile.MainList(kPaymentsList).Open(payment, key)) return false;
  intent.NoteDeleting(kPaymentsList, key);
  // Killed between noting the deletion and writing its entry: the entry is written now.
  if (!LAuditSaysDeleted(profile, kPaymentTitle, key) &&
      !LAuditAppendDocument(profile, kAuditDeleteDocument, kPaymentTitle, key, payment))
    LLogError("%s", std::string(kAuditNotWrittenMessage).c_str());
  return DeletePayment(profile, key, payment, nullptr);
}

namespace {

// What tells a payment's (or refund's) applications from a credit note's.
struct LApplierKind {
  std::string_view list;   // where appliers of the kind are stored
  std::string_view title;  // how the audit trail names one
  std::string_view overMessage;
  std::string_view notSavedMessage;
  // Applies amount of applier to invoice; the invoice is written, the applier left to the caller.
  void (*apply)(LProfile& profile, LRecord& applier, LSalesDocument& invoice, long long amount);
};

// Applies the applier (open; limit: what it may hold in all) to the invoices, each entry in turn,
// for LPaymentApply and LCreditNoteApply. The invoices are noted in the caller's intent before the
// first is written: an application killed midway, or whose applier cannot be saved after the trail
// took it, leaves the invoices' amounts to the next holder of the ledger lock, which computes them
// from the appliers as stored.
bool ApplyToInvoices(LProfile& profile, LSalesChangeIntent& intent, const LApplierKind& kind, LRecord& applier,
                     long long limit, const std::vector<LAppliedAmount>& applications, std::string* error) {
  std::string key = applier.GetPrimaryKey();
  if (!CheckApplications(profile, applier.GetString("Customer"), applications, error)) return false;
  if (HeldAfter(LReadAppliedAmounts(applier), applications) > limit) {
    LSetError(error, std::string(kind.overMessage));
    return false;
  }
  for (const auto& application : applications) intent.NoteApplying(kind.list, key, application.invoice);
  LApplicationAudit audit(profile, kind.title, applier, profile.MainList(kind.list).MakeRecordPath(key));
  // The lists change in memory and are written once, under the record's lock, after the trail
  // has their entries: one write each made applying to thousands of invoices quadratic.
  LApplierListsRun run(profile, applier, kind.list != kPaymentsList);
  bool written = true;
  for (const auto& application : applications) {
    LSalesDocument invoice;
    if (!Invoices(profile).Open(invoice, application.invoice)) continue;
    kind.apply(profile, applier, invoice, application.amount);
    written = invoice.Flush() && written;
  }
  if (!audit.Write(applier)) {
    applier.DetachWithoutSave();
    LSetError(error, std::string(kAuditNotWrittenMessage));
    // Invoices that cannot be set back (a full disk) are the next holder of the lock's to set.
    if (!RecomputeInvoices(profile, applications)) intent.Keep();
    return false;
  }
  written = run.Write() && written;
  if (applier.Flush() && written) return true;
  LSetError(error, std::string(kind.notSavedMessage));
  return intent.LeaveUnfinished(key, error);
}

}  // namespace

bool LPaymentApply(LProfile& profile, std::string_view key, const std::vector<LAppliedAmount>& applications,
                   std::string* error) {
  static const LApplierKind kPayment{kPaymentsList, kPaymentTitle, "Le montant imputé dépasse le montant du paiement.",
                                     "Impossible d'enregistrer le paiement.",
                                     [](LProfile& books, LRecord& applier, LSalesDocument& invoice, long long amount) {
                                       auto& payment = static_cast<LPayment&>(applier);
                                       LPaymentApplyToInvoice(payment, invoice, amount, books, payment.IsRefund());
                                     }};
  // Applications read and write the invoices' cached amounts: one desk at a time.
  LLedgerLock lock(profile);
  LSalesChangeIntent intent(profile);
  LPayment payment;
  if (!LPaymentOpen(profile, key, payment, error)) return false;
  payment.UpdateInvoiceAmounts(profile);
  return ApplyToInvoices(profile, intent, kPayment, payment, payment.GetAmount(), applications, error);
}

bool LCreditNoteApply(LProfile& profile, std::string_view key, const std::vector<LAppliedAmount>& applications,
                      std::string* error) {
  static const LApplierKind kCreditNote{LSalesDocumentKindOf(LSalesDocumentType::kCreditNote).recordedList,
                                        LSalesDocumentKindOf(LSalesDocumentType::kCreditNote).title,
                                        "Le montant imputé dépasse le solde de l'avoir.", "Impossible d'enregistrer l'avoir.",
                                        [](LProfile& books, LRecord& applier, LSalesDocument& invoice, long long amount) {
                                          LCreditNoteApplyToInvoice(static_cast<LSalesDocument&>(applier), invoice, amount, books);
                                        }};
  LLedgerLock lock(profile);
  LSalesChangeIntent intent(profile);
  LSalesDocument creditNote;
  if (!CreditNotes(profile).Open(creditNote, key)) {
    LSetError(error, "Avoir introuvable : " + std::string(key) + ".");
    return false;
  }
  return ApplyToInvoices(profile, intent, kCreditNote, creditNote, creditNote.GetTotal(), applications, error);
}

bool LInvoiceRemoveExcessApplications(LProfile& profile, LSalesDocument& invoice) {
  std::list<LApplicationAudit> audits;  // kept until every applier is saved (auditpending.h)
  return LInvoiceRemoveExcess(profile, invoice, [&](std::string_view list, const LRecord& before, const LRecord& after) {
    std::string_view title = list == kPaymentsList ? kPaymentTitle : LSalesDocumentKindOf(LSalesDocumentType::kCreditNote).title;
    LApplicationAudit& audit =
        audits.emplace_back(profile, title, before, profile.MainList(list).MakeRecordPath(before.GetPrimaryKey()));
    (void)audit.Write(after);
  });
}

bool LInvoiceRemoveApplications(LProfile& profile, LSalesDocument& invoice) {
  const std::string& key = invoice.GetPrimaryKey();
  std::vector<std::string> keys;
  LPayment payment;
  for (LFileStoreIteratorBase it(profile.MainList(kPaymentsList), payment); payment.IsAttached(); it.Next(payment))
    if (payment.GetAppliedAmount(key, profile) != 0) keys.push_back(payment.GetPrimaryKey());
  bool written = true;
  for (const auto& holder : keys) {
    if (!profile.MainList(kPaymentsList).Open(payment, holder)) continue;
    LApplicationAudit audit(profile, kPaymentTitle, payment, profile.MainList(kPaymentsList).MakeRecordPath(holder));
    LPaymentUnapply(payment, invoice, profile, payment.IsRefund());
    written = audit.Write(payment) && payment.Flush() && written;
  }
  payment.DetachWithoutSave();

  keys.clear();
  LSalesDocument creditNote;
  for (LFileStoreIteratorBase it(CreditNotes(profile), creditNote); creditNote.IsAttached(); it.Next(creditNote))
    if (LAppliedAmountOf(LReadAppliedAmounts(creditNote), key) != 0) keys.push_back(creditNote.GetPrimaryKey());
  for (const auto& holder : keys) {
    if (!CreditNotes(profile).Open(creditNote, holder)) continue;
    LApplicationAudit audit(profile, LSalesDocumentKindOf(LSalesDocumentType::kCreditNote).title, creditNote,
                            CreditNotes(profile).MakeRecordPath(holder));
    LCreditNoteUnapply(creditNote, invoice, profile);
    written = audit.Write(creditNote) && creditNote.Flush() && written;
  }
  return invoice.Flush() && written;
}
