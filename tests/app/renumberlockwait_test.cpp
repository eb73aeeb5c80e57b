// An account renumbered by the real binary while this process holds the ledger lock and posts to
// that very account: the renumbering waits the whole ten seconds, goes on without the lock, and
// must neither break the holder's audit chain nor lose or misfile a posting the holder made
// before, during or after it; killed midway, it is finished by the next holder all the same.
// Until then neither of its numbers may serve another account: the holder's creating one is
// refused.
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "accounts/accountrenumber.h"
#include "accounts/accounts.h"
#include "accounts/accountsdlg.h"
#include "accounts/audittrail.h"
#include "accounts/ledger.h"
#include "accounts/ledgerintent.h"
#include "accounts/ledgeriterator.h"
#include "accounts/ledgerlock.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/filelock.h"
#include "llib/gen/log.h"
#include "tests/support/testhome.h"

namespace {

constexpr int kDays = 28;  // day files the renumbering rewrites, and the holder posts into

std::string Day(int n) {
  char date[16];
  std::snprintf(date, sizeof date, "2025-02-%02d", 1 + n % kDays);
  return date;
}

class RenumberLockWait : public LHomeTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(LRunKontavo({"init"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"account", "defaults"}).exitCode, 0);
    ASSERT_TRUE(LCreateAccount(profile_, "6251", "Voyages", kAccountExpense, false, 1, kClassificationNone));
    ASSERT_TRUE(LCreateAccount(profile_, "5300", "Caisse", kAccountAsset, true, 0, kClassificationNone));
    for (int day = 0; day < kDays; ++day) ASSERT_TRUE(PostTaxi("6251", "T" + std::to_string(day), day));
    LLogSetSink([this](LLogLevel, std::string_view text) { log_ += std::string(text) + "\n"; });
  }
  void TearDown() override { LLogSetSink(nullptr); }

  bool PostTaxi(const std::string& account, const std::string& reference, int n) {
    LLedgerTransaction txn(Day(n), reference, "General");
    txn.AddLine(account, "Taxi", 1000 + n, "anne", "", "");
    txn.AddLine("5300", "Taxi", -1000 - n, "anne", "", "");
    return LAccountTransactionRecord(profile_, txn);
  }
  // Whether the holder can create an account under number now; message set when refused.
  bool Create(const std::string& number, std::string& message) {
    LNewAccountDlg dialog;
    dialog.name = "Voyages à l'étranger";
    dialog.type = kAccountExpense;
    dialog.subTypeEntry = 2;
    dialog.number = number;
    return dialog.CmAddNewAcct(profile_, &message);
  }
  bool Exists(const std::string& number) const { return LFile::Exists(folder_ + "/Accounts/" + number + ".dat"); }
  // Whether a renumbering has noted that it began: its files may change from now on.
  bool RenumberingBegun() const {
    std::string intents = folder_ + "/Ledger/Intents/";
    for (const std::string& name : LFile::ListFolder(intents))
      if (name.ends_with(".renumber") && LReadFile(intents + name).find("\nbegun") != std::string::npos) return true;
    return false;
  }
  // Once every change is settled: the rows all name number, none the other, the chain holds with
  // entries numbers, and `check` finds the balances equal to the journal.
  void ExpectSettledUnder(const std::string& number, const std::string& other, int nRows, long long entries) {
    EXPECT_EQ(LCountChangesLeft(folder_), 0);
    LAuditVerifyResult settled = LAuditVerify(profile_);
    EXPECT_EQ(settled.message, "");
    EXPECT_EQ(settled.entryCount, entries);
    int nFound = 0;
    LLedgerAccountLineIterator it(profile_, "", "");
    for (it.SkipToValidLine(); it.valid; it.SkipToValidLine()) {
      EXPECT_NE(it.line.account, other) << it.line.date << " " << it.line.reference << " names the number left";
      nFound += it.line.account == number;
    }
    EXPECT_EQ(nFound, nRows);
    EXPECT_TRUE(Exists(number));
    EXPECT_FALSE(Exists(other));
    LRunResult check = LRunKontavo({"check"});
    EXPECT_EQ(check.exitCode, 0) << check.out << check.err;
    LRunResult audit = LRunKontavo({"audit", "verify"});
    EXPECT_EQ(audit.exitCode, 0) << audit.out << audit.err;
  }

  std::string folder_ = home_.SharedFolder();
  LProfile profile_{folder_};
  std::string log_;
};

