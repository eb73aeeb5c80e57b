// Copying and moving folders, backing the data root up and restoring it, on real files: the
// failure cases on a small file system of their own where the machine allows mounting one.
#include "llib/gen/backup.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <regex>

#include "llib/gen/copytree.h"
#include "llib/gen/file.h"
#include "tests/support/testhome.h"
#include "tests/support/tree.h"

namespace {

// A temporary folder removed with the object.
class TempFolder {
 public:
  explicit TempFolder(const std::string& parent = LFile::GetTempFolder()) {
    std::string pattern = parent + "/kontavo-backup-test-XXXXXX";
    if (::mkdtemp(pattern.data()) != nullptr) path_ = pattern;
  }
  ~TempFolder() {
    if (!path_.empty()) LFile::RemoveTree(path_);
  }
  const std::string& Path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

// Asks to stop once a number of files has been copied.
class StopAfterFiles : public LProcessInterfaceVoid {
 public:
  explicit StopAfterFiles(int nFiles) : left_(nFiles) {}
  bool IsToStop() override { return left_-- <= 0; }

 private:
  int left_;
};

// A copier that never stops and reports nothing.
class SilentCopier : private LProcessInterfaceVoid, public LFolderCopierInProcess {
 public:
  SilentCopier() : LFolderCopierInProcess(static_cast<LProcessInterfaceVoid&>(*this)) {}
};

// Records the switching of the service around a restore.
class RecordingSwitch : public LRestoreServiceSwitch {
 public:
  explicit RecordingSwitch(bool running) : running_(running) {}
  bool SwitchOff() override {
    calls += "off;";
    return running_;
  }
  void SwitchOn() override { calls += "on;"; }
  std::string calls;

