// Conversions and recurring documents through the real kontavo binary: quote and order convert,
// the mark they leave, and a monthly template run over more than a year by two desks at once.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <vector>
#include <nlohmann/json.hpp>

#include "invoice/shared/recurring.h"
#include "llib/gen/date.h"
#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

class RecurringCli : public LHomeTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(LRunKontavo({"init"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"account", "defaults"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"tax", "set", "--count", "1", "--name", "1=A", "--rate", "1=10", "--default", "1"}).exitCode,
              0);
    ASSERT_EQ(LRunKontavo({"customer", "add", "C1", "Name=Dupont"}).exitCode, 0);
  }
  static long long Balance() {
    for (const auto& row : LRunKontavoJson({"customer", "list"}))
      if (row["key"] == "C1") return row["Balance"].get<long long>();
    ADD_FAILURE() << "no customer C1";
    return 0;
  }
  LEnvScope country_{"KONTAVO_COUNTRY", "US"};
};

TEST_F(RecurringCli, QuoteAndOrderConvertOnceIntoInvoices) {
  ASSERT_EQ(LRunKontavo({"quote", "new", "--customer", "C1", "--line", "|Conseil|2|100|A|"}).out, "1\n");
  LRunResult converted = LRunKontavo({"quote", "convert", "1"});
  ASSERT_EQ(converted.exitCode, 0) << converted.err;
  EXPECT_EQ(converted.out, "1\n");
  nlohmann::json invoice = LRunKontavoJson({"invoice", "show", "1"});
  EXPECT_EQ(invoice["fields"]["QuoteNumber"], "1");
  EXPECT_EQ(invoice["lines"][0]["TaxRate"], "10/0/0");
  EXPECT_EQ(invoice["total"], 22000);
  EXPECT_EQ(Balance(), 22000);
  EXPECT_EQ(LRunKontavoJson({"quote", "show", "1"})["convertedToInvoice"], "1");
  EXPECT_NE(LRunKontavo({"quote", "show", "1"}).out.find("Facturé : facture 1\n"), std::string::npos);
  EXPECT_NE(LRunKontavo({"quote", "list"}).out.find("\tfacturé (facture 1)\n"), std::string::npos);

  LRunResult again = LRunKontavo({"quote", "convert", "1"});
  EXPECT_EQ(again.exitCode, 1);
  EXPECT_EQ(again.err, "Le devis 1 a déjà été converti en facture (facture 1).\n");
  EXPECT_EQ(LRunKontavo({"quote", "convert", "2"}).exitCode, 1);
  EXPECT_EQ(LRunKontavo({"quote", "convert"}).exitCode, 2);

  ASSERT_EQ(LRunKontavo({"order", "new", "--customer", "C1", "--line", "|Pièce|1|10|A|"}).out, "1\n");
  EXPECT_EQ(LRunKontavoJson({"order", "show", "1"})["convertedToInvoice"], nullptr);
  LRunResult draft = LRunKontavo({"order", "convert", "1", "--draft"});
  ASSERT_EQ(draft.exitCode, 0) << draft.err;
  EXPECT_EQ(draft.out, "DFT1\n");
  EXPECT_EQ(Balance(), 22000);
  EXPECT_EQ(LRunKontavoJson({"invoice", "show", "DFT1"})["fields"]["OrderNumber"], "1");

  // The mark follows the invoice: recorded under its number, gone with it.
  ASSERT_EQ(LRunKontavo({"invoice", "record", "DFT1"}).out, "2\n");
  EXPECT_EQ(LRunKontavoJson({"order", "show", "1"})["convertedToInvoice"], "2");
  ASSERT_EQ(LRunKontavo({"invoice", "delete", "2"}).exitCode, 0);
  EXPECT_EQ(LRunKontavoJson({"order", "show", "1"})["convertedToInvoice"], nullptr);
  EXPECT_EQ(LRunKontavo({"order", "convert", "1"}).out, "2\n");
}

TEST_F(RecurringCli, MonthlyTemplateCatchesUpOnEveryMissedMonth) {
  // The first day of the month thirteen months back: fourteen due dates up to today.
  LDate today = LDate::Today();
  int months = today.MonthIndex() - 13;
  std::string start = LDate(months / 12, months % 12 + 1, 1).ToText();
  ASSERT_EQ(LRunKontavo({"invoice", "new", "--customer", "C1", "--date", start, "--line", "|Abonnement|1|50|A|"}).out,
            "1\n");
  LRunResult added =
      LRunKontavo({"recurring", "add", "--invoice", "1", "--start", start, "--interval", "2"});
  ASSERT_EQ(added.exitCode, 0) << added.err;
  EXPECT_EQ(added.out, "1\n");
  nlohmann::json listed = LRunKontavoJson({"recurring", "list"});
  ASSERT_EQ(listed.size(), 1u);
  EXPECT_EQ(listed[0]["nextDue"], start);
  EXPECT_EQ(listed[0]["kind"], "invoice");

  // Two desks catching up at once record each occurrence once between them.
  LChildProcess first(KONTAVO_BIN, {"recurring", "run", "--all"});
  LChildProcess second(KONTAVO_BIN, {"recurring", "run", "--all"});
  std::vector<int> made;
  for (LChildProcess* desk : {&first, &second})
    for (std::string line = desk->ReadLine(); !line.empty(); line = desk->ReadLine()) made.push_back(std::stoi(line));
  EXPECT_EQ(first.Wait(), 0);
  EXPECT_EQ(second.Wait(), 0);
  std::sort(made.begin(), made.end());
  std::vector<int> keys;
  for (int key = 2; key <= 15; ++key) keys.push_back(key);
  EXPECT_EQ(made, keys);

  // Dated as the schedule says, each posted on its own date.
  std::map<std::string, std::string> expected;
  LRecord schedule;
  schedule.SetString("RecurStart", start);
  for (int key = 2; key <= 15; ++key) {
    expected[std::to_string(key)] = LRecurringGetDueDateText(schedule);
    schedule.SetString("RecurLast", expected[std::to_string(key)]);
  }
  for (const auto& [key, date] : expected)
    EXPECT_EQ(LRunKontavoJson({"invoice", "show", key})["fields"]["Date"], date) << key;
  std::map<std::string, int> postedLines;
  for (const auto& line : LRunKontavoJson({"ledger"})) {
    std::string document = line["document"];
    if (document == "1") continue;
    ++postedLines[document];
    EXPECT_EQ(line["date"], expected[document]) << document;
  }
  EXPECT_EQ(postedLines.size(), 14u);
  EXPECT_EQ(Balance(), 15 * 5500);

  EXPECT_EQ(LRunKontavo({"recurring", "run", "--all"}).out, "");
  EXPECT_EQ(LRunKontavoJson({"recurring", "list"})[0]["last"], expected["15"]);
  EXPECT_GT(LRunKontavoJson({"recurring", "list"})[0]["nextDue"].get<std::string>(), today.ToText());
}

}  // namespace
