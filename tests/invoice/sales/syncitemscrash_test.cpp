// A business with a linked client: invoices recorded, edited and deleted, each stopped at every
// one of its writes by a kill. The next opener (here the check, which takes the ledger lock) must
// leave the linked client's view in step with the stock: every stocked item's "Qty" in
// "SyncItems" adds up to what the item's own movements say, each change counted once, neither
// lost between the stock and the queue nor queued twice by the settler. Services are queued by
// line but hold no stock to compare. Recurring invoices too, their templates moved on once.
#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "accounts/check.h"
#include "accounts/ledgerintent.h"
#include "invoice/sales/recurringrecord.h"
#include "invoice/sales/salesbook.h"
#include "invoice/sales/salesstock.h"
#include "invoice/shared/item.h"
#include "invoice/shared/options.h"
#include "invoice/shared/stock.h"
#include "llib/gen/date.h"
#include "llib/gen/filestore.h"
#include "llib/gen/syscallfault.h"
#include "llib/gen/textnum.h"
#include "tests/support/killpoints.h"
#include "tests/support/salestestbusiness.h"

namespace {

const LSalesDocumentKind& kInvoiceKind = LSalesDocumentKindOf(LSalesDocumentType::kInvoice);
constexpr const char* kStocked[] = {"W", "V"};

class SyncItemsCrash : public LSalesTestBusiness {
 protected:
  void SetUp() override {
    LSalesTestBusiness::SetUp();
    AddCustomer("C1");
    {
      LOptions options;
      options.OpenFrom(Profile());
      options.SetBool("ClientEnabled", true);
    }
    for (const char* code : kStocked) ASSERT_TRUE(LItemSave(Profile(), code, LItemInput{}, true, nullptr));
    LItemInput service;
    service.kind = LItemKind::kService;
    ASSERT_TRUE(LItemSave(Profile(), "SRV", service, true, nullptr));
  }
  void TearDown() override { LSyscallFaultDisarm(); }

  // Each run of a change on a day of its own, so that every run has the same steps.
  void NextDay() { date_ = LDate(2026, 1, 1).AddDays(++nDays_).ToText(); }
  // An untaxed document of C1 dated today: W × 3, V × 2 and SRV × 1.
  void Content(LRecord& content) {
    content.SetString("Customer", "C1");
    content.SetString("Date", date_);
    content.SetInt("TaxRate", kDocumentUntaxed);
    for (auto [code, qty] : {std::pair{"W", 3.0}, std::pair{"V", 2.0}, std::pair{"SRV", 1.0}}) {
      int line = content.GetInt("ItemCount", 0);
      AddLine(content, 1000, -1, qty, 0, "", "");
      content.SetString(LFKItemCollectionRecord::ItemField(line, "Code"), code);
    }
  }
  // Records such an invoice as invoice_; false when it was refused.
  bool NewInvoice() {
    LRecord content;
    Content(content);
    return LSalesDocumentCreate(Profile(), kInvoiceKind, content, false, {}, invoice_, nullptr);
  }

  // What the linked client counts of each item: the queue's quantities added up.
  std::map<std::string, double> Queued() {
    std::map<std::string, double> queued;
    LRecord move;
    for (LFileStoreIteratorBase it(Profile().MainList(kSyncItemsList), move); move.IsAttached(); it.Next(move))
      queued[move.GetString("Name")] += move.GetFloat("Qty", 0);
    return queued;
  }

  // Whether each stocked item's quantities in the queue add up to its stock; what differs in why.
  bool QueueFollowsStock(std::string& why) {
    std::map<std::string, double> queued = Queued();
    for (const char* code : kStocked) {
      LRecord item;
      if (!Profile().MainList(kItemsList).Open(item, code)) return false;
      double stock = LStockAt(LStockReadMoves(item), {}).quantity;
      if (std::fabs(queued[code] - stock) >= 1e-9)
        why += std::string(code) + ": queued " + std::to_string(queued[code]) + ", in stock " + std::to_string(stock) + ". ";
    }
    return why.empty();
  }

  void ExpectInStep(const std::string& where) {
    SCOPED_TRACE(where);
    ExpectBooksCheckClean();
    std::string why;
    EXPECT_TRUE(QueueFollowsStock(why)) << why;
  }

