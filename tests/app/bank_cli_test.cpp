// Bank statements through the real kontavo binary, on a book that holds customer payments, a
// bill payment and cheques: what the matching pairs (and what it only suggests), that nothing
// is paired twice or imported twice, what a statement that does not add up leaves behind, the
// posting of a new line, and a reconciliation finished, rolled back, finished again, then one
// of its cleared transactions deleted from the ledger; `kontavo check` stays clean throughout.
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

// The March statement, in one bank's CSV layout.
constexpr const char* kStatement =
    "Booking date,Description,Amount\n"
    "2026-03-03,VIR SEPA DUPONT SARL FACT 1,1200.00\n"
    "2026-03-05,CHEQUE 1234,-450.00\n"
    "2026-03-06,PRLV SEPA EDF ECH 0326,-87.31\n"
    "2026-03-11,VIR SEPA REMISE,300.00\n"
    "2026-03-28,FRAIS TENUE DE COMPTE,-17.14\n";

class BankCli : public LHomeTest {
 protected:
  void SetUp() override {
    Run({"init"});
    Run({"account", "defaults"});
    Run({"customer", "add", "C1", "Name=Dupont SARL"});
    Run({"customer", "add", "C2", "Name=Martin"});
    Run({"customer", "add", "C3", "Name=Bernard"});
    Run({"supplier", "add", "S1", "Name=EDF"});
    Run({"invoice", "new", "--customer", "C1", "--date", "2026-02-25", "--untaxed", "--line", "|x|1|1200|Aucun|"});
    Run({"invoice", "new", "--customer", "C2", "--date", "2026-02-25", "--untaxed", "--line", "|x|1|300|Aucun|"});
    Run({"invoice", "new", "--customer", "C3", "--date", "2026-02-25", "--untaxed", "--line", "|x|1|300|Aucun|"});
    // Paid into 1110 "Compte-chèque": REC10000, then two payments of the same amount and day.
    Run({"payment", "add", "--customer", "C1", "--amount", "1200", "--date", "2026-03-02", "--apply", "1=1200"});
    Run({"payment", "add", "--customer", "C2", "--amount", "300", "--date", "2026-03-10", "--apply", "2=300"});
    Run({"payment", "add", "--customer", "C3", "--amount", "300", "--date", "2026-03-10", "--apply", "3=300"});
    Run({"billpayment", "add", "--supplier", "S1", "--amount", "87.31", "--date", "2026-03-05"});
    // A cheque written in February, and the rent of the same amount paid otherwise.
    Run({"journal", "add", "--date", "2026-02-20", "--type", "0", "--ref", "CHQ1234", "--desc", "Loyer",
         "dr:6410:450", "cr:1110:450"});
    Run({"journal", "add", "--date", "2026-03-04", "--type", "0", "--ref", "VIR77", "--desc", "Loyer",
         "dr:6410:450", "cr:1110:450"});
    statement_ = home_.Path() + "/mars.csv";
    LWriteFile(statement_, kStatement);
  }

  static LRunResult Run(const std::vector<std::string>& args) {
    LRunResult result = LRunKontavo(args);
    EXPECT_EQ(result.exitCode, 0) << args[0] << " " << (args.size() > 1 ? args[1] : "") << ": " << result.err;
    return result;
  }
  static void ExpectCheckClean() {
    LRunResult check = LRunKontavo({"check"});
    EXPECT_EQ(check.exitCode, 0) << check.out << check.err;
  }
  // The status of each line by its text: "matched REC10000", "new"...
  static std::map<std::string, std::string> Statuses(const nlohmann::json& lines) {
    std::map<std::string, std::string> statuses;
    for (const auto& line : lines) {
      std::string status = line["status"];
      if (line.contains("reference")) status += " " + line["reference"].get<std::string>();
      statuses[line["text"]] = status;
    }
    return statuses;
  }
  static std::string IdOf(const nlohmann::json& lines, const std::string& text) {
    for (const auto& line : lines)
      if (line["text"] == text) return line["id"];
    return "";
  }

  std::string statement_;
  LEnvScope country_{"KONTAVO_COUNTRY", "US"};
};

