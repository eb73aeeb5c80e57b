// The record and settings commands, through the real kontavo binary.
#include <gtest/gtest.h>

#include "tests/app/clitest.h"

namespace {

class RecordCliTest : public LHomeTest {};

TEST_F(RecordCliTest, NewGetSetUnsetRenameDelete) {
  EXPECT_EQ(LExpectSuccess({"record", "new", "Customers", "Name=Dupont & fils", "City=Lyon"}), "1\n");
  EXPECT_EQ(LExpectSuccess({"record", "new", "Customers"}), "2\n");
  EXPECT_EQ(LExpectSuccess({"record", "get", "Customers", "1"}), "Name=Dupont & fils\nCity=Lyon\n");
  EXPECT_EQ(LExpectSuccess({"--json", "record", "get", "Customers", "1"}),
            "{\"Name\":\"Dupont & fils\",\"City\":\"Lyon\"}\n");

  LExpectSuccess({"record", "set", "Customers", "1", "City=Paris", "Zip=75001"});
  LExpectSuccess({"record", "unset", "Customers", "1", "Name"});
  EXPECT_EQ(LExpectSuccess({"record", "get", "Customers", "1"}), "City=Paris\nZip=75001\n");
  EXPECT_EQ(LReadFile(home_.SharedFolder() + "/Customers/1.dat"), "City=Paris&Zip=75001");
  EXPECT_EQ(LExpectSuccess({"record", "get", "Customers", "1", "City"}), "Paris\n");
  LRunResult missingField = LRunKontavo({"record", "get", "Customers", "1", "Name"});
  EXPECT_EQ(missingField.exitCode, 1);
  EXPECT_FALSE(missingField.err.empty());

  EXPECT_EQ(LRunKontavo({"record", "rename", "Customers", "1", "2"}).exitCode, 1);  // 2 exists
  LExpectSuccess({"record", "rename", "Customers", "1", "C-1"});
  EXPECT_EQ(LExpectSuccess({"record", "list", "Customers"}), "2\nC-1\n");
  LExpectSuccess({"record", "delete", "Customers", "C-1"});
  EXPECT_EQ(LRunKontavo({"record", "delete", "Customers", "C-1"}).exitCode, 1);
  EXPECT_EQ(LRunKontavo({"record", "get", "Customers", "C-1"}).exitCode, 1);
}

TEST_F(RecordCliTest, WrongUsageExitsTwoAndListsStayInsideTheBusiness) {
  LExpectUsageErrors({{}, {"nosuchcommand"}, {"record"}, {"record", "set", "Customers", "1", "novalue"},
                      {"record", "get", "Customers"}, {"record", "list", "Customers", "--bogus"},
                      {"record", "list", ".."}, {"record", "list", "../x"}, {"record", "list", "a/b"},
                      {"record", "list", "."}});
  std::string help = LExpectSuccess({"help", "record"});
  EXPECT_NE(help.find("kontavo record rename LIST KEY NEWKEY"), std::string::npos);
  EXPECT_EQ(LExpectSuccess({"record", "--help"}), help);
}

TEST_F(RecordCliTest, InitPrintsTheDataFolderAndSettingsRoundTrip) {
  EXPECT_EQ(LExpectSuccess({"init"}), home_.SharedFolder() + "\n");
  LExpectSuccess({"settings", "set", "Setting", "LastBackup", "1700000000"});
  EXPECT_EQ(LExpectSuccess({"settings", "get", "Setting", "LastBackup"}), "1700000000\n");
  EXPECT_EQ(LRunKontavo({"settings", "get", "Setting", "Missing"}).exitCode, 1);

  LTempHome other;
  ::setenv("KONTAVO_HOME", home_.Path().c_str(), 1);  // --home wins over the environment
  EXPECT_EQ(LExpectSuccess({"--home", other.Path(), "init"}), other.Path() + "/Shared\n");
}

}  // namespace
