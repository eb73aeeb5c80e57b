// The VAT return pages on a real `kontavo serve`. A British business against the HMRC stand-in:
// the settings, the authorization with a pasted code, the obligations by the fixed query and by a
// range, a return prefilled from the running figures of recorded invoices, edited and sent, HMRC's
// answers word for word, and viewing the return. A French business: the CA3 figures of a quarter
// as the report gives them. Only administrators reach the pages.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "llib/gen/date.h"
#include "tests/app/vatreturntest.h"
#include "tests/support/hmrctestserver.h"
#include "tests/support/webservertest.h"

namespace {

std::string UrlEncode(const std::string& text) {
  std::string out;
  for (unsigned char c : text) {
    if (std::isalnum(c) || c == '-' || c == '.' || c == '_') out += static_cast<char>(c);
    else out += "%" + std::string(1, "0123456789ABCDEF"[c >> 4]) + "0123456789ABCDEF"[c & 15];
  }
  return out;
}

bool Has(const std::string& page, const std::string& text) { return page.find(text) != std::string::npos; }

class WebVatReturnTest : public LWebServerTest {
 protected:
  void SetUp() override {
    LWebServerTest::SetUp();
    LExpectSuccess({"account", "defaults"});
    session_ = Logon();
    ASSERT_FALSE(session_.empty());
  }
  LWebResponse Get(const std::string& path) { return LHttpGet(port_, path, session_); }
  std::string Post(const std::string& path, const std::string& body) { return LHttpPost(port_, path, body, session_).body; }
  static std::string Running(const std::string& field) { return LStoredField("Misc", "VATReturn", field); }

