// Customer payments, refunds and credit notes applied to invoices: the application lists, the
// invoices' cached amounts, the order payments settle invoices in, and what recording and
// deleting a payment does to the balance and the ledger.
#include <gtest/gtest.h>

#include <algorithm>

#include "accounts/ledger.h"
#include "invoice/sales/paymentbook.h"
#include "invoice/sales/salesbook.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/payment.h"
#include "invoice/shared/sortedinvoice.h"
#include "tests/support/salestestbusiness.h"

namespace {

class Payments : public LSalesTestBusiness {
 protected:
  void SetUp() override {
    LSalesTestBusiness::SetUp();
    AddCustomer("C1");
  }

  // A recorded untaxed invoice of C1 for total cents; due 30 days after date.
  std::string Invoice(long long total, const std::string& date = "2026-01-10") {
    return RecordUntaxed(LSalesDocumentType::kInvoice, total, date);
  }

  std::string Pay(long long amount, std::vector<LAppliedAmount> applications, bool refund = false) {
    LPaymentRequest request;
    request.customer = "C1";
    request.date = "2026-02-01";
    request.amount = amount;
    request.refund = refund;
    request.automatic = applications.empty();
    request.applications = std::move(applications);
    std::string key, error;
    EXPECT_TRUE(LPaymentCreate(Profile(), request, key, &error)) << error;
    return key;
  }

