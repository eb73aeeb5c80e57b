// Backup and restore of the data root: the folder "Shared" of the application folder, which
// holds the primary business and, in "MultiBus", every further business.
//
// A backup is a new folder "Kontavo-Sauvegarder-YYYY-MM-DD-HHMMSS" (local time) inside the
// destination the user chose, holding a copy of everything in the data root: each business's
// list folders and record files, its "Ledger" day files, and "MultiBus" with the further
// businesses. The user's settings, passwords and web sessions (beside "Shared") are not part of
// it. A folder is a usable backup when it holds a business: a "Misc" folder with "Options.dat".
//
// A restore replaces the data root by a backup's content without ever losing the data root:
// the old root is moved aside (renamed, or copied and removed across file systems) into a folder
// of the application folder named by the Unix time, a new empty root is created, the backup is
// copied into it, and only then is the set-aside folder deleted. Every failure after the move
// puts the old root back where it was.
//
// The copies are long operations that the caller runs through an LFolderCopier: in this process,
// or in a worker process (the command line's way).
#pragma once

#include <ctime>
#include <string>
#include <string_view>

#include "llib/gen/process.h"

inline constexpr std::string_view kBackupProgressTitle = "Fichiers de sauvegarde";
inline constexpr std::string_view kRestoreProgressTitle = "Restaurer les fichiers";
inline constexpr std::string_view kBackupDoneMessage = "Sauvegarde terminée normalement";
inline constexpr std::string_view kBackupNotWritableMessage =
    "Impossible d'écrire sur le dossier de destination. Veuillez vérifier que vous avez un accès en écriture.";
inline constexpr std::string_view kBackupInsideDataMessage =
    "Le dossier de destination se trouve dans les données à sauvegarder. Veuillez choisir un autre dossier.";
inline constexpr std::string_view kRestoreQuestion =
    "La restauration effacera toutes les informations présentes avant le chargement des données de sauvegarde. "
    "Voulez-vous vraiment restaurer les données ?";
inline constexpr std::string_view kRestoreBadFolderMessage =
    "Échec de la restauration. Souhaitez-vous choisir un autre dossier ?";
inline constexpr std::string_view kRestoreFailedMessage = "Une erreur s'est produite lors de la restauration des données.";
inline constexpr std::string_view kRestoreDoneMessage = "Les données ont été restaurées avec succès.";

// The copy step of a backup or a restore, and where it runs.
class LFolderCopier {
 public:
  virtual ~LFolderCopier() = default;
  // Copies the content of from into the existing folder to, under a progress display titled
  // title. kProcessFinished; kProcessCancelled; kProcessFailed with error set.
  virtual LProcessResult CopyFolder(std::string_view title, const std::string& from, const std::string& to,
                                    std::string& error) = 0;
};

// Copies in this process, reporting to the given interface.
class LFolderCopierInProcess : public LFolderCopier {
 public:
  explicit LFolderCopierInProcess(LProcessInterface& process) : process_(process) {}
  LProcessResult CopyFolder(std::string_view title, const std::string& from, const std::string& to,
                            std::string& error) override;

 private:
  LProcessInterface& process_;
};

// "Kontavo-Sauvegarder-" and the local time as "YYYY-MM-DD-HHMMSS" (no colons: backup drives
// formatted for other systems refuse them).
std::string LBackupFolderName(std::time_t when);

// A usable backup: folder holds "Misc/Options.dat".
bool LBackupIsUsable(const std::string& folder);

// A folder a restore of dataRoot can use: a usable backup that does not lie inside dataRoot,
// which the restore replaces.
bool LBackupIsUsableFor(const std::string& folder, const std::string& dataRoot);

// true when path is folder itself or lies inside it (paths compared after resolving links).
bool LPathIsInside(const std::string& path, const std::string& folder);

// Backs the data root source up into a new backup folder of destination, named for when (with
// "-2", "-3", ... added when that name is taken). Finished: backupPath is the new folder.
// Failed with error kBackupNotWritableMessage when destination is not a writable folder (nothing
// is created), kBackupInsideDataMessage when it lies inside source, or the copy's error text.
// After a failure or a cancel the partial backup folder is removed and backupPath left empty.
LProcessResult LBackupFolder(LFolderCopier& copier, const std::string& source, const std::string& destination,
                             std::time_t when, std::string& backupPath, std::string& error);

// Switches the web server of a running service off while a restore replaces its files.
class LRestoreServiceSwitch {
 public:
  virtual ~LRestoreServiceSwitch() = default;
  // Switches the web server off when the service runs; true when it did (SwitchOn follows).
  virtual bool SwitchOff() = 0;
  // Starts the service again.
  virtual void SwitchOn() = 0;
};

// Restores the data root target from the backup folder backup (the caller has checked it with
// LBackupIsUsable), setting the old root aside in a new folder of asideParent named by when
// ("%d" Unix time, counted up while taken). service (may be null) is switched off for the
// duration and on again at the end, whatever the outcome.
// Finished: target holds a copy of the backup and the set-aside folder is deleted.
// Failed: error is kRestoreFailedMessage and target is as before (set back from the set-aside
// folder); detail (may be null) tells why, and where the old data is should even the putting
// back fail.
LProcessResult LRestoreFolder(LFolderCopier& copier, const std::string& target, const std::string& asideParent,
                              const std::string& backup, std::time_t when, LRestoreServiceSwitch* service,
                              std::string& error, std::string* detail = nullptr);
