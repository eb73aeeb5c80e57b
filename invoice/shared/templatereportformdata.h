// Expressions of template report fields. A template report is a form written by the user whose
// fields hold amounts; a field may be an arithmetic expression over other fields, such as
// "Ventes-Achats" or "(Loyer+Charges)*12". The form manager replaces each field name by the
// field's value in currency units and hands the text to SimpleExpressionSolver, a small
// evaluator of + - * / and parentheses; the result comes back in minor units, truncated.
//
// The decimal symbol: numbers in an expression are written with the locale's decimal symbol
// ("1,5" in a French locale), and the values the manager substitutes must read back, so both
// sides use one symbol. The manager prints each value with "%f" and then puts its decimal symbol
// in place of the C library's decimal point; the solver, reading a number, puts the C library's
// decimal point back before strtod. A manager hands its own symbol to the solvers it makes, so a
// substituted value is always read as the number that was printed, whatever LC_NUMERIC says.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

class SimpleExpressionSolver {
 public:
  struct OperatorOperandPair {
    char op;         // '+', '-', '*' or '/'
    double operand;  // the number or the value of the parenthesised part
  };

  // Evaluates expression at once with the locale's decimal symbol. A null or empty expression,
  // characters other than blanks, digits, parentheses, the four operators and the decimal
  // symbol, unbalanced parentheses, a leading '*' or '/' and a division by 0 are errors.
  explicit SimpleExpressionSolver(const char* expression);
  explicit SimpleExpressionSolver(std::string_view expression);
  SimpleExpressionSolver(std::string_view expression, std::string_view decimalSymbol);

  // Empty on success; otherwise the message (at most 259 bytes).
  const std::string& GetError() const { return error_; }
  // The value; 0 when there is an error.
  double GetResult() const { return result_; }

  // The decimal symbol of the system locale ("," in a French locale).
  static std::string LocaleDecimalSymbol();

  // true when every character is a blank, '(', ')', '*', '+', '-', '/', a digit or the decimal
  // symbol (and, with allowLetters, an ASCII letter). An empty text is valid.
  static bool IsValidExpression(std::string_view text, bool allowLetters,
                                std::string_view decimalSymbol = LocaleDecimalSymbol());
  // true when no ')' comes before its '(' and every '(' is closed. An empty text is balanced.
  static bool IsBalancedParentheses(std::string_view text);
  // Reads the number at the start of text: an optional sign, then digits with at most one
  // decimal symbol. Returns the number of characters consumed (sign included; 0 when text does
  // not start with a sign, a digit or the symbol) and sets value (0 when no digit followed).
  static std::size_t ReadDoubleFromString(std::string_view text, double& value,
                                          std::string_view decimalSymbol = LocaleDecimalSymbol());

  // Evaluates one level of an expression without blanks; parenthesised parts recursively. A
  // missing operator counts as '+': "2(3)" is 5. Returns 0 for an empty text or once an error
  // is set. Parentheses nested deeper than kMaxNesting are the error "Expression non valide.".
  double Parse(std::string_view text);
  // '*' and '/' folded into the pair before them, then the sum. Sets the error (and returns 0)
  // when pairs is empty, starts with '*' or '/', or divides by 0.
  double Calculate(std::vector<OperatorOperandPair> pairs);

  // Deepest nesting of parentheses Parse follows; more than a field of 259 characters can hold,
  // and shallow enough that recursion cannot exhaust the stack on any input.
  static constexpr int kMaxNesting = 200;

 private:
  void Solve(const char* expression, std::size_t length);

  std::string decimalSymbol_;  // the symbol numbers are written with
  std::string error_;          // empty while the evaluation goes well
  double result_ = 0;          // the value; 0 on error
  int nesting_ = 0;            // parentheses levels Parse is inside now
};

// One field of a form: its name and its value in minor units of the business currency.
struct KVFormField {
  std::string name;      // letters then letters and digits, compared exactly
  long long value = 0;   // minor units (cents for two currency digits)
};

// The part of the template report form manager that evaluates field expressions.
class KVTemplateReportFormManager {
 public:
  // currencyDigits: decimals of the business currency (the profile's); decimalSymbol: the one
  // both the substituted values and the solver use.
  explicit KVTemplateReportFormManager(int currencyDigits,
                                       std::string decimalSymbol = SimpleExpressionSolver::LocaleDecimalSymbol());

  // Sets a field's value, adding the field when the form has none of that name.
  void SetFieldValue(std::string_view name, long long value);
  // The field of that name; null when the form has none.
  const KVFormField* FindField(std::string_view name) const;

  // Replaces every field name of expression by its value in currency units ("%f" with the
  // decimal symbol; "0" for a zero value); unknown names stay. true when the result holds no
  // letter or other foreign character; text then holds it (at most 259 bytes). On false, text
  // holds the substituted text as far as it was built.
  [[nodiscard]] bool SubstituteFieldExpression(std::string_view expression, std::string& text) const;
  // The amount of a field expression in minor units, truncated toward zero (1.999 with two
  // decimals is 199). errorText is empty on success; on failure (a result beyond the ceiling of
  // money among them) it holds the message and the amount is 0.
  long long EvaluateSimpleExpression(std::string_view expression, std::string& errorText) const;

 private:
  std::string ValueText(long long value) const;

  std::vector<KVFormField> fields_;  // the form's fields in form order
  int currencyDigits_;               // decimals of the business currency
  std::string decimalSymbol_;        // the decimal symbol of substituted values and the solver
};
