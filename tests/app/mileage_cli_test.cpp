// Vehicles and their mileage logs through the real binary: trips logged by distance and by
// odometer, the allowance of the kilometric scale for a year and for parts of a year (which add
// up to the year), a scale imported for a new year, and the refusals that leave the books as
// they were.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/support/testhome.h"

namespace {

class MileageCliTest : public LHomeTest {
 protected:
  void SetUp() override {
    Run({"vehicle", "add", "Clio", "Name=Clio de Paul", "Registration=AB-123-CD", "Kind=voiture", "FiscalHorsepower=5"});
    Run({"vehicle", "add", "Zoe", "Kind=car", "FiscalHorsepower=2", "Electric=1"});
  }
  static void Run(const std::vector<std::string>& args) {
    LRunResult run = LRunKontavo(args);
    ASSERT_EQ(run.exitCode, 0) << run.err;
  }
  // The label and the allowance (cents, or null) of each row of the report.
  static std::vector<std::pair<std::string, nlohmann::json>> Rows(const nlohmann::json& report) {
    std::vector<std::pair<std::string, nlohmann::json>> rows;
    for (const auto& row : report["rows"]) rows.emplace_back(row["label"], row["values"][3]);
    return rows;
  }
};

TEST_F(MileageCliTest, AllowanceOfTheYearAndOfItsParts) {
  EXPECT_EQ(LRunKontavo({"mileage", "add", "Clio", "--date", "2024-03-01", "--km", "5000", "--purpose",
                         "Tournée clients", "--origin", "Lyon", "--destination", "Grenoble"})
                .out,
            "1\n");
  EXPECT_EQ(LRunKontavo({"mileage", "add", "Clio", "--date", "2024-09-10", "--start", "10000", "--end", "13000"}).out,
            "2\n");
  Run({"mileage", "add", "Clio", "--date", "2025-01-15", "--km", "100", "--purpose", "Banque"});
  EXPECT_EQ(LRunKontavo({"mileage", "list", "Clio", "--to", "2024-12-31"}).out,
            "1\t2024-03-01\tClio\t5000\t\t\tTournée clients\tLyon\tGrenoble\n"
            "2\t2024-09-10\tClio\t3000\t10000\t13000\t\t\t\n");

  // The year: 8,000 km of a 5 CV, (8 000 × 0,357) + 1 395 = 4 251 €.
  nlohmann::json year = LRunKontavoJson({"report", "mileage", "Clio", "--from", "2024-01-01", "--to", "2024-12-31"});
  EXPECT_EQ(year["title"], "Indemnités kilométriques");
  EXPECT_EQ(year["columns"], nlohmann::json::array({"Date", "Trajet", "Distance (km)", "Indemnité"}));
  std::vector<std::pair<std::string, nlohmann::json>> expected = {
      {"Clio — Clio de Paul (AB-123-CD), voiture 5 CV", nullptr},
      {"Tournée clients", nullptr},
      {"Trajet", nullptr},
      {"Indemnité 2024, barème 2024 : d × 0.357 + $1,395", 425100},
      {"Total Clio", 425100},
      {"Total des indemnités", 425100}};
  EXPECT_EQ(Rows(year), expected) << year.dump(1);
  EXPECT_EQ(year["rows"][1]["texts"], nlohmann::json::array({"2024-03-01", "Lyon → Grenoble", "5000", ""}));
  EXPECT_EQ(year["rows"][3]["texts"][2], "8000");

  // Halves of the year add up to it: the second half is what its 3,000 km add to the first 5,000.
  nlohmann::json first = LRunKontavoJson({"report", "mileage", "Clio", "--from", "2024-01-01", "--to", "2024-06-30"});
  EXPECT_EQ(first["rows"].back()["values"][3], 318000);  // 5 000 × 0,636
  nlohmann::json later = LRunKontavoJson({"report", "mileage", "--from", "2024-07-01", "--to", "2025-12-31"});
  expected = {{"Clio — Clio de Paul (AB-123-CD), voiture 5 CV", nullptr},
              {"Trajet", nullptr},
              {"Indemnité 2024, barème 2024 : d × 0.357 + $1,395 (après 5000 km dans l'année)", 107100},
              {"Banque", nullptr},
              {"Indemnité 2025, barème 2024 : d × 0.636", 6360},  // the latest scale until 2025's is imported
              {"Total Clio", 113460},
              {"Total des indemnités", 113460}};
  EXPECT_EQ(Rows(later), expected) << later.dump(1);  // the Zoe, without trips, is left out

  // The 2025 scale imported: 2025's distances take it; an electric car gets its increase.
  std::string scale = testing::TempDir() + "/bareme2025.txt";
  LWriteFile(scale, "2025 electric 20\n2025 car 1 - - 1.000 0\n");
  EXPECT_EQ(LRunKontavo({"mileage", "scale", "import", scale}).out, "2025\n");
  EXPECT_EQ(LRunKontavo({"mileage", "scale", "2027"}).out, "2025 electric 20\n2025 car 1 - - 1.000 0.00\n");
  Run({"mileage", "add", "Zoe", "--date", "2025-02-01", "--km", "10"});
  nlohmann::json year2025 = LRunKontavoJson({"report", "mileage", "--from", "2025-01-01", "--to", "2025-12-31"});
  EXPECT_EQ(year2025["rows"][2]["values"][3], 10000);  // Clio: 100 km × 1 €
  EXPECT_EQ(year2025["rows"][6]["label"], "Indemnité 2025, barème 2025 : d × 1.000, majoré de 20 %");
  EXPECT_EQ(year2025["rows"][6]["values"][3], 1200);
  EXPECT_EQ(year2025["rows"].back()["values"][3], 11200);
  EXPECT_EQ(year2025["rows"].back()["texts"][2], "110");
}

TEST_F(MileageCliTest, RefusalsAndDeletesKeepTheLogsConsistent) {
  Run({"mileage", "add", "Clio", "--date", "2024-03-01", "--km", "50"});
  struct Case {
    std::vector<std::string> args;
    int exitCode;
    const char* message;
  };
  const Case cases[] = {
      {{"vehicle", "add", "Clio", "FiscalHorsepower=4"}, 1, "Le véhicule « Clio » existe déjà."},
      {{"vehicle", "add", "Van", "Kind=camion", "FiscalHorsepower=8"}, 1, "Genre de véhicule inconnu : camion"},
      {{"vehicle", "add", "Van", "Kind=car"}, 1, "Indiquez la puissance fiscale"},
      {{"vehicle", "add", "Van", "Colour=rouge"}, 1, "Champ inconnu : Colour"},
      {{"vehicle", "add", "Van", "FiscalHorsepower=cinq"}, 1, "Puissance fiscale invalide : cinq"},
      {{"mileage", "add", "Clio", "--km", "12.5"}, 2, "un nombre entier de kilomètres"},
      {{"mileage", "add", "Clio", "--km", "0"}, 1, "Distance invalide : 0 km"},
      {{"mileage", "add", "Clio", "--start", "100"}, 1, "Indiquez les deux relevés du compteur"},
      {{"mileage", "add", "Clio", "--start", "100", "--end", "90"}, 1, "Le compteur à l'arrivée doit dépasser"},
      {{"mileage", "add", "Clio", "--km", "20", "--start", "100", "--end", "110"}, 1,
       "La distance (20 km) ne correspond pas aux compteurs (10 km)."},
      {{"mileage", "add", "Golf", "--km", "20"}, 1, "Véhicule introuvable : Golf"},
      {{"mileage", "add", "Clio", "--date", "2024-02-30", "--km", "20"}, 2, "date invalide"},
      {{"report", "mileage", "Golf"}, 1, "Véhicule introuvable : Golf"},
      {{"report", "mileage", "--from", "2019-01-01", "--to", "2019-12-31", "Clio"}, 0, ""},
      {{"vehicle", "delete", "Clio"}, 1, "a des trajets : supprimez d'abord ses trajets."},
  };
  for (const Case& c : cases) {
    LRunResult run = LRunKontavo(c.args);
    EXPECT_EQ(run.exitCode, c.exitCode) << c.args[2] << " " << run.err;
    EXPECT_NE(run.err.find(c.message), std::string::npos) << run.err;
  }
  EXPECT_EQ(LRunKontavo({"mileage", "list"}).out, "1\t2024-03-01\tClio\t50\t\t\t\t\t\n");
  EXPECT_EQ(LRunKontavo({"vehicle", "list"}).out, "Clio\tClio de Paul\tAB-123-CD\tcar\t5\t0\nZoe\t\t\tcar\t2\t1\n");
  // A year older than every scale, with trips, is refused by name.
  Run({"mileage", "add", "Clio", "--date", "2018-05-01", "--km", "10"});
  LRunResult old = LRunKontavo({"report", "mileage", "--from", "2018-01-01", "--to", "2018-12-31"});
  EXPECT_EQ(old.exitCode, 1);
  EXPECT_NE(old.err.find("Aucun barème kilométrique pour l'année 2018"), std::string::npos) << old.err;

  // Edited, the vehicle changes class; its trips go by period, then the vehicle itself.
  Run({"vehicle", "edit", "Clio", "FiscalHorsepower=7", "Kind=moto"});
  EXPECT_NE(LRunKontavo({"vehicle", "show", "Clio"}).out.find("Kind=motorcycle\nFiscalHorsepower=7\n"), std::string::npos);
  EXPECT_EQ(LRunKontavo({"mileage", "clear", "Clio", "--from", "2024-01-01"}).out, "1\n");
  EXPECT_EQ(LRunKontavo({"mileage", "delete", "2"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"mileage", "delete", "2"}).exitCode, 1);
  Run({"vehicle", "delete", "Clio"});
  EXPECT_EQ(LRunKontavo({"vehicle", "list"}).out, "Zoe\t\t\tcar\t2\t1\n");
}

}  // namespace
