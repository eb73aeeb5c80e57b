// The life of sales-side documents: drafts and recorded documents, their keys and lists, and the
// customer balances that every step keeps in step with the documents.
#include <gtest/gtest.h>

#include "invoice/shared/customer.h"
#include "invoice/sales/salesbook.h"
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

// Edits move the total between customers; credit notes lower the balance, and deleting one
// gives it back. (Any sequence of these steps is proved by the posting tests.)
TEST_F(SalesBook, EditsAndCreditNotesMoveTheBalances) {
  AddCustomer("C1");
  AddCustomer("C2");
  LRecord content;
  Content(content, "C1", 1000);
  std::string key, credit, error;
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

  LRecord creditContent;
  Content(creditContent, "C1", 2000);
  ASSERT_TRUE(LSalesDocumentCreate(Profile(), kCreditKind, creditContent, false, {}, credit, &error));
  EXPECT_EQ(Balance("C1"), -2200);
  ASSERT_TRUE(LSalesDocumentEdit(
      Profile(), kCreditKind, credit, [](LSalesDocument& d) { AddLine(d, 1000, -1, 1, 0, "2", ""); }, &error));
  EXPECT_EQ(Balance("C1"), -3300);
  ASSERT_TRUE(LSalesDocumentDelete(Profile(), kCreditKind, credit, &error));
  EXPECT_EQ(Balance("C1"), 0);
}

}  // namespace
