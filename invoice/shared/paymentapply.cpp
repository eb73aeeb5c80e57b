// Applying payments, refunds and credit notes to invoices, and the invoice side of it: the
// cached "AmountPaid" / "AmountRefunded", their recomputation and the removal of what an invoice
// holds beyond its "Total".
#include <algorithm>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include "invoice/shared/payment.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/filestoreinplace.h"

namespace {

// What holds applications: a payment or refund (in "Payments") or a credit note.
struct Applier {
  LRecord& record;
  std::string_view list;  // "Payments" or "CreditNotes"
  bool refundSide;        // applied over the invoices' "AmountRefunded"
};

std::string_view CreditNotesList() {
  return LSalesDocumentKindOf(LSalesDocumentType::kCreditNote).recordedList;
}

std::string_view CachedField(bool refundSide) { return refundSide ? "AmountRefunded" : "AmountPaid"; }

long long CachedAmount(LProfile& profile, LSalesDocument& invoice, bool refundSide) {
  return refundSide ? invoice.GetAmountRefunded(profile) : invoice.GetAmountPaid(profile);
}

// Rebuilds the lists of an old payment, which kept only "InvoiceNumber".
void RebuildOld(LProfile& profile, Applier& applier) {
  if (applier.list == kPaymentsList) static_cast<LPayment&>(applier.record).UpdateInvoiceAmounts(profile);
}

// The applier's lists, those of an old payment rebuilt first.
std::vector<LAppliedAmount> Entries(LProfile& profile, Applier& applier) {
  RebuildOld(profile, applier);
  return LReadAppliedAmounts(applier.record);
}

// Appends one entry to both lists.
void Append(LRecord& applier, const std::string& key, long long amount) {
  std::string keys = applier.GetString("InvoiceNumber");
  std::string amounts = applier.GetString("InvoiceAmounts");
  if (!keys.empty()) {
    keys += ',';
    amounts += ',';
  }
  applier.SetString("InvoiceNumber", keys + key);
  applier.SetString("InvoiceAmounts", amounts + std::to_string(amount));
}

}  // namespace

struct LApplierListsRun::State {
  LProfile& profile;
  LRecord& record;
  std::string_view list;
  std::set<std::string> touched;  // the invoices whose entries the run changed
  State* previous;                // the run this one interrupts, of another applier
  // The invoices the applier's lists name, read once for a run appending thousands of entries,
  // where looking through "InvoiceNumber" for each made the spread quadratic; read again after
  // a change that takes them apart.
  std::unordered_set<std::string> named;
  bool namedKnown = false;
};

