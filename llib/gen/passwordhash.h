// Hashed passwords of web accounts. A password is never stored: the account keeps a salted, slow
// hash of it (PBKDF2-HMAC-SHA256 from OpenSSL), written as one text
//
//   pbkdf2-sha256$600000$<salt: 32 hex digits>$<key: 64 hex digits>
//
// The iteration count travels with the hash, so hashes made with an older, lower count still
// check, and LPasswordHashIsCurrent tells the caller to hash the password again at the next
// successful logon. Every comparison of secrets takes the same time whatever they hold.
#pragma once

#include <string>
#include <string_view>

// Iterations of a new hash: the count recommended for PBKDF2-HMAC-SHA256 in 2023, about a tenth
// of a second on one core, paid once per logon.
inline constexpr int kPasswordHashIterations = 600000;

// A new hash of password with a fresh random salt; empty when the system's crypto library
// failed (nothing to store then).
std::string LPasswordHashMake(std::string_view password);
// true when stored is a hash in the form above and password hashes to it.
bool LPasswordHashMatches(std::string_view stored, std::string_view password);
// true when stored is a well-formed hash made with at least kPasswordHashIterations.
bool LPasswordHashIsCurrent(std::string_view stored);
// a == b, in a time that depends on their lengths only (never on where they differ).
bool LSecretEquals(std::string_view a, std::string_view b);
