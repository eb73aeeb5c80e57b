#include "invoice/shared/mtdvat.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "invoice/shared/mtdfraudheaders.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/log.h"
#include "llib/gen/percent.h"
#include "llib/gen/usersettings.h"
#include "llib/gen/jsontext.h"

namespace {

// This application's registration with HMRC; compiled in and sent as form fields.
constexpr std::string_view kClientId = "Qz4kLmP8vRt2_WnY6hJd3sXa9BcE";
constexpr std::string_view kClientSecret = "d3b07384-5e1f-4c2a-9a7b-0f6e8d2c4b1a";
constexpr std::string_view kRedirectUri = "urn:ietf:wg:oauth:2.0:oob";

constexpr std::string_view kNotAuthorized = "Please authorize application to connect to HMRC";
constexpr std::string_view kCancelled = "User has cancelled the operation";
constexpr std::string_view kConnectFailed = "Failed to connect to HMRC";
constexpr std::string_view kNoVatNumber = "Please enter your VAT registration number in Options to proceed.";
constexpr std::string_view kAuthorizationFailed = "Authorization Failed";
constexpr std::string_view kObligationsFailed = "VAT Obligations Retrieval Failed";
constexpr std::string_view kSubmitFailed = "Failed Submission";
constexpr std::string_view kSubmitFailedText = "VAT Returns Submission Failed";
constexpr std::string_view kViewFailedText = "Viewing of VAT Return Failed";
constexpr std::string_view kViewFailed = "Viewing VAT Return Failed";
constexpr std::string_view kEmptyPeriodKey = "Empty period key";
// Beyond any box HMRC takes (their largest is 9,999,999,999,999.99).
constexpr double kLargestAmount = 1e14;
constexpr std::string_view kBadAnswer = "Unexpected answer from HMRC";

std::string AccessToken() {
  std::string token;
  LUserSettingGetPassword(kMTDPasswordSection, "AccessToken", token);
  return token;
}

std::string JsonText(const nlohmann::json& object, const char* name) {
  auto found = object.find(name);
  return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

// The service's message of an error answer, with the errors it wraps; "" when the body is none.
std::string ServiceMessage(std::string_view body) {
  LMTDError error;
  if (!ParseErrorResponse(body, error) || error.message.empty()) return {};
  std::string text = error.message;
  for (const auto& detail : error.details) text += "\n" + detail;
  return text;
}

}  // namespace

std::vector<std::unique_ptr<LVATObligation>> LVATObligationsLoad(LProfile& profile) {
  std::vector<std::unique_ptr<LVATObligation>> obligations;
  LFileStoreListBase list = profile.List(kVATObligationsList);
  std::vector<std::string> keys;
  LRecord walker;
  for (LFileStoreIteratorBase it(list, walker); walker.IsAttached(); it.Next(walker)) keys.push_back(walker.GetPrimaryKey());
  for (const auto& key : keys) {
    auto obligation = std::make_unique<LVATObligation>();
    if (list.Open(*obligation, key)) obligations.push_back(std::move(obligation));
  }
  std::sort(obligations.begin(), obligations.end(), [](const auto& a, const auto& b) {
    std::string startA = a->GetString("StartDate"), startB = b->GetString("StartDate");
    return startA != startB ? startA < startB : a->GetPrimaryKey() < b->GetPrimaryKey();
  });
  return obligations;
}

std::string FKVatReturnsToJson(const FKVatReturns& r) {
  auto text = [](const std::string& value) {
    return LJsonDump(nlohmann::json(value));
  };
  auto money = [](double value) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%f", value);
    return std::string(buffer);
  };
  return "{\"periodKey\":" + text(r.periodKey) + ",\"vatDueSales\":" + money(r.vatDueSales) +
         ",\"vatDueAcquisitions\":" + money(r.vatDueAcquisitions) + ",\"totalVatDue\":" + money(r.totalVatDue) +
         ",\"vatReclaimedCurrPeriod\":" + money(r.vatReclaimedCurrPeriod) + ",\"netVatDue\":" + money(r.netVatDue) +
         ",\"totalValueSalesExVAT\":" + std::to_string(r.totalValueSalesExVAT) +
         ",\"totalValuePurchasesExVAT\":" + std::to_string(r.totalValuePurchasesExVAT) +
         ",\"totalValueGoodsSuppliedExVAT\":" + std::to_string(r.totalValueGoodsSuppliedExVAT) +
         ",\"totalAcquisitionsExVAT\":" + std::to_string(r.totalAcquisitionsExVAT) + ",\"finalised\":true}";
}

