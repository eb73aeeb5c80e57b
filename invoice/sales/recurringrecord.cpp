#include "invoice/sales/recurringrecord.h"

#include <algorithm>
#include <cerrno>

#include "accounts/ledgerlock.h"
#include "accounts/linkedaccounts.h"
#include "invoice/sales/salesbook.h"
#include "invoice/sales/salesledger.h"
#include "invoice/sales/salesposting.h"
#include "invoice/sales/salesstock.h"
#include "invoice/sales/sourceclaim.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/filestore.h"
#include "llib/gen/log.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/system.h"

namespace {

// The template's record of the document made for "RecurLast": its key, written with "RecurLast"
// when the occurrence is claimed, so that a claim left by a killed run is told apart from
// another run's.
constexpr std::string_view kRecurLastKeyField = "RecurLastNumber";

// The fields of a template that an occurrence does not take: the ledger reference belongs to one
// posted document only, and the claim's key to the template. The schedule fields go along with
// every other field.
constexpr std::string_view kTemplateOnly[] = {"JournalTxnRef", kRecurLastKeyField};

bool IsTemplateOnly(std::string_view field) {
  return std::find(std::begin(kTemplateOnly), std::end(kTemplateOnly), field) != std::end(kTemplateOnly);
}

// The note of an occurrence being recorded: "recurring", the document's list and key, the
// template's list and key, the date, the template's "RecurLast" before. The template is claimed
// (moved on to the date, naming the document) before the document is written: killed between,
// the settler puts the template back (LRecurringSettle), so that the next run records the date.
constexpr std::string_view kRecurringNote = "recurring";

// One occurrence's claim of its template.
struct OccurrenceClaim {
  std::string templateList, templateKey;
  std::string date;      // the occurrence's, "RecurLast" once claimed
  std::string lastBefore;  // "RecurLast" before
  std::string documentKey;
};

// Claims the occurrence dated claim.date of the kind's recorded list under the template's own
// lock: it must still be due on that date, as two runs past the ledger lock's wait may both have
// found it. The winner alone notes it, before the template is saved.
LClaimResult ClaimOccurrence(LProfile& profile, const LSalesDocumentKind& kind, const OccurrenceClaim& claim,
                             LSalesChangeIntent& intent) {
  return LClaimRecord(profile.MainList(claim.templateList), claim.templateKey, [&](LRecord& schedule) {
    if (LRecurringGetDueDateText(schedule) != claim.date) return false;  // recorded by another run
    (void)intent.Note(std::string(kRecurringNote) + "\t" + std::string(kind.recordedList) + "\t" + claim.documentKey +
                      "\t" + claim.templateList + "\t" + claim.templateKey + "\t" + claim.date + "\t" +
                      claim.lastBefore);
    schedule.SetString("RecurLast", claim.date);
    schedule.SetString(kRecurLastKeyField, claim.documentKey);
    return true;
  });
}

// Puts the template back as it was before the claim, when it still stands on that claim. true when
// it was put back.
bool ReleaseOccurrence(LProfile& profile, const OccurrenceClaim& claim) {
  LClaimResult result = LClaimRecord(profile.MainList(claim.templateList), claim.templateKey, [&](LRecord& schedule) {
    if (schedule.GetString("RecurLast") != claim.date || schedule.GetString(kRecurLastKeyField) != claim.documentKey)
      return false;
    if (claim.lastBefore.empty()) schedule.DeleteField("RecurLast");
    else schedule.SetString("RecurLast", claim.lastBefore);
    schedule.DeleteField(kRecurLastKeyField);
    return true;
  });
  return result == LClaimResult::kClaimed;
}

// Makes the occurrence dated date of the template of templateList in the kind's recorded list
// (refused when its customer no longer exists): fields copied, lines refreshed from the items,
// totalled, recorded. beforeTotals runs once the document has its key (an invoice puts its copied
// total on the balance there, and the totaller then moves the balance by what the refresh
// changed). The number is taken (an empty file) and the template claimed for it, before anything
// is written: the settler of a killed occurrence finishes it from its
// record, or puts the template back and takes the number back. false with error unset: another
// run recorded that date meanwhile.
template <class BeforeTotals>
bool MakeOccurrence(LProfile& profile, const LSalesDocumentKind& kind, std::string_view templateList,
                    const LRecord& schedule, const std::string& date, LSalesChangeIntent& intent,
                    LSalesDocument& document, BeforeTotals beforeTotals, std::string* error) {
  if (!LSalesCheckParty(profile, kind, schedule.GetString("Customer"), error)) return false;
  const LFileStoreListBase& list = profile.MainList(kind.recordedList);
  intent.NoteReserving(kind.recordedList);
  OccurrenceClaim claim{std::string(templateList), schedule.GetPrimaryKey(), date, schedule.GetString("RecurLast"),
                        LSalesReserveFirstFreeKey(list, {})};
  const std::string& key = claim.documentKey;
  if (key.empty()) return LFail(error, kDocumentNotSavedMessage);
  LClaimResult claimed = ClaimOccurrence(profile, kind, claim, intent);
  if (claimed != LClaimResult::kClaimed) {
    (void)list.Delete(key);  // the number goes back
    return claimed == LClaimResult::kLost ? false : LFail(error, "Impossible d'enregistrer le modèle.");
  }
  // Noted once the number is this run's for good: the settler finishes the invoice under it.
  if (kind.type == LSalesDocumentType::kInvoice) intent.NotePosting(kind.recordedList, key, {}, {});
  list.Open(document, key);
  for (const auto& field : schedule.Fields())
    if (!field.deleted && !field.binary && !IsTemplateOnly(field.name)) document.SetString(field.name, field.text);
  document.SetString("Date", date);
  document.SetInt64("AmountPaid", 0);
  document.SetInt64("AmountRefunded", 0);  // so that no list works it out and writes it on the way
  document.SetString("OrderNumber", "");
  document.SetString("IsDraft", "0");
  // Refreshed before the first save, so that the record holds all but its totals, which the
  // settler works out again should they not be written.
  LRecurringUpdateDescriptionAndPrice(profile, document);
  if (!document.Flush()) {
    document.DetachWithoutSave();
    (void)list.Delete(key);  // the number goes back
    (void)ReleaseOccurrence(profile, claim);
    return LFail(error, kDocumentNotSavedMessage);
  }
  bool written = beforeTotals();
  if (written && LSalesDocumentSumTotals(profile, kind, document).written) return true;
  LSetError(error, kDocumentNotSavedMessage);
  return intent.LeaveUnfinished(key, error);  // the document is there: the next holder of the ledger lock finishes it
}

// The due date of the template as text; empty (with the message) when it is never due.
std::string DueDateOf(const LRecord& schedule, std::string* error) {
  std::string date = LRecurringGetDueDateText(schedule);
  if (date.empty()) LSetError(error, "Ce modèle n'a pas d'échéance.");
  return date;
}

}  // namespace

