// Fuzz target: template form files. Users write these by hand into the business's "Forms"
// folder, so no text may crash the reader; a form is either read with at least one element,
// each within its bounds, or refused with "ligne N : reason" for a line the text has.
#include <cstdint>
#include <string>
#include <string_view>

#include "invoice/shared/templateform.h"
#include "llib/gen/money.h"

namespace {

void Check(bool condition) {
  if (!condition) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  LCurrencyFormat currency;
  currency.decimal = ",";
  LTemplateForm form;
  std::string error;
  if (LTemplateFormParse(text, currency, form, error)) {
    Check(!form.elements.empty() && error.empty());
    for (const LTemplateElement& element : form.elements) {
      Check(element.line >= 1);
      Check(element.x.has_value() == element.y.has_value());
      Check(element.width >= 0 && element.width <= 1000 && element.height >= 0 && element.height <= 1000);
      Check(element.style.sizePt >= 4 && element.style.sizePt <= 72);
    }
  } else {
    Check(error.starts_with("ligne ") || error == "le formulaire ne contient aucun élément");
  }
  return 0;
}
