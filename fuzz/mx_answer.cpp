// Fuzzes the reading of a name server's answer to a mail exchanger question, bytes that come
// from the network: no input may crash it, and a found exchanger is a non-empty name that is
// not the root.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "llib/net/dnsmx.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string host = "inchangé";
  LMXAnswer answer = LParseMXAnswer(data, size, host);
  if (answer == LMXAnswer::kFound && (host.empty() || host == ".")) std::abort();
  if (answer != LMXAnswer::kFound && host != "inchangé") std::abort();
  return 0;
}
