// The percent encoding of name/value texts ("HTTP strings"). One scheme serves record files,
// record file names, web parameters and session files:
//   - letters, digits and "!", "-", ".", "_", "~" are kept; every other byte, each byte of a
//     multi-byte UTF-8 character alone, becomes "%" and two upper-case hexadecimal digits;
//   - decoding reads "+" as a blank and "%XY" as the byte XY, a non-hexadecimal digit counting
//     as 0; a decoded NUL is dropped; a "%" with fewer than two characters after it, or a raw
//     NUL byte, ends the text.
// Encoding never writes "+", so a literal "+" is always stored as "%2B".
#pragma once

#include <functional>
#include <string>
#include <string_view>

// True for the bytes that the encoding keeps as they are.
bool LPercentIsKept(unsigned char byte);

// Appends the encoding of text to out.
void LPercentEncodeAppend(std::string_view text, std::string& out);
std::string LPercentEncode(std::string_view text);

// Decodes the whole of text (no "&" or "=" handling).
std::string LPercentDecode(std::string_view text);

// Walks the pairs of an HTTP string: name up to "=" or "&", value up to the next "&". Calls
// onPair for every pair in order, decoded, including pairs whose name decodes to empty (callers
// skip those). A pair without "=" has an empty value.
//   LParseHTTPString("a=1&b", fn)  ->  fn("a", "1"), fn("b", "")
void LParseHTTPString(std::string_view text,
                      const std::function<void(std::string&& name, std::string&& value)>& onPair);
