// An account renumbered by the real binary while this process holds the ledger lock and posts to
// that very account: the renumbering waits the whole ten seconds, goes on without the lock, and
// must neither break the holder's audit chain nor lose or misfile a posting the holder made
// before, during or after it.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "accounts/accounts.h"
#include "accounts/audittrail.h"
#include "accounts/ledger.h"
#include "accounts/ledgerintent.h"
#include "accounts/ledgeriterator.h"
#include "accounts/ledgerlock.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "tests/support/testhome.h"

namespace {

constexpr int kDays = 28;  // day files the renumbering rewrites, and the holder posts into

std::string Day(int n) {
  char date[16];
  std::snprintf(date, sizeof date, "2025-02-%02d", 1 + n % kDays);
  return date;
}

bool PostTaxi(LProfile& profile, const std::string& reference, int n) {
  LLedgerTransaction txn(Day(n), reference, "General");
  txn.AddLine("6251", "Taxi", 1000 + n, "anne", "", "");
  txn.AddLine("5300", "Taxi", -1000 - n, "anne", "", "");
  return LAccountTransactionRecord(profile, txn);
}

// The holder posts to the account all through the other's wait, and three times more once the
// record has its new key (the number it posts to is then gone): the holder's chain is its own
// while it holds; afterwards the announcement has joined it once, every posting names the new
// number, and `check` finds the balances equal to the journal.
TEST(RenumberLockWait, ARenumberingPastTheWaitLeavesTheHoldersPostingsAndChainWhole) {
  LTempHome home;
  ASSERT_EQ(LRunKontavo({"init"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"account", "defaults"}).exitCode, 0);
  std::string folder = home.SharedFolder();
  LProfile profile(folder);
  ASSERT_TRUE(LCreateAccount(profile, "6251", "Voyages", kAccountExpense, false, 1, kClassificationNone));
  ASSERT_TRUE(LCreateAccount(profile, "5300", "Caisse", kAccountAsset, true, 0, kClassificationNone));
  for (int day = 0; day < kDays; ++day) ASSERT_TRUE(PostTaxi(profile, "T" + std::to_string(day), day));
  long long nBefore = LAuditVerify(profile).entryCount;

  int nHolder = 0;
  int status = -1;
  std::atomic<bool> gone{false};
  LChildProcess renumber(KONTAVO_BIN, {"account", "edit", "6251", "--number", "6252", "--yes"});
  std::thread watch;
  {
    LLedgerLock lock(profile);
    ASSERT_TRUE(lock.Locked());
    watch = std::thread([&] {
      status = renumber.Wait();
      gone = true;
    });
    auto renumbered = [&] { return LFile::Exists(folder + "/Accounts/6252.dat"); };
    for (int after = 0; after < 3 && !gone; after += renumbered()) {
      bool posted = PostTaxi(profile, "H" + std::to_string(nHolder), nHolder);
      EXPECT_TRUE(posted);
      if (!posted) break;
      ++nHolder;
      std::this_thread::sleep_for(std::chrono::milliseconds(40));
    }
    EXPECT_TRUE(renumbered()) << "the renumbering never went on without the lock";
    EXPECT_GT(nHolder, 100);  // the holder posted all through the ten seconds
    LAuditVerifyResult held = LAuditVerify(profile);
    EXPECT_EQ(held.message, "");
    EXPECT_EQ(held.entryCount, nBefore + nHolder);  // the announcement waits for the next holder
  }
  // Let go while the command still runs: its next hold of the lock (the opening balance) settles
  // what it left.
  watch.join();
  EXPECT_EQ(status, 0);
  LLedgerSettleInterrupted(profile);
  EXPECT_EQ(LCountChangesLeft(folder), 0);

  LAuditVerifyResult settled = LAuditVerify(profile);
  EXPECT_EQ(settled.message, "");
  EXPECT_EQ(settled.entryCount, nBefore + nHolder + 1);
  std::string trail = LReadFile(folder + "/AuditTrail.log");
  std::size_t announced = trail.find("Action=renumber&");
  EXPECT_NE(announced, std::string::npos);
  EXPECT_EQ(trail.find("Action=renumber&", announced + 1), std::string::npos) << "announced twice";

  int nRows = 0;
  LLedgerAccountLineIterator it(profile, "", "");
  for (it.SkipToValidLine(); it.valid; it.SkipToValidLine()) {
    EXPECT_NE(it.line.account, "6251") << it.line.date << " " << it.line.reference << " names the number left";
    nRows += it.line.account == "6252";
  }
  EXPECT_EQ(nRows, kDays + nHolder);
  EXPECT_FALSE(LFile::Exists(folder + "/Accounts/6251.dat"));
  LRunResult check = LRunKontavo({"check"});
  EXPECT_EQ(check.exitCode, 0) << check.out << check.err;
  LRunResult audit = LRunKontavo({"audit", "verify"});
  EXPECT_EQ(audit.exitCode, 0) << audit.out << audit.err;
}

}  // namespace