TEST_F(BankCli, ImportMatchesOnceAndReimportAddsNothing) {
  nlohmann::json lines = LRunKontavoJson({"bank", "import", statement_, "--account", "1110"});
  ASSERT_EQ(lines.size(), 5u);
  std::map<std::string, std::string> statuses = Statuses(lines);
  EXPECT_EQ(statuses["VIR SEPA DUPONT SARL FACT 1"], "matched REC10000");
  EXPECT_EQ(statuses["CHEQUE 1234"], "matched CHQ1234");  // the cheque's number, not the nearer rent
  EXPECT_EQ(statuses["PRLV SEPA EDF ECH 0326"], "matched PMT10000");
  // Two payments of 300.00 on the same day and a text that names neither: only a suggestion.
  EXPECT_TRUE(statuses["VIR SEPA REMISE"] == "suggested REC10001" || statuses["VIR SEPA REMISE"] == "suggested REC10002")
      << statuses["VIR SEPA REMISE"];
  EXPECT_EQ(statuses["FRAIS TENUE DE COMPTE"], "new");
  std::set<std::string> references;
  for (const auto& line : lines) {
    if (line.contains("reference")) {
      EXPECT_TRUE(references.insert(line["reference"]).second) << line.dump();
    }
  }

  // The text form: id, date, amount, text, status.
  LRunResult text = Run({"bank", "lines", "--account", "1110"});
  EXPECT_NE(text.out.find("\t2026-03-05\t-450.00\tCHEQUE 1234\tmatched CHQ1234\n"), std::string::npos) << text.out;

  nlohmann::json again = LRunKontavoJson({"bank", "import", statement_, "--account", "1110"});
  ASSERT_EQ(again.size(), 5u);
  for (const auto& line : again) EXPECT_EQ(line["status"], "known") << line.dump();
  EXPECT_EQ(LRunKontavoJson({"bank", "lines", "--account", "1110"}).size(), 5u);
  EXPECT_EQ(LRunKontavoJson({"bank", "lines", "--account", "1110", "--unmatched"}).size(), 2u);
  ExpectCheckClean();
}

