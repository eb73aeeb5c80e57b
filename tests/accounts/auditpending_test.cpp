// The rule that keeps the audit trail in step with a document's record when the change between
// its entry and its save does not finish: a save without its entry gets it, with the change's
// own time; an entry whose save never came is followed by a "cancel" naming it; a record file
// created and left empty goes; and settling again adds nothing. A change of many entries of one
// record (a payment's applications) killed at any step ends with each entry written once exactly
// when the record was saved.
#include "accounts/auditpending.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "accounts/ledgerlock.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/hashtable.h"
#include "tests/support/killpoints.h"
#include "tests/support/testhome.h"

namespace {

class AuditPendingTest : public LHomeTest {
 protected:
  // Changes hold the ledger lock around their pending entry, as documents do.
  void SetUp() override {
    profile_ = std::make_unique<LProfile>(home_.SharedFolder());
    lock_ = std::make_unique<LLedgerLock>(*profile_);
  }
  std::string RecordPath() const { return home_.SharedFolder() + "/Bills.dat"; }
  std::vector<LHashTable> Entries() const {
    std::vector<LHashTable> entries;
    std::string log = LReadFile(home_.SharedFolder() + "/AuditTrail.log");
    for (std::size_t at = 0, end; (end = log.find('\n', at)) != std::string::npos; at = end + 1)
      entries.emplace_back().LoadHTTPString(log.substr(at, end - at));
    return entries;
  }
  static LAuditEvent Event(std::string action) { return {std::move(action), "Facture fournisseur PRC1", "2026-03-01", 4200, {}, {}, {}}; }
  // Saves the record as the store does: a new file renamed into place.
  void Save(const std::string& text) const { ASSERT_TRUE(LFile::WriteAllAtomic(RecordPath(), text)); }
  std::unique_ptr<LProfile> profile_;
  std::unique_ptr<LLedgerLock> lock_;
};

TEST_F(AuditPendingTest, TheTrailEndsSayingWhatTheRecordShows) {
  // A change whose save never came after its entry: a "cancel" names the entry.
  Save("Total=1");
  { LAuditPending edit(*profile_, Event("edit"), RecordPath()); ASSERT_TRUE(edit.Append()); }
  // A save whose entry the change never wrote: written on settling, with the change's own time.
  { LAuditPending edit(*profile_, Event("edit"), RecordPath()); Save("Total=1"); }
  // Entry and save both done, the same text saved again: nothing to add.
  {
    LAuditPending edit(*profile_, Event("edit"), RecordPath());
    ASSERT_TRUE(edit.Append());
    Save("Total=1");
  }
  std::vector<LHashTable> entries = Entries();
  ASSERT_EQ(entries.size(), 4u);
  EXPECT_STREQ(entries[0].GetString("Action", ""), "edit");
  EXPECT_STREQ(entries[1].GetString("Action", ""), "cancel");
  EXPECT_STREQ(entries[1].GetString("Lines", ""), "1");
  EXPECT_STREQ(entries[1].GetString("Reference", ""), "Facture fournisseur PRC1");
  EXPECT_STREQ(entries[2].GetString("Action", ""), "edit");
  EXPECT_STREQ(entries[3].GetString("Action", ""), "edit");
  EXPECT_EQ(LAuditVerify(*profile_).brokenEntry, 0);
}

TEST_F(AuditPendingTest, ARecordCreatedAndLeftEmptyGoesWithoutAnEntry) {
  {
    LAuditPending record(*profile_, Event("record"), RecordPath());
    LFileDescriptor taken(LRobustOpen(RecordPath(), O_WRONLY | O_CREAT | O_EXCL, 0666));
    ASSERT_TRUE(taken.IsOpen());  // the number taken, the document never written
  }
  EXPECT_FALSE(LFile::Exists(RecordPath()));
  EXPECT_TRUE(Entries().empty());
}

TEST_F(AuditPendingTest, EntriesOfAwkwardTextAreFoundAgainAndTheLastWordOnTheirDocumentRead) {
  // Every byte the encoding escapes, so that the note, the entry and their readers must agree.
  LAuditEvent deletion{"delete-document", "Facture fournisseur A&B=C+D%E é", "2026-03-01", -4200,
                       "Memo=a%26b+c\nd&Name=Caf\xc3\xa9", {}, {}};
  LAuditEvent record = deletion;
  record.action = "record";
  record.lines.clear();
  Save("Total=1");
  ASSERT_TRUE(LAuditAppend(*profile_, record));
  { LAuditPending refused(*profile_, deletion, RecordPath()); ASSERT_TRUE(refused.Append()); }
  EXPECT_FALSE(LAuditSaysDeleted(*profile_, "Facture fournisseur", "A&B=C+D%E é"));  // cancelled
  { LAuditPending cutShort(*profile_, deletion, RecordPath()); Save("Total=2"); }
  EXPECT_TRUE(LAuditSaysDeleted(*profile_, "Facture fournisseur", "A&B=C+D%E é"));
  EXPECT_FALSE(LAuditSaysDeleted(*profile_, "Facture fournisseur", "A&B=C+D%E"));
  {  // its entry found again: nothing added
    LAuditPending done(*profile_, deletion, RecordPath());
    ASSERT_TRUE(done.Append());
    Save("Total=3");
  }
  std::vector<LHashTable> entries = Entries();
  ASSERT_EQ(entries.size(), 5u);
  EXPECT_STREQ(entries[2].GetString("Action", ""), "cancel");
  EXPECT_STREQ(entries[3].GetString("Reference", ""), deletion.reference.c_str());
  EXPECT_STREQ(entries[3].GetString("Lines", ""), deletion.lines.c_str());
  EXPECT_STREQ(entries[3].GetString("Amount", ""), "-4200");
  EXPECT_EQ(LAuditVerify(*profile_).brokenEntry, 0);
}

TEST_F(AuditPendingTest, ManyEntriesOfOneChangeKilledAtAnyStepAreEachWrittenOnceWhenItsRecordWasSaved) {
  lock_.reset();  // the change takes the lock in its own process, the inspection after it
  // The same entry twice: each is its own, found after where it was noted.
  const std::vector<std::string> lines{"Facture 1=100", "Facture 1=0", "Facture 1=100"};
  std::size_t before = 0;  // entries of the earlier runs
  auto prepare = [&] {
    Save("Total=1");
    before = Entries().size();
  };
  auto change = [&] {
    LLedgerLock lock(*profile_);
    LAuditPending applications(*profile_, RecordPath());
    for (const std::string& line : lines)
      if (!applications.Add({"apply", "Paiement 7", "2026-03-01", 100, line, {}, {}})) return;
    (void)LFile::WriteAllAtomic(RecordPath(), "Total=2");
  };
  auto inspect = [&](const std::string& where) {
    SCOPED_TRACE(where);
    { LLedgerLock settling(*profile_); }
    bool saved = LReadFile(RecordPath()) == "Total=2";
    std::vector<LHashTable> entries = Entries();
    std::map<long long, std::string> linesOfSeq;  // of the entries standing, by "Seq"
    for (std::size_t i = before; i < entries.size(); ++i) {
      if (std::string(entries[i].GetString("Action", "")) == "cancel") linesOfSeq.erase(std::stoll(entries[i].GetString("Lines", "")));
      else linesOfSeq[std::stoll(entries[i].GetString("Seq", ""))] = entries[i].GetString("Lines", "");
    }
    std::vector<std::string> standing;
    for (const auto& [seq, line] : linesOfSeq) standing.push_back(line);
    EXPECT_EQ(standing, saved ? lines : std::vector<std::string>{});
    EXPECT_EQ(LAuditVerify(*profile_).brokenEntry, 0);
  };
  EXPECT_GT(LKillAtEachStep(prepare, change, inspect), 6);
}

}  // namespace
