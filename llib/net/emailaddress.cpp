#include "llib/net/emailaddress.h"

#include <cstring>

#include "llib/gen/trim.h"

namespace {

bool IsBlank(char c) { return static_cast<unsigned char>(c) < 33; }
bool IsLetterOrDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

bool IsValidLocalPart(std::string_view local) {
  if (local.empty() || local.size() > LEmail::kMaxLocalPartBytes) return false;
  if (local.front() == '.' || local.back() == '.' || local.find("..") != std::string_view::npos) return false;
  if (!LEmail::IsAtextCharacter(local.front())) return false;
  for (char c : local.substr(1))
    if (!LEmail::IsAtextCharacter(c) && c != '.') return false;
  return true;
}

bool IsValidDomain(std::string_view domain) {
  if (domain.empty() || domain.size() > LEmail::kMaxDomainBytes) return false;
  if (!IsLetterOrDigit(domain.front()) || !IsLetterOrDigit(domain.back())) return false;
  if (domain.find('.') == std::string_view::npos || domain.find("..") != std::string_view::npos) return false;
  for (char c : domain)
    if (!IsLetterOrDigit(c) && c != '-' && c != '.') return false;
  return true;
}

}  // namespace

bool LEmail::IsAtextCharacter(char c) {
  return IsLetterOrDigit(c) || (c != '\0' && std::strchr("!#$%&'*+-/=?^_`{|}~", c) != nullptr);
}

bool LEmail::ValidateAddressSingle(std::string_view address) {
  if (address.size() > kMaxAddressBytes) return false;
  std::size_t at = address.find('@');
  if (at == std::string_view::npos) return false;
  return IsValidLocalPart(address.substr(0, at)) && IsValidDomain(address.substr(at + 1));
}

bool LEmail::ValidateAddress(std::string_view list) {
  std::size_t pos = 0;
  for (;;) {
    // One address: up to the first blank, tab or ','.
    std::size_t end = pos;
    while (end < list.size() && list[end] != ' ' && list[end] != '\t' && list[end] != ',') ++end;
    if (!ValidateAddressSingle(list.substr(pos, end - pos))) return false;
    pos = end;
    if (pos == list.size()) return true;
    while (pos < list.size() && IsBlank(list[pos])) ++pos;
    if (pos == list.size() || list[pos] != ',') return false;
    ++pos;
    while (pos < list.size() && IsBlank(list[pos])) ++pos;
    if (pos == list.size()) return false;
  }
}

bool LEmailAddressListIterator::Next(std::string& address) {
  while (!rest_.empty()) {
    std::size_t comma = rest_.find(',');
    std::string_view entry = LTrimControls(rest_.substr(0, comma));
    rest_ = comma == std::string_view::npos ? std::string_view() : rest_.substr(comma + 1);
    if (!entry.empty()) {
      address.assign(entry);
      return true;
    }
  }
  return false;
}
