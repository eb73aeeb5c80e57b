// Fuzzes the reading of HTTPS answers and of the VAT service's replies: no input may crash them;
// an answer complete on a prefix of the bytes reads the same from the whole; a complete body
// never exceeds the limit; and whatever body arrives, the readers of error answers and of a
// viewed return either refuse it or give well-formed values.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "invoice/shared/mtdvat.h"
#include "llib/net/http.h"

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

constexpr std::size_t kLimit = 4096;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  std::size_t cut = data[0] % (size);
  std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);
  if (cut > bytes.size()) cut = bytes.size();

  LHttpResponse prefix, whole;
  LHttpAnswerState prefixState = LHttpParseAnswer(bytes.substr(0, cut), false, kLimit, prefix);
  LHttpAnswerState wholeState = LHttpParseAnswer(bytes, true, kLimit, whole);
  if (prefixState == LHttpAnswerState::kComplete) {
    // A length-delimited or chunked answer is complete once, whatever follows it.
    LHttpResponse again;
    Check(LHttpParseAnswer(bytes, false, kLimit, again) == LHttpAnswerState::kComplete);
    Check(again.status == prefix.status && again.body == prefix.body);
  }
  if (wholeState == LHttpAnswerState::kComplete) {
    Check(whole.status >= 100 && whole.status <= 999);
    Check(whole.body.size() <= kLimit);
    LMTDError error;
    if (ParseErrorResponse(whole.body, error)) Check(!error.code.empty());
    FKVatReturns vatReturn;
    if (FKVatReturnsFromJson(whole.body, vatReturn)) {
      FKVatReturns back;
      Check(FKVatReturnsFromJson(FKVatReturnsToJson(vatReturn), back));
    }
  }
  return 0;
}
