// Numbers and amounts written out in French words, as a cheque writes its amount: "mille deux
// cent trente-quatre euros et cinquante-six centimes". The traditional spelling that banks read:
// hyphens inside the tens ("vingt-deux"), "et" before "un" and "onze" from twenty to seventy
// ("vingt et un", "soixante et onze"), "quatre-vingts" and "deux cents" taking their "s" only
// when nothing follows, "mille" invariable, "million" and "milliard" plural nouns.
#pragma once

#include <string>
#include <string_view>

// n in words ("zéro" for 0, "moins " before a negative number).
std::string LFrenchNumberWords(long long n);

// The names of a currency's units in words, singular and plural.
struct LCurrencyWords {
  std::string unit = "euro";
  std::string units = "euros";
  std::string minor = "centime";
  std::string minors = "centimes";
};

// The words of the currency whose symbol is symbol ("€", "$", "CHF", "£"); euros for any other.
LCurrencyWords LCurrencyWordsForSymbol(std::string_view symbol);

// amount (minor units, digits decimals) in words: "cent euros", "un million d'euros", "zéro euro
// et cinquante centimes", "trois euros et cinq centimes". With more than two decimals the minor
// part is the first two (a cheque writes cents).
std::string LAmountInFrenchWords(long long amount, int digits, const LCurrencyWords& words);
