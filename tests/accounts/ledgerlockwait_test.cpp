// A process that waited the whole ten seconds for the ledger lock goes on without it while the
// holder works: the holder's audit chain and its intent stay whole, the late posting is in its
// day file and the balances at once, and its entry joins the chain at the next holder's hand.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include "accounts/accounts.h"
#include "accounts/auditpending.h"
#include "accounts/audittrail.h"
#include "accounts/check.h"
#include "accounts/ledger.h"
#include "accounts/ledgerintent.h"
#include "accounts/ledgerlock.h"
#include "invoice/shared/profile.h"
#include "llib/gen/log.h"
#include "tests/support/testhome.h"

namespace {

LLedgerTransaction Rent(const std::string& date, const std::string& reference, long long amount) {
  LLedgerTransaction txn(date, reference, "General");
  txn.AddLine("6410", "Loyer", amount, "anne", "", "");
  txn.AddLine("1110", "Loyer", -amount, "anne", "", "");
  return txn;
}

class LedgerLockWaitTest : public LHomeTest {
 protected:
  void SetUp() override {
    profile_ = std::make_unique<LProfile>(home_.SharedFolder());
    EXPECT_TRUE(LAccountListCreateDefault(*profile_));
    LLogSetSink([this](LLogLevel, std::string_view text) { log_ += std::string(text) + "\n"; });
  }
  void TearDown() override { LLogSetSink(nullptr); }
  // The books agree with the journal, and nothing is left to settle.
  void ExpectInStep() {
    LBookCheckProcess data;
    data.profile = profile_.get();
    LProcessInterfaceVoid quiet;
    EXPECT_EQ(Process(quiet, data), kProcessFinished);
    EXPECT_TRUE(data.report.differences.empty()) << data.report.differences.front().key << " "
                                                 << data.report.differences.front().field;
    EXPECT_TRUE(data.report.problems.empty());
    EXPECT_EQ(LCountChangesLeft(home_.SharedFolder()), 0);
  }
  std::unique_ptr<LProfile> profile_;
  std::string log_;
};

// The holder posts all along another process's wait and after it has gone on, in one hold: the
// holder's entries and the late one never share a number, and the late entry is written once the
// lock is free. Then a holder killed midway while another process, and a thread of its own
// process recording a document, go on without the lock: its intent survives and is settled, and
// the document's entry is written by the next holder.
TEST_F(LedgerLockWaitTest, OneThatGoesOnWithoutTheLockLeavesTheHolderWhole) {
  std::string folder = home_.SharedFolder();
  int nHolder = 0;
  {
    LLedgerLock lock(*profile_);
    ASSERT_TRUE(lock.Locked());
    LChildProcess waiter(KONTAVO_PROGRAM_ledgerposter, {folder, "W", "1"});
    std::atomic<bool> gone{false};
    int status = -1;
    std::thread watch([&] {
      status = waiter.Wait();
      gone = true;
    });
    for (int after = 0; after < 3; after += gone) {  // and three more once it has gone on
      bool recorded = LAccountTransactionRecord(*profile_, Rent("2024-01-31", "H" + std::to_string(nHolder), 100));
      EXPECT_TRUE(recorded);
      if (!recorded) break;
      ++nHolder;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    watch.join();
    EXPECT_EQ(status, 0);
    EXPECT_GT(nHolder, 100);  // the holder posted all through the ten seconds
    LAuditVerifyResult held = LAuditVerify(*profile_);
    EXPECT_EQ(held.message, "");
    EXPECT_EQ(held.entryCount, nHolder);  // the late entry waits for the next holder
  }
  LLedgerSettleInterrupted(*profile_);
  LAuditVerifyResult settled = LAuditVerify(*profile_);
  EXPECT_EQ(settled.message, "");
  EXPECT_EQ(settled.entryCount, nHolder + 1);
  EXPECT_NE(log_.find("l'enregistrement de l'écriture W-0 du 2024-01-31, fait sans le verrou"), std::string::npos)
      << log_;
  LLedgerTransaction late;
  EXPECT_TRUE(LLedgerTransactionLoad(*profile_, late, "2024-01-31", "W-0"));
  ExpectInStep();

  // The holder dies with its rows written and its balances not, while the others go on.
  std::string document = folder + "/Facture7.dat";
  {
    LLedgerLock lock(*profile_);
    LChildProcess waiter(KONTAVO_PROGRAM_ledgerposter, {folder, "V", "1"});
    std::thread desk([&] {
      LProfile profile(folder);
      LLedgerLock late(profile);
      EXPECT_FALSE(late.Locked());
      LAuditPending audit(profile, {std::string(kAuditRecord), "Facture 7", "2024-03-01", 500, "", "", ""}, document);
      EXPECT_TRUE(audit.Append());
      LWriteFile(document, "Total=500\n");
    });
    LLedgerTransaction txn = Rent("2024-03-01", "HK", 4200);
    std::string rows;
    for (const auto& line : txn.Lines()) rows += line.BuildCSVRow();
    LLedgerIntent intent(*profile_);  // never ended
    intent.AddTransaction(txn, +1);
    ASSERT_TRUE(intent.BeginPosting(txn, 0, rows));
    LWriteFile(folder + "/Ledger/2024-03-01.csv", rows);
    EXPECT_EQ(waiter.Wait(), 0);
    desk.join();
  }
  LLedgerSettleInterrupted(*profile_);
  EXPECT_NE(log_.find("l'enregistrement de l'écriture HK du 2024-03-01, interrompue, a été achevée"), std::string::npos)
      << log_;
  EXPECT_NE(log_.find("l'entrée « record » de Facture 7, faite sans le verrou du grand livre, a été inscrite"),
            std::string::npos)
      << log_;
  LAuditVerifyResult last = LAuditVerify(*profile_);
  EXPECT_EQ(last.message, "");
  EXPECT_EQ(last.entryCount, nHolder + 3);  // and the two late ones
  ExpectInStep();
}

}  // namespace
