#include "invoice/shared/webaccess.h"

#include "invoice/shared/options.h"
#include "llib/gen/file.h"
#include "llib/gen/filestore.h"
#include "llib/web/webaccount.h"
#include "llib/web/webdesk.h"
#include "llib/web/webletform.h"

namespace {

constexpr std::string_view kDeskUserName = "Poste de travail";

std::string MultiBusFolder() { return LFile::GetSharedDataFolderApp() + "/MultiBus"; }

// The session's account, opened; false when the session names none.
bool OpenSessionAccount(LWebletForm& form, LWebAccount& account) {
  std::string user;
  form.session.GetString("user", "", user);
  return !user.empty() && LWebAccountList().Open(account, user);
}

}  // namespace

std::string LWebCompanyName(std::string_view folder) {
  std::string path = folder.empty() ? LFile::GetSharedDataFolderApp() : std::string(folder);
  LRecord company;
  LFileStoreListBase misc(LFileStoreDataStore(path), kMiscList);
  if (!misc.Open(company, "Company")) return {};
  std::string name = company.GetString("Name");
  company.DetachWithoutSave();
  return name;
}

std::vector<LWebBusiness> LWebBusinessList() {
  std::vector<LWebBusiness> list;
  std::string primary = LFile::GetSharedDataFolderApp();
  list.push_back({primary, LWebCompanyName(primary)});
  std::string multi = MultiBusFolder();
  for (const std::string& name : LFile::ListFolder(multi)) {
    std::string folder = multi + "/" + name;
    if (LFile::IsFolder(folder)) list.push_back({folder, LWebCompanyName(folder)});
  }
  return list;
}

bool LWebFindBusiness(std::string_view companyName, LWebBusiness& found) {
  for (LWebBusiness& business : LWebBusinessList()) {
    if (business.name == companyName) {
      found = std::move(business);
      return true;
    }
  }
  return false;
}

std::vector<LWebBusiness> WLSessionBusinesses(LWebletForm& form) {
  if (WLIsDeskSession(form)) return LWebBusinessList();
  LWebAccount account;
  std::vector<LWebBusiness> allowed;
  if (!OpenSessionAccount(form, account) || !account.IsEnabled()) return allowed;
  for (LWebBusiness& business : LWebBusinessList())
    if (account.IsAdministrator() || account.HasProfile(business.name)) allowed.push_back(std::move(business));
  return allowed;
}

bool WLIsDeskSession(LWebletForm& form) {
  return form.session.IsPresent() && std::string_view(form.session.GetString(kDeskSessionValue, "")) == "1";
}

namespace {

LWebBooksOpener gBooksOpener = nullptr;  // set once at start-up, before the server runs

// The session's business as a page may read it (see LWebSetBooksOpener).
void OpenBooks(LWebletForm& form) {
  std::string folder = WLSessionBusinessFolder(form);
  if (gBooksOpener != nullptr && LFile::IsFolder(folder)) gBooksOpener(folder);
}

}  // namespace

void LWebSetBooksOpener(LWebBooksOpener opener) { gBooksOpener = opener; }

bool AuthenticateEx(LWebletForm& form) {
  if (!form.session.IsPresent()) {
    WLRedirect(form, "logon");
    return false;
  }
  bool allowed = WLIsDeskSession(form);
  LWebAccount account;
  allowed = allowed || (OpenSessionAccount(form, account) && account.IsEnabled() &&
                        (account.IsAdministrator() ||
                         account.HasProfile(LWebCompanyName(WLSessionBusinessFolder(form)))));
  if (!allowed) {
    form.session.DestroySession();
    WLRedirect(form, "logon");
    return false;
  }
  OpenBooks(form);
  return true;
}

bool WLAjaxAuthenticate(LWebletForm& form) {
  if (form.session.IsPresent()) return AuthenticateEx(form);
  WLWriteScriptAnswerHeader(form);
  form.Write("window.location = 'logon';\n");
  return false;
}

bool AuthenticateAdministrator(LWebletForm& form) {
  if (!AuthenticateEx(form)) return false;
  if (WLIsAdministator(form)) return true;
  WLRedirect(form, "main");
  return false;
}

bool WLIsAdministator(LWebletForm& form) {
  if (WLIsDeskSession(form)) return true;
  LWebAccount account;
  return OpenSessionAccount(form, account) && account.IsAdministrator();
}

bool WLMayChangeData(LWebletForm& form) {
  if (WLIsDeskSession(form)) return true;
  LWebAccount account;
  return OpenSessionAccount(form, account) &&
         (account.IsAdministrator() || account.GetPriviligies() != kWebPrivilegeViewer);
}

std::string WLSessionUserName(LWebletForm& form) {
  if (WLIsDeskSession(form)) return std::string(kDeskUserName);
  LWebAccount account;
  return OpenSessionAccount(form, account) ? account.GetDisplayName() : std::string();
}

std::string WLSessionBusinessFolder(LWebletForm& form) {
  std::string folder;
  form.session.GetString("profile", "", folder);
  return folder.empty() ? LFile::GetSharedDataFolderApp() : folder;
}

void LWebPageEx::PrintHeader() { WLStandardHeader(form_, navLinks_, title_, WLSessionUserName(form_), styleCss_); }

bool LWebDialogEx::RefuseViewer() {
  if (WLMayChangeData(form_)) return false;
  PopupBoxError(kWebViewerRefusal);
  return true;
}

void LWebDialogEx::PrintHeader() { WLStandardHeader(form_, navLinks_, title_, WLSessionUserName(form_), styleCss_); }
