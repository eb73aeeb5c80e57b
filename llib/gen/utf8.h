// UTF-8 text, and the text of older programs. Record files hold bytes: what this program writes is
// UTF-8, but records written by older programs hold Latin-1 or Windows-1252 ("Société" as the
// single byte E9 for "é"). LTextAsUtf8 keeps every valid UTF-8 character and reads every other
// byte as Windows-1252, so such text is shown as it was meant and output that must be UTF-8
// (JSON, HTML) never breaks on it.
#pragma once

#include <string>
#include <string_view>

// Appends the UTF-8 form of a code point to out; a surrogate or a value beyond U+10FFFF, which
// have none, as U+FFFD.
void LAppendUtf8(char32_t code, std::string& out);
// Length of the valid UTF-8 character at the start of text (1 to 4), 0 when it does not start
// with one (stray continuation byte, overlong form, surrogate, beyond U+10FFFF, cut short).
std::size_t LUtf8CharLength(std::string_view text);
// The characters of text as a terminal counts them: every byte that does not continue a character
// ("é" in UTF-8 is one, as is a Latin-1 byte).
std::size_t LUtf8CharCount(std::string_view text);
// true when the whole text is valid UTF-8.
bool LIsValidUtf8(std::string_view text);
// text with every byte that is not part of a valid UTF-8 character read as Windows-1252
// (E9 -> "é", 80 -> "€", 92 -> "’"); valid text comes back unchanged.
std::string LTextAsUtf8(std::string_view text);
// Every byte of bytes read as Windows-1252, valid UTF-8 or not: for a file known to be written so.
std::string LWindows1252ToUtf8(std::string_view bytes);
// text in capitals, as printed titles show it: ASCII letters, the accented letters of Latin-1
// ("é" -> "É", "ç" -> "Ç") and "œ", "ÿ"; every other character, and bytes that are not UTF-8,
// are kept as they are.
std::string LUtf8ToUpper(std::string_view text);
