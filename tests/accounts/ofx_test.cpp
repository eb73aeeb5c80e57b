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

std::string BankBody(const std::string& account, const std::string& transactions,
                     const std::string& balance = "1234.56") {
  return "<OFX>\n<SIGNONMSGSRSV1>\n<SONRS>\n<STATUS>\n<CODE>0\n<SEVERITY>INFO\n</STATUS>\n"
         "<DTSERVER>20240402\n<LANGUAGE>FRE\n</SONRS>\n</SIGNONMSGSRSV1>\n"
         "<BANKMSGSRSV1>\n<STMTTRNRS>\n<TRNUID>1\n<STATUS>\n<CODE>0\n<SEVERITY>INFO\n</STATUS>\n"
         "<STMTRS>\n<CURDEF>EUR\n<BANKACCTFROM>\n<BANKID>30004\n<ACCTID>" + account +
         "\n<ACCTTYPE>CHECKING\n</BANKACCTFROM>\n"
         "<BANKTRANLIST>\n<DTSTART>20240301\n<DTEND>20240331235959\n" + transactions +
         "</BANKTRANLIST>\n<LEDGERBAL>\n<BALAMT>" + balance + "\n<DTASOF>20240331\n</LEDGERBAL>\n"
         "</STMTRS>\n</STMTTRNRS>\n</BANKMSGSRSV1>\n</OFX>\n";
}

std::string CreditCardSet(const std::string& account, const std::string& transactions, const std::string& balance) {
  return "<CREDITCARDMSGSRSV1>\n<CCSTMTTRNRS>\n<TRNUID>2\n<CCSTMTRS>\n<CURDEF>EUR\n<CCACCTFROM>\n<ACCTID>" + account +
         "\n</CCACCTFROM>\n<BANKTRANLIST>\n<DTSTART>20240401\n<DTEND>20240430\n" + transactions +
         "</BANKTRANLIST>\n<LEDGERBAL>\n<BALAMT>" + balance + "\n</LEDGERBAL>\n</CCSTMTRS>\n</CCSTMTTRNRS>\n"
         "</CREDITCARDMSGSRSV1>\n";
}

const std::string kTwoLines = Transaction("20240305", "-12.50", "A1", "BOULANGERIE", "CB 04/03") +
                              Transaction("20240306", "1500.00", "B2", "SALAIRE");

class OFXReader : public LOFXTest {};

// ---- Header forms -----------------------------------------------------------------------------

TEST_F(OFXReader, BodyAfterTheBlankLineAndBodyOnTheOFXLineReadTheSame) {
  std::string body = BankBody("00012345678", kTwoLines);
  std::string lfHeader = kHeader;
  std::erase(lfHeader, '\r');
  std::string lfBody = body;
  const std::string variants[] = {
      std::string(kHeader) + "\r\n" + body,              // blank line, CR LF
      std::string(kHeader) + body,                       // no blank line, CR LF
      lfHeader + body,                                   // no blank line, LF
      lfHeader + "\n" + body,                            // blank line, LF
      lfHeader + [&] {                                   // the whole body on one line, no line end
        std::string line = body;
        std::erase(line, '\n');
        return line;
      }(),
      body,                                              // no header at all
      "OFXHEADER:100\nX:" + std::string(600, 'x') + "\n" + body,  // a header line longer than 259
  };
  std::vector<LStatementLine> expected = {{"2024-03-06", "B2", "SALAIRE", 150000},
                                          {"2024-03-05", "A1", "BOULANGERIE; CB 04/03", -1250}};
  for (const std::string& file : variants) {
    LBankStatement statement;
    EXPECT_EQ(ReadText(file, statement), "") << file.substr(0, 80);
    EXPECT_EQ(statement.accountId, "00012345678");
    EXPECT_EQ(statement.periodStart.GetDateTimeText(), "2024-03-01 11:59:00");
    EXPECT_EQ(statement.periodEnd.GetDateTimeText(), "2024-03-31 23:59:59");
    EXPECT_EQ(statement.ledgerBalance, 123456);
    EXPECT_EQ(LStatementLines(statement), expected);
  }
}

