// Thousands of random steps over invoices, payments, refunds and credit notes (fixed seed): after
// every few steps each invoice's cached amounts equal what the payments and credit notes hold
// for it, no payment holds more than its amount, every customer's balance equals its documents
// and every posted transaction balances; at the end `kontavo check` finds nothing.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <random>

#include "accounts/ledger.h"
#include "invoice/sales/paymentbook.h"
#include "invoice/sales/salesbook.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/payment.h"
#include "tests/support/salestestbusiness.h"

namespace {

constexpr int kSteps = 2000;
constexpr int kCheckEvery = 100;
const std::vector<std::string> kCustomers{"C1", "C2", "C3"};

class PaymentProperty : public LSalesTestBusiness {
 protected:
  const LSalesDocumentKind& invoiceKind_ = LSalesDocumentKindOf(LSalesDocumentType::kInvoice);
  const LSalesDocumentKind& noteKind_ = LSalesDocumentKindOf(LSalesDocumentType::kCreditNote);
  std::mt19937 rng_{20261123};
  std::map<std::string, std::string> invoiceCustomers_;  // invoice key -> customer

  long long Between(long long low, long long high) { return std::uniform_int_distribution<long long>(low, high)(rng_); }
  const std::string& AnyCustomer() { return kCustomers[Between(0, kCustomers.size() - 1)]; }

  // The keys of list (all numbers here), from the names of its files.
  std::vector<std::string> Keys(std::string_view list) {
    std::vector<std::string> keys;
    for (const auto& file : std::filesystem::directory_iterator(Profile().MainList(list).GetFolder()))
      if (file.path().extension() == ".dat") keys.push_back(file.path().stem().string());
    std::sort(keys.begin(), keys.end());
    return keys;
  }
  // A random key of list; empty when the list is empty.
  std::string AnyKey(std::string_view list) {
    std::vector<std::string> keys = Keys(list);
    return keys.empty() ? std::string() : keys[Between(0, keys.size() - 1)];
  }

  void NewDocument(const LSalesDocumentKind& kind, long long total) {
    LRecord content;
    const std::string& customer = AnyCustomer();
    content.SetString("Customer", customer);
    content.SetString("Date", "2026-0" + std::to_string(Between(1, 9)) + "-1" + std::to_string(Between(0, 9)));
    content.SetInt("TaxRate", kDocumentUntaxed);
    AddLine(content, total, -1, 1, 0, "", "");
    std::string key, error;
    ASSERT_TRUE(LSalesDocumentCreate(Profile(), kind, content, false, {}, key, &error)) << error;
    if (&kind == &invoiceKind_) invoiceCustomers_[key] = customer;
  }

  // Invoices of the customer, a random handful with random amounts.
  std::vector<LAppliedAmount> SomeInvoices(const std::string& customer) {
    std::vector<LAppliedAmount> chosen;
    for (const auto& [key, owner] : invoiceCustomers_)
      if (owner == customer && Between(0, 2) == 0) chosen.push_back({key, Between(1, 3000)});
    return chosen;
  }

  void NewPayment(bool refund) {
    LPaymentRequest request;
    request.customer = AnyCustomer();
    request.date = "2026-10-0" + std::to_string(Between(1, 9));
    request.amount = Between(1, 6000);
    request.refund = refund;
    request.applications = SomeInvoices(request.customer);
    request.automatic = request.applications.empty() || Between(0, 1) == 0;
    if (request.automatic) request.applications.clear();
    std::string key, error;
    // Naming an invoice that is settled already is refused; anything else must succeed.
    bool made = LPaymentCreate(Profile(), request, key, &error);
    EXPECT_TRUE(made || error.find("est déjà") != std::string::npos) << error;
  }

  // Applies an existing payment (within what it has left) to one of its customer's invoices, or
  // takes it off one.
  void ChangeApplication() {
    std::string key = AnyKey(kPaymentsList);
    if (key.empty()) return;
    LPayment payment;
    ASSERT_TRUE(Profile().MainList(kPaymentsList).Open(payment, key));
    std::vector<LAppliedAmount> invoices = SomeInvoices(payment.GetCustomer());
    if (invoices.empty()) return;
    LSalesDocument invoice;
    ASSERT_TRUE(Profile().MainList("Invoices").Open(invoice, invoices.front().invoice));
    if (Between(0, 2) == 0) {
      LPaymentUnapply(payment, invoice, Profile(), payment.IsRefund());
    } else {
      long long room = payment.GetUnappliedAmount(Profile()) + payment.GetAppliedAmount(invoice.GetPrimaryKey(), Profile());
      if (room > 0) LPaymentApplyToInvoice(payment, invoice, Between(1, room), Profile(), payment.IsRefund());
    }
    EXPECT_TRUE(payment.Flush());
  }

  void ApplyCreditNote() {
    std::string key = AnyKey("CreditNotes");
    if (key.empty()) return;
    LSalesDocument note;
    ASSERT_TRUE(Profile().MainList("CreditNotes").Open(note, key));
    std::vector<LAppliedAmount> invoices = SomeInvoices(note.GetCustomer());
    note.Invalidate();
    std::string error;
    bool applied = LCreditNoteApply(Profile(), key, invoices, &error);
    EXPECT_TRUE(applied || error == "Le montant imputé dépasse le solde de l'avoir.") << error;
  }

