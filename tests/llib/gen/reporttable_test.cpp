#include "llib/gen/reporttable.h"

#include <gtest/gtest.h>

namespace {

LReportTable SampleTable() {
  LReportTable table;
  table.title = "Compte de résultat";
  table.subtitle = "2024-01-01 – 2024-12-31";
  table.columns = {"Montant"};
  table.AddHeading("Recettes");
  table.AddRow(LReportRowKind::kAccount, "Ventes", {123456}, 1);
  table.AddRow(LReportRowKind::kAccount, "Remises <spéciales>", {-500}, 1);
  table.AddRow(LReportRowKind::kTotal, "Total recettes", {122956});
  table.AddRow(LReportRowKind::kResult, "Vide", {std::nullopt});
  return table;
}

TEST(ReportTable, JsonFollowsTheCommandLineContract) {
  EXPECT_EQ(LReportWriteJson(SampleTable()),
            "{\"title\":\"Compte de résultat\",\"columns\":[\"Montant\"],\"rows\":["
            "{\"label\":\"Recettes\",\"values\":[null],\"kind\":\"heading\"},"
            "{\"label\":\"Ventes\",\"values\":[123456],\"kind\":\"account\"},"
            "{\"label\":\"Remises <spéciales>\",\"values\":[-500],\"kind\":\"account\"},"
            "{\"label\":\"Total recettes\",\"values\":[122956],\"kind\":\"total\"},"
            "{\"label\":\"Vide\",\"values\":[null],\"kind\":\"result\"}]}");
}

TEST(ReportTable, TextAlignsAmountsInTheCurrencyFormat) {
  LReportStyle style{LCurrencyFormat{"€", 3, 2, ",", " "}, true};
  std::string text = LReportWriteText(SampleTable(), style);
  EXPECT_NE(text.find("Compte de résultat\n2024-01-01 – 2024-12-31\n"), std::string::npos);
  EXPECT_NE(text.find("  Ventes               1 234,56 €\n"), std::string::npos) << text;
  EXPECT_NE(text.find("  Remises <spéciales>    (5,00 €)\n"), std::string::npos) << text;
  EXPECT_NE(text.find("-\nTotal recettes         1 229,56 €\n"), std::string::npos) << text;
}

TEST(ReportTable, CsvAndHtmlKeepPlainAmountsAndEscapeLabels) {
  LReportStyle style;
  std::string csv = LReportWriteCsv(SampleTable(), style);
  EXPECT_EQ(csv.substr(0, csv.find("\r\n")), "\"\",\"Montant\"");
  EXPECT_NE(csv.find("\"Ventes\",\"1234.56\"\r\n"), std::string::npos);
  EXPECT_NE(csv.find("\"Vide\",\"\"\r\n"), std::string::npos);
  std::string html = LReportWriteHtml(SampleTable(), style);
  EXPECT_NE(html.find("Remises &lt;spéciales&gt;"), std::string::npos);
  EXPECT_NE(html.find("<tr class=\"total\">"), std::string::npos);
  EXPECT_NE(html.find("<td class=\"amount negative\" data-cents=\"-500\">-$5.00</td>"), std::string::npos);
  EXPECT_EQ(LHtmlEscape("a&b\"'"), "a&amp;b&quot;&#39;");
}

}  // namespace
