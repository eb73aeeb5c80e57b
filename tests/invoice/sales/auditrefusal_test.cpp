// A change of the books whose audit entry cannot be written is refused: whichever write fails
// (the trail's, its head's, or one of the change's own), a change refused for want of its entry
// leaves every file of the business as it was and says so in French; a change that went through
// is in the trail. Either way the chain holds and the balances agree with the journal.
#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "accounts/accountrenumber.h"
#include "accounts/audittrail.h"
#include "accounts/bills.h"
#include "accounts/check.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "invoice/sales/paymentbook.h"
#include "invoice/sales/salesbook.h"
#include "llib/gen/log.h"
#include "llib/gen/syscallfault.h"
#include "tests/support/salestestbusiness.h"
#include "tests/support/tree.h"

namespace {

class AuditRefusal : public LSalesTestBusiness {
 protected:
  void SetUp() override {
    LSalesTestBusiness::SetUp();
    AddCustomer("C1");
    LLogSetSink([this](LLogLevel, std::string_view text) { log_ += std::string(text) + "\n"; });
  }
  void TearDown() override {
    LSyscallFaultDisarm();
    LLogSetSink(nullptr);
  }
  const LSalesDocumentKind& kInvoiceKind = LSalesDocumentKindOf(LSalesDocumentType::kInvoice);

  std::string NewInvoice(long long unit) {
    LRecord content;
    content.SetString("Customer", "C1");
    content.SetString("Date", "2024-05-02");
    AddLine(content, unit, -1, 1, 0, "2", "");
    std::string key, error;
    EXPECT_TRUE(LSalesDocumentCreate(Profile(), kInvoiceKind, content, false, {}, key, &error)) << error;
    return key;
  }
  std::string NewPayment() {
    LPaymentRequest request{"C1", "2024-05-03", 500, {}, false, true, {}};
    std::string key, error;
    EXPECT_TRUE(LPaymentCreate(Profile(), request, key, &error)) << error;
    return key;
  }

  // Every file of the business with its content (times change when a file is rewritten as it was),
  // but for the lists' indexes: caches that note a reserved number given back like any delete. Of
  // the ledger lock file, the intent it holds (its first line): an ended intent leaves its text
  // after that.
  std::map<std::string, std::string> Contents() const {
    std::map<std::string, std::string> contents;
    for (const auto& [path, entry] : LTreeSnapshot(home_.SharedFolder()))
      if (entry.kind == 'f' && path.find("/.index.") == std::string::npos) contents[path] = entry.content;
    contents["Ledger/Ledger.lock"] = LLedgerIntentLeft(home_.SharedFolder());
    return contents;
  }

