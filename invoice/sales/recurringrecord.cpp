#include "invoice/sales/recurringrecord.h"

#include <algorithm>

#include "accounts/ledgerlock.h"
#include "accounts/linkedaccounts.h"
#include "invoice/sales/salesbook.h"
#include "invoice/sales/salesledger.h"
#include "invoice/sales/salesposting.h"
#include "invoice/sales/salesstock.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/filestore.h"
#include "llib/gen/log.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/system.h"

namespace {

// The one field of a template that an occurrence does not take: the ledger reference belongs to
// one posted document only. The schedule fields go along with every other field.
constexpr std::string_view kTemplateOnly[] = {"JournalTxnRef"};

bool IsTemplateOnly(std::string_view field) {
  return std::find(std::begin(kTemplateOnly), std::end(kTemplateOnly), field) != std::end(kTemplateOnly);
}

// The note of an occurrence being recorded: "recurring", the document's list and key, the
// template's list and key, the date. Killed midway, the settler moves the template on once the
// document is there (LRecurringSettle), so that the next run does not record the date again.
constexpr std::string_view kRecurringNote = "recurring";

// Makes the occurrence dated date of the template of templateList in the kind's recorded list
// (refused when its customer no longer exists): fields copied, lines refreshed from the items,
// totalled, recorded. beforeTotals runs once the document has its key (an invoice puts its copied
// total on the balance there, and the totaller then moves the balance by what the refresh
// changed). The number is taken (an empty file) and noted with the template before anything is
// written: the settler of a killed occurrence finishes it from its record, or takes the number
// back.
template <class BeforeTotals>
bool MakeOccurrence(LProfile& profile, const LSalesDocumentKind& kind, std::string_view templateList,
                    const LRecord& schedule, const std::string& date, LSalesChangeIntent& intent,
                    LSalesDocument& document, BeforeTotals beforeTotals, std::string* error) {
  if (!LSalesCheckParty(profile, kind, schedule.GetString("Customer"), error)) return false;
  const LFileStoreListBase& list = profile.MainList(kind.recordedList);
  intent.NoteReserving(kind.recordedList);
  std::string key = LSalesReserveFirstFreeKey(list, {});
  if (key.empty()) return LFail(error, "Impossible d'enregistrer le document.");
  if (kind.type == LSalesDocumentType::kInvoice) intent.NotePosting(kind.recordedList, key, {}, {});
  (void)intent.Note(std::string(kRecurringNote) + "\t" + std::string(kind.recordedList) + "\t" + key + "\t" +
                    std::string(templateList) + "\t" + schedule.GetPrimaryKey() + "\t" + date);
  list.Open(document, key);
  for (const auto& field : schedule.Fields())
    if (!field.deleted && !field.binary && !IsTemplateOnly(field.name)) document.SetString(field.name, field.text);
  document.SetString("Date", date);
  document.SetInt64("AmountPaid", 0);
  document.SetInt64("AmountRefunded", 0);  // so that no list works it out and writes it on the way
  document.SetString("OrderNumber", "");
  if (!document.Flush()) {
    document.DetachWithoutSave();
    (void)list.Delete(key);  // the number goes back
    return LFail(error, "Impossible d'enregistrer le document.");
  }
  bool written = beforeTotals();
  LRecurringUpdateDescriptionAndPrice(profile, document);
  written = written && LSalesDocumentSumTotals(profile, kind, document).written;
  document.SetString("IsDraft", "0");
  if (written && document.Flush()) return true;
  intent.Keep();  // the document is there: the next holder of the ledger lock finishes it
  return LFail(error, "Impossible d'enregistrer le document.");
}

// The due date of the template as text; empty (with the message) when it is never due.
std::string DueDateOf(const LRecord& schedule, std::string* error) {
  std::string date = LRecurringGetDueDateText(schedule);
  if (date.empty()) LSetError(error, "Ce modèle n'a pas d'échéance.");
  return date;
}

// false when the template cannot be written: it would stay due and be recorded again and again.
bool MoveScheduleOn(LRecord& schedule, const std::string& date, std::string* error) {
  schedule.SetString("RecurLast", date);
  if (schedule.Flush()) return true;
  return LFail(error, "Impossible d'enregistrer le modèle.");
}

}  // namespace

void LRecurringSettle(LProfile& profile, const std::vector<std::string>& notes) {
  for (const std::string& note : notes) {
    std::vector<std::string_view> parts = LIntentNoteParts(note);
    if (parts.size() != 6 || parts[0] != kRecurringNote) continue;
    std::string document = std::string(parts[1]) + "/" + std::string(parts[2]);
    std::string templateName = std::string(parts[3]) + "/" + std::string(parts[4]);
    std::string date(parts[5]);
    LRecord made, schedule;
    bool written = profile.MainList(parts[1]).Open(made, parts[2]) && !made.Fields().empty();
    made.DetachWithoutSave();
    if (!written || !profile.MainList(parts[3]).Open(schedule, parts[4])) continue;
    if (LRecurringGetDueDateText(schedule) != date) {
      schedule.DetachWithoutSave();  // moved on already
      continue;
    }
    if (MoveScheduleOn(schedule, date, nullptr))
      LLogWarning("Modèle %s : l'occurrence du %s, interrompue, a été achevée (%s).", templateName.c_str(), date.c_str(),
                  document.c_str());
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
    return {};
  std::string stockError;
  bool stocked = LSalesDocumentMoveStock(profile, kind, invoice.GetPrimaryKey(), nullptr, &invoice, &stockError);
  // The reference is noted before anything is posted under it, so that the settler posts under it.
  std::string reference = LSalesDocumentTakeReference(profile, invoice, false);
  if (!reference.empty()) intent.NotePosting(kind.recordedList, invoice.GetPrimaryKey(), {}, reference);
  bool posted = !reference.empty() && LInvoiceRecordTransactions(profile, invoice, LGetPostingUserName(), true);
  bool saved = invoice.Flush();  // keeps "JournalTxnRef"
  bool moved = MoveScheduleOn(schedule, date, error);
  if (!(stocked && posted && saved && moved)) intent.Keep();  // finished by the next holder of the ledger lock
  if (moved && !posted) LSetError(error, "Impossible d'écrire dans le grand livre.");
  else if (moved && !saved) LSetError(error, "Impossible d'enregistrer le document.");
  else if (moved && !stocked) LSetError(error, stockError);
  return invoice.GetPrimaryKey();
}

std::string LRecurringOrderRecord(LProfile& profile, LRecord& schedule, std::string* error) {
  std::string date = DueDateOf(schedule, error);
  if (date.empty()) return {};
  LLedgerLock lock(profile);
  LSalesChangeIntent intent(profile);
  LSalesDocument order;
  if (!MakeOccurrence(profile, LSalesDocumentKindOf(LSalesDocumentType::kOrder), kRecurringOrdersList, schedule, date,
                      intent, order, [] { return true; }, error))
    return {};
  if (!MoveScheduleOn(schedule, date, error)) intent.Keep();
  return order.GetPrimaryKey();
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
        // Two desks running at once must not both record the same occurrence: the due test and
        // the recording that moves "RecurLast" on happen under the ledger lock.
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
        recorded = true;
      }
    }
    if (!all) break;
  }
  return true;
}
