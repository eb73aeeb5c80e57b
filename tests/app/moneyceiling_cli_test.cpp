// Amounts beyond the money ceiling, wherever they come in by the command line (document lines and
// document files, journal entries, items and their CSV import), are refused with a message that
// names the ceiling the business's way, and the books stay as they were: no document, no posting,
// no record, and `check` finds nothing.
#include <gtest/gtest.h>

#include <string>

#include "tests/app/clitest.h"
#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

class MoneyCeilingCliTest : public LHomeTest {
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

TEST_F(MoneyCeilingCliTest, EveryWayInRefusesAmountsBeyondTheCeilingAndWritesNothing) {
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

}  // namespace
