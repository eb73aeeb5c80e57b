// The platform layer: settings and password stores, locale, dates and money.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <tuple>

#include "llib/gen/date.h"
#include "llib/gen/file.h"
#include "llib/gen/locale.h"
#include "llib/gen/money.h"
#include "llib/gen/moneyinput.h"
#include "llib/gen/system.h"
#include "llib/gen/usersettings.h"
#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

TEST(ApplicationFolder, FollowsKontavoHomeThenXdgThenHome) {
  LTempHome home;
  EXPECT_EQ(LFile::GetUserDataFolderApp(), home.Path());
  LEnvScope noHome("KONTAVO_HOME", nullptr), xdg("XDG_DATA_HOME", (home.Path() + "/xdg").c_str());
  EXPECT_EQ(LFile::GetUserDataFolderApp(), home.Path() + "/xdg/Kontavo");
  ::unsetenv("XDG_DATA_HOME");
  LEnvScope user("HOME", (home.Path() + "/user").c_str());
  EXPECT_EQ(LFile::GetUserDataFolderApp(), home.Path() + "/user/.local/share/Kontavo");
  EXPECT_TRUE(LFile::IsFolder(home.Path() + "/user/.local/share/Kontavo"));
}

TEST(MakeFilePath, AddsOneSlashAndCutsAt259Bytes) {
  EXPECT_EQ(LFile::MakeFilePath("a", "b", ".dat"), "a/b.dat");
  EXPECT_EQ(LFile::MakeFilePath("a/", "b", ".dat"), "a/b.dat");
  EXPECT_EQ(LFile::MakeFilePath("a\\", "b"), "a\\b");
  EXPECT_EQ(LFile::MakeFilePath("", "b", ".csv"), "b.csv");
  EXPECT_EQ(LFile::MakeFilePath(std::string(300, 'f'), "name").size(), 259u);
}

