// The payment commands of the real kontavo binary, and creditnote apply: what they print, what
// they refuse, and what the invoices, the customer's balance and the books show afterwards.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>
#include <nlohmann/json.hpp>

#include "llib/gen/hashtable.h"
#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

class PaymentCli : public LHomeTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(LRunKontavo({"init"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"account", "defaults"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"customer", "add", "C1", "Name=Dupont"}).exitCode, 0);
    // Three untaxed invoices of 100.00, due in date order.
    for (const char* date : {"2026-01-05", "2026-01-06", "2026-01-07"})
      ASSERT_EQ(LRunKontavo({"invoice", "new", "--customer", "C1", "--date", date, "--untaxed", "--line", "|x|1|100|Aucun|"})
                    .exitCode,
                0);
  }
  static long long Balance() { return LRunKontavoJson({"customer", "list"})[0]["Balance"].get<long long>(); }
  static nlohmann::json Invoice(const std::string& key) { return LRunKontavoJson({"invoice", "show", key}); }
  LEnvScope country_{"KONTAVO_COUNTRY", "US"};
};

TEST_F(PaymentCli, AutoPaymentIsSpreadShownListedAndDeleted) {
  LRunResult added = LRunKontavo({"payment", "add", "--customer", "C1", "--amount", "250", "--date", "2026-02-01", "--auto"});
  ASSERT_EQ(added.exitCode, 0) << added.err;
  EXPECT_EQ(added.out, "1\n");
  EXPECT_EQ(Balance(), 5000);
  EXPECT_EQ(Invoice("1")["amountPaid"], 10000);
  EXPECT_EQ(Invoice("1")["statusText"], "Payée");
  EXPECT_EQ(Invoice("3")["amountPaid"], 5000);
  EXPECT_EQ(Invoice("3")["statusText"], "Partiellement payée");
  EXPECT_NE(LRunKontavo({"invoice", "show", "3"}).out.find("Montant payé : 50.00\n"), std::string::npos);

  nlohmann::json shown = LRunKontavoJson({"payment", "show", "1"});
  EXPECT_EQ(shown["fields"]["InvoiceNumber"], "1,2,3");
  EXPECT_EQ(shown["fields"]["InvoiceAmounts"], "10000,10000,5000");
  EXPECT_EQ(shown["fields"]["JournalTxnRef"], "REC10000");
  EXPECT_EQ(shown["amount"], 25000);
  EXPECT_EQ(shown["unapplied"], 0);
  EXPECT_EQ(shown["applications"][2], (nlohmann::json{{"invoice", "3"}, {"amount", 5000}}));
  LRunResult text = LRunKontavo({"payment", "show", "1"});
  EXPECT_NE(text.out.find("Facture 3 : 50.00\n"), std::string::npos) << text.out;
  EXPECT_EQ(LRunKontavo({"payment", "list"}).out, "1\t2026-02-01\tC1\t250.00\n");
  EXPECT_EQ(LRunKontavoJson({"payment", "list"}).size(), 1u);
  LRunResult ledger = LRunKontavo({"ledger", "--from", "2026-02-01"});
  EXPECT_NE(ledger.out.find("Encaissement; C1"), std::string::npos) << ledger.out;

  ASSERT_EQ(LRunKontavo({"payment", "delete", "1"}).exitCode, 0);
  EXPECT_EQ(Balance(), 30000);
  EXPECT_EQ(Invoice("1")["amountPaid"], 0);
  EXPECT_EQ(LRunKontavo({"ledger", "--from", "2026-02-01"}).out, "");
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
}

TEST_F(PaymentCli, AnInvoiceGivenToAnotherCustomerLeavesThePaymentsOfTheFirst) {
  // One --apply takes several invoices.
  ASSERT_EQ(
      LRunKontavo({"payment", "add", "--customer", "C1", "--amount", "250", "--apply", "1=100", "2=100", "3=50"}).exitCode,
      0);
  ASSERT_EQ(LRunKontavo({"customer", "add", "C2", "Name=Martin"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"invoice", "edit", "3", "--customer", "C2"}).exitCode, 0);
  EXPECT_EQ(Invoice("3")["amountPaid"], 0);
  nlohmann::json payment = LRunKontavoJson({"payment", "show", "1"});
  EXPECT_EQ(payment["fields"]["InvoiceNumber"], "1,2");
  EXPECT_EQ(payment["unapplied"], 5000);
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
}

TEST_F(PaymentCli, RefusalsAndUsage) {
  auto add = [](std::vector<std::string> extra) {
    std::vector<std::string> args{"payment", "add", "--customer", "C1", "--amount", "10"};
    args.insert(args.end(), extra.begin(), extra.end());
    return LRunKontavo(args);
  };
  EXPECT_EQ(add({}).exitCode, 2);  // neither --apply nor --auto
  EXPECT_EQ(add({"--auto", "--apply", "1=5"}).exitCode, 2);
  EXPECT_EQ(add({"--apply", "1"}).exitCode, 2);
  LRunResult missing = add({"--apply", "9=5"});
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_EQ(missing.err, "Facture introuvable : 9.\n");
  LRunResult unknown = LRunKontavo({"payment", "add", "--customer", "X", "--amount", "10", "--auto"});
  EXPECT_EQ(unknown.err, "Le client « X » n'existe pas.\n");
  EXPECT_EQ(LRunKontavo({"payment", "show", "7"}).err, "Paiement introuvable : 7.\n");
  EXPECT_EQ(LRunKontavo({"payment", "delete", "7"}).exitCode, 1);
  EXPECT_EQ(LRunKontavo({"payment", "list"}).out, "");
  EXPECT_EQ(Balance(), 30000);
}

