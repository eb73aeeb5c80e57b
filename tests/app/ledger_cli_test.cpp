// The chart-of-accounts and ledger commands through the real kontavo binary: the refusals and
// their messages word for word, renumbering, deleting, journal entries and their counters,
// transfers, bills and bill payments, the book check, and several desks posting at once.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <thread>

#include "llib/gen/date.h"
#include "llib/gen/system.h"
#include "tests/support/testhome.h"

namespace {

class LedgerCliTest : public LHomeTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(LRunKontavo({"record", "set", "Misc", "Options", "CountryCode=FR"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"account", "defaults"}).exitCode, 0);
  }
  // A day this many days before today, "YYYY-MM-DD".
  static std::string DaysAgo(long days) { return LDate::Today().AddDays(-days).ToText(); }
  std::string Field(const std::string& list, const std::string& key, const std::string& field) {
    LRunResult result = LRunKontavo({"record", "get", list, key, field});
    return result.exitCode == 0 ? result.out.substr(0, result.out.size() - 1) : "<absent>";
  }
  std::string DayFile(const std::string& date) { return LReadFile(home_.SharedFolder() + "/Ledger/" + date + ".csv"); }
  // Runs kontavo and expects a refusal with exactly message on stderr.
  void ExpectRefused(const std::vector<std::string>& args, const std::string& message) {
    LRunResult result = LRunKontavo(args);
    EXPECT_EQ(result.exitCode, 1) << args[0] << " " << (args.size() > 1 ? args[1] : "");
    EXPECT_EQ(result.err, message + "\n");
  }
  void ExpectCheckClean() {
    LRunResult check = LRunKontavo({"check"});
    EXPECT_EQ(check.exitCode, 0) << check.out << check.err;
    EXPECT_EQ(check.out, "");
  }
};

TEST_F(LedgerCliTest, AccountAddRefusesInOrderWithTheDialogsWords) {
  ExpectRefused({"account", "add", "5000", "--type", "asset"}, "Veuillez entrer un nom pour ce nouveau compte.");
  ExpectRefused({"account", "add", "5000", "--name", "X"}, "Veuillez sélectionner le type de compte.");
  ExpectRefused({"account", "add", "5000", "--name", "X", "--type", "income"},
                "Veuillez sélectionner le type de compte de recettes.");
  ExpectRefused({"account", "add", "5000", "--name", "X", "--type", "expense"},
                "Veuillez sélectionner le type de compte de charges.");
  ExpectRefused({"account", "add", "1600", "--name", "X", "--type", "asset"},
                "Veuillez sélectionner la classification de l'état des flux de trésorerie.");
  const std::string wrongLength =
      "Le numéro de compte doit contenir 4 chiffres exactement. Ajoutez des zéros si nécessaire. Le nombre de "
      "chiffres utilisés peut être modifié dans la boîte de dialogue Plan de comptes.";
  ExpectRefused({"account", "add", "123", "--name", "X", "--type", "asset", "--cash"}, wrongLength);
  ExpectRefused({"account", "add", "12345", "--name", "X", "--type", "asset", "--cash"}, wrongLength);
  ExpectRefused({"account", "add", "1600", "--name", "X", "--type", "asset", "--cash", "--opening", "1,5"},
                "Veuillez entrer un solde d'ouverture valide.");
  ExpectRefused({"account", "add", "1110", "--name", "X", "--type", "asset", "--cash"},
                "Un compte avec ce numéro existe déjà. Veuillez sélectionner un autre numéro de compte.");
  EXPECT_EQ(LRunKontavo({"account", "add", "5000", "--name", "X", "--type", "savings"}).exitCode, 2);
  EXPECT_FALSE(std::filesystem::exists(home_.SharedFolder() + "/Accounts/1600.dat"));

  ASSERT_EQ(LRunKontavo({"account", "add", "0123", "--name", "Caisse 2", "--type", "asset", "--cash", "--header",
                         "--linked", "1"})
                .exitCode,
            0);
  EXPECT_EQ(Field("Accounts", "0123", "Cash"), "0");  // never on a heading
  EXPECT_EQ(Field("Accounts", "0123", "Classification"), "0");
  EXPECT_EQ(Field("Misc", "Options", "DefAccount1Number"), "0123");
  ASSERT_EQ(LRunKontavo({"account", "add", "4920", "--name", "Autres", "--type", "income", "--subclass", "1"}).exitCode,
            0);
  EXPECT_EQ(Field("Accounts", "4920", "SubClass"), "1");
  ASSERT_EQ(LRunKontavo({"account", "add", "2160", "--name", "Emprunt", "--type", "liability", "--class", "3",
                         "--opening", "500.00"})
                .exitCode,
            0);
  EXPECT_EQ(Field("Accounts", "2160", "OpeningBalance"), "-50000");
  EXPECT_EQ(Field("Accounts", "3999", "OpeningBalance"), "50000");
  EXPECT_EQ(Field("Accounts", "2160", "Classification"), "3");
}

