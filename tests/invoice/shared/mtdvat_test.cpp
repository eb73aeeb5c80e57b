// The VAT submission against the HMRC stand-in (hmrcserver.py over HTTPS on loopback): tokens,
// obligations, submission, viewing, the refresh-and-retry rule and the failures that must leave
// tokens and obligations alone.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <regex>
#include <thread>

#include "invoice/shared/mtdvat.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/vatreturnreport.h"
#include "llib/gen/reporttable.h"
#include "llib/gen/usersettings.h"
#include "llib/net/oauth.h"
#include "tests/support/hmrctestserver.h"
#include "tests/support/testhome.h"

namespace {

constexpr const char* kBodyStart =
    "client_secret=d3b07384-5e1f-4c2a-9a7b-0f6e8d2c4b1a&client_id=Qz4kLmP8vRt2_WnY6hJd3sXa9BcE";

// Stops once the given time has passed, as a user pressing Cancel would.
class CancelAfter : public LProcessInterfaceRecorder {
 public:
  explicit CancelAfter(int ms) : until_(std::chrono::steady_clock::now() + std::chrono::milliseconds(ms)) {}
  bool IsToStop() override { return std::chrono::steady_clock::now() >= until_; }

 private:
  std::chrono::steady_clock::time_point until_;
};

class MtdVatTest : public LHomeTest {
 protected:
  void SetUp() override {
    profile_ = std::make_unique<LProfile>();
    LOptions options;
    options.OpenFrom(*profile_);
    options.SetString(kVATRegistrationField, "123456789");
    EXPECT_TRUE(options.Flush());
  }
  // (Re)starts the stand-in with hmrcserver.py's options and a fresh journal.
  void StartServer(const std::vector<std::string>& options = {}) {
    server_.reset();
    std::filesystem::remove_all(home_.Path() + "/hmrc");
    server_ = std::make_unique<LHmrcTestServer>(home_.Path() + "/hmrc", options);
    ASSERT_TRUE(server_->IsRunning());
    EXPECT_TRUE(LUserSettingSetString(kMTDSettingsGroup, "ApiBaseURL", server_->BaseUrl()));
    EXPECT_TRUE(LUserSettingSetString("HTTPS", "CAFile", server_->CertFile()));
    EXPECT_TRUE(LUserSettingSetString("HTTPS", "TimeoutSeconds", "20"));
  }
  static void SetTokens(const std::string& access, const std::string& refresh, const std::string& code = {}) {
    for (auto [key, value] : {std::pair{"AccessToken", access}, {"RefreshToken", refresh}, {"AuthorizationCode", code}}) {
      EXPECT_TRUE(value.empty() ? LUserSettingDeletePassword(kMTDPasswordSection, key)
                                : LUserSettingSetPassword(kMTDPasswordSection, key, value));
    }
  }
  static std::string Password(const char* key) {
    std::string value;
    LUserSettingGetPassword(kMTDPasswordSection, key, value);
    return value;
  }
  std::vector<std::string> StoredPeriods() {
    std::vector<std::string> keys;
    for (const auto& obligation : LVATObligationsLoad(*profile_)) keys.push_back(obligation->GetPeriodKey());
    return keys;
  }
  void StoreObligation(const std::string& key) {
    LVATObligation obligation;
    profile_->List(kVATObligationsList).OpenAlways(obligation, key);
    obligation.SetString("Status", "O");
    EXPECT_TRUE(obligation.Flush());
  }
  // What the dialog shows the user: "caption: message".
  static std::string Alert(const FKMTDforVATDlg& dialog) { return dialog.Alert().caption + ": " + dialog.Alert().message; }
  std::vector<std::string> RequestLines() {
    std::vector<std::string> lines;
    for (const auto& request : server_->Requests())
      lines.push_back(request["method"].get<std::string>() + " " + request["path"].get<std::string>());
    return lines;
  }