TEST_F(OFXReader, HeaderWithoutEndOrBodyIsRefused) {
  LBankStatement statement;
  EXPECT_EQ(ReadText("", statement), kEmptyOrWrong);
  EXPECT_EQ(ReadText(kHeader, statement), kEmptyOrWrong);                // no blank line, no <OFX>
  EXPECT_EQ(ReadText(std::string(kHeader) + "\r\n", statement), kEmptyOrWrong);
  EXPECT_EQ(ReadText(std::string(kHeader) + "\r\n<OFX>", statement), kEmptyOrWrong);  // 5 bytes left
  EXPECT_EQ(ReadText(std::string(kHeader) + "\r\n<OFX>\n", statement), "");  // an OFX with nothing in it
  EXPECT_EQ(ReadText(std::string(kHeader) + "\r\n<HTML><BODY>Erreur 404</BODY></HTML>", statement),
            "Erreur de lecture du fichier OFX.");
  // Text before the first tag ends the root at once: the body must start with a tag.
  EXPECT_EQ(ReadText("\nOFX body <OFX>\n", statement), "Erreur de lecture du fichier OFX.");
  EXPECT_EQ(statement.CountLines(), 0u);
}

TEST_F(OFXReader, EmptyPathsAndUnreadableFilesHaveTheirOwnTexts) {
  LBankStatement statement;
  EXPECT_EQ(ReadPath("", statement), "Impossible d'ouvrir le fichier OFX.");
  EXPECT_EQ(ReadPath(home_.Path() + "/missing.ofx", statement), kEmptyOrWrong);
  EXPECT_EQ(ReadPath(home_.Path(), statement), kEmptyOrWrong);  // a folder
}

// ---- Temporary copy ---------------------------------------------------------------------------

class ScopedTempFolder {
 public:
  explicit ScopedTempFolder(const std::string& folder) {
    if (const char* previous = std::getenv("TMPDIR")) previous_ = previous, had_ = true;
    ::setenv("TMPDIR", folder.c_str(), 1);
  }
  ~ScopedTempFolder() {
    if (had_) ::setenv("TMPDIR", previous_.c_str(), 1);
    else ::unsetenv("TMPDIR");
  }

 private:
  std::string previous_;
  bool had_ = false;
};

TEST_F(OFXReader, TheTemporaryCopyIsRemovedAfterReading) {
  std::string temp = home_.Path() + "/tmp";
  std::filesystem::create_directory(temp);
  ScopedTempFolder scope(temp);
  LBankStatement statement;
  EXPECT_EQ(ReadText(std::string(kHeader) + "\r\n" + BankBody("1", kTwoLines), statement), "");
  EXPECT_EQ(ReadText(std::string(kHeader) + "\r\n<NOTOFX>\n", statement), "Erreur de lecture du fichier OFX.");
  EXPECT_TRUE(std::filesystem::is_empty(temp));
}

TEST_F(OFXReader, AnUnusableTemporaryFolderNamesTheCopy) {
  ScopedTempFolder scope(home_.Path() + "/no/such/folder");
  LBankStatement statement;
  EXPECT_EQ(ReadText(BankBody("1", kTwoLines), statement),
            "Impossible d'ouvrir le fichier xml : " + home_.Path() + "/no/such/folder/0XXXXXX");
}

// ---- Message sets and lines -------------------------------------------------------------------

TEST_F(OFXReader, LinesArePutAtTheHeadOfTheList) {
  LBankStatement statement;
  std::string lines = Transaction("20240301", "1", "A", "A") + Transaction("20240302", "2", "B", "B") +
                      Transaction("20240303", "3", "C", "C");
  ASSERT_EQ(ReadText(BankBody("1", lines), statement), "");
  EXPECT_EQ(LStatementAmounts(statement), (std::vector<long long>{300, 200, 100}));
  for (const LBankStatementItem* item = statement.GetFirstLine(); item != nullptr; item = item->GetNext())
    EXPECT_FALSE(item->marked);
}

