#include "app/webbusiness.h"

#include "app/maindialog.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/log.h"
#include "llib/web/webformat.h"
#include "llib/web/webletform.h"
#include "llib/web/weblist.h"

namespace {

std::string ShownName(const LBusinessEntry& business) {
  return business.name.empty() ? std::string("(sans nom)") : business.name;
}

}  // namespace

// ---- "businesslist" -------------------------------------------------------------------------------

LWebBusinessesPage::LWebBusinessesPage(LWebletForm& form) : LWebPageWithNavTabs(form, "businesslist") {
  SetTitle("Entreprises");
  AddNavLink("help/businesslist.html", "Aide");
  AddNavLink("logoff", "Déconnexion");
}

bool LWebBusinessesPage::Authenticate() { return AuthenticateAdministrator(form_); }

void LWebBusinessesPage::Generate() {
  std::string open = WLSessionBusinessFolder(form_);
  LHtmlList list(form_, 0, true);
  list.SetInsertInOrder(true);
  list.AddColumn("Entreprise", 50, kListAlignLeft, false);
  list.AddColumn("Dossier", 20, kListAlignLeft, false);
  list.AddColumn("", 15, kListAlignCenter, false);
  list.AddColumn("", 15, kListAlignCenter, false);
  for (const LBusinessEntry& business : LMultipleBusinessList()) {
    auto row = std::make_unique<LHtmlListRow>();
    bool isOpen = business.folder == open;
    row->AddCell("", LWebFormat("%s%H%s", isOpen ? "<b>" : "", ShownName(business).c_str(), isOpen ? "</b> (ouverte)" : ""));
    row->AddCellText(business.id == "0" ? std::string("principale") : "MultiBus/" + business.id);
    if (isOpen) row->AddCellText("");
    else row->AddCellTextLink(LWebFormat("businessopen?id=%U", business.id.c_str()), "Ouvrir");
    if (business.id == "0") row->AddCellText("");
    else row->AddCell("", LWebFormat("<a href='businessdelete?id=%U' class=deletelink>Supprimer</a>", business.id.c_str()));
    list.AddRow(std::move(row));
  }
  list.Write(form_, 100);
  form_.Write("<p><a href='startwizard?mode=add' class=actionlink>Ajouter une entreprise</a></p>");
}

// ---- "businessopen" -------------------------------------------------------------------------------

void WLBusinessOpen(LWebletForm& form) {
  if (!AuthenticateAdministrator(form)) return;
  LBusinessEntry business;
  if (LMultipleBusinessResolve(form.GetParam("id"), business) && LFile::IsFolder(business.folder)) {
    form.session.SetString("profile", business.folder);
    if (WLIsDeskSession(form) && !MainDialog::SetWorkingFolder(business.folder))
      LLogWarning("Desk: the working folder could not be stored");
  }
  WLRedirect(form, "main");
}

// ---- "businessdelete" -----------------------------------------------------------------------------

LWebBusinessDeleteDialog::LWebBusinessDeleteDialog(LWebletForm& form) : LWebDialogEx(form, "businessdelete") {
  SetTitle(std::string(kDeleteTitle));
  AddNavLink("businesslist", "Entreprises");
  AddNavLink("help/businesslist.html", "Aide");
  SetOkText(kDeleteYesButton);
  SetCancelText(kDeleteNoButton);
  SetOkPage("businesslist");
  SetCancelPage("businesslist");
}

bool LWebBusinessDeleteDialog::Authenticate() {
  if (!AuthenticateAdministrator(form_)) return false;
  found_ = LMultipleBusinessResolve(form_.GetParam("id"), business_);
  return true;
}

void LWebBusinessDeleteDialog::Generate() {
  AddHiddenField("id", business_.id);
  if (!found_) {
    AddRowError("Cette entreprise n'existe pas.");
    return;
  }
  if (business_.id == "0") {
    AddRowError(kDeletePrimaryMessage);
    return;
  }
  AddStatic(LMultipleBusinessDeleteQuestion(business_.name));
}

bool LWebBusinessDeleteDialog::CmOk() {
  if (!found_) {
    PopupBoxError("Cette entreprise n'existe pas.");
    return false;
  }
  LProfile profile(WLSessionBusinessFolder(form_));
  LMultipleBusinessDlg businesses(profile);
  businesses.InitList();
  const std::vector<LBusinessEntry>& rows = businesses.GetRows();
  for (std::size_t i = 0; i < rows.size(); ++i)
    if (rows[i].folder == business_.folder) businesses.Select(static_cast<int>(i));
  std::string error;
  // The question was this page's; the button said yes.
  if (!businesses.CmDelete([](const std::string&) { return true; }, error)) {
    PopupBoxError(error);
    return false;
  }
  // A remembered folder that no longer exists is passed over at the next start.
  if (!MainDialog::ForgetWorkingFolder(business_.folder)) LLogWarning("Desk: the working folder could not be forgotten");
  // A session working in the deleted business goes back to the primary one.
  if (WLSessionBusinessFolder(form_) == business_.folder) form_.session.SetString("profile", "");
  return true;
}