  std::unique_ptr<LProfile> profile_;
  std::unique_ptr<LHmrcTestServer> server_;
  LProcessInterfaceRecorder process_;
};

// The code is percent-encoded with "!" kept and cut at 259 bytes; it is found in the success
// page's title, a redirect address or plain text.
TEST(OAuthCodeTest, CodeEncodingAndWhereTheCodeIsFound) {
  EXPECT_EQ(OAuthEncodeCode("ab/c!d e-._~"), "ab%2Fc!d%20e-._~");
  EXPECT_EQ(OAuthEncodeCode(std::string(100, '/')).size(), 259u);
  EXPECT_EQ(OAuthEncodeCode(std::string(300, 'a')), std::string(259, 'a'));
  EXPECT_EQ(OAuthParamsParseFromRedirectURL("Success code=abc123"), "abc123");
  EXPECT_EQ(OAuthParamsParseFromRedirectURL("http://localhost:9/cb?state=s&code=x%2Fy"), "x/y");
  EXPECT_EQ(OAuthParamsParseFromRedirectURL("  plain \n"), "plain");
  EXPECT_EQ(OAuthParamsParseFromRedirectURL(" \n"), "");
}

TEST(VatReturnTest, SubmissionBodyIsInBoxOrderWithPercentFNumbers) {
  FKVatReturns r{"#001", 105.5, -100.45, 5.05, 105.15, 100.1, 300, -300, 3000, 0};  // boxes 1 to 9
  EXPECT_EQ(FKVatReturnsToJson(r),
            "{\"periodKey\":\"#001\",\"vatDueSales\":105.500000,\"vatDueAcquisitions\":-100.450000,"
            "\"totalVatDue\":5.050000,\"vatReclaimedCurrPeriod\":105.150000,\"netVatDue\":100.100000,"
            "\"totalValueSalesExVAT\":300,\"totalValuePurchasesExVAT\":-300,\"totalValueGoodsSuppliedExVAT\":3000,"
            "\"totalAcquisitionsExVAT\":0,\"finalised\":true}");
  FKVatReturns back;
  ASSERT_TRUE(FKVatReturnsFromJson(FKVatReturnsToJson(r), back));
  EXPECT_DOUBLE_EQ(back.vatDueAcquisitions, -100.45);
  EXPECT_EQ(back.totalValuePurchasesExVAT, -300);
  // A wrong type or a document that is not an object leaves the return as it was.
  EXPECT_FALSE(FKVatReturnsFromJson("{\"periodKey\":\"A\",\"vatDueSales\":\"1\"}", back));
  EXPECT_FALSE(FKVatReturnsFromJson("[1,2]", back));
  EXPECT_EQ(back.periodKey, "#001");
}

// The report shows pounds in pence, halves away from zero on both sides (0.125 and -0.125 are
// exact in binary: 12.5 -> 13 and -12.5 -> -13), the whole-pound boxes times 100.
TEST(VatReturnTest, ReportShowsPenceWithHalvesAwayFromZero) {
  FKVatReturns r{"#002", 0.125, -0.125, 0, -100.45, 100.1, 300, -300, 0, 0};
  LReportTable table;
  FKReportVatReturn(r, table);
  ASSERT_EQ(table.rows.size(), 9u);
  const long long expected[] = {13, -13, 0, -10045, 10010, 30000, -30000, 0, 0};
  for (std::size_t box = 0; box < 9; ++box) EXPECT_EQ(table.rows[box].values[0], expected[box]) << box + 1;
  EXPECT_EQ(table.rows[4].label, "Box 5 Net VAT due");
}

TEST(VatReturnTest, ErrorAnswersGiveCodeMessageAndWrappedErrors) {
  LMTDError error;
  ASSERT_TRUE(ParseErrorResponse(
      R"({"code":"BUSINESS_ERROR","message":"Business validation error","errors":[{"code":"DUPLICATE_SUBMISSION","message":"Already"}]})",
      error));
  EXPECT_EQ(error.code + "|" + error.message, "BUSINESS_ERROR|Business validation error");
  EXPECT_EQ(error.details, (std::vector<std::string>{"DUPLICATE_SUBMISSION: Already"}));
  for (const char* body : {"{\"obligations\":[]}", "not json", "{\"code\":12}"})
    EXPECT_FALSE(ParseErrorResponse(body, error)) << body;
}

// Nothing stored asks nothing; a code alone (or with an access token alone) is exchanged,
// percent-encoded; both tokens mean a refresh. Each success stores both new tokens.
TEST_F(MtdVatTest, TokenRequestsChooseTheGrantFromWhatIsStored) {
  StartServer();
  SetTokens("", "", "");
  EXPECT_FALSE(OAuthAccessTokenRequest(process_, FKMTDOAuthClient()));
  EXPECT_TRUE(server_->Requests().empty());
  SetTokens("", "", "ab/c!d e");
  ASSERT_TRUE(OAuthAccessTokenRequest(process_, FKMTDOAuthClient())) << process_.GetError();
  SetTokens("acc-1", "ref-1", "code1");
  ASSERT_TRUE(OAuthAccessTokenRequest(process_, FKMTDOAuthClient()));
  SetTokens("acc-2", "", "code2");
  ASSERT_TRUE(OAuthAccessTokenRequest(process_, FKMTDOAuthClient()));
  auto requests = server_->Requests();
  ASSERT_EQ(requests.size(), 3u);
  EXPECT_EQ(requests[0]["path"], "/oauth/token");
  EXPECT_EQ(requests[0]["headers"]["Content-Type"], "application/x-www-form-urlencoded");
  std::string codeGrant = std::string(kBodyStart) + "&grant_type=authorization_code&redirect_uri=urn:ietf:wg:oauth:2.0:oob&code=";
  EXPECT_EQ(requests[0]["body"], codeGrant + "ab%2Fc!d%20e");
  EXPECT_EQ(requests[1]["body"], std::string(kBodyStart) + "&grant_type=refresh_token&refresh_token=ref-1");
  EXPECT_EQ(requests[2]["body"], codeGrant + "code2");
  EXPECT_EQ(Password("AccessToken") + " " + Password("RefreshToken"), "acc-3 ref-3");
}

TEST_F(MtdVatTest, RefusedOrIncompleteTokenAnswersLeaveTheOldTokens) {
  for (const char* option : {"--token-error", "--token-no-refresh"}) {
    StartServer({option});
    SetTokens("acc-0", "ref-0", "code");
    EXPECT_FALSE(OAuthAccessTokenRequest(process_, FKMTDOAuthClient())) << option;
    EXPECT_EQ(Password("AccessToken"), "acc-0") << option;
    EXPECT_EQ(Password("RefreshToken"), "ref-0") << option;
  }
}

TEST_F(MtdVatTest, ObligationsUseTheFixedYear2000QueryHeadersAndReplaceTheWholeList) {
  StartServer();
  SetTokens("acc-0", "ref-0");
  StoreObligation("OLD1");
  FKMTDforVATDlg dialog(*profile_, process_);
  ASSERT_TRUE(dialog.RetrieveVatObligations(true)) << dialog.Alert().message;
  auto requests = server_->Requests();
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0]["path"], "/organisations/vat/123456789/obligations");
  EXPECT_EQ(requests[0]["query"], "from=2000-01-01&to=2000-12-31");
  const auto& headers = requests[0]["headers"];
  // The fraud-prevention headers of a desktop application connecting directly.
  for (auto [name, pattern] :
       {std::pair{"Accept", "application/vnd\\.hmrc\\.1\\.0\\+json"}, {"Authorization", "Bearer acc-0"},
        {"Gov-Client-Connection-Method", "DESKTOP_APP_DIRECT"},
        {"Gov-Client-Device-ID", "[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}"},
        {"Gov-Client-Timezone", "UTC[+-][0-9]{2}:[0-9]{2}"}, {"Gov-Client-User-Agent", "os-family=Linux&os-version=.*"},
        {"Gov-Client-User-IDs", "os=.*"}, {"Gov-Vendor-Product-Name", "Kontavo"}, {"Gov-Vendor-Version", "Kontavo=1\\.0"}})
    EXPECT_TRUE(headers.contains(name) && std::regex_match(headers[name].get<std::string>(), std::regex(pattern))) << name;
  if (headers.contains("Gov-Client-Local-IPs")) {
    EXPECT_TRUE(std::regex_match(headers["Gov-Client-Local-IPs-Timestamp"].get<std::string>(),
                                 std::regex("\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z")));
  }

  EXPECT_EQ(StoredPeriods(), (std::vector<std::string>{"00A1", "00A2", "#001"}));
  auto stored = LVATObligationsLoad(*profile_);
  EXPECT_TRUE(stored[0]->IsFulfilled());
  EXPECT_FALSE(stored[1]->IsFulfilled());
  EXPECT_EQ(stored[1]->GetString("ReceivedDate"), "");
  EXPECT_EQ(stored[0]->GetString("StartDate") + " " + stored[0]->GetString("EndDate") + " " + stored[0]->GetString("DueDate") +
                " " + stored[0]->GetString("ReceivedDate"),
            "2000-01-01 2000-03-31 2000-05-07 2000-05-06");

  // A range of the user's replaces the fixed query; the device keeps its identifier.
  dialog.SetObligationsRange("2017-01-01", "2017-12-31");
  ASSERT_TRUE(dialog.RetrieveVatObligations(true)) << dialog.Alert().message;
  EXPECT_EQ(server_->Requests()[1]["query"], "from=2017-01-01&to=2017-12-31");
  EXPECT_EQ(server_->Requests()[1]["headers"]["Gov-Client-Device-ID"], headers["Gov-Client-Device-ID"]);
  EXPECT_EQ(StoredPeriods(), (std::vector<std::string>{"17A1"}));
}

