// ISO-8859-15 ("Latin-9"), the single-byte encoding that French administrations still ask for in
// the files they receive: Latin-1 with the euro sign, Œ œ Š š Ž ž and Ÿ in place of eight rarely
// used signs. Text inside the system is UTF-8; files written for such an administration cross
// the border here.
//
// A character that Latin-9 lacks is never dropped: it becomes the replacement byte '?' and is
// counted, so that the caller can say how many characters were replaced.
#pragma once

#include <string>
#include <string_view>

// Appends the Latin-9 form of the UTF-8 text to out. Characters without a Latin-9 form, and
// bytes that are not valid UTF-8, are written as '?'; returns how many were replaced.
std::size_t LUtf8ToLatin9(std::string_view utf8, std::string& out);
