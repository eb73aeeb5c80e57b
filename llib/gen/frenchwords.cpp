#include "llib/gen/frenchwords.h"

#include <array>

namespace {

constexpr std::array<std::string_view, 20> kUnits = {
    "zéro",  "un",    "deux",  "trois",    "quatre",   "cinq",   "six",      "sept",     "huit",     "neuf",
    "dix",   "onze",  "douze", "treize",   "quatorze", "quinze", "seize",    "dix-sept", "dix-huit", "dix-neuf"};
constexpr std::array<std::string_view, 10> kTens = {"",          "dix",      "vingt",    "trente",       "quarante",
                                                    "cinquante", "soixante", "soixante", "quatre-vingt", "quatre-vingt"};

// 0 < n < 100.
std::string BelowHundred(int n) {
  if (n < 20) return std::string(kUnits[n]);
  int ten = n / 10, unit = n % 10;
  if (ten == 7 || ten == 9) unit += 10;  // soixante-dix, quatre-vingt-dix: the tens go on from ten
  std::string text(kTens[ten]);
  if (unit == 0) return ten == 8 ? text + "s" : text;
  if ((unit == 1 || unit == 11) && ten < 8) return text + " et " + std::string(kUnits[unit]);
  return text + "-" + std::string(kUnits[unit]);
}

// 0 < n < 1000; plural says whether "cent" and "quatre-vingt" may take their "s" (not before
// "mille").
std::string BelowThousand(int n, bool plural) {
  int hundreds = n / 100, rest = n % 100;
  std::string text;
  if (hundreds > 0) {
    if (hundreds > 1) text = std::string(kUnits[hundreds]) + " ";
    text += "cent";
    if (hundreds > 1 && rest == 0 && plural) text += "s";
    if (rest > 0) text += " ";
  }
  if (rest > 0) {
    std::string tens = BelowHundred(rest);
    if (!plural && rest == 80) tens.pop_back();
    text += tens;
  }
  return text;
}

void Append(std::string& text, const std::string& part) {
  if (!text.empty()) text += " ";
  text += part;
}

// Whether an amount written as words takes "d'" before the unit: "un million d'euros".
bool EndsWithLargeNoun(const std::string& words) {
  for (std::string_view noun : {"million", "millions", "milliard", "milliards"}) {
    if (words.size() >= noun.size() && words.compare(words.size() - noun.size(), noun.size(), noun) == 0) return true;
  }
  return false;
}

}  // namespace

std::string LFrenchNumberWords(long long n) {
  if (n == 0) return "zéro";
  if (n < 0) {
    unsigned long long magnitude = 0ULL - static_cast<unsigned long long>(n);
    if (magnitude > 999999999999999999ULL) return "moins " + std::to_string(magnitude);
    return "moins " + LFrenchNumberWords(static_cast<long long>(magnitude));
  }
  // Groups of three digits from the billions of billions down; past that the digits are written.
  if (n > 999999999999999999LL) return std::to_string(n);
  struct Scale {
    long long size;
    std::string_view one, many;  // noun forms; empty for the units
  };
  constexpr std::array<Scale, 6> kScales = {{{1000000000000000LL, "billiard", "billiards"},
                                             {1000000000000LL, "billion", "billions"},
                                             {1000000000LL, "milliard", "milliards"},
                                             {1000000LL, "million", "millions"},
                                             {1000LL, "mille", "mille"},
                                             {1LL, "", ""}}};
  std::string text;
  for (const Scale& scale : kScales) {
    int group = static_cast<int>(n / scale.size);
    n %= scale.size;
    if (group == 0) continue;
    if (scale.size == 1000) {
      if (group > 1) Append(text, BelowThousand(group, false));
      Append(text, "mille");
    } else if (scale.size == 1) {
      Append(text, BelowThousand(group, true));
    } else {
      Append(text, BelowThousand(group, true));
      Append(text, std::string(group > 1 ? scale.many : scale.one));
    }
  }
  return text;
}

LCurrencyWords LCurrencyWordsForSymbol(std::string_view symbol) {
  if (symbol == "$") return {"dollar", "dollars", "cent", "cents"};
  if (symbol == "CHF" || symbol == "Fr." || symbol == "FS") return {"franc", "francs", "centime", "centimes"};
  if (symbol == "£") return {"livre", "livres", "penny", "pence"};
  return {};
}

std::string LAmountInFrenchWords(long long amount, int digits, const LCurrencyWords& words) {
  bool negative = amount < 0;
  unsigned long long magnitude = negative ? 0ULL - static_cast<unsigned long long>(amount) : amount;
  unsigned long long scale = 1;
  for (int i = 0; i < digits; ++i) scale *= 10;
  long long whole = static_cast<long long>(magnitude / scale);
  long long minor = static_cast<long long>(magnitude % scale);
  for (int i = digits; i > 2; --i) minor /= 10;
  if (digits == 1) minor *= 10;

  std::string wholeWords = LFrenchNumberWords(whole);
  std::string text = negative ? "moins " : "";
  text += wholeWords;
  if (EndsWithLargeNoun(wholeWords)) {
    std::string_view unit = words.units;
    bool vowel = !unit.empty() && std::string_view("aeiouy").find(unit.front()) != std::string_view::npos;
    text += vowel ? " d'" : " de ";
    text += unit;
  } else {
    text += " " + (whole > 1 ? words.units : words.unit);
  }
  if (minor > 0) text += " et " + LFrenchNumberWords(minor) + " " + (minor > 1 ? words.minors : words.minor);
  return text;
}
