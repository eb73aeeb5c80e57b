// The businesses of one user through the real kontavo binary: listing, adding through the start
// wizard with its pages' messages, choosing the one opened at start-up, deleting.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/app/clitest.h"
#include "tests/support/envscope.h"

namespace {

class BusinessCliTest : public LHomeTest {
 protected:
  std::string MultiBus(const std::string& id) const { return home_.SharedFolder() + "/MultiBus/" + id; }
  // A field of the business's "Misc" list.
  static std::string Misc(const std::string& business, const std::string& record, const std::string& field) {
    return LStoredField("Misc", record, field, business);
  }
  // Names the primary business and adds "Filiale" as business 1.
  void PrimaryAndFiliale() const {
    LExpectSuccess({"--business", "0", "record", "set", "Misc", "Company", "Name=Maison Mère"});
    LExpectSuccess({"business", "add", "--name", "Filiale"});
  }
};

}  // namespace

TEST_F(BusinessCliTest, AddTakesTheFirstFreeNumberAndWritesEveryPage) {
  std::filesystem::create_directories(MultiBus("1") + "/Misc");
  std::filesystem::create_directories(MultiBus("3") + "/Misc");
  EXPECT_EQ(LExpectSuccess({"business", "add", "--name", "Atelier Bois", "--country", "fr", "--address",
                            "1 rue du Port", "--contact", "Marie", "--currency-symbol", "€", "--usage", "services",
                            "--manual-accounts", "--opening-checking", "1500.25"}),
            "2\n");
  const std::tuple<const char*, const char*, const char*> written[] = {
      {"Company", "Name", "Atelier Bois"},          {"Company", "Address", "1 rue du Port"},
      {"Company", "Contact", "Marie"},              {"Company", "ManualCreateAccounts", "1"},
      {"Options", "CurrencySymbol", "€"},           {"Options", "CurrencyName", "Euro"},
      {"Options", "CurrencySubunit", "Centime"},    {"Options", "CountryCode", "FR"},
      {"InvoiceStyle", "TextBlockBottomRight", "0"}, {"Invoice", "QuantityColumnTitle", "Hres"},
      {"Invoice", "ItemcodeColumnTitle", "Code taux"},
  };
  for (const auto& [record, field, value] : written) EXPECT_EQ(Misc("2", record, field), value) << field;
  // In France the general chart (PCG), with the opening balance on the bank account only,
  // balanced by the opening balance sheet account.
  EXPECT_EQ(LStoredField("Accounts", "512000", "OpeningBalance", "2"), "150025");
  EXPECT_EQ(LStoredField("Accounts", "890000", "OpeningBalance", "2"), "-150025");
  EXPECT_EQ(LStoredField("Accounts", "519000", "Description", "2"), "Concours bancaires courants");
  EXPECT_EQ(LStoredField("Accounts", "519000", "OpeningBalance", "2"), "<absent>");
  EXPECT_EQ(LStoredField("Accounts", "1110", "Description", "2"), "<absent>");

  // The next one takes 4, and a business selling products keeps the usual layout.
  EXPECT_EQ(LExpectSuccess({"business", "add", "--name", "Épicerie"}), "4\n");
  EXPECT_EQ(Misc("4", "Company", "ManualCreateAccounts"), "0");
  EXPECT_EQ(LRunKontavo({"--business", "4", "record", "get", "Misc", "InvoiceStyle"}).exitCode, 1);
  // Adding does not change the business opened at start-up.
  EXPECT_EQ(LExpectSuccess({"init"}), home_.SharedFolder() + "\n");
}

