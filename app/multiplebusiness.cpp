#include "app/multiplebusiness.h"

#include <sys/stat.h>

#include <cerrno>

#include "app/startwizard.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/filestore.h"

namespace {

// A folder that an archive tool of another system leaves behind; never a business.
constexpr std::string_view kArchiveLeftover = "__MACOSX";

bool IsNumber(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// The folders of "MultiBus", in the order the file system gives them.
std::vector<std::string> FurtherBusinessIds() {
  std::vector<std::string> ids;
  std::string root = LMultipleBusinessRoot();
  for (std::string& name : LFile::ListFolder(root))
    if (LFile::IsFolder(LFile::MakeFilePath(root, name))) ids.push_back(std::move(name));
  return ids;
}

// Creates "MultiBus/N" for the first N that is not taken; false when none could be created.
bool MakeFirstFreeBusinessFolder(std::string& id, std::string& folder) {
  std::string root = LFile::GetSharedDataFolderAppSubFolder(kMultiBusFolder);
  for (long long n = 1;; ++n) {
    id = std::to_string(n);
    folder = LFile::MakeFilePath(root, id);
    if (::mkdir(folder.c_str(), 0777) == 0) return true;
    if (errno != EEXIST) return false;
  }
}

}  // namespace

std::string LMultipleBusinessRoot() { return LFile::MakeFilePath(LFile::GetSharedDataFolderApp(), kMultiBusFolder); }

std::string LBusinessGetName(const std::string& folder) {
  // Reading a name must not create the list folder in what may not be a business at all.
  if (!LFile::IsFolder(LFile::MakeFilePath(folder, kMiscList))) return {};
  LFileStoreListBase misc(LFileStoreDataStore(folder), kMiscList);
  LRecord company;
  if (!misc.Open(company, "Company")) return {};
  return company.GetString("Name");
}

std::vector<LBusinessEntry> LMultipleBusinessList() {
  std::vector<LBusinessEntry> rows;
  std::string primary = LFile::GetSharedDataFolderApp();
  rows.push_back({"0", LBusinessGetName(primary), primary});
  std::string root = LMultipleBusinessRoot();
  for (std::string& id : FurtherBusinessIds()) {
    std::string folder = LFile::MakeFilePath(root, id);
    rows.push_back({std::move(id), LBusinessGetName(folder), folder});
  }
  return rows;
}

std::string LBusinessNotFoundMessage(std::string_view business) {
  return "Entreprise introuvable : " + std::string(business);
}

bool LMultipleBusinessResolve(std::string_view business, LBusinessEntry& out) {
  if (business.empty() || business == "0") {
    std::string primary = LFile::GetSharedDataFolderApp();
    out = {"0", LBusinessGetName(primary), primary};
    return true;
  }
  if (IsNumber(business)) {
    std::string folder = LFile::MakeFilePath(LMultipleBusinessRoot(), business);
    if (!LFile::IsFolder(folder)) return false;
    out = {std::string(business), LBusinessGetName(folder), folder};
    return true;
  }
  for (LBusinessEntry& row : LMultipleBusinessList()) {
    if (row.name == business) {
      out = std::move(row);
      return true;
    }
  }
  return false;
}

bool LMultipleBusinessNameExists(std::string_view name, const std::string& exceptFolder) {
  std::string primary = LFile::GetSharedDataFolderApp();
  if (primary != exceptFolder && LBusinessGetName(primary) == name) return true;
  std::string root = LMultipleBusinessRoot();
  for (const std::string& id : FurtherBusinessIds()) {
    if (id == kArchiveLeftover) continue;
    std::string folder = LFile::MakeFilePath(root, id);
    if (folder != exceptFolder && LBusinessGetName(folder) == name) return true;
  }
  return false;
}

std::string LMultipleBusinessDeleteQuestion(std::string_view name) {
  // The wording (a business called "la devise") is the one users know; it stays as it is.
  return "Voulez-vous vraiment supprimer la devise \"" + std::string(name) +
         "\" complètement ? Toutes les factures, l'historique, les paiements et les données seront "
         "définitivement détruits.\r\n\r\nCette action est irréversible. Procédez avec prudence!";
}

// ---- The business selection --------------------------------------------------------------------

void LMultipleBusinessDlg::InitList() {
  rows_ = LMultipleBusinessList();
  selected_ = -1;
  for (std::size_t i = 0; i < rows_.size(); ++i)
    if (rows_[i].folder == profile_.GetDatabaseName()) selected_ = static_cast<int>(i);
}

bool LMultipleBusinessDlg::CmAdd(LStartWizardAnswers& answers, LStartWizardPrompter* prompter,
                                 LBusinessEntry& added, std::string& message) {
  message.clear();
  std::string remembered = profile_.GetDatabaseName();
  std::string id, folder;
  if (!MakeFirstFreeBusinessFolder(id, folder)) {
    InitList();
    return false;
  }
  profile_.SetDatabaseName(folder);
  bool completed = LStartWizardRun(profile_, answers, prompter, message);
  profile_.SetDatabaseName(remembered);
  if (!completed) LFile::RemoveTree(folder);
  else added = {id, LBusinessGetName(folder), folder};
  InitList();
  return completed;
}

bool LMultipleBusinessDlg::CmDelete(const std::function<bool(const std::string& question)>& confirm,
                                    std::string& error) {
  error.clear();
  if (selected_ < 0 || selected_ >= static_cast<int>(rows_.size())) return false;
  const LBusinessEntry& row = rows_[static_cast<std::size_t>(selected_)];
  if (row.id == "0") {
    error = kDeletePrimaryMessage;
    return false;
  }
  if (!confirm(LMultipleBusinessDeleteQuestion(row.name))) return false;
  bool removed = LFile::RemoveTree(row.folder);
  if (!removed) error = "Impossible de supprimer le dossier \"" + row.folder + "\".";
  InitList();
  return removed;
}

void LMultipleBusinessDlg::CmOk() {
  if (selected_ < 0 || selected_ >= static_cast<int>(rows_.size())) return;
  const std::string& folder = rows_[static_cast<std::size_t>(selected_)].folder;
  if (folder != profile_.GetDatabaseName()) profile_.SetDatabaseName(folder);
}
