// The import ofx and expr commands through the real kontavo binary, on the shared sample
// statements: their text and JSON output, their exit statuses and their messages on stderr.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

constexpr const char* kUnterminatedEntity =
    "Les chaînes commençant par une esperluette (&) doivent se terminer par un point-virgule (;). "
    "Remplacez '&' par '&amp;' ou ajoutez ';' à la fin de la chaîne de contrôle.\n";

// Statement times with a zone depend on the machine's clock; the child runs at UTC, in English.
class ImportExprCliTest : public LHomeTest {
 protected:
  LEnvScope zone_{"TZ", "UTC0"};
  LEnvScope all_{"LC_ALL", nullptr};
  LEnvScope monetary_{"LC_MONETARY", nullptr};
  LEnvScope lang_{"LANG", "en_US.UTF-8"};
  LEnvScope country_{"KONTAVO_COUNTRY", nullptr};
};

std::string Sample(const char* name) { return LSharedDataPath(std::string("ofx/") + name); }

// ---- import ofx -------------------------------------------------------------------------------

TEST_F(ImportExprCliTest, ImportPrintsAccountPeriodBalanceThenLinesInListOrder) {
  LRunResult run = LRunKontavo({"import", "ofx", Sample("ofxparse_checking.ofx")});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out,
            "Compte : 1452687~7\n"
            "Période : 2000-01-01 07:00:00 au 2013-05-25 06:00:00\n"
            "Solde : 100.99\n"
            "2011-04-07\t0000488\t-25.00\tRETURNED CHECK FEE, CHECK # 319; RETURNED CHECK FEE, CHECK # 319 FOR "
            "$45.33 ON 04/07/11\n"
            "2011-04-05\t0000487\t-34.51\tAUTOMATIC WITHDRAWAL, ELECTRIC BILL; AUTOMATIC WITHDRAWAL, ELECTRIC "
            "BILL WEB(S )\n"
            "2011-03-31\t0000486\t0.01\tDIVIDEND EARNED FOR PERIOD OF 03; DIVIDEND EARNED FOR PERIOD OF "
            "03/01/2011 THROUGH 03/31/2011 ANNUAL PERCENTAGE YIELD EARNED IS 0.05%\n");
}

TEST_F(ImportExprCliTest, ImportJsonHoldsCentsAndTheSameOrder) {
  LRunResult run = LRunKontavo({"--json", "import", "ofx", Sample("ofxparse_checking.ofx")});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  nlohmann::json document = nlohmann::json::parse(run.out);
  EXPECT_EQ(document["account"], "1452687~7");
  EXPECT_EQ(document["start"], "2000-01-01 07:00:00");
  EXPECT_EQ(document["end"], "2013-05-25 06:00:00");
  EXPECT_EQ(document["balance"], 10099);
  ASSERT_EQ(document["lines"].size(), 3u);
  EXPECT_EQ(document["lines"][0],
            nlohmann::json({{"date", "2011-04-07"},
                            {"id", "0000488"},
                            {"description", "RETURNED CHECK FEE, CHECK # 319; RETURNED CHECK FEE, CHECK # 319 FOR "
                                            "$45.33 ON 04/07/11"},
                            {"amount", -2500}}));
  EXPECT_EQ(document["lines"][1]["amount"], -3451);
  EXPECT_EQ(document["lines"][2]["amount"], 1);
  EXPECT_EQ(document["lines"][2]["id"], "0000486");

  // Windows-1252 names are not UTF-8: the document stays valid JSON.
  LRunResult latin = LRunKontavo({"--json", "import", "ofx", Sample("ledgerautosync_accented_characters_latin1.ofx")});
  ASSERT_EQ(latin.exitCode, 0) << latin.err;
  EXPECT_TRUE(nlohmann::json::accept(latin.out)) << latin.out;
}

TEST_F(ImportExprCliTest, ImportScalesAmountsByTheBusinessCurrencyDigits) {
  ASSERT_EQ(LRunKontavo({"record", "set", "Misc", "Options", "CurrencyDigits=3"}).exitCode, 0);
  LRunResult run = LRunKontavo({"import", "ofx", Sample("phpofx_ofxdata-credit-card.ofx")});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.out,
            "Compte : 1234567891234567\n"
            "Période : 2016-08-23 00:00:00 au 2016-08-23 00:00:00\n"
            "Solde : -500.000\n"
            "2016-08-23\tABCDEFGHIJ\t-100.000\tVENDOR\n");
  LRunResult json = LRunKontavo({"--json", "import", "ofx", Sample("phpofx_ofxdata-credit-card.ofx")});
  EXPECT_EQ(json.out,
            "{\"account\":\"1234567891234567\",\"start\":\"2016-08-23 00:00:00\",\"end\":\"2016-08-23 00:00:00\","
            "\"balance\":-500000,\"lines\":[{\"date\":\"2016-08-23\",\"id\":\"ABCDEFGHIJ\",\"description\":\"VENDOR\","
            "\"amount\":-100000}]}\n");
}

