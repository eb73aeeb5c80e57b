// Route "backup": the backup and restore of every business, for the administrator. A backup
// goes into a new "Kontavo-Sauvegarder-…" folder of the folder typed (as `kontavo backup`
// does); a restore takes a backup folder of this computer, or a backup folder chosen in the
// browser and uploaded (as `kontavo restore` does, the old data set aside until the copy
// succeeded). Both run as jobs (llib/web/webjob.h) whose progress the page polls; while a
// restore runs the server answers no other page, and a folder that is no backup is refused with
// the command line's message, the data left as they were.
#pragma once

#include "app/websettings.h"

inline constexpr std::size_t kRestoreMaxUploadBytes = 512u * 1024 * 1024;

class LWebBackupDialog : public LWebSettingsDialog {
 public:
  explicit LWebBackupDialog(LWebletForm& form);
  void InitDialog() override;
  void Generate() override;
  bool CmOk() override;

 private:
  bool StartBackup();
  bool StartRestore();
  // Starts job on the page: the answer script shows its progress.
  void ShowJob(const std::string& id);
};
