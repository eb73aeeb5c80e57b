// Real statements collected from banks and from public projects (the shared sample data, see
// its SOURCES.md). Every file is read without a fault of the program. Each SGML bank or
// credit-card statement gives its account, period, balance and the amounts of its lines as they
// stand in the file; the lines come in the list's order, the reverse of the file's, which the
// expectations below spell out by listing the file's amounts from last to first. Amounts are
// truncated to cents as the reader keeps them (-80.32 reads as -8031). Files the reader is not
// meant to understand (OFX 2 in XML, investment statements, and SGML whose leaves carry end
// tags, each of which closes the element around the leaf) read as empty statements. Times are
// read with the machine at UTC.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/accounts/ofxtestsupport.h"

namespace {

struct Expected {
  const char* file;
  std::string account;
  std::string start;
  std::string end;
  long long balance;
  std::vector<long long> amounts;  // in list order: the file's last line first
  std::string error = {};
  std::size_t sampleAt = 0;  // one line checked whole when sample.date is set
  LStatementLine sample = {};
};

class OFXSamples : public LOFXTest {
 protected:
  void ExpectStatement(const Expected& expected) {
    SCOPED_TRACE(expected.file);
    LBankStatement statement;
    EXPECT_EQ(ReadPath(LSharedDataPath(std::string("ofx/") + expected.file), statement), expected.error);
    EXPECT_EQ(statement.accountId, expected.account);
    EXPECT_EQ(statement.periodStart.GetDateTimeText(), expected.start);
    EXPECT_EQ(statement.periodEnd.GetDateTimeText(), expected.end);
    EXPECT_EQ(statement.ledgerBalance, expected.balance);
    EXPECT_EQ(LStatementAmounts(statement), expected.amounts);
    std::vector<LStatementLine> lines = LStatementLines(statement);
    if (!expected.sample.date.empty() && expected.sampleAt < lines.size()) {
      EXPECT_EQ(lines[expected.sampleAt], expected.sample);
    }
  }
};

TEST_F(OFXSamples, EveryFileIsReadWithoutAFault) {
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(LSharedDataPath("ofx"))) {
    std::string name = entry.path().filename().string();
    if (name.ends_with(".md")) continue;
    LBankStatement statement;
    std::string error;
    (void)LOFXImportTransaction(Business(), nullptr, entry.path().string(), statement, error);
    EXPECT_LE(error.size(), 259u) << name;
    ++files;
  }
  EXPECT_GE(files, 24);
}

TEST_F(OFXSamples, SgmlBankStatements) {
  const Expected statements[] = {
      // Tab-indented; the description joins NAME and MEMO.
      {"ofxparse_checking.ofx", "1452687~7", "2000-01-01 07:00:00", "2013-05-25 06:00:00", 10099, {-2500, -3451, 1},
       "", 1, {"2011-04-05", "0000487", "AUTOMATIC WITHDRAWAL, ELECTRIC BILL; AUTOMATIC WITHDRAWAL, ELECTRIC BILL WEB(S )", -3451}},
      // Aggregates packed on long lines.
      {"ofxparse_bank_medium.ofx", "12300 000012345678", "2009-04-01 11:59:00", "2009-05-23 12:20:17", 38234,
       {-2200, -31667, -660}},
      // A Latin-1 name is kept byte for byte.
      {"ledgerautosync_accented_characters_latin1.ofx", "1452687~7", "2000-01-01 07:00:00", "2014-09-20 17:00:00",
       10099, {-5873}, "", 0, {"2014-09-20", "201409206", "Virement Interac \xE0: Jean", -5873}},
      // "GROCER A & Z": the "&" starts an entity that a blank ends, which stores a NUL and ends the
      // name there. The date alone of DTSTART is 11:59; DTEND's zone needs milliseconds to be read.
      {"libofx_example-listing1.ofx", "000000", "2009-02-09 11:59:00", "2009-02-09 00:00:00", 25694, {30886, -9891},
       kUnterminatedEntity, 1, {"2009-02-09", "00000000000000000000000000", "GROCER A ", -9891}},
      // No blank line after the header; the second STMTTRNRS (savings) is not read: GetElement
      // finds the first.
      {"libofx_ofx-2.1.1-sect-16.5.4.2.ofx", "123456", "2005-08-01 11:59:00", "2005-08-31 23:50:56", 215656, {-8031}},
      // The whole body on one line without a final line end.
      {"phpofx_ofxdata-oneline.ofx", "XXXXXXXXXXX", "2016-02-08 11:59:00", "2016-07-20 11:59:00", 10000,
       {-11100, -100000, -60000, -8000, 20000, -155, -38300, -155}},
      // An empty balance leaf; a zone without milliseconds.
      {"phpofx_ofxdata-selfclose.ofx", "3037198326", "2019-09-18 10:00:00", "2019-09-23 10:00:00", 0,
       {-2900, 40000, 30000, -1600, -7000}},
      // No account, no period, no balance.
      {"phpofx_ofxdata-emptyDateTime.ofx", "", "1899-11-30 00:00:00", "1899-11-30 00:00:00", 0, {15000, 33750}},
  };
  for (const Expected& expected : statements) ExpectStatement(expected);
}

