#include "invoice/shared/templatereportformdata.h"

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "llib/gen/locale.h"
#include "llib/gen/moneybounds.h"
#include "llib/gen/text.h"

namespace {

constexpr std::string_view kErrorEmpty = "Expression vide ou non valide.";
constexpr std::string_view kErrorCharacters = "Symboles ou lettres non pris en charge présents dans l'expression.";
constexpr std::string_view kErrorParentheses =
    "Les parenthèses ne sont pas équilibrées ou elles sont utilisées de façon incorrrecte.";
constexpr std::string_view kErrorInvalid = "Expression non valide.";
constexpr std::string_view kErrorDivisionByZero = "Expression non valide. Division par 0.";
constexpr std::string_view kErrorBeyondCeiling = "Expression non valide. Résultat au-delà du plafond des montants.";
constexpr std::string_view kErrorSubstitution =
    "Impossile de substituer l'expression. Détection de nom(s) de champ non reconnu(s).";

bool IsOperator(char c) { return c == '+' || c == '-' || c == '*' || c == '/'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

// The decimal point strtod reads and printf writes under the current LC_NUMERIC.
std::string_view CLibraryDecimalPoint() {
  const char* point = std::localeconv()->decimal_point;
  return point != nullptr && *point != '\0' ? point : ".";
}

// 10 to the power digits; the digits of a currency are few, and are held to what fits.
long long PowerOfTen(int digits) {
  long long power = 1;
  for (int i = 0; i < digits && i < 18; ++i) power *= 10;
  return power;
}

}  // namespace

// ---- Solver -----------------------------------------------------------------------------------

SimpleExpressionSolver::SimpleExpressionSolver(const char* expression) : decimalSymbol_(LocaleDecimalSymbol()) {
  Solve(expression, expression != nullptr ? std::strlen(expression) : 0);
}

SimpleExpressionSolver::SimpleExpressionSolver(std::string_view expression)
    : SimpleExpressionSolver(expression, LocaleDecimalSymbol()) {}

SimpleExpressionSolver::SimpleExpressionSolver(std::string_view expression, std::string_view decimalSymbol)
    : decimalSymbol_(decimalSymbol) {
  Solve(expression.data(), expression.size());
}

void SimpleExpressionSolver::Solve(const char* expression, std::size_t length) {
  std::string_view text = expression != nullptr ? std::string_view(expression, length) : std::string_view();
  if (text.empty()) {
    error_ = kErrorEmpty;
  } else if (!IsValidExpression(text, false, decimalSymbol_)) {
    error_ = kErrorCharacters;
  } else if (!IsBalancedParentheses(text)) {
    error_ = kErrorParentheses;
  } else {
    std::string withoutBlanks;
    withoutBlanks.reserve(text.size());
    for (char c : text)
      if (c != ' ') withoutBlanks.push_back(c);
    result_ = Parse(withoutBlanks);
  }
  if (!error_.empty()) result_ = 0;
}

std::string SimpleExpressionSolver::LocaleDecimalSymbol() { return LGetSystemLocale().decimalSymbol; }

bool SimpleExpressionSolver::IsValidExpression(std::string_view text, bool allowLetters,
                                               std::string_view decimalSymbol) {
  for (std::size_t i = 0; i < text.size();) {
    char c = text[i];
    if (c == ' ' || c == '(' || c == ')' || IsOperator(c) || IsDigit(c) || (allowLetters && IsLetter(c))) {
      ++i;
    } else if (!decimalSymbol.empty() && text.substr(i).starts_with(decimalSymbol)) {
      i += decimalSymbol.size();
    } else {
      return false;
    }
  }
  return true;
}

bool SimpleExpressionSolver::IsBalancedParentheses(std::string_view text) {
  long depth = 0;
  for (char c : text) {
    if (c == '(') ++depth;
    else if (c == ')' && --depth < 0) return false;
  }
  return depth == 0;
}

std::size_t SimpleExpressionSolver::ReadDoubleFromString(std::string_view text, double& value,
                                                         std::string_view decimalSymbol) {
  std::size_t position = 0;
  std::string number;
  if (!text.empty() && (text[0] == '+' || text[0] == '-')) {
    if (text[0] == '-') number.push_back('-');
    position = 1;
  }
  bool collected = false, seenDecimal = false;
  while (position < text.size()) {
    if (IsDigit(text[position])) {
      number.push_back(text[position++]);
    } else if (!seenDecimal && !decimalSymbol.empty() && text.substr(position).starts_with(decimalSymbol)) {
      number.append(CLibraryDecimalPoint());
      position += decimalSymbol.size();
      seenDecimal = true;
    } else {
      break;
    }
    collected = true;
  }
  value = collected ? std::strtod(number.c_str(), nullptr) : 0;
  return position;
}

double SimpleExpressionSolver::Parse(std::string_view text) {
  if (text.empty() || !error_.empty()) return 0;
  if (nesting_ > kMaxNesting) {
    error_ = kErrorInvalid;
    return 0;
  }
  std::vector<OperatorOperandPair> pairs;
  char pending = 0;  // the operator waiting for its operand; 0 for none
  std::size_t i = 0;
  while (i < text.size()) {
    char c = text[i];
    if (c == '(') {
      std::size_t close = i + 1;
      for (int depth = 1; close < text.size(); ++close) {
        if (text[close] == '(') ++depth;
        else if (text[close] == ')' && --depth == 0) break;
      }
      ++nesting_;
      double value = Parse(text.substr(i + 1, close - i - 1));
      --nesting_;
      if (!error_.empty()) return value;
      pairs.push_back({pending != 0 ? pending : '+', value});
      pending = 0;
      i = close + 1;
      continue;
    }
    if (pending == 0 && IsOperator(c)) {
      if (i + 1 < text.size()) pending = c;  // an operator ending the text has nothing to act on
      ++i;
      continue;
    }
    // An operator met while one is pending is the sign of the number after it: 2*-3.
    double number = 0;
    std::size_t consumed = ReadDoubleFromString(text.substr(i), number, decimalSymbol_);
    if (consumed == 0) {
      ++i;
      continue;
    }
    pairs.push_back({pending != 0 ? pending : '+', number});
    pending = 0;
    i += consumed;
  }
  return Calculate(std::move(pairs));
}

double SimpleExpressionSolver::Calculate(std::vector<OperatorOperandPair> pairs) {
  if (pairs.empty() || (pairs[0].op != '+' && pairs[0].op != '-')) {
    error_ = kErrorInvalid;
    return 0;
  }
  // First pass: each '*' or '/' acts on the nearest kept pair before it, which is the last one
  // kept so far; only '+' and '-' pairs stay.
  std::size_t kept = 0;
  for (const OperatorOperandPair& pair : pairs) {
    if (pair.op == '*') {
      pairs[kept - 1].operand *= pair.operand;
    } else if (pair.op == '/') {
      if (pair.operand == 0) {
        error_ = kErrorDivisionByZero;
        return 0;
      }
      pairs[kept - 1].operand /= pair.operand;
    } else {
      pairs[kept++] = pair;
    }
  }
  double sum = 0;
  for (std::size_t i = 0; i < kept; ++i) sum += pairs[i].op == '-' ? -pairs[i].operand : pairs[i].operand;
  return sum;
}

// ---- Form fields ------------------------------------------------------------------------------

KVTemplateReportFormManager::KVTemplateReportFormManager(int currencyDigits, std::string decimalSymbol)
    : currencyDigits_(currencyDigits < 0 ? 0 : currencyDigits), decimalSymbol_(std::move(decimalSymbol)) {}

void KVTemplateReportFormManager::SetFieldValue(std::string_view name, long long value) {
  for (KVFormField& field : fields_) {
    if (field.name == name) {
      field.value = value;
      return;
    }
  }
  fields_.push_back({std::string(name), value});
}

const KVFormField* KVTemplateReportFormManager::FindField(std::string_view name) const {
  for (const KVFormField& field : fields_)
    if (field.name == name) return &field;
  return nullptr;
}

std::string KVTemplateReportFormManager::ValueText(long long value) const {
  if (value == 0) return "0";
  double units = static_cast<double>(value);
  if (currencyDigits_ > 0) {
    long long power = PowerOfTen(currencyDigits_);
    units = static_cast<double>(value / power) + static_cast<double>(value % power) / static_cast<double>(power);
  }
  char printed[400];
  std::snprintf(printed, sizeof printed, "%f", units);
  std::string text = printed;
  std::string_view point = CLibraryDecimalPoint();
  if (std::size_t at = text.find(point); at != std::string::npos) text.replace(at, point.size(), decimalSymbol_);
  return text;
}

bool KVTemplateReportFormManager::SubstituteFieldExpression(std::string_view expression, std::string& text) const {
  text.clear();
  for (std::size_t i = 0; i < expression.size();) {
    if (!IsLetter(expression[i])) {
      text.push_back(expression[i++]);
      continue;
    }
    std::size_t end = i + 1;
    while (end < expression.size() && (IsLetter(expression[end]) || IsDigit(expression[end]))) ++end;
    std::string_view name = expression.substr(i, end - i);
    if (const KVFormField* field = FindField(name)) text += ValueText(field->value);
    else text += name;
    i = end;
  }
  bool valid = SimpleExpressionSolver::IsValidExpression(text, false, decimalSymbol_);
  text.resize(std::min(text.size(), kMaxTextBytes));
  return valid;
}

long long KVTemplateReportFormManager::EvaluateSimpleExpression(std::string_view expression,
                                                               std::string& errorText) const {
  std::string text;
  if (!SubstituteFieldExpression(expression, text)) {
    errorText = kErrorSubstitution;
    return 0;
  }
  SimpleExpressionSolver solver(text, decimalSymbol_);
  if (!solver.GetError().empty()) {
    errorText = solver.GetError();
    return 0;
  }
  // A result beyond the ceiling of money would print a figure no document can hold: refused as
  // a typed amount is.
  double amount = solver.GetResult() * static_cast<double>(PowerOfTen(currencyDigits_));
  if (!(std::fabs(amount) < static_cast<double>(kMoneyMaxMinorUnits) + 1.0)) {
    errorText = kErrorBeyondCeiling;
    return 0;
  }
  errorText.clear();
  return static_cast<long long>(amount);  // toward zero
}
