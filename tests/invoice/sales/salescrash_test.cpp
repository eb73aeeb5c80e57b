// Applications of payments and credit notes and deletions of payments and invoices, stopped at
// each of their steps by a kill, or failing on a save after the audit trail took them: the next
// holder of the ledger lock (here the check) finds every invoice's amounts paid and refunded equal
// to what the payments and credit notes hold, within its total, and every customer balance, the
// ledger and the stock equal to the documents.
#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <string>
#include <vector>

#include "accounts/check.h"
#include "invoice/sales/paymentbook.h"
#include "invoice/sales/salesbook.h"
#include "invoice/sales/salesconversion.h"
#include "invoice/shared/documentconversion.h"
#include "invoice/shared/payment.h"
#include "llib/gen/date.h"
#include "llib/gen/filestore.h"
#include "llib/gen/syscallfault.h"
#include "tests/support/killpoints.h"
#include "tests/support/salestestbusiness.h"

namespace {

class SalesCrash : public LSalesTestBusiness {
 protected:
  void SetUp() override {
    LSalesTestBusiness::SetUp();
    AddCustomer("C1");
  }
  void TearDown() override { LSyscallFaultDisarm(); }

  // Each case's documents on a day of their own, so that every run of a change has the same steps.
  void NextDay() { date_ = LDate(2026, 1, 1).AddDays(++nDays_).ToText(); }
  std::string Document(LSalesDocumentType type, long long total) { return RecordUntaxed(type, total, date_); }
  std::string Pay(long long amount, const std::string& invoice, long long applied) {
    LPaymentRequest request;
    request.customer = "C1";
    request.date = date_;
    request.amount = amount;
    request.applications = {{invoice, applied}};
    std::string key, error;
    EXPECT_TRUE(LPaymentCreate(Profile(), request, key, &error)) << error;
    return key;
  }
  // The books as the next command finds them: settled, then checked; after a kill, no invoice
  // holds more than its total either.
  void ExpectInStep(const std::string& where, bool killed) {
    SCOPED_TRACE(where);
    LBookCheckProcess check;
    check.profile = &Profile();
    LProcessInterfaceVoid quiet;
    ASSERT_EQ(Process(quiet, check), kProcessFinished);
    EXPECT_TRUE(check.report.differences.empty() && check.report.problems.empty());
    if (!killed) return;
    LSalesDocument invoice;
    if (Profile().MainList("Invoices").Open(invoice, invoice_)) {
      EXPECT_LE(invoice.GetAmountPaid(Profile()), invoice.GetTotal());
      EXPECT_LE(invoice.GetAmountRefunded(Profile()), invoice.GetTotal());
    }
  }
  // An invoice of 1000 held 200 by an older payment and 800 by a newer one, and a credit note of
  // 400: applying more of the older payment makes the newer give way.
  void Prepare() {
    NextDay();
    invoice_ = Document(LSalesDocumentType::kInvoice, 1000);
    older_ = Pay(500, invoice_, 200);
    newer_ = Pay(800, invoice_, 800);
    creditNote_ = Document(LSalesDocumentType::kCreditNote, 400);
  }
  std::vector<std::pair<std::string, std::function<bool(std::string*)>>> Changes() {
    return {{"payment apply", [&](std::string* error) { return LPaymentApply(Profile(), older_, {{invoice_, 500}}, error); }},
            {"credit note apply",
             [&](std::string* error) { return LCreditNoteApply(Profile(), creditNote_, {{invoice_, 300}}, error); }},
            {"payment delete", [&](std::string* error) { return LPaymentDelete(Profile(), newer_, error); }},
            {"invoice delete", [&](std::string* error) {
               return LSalesDocumentDelete(Profile(), LSalesDocumentKindOf(LSalesDocumentType::kInvoice), invoice_, error);
             }}};
  }

