#include "invoice/shared/taxcalc.h"

#include "invoice/shared/taxoptions.h"
#include "llib/gen/money.h"

namespace {

long long PercentOf(double rate, double amount) { return rate > 0 ? LRoundHalfUp(rate * amount * 0.01) : 0; }

}  // namespace

long long LCalculateTax(const LTaxOptions&, double rate1, double rate2, long long amount, bool inclusive,
                        bool compound) {
  return LFKTaxOnAmount(rate1, rate2, amount, inclusive, compound);
}

long long LFKTaxOnAmount(double rate1, double rate2, long long amount, bool inclusive, bool compound) {
  if (amount == 0) return 0;
  double value = static_cast<double>(amount);
  if (!inclusive) {
    long long t1 = PercentOf(rate1, value);
    double base = compound ? value + static_cast<double>(t1) : value;
    return t1 + PercentOf(rate2, base);
  }
  if (!compound) {
    double sum = (rate1 > 0 ? rate1 : 0) + (rate2 > 0 ? rate2 : 0);
    double net = value * 100 / (100 + sum);
    return PercentOf(rate1, net) + PercentOf(rate2, net);
  }
  double product = 1;
  double hundredPowK = 1;
  for (double rate : {rate1, rate2}) {
    if (rate <= 0) continue;
    product *= 100 + rate;
    hundredPowK *= 100;
  }
  double net = hundredPowK * value / product;
  long long total = 0;
  for (double rate : {rate2, rate1}) {  // rate2 first: stored documents were computed so
    if (rate <= 0) continue;
    long long t = PercentOf(rate, net);
    total += t;
    net += static_cast<double>(t);
  }
  return total;
}

LFKCombinedName LFKSplitCombinedName(std::string_view combined) {
  LFKCombinedName result;
  if (!combined.empty() && combined.front() == '*') {
    result.compound = true;
    combined.remove_prefix(1);
  }
  while (true) {
    std::size_t plus = combined.find('+');
    std::string_view part = combined.substr(0, plus);
    if (!part.empty()) result.parts.emplace_back(part);
    if (plus == std::string_view::npos) break;
    combined.remove_prefix(plus + 1);
  }
  return result;
}

std::vector<long long> LFKCombinedTaxParts(const std::vector<double>& rates, bool compound, long long base,
                                           bool inclusive) {
  std::vector<long long> taxes;
  taxes.reserve(rates.size());
  double amount = static_cast<double>(base);
  if (inclusive) {
    double sum = 0;
    double product = 1;
    double hundredPowK = 1;
    for (double rate : rates) {
      if (rate <= 0) continue;
      sum += rate;
      product *= 100 + rate;
      hundredPowK *= 100;
    }
    amount = compound ? amount * hundredPowK / product : amount * 100 / (100 + sum);
  }
  for (double rate : rates) {
    long long t = PercentOf(rate, amount);
    taxes.push_back(t);
    if (compound) amount += static_cast<double>(t);
  }
  return taxes;
}

long long LCalculateTaxByNumber(const LTaxOptions& taxOptions, int taxNumber, long long amount, bool inclusive) {
  std::string combined = taxOptions.GetTaxCombined(taxNumber);
  if (combined.empty()) {
    LFKTaxRate rate = taxOptions.GetTaxRate(taxNumber);
    return LCalculateTax(taxOptions, rate.rate1, rate.rate2, amount, inclusive, rate.compound);
  }
  if (amount == 0) return 0;
  LFKCombinedName name = LFKSplitCombinedName(combined);
  std::vector<double> rates;
  for (const auto& part : name.parts) {
    int partNumber = taxOptions.GetTaxNumberFromName(part);
    rates.push_back(partNumber > 0 ? taxOptions.GetTaxRate(partNumber).rate1 : 0);
  }
  long long total = 0;
  for (long long t : LFKCombinedTaxParts(rates, name.compound, amount, inclusive)) total += t;
  return total;
}
