// Amounts in French words as a bank reads them on a cheque: the joins of the tens ("et",
// hyphens), the plurals of "cent" and "quatre-vingt" that fall before "mille", "mille"
// invariable, "d'euros" after millions, and the cents.
#include "llib/gen/frenchwords.h"

#include <gtest/gtest.h>

TEST(FrenchWords, NumbersFollowTheTraditionalSpelling) {
  const std::pair<long long, const char*> cases[] = {
      {0, "zéro"},
      {16, "seize"},
      {21, "vingt et un"},
      {71, "soixante et onze"},
      {77, "soixante-dix-sept"},
      {80, "quatre-vingts"},
      {81, "quatre-vingt-un"},
      {91, "quatre-vingt-onze"},
      {100, "cent"},
      {101, "cent un"},
      {200, "deux cents"},
      {280, "deux cent quatre-vingts"},
      {1000, "mille"},
      {1980, "mille neuf cent quatre-vingts"},
      {80000, "quatre-vingt mille"},
      {200000, "deux cent mille"},
      {1000001, "un million un"},
      {280000000, "deux cent quatre-vingts millions"},
      {2000000000, "deux milliards"},
      {-42, "moins quarante-deux"},
  };
  for (const auto& [number, words] : cases) EXPECT_EQ(LFrenchNumberWords(number), words) << number;
}

TEST(FrenchWords, AmountsNameTheirUnitsAndCents) {
  LCurrencyWords euros;
  EXPECT_EQ(LAmountInFrenchWords(123456, 2, euros), "mille deux cent trente-quatre euros et cinquante-six centimes");
  EXPECT_EQ(LAmountInFrenchWords(100, 2, euros), "un euro");
  EXPECT_EQ(LAmountInFrenchWords(50, 2, euros), "zéro euro et cinquante centimes");
  EXPECT_EQ(LAmountInFrenchWords(301, 2, euros), "trois euros et un centime");
  EXPECT_EQ(LAmountInFrenchWords(100000000, 2, euros), "un million d'euros");
  EXPECT_EQ(LAmountInFrenchWords(1500, 0, euros), "mille cinq cents euros");
  EXPECT_EQ(LAmountInFrenchWords(12345, 3, euros), "douze euros et trente-quatre centimes");
  EXPECT_EQ(LAmountInFrenchWords(200000000, 2, LCurrencyWordsForSymbol("$")), "deux millions de dollars");
  EXPECT_EQ(LAmountInFrenchWords(-250, 2, LCurrencyWordsForSymbol("CHF")), "moins deux francs et cinquante centimes");
}