TEST_F(LedgerCliTest, DeletingAskesHidesRemovesAndRefusesUsedAccounts) {
  // Without a terminal and without --yes the question is the refusal.
  ExpectRefused({"account", "delete", "1190"}, "Voulez-vous vraiment supprimer le compte \"Fonds de caisse\" ?");
  EXPECT_EQ(Field("Accounts", "1190", "Deleted"), "<absent>");
  ASSERT_EQ(LRunKontavo({"account", "delete", "1190", "--yes"}).exitCode, 0);
  EXPECT_EQ(Field("Accounts", "1190", "Deleted"), "1");
  EXPECT_EQ(LRunKontavo({"account", "list"}).out.find("1190"), std::string::npos);
  EXPECT_NE(LRunKontavo({"account", "list", "--all"}).out.find("1190\tFonds de caisse\tActif\tDébit\t0.00\tsupprimé\n"),
            std::string::npos);
  ASSERT_EQ(LRunKontavo({"account", "restore", "1190"}).exitCode, 0);
  EXPECT_EQ(Field("Accounts", "1190", "Deleted"), "0");

  // Removing for good empties the slot that named it.
  ASSERT_EQ(LRunKontavo({"account", "delete", "6190", "--yes"}).exitCode, 0);
  ExpectRefused({"account", "delete", "6190"},
                "Voulez-vous vraiment supprimer définitivement le compte \"Frais de port payés\" - vous ne pourrez "
                "plus afficher ce compte ?");
  ASSERT_EQ(LRunKontavo({"--yes", "account", "delete", "6190"}).exitCode, 0);
  EXPECT_FALSE(std::filesystem::exists(home_.SharedFolder() + "/Accounts/6190.dat"));
  EXPECT_EQ(Field("Misc", "Options", "DefAccount8Number"), "");

  // Posted to and back to zero: still refused.
  std::string day = DaysAgo(3);
  ASSERT_EQ(LRunKontavo({"journal", "add", "--date", day, "--ref", "A1", "--desc", "x", "dr:6410:10", "cr:1110:10"})
                .exitCode,
            0);
  ASSERT_EQ(LRunKontavo({"journal", "add", "--date", day, "--ref", "A2", "--desc", "x", "cr:6410:10", "dr:1110:10"})
                .exitCode,
            0);
  ExpectRefused({"account", "delete", "6410", "--yes"},
                "Impossible de supprimer le compte 'Loyer'.\nCe compte a été utilisé dans une transaction.");
  ASSERT_EQ(LRunKontavo({"account", "edit", "1120", "--opening", "5"}).exitCode, 0);
  LRunResult both = LRunKontavo({"account", "delete", "1120", "9999", "--yes"});
  EXPECT_EQ(both.exitCode, 1);
  EXPECT_EQ(both.err,
            "Le compte 9999 n'existe pas dans le plan comptable.\n"
            "Impossible de supprimer le compte 'Compte épargne'.\nCe compte a été utilisé dans une transaction.\n");
}

