// Occurrences of recurring invoices and orders: what the new document takes from its template
// and from the items, the balance, stock, item synchronisation and ledger it moves, the schedule
// moved on, and runs over several templates.
#include "invoice/sales/recurringrecord.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "accounts/ledgeriterator.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/item.h"
#include "invoice/shared/options.h"
#include "llib/gen/syscallfault.h"
#include "tests/support/envscope.h"
#include "tests/support/salestestbusiness.h"

namespace {

class RecurringRecord : public LSalesTestBusiness {
 protected:
  void SetUp() override {
    LSalesTestBusiness::SetUp();
    AddCustomer("C1");
    LItem item;
    Profile().List(kItemsList).OpenAlways(item, "W");
    item.SetString("Description", "Widget neuf");
    item.SetInt64("Price", 1500);
    item.SetString("Quantity", "10");
  }
  // An untaxed template of list under key: 3 × W at an old price and description, and a line
  // without an item; with the leftovers of the document it was made from.
  void MakeTemplate(std::string_view list, const std::string& key, const char* start, int interval) {
    LRecord schedule;
    Profile().List(list).OpenAlways(schedule, key);
    schedule.SetString("Customer", "C1");
    schedule.SetString("TaxRate", "1");
    schedule.SetString("RecurStart", start);
    schedule.SetInt("RecurInterval", interval);
    schedule.SetString("Total", "9999");
    schedule.SetString("JournalTxnRef", "SLS999");
    schedule.SetInt64("AmountPaid", 500);
    schedule.SetString("OrderNumber", "O9");
    AddLine(schedule, 1200, -1, 3, 0, "", "Aucun");
    schedule.SetString("Item1Code", "W");
    schedule.SetString("Item1Description", "Widget");
    AddLine(schedule, 1000, -1, 1, 0, "", "Aucun");
  }
  std::string Field(std::string_view list, const std::string& key, std::string_view field) {
    LRecord record;
    Profile().List(list).Open(record, key);
    record.DetachWithoutSave();
    return record.GetString(field, "<absent>");
  }
  std::string Record(std::string_view list, const std::string& key, bool order = false) {
    LRecord schedule;
    EXPECT_TRUE(Profile().List(list).Open(schedule, key));
    std::string error;
    std::string made = order ? LRecurringOrderRecord(Profile(), schedule, &error)
                             : LRecurringRecord(Profile(), schedule, &error);
    EXPECT_EQ(error, "");
    return made;
  }
  LEnvScope user_{"LOGNAME", "marie"};
};

TEST_F(RecurringRecord, InvoiceTakesTemplateItemsAndDueDateAndMovesEverything) {
  {
    LOptions options;
    options.OpenFrom(Profile());
    options.SetBool("ClientEnabled", true);
  }
  MakeTemplate(kRecurringInvoicesList, "1", "2024-01-31", 2);
  EXPECT_EQ(Record(kRecurringInvoicesList, "1"), "1");
  EXPECT_EQ(Field("Invoices", "1", "Date"), "2024-01-31");
  EXPECT_EQ(Field("Invoices", "1", "AmountPaid"), "0");
  EXPECT_EQ(Field("Invoices", "1", "OrderNumber"), "");
  EXPECT_EQ(Field("Invoices", "1", "IsDraft"), "0");
  EXPECT_EQ(Field("Invoices", "1", "RecurStart"), "2024-01-31");  // every field of the template
  EXPECT_EQ(Field("Invoices", "1", "Item1Description"), "Widget neuf");
  EXPECT_EQ(Field("Invoices", "1", "Item2Description"), "<absent>");
  EXPECT_EQ(Field("Invoices", "1", "Total"), "5500");  // 3 × 15.00 + 10.00, untaxed
  EXPECT_EQ(Field("Invoices", "1", "JournalTxnRef"), "SLS10000");
  EXPECT_EQ(Field(kRecurringInvoicesList, "1", "RecurLast"), "2024-01-31");
  EXPECT_EQ(Field(kRecurringInvoicesList, "1", "Item1Description"), "Widget");  // the template stays

  EXPECT_EQ(Record(kRecurringInvoicesList, "1"), "2");
  EXPECT_EQ(Field("Invoices", "2", "Date"), "2024-03-03");
  EXPECT_EQ(Field("Invoices", "2", "JournalTxnRef"), "SLS10001");
  EXPECT_EQ(Field(kRecurringInvoicesList, "1", "RecurLast"), "2024-03-03");
  EXPECT_EQ(Field(kRecurringInvoicesList, "1", "RecurLastNumber"), "2");
  EXPECT_EQ(Field("Invoices", "2", "RecurLastNumber"), "<absent>");  // the template's own
  EXPECT_EQ(Field("Customers", "C1", "Balance"), "11000");
  EXPECT_EQ(Field(kItemsList, "W", "Quantity"), "4.000000");
  // One movement per line, the line without an item code included.
  EXPECT_EQ(Field(kSyncItemsList, "3", "Name"), "W");
  EXPECT_EQ(Field(kSyncItemsList, "3", "Qty"), "-3.000000");
  EXPECT_EQ(Field(kSyncItemsList, "4", "Name"), "");
  EXPECT_EQ(Field(kSyncItemsList, "4", "Qty"), "-1.000000");
  EXPECT_EQ(Field(kSyncItemsList, "5", "Name"), "<absent>");

  // Each invoice is posted on its own date, by the user of the session.
  int lines = 0;
  LLedgerAccountLineIterator it(Profile(), "", "");
  for (it.SkipToValidLine(); it.valid; it.SkipToValidLine()) {
    ++lines;
    EXPECT_EQ(it.GetFileName(), (it.line.reference == "SLS10000" ? "2024-01-31" : "2024-03-03") + std::string(".csv"));
    EXPECT_NE(it.GetRowText().find("marie"), std::string::npos) << it.GetRowText();
  }
  EXPECT_EQ(lines, 2 * 3);  // two income lines and the receivable, twice
}

TEST_F(RecurringRecord, OrderMovesNeitherBalanceNorStockNorLedger) {
  MakeTemplate(kRecurringOrdersList, "1", "2024-11-15", 4);
  EXPECT_EQ(Record(kRecurringOrdersList, "1", true), "1");
  EXPECT_EQ(Record(kRecurringOrdersList, "1", true), "2");
  EXPECT_EQ(Field("Orders", "2", "Date"), "2025-02-15");
  EXPECT_EQ(Field("Orders", "2", "Total"), "5500");
  EXPECT_EQ(Field("Customers", "C1", "Balance"), "<absent>");
  EXPECT_EQ(Field(kItemsList, "W", "Quantity"), "10");
  EXPECT_EQ(Field(kSyncItemsList, "1", "Name"), "<absent>");  // "ClientEnabled" is off anyway
  LLedgerAccountLineIterator it(Profile(), "", "");
  it.SkipToValidLine();
  EXPECT_FALSE(it.valid);
}

// An occurrence whose save fails once it is written (a full disk at its totals or its posting)
// says that the next opener finishes it, and the next opener does: the document totalled as it
// would have been, an invoice posted, the books in step, the template moved on once.
TEST_F(RecurringRecord, OccurrenceLeftUnfinishedIsFinishedByTheNextOpener) {
  for (bool order : {false, true}) {
    std::string_view list = order ? kRecurringOrdersList : kRecurringInvoicesList;
    std::string_view documents = order ? "Orders" : "Invoices";
    int nLeft = 0;
    for (unsigned nth = 1; nth <= 10; ++nth) {
      std::string key = std::to_string(nth);
      MakeTemplate(list, key, "2024-05-01", 2);
      LRecord schedule;
      ASSERT_TRUE(Profile().List(list).Open(schedule, key));
      std::string error;
      LSyscallFaultArmFrom(LSyscall::kRename, nth, ENOSPC);  // the disk stays full
      std::string made = order ? LRecurringOrderRecord(Profile(), schedule, &error)
                               : LRecurringRecord(Profile(), schedule, &error);
      LSyscallFaultDisarm();
      schedule.DetachWithoutSave();
      SCOPED_TRACE(std::string(documents) + ", rename " + key + " failing: " + error);
      ExpectBooksCheckClean();  // the next opener settles first
      if (error.find("remis en accord à la prochaine ouverture") == std::string::npos) continue;
      ++nLeft;
      EXPECT_EQ(Field(documents, made, "Total"), "5500");
      EXPECT_EQ(Field(list, key, "RecurLast"), "2024-05-01");
      if (!order) {
        EXPECT_NE(Field(documents, made, "JournalTxnRef"), "");
      }
    }
    EXPECT_GT(nLeft, 0) << documents << ": no failure fell after the document was written";
  }
}

TEST_F(RecurringRecord, NeverDueOrOrphanTemplateRecordsNothing) {
  MakeTemplate(kRecurringInvoicesList, "1", "", 2);
  MakeTemplate(kRecurringInvoicesList, "2", "2024-01-01", 2);
  {
    LRecord orphan;
    Profile().List(kRecurringInvoicesList).Open(orphan, "2");
    orphan.SetString("Customer", "C2");
  }
  for (const auto& [key, message] : {std::pair{"1", "Ce modèle n'a pas d'échéance."},
                                     {"2", "Le client « C2 » n'existe pas."}}) {
    LRecord schedule;
    ASSERT_TRUE(Profile().List(kRecurringInvoicesList).Open(schedule, key));
    std::string error;
    EXPECT_EQ(LRecurringRecord(Profile(), schedule, &error), "");
    EXPECT_EQ(error, message);
    EXPECT_EQ(schedule.GetString("RecurLast"), "");
  }
  EXPECT_EQ(Field("Invoices", "1", "Date"), "<absent>");
}

TEST_F(RecurringRecord, RunRecordsOneRoundOrEverythingDue) {
  MakeTemplate(kRecurringInvoicesList, "1", "2024-01-01", 2);
  MakeTemplate(kRecurringInvoicesList, "2", "2024-03-01", 9);  // recorded once, then never again
  MakeTemplate(kRecurringOrdersList, "1", "2024-02-15", 0);
  MakeTemplate(kRecurringInvoicesList, "3", "2025-01-01", 2);  // not due yet
  tm local{};
  local.tm_year = 2024 - 1900;
  local.tm_mon = 2;
  local.tm_mday = 15;
  local.tm_isdst = -1;
  time_t now = ::mktime(&local);  // 2024-03-15 00:00

  std::vector<LRecurringMade> made;
  std::string error;
  ASSERT_TRUE(LRecurringRun(Profile(), false, now, made, error)) << error;
  ASSERT_EQ(made.size(), 3u);
  EXPECT_EQ(made[0].date, "2024-01-01");
  EXPECT_EQ(made[1].date, "2024-03-01");
  EXPECT_EQ(made[2].type, LSalesDocumentType::kOrder);
  EXPECT_EQ(made[2].date, "2024-02-15");

  made.clear();
  ASSERT_TRUE(LRecurringRun(Profile(), true, now, made, error)) << error;
  std::vector<std::string> dates;
  for (const auto& one : made) dates.push_back(one.date);
  // Round by round: invoice template 1 and the weekly order, until neither is due.
  EXPECT_EQ(dates, (std::vector<std::string>{"2024-02-01", "2024-02-22", "2024-03-01", "2024-02-29",
                                             "2024-03-07", "2024-03-14"}));
  EXPECT_FALSE(LRecurringTestList(Profile(), kRecurringInvoicesList, now));
  EXPECT_FALSE(LRecurringTestList(Profile(), kRecurringOrdersList, now));
}

}  // namespace
