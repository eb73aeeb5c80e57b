#include "llib/gen/filestoreindex.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>

#include "llib/gen/file.h"
#include "llib/gen/filestore.h"
#include "tests/support/testhome.h"

namespace {

namespace fs = std::filesystem;

class FileStoreIndexTest : public LHomeTest {
 protected:
  void SetUp() override { LFileStoreIndexDeclare(home_.Path(), "Dated", "Date"); }
  LFileStoreDataStore store_{home_.Path()};
  LFileStoreListBase list_{store_, "Dated"};
  std::string IndexPath() const { return list_.GetFolder() + "/.index.Date"; }

  void Put(const std::string& key, const std::string& date) {
    LRecord record;
    list_.OpenAlways(record, key);
    record.SetString("Date", date);
    ASSERT_TRUE(record.Flush());
  }
  std::map<std::string, std::string> Read() const {
    std::map<std::string, std::string> entries;
    for (const LFileStoreIndexEntry& entry : LFileStoreIndexRead(list_, "Date")) entries[entry.key] = entry.value;
    return entries;
  }
  void AppendToIndex(const std::string& text) const { LWriteFile(IndexPath(), LReadFile(IndexPath()) + text); }
  std::size_t IndexLines() const {
    std::string text = LReadFile(IndexPath());
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
  }
};

TEST_F(FileStoreIndexTest, FollowsNewKeysEditsRenamesAndDeletesWithoutReadingRecords) {
  Put("A 1", "2026-01-05");
  Put("B", "2026-02-01");
  LRecord numbered;
  list_.CreateNewRecord(numbered);
  numbered.SetString("Date", "2026-03-09 10:00:00");
  ASSERT_TRUE(numbered.Flush());
  Put("B", "2026-02-15");  // a date changed
  LRecord renamed;
  ASSERT_TRUE(list_.Open(renamed, "A 1"));
  renamed.SetPrimaryKey("A 2");
  ASSERT_TRUE(renamed.Flush());
  ASSERT_TRUE(list_.Delete("1"));
  const std::map<std::string, std::string> expected{{"A 2", "2026-01-05"}, {"B", "2026-02-15"}};
  EXPECT_EQ(Read(), expected);
  EXPECT_TRUE(LFileStoreIndexVerify(list_, "Date", false).empty());

  // Kept in step by the saves themselves: reading mended nothing, and the records are not read
  // (a record made unreadable does not change what the index gives).
  std::size_t lines = IndexLines();
  EXPECT_EQ(Read(), expected);
  EXPECT_EQ(IndexLines(), lines);
  ::chmod(list_.MakeRecordPath("B").c_str(), 0);
  if (::geteuid() != 0) {
    EXPECT_EQ(Read(), expected);
  }
  ::chmod(list_.MakeRecordPath("B").c_str(), 0644);
  // Records of lists without an index leave no index behind.
  LFileStoreListBase other(store_, "Plain");
  LRecord plain;
  other.CreateNewRecord(plain, "1");
  plain.SetString("Date", "2026-01-01");
  ASSERT_TRUE(plain.Flush());
  EXPECT_FALSE(LFile::Exists(other.GetFolder() + "/.index.Date"));
  // Nor does a list of the same name in another folder: a declaration is of one business's list,
  // not of every list so named that the process opens afterwards.
  ASSERT_TRUE(LFile::MakeFolder(home_.Path() + "/Other"));
  LFileStoreListBase again(LFileStoreDataStore(home_.Path() + "/Other"), "Dated");
  LRecord undeclared;
  again.CreateNewRecord(undeclared, "1");
  undeclared.SetString("Date", "2026-01-01");
  ASSERT_TRUE(undeclared.Flush());
  EXPECT_TRUE(LFile::Exists(again.MakeRecordPath("1")));
  EXPECT_FALSE(LFile::Exists(again.GetFolder() + "/.index.Date"));
}

TEST_F(FileStoreIndexTest, AStaleOrLostIndexIsMendedFromTheRecords) {
  for (int n = 1; n <= 30; ++n) Put(std::to_string(n), "2026-01-" + std::string(n < 10 ? "0" : "") + std::to_string(n));
  // Written by a program that does not keep the index, and a crash that cut the last line short.
  ASSERT_TRUE(LFile::WriteAllAtomic(list_.MakeRecordPath("7"), "Date=2027-07-07"));
  ASSERT_TRUE(LFile::WriteAllAtomic(list_.MakeRecordPath("31"), "Date=2027-12-31"));
  ::unlink(list_.MakeRecordPath("30").c_str());
  AppendToIndex("123 9 2099");
  std::map<std::string, std::string> entries = Read();
  EXPECT_EQ(entries.size(), 30u);
  EXPECT_EQ(entries["7"], "2027-07-07");
  EXPECT_EQ(entries["9"], "2026-01-09");
  EXPECT_EQ(entries["31"], "2027-12-31");
  EXPECT_EQ(entries.count("30"), 0u);
  EXPECT_TRUE(LFileStoreIndexVerify(list_, "Date", false).empty());  // mended on disk

  // A copied folder (a restored backup: every inode new) and a lost index read back the same.
  fs::copy(list_.GetFolder(), home_.Path() + "/Copy");
  fs::remove_all(list_.GetFolder());
  fs::rename(home_.Path() + "/Copy", list_.GetFolder());
  EXPECT_EQ(Read(), entries);
  fs::remove(IndexPath());
  EXPECT_EQ(Read(), entries);

  // A wrong value under the record's own inode is what only a fault makes: the check names it
  // and, asked to, rewrites the index from the records.
  ino_t inode = LFileStoreInodeOf(list_.MakeRecordPath("5"));
  AppendToIndex(std::to_string(inode) + " 5 2026-12-25\n");
  std::vector<LFileStoreIndexMismatch> found = LFileStoreIndexVerify(list_, "Date", true);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].key, "5");
  EXPECT_EQ(found[0].indexed, "2026-12-25");
  EXPECT_EQ(found[0].actual, "2026-01-05");
  EXPECT_TRUE(LFileStoreIndexVerify(list_, "Date", false).empty());
  EXPECT_EQ(IndexLines(), 31u);  // compacted: the header and one line per record
}

