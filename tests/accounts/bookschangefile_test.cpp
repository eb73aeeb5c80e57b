// The change files a process keeps between its changes: one file serves change after change
// (emptied, never removed), changes at once get a file each, a change left to the settler is
// settled from its notes, and an empty file whose process died is only removed.
#include "accounts/bookschangefile.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "accounts/ledgerintent.h"
#include "accounts/ledgerlock.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "tests/support/testhome.h"

namespace {

constexpr std::string_view kExtension = ".changetest";
std::vector<std::string> settled;  // the notes the test settler was given, in order

void TestSettler(const LProfile&, const std::vector<std::string>& notes) {
  settled.insert(settled.end(), notes.begin(), notes.end());
}

class BooksChangeFileTest : public LHomeTest {
 protected:
  void SetUp() override {
    profile_ = std::make_unique<LProfile>(home_.SharedFolder());
    LLedgerAddIntentSettler(kExtension, TestSettler);
    settled.clear();
  }
  std::string Folder() const { return home_.SharedFolder() + "/Ledger/Intents"; }
  std::unique_ptr<LProfile> profile_;
};

TEST_F(BooksChangeFileTest, OneFileServesChangeAfterChangeAndChangesAtOnceGetOneEach) {
  std::string first;
  for (int change = 0; change < 3; ++change) {
    LBooksChangeIntent intent(*profile_, kExtension);
    ASSERT_TRUE(intent.Note("note\t" + std::to_string(change)));
    std::vector<std::string> names = LFile::ListFolder(Folder());
    ASSERT_EQ(names.size(), 1u);
    if (change == 0) first = names[0];
    EXPECT_EQ(names[0], first);
    // Written from the start: the notes of the change before are gone.
    EXPECT_EQ(LReadFile(Folder() + "/" + first), "note\t" + std::to_string(change) + "\n");
  }
  EXPECT_EQ(LReadFile(Folder() + "/" + first), "");
  {
    LBooksChangeIntent outer(*profile_, kExtension);
    LBooksChangeIntent inner(*profile_, kExtension);
    EXPECT_TRUE(outer.Note("outer") && inner.Note("inner"));
    EXPECT_EQ(LFile::ListFolder(Folder()).size(), 2u);
  }
  // Files of a live process are its own: taking the ledger lock neither settles nor removes them.
  { LLedgerLock lock(*profile_); }
  EXPECT_EQ(LFile::ListFolder(Folder()).size(), 2u);
  EXPECT_TRUE(settled.empty());
}

TEST_F(BooksChangeFileTest, ALeftChangeIsSettledAndAnEmptyFileOfADeadProcessRemoved) {
  {
    LBooksChangeIntent intent(*profile_, kExtension);
    ASSERT_TRUE(intent.Note("left\tB7"));
    intent.Keep();
  }
  // A process killed between two changes leaves its file empty and unlocked.
  LWriteFile(Folder() + "/999999-0" + std::string(kExtension), "");
  int nSettled = 0;
  {
    LLedgerLock lock(*profile_);  // settles what it finds
    nSettled = LLedgerSettleIntents(*profile_);
  }
  EXPECT_EQ(settled, std::vector<std::string>{"left\tB7"});
  EXPECT_EQ(nSettled, 0);  // all was settled when the lock was taken
  EXPECT_TRUE(LFile::ListFolder(Folder()).empty());
  // A later change takes a new file: the one left was the settler's.
  LBooksChangeIntent next(*profile_, kExtension);
  EXPECT_TRUE(next.Note("next"));
  EXPECT_EQ(settled.size(), 1u);
}

}  // namespace
