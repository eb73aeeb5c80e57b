// Text of older programs: valid UTF-8 passes unchanged, every other byte is read as Windows-1252,
// JSON output never throws on record text, in values or in member names, and the command line's
// plain output shows it as meant.
#include "llib/gen/utf8.h"

#include <gtest/gtest.h>

#include <ostream>
#include <sstream>
#include <string>

#include "llib/gen/jsontext.h"
#include "llib/gen/utf8stream.h"
#include "tests/support/testhome.h"

namespace {

TEST(Utf8, InvalidBytesAreReadAsWindows1252AndValidTextIsKept) {
  EXPECT_EQ(LTextAsUtf8("Soci\xE9t\xE9 G\xE9n\xE9rale"), "Société Générale");
  EXPECT_EQ(LTextAsUtf8("\x80 \x92 \x9C"), "€ ’ œ");
  EXPECT_EQ(LTextAsUtf8("d\xC3\xA9j\xE0 vu"), "déjà vu");  // UTF-8 and Latin-1 mixed in one field
  for (std::string bad : {"\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82"}) {  // overlong, surrogate, > U+10FFFF, cut
    EXPECT_FALSE(LIsValidUtf8(bad));
    EXPECT_TRUE(LIsValidUtf8(LTextAsUtf8(bad))) << bad;
  }
  // Every one- and two-byte input comes out valid, and valid input comes out unchanged.
  for (int a = 0; a < 256; ++a) {
    for (int b = 0; b < 256; ++b) {
      std::string text{static_cast<char>(a), static_cast<char>(b)};
      std::string out = LTextAsUtf8(text);
      ASSERT_TRUE(LIsValidUtf8(out)) << a << " " << b;
      if (LIsValidUtf8(text)) {
        ASSERT_EQ(out, text);
      }
    }
  }
}

// What the command line prints passes through LUtf8OutBuf: a character cut between two writes is
// held until its end comes, and one never finished is read as Windows-1252 at the end.
TEST(Utf8, OutputBufferWritesRecordTextAsUtf8) {
  std::stringbuf target;
  {
    LUtf8OutBuf buffer(&target);
    std::ostream out(&buffer);
    out << "Soci\xE9t\xE9 d\xC3";
    EXPECT_EQ(target.str(), "Société d");  // the start of "é" waits for its end
    out << "\xA9j\xE0 \xE2\x82" << std::flush;
    out.put('\xAC');
    EXPECT_EQ(target.str(), "Société déjà €");
    out << " \xC3";
  }
  EXPECT_EQ(target.str(), "Société déjà € Ã");
}

TEST(JsonText, DumpNeverThrowsOnRecordText) {
  nlohmann::ordered_json document = {{"Name", "Soci\xE9t\xE9"}, {"Lines", {"\x80", "ok"}}};
  document["Cl\xE9"] = 1;
  EXPECT_EQ(LJsonDump(document), "{\"Name\":\"Société\",\"Lines\":[\"€\",\"ok\"],\"Clé\":1}");
}

// A customer whose name an older program stored in Latin-1 is listed readably by --json commands.
class JsonTextCli : public LHomeTest {};

TEST_F(JsonTextCli, Latin1CustomerIsListedReadably) {
  ASSERT_EQ(LRunKontavo({"init"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"customer", "add", "C1", "Name=x"}).exitCode, 0);
  LWriteFile(home_.SharedFolder() + "/Customers/C1.dat", "Name=Soci%E9t%E9%20Dupont");
  LRunResult listed = LRunKontavo({"--json", "customer", "list"});
  ASSERT_EQ(listed.exitCode, 0) << listed.err;
  EXPECT_NE(listed.out.find("Société Dupont"), std::string::npos) << listed.out;
  LRunResult shown = LRunKontavo({"--json", "customer", "show", "C1"});
  ASSERT_EQ(shown.exitCode, 0) << shown.err;
  EXPECT_NE(shown.out.find("Société Dupont"), std::string::npos) << shown.out;
  // And so does the plain text every command prints.
  LRunResult plain = LRunKontavo({"customer", "show", "C1"});
  ASSERT_EQ(plain.exitCode, 0) << plain.err;
  EXPECT_NE(plain.out.find("Name=Société Dupont\n"), std::string::npos) << plain.out;
  // The other lists too: the suppliers' aborted on such a name.
  ASSERT_EQ(LRunKontavo({"supplier", "add", "S1", "Name=x"}).exitCode, 0);
  LWriteFile(home_.SharedFolder() + "/Suppliers/S1.dat", "Name=Fran%E7ois");
  LRunResult suppliers = LRunKontavo({"--json", "supplier", "list"});
  ASSERT_EQ(suppliers.exitCode, 0) << suppliers.err;
  EXPECT_NE(suppliers.out.find("François"), std::string::npos) << suppliers.out;
}

}  // namespace

TEST(Utf8, UpperCaseOfPrintedTitles) {
  EXPECT_EQ(LUtf8ToUpper("Reçu"), "REÇU");
  EXPECT_EQ(LUtf8ToUpper("Relevé de compte à régler, œuvre ÿ"), "RELEVÉ DE COMPTE À RÉGLER, ŒUVRE Ÿ");
  // The division sign has no capital; other scripts and stray bytes are left alone.
  EXPECT_EQ(LUtf8ToUpper("÷ ß € ω \xE9"), "÷ ß € ω \xE9");
}
