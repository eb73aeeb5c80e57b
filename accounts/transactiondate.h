// The guard every posting dialog runs on the date of what it is about to post: a date more than a
// year old is only taken after the user confirms it, one more than a year ahead is refused when
// the business prohibits future transactions, and nothing may be posted into the closed period.
//
// "A year" is 31,449,601 seconds: 364 days and one second, on purpose not 365 days. Dates are
// days, so the difference is counted between the same time of day on both days (by the calendar,
// without daylight-saving shifts): a date 364 days away passes, one 365 days away does not.
#pragma once

#include <string>

#include "llib/gen/date.h"

class LAsker;
class LProfile;

inline constexpr long long kTransactionDateLimitSeconds = 31449601;

// The closing date of the books: the "Company" option record's "CTDEnabled" ("1" on) and
// "CTDDate" ("YYYY-MM-DD"). true when it is on and date is on or before the closing date: the
// closing day itself belongs to the closed period.
bool LCompanyOptionsCTDIsClosed(const LProfile& profile, const LDate& date);

// true when date may be posted. false with message set: the question for an old date was not
// confirmed (message is its text), or the date is refused (message is the refusal).
[[nodiscard]] bool LCheckTransactionDate(const LProfile& profile, LAsker& asker, const LDate& date,
                                         std::string* message, const LDate& today = LDate::Today());
