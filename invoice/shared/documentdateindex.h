// The dated lists of the sales side (invoices, orders, quotes and credit notes, recorded and
// drafts, and customer payments) keep an index of their records' "Date" (llib/gen/filestoreindex),
// so that a list page of one month opens that month's records and not the years of others.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

class LProfile;

// Declares the indexes; LProfile does it when it opens a business, before any record is written.
void LDocumentDateIndexDeclare();

// The keys of the records of listName whose "Date" holds, in no order.
std::vector<std::string> LDocumentKeysDated(LProfile& profile, std::string_view listName,
                                            const std::function<bool(std::string_view date)>& holds);

// The indexed lists, for a check of the books.
const std::vector<std::string_view>& LDocumentDateIndexedLists();
inline constexpr std::string_view kDocumentDateField = "Date";