// An expired token gets exactly one refresh and one retry; a second 401 is reported and the
// list kept; without the retry flag the first 401 is the answer; a refresh that fails after a
// 401 is an authorization failure that leaves the old tokens.
TEST_F(MtdVatTest, A401GetsOneRefreshAndOneRetry) {
  StartServer({"--expired"});
  SetTokens("acc-0", "ref-0");
  FKMTDforVATDlg dialog(*profile_, process_);
  ASSERT_TRUE(dialog.RetrieveVatObligations(true)) << dialog.Alert().message;
  EXPECT_EQ(RequestLines(), (std::vector<std::string>{"GET /organisations/vat/123456789/obligations", "POST /oauth/token",
                                                      "GET /organisations/vat/123456789/obligations"}));
  EXPECT_EQ(server_->Requests()[2]["headers"]["Authorization"], "Bearer acc-1");
  EXPECT_EQ(Password("AccessToken"), "acc-1");
  EXPECT_EQ(StoredPeriods().size(), 3u);

  StartServer({"--always-invalid"});
  SetTokens("acc-0", "ref-0");
  std::vector<std::string> kept = StoredPeriods();
  EXPECT_FALSE(dialog.RetrieveVatObligations(true));
  EXPECT_EQ(RequestLines().size(), 3u);
  EXPECT_EQ(Alert(dialog), "VAT Obligations Retrieval Failed: Invalid authentication information provided");
  EXPECT_EQ(StoredPeriods(), kept);
  EXPECT_FALSE(dialog.RetrieveVatObligations(false));
  EXPECT_EQ(RequestLines().size(), 4u);

  StartServer({"--expired", "--token-error"});
  SetTokens("acc-0", "ref-0");
  EXPECT_FALSE(dialog.RetrieveVatObligations(true));
  EXPECT_EQ(Alert(dialog), "Authorization Failed: Failed to connect to HMRC");
  EXPECT_EQ(Password("AccessToken") + " " + Password("RefreshToken"), "acc-0 ref-0");
}

