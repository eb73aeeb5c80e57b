// The general ledger: a folder "Ledger" in the business data folder holding one CSV file per
// calendar day ("2024-03-31.csv"), one row per journal line, nine columns, CR LF, no header:
//
//     "2024-03-31","GJ10000","General","6410","","Loyer de mars","+1250.00","Tax=&UserName=anne",""
//      date        reference type     account reserved description  amount    extra data    document
//
// The amount is "%c%d.%.2d": a sign, whole units and two-digit hundredths; positive is a debit,
// negative a credit. The extra data is a name/value table in the percent encoding ("UserName",
// "Tax"). A ledger transaction is the set of rows that share a date and a reference (compared
// without regard to letter case); the ledger holds no reversing entries: deleting a transaction
// removes its rows.
//
// Every posting builds an LLedgerTransaction, adds its lines and hands it to
// LAccountTransactionRecord, which appends the rows to the day file and then adds each amount to
// the month bucket and total of its account record (accounts/accounts.h). Those balances are a
// cache of the ledger; `kontavo check` recomputes them (accounts/check.h).
//
// Locks: a posting or a delete holds the ledger lock (accounts/ledgerlock.h) from the first row
// to the last balance, then the day file's own lock while it touches the file: exclusive for
// appends and rewrites (10,000 ms), shared for reading.
#pragma once

#include <list>
#include <string>
#include <string_view>

#include "llib/gen/hashtable.h"
#include "llib/gen/text.h"

class LProfile;
class LCSVFileReader;

inline constexpr std::string_view kTxnTypeGeneral = "General";     // journal entries, transfers
inline constexpr std::string_view kTxnTypeSales = "Recettes";      // invoices and credit notes
inline constexpr std::string_view kTxnTypeReceipt = "Reçus";       // customer payments
inline constexpr std::string_view kTxnTypePurchase = "Achats";     // bills
inline constexpr std::string_view kTxnTypeBillPayment = "Paiements";  // bill payments

inline constexpr unsigned kLedgerLockTimeoutMs = 10000;      // day files: append, read, rewrite
inline constexpr unsigned kLedgerIterateLockTimeoutMs = 5000;  // day files walked by the iterator
inline constexpr long long kLedgerMaxWholeUnits = 99999999999LL;  // largest whole part read back

// The extra-data column: named values of one journal line ("UserName", "Tax").
class LLedgerJournalLineXData : public LHashTable {
 public:
  // The table as one HTTP string (names in ascending order), as column 8 holds it.
  void EncodeToString(LStringLongTemplate<char>& out) const { SaveHTTPString(out); }
};

// One row of a day file. Text members hold at most 259 bytes; longer text is cut on the way in.
class LLedgerJournalLine {
 public:
  LLedgerJournalLineXData xdata;  // column 8
  std::string date;               // column 1, "YYYY-MM-DD"
  std::string reference;          // column 2
  std::string type;               // column 3
  std::string account;            // column 4, the account number
  std::string reserved;           // column 5, empty from AddLine, kept as read
  std::string description;        // column 6
  std::string document;           // column 9, the identifier of the source document
  long long amount = 0;           // column 7, cents, debit-positive

  // The row text with its CR LF, written by the CSV row writer.
  std::string BuildCSVRow() const;
  // Fills the line from the reader's current row (missing columns read empty). The extra data
  // is emptied before column 8 is decoded into it. The reader does not move.
  void LoadFromCSV(const LCSVFileReader& reader);
  // The same from a row's text; amountText, when given, receives column 7 as written.
  void LoadFromCSVRow(std::string_view rowText, std::string* amountText = nullptr);
};

// "%c%d.%.2d": 0 -> "+0.00", -1 -> "-0.01", 123456 -> "+1234.56".
std::string LLedgerFormatAmount(long long amount);

// Reads an amount column tolerantly: digits before the first "." are whole units, the first two
// digits after it hundredths (fewer read as padded with zeros), a "-" anywhere makes it negative,
// anything else is ignored; the whole part is capped at 99,999,999,999.
//   "1,234.56" -> 123456, "-12.00" -> -1200, "12.345" -> 1234, "$ 7.05" -> 705, "12.3" -> 1230
long long LLedgerReadAmountFromTheLedger(std::string_view text);

