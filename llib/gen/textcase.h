// Text compared without regard to letter case, as references, header names, file extensions
// and button captions are matched. Only the ASCII letters A-Z and a-z are folded: every other
// byte, accented letters and UTF-8 sequences included, must match exactly, whatever the locale.
#pragma once

#include <string>
#include <string_view>

// true when a and b have the same length and the same bytes once ASCII letters are folded.
// LSameText("FA-12", "fa-12") is true; LSameText("É", "é") is false.
bool LSameText(std::string_view a, std::string_view b);

// true when text begins (ends) with affix, compared as LSameText does; an empty affix always
// matches.
bool LStartsWithText(std::string_view text, std::string_view prefix);
bool LEndsWithText(std::string_view text, std::string_view suffix);

// text with its ASCII capitals made small letters, every other byte as it was: the key under
// which texts equal to LSameText are grouped or looked up. LLowerText("FA-É") is "fa-É".
std::string LLowerText(std::string_view text);
