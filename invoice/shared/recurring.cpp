#include "invoice/shared/recurring.h"

#include <algorithm>

#include "invoice/shared/documentconversion.h"
#include "invoice/shared/item.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/datemessage.h"
#include "llib/gen/filestore.h"

namespace {

constexpr int kSecondsPerDay = 86400;

// Month lengths of the schedule: February always 28 days.
constexpr int kScheduleMonthDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

// Months added by each month code, from code 2 on.
constexpr int kMonthsOfCode[] = {1, 2, 3, 6, 12, 24};

// Fields of a document that a template does not take over.
constexpr std::string_view kNotInTemplate[] = {"JournalTxnRef", "AmountPaid", "AmountRefunded", "IsDraft",
                                               kConvertedInvoiceField};

// A stored schedule date; a time after the date is ignored.
bool ReadScheduleDate(const LRecord& schedule, std::string_view field, LDate& date) {
  std::string text = schedule.GetString(field);
  return LDate::Parse(std::string_view(text).substr(0, 10), date);
}

LDate AddScheduleMonths(const LDate& last, int months) {
  int year = last.year;
  int month = last.month + months;
  if (month >= 13) {
    year += (month - 1) / 12;
    month = (month - 1) % 12 + 1;
  }
  int day = last.day;
  int length = kScheduleMonthDays[month - 1];
  if (day > length) {
    day -= length;
    if (++month == 13) {
      month = 1;
      ++year;
    }
  }
  return LDate(year, month, day);
}

}  // namespace

time_t LRecurringGetDueDate(const LRecord& schedule) {
  LDate date;
  if (schedule.GetString("RecurLast").empty())
    return ReadScheduleDate(schedule, "RecurStart", date) ? date.ToLocalTime() : kRecurNever;
  if (!ReadScheduleDate(schedule, "RecurLast", date)) return kRecurNever;
  int code = schedule.GetInt("RecurInterval", kRecurIntervalDefault);
  if (code < 0 || code >= kRecurIntervalNever) return kRecurNever;
  if (code <= 1) {
    // Back to midnight by taking off the local time of day: on a day that daylight saving
    // shortens this lands on the evening before, deliberately.
    time_t later = date.ToLocalTime(12) + static_cast<time_t>(code == 0 ? 7 : 14) * kSecondsPerDay;
    tm local{};
    localtime_r(&later, &local);
    return later - (local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec);
  }
  return AddScheduleMonths(date, kMonthsOfCode[code - 2]).ToLocalTime();
}

std::string LRecurringGetDueDateText(const LRecord& schedule) {
  time_t due = LRecurringGetDueDate(schedule);
  return due == kRecurNever ? std::string() : LDate::FromTime(due).ToText();
}

std::vector<std::string> LRecurringTemplateKeys(LProfile& profile, std::string_view list) {
  std::vector<std::string> keys;
  LRecord schedule;
  for (LFileStoreIteratorBase it(profile.MainList(list), schedule); schedule.IsAttached(); it.Next(schedule))
    keys.push_back(schedule.GetPrimaryKey());
  // Keys are numbers: shorter ones first, then in byte order.
  std::sort(keys.begin(), keys.end(), [](const std::string& a, const std::string& b) {
    return a.size() != b.size() ? a.size() < b.size() : a < b;
  });
  return keys;
}

bool LRecurringTestList(LProfile& profile, std::string_view list, time_t now) {
  LRecord schedule;
  for (LFileStoreIteratorBase it(profile.MainList(list), schedule); schedule.IsAttached(); it.Next(schedule))
    if (LRecurringGetDueDate(schedule) <= now) return true;
  return false;
}

bool LRecurringTest(LProfile& profile, time_t now) { return LRecurringTestList(profile, kRecurringInvoicesList, now); }

void LRecurringUpdateDescriptionAndPrice(LProfile& profile, LSalesDocument& document) {
  LForEachLineItem(profile, document, [&document](int index, const LItem& item) {
    if (!item.GetDescription().empty())
      document.SetString(LFKItemCollectionRecord::ItemField(index, "Description"), item.GetDescription());
    if (item.TestFieldExists("Price")) {
      document.SetInt64(LFKItemCollectionRecord::ItemField(index, "UnitValue"), item.GetPrice());
      document.SetInt(LFKItemCollectionRecord::ItemField(index, "UnitValueDigits"), -1);
    }
  });
}

std::string_view LRecurringListOf(const LSalesDocumentKind& kind) {
  if (kind.type == LSalesDocumentType::kInvoice) return kRecurringInvoicesList;
  if (kind.type == LSalesDocumentType::kOrder) return kRecurringOrdersList;
  return {};
}

bool LRecurringAddTemplate(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                           std::string_view start, int interval, std::string& newKey, std::string& error) {
  std::string_view listName = LRecurringListOf(kind);
  LDate startDate;
  if (listName.empty()) {
    error = "Seules les factures et les commandes peuvent être périodiques.";
    return false;
  }
  if (!LDate::Parse(start, startDate)) {
    error = LInvalidDateMessage(start);
    return false;
  }
  LSalesDocument source;
  if (key.empty() ||
      (!profile.MainList(kind.recordedList).Open(source, key) && !profile.MainList(kind.draftsList).Open(source, key))) {
    error = LSalesDocumentNotFoundMessage(key);
    return false;
  }
  source.DetachWithoutSave();
  LRecord schedule;
  profile.MainList(listName).CreateNewRecord(schedule);
  schedule.CopyRecord(source);
  for (std::string_view field : kNotInTemplate) schedule.DeleteField(field);
  schedule.SetString("RecurStart", startDate.ToText());
  schedule.DeleteField("RecurLast");
  schedule.SetInt("RecurInterval", interval);
  if (!schedule.Flush() || schedule.GetPrimaryKey().empty()) {
    error = "Impossible d'enregistrer le modèle.";
    return false;
  }
  newKey = schedule.GetPrimaryKey();
  return true;
}