TEST_F(OFXReader, DescriptionJoinsNameAndMemo) {
  LBankStatement statement;
  std::string lines = Transaction("20240301", "1", "A", "NOM", "MEMO") + Transaction("20240301", "2", "B", "NOM") +
                      Transaction("20240301", "3", "C", "", "MEMO SEUL") + Transaction("20240301", "4", "", "", "");
  ASSERT_EQ(ReadText(BankBody("1", lines), statement), "");
  std::vector<LStatementLine> expected = {{"2024-03-01", "", "", 400},
                                          {"2024-03-01", "C", "MEMO SEUL", 300},
                                          {"2024-03-01", "B", "NOM", 200},
                                          {"2024-03-01", "A", "NOM; MEMO", 100}};
  EXPECT_EQ(LStatementLines(statement), expected);
}

TEST_F(OFXReader, CreditCardStatementsReadTheirOwnAccountElement) {
  LBankStatement statement;
  std::string file = "<OFX>\n" + CreditCardSet("4970XXXXXXXX1234", Transaction("20240410", "-42.00", "CC1", "RESTO"), "-42.00") +
                     "</OFX>\n";
  ASSERT_EQ(ReadText(file, statement), "");
  EXPECT_EQ(statement.accountId, "4970XXXXXXXX1234");
  EXPECT_EQ(statement.ledgerBalance, -4200);
  EXPECT_EQ(statement.periodStart.GetDateTime(), "2024-04-01");
  EXPECT_EQ(LStatementLines(statement), (std::vector<LStatementLine>{{"2024-04-10", "CC1", "RESTO", -4200}}));
}

TEST_F(OFXReader, LaterMessageSetsOverwriteTheAccountAndAddTheirLines) {
  std::string bank = BankBody("BANK", Transaction("20240301", "10", "B1", "X"), "100.00");
  std::string both = bank.substr(0, bank.size() - std::string("</OFX>\n").size()) +
                     "<INVSTMTMSGSRSV1>\n<INVSTMTTRNRS>\n<INVSTMTRS>\n<INVTRANLIST>\n<INVBANKTRAN>\n" +
                     Transaction("20240315", "999", "INV", "SKIPPED") +
                     "</INVBANKTRAN>\n</INVTRANLIST>\n</INVSTMTRS>\n</INVSTMTTRNRS>\n</INVSTMTMSGSRSV1>\n" +
                     CreditCardSet("CARD", Transaction("20240402", "-20", "C1", "Y"), "0") + "</OFX>\n";
  LBankStatement statement;
  ASSERT_EQ(ReadText(both, statement), "");
  EXPECT_EQ(statement.accountId, "CARD");
  EXPECT_EQ(statement.ledgerBalance, 10000);  // a zero balance leaves the earlier one
  EXPECT_EQ(statement.periodStart.GetDateTime(), "2024-04-01");
  EXPECT_EQ(LStatementAmounts(statement), (std::vector<long long>{-2000, 1000}));
}

