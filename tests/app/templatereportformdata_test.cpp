// Template report expressions: the solver's checks and their order, its precedence and the odd
// readings kept on purpose, the field substitution, the truncation to minor units, and the
// decimal symbol shared by the substituted values and the solver.
#include "app/templatereportformdata.h"

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

// ---- Construction -----------------------------------------------------------------------------

TEST(SimpleExpressionSolver, ChecksRunInOrderAndEveryFailureGivesZero) {
  EXPECT_EQ(SimpleExpressionSolver(static_cast<const char*>(nullptr)).GetError(), kEmpty);
  EXPECT_EQ(ErrorOf(""), kEmpty);
  EXPECT_EQ(ErrorOf("a"), kCharacters);
  EXPECT_EQ(ErrorOf("1%2"), kCharacters);
  EXPECT_EQ(ErrorOf("1\t+2"), kCharacters);  // only the blank is removed
  EXPECT_EQ(ErrorOf("(1+2"), kParentheses);
  EXPECT_EQ(ErrorOf(")1+2("), kParentheses);
  EXPECT_EQ(ErrorOf("(a"), kCharacters);       // characters before parentheses
  EXPECT_EQ(ErrorOf("(5/0"), kParentheses);     // parentheses before evaluation
  EXPECT_EQ(ErrorOf("*2"), kInvalid);
  EXPECT_EQ(ErrorOf("/2+1"), kInvalid);
  EXPECT_EQ(ErrorOf("5/0"), kDivision);
  EXPECT_EQ(ErrorOf("5/(1-1)"), kDivision);
  EXPECT_EQ(ErrorOf("1+(*2)"), kInvalid);  // the inner level starts with '*'
  for (const char* bad : {"a", "(1", "*2", "5/0", "1+(2/0)*3"}) EXPECT_EQ(Solve(bad).GetResult(), 0) << bad;
}

TEST(SimpleExpressionSolver, PrecedenceSignsAndAssociativity) {
  EXPECT_EQ(ValueOf("(1+2)*3"), 9);
  EXPECT_EQ(ValueOf("2+3*4"), 14);
  EXPECT_EQ(ValueOf("2*-3"), -6);
  EXPECT_EQ(ValueOf("-2*3"), -6);
  EXPECT_EQ(ValueOf("8/2/2"), 2);
  EXPECT_EQ(ValueOf("10-4-3"), 3);
  EXPECT_EQ(ValueOf("1-2*3+8/4"), -3);
  EXPECT_EQ(ValueOf("2*(3+(4-1)*2)/3"), 6);
  EXPECT_EQ(ValueOf("-(2+3)"), -5);
  EXPECT_EQ(ValueOf("+7"), 7);
  EXPECT_EQ(ValueOf("1 + 2 * 3"), 7);
  EXPECT_DOUBLE_EQ(ValueOf("7/2"), 3.5);
  EXPECT_DOUBLE_EQ(ValueOf("0.1+0.2"), 0.1 + 0.2);
  EXPECT_DOUBLE_EQ(ValueOf(".5*3"), 1.5);
}

TEST(SimpleExpressionSolver, ReadingsKeptOnPurpose) {
  EXPECT_EQ(ValueOf("2(3)"), 5);   // a missing operator adds
  EXPECT_EQ(ValueOf("(2)(3)"), 5);
  EXPECT_EQ(ValueOf("1 2"), 12);   // blanks go before the numbers are read
  EXPECT_EQ(ValueOf("1+"), 1);     // a trailing operator is ignored
  EXPECT_EQ(ValueOf("2--"), 2);    // the second '-' is a sign with no digits: minus 0
  EXPECT_EQ(ValueOf("2*-(3)"), 3);  // "-" alone reads as 0, then the parenthesis adds
  EXPECT_EQ(ValueOf("2**3"), 6);   // the second '*' is no number and is skipped
  EXPECT_DOUBLE_EQ(ValueOf("1.2.3"), 1.5);  // a second point ends the number; ".3" is the next one
  EXPECT_EQ(ErrorOf("-"), kInvalid);  // a lone trailing operator leaves nothing to calculate
  // Blanks are valid characters, so the text is not "empty"; an empty level is worth 0.
  EXPECT_EQ(ValueOf("   "), 0);
  EXPECT_EQ(ValueOf("()"), 0);
  EXPECT_EQ(ValueOf("3()"), 3);
}

