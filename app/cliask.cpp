#include "app/cliask.h"

#include <cctype>
#include <iostream>

#include "app/cli.h"
#include "llib/gen/system.h"
#include "llib/gen/textcase.h"

namespace {

}  // namespace

bool LCliCanAsk() { return LIsTerminal(0); }

bool LCliAskLine(LCliContext& context, std::string_view prompt, std::string& answer) {
  context.err << prompt << " : " << std::flush;
  if (!std::getline(std::cin, answer)) {
    context.err << "\n";
    return false;
  }
  while (!answer.empty() && std::isspace(static_cast<unsigned char>(answer.back()))) answer.pop_back();
  return true;
}

bool LCliConfirm(LCliContext& context, std::string_view title, std::string_view question,
                 std::string_view yesButton, std::string_view noButton) {
  if (context.yes) return true;
  if (!LCliCanAsk()) {
    context.err << question << "\n";
    return false;
  }
  context.err << title << "\n" << question << "\n";
  std::string answer;
  if (!LCliAskLine(context, std::string(yesButton) + " (o) / " + std::string(noButton) + " (n)", answer)) return false;
  answer = LLowerText(answer);
  return answer == "o" || answer == "oui" || answer == LLowerText(yesButton);
}
