#include "llib/gen/textcase.h"

#include <gtest/gtest.h>

using namespace std::string_view_literals;

TEST(TextCase, FoldsOnlyAsciiLettersAndComparesWholeLengths) {
  EXPECT_TRUE(LSameText("Content-Type", "content-TYPE"));
  EXPECT_TRUE(LSameText("", ""));
  EXPECT_FALSE(LSameText("FA-1", "FA-12"));
  EXPECT_FALSE(LSameText("É", "é"));  // UTF-8 letters are not folded
  EXPECT_FALSE(LSameText("\xc9", "\xe9"));  // nor Latin-1 ones
  EXPECT_FALSE(LSameText("@", "`"));  // the bytes beside A and Z stay apart
  EXPECT_FALSE(LSameText("[", "{"));
  EXPECT_TRUE(LSameText("a\0b"sv, "A\0B"sv));  // an inner NUL is compared, not an end
  EXPECT_FALSE(LSameText("a\0b"sv, "a\0c"sv));
  EXPECT_EQ(LLowerText("FA-12 Été @[`{"), "fa-12 Été @[`{");  // only A-Z change
  EXPECT_EQ(LLowerText("\xc9T\xc9"), "\xc9t\xc9");
}

TEST(TextCase, PrefixesAndSuffixesMatchAtTheirEndOnly) {
  EXPECT_TRUE(LStartsWithText("Multipart/Form-Data; boundary=x", "multipart/form-data"));
  EXPECT_TRUE(LStartsWithText("abc", ""));
  EXPECT_FALSE(LStartsWithText("mul", "multipart"));
  EXPECT_TRUE(LEndsWithText("message.WAV", ".wav"));
  EXPECT_FALSE(LEndsWithText("wav", ".wav"));
  EXPECT_FALSE(LEndsWithText("a.wav.txt", ".wav"));
}
