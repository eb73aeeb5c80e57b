// UTF-8 to ISO-8859-15: the eight signs where it departs from Latin-1 both ways, and nothing
// dropped silently (bad bytes and missing characters become counted "?").
#include "llib/gen/latin9.h"

#include <gtest/gtest.h>

TEST(Latin9, EncodesTheEuroSignsAndReplacesWhatItLacks) {
  std::string out;
  EXPECT_EQ(LUtf8ToLatin9("Éa€ŒœŠšŽžŸ", out), 0u);
  EXPECT_EQ(out, "\xC9" "a\xA4\xBC\xBD\xA6\xA8\xB4\xB8\xBE");
  out.clear();
  // "¤" and "½" are Latin-1 signs that Latin-9 gave up; "Ł" and "→" were never there; a lone
  // continuation byte and a cut sequence are not text.
  EXPECT_EQ(LUtf8ToLatin9("¤½Łx→\x80" "\xC3", out), 6u);
  EXPECT_EQ(out, "???x???");
}
