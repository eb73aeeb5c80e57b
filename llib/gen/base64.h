// Base64 as mail and HTTP carry it (the standard alphabet "A-Z a-z 0-9 + /", "=" padding): the
// user name and password of an SMTP logon, attachments of a mail, and the encoded words of mail
// headers. Encoding only: nothing in the system reads base64 sent by others.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Bytes of base64 text that encode size bytes (padding included).
constexpr std::size_t LBase64EncodedSize(std::size_t size) { return (size + 2) / 3 * 4; }

// Appends the base64 text of data to out, in one line, padded with "=".
void LBase64EncodeAppend(std::string_view data, std::string& out);
std::string LBase64Encode(std::string_view data);