namespace {

thread_local LApplierListsRun::State* tRun = nullptr;  // the run open on this thread, if any

// Whether a record of list takes part on that side for the customer.
bool OnSide(std::string_view list, const LRecord& record, bool refundSide, const std::string& customer) {
  if (record.GetString("Customer") != customer) return false;
  if (list == kPaymentsList) return record.GetBool("IsRefund", false) == refundSide;
  return refundSide;  // credit notes only refund
}

// Calls visit with every record of list that takes part on the side for the invoice's customer.
template <class Visit>
void ForEachOnSide(LProfile& profile, std::string_view list, const LSalesDocument& invoice, bool refundSide,
                   Visit visit) {
  std::string customer = invoice.GetCustomer();
  LPayment record;  // a payment, or a credit note read through the same fields
  for (LFileStoreIteratorBase it(profile.MainList(list), record); record.IsAttached(); it.Next(record))
    if (OnSide(list, record, refundSide, customer)) visit(record);
}

// Changes the applier's lists by change (given the entries, an old payment's rebuilt) as they
// are stored, under the record's exclusive lock from their reading to their writing: two changes
// of one applier at once (one of them past a lock's wait, or the settler's) each keep the other's
// entries, where writing back lists read earlier would drop one. The applier then holds the lists
// as stored, unmarked, so that its own later save keeps what others store meanwhile. An applier
// not stored under its key yet (new or renamed), or whose lists cannot be written (a full disk),
// is changed in memory, its save to come writing them. One deleted since it was read is changed
// in memory only and let go of its file: a save would bring the deleted applier back.
// Within a run (LApplierListsRun) of the applier, the change is made in memory and the invoice
// noted for the run's write.
template <class Change>
void ChangeLists(LProfile& profile, Applier& applier, const std::string& invoice, Change change) {
  LRecord& record = applier.record;
  const std::string& key = record.GetPrimaryKey();
  const LFileStoreListBase& list = profile.MainList(applier.list);
  bool inRun = tRun != nullptr && &tRun->record == &record;
  if (inRun) {
    tRun->touched.insert(invoice);
    tRun->namedKnown = false;
  }
  bool wasStored = !inRun && !key.empty() && record.GetStoredKey() == key;
  LFileStoreInPlaceUpdate update;
  LPayment stored;  // a payment, or a credit note read through the same fields
  Applier held{stored, applier.list, applier.refundSide};
  if (wasStored && !list.TestRecordExists(key)) {
    record.DetachWithoutSave();
  } else if (wasStored && update.Open(list, key, stored)) {
    std::vector<LAppliedAmount> entries = Entries(profile, held);
    change(entries);
    LWriteAppliedAmounts(stored, entries);
    if (update.Save(stored)) {
      for (std::string_view field : {"InvoiceNumber", "InvoiceAmounts"}) {
        record.SetString(field, stored.GetString(field));
        record.FindField(field)->modified = false;
      }
      return;
    }
    stored.DetachWithoutSave();
  }
  std::vector<LAppliedAmount> entries = Entries(profile, applier);
  change(entries);
  LWriteAppliedAmounts(record, entries);
}

// Whether the lists of the run's applier name key.
bool Names(LApplierListsRun::State& run, const std::string& key) {
  if (!run.namedKnown) {
    run.named.clear();
    for (const LAppliedAmount& entry : LReadAppliedAmounts(run.record)) run.named.insert(entry.invoice);
    run.namedKnown = true;
  }
  return run.named.count(key) > 0;
}

// Takes the invoice's entry out of entries; its amount, 0 when there was none.
long long TakeOut(std::vector<LAppliedAmount>& entries, const std::string& invoice) {
  auto found = std::find_if(entries.begin(), entries.end(), [&](const LAppliedAmount& e) { return e.invoice == invoice; });
  if (found == entries.end()) return 0;
  long long amount = found->amount;
  entries.erase(found);
  return amount;
}

// Takes removed, which an applier's lists let go of, off the invoice's cached figure (current: as
// it was before they changed). Returns removed.
long long GiveBack(LSalesDocument& invoice, bool refundSide, long long current, long long removed) {
  if (removed == 0) return 0;
  invoice.SetInt64(CachedField(refundSide), current - removed);
  invoice.FlushOrKeepDirty();
  return removed;
}

long long Unapply(LProfile& profile, Applier& applier, LSalesDocument& invoice) {
  // Read before the lists change: an invoice without the cached figure sums the stored lists.
  long long current = CachedAmount(profile, invoice, applier.refundSide);
  long long removed = 0;
  ChangeLists(profile, applier, invoice.GetPrimaryKey(), [&](std::vector<LAppliedAmount>& entries) {
    removed = TakeOut(entries, invoice.GetPrimaryKey());
  });
  return GiveBack(invoice, applier.refundSide, current, removed);
}

// Lets go of every entry in runs (LApplierListsRun), each over the entries held when it begins,
// until a run finds none untried: the write of each run brings in the entries another writer
// stored meanwhile, and the next run lets go of them too.
long long UnapplyAll(LProfile& profile, Applier& applier) {
  const LFileStoreListBase& invoices = profile.MainList(LSalesDocumentKindOf(LSalesDocumentType::kInvoice).recordedList);
  long long removed = 0;
  std::set<std::string> tried;  // an entry that stays (its invoice cannot be written) is not tried again
  for (;;) {
    std::vector<LAppliedAmount> entries = Entries(profile, applier);
    LApplierListsRun run(profile, applier.record, applier.list == CreditNotesList());
    // Within the run the lists are the applier's in memory: each entry let go of is taken out of
    // them at once, at the end, where one Unapply each took 10,000 entries apart 10,000 times.
    std::vector<LAppliedAmount> kept;  // entries of invoices seen earlier, in this run or before
    bool any = false;
    for (const LAppliedAmount& entry : entries) {
      if (!tried.insert(entry.invoice).second) {
        kept.push_back(entry);
        continue;
      }
      any = true;
      tRun->touched.insert(entry.invoice);
      LSalesDocument invoice;  // one gone: its entry only leaves the lists
      if (invoices.Open(invoice, entry.invoice))
        removed += GiveBack(invoice, applier.refundSide, CachedAmount(profile, invoice, applier.refundSide), entry.amount);
    }
    if (!any) return removed;
    LWriteAppliedAmounts(applier.record, kept);
    if (!run.Write()) return removed;
  }
}

bool RemoveExcess(LProfile& profile, LSalesDocument& invoice, bool refundSide, Applier* current,
                  const LApplierChangeNote* note = nullptr);

long long Apply(LProfile& profile, Applier& applier, LSalesDocument& invoice, long long amount) {
  const std::string& key = invoice.GetPrimaryKey();
  long long current = CachedAmount(profile, invoice, applier.refundSide);
  long long replaced = 0;  // what the applier held on the invoice before
  RebuildOld(profile, applier);
  if (tRun != nullptr && &tRun->record == &applier.record && !Names(*tRun, key)) {
    // A run adding entries (a payment spread over thousands of invoices) appends each to the lists
    // without taking them apart.
    tRun->touched.insert(key);
    tRun->named.insert(key);
    Append(applier.record, key, amount);
  } else {
    ChangeLists(profile, applier, key, [&](std::vector<LAppliedAmount>& entries) {
      replaced = TakeOut(entries, key);
      entries.push_back({key, amount});
    });
  }
  invoice.SetInt64(CachedField(applier.refundSide), current - replaced + amount);
  invoice.FlushOrKeepDirty();
  RemoveExcess(profile, invoice, applier.refundSide, &applier);
  return amount;
}

// The keys of list's records holding an application on the invoice, latest first.
std::vector<std::string> HoldersLatestFirst(LProfile& profile, std::string_view list, const LSalesDocument& invoice,
                                            bool refundSide) {
  std::vector<std::string> keys;
  ForEachOnSide(profile, list, invoice, refundSide, [&](LPayment& record) {
    std::vector<LAppliedAmount> entries = LReadAppliedAmounts(record);
    bool holds = std::any_of(entries.begin(), entries.end(),
                             [&](const LAppliedAmount& e) { return e.invoice == invoice.GetPrimaryKey(); });
    if (holds) keys.push_back(record.GetPrimaryKey());
  });
  std::sort(keys.begin(), keys.end(), [](const std::string& a, const std::string& b) { return LDocumentKeyLess(b, a); });
  return keys;
}

bool RemoveExcess(LProfile& profile, LSalesDocument& invoice, bool refundSide, Applier* current,
                  const LApplierChangeNote* note) {
  long long excess = CachedAmount(profile, invoice, refundSide) - invoice.GetTotal();
  if (excess <= 0) return false;
  // The walk reads the stored lists: the applier being changed is stored first.
  if (current != nullptr) current->record.FlushOrKeepDirty();
  bool changed = false;
  std::vector<std::string_view> lists{kPaymentsList};
  if (refundSide) lists.push_back(CreditNotesList());
  for (std::string_view list : lists) {
    for (const std::string& key : HoldersLatestFirst(profile, list, invoice, refundSide)) {
      if (excess < 1) return changed;
      bool isCurrent = current != nullptr && current->list == list && current->record.GetPrimaryKey() == key;
      LPayment opened;
      Applier holder{opened, list, refundSide};
      if (!isCurrent && !profile.MainList(list).Open(opened, key)) continue;
      Applier& applier = isCurrent ? *current : holder;
      long long held = LAppliedAmountOf(Entries(profile, applier), invoice.GetPrimaryKey());
      if (held == 0) continue;
      LRecord before;  // for note: the applier as stored
      if (note != nullptr) {
        before.CopyRecord(applier.record);
        before.SetPrimaryKey(key);
      }
      long long cached = CachedAmount(profile, invoice, refundSide);
      if (held > excess) {
        Apply(profile, applier, invoice, held - excess);
        excess = 0;
      } else {
        excess -= Unapply(profile, applier, invoice);
      }
      if (note != nullptr) (*note)(list, before, applier.record);
      applier.record.FlushOrKeepDirty();
      if (!isCurrent && applier.record.IsDirty() && !applier.record.Flush()) {
        // Another applier that cannot give its part back (a full disk) keeps it, and the invoice
        // keeps counting it: the amounts stay those of the appliers as stored.
        opened.DetachWithoutSave();
        invoice.SetInt64(CachedField(refundSide), cached);
        invoice.FlushOrKeepDirty();
        return changed;
      }
      invoice.FlushOrKeepDirty();
      changed = true;
    }
  }
  return changed;
}

// What the customer's payments (or refunds and credit notes) hold for the invoice.
long long SumHeld(LProfile& profile, const LSalesDocument& invoice, bool refundSide) {
  std::vector<std::string_view> lists{kPaymentsList};
  if (refundSide) lists.push_back(CreditNotesList());
  long long sum = 0;
  for (std::string_view list : lists) {
    ForEachOnSide(profile, list, invoice, refundSide, [&](LPayment& record) {
      if (list == kPaymentsList) record.UpdateInvoiceAmounts(profile);
      sum += LAppliedAmountOf(LReadAppliedAmounts(record), invoice.GetPrimaryKey());
    });
  }
  return sum;
}

}  // namespace

