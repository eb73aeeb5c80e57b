#include "llib/gen/importerrors.h"

#include <cstdio>

namespace {

constexpr std::string_view kCancelledText = "Importation annulée par l'utilisateur";

std::string RowLine(int row, std::string_view text) {
  char prefix[32];
  std::snprintf(prefix, sizeof prefix, "Ligne #%04d : ", row);
  return std::string(prefix).append(text);
}

}  // namespace

bool LImportErrorList::AddRowResult(int row, LProcessResult result, std::string_view errorText) {
  switch (result) {
    case kProcessFinished:
      return true;
    case kProcessFailed:
      lines_.push_back(RowLine(row, errorText));
      ++nErrors_;
      return true;
    case kProcessCancelled:
      lines_.push_back(RowLine(row, kCancelledText));
      cancelled_ = true;
      return false;
  }
  return true;
}

std::string LImportErrorList::GetText() const {
  std::string text;
  for (const auto& line : lines_) text.append(line).append("\n");
  return text;
}
