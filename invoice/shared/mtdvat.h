// The UK VAT return through HMRC's Making Tax Digital for VAT interface: the business's
// obligations (return periods), submitting a nine-box return for an open period and viewing a
// submitted one. Access is OAuth 2.0 (oauth.h) with the tokens in the password store section
// "MTDForVAT".
//
// Where things live:
//   - the VAT registration number: the business's "Options" record, field "VATRegistrationNumber";
//   - the API base address: user setting "MTDForVAT"/"ApiBaseURL", HMRC's sandbox when absent;
//   - the obligations: the list "VATObligations", one record per period, keyed by period key.
//
// Every failure of FKMTDforVATDlg ends with an alert (message and caption, the texts that the
// user sees), as does a successful submission, and leaves stored tokens and obligations as they
// were; only a successful obligations answer replaces the whole "VATObligations" list.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/process.h"
#include "llib/gen/record.h"
#include "llib/net/oauth.h"

class LProfile;

inline constexpr std::string_view kMTDPasswordSection = "MTDForVAT";
inline constexpr std::string_view kMTDSettingsGroup = "MTDForVAT";
inline constexpr std::string_view kVATObligationsList = "VATObligations";
inline constexpr std::string_view kVATRegistrationField = "VATRegistrationNumber";
inline constexpr std::string_view kMTDSandboxApi = "https://test-api.service.hmrc.gov.uk";
inline constexpr std::string_view kMTDProductionApi = "https://api.service.hmrc.gov.uk";
// The obligations asked for without a range of the user's: the year 2000, kept exactly so.
inline constexpr std::string_view kVatObligationsFixedQuery = "from=2000-01-01&to=2000-12-31";

// One return period ("StartDate", "EndDate", "DueDate", "Status", "ReceivedDate"; the key is
// the period key).
class LVATObligation : public LRecord {
 public:
  std::string GetPeriodKey() const { return GetPrimaryKey(); }
  // "F" is fulfilled; anything else (HMRC sends "O") is open.
  bool IsFulfilled() const { return GetString("Status") == "F"; }
};

// The obligations stored for the business, sorted by start date then period key.
std::vector<std::unique_ptr<LVATObligation>> LVATObligationsLoad(LProfile& profile);

// The nine boxes of a return and its period.
struct FKVatReturns {
  std::string periodKey;
  double vatDueSales = 0;             // box 1, pounds
  double vatDueAcquisitions = 0;      // box 2
  double totalVatDue = 0;             // box 3
  double vatReclaimedCurrPeriod = 0;  // box 4
  double netVatDue = 0;               // box 5
  long long totalValueSalesExVAT = 0;          // box 6, whole pounds
  long long totalValuePurchasesExVAT = 0;      // box 7
  long long totalValueGoodsSuppliedExVAT = 0;  // box 8
  long long totalAcquisitionsExVAT = 0;        // box 9
};

// The submission body: one JSON object, members in box order, money written with "%f", the
// whole-pound boxes as integers, then "finalised": true.
std::string FKVatReturnsToJson(const FKVatReturns& vatReturn);
// Reads a viewed return; false when the text is not a JSON object carrying "periodKey" and the
// nine boxes as numbers.
bool FKVatReturnsFromJson(std::string_view text, FKVatReturns& vatReturn);

// An error answer of the service: "code" and "message" of the JSON body, and the messages of the
// "errors" it wraps. false when the body is not such an object.
struct LMTDError {
  std::string code;
  std::string message;
  std::vector<std::string> details;  // "code: message" of each wrapped error
};
bool ParseErrorResponse(std::string_view body, LMTDError& error);

// Replaces every record of "VATObligations" by the elements of the answer's "obligations":
// "start", "end", "due", "status", "periodKey" and "received" become "StartDate", "EndDate",
// "DueDate", "Status", the key and "ReceivedDate". false, with the list untouched, when the text
// is not JSON with an "obligations" array whose elements are objects with a text "periodKey".
bool ReadVatObligations(LProfile& profile, std::string_view text);

// The addresses of the user's configuration.
std::string FKMTDApiBaseUrl();
// HMRC's authorize page: on HMRC's web host for its own API hosts (sandbox or production), on
// the API host itself for any other (a stand-in).
std::string FKMTDAuthorizeUrl();
// The OAuth client of this application toward the configured API.
LOAuthClient FKMTDOAuthClient();

struct FKVatAlert {
  std::string message;
  std::string caption;
};

// Obtaining the authorization: the user opens the authorize page, signs in at HMRC and pastes
// back the code the page shows (its title "Success code=..."); the tokens are then requested.
class FKMTDforVATAuthDlg {
 public:
  static constexpr std::string_view kTitle = "Autorisation en cours";

  explicit FKMTDforVATAuthDlg(LProcessInterface& process) : process_(process) {}
  // The page to open in the user's browser.
  std::string AuthorizeUrl() const { return FKMTDAuthorizeUrl(); }
  // Takes the code out of what the user pasted (OAuthParamsParseFromRedirectURL), stores it as
  // "AuthorizationCode" and requests new tokens by it. On failure the code and tokens stored
  // before are put back and the alert says why.
  bool Authorize(std::string_view pasted);
  const FKVatAlert& Alert() const { return alert_; }

 private:
  LProcessInterface& process_;
  FKVatAlert alert_;
};

class FKMTDforVATDlg {
 public:
  FKMTDforVATDlg(LProfile& profile, LProcessInterface& process);

  // The obligations of the range from..to instead of the fixed year 2000.
  void SetObligationsRange(std::string_view from, std::string_view to);

  // Fetches the obligations and stores them (see ReadVatObligations). A 401 with
  // "INVALID_CREDENTIALS" while retry is set gets one token request and, when it succeeds, one
  // more call without retry.
  bool RetrieveVatObligations(bool retry = true);
  // Submits the return; receipt (when given) gets the service's answer body on success.
  bool SubmitVatReturns(const FKVatReturns& vatReturn, std::string* receipt = nullptr);
  // Reads a submitted return of the period.
  bool ViewVatReturn(std::string_view periodKey, FKVatReturns& vatReturn);
  const FKVatAlert& Alert() const { return alert_; }

 private:
  enum class Call { kGet, kPost };
  // One API call with the one-refresh rule; the outcome of the call (kOAuth*), status and body.
  int CallApi(Call call, const std::string& url, std::string_view query, std::string_view body, bool retry,
              int& status, std::string& response, bool& refreshFailed);
  bool Fail(std::string_view message, std::string_view caption);
  bool HasVatNumber(std::string_view caption);

  LProfile& profile_;
  LProcessInterface& process_;
  std::string vrn_;
  std::string obligationsQuery_{kVatObligationsFixedQuery};
  FKVatAlert alert_;
};
