#include "app/webbackup.h"

#include <ctime>
#include <filesystem>

#include "app/maindialog.h"
#include "llib/gen/backup.h"
#include "llib/gen/file.h"
#include "llib/gen/log.h"
#include "llib/gen/textnum.h"
#include "llib/gen/usersettings.h"
#include "llib/web/webformat.h"
#include "llib/web/webjob.h"
#include "llib/web/webletform.h"

namespace {

constexpr int kDestinationControl = 101;
constexpr int kBackupFolderControl = 102;
constexpr std::string_view kUploadField = "backupfiles";
constexpr std::string_view kBackupButton = "Sauvegarder";
constexpr std::string_view kRestoreButton = "Restaurer";
constexpr std::string_view kSettingGroup = "Setting";
constexpr std::string_view kLastFolderKey = "LastBackupFolder";  // the folder of the last backup

// Polls the job and shows it in the panel "jobpanel"; the buttons stay off while it runs. The
// answers of "jobprogress" call ShowJobState, and the job's own answer ShowJobResult.
constexpr std::string_view kJobScript = R"(var jobId = '';
function ShowJob(id) {
  jobId = id;
  ClearControlError();
  document.getElementById('jobpanel').style.display = 'block';
  var result = document.getElementById('jobresult');
  result.textContent = '';
  result.className = '';
  DisableSubmits(true);
  PollBackupJob();
}
function PollBackupJob() {
  var request = new XMLHttpRequest();
  request.open('GET', 'jobprogress?id=' + encodeURIComponent(jobId) + '&t=' + Date.now());
  request.onload = function () { (new Function(request.responseText))(); };
  request.onerror = function () { setTimeout(PollBackupJob, 1000); };
  request.send();
}
function ShowJobState(progress, status, finished) {
  document.getElementById('jobbar').style.width = Math.round(Math.max(progress, 0) * 100) + '%';
  document.getElementById('jobstatus').textContent = status;
  if (!finished) setTimeout(PollBackupJob, 300);
}
function ShowJobResult(ok, message) {
  var result = document.getElementById('jobresult');
  result.textContent = message;
  result.className = ok ? 'jobok' : 'joberror';
  DisableSubmits(false);
}
)";

// The job's answer: the outcome shown in the panel.
std::string ResultScript(bool ok, const std::string& message) {
  return LWebFormat("ShowJobResult(%s, '%s');\n", ok ? "true" : "false", LJScriptEscape(message).c_str());
}

// The local time of the last backup attempt ("LastBackup"), "" when there was none.
std::string LastBackupText() {
  std::string seconds = LUserSettingGetString(kSettingGroup, "LastBackup");
  if (seconds.empty()) return {};
  std::time_t when = static_cast<std::time_t>(LTextToInt64(seconds));
  std::tm local{};
  char text[32];
  if (::localtime_r(&when, &local) == nullptr || std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &local) == 0) return {};
  return text;
}

std::string Absolute(const std::string& path) {
  std::error_code error;
  std::filesystem::path absolute = std::filesystem::absolute(path, error);
  return error ? path : absolute.lexically_normal().string();
}

// The restore of backup as a job; upload (may be empty) is the folder the backup was uploaded
// into, removed when the restore is over.
LWebJobFunction RestoreJob(const std::string& backup, const std::string& upload) {
  return [backup, upload](LProcessInterface& process, LWebJobAnswer& answer) {
    LFolderCopierInProcess copier(process);
    std::string error, detail;
    // The server answers no other page meanwhile (an exclusive job), so there is no web server
    // to switch off as the command line does.
    LProcessResult result = MainDialog::CmRestore(copier, backup, nullptr, error, &detail);
    if (!upload.empty()) LFile::RemoveTree(upload);
    answer.script = result == kProcessFinished ? ResultScript(true, std::string(kRestoreDoneMessage))
                                               : ResultScript(false, detail.empty() ? error : error + " " + detail);
  };
}

}  // namespace

LWebBackupDialog::LWebBackupDialog(LWebletForm& form)
    : LWebSettingsDialog(form, "backup", "sauvegarde et restauration") {
  SetUpload(true);
  SetUploadLimit(kRestoreMaxUploadBytes);
  SetOkText(kBackupButton);
  SetCancelText({});
  AddSpecialSubmit(kRestoreButton, "backup", kRestoreQuestion);
  AddNavLink("help/backup.html", "Aide sauvegarde");
}

void LWebBackupDialog::InitDialog() {
  std::string folder = LUserSettingGetString(kSettingGroup, kLastFolderKey);
  if (folder.empty()) {
    const char* home = ::getenv("HOME");
    folder = home != nullptr ? home : "";
  }
  SetText(kDestinationControl, folder);
}

