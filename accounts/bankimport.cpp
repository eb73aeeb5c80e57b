#include "accounts/bankimport.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <set>

#include "accounts/accounts.h"
#include "accounts/bankmatch.h"
#include "accounts/statementcsv.h"
#include "accounts/statementreaders.h"
#include "accounts/statementtext.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/file.h"

namespace {

// The letters and digits of an account number, letters in capitals.
std::string Plain(std::string_view id) {
  std::string out;
  for (char c : id)
    if (std::isalnum(static_cast<unsigned char>(c))) out += c;
  return LAsciiUpper(out);
}

constexpr std::size_t kMinAccountIdTail = 5;  // shortest number that may be the end of another

bool Fail(LProcessInterface& process, LBankImportData& data, std::string message) {
  data.error = std::move(message);
  process.SetError(data.error);
  return false;
}

bool ReadStatements(LBankImportData& data, LAccount& account, const std::string& bytes,
                    std::vector<LStatementAccount>& statements, std::string& error) {
  const LCurrencyFormat& currency = data.profile->GetCurrencyFormat();
  switch (data.format) {
    case LStatementFormat::kOFX: return LStatementReadOFX(bytes, currency, statements, error);
    case LStatementFormat::kCamt: return LStatementReadCamt(bytes, currency, statements, error);
    case LStatementFormat::kCFONB: return LStatementReadCFONB(bytes, currency, statements, error);
    case LStatementFormat::kQIF: return LStatementReadQIF(bytes, currency, statements, error);
    case LStatementFormat::kMT940: return LStatementReadMT940(bytes, currency, statements, error);
    case LStatementFormat::kCSV: break;
    case LStatementFormat::kUnknown: return false;
  }
  LStatementCsvMap map;
  std::string mapText = !data.request.csvMap.empty() ? data.request.csvMap : account.GetString(kBankCsvMapField);
  if (!mapText.empty()) {
    if (!LStatementCsvMapParse(mapText, map, error)) return false;
  } else {
    (void)LStatementCsvMapGuess(bytes, map);  // an incomplete mapping is refused by the reader
  }
  if (!LStatementReadCSV(bytes, currency, map, statements, error)) return false;
  account.SetString(kBankCsvMapField, LStatementCsvMapText(map));
  return true;
}

// The statements of the file that belong to the account; the others' numbers in others.
bool ChooseStatements(LBankImportData& data, LAccount& account, std::vector<LStatementAccount>& statements,
                      std::vector<LStatementAccount>& chosen, std::string& error) {
  std::string wanted = data.request.statementAccount;
  if (wanted.empty()) wanted = account.GetString(kBankAccountIdField);
  std::vector<std::string> ids;
  for (const LStatementAccount& statement : statements)
    if (std::find(ids.begin(), ids.end(), statement.accountId) == ids.end()) ids.push_back(statement.accountId);
  if (ids.size() == 1 && (wanted.empty() || ids[0].empty())) {
    // One account in the file (or one without a number, as CSV and QIF files are): it is this one.
    data.statementAccount = ids[0];
    for (LStatementAccount& statement : statements) chosen.push_back(std::move(statement));
    if (!ids[0].empty() && account.GetString(kBankAccountIdField).empty())
      account.SetString(kBankAccountIdField, ids[0]);
    return true;
  }
  if (wanted.empty()) {
    std::string names;
    for (const std::string& id : ids) names += (names.empty() ? "" : ", ") + (id.empty() ? "(sans numéro)" : id);
    error = "Le relevé contient plusieurs comptes : " + names +
            ". Choisissez le compte de la banque à importer (--statement-account) ; il sera retenu pour ce compte.";
    return false;
  }
  for (LStatementAccount& statement : statements) {
    if (LBankSameAccountId(statement.accountId, wanted)) {
      data.statementAccount = statement.accountId;
      chosen.push_back(std::move(statement));
    } else if (std::find(data.otherAccounts.begin(), data.otherAccounts.end(), statement.accountId) ==
               data.otherAccounts.end()) {
      data.otherAccounts.push_back(statement.accountId);
    }
  }
  if (chosen.empty()) {
    std::string names;
    for (const std::string& id : ids) names += (names.empty() ? "" : ", ") + id;
    error = "Le relevé ne contient pas le compte " + wanted + " (comptes du fichier : " + names + ").";
    return false;
  }
  if (!data.statementAccount.empty() && account.GetString(kBankAccountIdField).empty())
    account.SetString(kBankAccountIdField, data.statementAccount);
  return true;
}

// Matches the open lines of store against the ledger (the caller saves). The dates looked at are
// those of the open lines and from..to (the statement just read; may be empty); a line that held
// a transaction since deleted from the ledger within them is open again.
void MatchOpenLines(LProfile& profile, std::string_view account, LBankLineStore& store, std::string from,
                    std::string to) {
  for (const LBankLine& line : store.Lines()) {
    if (line.HoldsLedgerLine()) continue;
    if (from.empty() || line.date < from) from = line.date;
    if (to.empty() || line.date > to) to = line.date;
  }
  LDate first, last;
  if (!LDate::Parse(from, first) || !LDate::Parse(to, last)) return;
  std::string fromDay = first.AddDays(-kBankMatchChequeDaysBefore).ToText();
  std::string toDay = last.AddDays(kBankMatchDaysAfter).ToText();
  std::vector<std::pair<std::string, std::string>> held;
  for (const LBankLine& line : store.Lines())
    if (line.HoldsLedgerLine()) held.emplace_back(line.ledgerDate, line.ledgerReference);
  std::set<std::string> present;
  std::vector<LBankLedgerLine> ledger = LBankLoadLedgerLines(profile, account, fromDay, toDay, held, &present);
  std::vector<std::size_t> pending;
  for (std::size_t i = 0; i < store.Lines().size(); ++i) {
    LBankLine& line = store.Lines()[i];
    bool inRange = line.ledgerDate >= fromDay && line.ledgerDate <= toDay;
    bool gone = line.HoldsLedgerLine() && inRange &&
                !present.contains(line.ledgerDate + " " + LAsciiUpper(line.ledgerReference));
    if (gone) line.status = LBankLineStatus::kNew;
    if (!line.HoldsLedgerLine()) pending.push_back(i);
  }
  LBankMatchLines(profile, store.Lines(), pending, ledger);
}

}  // namespace

