#include "invoice/sales/recurringrecord.h"

#include <algorithm>

#include "accounts/ledgerlock.h"
#include "accounts/linkedaccounts.h"
#include "invoice/sales/salesbook.h"
#include "invoice/sales/salesposting.h"
#include "invoice/sales/salesstock.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/filestore.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/system.h"

namespace {

// The one field of a template that an occurrence does not take: the ledger reference belongs to
// one posted document only. The schedule fields go along with every other field.
constexpr std::string_view kTemplateOnly[] = {"JournalTxnRef"};

bool IsTemplateOnly(std::string_view field) {
  return std::find(std::begin(kTemplateOnly), std::end(kTemplateOnly), field) != std::end(kTemplateOnly);
}

// Makes the occurrence dated date of the template in the kind's recorded list (refused when its
// customer no longer exists): fields copied, lines refreshed from the items, totalled, recorded.
// beforeTotals runs once the document has its key (an invoice puts its copied total on the
// balance there, and the totaller then moves the balance by what the refresh changed).
template <class BeforeTotals>
bool MakeOccurrence(LProfile& profile, const LSalesDocumentKind& kind, const LRecord& schedule, const std::string& date,
                    LSalesDocument& document, BeforeTotals beforeTotals, std::string* error) {
  if (!LSalesCheckParty(profile, kind, schedule.GetString("Customer"), error)) return false;
  profile.MainList(kind.recordedList).CreateNewRecord(document);
  for (const auto& field : schedule.Fields())
    if (!field.deleted && !field.binary && !IsTemplateOnly(field.name)) document.SetString(field.name, field.text);
  document.SetString("Date", date);
  document.SetInt64("AmountPaid", 0);
  document.SetInt64("AmountRefunded", 0);  // so that no list works it out and writes it on the way
  document.SetString("OrderNumber", "");
  if (!document.Flush() || document.GetPrimaryKey().empty()) {
    return LFail(error, "Impossible d'enregistrer le document.");
  }
  bool written = beforeTotals();
  LRecurringUpdateDescriptionAndPrice(profile, document);
  written = written && LSalesDocumentSumTotals(profile, kind, document).written;
  document.SetString("IsDraft", "0");
  if (written && document.Flush()) return true;
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

std::string LRecurringRecord(LProfile& profile, LRecord& schedule, std::string* error) {
  std::string date = DueDateOf(schedule, error);
  if (date.empty()) return {};
  if (LDefAccountListNeedsUpdate(profile)) {
    LSetError(error, kNeededAccountsWarning);
    return {};
  }
  LSalesDocument invoice;
  auto addToBalance = [&] { return LCustomerChangeBalance(profile, invoice.GetCustomer(), invoice.GetTotal()); };
  if (!MakeOccurrence(profile, LSalesDocumentKindOf(LSalesDocumentType::kInvoice), schedule, date, invoice,
                      addToBalance, error))
    return {};
  std::string stockError;
  bool stocked = LSalesDocumentMoveStock(profile, LSalesDocumentKindOf(LSalesDocumentType::kInvoice),
                                         invoice.GetPrimaryKey(), nullptr, &invoice, &stockError);
  bool posted = LInvoiceRecordTransactions(profile, invoice, LGetPostingUserName(), true);
  bool saved = invoice.Flush();  // keeps "JournalTxnRef"
  bool moved = MoveScheduleOn(schedule, date, error);
  if (moved && !posted) LSetError(error, "Impossible d'écrire dans le grand livre.");
  else if (moved && !saved) LSetError(error, "Impossible d'enregistrer le document.");
  else if (moved && !stocked) LSetError(error, stockError);
  return invoice.GetPrimaryKey();
}

std::string LRecurringOrderRecord(LProfile& profile, LRecord& schedule, std::string* error) {
  std::string date = DueDateOf(schedule, error);
  if (date.empty()) return {};
  LSalesDocument order;
  if (!MakeOccurrence(profile, LSalesDocumentKindOf(LSalesDocumentType::kOrder), schedule, date, order, [] { return true; }, error))
    return {};
  MoveScheduleOn(schedule, date, error);
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
