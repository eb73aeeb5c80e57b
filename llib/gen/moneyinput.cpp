#include "llib/gen/moneyinput.h"

#include "llib/gen/moneybounds.h"
#include "llib/gen/optionalerror.h"

std::string LPlainAmountText(std::string_view text, const LCurrencyFormat& format) {
  std::string plain;
  bool parenthesised = text.size() >= 2 && text.front() == '(' && text.back() == ')';
  if (parenthesised) text = text.substr(1, text.size() - 2);
  auto startsWith = [&](std::size_t at, std::string_view part) {
    return !part.empty() && text.substr(at, part.size()) == part;
  };
  auto isDigit = [&](std::size_t at) { return at < text.size() && text[at] >= '0' && text[at] <= '9'; };
  // A group separator stands between digits and before exactly three of them; elsewhere it is
  // left in place and the amount refused ("12,50" is not twelve hundred and fifty).
  auto isGroup = [&](std::size_t at, std::size_t width) {
    std::size_t next = at + width;
    return at > 0 && isDigit(at - 1) && isDigit(next) && isDigit(next + 1) && isDigit(next + 2) && !isDigit(next + 3);
  };
  for (std::size_t at = 0; at < text.size();) {
    std::size_t width = 0;
    if (startsWith(at, "\xC2\xA0")) width = 2;  // no-break space
    else if (startsWith(at, "\xE2\x80\xAF")) width = 3;  // narrow no-break space
    else if (text[at] == ' ') width = 1;
    if (width != 0) {  // spaces group digits, or surround the symbol
      at += width;
    } else if (startsWith(at, format.symbol)) {
      at += format.symbol.size();
    } else if (format.thousands != format.decimal && startsWith(at, format.thousands) &&
               isGroup(at, format.thousands.size())) {
      at += format.thousands.size();
    } else if (startsWith(at, format.decimal)) {
      plain += '.';
      at += format.decimal.size();
    } else {
      plain += text[at++];
    }
  }
  return parenthesised && !plain.empty() && plain[0] != '-' ? "-" + plain : plain;
}

std::string LAmountInputText(long long amount, const LCurrencyFormat& format) {
  LCurrencyFormat number = format;
  number.symbol.clear();
  return LFormatNumber(amount, number);
}

bool LReadTypedAmount(std::string_view typed, const LCurrencyFormat& format, long long& amount, std::string* error) {
  std::string plain = LPlainAmountText(typed, format);
  if (LParseAmount(plain, format.digits, amount)) return true;
  return LFail(error, LAmountRefusal("", typed, plain, format));
}
