// What the web server asks of the e-mail layer: checking an e-mail address the way the mail
// layer checks it, and handing a mail that no user waits for (a new password) to the background
// sender. The web pages call only these four functions, so that they do not depend on how mail
// is sent.
//
// Until the e-mail layer (llib/net) is part of the build, the address check follows its rules
// here and the sender only logs that the mail could not be sent.
#pragma once

#include <functional>
#include <string>
#include <string_view>

// An address list as the mail layer accepts it: one or more addresses separated by ',' (blanks
// allowed after each address only when a ',' follows); each address at most 320 bytes, a local
// part of 1 to 64 atext characters and dots (no leading, trailing or double dot), '@', and a
// domain of 1 to 255 letters, digits, '-' and '.', with a dot, no double dot, beginning and
// ending with a letter or digit.
bool LWebMailValidateAddress(std::string_view addresses);

// Queues a plain-text mail for the background sender.
void LWebMailSendBackground(std::string_view to, std::string_view subject, std::string_view text);
// Ask the background sender to stop, then wait for it (the service engine at shutdown).
void LWebMailStopSoon();
void LWebMailStopNow();

// Replaces the sender (tests); null restores the default.
using LWebMailSender = std::function<void(std::string_view to, std::string_view subject, std::string_view text)>;
void LWebMailSetSender(LWebMailSender sender);
