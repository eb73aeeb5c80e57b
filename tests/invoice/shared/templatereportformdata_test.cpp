// Template report expressions: the solver's checks and their order, its precedence and the odd
// readings kept on purpose, the field substitution, the truncation to minor units, and the
// decimal symbol shared by the substituted values and the solver.
#include "invoice/shared/templatereportformdata.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

constexpr const char* kEmpty = "Expression vide ou non valide.";
constexpr const char* kCharacters = "Symboles ou lettres non pris en charge présents dans l'expression.";
constexpr const char* kParentheses =
    "Les parenthèses ne sont pas équilibrées ou elles sont utilisées de façon incorrrecte.";
constexpr const char* kInvalid = "Expression non valide.";
constexpr const char* kDivision = "Expression non valide. Division par 0.";
constexpr const char* kBeyondCeiling = "Expression non valide. Résultat au-delà du plafond des montants.";
constexpr const char* kSubstitution =
    "Impossile de substituer l'expression. Détection de nom(s) de champ non reconnu(s).";

// The solver with "." as decimal symbol, whatever the machine's locale.
SimpleExpressionSolver Solve(std::string_view expression) { return SimpleExpressionSolver(expression, "."); }

std::string ErrorOf(std::string_view expression) { return Solve(expression).GetError(); }

double ValueOf(std::string_view expression) {
  SimpleExpressionSolver solver = Solve(expression);
  EXPECT_EQ(solver.GetError(), "") << expression;
  return solver.GetResult();
}

// ---- The solver -------------------------------------------------------------------------------

// The checks run in order (characters, parentheses, then evaluation), and every failure gives 0.
TEST(SimpleExpressionSolver, ChecksRunInOrderAndEveryFailureGivesZero) {
  EXPECT_EQ(SimpleExpressionSolver(static_cast<const char*>(nullptr)).GetError(), kEmpty);
  const std::pair<const char*, const char*> cases[] = {
      {"", kEmpty},
      {"1%2", kCharacters},
      {"1\t+2", kCharacters},  // only the blank is removed
      {")1+2(", kParentheses},
      {"(a", kCharacters},      // characters before parentheses
      {"(5/0", kParentheses},   // parentheses before evaluation
      {"*2", kInvalid},
      {"1+(*2)", kInvalid},     // the inner level starts with '*'
      {"-", kInvalid},          // a lone trailing operator leaves nothing to calculate
      {"5/(1-1)", kDivision},
  };
  for (const auto& [expression, error] : cases) {
    SimpleExpressionSolver solver = Solve(expression);
    EXPECT_EQ(solver.GetError(), error) << expression;
    EXPECT_EQ(solver.GetResult(), 0) << expression;
  }
}

// Precedence, signs and left associativity, then the readings kept on purpose.
TEST(SimpleExpressionSolver, PrecedenceSignsAndReadingsKeptOnPurpose) {
  const std::pair<const char*, double> cases[] = {
      {"2+3*4", 14}, {"2*-3", -6}, {"8/2/2", 2}, {"10-4-3", 3}, {"2*(3+(4-1)*2)/3", 6}, {"-(2+3)", -5},
      {"+7", 7},     {"7/2", 3.5}, {".5*3", 1.5},
      {"2(3)", 5},     // a missing operator adds
      {"1 2", 12},     // blanks go before the numbers are read
      {"1+", 1},       // a trailing operator is ignored
      {"2--", 2},      // the second '-' is a sign with no digits: minus 0
      {"2*-(3)", 3},   // "-" alone reads as 0, then the parenthesis adds
      {"2**3", 6},     // the second '*' is no number and is skipped
      {"1.2.3", 1.5},  // a second point ends the number; ".3" is the next one
      {"   ", 0},      // blanks are valid characters, so the text is not "empty"
      {"3()", 3},      // an empty level is worth 0
  };
  for (const auto& [expression, value] : cases) EXPECT_DOUBLE_EQ(ValueOf(expression), value) << expression;
  EXPECT_DOUBLE_EQ(ValueOf("0.1+0.2"), 0.1 + 0.2);
}

