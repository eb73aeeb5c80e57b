// Questions that the desktop asks in its dialogs, on the command line. They are asked when
// standard input is a terminal (the prompt goes to standard error, so that standard output
// keeps only the command's result); without a terminal a confirmation is refused with its
// question's text, unless --yes answered it beforehand.
#pragma once

#include <string>
#include <string_view>

class LCliContext;

// true when questions can be asked: standard input is a terminal.
bool LCliCanAsk();

// A confirmation with two buttons. true (go ahead) when --yes was given or the user answers the
// yes button ("o", "oui" or its text); false otherwise. Without a terminal and without --yes the
// question's text is written to the error output and false returned.
bool LCliConfirm(LCliContext& context, std::string_view title, std::string_view question,
                 std::string_view yesButton, std::string_view noButton);

// Shows "prompt : " and reads one line typed at the terminal. false at the end of the input.
bool LCliAskLine(LCliContext& context, std::string_view prompt, std::string& answer);
