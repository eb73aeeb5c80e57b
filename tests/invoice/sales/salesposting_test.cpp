// Postings of invoices, credit notes and payments: the lines each writes, the truncations and
// the balancing line, the accounts found by description and their fallbacks, references kept on
// edit, deletions from the ledger routed to the documents, and the customer balances and the book
// check agreeing after any sequence of steps.
#include <gtest/gtest.h>

#include <random>

#include "accounts/accounts.h"
#include "accounts/check.h"
#include "accounts/ledger.h"
#include "accounts/ledgerdelete.h"
#include "invoice/sales/salesbook.h"
#include "invoice/sales/salesposting.h"
#include "invoice/sales/taxaccounts.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/item.h"
#include "invoice/shared/options.h"
#include "invoice/shared/regionaldefaults.h"
#include "invoice/shared/taxoptions.h"
#include "tests/support/salestestbusiness.h"

namespace {

using Lines = std::vector<std::pair<std::string, long long>>;  // account, amount

// Accounts of the default chart that the postings use.
constexpr const char* kReceivable = "1210";
constexpr const char* kChecking = "1110";
constexpr const char* kTaxCollected = "2410";
constexpr const char* kIncome = "4110";
constexpr const char* kFreight = "4210";

class SalesPosting : public LSalesTestBusiness {
 protected:
  const LSalesDocumentKind& kInvoiceKind = LSalesDocumentKindOf(LSalesDocumentType::kInvoice);
  const LSalesDocumentKind& kCreditKind = LSalesDocumentKindOf(LSalesDocumentType::kCreditNote);