TEST(SimpleExpressionSolver, ValidCharactersAndParentheses) {
  EXPECT_TRUE(SimpleExpressionSolver::IsValidExpression(" (1.5+2)*3-4/5 ", false, "."));
  EXPECT_FALSE(SimpleExpressionSolver::IsValidExpression("1,5", false, "."));
  EXPECT_FALSE(SimpleExpressionSolver::IsValidExpression("1.5", false, ","));
  EXPECT_FALSE(SimpleExpressionSolver::IsValidExpression("Ventes-Achats", false, "."));
  EXPECT_TRUE(SimpleExpressionSolver::IsValidExpression("Ventes-Achats2", true, "."));
  EXPECT_FALSE(SimpleExpressionSolver::IsValidExpression("Ventes_Achats", true, "."));
  EXPECT_FALSE(SimpleExpressionSolver::IsValidExpression("é", true, "."));
  // A symbol of several bytes is accepted whole, not byte by byte.
  EXPECT_TRUE(SimpleExpressionSolver::IsValidExpression("1\xD9\xAB" "5", false, "\xD9\xAB"));
  EXPECT_FALSE(SimpleExpressionSolver::IsValidExpression("1\xD9" "5", false, "\xD9\xAB"));

  EXPECT_TRUE(SimpleExpressionSolver::IsBalancedParentheses("(()())"));
  EXPECT_FALSE(SimpleExpressionSolver::IsBalancedParentheses(")("));  // negative on the way
  EXPECT_FALSE(SimpleExpressionSolver::IsBalancedParentheses("(()"));
}

TEST(SimpleExpressionSolver, ReadDoubleFromStringCountsWhatItConsumes) {
  struct Case {
    std::string text;
    const char* symbol;
    std::size_t consumed;
    double value;
  };
  const Case cases[] = {
      {"12.5+3", ".", 4, 12.5}, {"-7*2", ".", 2, -7}, {"-(", ".", 1, 0},  // a sign alone reads as 0
      {"*3", ".", 0, 0},        {"1.2.3", ".", 3, 1.2},
      {"3,25;", ",", 4, 3.25},  {"3.25", ",", 1, 3},  // "." is foreign here
      {"2\xD9\xAB" "5", "\xD9\xAB", 4, 2.5},
  };
  for (const Case& c : cases) {
    double value = -1;
    EXPECT_EQ(SimpleExpressionSolver::ReadDoubleFromString(c.text, value, c.symbol), c.consumed) << c.text;
    EXPECT_EQ(value, c.value) << c.text;
  }
  // Long runs of digits are one number, read by the C library as it reads any.
  double value = 0;
  EXPECT_EQ(SimpleExpressionSolver::ReadDoubleFromString(std::string(400, '9'), value, "."), 400u);
  EXPECT_TRUE(std::isinf(value));
}

TEST(SimpleExpressionSolver, CalculateFoldsProductsIntoTheKeptPairBefore) {
  SimpleExpressionSolver solver = Solve("0");
  EXPECT_EQ(solver.Calculate({{'+', 1}, {'*', 2}, {'-', 9}, {'/', 3}, {'*', 4}}), 2 - 12);
  EXPECT_EQ(solver.GetError(), "");

  SimpleExpressionSolver leadingProduct = Solve("0");
  EXPECT_EQ(leadingProduct.Calculate({{'*', 2}, {'+', 1}}), 0);
  EXPECT_EQ(leadingProduct.GetError(), kInvalid);
  SimpleExpressionSolver byZero = Solve("0");
  EXPECT_EQ(byZero.Calculate({{'+', 1}, {'/', 0}, {'+', 5}}), 0);
  EXPECT_EQ(byZero.GetError(), kDivision);
  // Once an error is set, Parse gives 0 without reading.
  EXPECT_EQ(byZero.Parse("1+1"), 0);
}