TEST_F(LedgerCliTest, RenumberingRewritesTheLedgerTheSlotsAndTheReconciliationFile) {
  std::string day = DaysAgo(2);
  ASSERT_EQ(LRunKontavo({"journal", "add", "--date", day, "--ref", "GJ1", "--desc", "Loyer", "dr:6410:100",
                         "cr:1110:100"})
                .exitCode,
            0);
  std::filesystem::create_directories(home_.SharedFolder() + "/Reconcile");
  LWriteFile(home_.SharedFolder() + "/Reconcile/1110.csv", "\"" + day + "\",\"GJ1\",\"-100.00\"\r\n");
  const std::string wrongLength =
      "Le nombre de chiffres doit être égal à 4. Ajoutez des zéros si nécessaire. Le nombre de chiffres d'un "
      "compte est précisé dans les options de la société.";
  ExpectRefused({"account", "edit", "1110", "--number", "111"}, wrongLength);
  ExpectRefused({"account", "edit", "1110", "--name", ""}, "Vous devez entrer un nom pour le compte.");
  ExpectRefused({"account", "edit", "1110", "--number", "1111"}, "Voulez-vous vraiment modifier le numéro de compte ?");
  ExpectRefused({"account", "edit", "1110", "--number", "1120", "--yes"},
                "Un compte avec ce numéro existe déjà. Veuillez sélectionner un autre numéro de compte.");
  ExpectRefused({"account", "edit", "7777"}, "Le compte 7777 n'existe pas dans le plan comptable.");

  ASSERT_EQ(LRunKontavo({"account", "edit", "1110", "--number", "1111", "--yes"}).exitCode, 0);
  EXPECT_FALSE(std::filesystem::exists(home_.SharedFolder() + "/Accounts/1110.dat"));
  EXPECT_EQ(Field("Accounts", "1111", "TotalBalance"), "-10000");
  std::string text = DayFile(day);
  EXPECT_EQ(text.find("\"1110\""), std::string::npos);
  EXPECT_NE(text.find("\"1111\""), std::string::npos);
  EXPECT_TRUE(std::filesystem::exists(home_.SharedFolder() + "/Reconcile/1111.csv"));
  EXPECT_FALSE(std::filesystem::exists(home_.SharedFolder() + "/Reconcile/1110.csv"));
  // Slot 1 named 1150, not 1110; rename the deposit account to see the slot follow.
  ASSERT_EQ(LRunKontavo({"account", "edit", "1150", "--number", "1151", "--yes"}).exitCode, 0);
  EXPECT_EQ(Field("Misc", "Options", "DefAccount1Number"), "1151");
  ExpectCheckClean();
}

TEST_F(LedgerCliTest, LinkedAccountsAreShownAndSet) {
  LRunResult shown = LRunKontavo({"account", "linked"});
  EXPECT_NE(shown.out.find("1\tCompte de dépôt\t1150\tFonds non déposés\n"), std::string::npos);
  EXPECT_NE(shown.out.find("7\tComptes fournisseurs\t2210\tComptes fournisseurs\n"), std::string::npos);
  ASSERT_EQ(LRunKontavo({"account", "linked", "1=1170:Caisse enregistreuse"}).exitCode, 0);
  EXPECT_EQ(Field("Misc", "Options", "DefAccount1Number"), "1170");
  EXPECT_EQ(Field("Accounts", "1170", "Cash"), "1");
  ExpectRefused({"account", "linked", "3=4999"},
                "Pour créer des factures, imputer des paiements ou créer des transactions d'achat, vous devez "
                "fournir des informations sur les comptes. Veuillez consulter l'aide pour plus d'informations.");
}

