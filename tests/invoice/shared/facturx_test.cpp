// Factur-X e-invoices made by the real binary: the PDF/A-3 structure (qpdf --check, the attached
// "factur-x.xml" with its relationship, the XMP identification and extension schema, the sRGB
// output intent), and the XML validated against the Factur-X 1.09 XSD (xmllint) and its
// Schematron business rules (Saxon-HE) for invoices with several rates, a discount line,
// shipping and untaxed lines, a credit note, the BASIC profile and a business under the VAT
// franchise. Then what cannot be an e-invoice, refused.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/app/clitest.h"
#include "tests/support/frenchbusiness.h"
#include "tests/support/pdfreader.h"
#include "tests/support/testhome.h"

namespace {

const std::string kSaxonJar = "/usr/share/java/Saxon-HE.jar";

class FacturX : public LHomeTest {
 protected:
  void SetUp() override { LSetUpFrenchBusiness(); }

  // Makes the Factur-X PDF of document KEY, checks its PDF/A-3 structure and saves its XML as
  // <folder>/<name>.xml; returns the XML.
  std::string Make(const std::string& kind, const std::string& key, const std::string& profile,
                   const std::string& folder, const std::string& name) {
    std::string pdf = home_.Path() + "/" + name + ".pdf";
    LExpectSuccess({kind, "pdf", key, "--out", pdf, "--facturx", "--profile", profile});
    LRunResult check = LRunProgram("/usr/bin/qpdf", {"--check", pdf});
    EXPECT_EQ(check.exitCode, 0) << name << "\n" << check.out << check.err;
    LRunResult list = LRunProgram("/usr/bin/pdfdetach", {"-list", pdf});
    EXPECT_EQ(list.out, "1 embedded files\n1: factur-x.xml\n") << name;
    std::filesystem::create_directories(folder);
    std::string xml = folder + "/" + name + ".xml";
    EXPECT_EQ(LRunProgram("/usr/bin/pdfdetach", {"-save", "1", "-o", xml, pdf}).exitCode, 0) << name;
    LRunResult meta = LRunProgram("/usr/bin/pdfinfo", {"-meta", pdf});
    for (const char* expected : {"<pdfaid:part>3</pdfaid:part>", "<pdfaid:conformance>B</pdfaid:conformance>",
                                 "<fx:DocumentFileName>factur-x.xml</fx:DocumentFileName>",
                                 "<pdfaSchema:prefix>fx</pdfaSchema:prefix>"}) {
      EXPECT_NE(meta.out.find(expected), std::string::npos) << name << ": " << expected;
    }
    std::string level = profile == "basic" ? "BASIC" : "EN 16931";
    EXPECT_NE(meta.out.find("<fx:ConformanceLevel>" + level + "</fx:ConformanceLevel>"), std::string::npos) << name;
    std::string bytes = LReadFile(pdf);
    EXPECT_NE(bytes.find("/AFRelationship /Data"), std::string::npos) << name;
    EXPECT_NE(bytes.find("/OutputIntents"), std::string::npos) << name;
    EXPECT_NE(bytes.find("/GTS_PDFA1"), std::string::npos) << name;
    EXPECT_NE(bytes.find("/ID ["), std::string::npos) << name;
    EXPECT_NE(LPdfText(pdf).find(kind == "creditnote" ? "AVOIR" : "FACTURE"), std::string::npos) << name;
    return LReadFile(xml);
  }

