// ISO-8859-15 ("Latin-9"), the single-byte encoding that French administrations still ask for in
// the files they receive: Latin-1 with the euro sign, Œ œ Š š Ž ž and Ÿ in place of eight rarely
// used signs. Text inside the system is UTF-8; these two functions cross the border.
//
// A character that Latin-9 lacks is never dropped: it becomes the replacement byte '?' and is
// counted, so that the caller can say how many characters were replaced.
#pragma once

#include <string>
#include <string_view>

// Appends the Latin-9 form of the UTF-8 text to out. Characters without a Latin-9 form, and
// bytes that are not valid UTF-8, are written as '?'; returns how many were replaced.
std::size_t LUtf8ToLatin9(std::string_view utf8, std::string& out);

// Appends the UTF-8 form of Latin-9 bytes to out (every byte has one).
void LLatin9ToUtf8(std::string_view latin9, std::string& out);

// true when text is well-formed UTF-8 (ASCII included).
bool LIsValidUtf8(std::string_view text);
