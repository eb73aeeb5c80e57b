// Backup and restore through the real kontavo binary, whose copies run in a worker process:
// the whole data root round trip, the refusals with their messages, and restores that fail
// half-way, which must leave the data root exactly as it was.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "app/maindialog.h"
#include "llib/gen/backup.h"
#include "llib/gen/usersettings.h"
#include "tests/app/clitest.h"
#include "tests/support/tree.h"

namespace {

const std::string kNoWriteAccess =
    "Impossible d'écrire sur le dossier de destination. Veuillez vérifier que vous avez un accès en écriture.";
const std::string kRestoreError = "Une erreur s'est produite lors de la restauration des données.\n";

class BackupCliTest : public LHomeTest {
 protected:
  void SetUp() override {
    LExpectSuccess({"init", "--name", "Maison Mère"});
    LExpectSuccess({"record", "new", "Customers", "Name=Dupont", "City=Lyon"});
    LExpectSuccess({"record", "new", "Customers", "Name=Durand"});
    LExpectSuccess({"business", "add", "--name", "Filiale", "--usage", "services"});
    LExpectSuccess({"--business", "1", "record", "new", "Items", "Description=Heure"});
    WriteFile(home_.SharedFolder() + "/Ledger/2024-03-01.csv", "2024-03-01,REC10000,Reçus,1110,x,500,,,\r\n");
    drive_ = home_.Path() + "/drive";
    std::filesystem::create_directories(drive_);
  }
  // Writes a file, making its folders first.
  static void WriteFile(const std::string& path, const std::string& content) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    LWriteFile(path, content);
  }
  static long long LastBackup() {
    return std::atoll(LRunKontavo({"settings", "get", "Setting", "LastBackup"}).out.c_str());
  }
  // Backs up into drive_, changes a customer afterwards; the path of the backup.
  std::string BackUpThenChange() {
    LRunResult run = LRunKontavo({"backup", drive_});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.err, "Sauvegarde terminée normalement\n");
    LExpectSuccess({"record", "set", "Customers", "1", "City=Paris"});
    return run.out.substr(0, run.out.find('\n'));
  }

  std::string drive_;  // where backups go
};

}  // namespace

TEST_F(BackupCliTest, RestoredDataReadsExactlyAsAtTheBackup) {
  auto atBackup = LTreeSnapshot(home_.SharedFolder());
  long long before = std::time(nullptr);
  std::string backup = BackUpThenChange();
  ASSERT_EQ(std::filesystem::path(backup).parent_path().string(), drive_);
  EXPECT_EQ(std::filesystem::path(backup).filename().string().rfind("Kontavo-Sauvegarder-", 0), 0u);
  EXPECT_TREES_EQ(LTreeSnapshot(backup), atBackup);
  EXPECT_GE(LastBackup(), before);

  // More changes after the backup: a record deleted, one added, a business removed.
  LExpectSuccess({"record", "delete", "Customers", "2"});
  LExpectSuccess({"record", "new", "Invoices", "Customer=1"});
  LExpectSuccess({"--yes", "business", "delete", "1"});
  EXPECT_EQ(LExpectSuccess({"--yes", "restore", backup}), "Les données ont été restaurées avec succès.\n");
  EXPECT_TREES_EQ(LTreeSnapshot(home_.SharedFolder()), atBackup);
  EXPECT_EQ(LStoredField("Customers", "1", "City"), "Lyon");
  EXPECT_EQ(LExpectSuccess({"--business", "Filiale", "record", "list", "Items"}), "1\n");
  // The set-aside folder is gone; the settings beside the data root were not touched.
  for (const auto& entry : std::filesystem::directory_iterator(home_.Path()))
    EXPECT_FALSE(entry.path().filename().string().find_first_not_of("0123456789") == std::string::npos)
        << "set-aside folder left: " << entry.path();
  EXPECT_GE(LastBackup(), before);
  // The backup itself is still there, usable again.
  EXPECT_TREES_EQ(LTreeSnapshot(backup), atBackup);
}

