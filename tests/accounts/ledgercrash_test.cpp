// Postings and deletions against failures and crashes: a write, rename or record save refused on
// any call leaves books that agree with their journal (the change is whole or absent); a disk
// that is really full refuses the posting with a French message and changes nothing; and
// processes killed at random moments leave books that the next command brings in step by
// itself, logging what it settled.
#include <fcntl.h>
#include <signal.h>
#include <sys/mount.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <chrono>
#include <filesystem>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "accounts/accounts.h"
#include "accounts/check.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "accounts/ledgerintent.h"
#include "accounts/ledgerlock.h"
#include "invoice/shared/profile.h"
#include "llib/gen/file.h"
#include "llib/gen/log.h"
#include "llib/gen/syscallfault.h"
#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

void CreateChart(LProfile& profile) {
  for (const char* number : {"1110", "1120", "1130"})
    EXPECT_TRUE(LCreateAccount(profile, number, number, kAccountAsset, true, 0, kClassificationNone));
  for (const char* number : {"6410", "6420"})
    EXPECT_TRUE(LCreateAccount(profile, number, number, kAccountExpense, false, 1, kClassificationNone));
}

LLedgerTransaction Rent(const std::string& date, const std::string& reference, long long amount) {
  LLedgerTransaction txn(date, reference, "General");
  txn.AddLine("6410", "Loyer", amount, "anne", "", "");
  txn.AddLine("1110", "Loyer", -amount, "anne", "", "");
  return txn;
}

LCheckReport Check(LProfile& profile) {
  LBookCheckProcess data;
  data.profile = &profile;
  LProcessInterfaceVoid process;
  EXPECT_EQ(Process(process, data), kProcessFinished);
  return data.report;
}

// Every file of the business folder but the lock and the intents, with its content.
std::map<std::string, std::string> Snapshot(const std::string& folder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    std::string path = entry.path().string();
    if (entry.is_regular_file() && !path.ends_with("Ledger.lock")) files[path] = LReadFile(path);
  }
  return files;
}

class LedgerCrashTest : public LHomeTest {
 protected:
  void SetUp() override {
    CreateChart(profile_);
    LLogSetSink([this](LLogLevel, std::string_view text) { log_ += std::string(text) + "\n"; });
  }
  void TearDown() override {
    LSyscallFaultDisarm();
    LLogSetSink(nullptr);
  }
  LProfile profile_;
  std::string log_;
};

// Whichever write, rename or truncate of a posting or a deletion fails: a refused change leaves
// every file as it was; an accepted one may leave balances unsaved, and the next holder of the
// ledger lock (here the check) settles them; either way the check then finds the balances equal
// to the journal.
TEST_F(LedgerCrashTest, AFailureOnAnyCallLeavesBooksInStepWithTheJournal) {
  ASSERT_TRUE(LAccountTransactionRecord(profile_, Rent("2024-03-01", "GJ0", 700)));
  int nRefused = 0, nSettled = 0;
  for (LSyscall kind : {LSyscall::kWrite, LSyscall::kRename}) {
    for (unsigned nth = 1; nth <= 6; ++nth) {
      for (bool deleting : {false, true}) {
        std::string reference = "GJ" + std::to_string(nth) + (kind == LSyscall::kWrite ? "w" : "r");
        if (deleting) {
          ASSERT_TRUE(LAccountTransactionRecord(profile_, Rent("2024-03-01", reference, 300)));
        }
        std::map<std::string, std::string> before = Snapshot(home_.SharedFolder());
        LSyscallFaultArm(kind, nth, ENOSPC);
        bool done = deleting ? LAccountTransactionDelete(profile_, "2024-03-01", reference)
                             : LAccountTransactionRecord(profile_, Rent("2024-03-01", reference, 4200));
        LSyscallFaultDisarm();
        if (!done) {
          ++nRefused;
          EXPECT_EQ(Snapshot(home_.SharedFolder()), before) << reference << (deleting ? " deleted" : " posted");
        }
        std::size_t logged = log_.size();
        LCheckReport report = Check(profile_);
        nSettled += log_.find("interrompue", logged) != std::string::npos;
        EXPECT_TRUE(report.differences.empty()) << reference << (deleting ? " deleted" : " posted");
        EXPECT_TRUE(report.problems.empty()) << reference;
        EXPECT_EQ(LLedgerTransactionTestExists(profile_, "2024-03-01", reference), done != deleting) << reference;
      }
    }
  }
  // The failures fell both before the change (refused) and after it (settled later).
  EXPECT_GT(nRefused, 0);
  EXPECT_GT(nSettled, 0);
  EXPECT_NE(log_.find("espace disque insuffisant"), std::string::npos);
}

