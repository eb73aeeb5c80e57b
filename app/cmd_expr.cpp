// kontavo expr EXPRESSION [NAME=CENTS]...: evaluates a template report expression. Without
// fields the expression goes straight to the solver and its value is printed; with fields it
// is a field expression of a form holding those fields, and its amount is printed in currency
// units (in cents with --json).
#include <charconv>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "invoice/shared/templatereportformdata.h"
#include "invoice/shared/profile.h"
#include "llib/gen/money.h"
#include "llib/gen/jsontext.h"

namespace {

// "NAME=CENTS" with CENTS a whole number of minor units; false for anything else.
bool ParseField(std::string_view word, std::string& name, long long& cents) {
  std::size_t equals = word.find('=');
  if (equals == std::string_view::npos || equals == 0) return false;
  name = std::string(word.substr(0, equals));
  std::string_view number = word.substr(equals + 1);
  const char* end = number.data() + number.size();
  auto [stop, problem] = std::from_chars(number.data(), end, cents);
  return !number.empty() && problem == std::errc() && stop == end;
}

int Solve(LCliContext& context, const std::string& expression) {
  SimpleExpressionSolver solver(expression);
  if (!solver.GetError().empty()) return context.Fail(solver.GetError());
  double result = solver.GetResult() + 0.0;  // no "-0"
  if (context.json) {
    context.out << LJsonDump(nlohmann::json({{"result", result}})) << "\n";
  } else {
    char text[64];
    std::snprintf(text, sizeof text, "%.15g", result);
    context.out << text << "\n";
  }
  return kExitOk;
}

}  // namespace

int LCmdExpr(LCliContext& context, LCliArgs& args) {
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 1)) return kExitUsage;
  if (words.size() == 1) return Solve(context, words[0]);

  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  KVTemplateReportFormManager form(profile->GetCurrencyDigits());
  for (std::size_t i = 1; i < words.size(); ++i) {
    std::string name;
    long long cents = 0;
    if (!ParseField(words[i], name, cents)) return context.Usage("champ attendu sous la forme NOM=CENTIMES : " + words[i]);
    form.SetFieldValue(name, cents);
  }
  long long amount = form.EvaluateSimpleExpression(words[0], error);
  if (!error.empty()) return context.Fail(error);
  if (context.json) context.out << LJsonDump(nlohmann::json({{"amount", amount}})) << "\n";
  else context.out << LFormatAmountPlain(amount, profile->GetCurrencyDigits()) << "\n";
  return kExitOk;
}
