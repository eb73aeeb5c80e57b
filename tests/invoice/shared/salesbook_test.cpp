// The life of sales-side documents: drafts and recorded documents, their keys and lists, and the
// customer balances that every step keeps in step with the documents.
#include <gtest/gtest.h>

#include <random>

#include "invoice/shared/customer.h"
#include "invoice/shared/salesbook.h"
#include "tests/support/salestestbusiness.h"

namespace {

class SalesBook : public LSalesTestBusiness {
 protected:
  const LSalesDocumentKind& kInvoiceKind = LSalesDocumentKindOf(LSalesDocumentType::kInvoice);
  const LSalesDocumentKind& kCreditKind = LSalesDocumentKindOf(LSalesDocumentType::kCreditNote);

  static void Content(LRecord& content, const std::string& customer, long long unit) {
    content.SetString("Customer", customer);
    content.SetString("Date", "2024-05-02");
    AddLine(content, unit, -1, 1, 0, "2", "");  // tax A 10 %
  }
  long long Balance(const std::string& key) {
    LCustomer customer;
    EXPECT_TRUE(Profile().MainList(kCustomersList).Open(customer, key));
    return customer.GetBalance();
  }
  void ExpectBalancesFollowDocuments(const std::vector<std::string>& customers) {
    for (const auto& key : customers) {
      SCOPED_TRACE(key);
      EXPECT_EQ(Balance(key), LCustomerBalanceFromDocuments(Profile(), key));
    }
  }
};

TEST_F(SalesBook, DraftsTakeDftKeysAndRecordingMovesThemToTheRecordedList) {
  AddCustomer("C1");
  LRecord content;
  Content(content, "C1", 10000);
  std::string draftKey, second, error;
  ASSERT_TRUE(LSalesDocumentCreate(Profile(), kInvoiceKind, content, true, {}, draftKey, &error)) << error;
  ASSERT_TRUE(LSalesDocumentCreate(Profile(), kInvoiceKind, content, true, {}, second, &error)) << error;
  EXPECT_EQ(draftKey, "DFT1");
  EXPECT_EQ(second, "DFT2");
  EXPECT_EQ(Balance("C1"), 0);

  std::string key;
  ASSERT_TRUE(LSalesDocumentRecordDraft(Profile(), kInvoiceKind, "DFT1", key, &error)) << error;
  EXPECT_EQ(key, "1");
  EXPECT_FALSE(Profile().MainList("InvoicesDrafts").TestRecordExists("DFT1"));
  LSalesDocument recorded;
  ASSERT_TRUE(LSalesDocumentOpen(Profile(), kInvoiceKind, "1", recorded));
  EXPECT_FALSE(recorded.IsDraft());
  EXPECT_EQ(recorded.GetTotal(), 11000);
  EXPECT_EQ(Balance("C1"), 11000);
}

TEST_F(SalesBook, RefusalsWriteNothing) {
  AddCustomer("C1");
  LRecord content;
  Content(content, "Nobody", 100);
  std::string key, error;
  EXPECT_FALSE(LSalesDocumentCreate(Profile(), kInvoiceKind, content, false, {}, key, &error));
  EXPECT_EQ(error, "Le client « Nobody » n'existe pas.");
  content.SetString("Customer", "C1");
  EXPECT_FALSE(LSalesDocumentCreate(Profile(), kInvoiceKind, content, true, "42", key, &error));
  EXPECT_FALSE(LSalesDocumentCreate(Profile(), kInvoiceKind, content, false, "DFT9", key, &error));
  ASSERT_TRUE(LSalesDocumentCreate(Profile(), kInvoiceKind, content, false, "A-1", key, &error)) << error;
  EXPECT_FALSE(LSalesDocumentCreate(Profile(), kInvoiceKind, content, false, "A-1", key, &error));
  EXPECT_EQ(error, "Un document porte déjà le numéro A-1.");
  EXPECT_FALSE(LSalesDocumentEdit(
      Profile(), kInvoiceKind, "A-1", [](LSalesDocument& d) { d.SetString("Customer", "Nobody"); }, &error));
  LSalesDocument document;
  ASSERT_TRUE(LSalesDocumentOpen(Profile(), kInvoiceKind, "A-1", document));
  EXPECT_EQ(document.GetCustomer(), "C1");
  EXPECT_EQ(Balance("C1"), 110);
}

TEST_F(SalesBook, ChangingTheCustomerCarriesTheTotalAcross) {
  AddCustomer("C1");
  AddCustomer("C2");
  LRecord content;
  Content(content, "C1", 1000);
  std::string key, error;
  ASSERT_TRUE(LSalesDocumentCreate(Profile(), kInvoiceKind, content, false, {}, key, &error));
  ASSERT_TRUE(LSalesDocumentEdit(
      Profile(), kInvoiceKind, key,
      [](LSalesDocument& d) {
        d.SetString("Customer", "C2");
        AddLine(d, 500, -1, 1, 0, "2", "");
      },
      &error));
  EXPECT_EQ(Balance("C1"), 0);
  EXPECT_EQ(Balance("C2"), 1650);
  ExpectBalancesFollowDocuments({"C1", "C2"});
}

TEST_F(SalesBook, CreditNotesLowerTheBalance) {
  AddCustomer("C1");
  LRecord content;
  Content(content, "C1", 2000);
  std::string key, error;
  ASSERT_TRUE(LSalesDocumentCreate(Profile(), kCreditKind, content, false, {}, key, &error));
  EXPECT_EQ(Balance("C1"), -2200);
  ASSERT_TRUE(LSalesDocumentEdit(
      Profile(), kCreditKind, key, [](LSalesDocument& d) { AddLine(d, 1000, -1, 1, 0, "2", ""); }, &error));
  EXPECT_EQ(Balance("C1"), -3300);
  ASSERT_TRUE(LSalesDocumentDelete(Profile(), kCreditKind, key, &error));
  EXPECT_EQ(Balance("C1"), 0);
}

// Any sequence of new, edit, record and delete leaves every customer's balance equal to its
// invoices less its credit notes.
TEST_F(SalesBook, BalancesFollowDocumentsThroughAnySequence) {
  const std::vector<std::string> customers = {"C1", "C2", "C3"};
  for (const auto& c : customers) AddCustomer(c);
  std::mt19937 random(20240502);
  auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  std::vector<std::pair<const LSalesDocumentKind*, std::string>> documents;
  for (int step = 0; step < 60; ++step) {
    SCOPED_TRACE(step);
    const LSalesDocumentKind& kind = pick(4) == 0 ? kCreditKind : kInvoiceKind;
    int action = documents.empty() ? 0 : pick(4);
    std::string error;
    if (action == 0) {
      LRecord content;
      Content(content, customers[pick(3)], 100 * (pick(50) - 10));
      std::string key;
      ASSERT_TRUE(LSalesDocumentCreate(Profile(), kind, content, pick(3) == 0, {}, key, &error)) << error;
      documents.emplace_back(&kind, key);
      continue;
    }
    int which = pick(static_cast<int>(documents.size()));
    auto [docKind, key] = documents[which];
    if (action == 1) {
      std::string customer = customers[pick(3)];
      long long unit = 37 * pick(100) - 500;
      ASSERT_TRUE(LSalesDocumentEdit(
          Profile(), *docKind, key,
          [&](LSalesDocument& d) {
            d.SetString("Customer", customer);
            AddLine(d, unit, -1, 1, 0, "3", "");
          },
          &error))
          << error;
    } else if (action == 2 && key.rfind("DFT", 0) == 0) {
      std::string newKey;
      ASSERT_TRUE(LSalesDocumentRecordDraft(Profile(), *docKind, key, newKey, &error)) << error;
      documents[which].second = newKey;
    } else if (action == 3) {
      ASSERT_TRUE(LSalesDocumentDelete(Profile(), *docKind, key, &error)) << error;
      documents.erase(documents.begin() + which);
    }
    ExpectBalancesFollowDocuments(customers);
  }
}

}  // namespace