// One transaction being built, loaded or reversed. Owns its lines, kept in the order added.
class LLedgerTransaction {
 public:
  LLedgerTransaction() = default;
  LLedgerTransaction(std::string_view date, std::string_view reference, std::string_view type);

  // Adds a line with the transaction's date, reference and type, the description cut to 259
  // bytes, the reserved column empty, and userName and tax stored as "UserName" and "Tax" in the
  // extra data. Callers pass "" for what they do not have. The reference stays valid while the
  // transaction lives.
  LLedgerJournalLine& AddLine(std::string_view account, std::string_view description, long long amount,
                              std::string_view userName, std::string_view tax, std::string_view document);
  // Appends a line exactly as given (loading).
  LLedgerJournalLine& AppendLine(LLedgerJournalLine line);
  void ClearLines() { lines_.clear(); }

  const std::string& GetDate() const { return date_; }
  const std::string& GetReference() const { return reference_; }
  const std::string& GetType() const { return type_; }
  void SetDate(std::string_view date);
  void SetReference(std::string_view reference);
  void SetType(std::string_view type);
  const std::list<LLedgerJournalLine>& Lines() const { return lines_; }
  bool HasLines() const { return !lines_.empty(); }
  // The sum of the amounts: 0 for a balanced transaction.
  long long Sum() const;

 private:
  std::list<LLedgerJournalLine> lines_;
  std::string date_;       // "YYYY-MM-DD", at most 259 bytes
  std::string reference_;  // at most 259 bytes
  std::string type_;       // at most 259 bytes
};

// ---- Files ----------------------------------------------------------------------------------

// The ledger folder of the business (created, mode 0777, when missing). The spelling of the name
// is the one every caller has always used.
void LLegderGetBaseFolder(const LProfile& profile, LTextBuffer& out);
// The day file of date. false (out empty) when date is not a calendar day "YYYY-MM-DD": an empty
// date, and any text that would name a file outside the ledger, is refused.
bool LLedgerGetCSVFilePath(const LProfile& profile, LTextBuffer& out, std::string_view date);
// The reconciliation file of an account: "Reconcile/<number>.csv" in the data folder (the folder
// is not created).
void LReconcileGetCSVFilePath(const LProfile& profile, LTextBuffer& out, std::string_view account);

// ---- Posting ----------------------------------------------------------------------------------

// What a user is told when a posting could not be written.
inline constexpr std::string_view kLedgerNotWrittenMessage = "Impossible d'écrire la transaction dans le grand livre.";

// Appends the lines to the day file only, under its exclusive lock. false when the date is not a
// day or the file cannot be opened: nothing is written then.
[[nodiscard]] bool LLedgerTransactionRecord(const LProfile& profile, const LLedgerTransaction& txn);
// The posting entry point of every document: under the ledger lock, appends the rows and, only if
// that succeeded, adds each amount to its account's balances (month bucket of the date and
// total; lines naming no account record are skipped). A transaction without lines does nothing
// and counts as recorded. false when the rows could not be written (balances untouched). A
// crash midway is settled by the next holder of the ledger lock (accounts/ledgerintent.h).
[[nodiscard]] bool LAccountTransactionRecord(LProfile& profile, const LLedgerTransaction& txn);

// ---- Reading ----------------------------------------------------------------------------------

// Loads the rows of (date, reference) into txn (its lines emptied first): date and reference
// become the ones asked for, the type that of the last matching row. false when none matched,
// the date is empty or the day file cannot be opened; txn's lines are then empty.
bool LLedgerTransactionLoad(const LProfile& profile, LLedgerTransaction& txn, std::string_view date,
                            std::string_view reference);
// The same, but the matching rows are also taken out of the day file (every other row kept).
// true when at least one row was taken out.
bool LLedgerTransactionLoadAndReverse(const LProfile& profile, LLedgerTransaction& txn, std::string_view date,
                                      std::string_view reference);
// true when the day file exists and one of its rows has this reference (any letter case).
bool LLedgerTransactionTestExists(const LProfile& profile, std::string_view date, std::string_view reference);

// Whether re-posting b in place of a would change the ledger: same reference, date and type
// (exactly), as many lines, and every line of a has some line of b with equal account, amount,
// date, reference, type, description, document and reserved column, in any order. The extra data
// is not compared, and one line of b may answer for several of a: a deliberately loose test.
bool LLedgerTransactionEqual(const LLedgerTransaction& a, const LLedgerTransaction& b);
