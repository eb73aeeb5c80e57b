#include "accounts/bankaccept.h"

#include "accounts/accounts.h"
#include "accounts/banklines.h"
#include "accounts/bankmatch.h"
#include "llib/gen/date.h"
#include "llib/gen/textcase.h"

namespace {

// The open ledger line of reference within the line's window; null when none.
const LBankLedgerLine* FindLedgerLine(const std::vector<LBankLedgerLine>& ledger, const LBankLine& line,
                                      std::string_view reference) {
  LDate day;
  if (!LDate::Parse(line.date, day)) return nullptr;
  long before = line.chequeNumber.empty() ? kBankMatchDaysBefore : kBankMatchChequeDaysBefore;
  for (const LBankLedgerLine& candidate : ledger) {
    if (!LSameText(candidate.reference, reference)) continue;
    if (candidate.dayNumber >= day.DayNumber() - before && candidate.dayNumber <= day.DayNumber() + kBankMatchDaysAfter)
      return &candidate;
  }
  return nullptr;
}

}  // namespace

bool LBankAccept(LProfile& profile, std::string_view account, const std::vector<LBankAcceptance>& entries,
                 bool allMatched, int& count, std::string& error) {
  count = 0;
  if (!LAccountIsLive(profile, account)) {
    error = LAccountNotInChartMessage(account);
    return false;
  }
  LBankLineStore store(profile, account);
  std::vector<std::pair<std::string, std::string>> held;
  for (const LBankLine& line : store.Lines())
    if (line.HoldsLedgerLine()) held.emplace_back(line.ledgerDate, line.ledgerReference);
  std::vector<LBankLedgerLine> ledger;
  bool ledgerLoaded = false;
  for (const LBankAcceptance& entry : entries) {
    LBankLine* line = store.Find(entry.line);
    if (line == nullptr) {
      error = LBankLineNotFoundMessage(entry.line);
      return false;
    }
    if (entry.reference.empty() || LSameText(entry.reference, line->ledgerReference)) {
      if (!line->IsPaired()) {
        error = "La ligne de relevé " + entry.line + " n'a pas d'écriture proposée : nommez-en une (LIGNE=RÉFÉRENCE).";
        return false;
      }
      if (line->status != LBankLineStatus::kPosted) line->status = LBankLineStatus::kAccepted;
      ++count;
      continue;
    }
    if (line->HoldsLedgerLine()) {
      error = "La ligne de relevé " + entry.line + " correspond déjà à l'écriture " + line->ledgerReference + ".";
      return false;
    }
    if (!ledgerLoaded) {
      ledger = LBankLoadLedgerLines(profile, account, "", "", held);
      ledgerLoaded = true;
    }
    const LBankLedgerLine* found = FindLedgerLine(ledger, *line, entry.reference);
    if (found == nullptr || found->amount != line->amount) {
      error = "Aucune écriture libre « " + entry.reference + " » du même montant n'est proche de la ligne de relevé " +
              entry.line + ".";
      return false;
    }
    line->status = LBankLineStatus::kAccepted;
    line->ledgerDate = found->date;
    line->ledgerReference = found->reference;
    held.emplace_back(found->date, found->reference);
    std::erase_if(ledger, [&](const LBankLedgerLine& other) { return &other == found; });
    ++count;
  }
  if (allMatched) {
    for (LBankLine& line : store.Lines()) {
      if (line.status != LBankLineStatus::kMatched) continue;
      line.status = LBankLineStatus::kAccepted;
      ++count;
    }
  }
  if (!store.Save()) {
    error = "Impossible d'enregistrer les lignes du relevé du compte " + std::string(account) + ".";
    return false;
  }
  return true;
}
