// The audit trail: a log, "AuditTrail.log" in the business data folder, of every change to the
// books, so that an auditor can see that nothing was altered after the fact. One line an entry,
// a name/value table in the percent encoding (names in ascending order):
//
//     Action=post&Amount=12000&Date=2026-01-10&Lines=...&Prev=9f86d0...&Reference=SLS10000&
//     Seq=7&Time=2026-01-10T09%3A14%3A03Z&User=anne
//
//   Action     "post", "delete" (a transaction taken out of the ledger), "renumber" (an
//              account), "record", "edit", "delete-document" (a document), "apply", "unapply"
//              (a payment or credit note applied to an invoice, or let go of it), "cancel" (the
//              change of an earlier entry did not take effect: refused or cut short by a crash
//              after its entry; Lines holds that entry's "Seq")
//   Reference  the transaction's reference, the account or the document ("Facture 12")
//   Date       the transaction's date, or the document's
//   Amount     the sum of the debits of the transaction, or the document's total (cents)
//   Lines      the journal rows concerned, as the day file holds them; for a deleted document,
//              its whole record, so what was deleted can be read back; for an application, the
//              invoice and the amount it now holds of the payment or credit note
//   Time       when the change was made (UTC), User who made it (the posting user name)
//   Seq        1, 2, 3... ; Prev the SHA-256 (hexadecimal) of the whole previous line, 64 zeros
//              for the first entry
//
// Beside the log, "AuditTrail.head" holds the number and hash of the last entry ("7 9f86d0..."),
// so that an entry taken off the end, or a change to the last entry, is found too.
//
// Each entry is appended under the ledger lock (accounts/ledgerlock.h), before the change it
// records is made, so two processes never chain onto the same entry. A posting, a deletion, a
// document change or a renumbering made without the lock, after the whole wait, leaves its entry
// pending for the next holder (accounts/ledgerintent.h, auditpending.h, accountrenumber.h); only
// one whose pending note could not be written takes the log file's own lock. A change that cannot
// write its entry is refused. A posting or deletion of the ledger that fails or dies after its
// entry has the entry taken back off (LAuditCutBack) by itself or by whoever settles its intent
// (accounts/ledgerintent.h), so the log and the books never disagree. Books that existed before
// the trail start their chain at their first change.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

class LHashTable;
class LProfile;
class LLedgerTransaction;
class LRecord;

inline constexpr std::string_view kAuditTrailFile = "AuditTrail.log";
inline constexpr std::string_view kAuditPost = "post";
inline constexpr std::string_view kAuditDelete = "delete";
inline constexpr std::string_view kAuditRenumber = "renumber";
inline constexpr std::string_view kAuditRecord = "record";
inline constexpr std::string_view kAuditEdit = "edit";
inline constexpr std::string_view kAuditDeleteDocument = "delete-document";
inline constexpr std::string_view kAuditApply = "apply";
inline constexpr std::string_view kAuditUnapply = "unapply";
inline constexpr std::string_view kAuditCancel = "cancel";
inline constexpr std::string_view kAuditTrailHeadFile = "AuditTrail.head";
inline constexpr std::string_view kAuditFirstPrev =
    "0000000000000000000000000000000000000000000000000000000000000000";

// What one entry says beyond its place in the chain.
struct LAuditEvent {
  std::string action;
  std::string reference;
  std::string date;
  long long amount = 0;
  std::string lines;
  // When and by whom the change was made; empty: now, and the posting user. An entry written
  // late for a change cut short keeps the change's own.
  std::string time;
  std::string user;
};

// An entry, and the note of a change whose entry is pending (accounts/auditpending.h), hold an
// event under the same names: "Action", "Reference", "Date", "Amount", "Lines", "Time", "User".
// Sets those names in fields, as event has them (an empty time or user stays empty).
void LAuditSetEventFields(const LAuditEvent& event, LHashTable& fields);
// The event of such a line, decoded; a field the line lacks is left empty (Amount 0).
LAuditEvent LAuditEventOfLine(std::string_view line);
// The decoded value of field name in such a line; empty when it has none.
std::string LAuditField(std::string_view line, std::string_view name);

