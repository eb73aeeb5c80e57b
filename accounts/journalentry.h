// Journal entries: a ledger transaction typed in by the user. A date, one of five transaction
// types, a reference, one description for every line, and account lines each with an amount and
// a side. Saving checks the entry in a fixed order, may take the reference's number from the
// counter of its type (a reference containing "[" is numbered: "GJ[auto]" becomes "GJ10005"),
// and posts it. Re-saving an entry that is already in the ledger replaces its transaction only
// when something changed.
//
// The five types, by index, with the counter whose number a "[" reference takes: 0 "Paiements"
// ("RefNumberPayment"), 1 "Reçus" ("RefNumberReceipt"), 2 "Recettes" ("RefNumberSales"),
// 3 "Achats" ("RefNumberPurchases"), 4 "General" ("RefNumberGenJournal"). They are the ledger's
// own transaction types, so an entry is filed with the postings of its kind.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/date.h"

class LAsker;
class LProfile;
struct LReferenceCounter;

inline constexpr std::array<std::string_view, 5> kJournalEntryTypes = {"Paiements", "Reçus", "Recettes", "Achats",
                                                                       "General"};
inline constexpr int kJournalEntryGeneralType = 4;

// The type text of an index; "General" for any index outside 0 to 4.
std::string_view LJournalEntryTypeText(int typeIndex);
// The counter of a type index (0 to 4); the general journal's for any other index.
const LReferenceCounter& LJournalEntryTypeCounter(int typeIndex);

// The account number in the text of a line's account column ("6410 - Loyer" -> "6410"): the text
// before the first blank, tab or " - ", trimmed.
std::string LJournalEntryAccountFromColumn(std::string_view column);

struct LJournalEntryLine {
  std::string account;  // the account number
  long long amount = 0; // cents, as entered
  std::string side;     // "CR" credit; anything else debit
  bool IsCredit() const { return side == "CR"; }
};

// Debits less credits of lines (0 when they balance).
long long LJournalEntryOutOfBalance(const std::vector<LJournalEntryLine>& lines);

// Why lines are refused, by an entry and by a transaction template alike.
inline constexpr std::string_view kJournalEntryUnbalancedMessage =
    "Vous ne pouvez enregistrer qu'une transaction équilibrée. Veuillez ajouter un compte sur lequel imputer le "
    "montant.";
inline constexpr std::string_view kJournalEntryNoLineMessage =
    "Aucun compte n'a été imputé. Veuillez cliquer ici pour ajouter un compte.";

class LJournalEntryDlg {
 public:
  LJournalEntryDlg(LProfile& profile, LAsker& asker) : profile_(profile), asker_(asker) {}

  // ---- What the user entered -----------------------------------------------------------
  LDate date;
  int typeIndex = kJournalEntryGeneralType;
  std::string reference;    // trimmed, at most 259 bytes
  std::string description;  // at most 259 bytes, the description of every line
  std::vector<LJournalEntryLine> lines;
  // An entry opened from the ledger: where it is stored.
  bool existing = false;
  std::string storedDate;
  std::string storedReference;

  // Debits less credits; the out-of-balance field shows it (empty when 0).
  long long GetOutOfBalance() const;

  // Saves the entry. false with message set when a check refused it or a question was not
  // confirmed; nothing is written then and no reference number is used. true when saved (or,
  // for an unchanged existing entry, when there was nothing to write); message then holds
  // "La transaction a été enregistrée." for a new entry.
  [[nodiscard]] bool CmOk(std::string* message);

  // After a successful CmOk: the reference the entry was saved under, and whether the ledger
  // was written.
  const std::string& GetSavedReference() const { return savedReference_; }
  bool WroteLedger() const { return wroteLedger_; }

 private:
  LProfile& profile_;
  LAsker& asker_;
  std::string savedReference_;
  bool wroteLedger_ = false;
  bool ConfirmReconciledLines(std::string* message);
};