// ---- Payments and credit notes ----------------------------------------------------------------

long long LPaymentApplyToInvoice(LPayment& payment, LSalesDocument& invoice, long long amount, LProfile& profile,
                                 bool isRefund) {
  Applier applier{payment, kPaymentsList, isRefund};
  return Apply(profile, applier, invoice, amount);
}

long long LPaymentUnapply(LPayment& payment, LSalesDocument& invoice, LProfile& profile, bool isRefund) {
  Applier applier{payment, kPaymentsList, isRefund};
  return Unapply(profile, applier, invoice);
}

long long LPaymentUnapply(LPayment& payment, LProfile& profile, bool isRefund) {
  Applier applier{payment, kPaymentsList, isRefund};
  return UnapplyAll(profile, applier);
}

long long LCreditNoteApplyToInvoice(LSalesDocument& creditNote, LSalesDocument& invoice, long long amount,
                                    LProfile& profile) {
  Applier applier{creditNote, CreditNotesList(), true};
  return Apply(profile, applier, invoice, amount);
}

long long LCreditNoteUnapply(LSalesDocument& creditNote, LSalesDocument& invoice, LProfile& profile) {
  Applier applier{creditNote, CreditNotesList(), true};
  return Unapply(profile, applier, invoice);
}

long long LCreditNoteUnapply(LSalesDocument& creditNote, LProfile& profile) {
  Applier applier{creditNote, CreditNotesList(), true};
  return UnapplyAll(profile, applier);
}

