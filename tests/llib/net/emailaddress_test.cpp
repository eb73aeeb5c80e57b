#include "llib/net/emailaddress.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(EmailAddress, SingleAddressesFollowTheLocalPartAndDomainRules) {
  EXPECT_TRUE(LEmail::ValidateAddressSingle("jean.dupont@exemple.fr"));
  EXPECT_TRUE(LEmail::ValidateAddressSingle("a!#$%&'*+-/=?^_`{|}~z@sous-domaine.exemple.fr"));
  EXPECT_TRUE(LEmail::ValidateAddressSingle("1@2.3"));
  EXPECT_FALSE(LEmail::ValidateAddressSingle(""));
  EXPECT_FALSE(LEmail::ValidateAddressSingle("sans-arobase.exemple.fr"));
  EXPECT_FALSE(LEmail::ValidateAddressSingle("@exemple.fr"));
  EXPECT_FALSE(LEmail::ValidateAddressSingle(".jean@exemple.fr"));
  EXPECT_FALSE(LEmail::ValidateAddressSingle("jean.@exemple.fr"));
  EXPECT_FALSE(LEmail::ValidateAddressSingle("je..an@exemple.fr"));
  EXPECT_FALSE(LEmail::ValidateAddressSingle("jean(x)@exemple.fr"));
  EXPECT_FALSE(LEmail::ValidateAddressSingle("jean@exemple"));  // no '.'
  EXPECT_FALSE(LEmail::ValidateAddressSingle("jean@-exemple.fr"));
  EXPECT_FALSE(LEmail::ValidateAddressSingle("jean@exemple.fr-"));
  EXPECT_FALSE(LEmail::ValidateAddressSingle("jean@exemple..fr"));
  EXPECT_FALSE(LEmail::ValidateAddressSingle("jean@exem_ple.fr"));
  EXPECT_FALSE(LEmail::ValidateAddressSingle("jean@ex@emple.fr"));  // a second '@' sits in the domain
  EXPECT_FALSE(LEmail::ValidateAddressSingle("jean@exemple.fr\r\nRCPT TO:<x@y.z>"));
  EXPECT_FALSE(LEmail::ValidateAddressSingle("jéan@exemple.fr"));
}

TEST(EmailAddress, LengthLimitsOfLocalPartDomainAndWholeAddress) {
  std::string local64(64, 'a');
  EXPECT_TRUE(LEmail::ValidateAddressSingle(local64 + "@exemple.fr"));
  EXPECT_FALSE(LEmail::ValidateAddressSingle(local64 + "a@exemple.fr"));
  std::string domain255 = std::string(251, 'd') + ".com";
  EXPECT_TRUE(LEmail::ValidateAddressSingle("x@" + domain255));
  EXPECT_FALSE(LEmail::ValidateAddressSingle("x@d" + domain255));
  // The longest parts together make exactly the longest address.
  EXPECT_TRUE(LEmail::ValidateAddressSingle(local64 + "@" + domain255));
}

TEST(EmailAddress, ListsNeedACommaBetweenAddressesAndNoTrailingBlanks) {
  EXPECT_TRUE(LEmail::ValidateAddress("a@b.fr"));
  EXPECT_TRUE(LEmail::ValidateAddress("a@b.fr,c@d.fr"));
  EXPECT_TRUE(LEmail::ValidateAddress("a@b.fr, c@d.fr"));
  EXPECT_TRUE(LEmail::ValidateAddress("a@b.fr \t ,\t c@d.fr,e@f.fr"));
  EXPECT_FALSE(LEmail::ValidateAddress("a@b.fr, c@d.fr "));
  EXPECT_FALSE(LEmail::ValidateAddress("a@b.fr,"));
  EXPECT_FALSE(LEmail::ValidateAddress("a@b.fr, "));
  EXPECT_FALSE(LEmail::ValidateAddress("a@b.fr c@d.fr"));
  EXPECT_FALSE(LEmail::ValidateAddress("a@b.fr;c@d.fr"));
  EXPECT_FALSE(LEmail::ValidateAddress(" a@b.fr"));
  EXPECT_FALSE(LEmail::ValidateAddress(""));
  EXPECT_FALSE(LEmail::ValidateAddress("a@b.fr,,c@d.fr"));
  EXPECT_FALSE(LEmail::ValidateAddress("a@b.fr, bad"));
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
  LEmailAddressListIterator empty("");
  EXPECT_FALSE(empty.Next(address));
}

}  // namespace
