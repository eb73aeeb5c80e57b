// The history of a document: when it was created, recorded, printed and e-mailed, by whom, and
// the state of its last e-mail. One record per document in the list "DocumentHistory", keyed by
// the document's list and key ("Invoices/12", "Payments/3"), so a document's own record is never
// rewritten for it and a deleted document's history stays readable:
//   "EventCount"       number of events
//   "Event<n>"         "YYYY-MM-DD HH:MM:SS|user|action|detail" (n from 1, oldest first)
//   "EmailState"       "" never sent, "sent", "failed" or "pending" (queued for the background sender)
//   "EmailError"       the server's message of the last failure
// Actions are written in French, as the history pages show them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

class LProfile;

inline constexpr std::string_view kDocumentHistoryList = "DocumentHistory";

inline constexpr std::string_view kHistoryCreated = "Créé";
inline constexpr std::string_view kHistoryRecorded = "Enregistré";
inline constexpr std::string_view kHistoryPrinted = "Imprimé";
inline constexpr std::string_view kHistoryEmailed = "Envoyé par courriel";
inline constexpr std::string_view kHistoryEmailFailed = "Échec de l'envoi";
inline constexpr std::string_view kHistoryEmailQueued = "Courriel en attente d'envoi";

struct LDocumentHistoryEvent {
  std::string time;    // "YYYY-MM-DD HH:MM:SS", local
  std::string user;    // who did it (web user or login name); may be empty
  std::string action;  // one of the kHistory… texts
  std::string detail;  // the recipients of a mail, the error of a failure, ...
};

struct LDocumentHistory {
  std::vector<LDocumentHistoryEvent> events;  // oldest first
  std::string emailState;                     // "", "sent", "failed" or "pending"
  std::string emailError;                     // the last failure's message
};

// The history key of document key of list: "Invoices/12".
std::string LDocumentHistoryKey(std::string_view list, std::string_view key);

// Appends an event dated now. false when the history record could not be written.
[[nodiscard]] bool LDocumentHistoryAdd(LProfile& profile, std::string_view list, std::string_view key,
                                       std::string_view action, std::string_view user, std::string_view detail = {});
// Appends the event of an e-mail and sets the e-mail state: "sent" (error cleared), "failed"
// with error, or "pending". false when the record could not be written.
[[nodiscard]] bool LDocumentHistoryEmail(LProfile& profile, std::string_view list, std::string_view key,
                                         std::string_view state, std::string_view user, std::string_view recipients,
                                         std::string_view error = {});
// The history of the document; empty when it has none.
LDocumentHistory LDocumentHistoryRead(const LProfile& profile, std::string_view list, std::string_view key);
// A draft recorded under a new key: the draft's events move to the recorded document, in place of
// what the new key had, and "Enregistré" is added. false when the history could not be written.
[[nodiscard]] bool LDocumentHistoryRecordDraft(LProfile& profile, std::string_view draftList, std::string_view draftKey,
                                               std::string_view recordedList, std::string_view recordedKey,
                                               std::string_view user);