// (Without a VAT number nothing is asked either: tests/app/vat_cli_test.cpp.)
TEST_F(MtdVatTest, NoTokenIsRefusedBeforeAnyCall) {
  StartServer();
  SetTokens("", "ref-0");
  FKMTDforVATDlg dialog(*profile_, process_);
  EXPECT_FALSE(dialog.RetrieveVatObligations(true));
  EXPECT_EQ(Alert(dialog), "VAT Obligations Retrieval Failed: Please authorize application to connect to HMRC");
  FKVatReturns r{"00A2"};
  EXPECT_FALSE(dialog.SubmitVatReturns(r));
  EXPECT_EQ(Alert(dialog), "Failed Submission: Please authorize application to connect to HMRC");
  EXPECT_TRUE(server_->Requests().empty());
}

TEST_F(MtdVatTest, MalformedOrIncompleteObligationsLeaveTheListAlone) {
  for (const char* body : {"{\"obligations\":[", "{\"obligations\":[{\"start\":\"2000-01-01\"}]}", "{\"other\":1}",
                           "[]", "{\"obligations\":[\"00A1\"]}"}) {
    StartServer({"--obligations-body", body});
    SetTokens("acc-0", "ref-0");
    StoreObligation("OLD1");
    FKMTDforVATDlg dialog(*profile_, process_);
    EXPECT_FALSE(dialog.RetrieveVatObligations(true)) << body;
    EXPECT_EQ(dialog.Alert().caption, "VAT Obligations Retrieval Failed") << body;
    EXPECT_EQ(StoredPeriods(), (std::vector<std::string>{"OLD1"})) << body;
    EXPECT_EQ(Password("AccessToken"), "acc-0");
  }
}

