// The businesses of one user through the real kontavo binary: listing, adding through the start
// wizard with its pages' messages, choosing the one opened at start-up, deleting.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

#include "tests/support/testhome.h"

namespace {

class BusinessCliTest : public LHomeTest {
 protected:
  std::string MultiBus(const std::string& id) const { return home_.SharedFolder() + "/MultiBus/" + id; }
  std::string Field(const std::string& business, const std::string& record, const std::string& field) const {
    return LRunKontavo({"--business", business, "record", "get", "Misc", record, field}).out;
  }
  // Names the primary business.
  void NamePrimary(const std::string& name) const {
    ASSERT_EQ(LRunKontavo({"--business", "0", "record", "set", "Misc", "Company", "Name=" + name}).exitCode, 0);
  }
};

// Sets an environment variable for the life of the object.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old, had_ = true;
    ::setenv(name, value, 1);
  }
  ~ScopedEnv() {
    if (had_) ::setenv(name_, old_.c_str(), 1);
    else ::unsetenv(name_);
  }

 private:
  const char* name_;
  std::string old_;
  bool had_ = false;
};

}  // namespace

TEST_F(BusinessCliTest, AddTakesTheFirstFreeNumberAndWritesEveryPage) {
  std::filesystem::create_directories(MultiBus("1") + "/Misc");
  std::filesystem::create_directories(MultiBus("3") + "/Misc");
  LRunResult added = LRunKontavo({"business", "add", "--name", "Atelier Bois", "--country", "fr", "--address",
                                  "1 rue du Port", "--contact", "Marie", "--currency-symbol", "€", "--usage",
                                  "services", "--manual-accounts", "--opening-checking", "1500.25"});
  ASSERT_EQ(added.exitCode, 0) << added.err;
  EXPECT_EQ(added.out, "2\n");
  EXPECT_EQ(Field("2", "Company", "Name"), "Atelier Bois\n");
  EXPECT_EQ(Field("2", "Company", "Address"), "1 rue du Port\n");
  EXPECT_EQ(Field("2", "Company", "Contact"), "Marie\n");
  EXPECT_EQ(Field("2", "Company", "FiscalYearEnd"), "12\n");
  EXPECT_EQ(Field("2", "Company", "FiscalYearEndDay"), "31\n");
  EXPECT_EQ(Field("2", "Company", "ManualCreateAccounts"), "1\n");
  EXPECT_EQ(Field("2", "Options", "CurrencySymbol"), "€\n");
  EXPECT_EQ(Field("2", "Options", "CurrencyName"), "Euro\n");
  EXPECT_EQ(Field("2", "Options", "CurrencySubunit"), "Centime\n");
  EXPECT_EQ(Field("2", "Options", "CountryCode"), "FR\n");
  EXPECT_EQ(Field("2", "InvoiceStyle", "TextBlockBottomRight"), "0\n");
  EXPECT_EQ(Field("2", "Invoice", "QuantityColumnTitle"), "Hres\n");
  EXPECT_EQ(Field("2", "Invoice", "ItemcodeColumnTitle"), "Code taux\n");
  // The default chart of accounts, with the opening balance on the checking account.
  EXPECT_EQ(LRunKontavo({"--business", "2", "record", "get", "Accounts", "1110", "OpeningBalance"}).out, "150025\n");
  EXPECT_EQ(LRunKontavo({"--business", "2", "record", "get", "Accounts", "2110", "Description"}).out, "Carte de crédit\n");
  EXPECT_EQ(LRunKontavo({"--business", "2", "record", "get", "Accounts", "2110", "OpeningBalance"}).exitCode, 1);

  // The next one takes 4, and a business selling products keeps the usual layout.
  LRunResult next = LRunKontavo({"business", "add", "--name", "Épicerie"});
  ASSERT_EQ(next.exitCode, 0) << next.err;
  EXPECT_EQ(next.out, "4\n");
  EXPECT_EQ(Field("4", "Company", "ManualCreateAccounts"), "0\n");
  EXPECT_EQ(LRunKontavo({"--business", "4", "record", "get", "Misc", "InvoiceStyle"}).exitCode, 1);
  // Adding does not change the business opened at start-up.
  EXPECT_EQ(LRunKontavo({"init"}).out, home_.SharedFolder() + "\n");
}

