#include "accounts/banklines.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "accounts/ledger.h"
#include "accounts/statementfile.h"
#include "invoice/shared/profile.h"
#include "llib/gen/csv.h"
#include "llib/gen/file.h"
#include "llib/gen/textnum.h"

namespace {

constexpr std::string_view kFolder = "BankLines";
constexpr std::pair<LBankLineStatus, std::string_view> kStatusNames[] = {
    {LBankLineStatus::kNew, "new"},           {LBankLineStatus::kSuggested, "suggested"},
    {LBankLineStatus::kMatched, "matched"},   {LBankLineStatus::kAccepted, "accepted"},
    {LBankLineStatus::kPosted, "posted"},
};

LBankLineStatus StatusFromName(std::string_view name) {
  for (const auto& [status, text] : kStatusNames)
    if (text == name) return status;
  return LBankLineStatus::kNew;
}

// FNV-1a, 64 bits: stable across builds and machines, which the stored keys need.
unsigned long long Fnv1a(std::string_view text) {
  unsigned long long hash = 1469598103934665603ULL;
  for (char c : text) {
    hash ^= static_cast<unsigned char>(c);
    hash *= 1099511628211ULL;
  }
  return hash;
}

}  // namespace

std::string_view LBankLineStatusName(LBankLineStatus status) {
  for (const auto& [value, text] : kStatusNames)
    if (value == status) return text;
  return "new";
}

std::string LBankLineNotFoundMessage(std::string_view id) {
  return "Ligne de relevé introuvable : " + std::string(id) + ".";
}

std::string LBankLineKey(const LStatementEntry& line, int occurrence) {
  if (!line.bankId.empty()) return "B:" + line.bankId;
  std::string material = line.date + "|" + std::to_string(line.amount) + "|" + line.text + "|" + std::to_string(occurrence);
  char hex[20];
  std::snprintf(hex, sizeof hex, "%016llx", Fnv1a(material));
  return std::string("H:") + hex;
}

bool LBankLinesRenumber(const LProfile& profile, std::string_view oldNumber, std::string_view newNumber) {
  std::string folder = LFile::MakeFilePath(profile.GetDataStore().GetFolder(), kFolder);
  for (std::string_view extension : {".csv", ".upload"}) {
    std::string from = LFile::MakeFilePath(folder, std::string(oldNumber) + std::string(extension));
    std::string to = LFile::MakeFilePath(folder, std::string(newNumber) + std::string(extension));
    if (LFile::Exists(from) && !LFile::Exists(to) && !LRobustRename(from, to)) {
      LLogWriteFailure("rename", from, errno);
      return false;
    }
  }
  return true;
}

LBankLineStore::LBankLineStore(const LProfile& profile, std::string_view account) {
  std::string folder = LFile::MakeFilePath(profile.GetDataStore().GetFolder(), kFolder);
  (void)LFile::MakeFolder(folder);
  path_ = LFile::MakeFilePath(folder, std::string(account) + ".csv");
  lock_ = LLockedFile(LFile::MakeFilePath(folder, std::string(account) + ".lock"), O_RDWR | O_CREAT, LOCK_EX,
                      kLedgerLockTimeoutMs);
  std::string content;
  if (!LFile::ReadAll(path_, content)) return;
  std::string_view rest = content;
  while (!rest.empty()) {
    std::size_t end = rest.find('\n');
    std::string_view row = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    if (!row.empty() && row.back() == '\r') row.remove_suffix(1);
    if (row.empty()) continue;
    LCSVReaderRow columns(row);
    LBankLine line;
    line.id = columns.GetCol();
    line.date = columns.GetCol();
    line.amount = LTextToInt64(columns.GetCol());
    line.text = columns.GetCol();
    line.key = columns.GetCol();
    line.status = StatusFromName(columns.GetCol());
    line.ledgerDate = columns.GetCol();
    line.ledgerReference = columns.GetCol();
    line.chequeNumber = columns.GetCol();
    nextId_ = std::max(nextId_, LTextToInt64(line.id) + 1);
    keys_.push_back(line.key);
    lines_.push_back(std::move(line));
  }
  std::sort(keys_.begin(), keys_.end());
}

LBankLine* LBankLineStore::Find(std::string_view id) {
  for (LBankLine& line : lines_)
    if (line.id == id) return &line;
  return nullptr;
}

bool LBankLineStore::Knows(std::string_view key) const {
  return std::binary_search(keys_.begin(), keys_.end(), key, std::less<>());
}

LBankLine& LBankLineStore::Add(LBankLine line) {
  line.id = std::to_string(nextId_++);
  keys_.insert(std::upper_bound(keys_.begin(), keys_.end(), line.key), line.key);
  lines_.push_back(std::move(line));
  return lines_.back();
}

bool LBankLineStore::Save() {
  std::string content;
  content.reserve(lines_.size() * 96);
  LCSVWriterRow row;
  for (const LBankLine& line : lines_) {
    row.Clear();
    row.AddCol(line.id);
    row.AddCol(line.date);
    row.AddCol(std::to_string(line.amount));
    row.AddCol(line.text);
    row.AddCol(line.key);
    row.AddCol(LBankLineStatusName(line.status));
    row.AddCol(line.ledgerDate);
    row.AddCol(line.ledgerReference);
    row.AddCol(line.chequeNumber);
    content += row.GetText();
    content += "\r\n";
  }
  return LFile::WriteAllAtomic(path_, content);
}
