#include "app/startwizardledger.h"

// The ledger and tax modules are not part of this build yet: nothing to hand over to.

void LStartWizardCreateDefaultAccounts(LProfile&) {}

void LStartWizardSetOpeningBalance(LProfile&, std::string_view, long long) {}

void LStartWizardSetProvinceTaxRates(LProfile&, int) {}
