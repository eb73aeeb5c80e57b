// The business profile: the first opening's options and document texts, what reopening keeps,
// switching business, the default-account slots and the printed date form.
#include "invoice/shared/profile.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "invoice/shared/options.h"
#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

// The computer's locale as LANG alone says it, put back after each test.
class ProfileTest : public LHomeTest {
 protected:
  LEnvScope lang_{"LANG", "C.UTF-8"}, all_{"LC_ALL", nullptr}, monetary_{"LC_MONETARY", nullptr},
      country_{"KONTAVO_COUNTRY", nullptr};
};

TEST_F(ProfileTest, FirstOpenInitialisesOptionsAndDocumentTexts) {
  ::setenv("LANG", "fr_FR.UTF-8", 1);
  LProfile profile;
  EXPECT_EQ(profile.GetDatabaseName(), home_.SharedFolder());
  LOptions options;
  options.OpenFrom(profile);
  EXPECT_TRUE(options.GetBool("Init", false));
  EXPECT_EQ(options.GetString("CountryCode") + options.GetString("CurrencyType") + options.GetString("CurrencySymbol") +
                options.GetString("DecimalSymbol") + profile.GetCurrencyFormat().decimal,
            "FREUR€,,");
  EXPECT_EQ(options.GetInt("MeasurementUnits", 1), 0);

  // The texts come first in the file, the regional invoice options after them.
  EXPECT_EQ(LReadFile(home_.SharedFolder() + "/Misc/Invoice.dat").rfind(
                "NotesText=Veuillez%20nous%20contacter%20pour%20plus%20d%27informations%20sur%20les%20options%20de%20"
                "paiement.&FooterText=Nous%20vous%20remercions%20de%20votre%20confiance.&",
                0),
            0u);
  const std::string contact = "Veuillez nous contacter pour ";
  for (auto [name, notes] : {std::pair<const char*, std::string>{"Order", "plus d'informations sur les options de paiement."},
                             {"Quote", "plus d'informations sur les options de paiement."},
                             {"POrder", "plus d'informations sur les options de paiement."},
                             {"Receipt", "plus d'informations sur ce reçu."}, {"CreditNote", "plus d'informations sur cet avoir."},
                             {"PackingSlip", "plus d'informations sur ce bon."}, {"Bill", "toute question sur cette facture."}}) {
    LRecord record;
    ASSERT_TRUE(profile.List("Misc").Open(record, name)) << name;
    EXPECT_EQ(record.GetString("NotesText"), contact + notes);
    EXPECT_EQ(record.GetString("FooterText"), "Nous vous remercions de votre confiance.");
  }
  // The main document lists exist as folders.
  for (const char* list : {"Invoices", "InvoicesDrafts", "Customers", "Suppliers", "Budgets"})
    EXPECT_TRUE(std::filesystem::is_directory(home_.SharedFolder() + "/" + list)) << list;
}

TEST_F(ProfileTest, ReopeningKeepsChangedTextsAndStoredSettings) {
  ::setenv("LANG", "en_GB.UTF-8", 1);
  {
    LProfile profile;
    LRecord invoice;
    profile.List("Misc").Open(invoice, "Invoice");
    invoice.SetString("NotesText", "Mes notes");
  }
  ::setenv("LANG", "fr_FR.UTF-8", 1);  // a later locale change does not touch an initialised business
  LProfile again;
  LRecord invoice;
  again.List("Misc").Open(invoice, "Invoice");
  EXPECT_EQ(invoice.GetString("NotesText"), "Mes notes");
  EXPECT_EQ(again.GetCurrencyFormat().symbol, "£");
  EXPECT_EQ(again.GetCurrencyFormat().decimal, ".");
}

TEST_F(ProfileTest, SwitchingBusinessOpensTheNewFolder) {
  LProfile profile;
  std::string other = home_.Path() + "/Shared/MultiBus/1";
  profile.SetDatabaseName(other);
  EXPECT_EQ(profile.GetDatabaseName(), other);
  EXPECT_TRUE(std::filesystem::exists(other + "/Misc/Options.dat"));
  profile.SetDatabaseName("");
  EXPECT_EQ(profile.GetDatabaseName(), home_.SharedFolder());
}

TEST_F(ProfileTest, DefaultAccountSlotsHoldEachAccountOnce) {
  LProfile profile;
  LOptions options;
  options.OpenFrom(profile);
  // Without account 1110 in "Accounts", slot 1 has no default.
  EXPECT_EQ(options.GetDefAccountNumber(profile, 1), "");
  {
    LRecord account;
    profile.List("Accounts").CreateNewRecord(account, "1110");
    account.SetString("Description", "Banque");
  }
  EXPECT_EQ(options.GetDefAccountNumber(profile, 1), "1110");
  // The same account in a later slot takes it from the earlier one; slots are 1 to 9.
  options.SetDefAccountNumber(2, "1210");
  options.SetDefAccountNumber(3, "1210");
  for (auto [slot, number] : {std::pair{2, ""}, {3, "1210"}, {0, ""}, {10, ""}})
    EXPECT_EQ(options.GetDefAccountNumber(profile, slot), number) << slot;
  EXPECT_TRUE(options.Flush());
  std::string slot3;
  LOptions::GetDefAccountNumber(profile, 3, slot3);
  EXPECT_EQ(slot3, "1210");
}

TEST_F(ProfileTest, PrintedDateSeparatorFollowsTheFormat) {
  LProfile profile;
  LOptions options;
  options.OpenFrom(profile);
  EXPECT_EQ(options.GetPrintedDateSeparator(), '/');
  options.SetInt("PrintedDateFormat", 1);
  EXPECT_EQ(options.GetPrintedDateSeparator(), ' ');
  options.SetString("PrintedDateSeparator", "-x");
  EXPECT_EQ(options.GetPrintedDateSeparator(), '-');
  options.SetInt("PrintedDateOrder", -1);
  ::setenv("LANG", "en_US.UTF-8", 1);
  EXPECT_EQ(options.GetPrintedDateOrder(), 0);
  options.SetInt("PrintedDateOrder", 2);
  EXPECT_EQ(options.GetPrintedDateOrder(), 2);
}

}  // namespace