TEST_F(BusinessCliTest, CanadianProvinceChosenOnTheCountryPageKeepsItsTaxes) {
  ScopedEnv country("KONTAVO_COUNTRY", "CA");
  LRunResult added = LRunKontavo({"business", "add", "--name", "Vancouver", "--country", "CA", "--province", "2",
                                  "--opening-credit-card", "200"});
  ASSERT_EQ(added.exitCode, 0) << added.err;
  EXPECT_EQ(Field("1", "Tax", "TaxSystem"), "3\n");  // TPS, TVP and their combination
  EXPECT_EQ(LRunKontavo({"--business", "1", "record", "get", "Accounts", "2110", "OpeningBalance"}).out, "-20000\n");
  ASSERT_EQ(LRunKontavo({"business", "add", "--name", "Montréal", "--country", "CA", "--province", "9"}).exitCode, 0);
  EXPECT_EQ(Field("2", "Tax", "TaxSystem"), "3\n");
  EXPECT_NE(LRunKontavo({"--business", "2", "tax", "show"}).out.find("TVQ"), std::string::npos);
  EXPECT_EQ(LRunKontavo({"--business", "1", "tax", "show"}).out.find("TVQ"), std::string::npos);
}

TEST_F(BusinessCliTest, FiscalYearEndFollowsTheCountry) {
  struct Case {
    const char* country;
    const char* month;
    const char* day;
  };
  const Case cases[] = {{"AU", "6", "30"}, {"CA", "3", "31"}, {"NZ", "3", "31"}, {"ZA", "3", "31"},
                        {"GB", "4", "5"},  {"FR", "12", "31"}, {"US", "12", "31"}};
  int id = 0;
  for (const Case& c : cases) {
    ScopedEnv country("KONTAVO_COUNTRY", c.country);  // the system locale's country
    LRunResult added = LRunKontavo({"business", "add", "--name", std::string("Société ") + c.country});
    ASSERT_EQ(added.exitCode, 0) << c.country << added.err;
    std::string business = std::to_string(++id);
    EXPECT_EQ(Field(business, "Company", "FiscalYearEnd"), std::string(c.month) + "\n") << c.country;
    EXPECT_EQ(Field(business, "Company", "FiscalYearEndDay"), std::string(c.day) + "\n") << c.country;
  }
  // An explicit end wins over the country's.
  ASSERT_EQ(LRunKontavo({"business", "add", "--name", "Fin juin", "--country", "GB", "--fiscal-year-end", "06-30"})
                .exitCode,
            0);
  EXPECT_EQ(Field("Fin juin", "Company", "FiscalYearEnd"), "6\n");
  EXPECT_EQ(Field("Fin juin", "Company", "FiscalYearEndDay"), "30\n");
}

