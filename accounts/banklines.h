// The statement lines imported into a bank account, kept per account in "BankLines/<number>.csv"
// of the data folder, one row per line, written with the CSV row writer:
//
//     "7","2024-03-04","-12050","PRLV SEPA EDF","B:FIT0042","matched","2024-03-02","PMT10003",""
//      id  date         cents    text            key         status    ledger date  ledger ref cheque
//
// A line is known by its key: "B:" and the bank's own identifier of the line (OFX FITID, camt
// AcctSvcrRef or NtryRef, MT940 bank reference) when it has one, else "H:" and a hash of its
// date, amount, text and its occurrence among the file's lines with the same three, so that
// importing the same file twice adds nothing while two equal payments on one day stay two lines.
//
// Its status says where it stands against the ledger: "new" (nothing found), "suggested" (a
// ledger line proposed, not taken: another was as likely), "matched" (paired by the matching),
// "accepted" (the pairing confirmed by the user), "posted" (a transaction made from the line).
// Paired lines name the ledger transaction (date and reference) of the account's line they
// stand for.
//
// Everything that reads and rewrites a store holds its lock ("BankLines/<number>.lock",
// exclusive, 10,000 ms); the file itself is replaced whole.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/filelock.h"

class LProfile;
struct LStatementEntry;

enum class LBankLineStatus { kNew, kSuggested, kMatched, kAccepted, kPosted };

std::string_view LBankLineStatusName(LBankLineStatus status);  // "new", "suggested", ...

struct LBankLine {
  std::string id;                // number within the account, "1", "2", ...
  std::string date;              // "YYYY-MM-DD"
  long long amount = 0;          // minor units, positive money in
  std::string text;
  std::string key;               // "B:..." or "H:...", see above
  LBankLineStatus status = LBankLineStatus::kNew;
  std::string ledgerDate;        // the paired transaction, when status is not new
  std::string ledgerReference;
  std::string chequeNumber;      // digits; empty when not a cheque

  bool IsPaired() const { return status != LBankLineStatus::kNew; }
  // Whether the line holds its ledger line for good (a suggestion does not).
  bool HoldsLedgerLine() const {
    return status == LBankLineStatus::kMatched || status == LBankLineStatus::kAccepted ||
           status == LBankLineStatus::kPosted;
  }
};

// A renumbered account takes its statement lines (and an upload waiting for its columns) along;
// a file the new number already has is left as it is. false when a file could not be moved.
[[nodiscard]] bool LBankLinesRenumber(const LProfile& profile, std::string_view oldNumber, std::string_view newNumber);

// "Ligne de relevé introuvable : <id>.": the refusal of a statement line id the account has not.
std::string LBankLineNotFoundMessage(std::string_view id);

// The key of line: its bank identifier, or the hash of its date, amount, text and occurrence
// (0 for the first line of the file with those three, 1 for the next...).
std::string LBankLineKey(const LStatementEntry& line, int occurrence);

// The lines of one bank account, loaded and saved whole under the account's lock.
class LBankLineStore {
 public:
  // Takes the lock of account's store (creating its folder) and loads the lines.
  LBankLineStore(const LProfile& profile, std::string_view account);

  std::vector<LBankLine>& Lines() { return lines_; }
  const std::vector<LBankLine>& Lines() const { return lines_; }
  // The line of that id; null when none.
  LBankLine* Find(std::string_view id);
  // Whether a line with that key is stored.
  bool Knows(std::string_view key) const;
  // Appends line with the next free id (set in the returned line).
  LBankLine& Add(LBankLine line);
  // Writes the lines back (the file replaced whole). false when it could not be written.
  [[nodiscard]] bool Save();

 private:
  std::string path_;
  LLockedFile lock_;
  std::vector<LBankLine> lines_;
  std::vector<std::string> keys_;  // sorted keys of lines_, for Knows
  long long nextId_ = 1;  // one past the largest id stored
};