TEST_F(BankCli, StatementThatDoesNotAddUpIsRefusedAndLeavesNothing) {
  std::string camt = home_.Path() + "/camt.xml";
  LWriteFile(camt,
             "<?xml version=\"1.0\"?><Document xmlns=\"urn:iso:std:iso:20022:tech:xsd:camt.053.001.02\">"
             "<BkToCstmrStmt><Stmt><Acct><Id><IBAN>FR7600001</IBAN></Id></Acct>"
             "<Bal><Tp><CdOrPrtry><Cd>OPBD</Cd></CdOrPrtry></Tp><Amt Ccy=\"EUR\">100.00</Amt><CdtDbtInd>CRDT</CdtDbtInd></Bal>"
             "<Bal><Tp><CdOrPrtry><Cd>CLBD</Cd></CdOrPrtry></Tp><Amt Ccy=\"EUR\">150.00</Amt><CdtDbtInd>CRDT</CdtDbtInd></Bal>"
             "<Ntry><Amt Ccy=\"EUR\">40.00</Amt><CdtDbtInd>CRDT</CdtDbtInd><BookgDt><Dt>2026-03-02</Dt></BookgDt>"
             "<AcctSvcrRef>A1</AcctSvcrRef></Ntry></Stmt></BkToCstmrStmt></Document>");
  LRunResult refused = LRunKontavo({"bank", "import", camt, "--account", "1110"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.err, "Relevé refusé : le solde d'ouverture plus les opérations donne 140.00, mais le relevé "
                         "annonce un solde de clôture de 150.00.\n");
  EXPECT_EQ(Run({"bank", "lines", "--account", "1110"}).out, "");
  LRunResult unknown = LRunKontavo({"bank", "import", statement_, "--account", "9999"});
  EXPECT_EQ(unknown.exitCode, 1);
}

TEST_F(BankCli, PostReconcileRollBackReconcileAgainThenDeleteACleared) {
  nlohmann::json lines = LRunKontavoJson({"bank", "import", statement_, "--account", "1110"});
  std::string fees = IdOf(lines, "FRAIS TENUE DE COMPTE");
  std::string remise = IdOf(lines, "VIR SEPA REMISE");
  LRunResult posted = Run({"bank", "post", "--account", "1110", fees, "--to", "6910"});
  EXPECT_EQ(posted.out, "GJ10000\n");
  EXPECT_EQ(Run({"bank", "accept", "--account", "1110", remise, "--all-matched"}).out, "4\n");
  // The account chosen for the payee is offered for its next line.
  LWriteFile(statement_, "Booking date,Description,Amount\n2026-04-28,FRAIS TENUE DE COMPTE,-17.14\n");
  nlohmann::json april = LRunKontavoJson({"bank", "import", statement_, "--account", "1110"});
  ASSERT_EQ(april.size(), 1u);
  EXPECT_EQ(april[0]["suggestedAccount"], "6910");
  ExpectCheckClean();

  // Statement closing balance 945.55; a wrong figure leaves a difference and cannot finish.
  LRunResult wrong = LRunKontavo({"bank", "reconcile", "--account", "1110", "--date", "2026-03-31", "--balance", "900",
                                  "--finish"});
  EXPECT_EQ(wrong.exitCode, 1);
  EXPECT_EQ(wrong.err, "Le rapprochement ne peut pas être terminé : l'écart entre le solde du relevé et le solde "
                       "pointé est de -45.55.\n");
  LRunResult done = Run({"bank", "reconcile", "--account", "1110", "--date", "2026-03-31", "--balance", "945.55", "--finish"});
  EXPECT_NE(done.out.find("Écart : 0.00\n"), std::string::npos) << done.out;
  std::string reconcileFile = home_.SharedFolder() + "/Reconcile/1110.csv";
  std::string reconciled = LReadFile(reconcileFile);
  EXPECT_NE(reconciled.find("\"2026-03-28\",\"GJ10000\",\"-17.14\",\"2026-03-31\""), std::string::npos) << reconciled;
  EXPECT_EQ(reconciled.find("VIR77"), std::string::npos);  // the rent paid otherwise is not on the statement
  nlohmann::json report = LRunKontavoJson({"report", "reconcile", "--account", "1110", "--date", "2026-03-31"});
  EXPECT_EQ(report["title"], "Rapprochement bancaire");
  EXPECT_EQ(report["rows"][0]["values"][0], 94555);
  EXPECT_EQ(report["rows"].back()["label"], "Écart");
  EXPECT_EQ(report["rows"].back()["values"][0], 0);
  ExpectCheckClean();

  EXPECT_EQ(Run({"bank", "rollback", "--account", "1110"}).out, "2026-03-31\n");
  EXPECT_EQ(LReadFile(reconcileFile), "");
  EXPECT_EQ(LRunKontavo({"bank", "rollback", "--account", "1110"}).exitCode, 1);
  Run({"bank", "reconcile", "--account", "1110", "--date", "2026-03-31", "--balance", "945.55"});
  Run({"bank", "reconcile", "--account", "1110", "--finish"});
  EXPECT_NE(LReadFile(reconcileFile).find("GJ10000"), std::string::npos);
  ExpectCheckClean();

  // Deleting a cleared transaction takes its row out of the reconciliation file.
  Run({"ledger", "delete", "2026-03-28", "GJ10000"});
  reconciled = LReadFile(reconcileFile);
  EXPECT_EQ(reconciled.find("GJ10000"), std::string::npos) << reconciled;
  EXPECT_NE(reconciled.find("CHQ1234"), std::string::npos) << reconciled;
  ExpectCheckClean();
}

TEST_F(BankCli, NewLinePostedAsCustomerOrSupplierPayment) {
  Run({"invoice", "new", "--customer", "C2", "--date", "2026-03-01", "--untaxed", "--line", "|x|1|80|Aucun|"});
  LWriteFile(statement_,
             "Booking date,Description,Amount\n2026-03-20,VIR SEPA MARTIN FACTURE 4,80.00\n"
             "2026-03-21,PRLV SEPA EDF AVRIL,-50.00\n");
  nlohmann::json lines = LRunKontavoJson({"bank", "import", statement_, "--account", "1110"});
  ASSERT_EQ(lines.size(), 2u);
  nlohmann::json payment = LRunKontavoJson({"bank", "post", "--account", "1110", lines[0]["id"], "--customer", "C2"});
  EXPECT_EQ(payment["reference"], "REC10003");
  nlohmann::json shown = LRunKontavoJson({"payment", "show", payment["payment"]});
  EXPECT_EQ(shown["fields"]["InvoiceNumber"], "4");  // the invoice its text names
  EXPECT_EQ(shown["fields"]["DepositAccount"], "Compte-chèque");
  EXPECT_EQ(LRunKontavoJson({"invoice", "show", "4"})["amountPaid"], 8000);
  EXPECT_EQ(Run({"bank", "post", "--account", "1110", lines[1]["id"], "--supplier", "S1"}).out, "PMT10001\n");
  LRunResult twice = LRunKontavo({"bank", "post", "--account", "1110", lines[1]["id"], "--to", "6910"});
  EXPECT_EQ(twice.exitCode, 1);
  EXPECT_EQ(twice.err, "La ligne de relevé " + lines[1]["id"].get<std::string>() +
                           " correspond déjà à l'écriture PMT10001.\n");
  nlohmann::json after = LRunKontavoJson({"bank", "lines", "--account", "1110"});
  EXPECT_EQ(after[0]["status"], "posted");
  ExpectCheckClean();
}

}  // namespace