  // Validates every XML of folder against the profile's XSD and Schematron; the Schematron runs
  // once over the whole folder, a JVM start being slow.
  void Validate(const std::string& folder, const std::string& profile) {
    std::string dir = LSharedDataPath("facturx/facturx-" + profile);
    std::string xsd = dir + (profile == "basic" ? "/Factur-X_BASIC.xsd" : "/Factur-X_EN16931.xsd");
    std::string xsl = dir + (profile == "basic" ? "/Factur-X_1.09_BASIC.xsl" : "/Factur-X_1.09_EN16931.xsl");
    int nFiles = 0;
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
      ++nFiles;
      LRunResult xsdRun = LRunProgram("/usr/bin/xmllint", {"--noout", "--schema", xsd, file.path().string()});
      EXPECT_EQ(xsdRun.exitCode, 0) << file.path() << "\n" << xsdRun.err;
    }
    ASSERT_GT(nFiles, 0);
    std::string reports = folder + "-svrl";
    std::filesystem::create_directories(reports);
    LRunResult saxon = LRunProgram("/usr/bin/java", {"-cp", kSaxonJar, "net.sf.saxon.Transform", "-s:" + folder,
                                                     "-xsl:" + xsl, "-o:" + reports});
    ASSERT_EQ(saxon.exitCode, 0) << saxon.err;
    int nReports = 0;
    for (const auto& file : std::filesystem::directory_iterator(reports)) {
      ++nReports;
      std::string svrl = LReadFile(file.path().string());
      EXPECT_NE(svrl.find("fired-rule"), std::string::npos) << file.path();
      std::size_t failed = svrl.find("failed-assert");
      EXPECT_EQ(failed, std::string::npos) << file.path() << "\n" << svrl.substr(failed == std::string::npos ? 0 : failed, 800);
    }
    EXPECT_EQ(nReports, nFiles);
  }
};

TEST_F(FacturX, DocumentsValidateAgainstTheSchemaAndTheBusinessRules) {
  std::string en16931 = home_.Path() + "/en16931";
  std::string basic = home_.Path() + "/basic";

  // Two rates and shipping.
  LExpectSuccess({"invoice", "new", "--number", "F1", "--customer", "C1", "--date", "2026-11-20", "--line",
                  "PAIN|Pain de campagne|12|3.50|Réduite|", "--line", "FOUR|Maintenance du four|1|1450|TVA|",
                  "--shipping", "15", "--shipping-tax", "TVA"});
  std::string xml = Make("invoice", "F1", "en16931", en16931, "rates-shipping");
  for (const char* expected : {"<ram:ID>F1</ram:ID>", "<ram:TypeCode>380</ram:TypeCode>",
                               "<udt:DateTimeString format=\"102\">20261120</udt:DateTimeString>",
                               "<ram:ID schemeID=\"VA\">FR32123456789</ram:ID>", "<ram:Name>Boulangerie Martin</ram:Name>",
                               "<ram:PostcodeCode>69003</ram:PostcodeCode>", "<ram:RateApplicablePercent>5.50</ram:RateApplicablePercent>",
                               "<ram:TaxBasisTotalAmount>1507.00</ram:TaxBasisTotalAmount>",
                               "<ram:TaxTotalAmount currencyID=\"EUR\">295.31</ram:TaxTotalAmount>",
                               "<ram:GrandTotalAmount>1802.31</ram:GrandTotalAmount>"}) {
    EXPECT_NE(xml.find(expected), std::string::npos) << expected;
  }
  Make("invoice", "F1", "basic", basic, "rates-shipping");

  // A fixed 10 % discount line over taxed and untaxed lines.
  std::string json = home_.Path() + "/discount.json";
  LWriteFile(json, R"({"Customer": "C1", "Date": "2026-11-21", "Lines": [
      {"Code": "A", "Description": "Farine", "Qty": 3, "UnitValue": 1999, "TaxName": "Réduite"},
      {"Code": "B", "Description": "Pétrin", "Qty": 1, "UnitValue": 33333, "TaxName": "TVA"},
      {"Code": "C", "Description": "Débours", "Qty": 1, "UnitValue": 1001, "TaxName": "Aucun"},
      {"Description": "Remise fidélité", "Qty": 1, "UnitValue": 0, "Discount": 10, "TaxName": "Aucun"}]})");
  LExpectSuccess({"invoice", "new", "--number", "F2", "--file", json});
  // The discount line is marked on the record, then the edit re-totals the invoice.
  LExpectSuccess({"record", "set", "Invoices", "F2", "FixedPercentageDiscountItem=4"});
  LExpectSuccess({"invoice", "edit", "F2", "--notes", "Remise de fidélité"});
  xml = Make("invoice", "F2", "en16931", en16931, "discount-untaxed");
  EXPECT_NE(xml.find("<ram:CategoryCode>E</ram:CategoryCode>"), std::string::npos);
  // The allowances are what the totaller took off each base: 10 % of 59,97, 333,33 and 10,01,
  // each truncated.
  for (const char* expected : {"<ram:ActualAmount>5.99</ram:ActualAmount>", "<ram:ActualAmount>33.33</ram:ActualAmount>",
                               "<ram:ActualAmount>1.00</ram:ActualAmount>",
                               "<ram:AllowanceTotalAmount>40.32</ram:AllowanceTotalAmount>",
                               "<ram:GrandTotalAmount>425.96</ram:GrandTotalAmount>"}) {
    EXPECT_NE(xml.find(expected), std::string::npos) << expected;
  }
  Make("invoice", "F2", "basic", basic, "discount-untaxed");

  LExpectSuccess({"creditnote", "new", "--number", "AV1", "--customer", "C1", "--date", "2026-11-22", "--line",
                  "FOUR|Geste commercial|1|120|TVA|"});
  xml = Make("creditnote", "AV1", "en16931", en16931, "credit-note");
  EXPECT_NE(xml.find("<ram:TypeCode>381</ram:TypeCode>"), std::string::npos);

  // A business under the franchise, selling to a private customer.
  LExpectSuccess({"record", "set", "Misc", "Company", "VATExempt=1", "VATNumber="});
  LExpectSuccess({"invoice", "new", "--number", "F3", "--customer", "P1", "--date", "2026-11-23", "--untaxed",
                  "--line", "|Cours de poterie|2|40|Aucun|"});
  xml = Make("invoice", "F3", "en16931", en16931, "exempt");
  EXPECT_NE(xml.find("TVA non applicable, art. 293 B du CGI"), std::string::npos);
  EXPECT_NE(xml.find("<ram:ID schemeID=\"FC\">12345678900012</ram:ID>"), std::string::npos);
  Make("invoice", "F3", "basic", basic, "exempt");

  Validate(en16931, "en16931");
  Validate(basic, "basic");
}

