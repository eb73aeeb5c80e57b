#include "accounts/check.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <mutex>

#include "accounts/accounts.h"
#include "accounts/cheques.h"
#include "accounts/ledgeriterator.h"
#include "accounts/ledgerlock.h"
#include "accounts/suppliers.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/money.h"
#include "llib/gen/moneybounds.h"
#include "llib/gen/textcase.h"

namespace {

// What the day files say about one account.
struct LAccountFigures {
  long long sum = 0;                      // every line
  std::map<int, long long> buckets;       // month index -> net of the month
  bool hasRows = false;
};

// The amount column exactly as the ledger writes it: a sign, digits, ".", two digits.
bool IsWrittenAmount(std::string_view text) {
  if (text.size() < 5 || (text[0] != '+' && text[0] != '-')) return false;
  std::size_t dot = text.size() - 3;
  if (text[dot] != '.') return false;
  for (std::size_t i = 1; i < text.size(); ++i)
    if (i != dot && !std::isdigit(static_cast<unsigned char>(text[i]))) return false;
  return dot > 1;
}

class LLedgerWalk {
 public:
  LLedgerWalk(const LProfile& profile, LCheckReport& report) : profile_(profile), report_(report) {}

  // Reads every day file; false when asked to stop.
  bool Run(LProcessInterface& process, const std::map<std::string, bool>& knownAccounts);
  std::map<std::string, LAccountFigures>& Figures() { return figures_; }

 private:
  const LProfile& profile_;
  LCheckReport& report_;
  std::map<std::string, LAccountFigures> figures_;
  std::map<std::string, long long> txnSums_;  // this file's transactions: reference -> sum
  std::string txnFile_;

