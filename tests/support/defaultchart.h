// Test support: a business of a given country with that country's default chart of accounts.
#pragma once

class LProfile;

// Sets the business's "CountryCode" to countryCode ("FR") and creates its default chart; a step
// that fails fails the test.
void LSetUpDefaultChart(LProfile& profile, const char* countryCode);
