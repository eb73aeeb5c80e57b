// A purchase order turned into a bill when the goods and the supplier's invoice arrive
// (accounts/porderbill.h says what the bill takes): the order is received on the bill's date
// unless it was received before, so its goods come into stock once; the bill is saved and posted
// as `bill add` does. The order names its bill ("BillNumber") from before the bill is written: a
// claim under the order's own lock (sourceclaim.h), so that it is billed once.
#pragma once

#include <string>
#include <string_view>

class LProfile;

// false with the French message in *error (may be null) when the order cannot be billed (missing,
// a draft, billed already) or the ledger could not be written; reference receives the bill's
// reference.
bool LPOrderConvertToBill(LProfile& profile, std::string_view key, std::string_view date, std::string& reference,
                          std::string* error);