void LRecurringSettle(LProfile& profile, const std::vector<std::string>& notes) {
  for (const std::string& note : notes) {
    std::vector<std::string_view> parts = LIntentNoteParts(note);
    if (parts.size() != 7 || parts[0] != kRecurringNote) continue;
    OccurrenceClaim claim{std::string(parts[3]), std::string(parts[4]), std::string(parts[5]), std::string(parts[6]),
                          std::string(parts[2])};
    std::string templateName = claim.templateList + "/" + claim.templateKey;
    LSalesDocument made;
    bool written = profile.MainList(parts[1]).Open(made, parts[2]) && !made.Fields().empty();
    if (written) {
      // An invoice is totalled again with the other noted documents; an order has only this.
      const LSalesDocumentKind& orders = LSalesDocumentKindOf(LSalesDocumentType::kOrder);
      if (parts[1] == orders.recordedList && !LSalesDocumentSumTotals(profile, orders, made).written)
        LLogWriteFailure("write", profile.MainList(parts[1]).MakeRecordPath(claim.documentKey), errno);
      made.DetachWithoutSave();
      continue;
    }
    made.DetachWithoutSave();
    if (ReleaseOccurrence(profile, claim))
      LLogWarning("Modèle %s : l'occurrence du %s, interrompue avant que son document soit écrit, a été annulée ; le "
                  "modèle est de nouveau dû à cette date.",
                  templateName.c_str(), claim.date.c_str());
  }
}

