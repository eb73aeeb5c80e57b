#include "llib/gen/base64.h"

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

void LBase64EncodeAppend(std::string_view data, std::string& out) {
  out.reserve(out.size() + LBase64EncodedSize(data.size()));
  const auto* bytes = reinterpret_cast<const unsigned char*>(data.data());
  std::size_t i = 0;
  for (; i + 3 <= data.size(); i += 3) {
    unsigned group = bytes[i] << 16 | bytes[i + 1] << 8 | bytes[i + 2];
    out.push_back(kAlphabet[group >> 18 & 63]);
    out.push_back(kAlphabet[group >> 12 & 63]);
    out.push_back(kAlphabet[group >> 6 & 63]);
    out.push_back(kAlphabet[group & 63]);
  }
  std::size_t left = data.size() - i;
  if (left == 0) return;
  unsigned group = bytes[i] << 16 | (left == 2 ? bytes[i + 1] << 8 : 0);
  out.push_back(kAlphabet[group >> 18 & 63]);
  out.push_back(kAlphabet[group >> 12 & 63]);
  out.push_back(left == 2 ? kAlphabet[group >> 6 & 63] : '=');
  out.push_back('=');
}

std::string LBase64Encode(std::string_view data) {
  std::string out;
  LBase64EncodeAppend(data, out);
  return out;
}