bool FKVatReturnsFromJson(std::string_view text, FKVatReturns& r) {
  nlohmann::json json = nlohmann::json::parse(text, nullptr, false);
  if (!json.is_object() || !json.contains("periodKey") || !json["periodKey"].is_string()) return false;
  FKVatReturns read;
  read.periodKey = json["periodKey"].get<std::string>();
  for (auto [name, money] : {std::pair{"vatDueSales", &read.vatDueSales}, {"vatDueAcquisitions", &read.vatDueAcquisitions},
                             {"totalVatDue", &read.totalVatDue}, {"vatReclaimedCurrPeriod", &read.vatReclaimedCurrPeriod},
                             {"netVatDue", &read.netVatDue}}) {
    auto found = json.find(name);
    if (found == json.end() || !found->is_number()) return false;
    *money = found->get<double>();
    if (!(std::fabs(*money) < kLargestAmount)) return false;
  }
  for (auto [name, pounds] :
       {std::pair{"totalValueSalesExVAT", &read.totalValueSalesExVAT}, {"totalValuePurchasesExVAT", &read.totalValuePurchasesExVAT},
        {"totalValueGoodsSuppliedExVAT", &read.totalValueGoodsSuppliedExVAT},
        {"totalAcquisitionsExVAT", &read.totalAcquisitionsExVAT}}) {
    auto found = json.find(name);
    if (found == json.end() || !found->is_number()) return false;
    double value = found->get<double>();
    if (!(std::fabs(value) < kLargestAmount)) return false;
    *pounds = static_cast<long long>(value);
  }
  r = read;
  return true;
}

bool ParseErrorResponse(std::string_view body, LMTDError& error) {
  nlohmann::json json = nlohmann::json::parse(body, nullptr, false);
  if (!json.is_object() || !json.contains("code")) return false;
  error = LMTDError();
  error.code = JsonText(json, "code");
  error.message = JsonText(json, "message");
  auto wrapped = json.find("errors");
  if (wrapped != json.end() && wrapped->is_array()) {
    for (const auto& inner : *wrapped) {
      if (!inner.is_object()) continue;
      std::string code = JsonText(inner, "code"), message = JsonText(inner, "message");
      if (!code.empty() || !message.empty()) error.details.push_back(code + ": " + message);
    }
  }
  return !error.code.empty();
}

bool ReadVatObligations(LProfile& profile, std::string_view text) {
  nlohmann::json json = nlohmann::json::parse(text, nullptr, false);
  if (!json.is_object()) return false;
  auto obligations = json.find("obligations");
  if (obligations == json.end() || !obligations->is_array()) return false;
  for (const auto& element : *obligations)
    if (!element.is_object() || JsonText(element, "periodKey").empty()) return false;

  LFileStoreListBase list = profile.List(kVATObligationsList);
  std::vector<std::string> keys;
  LRecord walker;
  for (LFileStoreIteratorBase it(list, walker); walker.IsAttached(); it.Next(walker)) keys.push_back(walker.GetPrimaryKey());
  for (const auto& key : keys)
    if (!list.Delete(key)) return false;
  for (const auto& element : *obligations) {
    LVATObligation obligation;
    list.OpenAlways(obligation, JsonText(element, "periodKey"));
    obligation.SetString("StartDate", JsonText(element, "start"));
    obligation.SetString("EndDate", JsonText(element, "end"));
    obligation.SetString("DueDate", JsonText(element, "due"));
    obligation.SetString("Status", JsonText(element, "status"));
    obligation.SetString("ReceivedDate", JsonText(element, "received"));
    if (!obligation.Flush()) return false;
  }
  return true;
}

std::string FKMTDApiBaseUrl() {
  std::string url = LUserSettingGetString(kMTDSettingsGroup, "ApiBaseURL", kMTDSandboxApi);
  while (url.ends_with('/')) url.pop_back();
  return url;
}