  void EditInvoice() {
    std::string key = AnyKey("Invoices");
    if (key.empty()) return;
    long long total = Between(100, 5000);
    std::string error;
    auto change = [&](LSalesDocument& document) {
      document.SetInt64(LFKItemCollectionRecord::ItemField(0, "UnitValue"), total);
    };
    ASSERT_TRUE(LSalesDocumentEdit(Profile(), invoiceKind_, key, change, &error)) << error;
  }

  void Delete(std::string_view list) {
    std::string key = AnyKey(list);
    if (key.empty()) return;
    std::string error;
    bool deleted = list == kPaymentsList
                       ? LPaymentDelete(Profile(), key, &error)
                       : LSalesDocumentDelete(Profile(), list == "Invoices" ? invoiceKind_ : noteKind_, key, &error);
    EXPECT_TRUE(deleted) << error;
    if (list == "Invoices") invoiceCustomers_.erase(key);
  }

  void Step() {
    switch (Between(0, 11)) {
      case 0: case 1: NewDocument(invoiceKind_, Between(100, 5000)); break;
      case 2: NewDocument(noteKind_, Between(50, 1500)); break;
      case 3: case 4: NewPayment(false); break;
      case 5: NewPayment(true); break;
      case 6: case 7: ChangeApplication(); break;
      case 8: ApplyCreditNote(); break;
      case 9: EditInvoice(); break;
      case 10: Delete(Between(0, 1) == 0 ? kPaymentsList : std::string_view("CreditNotes")); break;
      case 11: Delete("Invoices"); break;
    }
  }

  void ExpectTransactionBalances(const LRecord& document) {
    LLedgerTransaction txn;
    if (!LLedgerTransactionLoad(Profile(), txn, document.GetString("Date"), document.GetString("JournalTxnRef")))
      return;  // a document whose lines all came to nothing posts nothing
    EXPECT_EQ(txn.Sum(), 0) << document.GetString("JournalTxnRef");
  }

  // What the payments (refunds and credit notes) hold per invoice, each holder within its amount.
  void SumHolders(std::string_view list, std::map<std::string, long long>& paid,
                  std::map<std::string, long long>& refunded) {
    for (const auto& key : Keys(list)) {
      LPayment holder;
      ASSERT_TRUE(Profile().MainList(list).Open(holder, key));
      bool refund = list != kPaymentsList || holder.IsRefund();
      long long held = 0;
      for (const auto& entry : LReadAppliedAmounts(holder)) {
        (refund ? refunded : paid)[entry.invoice] += entry.amount;
        held += entry.amount;
        EXPECT_GT(entry.amount, 0) << list << " " << key;
      }
      long long limit = list == kPaymentsList ? holder.GetAmount() : holder.GetInt64("Total", 0);
      EXPECT_LE(held, limit) << list << " " << key;
      ExpectTransactionBalances(holder);
    }
  }

  void ExpectConsistent(int step) {
    SCOPED_TRACE("step " + std::to_string(step));
    std::map<std::string, long long> paid, refunded;
    SumHolders(kPaymentsList, paid, refunded);
    SumHolders("CreditNotes", paid, refunded);
    for (const auto& key : Keys("Invoices")) {
      LSalesDocument invoice;
      ASSERT_TRUE(Profile().MainList("Invoices").Open(invoice, key));
      EXPECT_EQ(invoice.GetAmountPaid(Profile()), paid[key]) << "invoice " << key;
      EXPECT_EQ(invoice.GetAmountRefunded(Profile()), refunded[key]) << "invoice " << key;
      EXPECT_LE(paid[key], invoice.GetTotal()) << "invoice " << key;
      EXPECT_LE(refunded[key], invoice.GetTotal()) << "invoice " << key;
      ExpectTransactionBalances(invoice);
      paid.erase(key);
      refunded.erase(key);
    }
    for (const auto& [key, amount] : paid) EXPECT_EQ(amount, 0) << "deleted invoice " << key;
    for (const auto& [key, amount] : refunded) EXPECT_EQ(amount, 0) << "deleted invoice " << key;
    std::map<std::string, long long> balances = LCustomerBalancesFromDocuments(Profile());
    for (const auto& customer : kCustomers) {
      LCustomer record;
      ASSERT_TRUE(Profile().MainList(kCustomersList).Open(record, customer));
      EXPECT_EQ(record.GetBalance(), balances[customer]) << customer;
    }
  }
};

TEST_F(PaymentProperty, RandomStepsKeepInvoicesPaymentsBalancesAndLedgerInStep) {
  for (const auto& customer : kCustomers) AddCustomer(customer);
  for (int step = 1; step <= kSteps && !HasFailure(); ++step) {
    Step();
    if (step % kCheckEvery == 0) ExpectConsistent(step);
  }
  EXPECT_FALSE(Keys(kPaymentsList).empty());
  LRunResult check = LRunKontavo({"check"});
  EXPECT_EQ(check.exitCode, 0) << check.out << check.err;
}

}  // namespace
