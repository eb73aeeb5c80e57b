// OAuth 2.0 calls of a desktop client: the HTTPS GET and POST that carry a bearer token, and the
// token request of the authorization-code grant with its refresh token.
//
// Connection settings are per user (usersettings.h, group "HTTPS"): "CAFile", an extra trusted
// certificate file (PEM) besides the system's roots, for a test server; "TimeoutSeconds", the
// limit of one exchange (default 60).
//
// Tokens live in the user's password store, in the section the client names: "AuthorizationCode",
// "AccessToken" and "RefreshToken".
#pragma once

#include <string>
#include <string_view>

#include "llib/gen/process.h"
#include "llib/net/http.h"

// Results of LOAuthHTTPGet and LOAuthHTTPPost.
inline constexpr int kOAuthFailed = 0;     // no answer: the error text is set on the process
inline constexpr int kOAuthCancelled = 1;  // the user cancelled through the progress interface
inline constexpr int kOAuthResponse = 2;   // an answer arrived (any status)

// The connection settings of the user (see above).
LHttpOptions LOAuthHttpOptions();

// GET url?query (query without "?"; empty: none) with the header lines (CRLF after each; a
// missing final CRLF is added). Delivers the answer's body and status.
int LOAuthHTTPGet(LProcessInterface& process, std::string_view url, std::string_view query, std::string_view headers,
                  std::string& response, int& httpStatus);
// POST body with its content type; otherwise as LOAuthHTTPGet.
int LOAuthHTTPPost(LProcessInterface& process, std::string_view url, std::string_view body, std::string_view headers,
                   std::string& response, int& httpStatus, std::string_view contentType);

// An OAuth client: where its tokens come from and where they are kept.
struct LOAuthClient {
  std::string tokenUrl;         // the token endpoint
  std::string clientId;
  std::string clientSecret;
  std::string redirectUri;      // as registered; sent as it is
  std::string passwordSection;  // the password-store section of the tokens
};

// The percent encoding of an authorization code in the token request: letters, digits and
// "!", "-", ".", "_", "~" kept (the "!" on purpose), every other byte "%XY"; cut at 259 characters.
std::string OAuthEncodeCode(std::string_view code);

// The code in what the authorization page handed back: the text after "Success code=" (the
// out-of-band page's title), the "code" parameter of a redirect address, or else the text itself;
// blanks around it removed. "" when nothing is left.
std::string OAuthParamsParseFromRedirectURL(std::string_view text);

// Gets new tokens. With both an access and a refresh token stored, the refresh-token grant;
// otherwise, with an authorization code stored, the authorization-code grant; with neither,
// false at once. true when the answer is JSON holding "access_token" and "refresh_token" (both
// then stored); false otherwise, stored tokens untouched, the process's error text set and
// httpStatus (when given) the answer's status (0 without one).
bool OAuthAccessTokenRequest(LProcessInterface& process, const LOAuthClient& client, int* httpStatus = nullptr);
