#include "llib/gen/base64.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <random>

namespace {

// Every length from 0 to 199 (so every padding case) against OpenSSL's encoder, appended after
// what the output already holds.
TEST(Base64, AgreesWithOpenSslOnEveryLengthAndAppends) {
  std::mt19937 random(7);
  for (std::size_t size = 0; size < 200; ++size) {
    std::string data(size, '\0');
    for (char& c : data) c = static_cast<char>(random());
    std::string expected(LBase64EncodedSize(size) + 1, '\0');
    int written = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(expected.data()),
                                  reinterpret_cast<const unsigned char*>(data.data()), static_cast<int>(size));
    expected.resize(static_cast<std::size_t>(written));
    std::string out = "prefix:";
    LBase64EncodeAppend(data, out);
    ASSERT_EQ(out, "prefix:" + expected) << "size " << size;
  }
}

}  // namespace
