// Fuzzes the item lines of the command line and of the web's line grid ("CODE|DESCRIPTION|QTY|
// UNIT PRICE|TAX NAME|DISCOUNT %", LParseDocumentLineText then LApplyDocumentLine) in a business
// of its own: no input may crash them, a line accepted totals within the money ceiling, and a
// refusal always has its message.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "invoice/shared/documentinput.h"
#include "invoice/shared/item.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/taxoptions.h"
#include "invoice/shared/totals.h"
#include "llib/gen/moneybounds.h"

namespace {

LProfile* business = nullptr;
LTaxOptions* taxes = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  char folder[] = "/tmp/kontavo-fuzz-line-XXXXXX";
  if (::mkdtemp(folder) == nullptr || ::setenv("KONTAVO_HOME", folder, 1) != 0) std::abort();
  business = new LProfile();
  LItem item;  // a known code takes its price and description
  business->MainList(kItemsList).OpenAlways(item, "PAIN");
  item.SetInt64("Price", 250);
  if (!item.Flush()) std::abort();
  taxes = new LTaxOptions();
  taxes->OpenFrom(*business);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  LDocumentLineInput line;
  if (!LParseDocumentLineText(text, line)) return 0;
  LSalesDocument document;
  LDocumentLineError refusal = LApplyDocumentLine(*business, *taxes, document, 0, line);
  if (refusal != LDocumentLineError::kNone) {
    if (LDocumentLineErrorMessage(refusal, line, business->GetCurrencyFormat()).empty()) std::abort();
    return 0;
  }
  document.SetInt("ItemCount", 1);
  if (!LMoneyIsWithinBounds(LFKDocumentLineTotal(document.Items(), 0, false, business->GetCurrencyDigits())))
    std::abort();
  return 0;
}