TEST_F(BusinessCliTest, RefusedWizardLeavesNoFolderWithThePagesMessage) {
  NamePrimary("Maison Mère");
  ASSERT_EQ(LRunKontavo({"business", "add", "--name", "Filiale"}).exitCode, 0);
  std::filesystem::create_directories(MultiBus("__MACOSX") + "/Misc");
  LWriteFile(MultiBus("__MACOSX") + "/Misc/Company.dat", "Name=Fant%C3%B4me");

  struct Case {
    std::vector<std::string> args;
    std::string message;
  };
  const Case cases[] = {
      {{}, "Veuillez entrer le nom de l'entreprise."},  // no terminal: nothing asked, name missing
      {{"--name", ""}, "Veuillez entrer le nom de l'entreprise."},
      {{"--name", "Maison Mère"}, "Le nom de l'entreprise (raison sociale) existe déjà."},
      {{"--name", "Filiale"}, "Le nom de l'entreprise (raison sociale) existe déjà."},
      {{"--name", "Neuve", "--opening-checking", ""}, "Veuillez entrer un solde initial pour le compte-chèque."},
      {{"--name", "Neuve", "--opening-checking", "abc"}, "Veuillez entrer un solde initial pour le compte-chèque."},
      {{"--name", "Neuve", "--opening-credit-card", ""}, "Veuillez entrer un solde de compte de carte de crédit."},
  };
  for (const Case& c : cases) {
    std::vector<std::string> args = {"business", "add"};
    args.insert(args.end(), c.args.begin(), c.args.end());
    LRunResult refused = LRunKontavo(args);
    EXPECT_EQ(refused.exitCode, 1) << c.message;
    EXPECT_EQ(refused.err, c.message + "\n");
    EXPECT_FALSE(std::filesystem::exists(MultiBus("2"))) << c.message;
  }
  // The folder "__MACOSX" is no business: its name is free.
  LRunResult ghost = LRunKontavo({"business", "add", "--name", "Fantôme"});
  EXPECT_EQ(ghost.exitCode, 0) << ghost.err;
  EXPECT_EQ(ghost.out, "2\n");
}

TEST_F(BusinessCliTest, UnfitAnswersAreRefusedWithoutAFolder) {
  // Standard input is no terminal here, so nothing is asked: the answers given are all there is.
  LRunResult refused = LRunKontavo({"business", "add", "--country", "CA", "--province", "14"}, "Nom\n");
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.err, "Veuillez choisir une province du Canada dans la liste.\n");
  EXPECT_FALSE(std::filesystem::exists(MultiBus("1")));
  EXPECT_EQ(LRunKontavo({"business", "add", "--name", "X", "--province", "abc"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"business", "add", "--name", "X", "--usage", "other"}).exitCode, 1);
  EXPECT_FALSE(std::filesystem::exists(MultiBus("1")));
}

TEST_F(BusinessCliTest, ListUseAndStartUpChoice) {
  NamePrimary("Maison Mère");
  ASSERT_EQ(LRunKontavo({"business", "add", "--name", "Filiale"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"business", "list"}).out, "* 0\tMaison Mère\t" + home_.SharedFolder() + "\n  1\tFiliale\t" +
                                                        MultiBus("1") + "\n");
  ASSERT_EQ(LRunKontavo({"business", "use", "Filiale"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"settings", "get", "MultipleBusiness", "WorkingFolder"}).out, MultiBus("1") + "\n");
  EXPECT_EQ(LRunKontavo({"business", "list"}).out, "  0\tMaison Mère\t" + home_.SharedFolder() + "\n* 1\tFiliale\t" +
                                                        MultiBus("1") + "\n");
  // Every command now opens the remembered business, unless --business names another.
  EXPECT_EQ(LRunKontavo({"init"}).out, MultiBus("1") + "\n");
  EXPECT_EQ(LRunKontavo({"record", "get", "Misc", "Company", "Name"}).out, "Filiale\n");
  EXPECT_EQ(LRunKontavo({"--business", "0", "init"}).out, home_.SharedFolder() + "\n");
  EXPECT_EQ(LRunKontavo({"--business", "Maison Mère", "init"}).out, home_.SharedFolder() + "\n");
  EXPECT_EQ(LRunKontavo({"--json", "business", "list"}).out,
            "[{\"folder\":\"" + home_.SharedFolder() + "\",\"id\":\"0\",\"name\":\"Maison Mère\",\"open\":false}," +
                "{\"folder\":\"" + MultiBus("1") + "\",\"id\":\"1\",\"name\":\"Filiale\",\"open\":true}]\n");

  // A remembered folder that has gone is ignored: the primary business opens.
  std::filesystem::rename(MultiBus("1"), MultiBus("7"));
  EXPECT_EQ(LRunKontavo({"init"}).out, home_.SharedFolder() + "\n");
  EXPECT_EQ(LRunKontavo({"business", "use", "9"}).exitCode, 1);
  EXPECT_EQ(LRunKontavo({"business", "use", "Inconnue"}).exitCode, 1);
  EXPECT_EQ(LRunKontavo({"--business", "9", "init"}).exitCode, 1);
  EXPECT_EQ(LRunKontavo({"business", "use"}).exitCode, 2);
}