TEST_F(FileStoreIndexTest, GrowsByAppendsAndIsCompactedPastTwiceItsSize) {
  // Lines of about 300 bytes: 1,000 saves of three records would make 300 KB without compaction.
  std::string note(300, 'x');
  for (int n = 0; n < 1000; ++n) Put(std::to_string(n % 3), std::to_string(n) + note);
  EXPECT_LT(fs::file_size(IndexPath()), 65536u + 1000u);
  const std::map<std::string, std::string> expected{{"0", "999" + note}, {"1", "997" + note}, {"2", "998" + note}};
  EXPECT_EQ(Read(), expected);
  EXPECT_TRUE(LFileStoreIndexVerify(list_, "Date", false).empty());
}

TEST_F(FileStoreIndexTest, ABatchAppendsItsLinesTogetherAndLeavesOutFilesChangedMeanwhile) {
  Put("0", "2026-01-01");
  std::size_t before = IndexLines();
  std::map<std::string, std::string> expected{{"0", "2026-01-01"}};
  {
    LFileStoreIndexBatch batch(list_);
    for (int n = 1; n <= 1500; ++n) {
      std::string date = "2026-02-" + std::to_string(10 + n % 19);
      Put(std::to_string(n), date);
      expected[std::to_string(n)] = date;
      if (n == 999) {
        EXPECT_EQ(IndexLines(), before);  // kept, not appended one by one
      }
    }
    EXPECT_EQ(IndexLines(), before + 1000);  // the first thousand in one append
    // Changed after their save by a program that keeps no index: replaced by a new file, and
    // rewritten in its own file (same inode). Their kept lines would name the old dates.
    ASSERT_TRUE(LFile::WriteAllAtomic(list_.MakeRecordPath("1001"), "Date=2027-01-01"));
    LWriteFile(list_.MakeRecordPath("1002"), "Date=2027-02-02&Note=x");
    expected["1001"] = "2027-01-01";
    expected["1002"] = "2027-02-02";
  }
  EXPECT_EQ(IndexLines(), before + 1498);
  EXPECT_EQ(Read(), expected);
  EXPECT_TRUE(LFileStoreIndexVerify(list_, "Date", false).empty());
  std::size_t mended = IndexLines();
  EXPECT_EQ(mended, before + 1500);  // the two changed records, mended by the reader
  EXPECT_EQ(Read(), expected);
  EXPECT_EQ(IndexLines(), mended);
}

TEST_F(FileStoreIndexTest, ProcessesCreatingRecordsAtOnceKeepItExact) {
  std::vector<std::unique_ptr<LChildProcess>> writers;
  for (int p = 0; p < 4; ++p)
    writers.push_back(std::make_unique<LChildProcess>(
        KONTAVO_PROGRAM_recordtool, std::vector<std::string>{"createindexed", home_.Path(), "Dated", "150"}));
  for (auto& writer : writers) EXPECT_EQ(writer->Wait(), 0);
  std::map<std::string, std::string> entries = Read();
  EXPECT_EQ(entries.size(), 600u);
  EXPECT_TRUE(LFileStoreIndexVerify(list_, "Date", false).empty());
}

// A read-modify-write held under the record's lock (what changes a payment's application lists)
// in a list with an index: the second writer waits for the first one's save and reads it, and
// the index learns the file that replaced the held one.
TEST_F(FileStoreIndexTest, ProcessesChangingOneRecordUnderItsLockKeepEachOthersChange) {
  Put("shared", "2026-01-01");
  LChildProcess slow(KONTAVO_PROGRAM_recordtool, {"append", home_.Path(), "Dated", "shared", "List", "slow", "300"});
  ASSERT_EQ(slow.ReadLine(), "ready");
  LChildProcess fast(KONTAVO_PROGRAM_recordtool, {"append", home_.Path(), "Dated", "shared", "List", "fast", "0"});
  ASSERT_EQ(slow.Wait(), 0);
  ASSERT_EQ(fast.Wait(), 0);
  LRecord record;
  ASSERT_TRUE(list_.Open(record, "shared"));
  EXPECT_EQ(record.GetString("List"), ",slow,fast");
  EXPECT_EQ(Read().at("shared"), "2026-01-01");
  EXPECT_TRUE(LFileStoreIndexVerify(list_, "Date", false).empty());
}

}  // namespace