TEST_F(LedgerCliTest, JournalEntriesCheckNumberAndPost) {
  std::string day = DaysAgo(1);
  ExpectRefused({"journal", "add", "--date", day, "--ref", "R", "--desc", "d", "dr:6410:100", "cr:1110:99"},
                "Vous ne pouvez enregistrer qu'une transaction équilibrée. Veuillez ajouter un compte sur lequel "
                "imputer le montant.");
  ExpectRefused({"journal", "add", "--date", day, "--desc", "d", "dr:6410:1", "cr:1110:1"},
                "Vous devez entrer un numéro de référence de transaction.");
  ExpectRefused({"journal", "add", "--date", day, "--ref", "R", "dr:6410:1", "cr:1110:1"},
                "Veuillez entrer une description de transaction.");
  ExpectRefused({"journal", "add", "--date", day, "--ref", "R", "--desc", "d"},
                "Aucun compte n'a été imputé. Veuillez cliquer ici pour ajouter un compte.");
  ExpectRefused({"journal", "add", "--date", day, "--ref", "GJ[auto]", "--desc", "d", "dr:641:1", "cr:1110:1"},
                "Le compte 641 n'existe pas dans le plan comptable.");
  ExpectRefused({"journal", "add", "--date", "", "--ref", "R", "--desc", "d", "dr:6410:1", "cr:1110:1"},
                "La date \"\" n'est pas une date valide (AAAA-MM-JJ).");
  EXPECT_EQ(LRunKontavo({"journal", "add", "--ref", "R", "--desc", "d", "dr:6410:1,5", "cr:1110:1"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"journal", "add", "--ref", "R", "--desc", "d", "dx:6410:1"}).exitCode, 2);
  // Refused entries used no number.
  EXPECT_EQ(Field("Misc", "Options", "RefNumberGenJournal"), "<absent>");

  ASSERT_EQ(LRunKontavo({"record", "set", "Misc", "Options", "RefNumberGenJournal=10005"}).exitCode, 0);
  LRunResult added = LRunKontavo(
      {"journal", "add", "--date", day, "--type", "4", "--ref", "GJ[auto]", "--desc", "Loyer", "dr:6410:100.00",
       "cr:1110 - Compte-chèque:100.00"});
  ASSERT_EQ(added.exitCode, 0) << added.err;
  EXPECT_EQ(added.out, "GJ10005\n");
  EXPECT_EQ(Field("Misc", "Options", "RefNumberGenJournal"), "10006");
  EXPECT_EQ(Field("Misc", "Options", "LastAccountJournalApplied"), "1110");
  EXPECT_EQ(Field("Accounts", "6410", "TotalBalance"), "10000");
  EXPECT_EQ(Field("Accounts", "1110", "TotalBalance"), "-10000");
  EXPECT_EQ(LRunKontavo({"journal", "add", "--date", day, "--type", "1", "--ref", "REC-[x]", "--desc", "d",
                         "dr:1110:1", "cr:4110:1"})
                .out,
            "REC-10000\n");
  EXPECT_EQ(Field("Misc", "Options", "RefNumberReceipt"), "10001");

  // Re-saving unchanged writes nothing: the rows keep their CR LF (a rewrite would leave LF).
  std::string before = DayFile(day);
  LRunResult same = LRunKontavo({"--json", "journal", "edit", day, "GJ10005"});
  ASSERT_EQ(same.exitCode, 0) << same.err;
  EXPECT_EQ(same.out, "{\"reference\":\"GJ10005\",\"written\":false}\n");
  EXPECT_EQ(DayFile(day), before);
  // Only the description changed: the whole transaction is taken out and posted again.
  ASSERT_EQ(LRunKontavo({"journal", "edit", day, "GJ10005", "--desc", "Loyer de mai"}).exitCode, 0);
  LRunResult lines = LRunKontavo({"ledger", "--account", "6410"});
  EXPECT_EQ(lines.out, day + "\tGJ10005\tGeneral\t6410\tLoyer de mai\t100.00\t\n");
  EXPECT_EQ(Field("Accounts", "6410", "TotalBalance"), "10000");
  // Moving it to another day and amount.
  std::string other = DaysAgo(40);
  ASSERT_EQ(LRunKontavo({"journal", "edit", day, "GJ10005", "--date", other, "dr:6410:70", "cr:1110:70"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"ledger", "--account", "6410", "--from", day}).out, "");
  EXPECT_EQ(Field("Accounts", "6410", "TotalBalance"), "7000");
  ExpectRefused({"journal", "edit", day, "GJ10005"}, "La transaction GJ10005 du " + day +
                                                         " n'existe pas dans le grand livre.");
  ExpectCheckClean();
}

