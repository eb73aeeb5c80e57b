// Account transfers: money moved from one account to another as a general transaction under the
// next general-journal reference ("GJ10000"). The destination is debited first (+amount), then
// the source credited (-amount), both described "Transférer".
#pragma once

#include <string>
#include <string_view>

#include "llib/gen/date.h"

class LAsker;
class LProfile;

// The account a transfer names: the first account with that description, else the account with
// that number; empty when neither exists.
std::string LTransferAccountNumber(const LProfile& profile, std::string_view nameOrNumber);

// Posts the transfer. Refused, in this order, with message set and nothing written: no source,
// no destination, both the same, an amount that is not positive, a date after today, an amount
// above the source's "TotalBalance"; then the date guard of every posting (accounts/
// transactiondate.h). On success reference holds the reference used and the general-journal
// counter has moved on by one.
[[nodiscard]] bool LAccountTransfer(LProfile& profile, LAsker& asker, std::string_view from, std::string_view to,
                                    long long amount, const LDate& date, std::string* reference,
                                    std::string* message, const LDate& today = LDate::Today());