  void SetUp() override {
    LSalesTestBusiness::SetUp();
    AddCustomer("C1");
  }
  LLedgerTransaction Loaded(const std::string& date, const std::string& reference) {
    LLedgerTransaction txn;
    EXPECT_TRUE(LLedgerTransactionLoad(Profile(), txn, date, reference));
    return txn;
  }
  // The account and amount of each line of a posting, which must balance.
  Lines Posted(const std::string& date, const std::string& reference) {
    LLedgerTransaction txn = Loaded(date, reference);
    EXPECT_EQ(txn.Sum(), 0) << "a posting balances";
    Lines lines;
    for (const auto& line : txn.Lines()) lines.emplace_back(line.account, line.amount);
    return lines;
  }
  std::string Create(const LSalesDocumentKind& kind, LRecord& content) {
    std::string key, error;
    EXPECT_TRUE(LSalesDocumentCreate(Profile(), kind, content, false, {}, key, &error)) << error;
    return key;
  }
  std::string Reference(const LSalesDocumentKind& kind, const std::string& key) {
    LSalesDocument document;
    EXPECT_TRUE(LSalesDocumentOpen(Profile(), kind, key, document));
    return document.GetString("JournalTxnRef");
  }
  int SalesCounter() {
    LOptions options;
    options.OpenFrom(Profile());
    return options.GetInt("RefNumberSales", 10000);
  }
  long long Balance(const std::string& key) {
    LCustomer customer;
    EXPECT_TRUE(Profile().MainList(kCustomersList).Open(customer, key));
    return customer.GetBalance();
  }
  LCheckReport Check(bool fix = false) {
    LBookCheckProcess data;
    data.profile = &Profile();
    data.fix = fix;
    LProcessInterfaceVoid silent;
    EXPECT_EQ(Process(silent, data), kProcessFinished);
    return data.report;
  }
  // A document of customer C1 on date; untaxed with one line of unit when unit is given.
  static void For(LRecord& content, const std::string& date = "2024-05-02", long long unit = 0) {
    content.SetString("Customer", "C1");
    content.SetString("Date", date);
    if (unit == 0) return;
    content.SetInt("TaxRate", kDocumentUntaxed);
    AddLine(content, unit, -1, 1, 0, "", "");
  }
};

TEST_F(SalesPosting, TruncatedLineThenBalancingLineOnTheSameAccount) {
  // 3 × 333 = 999, less 10 %: trunc(-99.9 + 999) = 899; the total 900 leaves 1 to balance.
  LInvoice invoice;
  invoice.SetPrimaryKey("1");
  For(invoice);
  invoice.SetInt("TaxRate", kDocumentUntaxed);
  AddLine(invoice, 333, -1, 3, 10, "", "");
  invoice.SetInt64("Total", 900);
  ASSERT_TRUE(LInvoiceRecordTransactions(Profile(), invoice, "anne", false));
  EXPECT_EQ(invoice.GetString("JournalTxnRef"), "SLS10000");
  EXPECT_EQ(Posted("2024-05-02", "SLS10000"), (Lines{{kIncome, -899}, {kReceivable, 900}, {kIncome, -1}}));
  LLedgerTransaction txn = Loaded("2024-05-02", "SLS10000");
  ASSERT_FALSE(txn.Lines().empty());
  EXPECT_EQ(txn.GetType(), "Recettes");
  EXPECT_EQ(txn.Lines().front().description, "Recette; C1");
  EXPECT_EQ(txn.Lines().front().document, "1");
  EXPECT_STREQ(txn.Lines().front().xdata.GetString("UserName", ""), "anne");
}

TEST_F(SalesPosting, UnitPriceDigitsAreNotAppliedToPostings) {
  // 1999 at 3 digits totals 200 but posts trunc(1 × 1999) = 1999; the balance goes back on the
  // same account: the account nets the total.
  LRecord content;
  For(content);
  content.SetInt("TaxRate", kDocumentUntaxed);
  AddLine(content, 1999, 3, 1, 0, "", "");
  std::string key = Create(kInvoiceKind, content);
  EXPECT_EQ(Posted("2024-05-02", Reference(kInvoiceKind, key)),
            (Lines{{kIncome, -1999}, {kReceivable, 200}, {kIncome, 1799}}));
}

TEST_F(SalesPosting, TaxesItemAccountsAndShipping) {
  LItem item;
  Profile().MainList(kItemsList).OpenAlways(item, "W");
  item.SetString("PLAccount", "Frais de port perçus");  // any income account found by description
  EXPECT_TRUE(item.Flush());
  LRecord content;
  For(content);
  AddLine(content, 10000, -1, 1, 0, "2", "");  // tax A 10 %
  content.SetString("Item1Code", "W");
  AddLine(content, 5000, -1, 1, 0, "2", "");
  content.SetString("Item2Code", "Unknown");  // not an item: "Recettes générales"
  content.SetInt64("ShippingCosts", 1000);
  content.SetString("ShippingTaxName", "A");
  std::string key = Create(kInvoiceKind, content);
  // A on 16000 = 1600; total 17600.
  EXPECT_EQ(
      Posted("2024-05-02", Reference(kInvoiceKind, key)),
      (Lines{{kTaxCollected, -1600}, {kFreight, -10000}, {kIncome, -5000}, {kFreight, -1000}, {kReceivable, 17600}}));
  EXPECT_EQ(Balance("C1"), 17600);
}

TEST_F(SalesPosting, TaxAccountThatNoLongerExistsGoesTo2301) {
  LTaxOptions tax;
  tax.OpenFrom(Profile());
  tax.SetTaxAccountPayable(1, "Taxe disparue");  // unknown: the linked slot 5 instead
  EXPECT_TRUE(tax.Flush());
  LOptions options;
  options.OpenFrom(Profile());
  options.SetDefAccountNumber(5, "2999");  // and slot 5 names an account that is gone
  EXPECT_TRUE(options.Flush());
  LInvoice invoice;
  invoice.SetPrimaryKey("1");
  For(invoice);
  invoice.SetInt64("TaxAmount1", 100);
  invoice.SetInt64("Total", 1100);
  AddLine(invoice, 1000, -1, 1, 0, "2", "");
  ASSERT_TRUE(LInvoiceRecordTransactions(Profile(), invoice, "", false));
  EXPECT_EQ(Posted("2024-05-02", "SLS10000"), (Lines{{"2301", -100}, {kIncome, -1000}, {kReceivable, 1100}}));
}

TEST_F(SalesPosting, ZeroTotalWithoutLinesPostsNothing) {
  LInvoice invoice;
  invoice.SetPrimaryKey("1");
  For(invoice);
  EXPECT_TRUE(LInvoiceRecordTransactions(Profile(), invoice, "", false));
  EXPECT_FALSE(LLedgerTransactionTestExists(Profile(), "2024-05-02", invoice.GetString("JournalTxnRef")));
}

TEST_F(SalesPosting, InclusivePricesPostTheLineWithoutItsTax) {
  SetTaxInclusive(true);
  LRecord content;
  For(content);
  AddLine(content, 11000, -1, 1, 0, "2", "");  // A 10 % inside: 1000
  AddLine(content, 11500, -1, 1, 0, "5", "");  // AB = A+B by number, inside: 10000 net, 1000 + 500
  std::string key = Create(kInvoiceKind, content);
  LSalesDocument document;
  ASSERT_TRUE(LSalesDocumentOpen(Profile(), kInvoiceKind, key, document));
  EXPECT_EQ(document.GetTotal(), 22500);
  // Amounts by name: A 1000 + 1000 (part of AB), B 500; posted by tax number 1 and 2.
  EXPECT_EQ(Posted("2024-05-02", Reference(kInvoiceKind, key)),
            (Lines{{kTaxCollected, -2000}, {kTaxCollected, -500}, {kIncome, -10000}, {kIncome, -10000},
                   {kReceivable, 22500}}));
}

TEST_F(SalesPosting, CreditNotesReverseEverySign) {
  LRecord content;
  For(content, "2024-05-03");
  AddLine(content, 2000, -1, 1, 0, "2", "");
  std::string key = Create(kCreditKind, content);
  EXPECT_EQ(Posted("2024-05-03", Reference(kCreditKind, key)),
            (Lines{{kTaxCollected, 200}, {kIncome, 2000}, {kReceivable, -2200}}));
  LLedgerTransaction txn = Loaded("2024-05-03", "SLS10000");
  ASSERT_FALSE(txn.Lines().empty());
  EXPECT_EQ(txn.Lines().front().description, "Avoir; C1");
  EXPECT_EQ(Balance("C1"), -2200);
}

TEST_F(SalesPosting, PaymentsCreditTheReceivableAndDebitTheDeposit) {
  LRecord payment;
  Profile().MainList(kPaymentsList).OpenAlways(payment, "1");
  For(payment, "2024-05-04");
  payment.SetInt64("Amount", 5000);
  ASSERT_TRUE(LPaymentRecordTransactions(Profile(), payment, "anne"));
  EXPECT_EQ(payment.GetString("JournalTxnRef"), "REC10000");
  EXPECT_EQ(Posted("2024-05-04", "REC10000"), (Lines{{kReceivable, -5000}, {kChecking, 5000}}));
  EXPECT_TRUE(payment.Flush());
  EXPECT_TRUE(LCustomerChangeBalance(Profile(), "C1", -5000));  // as applying the payment does

  // Deleted from the ledger: through the payment, whose amount goes back onto the balance.
  EXPECT_TRUE(LedgerTransactionDelete(Profile(), "2024-05-04", "REC10000"));
  EXPECT_FALSE(Profile().MainList(kPaymentsList).TestRecordExists("1"));
  EXPECT_FALSE(LLedgerTransactionTestExists(Profile(), "2024-05-04", "REC10000"));
  EXPECT_EQ(Balance("C1"), 0);
}

// A draft is not posted and takes no number; recording posts it; an edit reposts it under the
// same reference without a new number.
TEST_F(SalesPosting, DraftsPostWhenRecordedAndEditsRepostUnderTheSameReference) {
  LRecord content;
  For(content, "2024-05-02", 1000);
  std::string draftKey, key, error;
  ASSERT_TRUE(LSalesDocumentCreate(Profile(), kInvoiceKind, content, true, {}, draftKey, &error));
  EXPECT_EQ(SalesCounter(), 10000);
  EXPECT_FALSE(LLedgerTransactionTestExists(Profile(), "2024-05-02", "SLS10000"));
  ASSERT_TRUE(LSalesDocumentRecordDraft(Profile(), kInvoiceKind, draftKey, key, &error));
  EXPECT_EQ(Posted("2024-05-02", "SLS10000"), (Lines{{kIncome, -1000}, {kReceivable, 1000}}));
  EXPECT_EQ(Reference(kInvoiceKind, key), "SLS10000");
  EXPECT_EQ(SalesCounter(), 10001);
  ASSERT_TRUE(LSalesDocumentEdit(
      Profile(), kInvoiceKind, key,
      [](LSalesDocument& d) {
        d.SetString("Date", "2024-06-01");
        d.SetString("JournalTxnRef", "FORGED");  // the ledger's reference is not the user's to change
        AddLine(d, 500, -1, 2, 0, "", "");
      },
      &error))
      << error;
  EXPECT_EQ(Reference(kInvoiceKind, key), "SLS10000");
  EXPECT_EQ(SalesCounter(), 10001);
  EXPECT_FALSE(LLedgerTransactionTestExists(Profile(), "2024-05-02", "SLS10000"));
  EXPECT_EQ(Posted("2024-06-01", "SLS10000"), (Lines{{kIncome, -1000}, {kIncome, -1000}, {kReceivable, 2000}}));
  EXPECT_TRUE(Check().differences.empty());
}

TEST_F(SalesPosting, LedgerDeleteOfASalesTransactionDeletesTheDocument) {
  LRecord invoiceContent, creditContent;
  For(invoiceContent, "2024-05-02", 1000);
  For(creditContent, "2024-05-02", 300);
  std::string invoice = Create(kInvoiceKind, invoiceContent);
  std::string credit = Create(kCreditKind, creditContent);
  EXPECT_EQ(Balance("C1"), 700);
  EXPECT_TRUE(LedgerTransactionDelete(Profile(), "2024-05-02", Reference(kCreditKind, credit)));
  EXPECT_FALSE(Profile().MainList("CreditNotes").TestRecordExists(credit));
  EXPECT_EQ(Balance("C1"), 1000);
  EXPECT_TRUE(LedgerTransactionDelete(Profile(), "2024-05-02", "SLS10000"));
  EXPECT_FALSE(Profile().MainList("Invoices").TestRecordExists(invoice));
  EXPECT_EQ(Balance("C1"), 0);
  LCheckReport report = Check();
  EXPECT_TRUE(report.differences.empty());
  EXPECT_TRUE(report.problems.empty());
}

TEST_F(SalesPosting, RefusedWhileALinkedAccountIsMissing) {
  LOptions options;
  options.OpenFrom(Profile());
  options.SetString("DefAccount2Number", "");
  EXPECT_TRUE(options.Flush());
  LRecord content;
  For(content, "2024-05-02", 1000);
  std::string key, error;
  EXPECT_FALSE(LSalesDocumentCreate(Profile(), kInvoiceKind, content, true, {}, key, &error));
  EXPECT_EQ(error.rfind("Vous ne pouvez pas créer ni modifier des factures", 0), 0u) << error;
  // Credit notes and quotes are not invoices.
  EXPECT_TRUE(LSalesDocumentCreate(Profile(), kCreditKind, content, true, {}, key, &error)) << error;
}

// Any sequence of new (drafts included), edit (customer, date and lines), record and delete keeps
// every customer's balance equal to its recorded invoices less its credit notes, every posting
// balanced, and the book check clean.
TEST_F(SalesPosting, BalancesAndBookCheckAgreeAfterAnySequence) {
  const std::vector<std::string> customers = {"C1", "C2", "C3"};
  AddCustomer("C2");
  AddCustomer("C3");
  std::mt19937 random(20240502);
  auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  std::vector<std::pair<const LSalesDocumentKind*, std::string>> documents;
  for (int step = 0; step < 60; ++step) {
    SCOPED_TRACE(step);
    std::string error;
    int action = documents.empty() ? 0 : pick(4);
    if (action == 0) {
      const LSalesDocumentKind& kind = pick(4) == 0 ? kCreditKind : kInvoiceKind;
      LRecord content;
      content.SetString("Customer", customers[pick(3)]);
      content.SetString("Date", "2024-05-0" + std::to_string(1 + pick(9)));
      AddLine(content, 101 * pick(40) - 700, pick(4) - 1, 1 + pick(3), 10, std::to_string(pick(8)), "");
      content.SetInt64("ShippingCosts", 100 * pick(3));
      content.SetString("ShippingTaxName", "B");
      std::string key;
      ASSERT_TRUE(LSalesDocumentCreate(Profile(), kind, content, pick(3) == 0, {}, key, &error)) << error;
      documents.emplace_back(&kind, key);
      continue;
    }
    int which = pick(static_cast<int>(documents.size()));
    auto [kind, key] = documents[which];
    if (action == 1) {
      std::string customer = customers[pick(3)];
      std::string date = "2024-06-0" + std::to_string(1 + pick(9));
      ASSERT_TRUE(LSalesDocumentEdit(
          Profile(), *kind, key,
          [&](LSalesDocument& d) {
            d.SetString("Customer", customer);
            d.SetString("Date", date);
            AddLine(d, 333, -1, 3, 10, "2", "");
          },
          &error))
          << error;
    } else if (action == 2 && key.rfind("DFT", 0) == 0) {
      std::string newKey;
      ASSERT_TRUE(LSalesDocumentRecordDraft(Profile(), *kind, key, newKey, &error)) << error;
      documents[which].second = newKey;
    } else if (action == 3) {
      ASSERT_TRUE(LSalesDocumentDelete(Profile(), *kind, key, &error)) << error;
      documents.erase(documents.begin() + which);
    }
    for (const auto& customer : customers)
      EXPECT_EQ(Balance(customer), LCustomerBalanceFromDocuments(Profile(), customer)) << customer;
  }
  LCheckReport report = Check();
  for (const auto& d : report.differences) ADD_FAILURE() << d.list << " " << d.key << " " << d.field;
  for (const auto& p : report.problems) ADD_FAILURE() << p.file << ": " << p.message;

  // A balance moved by hand is found, and fixed.
  EXPECT_TRUE(LCustomerChangeBalance(Profile(), "C2", 12345));
  report = Check(true);
  ASSERT_EQ(report.differences.size(), 1u);
  EXPECT_EQ(report.differences[0].key, "C2");
  EXPECT_EQ(report.differences[0].field, "Balance");
  EXPECT_EQ(report.differences[0].stored - report.differences[0].computed, 12345);
  EXPECT_TRUE(Check().differences.empty());
}

TEST_F(SalesPosting, MissingTaxAccountsAreCreatedWithTheChart) {
  LTaxOptions tax;
  tax.OpenFrom(Profile());
  ASSERT_TRUE(LTaxOptionsSetCanadaRates(tax, kProvinceQuebec));
  EXPECT_TRUE(tax.Flush());
  EXPECT_TRUE(LTaxOptionsCreateDefaultTaxAccounts(Profile()));
  EXPECT_EQ(LGetAccountNumberUsingDescription(Profile(), "TVQ perçue"), "2411");
  EXPECT_EQ(LGetAccountNumberUsingDescription(Profile(), "Taxe à la vente perçue"), "2410");
  EXPECT_TRUE(LTaxOptionsCreateDefaultTaxAccounts(Profile()));  // nothing more the second time
  LAccount account;
  EXPECT_FALSE(LAccountList(Profile()).Open(account, "2412"));
}

}  // namespace
