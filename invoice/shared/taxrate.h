// A tax rate as documents and the tax options store it: either a plain percentage ("20",
// "5.500000") or the triple rate1/rate2/compound ("5/9.975/1") of a tax made of two rates, the
// second one taken on the amount plus the first tax when the compound flag is 1.
#pragma once

#include <string>
#include <string_view>

struct LFKTaxRate {
  double rate1 = 0;       // percent
  double rate2 = 0;       // percent, 0 when the tax has a single rate
  bool compound = false;  // rate2 applies to the amount plus the rate1 tax
  bool IsZero() const { return rate1 <= 0 && rate2 <= 0; }
};

// Reads "a/b/c" (rate1 = a, rate2 = b, compound when c is 1; a missing part reads 0) or a plain
// number (rate1 only). Unreadable numbers read 0.
LFKTaxRate LFKParseTaxRate(std::string_view text);

// A rate as short text: 20 -> "20", 9.975 -> "9.975", 5.5 -> "5.5"; "." as decimal point.
std::string LFKFormatPercent(double percent);

// The stored triple, format "%s/%s/%d": "5/9.975/1".
std::string LFKFormatTaxRateTriple(const LFKTaxRate& rate);

// True when the text is a triple (holds a "/").
inline bool LFKIsTaxRateTriple(std::string_view text) { return text.find('/') != std::string_view::npos; }