std::string LRecurringRecord(LProfile& profile, LRecord& schedule, std::string* error) {
  std::string date = DueDateOf(schedule, error);
  if (date.empty()) return {};
  if (LDefAccountListNeedsUpdate(profile)) {
    LSetError(error, kNeededAccountsWarning);
    return {};
  }
  LLedgerLock lock(profile);  // one sales change at a time (salesledger.h)
  LSalesChangeIntent intent(profile);
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(LSalesDocumentType::kInvoice);
  LSalesDocument invoice;
  auto addToBalance = [&] { return LCustomerChangeBalance(profile, invoice.GetCustomer(), invoice.GetTotal()); };
  if (!MakeOccurrence(profile, kind, kRecurringInvoicesList, schedule, date, intent, invoice, addToBalance, error))
    return invoice.IsAttached() ? invoice.GetPrimaryKey() : std::string();
  std::string stockError;
  bool stocked = LSalesDocumentMoveStock(profile, kind, invoice.GetPrimaryKey(), nullptr, &invoice, &stockError);
  // The reference is noted before anything is posted under it, so that the settler posts under it.
  std::string reference = LSalesDocumentTakeReference(profile, invoice, false);
  if (!reference.empty()) intent.NotePosting(kind.recordedList, invoice.GetPrimaryKey(), {}, reference);
  bool posted = !reference.empty() && LInvoiceRecordTransactions(profile, invoice, LGetPostingUserName(), true);
  bool saved = invoice.Flush();  // keeps "JournalTxnRef"
  if (!(stocked && posted && saved)) intent.Keep();  // finished by the next holder of the ledger lock
  if (!posted) LSetError(error, "Impossible d'écrire dans le grand livre.");
  else if (!saved) LSetError(error, kDocumentNotSavedMessage);
  else if (!stocked) LSetError(error, stockError);
  return invoice.GetPrimaryKey();
}

std::string LRecurringOrderRecord(LProfile& profile, LRecord& schedule, std::string* error) {
  std::string date = DueDateOf(schedule, error);
  if (date.empty()) return {};
  LLedgerLock lock(profile);
  LSalesChangeIntent intent(profile);
  LSalesDocument order;
  (void)MakeOccurrence(profile, LSalesDocumentKindOf(LSalesDocumentType::kOrder), kRecurringOrdersList, schedule, date,
                       intent, order, [] { return true; }, error);
  return order.IsAttached() ? order.GetPrimaryKey() : std::string();
}

bool LRecurringRun(LProfile& profile, bool all, time_t now, std::vector<LRecurringMade>& made, std::string& error,
                   std::optional<LSalesDocumentType> only) {
  struct Source {
    LSalesDocumentType type;
    std::string_view list;
    std::string (*record)(LProfile&, LRecord&, std::string*);
  };
  const Source sources[] = {{LSalesDocumentType::kInvoice, kRecurringInvoicesList, LRecurringRecord},
                            {LSalesDocumentType::kOrder, kRecurringOrdersList, LRecurringOrderRecord}};
  bool recorded = true;
  while (recorded) {
    recorded = false;
    for (const Source& source : sources) {
      if (only && *only != source.type) continue;
      for (const std::string& key : LRecurringTemplateKeys(profile, source.list)) {
        // One sales change at a time; two runs past the lock's wait both finding the template due
        // meet at its claim (MakeOccurrence), where one of them records the date.
        LLedgerLock lock(profile);
        LRecord schedule;
        if (!profile.MainList(source.list).Open(schedule, key)) continue;  // removed meanwhile
        if (LRecurringGetDueDate(schedule) > now) {
          schedule.DetachWithoutSave();
          continue;
        }
        std::string date = LRecurringGetDueDateText(schedule);
        error.clear();
        std::string newKey = source.record(profile, schedule, &error);
        if (!newKey.empty()) made.push_back({source.type, newKey, date});
        if (!error.empty()) return false;
        recorded = recorded || !newKey.empty();
      }
    }
    if (!all) break;
  }
  return true;
}