// ---- Runs of changes --------------------------------------------------------------------------

LApplierListsRun::LApplierListsRun(LProfile& profile, LRecord& applier, bool isCreditNote)
    : state_(new State{profile, applier, isCreditNote ? CreditNotesList() : kPaymentsList, {}, tRun, {}, false}) {
  tRun = state_.get();
}

LApplierListsRun::~LApplierListsRun() {
  if (tRun == state_.get()) tRun = state_->previous;
}

bool LApplierListsRun::Write() {
  State& run = *state_;
  if (tRun == &run) tRun = run.previous;
  LRecord& record = run.record;
  const std::string& key = record.GetPrimaryKey();
  if (run.touched.empty() || key.empty() || record.GetStoredKey() != key) return true;  // its save writes them
  const LFileStoreListBase& list = run.profile.MainList(run.list);
  if (!list.TestRecordExists(key)) {
    record.DetachWithoutSave();  // deleted meanwhile: as a single change does (ChangeLists)
    return true;
  }
  LFileStoreInPlaceUpdate update;
  LPayment stored;
  if (!update.Open(list, key, stored)) return true;  // not writable here: the applier's save writes them
  Applier held{stored, run.list, false};
  // The applier's order, the stored amounts of the entries the run left alone, then those others
  // stored meanwhile.
  std::unordered_map<std::string, long long> others;
  std::vector<std::string> othersOrder;
  for (const LAppliedAmount& entry : Entries(run.profile, held)) {
    if (run.touched.count(entry.invoice) || !others.emplace(entry.invoice, entry.amount).second) continue;
    othersOrder.push_back(entry.invoice);
  }
  std::vector<LAppliedAmount> merged;
  for (const LAppliedAmount& entry : LReadAppliedAmounts(record)) {
    if (run.touched.count(entry.invoice)) {
      merged.push_back(entry);
    } else if (auto found = others.find(entry.invoice); found != others.end()) {
      merged.push_back({entry.invoice, found->second});
      others.erase(found);
    }
  }
  for (const std::string& invoice : othersOrder)
    if (auto found = others.find(invoice); found != others.end()) merged.push_back({invoice, found->second});
  LWriteAppliedAmounts(stored, merged);
  bool saved = update.Save(stored);
  for (std::string_view field : {"InvoiceNumber", "InvoiceAmounts"}) {
    record.SetString(field, stored.GetString(field));
    record.FindField(field)->modified = !saved;
  }
  if (!saved) stored.DetachWithoutSave();
  return saved;
}

