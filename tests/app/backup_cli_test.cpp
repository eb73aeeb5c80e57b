// Backup and restore through the real kontavo binary, whose copies run in a worker process:
// the whole data root round trip, the refusals with their messages, and restores that fail
// half-way, which must leave the data root exactly as it was.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "app/maindialog.h"
#include "llib/gen/backup.h"
#include "llib/gen/usersettings.h"
#include "tests/support/testhome.h"
#include "tests/support/tree.h"

namespace {

// Writes a file, making its folders first.
void WriteFile(const std::string& path, const std::string& content) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  LWriteFile(path, content);
}

class BackupCliTest : public LHomeTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(LRunKontavo({"init", "--name", "Maison Mère"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"record", "new", "Customers", "Name=Dupont", "City=Lyon"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"record", "new", "Customers", "Name=Durand"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"business", "add", "--name", "Filiale", "--usage", "services"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"--business", "1", "record", "new", "Items", "Description=Heure"}).exitCode, 0);
    WriteFile(home_.SharedFolder() + "/Ledger/2024-03-01.csv", "2024-03-01,REC10000,Reçus,1110,x,500,,,\r\n");
    drive_ = home_.Path() + "/drive";
    std::filesystem::create_directories(drive_);
  }
  std::string LastBackup() const { return LRunKontavo({"settings", "get", "Setting", "LastBackup"}).out; }

  std::string drive_;  // where backups go
};

long long NumberOf(const std::string& text) { return std::atoll(text.c_str()); }

// Returns the path printed by a successful backup.
std::string BackUp(const std::string& destination) {
  LRunResult run = LRunKontavo({"backup", destination});
  EXPECT_EQ(run.exitCode, 0) << run.err;
  EXPECT_EQ(run.err, "Sauvegarde terminée normalement\n");
  std::string path = run.out;
  if (!path.empty() && path.back() == '\n') path.pop_back();
  return path;
}

}  // namespace

TEST_F(BackupCliTest, RestoredDataReadsExactlyAsAtTheBackup) {
  auto atBackup = LTreeSnapshot(home_.SharedFolder());
  long long before = std::time(nullptr);
  std::string backup = BackUp(drive_);
  ASSERT_EQ(std::filesystem::path(backup).parent_path().string(), drive_);
  EXPECT_EQ(std::filesystem::path(backup).filename().string().rfind("Kontavo-Sauvegarder-", 0), 0u);
  EXPECT_TREES_EQ(LTreeSnapshot(backup), atBackup);
  EXPECT_GE(NumberOf(LastBackup()), before);

  // Changes after the backup: a record changed, one deleted, one added, a business removed.
  ASSERT_EQ(LRunKontavo({"record", "set", "Customers", "1", "City=Paris"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"record", "delete", "Customers", "2"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"record", "new", "Invoices", "Customer=1"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"--yes", "business", "delete", "1"}).exitCode, 0);
  ASSERT_NE(LTreeDifferences(LTreeSnapshot(home_.SharedFolder()), atBackup), "");

  LRunResult restored = LRunKontavo({"--yes", "restore", backup});
  ASSERT_EQ(restored.exitCode, 0) << restored.err;
  EXPECT_EQ(restored.out, "Les données ont été restaurées avec succès.\n");
  EXPECT_TREES_EQ(LTreeSnapshot(home_.SharedFolder()), atBackup);
  EXPECT_EQ(LRunKontavo({"record", "get", "Customers", "1", "City"}).out, "Lyon\n");
  EXPECT_EQ(LRunKontavo({"--business", "Filiale", "record", "list", "Items"}).out, "1\n");
  // The set-aside folder is gone; the settings beside the data root were not touched.
  for (const auto& entry : std::filesystem::directory_iterator(home_.Path()))
    EXPECT_FALSE(entry.path().filename().string().find_first_not_of("0123456789") == std::string::npos)
        << "set-aside folder left: " << entry.path();
  EXPECT_GE(NumberOf(LastBackup()), before);
  // The backup itself is still there, usable again.
  EXPECT_TREES_EQ(LTreeSnapshot(backup), atBackup);
}

TEST_F(BackupCliTest, RefusedBackupsStillResetTheReminder) {
  ASSERT_EQ(LRunKontavo({"settings", "set", "Setting", "LastBackup", "1000"}).exitCode, 0);
  LRunResult missing = LRunKontavo({"backup", home_.Path() + "/nowhere"});
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_EQ(missing.err,
            "Impossible d'écrire sur le dossier de destination. Veuillez vérifier que vous avez un accès en écriture.\n");
  EXPECT_GT(NumberOf(LastBackup()), 1000);

  LRunResult inside = LRunKontavo({"backup", home_.SharedFolder() + "/Misc"});
  EXPECT_EQ(inside.exitCode, 1);
  EXPECT_EQ(inside.err,
            "Le dossier de destination se trouve dans les données à sauvegarder. Veuillez choisir un autre dossier.\n");
  EXPECT_EQ(LRunKontavo({"backup"}).exitCode, 2);
  EXPECT_EQ(LRunKontavo({"backup", drive_, drive_}).exitCode, 2);

  LSmallFileSystem readOnly(1024 * 1024, true);
  if (readOnly.Path().empty()) GTEST_SKIP() << "no read-only tmpfs can be mounted here";
  ASSERT_EQ(LRunKontavo({"settings", "set", "Setting", "LastBackup", "1000"}).exitCode, 0);
  LRunResult refused = LRunKontavo({"backup", readOnly.Path()});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.err,
            "Impossible d'écrire sur le dossier de destination. Veuillez vérifier que vous avez un accès en écriture.\n");
  EXPECT_TRUE(std::filesystem::is_empty(readOnly.Path()));
  EXPECT_GT(NumberOf(LastBackup()), 1000);
}

