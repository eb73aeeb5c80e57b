#include "llib/net/oauth.h"

#include <cctype>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "llib/gen/percent.h"
#include "llib/gen/trim.h"
#include "llib/gen/usersettings.h"

namespace {

constexpr std::string_view kSettingsGroup = "HTTPS";
constexpr std::size_t kCodeLimit = 259;

int Exchange(LProcessInterface& process, LHttpRequest& request, std::string_view headers, std::string& response,
             int& httpStatus) {
  request.headers = std::string(headers);
  if (!request.headers.empty() && !request.headers.ends_with("\r\n")) request.headers += "\r\n";
  LHttpOptions options = LOAuthHttpOptions();
  options.stopTest = [&process] { return process.IsToStop(); };
  LHttpResponse answer;
  std::string error;
  response.clear();
  httpStatus = 0;
  LNetStatus status = LHttpExchange(request, options, answer, error);
  if (status == LNetStatus::kStopped) return kOAuthCancelled;
  if (status != LNetStatus::kOk) {
    process.SetError(error);
    return kOAuthFailed;
  }
  response = std::move(answer.body);
  httpStatus = answer.status;
  return kOAuthResponse;
}

}  // namespace

LHttpOptions LOAuthHttpOptions() {
  LHttpOptions options;
  options.caFile = LUserSettingGetString(kSettingsGroup, "CAFile");
  long seconds = std::atol(LUserSettingGetString(kSettingsGroup, "TimeoutSeconds", "60").c_str());
  if (seconds > 0 && seconds < 3600) options.timeoutMs = static_cast<unsigned>(seconds * 1000);
  return options;
}

int LOAuthHTTPGet(LProcessInterface& process, std::string_view url, std::string_view query, std::string_view headers,
                  std::string& response, int& httpStatus) {
  LHttpRequest request;
  request.method = "GET";
  request.url = std::string(url);
  if (!query.empty()) request.url += "?" + std::string(query);
  return Exchange(process, request, headers, response, httpStatus);
}

int LOAuthHTTPPost(LProcessInterface& process, std::string_view url, std::string_view body, std::string_view headers,
                   std::string& response, int& httpStatus, std::string_view contentType) {
  LHttpRequest request;
  request.method = "POST";
  request.url = std::string(url);
  request.body = std::string(body);
  request.contentType = std::string(contentType);
  return Exchange(process, request, headers, response, httpStatus);
}

std::string OAuthEncodeCode(std::string_view code) {
  std::string encoded = LPercentEncode(code);
  if (encoded.size() > kCodeLimit) encoded.resize(kCodeLimit);
  return encoded;
}

std::string OAuthParamsParseFromRedirectURL(std::string_view text) {
  text = LTrim(text, kTrimSpaces);
  constexpr std::string_view kTitle = "Success code=";
  if (text.starts_with(kTitle)) return std::string(LTrim(text.substr(kTitle.size()), kTrimSpaces));
  std::size_t query = text.find('?');
  if (query != std::string_view::npos) {
    std::string code;
    LParseHTTPString(text.substr(query + 1), [&code](std::string&& name, std::string&& value) {
      if (name == "code" && code.empty()) code = std::move(value);
    });
    if (!code.empty()) return code;
  }
  return std::string(text);
}

bool OAuthAccessTokenRequest(LProcessInterface& process, const LOAuthClient& client, int* httpStatus) {
  if (httpStatus) *httpStatus = 0;
  std::string code, access, refresh;
  LUserSettingGetPassword(client.passwordSection, "AuthorizationCode", code);
  LUserSettingGetPassword(client.passwordSection, "AccessToken", access);
  LUserSettingGetPassword(client.passwordSection, "RefreshToken", refresh);

  std::string body = "client_secret=" + client.clientSecret + "&client_id=" + client.clientId;
  if (!access.empty() && !refresh.empty()) {
    body += "&grant_type=refresh_token&refresh_token=" + refresh;
  } else if (!code.empty()) {
    body += "&grant_type=authorization_code&redirect_uri=" + client.redirectUri + "&code=" + OAuthEncodeCode(code);
  } else {
    process.SetError("no authorization code");
    return false;
  }

  std::string response;
  int status = 0;
  int result =
      LOAuthHTTPPost(process, client.tokenUrl, body, {}, response, status, "application/x-www-form-urlencoded");
  if (httpStatus) *httpStatus = status;
  if (result == kOAuthCancelled) process.SetError("cancelled");
  if (result != kOAuthResponse) return false;
  nlohmann::json json = nlohmann::json::parse(response, nullptr, false);
  if (!json.is_object() || !json.contains("access_token") || !json.contains("refresh_token") ||
      !json["access_token"].is_string() || !json["refresh_token"].is_string() ||
      json["access_token"].get_ref<const std::string&>().empty() ||
      json["refresh_token"].get_ref<const std::string&>().empty()) {
    process.SetError("the token endpoint answered " + std::to_string(status) + " without tokens");
    return false;
  }
  if (!LUserSettingSetPassword(client.passwordSection, "AccessToken", json["access_token"].get<std::string>()) ||
      !LUserSettingSetPassword(client.passwordSection, "RefreshToken", json["refresh_token"].get<std::string>())) {
    process.SetError("Impossible d'enregistrer les jetons d'accès.");
    return false;
  }
  return true;
}
