// Where a connection goes: a host (a name, or a literal IPv4 or IPv6 address) and a TCP port.
// Names are resolved only when a socket connects (LSocket::Connect), so an address can be built
// from settings without touching the network. Also the look-ups that mail needs: the mail
// exchanger of a domain (EmailMXLookup, through the C resolver) and the local machine's name
// given in the greeting of an SMTP dialogue (LIPGetLocalFQDN).
#pragma once

#include <string>
#include <string_view>

class LIPAddressWithPort {
 public:
  LIPAddressWithPort() = default;
  LIPAddressWithPort(std::string host, int port) : host_(std::move(host)), port_(port) {}

  // Reads "host", "host:port", "[v6 address]" or "[v6 address]:port"; a text with several ':'
  // and no brackets is an IPv6 address without port. A host without port gets defaultPort.
  // Blanks around the text are ignored. false (out unchanged) when the host is empty or the
  // port is not a number from 1 to 65535.
  static bool Parse(std::string_view text, int defaultPort, LIPAddressWithPort& out);

  // The mail exchanger of domain with the best (lowest) preference, on port 25. A domain that
  // exists but names no mail exchanger receives its mail itself (the domain, port 25). false
  // (out unchanged) when the domain does not exist or the resolver cannot answer.
  static bool EmailMXLookup(std::string_view domain, LIPAddressWithPort& out);

  const std::string& Host() const { return host_; }
  int Port() const { return port_; }
  // "host:port", with brackets around an IPv6 address.
  std::string ToText() const;

 private:
  std::string host_;  // name or literal address, without brackets
  int port_ = 0;      // TCP port, 1 to 65535
};

// The fully qualified name of this machine, as the resolver knows it (/etc/hosts first); the
// plain host name when it knows no better. Looked up once per process.
void LIPGetLocalFQDN(std::string& name);

// The TCP port of SMTP between mail servers: direct delivery goes there.
inline constexpr int kSmtpRelayPort = 25;
