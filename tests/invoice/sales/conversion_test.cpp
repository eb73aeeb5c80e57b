// Quotes and orders into invoices: the fields carried, the payment-terms rules, tax rates frozen
// on the lines, and the conversion as the desk does it (recorded, posted, source marked once).
#include <gtest/gtest.h>

#include "invoice/sales/salesbook.h"
#include "invoice/sales/salesconversion.h"
#include "invoice/shared/customer.h"
#include "invoice/shared/documentconversion.h"
#include "invoice/shared/taxoptions.h"
#include "invoice/shared/totals.h"
#include "tests/support/salestestbusiness.h"

namespace {

class Conversion : public LSalesTestBusiness {
 protected:
  void SetUp() override {
    LSalesTestBusiness::SetUp();
    AddCustomer("C1");
  }
  // A source document in list under key, with three lines: the default tax (number 0), tax
  // number 2 ("B", stored as 3) and an explicit triple.
  void MakeSource(std::string_view list, const std::string& key, int terms) {
    LRecord source;
    Profile().List(list).OpenAlways(source, key);
    for (const char* field : {"Customer", "SalesPerson", "Address", "ShippingAddress", "Notes", "NotesIternal",
                              "CustomerPO", "ShipBy", "TrackingRef", "QuoteNumber"})
      source.SetString(field, field == std::string("Customer") ? "C1" : std::string(field) + " " + key);
    source.SetString("TaxRate", "0");
    source.SetString("Date", "2024-02-10");
    source.SetInt("PaymentTerms", terms);
    source.SetInt("PaymentTermsDays", 45);
    source.SetInt64("ShippingCosts", 700);
    AddLine(source, 10000, -1, 1, 0, "0", "Valeur/défaut");
    AddLine(source, 2000, -1, 2, 10, "3", "B");
    AddLine(source, 1000, 2, 1, 0, "8/0/0", "C");
    source.SetString("Item1Code", "W");
    source.SetString("Item1Description", "Widget");
    source.SetString("Item2Account", "4000");
  }
  std::string Field(std::string_view list, const std::string& key, std::string_view field) {
    LRecord record;
    Profile().List(list).Open(record, key);
    record.DetachWithoutSave();
    return record.GetString(field, "<absent>");
  }
};

TEST_F(Conversion, QuoteCarriesItsFieldsWithStandardTermsAndFrozenRates) {
  MakeSource("Quotes", "5", 1);
  LInvoice invoice;
  ASSERT_TRUE(invoice.LoadFromQuote(Profile(), "5"));
  EXPECT_EQ(invoice.GetCustomer(), "C1");
  EXPECT_EQ(invoice.GetString("TaxRate"), "0");
  for (const char* field : {"SalesPerson", "Address", "ShippingAddress", "Notes", "NotesIternal"})
    EXPECT_EQ(invoice.GetString(field), std::string(field) + " 5") << field;
  for (const char* field : {"Date", "CustomerPO", "ShipBy", "TrackingRef", "OrderNumber", "ShippingCosts"})
    EXPECT_FALSE(invoice.TestFieldExists(field)) << field;
  EXPECT_EQ(invoice.GetString("QuoteNumber"), "5");
  EXPECT_EQ(invoice.GetInt("PaymentTerms", 0), 2);
  EXPECT_EQ(invoice.GetInt("PaymentTermsDays", 0), 30);

  LFKItemCollectionRecord lines = invoice.Items();
  ASSERT_EQ(lines.GetItemCount(), 3);
  EXPECT_EQ(lines.GetItemCode(0), "W");
  EXPECT_EQ(lines.GetItemDescription(0), "Widget");
  EXPECT_EQ(lines.GetItemQty(1), 2);
  EXPECT_EQ(lines.GetItemDiscount(1), 10);
  EXPECT_EQ(lines.GetItemUnitValue(1), 2000);
  EXPECT_EQ(lines.GetItemTaxName(1), "B");
  EXPECT_EQ(invoice.GetString("Item1UnitValueDigits"), "-1");
  EXPECT_EQ(lines.GetItemUnitValueDigits(2), 2);
  EXPECT_FALSE(invoice.TestFieldExists("Item2Account"));
  EXPECT_EQ(lines.GetItemTaxRate(0), "10/0/0");  // number 0: the default tax "A"
  EXPECT_EQ(lines.GetItemTaxRate(1), "5/0/0");   // stored 3: tax 2, "B"
  EXPECT_EQ(lines.GetItemTaxRate(2), "8/0/0");   // a triple stays
}

TEST_F(Conversion, OrderKeepsItsDateAndTermsOneOrTwo) {
  MakeSource("Orders", "7", 3);
  LInvoice invoice;
  ASSERT_TRUE(invoice.LoadFromOrder(Profile(), "7"));
  EXPECT_EQ(invoice.GetDate(), "2024-02-10");
  EXPECT_EQ(invoice.GetInt("PaymentTerms", 0), 2);
  EXPECT_EQ(invoice.GetInt("PaymentTermsDays", 0), 45);
  for (const char* field : {"CustomerPO", "ShipBy", "TrackingRef", "QuoteNumber", "NotesIternal"})
    EXPECT_EQ(invoice.GetString(field), std::string(field) + " 7") << field;
  EXPECT_EQ(invoice.GetString("OrderNumber"), "7");

  MakeSource("Orders", "8", 1);
  LInvoice dueAtOnce;
  ASSERT_TRUE(dueAtOnce.LoadFromOrder(Profile(), "8"));
  EXPECT_EQ(dueAtOnce.GetInt("PaymentTerms", 0), 1);
}

TEST_F(Conversion, MissingSourceLeavesTheInvoiceUntouched) {
  LInvoice invoice;
  invoice.SetString("Customer", "X");
  EXPECT_FALSE(invoice.LoadFromQuote(Profile(), "99"));
  EXPECT_FALSE(invoice.LoadFromOrder(Profile(), "99"));
  EXPECT_FALSE(invoice.LoadFromQuote(Profile(), ""));
  ASSERT_EQ(invoice.Fields().size(), 1u);
  EXPECT_EQ(invoice.GetCustomer(), "X");
}

TEST_F(Conversion, ConvertedInvoiceIsPostedMarkedOnceAndKeepsItsRates) {
  MakeSource("Quotes", "5", 2);
  std::string key, error;
  const LSalesDocumentKind& quote = LSalesDocumentKindOf(LSalesDocumentType::kQuote);
  ASSERT_TRUE(LSalesDocumentConvertToInvoice(Profile(), quote, "5", false, key, error)) << error;
  EXPECT_EQ(key, "1");
  // 10000 at 10 %, 4000 at 5 % (discounts not shown), 1000 at 8 %; no shipping carried.
  const long long total = 10000 + 1000 + 4000 + 200 + 1000 + 80;
  EXPECT_EQ(Field("Invoices", key, "Total"), std::to_string(total));
  EXPECT_EQ(Field("Invoices", key, "JournalTxnRef"), "SLS10000");
  EXPECT_EQ(Field("Quotes", "5", "InvoiceNumber"), key);
  LCustomer customer;
  Profile().List(kCustomersList).Open(customer, "C1");
  EXPECT_EQ(customer.GetBalance(), total);
  customer.DetachWithoutSave();

  EXPECT_FALSE(LSalesDocumentConvertToInvoice(Profile(), quote, "5", false, key, error));
  EXPECT_EQ(error, "Le devis 5 a déjà été converti en facture (facture 1).");
  EXPECT_FALSE(LSalesDocumentConvertToInvoice(Profile(), quote, "6", false, key, error));
  EXPECT_EQ(error, "Document introuvable : 6.");

  {
    LTaxOptions tax;
    tax.OpenFrom(Profile());
    tax.SetTaxRate(1, {20, 0, false});
    tax.SetTaxRate(2, {50, 0, false});
  }
  LSalesDocument invoice;
  ASSERT_TRUE(Profile().List("Invoices").Open(invoice, "1"));
  EXPECT_FALSE(LInvoiceSumTotals(Profile(), invoice).TotalChanged());
  EXPECT_EQ(invoice.GetTotal(), total);
}

TEST_F(Conversion, DraftConversionLeavesBalanceAndLedgerAlone) {
  MakeSource("Orders", "3", 2);
  std::string key, error;
  const LSalesDocumentKind& order = LSalesDocumentKindOf(LSalesDocumentType::kOrder);
  ASSERT_TRUE(LSalesDocumentConvertToInvoice(Profile(), order, "3", true, key, error)) << error;
  EXPECT_EQ(key, "DFT1");
  EXPECT_EQ(Field("InvoicesDrafts", key, "JournalTxnRef"), "<absent>");
  EXPECT_EQ(Field("Customers", "C1", "Balance"), "<absent>");
  EXPECT_FALSE(LSalesDocumentConvertToInvoice(Profile(), order, "3", false, key, error));
  EXPECT_EQ(error, "La commande 3 a déjà été convertie en facture (facture DFT1).");
}

}  // namespace
