// Money as people type it: amounts written the business's own way, turned into the plain
// decimal text that LParseAmount (money.h) reads.
#pragma once

#include <string>
#include <string_view>

#include "llib/gen/money.h"

// Text typed the business's own way ("1 234,56", "1 234,56 €", "(5,00)") as the plain decimal
// text LParseAmount reads ("1234.56", "-5.00"): the symbol, spaces (no-break ones too) and
// the thousands separators that group three digits go, the decimal separator becomes "."; "." is still taken as the decimal
// point when it is not the thousands separator. Anything else is left for LParseAmount to refuse.
std::string LPlainAmountText(std::string_view text, const LCurrencyFormat& format);

// An amount as a form's field shows it, the business's way without the symbol ("1 234,56"), so
// that LPlainAmountText reads it back to the same amount.
std::string LAmountInputText(long long amount, const LCurrencyFormat& format);

// Text typed the business's way to minor units (LPlainAmountText, then LParseAmount); false with
// the French refusal in *error: "Montant invalide : 1,2,3." or "Montant trop grand : 1e12 (plafond
// 99 999 999 999,99 €)." (LAmountRefusal, moneybounds.h); amount is then unchanged.
[[nodiscard]] bool LReadTypedAmount(std::string_view typed, const LCurrencyFormat& format, long long& amount,
                                    std::string* error);
