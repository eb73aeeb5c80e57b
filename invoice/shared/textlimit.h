// The longest text a user may give one field of a document or a record: a line's description,
// the notes, a customer's name or address. Room for any of them, and a length a printed page lays
// out at once (a description of 100 KB took seconds of drawing to print). Texts are counted in
// characters, an accented letter as one.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

inline constexpr std::size_t kTypedTextMaxChars = 4000;

// Whether text holds more than kTypedTextMaxChars characters; count receives how many it holds.
bool LTypedTextIsTooLong(std::string_view text, std::size_t& count);
// The end of the refusal of a text of count characters: " : 102400 caractères (4000 au plus).".
std::string LTypedTextTooLongEnd(std::size_t count);
