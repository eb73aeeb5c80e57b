// Text of older programs: valid UTF-8 passes unchanged, every other byte is read as Windows-1252,
// and JSON output never throws on record text, in values or in member names.
#include "llib/gen/utf8.h"

#include <gtest/gtest.h>

#include <string>

#include "llib/gen/jsontext.h"
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
}

}  // namespace

TEST(Utf8, UpperCaseOfPrintedTitles) {
  EXPECT_EQ(LUtf8ToUpper("Reçu"), "REÇU");
  EXPECT_EQ(LUtf8ToUpper("Relevé de compte à régler, œuvre ÿ"), "RELEVÉ DE COMPTE À RÉGLER, ŒUVRE Ÿ");
  // The division sign has no capital; other scripts and stray bytes are left alone.
  EXPECT_EQ(LUtf8ToUpper("÷ ß € ω \xE9"), "÷ ß € ω \xE9");
}
