// The sales pages on a real `kontavo serve` in a French business: customers, the document lists
// and dialogs on the item-line grid, deletes and conversions, for each role, and what they do
// with keys and parameters they should not get.
#include <gtest/gtest.h>

#include "llib/gen/file.h"
#include "llib/gen/filestoreindex.h"
#include "tests/app/websalestest.h"

namespace {

TEST_F(WebSalesTest, CustomerDialogChecksFieldsAndDeleteSparesCustomersWithDocuments) {
  std::string session = Session();
  auto post = [&](const std::string& fields) {
    return LHttpPost(port_, "/customerprop", fields + "&submit=++OK++", session).body;
  };
  EXPECT_NE(post("id=&101=MAR&107=12345").find("ShowControlError('107', 'Le SIREN doit compter 9 chiffres.');"),
            std::string::npos);
  EXPECT_NE(post("id=&101=DUP&102=Autre").find("Le client « DUP » existe déjà."), std::string::npos);
  EXPECT_EQ(LRunKontavo({"customer", "show", "MAR"}).exitCode, 1);
  EXPECT_EQ(post("id=&101=MAR&102=Martin+SARL&105=compta%40martin.fr&107=123+456+789"),
            "window.location = 'customerlist';\n");
  EXPECT_EQ(LRunKontavoJson({"customer", "show", "MAR"})["fields"]["Name"], "Martin SARL");

  ASSERT_EQ(LRunKontavo({"invoice", "new", "--customer", "DUP", "--line", "PAIN||4||"}).exitCode, 0);
  std::string list = LHttpGet(port_, "/customerlist", session).body;
  EXPECT_NE(list.find(">Dupont SA</td>"), std::string::npos);
  EXPECT_NE(list.find(Euros("12,00")), std::string::npos) << list;  // 4 × 2,50 plus 20 % tax

  LWebResponse refused = LHttpGet(port_, "/customerdelete?id=DUP", session);
  EXPECT_NE(refused.headers["location"].find("customerlist?msg=Le%20client"), std::string::npos);
  EXPECT_NE(LHttpGet(port_, "/" + refused.headers["location"], session).body.find("la facture 1 le nomme"),
            std::string::npos);
  EXPECT_EQ(LRunKontavo({"customer", "show", "DUP"}).exitCode, 0);
  EXPECT_EQ(LHttpGet(port_, "/customerdelete?id=MAR", session).headers["location"], "customerlist");
  EXPECT_EQ(LRunKontavo({"customer", "show", "MAR"}).exitCode, 1);
}

// A page reads the books as a command does, once what a change cut short left is settled: here an
// invoice saved and posted by a recording killed before it moved its customer's balance.
TEST_F(WebSalesTest, AChangeCutShortIsSettledBeforeAPageAnswers) {
  std::string session = Session();
  ASSERT_EQ(LRunKontavo({"invoice", "new", "--customer", "DUP", "--line", "PAIN||4||"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"record", "set", "Customers", "DUP", "Balance=0"}).exitCode, 0);
  std::string intents = home_.SharedFolder() + "/Ledger/Intents";
  LWriteFile(intents + "/999999-0.sales", "reserve\tInvoices\npost\tInvoices\t1\t\t\npost\tInvoices\t1\t\tSLS10000\n");
  std::string list = LHttpGet(port_, "/customerlist", session).body;
  EXPECT_NE(list.find(Euros("12,00")), std::string::npos) << list;
  EXPECT_TRUE(LFile::ListFolder(intents).empty());
  EXPECT_NE(server_->Log().find("Une modification des documents a été interrompue"), std::string::npos)
      << server_->Log();
}

TEST_F(WebSalesTest, InvoiceDialogReadsFrenchAmountsAndKeepsItsLinesAcrossSaves) {
  std::string session = Session();
  std::string page = LHttpGet(port_, "/invoiceprop", session).body;
  EXPECT_NE(page.find("<a href='invoicelist' class='navtab navtabcurrent'>Factures</a>"), std::string::npos);
  // Line discounts do not count in this business: no discount column.
  EXPECT_EQ(page.find("Remise %"), std::string::npos);
  EXPECT_NE(page.find("Remise sur le document"), std::string::npos);

  // Each refusal at its own control; nothing written.
  EXPECT_NE(PostDocument(session, "invoiceprop", "id=&101=", {"PAIN||2|"}).find("Veuillez sélectionner un client."),
            std::string::npos);
  EXPECT_NE(PostDocument(session, "invoiceprop", "id=&101=DUP&102=2026-13-01", {"PAIN||2|"})
                .find("ShowControlError('102', 'Date invalide : 2026-13-01.');"),
            std::string::npos);
  EXPECT_NE(PostDocument(session, "invoiceprop", "id=&101=DUP", {"PAIN||1|", "|Conseil|2x|10"})
                .find("ShowControlError('10012', 'Quantité invalide : 2x.');"),
            std::string::npos);
  EXPECT_NE(PostDocument(session, "invoiceprop", "id=&101=DUP", {"|Conseil|1|12,5,0"})
                .find("ShowControlError('10003', 'Prix invalide : 12,5,0.');"),
            std::string::npos);
  EXPECT_EQ(LRunKontavoJson({"invoice", "list"}).size(), 0u);

  // "1 234,56" is read as the business writes it; the document discount is a line of its own.
  std::string fields = "id=&101=DUP&102=2026-03-10&103=30&9001=10&9002=Remise+fid%C3%A9lit%C3%A9";
  std::string totals = PostDocument(session, "invoiceprop", fields + "&isComAJAX=1&MainControlId=108",
                                    {"PAIN||2|", "|Conseil|1|1+234%2C56"}, "");
  EXPECT_NE(totals.find("document.getElementById('fktotals').innerHTML"), std::string::npos);
  EXPECT_EQ(PostDocument(session, "invoiceprop", fields, {"PAIN||2|", "|Conseil|1|1+234%2C56"}),
            "window.location = 'invoicelist';\n");
  nlohmann::json invoice = Show("invoice", "1");
  ASSERT_TRUE(invoice.contains("fields")) << invoice.dump();
  const nlohmann::json& stored = invoice["fields"];
  EXPECT_EQ(stored["Item2UnitValue"], "123456");
  EXPECT_EQ(stored["FixedPercentageDiscountItem"], "3");
  EXPECT_EQ(stored["Item3Description"], "Remise fidélité");
  // The totals the page showed while typing are the saved document's.
  std::string total = stored["Total"].get<std::string>();
  long long cents = std::stoll(total);
  std::string shown = std::to_string(cents / 100) + "," + (cents % 100 < 10 ? "0" : "") + std::to_string(cents % 100);
  if (shown.size() > 6) shown.insert(shown.size() - 6, " ");
  EXPECT_NE(totals.find(Euros(shown)), std::string::npos) << totals << " " << total;

  // Reopened: the discount is back under the grid, the rows remember their lines.
  page = LHttpGet(port_, "/invoiceprop?id=1", session).body;
  EXPECT_NE(page.find("id=9001 name=9001 type=text size=5 class=fknumber value='10'"), std::string::npos);
  EXPECT_NE(page.find("name=10013 data-col=3 type=text value='1 234,56'"), std::string::npos) << page;
  EXPECT_NE(page.find("name=10016 data-col=6 value='2'"), std::string::npos);

  // A line of a named tax freezes today's rate; when the rate changes, a save of the old line
  // keeps the rate it was written with and a new line takes today's.
  const std::string tax = "TVA+10+%25";
  ASSERT_EQ(PostDocument(session, "invoiceprop", "id=1&101=DUP&102=2026-03-10&103=30&9001=10&9002=Remise",
                         {"PAIN||2||" + tax + "|1", "|Conseil|1|1+234%2C56||2"}),
            "window.location = 'invoicelist';\n");
  EXPECT_EQ(Show("invoice", "1")["fields"]["Item1TaxRate"], "10/0/0");
  ASSERT_EQ(LRunKontavo({"tax", "set", "--rate", "2=7"}).exitCode, 0);
  EXPECT_EQ(PostDocument(session, "invoiceprop", "id=1&101=DUP&102=2026-03-10&103=30&9001=10&9002=Remise",
                         {"PAIN||3||" + tax + "|1", "|Conseil|1|1+234%2C56||2", "PAIN||1||" + tax + "|"}),
            "window.location = 'invoicelist';\n");
  const nlohmann::json edited = Show("invoice", "1")["fields"];
  EXPECT_EQ(edited["Item1TaxRate"], "10/0/0");
  EXPECT_EQ(edited["Item3TaxRate"], "7/0/0");
  EXPECT_EQ(edited["FixedPercentageDiscountItem"], "4");
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
}

TEST_F(WebSalesTest, ListsShowAPeriodPageLongListsAndFilterByCustomer) {
  ASSERT_EQ(LRunKontavo({"customer", "add", "MAR", "Name=Martin"}).exitCode, 0);
  for (int n = 0; n < 105; ++n)
    ASSERT_EQ(LRunKontavo({"quote", "new", "--customer", n == 7 ? "MAR" : "DUP", "--line", "PAIN||1||"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"quote", "new", "--customer", "DUP", "--date", "2001-01-01", "--line", "PAIN||1||"}).exitCode,
            0);
  std::string session = Session();
  std::string first = LHttpGet(port_, "/quotelist", session).body;
  EXPECT_NE(first.find("105 document(s)"), std::string::npos);  // this fiscal year only
  EXPECT_NE(first.find("page 1 sur 2"), std::string::npos);
  EXPECT_EQ(first.find("2001-01-01"), std::string::npos);
  // Sorted by number descending, the second page holds the five lowest numbers.
  std::string second = LHttpGet(port_, "/quotelist?iCol=0&bAsc=0&page=2", session).body;
  EXPECT_NE(second.find(">5</a>"), std::string::npos);
  EXPECT_EQ(second.find(">6</a>"), std::string::npos);
  EXPECT_NE(LHttpGet(port_, "/quotelist?from=2000-01-01&to=2001-12-31", session).body.find("1 document(s)"),
            std::string::npos);
  std::string martin = LHttpGet(port_, "/quotelist?customer=MAR", session).body;
  EXPECT_NE(martin.find("1 document(s)"), std::string::npos);
  EXPECT_NE(martin.find(">8</a>"), std::string::npos);
  // Garbage parameters: a message, the default period, never a failure.
  std::string garbage = LHttpGet(port_, "/quotelist?from=hier&page=-3&iCol=99", session).body;
  EXPECT_NE(garbage.find("Date invalide : hier."), std::string::npos);
  EXPECT_NE(garbage.find("page 1 sur 2"), std::string::npos);

  // The filter bar's refilters answer with the new block and the address of the filtered list.
  std::string all = LHttpPost(port_, "/quotelistperiodchange", "prd=all&customer=&iCol=0&bAsc=1", session).body;
  EXPECT_NE(all.find("ListFilterShow('all', '', '', '"), std::string::npos) << all;
  EXPECT_NE(all.find("106 document(s)"), std::string::npos);
  EXPECT_NE(all.find("data-refilter=\\'quotelistperiodchange\\'"), std::string::npos) << all;  // paged: server sorts
  EXPECT_NE(all.find("'quotelist?prd=all&from=&to=&customer=&iCol=0&bAsc=1');"), std::string::npos);
  std::string dates =
      LHttpPost(port_, "/quotelistdatechange", "prd=fy&from=2001-01-01&to=2001-01-01&customer=DUP&page=2", session).body;
  EXPECT_NE(dates.find("ListFilterShow('custom', '2001-01-01', '2001-01-01'"), std::string::npos) << dates;
  EXPECT_NE(dates.find("1 document(s)"), std::string::npos);
  std::string customer = LHttpPost(port_, "/quotelistcustomerchange", "prd=all&customer=MAR", session).body;
  EXPECT_NE(customer.find("1 document(s)"), std::string::npos);
  EXPECT_EQ(LHttpPost(port_, "/quotelistcustomerchange", "prd=all&customer=MAR").body, "window.location = 'logon';\n");
  // The period dialog: a named period fills the dates, OK shows the list so filtered.
  std::string dialog = LHttpGet(port_, "/quotelistperiod?prd=pm&customer=MAR", session).body;
  EXPECT_NE(dialog.find("<option value='pm' selected>Le mois dernier</option>"), std::string::npos) << dialog;
  EXPECT_NE(dialog.find("<option value='MAR' selected>"), std::string::npos);
  EXPECT_NE(LHttpPost(port_, "/prdselchange", "prd=all", session).body.find("document.getElementById('102').value = '';"),
            std::string::npos);
  EXPECT_NE(LHttpPost(port_, "/quotelistperiod", "101=custom&102=2026-05-01&103=2026-04-01&104=&submit=Afficher", session)
                .body.find("La date de fin précède la date de début."),
            std::string::npos);
  EXPECT_EQ(LHttpPost(port_, "/quotelistperiod", "101=all&102=&103=&104=MAR&submit=Afficher", session).body,
            "window.location = 'quotelist?prd=all&from=&to=&customer=MAR';\n");
}

TEST_F(WebSalesTest, ListsFollowTheIndexesOfDatesAndNamesAndShowingThemWritesNothing) {
  for (const char* date : {"2026-01-15", "2026-02-10"})
    ASSERT_EQ(LRunKontavo({"invoice", "new", "--customer", "DUP", "--date", date, "--line", "PAIN||1||"}).exitCode, 0);
  std::string session = Session();
  auto month = [&](const std::string& from, const std::string& to) {
    return LHttpGet(port_, "/invoicelist?from=" + from + "&to=" + to, session).body;
  };
  std::string invoices = home_.SharedFolder() + "/Invoices/";
  ino_t first = LFileStoreInodeOf(invoices + "1.dat");
  std::string january = month("2026-01-01", "2026-01-31");
  EXPECT_NE(january.find("1 document(s)"), std::string::npos) << january;
  EXPECT_NE(january.find("invoiceprop?id=1'"), std::string::npos);
  // A recorded invoice holds its amounts paid and refunded from the start: the list writes nothing.
  EXPECT_EQ(LFileStoreInodeOf(invoices + "1.dat"), first);
  EXPECT_NE(LReadFile(invoices + "1.dat").find("AmountPaid=0"), std::string::npos);

  // A date changed through the dialog moves the invoice to its new month.
  EXPECT_EQ(PostDocument(session, "invoiceprop", "id=1&101=DUP&102=2026-02-20", {"PAIN||1|"}),
            "window.location = 'invoicelist';\n");
  EXPECT_NE(month("2026-01-01", "2026-01-31").find("Aucune facture sur la période."), std::string::npos);
  EXPECT_NE(month("2026-02-01", "2026-02-28").find("2 document(s)"), std::string::npos);

  // An index giving another date for a record's own file is a fault: the check names it, --fix
  // rebuilds the index.
  LWriteFile(invoices + ".index.Date", LReadFile(invoices + ".index.Date") + std::to_string(LFileStoreInodeOf(invoices + "2.dat")) + " 2 2026-01-01\n");
  LRunResult check = LRunKontavo({"check"});
  EXPECT_EQ(check.exitCode, 1);
  EXPECT_NE(check.out.find("L'index « Date » ne suit pas l'enregistrement « 2 »"), std::string::npos) << check.out;
  EXPECT_EQ(LRunKontavo({"check", "--fix"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
  EXPECT_NE(month("2026-02-01", "2026-02-28").find("2 document(s)"), std::string::npos);

  // The customer choices come from the customers' name index, kept in step by another process.
  ASSERT_EQ(LRunKontavo({"record", "set", "Customers", "DUP", "Name=Dupont et Fils"}).exitCode, 0);
  EXPECT_NE(LHttpGet(port_, "/invoiceprop", session).body.find("<option value='DUP'>DUP - Dupont et Fils</option>"),
            std::string::npos);
}

TEST_F(WebSalesTest, QuoteBecomesAnInvoiceOnceAndDeletesGoThroughTheSalesBook) {
  std::string session = Session();
  EXPECT_EQ(PostDocument(session, "quoteprop", "id=&101=DUP", {"PAIN||3|"}), "window.location = 'quotelist';\n");
  EXPECT_EQ(LHttpGet(port_, "/quoteci?id=1", session).headers["location"], "invoiceprop?id=1");
  EXPECT_EQ(Show("invoice", "1")["fields"]["QuoteNumber"], "1");
  LWebResponse again = LHttpGet(port_, "/quoteci?id=1", session);
  EXPECT_NE(again.headers["location"].find("quotelist?msg="), std::string::npos);
  EXPECT_EQ(LRunKontavoJson({"invoice", "list"}).size(), 1u);
  EXPECT_NE(LHttpGet(port_, "/quotelist", session).body.find("<a href='invoiceprop?id=1'>1</a>"), std::string::npos);

  EXPECT_EQ(LHttpGet(port_, "/invoicedelete?id=1", session).headers["location"], "invoicelist");
  EXPECT_EQ(LRunKontavoJson({"invoice", "list"}).size(), 0u);
  EXPECT_NE(LHttpGet(port_, "/invoicedelete?id=1", session).headers["location"].find("invoicelist?msg="),
            std::string::npos);
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
}

TEST_F(WebSalesTest, ViewersAndStrangersChangeNothing) {
  ASSERT_EQ(LRunKontavo({"invoice", "new", "--customer", "DUP", "--line", "PAIN||1||"}).exitCode, 0);
  // Another business with an invoice of the same number: the session's business is the only one touched.
  std::string id = LRunKontavo({"business", "add", "--name", "Autre SARL"}).out;
  ASSERT_FALSE(id.empty());
  ASSERT_EQ(LRunKontavo({"--business", "Autre SARL", "customer", "add", "ZED"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"--business", "Autre SARL", "invoice", "new", "--customer", "ZED", "--line", "|X|1|5|"})
                .exitCode,
            0);

  std::string viewer = Session("--viewer");
  std::string list = LHttpGet(port_, "/invoicelist", viewer).body;
  EXPECT_NE(list.find("invoiceprop?id=1"), std::string::npos);
  EXPECT_EQ(list.find("invoicedelete"), std::string::npos);
  EXPECT_EQ(list.find("Nouvelle facture"), std::string::npos);
  EXPECT_NE(PostDocument(viewer, "invoiceprop", "id=1&101=DUP", {"PAIN||9|"})
                .find("alert('Votre compte permet seulement de consulter les données.');"),
            std::string::npos);
  EXPECT_NE(LHttpGet(port_, "/invoicedelete?id=1", viewer).headers["location"].find("msg=Votre%20compte"),
            std::string::npos);
  EXPECT_NE(LHttpGet(port_, "/customerdelete?id=DUP", viewer).headers["location"].find("msg=Votre%20compte"),
            std::string::npos);
  EXPECT_EQ(LRunKontavoJson({"invoice", "list"}).size(), 1u);
  EXPECT_EQ(LRunKontavoJson({"--business", "Autre SARL", "invoice", "list"}).size(), 1u);

  // A user of the first business never reaches the other one's customer.
  std::string user = LHttpGet(port_, "/invoiceprop?id=1", Session()).body;
  EXPECT_EQ(user.find("ZED"), std::string::npos);

  // Unknown, empty and oversized keys: a message, never a failure.
  std::string admin = Session();
  EXPECT_NE(LHttpGet(port_, "/invoiceprop?id=999", admin).body.find("Facture « 999 » introuvable."),
            std::string::npos);
  std::string huge(20000, 'x');
  LHttpGet(port_, "/invoiceprop?id=" + huge, admin);
  EXPECT_EQ(LHttpGet(port_, "/invoicelist", admin).status, 200);  // the server lives on
  EXPECT_NE(LHttpGet(port_, "/invoicedelete?id=", admin).headers["location"].find("msg="), std::string::npos);
  EXPECT_NE(LHttpGet(port_, "/quoteci?id=..%2F..%2FInvoices%2F1", admin).headers["location"].find("msg="),
            std::string::npos);

  // No session: the logon page for pages, the session-expired page for actions.
  EXPECT_EQ(LHttpGet(port_, "/invoicelist").headers["location"], "logon");
  EXPECT_EQ(LHttpPost(port_, "/invoiceprop", "id=&101=DUP&submit=Enregistrer").headers["location"], "logon");
  LWebResponse expired = LHttpGet(port_, "/invoicedelete?id=1");
  EXPECT_EQ(expired.status, 200);
  EXPECT_EQ(LRunKontavoJson({"invoice", "list"}).size(), 1u);
}

}  // namespace
