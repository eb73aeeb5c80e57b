#include "accounts/statementtext.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

#include "llib/gen/date.h"
#include "llib/gen/money.h"
#include "llib/gen/moneybounds.h"
#include "llib/gen/utf16.h"

namespace {

std::string Utf16ToUtf8(std::string_view bytes, bool bigEndian) {
  std::string units(bytes);
  if (bigEndian)
    for (std::size_t i = 0; i + 1 < units.size(); i += 2) std::swap(units[i], units[i + 1]);
  std::string out;
  LUtf16LeDecoder decoder;
  decoder.Append(units, out);
  decoder.Finish(out);
  return out;
}

// UTF-16 without a mark: statements are mostly ASCII, so one byte of each pair is NUL.
bool LooksUtf16(std::string_view bytes, bool& bigEndian) {
  std::size_t n = std::min<std::size_t>(bytes.size() & ~std::size_t{1}, 512);
  if (n < 4) return false;
  std::size_t evenNul = 0, oddNul = 0;
  for (std::size_t i = 0; i < n; i += 2) {
    evenNul += bytes[i] == '\0';
    oddNul += bytes[i + 1] == '\0';
  }
  std::size_t pairs = n / 2;
  if (oddNul * 10 >= pairs * 9 && evenNul == 0) return bigEndian = false, true;
  if (evenNul * 10 >= pairs * 9 && oddNul == 0) return bigEndian = true, true;
  return false;
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

}  // namespace

std::string LStatementTextToUtf8(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  else if (bytes.starts_with("\xFF\xFE")) return Utf16ToUtf8(bytes.substr(2), false);
  else if (bytes.starts_with("\xFE\xFF")) return Utf16ToUtf8(bytes.substr(2), true);
  bool bigEndian = false;
  if (LooksUtf16(bytes, bigEndian)) return Utf16ToUtf8(bytes, bigEndian);
  return LIsValidUtf8(bytes) ? std::string(bytes) : LWindows1252ToUtf8(bytes);
}

namespace {

// The amount as LParseAmount reads it ("-1234.5"); false when text is not an amount as banks
// write them.
bool PlainAmount(std::string_view text, char decimalMark, int digits, std::string& plain) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  bool negative = false;
  if (text.size() >= 2 && text.front() == '(' && text.back() == ')') {
    negative = true;
    text = text.substr(1, text.size() - 2);
  }
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
    negative = negative != (text.front() == '-');
    text.remove_prefix(1);
  } else if (!text.empty() && (text.back() == '-' || text.back() == '+')) {
    negative = negative != (text.back() == '-');
    text.remove_suffix(1);
  }
  if (decimalMark == 0) {
    std::size_t mark = text.find_last_of(".,");
    // "1,234" or "1.234" alone is a thousands group only when another mark came before it.
    decimalMark = mark == std::string_view::npos ? '.' : text[mark];
  }
  plain.clear();
  bool seenMark = false;
  for (char c : text) {
    if (std::isdigit(static_cast<unsigned char>(c))) {
      plain += c;
    } else if (c == decimalMark && !seenMark) {
      seenMark = true;
      plain += '.';
    } else if (!seenMark && (c == ' ' || c == '\'' || c == (decimalMark == '.' ? ',' : '.') ||
                             static_cast<unsigned char>(c) == 0xA0 || c == '\xC2')) {
      continue;  // thousands separators, no-break spaces included
    } else {
      return false;
    }
  }
  if (plain.empty() || plain == ".") return false;
  if (plain.front() == '.') plain.insert(plain.begin(), '0');
  if (plain.back() == '.') plain.pop_back();
  // Trailing zeros beyond the currency's decimals carry nothing ("12.500" in a 2-digit currency).
  if (std::size_t point = plain.find('.'); point != std::string::npos)
    while (plain.size() - point - 1 > static_cast<std::size_t>(digits) && plain.back() == '0') plain.pop_back();
  if (!plain.empty() && plain.back() == '.') plain.pop_back();
  if (negative) plain.insert(plain.begin(), '-');
  return true;
}

}  // namespace

bool LStatementParseAmount(std::string_view text, char decimalMark, int digits, long long& out) {
  std::string plain;
  return PlainAmount(text, decimalMark, digits, plain) && LParseAmount(plain, digits, out);
}

std::string LStatementAmountBeyondCeiling(std::string_view what, std::string_view text, char decimalMark,
                                          const LCurrencyFormat& currency) {
  std::string plain;
  if (!PlainAmount(text, decimalMark, currency.digits, plain) || !LAmountTextIsBeyondCeiling(plain, currency.digits))
    return {};
  return LAmountRefusal(what, LStatementCleanText(text), plain, currency);
}

bool LStatementParseDate(std::string_view text, bool dayFirst, std::string& out) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  std::string copy(text.substr(0, 40));
  int a = 0, b = 0, c = 0, used = 0;
  char s1 = 0, s2 = 0;
  LDate date;
  if (copy.size() >= 8 && std::isdigit(static_cast<unsigned char>(copy[0])) &&
      std::sscanf(copy.c_str(), "%4d%2d%2d%n", &a, &b, &c, &used) == 3 && used == 8 &&
      (copy.size() == 8 || !std::isdigit(static_cast<unsigned char>(copy[8])))) {
    date = LDate(a, b, c);
  } else if (std::sscanf(copy.c_str(), "%d%c%d%c%d%n", &a, &s1, &b, &s2, &c, &used) == 5 && s1 == s2 &&
             (s1 == '-' || s1 == '/' || s1 == '.')) {
    if (copy.find_first_of("0123456789") == 0 && copy.find(s1) == 4) date = LDate(a, b, c);
    else {
      int year = c < 100 ? 2000 + c : c;
      date = dayFirst ? LDate(year, b, a) : LDate(year, a, b);
    }
  }
  if (!date.IsValid()) return false;
  out = date.ToText();
  return true;
}

std::string LStatementCleanText(std::string_view text) {
  std::string out;
  bool blank = false;
  for (char c : text) {
    if (IsBlank(c) || c == '\0') {
      blank = !out.empty();
      continue;
    }
    if (blank) out += ' ';
    blank = false;
    out += c;
  }
  return out;
}

std::string LStatementChequeNumber(std::string_view text) {
  std::string upper;
  for (char c : text.substr(0, 40)) upper += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  std::string_view rest = upper;
  bool named = false;
  for (std::string_view word : {"CHEQUE", "CH\xC3\x88QUE", "CH\xC3\xA8QUE", "CHQ", "CHECK"}) {
    if (rest.starts_with(word)) {
      rest.remove_prefix(word.size());
      named = true;
      break;
    }
  }
  if (!named) return {};
  std::size_t first = rest.find_first_of("0123456789");
  // Only blanks, "N°", "NO", "." or ":" between the word and the number.
  if (first == std::string_view::npos || rest.substr(0, first).find_first_not_of(" .:N\xC2\xB0O") != std::string_view::npos)
    return {};
  std::size_t end = rest.find_first_not_of("0123456789", first);
  return std::string(rest.substr(first, end - first));
}

std::string LStatementDigits(std::string_view text) {
  std::string digits;
  for (char c : text)
    if (std::isdigit(static_cast<unsigned char>(c))) digits += c;
  return digits;
}

std::string LAsciiUpper(std::string_view text) {
  std::string out(text);
  for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return out;
}
