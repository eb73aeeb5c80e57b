// Real statements collected from banks and from public projects (the shared sample data, see
// its SOURCES.md). Every file is read without a fault of the program. Each SGML bank or
// credit-card statement gives its account, period, balance and lines as they stand in the file;
// the lines come in the list's order, the reverse of the file's, which the expectations below
// spell out by listing the file's lines from last to first. Amounts are truncated to cents as
// the reader keeps them (-80.32 reads as -8031). Files the reader is not meant to understand
// (OFX 2 in XML, investment statements, and SGML whose leaves carry end tags, each of which
// closes the element around the leaf) read as empty statements. Times are read with the machine
// at UTC.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/accounts/ofxtestsupport.h"

namespace {

constexpr const char* kUnterminatedEntity =
    "Les chaînes commençant par une esperluette (&) doivent se terminer par un point-virgule (;). "
    "Remplacez '&' par '&amp;' ou ajoutez ';' à la fin de la chaîne de contrôle.";

struct Expected {
  std::string account;
  std::string start;
  std::string end;
  long long balance = 0;
  std::vector<LStatementLine> lines;  // in list order: the file's last line first
  std::string error = {};
};

class OFXSamples : public LOFXTest {
 protected:
  void ExpectStatement(const std::string& file, const Expected& expected) {
    SCOPED_TRACE(file);
    LBankStatement statement;
    EXPECT_EQ(ReadPath(LSharedDataPath("ofx/" + file), statement), expected.error);
    EXPECT_EQ(statement.accountId, expected.account);
    EXPECT_EQ(statement.periodStart.GetDateTimeText(), expected.start);
    EXPECT_EQ(statement.periodEnd.GetDateTimeText(), expected.end);
    EXPECT_EQ(statement.ledgerBalance, expected.balance);
    EXPECT_EQ(LStatementLines(statement), expected.lines);
  }
  void ExpectEmptyStatement(const std::string& file) {
    SCOPED_TRACE(file);
    LBankStatement statement;
    EXPECT_EQ(ReadPath(LSharedDataPath("ofx/" + file), statement), "");
    EXPECT_EQ(statement.accountId, "");
    EXPECT_EQ(statement.ledgerBalance, 0);
    EXPECT_EQ(statement.CountLines(), 0u);
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

// ---- SGML bank statements ---------------------------------------------------------------------

TEST_F(OFXSamples, CheckingAccountTabIndented) {
  ExpectStatement("ofxparse_checking.ofx",
                  {"1452687~7", "2000-01-01 07:00:00", "2013-05-25 06:00:00", 10099,
                   {{"2011-04-07", "0000488", "RETURNED CHECK FEE, CHECK # 319; RETURNED CHECK FEE, CHECK # 319 FOR $45.33 ON 04/07/11", -2500},
                    {"2011-04-05", "0000487", "AUTOMATIC WITHDRAWAL, ELECTRIC BILL; AUTOMATIC WITHDRAWAL, ELECTRIC BILL WEB(S )", -3451},
                    {"2011-03-31", "0000486",
                     "DIVIDEND EARNED FOR PERIOD OF 03; DIVIDEND EARNED FOR PERIOD OF 03/01/2011 THROUGH 03/31/2011 ANNUAL "
                     "PERCENTAGE YIELD EARNED IS 0.05%",
                     1}}});
}

TEST_F(OFXSamples, AggregatesPackedOnLongLines) {
  ExpectStatement("ofxparse_bank_medium.ofx",
                  {"12300 000012345678", "2009-04-01 11:59:00", "2009-05-23 12:20:17", 38234,
                   {{"2009-04-03", "0000123456782009040300005", "CONNIE'S HAIR D; POS MERCHANDISE;CONNIE'S HAIR D", -2200},
                    {"2009-04-02", "0000123456782009040200004",
                     "Joe's Bald Hairstyles; MISCELLANEOUS PAYMENTS;Joe's Bald Hairstyles", -31667},
                    {"2009-04-01", "0000123456782009040100001", "MCDONALD'S #112; POS MERCHANDISE;MCDONALD'S #112", -660}}});
}

TEST_F(OFXSamples, Latin1NameIsKeptByteForByte) {
  ExpectStatement("ledgerautosync_accented_characters_latin1.ofx",
                  {"1452687~7", "2000-01-01 07:00:00", "2014-09-20 17:00:00", 10099,
                   {{"2014-09-20", "201409206", "Virement Interac \xE0: Jean", -5873}}});
}

TEST_F(OFXSamples, RawAmpersandCutsTheNameAndIsReported) {
  // "GROCER A & Z": the "&" starts an entity that a blank ends, which stores a NUL and ends the
  // name there. The date alone of DTSTART is 11:59; DTEND's zone needs milliseconds to be read.
  ExpectStatement("libofx_example-listing1.ofx",
                  {"000000", "2009-02-09 11:59:00", "2009-02-09 00:00:00", 25694,
                   {{"2009-02-09", "00000000000000000000000000", "DEPOSIT    000000", 30886},
                    {"2009-02-09", "00000000000000000000000000", "GROCER A ", -9891}},
                   kUnterminatedEntity});
}

TEST_F(OFXSamples, NoBlankLineAfterTheHeaderAndOnlyTheFirstStatementResponse) {
  // The second STMTTRNRS (the savings account) is not read: GetElement finds the first.
  ExpectStatement("libofx_ofx-2.1.1-sect-16.5.4.2.ofx",
                  {"123456", "2005-08-01 11:59:00", "2005-08-31 23:50:56", 215656,
                   {{"2005-08-24", "219378", "FrogKick Scuba Gear", -8031}}});
}

TEST_F(OFXSamples, WholeBodyOnOneLineWithoutFinalLineEnd) {
  ExpectStatement("phpofx_ofxdata-oneline.ofx",
                  {"XXXXXXXXXXX", "2016-02-08 11:59:00", "2016-07-20 11:59:00", 10000,
                   {{"2016-02-16", "PU3Y36LC4I", "PRELEVEMENT", -11100},
                    {"2016-02-16", "PU3Y36LCPF", "VIREMENT", -100000},
                    {"2016-03-21", "PU3YWALLC4", "VIREMENT", -60000},
                    {"2016-03-29", "PU3YBALLL2", "VIREMENT POUR", -8000},
                    {"2016-04-11", "PU3Y5ALLCK", "VIREMENT DE MR XXXX", 20000},
                    {"2016-04-18", "PU3YIVLLQ9", "FRAIS", -155},
                    {"2016-05-03", "PU3Y_VLC48", "PRELEVEMENT", -38300},
                    {"2016-07-19", "PU3YMMLLQ9", "FRAIS TRIMESTRIELS", -155}}});
}

TEST_F(OFXSamples, EmptyBalanceLeafAndZoneWithoutMilliseconds) {
  ExpectStatement("phpofx_ofxdata-selfclose.ofx",
                  {"3037198326", "2019-09-18 10:00:00", "2019-09-23 10:00:00", 0,
                   {{"2019-09-23", "20190923001", "RSHOP-PAG*Brenda -22/09", -2900},
                    {"2019-09-20", "20190920001", "TBI 1430.35708-5SHELL", 40000},
                    {"2019-09-19", "20190919002", "TBI 1430.35708-5HUGO", 30000},
                    {"2019-09-19", "20190919001", "RSHOP-PAG*Brenda -19/09", -1600},
                    {"2019-09-18", "20190918001", "CXE     000026 SAQUE", -7000}}});
}

TEST_F(OFXSamples, NoAccountNoPeriodNoBalance) {
  ExpectStatement("phpofx_ofxdata-emptyDateTime.ofx",
                  {"", "1899-11-30 00:00:00", "1899-11-30 00:00:00", 0,
                   {{"2018-12-13", "126659", "TEST TEST TEST BBBB", 15000},
                    {"2018-12-14", "140217", "TEST TEST TEST AAAA", 33750}}});
}

// ---- SGML credit-card statements --------------------------------------------------------------

TEST_F(OFXSamples, CardStatementOnOneLineWithVendorTags) {
  auto line = [](const char* date, const char* id, const char* name, const char* memo, long long amount) {
    return LStatementLine{date, id, std::string(name) + "; " + memo, amount};
  };
  ExpectStatement("beangulp_example.ofx",
                  {"092243467384967", "2013-12-13 12:00:00", "2013-12-17 12:00:00", -360907,
                   {line("2013-12-15", "149941491182603315", "UPTMFSAD DSD 12354 14003323410", "963402919381906089541", -2400),
                    line("2013-12-16", "330252321978428019", "DGCV GXD MJKRYD     JLC IYLM   ", "67935504527 134-064-6852", -3443),
                    line("2013-12-16", "430314310166238818", "CFXUF LGTXVL -  VXCJCNI EBUH   ", "308496      NSIWFWL RHSFP", -69),
                    line("2013-12-16", "310215309277250199", "LON BXBZA 409 QEPNUAMCO WDOD   ", "31345520940 4169979285", -500),
                    line("2013-12-16", "210943512087240724", "ICPBVFY #2321 929883SXU QRKN   ", "12054513980 3062749128", -4201),
                    line("2013-12-14", "542124402167304547", "MRKW'G #814 HYLDQF OVNN PSCS   ", "89318083925 WOQO'G", -6425),
                    line("2013-12-14", "402252668937162476", "YHVWV NNPYW HRQZDUOJ201-251-533", "65093823538 334-432-6338", -3100),
                    line("2013-12-11", "330054241010450007", "PEHKXNPZ PNW 91458 21015119128", "823891919293222482430", -1267),
                    line("2013-12-11", "548935642111458816", "LILFN DVRIFI -  LJBPFDT HYSF   ", "32793       IBTSNAF UDOMK", -2214),
                    line("2013-12-09", "111921351569432591", "HGJQJEOB PCQ 08418 1KVO VVDJ   ", "84408170244 1144012409", -2209),
                    line("2013-12-09", "141044448255701269", "SITEH NIHOX HTYZBAWP392-139-734", "84165624260 423-151-8227", -3972),
                    line("2013-12-09", "118335238578609388", "SBMUZYXG XRB 98038 03324302420", "853700608200014392232", -3090),
                    line("2013-12-09", "118954331459601590", "ZPIKRWGV EBQVUE 4521XJT AYDM   ", "227092130   2924489277", -170),
                    line("2013-12-09", "410313240598642566", "JWNNJ VPVHHV -  HWKZIGH QXWR   ", "35905       UJGZDQD IUTFL", -4549),
                    line("2013-12-08", "518223640481029842", "TEMSRB TQBHHWZO CZYKCGDX.LAR/CD", "BVR5D49Q7S3 IWOUXSFCCIZ", -9673),
                    line("2013-12-08", "139251640671720832", "YJTEJSYC JXJ 38137 80223112202", "841814901332133213240", -2950),
                    line("2013-12-06", "132124581254980455", "Cvzndybfhlgsy Kbptkt010-743-2492", "87278814438304-062-9392", -7500)}});
}

TEST_F(OFXSamples, CardStatementWithXmlDeclarationButSgmlBody) {
  ExpectStatement("ofxparse_anzcc.ofx", {"1234123412341234", "2017-03-11 11:59:00", "2017-05-09 11:59:00", -12345,
                                         {{"2017-05-08", "201705080001", "SOME MEMO", -550}}});
}

TEST_F(OFXSamples, CardStatementIndentedWithSpaces) {
  ExpectStatement("phpofx_ofxdata-credit-card.ofx", {"1234567891234567", "2016-08-23 00:00:00", "2016-08-23 00:00:00",
                                                     -50000, {{"2016-08-23", "ABCDEFGHIJ", "VENDOR", -10000}}});
}

TEST_F(OFXSamples, CardStatementMissingItsListEndTag) {
  // Without </BANKTRANLIST>, LEDGERBAL lands inside the list: the statement has no balance.
  std::string memo = "-memo-message-";
  ExpectStatement("ofxtools_br_nubank_cc.ofx",
                  {"11111111-UUID-UUID-UUID-111111111111", "2024-02-24 00:00:00", "2024-03-26 00:00:00", 0,
                   {{"2024-03-22", "11111111-UUID-427c-8fc0-111111111111", memo, -95900},
                    {"2024-03-22", "11111111-UUID-4b37-972f-111111111111", memo, -10353},
                    {"2024-03-22", "11111111-UUID-4ca3-8d84-111111111111", memo, -902},
                    {"2024-03-23", "11111111-UUID-4ec7-a011-111111111111", memo, -3346},
                    {"2024-03-23", "11111111-UUID-44dc-b153-111111111111", memo, -16290},
                    {"2024-03-23", "11111111-UUID-4747-8883-111111111111", memo, -1300}}});
}

TEST_F(OFXSamples, CardStatementWithRawAmpersandsInMemos) {
  // "Amazon & Cloud" and "& Whoelse": each raw "&" cuts its memo. -33.3 reads as -3329.
  std::string id = "-9999-9999-9999-";
  ExpectStatement("phpofx_ofxdata-memoWithAmpersand.ofx",
                  {"99999999-9999-9999-9999-999999999999", "2018-09-13 00:00:00", "2018-10-13 00:00:00", -73405,
                   {{"2018-10-05", "5bb8d808" + id + "dfa3886b11ab", "Leupay.Eu", -7594},
                    {"2018-10-05", "5bb8d7fa" + id + "d9632e284d02", "IOF de \"Leupay.Eu\"", -484},
                    {"2018-09-24", "5ba66b2a" + id + "2da061b5ad4d", "Superfacil Atacado", -988},
                    {"2018-09-22", "5ba5599b" + id + "986103e3cd9e", "Pag*Marianadiasdebrit", -1450},
                    {"2018-09-21", "5ba38bad" + id + "354f59379d1d", "Assai Ata", -8068},
                    {"2018-09-20", "5ba47b9d" + id + "3635c88dfb3f", "Pagamento recebido", 40000},
                    {"2018-09-20", "5ba47b64" + id + "4e784e26540d", "Pagamento recebido", 12787},
                    {"2018-09-20", "5ba2937e" + id + "7f21ffede0af", "Mundo Verde", -1220},
                    {"2018-09-20", "5ba47b96" + id + "d57a38a6507d", "Pagamento recebido", 60000},
                    {"2018-09-18", "5b9fe897" + id + "8ef65fb1ec8f", "Mercpago", -22500},
                    {"2018-09-17", "5ba09c73" + id + "191cf5c75cb1", "Leupay.Eu", -8254},
                    {"2018-09-17", "5ba09990" + id + "ebd979a2a758", "IOF de \"Leupay.Eu\" ", -527},
                    {"2018-09-13", "5b2b9e42" + id + "1742bdf860ad", "Azul Linhas Aereas*Fef 4/4", -4000},
                    {"2018-09-13", "5b4f3b92" + id + "902a256f3470", "Funcern 3/4", -14000},
                    {"2018-09-13", "5b62619e" + id + "e26b2df210fc", "Empiricus 3/12", -990},
                    {"2018-09-13", "5b4f6eea" + id + "794a31c8f61b", "Amazon.Com.Br Amazon ", -3329}},
                   kUnterminatedEntity});
}

// ---- Files the reader is not meant to understand ----------------------------------------------

TEST_F(OFXSamples, XmlStatementsReadAsEmpty) {
  for (const char* file : {"ofxparse_suncorp.ofx", "ofxparse_multiple_accounts.ofx",
                           "libofx_ofx-2.1.1-sect-16.5.3.2.ofx", "libofx_example-listing2.ofx"})
    ExpectEmptyStatement(file);
}

TEST_F(OFXSamples, InvestmentStatementsAreSkipped) {
  // Fidelity's file holds STMTTRN inside INVBANKTRAN: an investment message set is never walked.
  for (const char* file : {"ofxparse_fidelity.ofx", "beangulp_example.qfx"}) ExpectEmptyStatement(file);
}

TEST_F(OFXSamples, SgmlWithEndTagsOnLeavesReadsAsEmpty) {
  // "<CODE>0</CODE>" inside the sign-on: the end tag closes STATUS, the next ones close the
  // elements around it, and OFX closes before its bank message set.
  for (const char* file : {"phpofx_ofxdata-bb-two-stmtrs.ofx", "csv2ofx_default.ofx", "ofxparse_ofx-v102-empty-tags.ofx",
                           "ofxparse_fail_nice_date_missing.ofx", "ofxparse_fail_nice_empty_balance.ofx"})
    ExpectEmptyStatement(file);
}

}  // namespace