  long long Paid(const std::string& invoice) {
    LSalesDocument document;
    EXPECT_TRUE(Profile().MainList("Invoices").Open(document, invoice));
    return document.GetAmountPaid(Profile());
  }
  long long Refunded(const std::string& invoice) {
    LSalesDocument document;
    EXPECT_TRUE(Profile().MainList("Invoices").Open(document, invoice));
    return document.GetAmountRefunded(Profile());
  }
  long long Held(const std::string& payment, const std::string& invoice) {
    LPayment record;
    EXPECT_TRUE(Profile().MainList(kPaymentsList).Open(record, payment));
    return record.GetAppliedAmount(invoice, Profile());
  }
  long long Balance() {
    LCustomer customer;
    EXPECT_TRUE(Profile().MainList(kCustomersList).Open(customer, "C1"));
    return customer.GetBalance();
  }
  std::string Field(std::string_view list, const std::string& key, const std::string& field) {
    LRecord record;
    EXPECT_TRUE(Profile().MainList(list).Open(record, key));
    return record.GetString(field, "<absent>");
  }
};

TEST_F(Payments, AutomaticPaymentSettlesTheOldestDueFirstAndStopsWhenSpent) {
  std::string late = Invoice(400, "2026-01-12"), early = Invoice(400, "2026-01-10"), middle = Invoice(400, "2026-01-11");
  std::string payment = Pay(1000, {});
  EXPECT_EQ(Held(payment, early), 400);
  EXPECT_EQ(Held(payment, middle), 400);
  EXPECT_EQ(Held(payment, late), 200);
  EXPECT_EQ(Paid(early), 400);
  EXPECT_EQ(Paid(late), 200);
  EXPECT_EQ(Field(kPaymentsList, payment, "InvoiceNumber"), early + "," + middle + "," + late);
  EXPECT_EQ(Field(kPaymentsList, payment, "InvoiceAmounts"), "400,400,200");
  EXPECT_EQ(Balance(), 1200 - 1000);

  // The rest of the customer's debt: only the unpaid remainder is left to settle.
  std::string second = Pay(500, {});
  EXPECT_EQ(Held(second, late), 200);
  LPayment record;
  ASSERT_TRUE(Profile().MainList(kPaymentsList).Open(record, second));
  EXPECT_EQ(record.GetUnappliedAmount(Profile()), 300);
}

TEST_F(Payments, ApplyingAgainReplacesTheEarlierAmountOfTheSamePayment) {
  std::string invoice = Invoice(1000);
  std::string other = Pay(100, {{invoice, 100}});
  std::string key = Pay(500, {{invoice, 200}});
  EXPECT_EQ(Paid(invoice), 300);

  LPayment payment;
  LSalesDocument document;
  ASSERT_TRUE(Profile().MainList(kPaymentsList).Open(payment, key));
  ASSERT_TRUE(Profile().MainList("Invoices").Open(document, invoice));
  EXPECT_EQ(LPaymentApplyToInvoice(payment, document, 300, Profile(), false), 300);
  EXPECT_TRUE(payment.Flush());
  EXPECT_EQ(Paid(invoice), 300 - 200 + 300);
  EXPECT_EQ(Field(kPaymentsList, key, "InvoiceNumber"), invoice);
  EXPECT_EQ(Field(kPaymentsList, key, "InvoiceAmounts"), "300");
  EXPECT_EQ(Held(other, invoice), 100);
}

TEST_F(Payments, OverApplicationIsTakenOffTheLatestPayment) {
  std::string invoice = Invoice(500);
  std::string first = Pay(300, {{invoice, 300}});
  std::string second = Pay(400, {{invoice, 400}});
  EXPECT_EQ(Held(first, invoice), 300);
  EXPECT_EQ(Held(second, invoice), 200);
  EXPECT_EQ(Paid(invoice), 500);

  // An edit that lowers the total gives back what the payments now hold beyond it: the latest
  // payment goes first, and entirely when its share is not enough.
  std::string error;
  ASSERT_TRUE(LSalesDocumentEdit(
      Profile(), LSalesDocumentKindOf(LSalesDocumentType::kInvoice), invoice,
      [](LSalesDocument& document) { document.SetInt64(LFKItemCollectionRecord::ItemField(0, "UnitValue"), 250); },
      &error))
      << error;
  EXPECT_EQ(Held(second, invoice), 0);
  EXPECT_EQ(Held(first, invoice), 250);
  EXPECT_EQ(Paid(invoice), 250);
  EXPECT_EQ(Field(kPaymentsList, second, "InvoiceNumber"), "");
}

TEST_F(Payments, CachedAmountsAreReadAsymmetrically) {
  std::string invoice = Invoice(1000);
  std::string payment = Pay(300, {{invoice, 300}});
  std::string refund = Pay(120, {{invoice, 120}}, true);
  EXPECT_EQ(Refunded(invoice), 120);

  LSalesDocument document;
  ASSERT_TRUE(Profile().MainList("Invoices").Open(document, invoice));
  document.SetInt64("AmountPaid", -1);
  document.SetInt64("AmountRefunded", -1);
  EXPECT_EQ(document.GetAmountPaid(Profile()), -1);      // returned as stored
  EXPECT_EQ(document.GetAmountRefunded(Profile()), 120);  // recomputed from the refunds
  document.DeleteField("AmountPaid");
  EXPECT_EQ(document.GetAmountPaid(Profile()), 300);      // absent: recomputed
  document.DeleteField("AmountRefunded");
  EXPECT_EQ(document.GetAmountRefunded(Profile()), 120);
  EXPECT_TRUE(document.Flush());
  EXPECT_EQ(Field("Invoices", invoice, "AmountPaid"), "300");

  // Drafts and records without a key have nothing paid whatever they hold.
  LSalesDocument draft;
  draft.SetInt64("AmountPaid", 700);
  EXPECT_EQ(draft.GetAmountPaid(Profile()), 0);
  draft.SetPrimaryKey("DFT1");
  EXPECT_EQ(draft.GetAmountPaid(Profile()), 0);
  EXPECT_EQ(draft.GetAmountRefunded(Profile()), 0);
}

TEST_F(Payments, APaymentWithoutAmountsRebuildsItsListsFromTheInvoices) {
  std::string first = Invoice(800), second = Invoice(800), other = Invoice(800);
  AddCustomer("C2");
  auto store = [&](const std::string& key, std::initializer_list<std::pair<const char*, const char*>> fields) {
    LRecord record;
    Profile().MainList(key == "P" ? kPaymentsList : "Invoices").OpenAlways(record, key == "P" ? "9" : key);
    for (const auto& [name, value] : fields) record.SetString(name, value);
  };
  store(first, {{"AmountPaid", "500"}});
  store(second, {{"AmountPaid", "400"}});
  store(other, {{"AmountPaid", "100"}, {"Customer", "C2"}});
  store("P", {{"Customer", "C1"}, {"Amount", "700"}, {"InvoiceNumber", (first + "," + other + "," + second).c_str()}});

  LPayment payment;
  ASSERT_TRUE(Profile().MainList(kPaymentsList).Open(payment, "9"));
  EXPECT_EQ(payment.GetAppliedAmount(second, Profile()), 200);
  std::string keys, amounts;
  payment.GetAppliedToInvoices(keys, Profile());
  payment.GetAppliedToInvoiceAmounts(amounts, Profile());
  EXPECT_EQ(keys, first + "," + second);
  EXPECT_EQ(amounts, "500,200");
  EXPECT_EQ(payment.GetUnappliedAmount(Profile()), 0);
  EXPECT_FALSE(payment.UpdateInvoiceAmounts(Profile()));  // rebuilt once
}

TEST_F(Payments, SortOrderHeldThenUnpaidThenByDueDate) {
  auto entry = [&](const char* key, const char* date, long long total, long long paid, long long held) {
    LSalesDocument invoice;
    invoice.SetPrimaryKey(key);
    invoice.SetString("Date", date);
    invoice.SetInt64("Total", total);
    invoice.SetInt64("AmountPaid", paid);
    invoice.SetInt64("AmountRefunded", 0);
    return LSortedInvoice(Profile(), invoice, held, false);
  };
  std::vector<LSortedInvoice> entries{
      entry("paidEarly", "2026-01-01", 100, 100, 0), entry("unpaidLate", "2026-03-01", 100, 0, 0),
      entry("paidLate", "2026-02-01", 100, 150, 0),  entry("b", "2026-01-15", 100, 50, 0),
      entry("a", "2026-01-15", 100, 0, 0),           entry("held", "2026-06-01", 100, 100, 30),
  };
  std::sort(entries.begin(), entries.end());
  std::vector<std::string> keys;
  for (const auto& one : entries) keys.push_back(one.GetKey());
  EXPECT_EQ(keys, (std::vector<std::string>{"held", "a", "b", "unpaidLate", "paidLate", "paidEarly"}));
}

TEST_F(Payments, NamedAmountsAreCapsFilledInSortedOrder) {
  std::string late = Invoice(500, "2026-01-20"), early = Invoice(500, "2026-01-05");
  std::string payment = Pay(600, {{late, 400}, {early, 300}});
  EXPECT_EQ(Held(payment, early), 300);
  EXPECT_EQ(Held(payment, late), 300);

  LPaymentRequest request;
  request.customer = "C1";
  request.date = "2026-02-01";
  request.amount = 100;
  request.applications = {{"404", 100}};
  std::string key, error;
  EXPECT_FALSE(LPaymentCreate(Profile(), request, key, &error));
  EXPECT_EQ(error, "Facture introuvable : 404.");
  request.applications = {{early, 100}};
  request.customer = "Nobody";
  EXPECT_FALSE(LPaymentCreate(Profile(), request, key, &error));
  EXPECT_EQ(error, "Le client « Nobody » n'existe pas.");
  EXPECT_FALSE(Profile().MainList(kPaymentsList).TestRecordExists("2"));
}

TEST_F(Payments, DeletingAPaymentUndoesItsApplicationsPostingAndBalance) {
  std::string invoice = Invoice(1000);
  std::string payment = Pay(600, {{invoice, 600}});
  std::string reference = Field(kPaymentsList, payment, "JournalTxnRef");
  LLedgerTransaction txn;
  ASSERT_TRUE(LLedgerTransactionLoad(Profile(), txn, "2026-02-01", reference));
  EXPECT_EQ(txn.Sum(), 0);
  EXPECT_EQ(Balance(), 400);

  // Through the ledger, as deleting the transaction there does.
  ASSERT_TRUE(LPaymentDeleteForLedger(Profile(), payment, reference));
  EXPECT_FALSE(Profile().MainList(kPaymentsList).TestRecordExists(payment));
  EXPECT_FALSE(LLedgerTransactionTestExists(Profile(), "2026-02-01", reference));
  EXPECT_EQ(Paid(invoice), 0);
  EXPECT_EQ(Balance(), 1000);
}

TEST_F(Payments, RefundsRaiseTheBalanceAndPostTheOtherWayRound) {
  std::string invoice = Invoice(1000);
  Pay(1000, {{invoice, 1000}});
  std::string refund = Pay(250, {{invoice, 250}}, true);
  EXPECT_EQ(Balance(), 250);
  EXPECT_EQ(Balance(), LCustomerBalanceFromDocuments(Profile(), "C1"));
  EXPECT_EQ(Paid(invoice), 1000);
  EXPECT_EQ(Refunded(invoice), 250);
  LLedgerTransaction txn;
  ASSERT_TRUE(LLedgerTransactionLoad(Profile(), txn, "2026-02-01", Field(kPaymentsList, refund, "JournalTxnRef")));
  ASSERT_EQ(txn.Lines().size(), 2u);
  EXPECT_EQ(txn.Lines().front().amount, 250);  // the receivable debited
  EXPECT_EQ(txn.Lines().front().description, "Remboursement; C1");

  ASSERT_TRUE(LPaymentDelete(Profile(), refund, nullptr));
  EXPECT_EQ(Refunded(invoice), 0);
  EXPECT_EQ(Balance(), 0);
}

TEST_F(Payments, CreditNotesRefundInvoicesUpToTheirTotalAndLetGoWhenDeleted) {
  std::string invoice = Invoice(1000), other = Invoice(300);
  std::string note = RecordUntaxed(LSalesDocumentType::kCreditNote, 400, "2026-01-15"), error;
  ASSERT_FALSE(note.empty());

  ASSERT_TRUE(LCreditNoteApply(Profile(), note, {{invoice, 250}, {other, 150}}, &error)) << error;
  EXPECT_EQ(Refunded(invoice), 250);
  EXPECT_EQ(Refunded(other), 150);
  EXPECT_FALSE(LCreditNoteApply(Profile(), note, {{other, 160}}, &error));
  EXPECT_EQ(error, "Le montant imputé dépasse le solde de l'avoir.");
  ASSERT_TRUE(LCreditNoteApply(Profile(), note, {{other, 50}}, &error)) << error;  // replaces the 150
  EXPECT_EQ(Refunded(other), 50);
  EXPECT_EQ(Field("CreditNotes", note, "InvoiceAmounts"), "250,50");

  // A refund and the credit note over one invoice of 300: the refund, given last, gives way.
  std::string refund = Pay(300, {{other, 300}}, true);
  EXPECT_EQ(Held(refund, other), 250);
  EXPECT_EQ(Refunded(other), 300);

  const LSalesDocumentKind& kind = LSalesDocumentKindOf(LSalesDocumentType::kCreditNote);
  ASSERT_TRUE(LSalesDocumentDelete(Profile(), kind, note, &error)) << error;
  EXPECT_EQ(Refunded(invoice), 0);
  EXPECT_EQ(Refunded(other), 250);
  ASSERT_TRUE(LSalesDocumentDelete(Profile(), LSalesDocumentKindOf(LSalesDocumentType::kInvoice), other, &error));
  EXPECT_EQ(Held(refund, other), 0);
  EXPECT_EQ(Balance(), LCustomerBalanceFromDocuments(Profile(), "C1"));
}

// Two changes of one credit note's lists, the later one working on the note as it read it before
// the other stored its entry (a change that went on past the ledger lock's wait): each keeps the
// other's entry, applying as taking one off.
TEST_F(Payments, ChangesOfOneCreditNoteReadBeforeAnothersKeepItsEntry) {
  std::string invoice = Invoice(1000), other = Invoice(300), third = Invoice(200);
  std::string note = RecordUntaxed(LSalesDocumentType::kCreditNote, 400, "2026-01-15");
  const LFileStoreListBase& notes = Profile().MainList("CreditNotes");
  const LFileStoreListBase& invoices = Profile().MainList("Invoices");
  LSalesDocument late, later, early, toInvoice, toOther, toThird;
  ASSERT_TRUE(notes.Open(late, note) && notes.Open(later, note) && notes.Open(early, note));
  ASSERT_TRUE(invoices.Open(toInvoice, invoice) && invoices.Open(toOther, other) && invoices.Open(toThird, third));

  EXPECT_EQ(LCreditNoteApplyToInvoice(early, toOther, 150, Profile()), 150);
  ASSERT_TRUE(early.Flush() && toOther.Flush());
  EXPECT_EQ(LCreditNoteApplyToInvoice(late, toInvoice, 100, Profile()), 100);
  ASSERT_TRUE(late.Flush() && toInvoice.Flush());
  EXPECT_EQ(Field("CreditNotes", note, "InvoiceNumber"), other + "," + invoice);
  EXPECT_EQ(Field("CreditNotes", note, "InvoiceAmounts"), "150,100");

  // Read before both: it still finds the entry it takes off, and leaves the one it never saw.
  EXPECT_EQ(LCreditNoteUnapply(later, toOther, Profile()), 150);
  EXPECT_EQ(LCreditNoteApplyToInvoice(later, toThird, 50, Profile()), 50);
  ASSERT_TRUE(later.Flush() && toOther.Flush() && toThird.Flush());
  EXPECT_EQ(Field("CreditNotes", note, "InvoiceNumber"), invoice + "," + third);
  EXPECT_EQ(Field("CreditNotes", note, "InvoiceAmounts"), "100,50");
  EXPECT_EQ(Refunded(invoice), 100);
  EXPECT_EQ(Refunded(other), 0);
  EXPECT_EQ(Refunded(third), 50);

  // A run changes its copy in memory and writes once, keeping what another change stored meanwhile.
  LSalesDocument inRun, outside, runInvoice, runThird, outsideOther;
  ASSERT_TRUE(notes.Open(inRun, note) && notes.Open(outside, note));
  ASSERT_TRUE(invoices.Open(runInvoice, invoice) && invoices.Open(runThird, third) && invoices.Open(outsideOther, other));
  {
    LApplierListsRun run(Profile(), inRun, true);
    EXPECT_EQ(LCreditNoteUnapply(inRun, runThird, Profile()), 50);
    EXPECT_EQ(Field("CreditNotes", note, "InvoiceNumber"), invoice + "," + third);  // not written yet
    EXPECT_EQ(LCreditNoteApplyToInvoice(outside, outsideOther, 20, Profile()), 20);
    ASSERT_TRUE(outside.Flush() && outsideOther.Flush());
    EXPECT_EQ(LCreditNoteApplyToInvoice(inRun, runInvoice, 120, Profile()), 120);
    ASSERT_TRUE(run.Write());
  }
  ASSERT_TRUE(inRun.Flush() && runInvoice.Flush() && runThird.Flush());
  EXPECT_EQ(Field("CreditNotes", note, "InvoiceNumber"), invoice + "," + other);
  EXPECT_EQ(Field("CreditNotes", note, "InvoiceAmounts"), "120,20");
  EXPECT_EQ(Refunded(invoice), 120);
  EXPECT_EQ(Refunded(other), 20);
  EXPECT_EQ(Refunded(third), 0);

  // Deleted meanwhile: a change of the note as read before never brings it back.
  LSalesDocument stale, again;
  ASSERT_TRUE(notes.Open(stale, note));
  std::string error;
  ASSERT_TRUE(LSalesDocumentDelete(Profile(), LSalesDocumentKindOf(LSalesDocumentType::kCreditNote), note, &error))
      << error;
  ASSERT_TRUE(invoices.Open(again, other));
  LCreditNoteApplyToInvoice(stale, again, 10, Profile());
  EXPECT_TRUE(stale.Flush());
  EXPECT_FALSE(notes.TestRecordExists(note));
}

}  // namespace
