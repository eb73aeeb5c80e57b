// Deleting and restoring accounts from the chart. A delete first hides the account ("Deleted"),
// keeping it for history; deleting a hidden account removes it for good and empties the linked
// slot that named it. An account that was ever posted to, or still has a balance, cannot be
// deleted. Each kind of delete asks for confirmation unless the user ticked "Ne plus afficher ce
// message" once ("ConfirmAccountDeletion1" for hiding, "ConfirmAccountDeletion2" for removing).
#pragma once

#include <string>
#include <string_view>
#include <vector>

class LAsker;
class LProfile;

class LAccountListWindow {
 public:
  LAccountListWindow(LProfile& profile, LAsker& asker) : profile_(profile), asker_(asker) {}

  // Deletes the selected accounts in order. Every account that was refused, or whose confirmation
  // was declined, adds its message (the refusal, or the question) to messages and is left as it
  // was. Returns how many accounts were hidden or removed.
  int CmRemove(const std::vector<std::string>& selected, std::vector<std::string>& messages);
  // Brings a hidden account back. false when there is no such account.
  bool CmRestore(std::string_view number);

 private:
  LProfile& profile_;
  LAsker& asker_;
};
