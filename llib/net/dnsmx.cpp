#include "llib/net/dnsmx.h"

#include <arpa/nameser.h>
#include <netinet/in.h>
#include <netdb.h>
#include <resolv.h>

#include <climits>

#include "llib/net/ipaddress.h"

LMXAnswer LParseMXAnswer(const unsigned char* answer, std::size_t size, std::string& host) {
  if (size > INT_MAX) return LMXAnswer::kBroken;
  ns_msg message;
  if (::ns_initparse(answer, static_cast<int>(size), &message) != 0) return LMXAnswer::kBroken;
  int bestPreference = INT_MAX;
  std::string best;
  bool sawExchanger = false;
  int count = ns_msg_count(message, ns_s_an);
  for (int i = 0; i < count; ++i) {
    ns_rr record;
    if (::ns_parserr(&message, ns_s_an, i, &record) != 0) return LMXAnswer::kBroken;
    if (ns_rr_type(record) != ns_t_mx || ns_rr_class(record) != ns_c_in) continue;
    // RDATA of MX: a 16-bit preference, then the (possibly compressed) exchanger name.
    if (ns_rr_rdlen(record) < 3) return LMXAnswer::kBroken;
    const unsigned char* data = ns_rr_rdata(record);
    int preference = data[0] << 8 | data[1];
    char name[NS_MAXDNAME];
    if (::dn_expand(ns_msg_base(message), ns_msg_end(message), data + 2, name, sizeof name) < 0)
      return LMXAnswer::kBroken;
    sawExchanger = true;
    // The null MX names the root ("." once expanded); it never wins over a real exchanger.
    bool isNullExchanger = name[0] == '\0' || (name[0] == '.' && name[1] == '\0');
    if (!isNullExchanger && preference < bestPreference) {
      bestPreference = preference;
      best = name;
    }
  }
  if (best.empty()) return sawExchanger ? LMXAnswer::kNoMail : LMXAnswer::kNone;
  host = best;
  return LMXAnswer::kFound;
}

bool LIPAddressWithPort::EmailMXLookup(std::string_view domain, LIPAddressWithPort& out) {
  std::string name(domain);
  if (name.empty()) return false;
  // A private resolver state per call: the global one of res_query is not thread-safe, and the
  // background sender looks up while the web server's threads may do the same.
  struct __res_state state {};
  if (::res_ninit(&state) != 0) return false;
  unsigned char answer[NS_PACKETSZ * 16];
  int size = ::res_nquery(&state, name.c_str(), ns_c_in, ns_t_mx, answer, sizeof answer);
  int failure = state.res_h_errno;
  ::res_nclose(&state);
  std::string host;
  if (size < 0) {
    // The domain exists but has no MX record: it receives its own mail.
    if (failure != NO_DATA) return false;
    out = LIPAddressWithPort(name, kSmtpRelayPort);
    return true;
  }
  switch (LParseMXAnswer(answer, static_cast<std::size_t>(size), host)) {
    case LMXAnswer::kFound:
      out = LIPAddressWithPort(host, kSmtpRelayPort);
      return true;
    case LMXAnswer::kNone:
      out = LIPAddressWithPort(name, kSmtpRelayPort);
      return true;
    case LMXAnswer::kNoMail:
    case LMXAnswer::kBroken:
      return false;
  }
  return false;
}
