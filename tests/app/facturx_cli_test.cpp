// E-invoices in through the real binary: our own Factur-X read back gives the invoice's totals;
// the shared sample PDF becomes a posted bill whose total and ledger match its XML, on the
// supplier found by VAT number (or created); a second import and bad files are refused with
// nothing written.
#include <gtest/gtest.h>

#include <string>

#include "tests/app/clitest.h"
#include "tests/support/frenchbusiness.h"
#include "tests/support/testhome.h"

namespace {

class FacturXIn : public LHomeTest {
 protected:
  void SetUp() override { LSetUpFrenchBusiness(); }
  const std::string sample_ = LSharedDataPath("facturx/samples/invoice_EN16931.pdf");
};

TEST_F(FacturXIn, OwnInvoiceReadsBackWithItsTotals) {
  LExpectSuccess({"invoice", "new", "--number", "F9", "--customer", "C1", "--date", "2026-11-20", "--line",
                  "PAIN|Pain de campagne|12|3.50|Réduite|", "--line", "FOUR|Maintenance du four|1|1450|TVA|",
                  "--shipping", "15", "--shipping-tax", "TVA"});
  std::string pdf = home_.Path() + "/F9.pdf";
  LExpectSuccess({"invoice", "pdf", "F9", "--facturx", "--out", pdf});
  nlohmann::json read = LRunKontavoJson({"facturx", "read", pdf});
  nlohmann::json shown = LRunKontavoJson({"invoice", "show", "F9"});
  EXPECT_EQ(read["number"], "F9");
  EXPECT_EQ(read["issueDate"], "2026-11-20");
  EXPECT_EQ(read["grandTotal"], shown["total"]);
  EXPECT_EQ(read["taxTotal"], shown["taxTotal"]);
  EXPECT_EQ(read["seller"]["vatNumber"], "FR32123456789");
  EXPECT_EQ(read["buyer"]["name"], "Boulangerie Martin");
  EXPECT_EQ(read["lines"].size(), 2u);
  EXPECT_EQ(read["chargeTotal"], 1500);
}

TEST_F(FacturXIn, SamplePdfBecomesABillOnTheSupplierOfItsVatNumber) {
  LExpectSuccess({"supplier", "add", "FOURN", "Name=Le Fournisseur de Paris", "VATNumber=FR 11 123456782",
                  "ExpenseAccount=6110"});
  nlohmann::json read = LRunKontavoJson({"facturx", "read", sample_});
  EXPECT_EQ(read["grandTotal"], 10490);
  std::string reference = LExpectSuccess({"bill", "import", sample_});
  ASSERT_EQ(reference, "PRC10000\n");
  EXPECT_EQ(LStoredField("Bills", "PRC10000", "Supplier"), "FOURN");
  EXPECT_EQ(LStoredField("Bills", "PRC10000", "Total"), "10490");
  EXPECT_EQ(LStoredField("Bills", "PRC10000", "SupplierInvoiceNumber"), "F20260023");
  // Payables credited with the whole invoice, expenses and VAT debited.
  std::string ledger = LExpectSuccess({"ledger", "--from", "2026-01-31", "--to", "2026-01-31"});
  EXPECT_NE(ledger.find("-104.90"), std::string::npos) << ledger;
  EXPECT_NE(ledger.find("\t6110\t"), std::string::npos) << ledger;
  EXPECT_NE(ledger.find("4.90"), std::string::npos) << ledger;

  LExpectRefused({"bill", "import", sample_},
                 "La facture F20260023 de « LE FOURNISSEUR » a déjà été importée (PRC10000).");
}

TEST_F(FacturXIn, UnknownSellerBecomesASupplier) {
  EXPECT_EQ(LExpectSuccess({"bill", "import", sample_}), "PRC10000\n");
  EXPECT_EQ(LStoredField("Suppliers", "1", "Name"), "LE FOURNISSEUR");
  EXPECT_EQ(LStoredField("Suppliers", "1", "VATNumber"), "FR11123456782");
  EXPECT_EQ(LStoredField("Bills", "PRC10000", "Supplier"), "1");
}

TEST_F(FacturXIn, BadFilesAreRefusedAndNothingIsWritten) {
  std::string plainPdf = home_.Path() + "/plain.pdf";
  LExpectSuccess({"invoice", "new", "--customer", "C1", "--line", "|Conseil|1|100|TVA|"});
  LExpectSuccess({"invoice", "pdf", "1", "--out", plainPdf});
  std::string truncated = home_.Path() + "/truncated.pdf";
  LWriteFile(truncated, LReadFile(sample_).substr(0, 4000));
  std::string bomb = home_.Path() + "/bomb.xml";
  LWriteFile(bomb, "<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;\">]><a>&b;</a>");
  std::string ledgerBefore = LExpectSuccess({"ledger"});

  LExpectRefused({"bill", "import", plainPdf},
                 "Ce PDF n'est pas une facture électronique : Le PDF ne contient pas de fichier « factur-x.xml ».");
  LExpectRefused({"facturx", "read", bomb}, "Facture électronique refusée : le XML déclare une DTD ou des entités.");
  LExpectRefused({"bill", "import", bomb}, "Facture électronique refusée : le XML déclare une DTD ou des entités.");
  LRunResult run = LRunKontavo({"bill", "import", truncated});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.err.rfind("Ce PDF n'est pas une facture électronique : ", 0), 0u) << run.err;
  LExpectRefused({"bill", "import", home_.Path() + "/absent.xml"},
                 "Impossible de lire le fichier « " + home_.Path() + "/absent.xml ».");
  LExpectRefused({"bill", "import", sample_, "--supplier", "NOPE"}, "Le fournisseur « NOPE » n'existe pas.");

  EXPECT_EQ(LExpectSuccess({"record", "list", "Bills"}), "");
  EXPECT_EQ(LExpectSuccess({"record", "list", "Suppliers"}), "");
  EXPECT_EQ(LExpectSuccess({"ledger"}), ledgerBefore);
}

}  // namespace
