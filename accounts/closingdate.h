// The closing date of the books as the administrator sets it: when it is on, nothing may be
// posted on or before that day (LCompanyOptionsCTDIsClosed, transactiondate.h, enforces it).
// Stored in the "Company" record of "Misc": "CTDEnabled" ("1" on, "0" off) and "CTDDate"
// ("YYYY-MM-DD", kept when the closing is switched off so that switching it on again offers it).
#pragma once

#include <string>

class LProfile;

struct LClosingDate {
  bool enabled = false;
  std::string date;  // "YYYY-MM-DD"; may be empty while the closing is off
};

void LClosingDateLoad(const LProfile& profile, LClosingDate& closing);
// "" when closing can be stored; otherwise the French message of its fault.
std::string LClosingDateCheck(const LClosingDate& closing);
// Stores a checked closing date. false when the record cannot be written.
[[nodiscard]] bool LClosingDateStore(LProfile& profile, const LClosingDate& closing);
