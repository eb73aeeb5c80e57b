// "export journal" read by the two programs users check books with, Debian's ledger-cli and
// hledger: on a book with opening balances, invoices, a credit note, payments, a bill, a bill
// payment and journal entries, the balance each program computes of every account equals
// Kontavo's trial balance to the cent. Also "export csv ledger" and "export csv" of records.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "llib/gen/csvtable.h"
#include "llib/gen/money.h"
#include "tests/app/clitest.h"
#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

using Balances = std::map<std::string, long long>;  // account number -> cents, debit positive

std::string NumberOf(const std::string& name) { return name.substr(0, name.find(' ')); }

class JournalExportCli : public LHomeTest {
 protected:
  void SetUp() override {
    for (std::vector<std::string> args : std::vector<std::vector<std::string>>{
             {"init"},
             {"account", "defaults"},
             {"account", "edit", "1110", "--opening", "2500.00"},
             {"account", "edit", "2150", "--opening", "700.55"},
             {"customer", "add", "C1", "Name=Dupont; fils"},
             {"supplier", "add", "S1", "Name=Grossiste"},
             {"item", "add", "W", "--description", "Widget", "--price", "19.99"},
             {"invoice", "new", "--customer", "C1", "--date", "2024-02-03", "--line", "W||3||Valeur/défaut|"},
             {"invoice", "new", "--customer", "C1", "--date", "2024-03-04", "--line", "|Conseil|1|333.33|Aucun|"},
             {"creditnote", "new", "--customer", "C1", "--date", "2024-03-10", "--line", "W||1||Valeur/défaut|"},
             {"payment", "add", "--customer", "C1", "--amount", "100", "--date", "2024-03-12", "--auto"},
             {"bill", "add", "--supplier", "S1", "--date", "2024-02-20", "6110:450.10", "6410:1200"},
             {"billpayment", "add", "--supplier", "S1", "--amount", "650.10", "--date", "2024-03-01"},
             {"journal", "add", "--date", "2024-01-31", "--type", "0", "--ref", "OD1", "--desc", "Apport",
              "dr:1110:10000", "cr:3010:10000"},
             {"journal", "add", "--date", "2024-03-31", "--type", "0", "--ref", "OD2", "--desc", "Loyer; mars",
              "dr:6410:812.37", "cr:1110:812.37"}}) {
      args.insert(args.begin(), "--yes");  // the dates are more than a year old
      LRunResult run = LRunKontavo(args);
      ASSERT_EQ(run.exitCode, 0) << LCommandText(args) << ": " << run.err;
    }
    journalPath_ = home_.Path() + "/books.journal";
    EXPECT_EQ(LExpectSuccess({"export", "journal", "--out", journalPath_}), journalPath_ + "\n");
  }

  // Kontavo's own trial balance of everything up to the end of 2024.
  static Balances TrialBalance() {
    nlohmann::json report = LRunKontavoJson({"report", "tb", "--date", "2024-12-31"});
    Balances balances;
    for (const auto& row : report["rows"]) {
      if (row["kind"] != "account") continue;
      long long cents = !row["values"][0].is_null() ? row["values"][0].get<long long>()
                                                     : -row["values"][1].get<long long>();
      if (cents != 0) balances[NumberOf(row["label"])] = cents;
    }
    return balances;
  }

  // Lines "account|amount" as a program prints them.
  static Balances Parse(const std::string& text, char separator) {
    Balances balances;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      std::size_t cut = line.rfind(separator);
      long long cents = 0;
      EXPECT_TRUE(cut != std::string::npos && LParseAmount(line.substr(cut + 1), 2, cents)) << line;
      if (cents != 0) balances[NumberOf(line.substr(0, cut))] += cents;
    }
    return balances;
  }

  std::string journalPath_;
  LEnvScope country_{"KONTAVO_COUNTRY", "FR"};
};

TEST_F(JournalExportCli, LedgerAndHledgerBalancesEqualTheTrialBalance) {
  Balances ours = TrialBalance();
  ASSERT_GE(ours.size(), 8u);
  EXPECT_EQ(ours["1110"], 250000 + 1000000 + 10000 - 65010 - 81237);

  LRunResult ledger = LRunProgram("/usr/bin/ledger", {"-f", journalPath_, "balance", "--flat", "--no-total",
                                                      "--format", "%(account)|%(display_total)\n"});
  ASSERT_EQ(ledger.exitCode, 0) << ledger.err;
  EXPECT_EQ(Parse(ledger.out, '|'), ours);

  LRunResult hledger = LRunProgram("/usr/bin/hledger", {"-f", journalPath_, "balance", "--flat", "--no-total",
                                                        "-O", "csv", "--no-elide"});
  ASSERT_EQ(hledger.exitCode, 0) << hledger.err;
  LCsvTable table;
  std::string error;
  ASSERT_TRUE(LCsvTableParse(hledger.out, table, &error)) << error;
  std::string lines;
  for (const auto& row : table.rows) lines += row.cells.at(0) + "|" + row.cells.at(1) + "\n";
  EXPECT_EQ(Parse(lines, '|'), ours);
}

TEST_F(JournalExportCli, LedgerCsvHoldsEveryJournalLine) {
  LCsvTable table;
  std::string error;
  ASSERT_TRUE(LCsvTableParse(LExpectSuccess({"export", "csv", "ledger"}), table, &error)) << error;
  EXPECT_EQ(table.header.cells,
            (std::vector<std::string>{"Date", "Reference", "Type", "Account", "Description", "Amount", "Document"}));
  long long sum = 0;
  for (const auto& row : table.rows) {
    long long cents = 0;
    ASSERT_TRUE(LParseAmount(row.cells.at(5), 2, cents)) << row.cells.at(5);
    sum += cents;
  }
  EXPECT_EQ(sum, 0);
  EXPECT_EQ(table.rows.front().cells[0], "2024-01-31");

  // Records go out as the import reads them; a file is written whole.
  EXPECT_EQ(LExpectSuccess({"export", "csv", "suppliers"}),
            "Code,Name,Address,Contact,Email,Phone,SIREN,VATNumber,ExpenseAccount,PaymentTermsDays\r\n"
            "S1,Grossiste,,,,,,,,\r\n");
  // The file layer logs the system's reason first; the command's own message closes.
  LRunResult refused = LRunKontavo({"export", "csv", "items", "--out", "/nonexistent/items.csv"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_THAT(refused.err, testing::EndsWith("Impossible d'écrire le fichier /nonexistent/items.csv.\n"));
  LExpectUsageErrors({{"export", "csv", "vehicles"}, {"export"}, {"export", "journal", "now"}});
}

}  // namespace
