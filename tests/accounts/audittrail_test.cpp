// The audit trail: what postings, deletions and renumbering write into it, and the chain that
// `audit verify` checks: every tampered byte, removed entry and swapped pair is found, and
// processes posting in turn or at once leave a chain that holds.
#include "accounts/audittrail.h"

#include <gtest/gtest.h>

#include <memory>

#include "accounts/accountrenumber.h"
#include "accounts/accounts.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "accounts/ledgerlock.h"
#include "invoice/shared/profile.h"
#include "llib/gen/hashtable.h"
#include "tests/support/ledgerposters.h"
#include "tests/support/testhome.h"

namespace {

class AuditTrailTest : public LHomeTest {
 protected:
  void SetUp() override {
    profile_ = std::make_unique<LProfile>(home_.SharedFolder());
    EXPECT_TRUE(LAccountListCreateDefault(*profile_));
  }
  void Post(const std::string& date, const std::string& reference, long long amount) {
    LLedgerTransaction txn(date, reference, "General");
    txn.AddLine("6410", "Loyer", amount, "anne", "", "");
    txn.AddLine("1110", "Loyer", -amount, "anne", "", "");
    ASSERT_TRUE(LAccountTransactionRecord(*profile_, txn));
  }
  std::string LogPath() const { return home_.SharedFolder() + "/AuditTrail.log"; }
  std::string HeadPath() const { return home_.SharedFolder() + "/AuditTrail.head"; }
  std::vector<std::string> Entries() const {
    std::vector<std::string> entries;
    std::string log = LReadFile(LogPath());
    for (std::size_t at = 0, end; at < log.size(); at = end + 1) {
      end = log.find('\n', at);
      entries.push_back(log.substr(at, end - at));
    }
    return entries;
  }
  static std::string Joined(const std::vector<std::string>& entries) {
    std::string text;
    for (const auto& entry : entries) text += entry + "\n";
    return text;
  }
  std::unique_ptr<LProfile> profile_;
};

TEST_F(AuditTrailTest, PostingsDeletionsAndRenumberingAreChained) {
  EXPECT_EQ(LAuditVerify(*profile_).entryCount, 0);  // books without a trail: an empty chain
  Post("2026-03-01", "GJ1", 12000);
  Post("2026-03-02", "GJ2", 500);
  ASSERT_TRUE(LAccountTransactionDelete(*profile_, "2026-03-02", "gj2"));
  LAccountRenumberProcess renumber{profile_.get(), "6410", "6411"};
  LProcessInterfaceVoid quiet;
  ASSERT_EQ(Process(quiet, renumber), kProcessFinished);

  std::vector<std::string> entries = Entries();
  ASSERT_EQ(entries.size(), 4u);
  LHashTable first, deleted, renumbered;
  first.LoadHTTPString(entries[0]);
  deleted.LoadHTTPString(entries[2]);
  renumbered.LoadHTTPString(entries[3]);
  EXPECT_STREQ(first.GetString("Action", ""), "post");
  EXPECT_STREQ(first.GetString("Reference", ""), "GJ1");
  EXPECT_STREQ(first.GetString("Amount", ""), "12000");
  EXPECT_STREQ(first.GetString("Seq", ""), "1");
  EXPECT_EQ(first.GetString("Prev", ""), kAuditFirstPrev);
  // A deletion keeps the rows it took out, as the day file held them.
  EXPECT_STREQ(deleted.GetString("Action", ""), "delete");
  EXPECT_STREQ(deleted.GetString("Lines", ""),
               "\"2026-03-02\",\"GJ2\",\"General\",\"6410\",\"\",\"Loyer\",\"+5.00\",\"Tax=&UserName=anne\",\"\"\r\n"
               "\"2026-03-02\",\"GJ2\",\"General\",\"1110\",\"\",\"Loyer\",\"-5.00\",\"Tax=&UserName=anne\",\"\"\r\n");
  EXPECT_EQ(deleted.GetString("Prev", ""), LAuditHash(entries[1]));
  EXPECT_STREQ(renumbered.GetString("Action", ""), "renumber");
  EXPECT_STREQ(renumbered.GetString("Reference", ""), "6410 -> 6411");

  LAuditVerifyResult result = LAuditVerify(*profile_);
  EXPECT_EQ(result.entryCount, 4);
  EXPECT_EQ(result.brokenEntry, 0);
  EXPECT_EQ(result.message, "");
}

TEST_F(AuditTrailTest, EveryTamperedByteRemovalAndSwapIsFound) {
  Post("2026-03-01", "GJ1", 12000);
  Post("2026-03-02", "GJ2", 500);
  Post("2026-03-03", "GJ3", 7);
  const std::string log = LReadFile(LogPath());
  const std::string head = LReadFile(HeadPath());
  ASSERT_TRUE(LAuditVerifyText(log, head).message.empty());

  for (std::size_t at = 0; at < log.size(); ++at) {
    std::string tampered = log;
    tampered[at] = tampered[at] == 'x' ? 'y' : 'x';
    EXPECT_NE(LAuditVerifyText(tampered, head).brokenEntry, 0) << "byte " << at << " changed unnoticed";
  }
  std::vector<std::string> entries = Entries();
  for (std::size_t removed = 0; removed < entries.size(); ++removed) {
    std::vector<std::string> shorter = entries;
    shorter.erase(shorter.begin() + static_cast<long>(removed));
    LAuditVerifyResult result = LAuditVerifyText(Joined(shorter), head);
    EXPECT_EQ(result.brokenEntry, removed == 2 ? 2 : static_cast<long long>(removed + 1)) << result.message;
  }
  std::vector<std::string> swapped = {entries[1], entries[0], entries[2]};
  LAuditVerifyResult result = LAuditVerifyText(Joined(swapped), head);
  EXPECT_EQ(result.brokenEntry, 1);
  EXPECT_EQ(result.message, "Piste d'audit rompue à l'entrée 1 : numéro d'ordre « 2 » au lieu de 1 (entrée "
                            "supprimée, déplacée ou modifiée).");
  // The middle entry rewritten with a correct number: its successor's link names it.
  std::string forged = entries[1];
  forged.replace(forged.find("Amount=500"), 10, "Amount=900");
  result = LAuditVerifyText(Joined({entries[0], forged, entries[2]}), head);
  EXPECT_EQ(result.message, "Piste d'audit rompue à l'entrée 3 : son empreinte de l'entrée précédente ne "
                            "correspond pas (entrée 2 ou 3 modifiée).");
  // The last entry cut off: the head still names it.
  result = LAuditVerifyText(Joined({entries[0], entries[1]}), head);
  EXPECT_EQ(result.message, "Piste d'audit rompue à l'entrée 2 : la dernière entrée ne correspond pas à la tête "
                            "de la piste (entrée modifiée, ou entrées suivantes supprimées).");
}

// A process keeps the end of the trail as it last left it; entries that another process wrote
// since are read before its next entry, whether that entry records a posting or a deletion, and
// whether it comes first or later in a hold of the ledger lock.
TEST_F(AuditTrailTest, EntriesOfAnotherProcessInBetweenAreFollowed) {
  auto postElsewhere = [&](const std::string& tag, int count) {
    LChildProcess poster(KONTAVO_PROGRAM_ledgerposter, {home_.SharedFolder(), tag, std::to_string(count)});
    EXPECT_EQ(poster.Wait(), 0);
  };
  Post("2026-03-01", "GJ1", 100);
  postElsewhere("A", 2);
  Post("2026-03-02", "GJ2", 200);
  postElsewhere("B", 2);
  ASSERT_TRUE(LAccountTransactionDelete(*profile_, "2026-03-02", "GJ2"));
  postElsewhere("C", 1);
  {
    LLedgerLock lock(*profile_);
    Post("2026-03-03", "GJ3", 300);
    Post("2026-03-04", "GJ4", 400);
  }
  LAuditVerifyResult result = LAuditVerify(*profile_);
  EXPECT_EQ(result.message, "");
  EXPECT_EQ(result.entryCount, 10);
}

TEST_F(AuditTrailTest, AnEntryTornByAKilledWriterIsCutOffBeforeTheNextIsChained) {
  Post("2026-03-01", "GJ1", 100);
  Post("2026-03-02", "GJ2", 200);
  std::vector<std::string> entries = Entries();
  ASSERT_EQ(entries.size(), 2u);
  // What a writer killed between two pages of its entry leaves: the first part of a line.
  std::string whole = LReadFile(LogPath());
  LWriteFile(LogPath(), whole + entries[1].substr(0, entries[1].size() / 2));
  Post("2026-03-03", "GJ3", 300);
  LAuditVerifyResult result = LAuditVerify(*profile_);
  EXPECT_EQ(result.message, "");
  EXPECT_EQ(result.entryCount, 3);
  EXPECT_EQ(LReadFile(LogPath()).substr(0, whole.size()), whole);
}

TEST_F(AuditTrailTest, FourProcessesPostingAtOnceLeaveOneValidChain) {
  constexpr int kProcesses = 4;
  constexpr int kEach = 60;
  LRunLedgerPosters(home_.SharedFolder(), kProcesses, kEach);
  LAuditVerifyResult result = LAuditVerify(*profile_);
  EXPECT_EQ(result.message, "");
  EXPECT_EQ(result.entryCount, kProcesses * kEach);
}

}  // namespace
