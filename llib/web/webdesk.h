// The one-time logon link of the desk. The person at the desk does not log on with a web
// account: `kontavo desk` writes a fresh random token into the file "desk-token" of the
// application folder (mode 0600, so only the same system user can read it) and opens the browser
// on "desk?token=...". The web server accepts that token once, within 60 seconds of its making,
// and only from a loopback address; the browser then holds a desk session, which has the
// rights of an administrator.
//
// File content: the token (32 hexadecimal digits, 128 bits), a blank, and the Unix time of its
// making, on one line. A new link replaces the previous one. Redeeming takes the file's
// exclusive lock and removes the file, so two requests racing with the same link cannot both
// succeed.
#pragma once

#include <ctime>
#include <string>
#include <string_view>

inline constexpr std::string_view kDeskTokenFileName = "desk-token";
inline constexpr std::size_t kDeskTokenBytes = 16;        // 128 bits
inline constexpr long long kDeskTokenLifetimeSeconds = 60;
inline constexpr std::string_view kDeskRoute = "desk";
// The session value that marks a desk session ("1").
inline constexpr std::string_view kDeskSessionValue = "desk";

// "<application folder>/desk-token".
std::string LWebDeskTokenPath();
// Makes a new token made at time now and writes it (mode 0600), replacing any earlier one.
// true with token set; false when the file cannot be written (token left empty).
[[nodiscard]] bool LWebDeskIssueToken(std::time_t now, std::string& token);
// true exactly once for the token written last, when it is presented within 60 seconds of its
// making; the file is then removed. A late token is refused and its file removed too; a wrong
// token is refused and leaves the file as it is.
[[nodiscard]] bool LWebDeskRedeemToken(std::string_view token, std::time_t now);
// true for an IPv4 address of the loopback network (127.0.0.0/8).
bool LWebIsLoopbackAddress(const unsigned char address[4]);
