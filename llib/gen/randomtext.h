// Random lower-case letters, for the generated passwords of web accounts and the letters of web
// session ids; random hexadecimal text for one-time tokens. The letters come from the system's random source (getrandom), so two processes
// started in the same second still get different texts.
#pragma once

#include <string>

// length random letters 'a' to 'z': each a random number modulo 26 added to 'a'.
std::string LStringGenerateRandomPassword(std::size_t length);
// nBytes random bytes as 2 * nBytes lower-case hexadecimal digits (a token of 8 * nBytes bits).
std::string LRandomHexText(std::size_t nBytes);