void LWebBackupDialog::Generate() {
  AddJScript(kJobScript);
  StartGroupBox("Sauvegarder");
  AddStaticSmall("Toutes les sociétés sont copiées dans un nouveau dossier « Kontavo-Sauvegarder-… » du dossier choisi, "
                 "sur l'ordinateur du service.");
  AddInput(kDestinationControl, "Dossier de destination :", "", 50);
  if (std::string last = LastBackupText(); !last.empty()) AddStaticSmall("Dernière sauvegarde : " + last);
  EndGroupBox();
  StartGroupBox("Restaurer");
  AddStaticSmall(kRestoreQuestion);
  AddInput(kBackupFolderControl, "Dossier de sauvegarde sur cet ordinateur :", "", 50);
  form_.Write(LWebFormat("<tr><td><label for=backupfiles>ou dossier de sauvegarde à envoyer :</label></td>"
                         "<td><input type=file id=backupfiles name=%s webkitdirectory multiple></td></tr>",
                         std::string(kUploadField).c_str()));
  EndGroupBox();
  form_.Write("<tr><td colspan=2><div id=jobpanel style='display:none'><div class=progressbar><div id=jobbar></div></div>"
              "<div id=jobstatus class=jobstatus></div><div id=jobresult></div></div></td></tr>");
}

bool LWebBackupDialog::CmOk() {
  return form_.GetParam("submit") == kRestoreButton ? StartRestore() : StartBackup();
}

void LWebBackupDialog::ShowJob(const std::string& id) {
  WriteAnswerScript(LWebFormat("ShowJob('%s');\n", id.c_str()));
  SetAnswerWritten();
}

bool LWebBackupDialog::StartBackup() {
  std::string destination = GetTextAndTrim(kDestinationControl);
  if (destination.empty() || destination.front() != '/') {
    PopupControlDataInvalid(kDestinationControl, "Veuillez entrer le chemin complet du dossier de destination (par exemple /home/claire/Sauvegardes).");
    return false;
  }
  destination = Absolute(destination);
  if (!LFile::IsFolder(destination)) {
    PopupControlDataInvalid(kDestinationControl, kBackupNotWritableMessage);
    return false;
  }
  // Only the next backup's suggested folder depends on it.
  if (!LUserSettingSetString(kSettingGroup, kLastFolderKey, destination))
    LLogWarning("Backup: the destination folder could not be remembered");
  ShowJob(LWebJobStart(WLJobOwner(form_), [destination](LProcessInterface& process, LWebJobAnswer& answer) {
    LFolderCopierInProcess copier(process);
    std::string backupPath, error;
    LProcessResult result = MainDialog::CmBackup(copier, destination, backupPath, error);
    answer.script = result == kProcessFinished
                        ? ResultScript(true, std::string(kBackupDoneMessage) + " : " + backupPath)
                        : ResultScript(false, result == kProcessCancelled ? std::string("Sauvegarde annulée.") : error);
  }));
  return true;
}

bool LWebBackupDialog::StartRestore() {
  std::string backup = GetTextAndTrim(kBackupFolderControl);
  std::string upload;
  if (Upload().Find(kUploadField) != nullptr && !Upload().Find(kUploadField)->data.empty()) {
    // The chosen folder's files, written into a folder of their own beside the data root.
    upload = LFile::GetUserDataFolderApp() + "/Restauration-" + std::to_string(static_cast<long long>(std::time(nullptr)));
    if (!LFile::MakeFolder(upload) || LWebletWriteUploadedFolder(Upload(), kUploadField, upload) <= 0) {
      LFile::RemoveTree(upload);
      PopupControlDataInvalid("backupfiles", kRestoreBadFolderMessage);
      return false;
    }
    backup = upload;
  } else if (backup.empty()) {
    PopupControlDataInvalid(kBackupFolderControl, "Veuillez choisir le dossier de la sauvegarde à restaurer.");
    return false;
  } else {
    backup = Absolute(backup);
  }
  if (!LBackupIsUsableFor(backup, LFile::GetSharedDataFolderApp())) {
    if (!upload.empty()) LFile::RemoveTree(upload);
    PopupControlDataInvalid(upload.empty() ? std::to_string(kBackupFolderControl) : std::string("backupfiles"),
                            kRestoreBadFolderMessage);
    return false;
  }
  std::string id = LWebJobStartExclusive(WLJobOwner(form_), RestoreJob(backup, upload), {"jobprogress"});
  if (id.empty()) {
    if (!upload.empty()) LFile::RemoveTree(upload);
    PopupBoxError(kWebJobBusyMessage);
    return false;
  }
  ShowJob(id);
  return true;
}