TEST(SimpleExpressionSolver, NestingIsBoundedSoNoExpressionExhaustsTheStack) {
  auto nested = [](int depth) { return std::string(depth, '(') + "1" + std::string(depth, ')'); };
  EXPECT_EQ(ValueOf(nested(SimpleExpressionSolver::kMaxNesting)), 1);
  EXPECT_EQ(ErrorOf(nested(SimpleExpressionSolver::kMaxNesting + 1)), kInvalid);
  EXPECT_EQ(ErrorOf(nested(200000)), kInvalid);
  // Long flat expressions are not nested and are evaluated whole.
  std::string sum = "0";
  for (int i = 0; i < 100000; ++i) sum += "+(1)";
  EXPECT_EQ(ValueOf(sum), 100000);
}

// ---- Fields -----------------------------------------------------------------------------------

TEST(TemplateReportForm, SubstitutionPrintsValuesInCurrencyUnits) {
  KVTemplateReportFormManager form(2, ".");
  form.SetFieldValue("Ventes", 1999);
  form.SetFieldValue("Achats", -150);
  form.SetFieldValue("Zero", 0);
  form.SetFieldValue("A1", 5);
  std::string text;
  EXPECT_TRUE(form.SubstituteFieldExpression("Ventes-Achats*2", text));
  EXPECT_EQ(text, "19.990000--1.500000*2");
  EXPECT_TRUE(form.SubstituteFieldExpression("(Zero + A1)", text));
  EXPECT_EQ(text, "(0 + 0.050000)");
  // Names are exact: another case, or a longer name, is not the field.
  EXPECT_FALSE(form.SubstituteFieldExpression("ventes", text));
  EXPECT_EQ(text, "ventes");
  EXPECT_FALSE(form.SubstituteFieldExpression("Ventes2+A1", text));
  EXPECT_EQ(text, "Ventes2+0.050000");
  form.SetFieldValue("Ventes", 7);  // setting again replaces
  EXPECT_TRUE(form.SubstituteFieldExpression("Ventes", text));
  EXPECT_EQ(text, "0.070000");

  KVTemplateReportFormManager wholeUnits(0, ".");
  wholeUnits.SetFieldValue("Yen", 1234);
  EXPECT_TRUE(wholeUnits.SubstituteFieldExpression("Yen", text));
  EXPECT_EQ(text, "1234.000000");
  KVTemplateReportFormManager threeDigits(3, ",");
  threeDigits.SetFieldValue("Dinar", -12345);
  EXPECT_TRUE(threeDigits.SubstituteFieldExpression("Dinar", text));
  EXPECT_EQ(text, "-12,345000");

  // The substituted text is cut to 259 bytes.
  std::string longExpression = "A1";
  for (int i = 0; i < 40; ++i) longExpression += "+A1";
  EXPECT_TRUE(form.SubstituteFieldExpression(longExpression, text));
  EXPECT_EQ(text.size(), 259u);
}

// Results are truncated toward zero in minor units; failures, a result beyond the ceiling of
// money among them, give their text and 0.
TEST(TemplateReportForm, AmountsAreTruncatedTowardZeroAndFailuresGiveZero) {
  KVTemplateReportFormManager form(2, ".");
  const std::pair<const char*, long long> fields[] = {{"Loyer", 100000}, {"Charges", 25050}, {"Cent", 100},
                                                      {"Prix", 1999},     {"Rien", 0}};
  for (const auto& [name, value] : fields) form.SetFieldValue(name, value);
  const std::string huge = "9" + std::string(30, '0');
  const std::tuple<std::string, long long, const char*> cases[] = {
      {"(Loyer+Charges)*12", 1500600, ""},
      {"-1.999", -199, ""},
      {"-Cent/3", -33, ""},
      {"Prix", 1998, ""},  // 19.99 is 1998.9999999999998 hundredths in binary: truncation loses the cent
      {"99999999999.99", 9999999999999, ""},
      {"100000000000", 0, kBeyondCeiling},
      {"-" + huge, 0, kBeyondCeiling},
      {"Cent+Inconnu", 0, kSubstitution},
      {"Cent#2", 0, kSubstitution},
      {"Cent/Rien", 0, kDivision},
      {"(Cent", 0, kParentheses},
      {"", 0, kEmpty},
  };
  for (const auto& [expression, amount, message] : cases) {
    std::string error = "not cleared";
    EXPECT_EQ(form.EvaluateSimpleExpression(expression, error), amount) << expression;
    EXPECT_EQ(error, message) << expression;
  }
  KVTemplateReportFormManager yen(0, ".");
  yen.SetFieldValue("Total", 1234);
  std::string error;
  EXPECT_EQ(yen.EvaluateSimpleExpression("Total/10", error), 123);
  KVTemplateReportFormManager dinar(3, ".");
  dinar.SetFieldValue("Total", 1234);
  EXPECT_EQ(dinar.EvaluateSimpleExpression("Total*2", error), 2468);
}

