// Items and their stock through the real kontavo binary: items of each kind, purchase orders
// received, an invoice, then "item list", "item stock", "report inventory", "report reorder"
// and "report movements", and the refusals of bad input.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/app/clitest.h"
#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

class StockCli : public LHomeTest {
 protected:
  void SetUp() override {
    for (std::vector<std::string> args : std::vector<std::vector<std::string>>{
             {"init"},
             {"account", "defaults"},
             {"customer", "add", "C1", "Name=Dupont"},
             {"supplier", "add", "S1", "Name=Grossiste"},
             {"item", "add", "W", "--description", "Widget", "--price", "15", "--reorder-level", "5",
              "--reorder-qty", "20"},
             {"item", "add", "SRV", "--description", "Pose", "--kind", "service", "--price", "90", "--cost", "30"},
             {"porder", "new", "--customer", "S1", "--date", "2024-01-10", "--line", "W||10|5|Aucun|"},
             {"porder", "receive", "1", "--date", "2024-01-10"},
             {"porder", "new", "--customer", "S1", "--date", "2024-02-01", "--line", "W||10|8|Aucun|"},
             {"porder", "receive", "2", "--date", "2024-02-01"},
             {"invoice", "new", "--customer", "C1", "--date", "2024-03-01", "--line", "W||16||Aucun|", "--line",
              "SRV||1||Aucun|"}}) {
      LRunResult run = LRunKontavo(args);
      ASSERT_EQ(run.exitCode, 0) << LCommandText(args) << ": " << run.err;
    }
  }
  LEnvScope country_{"KONTAVO_COUNTRY", "US"};
};

TEST_F(StockCli, ListStockAndInventoryAtADate) {
  EXPECT_EQ(LExpectSuccess({"item", "list"}),
            "SRV\tPose\tService\t90.00\t\t\t\t\n"
            "W\tWidget\tProduit stocké\t15.00\t4\t6.50\t26.00\t5\n");
  nlohmann::json widget = LRunKontavoJson({"item", "stock", "W", "--date", "2024-01-31"});
  EXPECT_EQ(widget["Quantity"], 10);
  EXPECT_EQ(widget["Value"], 5000);
  ASSERT_EQ(widget["moves"].size(), 1u);
  EXPECT_EQ(widget["moves"][0]["document"], "POrders/1");

  nlohmann::json inventory = LRunKontavoJson({"report", "inventory", "--date", "2024-02-15"});
  EXPECT_EQ(inventory["columns"], nlohmann::json::array({"Description", "Quantité", "Coût moyen", "Valeur"}));
  ASSERT_EQ(inventory["rows"].size(), 2u) << inventory.dump();  // the service is not stock
  EXPECT_EQ(inventory["rows"][0]["label"], "W");
  EXPECT_EQ(inventory["rows"][0]["texts"][1], "20");
  EXPECT_EQ(inventory["rows"][0]["values"][2], 650);
  EXPECT_EQ(inventory["rows"][1]["values"][3], 13000);

  nlohmann::json reorder = LRunKontavoJson({"report", "reorder"});
  ASSERT_EQ(reorder["rows"].size(), 1u);
  EXPECT_EQ(reorder["rows"][0]["texts"][3], "20");

  nlohmann::json moves = LRunKontavoJson({"report", "movements", "--from", "2024-02-01", "--to", "2024-12-31"});
  ASSERT_EQ(moves["rows"].size(), 5u) << moves.dump();
  EXPECT_EQ(moves["rows"][1]["label"], "Stock initial");
  EXPECT_EQ(moves["rows"][1]["values"][4], 5000);
  EXPECT_EQ(moves["rows"][3]["texts"][1], "Facture 1");
  EXPECT_EQ(moves["rows"][4]["values"][4], 2600);

  // Deleting the invoice puts its goods back.
  LExpectSuccess({"invoice", "delete", "1"});
  EXPECT_EQ(LStoredField("Items", "W", "Quantity"), "20.000000");
  LExpectSuccess({"check"});
}

TEST_F(StockCli, RefusalsLeaveTheItemsAlone) {
  LExpectRefused({"item", "add", "W"}, "L'article « W » existe déjà.");
  LExpectRefused({"item", "edit", "X", "--price", "2"}, "Article introuvable : X.");
  LExpectRefused({"item", "edit", "W", "--kind", "gadget"}, "Type d'article invalide : gadget (stock, product ou service).");
  LExpectRefused({"item", "edit", "W", "--reorder-level", "beaucoup"}, "Quantité invalide : beaucoup.");
  LExpectRefused({"item", "stock", "X"}, "Article introuvable : X.");
  LExpectRefused({"porder", "receive", "9"}, "Bon de commande introuvable : 9.");
  LExpectUsageErrors({{"item", "list", "W"}, {"item", "stock"}, {"item", "frobnicate"}});
  EXPECT_EQ(LStoredField("Items", "W", "Kind"), "<absent>");
  LExpectSuccess({"item", "edit", "W", "--kind", "product"});
  EXPECT_EQ(LStoredField("Items", "W", "Kind"), "product");
}

}  // namespace
