// The sales pages' test fixture: a real `kontavo serve` in a French business (chart of accounts
// and French taxes, as the start wizard makes them) with customer "DUP" (Dupont SA) and item
// "PAIN" (2,50 €), sessions for each role, and the button press of a document dialog.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/envscope.h"
#include "tests/support/webservertest.h"


// Amounts as the page shows them in a French business: "1 234,56 €".
inline std::string Euros(const std::string& number) { return number + " \xE2\x82\xAC"; }

class WebSalesTest : public LWebServerTest {
 protected:
  void SetUp() override {
    // A business with its chart of accounts and French taxes, as the start wizard makes it.
    ASSERT_EQ(LRunKontavo({"init", "--name", "Principale SARL"}).exitCode, 0);
    LWebServerTest::SetUp();
    ASSERT_EQ(LRunKontavo({"customer", "add", "DUP", "Name=Dupont SA"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"item", "add", "PAIN", "--description", "Pain", "--price", "2.50"}).exitCode, 0);
  }
  // One button press of a document dialog: header fields, then the grid rows "code|description|
  // qty|price|tax|origin" (origin: the stored line the row shows).
  std::string PostDocument(const std::string& session, const std::string& route, const std::string& fields,
                           const std::vector<std::string>& rows, const std::string& submit = "&submit=Enregistrer") {
    std::string body = fields + "&fklines=" + std::to_string(rows.size());
    for (std::size_t line = 0; line < rows.size(); ++line) {
      std::vector<std::string> parts;
      std::string rest = rows[line];
      for (std::size_t bar; (bar = rest.find('|')) != std::string::npos; rest = rest.substr(bar + 1))
        parts.push_back(rest.substr(0, bar));
      parts.push_back(rest);
      const int columns[] = {0, 1, 2, 3, 4, 6};
      for (std::size_t c = 0; c < parts.size() && c < 6; ++c)
        body += "&" + std::to_string(10000 + line * 10 + columns[c]) + "=" + parts[c];
    }
    return LHttpPost(port_, "/" + route, body + submit, session).body;
  }
  nlohmann::json Show(const std::string& kind, const std::string& key) {
    return LRunKontavoJson({kind, "show", key});
  }

  LEnvScope locale_{"LC_ALL", "fr_FR.UTF-8"};
  LEnvScope country_{"KONTAVO_COUNTRY", "FR"};  // whatever an earlier test of the process set
};
