// kontavo business ...: the user's businesses (list, add through the start wizard, choose the
// one opened at start-up, delete).
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/cliask.h"
#include "app/commands.h"
#include "app/maindialog.h"
#include "app/multiplebusiness.h"
#include "app/startwizardoptions.h"
#include "invoice/shared/profile.h"
#include "llib/gen/jsontext.h"

namespace {

nlohmann::json EntryJson(const LBusinessEntry& entry) {
  return {{"id", entry.id}, {"name", entry.name}, {"folder", entry.folder}};
}

// The business a command works on when it names none: --business, else the start-up choice.
bool OpenFolder(LCliContext& context, std::string& folder) {
  if (context.business.empty()) {
    folder = MainDialog::GetStartupFolder();
    return true;
  }
  return LCliResolveBusiness(context.business, folder);
}

int List(LCliContext& context) {
  std::string open;
  if (!OpenFolder(context, open)) return context.Fail(LBusinessNotFoundMessage(context.business));
  nlohmann::json rows = nlohmann::json::array();
  for (const LBusinessEntry& entry : LMultipleBusinessList()) {
    bool isOpen = entry.folder == open;
    if (context.json) {
      nlohmann::json row = EntryJson(entry);
      row["open"] = isOpen;
      rows.push_back(std::move(row));
    } else {
      context.out << (isOpen ? "* " : "  ") << entry.id << "\t" << entry.name << "\t" << entry.folder << "\n";
    }
  }
  if (context.json) context.out << LJsonDump(rows) << "\n";
  return kExitOk;
}

int Add(LCliContext& context, LStartWizardAnswers& answers, bool named) {
  LProfile* profile = context.Profile();
  if (profile == nullptr) return kExitFailed;
  LMultipleBusinessDlg dialog(*profile);
  dialog.InitList();
  LBusinessEntry added;
  std::string message;
  auto prompter = LStartWizardTerminalPrompter(context, named);
  bool completed = dialog.CmAdd(answers, prompter.get(), added, message);
  if (!completed) return context.Fail(message.empty() ? std::string(kWizardAbandonedMessage) : message);
  if (context.json) context.out << LJsonDump(EntryJson(added)) << "\n";
  else context.out << added.id << "\n";
  return kExitOk;
}

int Use(LCliContext& context, const std::string& business) {
  LBusinessEntry entry;
  if (!LMultipleBusinessResolve(business, entry)) return context.Fail(LBusinessNotFoundMessage(business));
  if (!MainDialog::SetWorkingFolder(entry.folder)) return context.Fail(kWorkingFolderNotStored);
  if (context.json) context.out << LJsonDump(EntryJson(entry)) << "\n";
  return kExitOk;
}

int Delete(LCliContext& context, const std::string& business) {
  LBusinessEntry entry;
  if (!LMultipleBusinessResolve(business, entry)) return context.Fail(LBusinessNotFoundMessage(business));
  // The selection works on a profile of the primary business: the one to delete is never open.
  LProfile profile;
  LMultipleBusinessDlg dialog(profile);
  dialog.InitList();
  const auto& rows = dialog.GetRows();
  for (std::size_t i = 0; i < rows.size(); ++i)
    if (rows[i].folder == entry.folder) dialog.Select(static_cast<int>(i));
  std::string error;
  bool deleted = dialog.CmDelete(
      [&](const std::string& question) {
        return LCliConfirm(context, kDeleteTitle, question, kDeleteYesButton, kDeleteNoButton);
      },
      error);
  if (!deleted) return error.empty() ? kExitFailed : context.Fail(error);
  if (!MainDialog::ForgetWorkingFolder(entry.folder)) return context.Fail(kWorkingFolderNotStored);
  return kExitOk;
}

}  // namespace

int LCmdBusiness(LCliContext& context, LCliArgs& args) {
  LStartWizardAnswers answers;
  bool given = false, named = false;
  std::string error;
  if (!LStartWizardTakeOptions(args, answers, given, named, error)) return context.Usage(error);
  std::vector<std::string> words;
  if (!context.FinishArgs(args, words)) return kExitUsage;
  if (words.size() == 1 && words[0] == "add") return Add(context, answers, named);
  if (given) return context.Usage("les options de l'assistant ne vont qu'avec business add");
  if (words.size() == 1 && words[0] == "list") return List(context);
  if (words.size() == 2 && words[0] == "use") return Use(context, words[1]);
  if (words.size() == 2 && words[0] == "delete") return Delete(context, words[1]);
  return context.Usage();
}