TEST_F(BackupCliTest, RefusedOrCancelledBackupsStillResetTheReminder) {
  EXPECT_TRUE(LUserSettingSetString("Setting", "LastBackup", "1000"));
  LExpectRefused({"backup", home_.Path() + "/nowhere"}, kNoWriteAccess);
  EXPECT_GT(LastBackup(), 1000);
  LExpectRefused(
      {"backup", home_.SharedFolder() + "/Misc"},
      "Le dossier de destination se trouve dans les données à sauvegarder. Veuillez choisir un autre dossier.");
  LExpectUsageErrors({{"backup"}, {"backup", drive_, drive_}});

  // Asked to stop before the first file, the backup is cancelled.
  class StopAtOnce : public LProcessInterfaceVoid {
   public:
    bool IsToStop() override { return true; }
  } stop;
  LFolderCopierInProcess copier(stop);
  EXPECT_TRUE(LUserSettingSetString("Setting", "LastBackup", "1000"));
  std::string path, error;
  EXPECT_EQ(MainDialog::CmBackup(copier, drive_, path, error), kProcessCancelled);
  EXPECT_EQ(path, "");
  EXPECT_TRUE(std::filesystem::is_empty(drive_));
  EXPECT_GT(LastBackup(), 1000);
}

TEST_F(BackupCliTest, BackupIntoAReadOnlyFolderStoresNothing) {
  LSmallFileSystem readOnly(1024 * 1024, true);
  if (readOnly.Path().empty()) GTEST_SKIP() << "no read-only tmpfs can be mounted here";
  EXPECT_TRUE(LUserSettingSetString("Setting", "LastBackup", "1000"));
  LExpectRefused({"backup", readOnly.Path()}, kNoWriteAccess);
  EXPECT_TRUE(std::filesystem::is_empty(readOnly.Path()));
  EXPECT_GT(LastBackup(), 1000);
}

TEST_F(BackupCliTest, RestoreAsksFirstAndTakesOnlyABackup) {
  std::string backup = BackUpThenChange();
  auto now = LTreeSnapshot(home_.SharedFolder());
  LExpectRefused({"restore", backup},
                 "La restauration effacera toutes les informations présentes avant le chargement des données de "
                 "sauvegarde. Voulez-vous vraiment restaurer les données ?");
  for (const std::string& notABackup :
       {drive_, home_.Path() + "/nowhere", home_.SharedFolder(), home_.SharedFolder() + "/MultiBus/1"})
    LExpectRefused({"--yes", "restore", notABackup},
                   "Échec de la restauration. Souhaitez-vous choisir un autre dossier ?");
  LExpectUsageErrors({{"restore"}});
  EXPECT_TREES_EQ(LTreeSnapshot(home_.SharedFolder()), now);
}

TEST_F(BackupCliTest, RestoreWhoseWorkerDiesLeavesTheDataRootByteForByte) {
  std::string backup = BackUpThenChange();
  WriteFile(backup + "/Ledger/2024-12-31.csv", std::string(2 * 1024 * 1024, 'z'));
  auto now = LTreeSnapshot(home_.SharedFolder());
  // Files may not grow beyond 1 MiB: the copy of the large day file kills the worker half-way.
  LRunResult failed = LRunProgram("/usr/bin/prlimit", {"--fsize=1048576", KONTAVO_BIN, "--yes", "restore", backup});
  EXPECT_EQ(failed.exitCode, 1);
  EXPECT_EQ(failed.err.rfind(kRestoreError, 0), 0u) << failed.err;
  EXPECT_TREES_EQ(LTreeSnapshot(home_.SharedFolder()), now);
  EXPECT_EQ(LStoredField("Customers", "1", "City"), "Paris");
}

TEST_F(BackupCliTest, RestoreOnAFullDiskLeavesTheDataRootByteForByte) {
  LSmallFileSystem small(1024 * 1024);
  if (small.Path().empty()) GTEST_SKIP() << "no tmpfs can be mounted here";
  std::string backup = BackUpThenChange();
  WriteFile(backup + "/Ledger/2024-12-31.csv", std::string(900 * 1024, 'z'));
  // The data root on the small disk: the old data and the backup do not fit there together.
  std::filesystem::copy(home_.SharedFolder(), small.Path() + "/Shared", std::filesystem::copy_options::recursive);
  auto now = LTreeSnapshot(small.Path() + "/Shared");
  LRunResult failed = LRunKontavo({"--home", small.Path(), "--yes", "restore", backup});
  EXPECT_EQ(failed.exitCode, 1);
  EXPECT_EQ(failed.err.rfind(kRestoreError, 0), 0u) << failed.err;
  EXPECT_NE(failed.err.find("espace disque insuffisant"), std::string::npos) << failed.err;
  EXPECT_TREES_EQ(LTreeSnapshot(small.Path() + "/Shared"), now);
}
