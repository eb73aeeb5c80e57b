#include "accounts/reconcile.h"

#include <algorithm>
#include <map>
#include <set>

#include "accounts/accounts.h"
#include "accounts/banklines.h"
#include "accounts/ledger.h"
#include "accounts/ledgeriterator.h"
#include "accounts/ledgerlock.h"
#include "accounts/statementtext.h"
#include "invoice/shared/profile.h"
#include "llib/gen/csv.h"
#include "llib/gen/date.h"
#include "llib/gen/file.h"
#include "llib/gen/money.h"
#include "llib/gen/reporttable.h"
#include "llib/gen/textcase.h"

namespace {

constexpr std::string_view kDateField = "ReconcileDate";
constexpr std::string_view kBalanceField = "ReconcileBalance";
constexpr std::string_view kClearedField = "ReconcileCleared";

// A transaction as the reconciliation names it: date and reference in capitals.
std::string TransactionKey(std::string_view date, std::string_view reference) {
  return std::string(date) + " " + LAsciiUpper(reference);
}

struct LReconciledRow {
  std::string date, reference, statementDate;
  long long amount = 0;
};

std::string ReconcilePath(const LProfile& profile, std::string_view account) {
  LTextBuffer path;
  LReconcileGetCSVFilePath(profile, path, account);
  return std::string(path);
}

std::vector<LReconciledRow> ReadRows(const LProfile& profile, std::string_view account) {
  std::vector<LReconciledRow> rows;
  std::string path = ReconcilePath(profile, account);
  if (!LFile::Exists(path)) return rows;
  LCSVFileReader reader(path, kLedgerLockTimeoutMs);
  for (; reader.HasRow(); reader.Next()) {
    LCSVReaderRow row(reader.GetLine());
    LReconciledRow read;
    read.date = row.GetCol();
    read.reference = row.GetCol();
    read.amount = LLedgerReadAmountFromTheLedger(row.GetCol());
    read.statementDate = row.GetCol();
    rows.push_back(std::move(read));
  }
  return rows;
}

std::string LastStatementDate(const std::vector<LReconciledRow>& rows) {
  std::string last;
  for (const LReconciledRow& row : rows) last = std::max(last, row.statementDate);
  return last;
}

// The account's ledger lines up to date, in date order.
std::vector<LReconcileItem> LedgerItems(const LProfile& profile, std::string_view account, std::string_view date) {
  std::vector<LReconcileItem> items;
  LLedgerAccountLineIterator it(profile, "", date);
  for (it.SkipToValidLine(); it.valid; it.SkipToValidLine()) {
    if (it.line.account != account) continue;
    items.push_back({it.line.date, it.line.reference, it.line.description, it.line.amount, false, false});
  }
  return items;
}

std::set<std::string> TickedKeys(const LAccount& record) {
  std::set<std::string> keys;
  std::string text = record.GetString(kClearedField);
  std::size_t start = 0;
  while (start < text.size()) {
    std::size_t end = text.find('\n', start);
    std::string key = text.substr(start, end - start);
    if (!key.empty()) keys.insert(key);
    if (end == std::string::npos) break;
    start = end + 1;
  }
  return keys;
}

void StoreTicked(LAccount& record, const std::set<std::string>& keys) {
  std::string text;
  for (const std::string& key : keys) text += (text.empty() ? "" : "\n") + key;
  record.SetString(kClearedField, text);
}

bool OpenBankAccount(LProfile& profile, std::string_view account, LAccount& record, std::string& error) {
  if (!LAccountIsLive(profile, account) || !LAccountList(profile).Open(record, account)) {
    error = LAccountNotInChartMessage(account);
    return false;
  }
  return true;
}

// Marks the items a finished reconciliation cleared, up to and including statementDate: each
// row clears one line of the same date, reference and amount.
void MarkReconciled(std::vector<LReconcileItem>& items, const std::vector<LReconciledRow>& rows,
                    std::string_view upTo, std::string_view onlyDate = {}) {
  std::multiset<std::string> cleared;
  for (const LReconciledRow& row : rows)
    if (upTo.empty() || row.statementDate <= upTo)
      if (onlyDate.empty() || row.statementDate == onlyDate)
        cleared.insert(TransactionKey(row.date, row.reference) + " " + std::to_string(row.amount));
  for (LReconcileItem& item : items) {
    auto found = cleared.find(TransactionKey(item.date, item.reference) + " " + std::to_string(item.amount));
    if (found == cleared.end()) continue;
    item.reconciled = true;
    cleared.erase(found);
  }
}

void Totals(LReconcileState& state) {
  state.clearedBalance = state.openingBalance;
  state.bookBalance = state.openingBalance;
  for (const LReconcileItem& item : state.items) {
    state.bookBalance += item.amount;
    if (item.reconciled || item.ticked) state.clearedBalance += item.amount;
  }
  state.difference = state.statementBalance - state.clearedBalance;
}

}  // namespace