// The holder posts to the account all through the other's wait, and three times more once the
// record has its new key (the number it posts to is then gone): the holder's chain is its own
// while it holds; afterwards the announcement has joined it once, every posting names the new
// number, and `check` finds the balances equal to the journal. Then the same back, killed while
// it waits for the last day file: the next holder finishes it.
TEST_F(RenumberLockWait, ARenumberingPastTheWaitLeavesTheHoldersPostingsAndChainWhole) {
  long long nBefore = LAuditVerify(profile_).entryCount;
  int nHolder = 0;
  int status = -1;
  std::atomic<bool> gone{false};
  LChildProcess renumber(KONTAVO_BIN, {"account", "edit", "6251", "--number", "6252", "--yes"});
  std::thread watch;
  {
    LLedgerLock lock(profile_);
    EXPECT_TRUE(lock.Locked());
    watch = std::thread([&] {
      status = renumber.Wait();
      gone = true;
    });
    for (int after = 0; after < 3 && !gone; after += Exists("6252")) {
      bool posted = PostTaxi("6251", "H" + std::to_string(nHolder), nHolder);
      EXPECT_TRUE(posted);
      if (!posted) break;
      ++nHolder;
      std::this_thread::sleep_for(std::chrono::milliseconds(40));
    }
    EXPECT_TRUE(Exists("6252")) << "the renumbering never went on without the lock";
    EXPECT_GT(nHolder, 100);  // the holder posted all through the ten seconds
    LAuditVerifyResult held = LAuditVerify(profile_);
    EXPECT_EQ(held.message, "");
    EXPECT_EQ(held.entryCount, nBefore + nHolder);  // the announcement waits for the next holder
    // The number freed is still the renumbered account's: its settle moves every row under it.
    std::string refused;
    EXPECT_FALSE(Create("6251", refused));
    EXPECT_NE(refused.find("Le numéro 6251 ne peut pas servir pour l'instant : le changement de numéro du compte 6251 "
                           "en 6252 n'est pas encore achevé."), std::string::npos) << refused;
  }
  // Let go while the command still runs: its next hold of the lock (the opening balance) settles
  // what it left.
  watch.join();
  EXPECT_EQ(status, 0);
  LLedgerSettleInterrupted(profile_);
  ExpectSettledUnder("6252", "6251", kDays + nHolder, nBefore + nHolder + 1);
  std::string trail = LReadFile(folder_ + "/AuditTrail.log");
  EXPECT_NE(trail.find("Action=renumber&"), std::string::npos);

  // Back, stopped at the last day file (this process holds its lock) and killed there.
  nBefore += nHolder + 1;
  int nBack = 0;
  {
    LLedgerLock lock(profile_);
    EXPECT_TRUE(lock.Locked());
    LChildProcess back(KONTAVO_BIN, {"account", "edit", "6252", "--number", "6251", "--yes"});
    LLockedFile lastDay(folder_ + "/Ledger/" + Day(kDays - 1) + ".csv", O_RDWR, LOCK_EX, 0);
    EXPECT_TRUE(lastDay.Locked());
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(40);
    // The holder posts on the other days, into files the renumbering has passed or not yet.
    for (; !RenumberingBegun() && std::chrono::steady_clock::now() < deadline; ++nBack) {
      EXPECT_TRUE(PostTaxi("6252", "B" + std::to_string(nBack), nBack % (kDays - 1)));
      std::this_thread::sleep_for(std::chrono::milliseconds(40));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(300));  // at the last day file by now
    ::kill(back.Pid(), SIGKILL);
    EXPECT_EQ(back.Wait(), 128 + SIGKILL);
    lastDay.Close();
    EXPECT_TRUE(Exists("6252")) << "the renumbering was not stopped midway";
    for (int after = 0; after < 3; ++after, ++nBack) EXPECT_TRUE(PostTaxi("6252", "B" + std::to_string(nBack), nBack));
    EXPECT_EQ(LAuditVerify(profile_).entryCount, nBefore + nBack);
    std::string refused;  // the number it takes: an account there would keep the record from it
    EXPECT_FALSE(Create("6251", refused));
    EXPECT_NE(refused.find("compte 6252 en 6251 n'est pas encore achevé"), std::string::npos) << refused;
  }
  // Free of the lock, the number's check settles the renumbering, and it serves again.
  std::string message;
  EXPECT_TRUE(LAccountNumberClearOfRenumbering(profile_, "6252", &message)) << message;
  EXPECT_NE(log_.find("6252 en 6251, fait sans le verrou du grand livre et interrompu, a été achevé"), std::string::npos)
      << log_;
  EXPECT_EQ(log_.find("Une modification des documents a été interrompue"), std::string::npos) << log_;  // its own line says it
  ExpectSettledUnder("6251", "6252", kDays + nHolder + nBack, nBefore + nBack + 1);
}

}  // namespace
