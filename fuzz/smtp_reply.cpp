// Fuzzes the reader of SMTP server replies: no input may crash it; fed whole or in pieces of
// any size it reads the same reply (code, text, STARTTLS seen) and uses the same bytes; a
// complete reply's text never holds a carriage return or line feed and never exceeds the kept
// line; and it never takes more than its byte limit.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "llib/net/emailreply.h"

namespace {

void Check(bool condition) {
  if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  // The first byte chooses the piece size of the second reading.
  std::size_t piece = data[0] % 17 + 1;
  std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);

  LSmtpReplyParser whole;
  std::size_t usedWhole = whole.Feed(bytes);
  Check(usedWhole <= bytes.size());
  Check(usedWhole <= LSmtpReplyParser::kMaxReplyBytes);
  Check(!(whole.IsComplete() && whole.IsTooLong()));
  if (whole.IsComplete()) {
    Check(bytes[usedWhole - 1] == '\n');
    Check(whole.Text().find_first_of("\r\n") == std::string_view::npos);
    Check(whole.Text().size() < LSmtpReplyParser::kMaxKeptLineBytes);
    Check(whole.Code() >= 0);
  }
  // Once complete or failed it takes nothing more.
  if (whole.IsComplete() || whole.IsTooLong()) Check(whole.Feed("250 encore\r\n") == 0);

  LSmtpReplyParser pieces;
  std::size_t usedPieces = 0;
  for (std::size_t offset = 0; offset < bytes.size(); offset += piece) {
    std::string_view chunk = bytes.substr(offset, piece);
    std::size_t used = pieces.Feed(chunk);
    usedPieces += used;
    if (used < chunk.size()) break;
  }
  Check(usedPieces == usedWhole);
  Check(pieces.IsComplete() == whole.IsComplete());
  Check(pieces.IsTooLong() == whole.IsTooLong());
  Check(pieces.Code() == whole.Code());
  Check(pieces.Text() == whole.Text());
  Check(pieces.OffersStartTls() == whole.OffersStartTls());
  return 0;
}
