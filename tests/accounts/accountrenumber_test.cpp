// A renumbering killed at each of its writes, renames and truncations in turn: the next holder of
// the ledger lock finishes it or finds that it never began, from the renumbering's own notes;
// either way one number is left in the whole ledger, the balances equal the journal, and the
// trail announces the renumbering (not cancelled) exactly when it took place.
#include "accounts/accountrenumber.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "accounts/accounts.h"
#include "accounts/audittrail.h"
#include "accounts/check.h"
#include "accounts/ledger.h"
#include "accounts/ledgerintent.h"
#include "accounts/ledgeriterator.h"
#include "invoice/shared/profile.h"
#include "llib/gen/log.h"
#include "tests/support/killpoints.h"
#include "tests/support/testhome.h"

namespace {

constexpr int kDays = 4;

class AccountRenumberTest : public LHomeTest {
 protected:
  void SetUp() override {
    profile_ = std::make_unique<LProfile>(home_.SharedFolder());
    ASSERT_TRUE(LAccountListCreateDefault(*profile_));
    for (int day = 1; day <= kDays; ++day) {
      LLedgerTransaction txn("2024-03-0" + std::to_string(day), "R" + std::to_string(day), "General");
      txn.AddLine("6410", "Loyer", 100 * day, "anne", "", "");
      txn.AddLine("1110", "Loyer", -100 * day, "anne", "", "");
      ASSERT_TRUE(LAccountTransactionRecord(*profile_, txn));
    }
    LLogSetSink([this](LLogLevel, std::string_view text) { log_ += std::string(text) + "\n"; });
  }
  void TearDown() override { LLogSetSink(nullptr); }
  bool Exists(const std::string& number) const { return LAccountList(*profile_).TestRecordExists(number); }
  std::unique_ptr<LProfile> profile_;
  std::string log_;
};

// The trail after size: announcements of "from -> to" less the cancelled ones.
int AnnouncementsStanding(const LProfile& profile, long long size, const std::string& reference) {
  std::string text = LAuditReadFrom(profile, size);
  int standing = 0;
  for (std::size_t at = 0, end; (end = text.find('\n', at)) != std::string::npos; at = end + 1) {
    std::string_view entry = std::string_view(text).substr(at, end - at);
    if (LAuditField(entry, "Reference") != reference) continue;
    std::string action = LAuditField(entry, "Action");
    standing += action == kAuditRenumber ? 1 : action == kAuditCancel ? -1 : 0;
  }
  return standing;
}

TEST_F(AccountRenumberTest, KilledAtAnyStepItIsFinishedOrNeverBeganAndTheTrailSaysWhich) {
  std::string from, to;
  long long trailSize = 0;
  int nFinished = 0, nNeverBegan = 0, nCancelled = 0;
  auto prepare = [&] {
    from = Exists("6410") ? "6410" : "6411";
    to = from == "6410" ? "6411" : "6410";
    trailSize = LAuditLogSize(*profile_);
    log_.clear();
  };
  auto change = [&] {
    LAccountRenumberProcess data{profile_.get(), from, to};
    LProcessInterfaceVoid quiet;
    (void)Process(quiet, data);
  };
  auto inspect = [&](const std::string& where) {
    SCOPED_TRACE("killed at " + where);
    LLedgerSettleInterrupted(*profile_);
    bool moved = Exists(to);
    EXPECT_NE(moved, Exists(from)) << "one record, under one number";
    std::string number = moved ? to : from, other = moved ? from : to;
    int nRows = 0;
    LLedgerAccountLineIterator it(*profile_, "", "");
    for (it.SkipToValidLine(); it.valid; it.SkipToValidLine()) {
      EXPECT_NE(it.line.account, other) << it.line.date;
      nRows += it.line.account == number;
    }
    EXPECT_EQ(nRows, kDays);
    EXPECT_EQ(AnnouncementsStanding(*profile_, trailSize, from + " -> " + to), moved ? 1 : 0);
    LAuditVerifyResult verified = LAuditVerify(*profile_);
    EXPECT_EQ(verified.message, "");
    LBookCheckProcess check;
    check.profile = profile_.get();
    LProcessInterfaceVoid quiet;
    EXPECT_EQ(Process(quiet, check), kProcessFinished);
    EXPECT_TRUE(check.report.differences.empty());
    EXPECT_TRUE(check.report.problems.empty());
    EXPECT_EQ(LCountChangesLeft(home_.SharedFolder()), 0);
    nFinished += log_.find("interrompu, a été achevé") != std::string::npos;
    nNeverBegan += log_.find("interrompu avant d'avoir commencé, n'a pas eu lieu") != std::string::npos;
    nCancelled += LAuditReadFrom(*profile_, trailSize).find("Action=cancel") != std::string::npos;
  };
  EXPECT_GT(LKillAtEachStep(prepare, change, inspect), kDays);
  EXPECT_GT(nFinished, kDays);  // each day file's rewrite
  EXPECT_GT(nNeverBegan, 0);
  EXPECT_GT(nCancelled, 0);  // killed between its announcement and its begun note
}

}  // namespace
