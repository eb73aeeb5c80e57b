#include "accounts/accountlistwindow.h"

#include <cstdio>

#include "accounts/accounts.h"
#include "accounts/linkedaccounts.h"
#include "accounts/question.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"

namespace {

constexpr char kUsed[] = "Impossible de supprimer le compte '%s'.\nCe compte a été utilisé dans une transaction.";
constexpr char kHasBalance[] = "Impossible de supprimer le compte '%s'.\nCe compte a toujours un solde restant dû.";
constexpr char kConfirmRemove[] =
    "Voulez-vous vraiment supprimer définitivement le compte \"%s\" - vous ne pourrez plus afficher ce compte ?";
constexpr char kNotWritten[] = "Impossible de supprimer le compte '%s'.\nIl n'a pas pu être enregistré.";
constexpr char kConfirmHide[] = "Voulez-vous vraiment supprimer le compte \"%s\" ?";

std::string Format(const char* format, const std::string& name) {
  char text[1024];
  std::snprintf(text, sizeof text, format, name.c_str());
  return text;
}

}  // namespace

int LAccountListWindow::CmRemove(const std::vector<std::string>& selected, std::vector<std::string>& messages) {
  LAccountList accounts(profile_);
  int nDone = 0;
  for (const auto& number : selected) {
    LAccount account;
    if (!accounts.Open(account, number)) continue;
    std::string name = account.GetDescription();
    if (account.IsAccountUsed()) {
      messages.push_back(Format(kUsed, name));
      continue;
    }
    if (account.GetTotalBalance() != 0) {
      messages.push_back(Format(kHasBalance, name));
      continue;
    }
    bool removing = account.IsDeleted();
    std::string_view skipOption = removing ? "ConfirmAccountDeletion2" : "ConfirmAccountDeletion1";
    LOptions options;
    options.OpenFrom(profile_);
    if (!options.GetBool(skipOption, false)) {
      LQuestion question{Format(removing ? kConfirmRemove : kConfirmHide, name), "Confirmer la suppression",
                         "Supprimer", "Annuler", true};
      LAnswer answer = asker_.Ask(question);
      if (!answer.confirmed) {
        messages.push_back(question.text);
        continue;
      }
      if (answer.dontShowAgain) options.SetBool(skipOption, true);
    }
    bool written;
    if (removing) {
      if (int slot = LDefAccountSlotOfAccount(profile_, number); slot != 0) options.SetDefAccountNumber(slot, "");
      account.DetachWithoutSave();
      written = options.Flush() && accounts.Delete(number);
    } else {
      account.SetBool("Deleted", true);
      written = options.Flush() && account.Flush();
    }
    if (!written) {
      messages.push_back(Format(kNotWritten, name));
      continue;
    }
    ++nDone;
  }
  return nDone;
}

bool LAccountListWindow::CmRestore(std::string_view number) {
  LAccount account;
  if (!LAccountList(profile_).Open(account, number)) return false;
  if (account.IsDeleted()) account.SetBool("Deleted", false);
  return true;
}