TEST_F(ImportExprCliTest, ImportFaultsInTheStatementShowWhatWasReadAndExitOne) {
  // A raw "&" in a name: the reading goes on, the first fault is reported.
  LRunResult run = LRunKontavo({"import", "ofx", Sample("libofx_example-listing1.ofx")});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.err, kUnterminatedEntity);
  EXPECT_EQ(run.out,
            "Compte : 000000\n"
            "Période : 2009-02-09 11:59:00 au 2009-02-09 00:00:00\n"
            "Solde : 256.94\n"
            "2009-02-09\t00000000000000000000000000\t308.86\tDEPOSIT    000000\n"
            "2009-02-09\t00000000000000000000000000\t-98.91\tGROCER A \n");
  LRunResult json = LRunKontavo({"--json", "import", "ofx", Sample("libofx_example-listing1.ofx")});
  EXPECT_EQ(json.exitCode, 1);
  EXPECT_EQ(nlohmann::json::parse(json.out)["lines"].size(), 2u);
}

TEST_F(ImportExprCliTest, ImportFilesThatCannotBeReadShowOnlyTheirMessage) {
  LRunResult missing = LRunKontavo({"import", "ofx", home_.Path() + "/absent.ofx"});
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_EQ(missing.out, "");
  EXPECT_EQ(missing.err, "Le fichier est vide ou il s'agit du fichier OFX incorrect\n");

  LRunResult emptyPath = LRunKontavo({"--json", "import", "ofx", ""});
  EXPECT_EQ(emptyPath.exitCode, 1);
  EXPECT_EQ(emptyPath.out, "");
  EXPECT_EQ(emptyPath.err, "Impossible d'ouvrir le fichier OFX.\n");

  LWriteFile(home_.Path() + "/noofx.ofx", "OFXHEADER:100\n\n<HTML><BODY>Maintenance</BODY></HTML>\n");
  LRunResult noOfx = LRunKontavo({"import", "ofx", home_.Path() + "/noofx.ofx"});
  EXPECT_EQ(noOfx.exitCode, 1);
  EXPECT_EQ(noOfx.err, "Erreur de lecture du fichier OFX.\n");

  // OFX 2 in XML: understood as a statement without a message set the reader knows.
  LRunResult xml = LRunKontavo({"--json", "import", "ofx", Sample("ofxparse_suncorp.ofx")});
  EXPECT_EQ(xml.exitCode, 0) << xml.err;
  nlohmann::json document = nlohmann::json::parse(xml.out);
  EXPECT_EQ(document["account"], "");
  EXPECT_EQ(document["balance"], 0);
  EXPECT_TRUE(document["lines"].empty());
}

TEST_F(ImportExprCliTest, ImportWrongUsageExitsTwo) {
  EXPECT_EQ(LRunKontavo({"import"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"import", "ofx"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"import", "csv", Sample("ofxparse_checking.ofx")}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"import", "ofx", "a.ofx", "b.ofx"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"import", "ofx", Sample("ofxparse_checking.ofx"), "--bogus"}).exitCode, 2);
  LRunResult help = LRunKontavo({"help", "import"});
  EXPECT_EQ(help.exitCode, 0);
  EXPECT_NE(help.out.find("kontavo import ofx FILE"), std::string::npos);
}

// ---- expr ---------------------------------------------------------------------------------------

TEST_F(ImportExprCliTest, ExprWithoutFieldsPrintsTheSolverResult) {
  struct Case {
    const char* expression;
    const char* out;
  };
  for (const Case& c : {Case{"(1+2)*3", "9\n"}, Case{"2+3*4", "14\n"}, Case{"2*-3", "-6\n"}, Case{"-2*3", "-6\n"},
                        Case{"8/2/2", "2\n"}, Case{"2(3)", "5\n"}, Case{"1 2", "12\n"}, Case{"1+", "1\n"},
                        Case{"7/2", "3.5\n"}, Case{"0.1+0.2", "0.3\n"}, Case{"-0", "0\n"}}) {
    LRunResult run = LRunKontavo({"expr", c.expression});
    EXPECT_EQ(run.exitCode, 0) << c.expression << run.err;
    EXPECT_EQ(run.out, c.out) << c.expression;
  }
  EXPECT_EQ(LRunKontavo({"--json", "expr", "7/2"}).out, "{\"result\":3.5}\n");
}

