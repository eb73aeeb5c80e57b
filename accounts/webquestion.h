// The questions of the business routines (accounts/question.h) asked in the browser. A routine
// runs with an LWebAsker: a question the request already carries the answer to is answered so;
// any other is kept as pending and answered "no", so the routine stops without changing anything.
// The page then asks it (in a box over the page, with the question's title, buttons and "Ne plus
// afficher ce message" when it offers it) and, when the user confirms, sends the same request
// again carrying the answer: the routine runs anew and goes past the question.
//
// The answer travels as the parameter "q" followed by a hash of the question's text ("1" for
// confirmed), and that name followed by "d" for "Ne plus afficher ce message".
#pragma once

#include <string>

#include "accounts/question.h"

class LWebletForm;

class LWebAsker : public LAsker {
 public:
  explicit LWebAsker(const LWebletForm& form);
  LAnswer Ask(const LQuestion& question) override;

  bool HasPending() const { return hasPending_; }
  const LQuestion& Pending() const { return pending_; }
  // The parameter that carries the answer to the pending question.
  std::string PendingParam() const;

  // Script of a dialog's button press that asks the pending question; pressed: the button's
  // text, pressed again when the user confirms.
  std::string AskScript(const std::string& pressed) const;
  // A page that asks the pending question of an action route (a delete): its buttons send the
  // same request again with the answer, or go back to cancelTarget.
  void WriteQuestionPage(LWebletForm& form, const std::string& cancelTarget) const;

 private:
  const LWebletForm& form_;
  bool hasPending_ = false;
  LQuestion pending_;
};

// The parameter name of a question's answer.
std::string LWebQuestionParam(const std::string& questionText);
