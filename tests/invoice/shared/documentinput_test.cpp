// Item lines as a user types them: what an empty column takes, the rates frozen on the line, and
// each refusal naming its column and rule, so the command line and the web grid say the same.
#include <gtest/gtest.h>

#include "invoice/shared/documentinput.h"
#include "invoice/shared/item.h"
#include "invoice/shared/taxoptions.h"
#include "llib/gen/filestore.h"
#include "tests/support/salestestbusiness.h"

namespace {

class DocumentLineInputTest : public LSalesTestBusiness {
 protected:
  void SetUp() override {
    LSalesTestBusiness::SetUp();
    LItem item;
    Profile().MainList(kItemsList).OpenAlways(item, "PAIN");
    item.SetString("Description", "Pain de campagne");
    item.SetInt64("Price", 250);
    ASSERT_TRUE(item.Flush());
    tax.OpenFrom(Profile());
  }
  void TearDown() override { tax.DetachWithoutSave(); }
  LDocumentLineError Apply(const LDocumentLineInput& line) {
    return LApplyDocumentLine(Profile(), tax, document, 0, line);
  }
  LTaxOptions tax;
  LSalesDocument document;
};

TEST_F(DocumentLineInputTest, EmptyColumnsTakeTheItemAndTheDefaults) {
  ASSERT_EQ(Apply({"PAIN", "", "", "", "", ""}), LDocumentLineError::kNone);
  EXPECT_EQ(document.GetString("Item1Description"), "Pain de campagne");
  EXPECT_EQ(document.GetInt64("Item1UnitValue", 0), 250);
  EXPECT_EQ(document.GetInt("Item1UnitValueDigits", 0), -1);
  EXPECT_EQ(document.GetFloat("Item1Qty"), 1.0);
  EXPECT_EQ(document.GetString("Item1TaxName"), "Valeur/défaut");
  EXPECT_EQ(document.GetString("Item1TaxRate"), "0");

  // A finer price keeps its decimals; a named tax has today's rates frozen on the line.
  ASSERT_EQ(Apply({"", "Conseil", "2.5", "1.999", "BC", "10"}), LDocumentLineError::kNone);
  EXPECT_EQ(document.GetInt64("Item1UnitValue", 0), 1999);
  EXPECT_EQ(document.GetInt("Item1UnitValueDigits", 0), 3);
  EXPECT_EQ(document.GetFloat("Item1Discount"), 10.0);
  EXPECT_EQ(document.GetString("Item1TaxRate"), LFKFormatTaxRateTriple(tax.GetTaxRate(5)));
  EXPECT_EQ(document.GetString("Item1CombinedTaxName"), "*B+C");
}

TEST_F(DocumentLineInputTest, EachRefusalNamesItsColumnAndRule) {
  struct Case {
    LDocumentLineInput line;
    LDocumentLineError error;
    const char* message;
  };
  const Case cases[] = {
      {{"", "x", "deux", "1", "", ""}, LDocumentLineError::kBadQuantity, "Quantité invalide : deux."},
      {{"", "x", "1", "1,50", "", ""}, LDocumentLineError::kBadUnitPrice, "Prix invalide : 1,50."},
      {{"", "x", "1", "1", "", "5%"}, LDocumentLineError::kBadDiscount, "Remise invalide : 5%."},
      {{"", "x", "1", "1", "Q", ""}, LDocumentLineError::kUnknownTax, "Taxe inconnue : Q."},
      // Several faults: the first column in the order quantity, price, discount, tax.
      {{"", "x", "?", "?", "Q", "?"}, LDocumentLineError::kBadQuantity, "Quantité invalide : ?."},
      {{"", "x", "1", "?", "Q", "?"}, LDocumentLineError::kBadUnitPrice, "Prix invalide : ?."},
      // Beyond the money ceiling: the price itself, or a quantity times a price that each read.
      {{"", "x", "", "100000000000", "", ""}, LDocumentLineError::kTooLarge,
       "Ligne trop grande : 1 × 100000000000 (plafond $99,999,999,999.99)."},
      {{"", "x", "1000", "99999999999.99", "", ""}, LDocumentLineError::kTooLarge,
       "Ligne trop grande : 1000 × 99999999999.99 (plafond $99,999,999,999.99)."},
  };
  for (const Case& c : cases) {
    LDocumentLineError error = Apply(c.line);
    EXPECT_EQ(error, c.error) << c.message;
    EXPECT_EQ(LDocumentLineErrorMessage(error, c.line, Profile().GetCurrencyFormat()), c.message);
  }
  EXPECT_EQ(LDocumentLineErrorMessage(LDocumentLineError::kNone, cases[0].line, Profile().GetCurrencyFormat()), "");
}

// The ceiling holds the total with its taxes: a line whose price is within the ceiling but whose
// tax takes the total past it is refused before anything is written, and a tax-inclusive price at
// the ceiling, whose tax is already inside it, passes.
TEST_F(DocumentLineInputTest, DocumentTotalWithTaxIsHeldAtTheCeiling) {
  const LSalesDocumentKind& kind = LSalesDocumentKindOf(LSalesDocumentType::kInvoice);
  auto apply = [&](const std::string& line, std::string& error) {
    LDocumentInput input;
    input.customer = "C1";
    input.lines = {line};
    LSalesDocument fresh;
    return LApplyDocumentInput(Profile(), kind, input, true, fresh, error);
  };
  std::string error;
  // 90 909 090 909,08 plus 10 % makes 99 999 999 999,99 exactly, one cent more passes it.
  EXPECT_TRUE(apply("|x|1|90909090909.08|A|", error)) << error;
  EXPECT_FALSE(apply("|x|1|90909090909.09|A|", error));
  EXPECT_EQ(error, "Le total du document dépasse le plafond de $99,999,999,999.99.");
  // Two lines each within the ceiling once taxed, and together before tax, beyond it with tax.
  LDocumentInput two;
  two.customer = "C1";
  two.lines = {"|x|1|90000000000|A|", "|y|1|5000000000|Aucun|"};
  LSalesDocument fresh;
  EXPECT_FALSE(LApplyDocumentInput(Profile(), kind, two, true, fresh, error));
  SetTaxInclusive(true);
  EXPECT_TRUE(apply("|x|1|99999999999.99|A|", error)) << error;
}

}  // namespace
