// Hostile input on the command line: quantities that are not finite numbers, days that do not
// exist, years beyond four digits and an expression nested 30,000 deep are each refused with a
// French message, never a crash, and nothing is written.
#include <gtest/gtest.h>

#include <string>

#include "tests/app/clitest.h"
#include "tests/support/testhome.h"

namespace {

class HostileInputCliTest : public LHomeTest {
 protected:
  void SetUp() override {
    LExpectSuccess({"init", "--name", "Hostile SARL"});
    LExpectSuccess({"customer", "add", "C1", "Name=Client"});
  }
};

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

}  // namespace