TEST_F(LedgerCliTest, OldDatesAskFutureDatesAndClosedPeriodsAreRefused) {
  std::string old = DaysAgo(365);
  std::string question = "Vous avez entré la date \"" + old +
                         "\", qui date de plus d'un an. Voulez-vous vraiment vous enregistrer ?";
  ExpectRefused({"journal", "add", "--date", old, "--ref", "R", "--desc", "d", "dr:6410:1", "cr:1110:1"}, question);
  EXPECT_EQ(LRunKontavo({"journal", "add", "--date", DaysAgo(364), "--ref", "R", "--desc", "d", "dr:6410:1",
                         "cr:1110:1"})
                .exitCode,
            0);
  EXPECT_EQ(
      LRunKontavo({"journal", "add", "--yes", "--date", old, "--ref", "R", "--desc", "d", "dr:6410:1", "cr:1110:1"})
          .exitCode,
      0);
  std::string future = DaysAgo(-365);
  EXPECT_EQ(LRunKontavo({"journal", "add", "--date", future, "--ref", "F", "--desc", "d", "dr:6410:1", "cr:1110:1"})
                .exitCode,
            0);
  ASSERT_EQ(LRunKontavo({"record", "set", "Misc", "Options", "ProhibitTransactionsInFuture=1"}).exitCode, 0);
  ExpectRefused({"journal", "add", "--date", future, "--ref", "F", "--desc", "d", "dr:6410:1", "cr:1110:1"},
                "Vous ne pouvez pas entrer de transaction future au-delà d'un an. Vous pouvez désactiver cette "
                "limite dans la fenêtre Options sous l'onglet Comptabilité");
  ASSERT_EQ(LRunKontavo({"record", "set", "Misc", "Company", "CTDEnabled=1", "CTDDate=" + DaysAgo(10)}).exitCode, 0);
  ExpectRefused({"journal", "add", "--date", DaysAgo(10), "--ref", "C", "--desc", "d", "dr:6410:1", "cr:1110:1"},
                "Les données entrées sont antérieures à la date de clôture. Veuillez désactiver la fonctionnalité "
                "date de clôture pour la date spécifiée sous l'onglet Comptes dans la fenêtre principale.");
  EXPECT_EQ(LRunKontavo({"journal", "add", "--date", DaysAgo(9), "--ref", "C", "--desc", "d", "dr:6410:1",
                         "cr:1110:1"})
                .exitCode,
            0);
}

TEST_F(LedgerCliTest, TransfersRefuseInOrderAndPostDestinationFirst) {
  ASSERT_EQ(LRunKontavo({"account", "edit", "1110", "--opening", "100"}).exitCode, 0);
  ExpectRefused({"transfer", "--from", "Rien", "--to", "1120", "--amount", "5"},
                "Vous devez sélectionner un compte duquel transférer.");
  ExpectRefused({"transfer", "--from", "1110", "--to", "", "--amount", "5"},
                "Vous devez sélectionner un compte vers lequel transférer.");
  ExpectRefused({"transfer", "--from", "Compte-chèque", "--to", "1110", "--amount", "5"},
                "Les comptes de départ et d'arrivée ne peuvent pas êtres les mêmes.");
  ExpectRefused({"transfer", "--from", "1110", "--to", "1120", "--amount", "0"},
                "Vous devez transférer un montant positif.");
  ExpectRefused({"transfer", "--from", "1110", "--to", "1120", "--amount", "5", "--date", DaysAgo(-1)},
                "Vous ne pouvez pas planifier un transfert avec une date future");
  ExpectRefused({"transfer", "--from", "1110", "--to", "1120", "--amount", "100.01"},
                "Le solde de ce compte est inexact.");
  LRunResult done = LRunKontavo({"transfer", "--from", "Compte-chèque", "--to", "Compte épargne", "--amount", "100"});
  ASSERT_EQ(done.exitCode, 0) << done.err;
  EXPECT_EQ(done.out, "GJ10000\n");
  std::string today = LDate::Today().ToText();
  EXPECT_EQ(LRunKontavo({"ledger"}).out, today + "\tGJ10000\tGeneral\t1120\tTransférer\t100.00\t\n" + today +
                                             "\tGJ10000\tGeneral\t1110\tTransférer\t-100.00\t\n");
  EXPECT_EQ(Field("Misc", "Options", "RefNumberGenJournal"), "10001");
  EXPECT_EQ(Field("Accounts", "1110", "TotalBalance"), "0");
}