bool LBankSameAccountId(std::string_view a, std::string_view b) {
  std::string plainA = Plain(a), plainB = Plain(b);
  if (plainA.empty() || plainB.empty()) return plainA == plainB;
  if (plainA == plainB) return true;
  const std::string& shorter = plainA.size() < plainB.size() ? plainA : plainB;
  const std::string& longer = plainA.size() < plainB.size() ? plainB : plainA;
  if (shorter.size() < kMinAccountIdTail) return false;
  // An IBAN holds the account number followed by a two-digit key.
  return longer.ends_with(shorter) || longer.substr(0, longer.size() - 2).ends_with(shorter);
}

LProcessResult Process(LProcessInterface& process, LBankImportData& data) {
  LProfile& profile = *data.profile;
  const LBankImportRequest& request = data.request;
  process.SetStatus("Lecture du relevé", 0);
  process.SetProgress(0);
  LAccount account;
  if (!LAccountIsLive(profile, request.account) || !LAccountList(profile).Open(account, request.account)) {
    Fail(process, data, LAccountNotInChartMessage(request.account));
    return kProcessFailed;
  }
  std::string bytes;
  if (!LFile::ReadAll(request.path, bytes)) {
    Fail(process, data, "Impossible de lire le fichier " + request.path + ".");
    return kProcessFailed;
  }
  data.format = request.format != LStatementFormat::kUnknown ? request.format : LStatementGuessFormat(bytes);
  if (data.format == LStatementFormat::kUnknown) {
    Fail(process, data, "Format de relevé non reconnu : indiquez-le (ofx, csv, camt, cfonb, qif ou mt940).");
    return kProcessFailed;
  }
  std::vector<LStatementAccount> statements, chosen;
  std::string error;
  if (!ReadStatements(data, account, bytes, statements, error) ||
      !ChooseStatements(data, account, statements, chosen, error)) {
    Fail(process, data, error);
    return kProcessFailed;
  }
  for (const LStatementAccount& statement : chosen) {
    if (!LStatementAddsUp(statement, profile.GetCurrencyDigits(), error)) {
      Fail(process, data, error);
      return kProcessFailed;
    }
  }
  if (process.IsToStop()) return kProcessCancelled;

  LBankLineStore store(profile, request.account);
  std::map<std::string, int> occurrences;  // date|amount|text -> lines seen so far
  std::vector<std::string> keys;
  std::string from, to;  // the statement's first and last dates
  std::size_t nLines = 0;
  for (const LStatementAccount& statement : chosen) nLines += statement.lines.size();
  for (const LStatementAccount& statement : chosen) {
    for (const LStatementEntry& line : statement.lines) {
      if (from.empty() || line.date < from) from = line.date;
      if (line.date > to) to = line.date;
      int& seen = occurrences[line.date + "|" + std::to_string(line.amount) + "|" + line.text];
      std::string key = LBankLineKey(line, seen++);
      LBankImportedLine imported;
      imported.known = store.Knows(key);
      if (!imported.known) {
        LBankLine stored;
        stored.date = line.date;
        stored.amount = line.amount;
        stored.text = line.text;
        stored.key = key;
        stored.chequeNumber = line.chequeNumber.empty() ? LStatementChequeNumber(line.text) : line.chequeNumber;
        imported.line.id = store.Add(std::move(stored)).id;
      }
      imported.line.key = key;
      data.lines.push_back(std::move(imported));
      if (data.lines.size() % 1024 == 0) process.SetProgress(0.5 * data.lines.size() / nLines);
    }
  }
  if (process.IsToStop()) return kProcessCancelled;
  process.SetStatus("Rapprochement avec le grand livre", 0);
  process.SetProgress(0.5);
  MatchOpenLines(profile, request.account, store, from, to);
  if (!store.Save()) {
    Fail(process, data, "Impossible d'enregistrer les lignes du relevé du compte " + request.account + ".");
    return kProcessFailed;
  }
  // The statement account number and CSV mapping remembered for the next import.
  if (!account.Flush()) {
    Fail(process, data, std::string(kRecordNotSavedMessage));
    return kProcessFailed;
  }
  // Each line as stored now, known ones included.
  std::map<std::string, const LBankLine*> byKey;
  for (const LBankLine& line : store.Lines()) byKey[line.key] = &line;
  for (LBankImportedLine& imported : data.lines)
    if (auto found = byKey.find(imported.line.key); found != byKey.end()) imported.line = *found->second;
  process.SetProgress(1);
  return kProcessFinished;
}

bool LBankRematch(LProfile& profile, std::string_view account) {
  LBankLineStore store(profile, account);
  MatchOpenLines(profile, account, store, "", "");
  return store.Save();
}
