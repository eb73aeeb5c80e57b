// The sales pages beyond the lists and dialogs, on a real `kontavo serve`: a quote becoming an
// order then an invoice, the session drafts of a document being typed, the small AJAX helpers,
// the invoice search and the recurring invoices; what viewers and callers without a session get.
#include <gtest/gtest.h>

#include "llib/gen/date.h"
#include "tests/app/websalestest.h"

namespace {

class WebSalesFlowTest : public WebSalesTest {
 protected:
  std::string Get(const std::string& path, const std::string& session) { return LHttpGet(port_, path, session).body; }
  std::string Post(const std::string& path, const std::string& body, const std::string& session) {
    return LHttpPost(port_, path, body, session).body;
  }
  std::string Field(const std::string& list, const std::string& key, const std::string& field) {
    return LRunKontavo({"record", "get", list, key, field}).out;
  }
};

TEST_F(WebSalesFlowTest, QuoteBecomesOrderThenInvoiceAndTypedValuesSurviveInTheSession) {
  std::string session = Session();
  // 3 × 2,50 less the document's 10 %, plus 20 % tax: 8,10 €, the same on the order and the invoice.
  ASSERT_EQ(PostDocument(session, "quoteprop", "id=&101=DUP&9001=10&9002=Remise", {"PAIN||3|"}),
            "window.location = 'quotelist';\n");
  EXPECT_EQ(Show("quote", "1")["total"], 810);
  LWebResponse ordered = LHttpGet(port_, "/quoteco?id=1", session);
  EXPECT_EQ(ordered.headers["location"], "orderprop?id=1");
  EXPECT_EQ(Field("Orders", "1", "QuoteNumber"), "1\n");
  EXPECT_EQ(Field("Quotes", "1", "OrderNumber"), "1\n");
  EXPECT_EQ(Show("order", "1")["total"], 810);
  EXPECT_NE(LHttpGet(port_, "/quoteco?id=1", session).headers["location"].find("quotelist?msg=Le%20devis%201%20a"),
            std::string::npos);
  EXPECT_NE(Get("/quotelist", session).find("<a href='orderprop?id=1'>Commande 1</a>"), std::string::npos);
  EXPECT_EQ(LHttpGet(port_, "/orderci?id=1", session).headers["location"], "invoiceprop?id=1");
  EXPECT_EQ(Field("Invoices", "1", "QuoteNumber"), "1\n");
  EXPECT_EQ(Field("Invoices", "1", "OrderNumber"), "1\n");
  EXPECT_EQ(Show("invoice", "1")["total"], 810);
  // A deleted order frees its quote again.
  ASSERT_EQ(LRunKontavo({"order", "delete", "1"}).exitCode, 0);
  EXPECT_EQ(LHttpGet(port_, "/quoteco?id=1", session).headers["location"], "orderprop?id=1");

  // What is typed comes back when the user returns, until OK or "Abandonner".
  EXPECT_EQ(Post("/invoiceitemssave", "id=&101=DUP&fklines=1&10000=PAIN&10002=7&submit=x", session), "");
  std::string back = Get("/invoiceprop", session);
  EXPECT_NE(back.find("Les valeurs saisies et non enregistrées ont été reprises."), std::string::npos);
  EXPECT_NE(back.find("name=10002 data-col=2 type=text value='7'"), std::string::npos) << back;
  EXPECT_NE(back.find("invoiceprop?id=&discard=1"), std::string::npos);
  EXPECT_EQ(Get("/invoiceprop?id=1", session).find("ont été reprises"), std::string::npos);  // another document
  EXPECT_EQ(Get("/invoiceprop?discard=1", session).find("ont été reprises"), std::string::npos);
  EXPECT_EQ(Get("/invoiceprop", session).find("ont été reprises"), std::string::npos);
  Post("/invoiceitemssave", "id=1&101=DUP&fklines=1&10000=PAIN&10002=9", session);
  EXPECT_NE(Get("/invoiceprop?id=1", session).find("value='9'"), std::string::npos);
  ASSERT_EQ(PostDocument(session, "invoiceprop", "id=1&101=DUP", {"PAIN||9||Valeur%2Fd%C3%A9faut|1"}),
            "window.location = 'invoicelist';\n");
  EXPECT_EQ(Get("/invoiceprop?id=1", session).find("ont été reprises"), std::string::npos);
  // Nothing kept for a viewer, nor without a session.
  std::string viewer = Session("--viewer");
  Post("/invoiceitemssave", "id=&101=DUP&fklines=1&10002=5", viewer);
  EXPECT_EQ(Get("/invoiceprop", viewer).find("ont été reprises"), std::string::npos);
  EXPECT_EQ(LHttpPost(port_, "/invoiceitemssave", "id=&10002=5").body, "window.location = 'logon';\n");
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
}

TEST_F(WebSalesFlowTest, HelpersAnswerWithScriptAndSearchFindsInvoices) {
  ASSERT_EQ(LRunKontavo({"group", "add", "G", "PriceLevel=10"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"record", "set", "Customers", "DUP", "Group=G", "Address=1 rue Haute"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"salesperson", "add", "JEAN", "Name=Jean", "CommissionRate=5"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"invoice", "new", "--customer", "DUP", "--notes", "Livraison urgente", "--line", "|X|1|10|"})
                .exitCode,
            0);  // 12,00 €
  std::string session = Session();
  // The customer's price: 2,50 less its group's 10 %.
  EXPECT_EQ(Post("/cbitemselchange", "code=PAIN&line=2&customer=DUP", session), "FKItemFill(2, 'Pain', '2,25');\n");
  EXPECT_EQ(Post("/cbitemselchange", "code=NONE&line=2", session), "");
  EXPECT_NE(Post("/cbcustselchange", "customer=DUP", session)
                .find("LShowText('customerinfo', 'Dupont SA — 1 rue Haute — solde 12,00"),
            std::string::npos);
  EXPECT_EQ(Post("/cbuseselchange", "salesperson=JEAN", session),
            "LShowText('salespersoninfo', 'Jean, commission 5 %');\n");
  EXPECT_EQ(Post("/getCustomerBalance", "customer=DUP", session),
            "LShowText('customerbalance', 'Solde du client : 12,00 \xE2\x82\xAC');\n");
  EXPECT_NE(Post("/getInvoiceInfo", "id=1", session).find(": total 12,00 \xE2\x82\xAC, payé 0,00"), std::string::npos);
  EXPECT_NE(Post("/getInvoiceDueInfo", "id=1", session).find("reste dû 12,00"), std::string::npos);
  EXPECT_EQ(Post("/getInvoiceInfo", "id=..%2F1", session), "LShowText('invoiceinfo', 'Facture « ../1 » introuvable.');\n");
  std::string totals = Post("/pdltaxselchange", "kind=quote&id=&101=DUP&fklines=1&10000=PAIN&10002=2", session);
  EXPECT_NE(totals.find("document.getElementById('fktotals').innerHTML"), std::string::npos) << totals;
  EXPECT_NE(totals.find("5,40"), std::string::npos);  // 2 × 2,25 (the customer's price) + 20 % tax
  EXPECT_EQ(Post("/ratechanged", "kind=%3Cbad%3E", session), "");
  for (const char* route : {"/cbitemselchange", "/cbcustselchange", "/getCustomerBalance", "/getInvoiceInfo",
                            "/ratechanged", "/prdselchange"})
    EXPECT_EQ(LHttpPost(port_, route, "id=1&customer=DUP").body, "window.location = 'logon';\n") << route;

  EXPECT_NE(Get("/searchinvoices?q=dupont", session).find("1 facture(s) trouvée(s)."), std::string::npos);
  EXPECT_NE(Get("/searchinvoices?q=URGENTE", session).find("invoiceprop?id=1"), std::string::npos);
  EXPECT_NE(Get("/searchinvoices?q=12%2C00", session).find("1 facture(s) trouvée(s)."), std::string::npos);
  EXPECT_NE(Get("/searchinvoices?q=%3Cscript%3E", session).find("value='&lt;script&gt;'"), std::string::npos);
  EXPECT_NE(Get("/searchinvoices?q=rien", session).find("0 facture(s) trouvée(s)."), std::string::npos);
}

TEST_F(WebSalesFlowTest, RecurringInvoicesAreScheduledAndRunOnce) {
  ASSERT_EQ(LRunKontavo({"invoice", "new", "--customer", "DUP", "--line", "PAIN||4||"}).exitCode, 0);
  std::string session = Session();
  EXPECT_NE(Get("/invoiceschedule?id=1", session).find("action='invoiceschedulesave'"), std::string::npos);
  std::string yesterday = LDate::Today().AddDays(-1).ToText();
  EXPECT_NE(LHttpPost(port_, "/invoiceschedulesave", "id=1&start=" + yesterday + "&interval=abc", session)
                .headers["location"]
                .find("P%C3%A9riodicit%C3%A9%20invalide"),
            std::string::npos);
  EXPECT_NE(LHttpPost(port_, "/invoiceschedulesave", "id=9&start=" + yesterday + "&interval=2", session)
                .headers["location"]
                .find("invoiceschedule?msg="),
            std::string::npos);
  EXPECT_EQ(LHttpPost(port_, "/invoiceschedulesave", "id=1&start=" + yesterday + "&interval=2", session)
                .headers["location"],
            "invoiceschedule?msg=Mod%C3%A8le%201%20cr%C3%A9%C3%A9.");
  std::string schedule = Get("/invoiceschedule", session);
  EXPECT_NE(schedule.find("Tous les mois"), std::string::npos);
  EXPECT_NE(schedule.find("1 modèle(s) échu(s)."), std::string::npos);

  std::string viewer = Session("--viewer");
  EXPECT_NE(LHttpPost(port_, "/runrecurringinvoice", "", viewer).headers["location"].find("msg=Votre%20compte"),
            std::string::npos);
  EXPECT_EQ(LRunKontavoJson({"invoice", "list"}).size(), 1u);
  EXPECT_EQ(LHttpPost(port_, "/runrecurringinvoice", "", session).headers["location"],
            "invoiceschedule?msg=1%20document%28s%29%20cr%C3%A9%C3%A9%28s%29%20%3A%202.");
  EXPECT_EQ(LHttpPost(port_, "/runrecurringinvoice", "", session).headers["location"],
            "invoiceschedule?msg=Aucun%20document%20cr%C3%A9%C3%A9.");
  EXPECT_EQ(LRunKontavoJson({"invoice", "list"}).size(), 2u);
  EXPECT_EQ(LHttpPost(port_, "/runrecurringorder", "", session).headers["location"],
            "orderschedule?msg=Aucun%20document%20cr%C3%A9%C3%A9.");
  EXPECT_NE(LHttpPost(port_, "/runrecurringinvoice", "").body.find("Votre session a expiré."), std::string::npos);
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
}

}  // namespace
