// The import ofx and expr commands through the real kontavo binary, on the shared sample
// statements: their text and JSON output, their exit statuses and their messages on stderr.
// The solver's own readings and the locale's decimal symbol are proved by the template report
// form tests; these prove the command's output, units and messages.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/app/clitest.h"
#include "tests/support/envscope.h"

namespace {

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

  // Windows-1252 names are not UTF-8: the JSON document stays valid.
  std::string latin =
      LExpectSuccess({"--json", "import", "ofx", Sample("ledgerautosync_accented_characters_latin1.ofx")});
  EXPECT_TRUE(nlohmann::json::accept(latin)) << latin;
}

// Amounts follow the business's currency digits, in text and in the JSON's minor units.
TEST_F(ImportExprCliTest, ImportScalesAmountsByTheBusinessCurrencyDigits) {
  LExpectSuccess({"record", "set", "Misc", "Options", "CurrencyDigits=3"});
  EXPECT_EQ(LExpectSuccess({"import", "ofx", Sample("phpofx_ofxdata-credit-card.ofx")}),
            "Compte : 1234567891234567\n"
            "Période : 2016-08-23 00:00:00 au 2016-08-23 00:00:00\n"
            "Solde : -500.000\n"
            "2016-08-23\tABCDEFGHIJ\t-100.000\tVENDOR\n");
  EXPECT_EQ(LExpectSuccess({"--json", "import", "ofx", Sample("phpofx_ofxdata-credit-card.ofx")}),
            "{\"account\":\"1234567891234567\",\"start\":\"2016-08-23 00:00:00\",\"end\":\"2016-08-23 00:00:00\","
            "\"balance\":-500000,\"lines\":[{\"date\":\"2016-08-23\",\"id\":\"ABCDEFGHIJ\",\"description\":\"VENDOR\","
            "\"amount\":-100000}]}\n");
}

TEST_F(ImportExprCliTest, ImportFaultsInTheStatementShowWhatWasReadAndExitOne) {
  // A raw "&" in a name: the reading goes on, the first fault is reported.
  LRunResult run = LRunKontavo({"import", "ofx", Sample("libofx_example-listing1.ofx")});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(run.err,
            "Les chaînes commençant par une esperluette (&) doivent se terminer par un point-virgule (;). "
            "Remplacez '&' par '&amp;' ou ajoutez ';' à la fin de la chaîne de contrôle.\n");
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
  EXPECT_EQ(LExpectRefused({"import", "ofx", home_.Path() + "/absent.ofx"},
                           "Le fichier est vide ou il s'agit du fichier OFX incorrect"),
            "");
  EXPECT_EQ(LExpectRefused({"--json", "import", "ofx", ""}, "Impossible d'ouvrir le fichier OFX."), "");
  LWriteFile(home_.Path() + "/noofx.ofx", "OFXHEADER:100\n\n<HTML><BODY>Maintenance</BODY></HTML>\n");
  LExpectRefused({"import", "ofx", home_.Path() + "/noofx.ofx"}, "Erreur de lecture du fichier OFX.");

  // OFX 2 in XML: understood as a statement without a message set the reader knows.
  nlohmann::json document = LRunKontavoJson({"import", "ofx", Sample("ofxparse_suncorp.ofx")});
  EXPECT_EQ(document["account"], "");
  EXPECT_EQ(document["balance"], 0);
  EXPECT_TRUE(document["lines"].empty());

  LExpectUsageErrors({{"import"},
                      {"import", "ofx"},
                      {"import", "csv", Sample("ofxparse_checking.ofx")},
                      {"import", "ofx", "a.ofx", "b.ofx"},
                      {"import", "ofx", Sample("ofxparse_checking.ofx"), "--bogus"}});
  EXPECT_NE(LExpectSuccess({"help", "import"}).find("kontavo import ofx FILE"), std::string::npos);
}

// ---- expr ---------------------------------------------------------------------------------------

TEST_F(ImportExprCliTest, ExprPrintsTheSolverResultOrItsTextWithExitOne) {
  const std::pair<const char*, const char*> results[] = {
      {"(1+2)*3", "9\n"}, {"7/2", "3.5\n"}, {"0.1+0.2", "0.3\n"}, {"-0", "0\n"}};
  for (const auto& [expression, out] : results) EXPECT_EQ(LExpectSuccess({"expr", expression}), out) << expression;
  EXPECT_EQ(LExpectSuccess({"--json", "expr", "7/2"}), "{\"result\":3.5}\n");
  EXPECT_EQ(LExpectSuccess({"expr", "--", "--1"}), "1\n");  // after "--" every word is an expression
  EXPECT_EQ(LExpectRefused({"expr", "1+a"}, "Symboles ou lettres non pris en charge présents dans l'expression."), "");
  EXPECT_EQ(LExpectRefused({"expr", "5/0"}, "Expression non valide. Division par 0."), "");
}

TEST_F(ImportExprCliTest, ExprWithFieldsPrintsTheAmountInCurrencyUnits) {
  EXPECT_EQ(LExpectSuccess({"expr", "(Loyer+Charges)*12", "Loyer=100000", "Charges=25050"}), "15006.00\n");
  EXPECT_EQ(LExpectSuccess({"--json", "expr", "-Ventes/3", "Ventes=100"}), "{\"amount\":-33}\n");
  // 19.99 does not survive the trip through a double exactly, and truncation keeps the loss.
  EXPECT_EQ(LExpectSuccess({"expr", "Prix", "Prix=1999"}), "19.98\n");
  EXPECT_EQ(LExpectSuccess({"expr", "Achats*2", "Achats=-150"}), "-3.00\n");
  LExpectRefused({"expr", "Ventes-Achats", "Ventes=100"},
                 "Impossile de substituer l'expression. Détection de nom(s) de champ non reconnu(s).");
  LExpectRefused({"expr", "Ventes/Rien", "Ventes=100", "Rien=0"}, "Expression non valide. Division par 0.");
  LExpectSuccess({"record", "set", "Misc", "Options", "CurrencyDigits=0"});
  EXPECT_EQ(LExpectSuccess({"expr", "Total/10", "Total=1234"}), "123\n");

  // Fields are whole cents; a name needs its value.
  LExpectUsageErrors({{"expr"}, {"expr", "A", "A"}, {"expr", "A", "=5"}, {"expr", "A", "A=1.5"}, {"expr", "A", "A=x"},
                      {"expr", "1", "--bogus"}});
}

}  // namespace