TEST_F(BusinessCliTest, DeleteAsksFirstAndNeverTheprimaryBusiness) {
  NamePrimary("Maison Mère");
  ASSERT_EQ(LRunKontavo({"business", "add", "--name", "Filiale"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"business", "use", "1"}).exitCode, 0);

  LRunResult primary = LRunKontavo({"--yes", "business", "delete", "0"});
  EXPECT_EQ(primary.exitCode, 1);
  EXPECT_EQ(primary.err, "Impossible de supprimer l'entreprise principale.\n");
  EXPECT_TRUE(std::filesystem::exists(home_.SharedFolder() + "/Misc/Company.dat"));

  // Without a terminal and without --yes the question is the refusal.
  LRunResult unasked = LRunKontavo({"business", "delete", "1"});
  EXPECT_EQ(unasked.exitCode, 1);
  EXPECT_EQ(unasked.err,
            "Voulez-vous vraiment supprimer la devise \"Filiale\" complètement ? Toutes les factures, l'historique, "
            "les paiements et les données seront définitivement détruits.\r\n\r\nCette action est irréversible. "
            "Procédez avec prudence!\n");
  EXPECT_TRUE(std::filesystem::exists(MultiBus("1")));

  // The open business can go too: afterwards it is no longer listed and the primary one opens.
  ASSERT_EQ(LRunKontavo({"business", "delete", "Filiale", "--yes"}).exitCode, 0);
  EXPECT_FALSE(std::filesystem::exists(MultiBus("1")));
  EXPECT_EQ(LRunKontavo({"business", "list"}).out, "* 0\tMaison Mère\t" + home_.SharedFolder() + "\n");
  EXPECT_EQ(LRunKontavo({"settings", "get", "MultipleBusiness", "WorkingFolder"}).exitCode, 1);
  EXPECT_EQ(LRunKontavo({"business", "delete", "1", "--yes"}).exitCode, 1);
}

TEST_F(BusinessCliTest, InitRunsTheWizardOnlyOnAnUnnamedBusiness) {
  LRunResult first = LRunKontavo({"init", "--name", "Première", "--country", "AU"});
  ASSERT_EQ(first.exitCode, 0) << first.err;
  EXPECT_EQ(first.out, home_.SharedFolder() + "\n");
  EXPECT_EQ(Field("0", "Company", "Name"), "Première\n");
  EXPECT_EQ(Field("0", "Company", "FiscalYearEnd"), "6\n");
  EXPECT_EQ(Field("0", "Options", "CurrencySymbol"), "$\n");
  // Once named, init leaves the business as it is.
  ASSERT_EQ(LRunKontavo({"init", "--name", "Autre", "--contact", "Paul"}).exitCode, 0);
  EXPECT_EQ(Field("0", "Company", "Name"), "Première\n");
  EXPECT_EQ(LRunKontavo({"--business", "0", "record", "get", "Misc", "Company", "Contact"}).out, "\n");
  // A refused wizard writes nothing on the primary business either.
  std::filesystem::remove_all(home_.SharedFolder());
  LRunResult refused = LRunKontavo({"init", "--contact", "Paul"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.err, "Veuillez entrer le nom de l'entreprise.\n");
  EXPECT_EQ(LRunKontavo({"record", "get", "Misc", "Company"}).exitCode, 1);
}
