// Hostile input on the command line, refused with a French message and nothing written: amounts
// beyond the money ceiling wherever they come in (document lines and document files, journal
// entries, items and their CSV import, cheque lines, applications to invoices and bank statements;
// the message names the ceiling the business's way, and `check` then finds nothing), quantities that are not finite numbers, days that do not exist,
// years beyond four digits, an expression nested 30,000 deep and texts of 100 KB in a document.
#include <gtest/gtest.h>

#include <string>

#include "tests/app/clitest.h"
#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

class HostileInputCliTest : public LHomeTest {
 protected:
  void SetUp() override {
    LExpectSuccess({"init", "--name", "Plafond SARL"});
    LExpectSuccess({"customer", "add", "C1", "Name=Client"});
  }
  // A French business, whatever an earlier test of the process set.
  LEnvScope locale_{"LC_ALL", "fr_FR.UTF-8"};
  LEnvScope country_{"KONTAVO_COUNTRY", "FR"};
};

constexpr char kCeiling[] = "(plafond 99 999 999 999,99 €)";

TEST_F(HostileInputCliTest, EveryWayInRefusesAmountsBeyondTheCeilingAndWritesNothing) {
  const std::string before = LExpectSuccess({"ledger"});
  LExpectRefused({"invoice", "new", "--customer", "C1", "--line", "|x|1|100000000000|Aucun|"},
                 std::string("Ligne trop grande : 1 × 100000000000 ") + kCeiling + ".");
  // Two lines each within the ceiling whose sum is not, given as a document file.
  std::string file = home_.Path() + "/doc.json";
  LWriteFile(file, R"({"Customer":"C1","Lines":[{"Description":"a","Qty":1,"UnitValue":9999999999999},)"
                   R"({"Description":"b","Qty":1,"UnitValue":9999999999999}]})");
  LExpectRefused({"invoice", "new", "--file", file}, "Le total du document dépasse le plafond de 99 999 999 999,99 €.");
  EXPECT_EQ(LRunKontavo({"invoice", "show", "1"}).exitCode, 1);

  LRunResult journal = LRunKontavo({"journal", "add", "--date", "2026-01-05", "--type", "0", "--ref", "J1", "--desc",
                                    "d", "dr:530000:92233720368547758.07", "cr:101000:92233720368547758.07"});
  EXPECT_EQ(journal.exitCode, 2);
  EXPECT_NE(journal.err.find(std::string("Montant trop grand : 92233720368547758.07 ") + kCeiling), std::string::npos)
      << journal.err;
  LRunResult bill = LRunKontavo({"bill", "add", "--supplier", "S1", "606000:92233720368547758.07"});
  EXPECT_EQ(bill.exitCode, 2);
  EXPECT_NE(bill.err.find(std::string("Montant trop grand : 92233720368547758.07 ") + kCeiling), std::string::npos)
      << bill.err;
  EXPECT_EQ(LExpectSuccess({"ledger"}), before);

  LExpectRefused({"item", "add", "GROS", "--description", "Gros", "--price", "1000000000000"},
                 std::string("Montant trop grand : 1000000000000 ") + kCeiling + ".");
  std::string csv = home_.Path() + "/articles.csv";
  LWriteFile(csv, "Code,Description,Prix\nBIG,Gros,100 000 000 000\nPETIT,Petit,\"12,50\"\n");
  std::string imported = LExpectSuccess({"import", "csv", "items", csv});
  EXPECT_NE(imported.find(std::string("Montant trop grand pour Price : 100 000 000 000 ") + kCeiling), std::string::npos)
      << imported;
  std::string items = LExpectSuccess({"item", "list"});
  EXPECT_EQ(items.find("GROS"), std::string::npos);
  EXPECT_EQ(items.find("BIG"), std::string::npos);
  EXPECT_NE(items.find("PETIT"), std::string::npos);
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
}

