// Tax arithmetic in minor currency units. Every computed amount is rounded half up by
// floor(x + 0.5), so -2.5 becomes -2; stored documents were totalled that way and must keep
// their totals.
//
// A tax is applied three ways: on a price without tax (exclusive), taken out of a price that
// includes it (inclusive), and for two rates either side by side or compound (the second rate
// on the amount plus the first tax). A combined tax is a list of named taxes joined by "+",
// compound when the list starts with "*" ("*TPS+TVQ").
#pragma once

#include <string>
#include <string_view>
#include <vector>

class LTaxOptions;

// The tax on amount for one or two rates (a rate <= 0 counts as absent); 0 for amount 0.
//   exclusive: t1 = rate1 on amount, t2 = rate2 on amount (+ t1 when compound);
//   inclusive: the net price is found first, then each rate is taken on it; when compound,
//   rate2 is taken first, then rate1 on the net plus that tax (this order is how stored
//   documents were computed).
//   LCalculateTax(tax, 5, 9.975, 10000, false, true) == 1547; not compound: 1498.
long long LCalculateTax(const LTaxOptions& taxOptions, double rate1, double rate2, long long amount, bool inclusive,
                        bool compound);

// The same arithmetic without tax options, for callers that hold only the rates.
long long LFKTaxOnAmount(double rate1, double rate2, long long amount, bool inclusive, bool compound);

// The parts of a combined tax name: "*A+B" gives {A, B}, compound.
struct LFKCombinedName {
  std::vector<std::string> parts;  // in the order written
  bool compound = false;           // the name started with "*"
};
LFKCombinedName LFKSplitCombinedName(std::string_view combined);
// True when name is a combined name (holds a "+").
inline bool LFKIsCombinedName(std::string_view name) { return name.find('+') != std::string_view::npos; }

// The tax of each part of a combined tax on base, rates[i] belonging to parts[i] (a rate <= 0
// gives 0). Exclusive: each part on the base, the base growing by each tax when compound.
// Inclusive: the net base is base × 100 / (100 + sum of rates), or base × 100^k / product of
// (100 + rate) when compound, each part on the net, left to right, the net growing by each tax
// when compound. Returns one amount per part.
std::vector<long long> LFKCombinedTaxParts(const std::vector<double>& rates, bool compound, long long base,
                                           bool inclusive);

// The tax on amount for tax number taxNumber of the options: its combined definition
// ("TaxCombined<n>", parts looked up by name) when it has one, else its rate or rate triple.
long long LCalculateTaxByNumber(const LTaxOptions& taxOptions, int taxNumber, long long amount, bool inclusive);