bool LReconcileLoad(LProfile& profile, std::string_view account, std::string_view asOf, LReconcileState& state,
                    std::string& error) {
  LAccount record;
  if (!OpenBankAccount(profile, account, record, error)) return false;
  std::vector<LReconciledRow> rows = ReadRows(profile, account);
  state = {};
  state.account = account;
  state.openingBalance = record.GetOpeningBalance();
  state.lastFinishedDate = LastStatementDate(rows);
  state.inProgress = record.TestFieldExists(kDateField);
  if (state.inProgress) {
    state.statementDate = record.GetString(kDateField);
    state.statementBalance = record.GetInt64(kBalanceField, 0);
    state.items = LedgerItems(profile, account, state.statementDate);
    MarkReconciled(state.items, rows, "");
    std::set<std::string> ticked = TickedKeys(record);
    for (LReconcileItem& item : state.items)
      item.ticked = !item.reconciled && ticked.contains(TransactionKey(item.date, item.reference));
    // Lines reconciled before are settled: only what this statement may still clear is shown.
    Totals(state);
    std::erase_if(state.items, [](const LReconcileItem& item) { return item.reconciled; });
    return true;
  }
  // The last finished reconciliation on or before asOf.
  std::string finished;
  for (const LReconciledRow& row : rows)
    if (asOf.empty() || row.statementDate <= asOf) finished = std::max(finished, row.statementDate);
  state.statementDate = !finished.empty() ? finished : !asOf.empty() ? std::string(asOf) : LDate::Today().ToText();
  state.items = LedgerItems(profile, account, state.statementDate);
  if (!finished.empty()) {
    MarkReconciled(state.items, rows, finished);
    std::vector<LReconcileItem> clearedThen = state.items;  // those this one cleared show ticked
    for (LReconcileItem& item : clearedThen) item.reconciled = false;
    MarkReconciled(clearedThen, rows, finished, finished);
    for (std::size_t i = 0; i < state.items.size(); ++i)
      if (clearedThen[i].reconciled) state.items[i].reconciled = false, state.items[i].ticked = true;
  }
  Totals(state);
  state.statementBalance = state.clearedBalance;  // a finished reconciliation left no difference
  state.difference = 0;
  std::erase_if(state.items, [](const LReconcileItem& item) { return item.reconciled; });
  return true;
}

bool LReconcileUpdate(LProfile& profile, std::string_view account, std::string_view date, long long balance,
                      const std::vector<std::string>& clear, const std::vector<std::string>& unclear,
                      std::string& error) {
  LAccount record;
  if (!OpenBankAccount(profile, account, record, error)) return false;
  LDate day;
  if (!LDate::Parse(date, day)) {
    error = "Date de relevé invalide : " + std::string(date) + ".";
    return false;
  }
  std::vector<LReconciledRow> rows = ReadRows(profile, account);
  std::string last = LastStatementDate(rows);
  if (!last.empty() && std::string(date) <= last) {
    error = "La date du relevé doit suivre celle du dernier rapprochement terminé (" + last + ").";
    return false;
  }
  std::vector<LReconcileItem> items = LedgerItems(profile, account, date);
  MarkReconciled(items, rows, "");
  std::set<std::string> open;
  for (const LReconcileItem& item : items)
    if (!item.reconciled) open.insert(TransactionKey(item.date, item.reference));
  std::set<std::string> ticked = TickedKeys(record);
  if (!record.TestFieldExists(kDateField)) {
    // A new reconciliation: what the statement lines already stand for is ticked for the user.
    LBankLineStore store(profile, account);
    for (const LBankLine& line : store.Lines()) {
      std::string key = TransactionKey(line.ledgerDate, line.ledgerReference);
      if (line.HoldsLedgerLine() && open.contains(key)) ticked.insert(key);
    }
  }
  auto keysOf = [&](const std::string& reference, std::vector<std::string>& keys) {
    for (const std::string& key : open)
      if (LSameText(std::string_view(key).substr(key.find(' ') + 1), reference)) keys.push_back(key);
    if (!keys.empty()) return true;
    error = "Aucune opération non rapprochée de référence « " + reference + " » dans le compte " +
            std::string(account) + " jusqu'au " + std::string(date) + ".";
    return false;
  };
  for (const std::string& reference : clear) {
    std::vector<std::string> keys;
    if (!keysOf(reference, keys)) return false;
    ticked.insert(keys.begin(), keys.end());
  }
  for (const std::string& reference : unclear) {
    std::vector<std::string> keys;
    if (!keysOf(reference, keys)) return false;
    for (const std::string& key : keys) ticked.erase(key);
  }
  record.SetString(kDateField, date);
  record.SetInt64(kBalanceField, balance);
  StoreTicked(record, ticked);
  if (!record.Flush()) {
    error = "Impossible d'enregistrer le rapprochement du compte " + std::string(account) + ".";
    return false;
  }
  return true;
}