// The last ways in for an amount: the lines of a cheque, applications to invoices and the amounts
// of a bank statement in each format. Each refusal names the ceiling; nothing is written.
TEST_F(HostileInputCliTest, ChequeLinesApplicationsAndStatementsNameTheCeiling) {
  const std::string huge = "100000000000000";
  auto expectNamed = [](const LRunResult& run, const std::string& message) {
    EXPECT_NE(run.exitCode, 0);
    EXPECT_NE(run.err.find(message), std::string::npos) << run.err;
  };
  expectNamed(LRunKontavo({"cheque", "add", "--account", "512000", "--payee", "P", "--amount", "10", "641000:" + huge}),
              "Montant trop grand pour la ligne 641000 : " + huge + " " + kCeiling + ".");
  expectNamed(LRunKontavo({"payment", "add", "--customer", "C1", "--amount", "10", "--apply", "1=" + huge}),
              "Montant trop grand pour l'imputation sur 1 : " + huge + " " + kCeiling + ".");
  EXPECT_EQ(LExpectSuccess({"ledger"}), "");

  std::string ofx = home_.Path() + "/gros.ofx";
  LWriteFile(ofx, "OFXHEADER:100\nDATA:OFXSGML\n\n<OFX><BANKMSGSRSV1><STMTTRNRS><STMTRS><CURDEF>EUR"
                  "<BANKACCTFROM><ACCTID>123</BANKACCTFROM><BANKTRANLIST><STMTTRN><TRNTYPE>DEBIT"
                  "<DTPOSTED>20260105<TRNAMT>-" + huge + ".00<FITID>A1<NAME>Gros</STMTTRN>"
                  "</BANKTRANLIST></STMTRS></STMTTRNRS></BANKMSGSRSV1></OFX>\n");
  expectNamed(LRunKontavo({"bank", "import", ofx, "--account", "512000", "--format", "ofx"}),
              "Relevé OFX refusé : Montant trop grand pour l'opération 1 (A1) : -" + huge + ".00 " + kCeiling + ".");
  std::string csv = home_.Path() + "/gros.csv";
  LWriteFile(csv, "Date;Libellé;Montant\n05/01/2026;Gros;-" + huge + ",00\n");
  expectNamed(LRunKontavo({"bank", "import", csv, "--account", "512000", "--format", "csv"}),
              "Relevé CSV refusé : ligne de données 2 : Montant trop grand : -" + huge + ",00 " + kCeiling + ".");
  // CFONB 120: an old balance, then a movement of 14 digits without decimals (positions 91-104).
  std::string opening = "0130002    00550EUR0 00012345678  010326" + std::string(50, ' ') + "0000000000000{";
  std::string movement = "0430002000100550EUR0 0001234567805050326  050326GROS" + std::string(38, ' ') +
                         "1000000000000{";
  opening.resize(120, ' ');
  movement.resize(120, ' ');
  std::string cfonb = home_.Path() + "/gros.cfonb";
  LWriteFile(cfonb, opening + "\n" + movement + "\n");
  expectNamed(LRunKontavo({"bank", "import", cfonb, "--account", "512000", "--format", "cfonb"}),
              "Relevé CFONB refusé : enregistrement 2 (04) : Montant trop grand : 10000000000000 " +
                  std::string(kCeiling) + ".");
  std::string mt940 = home_.Path() + "/gros.sta";
  LWriteFile(mt940, ":20:REL1\n:25:FR7630002\n:60F:C260301EUR0,00\n:61:2603050305D" + huge +
                        ",00NTRFNONREF\n:62F:C260331EUR0,00\n");
  expectNamed(LRunKontavo({"bank", "import", mt940, "--account", "512000", "--format", "mt940"}),
              "Relevé MT940 refusé : ligne 4 (:61:) : Montant trop grand : " + huge + ",00 " + kCeiling + ".");
  EXPECT_EQ(LExpectSuccess({"bank", "lines", "--account", "512000"}), "");
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
}

TEST_F(HostileInputCliTest, NonFiniteQuantitiesImpossibleDatesAndDeepExpressionsAreRefused) {
  for (const char* quantity : {"nan", "NaN", "inf", "-inf", "1e400", "0x10"})
    LExpectRefused({"invoice", "new", "--customer", "C1", "--line", std::string("|x|") + quantity + "|1|Aucun|"},
                   std::string("Quantité invalide : ") + quantity + ".");
  for (const char* date : {"2026-02-30", "2025-02-29", "99999-01-01", "2026-13-01", "0000-00-00"})
    LExpectRefused({"invoice", "new", "--customer", "C1", "--date", date, "--line", "|x|1|1|Aucun|"},
                   std::string("Date invalide : ") + date + ".");
  EXPECT_EQ(LRunKontavo({"invoice", "show", "1"}).exitCode, 1);
  EXPECT_EQ(LExpectSuccess({"ledger"}), "");

  const std::string deep = std::string(30000, '(') + "1" + std::string(30000, ')');
  LExpectRefused({"expr", deep}, "Expression non valide.");
}

// Texts of 100 KB in a document, typed or in a document file, or in a customer's record, are
// refused before anything is written (printing one took seconds); 4,000 characters pass, accents
// counted as one.
TEST_F(HostileInputCliTest, HundredKilobyteTextsOfADocumentAreRefused) {
  const std::string huge(102400, 'a');
  const std::string end = " : 102400 caractères (4000 au plus).";
  LExpectRefused({"invoice", "new", "--customer", "C1", "--line", "|x|1|1|Aucun|", "--line", "|" + huge + "|1|1|Aucun|"},
                 "La description de la ligne 2 est trop longue" + end);
  LExpectRefused({"invoice", "new", "--customer", "C1", "--notes", huge, "--line", "|x|1|1|Aucun|"},
                 "Les notes sont trop longues" + end);
  std::string file = home_.Path() + "/doc.json";
  LWriteFile(file, R"({"Customer":"C1","Lines":[{"Description":")" + huge + R"(","Qty":1,"UnitValue":100}]})");
  LExpectRefused({"invoice", "new", "--file", file}, "La description de la ligne 1 est trop longue" + end);
  EXPECT_EQ(LRunKontavo({"invoice", "show", "1"}).exitCode, 1);
  EXPECT_EQ(LExpectSuccess({"ledger"}), "");
  LExpectRefused({"customer", "add", "C2", "Name=" + huge}, "Texte trop long pour Name" + end);
  EXPECT_EQ(LRunKontavo({"customer", "show", "C2"}).exitCode, 1);

  std::string longest;
  for (int i = 0; i < 2000; ++i) longest += "é ";
  EXPECT_EQ(LExpectSuccess({"invoice", "new", "--customer", "C1", "--notes", longest, "--line", "|" + longest + "|1|1|Aucun|"}),
            "1\n");
}

}  // namespace
