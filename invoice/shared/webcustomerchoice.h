// Choosing a customer on a web page: the customers of the business as pull-down choices, by key.
// Shared by the sales pages and the report choosers of the ledger side.
#pragma once

#include <string>
#include <string_view>
#include <vector>

class LProfile;

// The customers as a pull-down's texts ("KEY - Name") and values (keys), by key, after an empty
// choice.
void LWebCustomerChoices(LProfile& profile, std::vector<std::string>& texts, std::vector<std::string>& values);
// A pull-down of the customers named name, selected chosen; the empty choice reads "Tous" when
// forFilter.
std::string LWebCustomerSelect(LProfile& profile, std::string_view name, std::string_view chosen, bool forFilter);
