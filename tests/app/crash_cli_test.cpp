// Invoices and payments recorded by the real binary, killed at random moments: afterwards, with
// no repair command, `kontavo check` finds every account balance equal to the journal and every
// customer balance equal to the documents, and says what it settled.
#include <signal.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <random>
#include <thread>
#include <string>
#include <vector>

#include "llib/gen/file.h"
#include "tests/support/testhome.h"

namespace {

class CrashCli : public LHomeTest {
 protected:
  void SetUp() override {
    ::setenv("KONTAVO_COUNTRY", "US", 1);
    ASSERT_EQ(LRunKontavo({"init"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"account", "defaults"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"customer", "add", "C1", "Name=Dupont"}).exitCode, 0);
  }
  static std::vector<std::string> Invoice() {
    return {KONTAVO_BIN, "invoice", "new", "--customer", "C1", "--date", "2026-01-05", "--line", "|x|3|12.50|Aucun|"};
  }
  static std::vector<std::string> Payment() {
    return {KONTAVO_BIN, "payment", "add", "--customer", "C1", "--amount", "20", "--date", "2026-01-06", "--auto"};
  }
};

TEST_F(CrashCli, KilledInvoicesAndPaymentsLeaveBooksTheNextCommandBringsInStep) {
  using Clock = std::chrono::steady_clock;
  // How long one whole recording takes here, so that the kills fall all over it.
  Clock::time_point start = Clock::now();
  ASSERT_EQ(LRunKontavo({"invoice", "new", "--customer", "C1", "--date", "2026-01-05", "--line", "|x|1|10|Aucun|"}).exitCode,
            0);
  long long runUs = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start).count();

  std::mt19937 random(25);
  std::string intents = home_.SharedFolder() + "/Ledger/Intents";
  int nLeft = 0, nKilled = 0;
  const Clock::time_point deadline = Clock::now() + std::chrono::seconds(90);
  for (int round = 0; round < 120 && Clock::now() < deadline; ++round) {
    std::vector<std::unique_ptr<LChildProcess>> runs;
    for (const auto& args : {Invoice(), Payment()})
      runs.push_back(std::make_unique<LChildProcess>(args[0], std::vector<std::string>(args.begin() + 1, args.end())));
    std::this_thread::sleep_for(std::chrono::microseconds(random() % (runUs + 1)));
    for (auto& run : runs) ::kill(run->Pid(), SIGKILL);
    for (auto& run : runs) nKilled += run->Wait() == 128 + SIGKILL;
    nLeft += static_cast<int>(LFile::ListFolder(intents).size());
  }
  EXPECT_GT(nKilled, 0);
  EXPECT_GT(nLeft, 0) << "no recording was ever killed midway: the test proved nothing";

  LRunResult check = LRunKontavo({"check"});
  EXPECT_EQ(check.exitCode, 0) << check.out << check.err;
  EXPECT_TRUE(LFile::ListFolder(intents).empty());
  // Nothing was left to repair: a second check is silent.
  LRunResult again = LRunKontavo({"check"});
  EXPECT_EQ(again.exitCode, 0) << again.out << again.err;
  EXPECT_EQ(again.err.find("interrompue"), std::string::npos) << again.err;
}

}  // namespace
