// The vat commands of the real kontavo binary against the HMRC stand-in: configuration,
// authorization with a pasted code, obligations, submission from the running figures of recorded
// invoices, viewing, and the refusals with their texts. (A missing VAT number and the other
// refusals before any call are proved by the VAT return tests.)
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/app/vatreturntest.h"
#include "tests/support/envscope.h"
#include "tests/support/hmrctestserver.h"

namespace {

const std::string kRetrievalFailed = "VAT Obligations Retrieval Failed\n";

class VatCli : public LHomeTest {
 protected:
  void SetUp() override {
    LExpectSuccess({"init"});
    LExpectSuccess({"account", "defaults"});  // invoices need the linked accounts
  }
  void StartServer() {
    server_ = std::make_unique<LHmrcTestServer>(home_.Path() + "/hmrc");
    ASSERT_TRUE(server_->IsRunning());
    LExpectSuccess({"vat", "config", "--vrn", "123456789", "--api", server_->BaseUrl(), "--ca-file",
                    server_->CertFile(), "--timeout", "20"});
  }
  static void Authorize() { LExpectSuccess({"vat", "auth", "--code", "Success code=c0de/1"}); }
  static std::string VatReturn(const std::string& field) { return LStoredField("Misc", "VATReturn", field); }

  LEnvScope country_{"KONTAVO_COUNTRY", "GB"};
  std::unique_ptr<LHmrcTestServer> server_;
};

TEST_F(VatCli, ConfigShowsSandboxByDefaultAndKeepsWhatIsSet) {
  EXPECT_EQ(LExpectSuccess({"vat", "config"}),
            "vrn=\napi=https://test-api.service.hmrc.gov.uk\nca-file=\ntimeout=60\nauthorized=no\n");
  LExpectSuccess({"vat", "config", "--vrn", "GB1", "--api", "production"});
  nlohmann::json json = LRunKontavoJson({"vat", "config"});
  EXPECT_EQ(json["vrn"], "GB1");
  EXPECT_EQ(json["api"], "https://api.service.hmrc.gov.uk");
  EXPECT_EQ(LRunKontavo({"vat", "config", "--api", "http://plain.example"}).exitCode, 1);
  EXPECT_EQ(LRunKontavo({"vat", "config", "--ca-file", home_.Path() + "/missing.pem"}).exitCode, 1);
  LExpectUsageErrors({{"vat", "config", "--timeout", "0"}, {"vat", "frobnicate"}});
}

TEST_F(VatCli, AuthPrintsTheAuthorizePageOfTheWebHostAndReadsThePastedCode) {
  LRunResult sandbox = LRunKontavo({"vat", "auth"}, "");
  EXPECT_EQ(sandbox.exitCode, 1);
  EXPECT_EQ(sandbox.out,
            "https://test-www.tax.service.gov.uk/oauth/authorize?response_type=code&client_id=Qz4kLmP8vRt2_WnY6hJd3sXa9BcE"
            "&scope=read:vat+write:vat&redirect_uri=urn:ietf:wg:oauth:2.0:oob\n");
  EXPECT_NE(sandbox.err.find("Authorization Failed"), std::string::npos) << sandbox.err;

  StartServer();
  std::string pasted = LExpectSuccess({"vat", "auth"}, "Success code=ab/c!\n");
  EXPECT_EQ(pasted.rfind(server_->BaseUrl() + "/oauth/authorize?response_type=code&", 0), 0u) << pasted;
  ASSERT_EQ(server_->Requests().size(), 1u);
  EXPECT_NE(server_->Requests()[0]["body"].get<std::string>().find("&code=ab%2Fc!"), std::string::npos);
  EXPECT_EQ(LRunKontavoJson({"vat", "config"})["authorized"], true);
}

TEST_F(VatCli, ObligationsAreFetchedStoredAndShownAsTheReport) {
  StartServer();
  LExpectRefused({"vat", "obligations"}, kRetrievalFailed + "Please authorize application to connect to HMRC");
  Authorize();
  std::string text = LExpectSuccess({"vat", "obligations"});
  EXPECT_NE(text.find("VAT Obligations"), std::string::npos);
  EXPECT_NE(text.find("Received Date"), std::string::npos);
  EXPECT_NE(text.find("00A1  2000-01-01  2000-03-31  2000-05-07       F     2000-05-06"), std::string::npos) << text;
  nlohmann::json json = LRunKontavoJson({"vat", "obligations", "--from", "2017-01-01", "--to", "2017-12-31"});
  EXPECT_EQ(json["title"], "VAT Obligations");
  ASSERT_EQ(json["rows"].size(), 1u);
  EXPECT_EQ(json["rows"][0]["label"], "17A1");
  EXPECT_EQ(json["rows"][0]["texts"][3], "O");
  EXPECT_EQ(LExpectSuccess({"record", "list", "VATObligations"}), "17A1\n");
  // The stored periods are a report like any other, without asking HMRC again.
  std::string csv = LExpectSuccess({"report", "vat-obligations", "--format", "csv"});
  EXPECT_NE(csv.find("\"17A1\",\"2017-01-01\""), std::string::npos) << csv;

  // HMRC refuses a range longer than 366 days; its message is shown and the list kept.
  LExpectRefused({"vat", "obligations", "--from", "2017-01-01", "--to", "2018-12-31"},
                 kRetrievalFailed + "Invalid date range, must be 366 days or less");
  EXPECT_EQ(LExpectSuccess({"record", "list", "VATObligations"}), "17A1\n");
  LExpectUsageErrors({{"vat", "obligations", "--from", "2017-01-01"}});
}

TEST_F(VatCli, SubmitTakesTheRunningFiguresOfRecordedInvoicesAndViewShowsTheReturn) {
  StartServer();
  LRecordVatReturnSale();
  // A draft does not count.
  LExpectSuccess({"invoice", "new", "--draft", "--customer", "C1", "--line", "|Draft|1|1000|VAT|"});
  EXPECT_EQ(VatReturn("OutputTax"), "3015");
  EXPECT_EQ(VatReturn("TotalValueSalesExVat"), "15075");
  EXPECT_EQ(VatReturn("TotalValueGoodsSuppliedExVat"), "15075");

  Authorize();
  EXPECT_EQ(LRunKontavo({"vat", "submit", "00A2"}).err, "No open obligations found\n");
  LExpectSuccess({"vat", "obligations"});
  EXPECT_EQ(LRunKontavo({"vat", "submit", ""}).err, "Empty period key\n");
  EXPECT_EQ(LRunKontavo({"vat", "view", "00A2"}).err, "Aucune obligation remplie pour la période 00A2\n");

  EXPECT_EQ(LExpectSuccess({"vat", "submit", "00A2", "--vatReclaimedCurrPeriod", "10.15", "--totalValuePurchasesExVAT", "50"}),
            "Successful Submission\nVAT Returns has been submitted successfully\nprocessingDate=2000-12-01T10:00:00.000Z\n"
            "formBundleNumber=123456789012\npaymentIndicator=BANK\n");
  EXPECT_EQ(server_->Requests().back()["body"], kVatReturnSaleBody);
  // What was declared leaves the running figures; the pence of the sales stay for next time.
  EXPECT_EQ(VatReturn("OutputTax"), "0");
  EXPECT_EQ(VatReturn("TotalValueSalesExVat"), "75");

  LExpectRefused({"vat", "submit", "00A2"}, "Failed Submission\nBusiness validation error\n"
                                            "DUPLICATE_SUBMISSION: The VAT return was already submitted for the given period");

  LExpectSuccess({"vat", "obligations"});
  EXPECT_NE(LExpectSuccess({"vat", "view", "00A2"}).find("VAT Return\nPeriod 00A2\n"), std::string::npos);
  nlohmann::json json = LRunKontavoJson({"vat", "view", "00A2"});
  ASSERT_EQ(json["rows"].size(), 9u);
  EXPECT_EQ(json["rows"][0]["values"][0], 3015);
  EXPECT_EQ(json["rows"][4]["values"][0], 2000);
  EXPECT_EQ(json["rows"][5]["values"][0], 15000);
}

}  // namespace
