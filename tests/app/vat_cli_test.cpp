// The vat commands of the real kontavo binary against the HMRC stand-in: configuration,
// authorization with a pasted code, obligations, submission from the running figures of recorded
// invoices, viewing, and the refusals with their texts.
#include <gtest/gtest.h>

#include <cstdlib>
#include <nlohmann/json.hpp>

#include "tests/support/hmrctestserver.h"
#include "tests/support/testhome.h"

namespace {

class VatCli : public LHomeTest {
 protected:
  void SetUp() override {
    ::setenv("KONTAVO_COUNTRY", "GB", 1);
    ASSERT_EQ(Run({"init"}).exitCode, 0);
    ASSERT_EQ(Run({"account", "defaults"}).exitCode, 0);  // invoices need the linked accounts
  }
  void StartServer(const std::vector<std::string>& options = {}) {
    server_ = std::make_unique<LHmrcTestServer>(home_.Path() + "/hmrc", options);
    ASSERT_TRUE(server_->IsRunning());
    LRunResult configured = Run({"vat", "config", "--vrn", "123456789", "--api", server_->BaseUrl(), "--ca-file",
                                 server_->CertFile(), "--timeout", "20"});
    ASSERT_EQ(configured.exitCode, 0) << configured.err;
  }
  static LRunResult Run(const std::vector<std::string>& args, const std::string& input = {}) {
    return LRunKontavo(args, input);
  }
  void Authorize() {
    LRunResult auth = Run({"vat", "auth", "--code", "Success code=c0de/1"});
    ASSERT_EQ(auth.exitCode, 0) << auth.err;
  }