TEST_F(OFXReader, MissingPartsStopTheReadingAndKeepWhatWasRead) {
  std::string bank = BankBody("BANK", Transaction("20240301", "10", "B1", "X"));
  std::string head = bank.substr(0, bank.size() - std::string("</OFX>\n").size());
  std::string secondBankSet = head.substr(head.find("<BANKMSGSRSV1>"));
  struct Case {
    const char* what;
    const char* set;
    const char* account;
  } cases[] = {
      {"no statement response",
       "<CREDITCARDMSGSRSV1>\n<CCSTMTTRNRS>\n<TRNUID>2\n</CCSTMTTRNRS>\n</CREDITCARDMSGSRSV1>\n", "BANK"},
      {"empty transaction response", "<CREDITCARDMSGSRSV1>\n<CCSTMTTRNRS></CCSTMTTRNRS>\n</CREDITCARDMSGSRSV1>\n",
       "BANK"},
      {"empty statement response",
       "<CREDITCARDMSGSRSV1>\n<CCSTMTTRNRS>\n<CCSTMTRS></CCSTMTRS>\n</CCSTMTTRNRS>\n</CREDITCARDMSGSRSV1>\n", "BANK"},
      {"no transaction list",
       "<CREDITCARDMSGSRSV1>\n<CCSTMTTRNRS>\n<CCSTMTRS>\n<CCACCTFROM>\n<ACCTID>CARD\n</CCACCTFROM>\n</CCSTMTRS>\n"
       "</CCSTMTTRNRS>\n</CREDITCARDMSGSRSV1>\n",
       "CARD"},
  };
  for (const Case& c : cases) {
    LBankStatement statement;
    // The bank set after the broken one is never reached: its line would be a second one.
    EXPECT_EQ(ReadText(head + c.set + secondBankSet + "</OFX>\n", statement), "") << c.what;
    EXPECT_EQ(statement.accountId, c.account) << c.what;
    EXPECT_EQ(LStatementAmounts(statement), (std::vector<long long>{1000})) << c.what;
  }
}

