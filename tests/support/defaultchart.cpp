#include "tests/support/defaultchart.h"

#include <gtest/gtest.h>

#include "accounts/accounts.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"

void LSetUpDefaultChart(LProfile& profile, const char* countryCode) {
  LOptions options;
  options.OpenFrom(profile);
  options.SetString("CountryCode", countryCode);
  EXPECT_TRUE(options.Flush());
  EXPECT_TRUE(LAccountListCreateDefault(profile));
}
