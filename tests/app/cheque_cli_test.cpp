// kontavo cheque, cash and template end to end: what each prints, refuses (word for word, exit 1)
// and takes as wrong usage (exit 2), a cheque named by its number when two bank accounts have
// one of that number, a cheque paying a supplier's bills and voided, and a template used with a
// new total.
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

TEST_F(ChequeCliTest, ChequeToASupplierPaysChosenBillsAndVoidingItGivesThemBack) {
  LExpectSuccess({"supplier", "add", "S1", "Name=Fournil"});
  EXPECT_EQ(LExpectSuccess({"bill", "add", "--supplier", "S1", "--date", "2026-03-01", "6410:100"}), "PRC10000\n");
  EXPECT_EQ(LExpectSuccess({"bill", "add", "--supplier", "S1", "--date", "2026-03-02", "6410:200"}), "PRC10001\n");
  auto cheque = [](std::vector<std::string> extra) {
    std::vector<std::string> args{"cheque", "add", "--account", "1110", "--payee", "Fournil", "--supplier", "S1",
                                  "--date", "2026-03-10"};
    args.insert(args.end(), extra.begin(), extra.end());
    return args;
  };
  auto field = [](const char* list, const char* key, const char* name) {
    return LExpectSuccess({"record", "get", list, key, name});
  };
  LExpectUsageErrors({cheque({"--amount", "150", "--auto", "--apply", "PRC10000=100"}),
                      cheque({"--amount", "150", "--apply", "PRC10000"})});
  LExpectRefused(cheque({"--amount", "150", "--apply", "PRC10001=250"}),
                 "Le montant appliqué à la facture PRC10001 doit être compris entre 0 et ce qu'elle doit encore "
                 "($200.00).");
  EXPECT_EQ(LExpectSuccess(cheque({"--amount", "150", "--apply", "PRC10000=100", "--apply", "PRC10001=50"})),
            "PMT10000\n");
  EXPECT_EQ(field("Bills", "PRC10000", "AmountPaid"), "10000\n");
  EXPECT_EQ(field("Bills", "PRC10001", "AmountPaid"), "5000\n");
  EXPECT_EQ(field("Suppliers", "S1", "Balance"), "15000\n");

  EXPECT_EQ(LExpectSuccess({"cheque", "void", "1", "--date", "2026-03-12"}), "PMT10000\n");
  EXPECT_EQ(field("Bills", "PRC10000", "AmountPaid"), "0\n");
  EXPECT_EQ(field("Bills", "PRC10001", "AmountPaid"), "0\n");
  EXPECT_EQ(field("Suppliers", "S1", "Balance"), "30000\n");
  EXPECT_EQ(field("BillPayments", "1", "Void"), "1\n");
  // The books hold the payment and its reversal, both the payment's.
  EXPECT_EQ(LExpectSuccess({"ledger", "--from", "2026-03-10"}),
            "2026-03-10\tPMT10000\tPaiements\t2210\tChèque n° 1; Fournil\t150.00\t1\n"
            "2026-03-10\tPMT10000\tPaiements\t1110\tChèque n° 1; Fournil\t-150.00\t1\n"
            "2026-03-12\tPMT10000V\tPaiements\t2210\tAnnulation du chèque n° 1\t-150.00\t1\n"
            "2026-03-12\tPMT10000V\tPaiements\t1110\tAnnulation du chèque n° 1\t150.00\t1\n");
  LExpectSuccess({"check"});

  // The next cheque spreads its amount, first due first.
  EXPECT_EQ(LExpectSuccess(cheque({"--amount", "120", "--auto"})), "PMT10001\n");
  EXPECT_EQ(field("Bills", "PRC10000", "AmountPaid"), "10000\n");
  EXPECT_EQ(field("Bills", "PRC10001", "AmountPaid"), "2000\n");
  EXPECT_EQ(field("Suppliers", "S1", "Balance"), "18000\n");
  LExpectSuccess({"check"});
}

}  // namespace
