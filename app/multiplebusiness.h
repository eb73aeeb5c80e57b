// The user's businesses. The primary business is the data root "Shared" itself; it always exists
// and cannot be deleted. Further businesses are the sub-folders of "Shared/MultiBus", each named
// by a number ("1", "2", ...); a new one takes the first free number. A business is known to the
// user by its company name: the field "Name" of the record "Company" in its "Misc" list.
//
// LMultipleBusinessDlg is the business selection: the list (primary first, then the "MultiBus"
// folders in the order the file system gives them, unsorted), adding through the start wizard,
// deleting after a confirmation, and switching the open profile to the selected business.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

class LProfile;
struct LStartWizardAnswers;
class LStartWizardPrompter;

inline constexpr std::string_view kMultiBusFolder = "MultiBus";
inline constexpr std::string_view kDeletePrimaryMessage = "Impossible de supprimer l'entreprise principale.";
inline constexpr std::string_view kDeleteTitle = "Confirmer la suppression";
inline constexpr std::string_view kDeleteYesButton = "Oui, supprimer";
inline constexpr std::string_view kDeleteNoButton = "Annuler";

struct LBusinessEntry {
  std::string id;      // "0" for the primary business, else its folder's name in "MultiBus"
  std::string name;    // company name ("" when not set)
  std::string folder;  // data folder
};

// The folder "Shared/MultiBus" (not created).
std::string LMultipleBusinessRoot();
// The company name of the business in folder; "" when it has none.
std::string LBusinessGetName(const std::string& folder);
// The primary business, then every folder of "MultiBus" in file-system order.
std::vector<LBusinessEntry> LMultipleBusinessList();
// The business a command names: "" or "0" the primary one, a number its "MultiBus" folder (which
// must exist), anything else the first business whose company name is exactly that text.
// false when none matches (out unchanged).
bool LMultipleBusinessResolve(std::string_view business, LBusinessEntry& out);
// What a command says when LMultipleBusinessResolve finds no business: "Entreprise introuvable : B".
std::string LBusinessNotFoundMessage(std::string_view business);
// true when a business other than the one in exceptFolder carries name: the primary business
// and every folder of "MultiBus" except one named "__MACOSX" are compared.
bool LMultipleBusinessNameExists(std::string_view name, const std::string& exceptFolder);
// The confirmation text asked before deleting the business called name.
std::string LMultipleBusinessDeleteQuestion(std::string_view name);

class LMultipleBusinessDlg {
 public:
  // Works on the open profile; call InitList before anything else.
  explicit LMultipleBusinessDlg(LProfile& profile) : profile_(profile) {}

  // Fills the rows and selects the open business (none when it is not among them).
  void InitList();
  const std::vector<LBusinessEntry>& GetRows() const { return rows_; }
  // Index of the selected row, -1 when none.
  int GetSelected() const { return selected_; }
  void Select(int row) { selected_ = row; }

  // Adds a business: the first free number in "MultiBus" becomes its folder, the profile is
  // switched to it and the start wizard runs there (asking through prompter when not null).
  // true when the wizard completed: added is the new business. false: the new folder is gone,
  // message holds the wizard's refusal ("" when it was abandoned or no folder could be made).
  // Either way the list is refilled and the profile is back on the business it had open.
  bool CmAdd(LStartWizardAnswers& answers, LStartWizardPrompter* prompter, LBusinessEntry& added,
             std::string& message);
  // Deletes the selected business once confirm(question) says yes. The primary business is
  // refused with kDeletePrimaryMessage in error. true when the folder was deleted (the list is
  // refilled); false when refused, not confirmed (error empty) or not removed completely.
  bool CmDelete(const std::function<bool(const std::string& question)>& confirm, std::string& error);
  // Switches the profile to the selected business (nothing when none is selected).
  void CmOk();

 private:
  LProfile& profile_;
  std::vector<LBusinessEntry> rows_;
  int selected_ = -1;
};
