// Accepting pairings of statement lines with ledger lines: the user confirms what the matching
// found ("matched" or "suggested" lines), or names the ledger transaction a line stands for.
// An accepted line holds its ledger line: no other statement line can take it, and the
// reconciliation ticks it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

class LProfile;

struct LBankAcceptance {
  std::string line;       // statement line id
  std::string reference;  // ledger reference to pair it with; empty: its own match or suggestion
};

// Accepts each entry, then (allMatched) every matched line. A reference must name a ledger line
// of the account that no other statement line holds and no reconciliation cleared, dated within
// the matching window of the line (the cheque window for cheques). Refused as a whole (nothing
// changed) when an entry is not an open line or its reference fits no such ledger line. count
// receives the number of lines accepted.
[[nodiscard]] bool LBankAccept(LProfile& profile, std::string_view account,
                               const std::vector<LBankAcceptance>& entries, bool allMatched, int& count,
                               std::string& error);
