// Sales persons, customer groups, suppliers and the CSV import through the real kontavo binary:
// records checked as they are added, a customer's group lowering the item prices of its documents
// and its sales person carried onto them, and `import csv` reporting refused rows by line.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/app/clitest.h"
#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

class PartiesCli : public LHomeTest {
 protected:
  LEnvScope country_{"KONTAVO_COUNTRY", "FR"};
};

TEST_F(PartiesCli, GroupPriceLevelAndSalesPersonReachTheDocuments) {
  LExpectSuccess({"init"});
  LExpectSuccess({"account", "defaults"});
  LExpectSuccess({"salesperson", "add", "ANNE", "Name=Anne", "CommissionRate=10"});
  LExpectSuccess({"group", "add", "PRO", "Description=Professionnels", "PriceLevel=12,5"});
  LExpectSuccess({"customer", "add", "C1", "Name=Dupont", "Group=PRO", "SalesPerson=ANNE"});
  LExpectSuccess({"item", "add", "W", "--price", "80"});
  std::string key = LExpectSuccess({"invoice", "new", "--customer", "C1", "--date", "2026-01-05", "--line",
                                    "W||2||Aucun|", "--line", "W||1|50|Aucun|"});
  key.pop_back();
  EXPECT_EQ(LStoredField("Invoices", key, "Item1UnitValue"), "7000");  // 80.00 less 12.5 %
  EXPECT_EQ(LStoredField("Invoices", key, "Item2UnitValue"), "5000");  // a price typed stays
  EXPECT_EQ(LStoredField("Invoices", key, "SalesPerson"), "ANNE");
  nlohmann::json report = LRunKontavoJson({"report", "salesperson", "--from", "2026-01-01"});
  EXPECT_EQ(report["columns"].back(), "Commission");
  EXPECT_EQ(report["rows"][0]["values"].back(), 1900);  // 10 % of 190.00

  EXPECT_EQ(LExpectSuccess({"group", "list"}), "PRO\tProfessionnels\t12.5\n");
  LExpectRefused({"group", "add", "X", "PriceLevel=-1"}, "Le taux PriceLevel doit être entre 0 et 100 : -1.");
  LExpectRefused({"salesperson", "add", "ANNE"}, "Le vendeur « ANNE » existe déjà.");
  LExpectRefused({"customer", "add", "C9", "Balance=100"},
                 "Le champ Balance est calculé par Kontavo et ne peut pas être saisi.");
  LExpectRefused({"supplier", "add", "S1", "VATNumber=12"}, "Numéro de TVA intracommunautaire invalide : 12.");
  LExpectSuccess({"supplier", "add", "S1", "Name=Four", "SIREN=552 100 554", "ExpenseAccount=Loyer"});
  EXPECT_EQ(LStoredField("Suppliers", "S1", "SIREN"), "552100554");
  LExpectUsageErrors({{"salesperson"}, {"group", "list", "X"}, {"supplier", "delete", "S1"}});
}

TEST_F(PartiesCli, ImportCsvReportsRefusedRowsAndWritesTheOthers) {
  std::string path = home_.Path() + "/fournisseurs.csv";
  LWriteFile(path, "Fournisseur;Raison sociale;SIREN;Délai de paiement\r\n"
                   "S1;Grossiste;552100554;45\r\n"
                   "S2;Sans siren;12;\r\n");
  EXPECT_EQ(LExpectSuccess({"import", "csv", "suppliers", path, "--dry-run"}).find("1 créée(s)") != std::string::npos,
            true);
  EXPECT_EQ(LStoredField("Suppliers", "S1", "Name"), "<absent>");
  nlohmann::json report = LRunKontavoJson({"import", "csv", "suppliers", path});
  EXPECT_EQ(report["encoding"], "UTF-8");
  EXPECT_EQ(report["separator"], ";");
  EXPECT_EQ(report["created"], 1);
  EXPECT_EQ(report["errors"], nlohmann::json::array({"Ligne #0003 : Numéro SIREN invalide (9 chiffres) : 12."}));
  EXPECT_EQ(LStoredField("Suppliers", "S1", "PaymentTermsDays"), "45");

  LWriteFile(path, "Couleur\nrouge\n");
  LExpectRefused({"import", "csv", "items", path},
                 "Aucune colonne reconnue dans l'en-tête (Couleur) ; indiquez les colonnes avec une correspondance "
                 "(--map).");
  LExpectRefused({"import", "csv", "items", home_.Path() + "/absent.csv"},
                 "Impossible de lire le fichier " + home_.Path() + "/absent.csv.");
  LExpectUsageErrors({{"import", "csv", "vehicles", path}, {"import", "csv", "items"}});
}

}  // namespace
