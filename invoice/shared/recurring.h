// Recurring invoices and orders: templates that hold the fields of a document plus a schedule,
// in the lists "InvoicesRecurring" and "OrdersRecurring" (key field "ID", keys "1", "2", ...).
// When a template's next due date has come, a real document is made from it (recurringrecord.h)
// and the schedule moves on.
//
// Schedule fields of a template:
//   "RecurStart"     first due date, "YYYY-MM-DD";
//   "RecurLast"      date of the last document made, absent or empty before the first;
//   "RecurInterval"  period code, default 2: 0 every 7 days, 1 every 14 days, 2 monthly,
//                    3 every 2 months, 4 quarterly, 5 every 6 months, 6 yearly, 7 every 2 years,
//                    8 and above never due.
#pragma once

#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/salesdocument.h"
#include "llib/gen/record.h"

class LProfile;

inline constexpr std::string_view kRecurringInvoicesList = "InvoicesRecurring";
inline constexpr std::string_view kRecurringOrdersList = "OrdersRecurring";
inline constexpr int kRecurIntervalDefault = 2;
// The first code that is never due.
inline constexpr int kRecurIntervalNever = 8;
// What "never" is as a due moment: the largest 32-bit time.
inline constexpr time_t kRecurNever = 2147483647;

// The next due moment of a template (local time):
//   - no "RecurLast": "RecurStart" at 00:00:00; kRecurNever when that is empty or unreadable;
//   - codes 0 and 1: "RecurLast" at 12:00:00 plus 7 or 14 days, less the local hours, minutes
//     and seconds of the result (midnight; on a day that daylight saving moves, an hour off);
//   - month codes: "RecurLast" plus n months at 00:00:00. The day is kept; a day beyond the
//     target month's length spills into the next month, counting February as 28 days also in
//     leap years (31 January monthly gives 3 March), deliberately;
//   - codes 8 and above, negative codes and an unreadable "RecurLast": kRecurNever.
time_t LRecurringGetDueDate(const LRecord& schedule);
// The same as a date "YYYY-MM-DD"; empty when never due.
std::string LRecurringGetDueDateText(const LRecord& schedule);

// The keys of a list of templates in number order.
std::vector<std::string> LRecurringTemplateKeys(LProfile& profile, std::string_view list);

// True as soon as one template of "InvoicesRecurring" is due at or before now.
bool LRecurringTest(LProfile& profile, time_t now = ::time(nullptr));
// The same for one list of templates ("InvoicesRecurring" or "OrdersRecurring").
bool LRecurringTestList(LProfile& profile, std::string_view list, time_t now = ::time(nullptr));

// Brings the lines of a document in step with the items they name: a line whose code is a record
// of "Items" takes the item's "Description" (when it has one) and its "Price" (when it has one,
// in currency digits). Lines without a known item are left alone.
void LRecurringUpdateDescriptionAndPrice(LProfile& profile, LSalesDocument& document);

// Makes a template from an existing document: key in the recorded, else the drafts list of kind
// (an invoice or an order), into the kind's recurring list under the first free number, with
// "RecurStart" = start and "RecurInterval" = interval. What belongs to the one document and not
// to the ones to come is left out: its ledger reference, the amounts paid and refunded, the draft
// flag and the mark of a conversion. false with a French message in error when the document does
// not exist, the date is not a date or the template cannot be written.
bool LRecurringAddTemplate(LProfile& profile, const LSalesDocumentKind& kind, std::string_view key,
                           std::string_view start, int interval, std::string& newKey, std::string& error);

// The recurring list of an invoice or an order kind; empty for the other kinds.
std::string_view LRecurringListOf(const LSalesDocumentKind& kind);
