// The writer's formatted output of the web pages. Besides printf's conversions it knows two of
// its own, both taking a const char* argument:
//   %H  the text HTML-escaped (& < > " ' become entities), for element text and attribute values;
//   %U  the text percent-encoded (the one encoding of parameters and record files).
// And the escapes that page scripts need: a text inside a single-quoted JavaScript string.
//
//     LWebFormat("<a href='userprop?id=%U'>%H</a>", id, name)
#pragma once

#include <cstdarg>
#include <string>
#include <string_view>

#include "llib/gen/reporttable.h"

// Formats into a new text. An unknown conversion is written as it stands.
std::string LWebFormat(const char* format, ...);
std::string LWebFormatV(const char* format, va_list args);

// LHtmlEscape (& < > " ' as entities) is the one of the report tables.

// For the inside of a single- or double-quoted JavaScript string within a script element:
// backslash, both quotes, line ends and every control byte are escaped, and '<' and '>' are
// written as \x3C and \x3E so that the text can never close the script element.
std::string LJScriptEscape(std::string_view text);