TEST_F(BusinessCliTest, CanadianProvinceChosenOnTheCountryPageKeepsItsTaxes) {
  LEnvScope country("KONTAVO_COUNTRY", "CA");
  LExpectSuccess({"business", "add", "--name", "Vancouver", "--country", "CA", "--province", "2",
                  "--opening-credit-card", "200"});
  EXPECT_EQ(Misc("1", "Tax", "TaxSystem"), "3");  // TPS, TVP and their combination
  EXPECT_EQ(LStoredField("Accounts", "2110", "OpeningBalance", "1"), "-20000");
  LExpectSuccess({"business", "add", "--name", "Montréal", "--country", "CA", "--province", "9"});
  EXPECT_EQ(Misc("2", "Tax", "TaxSystem"), "3");
  EXPECT_NE(LExpectSuccess({"--business", "2", "tax", "show"}).find("TVQ"), std::string::npos);
  EXPECT_EQ(LExpectSuccess({"--business", "1", "tax", "show"}).find("TVQ"), std::string::npos);
}

TEST_F(BusinessCliTest, BusinessOfAnotherCountryTakesThatCountrysMoneyAndNumbers) {
  LEnvScope language("LANG", "en_US.UTF-8");
  LEnvScope all("LC_ALL", nullptr);
  LEnvScope monetary("LC_MONETARY", nullptr);
  LEnvScope country("KONTAVO_COUNTRY", nullptr);
  LExpectSuccess({"business", "add", "--name", "Lyon", "--country", "FR", "--opening-checking", "300"});
  LExpectSuccess({"business", "add", "--name", "Boston"});
  const std::tuple<const char*, const char*, const char*> expected[] = {
      {"1", "CurrencyType", "EUR"},   {"1", "CurrencySymbol", "€"}, {"1", "DecimalSymbol", ","},
      {"1", "ThousandsSymbol", " "},  {"1", "CurrencyOrder", "3"},  {"1", "MeasurementUnits", "0"},
      {"1", "PrintedDateOrder", "1"}, {"2", "CurrencyType", "USD"}, {"2", "DecimalSymbol", "."},
      {"2", "CurrencySymbol", "$"},
  };
  for (const auto& [business, field, value] : expected)
    EXPECT_EQ(Misc(business, "Options", field), value) << business << " " << field;
  // A French business keeps the French chart: its bank account takes the opening balance.
  EXPECT_EQ(LStoredField("Accounts", "512000", "OpeningBalance", "1"), "30000");
}

TEST_F(BusinessCliTest, FiscalYearEndFollowsTheCountry) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"AU", "6", "30"}, {"CA", "3", "31"},  {"NZ", "3", "31"}, {"ZA", "3", "31"},
      {"GB", "4", "5"},  {"FR", "12", "31"}, {"US", "12", "31"}};
  int id = 0;
  for (const auto& [code, month, day] : cases) {
    LEnvScope country("KONTAVO_COUNTRY", code);  // the system locale's country
    LExpectSuccess({"business", "add", "--name", std::string("Société ") + code});
    std::string business = std::to_string(++id);
    EXPECT_EQ(Misc(business, "Company", "FiscalYearEnd"), month) << code;
    EXPECT_EQ(Misc(business, "Company", "FiscalYearEndDay"), day) << code;
  }
  // An explicit end wins over the country's.
  LExpectSuccess({"business", "add", "--name", "Fin juin", "--country", "GB", "--fiscal-year-end", "06-30"});
  EXPECT_EQ(Misc("Fin juin", "Company", "FiscalYearEnd"), "6");
  EXPECT_EQ(Misc("Fin juin", "Company", "FiscalYearEndDay"), "30");
}

TEST_F(BusinessCliTest, WizardStoresTheLegalMentionsOfTheInvoices) {
  LExpectSuccess({"business", "add", "--name", "Atelier Legrand", "--country", "FR", "--siren", "123456789", "--siret",
                  "12345678900017", "--vat-number", "FR32123456789", "--legal-form", "SAS", "--share-capital", "10000",
                  "--rcs", "RCS Lyon", "--late-penalty-rate", "12.5", "--vat-exempt", "--email", "a@legrand.fr"});
  const std::pair<const char*, const char*> stored[] = {
      {"SIREN", "123456789"}, {"SIRET", "12345678900017"}, {"VATNumber", "FR32123456789"}, {"LegalForm", "SAS"},
      {"ShareCapital", "1000000"}, {"RCS", "RCS Lyon"}, {"LatePenaltyRate", "12.500000"}, {"VATExempt", "1"},
      {"Email", "a@legrand.fr"}, {"FiscalYearEnd", "12"}};
  for (const auto& [field, value] : stored) EXPECT_EQ(Misc("Atelier Legrand", "Company", field), value) << field;
}