// ---- The decimal symbol -----------------------------------------------------------------------

TEST(TemplateReportForm, TheLocaleDecimalSymbolServesBothSides) {
  LEnvScope all("LC_ALL", nullptr), monetary("LC_MONETARY", nullptr);
  {
    LEnvScope lang("LANG", "fr_FR.UTF-8");
    EXPECT_EQ(SimpleExpressionSolver::LocaleDecimalSymbol(), ",");
    EXPECT_EQ(SimpleExpressionSolver("1,5*2").GetResult(), 3);
    EXPECT_EQ(SimpleExpressionSolver("1.5*2").GetError(), kCharacters);
    KVTemplateReportFormManager form(2);
    form.SetFieldValue("Prix", 150);
    std::string text, error;
    EXPECT_TRUE(form.SubstituteFieldExpression("Prix", text));
    EXPECT_EQ(text, "1,500000");
    EXPECT_EQ(form.EvaluateSimpleExpression("Prix*2+0,25", error), 325);
    EXPECT_EQ(error, "");
  }
  LEnvScope lang("LANG", "en_GB.UTF-8");
  EXPECT_EQ(SimpleExpressionSolver::LocaleDecimalSymbol(), ".");
  KVTemplateReportFormManager form(2);
  form.SetFieldValue("Prix", 150);
  std::string error;
  EXPECT_EQ(form.EvaluateSimpleExpression("Prix*2+0.25", error), 325);
}

// The C library's own decimal point (LC_NUMERIC) may differ from the symbol of expressions: with
// a French LC_NUMERIC, "%f" writes "1,500000" and strtod stops at ".". A locale compiled into the
// test's home puts the process in that state, and every symbol must still read back.
TEST(TemplateReportForm, TheCLibraryDecimalPointDoesNotLeakIntoExpressions) {
  LTempHome home;
  std::string folder = home.Path() + "/locales";
  std::filesystem::create_directories(folder);
  std::string command = "localedef -i fr_FR -f UTF-8 '" + folder + "/fr_FR.UTF-8' >/dev/null 2>&1";
  ASSERT_EQ(std::system(command.c_str()), 0) << "localedef (packages locales, libc-bin) is needed";
  LEnvScope path("LOCPATH", folder.c_str());
  std::string previous = std::setlocale(LC_NUMERIC, nullptr);
  ASSERT_NE(std::setlocale(LC_NUMERIC, "fr_FR.UTF-8"), nullptr);
  ASSERT_STREQ(std::localeconv()->decimal_point, ",");

  for (const char* symbol : {".", ",", "\xD9\xAB"}) {
    KVTemplateReportFormManager form(2, symbol);
    form.SetFieldValue("Prix", 150);
    std::string error;
    EXPECT_EQ(form.EvaluateSimpleExpression("Prix*2", error), 300) << symbol;
    EXPECT_EQ(error, "") << symbol;
    std::string expression = std::string("0") + symbol + "25*4";
    EXPECT_EQ(SimpleExpressionSolver(expression, symbol).GetResult(), 1) << symbol;
  }
  std::setlocale(LC_NUMERIC, previous.c_str());
}

}  // namespace
