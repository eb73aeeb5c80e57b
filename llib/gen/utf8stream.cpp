#include "llib/gen/utf8stream.h"

#include "llib/gen/utf8.h"

namespace {

// Bytes at the end of text that begin a UTF-8 character of which only they have come: a lead
// byte and the continuation bytes after it, fewer than the lead byte announces. 0 otherwise.
std::size_t UnfinishedTail(const std::string& text) {
  for (std::size_t back = 1; back <= 3 && back <= text.size(); ++back) {
    unsigned char byte = static_cast<unsigned char>(text[text.size() - back]);
    if ((byte & 0xC0) == 0x80) continue;  // a continuation byte: look further back for its lead
    std::size_t length = byte >= 0xF0 && byte <= 0xF4 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC2 && byte < 0xE0 ? 2 : 0;
    return length > back ? back : 0;
  }
  return 0;
}

}  // namespace

LUtf8OutBuf::~LUtf8OutBuf() {
  (void)Pass(true);
  target_->pubsync();
}

bool LUtf8OutBuf::Pass(bool whole) {
  std::size_t keep = whole ? 0 : UnfinishedTail(pending_);
  std::string text = LTextAsUtf8(std::string_view(pending_).substr(0, pending_.size() - keep));
  pending_.erase(0, pending_.size() - keep);
  return target_->sputn(text.data(), static_cast<std::streamsize>(text.size())) ==
         static_cast<std::streamsize>(text.size());
}

LUtf8OutBuf::int_type LUtf8OutBuf::overflow(int_type c) {
  if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
  pending_.push_back(traits_type::to_char_type(c));
  return Pass(false) ? c : traits_type::eof();
}

std::streamsize LUtf8OutBuf::xsputn(const char* text, std::streamsize size) {
  pending_.append(text, static_cast<std::size_t>(size));
  return Pass(false) ? size : 0;
}

int LUtf8OutBuf::sync() { return target_->pubsync(); }