// ---- The parts ------------------------------------------------------------------------------

TEST(SimpleExpressionSolver, ValidCharactersAndParentheses) {
  EXPECT_TRUE(SimpleExpressionSolver::IsValidExpression("", false, "."));
  EXPECT_TRUE(SimpleExpressionSolver::IsValidExpression(" (1.5+2)*3-4/5 ", false, "."));
  EXPECT_FALSE(SimpleExpressionSolver::IsValidExpression("1,5", false, "."));
  EXPECT_TRUE(SimpleExpressionSolver::IsValidExpression("1,5", false, ","));
  EXPECT_FALSE(SimpleExpressionSolver::IsValidExpression("1.5", false, ","));
  EXPECT_FALSE(SimpleExpressionSolver::IsValidExpression("Ventes-Achats", false, "."));
  EXPECT_TRUE(SimpleExpressionSolver::IsValidExpression("Ventes-Achats2", true, "."));
  EXPECT_FALSE(SimpleExpressionSolver::IsValidExpression("Ventes_Achats", true, "."));
  EXPECT_FALSE(SimpleExpressionSolver::IsValidExpression("é", true, "."));
  // A symbol of several bytes is accepted whole, not byte by byte.
  EXPECT_TRUE(SimpleExpressionSolver::IsValidExpression("1\xD9\xAB" "5", false, "\xD9\xAB"));
  EXPECT_FALSE(SimpleExpressionSolver::IsValidExpression("1\xD9" "5", false, "\xD9\xAB"));

  EXPECT_TRUE(SimpleExpressionSolver::IsBalancedParentheses(""));
  EXPECT_TRUE(SimpleExpressionSolver::IsBalancedParentheses("(()())"));
  EXPECT_FALSE(SimpleExpressionSolver::IsBalancedParentheses(")("));  // negative on the way
  EXPECT_FALSE(SimpleExpressionSolver::IsBalancedParentheses("(()"));
  EXPECT_FALSE(SimpleExpressionSolver::IsBalancedParentheses("())(()"));
}

TEST(SimpleExpressionSolver, ReadDoubleFromStringCountsWhatItConsumes) {
  double value = -1;
  EXPECT_EQ(SimpleExpressionSolver::ReadDoubleFromString("12.5+3", value, "."), 4u);
  EXPECT_EQ(value, 12.5);
  EXPECT_EQ(SimpleExpressionSolver::ReadDoubleFromString("-7*2", value, "."), 2u);
  EXPECT_EQ(value, -7);
  EXPECT_EQ(SimpleExpressionSolver::ReadDoubleFromString("+7", value, "."), 2u);
  EXPECT_EQ(value, 7);
  value = -1;
  EXPECT_EQ(SimpleExpressionSolver::ReadDoubleFromString("-", value, "."), 1u);
  EXPECT_EQ(value, 0);
  value = -1;
  EXPECT_EQ(SimpleExpressionSolver::ReadDoubleFromString("-(", value, "."), 1u);
  EXPECT_EQ(value, 0);
  value = -1;
  EXPECT_EQ(SimpleExpressionSolver::ReadDoubleFromString("*3", value, "."), 0u);
  EXPECT_EQ(value, 0);
  EXPECT_EQ(SimpleExpressionSolver::ReadDoubleFromString("", value, "."), 0u);
  EXPECT_EQ(SimpleExpressionSolver::ReadDoubleFromString("1.2.3", value, "."), 3u);
  EXPECT_EQ(value, 1.2);
  EXPECT_EQ(SimpleExpressionSolver::ReadDoubleFromString("3,25;", value, ","), 4u);
  EXPECT_EQ(value, 3.25);
  EXPECT_EQ(SimpleExpressionSolver::ReadDoubleFromString("3.25", value, ","), 1u);  // "." is foreign here
  EXPECT_EQ(value, 3);
  EXPECT_EQ(SimpleExpressionSolver::ReadDoubleFromString("2\xD9\xAB" "5", value, "\xD9\xAB"), 4u);
  EXPECT_EQ(value, 2.5);
  // Long runs of digits are one number, read by the C library as it reads any.
  std::string digits(400, '9');
  EXPECT_EQ(SimpleExpressionSolver::ReadDoubleFromString(digits, value, "."), 400u);
  EXPECT_TRUE(std::isinf(value));
}

