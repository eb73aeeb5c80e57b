// Write failures are failures: a record save or a CSV rewrite whose write, rename or open fails
// (the disk full, made so on the Nth call) reports it, logs it in French, keeps the old content
// whole and leaves no temporary file behind; and a writer that waited while the file was replaced
// writes into the new file, not the replaced one.
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include "llib/gen/csv.h"
#include "llib/gen/file.h"
#include "llib/gen/filelock.h"
#include "llib/gen/filestore.h"
#include "llib/gen/filestoreinplace.h"
#include "llib/gen/log.h"
#include "llib/gen/syscallfault.h"
#include "tests/support/testhome.h"

namespace {

class WriteFailureTest : public LHomeTest {
 protected:
  void SetUp() override {
    LLogSetSink([this](LLogLevel, std::string_view text) { log_ += std::string(text) + "\n"; });
  }
  void TearDown() override {
    LSyscallFaultDisarm();
    LLogSetSink(nullptr);
  }
  std::vector<std::string> Names() {
    std::vector<std::string> names = LFile::ListFolder(list_.GetFolder());
    std::sort(names.begin(), names.end());
    return names;
  }
  LFileStoreDataStore store_{home_.Path()};
  LFileStoreListBase list_{store_, "Customers"};
  std::string log_;
};

// Each failing call leaves the old record whole, the record reports the failure and stays as
// the caller changed it, no temporary file remains, and the next save writes it.
TEST_F(WriteFailureTest, FailedRecordSaveKeepsTheOldRecord) {
  LRecord record;
  list_.CreateNewRecord(record, "C1");
  record.SetString("Name", "Dupont");
  record.SetString("Balance", "100");
  ASSERT_TRUE(record.Flush());
  std::string before = LReadFile(list_.MakeRecordPath("C1"));
  for (LSyscall kind : {LSyscall::kWrite, LSyscall::kRename}) {
    ASSERT_TRUE(list_.Open(record, "C1"));
    record.SetString("Balance", "250");
    LSyscallFaultArm(kind, 1, ENOSPC);
    EXPECT_FALSE(record.Flush());
    LSyscallFaultDisarm();
    EXPECT_EQ(LReadFile(list_.MakeRecordPath("C1")), before);
    EXPECT_EQ(Names(), std::vector<std::string>{"C1.dat"});
  }
  EXPECT_NE(log_.find("Écriture impossible dans \"" + list_.MakeRecordPath("C1") + "\""), std::string::npos) << log_;
  EXPECT_NE(log_.find("espace disque insuffisant"), std::string::npos) << log_;
  ASSERT_TRUE(list_.Open(record, "C1"));
  record.SetString("Balance", "250");
  EXPECT_TRUE(record.Flush());
  EXPECT_EQ(LReadFile(list_.MakeRecordPath("C1")), "Name=Dupont&Balance=250");

  // A new record that cannot be written takes no key and leaves no file, nor does one under a
  // key of its own (not even an empty record).
  LRecord fresh;
  list_.CreateNewRecord(fresh);
  fresh.SetString("Name", "Martin");
  LSyscallFaultArm(LSyscall::kWrite, 1, EIO);
  EXPECT_FALSE(fresh.Flush());
  LSyscallFaultDisarm();
  EXPECT_EQ(Names(), std::vector<std::string>{"C1.dat"});
  LRecord keyed;
  list_.CreateNewRecord(keyed, "C2");
  keyed.SetString("Name", "Durand");
  LSyscallFaultArm(LSyscall::kWrite, 1, EIO);
  EXPECT_FALSE(keyed.Flush());
  LSyscallFaultDisarm();
  EXPECT_EQ(Names(), std::vector<std::string>{"C1.dat"});
  list_.CreateNewRecord(fresh);
  fresh.SetString("Name", "Martin");
  EXPECT_TRUE(fresh.Flush());
  EXPECT_EQ(fresh.GetPrimaryKey(), "1");
  EXPECT_EQ(LReadFile(list_.MakeRecordPath("1")), "Name=Martin");
}

// A save in place: a shorter text is padded with empty fields that every reader skips, so the file
// is never cut; a longer one grows it; a write that fails leaves the old text; another writer's
// field is merged as by a normal save.
TEST_F(WriteFailureTest, SavesInPlaceKeepTheOldTextOrTheNewOneWhole) {
  LRecord record;
  list_.CreateNewRecord(record, "A1");
  record.SetString("Name", "Banque");
  record.SetString("TotalBalance", "123456");
  ASSERT_TRUE(record.Flush());
  const std::string path = list_.MakeRecordPath("A1");
  ASSERT_TRUE(list_.Open(record, "A1"));
  record.SetString("TotalBalance", "7");
  ASSERT_TRUE(LFileStoreSaveInPlace(list_, record));
  EXPECT_EQ(LReadFile(path), "Name=Banque&TotalBalance=7&&&&&");
  LRecord other;
  ASSERT_TRUE(list_.Open(other, "A1"));
  EXPECT_EQ(other.GetString("TotalBalance"), "7");
  EXPECT_EQ(other.Fields().size(), 2u);
  other.SetString("Description", "Compte courant");  // saved by another writer meanwhile
  ASSERT_TRUE(other.Flush());

  record.SetString("TotalBalance", "99999999");
  ASSERT_TRUE(LFileStoreSaveInPlace(list_, record));
  EXPECT_EQ(LReadFile(path), "Name=Banque&TotalBalance=99999999&Description=Compte%20courant");
  std::string before = LReadFile(path);
  record.SetString("TotalBalance", "1");
  LSyscallFaultArm(LSyscall::kWrite, 1, ENOSPC);
  EXPECT_FALSE(LFileStoreSaveInPlace(list_, record));
  LSyscallFaultDisarm();
  EXPECT_EQ(LReadFile(path), before);
  EXPECT_EQ(Names(), std::vector<std::string>{"A1.dat"});
}

// Two processes' worth of writers on one record, each replacing the file by renaming: every
// writer's field survives, because a writer that waited on a replaced file opens the new one.
TEST_F(WriteFailureTest, WritersThatWaitedOnAReplacedFileMergeIntoTheNewOne) {
  constexpr int kWriters = 8;
  constexpr int kRounds = 25;
  std::vector<std::thread> writers;
  for (int w = 0; w < kWriters; ++w) {
    writers.emplace_back([this, w] {
      for (int round = 0; round < kRounds; ++round) {
        LRecord record;
        list_.OpenAlways(record, "shared");
        record.SetString("W" + std::to_string(w), std::to_string(round));
        EXPECT_TRUE(record.Flush());
      }
    });
  }
  for (auto& writer : writers) writer.join();
  LRecord record;
  ASSERT_TRUE(list_.Open(record, "shared"));
  for (int w = 0; w < kWriters; ++w) EXPECT_EQ(record.GetString("W" + std::to_string(w)), std::to_string(kRounds - 1));
  EXPECT_EQ(Names(), std::vector<std::string>{"shared.dat"});
}

// A rewrite that cannot be written whole leaves the file as it was; an appender that waited for
// the editor's lock appends to the rewritten file.
TEST_F(WriteFailureTest, FailedCsvRewriteKeepsTheFileAndAppendsLandInTheNewOne) {
  std::string path = home_.Path() + "/day.csv";
  LWriteFile(path, "\"1\"\r\n\"2\"\r\n\"3\"\r\n");
  for (LSyscall kind : {LSyscall::kWrite, LSyscall::kRename}) {
    LCSVFileEditor editor(path, 1000);
    for (; editor.HasRow(); editor.Next())
      if (editor.GetLine() != "\"2\"") editor.RowAccept();
    LSyscallFaultArm(kind, 1, ENOSPC);
    EXPECT_FALSE(editor.Finish());
    LSyscallFaultDisarm();
    EXPECT_EQ(LReadFile(path), "\"1\"\r\n\"2\"\r\n\"3\"\r\n");
  }
  {
    LCSVFileEditor editor(path, 1000);
    std::thread appender([&] { EXPECT_TRUE(LCSVWriteRow(path, {"4"})); });
    LSleepMs(100);  // the appender now waits on the file the editor is about to replace
    for (; editor.HasRow(); editor.Next())
      if (editor.GetLine() != "\"2\"") editor.RowAccept();
    EXPECT_TRUE(editor.Finish());
    appender.join();
  }
  EXPECT_EQ(LReadFile(path), "\"1\"\n\"3\"\n\"4\"\r\n");
  std::vector<std::string> names = LFile::ListFolder(home_.Path());
  EXPECT_EQ(std::count_if(names.begin(), names.end(), [](const std::string& n) { return n.ends_with(".tmp"); }), 0);
}

}  // namespace