TEST(UserSettings, GroupsKeepEveryKeyAndSecretsStayPrivate) {
  LTempHome home;
  EXPECT_FALSE(LUserSettingTestExists("MultipleBusiness", "WorkingFolder"));
  EXPECT_TRUE(LUserSettingSetString("MultipleBusiness", "WorkingFolder", "/x/y"));
  EXPECT_TRUE(LUserSettingSetString("MultipleBusiness", "Other", "é & ="));
  std::string value;
  ASSERT_TRUE(_LUserSettingGetString("MultipleBusiness", "WorkingFolder", value));
  EXPECT_EQ(value, "/x/y");
  EXPECT_EQ(LUserSettingGetString("MultipleBusiness", "Other"), "é & =");
  EXPECT_EQ(LUserSettingGetString("Setting", "LastBackup", "none"), "none");
  EXPECT_TRUE(LUserSettingDelete("MultipleBusiness", "Other"));
  EXPECT_FALSE(LUserSettingTestExists("MultipleBusiness", "Other"));

  EXPECT_TRUE(LUserSettingSetPassword("MTDForVAT", "AccessToken", "secret"));
  ASSERT_TRUE(LUserSettingGetPassword("MTDForVAT", "AccessToken", value));
  EXPECT_EQ(value, "secret");
  struct stat st;
  ASSERT_EQ(::stat((home.Path() + "/Keychain/MTDForVAT.dat").c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0600u);
  ASSERT_EQ(::stat((home.Path() + "/Keychain").c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0700u);
  EXPECT_TRUE(LUserSettingDeletePassword("MTDForVAT", "AccessToken"));
  EXPECT_FALSE(LUserSettingGetPassword("MTDForVAT", "AccessToken", value));
  EXPECT_EQ(value, "");
}

TEST(SystemLocale, ComesFromTheEnvironment) {
  LEnvScope all("LC_ALL", nullptr), monetary("LC_MONETARY", nullptr), country("KONTAVO_COUNTRY", nullptr),
      lang("LANG", "fr_FR.UTF-8");
  LSystemLocale fr = LGetSystemLocale();
  EXPECT_EQ(fr.countryCode, "FR");
  EXPECT_EQ(fr.currencyCode, "EUR");
  EXPECT_EQ(fr.decimalSymbol, ",");
  EXPECT_EQ(fr.dateOrder, kDateOrderDMY);
  EXPECT_TRUE(fr.metric);
  ::setenv("LC_MONETARY", "en_GB.UTF-8", 1);
  EXPECT_EQ(LGetSystemLocale().currencyCode, "GBP");
  ::setenv("LC_ALL", "en_US.UTF-8", 1);
  LSystemLocale us = LGetSystemLocale();
  EXPECT_EQ(us.countryCode, "US");
  EXPECT_EQ(us.dateOrder, kDateOrderMDY);
  EXPECT_FALSE(us.metric);
  ::setenv("KONTAVO_COUNTRY", "ca", 1);
  EXPECT_EQ(LGetSystemLocale().countryCode, "CA");
  EXPECT_EQ(LGetSystemLocale().currencyCode, "CAD");
  ::setenv("LC_ALL", "C", 1);
  ::unsetenv("KONTAVO_COUNTRY");
  EXPECT_EQ(LGetSystemLocale().countryCode, "US");
}

TEST(PostingUser, LognameThenUser) {
  LEnvScope logname("LOGNAME", "marie"), user("USER", "other");
  EXPECT_EQ(LGetPostingUserName(), "marie");
  ::unsetenv("LOGNAME");
  EXPECT_EQ(LGetPostingUserName(), "other");
}

TEST(Dates, TextMonthIndexAndDayArithmetic) {
  LDate date;
  ASSERT_TRUE(LDate::Parse("2024-02-29", date));
  EXPECT_EQ(date.ToText(), "2024-02-29");
  EXPECT_EQ(date.MonthIndex(), 2024 * 12 + 1);
  for (const char* bad : {"2023-02-29", "2023-2-28", "2023-13-01", ""}) EXPECT_FALSE(LDate::Parse(bad, date)) << bad;
  EXPECT_EQ(LDate(1970, 1, 1).DayNumber(), 0);
  EXPECT_EQ(LDate(2024, 2, 28).AddDays(2), LDate(2024, 3, 1));
  EXPECT_EQ(LDate(2023, 12, 31).AddDays(1), LDate(2024, 1, 1));
  EXPECT_EQ(LDate(1969, 12, 31).DayNumber(), -1);
  EXPECT_EQ(LDate(2026, 11, 23).DayOfWeek(), 1);  // a Monday
  for (long n = -800000; n < 3000000; n += 997) ASSERT_EQ(LDate::FromDayNumber(n).DayNumber(), n);
}

TEST(Money, ParsesCommandLineAmountsExactly) {
  long long cents = 0;
  using Case = std::tuple<const char*, int, long long>;
  for (const auto& [text, digits, expected] :
       {Case{"1234.56", 2, 123456}, Case{"-0.05", 2, -5}, Case{"12", 2, 1200}, Case{"7.5", 2, 750}, Case{"15", 0, 15}}) {
    ASSERT_TRUE(LParseAmount(text, digits, cents)) << text;
    EXPECT_EQ(cents, expected) << text;
  }
  cents = 99;
  for (const char* bad : {"", "-", ".", "1.234", "1,5", "1e3", " 1", "abc", "99999999999999999999"}) {
    EXPECT_FALSE(LParseAmount(bad, 2, cents)) << bad;
    EXPECT_EQ(cents, 99);
  }
}

TEST(Money, FormatsInTheBusinessCurrency) {
  EXPECT_EQ(LFormatAmountPlain(123456, 2), "1234.56");
  EXPECT_EQ(LFormatAmountPlain(-5, 2), "-0.05");
  EXPECT_EQ(LFormatAmountPlain(7, 0), "7");
  EXPECT_EQ(LFormatAmountPlain(-1234, 3), "-1.234");
  LCurrencyFormat euro{"€", 3, 2, ",", " "};
  EXPECT_EQ(LFormatMoney(123456789, euro), "1 234 567,89 €");
  EXPECT_EQ(LFormatMoney(-100, euro, true), "(1,00 €)");
  EXPECT_EQ(LFormatMoney(-100, euro), "-1,00 €");
  LCurrencyFormat dollar;
  EXPECT_EQ(LFormatMoney(100000, dollar), "$1,000.00");
  EXPECT_EQ(LFormatNumber(-99, dollar), "-0.99");
  EXPECT_EQ(LFormatMoney(INT64_MIN, dollar).substr(0, 4), "-$92");
}

TEST(Money, ReadsAmountsTypedTheBusinessWay) {
  LCurrencyFormat euro{"€", 3, 2, ",", " "};
  LCurrencyFormat dollar;
  LCurrencyFormat swiss{"CHF", 2, 2, ".", "'"};
  using Case = std::tuple<const char*, const LCurrencyFormat*, long long>;
  for (const auto& [text, format, expected] :
       {Case{"1 234,56", &euro, 123456}, Case{"1\xC2\xA0" "234,56 €", &euro, 123456},
        Case{"1\xE2\x80\xAF" "234 567,8", &euro, 123456780}, Case{"12.5", &euro, 1250}, Case{"(5,00 €)", &euro, -500},
        Case{"-0,05", &euro, -5}, Case{"$1,234.56", &dollar, 123456}, Case{"CHF 1'234.50", &swiss, 123450}}) {
    long long cents = 0;
    ASSERT_TRUE(LParseAmount(LPlainAmountText(text, *format), 2, cents)) << text;
    EXPECT_EQ(cents, expected) << text;
  }
  // A group separator that does not group three digits is no separator: the amount is refused
  // rather than read a hundred times too large.
  for (const char* bad : {"12,50", "1,2345", ",500", "1,234,5", "12,5x"}) {
    long long cents = 7;
    EXPECT_FALSE(LParseAmount(LPlainAmountText(bad, dollar), 2, cents)) << bad;
  }
}

}  // namespace
