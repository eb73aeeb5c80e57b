// Fuzz target: template report expressions over arbitrary text. Users type these into report
// forms, so no text may crash the solver, recurse without bound or give anything but one of its
// messages; a failure always gives 0, and the form manager's amount follows from the solver's
// value by truncation. The first bytes choose the field values and the decimal symbol.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "invoice/shared/templatereportformdata.h"

namespace {

void Check(bool condition) {
  if (!condition) __builtin_trap();
}

bool IsSolverMessage(const std::string& error) {
  for (const char* message :
       {"Expression vide ou non valide.", "Symboles ou lettres non pris en charge présents dans l'expression.",
        "Les parenthèses ne sont pas équilibrées ou elles sont utilisées de façon incorrrecte.",
        "Expression non valide.", "Expression non valide. Division par 0."})
    if (error == message) return true;
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 9) return 0;
  long long value = 0;
  std::memcpy(&value, data, sizeof value);
  const char* symbol = (data[8] & 1) != 0 ? "," : ".";
  int digits = data[8] >> 6;  // 0 to 3
  std::string_view expression(reinterpret_cast<const char*>(data) + 9, size - 9);

  SimpleExpressionSolver solver(expression, symbol);
  const std::string& error = solver.GetError();
  Check(error.empty() || IsSolverMessage(error));
  if (!error.empty()) Check(solver.GetResult() == 0);
  bool valid = SimpleExpressionSolver::IsValidExpression(expression, false, symbol);
  if (!expression.empty() && !valid) Check(error == "Symboles ou lettres non pris en charge présents dans l'expression.");
  if (valid && !SimpleExpressionSolver::IsBalancedParentheses(expression) && !expression.empty())
    Check(error == "Les parenthèses ne sont pas équilibrées ou elles sont utilisées de façon incorrrecte.");

  KVTemplateReportFormManager form(digits, symbol);
  form.SetFieldValue("A", value);
  form.SetFieldValue("Zero", 0);
  form.SetFieldValue("B2", -value / 3);
  std::string substituted, formError;
  bool substitutedWell = form.SubstituteFieldExpression(expression, substituted);
  Check(substituted.size() <= 259);
  long long amount = form.EvaluateSimpleExpression(expression, formError);
  if (!formError.empty()) Check(amount == 0);
  if (!substitutedWell) {
    Check(formError == "Impossile de substituer l'expression. Détection de nom(s) de champ non reconnu(s).");
  } else {
    SimpleExpressionSolver again(substituted, symbol);
    Check(formError == again.GetError());
    double scaled = again.GetResult() * std::pow(10.0, digits);
    if (formError.empty() && std::isfinite(scaled) && std::fabs(scaled) < 9e18)
      Check(amount == static_cast<long long>(scaled));
  }
  return 0;
}
