#include "llib/gen/trim.h"

#include <gtest/gtest.h>

#include <string>

using namespace std::string_view_literals;

TEST(Trim, TakesOnlyTheNamedBlanksOffTheEnds) {
  EXPECT_EQ(LTrim(" \t 12 34\r\n"), "12 34");
  EXPECT_EQ(LTrim(" \t\r\n"), "");
  EXPECT_EQ(LTrim(""), "");
  EXPECT_EQ(LTrim("\vx\f"), "\vx\f");  // not blanks of typed text
  EXPECT_EQ(LTrim("\vx\f", kTrimSpaces), "x");
  EXPECT_EQ(LTrim("\t a \t", " "), "\t a \t");
  EXPECT_EQ(LTrim("  a b  ", " "), "a b");
}

TEST(Trim, ControlsAreEveryByteUpToTheSpaceAndNoneAbove) {
  EXPECT_EQ(LTrimControls("\0\x01\x1f a\x7f \x20"sv), "a\x7f");
  EXPECT_EQ(LTrimControls("\0\t \n"sv), "");
  EXPECT_EQ(LTrimControls("\xc2\xa0x\xc2\xa0"), "\xc2\xa0x\xc2\xa0");  // a no-break space is text
}
