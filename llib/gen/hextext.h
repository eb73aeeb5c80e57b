// Bytes written as lower-case hexadecimal text, two digits a byte: the tokens of the desk link,
// the links of the audit trail and the keys of hashed passwords.
#pragma once

#include <string>
#include <string_view>

// "0a1b..." for the bytes of data (2 * data.size() characters).
std::string LHexText(std::string_view data);
