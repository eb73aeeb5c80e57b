// The questions a posting asks its user before it goes ahead ("Voulez-vous vraiment ... ?").
// The business code states the question; whoever runs it answers: the desk asks on a terminal or
// takes --yes, a test or a worker answers from a script. Nothing is asked twice: code that must
// not go ahead without an answer stops when the answer is no.
#pragma once

#include <string>

struct LQuestion {
  std::string text;     // the question, word for word
  std::string title;    // the title of its window
  std::string confirm;  // the button that goes ahead ("Enregistrer", "Supprimer", ...)
  std::string cancel;   // the button that stops ("Annuler", "Non")
  bool offersDontShowAgain = false;  // carries "Ne plus afficher ce message"
};

struct LAnswer {
  bool confirmed = false;      // the confirm button was chosen
  bool dontShowAgain = false;  // "Ne plus afficher ce message" was ticked
};

class LAsker {
 public:
  virtual ~LAsker() = default;
  virtual LAnswer Ask(const LQuestion& question) = 0;
};

// Gives the same answer to every question and remembers the last one asked.
class LFixedAsker : public LAsker {
 public:
  explicit LFixedAsker(bool confirm, bool dontShowAgain = false) : answer_{confirm, dontShowAgain} {}
  LAnswer Ask(const LQuestion& question) override {
    lastQuestion = question;
    ++nAsked;
    return answer_;
  }
  LQuestion lastQuestion;  // the last question asked
  int nAsked = 0;          // how many were asked

 private:
  LAnswer answer_;
};
