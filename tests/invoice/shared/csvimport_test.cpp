// CSV import and export of customers, items and suppliers: French spreadsheets (Windows-1252,
// semicolons, decimal commas), byte-order marks, headers in French and English or given by a
// map; refused rows reported with their line and reason while the others go in; existing keys
// updated; export then import changes nothing; every shared sample file either imports or is
// refused; and bad files refused whole with nothing written.
#include "invoice/shared/csvimport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/gen/record.h"
#include "tests/support/testhome.h"

namespace {

class CsvImport : public LHomeTest {
 protected:
  LCsvImportReport Import(LPartyKind kind, std::string_view bytes, std::string_view map = {}, bool dryRun = false) {
    LCsvImportReport report;
    std::string error;
    EXPECT_TRUE(LCsvImportBytes(profile_, kind, bytes, map, dryRun, nullptr, report, &error)) << error;
    return report;
  }
  std::string Refused(LPartyKind kind, std::string_view bytes, std::string_view map = {}) {
    LCsvImportReport report;
    std::string error;
    EXPECT_FALSE(LCsvImportBytes(profile_, kind, bytes, map, false, nullptr, report, &error));
    return error;
  }
  std::string Field(std::string_view list, std::string_view key, std::string_view name) {
    LRecord record;
    if (!profile_.MainList(list).Open(record, key)) return "<absent>";
    std::string value = record.TestFieldExists(name) ? record.GetString(name) : "<absent>";
    record.DetachWithoutSave();
    return value;
  }
  int Count(std::string_view list) {
    int n = 0;
    LRecord record;
    for (LFileStoreIteratorBase it(profile_.MainList(list), record); record.IsAttached(); it.Next(record)) ++n;
    return n;
  }
  LProfile profile_;
};

TEST_F(CsvImport, FrenchSpreadsheetOfItemsWithDecimalCommas) {
  // Windows-1252, semicolons, a price with a thousands blank and decimal comma, French headers.
  LCsvImportReport report = Import(LPartyKind::kItem,
                                   "R\xE9" "f\xE9rence;D\xE9signation;Prix de vente;Co\xFBt d'achat;Type;Seuil;Divers\r\n"
                                   "CAF;Caf\xE9 moulu;\"1 234,50\";2,5;Produit stock\xE9;10;x\r\n"
                                   "POSE;Pose;90;;service;;\r\n"
                                   "BAD;Mauvais;douze;;;;\r\n"
                                   ";Sans code;1;;;;\r\n");
  EXPECT_EQ(report.encoding, LCsvEncoding::kWindows1252);
  EXPECT_EQ(report.separator, ';');
  EXPECT_EQ(report.nRows, 4);
  EXPECT_EQ(report.nCreated, 2);
  EXPECT_EQ(report.errors.GetLines(),
            (std::vector<std::string>{"Ligne #0004 : Montant invalide pour Price : douze.",
                                      "Ligne #0005 : La clé (Code) est vide."}));
  EXPECT_EQ(Field("Items", "CAF", "Description"), "Café moulu");
  EXPECT_EQ(Field("Items", "CAF", "Price"), "123450");
  EXPECT_EQ(Field("Items", "CAF", "Cost"), "250");
  EXPECT_EQ(Field("Items", "CAF", "Kind"), "stock");
  EXPECT_EQ(Field("Items", "CAF", "ReorderLevel"), "10.000000");
  EXPECT_EQ(Field("Items", "POSE", "Kind"), "service");
  EXPECT_EQ(Field("Items", "BAD", "Description"), "<absent>");
  EXPECT_EQ(report.mapping.back(), "Divers : ignorée");
}

TEST_F(CsvImport, CustomersWithABomAMapAndKeysThatExistAlready) {
  LCsvImportReport first = Import(LPartyKind::kCustomer,
                                  "\xEF\xBB\xBFNum\xC3\xA9ro,Raison,E-mail,N\xC2\xB0 TVA,Siren\n"
                                  "C1,Dupont SARL,contact@dupont.fr,fr 32 123456789,123 456 789\n"
                                  "C2,Martin,pas-une-adresse,,\n",
                                  "Numéro=Code,Raison=Name");
  EXPECT_EQ(first.encoding, LCsvEncoding::kUtf8Bom);
  EXPECT_EQ(first.nCreated, 1);
  EXPECT_EQ(first.errors.GetLines(),
            (std::vector<std::string>{"Ligne #0003 : Adresse e-mail invalide : pas-une-adresse."}));
  EXPECT_EQ(Field("Customers", "C1", "VATNumber"), "FR32123456789");
  EXPECT_EQ(Field("Customers", "C1", "SIREN"), "123456789");
  // The name index took the new customer when the import ended (a header and one line).
  std::string index = LReadFile(profile_.MainList("Customers").GetFolder() + "/.index.Name");
  EXPECT_EQ(std::count(index.begin(), index.end(), '\n'), 2) << index;

  // The same key again updates the record; an empty cell leaves its field alone; the balance is
  // the books' and stays.
  LRecord c1;
  ASSERT_TRUE(profile_.MainList("Customers").Open(c1, "C1"));
  c1.SetInt64("Balance", 5000);
  ASSERT_TRUE(c1.Flush());
  LCsvImportReport second = Import(LPartyKind::kCustomer, "Code;Name;Email\nC1;Dupont SA;\n");
  EXPECT_EQ(second.nUpdated, 1);
  EXPECT_EQ(second.nCreated, 0);
  EXPECT_EQ(Field("Customers", "C1", "Name"), "Dupont SA");
  EXPECT_EQ(Field("Customers", "C1", "Email"), "contact@dupont.fr");
  EXPECT_EQ(Field("Customers", "C1", "Balance"), "5000");
  EXPECT_EQ(Count("Customers"), 1);

  // Without a key column, parties are known by their name.
  EXPECT_EQ(Import(LPartyKind::kSupplier, "Nom,Adresse\nGrossiste,Lyon\n").nCreated, 1);
  EXPECT_EQ(Field("Suppliers", "Grossiste", "Address"), "Lyon");
}

TEST_F(CsvImport, ExportThenImportChangesNothing) {
  Import(LPartyKind::kItem, "Code,Description,Price,Cost,Kind,ReorderLevel,ReorderQty\n"
                            "A,\"Vis, 4 mm\",0.05,0.02,stock,100,500\nB,Conseil,120,,service,,\n");
  Import(LPartyKind::kSupplier, "Code,Name,Email,PaymentTermsDays\nS1,\"Four \"\"Gros\"\"\",s@f.fr,45\n");
  for (LPartyKind kind : {LPartyKind::kItem, LPartyKind::kSupplier, LPartyKind::kCustomer}) {
    std::string exported = LCsvExport(profile_, kind);
    LCsvImportReport again = Import(kind, exported);
    EXPECT_EQ(again.errors.GetErrorCount(), 0);
    EXPECT_EQ(again.nCreated, 0);
    EXPECT_EQ(LCsvExport(profile_, kind), exported);
  }
  EXPECT_EQ(LCsvExport(profile_, LPartyKind::kItem),
            "Code,Description,Price,Cost,PLAccount,Kind,ReorderLevel,ReorderQty\r\n"
            "A,\"Vis, 4 mm\",0.05,0.02,,stock,100,500\r\n"
            "B,Conseil,120.00,,,service,,\r\n");
}

TEST_F(CsvImport, EverySharedSampleImportsOrIsRefusedRowByRow) {
  int nFiles = 0;
  for (const auto& entry : std::filesystem::directory_iterator(std::string(KONTAVO_SHARED_DATA) + "/csv")) {
    if (entry.path().extension() != ".csv") continue;
    for (LPartyKind kind : {LPartyKind::kCustomer, LPartyKind::kItem, LPartyKind::kSupplier}) {
      SCOPED_TRACE(entry.path().filename().string() + " " + std::string(LPartyKindOf(kind).word));
      int before = Count(LPartyKindOf(kind).list);
      LCsvImportReport report;
      std::string error;
      if (LCsvImport(profile_, kind, entry.path().string(), {}, false, nullptr, report, &error)) {
        EXPECT_EQ(report.nCreated + report.nUpdated + report.errors.GetErrorCount(), report.nRows);
        for (const std::string& line : report.errors.GetLines()) EXPECT_EQ(line.rfind("Ligne #", 0), 0u) << line;
      } else {
        EXPECT_FALSE(error.empty());
        EXPECT_EQ(Count(LPartyKindOf(kind).list), before);
      }
    }
    ++nFiles;
  }
  EXPECT_GE(nFiles, 10);
  // The only sample with a column of items is the one with a "Code" column: its rows go in.
  EXPECT_EQ(Field("Items", "01", "Kind"), "<absent>");
  EXPECT_GT(Count("Items"), 50);
}

TEST_F(CsvImport, BadFilesAreRefusedWholeAndWriteNothing) {
  std::string good = "Code,Name\nC1,Dupont\n";
  EXPECT_EQ(Refused(LPartyKind::kCustomer, good + "C2,\"Martin\n"), "Ligne 3 : un guillemet ouvert n'est jamais refermé.");
  EXPECT_EQ(Refused(LPartyKind::kCustomer, good + std::string("C2,Mar\0tin\n", 11)),
            "Ligne 3 : le fichier contient un octet nul ; ce n'est pas un fichier CSV texte.");
  EXPECT_EQ(Refused(LPartyKind::kCustomer, good + "C2," + std::string(100u << 20, 'x') + "\n"),
            "Ligne 3 : une ligne dépasse 1 Mo ; ce fichier n'est pas un tableau CSV.");
  EXPECT_EQ(Refused(LPartyKind::kCustomer, "Couleur,Taille\nrouge,M\n"),
            "Aucune colonne reconnue dans l'en-tête (Couleur, Taille) ; indiquez les colonnes avec une "
            "correspondance (--map).");
  EXPECT_EQ(Refused(LPartyKind::kItem, "Description,Prix\nVis,1\n"),
            "Aucune colonne ne donne la clé (Code) ; indiquez-la avec une correspondance (--map).");
  EXPECT_EQ(Refused(LPartyKind::kItem, good, "Code=Balance"), "Champ inconnu dans la correspondance : Balance.");
  EXPECT_EQ(Refused(LPartyKind::kItem, good, "Code"), "Correspondance invalide : Code (COLONNE=CHAMP attendu).");
  EXPECT_EQ(Count("Customers"), 0);
  EXPECT_EQ(Count("Items"), 0);

  // A dry run counts without writing.
  LCsvImportReport dry = Import(LPartyKind::kCustomer, good, {}, true);
  EXPECT_EQ(dry.nCreated, 1);
  EXPECT_EQ(Count("Customers"), 0);
}

}  // namespace
