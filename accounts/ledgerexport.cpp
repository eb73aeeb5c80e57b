#include "accounts/ledgerexport.h"

#include <algorithm>
#include <map>
#include <vector>

#include "accounts/accounts.h"
#include "accounts/ledger.h"
#include "accounts/ledgeriterator.h"
#include "accounts/ledgerlock.h"
#include "llib/gen/csvtable.h"
#include "llib/gen/date.h"
#include "llib/gen/money.h"
#include "llib/gen/textcase.h"

namespace {

constexpr int kLedgerDigits = 2;  // the ledger's amounts are hundredths

// Text that the journal formats read as one name: no tab, no double blank (both end an
// account's name), no ";" (begins a comment).
std::string JournalName(std::string_view text) {
  std::string out;
  for (char c : text) {
    if (c == '\t' || c == '\r' || c == '\n') c = ' ';
    if (c == ';') c = ',';
    if (c == ' ' && (out.empty() || out.back() == ' ')) continue;
    out.push_back(c);
  }
  while (!out.empty() && out.back() == ' ') out.pop_back();
  return out;
}

// "number description" of every account of the chart, deleted ones included.
std::map<std::string, std::string> AccountNames(LProfile& profile, std::map<std::string, long long>& openings) {
  std::map<std::string, std::string> names;
  LAccountList accounts(profile);
  for (LDataStoreListIterator<LFileStoreDataStore, LAccount> it(accounts); it.IsValid(); it.Next()) {
    names[it->GetNumber()] = JournalName(it->GetNumber() + " " + it->GetDescription());
    if (it->GetOpeningBalance() != 0) openings[it->GetNumber()] = it->GetOpeningBalance();
  }
  return names;
}

struct Transaction {
  std::string date;
  std::string reference;
  std::vector<LLedgerJournalLine> lines;
};

// Every ledger transaction in date order, then in the order its first line comes in its day.
std::vector<Transaction> Transactions(LProfile& profile) {
  std::vector<Transaction> out;
  std::map<std::string, std::size_t> ofDay;  // lower-case reference -> index in out, for the current day
  std::string day;
  LLedgerAccountLineIterator it(profile, "", "");
  for (it.SkipToValidLine(); it.valid; it.SkipToValidLine()) {
    if (it.line.date != day) {
      day = it.line.date;
      ofDay.clear();
    }
    auto [found, added] = ofDay.emplace(LLowerText(it.line.reference), out.size());
    if (added) out.push_back({it.line.date, it.line.reference, {}});
    out[found->second].lines.push_back(it.line);
  }
  return out;
}

std::string Amount(long long cents) { return LFormatAmountPlain(cents, kLedgerDigits); }

std::string AccountName(const std::map<std::string, std::string>& names, const std::string& number) {
  auto found = names.find(number);
  return found != names.end() ? found->second : JournalName(number);
}

}  // namespace

std::string LLedgerExportCsv(LProfile& profile, const LJournalViewFilter& filter) {
  LLedgerLock lock(profile);
  std::string out;
  LCsvTableAppendRow(out, {"Date", "Reference", "Type", "Account", "Description", "Amount", "Document"});
  LJournalViewForEach(profile, filter, [&](const LLedgerJournalLine& line) {
    LCsvTableAppendRow(out, {line.date, line.reference, line.type, line.account, line.description,
                             Amount(line.amount), line.document});
  });
  return out;
}

std::string LLedgerExportJournal(LProfile& profile) {
  LLedgerLock lock(profile);
  std::map<std::string, long long> openings;
  std::map<std::string, std::string> names = AccountNames(profile, openings);
  std::vector<Transaction> transactions = Transactions(profile);
  std::string out;
  if (!openings.empty()) {
    std::string first = transactions.empty() ? LDate::Today().ToText() : transactions.front().date;
    out += first + " Soldes d'ouverture\n";
    for (const auto& [number, cents] : openings) out += "    " + AccountName(names, number) + "    " + Amount(cents) + "\n";
    out += "\n";
  }
  for (const Transaction& txn : transactions) {
    std::string payee = JournalName(txn.lines.front().description);
    out += txn.date + " (" + JournalName(txn.reference) + ")" + (payee.empty() ? "" : " " + payee) + "\n";
    for (const LLedgerJournalLine& line : txn.lines)
      out += "    " + AccountName(names, line.account) + "    " + Amount(line.amount) + "\n";
    out += "\n";
  }
  return out;
}
