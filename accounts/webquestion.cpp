#include "accounts/webquestion.h"

#include <cstdint>
#include <cstdio>

#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/webpage.h"

std::string LWebQuestionParam(const std::string& questionText) {
  // FNV-1a: a short stable name for the question, so an answer fits only the question asked.
  std::uint64_t hash = 1469598103934665603ULL;
  for (unsigned char c : questionText) hash = (hash ^ c) * 1099511628211ULL;
  char name[24];
  std::snprintf(name, sizeof name, "q%016llx", static_cast<unsigned long long>(hash));
  return name;
}

LWebAsker::LWebAsker(const LWebletForm& form) : form_(form) {}

LAnswer LWebAsker::Ask(const LQuestion& question) {
  std::string param = LWebQuestionParam(question.text);
  if (form_.GetParam(param) == "1") return {true, form_.GetParam(param + "d") == "1"};
  if (!hasPending_) {
    hasPending_ = true;
    pending_ = question;
  }
  return {false, false};
}

std::string LWebAsker::PendingParam() const { return LWebQuestionParam(pending_.text); }

std::string LWebAsker::AskScript(const std::string& pressed) const {
  return LWebFormat("AskQuestion('%s', '%s', '%s', '%s', '%s', %s, '%s');\n", PendingParam().c_str(),
                    LJScriptEscape(pending_.text).c_str(), LJScriptEscape(pending_.title).c_str(),
                    LJScriptEscape(pending_.confirm).c_str(), LJScriptEscape(pending_.cancel).c_str(),
                    pending_.offersDontShowAgain ? "true" : "false", LJScriptEscape(pressed).c_str());
}

void LWebAsker::WriteQuestionPage(LWebletForm& form, const std::string& cancelTarget) const {
  WLStandardHeader(form, {}, pending_.title.empty() ? "Question" : pending_.title, "", "");
  std::string route = form.scriptName;
  form.Write(LWebFormat("<div class=contenttable><form id=questionform action='%H' method=post><p class=question>",
                        route.c_str()));
  std::string text = LHtmlEscape(pending_.text);
  for (std::size_t at; (at = text.find('\n')) != std::string::npos;) text.replace(at, 1, "<br>");
  form.Write(text + "</p>");
  // The request comes back whole, with the answer added.
  for (const auto& [name, value] : form_.parameters)
    if (name != PendingParam() && name != PendingParam() + "d")
      form.Write(LWebFormat("<input type=hidden name='%H' value='%H'>", name.c_str(), value.c_str()));
  form.Write(LWebFormat("<input type=hidden name='%s' value='1'>", PendingParam().c_str()));
  if (pending_.offersDontShowAgain)
    form.Write(LWebFormat("<p><label><input type=checkbox name='%sd' value='1'>Ne plus afficher ce message</label></p>",
                          PendingParam().c_str()));
  form.Write(LWebFormat("<p><input type=submit id=questionconfirm value='%H'> <a href='%H' id=questioncancel "
                        "class=actionlink>%H</a></p></form></div>",
                        pending_.confirm.c_str(), cancelTarget.c_str(), pending_.cancel.c_str()));
  WLStandardFooter(form);
}