// (The duplicate submission's message is proved through tests/app/vat_cli_test.cpp.)
TEST_F(MtdVatTest, SubmissionSendsTheBodyAsBuiltAndViewingReadsItBack) {
  StartServer();
  SetTokens("acc-0", "ref-0");
  FKVatReturns r{"00A2", 20, 0, 20, 0, 20, 100, 0, 100, 0};
  FKMTDforVATDlg dialog(*profile_, process_);
  std::string receipt;
  ASSERT_TRUE(dialog.SubmitVatReturns(r, &receipt)) << dialog.Alert().message;
  EXPECT_EQ(Alert(dialog), "Successful Submission: VAT Returns has been submitted successfully");
  EXPECT_NE(receipt.find("\"formBundleNumber\": \"123456789012\""), std::string::npos) << receipt;
  auto requests = server_->Requests();
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0]["path"], "/organisations/vat/123456789/returns");
  EXPECT_EQ(requests[0]["headers"]["Content-Type"], "application/json");
  EXPECT_EQ(requests[0]["headers"]["Authorization"], "Bearer acc-0");
  EXPECT_EQ(requests[0]["body"], FKVatReturnsToJson(r));
  FKVatReturns viewed;
  ASSERT_TRUE(dialog.ViewVatReturn("00A2", viewed)) << dialog.Alert().message;
  EXPECT_EQ(FKVatReturnsToJson(viewed), FKVatReturnsToJson(r));
  EXPECT_FALSE(dialog.ViewVatReturn("00A1", viewed));
  EXPECT_EQ(Alert(dialog), "Viewing VAT Return Failed: The requested resource could not be found");
  EXPECT_FALSE(dialog.ViewVatReturn("", viewed));
  EXPECT_EQ(dialog.Alert().message, "Empty period key");
  EXPECT_FALSE(dialog.ViewVatReturn("#001", viewed));  // a "#" in the key is encoded in the path
  EXPECT_EQ(server_->Requests().back()["path"], "/organisations/vat/123456789/returns/%23001");
}

TEST_F(MtdVatTest, AReplyThatNeverEndsTimesOutAndACancelEndsItAtOnce) {
  StartServer({"--hang"});
  SetTokens("acc-0", "ref-0");
  StoreObligation("OLD1");
  EXPECT_TRUE(LUserSettingSetString("HTTPS", "TimeoutSeconds", "1"));
  FKMTDforVATDlg dialog(*profile_, process_);
  EXPECT_FALSE(dialog.RetrieveVatObligations(true));
  EXPECT_EQ(dialog.Alert().message, "Failed to connect to HMRC");

  EXPECT_TRUE(LUserSettingSetString("HTTPS", "TimeoutSeconds", "30"));
  CancelAfter cancel(300);
  FKMTDforVATDlg cancelled(*profile_, cancel);
  auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(cancelled.RetrieveVatObligations(true));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_EQ(cancelled.Alert().message, "User has cancelled the operation");
  EXPECT_EQ(StoredPeriods(), (std::vector<std::string>{"OLD1"}));
  EXPECT_EQ(Password("AccessToken"), "acc-0");
}

TEST_F(MtdVatTest, AServerWithAnUntrustedCertificateIsRefused) {
  StartServer();
  EXPECT_TRUE(LUserSettingDelete("HTTPS", "CAFile"));
  SetTokens("acc-0", "ref-0");
  StoreObligation("OLD1");
  FKMTDforVATDlg dialog(*profile_, process_);
  EXPECT_FALSE(dialog.RetrieveVatObligations(true));
  EXPECT_EQ(dialog.Alert().message, "Failed to connect to HMRC");
  EXPECT_FALSE(process_.GetError().empty());
  EXPECT_TRUE(server_->Requests().empty());
  EXPECT_EQ(StoredPeriods(), (std::vector<std::string>{"OLD1"}));
  EXPECT_EQ(Password("AccessToken"), "acc-0");
}

}  // namespace
