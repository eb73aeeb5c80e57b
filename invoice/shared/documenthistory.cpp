#include "invoice/shared/documenthistory.h"

#include <ctime>

#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/record.h"

namespace {

constexpr char kSeparator = '|';

std::string NowText() {
  std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  return text;
}

// A part of an event without the separator, which would shift the parts after it.
std::string Clean(std::string_view text) {
  std::string clean(text);
  for (char& c : clean)
    if (c == kSeparator || c == '\n' || c == '\r') c = ' ';
  return clean;
}

void Append(LRecord& record, std::string_view action, std::string_view user, std::string_view detail) {
  int count = record.GetInt("EventCount", 0) + 1;
  record.SetString("Event" + std::to_string(count),
                   NowText() + kSeparator + Clean(user) + kSeparator + Clean(action) + kSeparator + Clean(detail));
  record.SetInt("EventCount", count);
}

LDocumentHistoryEvent Parse(const std::string& text) {
  LDocumentHistoryEvent event;
  std::string* parts[] = {&event.time, &event.user, &event.action, &event.detail};
  std::size_t start = 0;
  for (int i = 0; i < 4; ++i) {
    std::size_t end = i == 3 ? std::string::npos : text.find(kSeparator, start);
    *parts[i] = text.substr(start, end == std::string::npos ? std::string::npos : end - start);
    if (end == std::string::npos) break;
    start = end + 1;
  }
  return event;
}

}  // namespace

std::string LDocumentHistoryKey(std::string_view list, std::string_view key) {
  return std::string(list) + "/" + std::string(key);
}

bool LDocumentHistoryAdd(LProfile& profile, std::string_view list, std::string_view key, std::string_view action,
                         std::string_view user, std::string_view detail) {
  LRecord record;
  (void)profile.List(kDocumentHistoryList).OpenAlways(record, LDocumentHistoryKey(list, key));  // absent: created
  Append(record, action, user, detail);
  return record.Flush();
}

bool LDocumentHistoryEmail(LProfile& profile, std::string_view list, std::string_view key, std::string_view state,
                           std::string_view user, std::string_view recipients, std::string_view error) {
  LRecord record;
  (void)profile.List(kDocumentHistoryList).OpenAlways(record, LDocumentHistoryKey(list, key));  // absent: created
  std::string_view action = state == "sent" ? kHistoryEmailed : state == "failed" ? kHistoryEmailFailed
                                                                                  : kHistoryEmailQueued;
  std::string detail(recipients);
  if (!error.empty()) detail += " : " + std::string(error);
  Append(record, action, user, detail);
  record.SetString("EmailState", state);
  record.SetString("EmailError", error);
  return record.Flush();
}

LDocumentHistory LDocumentHistoryRead(const LProfile& profile, std::string_view list, std::string_view key) {
  LDocumentHistory history;
  LRecord record;
  if (!profile.List(kDocumentHistoryList).Open(record, LDocumentHistoryKey(list, key))) return history;
  int count = record.GetInt("EventCount", 0);
  for (int n = 1; n <= count; ++n) {
    std::string text;  // unbounded: a server's message may be long
    record.GetString("Event" + std::to_string(n), {}, text);
    history.events.push_back(Parse(text));
  }
  history.emailState = record.GetString("EmailState");
  record.GetString("EmailError", {}, history.emailError);
  return history;
}

bool LDocumentHistoryRecordDraft(LProfile& profile, std::string_view draftList, std::string_view draftKey,
                                 std::string_view recordedList, std::string_view recordedKey, std::string_view user) {
  LFileStoreListBase histories = profile.List(kDocumentHistoryList);
  std::string target = LDocumentHistoryKey(recordedList, recordedKey);
  (void)histories.Delete(target);  // absent when the new key had no history yet
  LRecord record;
  if (histories.Open(record, LDocumentHistoryKey(draftList, draftKey))) {
    record.SetPrimaryKey(target);
    if (!record.Flush()) return false;
  }
  return LDocumentHistoryAdd(profile, recordedList, recordedKey, kHistoryRecorded, user);
}
