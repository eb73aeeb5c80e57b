// The sales reports through the real kontavo binary: documents made by the sales commands, then
// "report aging", "invoices" and "unpaid" with --date, --from and --customer, in each format.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

class SalesReportCli : public LHomeTest {
 protected:
  void SetUp() override {
    for (std::vector<std::string> args : std::vector<std::vector<std::string>>{
             {"init"},
             {"account", "defaults"},
             {"customer", "add", "C1", "Name=Dupont"},
             {"customer", "add", "C2", "Name=Martin"},
             {"invoice", "new", "--customer", "C1", "--date", "2024-01-02", "--line", "|Conseil|1|100|Aucun|"},
             {"invoice", "new", "--customer", "C2", "--date", "2024-06-20", "--terms", "now", "--line",
              "|Vente|1|50|Aucun|"},
             {"record", "set", "Invoices", "1", "AmountPaid=2500"}}) {
      LRunResult run = LRunKontavo(args);
      ASSERT_EQ(run.exitCode, 0) << args[0] << ": " << run.err;
    }
  }
  LEnvScope country_{"KONTAVO_COUNTRY", "US"};
};

TEST_F(SalesReportCli, AgingAsJsonAndCsvForOneCustomer) {
  nlohmann::json report = LRunKontavoJson({"report", "aging", "--date", "2024-06-30"});
  EXPECT_EQ(report["title"], "Classement chronologique des comptes clients");
  ASSERT_EQ(report["rows"].size(), 5u) << report.dump();
  EXPECT_EQ(report["rows"][0]["label"], "C1");
  EXPECT_EQ(report["rows"][0]["values"], nlohmann::json::array({7500, 0, 0, 0, 0, 7500}));
  EXPECT_EQ(report["rows"][1]["values"], nlohmann::json::array({5000, 0, 5000, 0, 0, 0}));  // due at once
  EXPECT_EQ(report["rows"][3]["values"][0], nullptr);
  EXPECT_EQ(report["rows"][3]["texts"][0], "2");
  EXPECT_EQ(report["rows"][4]["label"], "Montant échu total :");
  EXPECT_EQ(report["rows"][4]["values"][0], 12500);
  // The day before C2's invoice it was not yet due.
  nlohmann::json before = LRunKontavoJson({"report", "aging", "--date", "2024-06-19", "--customer", "C2"});
  EXPECT_EQ(before["rows"][0]["values"], nlohmann::json::array({5000, 5000, 0, 0, 0, 0}));

  LRunResult csv = LRunKontavo({"report", "aging", "--date", "2024-06-30", "--customer", "C2", "--format", "csv"});
  ASSERT_EQ(csv.exitCode, 0) << csv.err;
  EXPECT_NE(csv.out.find("\"C2\",\"50.00\",\"0.00\",\"50.00\",\"0.00\",\"0.00\",\"0.00\"\r\n"), std::string::npos)
      << csv.out;
  EXPECT_EQ(csv.out.find("\"C1\""), std::string::npos) << csv.out;
}

TEST_F(SalesReportCli, InvoicesAsTextAndUnpaidAsHtml) {
  LRunResult text = LRunKontavo({"report", "invoices", "--from", "2024-06-01"});
  ASSERT_EQ(text.exitCode, 0) << text.err;
  EXPECT_EQ(text.out.rfind("Factures\nDepuis le 2024-06-01\n", 0), 0u) << text.out;
  EXPECT_NE(text.out.find("2024-06-20"), std::string::npos) << text.out;
  EXPECT_NE(text.out.find("Non payée"), std::string::npos) << text.out;
  EXPECT_EQ(text.out.find("2024-01-02"), std::string::npos) << text.out;

  LRunResult html = LRunKontavo({"report", "unpaid", "--format", "html"});
  ASSERT_EQ(html.exitCode, 0) << html.err;
  EXPECT_NE(html.out.find("<caption>Factures impayées"), std::string::npos) << html.out;
  EXPECT_NE(html.out.find("<td class=\"amount\">2024-02-01</td>"), std::string::npos) << html.out;
  EXPECT_NE(html.out.find("<tr class=\"total\"><td class=\"label indent0\">Total :</td>"), std::string::npos);
}

}  // namespace
