// The payment pages on a real `kontavo serve`: a payment spread over the unpaid invoices or
// applied as typed, an invoice paid from its own page, what is left of a payment or a credit note
// applied afterwards, deletes; each refusal at its field, and what viewers, strangers and garbage
// get. The books stay consistent throughout.
#include <gtest/gtest.h>

#include <set>

#include "llib/gen/date.h"
#include "tests/app/websalestest.h"

namespace {

class WebPaymentsTest : public WebSalesTest {
 protected:
  void SetUp() override {
    WebSalesTest::SetUp();
    // Invoice 1 owes 12,00 €, invoice 2 30,00 €, both of DUP.
    ASSERT_EQ(LRunKontavo({"invoice", "new", "--customer", "DUP", "--line", "PAIN||4||"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"invoice", "new", "--customer", "DUP", "--line", "PAIN||10||"}).exitCode, 0);
  }
  std::string Pay(const std::string& session, const std::string& route, const std::string& fields) {
    return LHttpPost(port_, "/" + route, fields + "&submit=Enregistrer", session).body;
  }
  long long Applied(const std::string& payment, const std::string& invoice) {
    nlohmann::json shown = LRunKontavoJson({"payment", "show", payment});
    for (const auto& entry : shown["applications"])
      if (entry["invoice"] == invoice) return entry["amount"].get<long long>();
    return 0;
  }
  std::string Status(const std::string& invoice) {
    return LRunKontavoJson({"invoice", "show", invoice})["statusText"].get<std::string>();
  }
  // The "Reçus" references of the ledger, one per posted payment.
  std::size_t ReceiptsInLedger() {
    std::string ledger = LRunKontavo({"ledger"}).out;
    std::set<std::string> references;
    for (std::size_t at = 0; (at = ledger.find("\tREC", at)) != std::string::npos; ++at)
      references.insert(ledger.substr(at + 1, ledger.find('\t', at + 1) - at - 1));
    return references.size();
  }
  const std::string today_ = LDate::Today().ToText();
};

TEST_F(WebPaymentsTest, PaymentsSpreadOrAppliedAsTypedThenTheRestAndDeletesKeepTheBooks) {
  std::string session = Session();
  const std::string header = "id=&101=DUP&102=" + today_ + "&104=Compte-ch%C3%A8que";
  // Each refusal at its own field, nothing recorded.
  EXPECT_NE(Pay(session, "paymentprop", "id=&101=&102=" + today_ + "&103=5").find("Veuillez sélectionner un client."),
            std::string::npos);
  std::string refused = Pay(session, "paymentprop", header + "&103=douze");
  EXPECT_NE(refused.find("ShowControlError('103', 'Montant invalide : douze.');"), std::string::npos) << refused;
  EXPECT_NE(Pay(session, "paymentprop", header + "&103=0").find("Le montant doit être supérieur à zéro."),
            std::string::npos);
  EXPECT_NE(Pay(session, "paymentprop", "id=&101=DUP&102=2026-02-30&103=5").find("Date invalide : 2026-02-30."),
            std::string::npos);
  std::string old = LDate::Today().AddDays(-400).ToText();
  EXPECT_NE(Pay(session, "paymentprop", "id=&101=DUP&102=" + old + "&103=5").find("Confirmer une date de plus d"),
            std::string::npos);
  EXPECT_NE(Pay(session, "paymentprop", header + "&103=5&rbg3=302&applycount=1&applykey0=1&2000=6")
                .find("Le montant imputé dépasse le montant du paiement."),
            std::string::npos);
  EXPECT_EQ(LRunKontavoJson({"payment", "list"}).size(), 0u);

  // Spread: the oldest invoice first, as the payment routines settle them; "1 234,56" style input.
  std::string spread = Pay(session, "paymentprop", header + "&103=20%2C00&rbg3=301");
  EXPECT_EQ(spread, "window.location = 'paymentlist';\n");
  EXPECT_EQ(Applied("1", "1"), 1200);
  EXPECT_EQ(Applied("1", "2"), 800);
  EXPECT_EQ(Status("1"), "Payée");

  // From the invoice's own page: what it still owes is offered, and applied to it alone.
  std::string form = LHttpGet(port_, "/invoicepay?id=2", session).body;
  EXPECT_NE(form.find("value='22,00'"), std::string::npos) << form;
  EXPECT_EQ(Pay(session, "invoicepay", "id=2&101=DUP&102=" + today_ + "&103=25&104=Compte-ch%C3%A8que"),
            "window.location = 'invoiceprop?id=2';\n");
  EXPECT_EQ(Applied("2", "2"), 2200);
  EXPECT_EQ(LRunKontavoJson({"payment", "show", "2"})["unapplied"], 300);

  // What is left of payment 2 goes to a new invoice afterwards, capped at what it owes.
  ASSERT_EQ(LRunKontavo({"invoice", "new", "--customer", "DUP", "--line", "|Conseil|1|1|"}).exitCode, 0);  // 1,20 €
  std::string apply = LHttpGet(port_, "/applypayment?id=2", session).body;
  EXPECT_NE(apply.find("dont 3,00"), std::string::npos) << apply;
  EXPECT_EQ(LHttpPost(port_, "/applypayment", "id=2&applycount=1&applykey0=3&2000=1%2C20&submit=Imputer", session).body,
            "window.location = 'paymentlist';\n");
  EXPECT_EQ(Applied("2", "3"), 120);
  EXPECT_NE(LHttpPost(port_, "/applypayment", "id=2&applycount=1&applykey0=3&2000=9&submit=Imputer", session)
                .body.find("Le montant imputé dépasse le montant du paiement."),
            std::string::npos);

  // A credit note taken by an invoice from the invoice's page.
  ASSERT_EQ(LRunKontavo({"invoice", "new", "--customer", "DUP", "--line", "PAIN||2||"}).exitCode, 0);  // 6,00 €
  ASSERT_EQ(LRunKontavo({"creditnote", "new", "--customer", "DUP", "--line", "|Geste|1|5|"}).exitCode, 0);  // 6,00 €
  std::string take = LHttpGet(port_, "/invoiceapplypayment?id=4", session).body;
  EXPECT_NE(take.find("Avoir 1"), std::string::npos) << take;
  EXPECT_NE(take.find("name=applykey1 value='creditnote:1'"), std::string::npos) << take;
  EXPECT_EQ(LHttpPost(port_, "/invoiceapplypayment",
                      "id=4&applycount=2&applykey0=payment%3A2&2000=&applykey1=creditnote%3A1&2001=6&submit=Imputer",
                      session)
                .body,
            "window.location = 'invoiceprop?id=4';\n");
  EXPECT_EQ(LRunKontavoJson({"invoice", "show", "4"})["fields"]["AmountRefunded"], "600");

  // The list of the period, and a delete that gives everything back.
  std::string list = LHttpGet(port_, "/paymentlist", session).body;
  EXPECT_NE(list.find("2 paiement(s), reçu 45,00"), std::string::npos) << list;
  EXPECT_EQ(ReceiptsInLedger(), 2u);
  EXPECT_EQ(LHttpGet(port_, "/paymentdelete?id=1", session).headers["location"], "paymentlist");
  EXPECT_EQ(Status("1"), "Non payée");
  EXPECT_EQ(ReceiptsInLedger(), 1u);
  EXPECT_NE(LHttpGet(port_, "/paymentdelete?id=1", session).headers["location"].find("paymentlist?msg=Paiement"),
            std::string::npos);
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0) << LRunKontavo({"check"}).out;
}

