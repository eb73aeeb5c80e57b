#include "llib/net/emailaddress.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// Local part of atext runs joined by single dots; a domain of letters, digits and inner
// hyphens with at least one dot; nothing else (no second "@", no line break, no byte >= 128).
TEST(EmailAddress, SingleAddressesFollowTheLocalPartAndDomainRules) {
  for (const char* good : {"jean.dupont@exemple.fr", "a!#$%&'*+-/=?^_`{|}~z@sous-domaine.exemple.fr", "1@2.3"})
    EXPECT_TRUE(LEmail::ValidateAddressSingle(good)) << good;
  for (const char* bad : {"", "sans-arobase.exemple.fr", "@exemple.fr", ".jean@exemple.fr", "jean.@exemple.fr",
                          "je..an@exemple.fr", "jean(x)@exemple.fr", "jean@exemple", "jean@-exemple.fr",
                          "jean@exemple.fr-", "jean@exemple..fr", "jean@exem_ple.fr", "jean@ex@emple.fr",
                          "jean@exemple.fr\r\nRCPT TO:<x@y.z>", "jéan@exemple.fr"})
    EXPECT_FALSE(LEmail::ValidateAddressSingle(bad)) << bad;
}

TEST(EmailAddress, LengthLimitsOfLocalPartDomainAndWholeAddress) {
  std::string local64(64, 'a');
  EXPECT_TRUE(LEmail::ValidateAddressSingle(local64 + "@exemple.fr"));
  EXPECT_FALSE(LEmail::ValidateAddressSingle(local64 + "a@exemple.fr"));
  std::string domain255 = std::string(251, 'd') + ".com";
  EXPECT_FALSE(LEmail::ValidateAddressSingle("x@d" + domain255));
  // The longest parts together make exactly the longest address.
  EXPECT_TRUE(LEmail::ValidateAddressSingle(local64 + "@" + domain255));
}

// Blanks may stand before a comma and after it, never at either end of the list.
TEST(EmailAddress, ListsNeedACommaBetweenAddressesAndNoTrailingBlanks) {
  for (const char* good : {"a@b.fr", "a@b.fr,c@d.fr", "a@b.fr, c@d.fr", "a@b.fr \t ,\t c@d.fr,e@f.fr"})
    EXPECT_TRUE(LEmail::ValidateAddress(good)) << good;
  for (const char* bad : {"a@b.fr, c@d.fr ", "a@b.fr,", "a@b.fr, ", "a@b.fr c@d.fr", "a@b.fr;c@d.fr", " a@b.fr", "",
                          "a@b.fr,,c@d.fr", "a@b.fr, bad"})
    EXPECT_FALSE(LEmail::ValidateAddress(bad)) << bad;
}

TEST(EmailAddress, AtextIsDigitsLettersAndTheListedSigns) {
  std::string atext;
  for (int c = 0; c < 256; ++c)
    if (LEmail::IsAtextCharacter(static_cast<char>(c))) atext.push_back(static_cast<char>(c));
  EXPECT_EQ(atext, "!#$%&'*+-/0123456789=?ABCDEFGHIJKLMNOPQRSTUVWXYZ^_`abcdefghijklmnopqrstuvwxyz{|}~");
}

TEST(EmailAddress, IteratorTrimsAndSkipsEmptyEntries) {
  std::vector<std::string> found;
  std::string address;
  for (LEmailAddressListIterator it(" a@b.fr ,,\tc@d.fr,  , e "); it.Next(address);) found.push_back(address);
  EXPECT_EQ(found, (std::vector<std::string>{"a@b.fr", "c@d.fr", "e"}));
}

}  // namespace
