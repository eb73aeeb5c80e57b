// Reading the resolver's answer to a mail exchanger (MX) question. Kept apart from the look-up
// itself (LIPAddressWithPort::EmailMXLookup) so that the parsing of bytes that come from the
// network can be tested and fuzzed without a name server.
#pragma once

#include <cstddef>
#include <string>

enum class LMXAnswer {
  kFound,   // host holds the exchanger with the lowest preference (first of equals)
  kNone,    // a well-formed answer without any MX record: the domain takes its own mail
  kNoMail,  // only a "null MX" (RFC 7505, the name "."): the domain takes no mail at all
  kBroken,  // the bytes are not a DNS message
};

// Parses a DNS response (header, question, answer records). host is set only on kFound.
LMXAnswer LParseMXAnswer(const unsigned char* answer, std::size_t size, std::string& host);
