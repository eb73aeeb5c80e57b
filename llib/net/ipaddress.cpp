#include "llib/net/ipaddress.h"

#include <netdb.h>
#include <sys/socket.h>

#include <cstring>

#include "llib/gen/system.h"
#include "llib/gen/trim.h"

namespace {

bool ParsePort(std::string_view text, int& port) {
  if (text.empty() || text.size() > 5) return false;
  int value = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
    value = value * 10 + (c - '0');
  }
  if (value < 1 || value > 65535) return false;
  port = value;
  return true;
}

}  // namespace

bool LIPAddressWithPort::Parse(std::string_view text, int defaultPort, LIPAddressWithPort& out) {
  text = LTrimControls(text);
  std::string_view host = text;
  int port = defaultPort;
  if (!text.empty() && text.front() == '[') {
    std::size_t close = text.find(']');
    if (close == std::string_view::npos) return false;
    host = text.substr(1, close - 1);
    std::string_view rest = text.substr(close + 1);
    if (!rest.empty() && (rest.front() != ':' || !ParsePort(rest.substr(1), port))) return false;
  } else if (std::size_t colon = text.find(':'); colon != std::string_view::npos &&
                                                 text.find(':', colon + 1) == std::string_view::npos) {
    host = text.substr(0, colon);
    if (!ParsePort(text.substr(colon + 1), port)) return false;
  }
  if (host.empty()) return false;
  out = LIPAddressWithPort(std::string(host), port);
  return true;
}

std::string LIPAddressWithPort::ToText() const {
  std::string text = host_.find(':') != std::string::npos ? "[" + host_ + "]" : host_;
  return text + ":" + std::to_string(port_);
}

void LIPGetLocalFQDN(std::string& name) {
  // The resolver may be slow or absent; one look-up per process is enough for every greeting.
  static const std::string fqdn = [] {
    std::string hostName = LGetHostName();
    if (hostName.find('.') != std::string::npos) return hostName;
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_flags = AI_CANONNAME;
    addrinfo* found = nullptr;
    std::string best = hostName;
    if (::getaddrinfo(hostName.c_str(), nullptr, &hints, &found) == 0) {
      if (found->ai_canonname != nullptr && std::strchr(found->ai_canonname, '.') != nullptr)
        best = found->ai_canonname;
      ::freeaddrinfo(found);
    }
    return best;
  }();
  name = fqdn;
}
