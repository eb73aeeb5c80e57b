#include "tests/support/ledgerposters.h"

#include <memory>
#include <vector>

#include "tests/support/testhome.h"

void LRunLedgerPosters(const std::string& folder, int nProcesses, int nEach) {
  std::vector<std::unique_ptr<LChildProcess>> posters;
  for (int p = 0; p < nProcesses; ++p)
    posters.push_back(std::make_unique<LChildProcess>(
        KONTAVO_PROGRAM_ledgerposter, std::vector<std::string>{folder, "P" + std::to_string(p), std::to_string(nEach)}));
  for (auto& poster : posters) EXPECT_EQ(poster->Wait(), 0);
}
