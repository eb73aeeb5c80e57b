// Facts about the user and the machine that business code needs.
#pragma once

#include <string>

// The name written as the user of a posting: $LOGNAME, else $USER, else "".
std::string LGetPostingUserName();
// True when fd is a terminal (questions can be asked there).
bool LIsTerminal(int fd);
std::string LGetHostName();
