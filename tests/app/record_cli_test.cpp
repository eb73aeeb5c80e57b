// The record and settings commands, through the real kontavo binary.
#include <gtest/gtest.h>

#include "tests/support/testhome.h"

namespace {

class RecordCliTest : public LHomeTest {};

TEST_F(RecordCliTest, NewGetSetUnsetRenameDelete) {
  LRunResult created = LRunKontavo({"record", "new", "Customers", "Name=Dupont & fils", "City=Lyon"});
  ASSERT_EQ(created.exitCode, 0) << created.err;
  EXPECT_EQ(created.out, "1\n");
  EXPECT_EQ(LRunKontavo({"record", "new", "Customers"}).out, "2\n");

  LRunResult got = LRunKontavo({"record", "get", "Customers", "1"});
  EXPECT_EQ(got.out, "Name=Dupont & fils\nCity=Lyon\n");
  EXPECT_EQ(LRunKontavo({"record", "get", "Customers", "1", "City"}).out, "Lyon\n");
  EXPECT_EQ(LRunKontavo({"--json", "record", "get", "Customers", "1"}).out,
            "{\"Name\":\"Dupont & fils\",\"City\":\"Lyon\"}\n");

  ASSERT_EQ(LRunKontavo({"record", "set", "Customers", "1", "City=Paris", "Zip=75001"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"record", "unset", "Customers", "1", "Name"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"record", "get", "Customers", "1"}).out, "City=Paris\nZip=75001\n");
  EXPECT_EQ(LReadFile(home_.SharedFolder() + "/Customers/1.dat"), "City=Paris&Zip=75001");

  LRunResult missingField = LRunKontavo({"record", "get", "Customers", "1", "Name"});
  EXPECT_EQ(missingField.exitCode, 1);
  EXPECT_FALSE(missingField.err.empty());

  EXPECT_EQ(LRunKontavo({"record", "rename", "Customers", "1", "2"}).exitCode, 1);  // 2 exists
  ASSERT_EQ(LRunKontavo({"record", "rename", "Customers", "1", "C-1"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"record", "list", "Customers"}).out, "2\nC-1\n");
  EXPECT_EQ(LRunKontavo({"record", "delete", "Customers", "C-1"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"record", "delete", "Customers", "C-1"}).exitCode, 1);
  EXPECT_EQ(LRunKontavo({"record", "get", "Customers", "C-1"}).exitCode, 1);
}

TEST_F(RecordCliTest, WrongUsageExitsTwoAndListsStayInsideTheBusiness) {
  EXPECT_EQ(LRunKontavo({}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"nosuchcommand"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"record"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"record", "set", "Customers", "1", "novalue"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"record", "get", "Customers"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"record", "list", "Customers", "--bogus"}).exitCode, 2);
  for (const char* list : {"..", "../x", "a/b", "."}) EXPECT_EQ(LRunKontavo({"record", "list", list}).exitCode, 2) << list;
  LRunResult help = LRunKontavo({"help", "record"});
  EXPECT_EQ(help.exitCode, 0);
  EXPECT_NE(help.out.find("kontavo record rename LIST KEY NEWKEY"), std::string::npos);
  EXPECT_EQ(LRunKontavo({"record", "--help"}).out, help.out);
}

TEST_F(RecordCliTest, InitPrintsTheDataFolderAndSettingsRoundTrip) {
  LRunResult init = LRunKontavo({"init"});
  EXPECT_EQ(init.exitCode, 0);
  EXPECT_EQ(init.out, home_.SharedFolder() + "\n");
  ASSERT_EQ(LRunKontavo({"settings", "set", "Setting", "LastBackup", "1700000000"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"settings", "get", "Setting", "LastBackup"}).out, "1700000000\n");
  EXPECT_EQ(LRunKontavo({"settings", "get", "Setting", "Missing"}).exitCode, 1);

  LTempHome other;
  ::setenv("KONTAVO_HOME", home_.Path().c_str(), 1);  // --home wins over the environment
  EXPECT_EQ(LRunKontavo({"--home", other.Path(), "init"}).out, other.Path() + "/Shared\n");
}

}  // namespace