  std::string session_;
};

TEST_F(WebVatReturnTest, BritishReturnFromTheSettingsToTheSubmissionAndItsViewing) {
  LExpectSuccess({"record", "set", "Misc", "Options", "CountryCode=GB"});
  LHmrcTestServer hmrc(home_.Path() + "/hmrc");
  ASSERT_TRUE(hmrc.IsRunning());
  std::string home = Get("/vatreturn").body;
  EXPECT_TRUE(Has(home, "Déclaration de TVA (HMRC)")) << home;
  EXPECT_TRUE(Has(home, "Please enter your VAT registration number in Options to proceed."));

  // Settings: an address that does not read is refused; the number and the stand-in's address kept.
  EXPECT_TRUE(Has(Post("/vatsettings", "vrn=123456789&api=nowhere&save=1"), "Adresse non valide : nowhere"));
  EXPECT_TRUE(Has(Post("/vatsettings", "vrn=123456789&api=" + UrlEncode(hmrc.BaseUrl()) + "&save=1"),
                  "Paramètres enregistrés."));
  LExpectSuccess({"vat", "config", "--ca-file", hmrc.CertFile()});
  nlohmann::json config = LRunKontavoJson({"vat", "config"});
  EXPECT_EQ(config["vrn"], "123456789");
  EXPECT_EQ(config["api"], hmrc.BaseUrl());

  // Before the authorization, HMRC's side is not called and says why, caption and message.
  std::string refused = Post("/vatobligations", "fetch=1");
  EXPECT_TRUE(Has(refused, "<p class=alertcaption>VAT Obligations Retrieval Failed</p>"
                           "<p class=alertmessage>Please authorize application to connect to HMRC</p>"))
      << refused;

  // The authorize page of the stand-in, and the code pasted back as HMRC's page shows it.
  std::string auth = Get("/vatauth").body;
  EXPECT_TRUE(Has(auth, "Autorisation en cours"));
  EXPECT_TRUE(Has(auth, "href='" + hmrc.BaseUrl() + "/oauth/authorize?response_type=code&amp;client_id="
                            "Qz4kLmP8vRt2_WnY6hJd3sXa9BcE&amp;scope=read:vat+write:vat&amp;redirect_uri="
                            "urn:ietf:wg:oauth:2.0:oob'"))
      << auth;
  EXPECT_TRUE(Has(Post("/vatauth", "code=" + UrlEncode("Success code=ab/c")), "L&#39;accès à HMRC est autorisé."));
  EXPECT_TRUE(Has(hmrc.Requests().back()["body"].get<std::string>(), "&code=ab%2Fc"));
  EXPECT_TRUE(Has(Get("/vatreturn").body, "<td id=authorized>Accordée</td>"));
  // A redirect that reaches this server brings the code in its address.
  EXPECT_TRUE(Has(Get("/vatauth?code=redirected").body, "L&#39;accès à HMRC est autorisé."));
  EXPECT_TRUE(Has(hmrc.Requests().back()["body"].get<std::string>(), "&code=redirected"));

  // A chosen range, then the fixed query: each open period leads to its return, each fulfilled
  // one to its viewing.
  std::string ranged = Post("/vatobligations", "from=2017-01-01&to=2017-12-31&range=1");
  EXPECT_TRUE(Has(ranged, "1 obligation reçue de HMRC."));
  EXPECT_TRUE(Has(ranged, "vatsubmit?period=17A1"));
  EXPECT_FALSE(Has(ranged, "period=00A1"));
  EXPECT_EQ(hmrc.Requests().back()["query"], "from=2017-01-01&to=2017-12-31");
  std::string fixed = Post("/vatobligations", "fetch=1");
  EXPECT_EQ(hmrc.Requests().back()["query"], "from=2000-01-01&to=2000-12-31");
  EXPECT_TRUE(Has(fixed, "<caption>VAT Obligations</caption>"));
  EXPECT_TRUE(Has(fixed, "<td>00A1</td><td>2000-01-01</td><td>2000-03-31</td><td>2000-05-07</td><td>F</td>"
                         "<td>2000-05-06</td><td><a href='vatview?period=00A1'"))
      << fixed;
  EXPECT_TRUE(Has(fixed, "<a href='vatsubmit?period=%23001' class=actionlink>Remplir la déclaration</a>"));

  // The return is prefilled from the sales recorded since the last one.
  LRecordVatReturnSale();
  std::string form = Get("/vatsubmit?period=00A2").body;
  EXPECT_TRUE(Has(form, "<option value='00A2' selected>00A2 (du 2000-04-01 au 2000-06-30, à déposer avant le "
                        "2000-08-07)</option>"))
      << form;
  EXPECT_TRUE(Has(form, ">Box 1 VAT due on sales</label></td><td><input id=box1 name=box1 value='30.15'"));
  EXPECT_TRUE(Has(form, "id=box3 name=box3 value='30.15'"));
  EXPECT_TRUE(Has(form, "id=box6 name=box6 value='150'"));
  EXPECT_TRUE(Has(form, "<input type=hidden name=shown1 value='30.15'>"));

  // What does not read, or is not declared, is refused before HMRC is called.
  const std::string boxes = "period=00A2&box1=30.15&box2=0.00&box3=30.15&box4=10.15&box5=20.00&box6=150&box7=50"
                            "&box8=150&box9=0&shown1=30.15&shown6=150&shown8=150&submit=1";
  std::size_t calls = hmrc.Requests().size();
  std::string badBox7 = boxes;
  badBox7.replace(badBox7.find("box7=50"), 7, "box7=5x");
  EXPECT_TRUE(Has(Post("/vatsubmit", badBox7 + "&declare=1"),
                  "Box 7 Total purchases excluding VAT : nombre entier de livres attendu."));
  EXPECT_TRUE(Has(Post("/vatsubmit", boxes), "Cochez la déclaration avant d&#39;envoyer la déclaration de TVA."));
  EXPECT_EQ(hmrc.Requests().size(), calls);

  std::string sent = Post("/vatsubmit", boxes + "&declare=1");
  EXPECT_TRUE(Has(sent, "<p class=alertcaption>Successful Submission</p>"
                        "<p class=alertmessage>VAT Returns has been submitted successfully</p>"))
      << sent;
  EXPECT_TRUE(Has(sent, "<tr><th>formBundleNumber</th><td>123456789012</td></tr>"));
  EXPECT_EQ(hmrc.Requests().back()["body"], kVatReturnSaleBody);
  // The boxes left as shown came from the running figures, and leave them.
  EXPECT_EQ(Running("OutputTax"), "0");
  EXPECT_EQ(Running("TotalValueSalesExVat"), "75");

  // HMRC refuses the same period twice: its caption and message.
  std::string twice = Post("/vatsubmit", "period=00A2&box1=1.00&box2=0&box3=1.00&box4=0&box5=1.00&box6=1&box7=0"
                                         "&box8=1&box9=0&declare=1&submit=1");
  EXPECT_TRUE(Has(twice, "<p class=alertcaption>Failed Submission</p><p class=alertmessage>Business validation error"))
      << twice;
  // A sale recorded while the form was open: the figures are shown again rather than sent.
  LExpectSuccess({"invoice", "new", "--customer", "C1", "--date", "2000-05-02", "--line", "|More|1|10|VAT|"});
  std::string moved = Post("/vatsubmit", "period=%23001&box1=0.00&box2=0&box3=0&box4=0&box5=0&box6=0&box7=0&box8=0"
                                         "&box9=0&shown1=0.00&shown6=0&shown8=0&declare=1&submit=1");
  EXPECT_TRUE(Has(moved, "Les chiffres en cours ont changé")) << moved;
  EXPECT_TRUE(Has(moved, "id=box1 name=box1 value='2.00'"));

  // Viewing: the fulfilled periods, then the return as HMRC gives it back.
  EXPECT_TRUE(Has(Get("/vatview").body, "<option value='00A1'>00A1 (du 2000-01-01 au 2000-03-31)</option>"));
  Post("/vatobligations", "fetch=1");
  std::string view = Get("/vatview?period=00A2").body;
  EXPECT_TRUE(Has(view, "<caption>VAT Return")) << view;
  EXPECT_TRUE(Has(view, "Box 5 Net VAT due</td><td class=\"amount\" data-cents=\"2000\">")) << view;
  EXPECT_TRUE(Has(Get("/vatview?period=17A1").body, "Aucune obligation remplie pour la période 17A1"));
}

TEST_F(WebVatReturnTest, FrenchBusinessSeesItsCa3FiguresAndOnlyAdministratorsReachThePages) {
  LExpectSuccess({"business", "add", "--name", "Atelier", "--country", "FR"});
  LExpectSuccess({"--business", "1", "customer", "add", "C1", "Name=Dupont"});
  LExpectSuccess({"--business", "1", "invoice", "new", "--customer", "C1", "--date", "2026-01-15", "--line",
                  "|Pose|1|1000|TVA 20 %|"});
  LExpectSuccess({"--business", "1", "invoice", "new", "--customer", "C1", "--date", "2026-02-10", "--line",
                  "|Repas|1|500|TVA 10 %|"});
  ASSERT_TRUE(Has(Post("/chooseprofile", "rbg3=302&submit=++OK++"), "window.location"));

  std::string year = std::to_string(LDate::Today().year);
  std::string page = Get("/vatreturn?period=q" + year + "-1").body;
  EXPECT_TRUE(Has(page, "Déclaration de TVA (CA3)")) << page;
  EXPECT_TRUE(Has(page, "<option value='q" + year + "-1' selected>1er trimestre " + year + "</option>"));
  std::string custom = Get("/vatreturn?from=2026-01-01&to=2026-03-31").body;
  EXPECT_TRUE(Has(custom, "TVA nette due (ligne 28) : ")) << custom;
  EXPECT_TRUE(Has(custom, "href='generatereport?report=tva-ca3&from=2026-01-01&to=2026-03-31&format=pdf'"));
  // The same figures as the report.
  nlohmann::json report =
      LRunKontavoJson({"--business", "1", "report", "tva-ca3", "--from", "2026-01-01", "--to", "2026-03-31"});
  int found = 0;
  for (const auto& row : report["rows"]) {
    if (row["label"] != "28 TVA nette due") continue;
    ++found;
    EXPECT_EQ(row["values"][1], 25000);  // 200 at 20 % and 50 at 10 %
    EXPECT_TRUE(Has(custom, "28 TVA nette due</td><td class=\"amount\"></td><td class=\"amount\" data-cents=\"25000\""))
        << custom;
  }
  EXPECT_EQ(found, 1);
  EXPECT_TRUE(Has(Get("/vatreturn?from=2026-03-31&to=2026-01-01").body, "la première avant la seconde"));

  // A colleague who is not an administrator is neither offered the pages nor let in.
  LRunResult added = LRunKontavo({"user", "add", "eve@example.fr", "--name", "Eve", "--user", "--profile",
                                  "Principale SARL", "--password-stdin"},
                                 "evesecret\n");
  ASSERT_EQ(added.exitCode, 0) << added.err;
  std::string eve = Logon("eve@example.fr", "evesecret");
  EXPECT_FALSE(Has(LHttpGet(port_, "/reports", eve).body, "href='vatreturn'"));
  EXPECT_TRUE(Has(Get("/reports").body, "href='vatreturn'"));
  for (const char* route : {"/vatreturn", "/vatsettings", "/vatauth", "/vatsubmit", "/vatview"})
    EXPECT_EQ(LHttpGet(port_, route, eve).headers["location"], "main") << route;
  EXPECT_EQ(LHttpPost(port_, "/vatsettings", "vrn=1&save=1", eve).headers["location"], "main");
}

}  // namespace
