// kontavo cheque, cash and template end to end: what each prints, refuses (word for word, exit 1)
// and takes as wrong usage (exit 2), a cheque named by its number when two bank accounts have
// one of that number, and a template used with a new total.
#include <gtest/gtest.h>

#include "tests/app/clitest.h"

namespace {

class ChequeCliTest : public LHomeTest {
 protected:
  void SetUp() override {
    LExpectSuccess({"init"});
    LExpectSuccess({"account", "defaults"});
  }
};

TEST_F(ChequeCliTest, ChequesAreNamedByNumberPerAccountAndCashAndTemplatesPost) {
  LExpectUsageErrors({{"cheque", "add", "--payee", "P", "--amount", "5", "6420:5"},
                      {"cheque", "add", "--account", "1110", "--payee", "P", "--amount", "5", "6420"},
                      {"cheque", "add", "--account", "1110", "--payee", "P", "--amount", "cinq", "6420:5"},
                      {"cash", "add", "--account", "1190", "--amount", "5", "6420:5"},
                      {"template", "use"}});
  LExpectRefused({"cheque", "add", "--account", "1110", "--payee", " ", "--amount", "5", "6420:5"},
                 "Veuillez entrer le bénéficiaire du chèque.");
  LExpectRefused({"cheque", "add", "--account", "1110", "--payee", "P", "--amount", "5", "6300:5"},
                 "Le compte 6300 est un compte de regroupement : choisissez un de ses sous-comptes.");
  EXPECT_EQ(LExpectSuccess({"cheque", "add", "--account", "1110", "--payee", "P", "--amount", "5", "6420:5"}), "PMT10000\n");
  EXPECT_EQ(LExpectSuccess({"cheque", "next", "--account", "1120", "1"}), "1\n");
  EXPECT_EQ(LExpectSuccess({"cheque", "add", "--account", "1120", "--payee", "Q", "--amount", "7", "6420:7"}), "PMT10001\n");
  LExpectRefused({"cheque", "void", "1"}, "Plusieurs comptes ont un chèque n° 1 : précisez --account.");
  LExpectRefused({"cheque", "void", "9"}, "Le chèque n° 9 n'existe pas.");
  EXPECT_EQ(LExpectSuccess({"cheque", "void", "1", "--account", "1120"}), "PMT10001\n");
  EXPECT_NE(LExpectSuccess({"cheque", "list", "--account", "1120"}).find("\tQ\t7.00\tannulé "), std::string::npos);
  EXPECT_EQ(LExpectSuccess({"cheque", "delete", "PMT10000"}), "PMT10000\n");
  EXPECT_EQ(LExpectSuccess({"cheque", "list", "--account", "1110"}), "");

  EXPECT_EQ(LExpectSuccess({"cash", "add", "--account", "1190", "--receipt", "--amount", "12", "4110:12"}), "REC10000\n");
  LExpectRefused({"cash", "add", "--account", "1190", "--payment", "--amount", "12", "6420:10"},
                 "Le total des lignes ($10.00) ne correspond pas au montant ($12.00).");

  LExpectRefused({"template", "add", "Loyer", "dr:6410:750", "cr:1110:700"},
                 "Vous ne pouvez enregistrer qu'une transaction équilibrée. Veuillez ajouter un compte sur lequel "
                 "imputer le montant.");
  LExpectSuccess({"template", "add", "Loyer", "--desc", "Loyer mensuel", "dr:6410:750", "dr:6510:50", "cr:1110:800"});
  EXPECT_EQ(LExpectSuccess({"template", "use", "Loyer", "--amount", "1000"}), "GJ10000\n");
  std::string ledger = LExpectSuccess({"ledger", "--account", "6510"});
  EXPECT_NE(ledger.find("GJ10000\tGeneral\t6510\tLoyer mensuel\t62.50"), std::string::npos) << ledger;
  LExpectRefused({"template", "use", "Absent"}, "Le modèle « Absent » n'existe pas.");
  LExpectSuccess({"check"});
}

}  // namespace