TEST_F(LedgerCliTest, BillsAndBillPaymentsPostAndDeleteThroughTheirDocuments) {
  ASSERT_EQ(LRunKontavo({"record", "set", "Misc", "Tax", "TaxSystem=1", "TaxAccountPaid1=Autres charges à verser"})
                .exitCode,
            0);
  std::string day = DaysAgo(5);
  LRunResult bill = LRunKontavo({"bill", "add", "--supplier", "Dupont", "--date", day, "--notes", "Fournitures",
                                 "6420:100.00:TVA", "--tax", "1=20.00"});
  ASSERT_EQ(bill.exitCode, 0) << bill.err;
  EXPECT_EQ(bill.out, "PRC10000\n");
  std::string user = LGetPostingUserName();
  EXPECT_EQ(DayFile(day),
            "\"" + day + "\",\"PRC10000\",\"Achats\",\"2210\",\"\",\"Fournitures\",\"-120.00\",\"Tax=&UserName=" +
                user +
                "\",\"PRC10000\"\r\n"
                "\"" + day + "\",\"PRC10000\",\"Achats\",\"6420\",\"\",\"Fournitures\",\"+100.00\",\"Tax=TVA&UserName=" +
                user +
                "\",\"PRC10000\"\r\n"
                "\"" + day + "\",\"PRC10000\",\"Achats\",\"2390\",\"\",\"Fournitures\",\"+20.00\",\"Tax=PRC10000&UserName=" +
                user + "\",\"\"\r\n");
  EXPECT_EQ(Field("Bills", "PRC10000", "JournalTxnRef"), "PRC10000");
  EXPECT_EQ(Field("Bills", "PRC10000", "Total"), "12000");
  EXPECT_EQ(Field("Misc", "Options", "RefNumberPurchases"), "10001");

  // A bill already holds the next identifier: it is skipped for good.
  ASSERT_EQ(LRunKontavo({"record", "set", "Misc", "Options", "RefNumberPurchases=10000"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"bill", "add", "--supplier", "Martin", "--date", day, "6410:50"}).out, "PRC10001\n");
  EXPECT_EQ(Field("Misc", "Options", "RefNumberPurchases"), "10002");
  // Posting again under its reference uses no number and replaces the posting.
  EXPECT_EQ(LRunKontavo({"bill", "add", "--supplier", "Martin", "--date", day, "--ref", "PRC10001", "6410:60"}).out,
            "PRC10001\n");
  EXPECT_EQ(Field("Misc", "Options", "RefNumberPurchases"), "10002");
  EXPECT_EQ(Field("Accounts", "6410", "TotalBalance"), "6000");
  ExpectRefused({"bill", "add", "--supplier", "Martin", "--date", day, "641:60"},
                "Le compte 641 n'existe pas dans le plan comptable.");

  LRunResult payment = LRunKontavo({"billpayment", "add", "--supplier", "Dupont", "--amount", "120", "--date", day});
  ASSERT_EQ(payment.exitCode, 0) << payment.err;
  EXPECT_EQ(payment.out, "PMT10000\n");
  EXPECT_EQ(Field("BillPayments", "1", "Notes"), "Paiements; Dupont");
  EXPECT_EQ(Field("BillPayments", "1", "JournalTxnRef"), "PMT10000");
  EXPECT_EQ(Field("Accounts", "2210", "TotalBalance"), "-6000");
  EXPECT_EQ(Field("Accounts", "1110", "TotalBalance"), "-12000");
  EXPECT_EQ(LRunKontavo({"ledger", "--account", "1110"}).out,
            day + "\tPMT10000\tPaiements\t1110\tPaiements; Dupont\t-120.00\t1\n");

  // Deleting from the ledger deletes the documents.
  ASSERT_EQ(LRunKontavo({"ledger", "delete", day, "PMT10000"}).exitCode, 0);
  EXPECT_EQ(Field("BillPayments", "1", "Notes"), "<absent>");
  ASSERT_EQ(LRunKontavo({"ledger", "delete", day, "PRC10000"}).exitCode, 0);
  EXPECT_FALSE(std::filesystem::exists(home_.SharedFolder() + "/Bills/PRC10000.dat"));
  EXPECT_EQ(Field("Accounts", "2390", "TotalBalance"), "0");
  ExpectRefused({"ledger", "delete", day, "PRC10000"},
                "La transaction PRC10000 du " + day + " n'existe pas dans le grand livre.");
  ExpectCheckClean();

  // Without linked accounts no purchase is posted.
  ASSERT_EQ(LRunKontavo({"record", "set", "Misc", "Options", "DefAccount7Number=9990"}).exitCode, 0);
  LRunResult blocked = LRunKontavo({"bill", "add", "--supplier", "Martin", "--date", day, "6410:50"});
  EXPECT_EQ(blocked.exitCode, 1);
  EXPECT_EQ(blocked.err.rfind("Vous ne pouvez pas créer ni modifier des factures", 0), 0u);
}