TEST(SimpleExpressionSolver, CalculateFoldsProductsIntoTheKeptPairBefore) {
  SimpleExpressionSolver solver = Solve("0");
  EXPECT_EQ(solver.Calculate({{'+', 1}, {'*', 2}, {'-', 9}, {'/', 3}, {'*', 4}}), 2 - 12);
  EXPECT_EQ(solver.GetError(), "");
  EXPECT_EQ(solver.Calculate({{'-', 2}, {'*', 3}}), -6);
  EXPECT_EQ(solver.GetError(), "");

  SimpleExpressionSolver empty = Solve("0");
  EXPECT_EQ(empty.Calculate({}), 0);
  EXPECT_EQ(empty.GetError(), kInvalid);
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
  EXPECT_FALSE(form.SubstituteFieldExpression("Ventes%", text));
  form.SetFieldValue("Ventes", 7);  // setting again replaces
  ASSERT_NE(form.FindField("Ventes"), nullptr);
  EXPECT_EQ(form.FindField("Ventes")->value, 7);
  EXPECT_EQ(form.FindField("Nope"), nullptr);

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

TEST(TemplateReportForm, AmountsAreTruncatedTowardZeroInMinorUnits) {
  KVTemplateReportFormManager form(2, ".");
  form.SetFieldValue("Loyer", 100000);
  form.SetFieldValue("Charges", 25050);
  form.SetFieldValue("Cent", 100);
  form.SetFieldValue("Prix", 1999);
  std::string error = "not cleared";
  EXPECT_EQ(form.EvaluateSimpleExpression("(Loyer+Charges)*12", error), 1500600);
  EXPECT_EQ(error, "");
  EXPECT_EQ(form.EvaluateSimpleExpression("1.999", error), 199);
  EXPECT_EQ(form.EvaluateSimpleExpression("-1.999", error), -199);
  EXPECT_EQ(form.EvaluateSimpleExpression("Cent/3", error), 33);
  EXPECT_EQ(form.EvaluateSimpleExpression("-Cent/3", error), -33);
  // 19.99 is 1998.9999999999998 hundredths in binary: truncation loses the cent, as it must.
  EXPECT_EQ(form.EvaluateSimpleExpression("Prix", error), 1998);
  EXPECT_EQ(form.EvaluateSimpleExpression("Prix+0", error), 1998);

  KVTemplateReportFormManager yen(0, ".");
  yen.SetFieldValue("Total", 1234);
  EXPECT_EQ(yen.EvaluateSimpleExpression("Total/10", error), 123);
  KVTemplateReportFormManager dinar(3, ".");
  dinar.SetFieldValue("Total", 1234);
  EXPECT_EQ(dinar.EvaluateSimpleExpression("Total*2", error), 2468);
  // Results beyond the 64-bit range stay at its ends rather than wrapping.
  std::string huge = "9" + std::string(30, '0');
  EXPECT_EQ(form.EvaluateSimpleExpression(huge, error), INT64_MAX);
  EXPECT_EQ(form.EvaluateSimpleExpression("-" + huge, error), INT64_MIN);
}

TEST(TemplateReportForm, FailuresGiveTheirTextAndZero) {
  KVTemplateReportFormManager form(2, ".");
  form.SetFieldValue("Ventes", 500);
  form.SetFieldValue("Rien", 0);
  std::string error;
  EXPECT_EQ(form.EvaluateSimpleExpression("Ventes+Inconnu", error), 0);
  EXPECT_EQ(error, kSubstitution);
  EXPECT_EQ(form.EvaluateSimpleExpression("Ventes#2", error), 0);
  EXPECT_EQ(error, kSubstitution);
  EXPECT_EQ(form.EvaluateSimpleExpression("Ventes/Rien", error), 0);
  EXPECT_EQ(error, kDivision);
  EXPECT_EQ(form.EvaluateSimpleExpression("(Ventes", error), 0);
  EXPECT_EQ(error, kParentheses);
  EXPECT_EQ(form.EvaluateSimpleExpression("", error), 0);
  EXPECT_EQ(error, kEmpty);
  EXPECT_EQ(form.EvaluateSimpleExpression("*Ventes", error), 0);
  EXPECT_EQ(error, kInvalid);
  EXPECT_EQ(form.EvaluateSimpleExpression("Ventes", error), 500);
  EXPECT_EQ(error, "");
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