TEST_F(FacturX, WhatCannotBeAnEInvoiceIsRefused) {
  LExpectSuccess({"quote", "new", "--customer", "C1", "--line", "|Devis|1|10|TVA|"});
  LExpectRefused({"quote", "pdf", "1", "--facturx"},
                 "Factur-X : seules les factures et les avoirs sont des factures électroniques.");
  LExpectSuccess({"tax", "set", "--count", "3", "--name", "3=Double", "--rate", "3=5/9.975/1"});
  LExpectSuccess({"invoice", "new", "--customer", "C1", "--line", "|Service|1|100|Double|"});
  LExpectRefused({"invoice", "pdf", "1", "--facturx"},
                 "Factur-X : la taxe « Double » a deux taux ; une facture électronique n'en porte qu'un par ligne.");
  LExpectSuccess({"record", "set", "Misc", "Company", "VATExempt=1"});
  LExpectSuccess({"invoice", "new", "--customer", "C1", "--line", "|Service|1|100|TVA|"});
  LExpectRefused({"invoice", "pdf", "2", "--facturx"},
                 "Factur-X : l'entreprise ne facture pas la TVA (TVA non applicable, art. 293 B du CGI) mais le "
                 "document en porte ; enregistrez-le sans taxe.");
  LExpectUsageErrors({{"invoice", "pdf", "2", "--facturx", "--profile", "extended"}, {"invoice", "pdf", "2", "--profile", "basic"}});
  EXPECT_FALSE(std::filesystem::exists(home_.Path() + "/Facture-1.pdf"));
  EXPECT_FALSE(std::filesystem::exists("Facture-1.pdf"));
}

}  // namespace