// Appends an entry for event. Every change writes its entry before it changes the books, and is
// refused when this fails. false (and an error in the log of the program) when the trail could
// not be written; the log and its head are then as they were.
[[nodiscard]] bool LAuditAppend(const LProfile& profile, const LAuditEvent& event);
// Closes the log and head this process keeps open between entries (LLedgerLetGoOfFiles).
void LAuditLetGoOfFiles();
// The size of the log (0 when there is none): where the next entry begins.
long long LAuditLogSize(const LProfile& profile);
// The entries from offset size on, one line each (empty when there are none).
std::string LAuditReadFrom(const LProfile& profile, long long size);
// The current time as entries give it ("2026-01-10T09:14:03Z", UTC).
std::string LAuditTimeNow();
// Takes the entries from offset size on off the log and points the head at the entry left last:
// the entries of a change that did not happen after all. Callers hold the ledger lock, which
// every writer of the trail holds, so those entries are the last ones. false when the log or
// the head could not be written.
bool LAuditCutBack(const LProfile& profile, long long size);
// The event of a transaction posted ("post") or taken out ("delete"): its reference, date, the
// sum of its debits and its rows.
LAuditEvent LAuditTransactionEvent(std::string_view action, const LLedgerTransaction& txn);

// An entry for a document recorded, edited or deleted: Reference is title and key ("Facture 12",
// "Paiement 3"), Date and Amount its "Date" and its "Total" (a payment's "Amount"), Lines its
// whole record (every field, percent-encoded) when it is deleted.
[[nodiscard]] bool LAuditAppendDocument(const LProfile& profile, std::string_view action, std::string_view title,
                                        std::string_view key, const LRecord& document);
// Whether the trail's last word on the document named title and key is its deletion ("cancel"
// entries taken into account). Reads the whole log: only the repair of a deletion cut short
// between noting it and writing its entry asks.
bool LAuditSaysDeleted(const LProfile& profile, std::string_view title, std::string_view key);
// The event of that entry, to be written later (accounts/auditpending.h).
LAuditEvent LAuditDocumentEvent(std::string_view action, std::string_view title, std::string_view key,
                                const LRecord& document);

// How the trail names documents of the purchase side ("Facture fournisseur B12", "Règlement 3").
inline constexpr std::string_view kBillTitle = "Facture fournisseur";
inline constexpr std::string_view kBillPaymentTitle = "Règlement";

// What a user is told when a change is refused because the audit trail cannot be written.
inline constexpr std::string_view kAuditNotWrittenMessage =
    "Impossible d'écrire la piste d'audit : la modification est refusée, rien n'a été changé.";

// The day (UTC, "YYYY-MM-DD") each transaction still in the books was last posted, as the trail
// tells it, keyed by LAuditTransactionKey. Empty for books without a trail.
std::unordered_map<std::string, std::string> LAuditPostingDays(const LProfile& profile);
// The key of a transaction in that map: its date, a tab, its reference upper-cased (the ledger
// tells references apart without regard to letter case).
std::string LAuditTransactionKey(std::string_view date, std::string_view reference);

// The SHA-256 of text in lower-case hexadecimal.
std::string LAuditHash(std::string_view text);

struct LAuditVerifyResult {
  long long entryCount = 0;  // entries read
  long long brokenEntry = 0;  // the first line whose link is broken; 0 when the chain holds
  std::string message;       // French, naming the broken link; empty when the chain holds
};
// Checks the chain of the business's log: every line's "Seq" one more than the previous one, its
// "Prev" the hash of the previous line, and the last line the one the head names. A missing log
// (with no head) is an empty chain, which holds.
LAuditVerifyResult LAuditVerify(const LProfile& profile);
// The same over a log's content and its head's.
LAuditVerifyResult LAuditVerifyText(std::string_view content, std::string_view head);
