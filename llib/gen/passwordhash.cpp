#include "llib/gen/passwordhash.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/sha.h>

#include <charconv>

#include "llib/gen/hextext.h"
#include "llib/gen/randomtext.h"

namespace {

constexpr std::string_view kScheme = "pbkdf2-sha256";
constexpr std::size_t kSaltBytes = 16;
constexpr std::size_t kKeyBytes = 32;
// A stored count above this is refused rather than computed: a damaged or hostile account file
// must not hold a logon for hours.
constexpr long kMaxIterations = 10000000;

struct LPasswordHashParts {
  long iterations = 0;
  std::string_view salt;  // hexadecimal text, used as the salt bytes as it is
  std::string_view key;   // hexadecimal text of the derived key
};

bool SplitHash(std::string_view stored, LPasswordHashParts& parts) {
  std::string_view fields[4];
  for (int i = 0; i < 3; ++i) {
    std::size_t dollar = stored.find('$');
    if (dollar == std::string_view::npos) return false;
    fields[i] = stored.substr(0, dollar);
    stored.remove_prefix(dollar + 1);
  }
  fields[3] = stored;
  if (fields[0] != kScheme || fields[2].size() != 2 * kSaltBytes || fields[3].size() != 2 * kKeyBytes) return false;
  auto [end, error] = std::from_chars(fields[1].data(), fields[1].data() + fields[1].size(), parts.iterations);
  if (error != std::errc() || end != fields[1].data() + fields[1].size()) return false;
  if (parts.iterations < 1 || parts.iterations > kMaxIterations) return false;
  parts.salt = fields[2];
  parts.key = fields[3];
  return true;
}

// The hexadecimal key of password; empty when OpenSSL failed.
std::string DeriveKey(std::string_view password, std::string_view salt, long iterations) {
  unsigned char key[kKeyBytes];
  if (PKCS5_PBKDF2_HMAC(password.data(), static_cast<int>(password.size()),
                        reinterpret_cast<const unsigned char*>(salt.data()), static_cast<int>(salt.size()),
                        static_cast<int>(iterations), EVP_sha256(), sizeof key, key) != 1)
    return {};
  std::string hex = LHexText(std::string_view(reinterpret_cast<const char*>(key), sizeof key));
  OPENSSL_cleanse(key, sizeof key);
  return hex;
}

}  // namespace

std::string LPasswordHashMake(std::string_view password) {
  std::string salt = LRandomHexText(kSaltBytes);
  std::string key = DeriveKey(password, salt, kPasswordHashIterations);
  if (key.empty()) return {};
  return std::string(kScheme) + "$" + std::to_string(kPasswordHashIterations) + "$" + salt + "$" + key;
}

bool LPasswordHashMatches(std::string_view stored, std::string_view password) {
  LPasswordHashParts parts;
  if (!SplitHash(stored, parts)) return false;
  std::string key = DeriveKey(password, parts.salt, parts.iterations);
  return !key.empty() && LSecretEquals(key, parts.key);
}

bool LPasswordHashIsCurrent(std::string_view stored) {
  LPasswordHashParts parts;
  return SplitHash(stored, parts) && parts.iterations >= kPasswordHashIterations;
}

bool LSecretEquals(std::string_view a, std::string_view b) {
  // Digests first, so that texts of different lengths compare in the same time as equal ones.
  unsigned char digestA[SHA256_DIGEST_LENGTH];
  unsigned char digestB[SHA256_DIGEST_LENGTH];
  ::SHA256(reinterpret_cast<const unsigned char*>(a.data()), a.size(), digestA);
  ::SHA256(reinterpret_cast<const unsigned char*>(b.data()), b.size(), digestB);
  return CRYPTO_memcmp(digestA, digestB, SHA256_DIGEST_LENGTH) == 0;
}