TEST_F(BackupCliTest, CancelledBackupStillResetsTheReminder) {
  // Asks to stop before the first file: the backup is cancelled.
  class StopAtOnce : public LProcessInterfaceVoid {
   public:
    bool IsToStop() override { return true; }
  } stop;
  LFolderCopierInProcess copier(stop);
  LUserSettingSetString("Setting", "LastBackup", "1000");
  std::string path, error;
  EXPECT_EQ(MainDialog::CmBackup(copier, drive_, path, error), kProcessCancelled);
  EXPECT_EQ(path, "");
  EXPECT_TRUE(std::filesystem::is_empty(drive_));
  EXPECT_GT(NumberOf(LastBackup()), 1000);
}

TEST_F(BackupCliTest, RestoreAsksFirstAndTakesOnlyABackup) {
  std::string backup = BackUp(drive_);
  ASSERT_EQ(LRunKontavo({"record", "set", "Customers", "1", "City=Paris"}).exitCode, 0);
  auto now = LTreeSnapshot(home_.SharedFolder());

  LRunResult unasked = LRunKontavo({"restore", backup});
  EXPECT_EQ(unasked.exitCode, 1);
  EXPECT_EQ(unasked.err,
            "La restauration effacera toutes les informations présentes avant le chargement des données de "
            "sauvegarde. Voulez-vous vraiment restaurer les données ?\n");

  for (const std::string& notABackup : {drive_, home_.Path() + "/nowhere", home_.SharedFolder(),
                                        home_.SharedFolder() + "/MultiBus/1"}) {
    LRunResult refused = LRunKontavo({"--yes", "restore", notABackup});
    EXPECT_EQ(refused.exitCode, 1) << notABackup;
    EXPECT_EQ(refused.err, "Échec de la restauration. Souhaitez-vous choisir un autre dossier ?\n") << notABackup;
  }
  EXPECT_EQ(LRunKontavo({"restore"}).exitCode, 2);
  EXPECT_TREES_EQ(LTreeSnapshot(home_.SharedFolder()), now);
}

TEST_F(BackupCliTest, RestoreWhoseWorkerDiesLeavesTheDataRootByteForByte) {
  std::string backup = BackUp(drive_);
  WriteFile(backup + "/Ledger/2024-12-31.csv", std::string(2 * 1024 * 1024, 'z'));
  ASSERT_EQ(LRunKontavo({"record", "set", "Customers", "1", "City=Paris"}).exitCode, 0);
  auto now = LTreeSnapshot(home_.SharedFolder());

  // Files may not grow beyond 1 MiB: the copy of the large day file kills the worker half-way.
  LRunResult failed = LRunProgram("/usr/bin/prlimit", {"--fsize=1048576", KONTAVO_BIN, "--yes", "restore", backup});
  EXPECT_EQ(failed.exitCode, 1);
  EXPECT_EQ(failed.err.rfind("Une erreur s'est produite lors de la restauration des données.\n", 0), 0u) << failed.err;
  EXPECT_TREES_EQ(LTreeSnapshot(home_.SharedFolder()), now);
  EXPECT_EQ(LRunKontavo({"record", "get", "Customers", "1", "City"}).out, "Paris\n");
}

TEST_F(BackupCliTest, RestoreOnAFullDiskLeavesTheDataRootByteForByte) {
  LSmallFileSystem small(1024 * 1024);
  if (small.Path().empty()) GTEST_SKIP() << "no tmpfs can be mounted here";
  std::string backup = BackUp(drive_);
  WriteFile(backup + "/Ledger/2024-12-31.csv", std::string(900 * 1024, 'z'));
  // The data root on the small disk: the old data and the backup do not fit there together.
  std::filesystem::copy(home_.SharedFolder(), small.Path() + "/Shared", std::filesystem::copy_options::recursive);
  auto now = LTreeSnapshot(small.Path() + "/Shared");
  LRunResult failed = LRunKontavo({"--home", small.Path(), "--yes", "restore", backup});
  EXPECT_EQ(failed.exitCode, 1);
  EXPECT_EQ(failed.err.rfind("Une erreur s'est produite lors de la restauration des données.\n", 0), 0u) << failed.err;
  EXPECT_NE(failed.err.find("espace disque insuffisant"), std::string::npos) << failed.err;
  EXPECT_TREES_EQ(LTreeSnapshot(small.Path() + "/Shared"), now);
}
