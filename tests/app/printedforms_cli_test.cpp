// The printed forms beside the sales documents, made by the real binary and read back with
// poppler: the payment receipt, the packing slip and the shipping label of an invoice, the
// customer statement with its balance brought forward and its aging, and the reports of the
// report table as PDF.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/app/clitest.h"
#include "tests/support/frenchbusiness.h"
#include "tests/support/pdfreader.h"
#include "tests/support/testhome.h"

namespace {

class PrintedForms : public LHomeTest {
 protected:
  void SetUp() override { LSetUpFrenchBusiness(); }

  // Runs kontavo in the test's folder, so that default file names land there; returns stdout.
  std::string RunHere(const std::string& words) {
    LRunResult run = LRunProgram("/bin/sh", {"-c", "cd '" + home_.Path() + "' && '" KONTAVO_BIN "' " + words});
    EXPECT_EQ(run.exitCode, 0) << words << "\n" << run.err;
    return run.out;
  }

  static void ExpectAll(const std::string& text, const std::vector<std::string>& expected) {
    for (const std::string& part : expected) EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
  }
};

TEST_F(PrintedForms, ReceiptPackingSlipAndShippingLabelOfAnInvoice) {
  LExpectSuccess({"invoice", "new", "--number", "F7", "--customer", "C1", "--date", "2026-11-02", "--line",
                  "PAIN|Pain de campagne|12|3.50|Réduite|", "--line", "SAC|Sac de farine T65|2.5|40|Réduite|"});
  LExpectSuccess({"record", "set", "Invoices", "F7", "ShippingAddress=Entrepôt Martin\n12 rue du Port\n69007 Lyon",
                  "TrackingRef=6A123456789"});
  LExpectSuccess({"payment", "add", "--customer", "C1", "--amount", "150", "--date", "2026-11-05", "--apply", "F7=100"});

  EXPECT_EQ(RunHere("payment pdf 1"), "Reçu-1.pdf\n");
  std::string receipt = home_.Path() + "/Reçu-1.pdf";
  // 12 × 3,50 + 2,5 × 40 = 142,00, with 5,5 % VAT 149,81.
  ExpectAll(LPdfText(receipt), {"REÇU", "N° 1", "Date : 05/11/2026", "Boulangerie Martin", "Montant reçu : 150,00 €",
                                "F7", "02/11/2026", "149,81 €", "100,00 €", "Non imputé", "50,00 €",
                                "Veuillez nous contacter pour plus d'informations sur ce reçu.", "SIREN 123456789"});
  EXPECT_EQ(LKeepPdfRendering(receipt, "receipt"), 1);

  EXPECT_EQ(RunHere("packingslip pdf F7"), "Bon-de-livraison-F7.pdf\n");
  std::string slip = home_.Path() + "/Bon-de-livraison-F7.pdf";
  std::string slipText = LPdfText(slip);
  ExpectAll(slipText, {"BON DE LIVRAISON", "Facture F7", "Suivi : 6A123456789", "Livrer à", "Boulangerie Martin",
                       "Entrepôt Martin", "69007 Lyon", "Pain de campagne", "12", "Sac de farine T65", "2,5",
                       "Nombre d'articles", "14,5", "Veuillez nous contacter pour plus d'informations sur ce bon."});
  // What goes into the parcel carries no price.
  for (const char* price : {"3,50", "149,81", "Total"}) EXPECT_EQ(slipText.find(price), std::string::npos) << price;
  EXPECT_NE(LPdfFontRows(slip).find("DejaVuSans"), std::string::npos);
  EXPECT_EQ(LKeepPdfRendering(slip, "packing-slip"), 1);

  std::string label = home_.Path() + "/label.pdf";
  EXPECT_EQ(LExpectSuccess({"shiplabel", "pdf", "F7", "--out", label}), label + "\n");
  ExpectAll(LPdfText(label), {"Expéditeur", "Atelier Dupuis", "12 rue des Lilas", "Destinataire", "Boulangerie Martin",
                              "12 rue du Port", "Document N° F7 du 02/11/2026", "Suivi : 6A123456789"});
  EXPECT_EQ(LKeepPdfRendering(label, "shipping-label"), 1);

  LExpectRefused({"payment", "pdf", "9"}, "Paiement introuvable : 9.");
  LExpectRefused({"packingslip", "pdf", "F9"}, "Document introuvable : F9.");
  LExpectUsageErrors({{"packingslip", "F7"}, {"payment", "pdf"}, {"shiplabel", "pdf", "F7", "F8"}});
}

TEST_F(PrintedForms, StatementBringsTheBalanceForwardAndAgesWhatIsOwed) {
  auto invoice = [](const std::string& key, const std::string& date, const std::string& price) {
    LExpectSuccess({"invoice", "new", "--number", key, "--customer", "C1", "--date", date, "--terms", "30", "--line",
                    "|Prestation " + key + "|1|" + price + "|TVA|"});
  };
  invoice("F1", "2026-08-01", "100");  // 120,00, paid in October
  invoice("F2", "2026-10-15", "50");   // 60,00, due 14/11: 16 days late at the end of November
  LExpectSuccess({"payment", "add", "--customer", "C1", "--amount", "120", "--date", "2026-10-20", "--apply", "F1=120"});
  invoice("F3", "2026-11-10", "200");  // 240,00, not due yet
  LExpectSuccess({"creditnote", "new", "--number", "AV1", "--customer", "C1", "--date", "2026-11-12", "--line",
                  "|Geste commercial|1|10|TVA|"});
  LExpectSuccess({"payment", "add", "--customer", "C1", "--amount", "30", "--date", "2026-11-20", "--apply", "F2=30"});
  invoice("F4", "2026-12-03", "999");  // after the statement date: left out
  LExpectSuccess({"invoice", "new", "--number", "X1", "--customer", "P1", "--date", "2026-11-11", "--line",
                  "|Autre client|1|77|TVA|"});

  EXPECT_EQ(RunHere("statement pdf C1 --date 2026-11-30"), "Relevé-C1.pdf\n");
  std::string path = home_.Path() + "/Relevé-C1.pdf";
  std::string text = LPdfText(path);
  // Brought forward on 01/11: 120 + 60 - 120 = 60; then 240, -12, -30.
  ExpectAll(text, {"RELEVÉ DE COMPTE", "Au 30/11/2026", "Période du 01/11/2026 au 30/11/2026", "Boulangerie Martin",
                   "Solde reporté", "60,00 €", "Facture F3", "240,00 €", "300,00 €", "Avoir AV1", "12,00 €", "288,00 €",
                   "Paiement 2", "30,00 €", "Solde dû", "258,00 €",
                   // aging of the invoices: F2's 30,00 late by 16 days, F3's 240,00 not due
                   "Total dû", "Non échu", "1 à 30 jours", "Plus de 90 jours", "270,00 €"});
  for (const char* absent : {"Facture F1", "Facture F4", "Autre client", "1 198,80"})
    EXPECT_EQ(text.find(absent), std::string::npos) << absent;
  EXPECT_EQ(LKeepPdfRendering(path, "statement"), 1);

  // From the beginning, every movement is listed and nothing brought forward.
  std::string all = home_.Path() + "/all.pdf";
  LExpectSuccess({"statement", "pdf", "C1", "--date", "2026-11-30", "--from", "2026-01-01", "--out", all});
  ExpectAll(LPdfText(all), {"Facture F1", "Paiement 1", "Facture F2", "0,00 €"});
  LExpectRefused({"statement", "pdf", "C9"}, "Client introuvable : C9.");
  LExpectUsageErrors({{"statement", "pdf", "C1", "--date", "2026-13-01"},
                      {"statement", "pdf", "C1", "--date", "2026-11-01", "--from", "2026-11-02"}});
}

TEST_F(PrintedForms, ReportsPrintOverPagesWithTheirHeadings) {
  LExpectSuccess({"invoice", "new", "--customer", "C1", "--date", "2026-11-02", "--line", "|Conseil|1|1000|TVA|"});
  EXPECT_EQ(RunHere("report aging --date 2026-11-30 --format pdf"), "Rapport-aging.pdf\n");
  std::string aging = home_.Path() + "/Rapport-aging.pdf";
  // Amounts never wrap; headings may, between their words.
  ExpectAll(LPdfText(aging), {"Classement chronologique des comptes clients", "Courant", "C1", "1 200,00 €",
                              "Total :", "Nombre de clients :", "Page 1 / 1", "SIREN 123456789"});
  EXPECT_EQ(LKeepPdfRendering(aging, "report-aging"), 1);

  // The chart of accounts is long: continued pages say what they continue.
  std::string chart = home_.Path() + "/coa.pdf";
  EXPECT_EQ(LExpectSuccess({"report", "coa", "--format", "pdf", "--out", chart}), chart + "\n");
  std::string text = LPdfText(chart);
  ExpectAll(text, {"Plan comptable", "1110 Compte-chèque", "Débit", "Plan comptable (suite)", "Page 2 / 2"});
  LKeepPdfRendering(chart, "report-coa");
  LExpectUsageErrors({{"report", "pl", "--out", chart}, {"report", "pl", "--format", "odt"}});
}

}  // namespace