  // Runs change with the nth write from now failing; returns whether it was refused for want of
  // its audit entry, after checking what each outcome must leave.
  bool RunFailing(const std::string& name, unsigned nth, const std::function<bool(std::string&)>& change) {
    auto before = Contents();
    std::size_t logged = log_.size();
    long long entries = LAuditVerify(Profile()).entryCount;
    std::string error;
    LSyscallFaultArm(LSyscall::kWrite, nth, ENOSPC);
    bool done = change(error);
    LSyscallFaultDisarm();
    // A change whose own entry went in but a later one did not (an edit taking out its old
    // posting) is not refused: it is left to the next opener, and says so.
    bool auditLogged = !done && log_.find("Piste d'audit", logged) != std::string::npos;
    bool leftUnfinished = error.find("prochaine ouverture") != std::string::npos;
    bool auditRefused = auditLogged && !leftUnfinished;
    SCOPED_TRACE(name + ", write " + std::to_string(nth) + " failing");
    if (auditRefused) {
      EXPECT_EQ(Contents(), before);
      if (!error.empty()) {
        EXPECT_EQ(error, kAuditNotWrittenMessage);
      }
    }
    LAuditVerifyResult verified = LAuditVerify(Profile());
    EXPECT_EQ(verified.message, "");
    if (done) {
      EXPECT_GT(verified.entryCount, entries);
    }
    LBookCheckProcess check;
    check.profile = &Profile();
    LProcessInterfaceVoid quiet;
    EXPECT_EQ(Process(quiet, check), kProcessFinished);
    EXPECT_TRUE(check.report.differences.empty());
    return auditRefused;
  }
  std::string log_;
};

TEST_F(AuditRefusal, EveryChangeIsRefusedWhenItsEntryCannotBeWritten) {
  // Each change, made again with each of its first writes failing: every change writes its
  // trail's entry before anything but its intents (its own and its pending entry's) and its first
  // record (with its index line), so each is refused at least once.
  std::string applied;  // a payment whose share of invoice 1 changes
  int nApplied = 0;
  std::vector<std::pair<std::string, std::function<bool(std::string&)>>> changes{
      {"posting",
       [&](std::string&) {
         LLedgerTransaction txn("2024-05-04", "GJ" + std::to_string(log_.size()), "General");
         txn.AddLine("6410", "Loyer", 700, "anne", "", "");
         txn.AddLine("1110", "Loyer", -700, "anne", "", "");
         return LAccountTransactionRecord(Profile(), txn);
       }},
      {"invoice",
       [&](std::string& error) {
         LRecord content;
         content.SetString("Customer", "C1");
         content.SetString("Date", "2024-05-02");
         AddLine(content, 1000, -1, 2, 0, "2", "");
         std::string key;
         return LSalesDocumentCreate(Profile(), kInvoiceKind, content, false, {}, key, &error);
       }},
      {"invoice edit",
       [&](std::string& error) {
         return LSalesDocumentEdit(
             Profile(), kInvoiceKind, "1",
             [](LSalesDocument& document) { document.SetString("Item1Qty", std::to_string(3 + document.GetTotal() % 7)); },
             &error);
       }},
      {"payment",
       [&](std::string& error) {
         LPaymentRequest request{"C1", "2024-05-03", 250, {}, false, true, {}};
         std::string key;
         return LPaymentCreate(Profile(), request, key, &error);
       }},
      {"payment apply",
       [&](std::string& error) { return LPaymentApply(Profile(), applied, {{"1", 100 + ++nApplied}}, &error); }},
  };
  NewInvoice(5000);  // invoice "1", edited below
  applied = NewPayment();
  std::map<std::string, int> refusals;
  for (auto& [name, change] : changes)
    for (unsigned nth = 1; nth <= 7; ++nth) refusals[name] += RunFailing(name, nth, change);
  // Deletions: the document or transaction is made unfailed, then deleted with a write failing.
  for (unsigned nth = 1; nth <= 3; ++nth) {
    std::string reference = "GJD" + std::to_string(nth);
    LLedgerTransaction txn("2024-05-05", reference, "General");
    txn.AddLine("6410", "Loyer", 300, "anne", "", "");
    txn.AddLine("1110", "Loyer", -300, "anne", "", "");
    ASSERT_TRUE(LAccountTransactionRecord(Profile(), txn));
    refusals["ledger deletion"] += RunFailing("ledger deletion", nth, [&](std::string&) {
      return LAccountTransactionDelete(Profile(), "2024-05-05", reference);
    });
    std::string invoice = NewInvoice(900 + nth);
    refusals["invoice deletion"] += RunFailing("invoice deletion", nth, [&](std::string& error) {
      return LSalesDocumentDelete(Profile(), kInvoiceKind, invoice, &error);
    });
    std::string payment = NewPayment();
    refusals["payment deletion"] += RunFailing("payment deletion", nth, [&](std::string& error) {
      return LPaymentDelete(Profile(), payment, &error);
    });
  }
  std::string number = "6410", other = "6411";  // back and forth, as each renumbering done moves it
  for (unsigned nth = 1; nth <= 3; ++nth)
    refusals["renumbering"] += RunFailing("renumbering", nth, [&](std::string&) {
      LAccountRenumberProcess renumber{&Profile(), number, other};
      LProcessInterfaceVoid quiet;
      bool done = Process(quiet, renumber) == kProcessFinished;
      if (done) std::swap(number, other);
      return done;
    });
  for (const char* name : {"posting", "ledger deletion", "invoice", "invoice edit", "invoice deletion", "payment",
                           "payment apply", "payment deletion", "renumbering"})
    EXPECT_GT(refusals[name], 0) << name << " was never refused for want of its audit entry";
}

}  // namespace
