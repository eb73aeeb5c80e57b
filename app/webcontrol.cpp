#include "app/webcontrol.h"

#include <sys/stat.h>

#include "accounts/webpages.h"
#include "app/webbackup.h"
#include "app/webbusiness.h"
#include "app/webdesk.h"
#include "app/weblogonpages.h"
#include "app/webmain.h"
#include "app/websettings.h"
#include "app/webstartwizard.h"
#include "app/webuser.h"
#include "invoice/sales/webpages.h"
#include "invoice/shared/webnavtabs.h"
#include "llib/gen/file.h"
#include "llib/gen/log.h"
#include "llib/gen/processworker.h"
#include "llib/web/webaccount.h"
#include "llib/web/webjob.h"
#include "llib/web/webletroutes.h"
#include "llib/web/weblettls.h"
#include "llib/web/weblogon.h"
#include "llib/web/webupload.h"

namespace {

// The routes of the application's own pages; the first row, the empty name, runs the main page.
// The pages of the sales and ledger sides install their own (LSalesInstallWebPages, ...).
const LWebletRoute WebScriptArray[] = {
    {"", WLWebPageRun<LWebPageMain>},
    {"logon", WLLogon},
    {"logoff", WLLogout},
    {"main", WLWebPageRun<LWebPageMain>},
    {"userlist", WLWebPageRun<LAppWebAccountsPage>},
    {"userprop", WLWebDialogRun<LAppWebAccountDialog>},
    {"userdelete", WLUserDelete},
    {"chooseprofile", WLWebDialogRun<LWebSelectProfileDialog>},
    {"startwizard", WLWebDialogRun<LWebStartWizardDialog>},
    {"businesslist", WLWebPageRun<LWebBusinessesPage>},
    {"businessopen", WLBusinessOpen},
    {"businessdelete", WLWebDialogRun<LWebBusinessDeleteDialog>},
    {"settingsmenu", WLWebPageRun<LWebSettingsMenuPage>},
    {"settings", WLWebDialogRun<LWebCompanySettingsDialog>},
    {"settingsregional", WLWebDialogRun<LWebRegionalSettingsDialog>},
    {"settingstax", WLWebDialogRun<LWebTaxSettingsDialog>},
    {"settingsdocuments", WLWebDialogRun<LWebDocumentOptionsDialog>},
    {"settingslinked", WLWebDialogRun<LWebLinkedAccountsDialog>},
    {"settingsmail", WLWebDialogRun<LWebMailSettingsDialog>},
    {"settingsweb", WLWebDialogRun<LWebServerSettingsDialog>},
    {"settingsclosing", WLWebDialogRun<LWebClosingDateDialog>},
    {"backup", WLWebDialogRun<LWebBackupDialog>},
};

// The routes of the logon pages and the upload progress, installed beside the table.
const LWebletRoute kLogonScripts[] = {
    {"changepassword", WLWebDialogRun<LWebChangePasswordDialog>},
    {"changepasswordchanged", WLWebPageRun<LWebChangePasswordChangedPage>},
    {"lostpassword", WLWebDialogRun<LWebLostPasswordDialog>},
    {"lostpasswordsent", WLWebPageRun<LWebLostPasswordSentPage>},
    {"uploadProgress", WLUploadProgress},
    {"jobprogress", WLJobProgress},
    {"desk", WLDeskLogon},
};

long long ModifiedTime(const std::string& path) {
  struct stat st;
  return ::stat(path.c_str(), &st) == 0 ? static_cast<long long>(st.st_mtime) : -1;
}

}  // namespace

void LWebControlInstallRoutes() {
  LWebletInstallScripts(kLogonScripts);
  LWebletInstallScripts(WebScriptArray);
  LWebletInstallPostScript("backup", WLWebUploadDialogRun<LWebBackupDialog>);
  LWebNavTabInstall({"main", "Accueil", 10});
  LWebNavTabInstall({"userlist", "Utilisateurs", 160, true});
  LWebNavTabInstall({"businesslist", "Entreprises", 170, true});
  LWebNavTabInstall({"settingsmenu", "Réglages", 180, true});
  LSalesInstallWebPages();
  LAccountsInstallWebPages();
}

std::string LWebStaticFilesSource() {
  // Installed: PREFIX/bin/kontavo beside PREFIX/share/kontavo/web. In a build folder the build
  // copies the files beside the program instead, so tests and `make run` find them the same way.
  std::string program = LCurrentExecutablePath();
  std::string folder = program.substr(0, program.rfind('/') + 1);
  std::string installed = folder + "../" + std::string(kWebStaticFilesFolder);
  return LFile::IsFolder(installed) ? installed : folder + std::string(kWebStaticFilesFolder);
}

int LWebInstallStaticFiles(const std::string& sourceFolder, const std::string& webFolder) {
  int copied = 0;
  LFile::MakeFolder(webFolder);
  for (const std::string& name : LFile::ListFolder(sourceFolder)) {
    std::string source = sourceFolder + "/" + name;
    std::string target = webFolder + "/" + name;
    if (LFile::IsFolder(source)) {
      copied += LWebInstallStaticFiles(source, target);
      continue;
    }
    if (ModifiedTime(target) >= ModifiedTime(source)) continue;
    std::string content;
    if (LFile::ReadAll(source, content) && LFile::WriteAllAtomic(target, content)) ++copied;
  }
  return copied;
}

void LWebControl::Start() {
  LWebControlInstallRoutes();
  LWebInstallStaticFiles(LWebStaticFilesSource(), LFile::GetUserDataFolderAppSubFolder("Web"));
  // Accounts of an older program keep their passwords in plain text: none stays so once the
  // server runs, whether or not its user logs on.
  if (int nHashed = LWebAccountHashPlainPasswords(); nHashed > 0)
    LLogInfo("Mots de passe Web chiffrés : %d compte(s)", nHashed);
  LLogInfo("Démarrage du serveur Web (%s)", LWebletIsSecure() ? "Sécurisé" : "Non sécurisé");
  server_.StartServer(LWebletServer::GetWebletServerPort());
}

void LWebControl::Stop() { server_.StopServer(); }
