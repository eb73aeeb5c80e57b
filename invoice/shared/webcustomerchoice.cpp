#include "invoice/shared/webcustomerchoice.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "invoice/shared/customer.h"
#include "invoice/shared/listindexes.h"
#include "invoice/shared/partyfields.h"
#include "invoice/shared/profile.h"

namespace {

// The parties of a list as pull-down choices, by key, after an empty choice (names from the
// list's index: no record is opened).
void PartyChoices(LProfile& profile, std::string_view listName, std::vector<std::string>& texts,
                  std::vector<std::string>& values) {
  std::vector<std::pair<std::string, std::string>> all = LPartyNames(profile, listName);
  std::sort(all.begin(), all.end());
  texts = {""};
  values = {""};
  for (const auto& [key, name] : all) {
    texts.push_back(name.empty() ? key : key + " - " + name);
    values.push_back(key);
  }
}

}  // namespace

void LWebCustomerChoices(LProfile& profile, std::vector<std::string>& texts, std::vector<std::string>& values) {
  PartyChoices(profile, kCustomersList, texts, values);
}

void LWebSalesPersonChoices(LProfile& profile, std::vector<std::string>& texts, std::vector<std::string>& values) {
  PartyChoices(profile, kSalesPersonList, texts, values);
}
