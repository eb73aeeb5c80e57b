// The message that refuses a date the user typed, worded the same on every page and command.
#pragma once

#include <string>
#include <string_view>

// "Date invalide : <typed>."
std::string LInvalidDateMessage(std::string_view typed);
