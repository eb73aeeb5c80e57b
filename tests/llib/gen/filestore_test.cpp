#include "llib/gen/filestore.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <random>
#include <map>
#include <set>
#include <thread>

#include "llib/gen/datastore.h"
#include "llib/gen/file.h"
#include "llib/gen/filelock.h"
#include "llib/gen/filestoreinplace.h"
#include "tests/support/testhome.h"

namespace {

namespace fs = std::filesystem;

class FileStoreTest : public LHomeTest {
 protected:
  LFileStoreDataStore store_{home_.Path()};
  LFileStoreListBase list_{store_, "Customers"};
  std::string File(const std::string& name) { return LReadFile(list_.GetFolder() + "/" + name); }
  // Stores a record under key with the given fields (saved when the record goes).
  void Seed(const std::string& key, std::initializer_list<std::pair<const char*, const char*>> fields) {
    LRecord record;
    list_.CreateNewRecord(record, key);
    for (const auto& [name, value] : fields) record.SetString(name, value);
  }
};

TEST_F(FileStoreTest, WritesTheRecordFileByteForByte) {
  LRecord record;
  list_.CreateNewRecord(record, "42");
  record.SetString("A", "x & y");
  record.SetFloat("B", 120.5);
  record.SetInt("C", 1);
  ASSERT_TRUE(record.Flush());
  EXPECT_EQ(File("42.dat"), "A=x%20%26%20y&B=120.500000&C=1");

  LRecord back;
  ASSERT_TRUE(list_.Open(back, "42"));
  EXPECT_EQ(back.GetString("A"), "x & y");
  EXPECT_EQ(back.GetFloat("B"), 120.5);
  EXPECT_TRUE(back.GetBool("C", false));
}

TEST_F(FileStoreTest, NewKeysTakeTheFirstFreeNumber) {
  for (const char* expected : {"1", "2", "3"}) {
    LRecord record;
    list_.CreateNewRecord(record);
    record.SetString("N", expected);
    ASSERT_TRUE(record.Flush());
    EXPECT_EQ(record.GetPrimaryKey(), expected);
    EXPECT_EQ(record.GetStoredKey(), expected);
  }
  ASSERT_TRUE(list_.Delete("1"));
  EXPECT_FALSE(list_.Delete("1"));
  LRecord again;
  list_.CreateNewRecord(again);
  again.SetString("N", "again");
  ASSERT_TRUE(again.Flush());
  EXPECT_EQ(again.GetPrimaryKey(), "1");
}

TEST_F(FileStoreTest, KeysAreEncodedInFileNamesAndIterateBack) {
  std::set<std::string> keys = {"A/B é", "F.2024", "..", "%41", "a+b", std::string("\xff\xfe", 2)};
  for (const auto& key : keys) Seed(key, {{"K", key.c_str()}});
  EXPECT_TRUE(fs::exists(list_.GetFolder() + "/A%2FB%20%C3%A9.dat"));
  EXPECT_TRUE(fs::exists(list_.GetFolder() + "/F.2024.dat"));
  EXPECT_TRUE(fs::exists(list_.GetFolder() + "/...dat"));
  // Nothing was written outside the list folder.
  std::size_t files = 0;
  for (const auto& entry : fs::recursive_directory_iterator(home_.Path())) files += entry.is_regular_file();
  EXPECT_EQ(files, keys.size());

  std::set<std::string> seen;
  LRecord record;
  for (LFileStoreIteratorBase it(list_, record); record.IsAttached(); it.Next(record)) {
    EXPECT_EQ(record.GetString("K"), record.GetPrimaryKey());
    seen.insert(record.GetPrimaryKey());
  }
  EXPECT_EQ(seen, keys);
  EXPECT_FALSE(record.IsAttached());
}

TEST_F(FileStoreTest, OverlongKeysStayInsideTheFolderWithWholeEscapes) {
  std::string key(300, '\xe9');
  std::string path = list_.MakeRecordPath(key);
  std::string name = fs::path(path).filename().string();
  EXPECT_LE(name.size(), 255u);
  EXPECT_EQ(name.substr(name.size() - 4), ".dat");
  EXPECT_EQ((name.size() - 4) % 3, 0u);  // only whole "%E9" escapes
  LRecord record;
  list_.CreateNewRecord(record, key);
  record.SetString("X", "1");
  ASSERT_TRUE(record.Flush());
  EXPECT_TRUE(fs::exists(path));
  EXPECT_EQ(fs::path(path).parent_path(), fs::path(list_.GetFolder()));
}

TEST_F(FileStoreTest, RenameRefusesAnExistingKeyButFollowsACaseChange) {
  for (const char* key : {"alpha", "beta"}) Seed(key, {{"Name", key}});
  LRecord record;
  ASSERT_TRUE(list_.Open(record, "alpha"));
  record.SetPrimaryKey("beta");
  record.SetString("Name", "changed");
  ASSERT_TRUE(record.Flush());
  EXPECT_EQ(record.GetStoredKey(), "alpha");  // both keys kept
  EXPECT_EQ(record.GetPrimaryKey(), "beta");
  EXPECT_EQ(File("alpha.dat"), "Name=changed");
  EXPECT_EQ(File("beta.dat"), "Name=beta");

  LRecord other;
  ASSERT_TRUE(list_.Open(other, "beta"));
  other.SetPrimaryKey("BETA");
  ASSERT_TRUE(other.Flush());
  EXPECT_EQ(other.GetStoredKey(), "BETA");
  EXPECT_FALSE(fs::exists(list_.GetFolder() + "/beta.dat"));
  EXPECT_EQ(File("BETA.dat"), "Name=beta");

  LRecord third;
  ASSERT_TRUE(list_.Open(third, "BETA"));
  third.SetPrimaryKey("gamma");
  ASSERT_TRUE(third.Flush());
  EXPECT_FALSE(fs::exists(list_.GetFolder() + "/BETA.dat"));
  EXPECT_EQ(File("gamma.dat"), "Name=beta");
}

TEST_F(FileStoreTest, EmptyRecordsAndPairsWithoutValues) {
  LRecord record;
  list_.CreateNewRecord(record, "empty");
  ASSERT_TRUE(record.Flush());
  EXPECT_TRUE(fs::exists(list_.GetFolder() + "/empty.dat"));
  EXPECT_EQ(File("empty.dat"), "");
  LRecord back;
  ASSERT_TRUE(list_.Open(back, "empty"));
  EXPECT_TRUE(back.Fields().empty());

  LWriteFile(list_.GetFolder() + "/raw.dat", "A&=skipped&B=2&C");
  ASSERT_TRUE(list_.Open(back, "raw"));
  ASSERT_EQ(back.Fields().size(), 3u);
  EXPECT_TRUE(back.TestFieldExists("A"));
  EXPECT_EQ(back.GetString("A", "def"), "");
  EXPECT_EQ(back.GetString("B"), "2");
  EXPECT_EQ(back.GetString("C", "def"), "");
}

TEST_F(FileStoreTest, OpenFailsCleanlyButOpenAlwaysCreatesOnSave) {
  LRecord record;
  EXPECT_FALSE(list_.Open(record, "missing"));
  EXPECT_FALSE(record.IsAttached());
  EXPECT_FALSE(list_.Open(record, ""));
  EXPECT_FALSE(list_.OpenAlways(record, "later"));
  EXPECT_TRUE(record.IsAttached());
  EXPECT_EQ(record.GetStoredKey(), "");
  record.SetString("X", "1");
  record.Invalidate();
  EXPECT_EQ(File("later.dat"), "X=1");
}

TEST_F(FileStoreTest, SaveMergesWhatAnotherWriterStored) {
  Seed("7", {{"A", "a0"}, {"B", "b0"}});
  LRecord first, second;
  ASSERT_TRUE(list_.Open(first, "7"));
  ASSERT_TRUE(list_.Open(second, "7"));
  first.SetString("A", "a1");
  second.SetString("B", "b1");
  second.SetString("New", "n");
  ASSERT_TRUE(second.Flush());
  ASSERT_TRUE(first.Flush());
  // first kept its A, took B, and gained the field only the other writer added.
  EXPECT_EQ(first.GetString("B"), "b1");
  EXPECT_EQ(first.GetString("New"), "n");
  EXPECT_EQ(File("7.dat"), "A=a1&B=b1&New=n");
}

TEST_F(FileStoreTest, DeletedFieldIsDroppedOnceThenWrittenAgainByTheSameObject) {
  Seed("d", {{"Keep", "k"}, {"Gone", "old"}});
  LRecord record;
  ASSERT_TRUE(list_.Open(record, "d"));
  record.DeleteField("Gone");
  ASSERT_TRUE(record.Flush());
  EXPECT_EQ(File("d.dat"), "Keep=k");
  record.SetString("Keep", "k2");
  ASSERT_TRUE(record.Flush());
  EXPECT_EQ(File("d.dat"), "Keep=k2&Gone=old");
}

// Opening a list makes nothing; its first record makes its folder, whichever way it is stored:
// linked into place under its key, or under the first free number.
TEST_F(FileStoreTest, TheFirstRecordStoredMakesTheListsFolder) {
  for (const char* name : {"Keyed", "Numbered"}) {
    LFileStoreListBase list(store_, name);
    LRecord record;
    EXPECT_FALSE(list.Open(record, "1"));
    ASSERT_FALSE(fs::exists(list.GetFolder())) << name;
    if (name == std::string_view("Keyed")) list.CreateNewRecord(record, "K1");
    else list.CreateNewRecord(record);
    record.SetString("A", "1");
    ASSERT_TRUE(record.Flush()) << name;
    LRecord back;
    ASSERT_TRUE(list.Open(back, record.GetPrimaryKey())) << name;
    EXPECT_EQ(back.GetString("A"), "1");
  }
}

TEST_F(FileStoreTest, ArbitraryBytesInARecordFileNeverFailALoad) {
  std::mt19937 random(1234);
  fs::create_directories(list_.GetFolder());
  for (int round = 0; round < 200; ++round) {
    std::string bytes(random() % 300, '\0');
    for (char& c : bytes) c = static_cast<char>(random() % 256);
    LWriteFile(list_.GetFolder() + "/junk.dat", bytes);
    LRecord record;
    ASSERT_TRUE(list_.Open(record, "junk"));
    for (const auto& field : record.Fields()) {
      EXPECT_FALSE(field.name.empty());
      EXPECT_LE(field.name.size(), 63u);
      EXPECT_EQ(field.text.find('\0'), std::string::npos);
    }
  }
}

TEST_F(FileStoreTest, IteratorSavesADirtyRecordBeforeMovingOn) {
  for (const char* key : {"1", "2", "3"}) Seed(key, {{"N", key}});
  LRecord record;
  for (LFileStoreIteratorBase it(list_, record); record.IsAttached(); it.Next(record)) record.SetString("Seen", "1");
  for (const char* key : {"1", "2", "3"}) EXPECT_NE(File(std::string(key) + ".dat").find("Seen=1"), std::string::npos);

  LDataStoreList<LFileStoreDataStore, LRecord> typed(store_, "Customers");
  int count = 0;
  for (LDataStoreListIterator<LFileStoreDataStore, LRecord> it(typed); it.IsValid(); it.Next()) ++count;
  EXPECT_EQ(count, 3);
}

TEST(TempRecordStorage, OpenCopiesAndReleaseWritesBack) {
  LFKTempRecordStorage storage;
  LRecord record;
  ASSERT_TRUE(storage.CreateNewRecord(record, "T1"));
  record.SetString("A", "1");
  EXPECT_FALSE(record.Flush());  // the in-memory store always answers false
  EXPECT_EQ(storage.FindRecord("T1")->GetString("A"), "1");
  {
    LRecord copy;
    ASSERT_TRUE(storage.Open(copy, "T1"));
    EXPECT_TRUE(copy.IsDirty());
    copy.SetString("B", "2");
  }
  EXPECT_EQ(storage.FindRecord("T1")->GetString("B"), "2");
  LRecord missing;
  EXPECT_FALSE(storage.Open(missing, "none"));
  storage.DeleteAt(5);  // out of range: nothing happens
  EXPECT_TRUE(storage.Delete("T1"));
  EXPECT_FALSE(storage.Delete("T1"));
  EXPECT_EQ(storage.Count(), 0u);
}

// ---- Several processes --------------------------------------------------------------------

TEST_F(FileStoreTest, TwoProcessesChangingDifferentFieldsBothWin) {
  Seed("shared", {{"A", "0"}, {"B", "0"}});
  LChildProcess slow(KONTAVO_PROGRAM_recordtool, {"edit", home_.Path(), "Customers", "shared", "A", "from-slow", "300"});
  ASSERT_EQ(slow.ReadLine(), "ready");
  LChildProcess fast(KONTAVO_PROGRAM_recordtool, {"edit", home_.Path(), "Customers", "shared", "B", "from-fast", "0"});
  ASSERT_EQ(fast.Wait(), 0);
  ASSERT_EQ(slow.Wait(), 0);
  EXPECT_EQ(File("shared.dat"), "A=from-slow&B=from-fast");

  // Both creating a record neither found: the second to save merges into the first one's.
  LChildProcess slowNew(KONTAVO_PROGRAM_recordtool, {"edit", home_.Path(), "Customers", "new", "A", "from-slow", "300"});
  ASSERT_EQ(slowNew.ReadLine(), "ready");
  LChildProcess fastNew(KONTAVO_PROGRAM_recordtool, {"edit", home_.Path(), "Customers", "new", "B", "from-fast", "0"});
  ASSERT_EQ(fastNew.Wait(), 0);
  EXPECT_EQ(File("new.dat"), "B=from-fast");
  ASSERT_EQ(slowNew.Wait(), 0);
  EXPECT_EQ(File("new.dat"), "A=from-slow&B=from-fast");
}

TEST_F(FileStoreTest, FourProcessesCreatingRecordsGetDistinctKeys) {
  std::vector<std::unique_ptr<LChildProcess>> children;
  for (int i = 0; i < 4; ++i)
    children.push_back(std::make_unique<LChildProcess>(
        KONTAVO_PROGRAM_recordtool, std::vector<std::string>{"create", home_.Path(), "Customers", "250"}));
  for (auto& child : children) ASSERT_EQ(child->Wait(), 0);
  std::set<std::string> keys;
  std::map<std::string, int> perProcess;
  LRecord record;
  for (LFileStoreIteratorBase it(list_, record); record.IsAttached(); it.Next(record)) {
    keys.insert(record.GetPrimaryKey());
    ASSERT_TRUE(record.TestFieldExists("N") && record.TestFieldExists("P")) << record.GetPrimaryKey();
    ++perProcess[record.GetString("P")];
  }
  EXPECT_EQ(keys.size(), 1000u);
  EXPECT_TRUE(keys.count("1") && keys.count("1000"));
  EXPECT_EQ(perProcess.size(), 4u);
  for (const auto& [pid, count] : perProcess) EXPECT_EQ(count, 250) << pid;
}

TEST_F(FileStoreTest, ASaveWaitsForAnotherHolderOfTheLock) {
  Seed("locked", {{"A", "0"}});
  std::string path = list_.GetFolder() + "/locked.dat";
  LChildProcess holder(KONTAVO_PROGRAM_recordtool, {"hold", path, "700"});
  ASSERT_EQ(holder.ReadLine(), "ready");
  auto start = std::chrono::steady_clock::now();
  LRecord record;
  ASSERT_TRUE(list_.Open(record, "locked"));  // shared lock: waits for the holder
  record.SetString("A", "1");
  ASSERT_TRUE(record.Flush());
  auto waitedMs = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
  EXPECT_GE(waitedMs, 600);  // the 313 ms and 626 ms pauses: the lock came free during the second
  EXPECT_EQ(holder.Wait(), 0);
  EXPECT_EQ(File("locked.dat"), "A=1");
}

// A posting holds an account record to move its balances while a change that went on without the
// ledger lock gives the account a new number, or someone deletes the record: the posting's save
// must never bring the record back under the key it was read from.
TEST_F(FileStoreTest, ASaveNeverRecreatesARecordRenamedOrDeletedUnderIt) {
  std::string notes(5000, 'n');  // a page or more: not written in place, saved by the full rules
  Seed("411", {{"Name", "Clients"}, {"Notes", notes.c_str()}});
  Seed("512", {{"Name", "Banque"}});
  std::string bigText = File("411.dat");
  for (const char* key : {"411", "512"}) {
    LFileStoreInPlaceUpdate held;
    LRecord account;
    ASSERT_TRUE(held.Open(list_, key, account));
    std::string renamed = std::string(key) + "0";
    ASSERT_EQ(::rename((list_.GetFolder() + "/" + key + ".dat").c_str(),
                       (list_.GetFolder() + "/" + renamed + ".dat").c_str()), 0);
    account.SetString("Balance", "12");
    bool big = std::string(key) == "411";
    // A short text goes into the file held, whatever its name now; a long one has no file left
    // under its key to replace.
    EXPECT_EQ(held.Save(account), !big) << key;
    account.DetachWithoutSave();
    EXPECT_FALSE(fs::exists(list_.GetFolder() + "/" + key + ".dat")) << key;
    EXPECT_EQ(File(renamed + ".dat"), big ? bigText : "Name=Banque&Balance=12") << key;
  }

  LRecord opened;
  ASSERT_TRUE(list_.Open(opened, "4110"));
  ASSERT_TRUE(list_.Delete("4110"));
  opened.SetString("Balance", "13");
  EXPECT_FALSE(opened.Flush());
  opened.DetachWithoutSave();
  EXPECT_FALSE(fs::exists(list_.GetFolder() + "/4110.dat"));

  // A record new under its key still creates its file, also when another writer made it first.
  LRecord fresh;
  list_.CreateNewRecord(fresh, "4110");
  fresh.SetString("Name", "Clients");
  ASSERT_TRUE(fresh.Flush());
  EXPECT_EQ(File("4110.dat"), "Name=Clients");
}

TEST_F(FileStoreTest, AChangeOfKeyWaitsForTheHolderOfTheRecord) {
  Seed("411", {{"Name", "Clients"}});
  LFileStoreInPlaceUpdate held;
  LRecord account;
  ASSERT_TRUE(held.Open(list_, "411", account));
  std::thread renumbering([this] {
    LRecord record;
    ASSERT_TRUE(list_.Open(record, "411"));
    record.SetPrimaryKey("4110");
    ASSERT_TRUE(record.Flush());
    EXPECT_EQ(record.GetStoredKey(), "4110");
  });
  LSleepMs(300);
  EXPECT_TRUE(fs::exists(list_.GetFolder() + "/411.dat"));  // the key changes once the holder is done
  account.SetString("Balance", "12");
  EXPECT_TRUE(held.Save(account));
  renumbering.join();
  EXPECT_EQ(File("4110.dat"), "Name=Clients&Balance=12");
  EXPECT_FALSE(fs::exists(list_.GetFolder() + "/411.dat"));
}

// ---- The timed lock -----------------------------------------------------------------------

TEST(TimedLock, PausesDoubleFromAThirtySecondOfTheTimeout) {
  EXPECT_EQ(LFlockPauseSchedule(10000), (std::vector<unsigned>{313, 626, 1252, 2504, 5008}));
  EXPECT_EQ(LFlockPauseSchedule(5000), (std::vector<unsigned>{157, 314, 628, 1256, 2512}));
  EXPECT_EQ(LFlockPauseSchedule(500), (std::vector<unsigned>{16, 32, 64, 128, 256}));
}

TEST(TimedLock, GivesUpAfterTheLastPauseAndTheCallerProceeds) {
  LTempHome home;
  std::string path = home.Path() + "/f";
  LChildProcess holder(KONTAVO_PROGRAM_recordtool, {"hold", path, "3000"});
  ASSERT_EQ(holder.ReadLine(), "ready");
  int fd = LRobustOpen(path, O_RDWR);
  auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(flocktimed(fd, LOCK_EX, 500));
  auto waitedMs = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
  // 16 + 32 + 64 + 128 + 256 = 496 ms of pauses, then no further attempt.
  EXPECT_GE(waitedMs, 490);
  EXPECT_LT(waitedMs, 1500);
  ::close(fd);
}

}  // namespace
