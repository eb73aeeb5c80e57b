#include "invoice/shared/webcustomerchoice.h"

#include <algorithm>

#include "invoice/shared/customer.h"
#include "invoice/shared/profile.h"
#include "llib/gen/filestore.h"
#include "llib/web/webformat.h"

namespace {

struct CustomerChoice {
  std::string key;
  std::string name;
};

std::vector<CustomerChoice> Customers(LProfile& profile) {
  std::vector<CustomerChoice> all;
  LCustomer customer;
  for (LFileStoreIteratorBase it(profile.MainList(kCustomersList), customer); customer.IsAttached(); it.Next(customer))
    all.push_back({customer.GetPrimaryKey(), customer.GetString("Name")});
  std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.key < b.key; });
  return all;
}

}  // namespace

void LWebCustomerChoices(LProfile& profile, std::vector<std::string>& texts, std::vector<std::string>& values) {
  texts = {""};
  values = {""};
  for (const CustomerChoice& choice : Customers(profile)) {
    texts.push_back(choice.name.empty() ? choice.key : choice.key + " - " + choice.name);
    values.push_back(choice.key);
  }
}

std::string LWebCustomerSelect(LProfile& profile, std::string_view name, std::string_view chosen, bool forFilter) {
  std::string html = LWebFormat("<select name=%s><option value=''>%s</option>", std::string(name).c_str(),
                                forFilter ? "Tous" : "");
  for (const CustomerChoice& choice : Customers(profile)) {
    std::string text = choice.name.empty() ? choice.key : choice.key + " - " + choice.name;
    html += LWebFormat("<option value='%H'%s>%H</option>", choice.key.c_str(), choice.key == chosen ? " selected" : "",
                       text.c_str());
  }
  return html + "</select>";
}