TEST_F(BusinessCliTest, RefusedWizardLeavesNoFolderWithThePagesMessage) {
  PrimaryAndFiliale();
  std::filesystem::create_directories(MultiBus("__MACOSX") + "/Misc");
  LWriteFile(MultiBus("__MACOSX") + "/Misc/Company.dat", "Name=Fant%C3%B4me");

  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{}, "Veuillez entrer le nom de l'entreprise."},  // no terminal: nothing asked, name missing
      {{"--name", ""}, "Veuillez entrer le nom de l'entreprise."},
      {{"--name", "Maison Mère"}, "Le nom de l'entreprise (raison sociale) existe déjà."},
      {{"--name", "Filiale"}, "Le nom de l'entreprise (raison sociale) existe déjà."},
      {{"--name", "Neuve", "--opening-checking", ""}, "Veuillez entrer un solde initial pour le compte-chèque."},
      {{"--name", "Neuve", "--opening-checking", "abc"}, "Veuillez entrer un solde initial pour le compte-chèque."},
      {{"--name", "Neuve", "--opening-credit-card", ""}, "Veuillez entrer un solde de compte de carte de crédit."},
      {{"--country", "CA", "--province", "14"}, "Veuillez choisir une province du Canada dans la liste."},
      // The legal mentions are checked as the company settings check them.
      {{"--name", "Neuve", "--siren", "12345"}, "Le numéro SIREN doit compter 9 chiffres."},
      {{"--name", "Neuve", "--siren", "123456789", "--siret", "98765432100011"},
       "Le numéro SIRET doit compter 14 chiffres et commencer par le numéro SIREN."},
      {{"--name", "Neuve", "--vat-number", "32123"}, "Numéro de TVA intracommunautaire non valide (par exemple FR32123456789)."},
  };
  // Standard input is no terminal here, so nothing is asked: the answers given are all there is.
  for (const auto& [options, message] : cases) {
    std::vector<std::string> args = {"business", "add"};
    args.insert(args.end(), options.begin(), options.end());
    LExpectRefused(args, message, "Nom\n");
    EXPECT_FALSE(std::filesystem::exists(MultiBus("2"))) << message;
  }
  LExpectUsageErrors({{"business", "add", "--name", "X", "--province", "abc"}});
  EXPECT_EQ(LRunKontavo({"business", "add", "--name", "X", "--usage", "other"}).exitCode, 1);
  EXPECT_FALSE(std::filesystem::exists(MultiBus("2")));
  // The folder "__MACOSX" is no business: its name is free.
  EXPECT_EQ(LExpectSuccess({"business", "add", "--name", "Fantôme"}), "2\n");
}