// ---- The invoice side -------------------------------------------------------------------------

long long LSalesDocument::GetAmountPaid(LProfile& profile) {
  if (GetPrimaryKey().empty() || IsDraft()) return 0;
  if (!TestFieldExists("AmountPaid")) return UpdateAmountPaid(profile);
  return GetInt64("AmountPaid", 0);
}

long long LSalesDocument::GetAmountRefunded(LProfile& profile) {
  if (GetPrimaryKey().empty() || IsDraft()) return 0;
  long long refunded = GetInt64("AmountRefunded", -1);
  return refunded == -1 ? UpdateAmountRefunded(profile) : refunded;
}

long long LSalesDocument::UpdateAmountPaid(LProfile& profile) {
  long long sum = SumHeld(profile, *this, false);
  SetInt64("AmountPaid", sum);
  FlushOrKeepDirty();
  return RemoveExcessPayments(profile) ? GetTotal() : sum;
}

long long LSalesDocument::UpdateAmountRefunded(LProfile& profile) {
  long long sum = SumHeld(profile, *this, true);
  SetInt64("AmountRefunded", sum);
  FlushOrKeepDirty();
  return RemoveExcessCreditNotes(profile) ? GetTotal() : sum;
}

bool LInvoiceRemoveExcess(LProfile& profile, LSalesDocument& invoice, const LApplierChangeNote& note) {
  bool paid = RemoveExcess(profile, invoice, false, nullptr, &note);
  return RemoveExcess(profile, invoice, true, nullptr, &note) || paid;
}

bool LSalesDocument::RemoveExcessPayments(LProfile& profile) { return RemoveExcess(profile, *this, false, nullptr); }

bool LSalesDocument::RemoveExcessCreditNotes(LProfile& profile) { return RemoveExcess(profile, *this, true, nullptr); }
