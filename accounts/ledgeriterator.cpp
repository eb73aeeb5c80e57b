#include "accounts/ledgeriterator.h"

#include <algorithm>

#include "llib/gen/file.h"

namespace {

constexpr std::string_view kDayFileExtension = ".csv";

bool IsDayFileName(std::string_view name) {
  return name.size() > kDayFileExtension.size() &&
         name.substr(name.size() - kDayFileExtension.size()) == kDayFileExtension;
}

}  // namespace

LLedgerAccountLineIterator::LLedgerAccountLineIterator(const LProfile& profile, std::string_view from,
                                                       std::string_view to)
    : from_(from), to_(to) {
  LTextBuffer folder;
  LLegderGetBaseFolder(profile, folder);
  folder_ = folder;
  if (!LFile::IsFolder(folder_)) return;
  for (auto& name : LFile::ListFolder(folder_))
    if (IsDayFileName(name)) names_.push_back(std::move(name));
  std::sort(names_.begin(), names_.end());
}

bool LLedgerAccountLineIterator::SkipToValidCSVAndOpen() {
  while (nextName_ < names_.size()) {
    const std::string& name = names_[nextName_++];
    std::string_view day = std::string_view(name).substr(0, name.size() - kDayFileExtension.size());
    if (!from_.empty() && day < from_) continue;
    if (!to_.empty() && day > to_) continue;
    reader_.Open(LFile::MakeFilePath(folder_, name), kLedgerIterateLockTimeoutMs);
    open_ = true;
    fileName_ = name;
    rowNumber_ = 0;
    return true;
  }
  reader_.Close();
  open_ = false;
  return false;
}

void LLedgerAccountLineIterator::SkipToValidLine() {
  valid = false;
  while (!open_ || !reader_.HasRow())
    if (!SkipToValidCSVAndOpen()) return;
  rowText_ = reader_.GetLine();
  ++rowNumber_;
  line.LoadFromCSVRow(rowText_, &amountText_);
  reader_.Next();
  valid = true;
}
