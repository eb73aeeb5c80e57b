// The statement readers on files written from each format's published layout (the fixtures
// beside this file: one March statement told in every format, and three banks' CSV layouts),
// and on every OFX sample collected from banks and public projects. What is checked is what the
// import relies on: each line's date, amount (sign included), text and bank identifier, the
// balances, that the format is found from the content, and that a file is read whole or refused
// with a message.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "accounts/statementcsv.h"
#include "accounts/statementfile.h"
#include "accounts/statementreaders.h"
#include "accounts/statementtext.h"
#include "llib/gen/money.h"

namespace {

std::string Fixture(const std::string& name) {
  std::ifstream in(std::string(KONTAVO_TEST_SOURCE_DIR) + "/accounts/statements/" + name, std::ios::binary);
  std::stringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

std::vector<long long> Amounts(const LStatementAccount& statement) {
  std::vector<long long> amounts;
  for (const auto& line : statement.lines) amounts.push_back(line.amount);
  return amounts;
}

// The four lines every March fixture but CFONB tells: a transfer in, a cheque, a direct debit,
// bank charges.
const std::vector<long long> kMarch = {120000, -45000, -8731, -1714};

TEST(StatementFormats, FormatIsFoundFromTheContent) {
  EXPECT_EQ(LStatementGuessFormat(Fixture("cfonb120.txt")), LStatementFormat::kCFONB);
  std::string flat = Fixture("cfonb120.txt");
  std::erase(flat, '\r');
  std::erase(flat, '\n');
  EXPECT_EQ(LStatementGuessFormat(flat), LStatementFormat::kCFONB);
  EXPECT_EQ(LStatementGuessFormat(Fixture("camt053.xml")), LStatementFormat::kCamt);
  EXPECT_EQ(LStatementGuessFormat(Fixture("mt940.sta")), LStatementFormat::kMT940);
  EXPECT_EQ(LStatementGuessFormat(Fixture("qif.qif")), LStatementFormat::kQIF);
  for (const char* csv : {"bank_a.csv", "bank_b.csv", "bank_c.csv"})
    EXPECT_EQ(LStatementGuessFormat(Fixture(csv)), LStatementFormat::kCSV) << csv;
  for (const auto& entry : std::filesystem::directory_iterator(std::string(KONTAVO_SHARED_DATA) + "/ofx")) {
    if (entry.path().extension() == ".md") continue;
    std::ifstream in(entry.path(), std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    EXPECT_EQ(LStatementGuessFormat(bytes.str()), LStatementFormat::kOFX) << entry.path().filename();
  }
  EXPECT_EQ(LStatementGuessFormat("hello world"), LStatementFormat::kUnknown);
}

TEST(StatementFormats, CFONBWithAndWithoutLineEnds) {
  std::string withEnds = Fixture("cfonb120.txt");
  std::string flat = withEnds;
  std::erase(flat, '\r');
  std::erase(flat, '\n');
  for (const std::string& bytes : {withEnds, flat}) {
    std::vector<LStatementAccount> statements;
    std::string error;
    ASSERT_TRUE(LStatementReadCFONB(bytes, LCurrencyFormat{}, statements, error)) << error;
    ASSERT_EQ(statements.size(), 1u);
    const LStatementAccount& statement = statements[0];
    EXPECT_EQ(statement.accountId, "00012345678");
    EXPECT_EQ(statement.opening, 1523450);
    EXPECT_EQ(statement.closing, 1579674);
    EXPECT_EQ(statement.closingDate, "2024-03-31");
    // A debit ending in each digit: "}" for 0, then "J" to "R" for 1 to 9.
    std::vector<long long> expected = {120000, -45000, -8731};
    for (int digit = 0; digit < 10; ++digit) expected.push_back(-(1000 + digit));
    EXPECT_EQ(Amounts(statement), expected);
    // The 05 record completes the line before it; the reference follows the label.
    EXPECT_EQ(statement.lines[0].text, "VIR SEPA DUPONT SARL FACT 1042 REF1042 FACTURE 1042 ET 1043 MARS");
    EXPECT_EQ(statement.lines[0].date, "2024-03-04");
    // Latin-1 read as such; a cheque (operation 01) carries its number.
    EXPECT_EQ(statement.lines[1].text, "CHÈQUE 0001234");
    EXPECT_EQ(statement.lines[1].chequeNumber, "0001234");
    EXPECT_EQ(statement.lines[12].date, "2024-03-19");
    std::string error2;
    EXPECT_TRUE(LStatementAddsUp(statement, 2, error2)) << error2;
  }
}

TEST(StatementFormats, CFONBRefusesWhatItCannotRead) {
  std::vector<LStatementAccount> statements;
  std::string error;
  std::string bytes = Fixture("cfonb120.txt");
  std::string broken = bytes;
  broken[122 + 100] = 'X';  // the amount of the first movement
  EXPECT_FALSE(LStatementReadCFONB(broken, LCurrencyFormat{}, statements, error));
  EXPECT_EQ(error, "Relevé CFONB refusé : enregistrement 2 (04), montant illisible.");
  statements.clear();
  EXPECT_FALSE(LStatementReadCFONB(bytes.substr(122), LCurrencyFormat{}, statements, error));  // no 01 before the movements
  EXPECT_NE(error.find("hors d'un relevé ouvert"), std::string::npos) << error;
}

TEST(StatementFormats, Camt053BookedEntriesAndBalances) {
  std::vector<LStatementAccount> statements;
  std::string error;
  ASSERT_TRUE(LStatementReadCamt(Fixture("camt053.xml"), LCurrencyFormat{}, statements, error)) << error;
  ASSERT_EQ(statements.size(), 1u);
  const LStatementAccount& statement = statements[0];
  EXPECT_EQ(statement.accountId, "FR7630002005500001234567841");
  EXPECT_EQ(statement.opening, 250000);
  EXPECT_EQ(statement.closing, 314555);
  EXPECT_EQ(Amounts(statement), kMarch);  // the pending card payment is not booked
  EXPECT_EQ(statement.lines[0].bankId, "BQ20240304-77812");
  EXPECT_EQ(statement.lines[0].text, "Dupont & Fils SARL Facture 1042");
  EXPECT_EQ(statement.lines[1].chequeNumber, "0001234");
  EXPECT_EQ(statement.lines[2].bankId, "");  // neither AcctSvcrRef nor NtryRef: known by its hash
  EXPECT_EQ(statement.lines[2].text, "Électricité de France PRLV SEPA ECH 06/03");
  EXPECT_EQ(statement.lines[3].bankId, "0004");
  EXPECT_TRUE(LStatementAddsUp(statement, 2, error)) << error;
}

TEST(StatementFormats, MT940StatementsOfOneAccountFollowOn) {
  std::vector<LStatementAccount> statements;
  std::string error;
  ASSERT_TRUE(LStatementReadMT940(Fixture("mt940.sta"), LCurrencyFormat{}, statements, error)) << error;
  ASSERT_EQ(statements.size(), 1u);
  const LStatementAccount& statement = statements[0];
  EXPECT_EQ(statement.accountId, "30004/00001234567");
  EXPECT_EQ(statement.opening, 100000);
  EXPECT_EQ(statement.closing, 165055);
  // "RD": a debit reversed is money in.
  std::vector<long long> expected = kMarch;
  expected.push_back(500);
  EXPECT_EQ(Amounts(statement), expected);
  EXPECT_EQ(statement.lines[0].text, "VIREMENT SEPA FACTURE 1042 DUPONT SARL FACT1042");
  EXPECT_EQ(statement.lines[0].bankId, "BQ77812");
  EXPECT_EQ(statement.lines[1].chequeNumber, "0001234");
  EXPECT_EQ(statement.lines[3].date, "2024-03-28");
  EXPECT_EQ(statement.lines[3].text, "FRAIS TENUE DE COMPTE MARS");
  EXPECT_TRUE(LStatementAddsUp(statement, 2, error)) << error;
}

TEST(StatementFormats, QIFBankSection) {
  std::vector<LStatementAccount> statements;
  std::string error;
  ASSERT_TRUE(LStatementReadQIF(Fixture("qif.qif"), LCurrencyFormat{}, statements, error)) << error;
  ASSERT_EQ(statements.size(), 1u);
  EXPECT_EQ(statements[0].accountId, "Compte courant");
  EXPECT_EQ(Amounts(statements[0]), kMarch);
  EXPECT_EQ(statements[0].lines[0].text, "DUPONT SARL VIR SEPA FACT 1042");
  EXPECT_EQ(statements[0].lines[1].chequeNumber, "1234");
  EXPECT_EQ(statements[0].lines[2].date, "2024-03-06");  // "06/03'24", day first as the file shows
}

TEST(StatementFormats, ThreeBanksCsvLayouts) {
  struct Bank {
    const char* file;
    const char* mapText;  // empty: guessed from the headings
    const char* chequeText;
  };
  for (const Bank& bank : {Bank{"bank_a.csv", "", "CHÈQUE 1234"},
                           Bank{"bank_b.csv", "date=1,text=3,amount=4,ref=6,decimal=point", "CHEQUE 1234 TX-2"},
                           Bank{"bank_c.csv", "", "CHÈQUE 1234"}}) {
    SCOPED_TRACE(bank.file);
    std::string bytes = Fixture(bank.file);
    LStatementCsvMap map;
    std::string error;
    if (*bank.mapText == '\0') ASSERT_TRUE(LStatementCsvMapGuess(bytes, map));
    else ASSERT_TRUE(LStatementCsvMapParse(bank.mapText, map, error)) << error;
    std::vector<LStatementAccount> statements;
    ASSERT_TRUE(LStatementReadCSV(bytes, LCurrencyFormat{}, map, statements, error)) << error;
    ASSERT_EQ(statements.size(), 1u);
    EXPECT_EQ(Amounts(statements[0]), kMarch);
    EXPECT_EQ(statements[0].lines[1].text, bank.chequeText);
    EXPECT_EQ(statements[0].lines[3].date, "2024-03-28");
    // The mapping is written so that it reads back the same.
    LStatementCsvMap again;
    ASSERT_TRUE(LStatementCsvMapParse(LStatementCsvMapText(map), again, error)) << error;
    EXPECT_EQ(LStatementCsvMapText(again), LStatementCsvMapText(map));
  }
}

TEST(StatementFormats, CsvRefusals) {
  LStatementCsvMap map;
  std::string error;
  EXPECT_FALSE(LStatementCsvMapParse("date=1,colour=red", map, error));
  EXPECT_EQ(error, "Correspondance des colonnes invalide : « colour=red ».");
  ASSERT_TRUE(LStatementCsvMapParse("date=1,text=2,amount=Montant,sep=;", map, error));
  std::vector<LStatementAccount> statements;
  EXPECT_FALSE(LStatementReadCSV("Date;Libellé;Somme\n01/03/2024;x;1,00\n", LCurrencyFormat{}, map, statements, error));
  EXPECT_EQ(error, "Relevé CSV refusé : la colonne « Montant » (montant) est introuvable.");
  ASSERT_TRUE(LStatementCsvMapParse("amount=3", map, error));
  EXPECT_FALSE(LStatementReadCSV("Date;Libellé;Somme\n01/03/2024;x;1,00\n31/02/2024;y;2,00\n", LCurrencyFormat{}, map, statements, error));
  EXPECT_EQ(error, "Relevé CSV refusé : ligne de données 3 : date invalide (« 31/02/2024 »).");
}

TEST(StatementFormats, AmountsAndDatesAsBanksWriteThem) {
  long long cents = 0;
  struct Case { const char* text; char mark; long long expected; };
  for (const Case& c : {Case{"1 234,56", ',', 123456}, Case{"1,234.56", 0, 123456}, Case{"-0,05", 0, -5},
                        Case{"(12.00)", '.', -1200}, Case{"12.3-", 0, -1230}, Case{"1.234,5", 0, 123450},
                        Case{"13318.36 ", 0, 1331836}, Case{"-140", 0, -14000}, Case{"12.500", '.', 1250}}) {
    ASSERT_TRUE(LStatementParseAmount(c.text, c.mark, 2, cents)) << c.text;
    EXPECT_EQ(cents, c.expected) << c.text;
  }
  for (const char* bad : {"", "abc", "1.2.3", "12.345", "--1"}) EXPECT_FALSE(LStatementParseAmount(bad, 0, 2, cents)) << bad;
  std::string date;
  ASSERT_TRUE(LStatementParseDate("03/04/24", true, date));
  EXPECT_EQ(date, "2024-04-03");
  ASSERT_TRUE(LStatementParseDate("03/04/2024", false, date));
  EXPECT_EQ(date, "2024-03-04");
  ASSERT_TRUE(LStatementParseDate("20240229", true, date));
  EXPECT_EQ(date, "2024-02-29");
  EXPECT_FALSE(LStatementParseDate("20230229", true, date));
  EXPECT_EQ(LStatementTextToUtf8("caf\xE9 \x80"), "café €");
  EXPECT_EQ(LStatementTextToUtf8("\xEF\xBB\xBF" "café"), "café");
}

TEST(StatementFormats, StatementThatDoesNotAddUpIsRefusedWithBothFigures) {
  std::vector<LStatementAccount> statements;
  std::string error;
  std::string bytes = Fixture("camt053.xml");
  bytes.replace(bytes.find("3145.55"), 7, "3145.45");
  ASSERT_TRUE(LStatementReadCamt(bytes, LCurrencyFormat{}, statements, error)) << error;
  EXPECT_FALSE(LStatementAddsUp(statements[0], 2, error));
  EXPECT_EQ(error, "Relevé refusé : le solde d'ouverture plus les opérations donne 3145.55, mais le relevé annonce "
                   "un solde de clôture de 3145.45.");
}

// Every OFX sample holds a bank or card statement read whole (as many lines as its STMTTRN
// elements, whichever form its tags take), or is refused with a message: investment statements,
// and the one whose transactions lack a date.
TEST(StatementFormats, EveryOFXSampleReadsEveryTransaction) {
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(std::string(KONTAVO_SHARED_DATA) + "/ofx")) {
    std::string name = entry.path().filename().string();
    if (name.ends_with(".md")) continue;
    ++files;
    SCOPED_TRACE(name);
    std::ifstream in(entry.path(), std::ios::binary);
    std::stringstream content;
    content << in.rdbuf();
    std::string bytes = content.str();
    std::size_t expected = 0;
    for (std::size_t at = bytes.find("<STMTTRN>"); at != std::string::npos; at = bytes.find("<STMTTRN>", at + 1))
      ++expected;
    bool bankOrCard = bytes.find("BANKMSGSRSV") != std::string::npos ||
                      bytes.find("CREDITCARDMSGSRSV") != std::string::npos;
    std::vector<LStatementAccount> statements;
    std::string error;
    bool read = LStatementReadOFX(bytes, LCurrencyFormat{}, statements, error);
    if (!bankOrCard) {
      EXPECT_FALSE(read);
      EXPECT_EQ(error, "Le fichier OFX ne contient aucun relevé de compte bancaire ou de carte de crédit.");
      continue;
    }
    if (name == "ofxparse_fail_nice_date_missing.ofx") {
      EXPECT_FALSE(read);
      EXPECT_NE(error.find("n'a pas de date valide"), std::string::npos) << error;
      continue;
    }
    ASSERT_TRUE(read) << error;
    std::size_t lines = 0;
    for (const auto& statement : statements) lines += statement.lines.size();
    EXPECT_EQ(lines, expected);
  }
  EXPECT_GE(files, 24);
}

TEST(StatementFormats, OFXOfSeveralAccountsGivesEachItsOwnStatement) {
  std::ifstream in(std::string(KONTAVO_SHARED_DATA) + "/ofx/libofx_ofx-2.1.1-sect-16.5.3.2.ofx", std::ios::binary);
  std::stringstream content;
  content << in.rdbuf();
  std::vector<LStatementAccount> statements;
  std::string error;
  ASSERT_TRUE(LStatementReadOFX(content.str(), LCurrencyFormat{}, statements, error)) << error;
  ASSERT_EQ(statements.size(), 2u);
  EXPECT_NE(statements[0].accountId, statements[1].accountId);
  EXPECT_FALSE(statements[0].lines.empty());
  EXPECT_FALSE(statements[0].lines[0].bankId.empty());
}

}  // namespace
