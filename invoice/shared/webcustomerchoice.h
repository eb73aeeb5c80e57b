// Choosing a customer or a sales person on a web page: the records of the party list as pull-down
// choices, by key. Shared by the sales pages (their lists' party filter) and the report choosers
// of the ledger side.
#pragma once

#include <string>
#include <vector>

class LProfile;

// The customers as a pull-down's texts ("KEY - Name", the key alone without a name) and values
// (keys), by key, after an empty choice (the party choices of the document lists:
// invoice/shared/weblistperiod.h).
void LWebCustomerChoices(LProfile& profile, std::vector<std::string>& texts, std::vector<std::string>& values);
// The sales persons ("SalesPerson") the same way.
void LWebSalesPersonChoices(LProfile& profile, std::vector<std::string>& texts, std::vector<std::string>& values);
