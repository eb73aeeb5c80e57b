// Conversions and recurring runs made by processes that waited the whole ten seconds for the ledger
// lock and went on without it, all at once: three desks turning one quote into an invoice, three
// billing one purchase order, three running the recurring invoices. The ledger lock no longer
// makes their "made already?" test and their mark one step: the source's own lock must. Exactly one
// invoice comes from the quote, one bill from the order and one occurrence from the template's due
// date, the others are refused or find nothing due, and once the lock is free the next command
// settles what the late changes left and `kontavo check` finds the books whole.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "accounts/ledgerlock.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/recurring.h"
#include "llib/gen/date.h"
#include "llib/gen/filestore.h"
#include "tests/app/clitest.h"
#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

class ConversionLockWait : public LHomeTest {
 protected:
  void SetUp() override {
    for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
             {"init"},
             {"account", "defaults"},
             {"customer", "add", "C1", "Name=Dupont"},
             {"supplier", "add", "S1", "Name=Fournil"},
             {"item", "add", "P1", "--description", "Pain", "--price", "12.50"},
             WithLines({"quote", "new", "--customer", "C1", "--untaxed"}, "P1|Pain|4|12.50|Aucun|"),
             WithLines({"porder", "new", "--customer", "S1", "--date", kOrdered}, "P1|Farine|10|2|Aucun|"),
             WithLines({"invoice", "new", "--customer", "C1", "--date", kOrdered, "--untaxed"}, "P1|Abonnement|1|50|Aucun|"),
             {"recurring", "add", "--invoice", "1", "--start", due_, "--interval", "2"}})
      (void)LExpectSuccess(args);
    ASSERT_FALSE(HasFailure());
  }
  // Documents of many lines, so that making one from them takes long enough for the late desks,
  // started one after another, to be at it together.
  static std::vector<std::string> WithLines(std::vector<std::string> args, const std::string& line) {
    for (int n = 0; n < 300; ++n) args.insert(args.end(), {"--line", line});
    return args;
  }
  // The records of list whose field holds value.
  int Count(std::string_view list, std::string_view field, const std::string& value) {
    LProfile profile(home_.SharedFolder());
    int n = 0;
    LRecord record;
    for (LFileStoreIteratorBase it(profile.MainList(list), record); record.IsAttached(); it.Next(record))
      n += record.GetString(field) == value;
    return n;
  }
  std::string Field(std::string_view list, const std::string& key, std::string_view field) {
    LProfile profile(home_.SharedFolder());
    LRecord record;
    if (!profile.MainList(list).Open(record, key)) return "<absent>";
    record.DetachWithoutSave();
    return record.GetString(field);
  }

  static constexpr const char* kOrdered = "2026-01-02";
  // Monthly from ten days ago: due once, the next date a month ahead.
  const std::string due_ = LDate::Today().AddDays(-10).ToText();
  LEnvScope country_{"KONTAVO_COUNTRY", "US"};
};

TEST_F(ConversionLockWait, LateConversionsAndRunsMakeOneDocumentPerSource) {
  const std::vector<std::vector<std::string>> desks{{"quote", "convert", "1"}, {"porder", "bill", "1"}, {"recurring", "run"}};
  constexpr int kEach = 3;
  std::vector<std::vector<std::string>> made(desks.size());  // what each kind of desk printed
  std::vector<int> nSucceeded(desks.size(), 0);
  LProfile profile(home_.SharedFolder());
  {
    LLedgerLock lock(profile);
    ASSERT_TRUE(lock.Locked());
    std::vector<std::unique_ptr<LChildProcess>> runs;
    for (int round = 0; round < kEach; ++round)
      for (const auto& args : desks) runs.push_back(std::make_unique<LChildProcess>(KONTAVO_BIN, args));
    for (std::size_t i = 0; i < runs.size(); ++i) {
      std::size_t desk = i % desks.size();
      nSucceeded[desk] += runs[i]->Wait() == 0;
      for (std::string line = runs[i]->ReadLine(); !line.empty(); line = runs[i]->ReadLine()) made[desk].push_back(line);
    }
    // They went on without the lock: their changes wait for the next holder.
    EXPECT_GT(LCountChangesLeft(home_.SharedFolder()), 0);
  }

  LRunResult check = LRunKontavo({"check"});
  EXPECT_EQ(check.exitCode, 0) << check.out << check.err;
  LRunResult again = LRunKontavo({"check"});
  EXPECT_EQ(again.exitCode, 0) << again.out << again.err;
  EXPECT_EQ(again.err, "");  // the first settled everything
  EXPECT_EQ(LCountChangesLeft(home_.SharedFolder()), 0);

  // One invoice from the quote, the one the quote names; the other desks were refused.
  EXPECT_EQ(nSucceeded[0], 1);
  EXPECT_EQ(made[0], std::vector<std::string>{Field("Quotes", "1", "InvoiceNumber")});
  EXPECT_EQ(Count("Invoices", "QuoteNumber", "1"), 1);
  // One bill from the purchase order, the one it names.
  EXPECT_EQ(nSucceeded[1], 1);
  EXPECT_EQ(made[1], std::vector<std::string>{Field("POrders", "1", "BillNumber")});
  EXPECT_EQ(Count("Bills", "POrderNumber", "1"), 1);
  // One occurrence of the due date; the runs that lost found nothing left to record.
  EXPECT_EQ(nSucceeded[2], kEach);
  EXPECT_EQ(made[2].size(), 1u);
  EXPECT_EQ(Count("Invoices", "Date", due_), 1);
  EXPECT_EQ(Field(kRecurringInvoicesList, "1", "RecurLast"), due_);
}

}  // namespace