// A posting killed after its intent: with no row written, or only part of them, it is undone (the
// day file cut back to where it was); with every row written, it is completed. Either way the
// balances then agree with the day file, and settling twice changes nothing.
TEST_F(LedgerCrashTest, AnInterruptedPostingIsCompletedOrUndoneByWhatTheDayFileHolds) {
  ASSERT_TRUE(LAccountTransactionRecord(profile_, Rent("2024-03-01", "GJ0", 700)));
  std::string day = home_.SharedFolder() + "/Ledger/2024-03-01.csv";
  std::string before = LReadFile(day);
  for (std::size_t written : {std::size_t{0}, std::size_t{50}, std::string::npos}) {
    LLedgerTransaction txn = Rent("2024-03-01", "GJ" + std::to_string(written), 4200);
    std::string rows;
    for (const auto& line : txn.Lines()) rows += line.BuildCSVRow();
    {
      LLedgerLock lock(profile_);
      LLedgerIntent intent(profile_);  // never ended: the process dies here
      intent.AddTransaction(txn, +1);
      ASSERT_TRUE(intent.BeginPosting(txn, static_cast<long long>(LReadFile(day).size()), rows));
      LWriteFile(day, LReadFile(day) + rows.substr(0, written));
    }
    std::size_t logged = log_.size();
    LLedgerSettleInterrupted(profile_);
    bool whole = written == std::string::npos;
    EXPECT_NE(log_.find(whole ? "achevée" : "annulée", logged), std::string::npos) << log_;
    if (!whole) {
      EXPECT_EQ(LReadFile(day), before);
    }
    before = LReadFile(day);
    LLedgerSettleInterrupted(profile_);
    LCheckReport report = Check(profile_);
    EXPECT_TRUE(report.differences.empty()) << written;
    EXPECT_TRUE(report.problems.empty()) << written;
  }
}

// The lock file is never cut: an intent ended is marked by a line end over its first byte, and a
// shorter intent written later leaves the end of the longer one after its own line end. A holder
// killed after such an intent is settled by that intent alone, and the mark it leaves once settled
// (as any writer killed before its intent was whole leaves it) holds no intent.
TEST_F(LedgerCrashTest, AnIntentIsTheLockFilesFirstLineWhateverALongerOneLeftAfterIt) {
  LLedgerTransaction wide("2024-03-01", "GJ1", "General");
  for (const char* number : {"6410", "6420", "1110", "1120"})
    wide.AddLine(number, "Loyer et charges du trimestre", number[0] == '6' ? 5000 : -5000, "anne", "", "");
  ASSERT_TRUE(LAccountTransactionRecord(profile_, wide));
  std::string day = home_.SharedFolder() + "/Ledger/2024-03-01.csv";
  LLedgerTransaction txn = Rent("2024-03-01", "GJ2", 4200);
  std::string rows;
  for (const auto& line : txn.Lines()) rows += line.BuildCSVRow();
  {
    LLedgerLock lock(profile_);
    LLedgerIntent intent(profile_);  // never ended: the holder dies with its rows written
    intent.AddTransaction(txn, +1);
    ASSERT_TRUE(intent.BeginPosting(txn, static_cast<long long>(LReadFile(day).size()), rows));
    LWriteFile(day, LReadFile(day) + rows);
  }
  std::string intentText = LLedgerIntentLeft(home_.SharedFolder());
  ASSERT_NE(intentText.find("GJ2"), std::string::npos);
  std::string lockFile = LReadFile(home_.SharedFolder() + "/Ledger/Ledger.lock");
  ASSERT_GT(lockFile.size(), intentText.size() + 1) << "the wide posting's intent left nothing after the short one";
  std::size_t logged = log_.size();
  LLedgerSettleInterrupted(profile_);
  EXPECT_NE(log_.find("GJ2 du 2024-03-01, interrompue, a été achevée", logged), std::string::npos) << log_;
  EXPECT_EQ(LLedgerIntentLeft(home_.SharedFolder()), "");
  logged = log_.size();
  LLedgerSettleInterrupted(profile_);
  EXPECT_EQ(log_.find("interrompue", logged), std::string::npos) << log_;
  LCheckReport report = Check(profile_);
  EXPECT_TRUE(report.differences.empty());
  EXPECT_TRUE(report.problems.empty());
}

