// The vehicle and mileage pages on a real `kontavo serve`: a vehicle and a trip typed in their
// dialogs (and refused where they do not read) land as the command line sees them, the log and
// the list show them, the mileage report's chooser leads to the allowance, and the deletes go in
// their order (trips first, then the vehicle); a viewer changes nothing.
#include <gtest/gtest.h>

#include "tests/support/webservertest.h"

namespace {

class WebVehiclesTest : public LWebServerTest {
 protected:
  void SetUp() override {
    LWebServerTest::SetUp();
    session_ = Logon();
    ASSERT_FALSE(session_.empty());
  }
  std::string Get(const std::string& path) { return LHttpGet(port_, path, session_).body; }
  std::string Post(const std::string& path, const std::string& body) { return LHttpPost(port_, path, body, session_).body; }
  static bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

  std::string session_;
};

TEST_F(WebVehiclesTest, VehicleAndTripsFromTheirDialogsToTheAllowance) {
  // The vehicle: a car needs its horsepower, then lands as typed.
  const std::string vehicle = "id=&101=Clio&102=Clio+de+Paul&103=AB-123-CD&104=car&106=on&107=";
  EXPECT_TRUE(Has(Post("/vehicleprop", vehicle + "&105=&submit=++OK++"),
                  "ShowControlError('105', 'Indiquez la puissance fiscale du véhicule (CV)"));
  EXPECT_TRUE(Has(Post("/vehicleprop", vehicle + "&105=5&submit=++OK++"), "window.location = 'vehiclelist'"));
  EXPECT_TRUE(Has(Post("/vehicleprop", vehicle + "&105=5&submit=++OK++"),
                  "ShowControlError('101', 'Le véhicule « Clio » existe déjà.')"));
  EXPECT_EQ(LRunKontavo({"vehicle", "list"}).out, "Clio\tClio de Paul\tAB-123-CD\tcar\t5\t1\n");
  // Edited, its key stays; the form shows what is stored.
  std::string edit = Get("/vehicleprop?id=Clio");
  EXPECT_TRUE(Has(edit, "value='AB-123-CD'")) << edit;
  EXPECT_TRUE(Post("/vehicleprop", "id=Clio&102=Clio&103=AB-123-CD&104=car&105=4&submit=++OK++").find("ShowControlError") ==
              std::string::npos);
  EXPECT_EQ(LRunKontavo({"vehicle", "list"}).out, "Clio\tClio\tAB-123-CD\tcar\t4\t0\n");

  // A trip by odometer; the distance typed beside it must agree.
  const std::string trip = "id=&201=Clio&202=2024-03-01&203=Client+Dupont&204=Lyon&205=Grenoble&207=10100&208=10350";
  EXPECT_TRUE(Has(Post("/vehiclemileageprop", trip + "&206=20&submit=++OK++"),
                  "ShowControlError('208', 'La distance (20 km) ne correspond pas aux compteurs (250 km).')"));
  EXPECT_TRUE(Has(Post("/vehiclemileageprop", trip + "&206=12,5&submit=++OK++"), "ShowControlError('206'"));
  EXPECT_TRUE(Has(Post("/vehiclemileageprop", trip + "&206=&submit=++OK++"),
                  "window.location = 'vehiclemileagelist?vehicle=Clio'"));
  EXPECT_EQ(LRunKontavo({"mileage", "list"}).out,
            "1\t2024-03-01\tClio\t250\t10100\t10350\tClient Dupont\tLyon\tGrenoble\n");
  std::string log = Get("/vehiclemileagelist?vehicle=Clio&from=2024-01-01&to=2024-12-31");
  EXPECT_TRUE(Has(log, "<td>Lyon → Grenoble</td><td class=amount>10100 → 10350</td><td class=amount>250</td>")) << log;
  EXPECT_TRUE(Has(log, "id=totalkm>250</td>"));
  EXPECT_TRUE(Has(Get("/vehiclemileagelist?vehicle=Clio&from=2025-01-01"), "Aucun trajet."));
  std::string list = Get("/vehiclelist");
  EXPECT_TRUE(Has(list, "<td class=amount>1</td><td class=amount>250</td>")) << list;
  EXPECT_FALSE(Has(list, "vehicledelete?id=Clio"));  // trips first

  // The centre leads to the mileage report; its chooser takes every vehicle or one.
  std::string centre = Get("/reports");
  EXPECT_TRUE(Has(centre, "<h3>Kilométrage</h3>"));
  EXPECT_TRUE(Has(centre, "href='reportredirect?report=mileage'"));
  EXPECT_TRUE(Has(centre, "href='vehiclelist'"));
  EXPECT_EQ(LHttpGet(port_, "/reportredirect?report=mileage", session_).headers["location"],
            "mileagereports?report=mileage");
  EXPECT_TRUE(Has(Get("/mileagereports"), "Tous les véhicules"));
  const std::string chosen = "report=mileage&chooser=mileagereports&201=custom&202=2024-01-01&203=2024-12-31";
  EXPECT_TRUE(Has(Post("/mileagereports", chosen + "&206=&submit=Afficher+le+rapport"),
                  "window.location = 'generatereport?report=mileage&from=2024-01-01&to=2024-12-31';"));
  EXPECT_TRUE(Has(Post("/mileagereports", chosen + "&206=Clio&submit=Afficher+le+rapport"),
                  "window.location = 'generatereport?report=mileage&from=2024-01-01&to=2024-12-31&subject=Clio';"));
  std::string report = Get("/generatereport?report=mileage&from=2024-01-01&to=2024-12-31&subject=Clio");
  EXPECT_TRUE(Has(report, "data-cents=\"15150\"")) << report;  // 250 km × 0,606 (4 CV)
  EXPECT_TRUE(Has(report, "Indemnité 2024, barème 2024 : d × 0.606"));

  // The vehicle is refused while it has trips; its trips of the period go, then it goes.
  EXPECT_EQ(LHttpGet(port_, "/vehicledelete?id=Clio", session_).headers["location"],
            "vehiclelist?msg=Le%20v%C3%A9hicule%20%C2%AB%20Clio%20%C2%BB%20a%20des%20trajets%20%3A%20supprimez%20"
            "d%27abord%20ses%20trajets.");
  EXPECT_TRUE(Has(Post("/vehicledeleterecords", "id=Clio&301=2024-12-31&302=2024-01-01&submit=Supprimer+les+trajets"),
                  "ShowControlError('302', 'La date de fin précède la date de début.')"));
  EXPECT_TRUE(Has(Post("/vehicledeleterecords", "id=Clio&301=2025-01-01&302=&submit=Supprimer+les+trajets"),
                  "window.location = 'vehiclemileagelist?vehicle=Clio'"));
  EXPECT_EQ(LRunKontavo({"mileage", "list"}).out,  // the 2024 trip stays
            "1\t2024-03-01\tClio\t250\t10100\t10350\tClient Dupont\tLyon\tGrenoble\n");
  Post("/vehicledeleterecords", "id=Clio&301=2024-01-01&302=2024-12-31&submit=Supprimer+les+trajets");
  EXPECT_EQ(LRunKontavo({"mileage", "list"}).out, "");
  EXPECT_EQ(LHttpGet(port_, "/vehicledelete?id=Clio", session_).headers["location"], "vehiclelist");
  EXPECT_EQ(LRunKontavo({"vehicle", "list"}).out, "");
}

TEST_F(WebVehiclesTest, ScalesShownByYearAndANewYearImported) {
  std::string page = Get("/mileagescale");
  EXPECT_TRUE(Has(page, "<table class=report id=scale2024><caption>Barème 2024 <span class=subtitle>véhicules "
                        "électriques : +20 %</span></caption>"))
      << page;
  EXPECT_TRUE(Has(page, "<tr><td>voiture 5 CV</td><td>jusqu&#39;à 5000 km : d × 0.636</td>"
                        "<td>de 5001 à 20000 km : d × 0.357 + $1,395</td><td>au-delà de 20000 km : d × 0.427</td></tr>"));
  EXPECT_TRUE(Has(page, "<td>moto 6 CV et plus</td>"));
  EXPECT_TRUE(Has(page, "<td>voiture 3 CV et moins</td>"));
  EXPECT_TRUE(Has(page, "<td>moto 3 à 5 CV</td>"));
  EXPECT_LT(page.find("id=scale2024"), page.find("id=scale2020"));  // the newest first
  EXPECT_TRUE(Has(page, "<textarea id=401"));

  EXPECT_TRUE(Has(Post("/mileagescale", "401=2026+truck+1+-+-+1+0&submit=Importer"),
                  "ShowControlError('401', 'Barème kilométrique, ligne 1 : genre inconnu (car, motorcycle ou moped)"));
  EXPECT_TRUE(Has(Post("/mileagescale", "401=%23+rien&submit=Importer"), "Aucune ligne de barème."));
  EXPECT_TRUE(Has(Post("/mileagescale", "401=2026+car+1+-+-+0.5+100%0A2026+electric+10&submit=Importer"),
                  "window.location = 'mileagescale'"));
  EXPECT_TRUE(Has(Get("/mileagescale"), "<tr><td>voiture 1 CV et plus</td><td>toute distance : d × 0.500 + $100</td>"));
  EXPECT_EQ(LRunKontavo({"mileage", "scale", "2026"}).out, "2026 electric 10\n2026 car 1 - - 0.500 100.00\n");
}

TEST_F(WebVehiclesTest, ViewerSeesTheLogButChangesNothing) {
  ASSERT_EQ(LRunKontavo({"vehicle", "add", "Clio", "FiscalHorsepower=5"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"mileage", "add", "Clio", "--date", "2024-03-01", "--km", "40"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"user", "add", "vic@example.fr", "--name", "Vic", "--viewer", "--profile", "Principale SARL",
                         "--password-stdin"},
                        "vicsecret1\n")
                .exitCode,
            0);
  session_ = Logon("vic@example.fr", "vicsecret1");
  ASSERT_FALSE(session_.empty());
  std::string log = Get("/vehiclemileagelist");
  EXPECT_TRUE(Has(log, "id=totalkm>40</td>"));
  EXPECT_FALSE(Has(log, "vehiclemileagedelete"));
  EXPECT_FALSE(Has(log, "id=newtrip"));
  EXPECT_TRUE(Has(Post("/vehiclemileageprop", "id=&201=Clio&202=2024-03-02&206=5&submit=++OK++"),
                  "Votre compte permet seulement de consulter les données."));
  EXPECT_FALSE(Has(Get("/mileagescale"), "<textarea id=401"));
  LHttpGet(port_, "/vehiclemileagedelete?id=1", session_);
  LHttpGet(port_, "/vehicledelete?id=Clio", session_);
  EXPECT_EQ(LRunKontavo({"mileage", "list"}).out, "1\t2024-03-01\tClio\t40\t\t\t\t\t\n");
}

}  // namespace