bool LReconcileFinish(LProfile& profile, std::string_view account, std::string& error) {
  LLedgerLock lock(profile);  // the ledger's delete rewrites the same file
  LReconcileState state;
  if (!LReconcileLoad(profile, account, "", state, error)) return false;
  if (!state.inProgress) {
    error = "Aucun rapprochement en cours pour le compte " + std::string(account) + ".";
    return false;
  }
  if (state.difference != 0) {
    error = "Le rapprochement ne peut pas être terminé : l'écart entre le solde du relevé et le solde pointé est de " +
            LFormatAmountPlain(state.difference, profile.GetCurrencyDigits()) + ".";
    return false;
  }
  std::string path = ReconcilePath(profile, account);
  (void)LFile::MakeFolder(path.substr(0, path.rfind('/')));
  for (const LReconcileItem& item : state.items) {
    if (!item.ticked) continue;
    std::string amount = LLedgerFormatAmount(item.amount);
    if (!LCSVWriteRow(path, {item.date, item.reference, amount, state.statementDate})) {
      error = "Impossible d'écrire le fichier de rapprochement du compte " + std::string(account) + ".";
      return false;
    }
  }
  LAccount record;
  if (!LAccountList(profile).Open(record, account)) return true;
  record.DeleteField(kDateField);
  record.DeleteField(kBalanceField);
  record.DeleteField(kClearedField);
  if (record.Flush()) return true;
  error = "Impossible d'enregistrer le compte " + std::string(account) + ".";
  return false;
}

bool LReconcileRollback(LProfile& profile, std::string_view account, std::string& statementDate,
                        std::string& error) {
  LLedgerLock lock(profile);
  LAccount record;
  if (!OpenBankAccount(profile, account, record, error)) return false;
  if (record.TestFieldExists(kDateField)) {
    error = "Un rapprochement est en cours pour le compte " + std::string(account) +
            " : terminez-le ou abandonnez-le avant d'annuler le précédent.";
    return false;
  }
  statementDate = LastStatementDate(ReadRows(profile, account));
  if (statementDate.empty()) {
    error = "Aucun rapprochement terminé à annuler pour le compte " + std::string(account) + ".";
    return false;
  }
  LCSVFileEditor editor(ReconcilePath(profile, account), kLedgerLockTimeoutMs);
  for (; editor.HasRow(); editor.Next()) {
    LCSVReaderRow row(editor.GetLine());
    row.GetCol();
    row.GetCol();
    row.GetCol();
    if (row.GetCol() != statementDate) editor.RowAccept();
  }
  return true;
}

void LReconcileReport(const LReconcileState& state, std::string_view accountName, LReportTable& table) {
  table.title = "Rapprochement bancaire";
  table.subtitle = "Compte " + state.account + " " + std::string(accountName) + " au " + state.statementDate +
                   (state.inProgress ? " (en cours)" : "");
  table.columns = {"Montant"};
  table.AddRow(LReportRowKind::kResult, "Solde du relevé", {state.statementBalance});
  long long clearedTotal = 0, openTotal = 0;
  table.AddHeading("Opérations pointées");
  for (const LReconcileItem& item : state.items) {
    if (!item.ticked) continue;
    table.AddRow(LReportRowKind::kAccount, item.date + " " + item.reference + " " + item.description, {item.amount}, 1);
    clearedTotal += item.amount;
  }
  table.AddRow(LReportRowKind::kTotal, "Total pointé", {clearedTotal});
  table.AddHeading("Opérations non pointées");
  for (const LReconcileItem& item : state.items) {
    if (item.ticked) continue;
    table.AddRow(LReportRowKind::kAccount, item.date + " " + item.reference + " " + item.description, {item.amount}, 1);
    openTotal += item.amount;
  }
  table.AddRow(LReportRowKind::kTotal, "Total non pointé", {openTotal});
  table.AddRow(LReportRowKind::kResult, "Solde pointé", {state.clearedBalance});
  table.AddRow(LReportRowKind::kResult, "Solde comptable", {state.bookBalance});
  table.AddRow(LReportRowKind::kResult, "Écart", {state.difference});
}

bool LReconcileCancel(LProfile& profile, std::string_view account, std::string& error) {
  LAccount record;
  if (!OpenBankAccount(profile, account, record, error)) return false;
  if (!record.TestFieldExists(kDateField)) {
    error = "Aucun rapprochement en cours pour le compte " + std::string(account) + ".";
    return false;
  }
  record.DeleteField(kDateField);
  record.DeleteField(kBalanceField);
  record.DeleteField(kClearedField);
  return record.Flush();
}
