#include "llib/web/webmail.h"

#include <cstring>
#include <mutex>

#include "llib/gen/log.h"

namespace {

bool IsLetterOrDigit(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool IsAtext(char c) { return IsLetterOrDigit(c) || (c != '\0' && std::strchr("!#$%&'*+-/=?^_`{|}~", c) != nullptr); }

bool ValidateSingle(std::string_view address) {
  if (address.size() > 320) return false;
  std::size_t at = address.find('@');
  if (at == std::string_view::npos) return false;
  std::string_view local = address.substr(0, at);
  std::string_view domain = address.substr(at + 1);
  if (local.empty() || local.size() > 64 || local.front() == '.' || local.back() == '.' ||
      local.find("..") != std::string_view::npos || !IsAtext(local.front()))
    return false;
  for (char c : local)
    if (!IsAtext(c) && c != '.') return false;
  if (domain.empty() || domain.size() > 255 || !IsLetterOrDigit(domain.front()) ||
      !IsLetterOrDigit(domain.back()) || domain.find('.') == std::string_view::npos ||
      domain.find("..") != std::string_view::npos)
    return false;
  for (char c : domain)
    if (!IsLetterOrDigit(c) && c != '-' && c != '.') return false;
  return true;
}

bool IsBlank(char c) { return static_cast<unsigned char>(c) < 33; }

std::mutex gSenderMutex;
LWebMailSender gSender;  // guarded by gSenderMutex; empty: the default

}  // namespace

bool LWebMailValidateAddress(std::string_view addresses) {
  std::size_t pos = 0;
  for (;;) {
    std::size_t end = pos;
    while (end < addresses.size() && addresses[end] != ' ' && addresses[end] != '\t' && addresses[end] != ',') ++end;
    if (!ValidateSingle(addresses.substr(pos, end - pos))) return false;
    pos = end;
    while (pos < addresses.size() && IsBlank(addresses[pos])) ++pos;
    if (pos == addresses.size()) return end == addresses.size();  // blanks at the end: invalid
    if (addresses[pos] != ',') return false;
    ++pos;
    while (pos < addresses.size() && IsBlank(addresses[pos])) ++pos;
    if (pos == addresses.size()) return false;  // a ',' with nothing after it
  }
}

void LWebMailSendBackground(std::string_view to, std::string_view subject, std::string_view text) {
  std::lock_guard<std::mutex> lock(gSenderMutex);
  if (gSender) {
    gSender(to, subject, text);
    return;
  }
  std::string recipients(to);
  LLogError("Le courriel pour %s n'a pas été envoyé : l'envoi de courriels n'est pas disponible.",
            recipients.c_str());
}

void LWebMailStopSoon() {}
void LWebMailStopNow() {}

void LWebMailSetSender(LWebMailSender sender) {
  std::lock_guard<std::mutex> lock(gSenderMutex);
  gSender = std::move(sender);
}
