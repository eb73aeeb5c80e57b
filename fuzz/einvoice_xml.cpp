// Fuzz target: the reader of received e-invoices over arbitrary bytes, as XML and as a PDF that
// may carry one. Invoices come from any supplier, so no input may crash the reader, and what it
// accepts must keep the promises a bill is made from: a number, a date, a named seller, and
// totals that add up. A refusal always says why and leaves the invoice empty.
#include <cstdint>
#include <string>
#include <string_view>

#include "invoice/shared/einvoiceread.h"
#include "llib/gen/pdfa3.h"

namespace {

void Check(bool condition) {
  if (!condition) __builtin_trap();
}

void CheckResult(bool read, const LEInvoice& invoice, const std::string& error) {
  Check(read == error.empty());
  if (!read) {
    Check(invoice.number.empty() && invoice.lines.empty() && invoice.taxes.empty());
    return;
  }
  Check(!invoice.number.empty() && invoice.issueDate.size() == 10 && !invoice.seller.name.empty());
  Check(invoice.taxBasisTotal + invoice.taxTotal == invoice.grandTotal);
  Check(invoice.grandTotal - invoice.prepaid == invoice.duePayable);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  LEInvoice invoice;
  std::string error;
  bool read = LEInvoiceParseXml(bytes, invoice, &error);
  CheckResult(read, invoice, error);

  std::string attached, pdfError;
  if (LPdfReadAttachment(bytes, "factur-x.xml", attached, &pdfError)) {
    error.clear();
    CheckResult(LEInvoiceParseXml(attached, invoice, &error), invoice, error);
  } else {
    Check(attached.empty() && !pdfError.empty());
  }
  return 0;
}
