// Questions that the desktop asks in its dialogs, on the command line: the one way every command
// asks. They are asked when standard input is a terminal (the prompt goes to the context's error
// stream, so that standard output keeps only the command's result); without a terminal a
// confirmation is refused with its question's text, unless --yes answered it beforehand.
//
//     if (!LCliConfirm(context, "Confirmer la suppression", question, "Oui, supprimer", "Annuler"))
//       return kExitFailed;  // refused: the question (no terminal) or nothing (answered no)
#pragma once

#include <string>
#include <string_view>

class LCliContext;

// true when questions can be asked: standard input is a terminal.
bool LCliCanAsk();

// A confirmation with two buttons: shows title and question, then "yesButton (o) / noButton (n) : ".
// true (go ahead) when --yes was given or the user answers "o", "oui" or the yes button's text
// (any case); false for any other answer or the end of the input. Without a terminal and
// without --yes the question's text is written to the error output and false returned.
bool LCliConfirm(LCliContext& context, std::string_view title, std::string_view question,
                 std::string_view yesButton, std::string_view noButton);

// Shows "prompt : " and reads one line from standard input, trailing blanks removed. false at the
// end of the input (Ctrl-D). Callers test LCliCanAsk first: without a terminal nobody answers.
bool LCliAskLine(LCliContext& context, std::string_view prompt, std::string& answer);