  void Problem(const LLedgerAccountLineIterator& it, std::string message, std::string text) {
    report_.problems.push_back({"Ledger/" + it.GetFileName(), it.GetRowNumber(), std::move(message), std::move(text)});
  }
  void CloseFile();
};

void LLedgerWalk::CloseFile() {
  for (const auto& [reference, sum] : txnSums_)
    if (sum != 0)
      report_.problems.push_back({"Ledger/" + txnFile_, 0, "transaction déséquilibrée",
                                  reference + " : " + std::to_string(sum)});
  txnSums_.clear();
}

bool LLedgerWalk::Run(LProcessInterface& process, const std::map<std::string, bool>& knownAccounts) {
  LLedgerAccountLineIterator it(profile_, "", "");
  std::string badFile;  // a file whose name is not a day: reported once
  LDate day;
  for (it.SkipToValidLine(); it.valid; it.SkipToValidLine()) {
    if (it.GetFileName() != txnFile_) {
      CloseFile();
      txnFile_ = it.GetFileName();
      if (process.IsToStop()) return false;
      process.SetProgress(static_cast<double>(it.GetFilesPassed()) / static_cast<double>(it.GetFileCount()));
      std::string_view name = txnFile_;
      if (!LDate::Parse(name.substr(0, name.size() - 4), day)) {
        badFile = txnFile_;
        report_.problems.push_back({"Ledger/" + badFile, 0, "nom de fichier qui n'est pas une date", badFile});
      }
    }
    ++report_.nRows;
    if (it.GetFileName() == badFile) continue;
    const LLedgerJournalLine& line = it.line;
    // The month comes from the file: postings were counted on the day of the file they went to.
    if (line.date != day.ToText()) Problem(it, "date différente de celle du fichier", it.GetRowText());
    long long exact = 0;
    if (!IsWrittenAmount(it.GetAmountText())) Problem(it, "montant illisible", it.GetRowText());
    // Read back held at the ceiling, such a line would make every figure built on it wrong.
    else if (!LParseAmount(it.GetAmountText(), 2, exact))
      Problem(it, "montant au-delà du plafond de " + LFormatAmountPlain(kMoneyMaxMinorUnits, 2), it.GetRowText());
    auto known = knownAccounts.find(line.account);
    if (known == knownAccounts.end()) {
      Problem(it, "compte inconnu", it.GetRowText());
    } else {
      LAccountFigures& figures = figures_[line.account];
      figures.sum = LMoneySum(figures.sum, line.amount);
      long long& bucket = figures.buckets[day.MonthIndex()];
      bucket = LMoneySum(bucket, line.amount);
      figures.hasRows = true;
    }
    long long& txnSum = txnSums_[LLowerText(line.reference)];
    txnSum = LMoneySum(txnSum, line.amount);
  }
  CloseFile();
  return true;
}

// Compares one account with its figures; with fix writes the figures.
void CheckAccount(LAccount& account, const LAccountFigures& figures, bool fix, LCheckReport& report) {
  std::string key = account.GetPrimaryKey();
  std::size_t firstDifference = report.differences.size();
  auto differ = [&](std::string field, long long stored, long long computed) {
    if (stored != computed) report.differences.push_back({std::string(kAccountsList), key, std::move(field), stored, computed, false});
  };
  differ("TotalBalance", account.GetTotalBalance(), LMoneySum(account.GetOpeningBalance(), figures.sum));
  std::map<int, long long> stored;
  for (const auto& [monthIndex, amount] : account.GetMonthBuckets()) stored[monthIndex] = amount;
  std::map<int, long long> all = stored;
  for (const auto& [monthIndex, amount] : figures.buckets) all.emplace(monthIndex, 0);
  for (const auto& [monthIndex, ignored] : all) {
    auto has = [index = monthIndex](const std::map<int, long long>& m) {
      auto it = m.find(index);
      return it == m.end() ? 0LL : it->second;
    };
    differ(LAccountBucketField(monthIndex), has(stored), has(figures.buckets));
  }
  // "BalanceFirst" must not lie past a month that holds postings, or the month would be skipped.
  int firstPosted = -1;
  for (const auto& [monthIndex, amount] : figures.buckets)
    if (amount != 0) {
      firstPosted = monthIndex;
      break;
    }
  bool hasFirst = account.TestFieldExists("BalanceFirst");
  int storedFirst = account.GetInt("BalanceFirst", 0);
  int fixedFirst = all.empty() ? storedFirst : all.begin()->first;
  if (firstPosted >= 0 && (!hasFirst || storedFirst > firstPosted))
    differ("BalanceFirst", hasFirst ? storedFirst : 0, fixedFirst);
  if (figures.hasRows && !account.IsAccountUsed()) differ("IsAccountUsed", 0, 1);

  if (!fix || report.differences.size() == firstDifference) return;
  for (std::size_t i = firstDifference; i < report.differences.size(); ++i) {
    LCheckDifference& difference = report.differences[i];
    if (difference.field == "BalanceFirst") account.SetInt("BalanceFirst", static_cast<int>(difference.computed));
    else if (difference.field == "IsAccountUsed") account.SetBool("IsAccountUsed", true);
    else account.SetInt64(difference.field, difference.computed);
  }
  // A fix counts only once written.
  bool written = account.Flush();
  for (std::size_t i = firstDifference; i < report.differences.size(); ++i) report.differences[i].fixed = written;
}

void CheckAccounts(LProcessInterface& process, const LProfile& profile, bool fix, LCheckReport& report,
                   bool& cancelled) {
  LAccountList accounts(profile);
  std::vector<std::string> numbers = accounts.GetNumbers();
  std::map<std::string, bool> known;
  for (const auto& number : numbers) known.emplace(number, true);

  LLedgerWalk walk(profile, report);
  process.SetStatus("Lecture du grand livre", 0);
  if (!walk.Run(process, known)) {
    cancelled = true;
    return;
  }
  process.SetStatus("Comparaison des soldes", 0);
  LAccount account;
  for (const auto& number : numbers) {
    if (!accounts.Open(account, number)) continue;
    CheckAccount(account, walk.Figures()[number], fix, report);
    account.Invalidate();
  }
}

struct LCheckRegistry {
  std::mutex mutex;
  std::vector<LBookCheck> checks;
};

LCheckRegistry& Registry() {
  static LCheckRegistry registry;
  return registry;
}

}  // namespace

bool LCheckReport::HasUnresolved() const {
  if (!problems.empty()) return true;
  return std::any_of(differences.begin(), differences.end(), [](const LCheckDifference& d) { return !d.fixed; });
}

void LCheckAddBookCheck(LBookCheck check) {
  LCheckRegistry& registry = Registry();
  std::lock_guard<std::mutex> guard(registry.mutex);
  registry.checks.push_back(check);
}

void LCheckFixAccountBalances(const LProfile& profile, LCheckReport& report) {
  LProcessInterfaceVoid quiet;
  bool cancelled = false;
  CheckAccounts(quiet, profile, true, report, cancelled);
}

LProcessResult Process(LProcessInterface& process, LBookCheckProcess& data) {
  LLedgerLock lock(*data.profile);
  bool cancelled = false;
  CheckAccounts(process, *data.profile, data.fix, data.report, cancelled);
  if (cancelled) return kProcessCancelled;
  LCheckSupplierBalances(*data.profile, data.fix, data.report);
  LCheckChequePayments(*data.profile, data.report);
  std::vector<LBookCheck> checks;
  {
    LCheckRegistry& registry = Registry();
    std::lock_guard<std::mutex> guard(registry.mutex);
    checks = registry.checks;
  }
  for (LBookCheck check : checks) {
    if (process.IsToStop()) return kProcessCancelled;
    check(*data.profile, data.fix, data.report);
  }
  process.SetProgress(1.0);
  return kProcessFinished;
}
