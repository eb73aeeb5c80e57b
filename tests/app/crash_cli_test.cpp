// Invoices recorded, edited and deleted and payments recorded by the real binary, killed at random
// moments: afterwards, with no repair command, `kontavo check` finds every account balance equal
// to the journal and every customer balance equal to the documents, and says what it settled;
// every invoice and payment has exactly its posting, no posting is left without its document, and
// the audit trail's chain holds.
#include <signal.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "accounts/ledger.h"
#include "accounts/ledgeriterator.h"
#include "invoice/sales/salesposting.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/filestore.h"
#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

using LPosting = std::pair<std::string, std::string>;  // date, reference

class CrashCli : public LHomeTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(LRunKontavo({"init"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"account", "defaults"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"customer", "add", "C1", "Name=Dupont"}).exitCode, 0);
  }
  // The keys of the recorded invoices now.
  std::vector<std::string> InvoiceKeys() const {
    std::vector<std::string> keys;
    for (const std::string& name : LFile::ListFolder(home_.SharedFolder() + "/Invoices"))
      if (name.ends_with(".dat")) keys.push_back(name.substr(0, name.size() - 4));
    return keys;
  }
  static std::vector<std::string> Invoice(int n) {
    return {"invoice", "new", "--customer", "C1", "--date", "2026-01-05", "--line",
            "|x|" + std::to_string(1 + n % 4) + "|12.50|Aucun|"};
  }
  static std::vector<std::string> Edit(const std::string& key, int n) {
    return {"invoice", "edit", key, "--customer", "C1", "--date", "2026-01-0" + std::to_string(1 + n % 9),
            "--line", "|x|" + std::to_string(2 + n % 5) + "|7.25|Aucun|"};
  }
  static std::vector<std::string> Delete(const std::string& key) { return {"invoice", "delete", key}; }
  static std::vector<std::string> Payment() {
    return {"payment", "add", "--customer", "C1", "--amount", "20", "--date", "2026-01-06", "--auto"};
  }
  LEnvScope country_{"KONTAVO_COUNTRY", "US"};
};

// Every recorded document of list has its reference and the ledger holds exactly the transaction
// its posting builds; returns their places.
std::set<LPosting> ExpectPostedAsBuilt(LProfile& profile, std::string_view list) {
  std::set<LPosting> places;
  LSalesDocument document;
  for (LFileStoreIteratorBase it(profile.MainList(list), document); document.IsAttached(); it.Next(document)) {
    std::string reference = document.GetString("JournalTxnRef");
    EXPECT_FALSE(reference.empty()) << list << " " << document.GetPrimaryKey() << " was never posted";
    LLedgerTransaction built, posted;
    if (list == kPaymentsList) LPaymentBuildTransaction(profile, document, reference, "", built);
    else LSalesDocumentBuildTransaction(profile, document, false, document.GetDate(), reference, "", built);
    EXPECT_TRUE(LLedgerTransactionLoad(profile, posted, document.GetDate(), reference));
    EXPECT_TRUE(LLedgerTransactionEqual(posted, built)) << list << " " << document.GetPrimaryKey();
    places.insert({document.GetDate(), reference});
  }
  document.Invalidate();
  return places;
}

TEST_F(CrashCli, KilledSalesChangesLeaveDocumentsAndPostingsTheNextCommandBringsInStep) {
  using Clock = std::chrono::steady_clock;
  // How long one whole recording takes here, so that the kills fall all over it.
  Clock::time_point start = Clock::now();
  ASSERT_EQ(LRunKontavo(Invoice(0)).exitCode, 0);
  long long runUs = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - start).count();

  std::mt19937 random(25);
  std::string intents = home_.SharedFolder() + "/Ledger/Intents";
  std::string lockFile = home_.SharedFolder() + "/Ledger/Ledger.lock";  // holds a posting's intent
  int nLeft = 0, nKilled = 0;
  const Clock::time_point deadline = Clock::now() + std::chrono::seconds(120);
  for (int round = 0; round < 150 && Clock::now() < deadline; ++round) {
    std::vector<std::string> keys = InvoiceKeys();
    std::vector<std::vector<std::string>> commands{Invoice(round), Payment()};
    if (keys.size() > 1) {
      commands.push_back(Edit(keys[random() % keys.size()], round));
      if (round % 2 == 0) commands.push_back(Delete(keys[random() % keys.size()]));
    }
    std::vector<std::unique_ptr<LChildProcess>> runs;
    for (const auto& args : commands) runs.push_back(std::make_unique<LChildProcess>(KONTAVO_BIN, args));
    std::this_thread::sleep_for(std::chrono::microseconds(random() % (runUs + 1)));
    for (auto& run : runs) ::kill(run->Pid(), SIGKILL);
    for (auto& run : runs) nKilled += run->Wait() == 128 + SIGKILL;
    nLeft += static_cast<int>(LFile::ListFolder(intents).size()) + !LReadFile(lockFile).empty();
  }
  EXPECT_GT(nKilled, 0);
  EXPECT_GT(nLeft, 0) << "no recording was ever killed midway: the test proved nothing";

  LRunResult check = LRunKontavo({"check"});
  EXPECT_EQ(check.exitCode, 0) << check.out << check.err;
  EXPECT_TRUE(LFile::ListFolder(intents).empty());
  EXPECT_EQ(LReadFile(lockFile), "");
  // Nothing was left to repair: a second check is silent.
  LRunResult again = LRunKontavo({"check"});
  EXPECT_EQ(again.exitCode, 0) << again.out << again.err;
  EXPECT_EQ(again.err.find("interrompue"), std::string::npos) << again.err;
  LRunResult audit = LRunKontavo({"audit", "verify"});
  EXPECT_EQ(audit.exitCode, 0) << audit.out << audit.err;

  // The documents and the ledger agree both ways.
  LProfile profile(home_.SharedFolder());
  std::set<LPosting> invoices = ExpectPostedAsBuilt(profile, "Invoices");
  std::set<LPosting> payments = ExpectPostedAsBuilt(profile, kPaymentsList);
  EXPECT_GT(invoices.size(), 1u);
  std::set<LPosting> sales, receipts;
  LLedgerAccountLineIterator it(profile, "", "");
  for (it.SkipToValidLine(); it.valid; it.SkipToValidLine()) {
    if (it.line.type == kTxnTypeSales) sales.insert({it.line.date, it.line.reference});
    if (it.line.type == kTxnTypeReceipt) receipts.insert({it.line.date, it.line.reference});
  }
  EXPECT_EQ(sales, invoices);
  EXPECT_EQ(receipts, payments);
}

}  // namespace