  std::string date_, invoice_;
  int nDays_ = 0;
};

TEST_F(SyncItemsCrash, InvoiceRecordEditAndDeleteKilledAtAnyWriteQueueEachMovementOnce) {
  struct Change {
    const char* name;
    bool existing;  // works on an invoice recorded beforehand
    std::function<void()> run;
  };
  const Change changes[] = {
      {"record", false, [&] { (void)NewInvoice(); }},
      {"edit", true,
       [&] {
         (void)LSalesDocumentEdit(Profile(), kInvoiceKind, invoice_,
                                  [](LSalesDocument& invoice) {
                                    invoice.SetString(LFKItemCollectionRecord::ItemField(0, "Qty"), ftotl(5));
                                    invoice.SetString(LFKItemCollectionRecord::ItemField(1, "Code"), "W");
                                  },
                                  nullptr);
       }},
      {"delete", true, [&] { (void)LSalesDocumentDelete(Profile(), kInvoiceKind, invoice_, nullptr); }},
  };
  for (const Change& change : changes) {
    auto prepare = [&] {
      NextDay();
      if (change.existing) {
        EXPECT_TRUE(NewInvoice());
      }
    };
    int nKilled = LKillAtEachStep(prepare, change.run, [&](const std::string& where) {
      ExpectInStep(std::string(change.name) + ", killed at " + where);
    });
    EXPECT_GT(nKilled, 10) << change.name;
    if (HasFailure()) return;
  }
}

// A recurring invoice is a sales change of its own: killed at any write, the next opener finishes
// it (stock, queue, posting) and moves its template on, or gives its number back, so that the
// occurrence is recorded, queued and counted once.
TEST_F(SyncItemsCrash, RecurringInvoiceKilledAtAnyWriteIsRecordedAndQueuedOnce) {
  std::string templateKey;
  auto prepare = [&] {
    NextDay();
    templateKey = std::to_string(nDays_);
    LRecord schedule;
    Profile().MainList(kRecurringInvoicesList).OpenAlways(schedule, templateKey);
    Content(schedule);
    schedule.DeleteField("Date");
    schedule.SetString("RecurStart", date_);
  };
  auto record = [&] {
    LRecord schedule;
    ASSERT_TRUE(Profile().MainList(kRecurringInvoicesList).Open(schedule, templateKey));
    (void)LRecurringRecord(Profile(), schedule, nullptr);
  };
  int nKilled = LKillAtEachStep(prepare, record, [&](const std::string& where) {
    ExpectInStep("recurring, killed at " + where);
    int nMade = 0;
    LSalesDocument invoice;
    for (LFileStoreIteratorBase it(Profile().MainList(kInvoiceKind.recordedList), invoice); invoice.IsAttached(); it.Next(invoice))
      nMade += invoice.GetDate() == date_;
    LRecord schedule;
    ASSERT_TRUE(Profile().MainList(kRecurringInvoicesList).Open(schedule, templateKey));
    EXPECT_EQ(schedule.GetString("RecurLast"), nMade == 1 ? date_ : std::string()) << where;
    EXPECT_LE(nMade, 1) << where;
  });
  EXPECT_GT(nKilled, 10);
}

// The next opener killed in turn, at any of its writes, while it repairs a recording killed before
// its stock moved, then one killed with its stock moved and its queue behind: the opener after it
// still queues each movement once.
TEST_F(SyncItemsCrash, SettlerKilledAtAnyWriteLeavesTheNextToQueueOnce) {
  auto record = [&] { (void)NewInvoice(); };
  std::optional<unsigned> repairedAt, completedAt;  // the first such kills of a recording
  for (unsigned nth = 1; !(repairedAt && completedAt); ++nth) {
    NextDay();
    ASSERT_TRUE(LRunKilledAt(LSyscall::kWrite, nth, record)) << "no kill left the stock or the queue behind";
    LCheckReport stock;
    LCheckStockMovements(Profile(), false, stock);  // reads only: nothing is settled yet
    std::string why;
    bool queueBehind = !QueueFollowsStock(why);
    if (!repairedAt && !queueBehind && !stock.differences.empty()) repairedAt = nth;
    if (!completedAt && queueBehind) completedAt = nth;
    ExpectInStep("recording killed at write " + std::to_string(nth));
  }
  for (unsigned at : {*repairedAt, *completedAt}) {
    auto killedRecording = [&] {
      NextDay();
      EXPECT_TRUE(LRunKilledAt(LSyscall::kWrite, at, record));
    };
    int nKilled = LKillAtEachStep(killedRecording, [&] { LLedgerSettleInterrupted(Profile()); }, [&](const std::string& where) {
      ExpectInStep("recording killed at write " + std::to_string(at) + ", its settler at " + where);
    });
    EXPECT_GT(nKilled, 2) << at;
    if (HasFailure()) return;
  }
}

// A disk full at any write of a recording: what the failed step had noted is left to the next
// opener, which queues what is missing, once.
TEST_F(SyncItemsCrash, RecordFailingAtAnyWriteIsQueuedOnceByTheNextOpener) {
  int nLeft = 0;
  for (unsigned nth = 1; nth <= 40; ++nth) {
    NextDay();
    LSyscallFaultArmFrom(LSyscall::kWrite, nth, ENOSPC);
    bool done = NewInvoice();
    LSyscallFaultDisarm();
    nLeft += !done;
    ExpectInStep("write " + std::to_string(nth) + " failing");
    if (HasFailure()) return;
  }
  EXPECT_GT(nLeft, 10);
}

}  // namespace
