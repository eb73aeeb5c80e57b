// The per-process copy of option records never hides another process's change: a save (a new
// file), a write in place that keeps the size, a deletion, each made by a child process after the
// copy was taken, shows at the next open; and a record opened from the copy saves as any other.
#include "llib/gen/filestorecache.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "llib/gen/filestore.h"
#include "llib/gen/filestoreinplace.h"
#include "tests/support/fileclock.h"
#include "tests/support/testhome.h"

namespace {

class FileStoreCacheTest : public LHomeTest {
 protected:
  // Runs change in a child process and waits for it.
  static void InChild(const std::function<bool()>& change) {
    pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) ::_exit(change() ? 0 : 1);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  // The record's "Rate" as an open from the copy gives it; "absent" when there is no record.
  std::string Rate() {
    LRecord record;
    bool loaded = LFileStoreOpenAlwaysCached(list_, record, "Tax");
    record.DetachWithoutSave();
    return loaded ? record.GetString("Rate") : "absent";
  }
  bool SaveRate(const std::string& rate, bool inPlace) {
    LRecord record;
    list_.OpenAlways(record, "Tax");
    record.SetString("Rate", rate);
    return inPlace ? LFileStoreSaveInPlace(list_, record) : record.Flush();
  }
  LFileStoreDataStore store_{home_.Path()};
  LFileStoreListBase list_{store_, "Misc"};
};

TEST_F(FileStoreCacheTest, ChangesOfAnotherProcessShowAtTheNextOpen) {
  EXPECT_EQ(Rate(), "absent");
  ASSERT_TRUE(SaveRate("20", false));
  LWaitFileClockTick();
  EXPECT_EQ(Rate(), "20");  // read, and kept
  EXPECT_EQ(Rate(), "20");
  InChild([&] { return SaveRate("21", false); });
  EXPECT_EQ(Rate(), "21");
  LWaitFileClockTick();
  EXPECT_EQ(Rate(), "21");
  InChild([&] { return SaveRate("22", true); });  // same inode, same size
  EXPECT_EQ(Rate(), "22");
  LWaitFileClockTick();
  EXPECT_EQ(Rate(), "22");
  InChild([&] { return list_.Delete("Tax"); });
  EXPECT_EQ(Rate(), "absent");
}

TEST_F(FileStoreCacheTest, ARecordOpenedFromTheCopySavesItsChangesAndKeepsTheOthers) {
  ASSERT_TRUE(SaveRate("20", false));
  LWaitFileClockTick();
  EXPECT_EQ(Rate(), "20");
  LRecord record;
  ASSERT_TRUE(LFileStoreOpenAlwaysCached(list_, record, "Tax"));  // from the copy
  EXPECT_FALSE(record.IsDirty());
  record.SetString("Name", "TVA");
  InChild([&] { return SaveRate("5.5", false); });  // meanwhile, another field changes
  ASSERT_TRUE(record.Flush());
  LRecord read;
  ASSERT_TRUE(list_.Open(read, "Tax"));
  EXPECT_EQ(read.GetString("Name"), "TVA");
  EXPECT_EQ(read.GetString("Rate"), "5.5");
}

}  // namespace