std::string FKMTDAuthorizeUrl() {
  std::string api = FKMTDApiBaseUrl();
  std::string www = api == kMTDSandboxApi      ? "https://test-www.tax.service.gov.uk"
                    : api == kMTDProductionApi ? "https://www.tax.service.gov.uk"
                                               : api;
  return www + "/oauth/authorize?response_type=code&client_id=" + std::string(kClientId) +
         "&scope=read:vat+write:vat&redirect_uri=" + std::string(kRedirectUri);
}

LOAuthClient FKMTDOAuthClient() {
  LOAuthClient client;
  client.tokenUrl = FKMTDApiBaseUrl() + "/oauth/token";
  client.clientId = kClientId;
  client.clientSecret = kClientSecret;
  client.redirectUri = kRedirectUri;
  client.passwordSection = kMTDPasswordSection;
  return client;
}

FKMTDforVATDlg::FKMTDforVATDlg(LProfile& profile, LProcessInterface& process) : profile_(profile), process_(process) {
  LOptions options;
  options.OpenFrom(profile_);
  vrn_ = options.GetString(kVATRegistrationField);
}

void FKMTDforVATDlg::SetObligationsRange(std::string_view from, std::string_view to) {
  obligationsQuery_ = "from=" + LPercentEncode(from) + "&to=" + LPercentEncode(to);
}

bool FKMTDforVATDlg::Fail(std::string_view message, std::string_view caption) {
  alert_ = {std::string(message), std::string(caption)};
  return false;
}

bool FKMTDforVATDlg::HasVatNumber(std::string_view caption) {
  if (!vrn_.empty()) return true;
  return Fail(kNoVatNumber, caption);
}

int FKMTDforVATDlg::CallApi(Call call, const std::string& url, std::string_view query, std::string_view body,
                            bool retry, int& status, std::string& response, bool& refreshFailed) {
  std::string headers = "Accept: application/vnd.hmrc.1.0+json\r\nAuthorization: Bearer " + AccessToken() + "\r\n" +
                        FKMTDFraudPreventionHeaders();
  int result = call == Call::kGet ? LOAuthHTTPGet(process_, url, query, headers, response, status)
                                  : LOAuthHTTPPost(process_, url, body, headers, response, status, "application/json");
  if (result != kOAuthResponse || status != 401 || !retry) return result;
  LMTDError error;
  if (!ParseErrorResponse(response, error) || error.code != "INVALID_CREDENTIALS") return result;
  if (!OAuthAccessTokenRequest(process_, FKMTDOAuthClient())) {
    refreshFailed = true;
    return result;
  }
  return CallApi(call, url, query, body, false, status, response, refreshFailed);
}

bool FKMTDforVATDlg::RetrieveVatObligations(bool retry) {
  alert_ = {};
  if (!HasVatNumber(kObligationsFailed)) return false;
  if (AccessToken().empty()) return Fail(kNotAuthorized, kObligationsFailed);
  std::string url = FKMTDApiBaseUrl() + "/organisations/vat/" + LPercentEncode(vrn_) + "/obligations";
  int status = 0;
  std::string response;
  bool refreshFailed = false;
  int result = CallApi(Call::kGet, url, obligationsQuery_, {}, retry, status, response, refreshFailed);
  if (result == kOAuthCancelled) return Fail(kCancelled, kObligationsFailed);
  if (result != kOAuthResponse) return Fail(kConnectFailed, kObligationsFailed);
  if (refreshFailed) return Fail(kConnectFailed, kAuthorizationFailed);
  if (status < 200 || status > 299) {
    std::string message = ServiceMessage(response);
    return Fail(message.empty() ? std::string(kObligationsFailed) : message, kObligationsFailed);
  }
  if (!ReadVatObligations(profile_, response)) return Fail(kBadAnswer, kObligationsFailed);
  return true;
}