  std::unique_ptr<LHmrcTestServer> server_;
};

TEST_F(VatCli, ConfigShowsSandboxByDefaultAndKeepsWhatIsSet) {
  LRunResult shown = Run({"vat", "config"});
  ASSERT_EQ(shown.exitCode, 0) << shown.err;
  EXPECT_EQ(shown.out, "vrn=\napi=https://test-api.service.hmrc.gov.uk\nca-file=\ntimeout=60\nauthorized=no\n");
  ASSERT_EQ(Run({"vat", "config", "--vrn", "GB1", "--api", "production"}).exitCode, 0);
  nlohmann::json json = LRunKontavoJson({"vat", "config"});
  EXPECT_EQ(json["vrn"], "GB1");
  EXPECT_EQ(json["api"], "https://api.service.hmrc.gov.uk");
  EXPECT_EQ(Run({"vat", "config", "--api", "http://plain.example"}).exitCode, 1);
  EXPECT_EQ(Run({"vat", "config", "--ca-file", home_.Path() + "/missing.pem"}).exitCode, 1);
  EXPECT_EQ(Run({"vat", "config", "--timeout", "0"}).exitCode, 2);
  EXPECT_EQ(Run({"vat", "frobnicate"}).exitCode, 2);
}

TEST_F(VatCli, AuthPrintsTheAuthorizePageOfTheWebHostAndReadsThePastedCode) {
  LRunResult sandbox = Run({"vat", "auth"}, "");
  EXPECT_EQ(sandbox.exitCode, 1);
  EXPECT_EQ(sandbox.out,
            "https://test-www.tax.service.gov.uk/oauth/authorize?response_type=code&client_id=Qz4kLmP8vRt2_WnY6hJd3sXa9BcE"
            "&scope=read:vat+write:vat&redirect_uri=urn:ietf:wg:oauth:2.0:oob\n");
  EXPECT_NE(sandbox.err.find("Authorization Failed"), std::string::npos) << sandbox.err;

  StartServer();
  LRunResult pasted = Run({"vat", "auth"}, "Success code=ab/c!\n");
  ASSERT_EQ(pasted.exitCode, 0) << pasted.err;
  EXPECT_EQ(pasted.out.rfind(server_->BaseUrl() + "/oauth/authorize?response_type=code&", 0), 0u) << pasted.out;
  auto requests = server_->Requests();
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_NE(requests[0]["body"].get<std::string>().find("&code=ab%2Fc!"), std::string::npos);
  EXPECT_EQ(LRunKontavoJson({"vat", "config"})["authorized"], true);
}

TEST_F(VatCli, ObligationsAreFetchedStoredAndShownAsTheReport) {
  StartServer();
  LRunResult refused = Run({"vat", "obligations"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.err, "VAT Obligations Retrieval Failed\nPlease authorize application to connect to HMRC\n");

  Authorize();
  LRunResult text = Run({"vat", "obligations"});
  ASSERT_EQ(text.exitCode, 0) << text.err;
  EXPECT_NE(text.out.find("VAT Obligations"), std::string::npos);
  EXPECT_NE(text.out.find("Received Date"), std::string::npos);
  EXPECT_NE(text.out.find("00A1  2000-01-01  2000-03-31  2000-05-07       F     2000-05-06"), std::string::npos)
      << text.out;
  nlohmann::json json = LRunKontavoJson({"vat", "obligations", "--from", "2017-01-01", "--to", "2017-12-31"});
  EXPECT_EQ(json["title"], "VAT Obligations");
  ASSERT_EQ(json["rows"].size(), 1u);
  EXPECT_EQ(json["rows"][0]["label"], "17A1");
  EXPECT_EQ(json["rows"][0]["values"][3], "O");
  EXPECT_EQ(Run({"record", "list", "VATObligations"}).out, "17A1\n");
  // The stored periods are a report like any other, without asking HMRC again.
  LRunResult csv = Run({"report", "vat-obligations", "--format", "csv"});
  ASSERT_EQ(csv.exitCode, 0) << csv.err;
  EXPECT_NE(csv.out.find("\"17A1\",\"2017-01-01\""), std::string::npos) << csv.out;

  // HMRC refuses a range longer than 366 days; its message is shown and the list kept.
  LRunResult tooLong = Run({"vat", "obligations", "--from", "2017-01-01", "--to", "2018-12-31"});
  EXPECT_EQ(tooLong.exitCode, 1);
  EXPECT_EQ(tooLong.err, "VAT Obligations Retrieval Failed\nInvalid date range, must be 366 days or less\n");
  EXPECT_EQ(Run({"record", "list", "VATObligations"}).out, "17A1\n");
  EXPECT_EQ(Run({"vat", "obligations", "--from", "2017-01-01"}).exitCode, 2);
}

TEST_F(VatCli, SubmitTakesTheRunningFiguresOfRecordedInvoicesAndViewShowsTheReturn) {
  StartServer();
  ASSERT_EQ(Run({"tax", "set", "--count", "1", "--name", "1=VAT", "--rate", "1=20", "--default", "1"}).exitCode, 0);
  ASSERT_EQ(Run({"customer", "add", "C1", "Name=Smith"}).exitCode, 0);
  LRunResult invoice = Run({"invoice", "new", "--customer", "C1", "--date", "2000-05-01", "--line", "|Work|1|150.75|VAT|"});
  ASSERT_EQ(invoice.exitCode, 0) << invoice.err;
  // A draft does not count.
  ASSERT_EQ(Run({"invoice", "new", "--draft", "--customer", "C1", "--line", "|Draft|1|1000|VAT|"}).exitCode, 0);
  EXPECT_EQ(Run({"record", "get", "Misc", "VATReturn", "OutputTax"}).out, "3015\n");
  EXPECT_EQ(Run({"record", "get", "Misc", "VATReturn", "TotalValueSalesExVat"}).out, "15075\n");
  EXPECT_EQ(Run({"record", "get", "Misc", "VATReturn", "TotalValueGoodsSuppliedExVat"}).out, "15075\n");

  Authorize();
  EXPECT_EQ(Run({"vat", "submit", "00A2"}).err, "No open obligations found\n");
  ASSERT_EQ(Run({"vat", "obligations"}).exitCode, 0);
  EXPECT_EQ(Run({"vat", "submit", ""}).err, "Empty period key\n");
  EXPECT_EQ(Run({"vat", "view", "00A2"}).err, "Aucune obligation remplie pour la période 00A2\n");

  LRunResult submitted = Run({"vat", "submit", "00A2", "--vatReclaimedCurrPeriod", "10.15", "--totalValuePurchasesExVAT", "50"});
  ASSERT_EQ(submitted.exitCode, 0) << submitted.err;
  EXPECT_EQ(submitted.out,
            "Successful Submission\nVAT Returns has been submitted successfully\nprocessingDate=2000-12-01T10:00:00.000Z\n"
            "formBundleNumber=123456789012\npaymentIndicator=BANK\n");
  auto requests = server_->Requests();
  EXPECT_EQ(requests.back()["body"],
            "{\"periodKey\":\"00A2\",\"vatDueSales\":30.150000,\"vatDueAcquisitions\":0.000000,\"totalVatDue\":30.150000,"
            "\"vatReclaimedCurrPeriod\":10.150000,\"netVatDue\":20.000000,\"totalValueSalesExVAT\":150,"
            "\"totalValuePurchasesExVAT\":50,\"totalValueGoodsSuppliedExVAT\":150,\"totalAcquisitionsExVAT\":0,"
            "\"finalised\":true}");
  // What was declared leaves the running figures; the pence of the sales stay for next time.
  EXPECT_EQ(Run({"record", "get", "Misc", "VATReturn", "OutputTax"}).out, "0\n");
  EXPECT_EQ(Run({"record", "get", "Misc", "VATReturn", "TotalValueSalesExVat"}).out, "75\n");

  LRunResult duplicate = Run({"vat", "submit", "00A2"});
  EXPECT_EQ(duplicate.exitCode, 1);
  EXPECT_EQ(duplicate.err, "Failed Submission\nBusiness validation error\n"
                           "DUPLICATE_SUBMISSION: The VAT return was already submitted for the given period\n");

  ASSERT_EQ(Run({"vat", "obligations"}).exitCode, 0);
  LRunResult viewed = Run({"vat", "view", "00A2"});
  ASSERT_EQ(viewed.exitCode, 0) << viewed.err;
  EXPECT_NE(viewed.out.find("VAT Return\nPeriod 00A2\n"), std::string::npos) << viewed.out;
  nlohmann::json json = LRunKontavoJson({"vat", "view", "00A2"});
  ASSERT_EQ(json["rows"].size(), 9u);
  EXPECT_EQ(json["rows"][0]["values"][0], 3015);
  EXPECT_EQ(json["rows"][4]["values"][0], 2000);
  EXPECT_EQ(json["rows"][5]["values"][0], 15000);
}

TEST_F(VatCli, WithoutAVatNumberNothingIsAsked) {
  StartServer();
  Authorize();
  ASSERT_EQ(Run({"vat", "config", "--vrn", ""}).exitCode, 0);
  LRunResult refused = Run({"vat", "obligations"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.err, "VAT Obligations Retrieval Failed\nPlease enter your VAT registration number in Options to proceed.\n");
  EXPECT_EQ(server_->Requests().size(), 1u);  // the token request of the authorization only
}

}  // namespace
