// Posting a statement line that the ledger does not hold yet: against an account the user
// chooses (a general transaction: the bank account takes the line's amount, the other account
// the opposite), as a bill payment to a supplier, or (from the sales side) as a customer
// payment. The line is then "posted" and names the new transaction, which it holds for the
// reconciliation.
//
// The account chosen for a payee is remembered in the list "BankPayees" (key: the first plain
// words of the line's text, "Account": the account number) and suggested for the next line of
// the same payee.
#pragma once

#include <functional>
#include <string>
#include <string_view>

class LProfile;
struct LBankLine;

inline constexpr std::string_view kBankPayeesList = "BankPayees";

// Makes the transaction of line and returns its date and reference; false with error set when
// nothing was posted.
using LBankLinePoster = std::function<bool(const LBankLine& line, std::string& ledgerDate,
                                           std::string& reference, std::string& error)>;

// Posts line lineId of the bank account's statement lines with poster, under the store's lock,
// and marks it posted. Refused: an unknown line, a line that already holds a ledger line
// (matched, accepted or posted).
[[nodiscard]] bool LBankPostLine(LProfile& profile, std::string_view account, std::string_view lineId,
                                 const LBankLinePoster& poster, std::string& reference, std::string& error);

// A general transaction ("General", the general journal's next reference) on the line's date:
// the bank account +amount, toAccount -amount, description the given one or the line's text.
// The payee's account is remembered.
[[nodiscard]] bool LBankPostToAccount(LProfile& profile, std::string_view account, std::string_view lineId,
                                      std::string_view toAccount, std::string_view description,
                                      std::string& reference, std::string& error);

// A bank transaction entered by hand: a general transaction on date (the general journal's next
// reference), the bank account +amount (money in positive), toAccount -amount. Refused: an
// account not in the chart, the same account on both sides, a zero amount, a date that is not a
// day.
[[nodiscard]] bool LBankRecordTransaction(LProfile& profile, std::string_view account, std::string_view date,
                                          long long amount, std::string_view toAccount, std::string_view description,
                                          std::string& reference, std::string& error);

// A bill payment to supplier of the line's amount (money out), paid from the bank account.
[[nodiscard]] bool LBankPostBillPayment(LProfile& profile, std::string_view account, std::string_view lineId,
                                        std::string_view supplier, std::string& reference, std::string& error);

// The sales side's posting of a line as a customer payment (invoice/sales/bankpayment.h), for the
// ledger-side pages that offer it; null until the sales side installs it.
using LBankCustomerPaymentPoster = bool (*)(LProfile& profile, std::string_view account, std::string_view lineId,
                                            std::string_view customer, std::string& reference,
                                            std::string& paymentKey, std::string& error);
void LBankSetCustomerPaymentPoster(LBankCustomerPaymentPoster poster);
LBankCustomerPaymentPoster LBankGetCustomerPaymentPoster();

// The key under which a payee is remembered: the first three plain words of text without
// digits; empty when there are none.
std::string LBankPayeeKey(std::string_view text);
// The account remembered for the payee of text; empty when none.
std::string LBankSuggestAccount(const LProfile& profile, std::string_view text);
// Remembers account for the payee of text; false when it could not be written.
[[nodiscard]] bool LBankRememberPayee(const LProfile& profile, std::string_view text, std::string_view account);