// The figures an intent carries add as balances do, held at the 64-bit limits: lines whose sum
// passes them, settled onto a total already near them, leave the total held, never wrapped to a
// negative (nor undefined: UBSan runs this in the sanitized build).
TEST_F(LedgerCrashTest, IntentFiguresBeyondSixtyFourBitsAreHeldNotWrapped) {
  constexpr long long kHeld = std::numeric_limits<long long>::max();
  for (auto [number, total] : {std::pair{"6410", kHeld - 10}, {"1110", 100LL}}) {
    LAccount account;
    ASSERT_TRUE(LAccountList(profile_).Open(account, number));
    account.SetInt64("TotalBalance", total);
    ASSERT_TRUE(account.Flush());
  }
  LLedgerTransaction txn("2024-03-01", "GJ9", "General");
  txn.AddLine("6410", "Loyer", kHeld - 1, "anne", "", "");
  txn.AddLine("6410", "Loyer", kHeld - 1, "anne", "", "");
  txn.AddLine("1110", "Loyer", -kHeld, "anne", "", "");
  std::string day = home_.SharedFolder() + "/Ledger/2024-03-01.csv";
  std::string rows;
  for (const auto& line : txn.Lines()) rows += line.BuildCSVRow();
  {
    LLedgerLock lock(profile_);
    LLedgerIntent intent(profile_);  // never ended: the process dies with its rows written
    intent.AddTransaction(txn, -1);
    ASSERT_TRUE(intent.BeginPosting(txn, 0, rows));
    LWriteFile(day, rows);
  }
  LLedgerSettleInterrupted(profile_);
  LAccount rent, bank;
  ASSERT_TRUE(LAccountList(profile_).Open(rent, "6410"));
  ASSERT_TRUE(LAccountList(profile_).Open(bank, "1110"));
  EXPECT_EQ(rent.GetTotalBalance(), -10);    // kHeld - 10 moved by the two lines' sum, held at -kHeld
  EXPECT_EQ(bank.GetTotalBalance(), kHeld);  // 100 moved by kHeld: held
}

