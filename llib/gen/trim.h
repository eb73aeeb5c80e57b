// Text without the blanks around it: what was typed in a form, read from a line of a file or
// taken from a header. Which bytes count as blanks depends on where the text comes from, so the
// caller names them; the sets below are the ones the program uses.
#pragma once

#include <string_view>

// Spaces, tabs and line ends: typed fields and lines of text files.
inline constexpr std::string_view kTrimBlanks = " \t\r\n";
// What isspace() calls a space: the blanks above, vertical tab and form feed.
inline constexpr std::string_view kTrimSpaces = " \t\n\v\f\r";

// text without its leading and trailing bytes found in blanks; empty when it has nothing else.
// A view into text: keep text alive while the result is used.
std::string_view LTrim(std::string_view text, std::string_view blanks = kTrimBlanks);

// text without its leading and trailing bytes 0 to 32 (the ASCII control characters and the
// space), as mail addresses, network addresses and browsers' form fields are read.
std::string_view LTrimControls(std::string_view text);
