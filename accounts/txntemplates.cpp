#include "accounts/txntemplates.h"

#include "accounts/accounts.h"
#include "invoice/shared/itemfield.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/filestorekeys.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/record.h"

namespace {

constexpr std::string_view kNoName = "Veuillez entrer un nom pour ce modèle.";
constexpr std::string_view kNotSaved = "Impossible d'enregistrer le modèle.";

// Scales the lines of one side so that they sum to total.
void ScaleSide(std::vector<LJournalEntryLine>& lines, bool credit, long long total) {
  long long kept = 0;
  LJournalEntryLine* last = nullptr;
  for (const auto& line : lines)
    if (line.IsCredit() == credit) kept += line.amount;
  if (kept == 0) return;
  long long sum = 0;
  for (auto& line : lines) {
    if (line.IsCredit() != credit) continue;
    // Half up in whole cents, exact: amount * total / kept, all positive.
    __int128 scaled = static_cast<__int128>(line.amount) * total * 2 + kept;
    line.amount = static_cast<long long>(scaled / (static_cast<__int128>(kept) * 2));
    sum += line.amount;
    last = &line;
  }
  last->amount += total - sum;
}

}  // namespace

long long LTxnTemplate::Debits() const {
  long long debits = 0;
  for (const auto& line : lines)
    if (!line.IsCredit()) debits += line.amount;
  return debits;
}

bool LTxnTemplateSave(const LProfile& profile, const LTxnTemplate& tpl, std::string* message) {
  std::string name(LTruncated(tpl.name, kMaxTextBytes));
  if (name.find_first_not_of(" \t") == std::string::npos) return LFail(message, kNoName);
  if (tpl.lines.empty()) return LFail(message, kJournalEntryNoLineMessage);
  for (const auto& line : tpl.lines)
    if (!LAccountIsLive(profile, line.account)) return LFail(message, LAccountNotInChartMessage(line.account));
  if (LJournalEntryOutOfBalance(tpl.lines) != 0) return LFail(message, kJournalEntryUnbalancedMessage);
  LFileStoreListBase list = profile.List(kTransactionTemplatesList);
  LRecord record;
  list.CreateNewRecord(record, name);
  record.SetString("Description", LTruncated(tpl.description, kMaxTextBytes));
  record.SetInt("Type", tpl.typeIndex);
  record.SetString("Reference", tpl.reference.empty() ? kTemplateDefaultReference : tpl.reference);
  record.SetInt("ItemCount", static_cast<int>(tpl.lines.size()));
  for (std::size_t i = 0; i < tpl.lines.size(); ++i) {
    const auto& line = tpl.lines[i];
    record.SetString(LItemField(static_cast<int>(i) + 1, "Account"), line.account);
    record.SetInt64(LItemField(static_cast<int>(i) + 1, "Amount"), line.IsCredit() ? -line.amount : line.amount);
  }
  // Saved whole: the old record of that name is replaced, not merged.
  if (!list.Delete(name) && list.TestRecordExists(name)) return LFail(message, kNotSaved);
  return record.Flush() || LFail(message, kNotSaved);
}

bool LTxnTemplateLoad(const LProfile& profile, std::string_view name, LTxnTemplate& tpl) {
  LRecord record;
  if (name.empty() || !profile.List(kTransactionTemplatesList).Open(record, name)) return false;
  tpl = LTxnTemplate();
  tpl.name = record.GetPrimaryKey();
  tpl.description = record.GetString("Description");
  tpl.typeIndex = record.GetInt("Type", kJournalEntryGeneralType);
  tpl.reference = record.GetString("Reference", kTemplateDefaultReference);
  int count = record.GetInt("ItemCount", 0);
  for (int line = 1; line <= count; ++line) {
    long long amount = record.GetInt64(LItemField(line, "Amount"), 0);
    tpl.lines.push_back(
        {record.GetString(LItemField(line, "Account")), amount < 0 ? -amount : amount, amount < 0 ? "CR" : "DR"});
  }
  record.DetachWithoutSave();
  return true;
}

std::vector<std::string> LTxnTemplateNames(const LProfile& profile) {
  return LFileStoreSortedKeys(profile.List(kTransactionTemplatesList));
}

bool LTxnTemplateDelete(const LProfile& profile, std::string_view name) {
  return !name.empty() && profile.List(kTransactionTemplatesList).Delete(name);
}

std::vector<LJournalEntryLine> LTxnTemplateScaledLines(const LTxnTemplate& tpl, long long total) {
  std::vector<LJournalEntryLine> lines = tpl.lines;
  if (total <= 0) return lines;
  ScaleSide(lines, false, total);
  ScaleSide(lines, true, total);
  return lines;
}

void LTxnTemplateFillEntry(const LTxnTemplate& tpl, const LDate& date, long long total, LJournalEntryDlg& entry) {
  entry.date = date;
  entry.typeIndex = tpl.typeIndex;
  entry.reference = tpl.reference;
  entry.description = tpl.description;
  entry.lines = LTxnTemplateScaledLines(tpl, total);
}
