// What the tests of sales changes under crashes and lock waits look at once the books are
// settled: every recorded document with exactly its posting, and no sales posting without one.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <utility>

class LProfile;

using LPosting = std::pair<std::string, std::string>;  // date, reference

// Every recorded document of list ("Invoices", "CreditNotes", "Payments") has its reference and
// the ledger holds exactly the transaction its posting builds (test failures otherwise); returns
// their places.
std::set<LPosting> LExpectPostedAsBuilt(LProfile& profile, std::string_view list);
// The places of the ledger's postings of type.
std::set<LPosting> LPostingsOfType(const LProfile& profile, std::string_view type);