TEST_F(PaymentCli, CreditNoteAndRefundShowOnTheInvoice) {
  ASSERT_EQ(LRunKontavo({"creditnote", "new", "--customer", "C1", "--date", "2026-01-10", "--untaxed", "--line",
                         "|avoir|1|80|Aucun|"})
                .exitCode,
            0);
  ASSERT_EQ(LRunKontavo({"creditnote", "apply", "1", "2=30", "3=50"}).exitCode, 0);
  EXPECT_EQ(Invoice("2")["amountRefunded"], 3000);
  EXPECT_NE(LRunKontavo({"invoice", "show", "3"}).out.find("Montant remboursé : 50.00\n"), std::string::npos);
  LRunResult over = LRunKontavo({"creditnote", "apply", "1", "1=1"});
  EXPECT_EQ(over.exitCode, 1);
  EXPECT_EQ(over.err, "Le montant imputé dépasse le solde de l'avoir.\n");
  EXPECT_EQ(LRunKontavo({"creditnote", "apply", "1"}).exitCode, 2);

  LRunResult refund = LRunKontavo({"payment", "add", "--customer", "C1", "--amount", "20", "--date", "2026-02-02",
                                   "--refund", "--apply", "1=20"});
  ASSERT_EQ(refund.exitCode, 0) << refund.err;
  EXPECT_EQ(Invoice("1")["amountRefunded"], 2000);
  EXPECT_EQ(Balance(), 30000 - 8000 + 2000);
  EXPECT_EQ(LRunKontavo({"payment", "list"}).out, "1\t2026-02-02\tC1\t20.00\tremboursement\n");
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
}

// Applications and their letting go are in the audit trail, in the applier's name, one entry per
// invoice: what it took or gave back, and what it now holds; an edit that lowers an invoice's
// total below what it holds gives the excess back in the same way, payments and credit notes.
TEST_F(PaymentCli, ApplicationsAndTheirLettingGoAreAudited) {
  ASSERT_EQ(LRunKontavo({"payment", "add", "--customer", "C1", "--amount", "150", "--date", "2026-02-01", "--auto"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"creditnote", "new", "--customer", "C1", "--date", "2026-01-10", "--untaxed", "--line",
                         "|avoir|1|80|Aucun|"})
                .exitCode,
            0);
  ASSERT_EQ(LRunKontavo({"creditnote", "apply", "1", "3=30"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"creditnote", "apply", "1", "3=50"}).exitCode, 0);  // the invoice takes the new amount
  ASSERT_EQ(LRunKontavo({"invoice", "delete", "2"}).exitCode, 0);          // the payment lets go of it
  for (const auto& [key, date, price] : {std::tuple{"1", "2026-01-05", "60"}, std::tuple{"3", "2026-01-07", "20"}})
    ASSERT_EQ(LRunKontavo({"invoice", "edit", key, "--customer", "C1", "--date", date, "--untaxed", "--line",
                           std::string("|x|1|") + price + "|Aucun|"})
                  .exitCode,
              0);

  std::vector<std::string> entries;
  std::string log = LReadFile(home_.SharedFolder() + "/AuditTrail.log");
  for (std::size_t at = 0, end; (end = log.find('\n', at)) != std::string::npos; at = end + 1) {
    LHashTable entry;
    entry.LoadHTTPString(log.substr(at, end - at));
    std::string_view action = entry.GetString("Action", "");
    if (action == "apply" || action == "unapply")
      entries.push_back(std::string(action) + " " + entry.GetString("Reference", "") + " " + entry.GetString("Date", "") +
                        " " + entry.GetString("Amount", "") + " " + entry.GetString("Lines", ""));
  }
  EXPECT_EQ(entries, (std::vector<std::string>{
                         "apply Paiement 1 2026-02-01 10000 Facture 1=10000",
                         "apply Paiement 1 2026-02-01 5000 Facture 2=5000",
                         "apply Avoir 1 2026-01-10 3000 Facture 3=3000",
                         "apply Avoir 1 2026-01-10 2000 Facture 3=5000",
                         "unapply Paiement 1 2026-02-01 5000 Facture 2=0",
                         "unapply Paiement 1 2026-02-01 4000 Facture 1=6000",
                         "unapply Avoir 1 2026-01-10 3000 Facture 3=2000",
                     }));
  EXPECT_EQ(Invoice("1")["amountPaid"], 6000);
  EXPECT_EQ(Invoice("3")["amountRefunded"], 2000);
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"audit", "verify"}).exitCode, 0);
  // A refused application writes nothing.
  std::size_t size = log.size();
  EXPECT_EQ(LRunKontavo({"creditnote", "apply", "1", "1=90"}).exitCode, 1);
  EXPECT_EQ(LReadFile(home_.SharedFolder() + "/AuditTrail.log").size(), size);
}

}  // namespace
