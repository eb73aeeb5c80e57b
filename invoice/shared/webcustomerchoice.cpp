#include "invoice/shared/webcustomerchoice.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "invoice/shared/customer.h"
#include "invoice/shared/partyfields.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"

namespace {

// The records of a list of parties as pull-down choices, by key, after an empty choice.
void PartyChoices(LProfile& profile, std::string_view listName, std::vector<std::string>& texts,
                  std::vector<std::string>& values) {
  std::vector<std::pair<std::string, std::string>> all;
  LRecord party;
  for (LFileStoreIteratorBase it(profile.MainList(listName), party); party.IsAttached(); it.Next(party))
    all.emplace_back(party.GetPrimaryKey(), party.GetString("Name"));
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