namespace {

class BankCliAccounts : public LHomeTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(LRunKontavo({"init"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"account", "defaults"}).exitCode, 0);
  }
  LEnvScope country_{"KONTAVO_COUNTRY", "US"};
};

// A file holding a bank and a card statement: the one of the account number the bank account
// remembers, the other named.
TEST_F(BankCliAccounts, FileOfSeveralAccountsImportsTheChosenOne) {
  std::string file = LSharedDataPath("ofx/libofx_ofx-2.1.1-sect-16.5.3.2.ofx");
  LRunResult refused = LRunKontavo({"bank", "import", file, "--account", "1110"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.err, "Le relevé contient plusieurs comptes : 123456, 123412341234. Choisissez le compte de la banque "
                         "à importer (--statement-account) ; il sera retenu pour ce compte.\n");
  LRunResult card = LRunKontavo({"bank", "import", file, "--account", "1110", "--statement-account", "123412341234"});
  ASSERT_EQ(card.exitCode, 0) << card.err;
  EXPECT_EQ(card.err, "Comptes du relevé non importés : 123456\n");
  EXPECT_EQ(card.out, "1\t2005-08-11\t-23.00\tInterest Charge\tnew\n2\t2005-08-11\t350.00\tPayment - Thank You\tnew\n");
  // Remembered: the next import takes the card statement again, all known.
  LRunResult again = LRunKontavo({"bank", "import", file, "--account", "1110"});
  ASSERT_EQ(again.exitCode, 0) << again.err;
  EXPECT_EQ(again.out, "1\t2005-08-11\t-23.00\tInterest Charge\tknown\n2\t2005-08-11\t350.00\tPayment - Thank You\tknown\n");
  // A new number takes the statement lines and the remembered bank account along.
  ASSERT_EQ(LRunKontavo({"account", "edit", "1110", "--number", "1111", "--yes"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"bank", "lines", "--account", "1111"}).out, card.out);
}

// A line whose paired transaction is deleted from the ledger is matched again at the next import
// (to the other contribution of the same amount, six days later: too far to rival the first).
TEST_F(BankCliAccounts, LedgerDeleteFreesTheLineThatHeldTheTransaction) {
  ASSERT_EQ(LRunKontavo({"journal", "add", "--date", "2026-03-02", "--type", "0", "--ref", "GJ1", "--desc", "Apport",
                         "dr:1110:500", "cr:3010:500"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"journal", "add", "--date", "2026-03-08", "--type", "0", "--ref", "GJ2", "--desc", "Apport",
                         "dr:1110:500", "cr:3010:500"}).exitCode, 0);
  std::string statement = home_.Path() + "/s.csv";
  LWriteFile(statement, "Date,Libellé,Montant\n02/03/2026,APPORT,500.00\n");
  EXPECT_EQ(LRunKontavo({"bank", "import", statement, "--account", "1110"}).out,
            "1\t2026-03-02\t500.00\tAPPORT\tmatched GJ1\n");
  ASSERT_EQ(LRunKontavo({"ledger", "delete", "2026-03-02", "GJ1"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"bank", "import", statement, "--account", "1110"}).out,
            "1\t2026-03-02\t500.00\tAPPORT\tknown\n");
  EXPECT_EQ(LRunKontavo({"bank", "lines", "--account", "1110"}).out, "1\t2026-03-02\t500.00\tAPPORT\tmatched GJ2\n");
}

}  // namespace
