#include "invoice/shared/taxrate.h"

#include "llib/gen/textnum.h"

LFKTaxRate LFKParseTaxRate(std::string_view text) {
  LFKTaxRate rate;
  std::size_t slash = text.find('/');
  rate.rate1 = ttofl(text.substr(0, slash));
  if (slash == std::string_view::npos) return rate;
  std::string_view rest = text.substr(slash + 1);
  std::size_t second = rest.find('/');
  rate.rate2 = ttofl(rest.substr(0, second));
  if (second != std::string_view::npos) rate.compound = LTextToInt(rest.substr(second + 1)) == 1;
  return rate;
}

std::string LFKFormatPercent(double percent) {
  std::string text = ftotl(percent);
  if (text.find('.') != std::string::npos) {
    while (!text.empty() && text.back() == '0') text.pop_back();
    if (!text.empty() && text.back() == '.') text.pop_back();
  }
  if (text == "-0") text = "0";
  return text;
}

std::string LFKFormatTaxRateTriple(const LFKTaxRate& rate) {
  return LFKFormatPercent(rate.rate1) + "/" + LFKFormatPercent(rate.rate2) + "/" + (rate.compound ? "1" : "0");
}
