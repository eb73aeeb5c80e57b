// The indexes the lists of the sales and purchases sides keep (llib/gen/filestoreindex), so that
// their pages read what they show and not every record of the business: the "Date" of the dated
// lists (invoices, orders, quotes, credit notes and purchase orders, recorded and drafts, customer
// payments, bills and bill payments), so that a list of one month opens that month's records; the
// "Name" of customers and sales persons, so that a choice of customer does not open a thousand
// records.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class LProfile;

// One indexed list and its field.
struct LListIndex {
  std::string_view list;
  std::string_view field;
};
// Every index, for a check of the books.
const std::vector<LListIndex>& LListIndexes();
// Declares the indexes of the business in folder; LProfile does it when it opens one, before
// any record is written.
void LListIndexesDeclare(std::string_view folder);

// The keys of the records of a dated list whose "Date" holds, in no order.
std::vector<std::string> LDocumentKeysDated(LProfile& profile, std::string_view listName,
                                            const std::function<bool(std::string_view date)>& holds);
// The keys and names of a list of parties ("Customers", "SalesPerson"), in no order.
std::vector<std::pair<std::string, std::string>> LPartyNames(LProfile& profile, std::string_view listName);