TEST_F(OFXReader, AMessageSetWithoutAccountElementClearsTheAccount) {
  std::string bank = BankBody("BANK", Transaction("20240301", "10", "B1", "X"));
  std::string head = bank.substr(0, bank.size() - std::string("</OFX>\n").size());
  LBankStatement statement;
  ASSERT_EQ(ReadText(head +
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
  EXPECT_EQ(statement.accountId, "");
  EXPECT_EQ(statement.ledgerBalance, 0);
  EXPECT_EQ(statement.periodStart.GetDateTimeText(), "1899-11-30 00:00:00");
  EXPECT_EQ(LStatementLines(statement), (std::vector<LStatementLine>{{"1899-11-30", "", "", 0}}));
}

TEST_F(OFXReader, EntitiesInTextAreDecodedAndUnknownOnesReported) {
  LBankStatement statement;
  std::string lines = Transaction("20240301", "1", "A", "DUPONT &amp; FILS") + Transaction("20240302", "2", "B", "A&foo;B");
  EXPECT_EQ(ReadText(BankBody("1", lines), statement),
            "Caractère esperluette d'échappement non valide. Assurez-vous d'utiliser la forme &amp; au lieu de "
            "tout caractère & !");
  std::vector<LStatementLine> expected = {{"2024-03-02", "B", "A&B", 200}, {"2024-03-01", "A", "DUPONT & FILS", 100}};
  EXPECT_EQ(LStatementLines(statement), expected);
  EXPECT_EQ(statement.ledgerBalance, 123456);  // the statement is read to its end despite the error
}

// ---- Amounts ----------------------------------------------------------------------------------

TEST(OFXAmount, ScaledByTheCurrencyDigitsAndTruncatedInto32Bits) {
  EXPECT_EQ(LOFXAmountToMinorUnits(-12.50, 2), -1250);
  EXPECT_EQ(LOFXAmountToMinorUnits(0.0, 2), 0);
  EXPECT_EQ(LOFXAmountToMinorUnits(12.34, 2), 1234);  // 1234 exactly in double precision
  EXPECT_EQ(LOFXAmountToMinorUnits(19.99, 2), 1998);  // 1998.9999999999998: one unit lost, as kept
  EXPECT_EQ(LOFXAmountToMinorUnits(0.29, 2), 28);
  EXPECT_EQ(LOFXAmountToMinorUnits(-0.29, 2), -28);   // toward zero, not down
  EXPECT_EQ(LOFXAmountToMinorUnits(0.29, 3), 290);
  EXPECT_EQ(LOFXAmountToMinorUnits(-80.32, 2), -8031);
  EXPECT_EQ(LOFXAmountToMinorUnits(1.2345, 3), 1234);
  EXPECT_EQ(LOFXAmountToMinorUnits(1.25, 1), 12);
  EXPECT_EQ(LOFXAmountToMinorUnits(1999.9, 0), 1999);
  EXPECT_EQ(LOFXAmountToMinorUnits(1999.9, 4), 1999);  // no scale beyond three digits
  EXPECT_EQ(LOFXAmountToMinorUnits(21474836.47, 2), 2147483647);
  EXPECT_EQ(LOFXAmountToMinorUnits(-21474836.48, 2), -2147483648LL);
  EXPECT_EQ(LOFXAmountToMinorUnits(21474836.48, 2), INT32_MIN);  // beyond 32 bits: does not survive
  EXPECT_EQ(LOFXAmountToMinorUnits(5e12, 2), INT32_MIN);
  EXPECT_EQ(LOFXAmountToMinorUnits(std::nan(""), 2), INT32_MIN);
}

TEST_F(OFXReader, AmountsFollowTheBusinessCurrencyDigits) {
  std::string lines = Transaction("20240301", "-12.50", "A", "A") + Transaction("20240301", "0.00", "B", "B") +
                      Transaction("20240301", "19.99", "C", "C") + Transaction("20240301", " 7.5 EUR", "D", "D") +
                      Transaction("20240301", "abc", "E", "E");
  LBankStatement cents;
  ASSERT_EQ(ReadText(BankBody("1", lines, "-0.019"), cents, 2), "");
  EXPECT_EQ(LStatementAmounts(cents), (std::vector<long long>{0, 750, 1998, 0, -1250}));
  EXPECT_EQ(cents.ledgerBalance, -1);
  LBankStatement mills;
  ASSERT_EQ(ReadText(BankBody("1", lines), mills, 3), "");
  EXPECT_EQ(LStatementAmounts(mills), (std::vector<long long>{0, 7500, 19990, 0, -12500}));
  EXPECT_EQ(mills.ledgerBalance, 1234560);
  LBankStatement units;
  ASSERT_EQ(ReadText(BankBody("1", lines), units, 0), "");
  EXPECT_EQ(LStatementAmounts(units), (std::vector<long long>{0, 7, 19, 0, -12}));
}

// ---- Dates ------------------------------------------------------------------------------------

TEST(OFXDate, DatesAloneAreAtOneMinuteBeforeNoon) {
  LTimeZoneScope zone;
  EXPECT_EQ(OFXDate2Time("20240331").GetDateTimeText(), "2024-03-31 11:59:00");
  EXPECT_EQ(OFXDate2Time("20240331123456").GetDateTimeText(), "2024-03-31 12:34:56");
  EXPECT_EQ(OFXDate2Time("202403311").GetDateTimeText(), "2024-03-31 01:00:00");  // 9 characters: a time
  EXPECT_EQ(OFXDate2Time("20240331123456.789").GetDateTimeText(), "2024-03-31 12:34:56");
  EXPECT_EQ(OFXDate2Time("20120231").GetDateTimeText(), "2012-03-02 11:59:00");  // carried like mktime
  EXPECT_EQ(OFXDate2Time("").GetDateTimeText(), "1899-11-30 00:00:00");
  EXPECT_EQ(OFXDate2Time("garbage").GetDateTimeText(), "1999-11-30 11:59:00");  // year 0 read as 2000
}

TEST(OFXDate, YearRules) {
  LTimeZoneScope zone;
  EXPECT_EQ(OFXDate2Time("24").GetDate(), LDate(2023, 11, 30));     // 2024, month 0, day 0
  EXPECT_EQ(OFXDate2Time("0024").GetDate(), LDate(2023, 11, 30));
  EXPECT_EQ(OFXDate2Time("00690101").GetDate(), LDate(2069, 1, 1));
  EXPECT_EQ(OFXDate2Time("00700101").GetDate(), LDate(1970, 1, 1));
  EXPECT_EQ(OFXDate2Time("01240101").GetDate(), LDate(2024, 1, 1));  // 124 years since 1900
  EXPECT_EQ(OFXDate2Time("18990101").GetDate(), LDate(3799, 1, 1));  // still a count since 1900
  EXPECT_EQ(OFXDate2Time("19000101").GetDate(), LDate(1900, 1, 1));
  EXPECT_EQ(OFXDate2Time("99991231").GetDate(), LDate(9999, 12, 31));
}

TEST(OFXDate, TimeZonesMoveTheTimeToThisMachinesClock) {
  {
    LTimeZoneScope utc("UTC0");
    EXPECT_EQ(OFXDate2Time("20240331120000.000[-5:EST]").GetDateTimeText(), "2024-03-31 17:00:00");
    EXPECT_EQ(OFXDate2Time("20240331120000.000[+5.5:IST]").GetDateTimeText(), "2024-03-31 06:30:00");
    EXPECT_EQ(OFXDate2Time("20240331220000.000[-3]").GetDateTimeText(), "2024-04-01 01:00:00");
    EXPECT_EQ(OFXDate2Time("20240101003000.000[2:EET]").GetDateTimeText(), "2023-12-31 22:30:00");
    // Without milliseconds the zone is not reached and the time stays as written.
    EXPECT_EQ(OFXDate2Time("20240331120000[-5:EST]").GetDateTimeText(), "2024-03-31 12:00:00");
    // The zone's offset is scaled in single precision: 0.0325 h is 116.99999 s, truncated.
    EXPECT_EQ(OFXDate2Time("20240331120000.000[0.0325:X]").GetDateTimeText(), "2024-03-31 11:58:04");
    // Offsets no clock has must not break the arithmetic.
    OFXDate2Time("20240331120000.000[1e30:X]");
    OFXDate2Time("20240331120000.000[-nan:X]");
    OFXDate2Time("20240331120000.000[inf:X]");
  }
  {
    LTimeZoneScope paris("CET-1");  // one hour ahead of UTC, no daylight saving
    EXPECT_EQ(OFXDate2Time("20240331120000.000[-5:EST]").GetDateTimeText(), "2024-03-31 18:00:00");
    EXPECT_EQ(OFXDate2Time("20240331120000.000[0:GMT]").GetDateTimeText(), "2024-03-31 13:00:00");
    EXPECT_EQ(OFXDate2Time("20240331").GetDateTimeText(), "2024-03-31 11:59:00");  // no zone, no shift
  }
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

TEST_F(OFXReader, DeepNestingIsReportedWithoutExhaustingTheStack) {
  std::string deep;
  for (int i = 0; i < 200000; ++i) deep += "<X>";
  LBankStatement statement;
  std::string file = BankBody("1", kTwoLines);
  file.insert(file.find("<SIGNONMSGSRSV1>"), deep + "</X>");
  EXPECT_EQ(ReadText(file, statement), "La balise <X> est imbriquée trop profondément.");
}

TEST_F(OFXReader, BinaryBytesAndNulsDoNotBreakTheReader) {
  std::string file = BankBody("1", kTwoLines);
  std::string withNul = file;
  withNul.insert(withNul.find("<BANKMSGSRSV1>"), std::string("\0\0", 2));
  LBankStatement statement;
  EXPECT_EQ(ReadText(withNul, statement), "");  // the text ends at the NUL: no message set read
  EXPECT_EQ(statement.CountLines(), 0u);
  std::string noise;
  for (int i = 0; i < 5000; ++i) noise.push_back(static_cast<char>((i * 7919) % 251 + 1));
  LBankStatement noisy;
  ReadText("<OFX>" + noise, noisy);
  EXPECT_EQ(noisy.CountLines(), 0u);
}

}  // namespace
