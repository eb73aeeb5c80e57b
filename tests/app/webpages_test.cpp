// The application's pages on a real `kontavo serve`: the tab bar and side pane of the main
// pages, and the item pages built on the record dialog (list, dialog, delete).
#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "tests/support/webservertest.h"

namespace {

class WebPagesTest : public LWebServerTest {
 protected:
  std::string PostItem(const std::string& session, const std::string& fields) {
    return LHttpPost(port_, "/itemprop", fields + "&submit=++OK++", session).body;
  }
};

TEST_F(WebPagesTest, TabsShowTheServedSectionsAndMarkTheCurrentOne) {
  std::string session = Session();
  std::string main = LHttpGet(port_, "/main", session).body;
  EXPECT_NE(main.find("</tr></table><br><div class=navtabs><a href='main' class='navtab navtabcurrent'>Accueil</a>"
                      "<a href='customerlist' class=navtab>Clients</a><a href='quotelist' class=navtab>Devis</a>"
                      "<a href='orderlist' class=navtab>Commandes</a><a href='invoicelist' class=navtab>Factures</a>"
                      "<a href='creditnotelist' class=navtab>Avoirs</a><a href='paymentlist' class=navtab>Paiements</a>"
                      "<a href='supplierlist' class=navtab>Fournisseurs</a>"
                      "<a href='porderlist' class=navtab>Bons de commande</a>"
                      "<a href='billlist' class=navtab>Factures fournisseurs</a>"
                      "<a href='billpaymentlist' class=navtab>Règlements fournisseurs</a>"
                      "<a href='itemlist' class=navtab>Articles</a><a href='salespersonlist' class=navtab>Vendeurs</a>"
                      "<a href='grouplist' class=navtab>Groupes</a><a href='acclist' class=navtab>Comptes</a>"
                      "<a href='viewjournal' class=navtab>Journal</a><a href='recon' class=navtab>Banque</a>"
                      "<a href='reports' class=navtab>Rapports</a>"
                      "<a href='userlist' class=navtab>Utilisateurs</a><a href='fecexport' class=navtab>FEC</a>"
                      "<a href='businesslist' class=navtab>Entreprises</a><a href='settingsmenu' class=navtab>Réglages</a>"
                      "</div><div class=contenttable>"),
            std::string::npos)
      << main;
  // The year's figures stand in the side pane beside the content.
  std::size_t pane = main.find("</td><td width=10></td><td width='30%' valign=top><table class=mainfigures>");
  ASSERT_NE(pane, std::string::npos);
  EXPECT_LT(main.find("<h1 class=companyname>Principale SARL</h1>"), pane);
  EXPECT_NE(main.find("<tr><td>Comptes clients</td>", pane), std::string::npos);

  std::string users = LHttpGet(port_, "/userlist", session).body;
  EXPECT_NE(users.find("<a href='userlist' class='navtab navtabcurrent'>Utilisateurs</a>"), std::string::npos);
  EXPECT_NE(users.find("<a href='main' class=navtab>Accueil</a>"), std::string::npos);
  EXPECT_EQ(users.find("class=mainfigures"), std::string::npos);

  // The users and FEC tabs are for administrators only.
  std::string userMain = LHttpGet(port_, "/main", Session("--user")).body;
  EXPECT_NE(userMain.find("<a href='recon' class=navtab>Banque</a><a href='reports' class=navtab>Rapports</a></div>"),
            std::string::npos);
  EXPECT_EQ(userMain.find("userlist"), std::string::npos);
  EXPECT_EQ(userMain.find("fecexport"), std::string::npos);
}

TEST_F(WebPagesTest, ItemDialogChecksThenCreatesAndEditsTheRecord) {
  std::string session = Session();
  std::string page = LHttpGet(port_, "/itemprop?onok=itemlist&oncancel=itemlist", session).body;
  EXPECT_NE(page.find("<a href='itemlist' class='navtab navtabcurrent'>Articles</a>"), std::string::npos);
  EXPECT_NE(page.find("<input type=hidden name='id' value=''>"), std::string::npos);
  EXPECT_NE(page.find("<label for=101>Code :</label></td><td><input id=101 name=101 type=text value='' size=20"),
            std::string::npos);

  EXPECT_NE(PostItem(session, "id=&101=+&102=Pain").find("ShowControlError('101', 'Veuillez entrer le code de "
                                                         "l\\'article.');"),
            std::string::npos);
  EXPECT_NE(PostItem(session, "id=&101=PAIN&103=1%2C2x").find("ShowControlError('103', 'Montant invalide : 1,2x.');"),
            std::string::npos);
  EXPECT_EQ(LRunKontavo({"record", "get", "Items", "PAIN"}).exitCode, 1);  // nothing written on refusal
  EXPECT_EQ(PostItem(session, "id=&101=PAIN&102=Pain+de+campagne&103=2.50&104=Ventes+boulangerie"),
            "window.location = 'itemlist';\n");
  nlohmann::json item = LRunKontavoJson({"record", "get", "Items", "PAIN"});
  EXPECT_EQ(item["Description"], "Pain de campagne");
  EXPECT_EQ(item["Price"], "250");
  EXPECT_EQ(item["PLAccount"], "Ventes boulangerie");
  EXPECT_NE(PostItem(session, "id=&101=PAIN&102=Autre").find("L\\'article « PAIN » existe déjà."), std::string::npos);

  // Editing: the code is shown read-only, the price in currency units; an emptied field goes.
  std::string edit = LHttpGet(port_, "/itemprop?id=PAIN", session).body;
  EXPECT_NE(edit.find("<input id=101 name=101 type=text value='PAIN' size=20 title='' readonly>"), std::string::npos);
  EXPECT_NE(edit.find("<input id=103 name=103 type=text value='2.50' size=12"), std::string::npos);
  EXPECT_EQ(PostItem(session, "id=PAIN&101=OTHER&102=Pain+bis&103=3&104="), "window.location = 'itemlist';\n");
  item = LRunKontavoJson({"record", "get", "Items", "PAIN"});
  EXPECT_EQ(item["Description"], "Pain bis");
  EXPECT_EQ(item["Price"], "300");
  EXPECT_FALSE(item.contains("PLAccount"));
  EXPECT_EQ(LRunKontavo({"record", "get", "Items", "OTHER"}).exitCode, 1);

  std::string list = LHttpGet(port_, "/itemlist", session).body;
  EXPECT_NE(list.find(">PAIN</a></td>"), std::string::npos);
  EXPECT_NE(list.find(">Pain bis</td>"), std::string::npos);
  EXPECT_EQ(LHttpGet(port_, "/itemdelete?id=PAIN", session).headers["location"], "itemlist");
  EXPECT_EQ(LRunKontavo({"record", "get", "Items", "PAIN"}).exitCode, 1);
}

TEST_F(WebPagesTest, ItemsSortByTheValuesOfPricesAndQuantities) {
  for (auto [code, price, level] : {std::tuple{"BIG", "30000000", "0.5"}, std::tuple{"MID", "25000000", "100"},
                                    std::tuple{"DIX", "10", "10"}, std::tuple{"NEUF", "9", "9"}}) {
    ASSERT_EQ(LRunKontavo({"item", "add", code, "--price", price}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"record", "set", "Items", code, std::string("ReorderLevel=") + level}).exitCode, 0);
  }
  std::string session = Session("--viewer");
  auto order = [&](const std::string& query) {
    std::string list = LHttpGet(port_, "/itemlist?" + query, session).body;
    std::vector<std::pair<std::size_t, std::string>> found;
    for (const char* code : {"BIG", "MID", "DIX", "NEUF"}) found.emplace_back(list.find(std::string(">") + code + "</a>"), code);
    std::sort(found.begin(), found.end());
    std::string codes;
    for (const auto& [at, code] : found) codes += code + std::string(at == std::string::npos ? "?" : " ");
    return codes;
  };
  // Prices beyond 21 million euros keep their order; quantities sort as numbers, not as text.
  EXPECT_EQ(order("iCol=3&bAsc=1"), "NEUF DIX MID BIG ");
  EXPECT_EQ(order("iCol=7&bAsc=1"), "BIG NEUF DIX MID ");
}

TEST_F(WebPagesTest, ViewersSeeItemsButChangeNothing) {
  ASSERT_EQ(LRunKontavo({"item", "add", "SEL", "--description", "Sel", "--price", "1.20"}).exitCode, 0);
  std::string session = Session("--viewer");
  std::string list = LHttpGet(port_, "/itemlist", session).body;
  EXPECT_NE(list.find(">Sel</td>"), std::string::npos);
  EXPECT_EQ(list.find("itemdelete"), std::string::npos);
  EXPECT_EQ(list.find("Ajouter un nouvel article"), std::string::npos);
  EXPECT_NE(PostItem(session, "id=SEL&102=Gros+sel").find("alert('Votre compte permet seulement de consulter les "
                                                           "données.');"),
            std::string::npos);
  EXPECT_EQ(LHttpGet(port_, "/itemdelete?id=SEL", session).headers["location"], "itemlist");
  EXPECT_EQ(LRunKontavoJson({"record", "get", "Items", "SEL"})["Description"], "Sel");
  // Without a session the pages lead to the logon page.
  EXPECT_EQ(LHttpGet(port_, "/itemlist").headers["location"], "logon");
}

}  // namespace