 private:
  bool running_;
};

ino_t InodeOf(const std::string& path) {
  struct stat st{};
  ::lstat(path.c_str(), &st);
  return st.st_ino;
}

// The entries of a folder.
std::size_t CountEntries(const std::string& folder) { return LFile::ListFolder(folder).size(); }

}  // namespace

TEST(CopyFolder, CopiesContentModesTimesAndLinksAndSkipsPipes) {
  TempFolder temp;
  LTreeWriteSampleBusiness(temp / "from");
  ASSERT_EQ(::mkfifo((temp / "from/pipe").c_str(), 0600), 0);
  ASSERT_TRUE(LFile::MakeFolder(temp / "to"));
  LCopyFolderData data;
  data.source = temp / "from";
  data.destination = temp / "to";
  LProcessInterfaceRecorder process;
  EXPECT_EQ(Process(process, data), kProcessFinished);
  auto expected = LTreeSnapshot(temp / "from");
  expected.erase("pipe");
  EXPECT_TREES_EQ(LTreeSnapshot(temp / "to"), expected);
  EXPECT_EQ(data.nFiles, 12);  // 11 files and one link
  EXPECT_EQ(process.GetError(), "");
}

TEST(MoveFolder, RenamesOnOneFileSystemAndCopiesAcrossTwo) {
  TempFolder temp;
  LTreeWriteSampleBusiness(temp / "data");
  auto before = LTreeSnapshot(temp / "data");
  ino_t inode = InodeOf(temp / "data/Misc/Options.dat");
  ASSERT_TRUE(LMoveFolder(temp / "data", temp / "moved"));
  EXPECT_FALSE(LFile::Exists(temp / "data"));
  EXPECT_EQ(InodeOf(temp / "moved/Misc/Options.dat"), inode);  // renamed, not copied

  std::string other = LOtherFileSystemFolder();
  if (other.empty()) GTEST_SKIP() << "no second file system beside the temporary folder";
  TempFolder far(other);
  std::string error;
  ASSERT_TRUE(LMoveFolder(temp / "moved", far / "data", &error)) << error;
  EXPECT_FALSE(LFile::Exists(temp / "moved"));
  EXPECT_TREES_EQ(LTreeSnapshot(far / "data"), before);
}

TEST(MoveFolder, RefusesAnExistingDestinationAndLeavesTheSource) {
  TempFolder temp;
  LTreeWriteSampleBusiness(temp / "data");
  LWriteFile(temp / "file", "x");
  std::string error;
  EXPECT_FALSE(LMoveFolder(temp / "data", temp / "file", &error));
  EXPECT_NE(error, "");
  EXPECT_TRUE(LBackupIsUsable(temp / "data"));
}

TEST(Backup, FolderNameUsesTheLocalDateAndTime) {
  EXPECT_TRUE(std::regex_match(LBackupFolderName(std::time(nullptr)),
                               std::regex("Kontavo-Sauvegarder-\\d{4}-\\d{2}-\\d{2}-\\d{6}")));
}

TEST(Backup, CopiesTheWholeDataRootIntoANewFolderEachTime) {
  TempFolder temp;
  LTreeWriteSampleBusiness(temp / "Shared");
  ASSERT_TRUE(LFile::MakeFolder(temp / "drive"));
  SilentCopier copier;
  std::time_t when = std::time(nullptr);
  std::string first, second, error;
  ASSERT_EQ(LBackupFolder(copier, temp / "Shared", temp / "drive", when, first, error), kProcessFinished) << error;
  ASSERT_EQ(LBackupFolder(copier, temp / "Shared", temp / "drive", when, second, error), kProcessFinished) << error;
  EXPECT_EQ(first, temp / "drive/" + LBackupFolderName(when));
  EXPECT_EQ(second, first + "-2");
  EXPECT_TREES_EQ(LTreeSnapshot(first), LTreeSnapshot(temp / "Shared"));
  EXPECT_TREES_EQ(LTreeSnapshot(second), LTreeSnapshot(temp / "Shared"));
  EXPECT_TRUE(LBackupIsUsable(first));
  EXPECT_FALSE(LBackupIsUsable(temp / "drive"));
}

// A refused destination and a cancelled backup are proved through the command line; a full
// disk fails with the file that did not fit named and leaves no half backup.
TEST(Backup, FullDiskLeavesNoHalfBackup) {
  LSmallFileSystem small(64 * 1024);
  if (small.Path().empty()) GTEST_SKIP() << "no tmpfs can be mounted here";
  TempFolder temp;
  LTreeWriteSampleBusiness(temp / "Shared");
  SilentCopier copier;
  std::string path, error;
  EXPECT_EQ(LBackupFolder(copier, temp / "Shared", small.Path(), 0, path, error), kProcessFailed);
  EXPECT_NE(error.find("espace disque insuffisant"), std::string::npos) << error;
  EXPECT_NE(error.find("2024-02-01.csv"), std::string::npos) << error;
  EXPECT_EQ(path, "");
  EXPECT_EQ(CountEntries(small.Path()), 0u);
}

TEST(Restore, ReplacesTheDataRootAndDeletesTheSetAsideFolder) {
  TempFolder temp, backupTemp;
  LTreeWriteSampleBusiness(backupTemp / "backup");
  LTreeWriteSampleBusiness(temp / "home/Shared");
  LWriteFile(temp / "home/Shared/Customers/99.dat", "Name=Nouveau");
  SilentCopier copier;
  RecordingSwitch service(true);
  std::string error;
  ASSERT_EQ(LRestoreFolder(copier, temp / "home/Shared", temp / "home", backupTemp / "backup", 1700000000, &service,
                           error),
            kProcessFinished)
      << error;
  EXPECT_TREES_EQ(LTreeSnapshot(temp / "home/Shared"), LTreeSnapshot(backupTemp / "backup"));
  EXPECT_EQ(LFile::ListFolder(temp / "home"), std::vector<std::string>{"Shared"});
  EXPECT_EQ(service.calls, "off;on;");
}

TEST(Restore, FailedCopyPutsTheOldDataBackByteForByte) {
  LSmallFileSystem small(256 * 1024);
  if (small.Path().empty()) GTEST_SKIP() << "no tmpfs can be mounted here";
  TempFolder backupTemp;
  LTreeWriteSampleBusiness(backupTemp / "backup");
  LWriteFile(backupTemp / "backup/Ledger/big.csv", std::string(300 * 1024, 'y'));  // more than the disk holds
  std::string shared = small.Path() + "/Shared";
  ASSERT_TRUE(LFile::MakeFolder(shared));
  LWriteFile(shared + "/Customers.dat", "only this");
  LTreeWriteSampleBusiness(shared);
  auto before = LTreeSnapshot(shared);
  ino_t inode = InodeOf(shared + "/Misc/Options.dat");

  SilentCopier copier;
  RecordingSwitch service(true);
  std::string error, detail;
  EXPECT_EQ(LRestoreFolder(copier, shared, small.Path(), backupTemp / "backup", 1700000000, &service, error, &detail),
            kProcessFailed);
  EXPECT_EQ(error, kRestoreFailedMessage);
  EXPECT_NE(detail.find("espace disque insuffisant"), std::string::npos) << detail;
  EXPECT_TREES_EQ(LTreeSnapshot(shared), before);
  EXPECT_EQ(InodeOf(shared + "/Misc/Options.dat"), inode);  // the very files, moved back
  EXPECT_EQ(LFile::ListFolder(small.Path()), std::vector<std::string>{"Shared"});
  EXPECT_EQ(service.calls, "off;on;");
}

TEST(Restore, CancelledCopyAlsoPutsTheOldDataBack) {
  TempFolder temp, backupTemp;
  LTreeWriteSampleBusiness(backupTemp / "backup");
  LWriteFile(backupTemp / "backup/Misc/Company.dat", "Name=Autre");
  LTreeWriteSampleBusiness(temp / "home/Shared");
  auto before = LTreeSnapshot(temp / "home/Shared");
  StopAfterFiles stop(4);
  LFolderCopierInProcess copier(stop);
  RecordingSwitch notRunning(false);
  std::string error;
  EXPECT_EQ(LRestoreFolder(copier, temp / "home/Shared", temp / "home", backupTemp / "backup", 1700000000,
                           &notRunning, error),
            kProcessFailed);
  EXPECT_TREES_EQ(LTreeSnapshot(temp / "home/Shared"), before);
  EXPECT_EQ(notRunning.calls, "off;");  // not running: nothing to start again
}

TEST(Restore, AcrossTwoFileSystemsTheOldDataIsMovedByCopying) {
  std::string other = LOtherFileSystemFolder();
  if (other.empty()) GTEST_SKIP() << "no second file system beside the temporary folder";
  TempFolder home(other), backupTemp;
  LTreeWriteSampleBusiness(backupTemp / "backup");
  LWriteFile(backupTemp / "backup/Misc/Company.dat", "Name=Sauvegarde");
  LTreeWriteSampleBusiness(home / "Shared");
  auto before = LTreeSnapshot(home / "Shared");

  // The set-aside folder lies on the other file system than the data root.
  TempFolder aside;
  StopAfterFiles stop(4);
  LFolderCopierInProcess cancelled(stop);
  std::string error, detail;
  EXPECT_EQ(LRestoreFolder(cancelled, home / "Shared", aside.Path(), backupTemp / "backup", 1700000000, nullptr,
                           error, &detail),
            kProcessFailed);
  EXPECT_TREES_EQ(LTreeSnapshot(home / "Shared"), before) << detail;
  EXPECT_EQ(CountEntries(aside.Path()), 0u);

  SilentCopier copier;
  ASSERT_EQ(LRestoreFolder(copier, home / "Shared", aside.Path(), backupTemp / "backup", 1700000000, nullptr, error,
                           &detail),
            kProcessFinished)
      << detail;
  EXPECT_TREES_EQ(LTreeSnapshot(home / "Shared"), LTreeSnapshot(backupTemp / "backup"));
  EXPECT_EQ(CountEntries(aside.Path()), 0u);
}