namespace {

// The cheque and its stub: the amount in figures and in words, the payee, the place taken from
// the business's address; a void cheque is printed crossed out.
TEST_F(PrintedForms, ChequeCarriesItsAmountInWordsAndItsStub) {
  LExpectSuccess({"cheque", "next", "--account", "1110", "4051"});
  EXPECT_EQ(LExpectSuccess({"cheque", "add", "--account", "1110", "--payee", "SCI Les Tilleuls", "--amount", "1280.75",
                            "--date", "2026-11-03", "6410:1200:Loyer novembre", "6510:80.75"}),
            "PMT10000\n");
  EXPECT_EQ(RunHere("cheque pdf 4051"), "Chèque-4051.pdf\n");
  std::string path = home_.Path() + "/Chèque-4051.pdf";
  std::string text = LPdfText(path);
  ExpectAll(text, {"Talon du chèque n° 4051", "Date : 03/11/2026", "À l'ordre de : SCI Les Tilleuls",
                   "Montant : 1 280,75 €", "Loyer novembre", "Payez contre ce chèque",
                   "mille deux cent quatre-vingts euros et soixante-quinze centimes", "SCI Les Tilleuls",
                   "À Lyon, le 03/11/2026", "Atelier Dupuis", "Chèque n° 4051"});
  EXPECT_EQ(text.find("ANNULÉ"), std::string::npos);
  EXPECT_EQ(LPdfInfo(path, "Pages"), "1");
  EXPECT_NE(LPdfFontRows(path).find("DejaVuSans"), std::string::npos);
  EXPECT_EQ(LKeepPdfRendering(path, "cheque"), 1);

  LExpectSuccess({"cheque", "void", "4051", "--date", "2026-11-10"});
  std::string voided = home_.Path() + "/void.pdf";
  LExpectSuccess({"cheque", "pdf", "PMT10000", "--out", voided});
  ExpectAll(LPdfText(voided), {"ANNULÉ", "Annulé le 10/11/2026"});
  LExpectRefused({"cheque", "pdf", "77"}, "Le chèque n° 77 n'existe pas.");
  LExpectUsageErrors({{"cheque", "pdf"}, {"cheque", "pdf", "1", "2"}});
}

}  // namespace