bool FKMTDforVATDlg::SubmitVatReturns(const FKVatReturns& vatReturn, std::string* receipt) {
  alert_ = {};
  if (!HasVatNumber(kSubmitFailed)) return false;
  if (AccessToken().empty()) return Fail(kNotAuthorized, kSubmitFailed);
  if (vatReturn.periodKey.empty()) return Fail(kEmptyPeriodKey, kSubmitFailed);
  std::string url = FKMTDApiBaseUrl() + "/organisations/vat/" + LPercentEncode(vrn_) + "/returns";
  int status = 0;
  std::string response;
  bool refreshFailed = false;
  int result = CallApi(Call::kPost, url, {}, FKVatReturnsToJson(vatReturn), true, status, response, refreshFailed);
  if (result == kOAuthCancelled) return Fail(kCancelled, kSubmitFailed);
  if (result != kOAuthResponse) return Fail(kConnectFailed, kSubmitFailed);
  if (refreshFailed) return Fail(kConnectFailed, kAuthorizationFailed);
  if (status < 200 || status > 299) {
    std::string message = ServiceMessage(response);
    return Fail(message.empty() ? std::string(kSubmitFailedText) : message, kSubmitFailed);
  }
  if (receipt) *receipt = response;
  alert_ = {"VAT Returns has been submitted successfully", "Successful Submission"};
  return true;
}

bool FKMTDforVATDlg::ViewVatReturn(std::string_view periodKey, FKVatReturns& vatReturn) {
  alert_ = {};
  if (!HasVatNumber(kViewFailed)) return false;
  if (AccessToken().empty()) return Fail(kNotAuthorized, kViewFailed);
  if (periodKey.empty()) return Fail(kEmptyPeriodKey, kViewFailed);
  std::string url =
      FKMTDApiBaseUrl() + "/organisations/vat/" + LPercentEncode(vrn_) + "/returns/" + LPercentEncode(periodKey);
  int status = 0;
  std::string response;
  bool refreshFailed = false;
  int result = CallApi(Call::kGet, url, {}, {}, true, status, response, refreshFailed);
  if (result == kOAuthCancelled) return Fail(kCancelled, kViewFailed);
  if (result != kOAuthResponse) return Fail(kConnectFailed, kViewFailed);
  if (refreshFailed) return Fail(kConnectFailed, kAuthorizationFailed);
  if (status < 200 || status > 299) {
    std::string message = ServiceMessage(response);
    return Fail(message.empty() ? std::string(kViewFailedText) : message, kViewFailed);
  }
  if (!FKVatReturnsFromJson(response, vatReturn)) return Fail(kViewFailedText, kViewFailed);
  return true;
}

bool FKMTDforVATAuthDlg::Authorize(std::string_view pasted) {
  alert_ = {};
  std::string parsed = OAuthParamsParseFromRedirectURL(pasted);
  if (parsed.empty()) {
    alert_ = {std::string(kConnectFailed), std::string(kAuthorizationFailed)};
    return false;
  }
  // A new code starts a new grant: the old tokens would otherwise be refreshed instead.
  std::string oldCode, oldAccess, oldRefresh;
  LUserSettingGetPassword(kMTDPasswordSection, "AuthorizationCode", oldCode);
  LUserSettingGetPassword(kMTDPasswordSection, "AccessToken", oldAccess);
  LUserSettingGetPassword(kMTDPasswordSection, "RefreshToken", oldRefresh);
  bool stored = LUserSettingSetPassword(kMTDPasswordSection, "AuthorizationCode", parsed) &&
                LUserSettingDeletePassword(kMTDPasswordSection, "AccessToken") &&
                LUserSettingDeletePassword(kMTDPasswordSection, "RefreshToken");
  if (stored && OAuthAccessTokenRequest(process_, FKMTDOAuthClient())) return true;
  // A refused code, or one that could not be kept, leaves the tokens as they were.
  bool restored = (oldCode.empty() ? LUserSettingDeletePassword(kMTDPasswordSection, "AuthorizationCode")
                                   : LUserSettingSetPassword(kMTDPasswordSection, "AuthorizationCode", oldCode)) &&
                  (oldAccess.empty() || LUserSettingSetPassword(kMTDPasswordSection, "AccessToken", oldAccess)) &&
                  (oldRefresh.empty() || LUserSettingSetPassword(kMTDPasswordSection, "RefreshToken", oldRefresh));
  if (!restored) LLogError("MTD: the previous tokens could not be put back");
  alert_ = {std::string(process_.IsToStop() ? kCancelled : kConnectFailed), std::string(kAuthorizationFailed)};
  return false;
}
