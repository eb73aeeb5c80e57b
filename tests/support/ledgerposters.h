// Test support: several processes posting into one business at once, each through the ledger's
// posting entry point (tests/programs/ledgerposter.cpp says what each one posts).
#pragma once

#include <string>

// Runs nProcesses posters on the business in folder at the same time, tagged "P0", "P1"..., each
// posting nEach transactions, and waits for them; a poster that fails fails the test.
void LRunLedgerPosters(const std::string& folder, int nProcesses, int nEach);
