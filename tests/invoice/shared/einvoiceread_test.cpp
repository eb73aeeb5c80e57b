// The reader of received e-invoices: the shared samples of every profile, and the files a
// supplier's software (or an attacker) may send instead: entity bombs, external entities,
// malformed XML, other XML, invoices whose sums do not add up.
#include <gtest/gtest.h>

#include <string>

#include "invoice/shared/einvoiceread.h"
#include "tests/support/testhome.h"

namespace {

TEST(EInvoiceRead, SamplesOfEveryProfileGiveTheSameTotals) {
  for (const char* name : {"factur-x-minimum.xml", "factur-x-basic.xml", "factur-x-en16931.xml",
                           "factur-x-extended.xml", "invoice_EN16931.pdf"}) {
    LEInvoice invoice;
    std::string error;
    ASSERT_TRUE(LEInvoiceReadFile(LSharedDataPath(std::string("facturx/samples/") + name), invoice, &error))
        << name << ": " << error;
    EXPECT_EQ(invoice.number, "F20260023") << name;
    EXPECT_EQ(invoice.issueDate, "2026-01-31") << name;
    EXPECT_EQ(invoice.seller.name, "LE FOURNISSEUR") << name;
    EXPECT_EQ(invoice.seller.siren, "123456782") << name;
    EXPECT_EQ(invoice.taxBasisTotal, 10000) << name;
    EXPECT_EQ(invoice.taxTotal, 490) << name;
    EXPECT_EQ(invoice.grandTotal, 10490) << name;
    EXPECT_EQ(invoice.currency, "EUR") << name;
  }
  LEInvoice full;
  ASSERT_TRUE(LEInvoiceReadFile(LSharedDataPath("facturx/samples/invoice_EN16931.pdf"), full, nullptr));
  ASSERT_EQ(full.lines.size(), 3u);
  EXPECT_EQ(full.lines[1].name, "FOURNITURES PAPIER");
  EXPECT_EQ(full.lines[1].amount, 2800);
  EXPECT_DOUBLE_EQ(full.lines[1].rate, 10);
  ASSERT_EQ(full.taxes.size(), 4u);
  EXPECT_EQ(full.seller.vatNumber, "FR11123456782");
  EXPECT_EQ(full.seller.address, "35 rue d'ici\nSeller line 2\nSeller line 3\n75018 PARIS");
  EXPECT_EQ(full.dueDate, "2026-03-02");
}

TEST(EInvoiceRead, HostileAndBrokenXmlIsRefusedWithItsReason) {
  std::string sample = LReadFile(LSharedDataPath("facturx/samples/factur-x-basic.xml"));
  ASSERT_FALSE(sample.empty());
  std::string bomb =
      "<?xml version=\"1.0\"?>\n<!DOCTYPE lolz [<!ENTITY lol \"lol\"><!ENTITY lol2 "
      "\"&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;&lol;\"><!ENTITY lol3 \"&lol2;&lol2;&lol2;&lol2;&lol2;&lol2;\">]>\n"
      "<rsm:CrossIndustryInvoice xmlns:rsm=\"urn:un:unece:uncefact:data:standard:CrossIndustryInvoice:100\">&lol3;"
      "</rsm:CrossIndustryInvoice>";
  std::string external = "<?xml version=\"1.0\"?><!DOCTYPE x [<!ENTITY e SYSTEM \"file:///etc/passwd\">]><x>&e;</x>";
  std::string incoherent = sample;
  std::size_t grand = incoherent.find("<ram:GrandTotalAmount>104.90");
  ASSERT_NE(grand, std::string::npos);
  incoherent.replace(grand, 28, "<ram:GrandTotalAmount>104.91");
  std::string noNumber = sample;
  std::size_t id = noNumber.find("<ram:ID>F20260023</ram:ID>");
  ASSERT_NE(id, std::string::npos);
  noNumber.replace(id, 26, "<ram:ID></ram:ID>");

  struct Case {
    std::string name, xml, message;
  };
  for (const Case& c : std::vector<Case>{
           {"bomb", bomb, "Facture électronique refusée : le XML déclare une DTD ou des entités."},
           {"external entity", external, "Facture électronique refusée : le XML déclare une DTD ou des entités."},
           {"truncated", sample.substr(0, sample.size() / 2),
            "Ce fichier n'est pas une facture électronique Factur-X (CII). Le XML est mal formé."},
           {"other XML", "<?xml version=\"1.0\"?><Invoice><ID>1</ID></Invoice>",
            "Ce fichier n'est pas une facture électronique Factur-X (CII)."},
           {"empty", "", "Ce fichier n'est pas une facture électronique Factur-X (CII). Le XML est mal formé."},
           {"incoherent", incoherent, "Facture électronique incohérente : HT plus TVA ne fait pas le TTC."},
           {"no number", noNumber,
            "Facture électronique incomplète : numéro, date, parties ou règlement absents."}}) {
    LEInvoice invoice;
    std::string error;
    EXPECT_FALSE(LEInvoiceParseXml(c.xml, invoice, &error)) << c.name;
    EXPECT_EQ(error, c.message) << c.name;
    EXPECT_TRUE(invoice.number.empty() && invoice.lines.empty()) << c.name;
  }
}

}  // namespace
