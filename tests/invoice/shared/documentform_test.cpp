// The printed forms of sales documents, made by the real binary and read back with poppler: the
// legal mentions of a French invoice, amounts and dates in the business's format, embedded
// fonts, a long invoice over several pages, every kind's title, the paper of the country, and a
// logo that cannot be drawn.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/app/clitest.h"
#include "tests/support/frenchbusiness.h"
#include "tests/support/pdfreader.h"
#include "tests/support/testhome.h"

namespace {

class DocumentPdf : public LHomeTest {
 protected:
  void SetUp() override { LSetUpFrenchBusiness(); }

  // Prints document KEY of kind to a file of the test's folder and returns its path.
  std::string Print(const std::string& kind, const std::string& key) {
    std::string path = home_.Path() + "/" + kind + "-" + key + ".pdf";
    EXPECT_EQ(LExpectSuccess({kind, "pdf", key, "--out", path}), path + "\n");
    return path;
  }
};

TEST_F(DocumentPdf, InvoiceCarriesTheLegalMentionsInTheBusinessFormat) {
  LExpectSuccess({"invoice", "new", "--number", "F2026-17", "--customer", "C1", "--date", "2026-11-20", "--terms",
                  "45", "--line", "PAIN|Pain de campagne au levain|12|3.50|Réduite|", "--line",
                  "FOUR|Maintenance du four|1|1450|TVA|", "--shipping", "15", "--shipping-tax", "TVA"});
  std::string path = Print("invoice", "F2026-17");
  std::string text = LPdfText(path);
  for (const char* expected :
       {"FACTURE", "N° F2026-17", "Date : 20/11/2026", "Date de livraison : 20/11/2026", "Échéance : 04/01/2027",
        // seller, with its legal identity at the foot
        "Atelier Dupuis", "12 rue des Lilas", "SARL au capital de 10 000,00 €", "SIREN 123456789",
        "SIRET 12345678900012", "RCS Lyon", "N° TVA FR32123456789",
        // buyer
        "Boulangerie Martin", "3 place Bellecour", "SIREN 987654321", "N° TVA FR11987654321",
        // lines: unit price excluding tax, quantity, rate, total
        "Pain de campagne au levain", "3,50", "5,5 %", "42,00 €", "Maintenance du four", "1 450,00", "20 %",
        "1 450,00 €", "Frais de port", "15,00 €",
        // per rate: base and amount; totals
        "1 465,00 €", "293,00 €", "2,31 €", "Total HT", "1 507,00 €", "295,31 €", "Total TTC", "1 802,31 €",
        // business customer: penalties and the fixed indemnity
        "Pénalités de retard : 12,5 % par an.", "Indemnité forfaitaire pour frais de recouvrement", "40 €",
        "Pas d'escompte pour paiement anticipé.", "Page 1 / 1",
        // the kind's notes and footer texts
        "Veuillez nous contacter pour plus d'informations sur les options de paiement.",
        "Nous vous remercions de votre confiance."}) {
    EXPECT_NE(text.find(expected), std::string::npos) << expected << "\n" << text;
  }
  EXPECT_EQ(text.find("TVA non applicable"), std::string::npos);

  std::string fonts = LPdfFontRows(path);
  EXPECT_NE(fonts.find("DejaVuSans"), std::string::npos) << fonts;
  EXPECT_EQ(fonts.find(" no "), std::string::npos) << "every font embedded:\n" << fonts;
  EXPECT_EQ(LPdfInfo(path, "Pages"), "1");
  EXPECT_NE(LPdfInfo(path, "Page size").find("(A4)"), std::string::npos);
  EXPECT_EQ(LPdfInfo(path, "Title"), "Facture F2026-17");
  EXPECT_EQ(LKeepPdfRendering(path, "invoice-legal"), 1);
}

TEST_F(DocumentPdf, ExemptBusinessAndPrivateCustomer) {
  LExpectSuccess({"record", "set", "Misc", "Company", "VATExempt=1"});
  LExpectSuccess({"invoice", "new", "--customer", "P1", "--date", "2026-03-02", "--terms", "now", "--untaxed",
                  "--line", "|Cours de poterie|2|40|Aucun|"});
  std::string text = LPdfText(Print("invoice", "1"));
  EXPECT_NE(text.find("TVA non applicable, art. 293 B du CGI"), std::string::npos) << text;
  EXPECT_NE(text.find("Paiement à réception de la facture."), std::string::npos) << text;
  EXPECT_NE(text.find("80,00 €"), std::string::npos) << text;
  // A consumer is owed neither the B2B penalty clause nor a VAT column.
  for (const char* absent : {"Pénalités", "40 €", "Total TTC", "P.U. HT          TVA"}) {
    EXPECT_EQ(text.find(absent), std::string::npos) << absent << "\n" << text;
  }
}

TEST_F(DocumentPdf, LongInvoiceRepeatsItsHeadingOnEveryPage) {
  std::vector<std::string> args = {"invoice", "new", "--customer", "C1", "--date", "2026-11-20"};
  for (int n = 1; n <= 120; ++n) {
    std::string description = "Article numéro " + std::to_string(n);
    if (n % 10 == 0) description += " dont la description est assez longue pour passer sur une deuxième ligne du tableau";
    args.insert(args.end(), {"--line", "A" + std::to_string(n) + "|" + description + "|1|" + std::to_string(n) + "|TVA|"});
  }
  LExpectSuccess(args);
  std::string path = Print("invoice", "1");
  std::string text = LPdfText(path);
  EXPECT_EQ(LPdfInfo(path, "Pages"), "4");
  for (int page = 1; page <= 4; ++page) {
    EXPECT_NE(text.find("Page " + std::to_string(page) + " / 4"), std::string::npos) << page;
  }
  std::size_t headings = 0;
  for (std::size_t at = text.find("Désignation"); at != std::string::npos; at = text.find("Désignation", at + 1)) ++headings;
  EXPECT_EQ(headings, 4u) << "the lines' heading on each page";
  for (int n = 1; n <= 120; ++n) {
    EXPECT_NE(text.find("Article numéro " + std::to_string(n) + " "), std::string::npos) << n;
  }
  EXPECT_NE(text.find("Facture N° 1 (suite)"), std::string::npos);
  // 1 + 2 + ... + 120 = 7260; with 20 % VAT 8712.
  EXPECT_NE(text.find("8 712,00 €"), std::string::npos);
  EXPECT_EQ(LKeepPdfRendering(path, "invoice-120-lines"), 4);
}

TEST_F(DocumentPdf, EveryKindHasItsTitleAndDefaultFileName) {
  LExpectSuccess({"supplier", "add", "S1", "Name=Minoterie Rhône"});
  struct Kind {
    std::string command, title, fileName, party;
  };
  for (const Kind& kind : std::vector<Kind>{{"quote", "DEVIS", "Devis-1.pdf", "Boulangerie Martin"},
                                            {"order", "COMMANDE", "Commande-1.pdf", "Boulangerie Martin"},
                                            {"creditnote", "AVOIR", "Avoir-1.pdf", "Boulangerie Martin"},
                                            {"porder", "BON DE COMMANDE", "Bon-de-commande-1.pdf", "Minoterie Rhône"}}) {
    std::string party = kind.command == "porder" ? "S1" : "C1";
    LExpectSuccess({kind.command, "new", "--customer", party, "--date", "2026-05-04", "--line", "X|Farine T65|25|1.20|Réduite|"});
    LRunResult run = LRunProgram("/bin/sh", {"-c", "cd '" + home_.Path() + "' && '" KONTAVO_BIN "' " + kind.command + " pdf 1"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, kind.fileName + "\n");
    std::string path = home_.Path() + "/" + kind.fileName;
    std::string text = LPdfText(path);
    EXPECT_NE(text.find(kind.title), std::string::npos) << kind.command << "\n" << text;
    EXPECT_NE(text.find(kind.party), std::string::npos) << kind.command;
    EXPECT_NE(text.find("31,65 €"), std::string::npos) << kind.command << "\n" << text;  // 30,00 + 5,5 %
    EXPECT_EQ(text.find("Pénalités"), std::string::npos) << "only invoices carry payment terms";
    LKeepPdfRendering(path, "kind-" + kind.command);
  }
  EXPECT_NE(LPdfText(home_.Path() + "/Bon-de-commande-1.pdf").find("Fournisseur"), std::string::npos);
  LExpectRefused({"invoice", "pdf", "9"}, "Document introuvable : 9.");
}

TEST_F(DocumentPdf, LetterPaperAndLogos) {
  LExpectSuccess({"record", "set", "Misc", "Options", "CountryCode=US"});
  LExpectSuccess({"invoice", "new", "--customer", "C1", "--line", "|Conseil|1|100|TVA|"});
  // A logo that is not an image: the invoice is printed without it and the user told why.
  std::string notImage = home_.Path() + "/logo.png";
  LWriteFile(notImage, "ceci n'est pas une image");
  LExpectSuccess({"record", "set", "Misc", "Company", "Logo=" + notImage});
  std::string path = home_.Path() + "/f.pdf";
  LRunResult run = LRunKontavo({"invoice", "pdf", "1", "--out", path});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.err, "L'image « " + notImage + " » n'est pas une image PNG lisible. Le document est imprimé sans logo.\n");
  EXPECT_NE(LPdfInfo(path, "Page size").find("(letter)"), std::string::npos) << LPdfInfo(path, "Page size");
  EXPECT_NE(LPdfText(path).find("FACTURE"), std::string::npos);

  // A real PNG, named relative to the business folder, is drawn.
  ASSERT_EQ(LRunProgram("/usr/bin/pdftoppm", {"-png", "-r", "20", "-singlefile", path, home_.SharedFolder() + "/logo"}).exitCode, 0);
  LExpectSuccess({"record", "set", "Misc", "Company", "Logo=logo.png"});
  run = LRunKontavo({"invoice", "pdf", "1", "--out", path});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.err, "");
  LRunResult images = LRunProgram("/usr/bin/pdfimages", {"-list", path});
  EXPECT_NE(images.out.find("image"), std::string::npos) << images.out;
  LKeepPdfRendering(path, "invoice-letter-logo");
}

}  // namespace
