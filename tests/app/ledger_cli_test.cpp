// The chart-of-accounts and ledger commands through the real kontavo binary: the refusals and
// their messages word for word, renumbering, deleting, journal entries and their counters,
// transfers, bills and bill payments, the book check, and several desks posting at once.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <thread>

#include "llib/gen/date.h"
#include "llib/gen/system.h"
#include "tests/app/clitest.h"

namespace {

const std::string kAccountExists =
    "Un compte avec ce numéro existe déjà. Veuillez sélectionner un autre numéro de compte.";

class LedgerCliTest : public LHomeTest {
 protected:
  void SetUp() override {
    LExpectSuccess({"record", "set", "Misc", "Options", "CountryCode=FR"});
    LExpectSuccess({"account", "defaults"});
  }
  // A day this many days before today, "YYYY-MM-DD".
  static std::string DaysAgo(long days) { return LDate::Today().AddDays(-days).ToText(); }
  // A general entry of one cent from 1110 to 6410, with extra options first.
  static std::vector<std::string> Entry(const std::string& date, const std::string& ref,
                                        std::vector<std::string> extra = {}) {
    std::vector<std::string> args = {"journal", "add"};
    args.insert(args.end(), extra.begin(), extra.end());
    args.insert(args.end(), {"--date", date, "--ref", ref, "--desc", "d", "dr:6410:0.01", "cr:1110:0.01"});
    return args;
  }
  std::string DayFile(const std::string& date) { return LReadFile(home_.SharedFolder() + "/Ledger/" + date + ".csv"); }
  bool Exists(const std::string& relative) { return std::filesystem::exists(home_.SharedFolder() + relative); }
  static void ExpectCheckClean() { EXPECT_EQ(LExpectSuccess({"check"}), ""); }
};

TEST_F(LedgerCliTest, AccountAddRefusesInOrderWithTheDialogsWords) {
  LExpectRefused({"account", "add", "5000", "--type", "asset"}, "Veuillez entrer un nom pour ce nouveau compte.");
  LExpectRefused({"account", "add", "5000", "--name", "X"}, "Veuillez sélectionner le type de compte.");
  LExpectRefused({"account", "add", "5000", "--name", "X", "--type", "income"},
                 "Veuillez sélectionner le type de compte de recettes.");
  LExpectRefused({"account", "add", "5000", "--name", "X", "--type", "expense"},
                 "Veuillez sélectionner le type de compte de charges.");
  LExpectRefused({"account", "add", "1600", "--name", "X", "--type", "asset"},
                 "Veuillez sélectionner la classification de l'état des flux de trésorerie.");
  const std::string wrongLength =
      "Le numéro de compte doit contenir 4 chiffres exactement. Ajoutez des zéros si nécessaire. Le nombre de "
      "chiffres utilisés peut être modifié dans la boîte de dialogue Plan de comptes.";
  LExpectRefused({"account", "add", "123", "--name", "X", "--type", "asset", "--cash"}, wrongLength);
  LExpectRefused({"account", "add", "12345", "--name", "X", "--type", "asset", "--cash"}, wrongLength);
  LExpectRefused({"account", "add", "1600", "--name", "X", "--type", "asset", "--cash", "--opening", "1,5"},
                 "Veuillez entrer un solde d'ouverture valide.");
  LExpectRefused({"account", "add", "1110", "--name", "X", "--type", "asset", "--cash"}, kAccountExists);
  LExpectUsageErrors({{"account", "add", "5000", "--name", "X", "--type", "savings"}});
  EXPECT_FALSE(Exists("/Accounts/1600.dat"));

  LExpectSuccess(
      {"account", "add", "0123", "--name", "Caisse 2", "--type", "asset", "--cash", "--header", "--linked", "1"});
  EXPECT_EQ(LStoredField("Accounts", "0123", "Cash"), "0");  // never on a heading
  EXPECT_EQ(LStoredField("Accounts", "0123", "Classification"), "0");
  EXPECT_EQ(LStoredField("Misc", "Options", "DefAccount1Number"), "0123");
  LExpectSuccess({"account", "add", "4920", "--name", "Autres", "--type", "income", "--subclass", "1"});
  EXPECT_EQ(LStoredField("Accounts", "4920", "SubClass"), "1");
  LExpectSuccess(
      {"account", "add", "2160", "--name", "Emprunt", "--type", "liability", "--class", "3", "--opening", "500.00"});
  EXPECT_EQ(LStoredField("Accounts", "2160", "OpeningBalance"), "-50000");
  EXPECT_EQ(LStoredField("Accounts", "3999", "OpeningBalance"), "50000");
  EXPECT_EQ(LStoredField("Accounts", "2160", "Classification"), "3");
}

TEST_F(LedgerCliTest, DeletingAskesHidesRemovesAndRefusesUsedAccounts) {
  // Without a terminal and without --yes the question is the refusal.
  LExpectRefused({"account", "delete", "1190"}, "Voulez-vous vraiment supprimer le compte \"Fonds de caisse\" ?");
  EXPECT_EQ(LStoredField("Accounts", "1190", "Deleted"), "<absent>");
  LExpectSuccess({"account", "delete", "1190", "--yes"});
  EXPECT_EQ(LStoredField("Accounts", "1190", "Deleted"), "1");
  EXPECT_EQ(LExpectSuccess({"account", "list"}).find("1190"), std::string::npos);
  EXPECT_NE(LExpectSuccess({"account", "list", "--all"}).find("1190\tFonds de caisse\tActif\tDébit\t0.00\tsupprimé\n"),
            std::string::npos);
  LExpectSuccess({"account", "restore", "1190"});
  EXPECT_EQ(LStoredField("Accounts", "1190", "Deleted"), "0");

  // Removing for good empties the slot that named it.
  LExpectSuccess({"account", "delete", "6190", "--yes"});
  LExpectRefused({"account", "delete", "6190"},
                 "Voulez-vous vraiment supprimer définitivement le compte \"Frais de port payés\" - vous ne pourrez "
                 "plus afficher ce compte ?");
  LExpectSuccess({"--yes", "account", "delete", "6190"});
  EXPECT_FALSE(Exists("/Accounts/6190.dat"));
  EXPECT_EQ(LStoredField("Misc", "Options", "DefAccount8Number"), "");

  // Posted to and back to zero: still refused.
  std::string day = DaysAgo(3);
  LExpectSuccess({"journal", "add", "--date", day, "--ref", "A1", "--desc", "x", "dr:6410:10", "cr:1110:10"});
  LExpectSuccess({"journal", "add", "--date", day, "--ref", "A2", "--desc", "x", "cr:6410:10", "dr:1110:10"});
  LExpectRefused({"account", "delete", "6410", "--yes"},
                 "Impossible de supprimer le compte 'Loyer'.\nCe compte a été utilisé dans une transaction.");
  LExpectSuccess({"account", "edit", "1120", "--opening", "5"});
  LExpectRefused({"account", "delete", "1120", "9999", "--yes"},
                 "Le compte 9999 n'existe pas dans le plan comptable.\n"
                 "Impossible de supprimer le compte 'Compte épargne'.\nCe compte a été utilisé dans une transaction.");
}

TEST_F(LedgerCliTest, RenumberingRewritesTheLedgerTheSlotsAndTheReconciliationFile) {
  std::string day = DaysAgo(2);
  LExpectSuccess({"journal", "add", "--date", day, "--ref", "GJ1", "--desc", "Loyer", "dr:6410:100", "cr:1110:100"});
  std::filesystem::create_directories(home_.SharedFolder() + "/Reconcile");
  LWriteFile(home_.SharedFolder() + "/Reconcile/1110.csv", "\"" + day + "\",\"GJ1\",\"-100.00\"\r\n");
  LExpectRefused({"account", "edit", "1110", "--number", "111"},
                 "Le nombre de chiffres doit être égal à 4. Ajoutez des zéros si nécessaire. Le nombre de chiffres "
                 "d'un compte est précisé dans les options de la société.");
  LExpectRefused({"account", "edit", "1110", "--name", ""}, "Vous devez entrer un nom pour le compte.");
  LExpectRefused({"account", "edit", "1110", "--number", "1111"},
                 "Voulez-vous vraiment modifier le numéro de compte ?");
  LExpectRefused({"account", "edit", "1110", "--number", "1120", "--yes"}, kAccountExists);
  LExpectRefused({"account", "edit", "7777"}, "Le compte 7777 n'existe pas dans le plan comptable.");

  LExpectSuccess({"account", "edit", "1110", "--number", "1111", "--yes"});
  EXPECT_FALSE(Exists("/Accounts/1110.dat"));
  EXPECT_EQ(LStoredField("Accounts", "1111", "TotalBalance"), "-10000");
  EXPECT_EQ(DayFile(day).find("\"1110\""), std::string::npos);
  EXPECT_NE(DayFile(day).find("\"1111\""), std::string::npos);
  EXPECT_TRUE(Exists("/Reconcile/1111.csv"));
  EXPECT_FALSE(Exists("/Reconcile/1110.csv"));
  // Slot 1 named 1150, not 1110; rename the deposit account to see the slot follow.
  LExpectSuccess({"account", "edit", "1150", "--number", "1151", "--yes"});
  EXPECT_EQ(LStoredField("Misc", "Options", "DefAccount1Number"), "1151");
  ExpectCheckClean();
}

TEST_F(LedgerCliTest, LinkedAccountsAreShownAndSet) {
  std::string shown = LExpectSuccess({"account", "linked"});
  EXPECT_NE(shown.find("1\tCompte de dépôt\t1150\tFonds non déposés\n"), std::string::npos);
  EXPECT_NE(shown.find("7\tComptes fournisseurs\t2210\tComptes fournisseurs\n"), std::string::npos);
  LExpectSuccess({"account", "linked", "1=1170:Caisse enregistreuse"});
  EXPECT_EQ(LStoredField("Misc", "Options", "DefAccount1Number"), "1170");
  EXPECT_EQ(LStoredField("Accounts", "1170", "Cash"), "1");
  LExpectRefused({"account", "linked", "3=4999"},
                 "Pour créer des factures, imputer des paiements ou créer des transactions d'achat, vous devez "
                 "fournir des informations sur les comptes. Veuillez consulter l'aide pour plus d'informations.");
}

TEST_F(LedgerCliTest, JournalEntriesCheckNumberAndPost) {
  std::string day = DaysAgo(1);
  LExpectRefused({"journal", "add", "--date", day, "--ref", "R", "--desc", "d", "dr:6410:100", "cr:1110:99"},
                 "Vous ne pouvez enregistrer qu'une transaction équilibrée. Veuillez ajouter un compte sur lequel "
                 "imputer le montant.");
  LExpectRefused({"journal", "add", "--date", day, "--desc", "d", "dr:6410:1", "cr:1110:1"},
                 "Vous devez entrer un numéro de référence de transaction.");
  LExpectRefused({"journal", "add", "--date", day, "--ref", "R", "dr:6410:1", "cr:1110:1"},
                 "Veuillez entrer une description de transaction.");
  LExpectRefused({"journal", "add", "--date", day, "--ref", "R", "--desc", "d"},
                 "Aucun compte n'a été imputé. Veuillez cliquer ici pour ajouter un compte.");
  LExpectRefused({"journal", "add", "--date", day, "--ref", "GJ[auto]", "--desc", "d", "dr:641:1", "cr:1110:1"},
                 "Le compte 641 n'existe pas dans le plan comptable.");
  LExpectRefused(Entry("", "R"), "Date invalide : .");
  LExpectUsageErrors({{"journal", "add", "--ref", "R", "--desc", "d", "dr:6410:1,5", "cr:1110:1"},
                      {"journal", "add", "--ref", "R", "--desc", "d", "dx:6410:1"}});
  // Refused entries used no number.
  EXPECT_EQ(LStoredField("Misc", "Options", "RefNumberGenJournal"), "<absent>");

  LExpectSuccess({"record", "set", "Misc", "Options", "RefNumberGenJournal=10005"});
  EXPECT_EQ(LExpectSuccess({"journal", "add", "--date", day, "--type", "4", "--ref", "GJ[auto]", "--desc", "Loyer",
                            "dr:6410:100.00", "cr:1110 - Compte-chèque:100.00"}),
            "GJ10005\n");
  EXPECT_EQ(LStoredField("Misc", "Options", "RefNumberGenJournal"), "10006");
  EXPECT_EQ(LStoredField("Misc", "Options", "LastAccountJournalApplied"), "1110");
  EXPECT_EQ(LStoredField("Accounts", "6410", "TotalBalance"), "10000");
  EXPECT_EQ(LStoredField("Accounts", "1110", "TotalBalance"), "-10000");
  EXPECT_EQ(LExpectSuccess({"journal", "add", "--date", day, "--type", "1", "--ref", "REC-[x]", "--desc", "d",
                            "dr:1110:1", "cr:4110:1"}),
            "REC-10000\n");
  EXPECT_EQ(LStoredField("Misc", "Options", "RefNumberReceipt"), "10001");

  // Re-saving unchanged writes nothing: the rows keep their CR LF (a rewrite would leave LF).
  std::string before = DayFile(day);
  EXPECT_EQ(LExpectSuccess({"--json", "journal", "edit", day, "GJ10005"}),
            "{\"reference\":\"GJ10005\",\"written\":false}\n");
  EXPECT_EQ(DayFile(day), before);
  // Only the description changed: the whole transaction is taken out and posted again.
  LExpectSuccess({"journal", "edit", day, "GJ10005", "--desc", "Loyer de mai"});
  EXPECT_EQ(LExpectSuccess({"ledger", "--account", "6410"}),
            day + "\tGJ10005\tGeneral\t6410\tLoyer de mai\t100.00\t\n");
  EXPECT_EQ(LStoredField("Accounts", "6410", "TotalBalance"), "10000");
  // Moving it to another day and amount.
  LExpectSuccess({"journal", "edit", day, "GJ10005", "--date", DaysAgo(40), "dr:6410:70", "cr:1110:70"});
  EXPECT_EQ(LExpectSuccess({"ledger", "--account", "6410", "--from", day}), "");
  EXPECT_EQ(LStoredField("Accounts", "6410", "TotalBalance"), "7000");
  LExpectRefused({"journal", "edit", day, "GJ10005"},
                 "La transaction GJ10005 du " + day + " n'existe pas dans le grand livre.");
  ExpectCheckClean();
}

// The date guard's limits to the second are proved by the journal entry tests; here, the
// question and refusals as the command line gives them.
TEST_F(LedgerCliTest, OldDatesAskFutureDatesAndClosedPeriodsAreRefused) {
  std::string old = DaysAgo(365), future = DaysAgo(-365);
  LExpectRefused(Entry(old, "R"), "Vous avez entré la date \"" + old +
                                      "\", qui date de plus d'un an. Voulez-vous vraiment vous enregistrer ?");
  LExpectSuccess(Entry(old, "R", {"--yes"}));
  LExpectSuccess(Entry(future, "F"));
  LExpectSuccess({"record", "set", "Misc", "Options", "ProhibitTransactionsInFuture=1"});
  LExpectRefused(Entry(future, "F"), "Vous ne pouvez pas entrer de transaction future au-delà d'un an. Vous pouvez "
                                     "désactiver cette limite dans la fenêtre Options sous l'onglet Comptabilité");
  LExpectSuccess({"record", "set", "Misc", "Company", "CTDEnabled=1", "CTDDate=" + DaysAgo(10)});
  LExpectRefused(Entry(DaysAgo(10), "C"),
                 "Les données entrées sont antérieures à la date de clôture. Veuillez désactiver la fonctionnalité "
                 "date de clôture pour la date spécifiée sous l'onglet Comptes dans la fenêtre principale.");
}

TEST_F(LedgerCliTest, TransfersRefuseInOrderAndPostDestinationFirst) {
  LExpectSuccess({"account", "edit", "1110", "--opening", "100"});
  auto transfer = [](const std::string& from, const std::string& to, const std::string& amount,
                     std::vector<std::string> extra = {}) {
    std::vector<std::string> args = {"transfer", "--from", from, "--to", to, "--amount", amount};
    args.insert(args.end(), extra.begin(), extra.end());
    return args;
  };
  LExpectRefused(transfer("Rien", "1120", "5"), "Vous devez sélectionner un compte duquel transférer.");
  LExpectRefused(transfer("1110", "", "5"), "Vous devez sélectionner un compte vers lequel transférer.");
  LExpectRefused(transfer("Compte-chèque", "1110", "5"),
                 "Les comptes de départ et d'arrivée ne peuvent pas êtres les mêmes.");
  LExpectRefused(transfer("1110", "1120", "0"), "Vous devez transférer un montant positif.");
  LExpectRefused(transfer("1110", "1120", "5", {"--date", DaysAgo(-1)}),
                 "Vous ne pouvez pas planifier un transfert avec une date future");
  LExpectRefused(transfer("1110", "1120", "100.01"), "Le solde de ce compte est inexact.");
  EXPECT_EQ(LExpectSuccess(transfer("Compte-chèque", "Compte épargne", "100")), "GJ10000\n");
  std::string today = LDate::Today().ToText();
  EXPECT_EQ(LExpectSuccess({"ledger"}), today + "\tGJ10000\tGeneral\t1120\tTransférer\t100.00\t\n" + today +
                                            "\tGJ10000\tGeneral\t1110\tTransférer\t-100.00\t\n");
  EXPECT_EQ(LStoredField("Misc", "Options", "RefNumberGenJournal"), "10001");
  EXPECT_EQ(LStoredField("Accounts", "1110", "TotalBalance"), "0");
}

TEST_F(LedgerCliTest, BillsAndBillPaymentsPostAndDeleteThroughTheirDocuments) {
  LExpectSuccess({"record", "set", "Misc", "Tax", "TaxSystem=1", "TaxAccountPaid1=Autres charges à verser"});
  std::string day = DaysAgo(5);
  EXPECT_EQ(LExpectSuccess({"bill", "add", "--supplier", "Dupont", "--date", day, "--notes", "Fournitures",
                            "6420:100.00:TVA", "--tax", "1=20.00"}),
            "PRC10000\n");
  std::string user = LGetPostingUserName();
  auto row = [&](const char* account, const char* amount, const std::string& tax, const char* document) {
    return "\"" + day + "\",\"PRC10000\",\"Achats\",\"" + account + "\",\"\",\"Fournitures\",\"" + amount +
           "\",\"Tax=" + tax + "&UserName=" + user + "\",\"" + document + "\"\r\n";
  };
  EXPECT_EQ(DayFile(day), row("2210", "-120.00", "", "PRC10000") + row("6420", "+100.00", "TVA", "PRC10000") +
                              row("2390", "+20.00", "PRC10000", ""));
  EXPECT_EQ(LStoredField("Bills", "PRC10000", "JournalTxnRef"), "PRC10000");
  EXPECT_EQ(LStoredField("Bills", "PRC10000", "Total"), "12000");
  EXPECT_EQ(LStoredField("Misc", "Options", "RefNumberPurchases"), "10001");

  // A bill already holds the next identifier: it is skipped for good.
  LExpectSuccess({"record", "set", "Misc", "Options", "RefNumberPurchases=10000"});
  EXPECT_EQ(LExpectSuccess({"bill", "add", "--supplier", "Martin", "--date", day, "6410:50"}), "PRC10001\n");
  EXPECT_EQ(LStoredField("Misc", "Options", "RefNumberPurchases"), "10002");
  // Posting again under its reference uses no number and replaces the posting.
  EXPECT_EQ(LExpectSuccess({"bill", "add", "--supplier", "Martin", "--date", day, "--ref", "PRC10001", "6410:60"}),
            "PRC10001\n");
  EXPECT_EQ(LStoredField("Misc", "Options", "RefNumberPurchases"), "10002");
  EXPECT_EQ(LStoredField("Accounts", "6410", "TotalBalance"), "6000");
  LExpectRefused({"bill", "add", "--supplier", "Martin", "--date", day, "641:60"},
                 "Le compte 641 n'existe pas dans le plan comptable.");

  EXPECT_EQ(LExpectSuccess({"billpayment", "add", "--supplier", "Dupont", "--amount", "120", "--date", day}),
            "PMT10000\n");
  EXPECT_EQ(LStoredField("BillPayments", "1", "Notes"), "Paiements; Dupont");
  EXPECT_EQ(LStoredField("BillPayments", "1", "JournalTxnRef"), "PMT10000");
  EXPECT_EQ(LStoredField("Accounts", "2210", "TotalBalance"), "-6000");
  EXPECT_EQ(LStoredField("Accounts", "1110", "TotalBalance"), "-12000");
  EXPECT_EQ(LExpectSuccess({"ledger", "--account", "1110"}),
            day + "\tPMT10000\tPaiements\t1110\tPaiements; Dupont\t-120.00\t1\n");

  // Deleting from the ledger deletes the documents.
  LExpectSuccess({"ledger", "delete", day, "PMT10000"});
  EXPECT_EQ(LStoredField("BillPayments", "1", "Notes"), "<absent>");
  LExpectSuccess({"ledger", "delete", day, "PRC10000"});
  EXPECT_FALSE(Exists("/Bills/PRC10000.dat"));
  EXPECT_EQ(LStoredField("Accounts", "2390", "TotalBalance"), "0");
  LExpectRefused({"ledger", "delete", day, "PRC10000"},
                 "La transaction PRC10000 du " + day + " n'existe pas dans le grand livre.");
  ExpectCheckClean();

  // Without linked accounts no purchase is posted.
  LExpectSuccess({"record", "set", "Misc", "Options", "DefAccount7Number=9990"});
  LRunResult blocked = LRunKontavo({"bill", "add", "--supplier", "Martin", "--date", day, "6410:50"});
  EXPECT_EQ(blocked.exitCode, 1);
  EXPECT_EQ(blocked.err.rfind("Vous ne pouvez pas créer ni modifier des factures", 0), 0u);
}

TEST_F(LedgerCliTest, CheckReportsAndFixesTamperedBalances) {
  LExpectSuccess(Entry(DaysAgo(1), "R"));
  ExpectCheckClean();
  LExpectSuccess({"record", "set", "Accounts", "6410", "TotalBalance=5"});
  LRunResult found = LRunKontavo({"--json", "check"});
  EXPECT_EQ(found.exitCode, 1);
  EXPECT_NE(found.out.find("{\"list\":\"Accounts\",\"key\":\"6410\",\"field\":\"TotalBalance\",\"stored\":5,"
                           "\"computed\":1,\"fixed\":false}"),
            std::string::npos)
      << found.out;
  EXPECT_EQ(LExpectSuccess({"check", "--fix"}), "Accounts/6410\tTotalBalance\tenregistré 5\tcalculé 1\tcorrigé\n");
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
        LRunResult result = LRunKontavo(Entry(day, "GJ[auto]"));
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
  EXPECT_EQ(LStoredField("Misc", "Options", "RefNumberGenJournal"), std::to_string(10000 + kDesks * kEach));
  EXPECT_EQ(LStoredField("Accounts", "6410", "TotalBalance"), std::to_string(kDesks * kEach));
  ExpectCheckClean();
}

}  // namespace
