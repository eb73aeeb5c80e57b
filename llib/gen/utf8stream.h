// Output that is UTF-8 whatever the records hold. A stream buffer put in front of another (the
// command line's standard output and error) passes every valid UTF-8 character and reads every
// other byte as Windows-1252 (LTextAsUtf8), so that a name an older program stored in Latin-1
// prints as it was meant instead of as bytes a terminal cannot show. Nothing is kept back but the
// start of a character whose end has not been written yet, so the order of what is written to
// the target and beside it stays as it was.
//
//     LUtf8OutBuf out(std::cout.rdbuf());
//     std::ostream stream(&out);
//     stream << customerName;  // "Soci\xE9t\xE9" comes out as "Société"
#pragma once

#include <streambuf>
#include <string>

class LUtf8OutBuf : public std::streambuf {
 public:
  // target: where the text goes (not owned; must outlive this buffer).
  explicit LUtf8OutBuf(std::streambuf* target) : target_(target) {}
  // Writes a character left unfinished as the bytes it holds, each read as Windows-1252.
  ~LUtf8OutBuf() override;
  LUtf8OutBuf(const LUtf8OutBuf&) = delete;
  LUtf8OutBuf& operator=(const LUtf8OutBuf&) = delete;

 protected:
  int_type overflow(int_type c) override;
  std::streamsize xsputn(const char* text, std::streamsize size) override;
  int sync() override;

 private:
  // Writes pending_ but the start of a character still unfinished at its end (all of it when
  // whole). false when the target refused.
  bool Pass(bool whole);

  std::streambuf* target_;
  std::string pending_;  // bytes written and not yet passed on: at most an unfinished character
};