TEST_F(WebPaymentsTest, ViewersStrangersAndGarbageChangeNothing) {
  std::string viewer = Session("--viewer");
  EXPECT_NE(LHttpGet(port_, "/paymentprop", viewer).body.find("Votre compte permet seulement de consulter"),
            std::string::npos);
  EXPECT_NE(Pay(viewer, "paymentprop", "id=&101=DUP&102=" + today_ + "&103=5&rbg3=301")
                .find("alert('Votre compte permet seulement de consulter les données.');"),
            std::string::npos);
  EXPECT_NE(Pay(viewer, "invoicepay", "id=1&101=DUP&102=" + today_ + "&103=5").find("seulement de consulter"),
            std::string::npos);
  EXPECT_EQ(LRunKontavoJson({"payment", "list"}).size(), 0u);
  ASSERT_EQ(LRunKontavo({"payment", "add", "--customer", "DUP", "--amount", "50", "--auto"}).exitCode, 0);
  EXPECT_NE(LHttpPost(port_, "/applypayment", "id=1&applycount=1&applykey0=2&2000=1&submit=Imputer", viewer)
                .body.find("seulement de consulter"),
            std::string::npos);
  EXPECT_NE(LHttpGet(port_, "/paymentdelete?id=1", viewer).headers["location"].find("msg=Votre%20compte"),
            std::string::npos);
  EXPECT_EQ(LHttpGet(port_, "/paymentlist", viewer).body.find("paymentdelete"), std::string::npos);

  // Keys that are not this business's, garbage and oversized parameters: messages, no change.
  std::string admin = Session();
  EXPECT_NE(LHttpGet(port_, "/paymentprop?id=999", admin).body.find("Paiement « 999 » introuvable."),
            std::string::npos);
  EXPECT_NE(LHttpGet(port_, "/applypayment?id=..%2F..%2FPayments%2F1", admin).body.find("introuvable"),
            std::string::npos);
  EXPECT_NE(LHttpGet(port_, "/invoicepay?id=42", admin).body.find("Facture « 42 » introuvable."), std::string::npos);
  EXPECT_NE(LHttpPost(port_, "/applypayment", "id=1&applycount=999999&applykey0=%3Cscript%3E&2000=1&submit=Imputer",
                      admin)
                .body.find("Facture introuvable : \\x3Cscript\\x3E."),
            std::string::npos);
  EXPECT_NE(LHttpPost(port_, "/invoiceapplypayment", "id=1&applycount=1&applykey0=1&2000=1&submit=Imputer", admin)
                .body.find("Pièce inconnue : 1."),
            std::string::npos);
  std::string huge(100000, '9');
  EXPECT_NE(Pay(admin, "paymentprop", "id=&101=DUP&102=" + today_ + "&103=" + huge).find("Montant trop grand"),
            std::string::npos);
  EXPECT_EQ(LRunKontavoJson({"payment", "list"}).size(), 1u);
  EXPECT_EQ(LRunKontavoJson({"payment", "show", "1"})["unapplied"], 800);

  // No session: the logon page for dialogs, the session-expired page for the delete.
  EXPECT_EQ(LHttpGet(port_, "/paymentlist").headers["location"], "logon");
  EXPECT_EQ(LHttpPost(port_, "/paymentprop", "id=&101=DUP&103=5&submit=Enregistrer").headers["location"], "logon");
  EXPECT_NE(LHttpGet(port_, "/paymentdelete?id=1").body.find("Votre session a expiré."), std::string::npos);
  EXPECT_EQ(LRunKontavoJson({"payment", "list"}).size(), 1u);
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
}

}  // namespace
