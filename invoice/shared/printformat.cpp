#include "invoice/shared/printformat.h"

#include <cmath>
#include <cstdio>

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"
#include "llib/gen/locale.h"

LPrintFormat::LPrintFormat(LProfile& profile) : currency_(profile.GetCurrencyFormat()) {
  LOptions options;
  options.OpenFrom(profile);
  dateOrder_ = options.GetPrintedDateOrder();
  dateSeparator_ = options.GetPrintedDateSeparator();
}

std::string LPrintFormat::Date(std::string_view storedDate) const {
  LDate date;
  if (!LDate::Parse(storedDate, date)) return std::string(storedDate);
  char text[32];
  char s = dateSeparator_;
  switch (dateOrder_) {
    case kDateOrderMDY: std::snprintf(text, sizeof text, "%.2d%c%.2d%c%.4d", date.month, s, date.day, s, date.year); break;
    case kDateOrderYMD: std::snprintf(text, sizeof text, "%.4d%c%.2d%c%.2d", date.year, s, date.month, s, date.day); break;
    default: std::snprintf(text, sizeof text, "%.2d%c%.2d%c%.4d", date.day, s, date.month, s, date.year); break;
  }
  return text;
}

std::string LPrintFormat::UnitPrice(long long value, int digits) const {
  LCurrencyFormat format = currency_;
  if (digits >= 0) format.digits = digits;
  return LFormatNumber(value, format);
}

std::string LPrintFormat::Quantity(double quantity) const {
  long long thousandths = std::llround(quantity * 1000);
  std::string text = LFormatAmountPlain(thousandths, 3);
  while (!text.empty() && text.back() == '0') text.pop_back();
  if (!text.empty() && text.back() == '.') text.pop_back();
  std::size_t point = text.find('.');
  if (point != std::string::npos) text.replace(point, 1, currency_.decimal);
  return text;
}

std::string LPrintFormat::Percent(double percent) const { return Quantity(percent) + "\u00a0%"; }