// A real full disk (a small tmpfs): the posting is refused with the reason in French, the day
// file and the balances are as they were, and once room is made the same posting goes through.
TEST(LedgerFullDisk, APostingOnAFullDiskIsRefusedAndChangesNothing) {
  LTempHome outer;
  std::string mountPoint = outer.Path() + "/disk";
  ASSERT_TRUE(LFile::MakeFolder(mountPoint));
  if (::mount("tmpfs", mountPoint.c_str(), "tmpfs", 0, "size=512k") != 0)
    GTEST_SKIP() << "no tmpfs can be mounted here (" << std::strerror(errno) << "); the fault injection tests stand in";
  {
    LEnvScope home("KONTAVO_HOME", mountPoint.c_str());
    std::string log;
    LLogSetSink([&log](LLogLevel, std::string_view text) { log += std::string(text) + "\n"; });
    LProfile profile;
    CreateChart(profile);
    ASSERT_TRUE(LAccountTransactionRecord(profile, Rent("2024-03-01", "GJ1", 500)));
    std::string filler = mountPoint + "/filler";
    {
      LFileDescriptor fd(LRobustOpen(filler, O_WRONLY | O_CREAT, 0600));
      std::string block(4096, 'x');
      while (LRobustWrite(fd.Get(), block.data(), block.size())) {
      }
      EXPECT_EQ(errno, ENOSPC);
    }
    std::map<std::string, std::string> before = Snapshot(profile.GetDataStore().GetFolder());
    LLedgerTransaction big = Rent("2024-03-01", "GJ2", 900);
    for (int i = 0; i < 40; ++i) big.AddLine("1120", std::string(200, 'd'), 0, "anne", "", "");
    EXPECT_FALSE(LAccountTransactionRecord(profile, big));
    EXPECT_EQ(Snapshot(profile.GetDataStore().GetFolder()), before);
    EXPECT_NE(log.find("espace disque insuffisant"), std::string::npos) << log;
    ::unlink(filler.c_str());
    EXPECT_TRUE(LAccountTransactionRecord(profile, big));
    LCheckReport report = Check(profile);
    EXPECT_TRUE(report.differences.empty());
    EXPECT_TRUE(report.problems.empty());
    LLogSetSink(nullptr);
  }
  LLedgerLetGoOfFiles();  // postings keep the lock file and the audit trail open
  EXPECT_EQ(::umount(mountPoint.c_str()), 0);
}

// Posters (one of them also deleting) killed at random moments, round after round: afterwards,
// with no repair command, `kontavo check` finds every balance equal to the journal and says
// what it settled, and so does every later command.
TEST_F(LedgerCrashTest, KilledPostersLeaveBooksTheNextCommandBringsInStep) {
  constexpr int kRounds = 40;
  constexpr int kProcesses = 3;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  std::mt19937 random(17);
  std::string intents = home_.SharedFolder() + "/Ledger/Intents";
  int nLeft = 0;
  for (int round = 0; round < kRounds && std::chrono::steady_clock::now() < deadline; ++round) {
    long long before = LAuditTrailSize(home_.SharedFolder());
    std::vector<std::unique_ptr<LChildProcess>> posters;
    for (int p = 0; p < kProcesses; ++p) {
      std::vector<std::string> args{home_.SharedFolder(), "R" + std::to_string(round) + "P" + std::to_string(p),
                                    "100000"};
      if (p == 0) args.push_back("delete");
      posters.push_back(std::make_unique<LChildProcess>(KONTAVO_PROGRAM_ledgerposter, args));
    }
    LWaitForWork([&] { return LAuditTrailSize(home_.SharedFolder()) != before; });
    LSleepMs(random() % 40);
    for (auto& poster : posters) ::kill(poster->Pid(), SIGKILL);
    for (auto& poster : posters) EXPECT_EQ(poster->Wait(), 128 + SIGKILL);
    nLeft += LCountChangesLeft(home_.SharedFolder());
  }
  EXPECT_GT(nLeft, 0) << "no poster was ever killed midway: the test proved nothing";

  LRunResult check = LRunKontavo({"check"});
  EXPECT_EQ(check.exitCode, 0) << check.out << check.err;
  EXPECT_TRUE(LFile::ListFolder(intents).empty());
  EXPECT_EQ(LLedgerIntentLeft(home_.SharedFolder()), "");
  LCheckReport report = Check(profile_);
  EXPECT_TRUE(report.differences.empty());
  EXPECT_TRUE(report.problems.empty());
  EXPECT_GT(report.nRows, 0);
}

}  // namespace
