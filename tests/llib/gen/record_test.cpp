#include "llib/gen/record.h"

#include <gtest/gtest.h>

#include <clocale>

#include "llib/gen/hashtable.h"
#include "llib/gen/percent.h"
#include "llib/gen/textnum.h"

namespace {

TEST(Record, SettingTheSameValueLeavesTheRecordClean) {
  LRecord record;
  record.SetString("A", "x");
  EXPECT_TRUE(record.IsDirty());
  record.SetDirty(false);
  record.SetString("A", "x");
  EXPECT_FALSE(record.IsDirty());
  record.SetPrimaryKey("");
  EXPECT_FALSE(record.IsDirty());
  record.SetPrimaryKey("K");
  EXPECT_TRUE(record.IsDirty());
}

TEST(Record, DefaultValuesAreNeverStored) {
  LRecord record;
  record.SetInt("X", 5);
  record.SetInt("X", 0, 0);
  EXPECT_FALSE(record.TestFieldExists("X"));
  EXPECT_EQ(record.GetInt("X", 7), 7);
  // The deleted field stays in the list until the record is cleared.
  ASSERT_EQ(record.Fields().size(), 1u);
  EXPECT_TRUE(record.Fields()[0].deleted);
  record.SetString("X", "3");
  EXPECT_EQ(record.GetInt("X", 7), 3);
  EXPECT_EQ(record.Fields().size(), 1u);
}

TEST(Record, EmptyFieldReadsZeroAsIntButDefaultAsInt64AndFloat) {
  LRecord record;
  record.SetString("E", "");
  EXPECT_EQ(record.GetInt("E", 7), 0);
  EXPECT_FALSE(record.GetBool("E", true));
  EXPECT_EQ(record.GetInt64("E", 7), 7);
  EXPECT_EQ(record.GetFloat("E", 2.5), 2.5);
  EXPECT_EQ(record.GetFloat("E"), 0.0);
  record.SetInt64("Big", 9007199254740993LL);
  EXPECT_EQ(record.GetString("Big"), "9007199254740993");
  EXPECT_EQ(record.GetInt64("Big", 0), 9007199254740993LL);
  record.SetInt("Two", 2);
  EXPECT_TRUE(record.GetBool("Two", false));
}

TEST(Record, BinaryFieldsReadAsEmptyTextAndRefuseText) {
  LRecord record;
  record.SetBinary("B", {1, 2, 3});
  EXPECT_EQ(record.GetString("B", "def"), "");
  EXPECT_EQ(record.GetInt("B", 9), 9);
  record.SetString("B", "text");
  EXPECT_EQ(record.GetString("B", "def"), "");
}

TEST(Record, LimitsTruncateSilently) {
  LRecord record;
  std::string longKey(400, 'k');
  record.SetPrimaryKey(longKey);
  EXPECT_EQ(record.GetPrimaryKey().size(), 259u);
  std::string longName(80, 'n');
  record.SetString(longName, "1");
  record.SetString(longName, "2");
  // An over-long name never matches its own truncated copy: every set appends.
  ASSERT_EQ(record.Fields().size(), 2u);
  EXPECT_EQ(record.Fields()[0].name.size(), 63u);
  record.SetString("V", std::string(300, 'v'));
  LTextBuffer out;
  record.GetString("V", "", out);
  EXPECT_EQ(std::string(out).size(), 259u);
  EXPECT_EQ(record.GetString("V").size(), 300u);
}

TEST(Record, CopyRecordSkipsDeletedFieldsAndMarksCopiesModified) {
  LRecord source;
  source.SetString("A", "1");
  source.SetString("B", "2");
  source.DeleteField("B");
  source.SetKeys("src", "src");
  LRecord copy;
  copy.SetString("Old", "x");
  copy.CopyRecord(source);
  ASSERT_EQ(copy.Fields().size(), 1u);
  EXPECT_EQ(copy.Fields()[0].name, "A");
  EXPECT_TRUE(copy.Fields()[0].modified);
  EXPECT_EQ(copy.GetPrimaryKey(), "");
}

TEST(NumberText, FloatsUseADotWhateverTheLocale) {
  EXPECT_EQ(ftotl(12.5), "12.500000");
  const char* previous = std::setlocale(LC_NUMERIC, nullptr);
  std::string saved = previous ? previous : "C";
  if (std::setlocale(LC_NUMERIC, "fr_FR.UTF-8") != nullptr || std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr) {
    EXPECT_EQ(ftotl(-0.5), "-0.500000");
    EXPECT_DOUBLE_EQ(ttofl("1234.250000"), 1234.25);
  }
  std::setlocale(LC_NUMERIC, saved.c_str());
  EXPECT_DOUBLE_EQ(ttofl("9.975"), 9.975);
  EXPECT_DOUBLE_EQ(ttofl("  1e3"), 1000.0);
  EXPECT_DOUBLE_EQ(ttofl("abc"), 0.0);
  EXPECT_EQ(LTextToInt64("-9223372036854775808"), INT64_MIN);
  EXPECT_EQ(LTextToInt64("99999999999999999999"), INT64_MAX);
  EXPECT_EQ(LTextToInt64("12abc"), 12);
}

TEST(PercentEncoding, KeepsOnlyTheSafeBytes) {
  EXPECT_EQ(LPercentEncode("a b+c=d&é"), "a%20b%2Bc%3Dd%26%C3%A9");
  EXPECT_EQ(LPercentEncode("AZaz09!-._~"), "AZaz09!-._~");
  EXPECT_EQ(LPercentEncode("*'()%"), "%2A%27%28%29%25");
  EXPECT_EQ(LPercentDecode("a+b%2bc"), "a b+c");
  EXPECT_EQ(LPercentDecode("x%zzy"), "xy");
  EXPECT_EQ(LPercentDecode("x%00y"), "xy");  // NUL is dropped on purpose
  EXPECT_EQ(LPercentDecode("ab%4"), "ab");
}

TEST(PercentEncoding, RoundTripsEveryShortByteString) {
  // Every string of one and two bytes, NUL excepted (decoding drops NUL on purpose).
  for (int a = 1; a < 256; ++a) {
    for (int b = 0; b < 256; b += (a % 7 == 0 ? 1 : 17)) {
      std::string text(1, static_cast<char>(a));
      if (b != 0) text.push_back(static_cast<char>(b));
      std::string encoded = LPercentEncode(text);
      ASSERT_EQ(encoded.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789!-._~%"),
                std::string::npos);
      ASSERT_EQ(LPercentDecode(encoded), text) << a << "," << b;
    }
  }
}

TEST(HashTable, LoadSkipsEmptyNamesAndKeepsDuplicates) {
  LHashTable table;
  table.LoadHTTPStringUTF8("=x&a=1&b");
  EXPECT_EQ(std::string(table.GetString("a", "?")), "1");
  EXPECT_TRUE(table.TestFieldExists("b"));
  EXPECT_EQ(std::string(table.GetString("b", "?")), "");
  EXPECT_EQ(table.Count(), 2u);
  table.LoadHTTPString("a=2");
  EXPECT_EQ(table.Count(), 3u);  // not replaced: both stay
}

TEST(HashTable, SavesInByteOrderOfNames) {
  LHashTable table;
  table.SetParm("b", "2");
  table.SetParmBottom("A", "1");
  table.SetString("a", "3");
  std::string text;
  table.SaveHTTPString(text);
  EXPECT_EQ(text, "A=1&a=3&b=2");
  table.SetString("sp", "x y&z");
  table.SaveHTTPString(text);
  LHashTable back;
  back.LoadHTTPString(text);
  EXPECT_EQ(std::string(back.GetString("sp", "")), "x y&z");
}

TEST(HashTable, BoolOnlyOnLeadingOneUnlikeRecord) {
  LHashTable table;
  table.SetString("two", "2");
  table.SetString("one", "1x");
  table.SetString("empty", "");
  EXPECT_FALSE(table.GetBool("two", true));
  EXPECT_TRUE(table.GetBool("one", false));
  EXPECT_TRUE(table.GetBool("empty", true));
  EXPECT_EQ(table.GetInt("empty", 4), 4);
  EXPECT_EQ(table.GetInt("two", 4), 2);
  LRecord record;
  record.SetString("two", "2");
  EXPECT_TRUE(record.GetBool("two", false));
}

}  // namespace
