// E-mail addresses as the web logon, the account pages and the mail sender accept them: a list
// is addresses separated by ',' with optional blanks after each address and after each ',';
// an address is a local part, '@' and a domain of letters, digits, '-' and '.'. Quoted local
// parts, comments, display names ("Name <a@b.c>") and address literals are not accepted: users
// type plain addresses, and a strict rule keeps the SMTP commands built from them clean.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

class LEmail {
 public:
  // Limits of one address.
  static constexpr std::size_t kMaxAddressBytes = 320;
  static constexpr std::size_t kMaxLocalPartBytes = 64;
  static constexpr std::size_t kMaxDomainBytes = 255;

  // A list of one or more addresses separated by ','. The first address runs up to the first
  // blank, tab or ','; blanks (bytes below 33) may follow an address, then a ',' must come;
  // blanks after the ',' are skipped. Blanks after the last address, a ',' with nothing after
  // it, and an empty text are invalid (callers trim first).
  static bool ValidateAddress(std::string_view list);
  // One address: at most 320 bytes, split at its first '@'; local part of 1 to 64 atext
  // characters and '.', neither beginning nor ending with '.', without ".."; domain of 1 to 255
  // letters, digits, '-' and '.', beginning and ending with a letter or digit, with at least one
  // '.' and no "..".
  static bool ValidateAddressSingle(std::string_view address);
  // Digits, ASCII letters and !#$%&'*+-/=?^_`{|}~ (RFC 5322 atext).
  static bool IsAtextCharacter(char c);
};

// Walks the addresses of a comma-separated list: each address with the blanks (bytes below 33)
// around it removed; empty entries are skipped. The addresses are not validated.
//   for (LEmailAddressListIterator it("a@b.c, d@e.f"); it.Next(address);) ...
class LEmailAddressListIterator {
 public:
  explicit LEmailAddressListIterator(std::string_view list) : rest_(list) {}
  // The next address; false when none is left.
  bool Next(std::string& address);

 private:
  std::string_view rest_;  // the part of the list not walked yet
};
