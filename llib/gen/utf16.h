// UTF-16 little-endian text turned into UTF-8, for the spreadsheet exports that arrive as
// UTF-16. The text comes in blocks, and a surrogate pair may straddle two blocks, so the
// decoder keeps a waiting high surrogate between calls. Units that do not form valid text (a
// lone surrogate) become U+FFFD; everything else, NUL included, is converted as it is.
#pragma once

#include <string>
#include <string_view>

class LUtf16LeDecoder {
 public:
  // Appends to out the UTF-8 form of bytes, read as little-endian 16-bit units. An odd last
  // byte is ignored: callers give whole units.
  void Append(std::string_view bytes, std::string& out);
  // Ends the text: a high surrogate still waiting for its pair is written as U+FFFD.
  void Finish(std::string& out);

 private:
  char16_t pendingHigh_ = 0;  // high surrogate at the end of the last block; 0 when none
};
