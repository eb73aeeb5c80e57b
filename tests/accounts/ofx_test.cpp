// The OFX statement reader on statements written for the purpose: header forms, message sets,
// the order of lines, amounts and dates, every error text, and input built to break it.
#include "accounts/ofx.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <filesystem>

#include "tests/accounts/ofxtestsupport.h"

namespace {

constexpr const char* kEmptyOrWrong = "Le fichier est vide ou il s'agit du fichier OFX incorrect";
constexpr const char* kReadError = "Erreur de lecture du fichier OFX.";

constexpr const char* kHeader =
    "OFXHEADER:100\r\nDATA:OFXSGML\r\nVERSION:102\r\nSECURITY:NONE\r\nENCODING:USASCII\r\n"
    "CHARSET:1252\r\nCOMPRESSION:NONE\r\nOLDFILEUID:NONE\r\nNEWFILEUID:NONE\r\n";

// One transaction, SGML style.
std::string Transaction(const std::string& posted, const std::string& amount, const std::string& id,
                        const std::string& name, const std::string& memo = "") {
  std::string text = "<STMTTRN>\n<TRNTYPE>DEBIT\n<DTPOSTED>" + posted + "\n<TRNAMT>" + amount + "\n<FITID>" + id + "\n";
  if (!name.empty()) text += "<NAME>" + name + "\n";
  if (!memo.empty()) text += "<MEMO>" + memo + "\n";
  return text + "</STMTTRN>\n";
}

// A bank statement; without the closing tag, further message sets can be appended.
std::string BankBody(const std::string& account, const std::string& transactions,
                     const std::string& balance = "1234.56", bool close = true) {
  return "<OFX>\n<SIGNONMSGSRSV1>\n<SONRS>\n<STATUS>\n<CODE>0\n<SEVERITY>INFO\n</STATUS>\n"
         "<DTSERVER>20240402\n<LANGUAGE>FRE\n</SONRS>\n</SIGNONMSGSRSV1>\n"
         "<BANKMSGSRSV1>\n<STMTTRNRS>\n<TRNUID>1\n<STATUS>\n<CODE>0\n<SEVERITY>INFO\n</STATUS>\n"
         "<STMTRS>\n<CURDEF>EUR\n<BANKACCTFROM>\n<BANKID>30004\n<ACCTID>" + account +
         "\n<ACCTTYPE>CHECKING\n</BANKACCTFROM>\n"
         "<BANKTRANLIST>\n<DTSTART>20240301\n<DTEND>20240331235959\n" + transactions +
         "</BANKTRANLIST>\n<LEDGERBAL>\n<BALAMT>" + balance + "\n<DTASOF>20240331\n</LEDGERBAL>\n"
         "</STMTRS>\n</STMTTRNRS>\n</BANKMSGSRSV1>\n" + (close ? "</OFX>\n" : "");
}

const std::string kTwoLines = Transaction("20240305", "-12.50", "A1", "BOULANGERIE", "CB 04/03") +
                              Transaction("20240306", "1500.00", "B2", "SALAIRE");

class OFXReader : public LOFXTest {};

// ---- Header forms and refusals ------------------------------------------------------------------

TEST_F(OFXReader, BodyAfterTheBlankLineAndBodyOnTheOFXLineReadTheSame) {
  std::string body = BankBody("00012345678", kTwoLines);
  std::string lfHeader = kHeader;
  std::erase(lfHeader, '\r');
  std::string oneLine = body;
  std::erase(oneLine, '\n');
  const std::string variants[] = {
      std::string(kHeader) + "\r\n" + body,                       // blank line, CR LF
      std::string(kHeader) + body,                                // no blank line, CR LF
      lfHeader + body,                                            // no blank line, LF
      lfHeader + "\n" + body,                                     // blank line, LF
      lfHeader + oneLine,                                         // the whole body on one line, no line end
      body,                                                       // no header at all
      "OFXHEADER:100\nX:" + std::string(600, 'x') + "\n" + body,  // a header line longer than 259
  };
  for (const std::string& file : variants) {
    LBankStatement statement;
    EXPECT_EQ(ReadText(file, statement), "") << file.substr(0, 80);
    EXPECT_EQ(statement.accountId, "00012345678");
    EXPECT_EQ(statement.periodStart.GetDateTimeText(), "2024-03-01 11:59:00");
    EXPECT_EQ(statement.periodEnd.GetDateTimeText(), "2024-03-31 23:59:59");
    EXPECT_EQ(statement.ledgerBalance, 123456);
    EXPECT_EQ(LStatementLines(statement), (std::vector<LStatementLine>{{"2024-03-06", "B2", "SALAIRE", 150000},
                                                                       {"2024-03-05", "A1", "BOULANGERIE; CB 04/03", -1250}}));
  }
}

TEST_F(OFXReader, HeaderWithoutEndOrBodyEmptyPathsAndUnreadableFilesHaveTheirTexts) {
  std::string header = kHeader;
  for (auto [content, error] : {std::pair<std::string, std::string>{"", kEmptyOrWrong},
                                {header, kEmptyOrWrong},  // no blank line, no <OFX>
                                {header + "\r\n", kEmptyOrWrong},
                                {header + "\r\n<OFX>", kEmptyOrWrong},  // 5 bytes left
                                {header + "\r\n<OFX>\n", ""},           // an OFX with nothing in it
                                {header + "\r\n<HTML><BODY>Erreur 404</BODY></HTML>", kReadError},
                                // Text before the first tag ends the root at once.
                                {"\nOFX body <OFX>\n", kReadError}}) {
    LBankStatement statement;
    EXPECT_EQ(ReadText(content, statement), error) << content;
    EXPECT_EQ(statement.CountLines(), 0u);
  }
  LBankStatement statement;
  EXPECT_EQ(ReadPath("", statement), "Impossible d'ouvrir le fichier OFX.");
  EXPECT_EQ(ReadPath(home_.Path() + "/missing.ofx", statement), kEmptyOrWrong);
  EXPECT_EQ(ReadPath(home_.Path(), statement), kEmptyOrWrong);  // a folder
}

TEST_F(OFXReader, TheTemporaryCopyIsRemovedAndAnUnusableFolderIsNamed) {
  std::string temp = home_.Path() + "/tmp";
  std::filesystem::create_directory(temp);
  LBankStatement statement;
  {
    LEnvScope scope("TMPDIR", temp.c_str());
    EXPECT_EQ(ReadText(std::string(kHeader) + "\r\n" + BankBody("1", kTwoLines), statement), "");
    EXPECT_EQ(ReadText(std::string(kHeader) + "\r\n<NOTOFX>\n", statement), kReadError);
    EXPECT_TRUE(std::filesystem::is_empty(temp));
  }
  LEnvScope scope("TMPDIR", (home_.Path() + "/no/such/folder").c_str());
  EXPECT_EQ(ReadText(BankBody("1", kTwoLines), statement),
            "Impossible d'ouvrir le fichier xml : " + home_.Path() + "/no/such/folder/0XXXXXX");
}

// ---- Message sets and lines -------------------------------------------------------------------

// Each line is put at the head of the list (the file's order reversed), unmarked; the
// description joins NAME and MEMO with "; " when both exist.
TEST_F(OFXReader, LinesAreAtTheHeadOfTheListWithNameAndMemoJoined) {
  LBankStatement statement;
  std::string lines = Transaction("20240301", "1", "A", "NOM", "MEMO") + Transaction("20240301", "2", "B", "NOM") +
                      Transaction("20240301", "3", "C", "", "MEMO SEUL") + Transaction("20240301", "4", "", "", "");
  ASSERT_EQ(ReadText(BankBody("1", lines), statement), "");
  EXPECT_EQ(LStatementLines(statement), (std::vector<LStatementLine>{{"2024-03-01", "", "", 400},
                                                                     {"2024-03-01", "C", "MEMO SEUL", 300},
                                                                     {"2024-03-01", "B", "NOM", 200},
                                                                     {"2024-03-01", "A", "NOM; MEMO", 100}}));
  for (const LBankStatementItem* item = statement.GetFirstLine(); item != nullptr; item = item->GetNext())
    EXPECT_FALSE(item->marked);
}

TEST_F(OFXReader, LaterMessageSetsOverwriteTheAccountAndAddTheirLines) {
  std::string file = BankBody("BANK", Transaction("20240301", "10", "B1", "X"), "100.00", false) +
                     "<INVSTMTMSGSRSV1>\n<INVSTMTTRNRS>\n<INVSTMTRS>\n<INVTRANLIST>\n<INVBANKTRAN>\n" +
                     Transaction("20240315", "999", "INV", "SKIPPED") +
                     "</INVBANKTRAN>\n</INVTRANLIST>\n</INVSTMTRS>\n</INVSTMTTRNRS>\n</INVSTMTMSGSRSV1>\n"
                     "<CREDITCARDMSGSRSV1>\n<CCSTMTTRNRS>\n<TRNUID>2\n<CCSTMTRS>\n<CURDEF>EUR\n<CCACCTFROM>\n"
                     "<ACCTID>CARD\n</CCACCTFROM>\n<BANKTRANLIST>\n<DTSTART>20240401\n<DTEND>20240430\n" +
                     Transaction("20240402", "-20", "C1", "Y") +
                     "</BANKTRANLIST>\n<LEDGERBAL>\n<BALAMT>0\n</LEDGERBAL>\n</CCSTMTRS>\n</CCSTMTTRNRS>\n"
                     "</CREDITCARDMSGSRSV1>\n</OFX>\n";
  LBankStatement statement;
  ASSERT_EQ(ReadText(file, statement), "");
  EXPECT_EQ(statement.accountId, "CARD");
  EXPECT_EQ(statement.ledgerBalance, 10000);  // a zero balance leaves the earlier one
  EXPECT_EQ(statement.periodStart.GetDateTime(), "2024-04-01");
  EXPECT_EQ(LStatementAmounts(statement), (std::vector<long long>{-2000, 1000}));
}

TEST_F(OFXReader, MissingPartsStopTheReadingAndKeepWhatWasRead) {
  std::string head = BankBody("BANK", Transaction("20240301", "10", "B1", "X"), "1234.56", false);
  std::string secondBankSet = head.substr(head.find("<BANKMSGSRSV1>"));
  struct Case {
    const char* what;
    const char* set;  // inside <CREDITCARDMSGSRSV1>
    const char* account;
  } cases[] = {
      {"no statement response", "<CCSTMTTRNRS>\n<TRNUID>2\n</CCSTMTTRNRS>\n", "BANK"},
      {"empty transaction response", "<CCSTMTTRNRS></CCSTMTTRNRS>\n", "BANK"},
      {"empty statement response", "<CCSTMTTRNRS>\n<CCSTMTRS></CCSTMTRS>\n</CCSTMTTRNRS>\n", "BANK"},
      {"no transaction list",
       "<CCSTMTTRNRS>\n<CCSTMTRS>\n<CCACCTFROM>\n<ACCTID>CARD\n</CCACCTFROM>\n</CCSTMTRS>\n</CCSTMTTRNRS>\n", "CARD"},
  };
  for (const Case& c : cases) {
    LBankStatement statement;
    // The bank set after the broken one is never reached: its line would be a second one.
    EXPECT_EQ(ReadText(head + "<CREDITCARDMSGSRSV1>\n" + c.set + "</CREDITCARDMSGSRSV1>\n" + secondBankSet + "</OFX>\n",
                       statement),
              "")
        << c.what;
    EXPECT_EQ(statement.accountId, c.account) << c.what;
    EXPECT_EQ(LStatementAmounts(statement), (std::vector<long long>{1000})) << c.what;
  }
}

TEST_F(OFXReader, AMessageSetWithoutAccountElementClearsTheAccount) {
  LBankStatement statement;
  ASSERT_EQ(ReadText(BankBody("BANK", Transaction("20240301", "10", "B1", "X"), "1234.56", false) +
                         "<CREDITCARDMSGSRSV1>\n<CCSTMTTRNRS>\n<CCSTMTRS>\n<CURDEF>EUR\n<BANKTRANLIST>\n"
                         "<DTSTART>20240401\n</BANKTRANLIST>\n</CCSTMTRS>\n</CCSTMTTRNRS>\n</CREDITCARDMSGSRSV1>\n</OFX>\n",
                     statement),
            "");
  EXPECT_EQ(statement.accountId, "");
  EXPECT_EQ(statement.periodStart.GetDateTime(), "2024-04-01");
  EXPECT_EQ(statement.periodEnd.GetDateTimeText(), "1899-11-30 00:00:00");
  EXPECT_EQ(LStatementAmounts(statement), (std::vector<long long>{1000}));
}

TEST_F(OFXReader, MissingOptionalElementsGiveEmptyOrZeroValues) {
  LBankStatement statement;
  ASSERT_EQ(ReadText("<OFX>\n<BANKMSGSRSV1>\n<STMTTRNRS>\n<STMTRS>\n<BANKTRANLIST>\n<STMTTRN>\n<TRNTYPE>OTHER\n"
                     "</STMTTRN>\n</BANKTRANLIST>\n</STMTRS>\n</STMTTRNRS>\n</BANKMSGSRSV1>\n</OFX>\n",
                     statement),
            "");
  EXPECT_EQ(statement.accountId + "|" + statement.periodStart.GetDateTimeText(), "|1899-11-30 00:00:00");
  EXPECT_EQ(statement.ledgerBalance, 0);
  EXPECT_EQ(LStatementLines(statement), (std::vector<LStatementLine>{{"1899-11-30", "", "", 0}}));
}

TEST_F(OFXReader, EntitiesInTextAreDecodedAndUnknownOnesReported) {
  LBankStatement statement;
  std::string lines = Transaction("20240301", "1", "A", "DUPONT &amp; FILS") + Transaction("20240302", "2", "B", "A&foo;B");
  EXPECT_EQ(ReadText(BankBody("1", lines), statement), kUnknownEntity);
  EXPECT_EQ(LStatementLines(statement), (std::vector<LStatementLine>{{"2024-03-02", "B", "A&B", 200},
                                                                     {"2024-03-01", "A", "DUPONT & FILS", 100}}));
  EXPECT_EQ(statement.ledgerBalance, 123456);  // the statement is read to its end despite the error
}

// ---- Amounts ----------------------------------------------------------------------------------

// Scaled by 10^digits (no scale beyond three), truncated toward zero (19.99 is 1998.99999...:
// one unit lost, as kept), then into 32 bits: what does not fit comes out as INT32_MIN.
TEST(OFXAmount, ScaledByTheCurrencyDigitsAndTruncatedInto32Bits) {
  struct Row {
    double amount;
    int digits;
    long long expected;
  } rows[] = {{-12.50, 2, -1250},  {12.34, 2, 1234},     {19.99, 2, 1998},     {0.29, 2, 28},
              {-0.29, 2, -28},     {0.29, 3, 290},       {-80.32, 2, -8031},   {1.2345, 3, 1234},
              {1.25, 1, 12},       {1999.9, 0, 1999},    {1999.9, 4, 1999},    {21474836.47, 2, 2147483647},
              {-21474836.48, 2, -2147483648LL},          {21474836.48, 2, INT32_MIN},
              {5e12, 2, INT32_MIN}, {std::nan(""), 2, INT32_MIN}};
  for (const Row& row : rows) EXPECT_EQ(LOFXAmountToMinorUnits(row.amount, row.digits), row.expected) << row.amount;
}

// (Three digits are proved on a sample through tests/app/import_expr_cli_test.cpp.)
TEST_F(OFXReader, AmountsFollowTheBusinessCurrencyDigits) {
  std::string lines = Transaction("20240301", "-12.50", "A", "A") + Transaction("20240301", "0.00", "B", "B") +
                      Transaction("20240301", "19.99", "C", "C") + Transaction("20240301", " 7.5 EUR", "D", "D") +
                      Transaction("20240301", "abc", "E", "E");
  LBankStatement cents;
  ASSERT_EQ(ReadText(BankBody("1", lines, "-0.019"), cents, 2), "");
  EXPECT_EQ(LStatementAmounts(cents), (std::vector<long long>{0, 750, 1998, 0, -1250}));
  EXPECT_EQ(cents.ledgerBalance, -1);
  LBankStatement units;
  ASSERT_EQ(ReadText(BankBody("1", lines), units, 0), "");
  EXPECT_EQ(LStatementAmounts(units), (std::vector<long long>{0, 7, 19, 0, -12}));
}

// ---- Dates ------------------------------------------------------------------------------------

// Dates alone are at 11:59; nine characters already hold an hour; days carry over like mktime;
// years: two or four digits below 70 are 20xx, 70-99 are 19xx, other counts are years since
// 1900 (so 1899 is 3799), and 1900 on are themselves.
TEST(OFXDate, DatesAloneTimesAndYearRules) {
  LTimeZoneScope zone;
  for (auto [text, expected] : {std::pair{"20240331", "2024-03-31 11:59:00"}, {"20240331123456", "2024-03-31 12:34:56"},
                                {"202403311", "2024-03-31 01:00:00"}, {"20240331123456.789", "2024-03-31 12:34:56"},
                                {"20120231", "2012-03-02 11:59:00"}, {"", "1899-11-30 00:00:00"},
                                {"garbage", "1999-11-30 11:59:00"}})  // year 0 read as 2000, month 0, day 0
    EXPECT_EQ(OFXDate2Time(text).GetDateTimeText(), expected) << text;
  for (auto [text, expected] : {std::pair{"24", LDate(2023, 11, 30)}, {"0024", LDate(2023, 11, 30)},
                                {"00690101", LDate(2069, 1, 1)}, {"00700101", LDate(1970, 1, 1)},
                                {"01240101", LDate(2024, 1, 1)}, {"18990101", LDate(3799, 1, 1)},
                                {"19000101", LDate(1900, 1, 1)}, {"99991231", LDate(9999, 12, 31)}})
    EXPECT_EQ(OFXDate2Time(text).GetDate(), expected) << text;
}

TEST(OFXDate, TimeZonesMoveTheTimeToThisMachinesClock) {
  {
    LTimeZoneScope utc("UTC0");
    for (auto [text, expected] :
         {std::pair{"20240331120000.000[-5:EST]", "2024-03-31 17:00:00"}, {"20240331120000.000[+5.5:IST]", "2024-03-31 06:30:00"},
          {"20240331220000.000[-3]", "2024-04-01 01:00:00"}, {"20240101003000.000[2:EET]", "2023-12-31 22:30:00"},
          // Without milliseconds the zone is not reached and the time stays as written.
          {"20240331120000[-5:EST]", "2024-03-31 12:00:00"},
          // The zone's offset is scaled in single precision: 0.0325 h is 116.99999 s, truncated.
          {"20240331120000.000[0.0325:X]", "2024-03-31 11:58:04"}})
      EXPECT_EQ(OFXDate2Time(text).GetDateTimeText(), expected) << text;
    // Offsets no clock has must not break the arithmetic.
    for (const char* text : {"20240331120000.000[1e30:X]", "20240331120000.000[-nan:X]", "20240331120000.000[inf:X]"})
      OFXDate2Time(text);
  }
  LTimeZoneScope paris("CET-1");  // one hour ahead of UTC, no daylight saving
  EXPECT_EQ(OFXDate2Time("20240331120000.000[-5:EST]").GetDateTimeText(), "2024-03-31 18:00:00");
  EXPECT_EQ(OFXDate2Time("20240331120000.000[0:GMT]").GetDateTimeText(), "2024-03-31 13:00:00");
  EXPECT_EQ(OFXDate2Time("20240331").GetDateTimeText(), "2024-03-31 11:59:00");  // no zone, no shift
}

// ---- Bad input --------------------------------------------------------------------------------

TEST_F(OFXReader, EveryTruncationOfAStatementReadsWithoutFault) {
  std::string file = std::string(kHeader) + "\r\n" +
                     BankBody("00012345678", kTwoLines + Transaction("20240307", "3.00", "C&amp;3", "X &amp Y"));
  for (std::size_t length = 0; length <= file.size(); length += 3) {
    LBankStatement statement;
    std::string error = ReadText(file.substr(0, length), statement);
    if (length <= std::string(kHeader).size() + 7) {
      EXPECT_EQ(error, kEmptyOrWrong) << length;
    }
    EXPECT_LE(statement.CountLines(), 3u);
  }
}

TEST_F(OFXReader, TenMegabyteStatementsAreReadWhole) {
  std::string lines;
  int count = 0;
  while (lines.size() < 10 * 1024 * 1024) {
    ++count;
    lines += Transaction("20240301", std::to_string(count) + ".50", "ID" + std::to_string(count), "PAYEE",
                         "MEMO " + std::string(40, 'm'));
  }
  LBankStatement statement;
  ASSERT_EQ(ReadText(std::string(kHeader) + "\r\n" + BankBody("BIG", lines), statement), "");
  EXPECT_EQ(statement.CountLines(), static_cast<std::size_t>(count));
  ASSERT_NE(statement.GetFirstLine(), nullptr);
  EXPECT_EQ(statement.GetFirstLine()->id, "ID" + std::to_string(count));
  EXPECT_EQ(statement.GetFirstLine()->amount, count * 100LL + 50);
}

TEST_F(OFXReader, DeepNestingNulsAndBinaryBytesDoNotBreakTheReader) {
  std::string file = BankBody("1", kTwoLines);
  std::string deep;
  for (int i = 0; i < 200000; ++i) deep += "<X>";
  LBankStatement statement;
  EXPECT_EQ(ReadText(std::string(file).insert(file.find("<SIGNONMSGSRSV1>"), deep + "</X>"), statement),
            "La balise <X> est imbriquée trop profondément.");
  LBankStatement withNul;
  EXPECT_EQ(ReadText(std::string(file).insert(file.find("<BANKMSGSRSV1>"), std::string("\0\0", 2)), withNul), "");
  EXPECT_EQ(withNul.CountLines(), 0u);  // the text ends at the NUL: no message set read
  std::string noise;
  for (int i = 0; i < 5000; ++i) noise.push_back(static_cast<char>((i * 7919) % 251 + 1));
  LBankStatement noisy;
  ReadText("<OFX>" + noise, noisy);
  EXPECT_EQ(noisy.CountLines(), 0u);
}

}  // namespace