  std::string date_, invoice_, older_, newer_, creditNote_;
  int nDays_ = 0;
};

// An invoice edited down to less than its payments and credit note hold, killed at each step: the
// appliers give back the excess, latest first, and the invoice counts what they hold as stored.
TEST_F(SalesCrash, AnInvoiceEditedBelowWhatIsAppliedKilledAtAnyStepIsBroughtInStep) {
  auto prepare = [&] {
    Prepare();
    EXPECT_TRUE(LCreditNoteApply(Profile(), creditNote_, {{invoice_, 300}}, nullptr));
  };
  auto edit = [&] {
    (void)LSalesDocumentEdit(Profile(), LSalesDocumentKindOf(LSalesDocumentType::kInvoice), invoice_,
                             [](LSalesDocument& invoice) {
                               invoice.SetInt64(LFKItemCollectionRecord::ItemField(0, "UnitValue"), 100);
                             },
                             nullptr);
  };
  int nKilled = LKillAtEachStep(prepare, edit, [&](const std::string& where) { ExpectInStep("edit, killed at " + where, true); });
  EXPECT_GT(nKilled, 3);
}

TEST_F(SalesCrash, ApplicationsAndDeletionsKilledAtAnyStepAreBroughtInStep) {
  for (const auto& [name, change] : Changes()) {
    int nKilled = LKillAtEachStep([&] { Prepare(); }, [&] { (void)change(nullptr); },
                                  [&](const std::string& where) { ExpectInStep(name + ", killed at " + where, true); });
    EXPECT_GT(nKilled, 3) << name;
  }
}

// A quote turned into an invoice, killed at each step: the quote is claimed before the invoice is
// written, so the next opener finds either the invoice made and named by the quote, or none and
// the quote's claim released, free to be converted again; never an invoice the quote does not name.
TEST_F(SalesCrash, AConversionKilledAtAnyStepMakesItsInvoiceOnceOrFreesTheQuote) {
  const LSalesDocumentKind& quotes = LSalesDocumentKindOf(LSalesDocumentType::kQuote);
  const LSalesDocumentKind& invoices = LSalesDocumentKindOf(LSalesDocumentType::kInvoice);
  std::string quote;
  auto prepare = [&] {
    NextDay();
    quote = Document(LSalesDocumentType::kQuote, 700);
  };
  auto convert = [&] {
    std::string key, error;
    (void)LSalesDocumentConvertToInvoice(Profile(), quotes, quote, false, key, error);
  };
  int nKilled = LKillAtEachStep(prepare, convert, [&](const std::string& where) {
    ExpectInStep("conversion, killed at " + where, false);
    std::vector<std::string> made;
    LSalesDocument invoice;
    for (LFileStoreIteratorBase it(Profile().MainList(invoices.recordedList), invoice); invoice.IsAttached(); it.Next(invoice))
      if (invoice.GetString("QuoteNumber") == quote) made.push_back(invoice.GetPrimaryKey());
    LSalesDocument source;
    ASSERT_TRUE(LSalesDocumentOpen(Profile(), quotes, quote, source));
    source.DetachWithoutSave();
    std::string mark = LConvertedInvoiceKey(source);
    EXPECT_EQ(made, mark.empty() ? std::vector<std::string>{} : std::vector<std::string>{mark}) << where;
  });
  EXPECT_GT(nKilled, 3);
}

// A save refused after the trail took the change (a write or rename failing): the change says the
// books will be brought in step, and the next holder of the lock does it.
TEST_F(SalesCrash, ApplicationsAndDeletionsFailingAfterTheirEntryAreLeftToTheNextOpener) {
  for (const auto& [name, change] : Changes()) {
    int nLeft = 0;
    for (LSyscall kind : {LSyscall::kWrite, LSyscall::kRename}) {
      for (unsigned nth = 1; nth <= 8; ++nth) {
        Prepare();
        std::string error;
        LSyscallFaultArmFrom(kind, nth, ENOSPC);  // the disk stays full
        bool done = change(&error);
        LSyscallFaultDisarm();
        nLeft += !done && error.find("remis en accord à la prochaine ouverture") != std::string::npos;
        ExpectInStep(name + (kind == LSyscall::kWrite ? ", write " : ", rename ") + std::to_string(nth) + " failing", false);
        if (HasFailure()) return;
      }
    }
    EXPECT_GT(nLeft, 0) << name << ": no failure fell after the change's entry";
  }
}

}  // namespace