TEST_F(ImportExprCliTest, ExprErrorsAreTheSolverTextsWithExitOne) {
  struct Case {
    const char* expression;
    const char* err;
  };
  for (const Case& c :
       {Case{"", "Expression vide ou non valide.\n"},
        Case{"1+a", "Symboles ou lettres non pris en charge présents dans l'expression.\n"},
        Case{"(1+2", "Les parenthèses ne sont pas équilibrées ou elles sont utilisées de façon incorrrecte.\n"},
        Case{")1+2(", "Les parenthèses ne sont pas équilibrées ou elles sont utilisées de façon incorrrecte.\n"},
        Case{"*2", "Expression non valide.\n"}, Case{"5/0", "Expression non valide. Division par 0.\n"}}) {
    LRunResult run = LRunKontavo({"expr", c.expression});
    EXPECT_EQ(run.exitCode, 1) << c.expression;
    EXPECT_EQ(run.out, "") << c.expression;
    EXPECT_EQ(run.err, c.err) << c.expression;
  }
}

TEST_F(ImportExprCliTest, ExprWithFieldsPrintsTheAmountInCurrencyUnits) {
  LRunResult run = LRunKontavo({"expr", "(Loyer+Charges)*12", "Loyer=100000", "Charges=25050"});
  ASSERT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.out, "15006.00\n");
  EXPECT_EQ(LRunKontavo({"--json", "expr", "Ventes/3", "Ventes=100"}).out, "{\"amount\":33}\n");
  EXPECT_EQ(LRunKontavo({"--json", "expr", "-Ventes/3", "Ventes=100"}).out, "{\"amount\":-33}\n");
  // 19.99 does not survive the trip through a double exactly, and truncation keeps the loss.
  EXPECT_EQ(LRunKontavo({"expr", "Prix", "Prix=1999"}).out, "19.98\n");
  EXPECT_EQ(LRunKontavo({"expr", "Achats*2", "Achats=-150"}).out, "-3.00\n");

  LRunResult unknown = LRunKontavo({"expr", "Ventes-Achats", "Ventes=100"});
  EXPECT_EQ(unknown.exitCode, 1);
  EXPECT_EQ(unknown.out, "");
  EXPECT_EQ(unknown.err, "Impossile de substituer l'expression. Détection de nom(s) de champ non reconnu(s).\n");
  LRunResult byZero = LRunKontavo({"expr", "Ventes/Rien", "Ventes=100", "Rien=0"});
  EXPECT_EQ(byZero.exitCode, 1);
  EXPECT_EQ(byZero.err, "Expression non valide. Division par 0.\n");

  ASSERT_EQ(LRunKontavo({"record", "set", "Misc", "Options", "CurrencyDigits=0"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"expr", "Total/10", "Total=1234"}).out, "123\n");
}

TEST_F(ImportExprCliTest, ExprReadsTheLocaleDecimalSymbol) {
  LEnvScope french("LANG", "fr_FR.UTF-8");
  EXPECT_EQ(LRunKontavo({"expr", "1,5*2"}).out, "3\n");
  LRunResult point = LRunKontavo({"expr", "1.5*2"});
  EXPECT_EQ(point.exitCode, 1);
  EXPECT_EQ(point.err, "Symboles ou lettres non pris en charge présents dans l'expression.\n");
  EXPECT_EQ(LRunKontavo({"--json", "expr", "Prix*2+0,25", "Prix=150"}).out, "{\"amount\":325}\n");
}

TEST_F(ImportExprCliTest, ExprWrongUsageExitsTwo) {
  EXPECT_EQ(LRunKontavo({"expr"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"expr", "A", "A"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"expr", "A", "=5"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"expr", "A", "A=1.5"}).exitCode, 2);  // fields are whole cents
  EXPECT_EQ(LRunKontavo({"expr", "A", "A=x"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"expr", "1", "--bogus"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"expr", "--", "--1"}).out, "1\n");  // after "--" every word is an expression
}

}  // namespace