TEST_F(OFXSamples, SgmlCreditCardStatements) {
  const Expected statements[] = {
      // On one line, with vendor tags between the standard ones.
      {"beangulp_example.ofx", "092243467384967", "2013-12-13 12:00:00", "2013-12-17 12:00:00", -360907,
       {-2400, -3443, -69, -500, -4201, -6425, -3100, -1267, -2214, -2209, -3972, -3090, -170, -4549, -9673, -2950, -7500},
       "", 0, {"2013-12-15", "149941491182603315", "UPTMFSAD DSD 12354 14003323410; 963402919381906089541", -2400}},
      // An XML declaration but an SGML body.
      {"ofxparse_anzcc.ofx", "1234123412341234", "2017-03-11 11:59:00", "2017-05-09 11:59:00", -12345, {-550}},
      // Indented with spaces.
      {"phpofx_ofxdata-credit-card.ofx", "1234567891234567", "2016-08-23 00:00:00", "2016-08-23 00:00:00", -50000,
       {-10000}},
      // Without </BANKTRANLIST>, LEDGERBAL lands inside the list: the statement has no balance.
      {"ofxtools_br_nubank_cc.ofx", "11111111-UUID-UUID-UUID-111111111111", "2024-02-24 00:00:00",
       "2024-03-26 00:00:00", 0, {-95900, -10353, -902, -3346, -16290, -1300}},
      // "Amazon & Cloud" and "& Whoelse": each raw "&" cuts its memo. -33.3 reads as -3329.
      {"phpofx_ofxdata-memoWithAmpersand.ofx", "99999999-9999-9999-9999-999999999999", "2018-09-13 00:00:00",
       "2018-10-13 00:00:00", -73405,
       {-7594, -484, -988, -1450, -8068, 40000, 12787, -1220, 60000, -22500, -8254, -527, -4000, -14000, -990, -3329},
       kUnterminatedEntity, 15,
       {"2018-09-13", "5b4f6eea-9999-9999-9999-794a31c8f61b", "Amazon.Com.Br Amazon ", -3329}},
  };
  for (const Expected& expected : statements) ExpectStatement(expected);
}

// OFX 2 in XML; investment statements (Fidelity's STMTTRN inside INVBANKTRAN: an investment
// message set is never walked); SGML with end tags on leaves ("<CODE>0</CODE>" inside the
// sign-on: the end tag closes STATUS, the next ones close the elements around it, and OFX closes
// before its bank message set).
TEST_F(OFXSamples, FilesNotMeantForTheReaderReadAsEmpty) {
  for (const char* file :
       {"ofxparse_suncorp.ofx", "ofxparse_multiple_accounts.ofx", "libofx_ofx-2.1.1-sect-16.5.3.2.ofx",
        "libofx_example-listing2.ofx", "ofxparse_fidelity.ofx", "beangulp_example.qfx", "phpofx_ofxdata-bb-two-stmtrs.ofx",
        "csv2ofx_default.ofx", "ofxparse_ofx-v102-empty-tags.ofx", "ofxparse_fail_nice_date_missing.ofx",
        "ofxparse_fail_nice_empty_balance.ofx"}) {
    SCOPED_TRACE(file);
    LBankStatement statement;
    EXPECT_EQ(ReadPath(LSharedDataPath(std::string("ofx/") + file), statement), "");
    EXPECT_EQ(statement.accountId, "");
    EXPECT_EQ(statement.ledgerBalance, 0);
    EXPECT_EQ(statement.CountLines(), 0u);
  }
}

}  // namespace
