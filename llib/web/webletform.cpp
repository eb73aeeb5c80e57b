#include "llib/web/webletform.h"

#include <cstdarg>

#include "llib/gen/textcase.h"
#include "llib/web/webformat.h"
#include "llib/web/webletrequest.h"
#include "llib/web/webletsocket.h"

LWebletForm::LWebletForm(LWebletSocket* socket) : socket_(socket) {}

LWebletForm::~LWebletForm() {
  SendHeldHead();
  session.FlushSession();
}

namespace {

// true when head has a header line of that name (compared without regard to case).
bool HeadHasField(std::string_view head, std::string_view name) {
  for (std::size_t at = head.find("\r\n"); at != std::string_view::npos; at = head.find("\r\n", at + 2)) {
    std::string_view line = head.substr(at + 2, name.size() + 1);
    if (line.size() == name.size() + 1 && line.back() == ':' && LStartsWithText(line, name))
      return true;
  }
  return false;
}

}  // namespace

std::string LWebletForm::ClosingHead(std::string_view head) const {
  std::string text(head);
  std::size_t statusEnd = text.find("\r\n");
  if (keepAlive || statusEnd == std::string::npos || HeadHasField(text, "Connection")) return text;
  text.insert(statusEnd + 2, "Connection: close\r\n");
  return text;
}

bool LWebletForm::AddHeaderLine(std::string_view line) {
  if (heldHead_.size() < 2) return false;
  // Before the empty line that ends the head.
  heldHead_.insert(heldHead_.size() - 2, std::string(line) + "\r\n");
  return true;
}

std::string LWebletForm::ClientAddressText() const {
  return std::to_string(clientAddress[0]) + "." + std::to_string(clientAddress[1]) + "." +
         std::to_string(clientAddress[2]) + "." + std::to_string(clientAddress[3]);
}

const char* LWebletForm::GetHeader(std::string_view name) const {
  return LWebletFindHeader(headers, name);
}

std::string LWebletForm::GetParam(std::string_view name, std::string_view def) const {
  std::string value;
  parameters.GetString(name, def, value);
  return value;
}

bool LWebletForm::Write(std::string_view data, unsigned timeoutMs) {
  if (writeFailed_) return false;
  if (!heldHead_.empty()) {
    std::string head = std::move(heldHead_);
    heldHead_.clear();
    head.append(data);
    return Write(head, timeoutMs);
  }
  if (socket_ == nullptr) {
    captured_.append(data);
    return true;
  }
  // More of the answer usually follows; the connection pushes the last piece out.
  if (!socket_->Send(data, timeoutMs, true)) writeFailed_ = true;
  return !writeFailed_;
}

void LWebletForm::wfprintf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  std::string text = LWebFormatV(format, args);
  va_end(args);
  Write(text);
}

void LWebletForm::wfprintfutf8(const char* format, ...) {
  va_list args;
  va_start(args, format);
  std::string text = LWebFormatV(format, args);
  va_end(args);
  Write(text);
}

void WLRedirect(LWebletForm& form, std::string_view location) {
  std::string clean;
  for (char c : location)
    if (c != '\r' && c != '\n') clean.push_back(c);
  form.WriteHeader("HTTP/1.1 302 Found\r\nLocation: " + clean + "\r\nContent-Length: 0\r\n\r\n");
  form.responseSent = true;
}

std::string LWebSafeTarget(std::string_view target, std::string_view fallback) {
  if (target.empty() || target[0] == '/' || target[0] == '\\') return std::string(fallback);
  std::size_t pathEnd = target.find_first_of("/?#");
  if (target.substr(0, pathEnd).find(':') != std::string_view::npos) return std::string(fallback);
  for (char c : target) {
    unsigned char byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F || c == '\'' || c == '"' || c == '\\' || c == '<' || c == '>')
      return std::string(fallback);
  }
  return std::string(target);
}