TEST_F(LedgerCliTest, CheckReportsAndFixesTamperedBalances) {
  std::string day = DaysAgo(1);
  ASSERT_EQ(LRunKontavo({"journal", "add", "--date", day, "--ref", "R", "--desc", "d", "dr:6410:10", "cr:1110:10"})
                .exitCode,
            0);
  ExpectCheckClean();
  ASSERT_EQ(LRunKontavo({"record", "set", "Accounts", "6410", "TotalBalance=5"}).exitCode, 0);
  LRunResult found = LRunKontavo({"--json", "check"});
  EXPECT_EQ(found.exitCode, 1);
  EXPECT_NE(found.out.find("{\"list\":\"Accounts\",\"key\":\"6410\",\"field\":\"TotalBalance\",\"stored\":5,"
                           "\"computed\":1000,\"fixed\":false}"),
            std::string::npos)
      << found.out;
  LRunResult fixed = LRunKontavo({"check", "--fix"});
  EXPECT_EQ(fixed.exitCode, 0) << fixed.err;
  EXPECT_EQ(fixed.out, "Accounts/6410\tTotalBalance\tenregistré 5\tcalculé 1000\tcorrigé\n");
  ExpectCheckClean();
}

// Four desks number and post general entries at the same time: every number is used once.
TEST_F(LedgerCliTest, SeveralDesksPostingAtOnceShareTheCounter) {
  constexpr int kDesks = 4;
  constexpr int kEach = 15;
  std::string day = DaysAgo(1);
  std::vector<std::vector<std::string>> references(kDesks);
  std::vector<std::thread> desks;
  for (int d = 0; d < kDesks; ++d)
    desks.emplace_back([&, d] {
      for (int i = 0; i < kEach; ++i) {
        LRunResult result = LRunKontavo({"journal", "add", "--date", day, "--ref", "GJ[auto]", "--desc",
                                         "desk " + std::to_string(d), "dr:6410:1.01", "cr:1110:1.01"});
        references[d].push_back(result.exitCode == 0 ? result.out : "failed: " + result.err);
      }
    });
  for (auto& desk : desks) desk.join();
  std::set<std::string> unique;
  for (const auto& list : references)
    for (const auto& reference : list) {
      EXPECT_EQ(reference.rfind("GJ", 0), 0u) << reference;
      unique.insert(reference);
    }
  EXPECT_EQ(unique.size(), static_cast<std::size_t>(kDesks * kEach));
  EXPECT_EQ(Field("Misc", "Options", "RefNumberGenJournal"), std::to_string(10000 + kDesks * kEach));
  EXPECT_EQ(Field("Accounts", "6410", "TotalBalance"), std::to_string(101 * kDesks * kEach));
  ExpectCheckClean();
}

}  // namespace
