// Numbers stored as text. Records keep every number as text: integers as "%d" or "%lld", real
// numbers through ftotl, which always writes "." as the decimal point whatever the locale, so a
// record file reads the same on every machine.
#pragma once

#include <string>
#include <string_view>

// "%.6lf" of value with the locale's decimal comma (or UTF-8 middle dot) turned into ".".
//   ftotl(12.5) == "12.500000", ftotl(-0.5) == "-0.500000"
std::string ftotl(double value);

// Reads what ftotl writes, plain integers, leading blanks and an exponent; "," is accepted as
// decimal point too. Text that holds no number reads as 0.
double ttofl(std::string_view text);

// Decimal text to 64-bit integer (leading blanks and a sign allowed; stops at the first
// non-digit; no digits read as 0; overflow saturates).
long long LTextToInt64(std::string_view text);

// strtol(text, base 10) semantics on a view, saturating to int.
int LTextToInt(std::string_view text);
