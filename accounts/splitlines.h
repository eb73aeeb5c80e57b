// The account lines of a cheque or a cash transaction: money split over several accounts, each
// line an account number, an amount (cents, positive) and an optional memo. They are stored as
// numbered fields of the document's record ("ItemCount", "Item%dAccount", "Item%dAmount",
// "Item%dMemo"), as the lines of every document are.
#pragma once

#include <string>
#include <string_view>
#include <vector>

struct LCurrencyFormat;
class LProfile;
class LRecord;

struct LSplitLine {
  std::string account;  // account number
  long long amount = 0; // cents, positive
  std::string memo;     // this line's description; empty: the document's
};

// "ACCOUNT:AMOUNT[:MEMO]" with AMOUNT in currency units ("6410:12.50:Timbres"). false with
// problem set when the word is not of that form, or when AMOUNT passes the ceiling of amounts
// ("Montant trop grand pour la ligne 6410 : … (plafond 99 999 999 999,99 €).", in currency).
bool LSplitLineParse(std::string_view word, const LCurrencyFormat& currency, LSplitLine& line, std::string& problem);

// The checks every split document makes, in order: at least one line; each line's account a
// live account of the chart that is not a heading, and not the paying account itself; each
// amount positive; the lines summing to total. false with message set (French) at the first
// fault.
[[nodiscard]] bool LSplitLinesCheck(const LProfile& profile, const std::vector<LSplitLine>& lines, long long total,
                                    std::string_view payingAccount, std::string* message);

// The paying (or receiving) account of a split document: a live cash account that is not a
// heading. false with message "Le compte … n'est pas un compte de banque ou de caisse.".
[[nodiscard]] bool LSplitPayingAccountCheck(const LProfile& profile, std::string_view account, std::string* message);

// The refusals of the split documents: message (when not null) becomes text with its first "%s"
// replaced by value; returns false.
bool LSplitRefuse(std::string* message, std::string_view text, std::string_view value = {});

void LSplitLinesStore(LRecord& record, const std::vector<LSplitLine>& lines);
std::vector<LSplitLine> LSplitLinesLoad(const LRecord& record);