TEST_F(BusinessCliTest, ListUseAndStartUpChoice) {
  PrimaryAndFiliale();
  const std::string primary = "0\tMaison Mère\t" + home_.SharedFolder() + "\n";
  const std::string filiale = "1\tFiliale\t" + MultiBus("1") + "\n";
  EXPECT_EQ(LExpectSuccess({"business", "list"}), "* " + primary + "  " + filiale);
  LExpectSuccess({"business", "use", "Filiale"});
  EXPECT_EQ(LExpectSuccess({"settings", "get", "MultipleBusiness", "WorkingFolder"}), MultiBus("1") + "\n");
  EXPECT_EQ(LExpectSuccess({"business", "list"}), "  " + primary + "* " + filiale);
  // Every command now opens the remembered business, unless --business names another.
  EXPECT_EQ(LExpectSuccess({"init"}), MultiBus("1") + "\n");
  EXPECT_EQ(LStoredField("Misc", "Company", "Name"), "Filiale");
  EXPECT_EQ(LExpectSuccess({"--business", "0", "init"}), home_.SharedFolder() + "\n");
  EXPECT_EQ(LExpectSuccess({"--business", "Maison Mère", "init"}), home_.SharedFolder() + "\n");
  EXPECT_EQ(LExpectSuccess({"--json", "business", "list"}),
            "[{\"folder\":\"" + home_.SharedFolder() + "\",\"id\":\"0\",\"name\":\"Maison Mère\",\"open\":false}," +
                "{\"folder\":\"" + MultiBus("1") + "\",\"id\":\"1\",\"name\":\"Filiale\",\"open\":true}]\n");

  // A remembered folder that has gone is ignored: the primary business opens.
  std::filesystem::rename(MultiBus("1"), MultiBus("7"));
  EXPECT_EQ(LExpectSuccess({"init"}), home_.SharedFolder() + "\n");
  for (const auto& args : std::vector<std::vector<std::string>>{
           {"business", "use", "9"}, {"business", "use", "Inconnue"}, {"--business", "9", "init"}})
    EXPECT_EQ(LRunKontavo(args).exitCode, 1) << LCommandText(args);
  LExpectUsageErrors({{"business", "use"}});
}

TEST_F(BusinessCliTest, DeleteAsksFirstAndNeverThePrimaryBusiness) {
  PrimaryAndFiliale();
  LExpectSuccess({"business", "use", "1"});
  LExpectRefused({"--yes", "business", "delete", "0"}, "Impossible de supprimer l'entreprise principale.");
  EXPECT_TRUE(std::filesystem::exists(home_.SharedFolder() + "/Misc/Company.dat"));

  // Without a terminal and without --yes the question is the refusal.
  LExpectRefused({"business", "delete", "1"},
                 "Voulez-vous vraiment supprimer la devise \"Filiale\" complètement ? Toutes les factures, "
                 "l'historique, les paiements et les données seront définitivement détruits.\r\n\r\nCette action est "
                 "irréversible. Procédez avec prudence!");
  EXPECT_TRUE(std::filesystem::exists(MultiBus("1")));

  // The open business can go too: afterwards it is no longer listed and the primary one opens.
  LExpectSuccess({"business", "delete", "Filiale", "--yes"});
  EXPECT_FALSE(std::filesystem::exists(MultiBus("1")));
  EXPECT_EQ(LExpectSuccess({"business", "list"}), "* 0\tMaison Mère\t" + home_.SharedFolder() + "\n");
  EXPECT_EQ(LRunKontavo({"settings", "get", "MultipleBusiness", "WorkingFolder"}).exitCode, 1);
  EXPECT_EQ(LRunKontavo({"business", "delete", "1", "--yes"}).exitCode, 1);
}

TEST_F(BusinessCliTest, InitRunsTheWizardOnlyOnAnUnnamedBusiness) {
  EXPECT_EQ(LExpectSuccess({"init", "--name", "Première", "--country", "AU"}), home_.SharedFolder() + "\n");
  EXPECT_EQ(Misc("0", "Company", "Name"), "Première");
  EXPECT_EQ(Misc("0", "Company", "FiscalYearEnd"), "6");
  EXPECT_EQ(Misc("0", "Options", "CurrencySymbol"), "$");
  // Once named, init leaves the business as it is.
  LExpectSuccess({"init", "--name", "Autre", "--contact", "Paul"});
  EXPECT_EQ(Misc("0", "Company", "Name"), "Première");
  EXPECT_EQ(Misc("0", "Company", "Contact"), "");
  // A refused wizard writes nothing on the primary business either.
  std::filesystem::remove_all(home_.SharedFolder());
  LExpectRefused({"init", "--contact", "Paul"}, "Veuillez entrer le nom de l'entreprise.");
  EXPECT_EQ(LRunKontavo({"record", "get", "Misc", "Company"}).exitCode, 1);
}
