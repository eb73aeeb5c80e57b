// The purchase pages on a real `kontavo serve` in a French business: suppliers, bills, bill
// payments applied to bills, a purchase order made a bill, what is owed; each refusal at its
// control; viewers, strangers, other businesses' keys and garbage changing nothing; and a web
// user and the command line paying and billing one supplier at once without losing anything.
#include <gtest/gtest.h>

#include <thread>

#include "llib/gen/file.h"
#include "llib/gen/filestoreindex.h"
#include "tests/support/envscope.h"
#include "tests/support/webservertest.h"

namespace {

class WebPurchasesTest : public LWebServerTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(LRunKontavo({"init", "--name", "Principale SARL"}).exitCode, 0);
    LWebServerTest::SetUp();
    ASSERT_EQ(LRunKontavo({"supplier", "add", "DUP", "Name=Dupont SA", "PaymentTermsDays=15", "ExpenseAccount=607000"})
                  .exitCode,
              0);
    admin_ = Session();
  }
  // One press of a dialog's OK: "Enregistrer" for the documents, "  OK  " for the supplier.
  std::string Post(const std::string& route, const std::string& body, const std::string& session = {}) {
    std::string submit = route == "supplierprop" ? "&submit=++OK++" : "&submit=Enregistrer";
    return LHttpPost(port_, "/" + route, body + submit, session.empty() ? admin_ : session).body;
  }
  std::string Get(const std::string& path, const std::string& session = {}) {
    return LHttpGet(port_, "/" + path, session.empty() ? admin_ : session).body;
  }
  std::string Location(const std::string& path, const std::string& session = {}) {
    return LHttpGet(port_, "/" + path, session.empty() ? admin_ : session).headers["location"];
  }
  std::string Field(const std::string& list, const std::string& key, const std::string& field) {
    return LRunKontavo({"record", "get", list, key, field}).out;
  }
  // A bill of DUP: one line of quantity × unit price on 607000 at "TVA 20 %".
  std::string BillBody(const std::string& date, const std::string& quantity, const std::string& price) {
    return "id=&billlines=4&101=DUP&102=" + date + "&20000=607000&20003=" + quantity + "&20004=" + price +
           "&20005=TVA+20+%25";
  }

  // A French business whatever tests ran before in this process.
  LEnvScope locale_{"LC_ALL", "fr_FR.UTF-8"};
  LEnvScope country_{"KONTAVO_COUNTRY", "FR"};
  std::string admin_;
};

TEST_F(WebPurchasesTest, SupplierPagesAndTheDeleteThatIsRefusedWhileABillNamesTheSupplier) {
  EXPECT_NE(Post("supplierprop", "id=&101=MAR&107=12").find("ShowControlError('107', 'Numéro SIREN invalide"),
            std::string::npos);
  EXPECT_NE(Post("supplierprop", "id=&101=MAR&109=999999").find("ShowControlError('109'"), std::string::npos);
  EXPECT_NE(Post("supplierprop", "id=&101=DUP&102=Autre").find("Le fournisseur « DUP » existe déjà."),
            std::string::npos);
  EXPECT_EQ(Post("supplierprop", "id=&101=MAR&102=Martin+SARL&107=552+100+554&110=45"),
            "window.location = 'supplierlist';\n");
  EXPECT_EQ(Field("Suppliers", "MAR", "SIREN"), "552100554\n");
  EXPECT_EQ(Field("Suppliers", "MAR", "PaymentTermsDays"), "45\n");

  ASSERT_EQ(LRunKontavo({"bill", "add", "--supplier", "DUP", "--date", "2026-03-01", "607000:100.00:TVA 20 %",
                         "--tax", "1=20.00"})
                .exitCode,
            0);
  std::string list = Get("supplierlist");
  EXPECT_NE(list.find(">Dupont SA</td>"), std::string::npos);
  EXPECT_NE(list.find("120,00 \xE2\x82\xAC"), std::string::npos) << list;
  EXPECT_EQ(Get("getSupplierBalance?id=DUP"), "120,00 \xE2\x82\xAC");
  EXPECT_NE(Get("cbsupselchange?id=DUP").find("getElementById('supinfo')"), std::string::npos);
  std::string vendor = Get("vendorchange?id=DUP&date=2026-03-01&due=103");
  EXPECT_NE(vendor.find("getElementById('103'); if (d) d.value = '2026-03-16';"), std::string::npos) << vendor;
  EXPECT_NE(vendor.find("s.value = '607000'"), std::string::npos);
  EXPECT_NE(Get("supplierinfo?id=DUP").find("billprop?id=PRC10000"), std::string::npos);

  EXPECT_EQ(Location("supplierdelete?id=DUP"), "suppliercantdelete?id=DUP");
  EXPECT_NE(Get("suppliercantdelete?id=DUP").find("ne peut pas être supprimé : la facture PRC10000 le nomme."),
            std::string::npos);
  EXPECT_EQ(LRunKontavo({"record", "get", "Suppliers", "DUP"}).exitCode, 0);
  EXPECT_EQ(Location("supplierdelete?id=MAR"), "supplierlist");
  EXPECT_EQ(LRunKontavo({"record", "get", "Suppliers", "MAR"}).exitCode, 1);
}

TEST_F(WebPurchasesTest, ABillPartlyPaidAndWhatIsOwedByDueDate) {
  // Each refusal at its own control; nothing written.
  EXPECT_NE(Post("billprop", "id=&billlines=4&101=&102=2026-03-01").find("ShowControlError('101', 'Veuillez sélectionner un fournisseur.');"),
            std::string::npos);
  EXPECT_NE(Post("billprop", BillBody("2026-02-30", "1", "10")).find("ShowControlError('102', 'Date invalide : 2026-02-30.');"),
            std::string::npos);
  EXPECT_NE(Post("billprop", BillBody("2026-03-01", "2x", "10")).find("ShowControlError('20003', 'Quantité invalide : 2x.');"),
            std::string::npos);
  EXPECT_NE(Post("billprop", BillBody("2026-03-01", "1", "1%2C2%2C3")).find("ShowControlError('20004', 'Prix invalide"),
            std::string::npos);
  EXPECT_NE(Post("billprop", "id=&billlines=4&101=DUP&102=2026-03-01&20000=999999&20004=5").find("ShowControlError('20000'"),
            std::string::npos);
  EXPECT_NE(Post("billprop", "id=&billlines=4&101=DUP&102=2026-03-01").find("Veuillez entrer au moins une ligne."),
            std::string::npos);
  // A date more than a year old is a question in the page; answered, the bill goes in.
  std::string old = Post("billprop", BillBody("2024-01-05", "1", "10"));
  EXPECT_NE(old.find("if (confirm('Vous avez entré la date"), std::string::npos) << old;
  EXPECT_EQ(LRunKontavo({"record", "list", "Bills"}).out, "");

  // 3 × 10,00 at 20 %: the tax worked out from the line.
  EXPECT_EQ(Post("billprop", BillBody("2026-03-01", "3", "10%2C00") + "&104=F-77"), "window.location = 'billlist';\n");
  EXPECT_EQ(Field("Bills", "PRC10000", "Total"), "3600\n");
  EXPECT_EQ(Field("Bills", "PRC10000", "TaxAmount1"), "600\n");
  EXPECT_EQ(Field("Suppliers", "DUP", "Balance"), "3600\n");
  std::string info = Get("getBillInfo?id=PRC10000");
  EXPECT_NE(info.find("\"due\":\"2026-03-16\""), std::string::npos) << info;
  EXPECT_NE(info.find("\"outstanding\":3600"), std::string::npos);

  // A partial payment of 10,00 applied to it.
  std::string dialog = Get("billpaymentprop?supplier=DUP");
  EXPECT_NE(dialog.find("name=bill0 value='PRC10000'"), std::string::npos);
  EXPECT_NE(dialog.find("<option value='Banque' selected>"), std::string::npos);
  EXPECT_NE(Post("billpaymentprop", "id=&101=DUP&102=2026-03-05&103=50&104=Banque&billcount=1&bill0=PRC10000&30000=40")
                .find("alert('Le montant appliqué à la facture PRC10000"),
            std::string::npos);
  EXPECT_NE(Post("billpaymentprop", "id=&101=DUP&102=2026-03-05&103=0&104=Banque").find("supérieur à zéro"),
            std::string::npos);
  EXPECT_EQ(Post("billpaymentprop", "id=&101=DUP&102=2026-03-05&103=10%2C00&104=Banque&105=Virement&billcount=1"
                                    "&bill0=PRC10000&30000=10"),
            "window.location = 'billpaymentlist';\n");
  EXPECT_EQ(Field("Bills", "PRC10000", "AmountPaid"), "1000\n");
  EXPECT_EQ(Field("Suppliers", "DUP", "Balance"), "2600\n");
  EXPECT_EQ(Field("BillPayments", "1", "BillAmounts"), "1000\n");
  std::string bills = Get("billlist?from=2026-01-01&to=2026-12-31&supplier=DUP");
  EXPECT_NE(bills.find("26,00 \xE2\x82\xAC"), std::string::npos);
  EXPECT_NE(bills.find("F-77"), std::string::npos);
  EXPECT_NE(Get("billlist?from=2026-04-01&to=2026-12-31").find("Aucune facture fournisseur sur la période."),
            std::string::npos);
  std::string payable = Get("accpayable");
  EXPECT_NE(payable.find("supplierinfo?id=DUP"), std::string::npos);
  EXPECT_NE(payable.find(">2026-03-16</td>"), std::string::npos);

  // applybillpayment changes what the payment settles; beyond the payment it is refused.
  EXPECT_EQ(Location("applybillpayment?id=1&bill=PRC10000&amount=5"), "billpaymentprop?id=1");
  EXPECT_EQ(Field("Bills", "PRC10000", "AmountPaid"), "500\n");
  EXPECT_NE(Location("applybillpayment?id=1&bill=PRC10000&amount=11&back=http://ailleurs.example/").find(
                "billpaymentprop?id=1&msg="),
            std::string::npos);
  // Deleting the bill lets the payment go; deleting the payment puts its amount back.
  EXPECT_EQ(Location("billdelete?id=PRC10000"), "billlist");
  EXPECT_EQ(Field("BillPayments", "1", "BillAmounts"), "\n");
  EXPECT_EQ(Field("Suppliers", "DUP", "Balance"), "-1000\n");
  EXPECT_EQ(Location("billpaymentdelete?id=1"), "billpaymentlist");
  EXPECT_EQ(Field("Suppliers", "DUP", "Balance"), "0\n");
  EXPECT_EQ(LRunKontavo({"ledger"}).out, "");
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
  // A payment made by a cheque, voided, goes with its cheque and both its postings.
  ASSERT_EQ(LRunKontavo({"cheque", "add", "--account", "512000", "--payee", "Dupont", "--amount", "5", "--supplier",
                         "DUP"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"cheque", "void", "1"}).exitCode, 0);
  std::string payment = LRunKontavo({"record", "list", "BillPayments"}).out;
  ASSERT_FALSE(payment.empty());
  payment.pop_back();
  EXPECT_EQ(Location("billpaymentdelete?id=" + payment), "billpaymentlist");
  EXPECT_EQ(LRunKontavo({"cheque", "list"}).out, "");
  EXPECT_EQ(LRunKontavo({"ledger"}).out, "");
  EXPECT_EQ(Field("Suppliers", "DUP", "Balance"), "0\n");
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
}

TEST_F(WebPurchasesTest, APurchaseOrderBecomesABillOnceAndItsGoodsComeInOnce) {
  ASSERT_EQ(LRunKontavo({"item", "add", "PAP", "--description", "Papier", "--price", "4"}).exitCode, 0);
  std::string saved = Post("porderprop", "id=&101=DUP&102=2026-03-02&103=30&fklines=1&10000=PAP&10002=10&10003=3"
                                         "&10004=TVA+20+%25");
  EXPECT_EQ(saved, "window.location = 'porderlist';\n");
  std::string list = Get("porderlist?from=2026-01-01&to=2026-12-31");
  EXPECT_NE(list.find("<a href='porderbill?id=1' class=actionlink>Facturer</a>"), std::string::npos) << list;
  EXPECT_NE(Get("porderprop").find("Fournisseur :"), std::string::npos);
  std::string bill = Location("porderbill?id=1");
  EXPECT_EQ(bill, "billprop?id=PRC10000");
  EXPECT_EQ(Field("Bills", "PRC10000", "Total"), "3600\n");
  EXPECT_EQ(Field("Bills", "PRC10000", "POrderNumber"), "1\n");
  EXPECT_EQ(Field("POrders", "1", "BillNumber"), "PRC10000\n");
  EXPECT_NE(Location("porderbill?id=1").find("msg=Le%20bon%20de%20commande%201%20a%20d"), std::string::npos);
  EXPECT_NE(LRunKontavo({"item", "stock", "PAP"}).out.find("Quantité\t10"), std::string::npos);
  EXPECT_NE(Get("porderlist?from=2026-01-01&to=2026-12-31").find("billprop?id=PRC10000"), std::string::npos);
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
}

TEST_F(WebPurchasesTest, ThePurchaseListsOfAPeriodFollowTheirDateIndexes) {
  ASSERT_EQ(LRunKontavo({"item", "add", "PAP", "--description", "Papier", "--price", "4"}).exitCode, 0);
  for (const char* date : {"2026-01-15", "2026-02-10"})
    ASSERT_EQ(Post("billprop", BillBody(date, "1", "10")), "window.location = 'billlist';\n");
  ASSERT_EQ(Post("billpaymentprop", "id=&101=DUP&102=2026-02-12&103=5&104=Banque&105=Virement"),
            "window.location = 'billpaymentlist';\n");
  ASSERT_EQ(Post("porderprop", "id=&101=DUP&102=2026-01-20&103=30&fklines=1&10000=PAP&10002=2&10003=3"),
            "window.location = 'porderlist';\n");
  for (const char* list : {"Bills", "BillPayments", "POrders"})
    EXPECT_TRUE(LFile::Exists(home_.SharedFolder() + "/" + list + "/.index.Date")) << list;
  auto month = [this](const std::string& route, const std::string& from, const std::string& to) {
    return Get(route + "?from=" + from + "&to=" + to);
  };
  EXPECT_NE(month("billlist", "2026-01-01", "2026-01-31").find("1 facture(s)"), std::string::npos);
  EXPECT_NE(month("billpaymentlist", "2026-02-01", "2026-02-28").find("1 règlement(s)"), std::string::npos);
  EXPECT_NE(month("billpaymentlist", "2026-01-01", "2026-01-31").find("Aucun règlement fournisseur sur la période."),
            std::string::npos);
  EXPECT_NE(month("porderlist", "2026-01-01", "2026-01-31").find("1 document(s)"), std::string::npos);
  EXPECT_EQ(month("porderlist", "2026-02-01", "2026-02-28").find("1 document(s)"), std::string::npos);

  // A bill's date changed through its dialog moves it to its new month.
  EXPECT_EQ(Post("billprop", "id=PRC10000&billlines=4&101=DUP&102=2026-02-20&20000=607000&20003=1&20004=10"
                             "&20005=TVA+20+%25"),
            "window.location = 'billlist';\n");
  EXPECT_NE(month("billlist", "2026-01-01", "2026-01-31").find("Aucune facture fournisseur sur la période."),
            std::string::npos);
  EXPECT_NE(month("billlist", "2026-02-01", "2026-02-28").find("2 facture(s)"), std::string::npos);

  // A wrong date under a bill's own file hides it from its month, as the list reads the index:
  // the check names the fault and --fix rebuilds the index.
  std::string bills = home_.SharedFolder() + "/Bills/";
  LWriteFile(bills + ".index.Date", LReadFile(bills + ".index.Date") +
                                        std::to_string(LFileStoreInodeOf(bills + "PRC10001.dat")) +
                                        " PRC10001 2026-01-01\n");
  EXPECT_NE(month("billlist", "2026-02-01", "2026-02-28").find("1 facture(s)"), std::string::npos);
  LRunResult check = LRunKontavo({"check"});
  EXPECT_EQ(check.exitCode, 1);
  EXPECT_NE(check.out.find("L'index « Date » ne suit pas l'enregistrement « PRC10001 »"), std::string::npos)
      << check.out;
  EXPECT_EQ(LRunKontavo({"check", "--fix"}).exitCode, 0);
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
  EXPECT_NE(month("billlist", "2026-02-01", "2026-02-28").find("2 facture(s)"), std::string::npos);
}

TEST_F(WebPurchasesTest, ViewersStrangersOtherBusinessesAndGarbageChangeNothing) {
  ASSERT_EQ(LRunKontavo({"bill", "add", "--supplier", "DUP", "--date", "2026-03-01", "607000:100.00"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"billpayment", "add", "--supplier", "DUP", "--amount", "10", "--date", "2026-03-02",
                         "--account", "Banque", "--apply", "PRC10000=10"})
                .exitCode,
            0);
  ASSERT_EQ(LRunKontavo({"porder", "new", "--customer", "DUP", "--line", "|Papier|1|5|"}).exitCode, 0);
  // Another business with a bill of its own under another reference.
  ASSERT_EQ(LRunKontavo({"business", "add", "--name", "Autre SARL"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"--business", "Autre SARL", "supplier", "add", "ZED", "Name=Zed"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"--business", "Autre SARL", "record", "set", "Misc", "Options", "RefNumberPurchases=20000"})
                .exitCode,
            0);
  ASSERT_EQ(LRunKontavo({"--business", "Autre SARL", "bill", "add", "--supplier", "ZED", "607000:50"}).exitCode, 0);
  std::string books = LRunKontavo({"ledger"}).out;

  std::string viewer = Session("--viewer");
  std::string refusal = "alert('Votre compte permet seulement de consulter les données.');";
  EXPECT_NE(Post("billprop", BillBody("2026-03-03", "1", "5"), viewer).find(refusal), std::string::npos);
  EXPECT_NE(Post("billprop", "id=PRC10000&" + BillBody("2026-03-03", "1", "5"), viewer).find(refusal),
            std::string::npos);
  EXPECT_NE(Post("billpaymentprop", "id=1&101=DUP&102=2026-03-05&103=99&104=Banque", viewer).find(refusal),
            std::string::npos);
  EXPECT_NE(Post("supplierprop", "id=DUP&102=Pirate", viewer).find("Votre compte permet seulement"), std::string::npos);
  for (const char* action : {"billdelete?id=PRC10000", "billpaymentdelete?id=1", "supplierdelete?id=DUP",
                             "applybillpayment?id=1&bill=PRC10000&amount=0", "porderbill?id=1"})
    EXPECT_NE(Location(action, viewer).find("msg=Votre%20compte"), std::string::npos) << action;
  EXPECT_EQ(Get("billlist", viewer).find("billdelete"), std::string::npos);
  EXPECT_EQ(Field("Suppliers", "DUP", "Name"), "Dupont SA\n");

  // Keys of the other business are unknown here; garbage is a message, never a failure.
  EXPECT_EQ(Get("getBillInfo?id=PRC20000"), "{}");
  EXPECT_NE(Get("billprop?id=PRC20000").find("La facture fournisseur « PRC20000 » n&#39;existe pas."), std::string::npos);
  EXPECT_NE(Location("billdelete?id=PRC20000").find("msg="), std::string::npos);
  EXPECT_NE(Location("billdelete?id=..%2F..%2FBills%2FPRC10000").find("msg="), std::string::npos);
  EXPECT_NE(Location("billpaymentdelete?id=").find("msg="), std::string::npos);
  EXPECT_NE(Location("applybillpayment?id=1&bill=PRC10000&amount=abc").find("msg=Montant%20invalide"),
            std::string::npos);
  EXPECT_NE(Location("applybillpayment?id=1&bill=PRC20000&amount=1").find("msg="), std::string::npos);
  EXPECT_EQ(Get("getSupplierBalance?id=ZED"), "");
  EXPECT_NE(Get("supplierinfo?id=" + std::string(5000, 'x')).find("n'existe pas"), std::string::npos);
  EXPECT_NE(Post("billprop", "id=&billlines=999999999&101=DUP&102=2026-03-01&20000=607000&20004=1e400")
                .find("Prix invalide"),
            std::string::npos);
  EXPECT_NE(Post("billpaymentprop", "id=&101=DUP&102=2026-03-05&103=5&104=Banque&billcount=-7&bill0=PRC20000&30000=1")
                .find("window.location"),
            std::string::npos);  // rows beyond the count are not read
  EXPECT_EQ(Location("billpaymentdelete?id=2"), "billpaymentlist");

  // No session: pages go to the logon, actions get the session-expired page; nothing moves.
  EXPECT_EQ(LHttpGet(port_, "/billlist").headers["location"], "logon");
  EXPECT_EQ(LHttpPost(port_, "/billprop", BillBody("2026-03-03", "1", "5") + "&submit=Enregistrer").headers["location"],
            "logon");
  for (const char* action : {"/billdelete?id=PRC10000", "/billpaymentdelete?id=1", "/supplierdelete?id=DUP",
                             "/applybillpayment?id=1&bill=PRC10000&amount=0", "/getBillInfo?id=PRC10000",
                             "/getSupplierBalance?id=DUP"})
    EXPECT_NE(LHttpGet(port_, action).body.find("Votre session a expiré."), std::string::npos) << action;
  EXPECT_EQ(LRunKontavo({"ledger"}).out, books);
  EXPECT_EQ(Field("Bills", "PRC10000", "AmountPaid"), "1000\n");
  EXPECT_EQ(LRunKontavo({"--business", "Autre SARL", "record", "list", "Bills"}).out, "PRC20000\n");
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
}

TEST_F(WebPurchasesTest, AWebUserAndTheCommandLinePayingOneSupplierAtOnceLoseNothing) {
  constexpr int kRounds = 12;
  std::thread desk([&] {
    for (int i = 0; i < kRounds; ++i)
      EXPECT_EQ(LRunKontavo({"bill", "add", "--supplier", "DUP", "--date", "2026-03-01", "607000:10.00"}).exitCode, 0);
  });
  for (int i = 0; i < kRounds; ++i)
    EXPECT_EQ(Post("billpaymentprop", "id=&101=DUP&102=2026-03-05&103=3&104=Banque"),
              "window.location = 'billpaymentlist';\n");
  desk.join();
  EXPECT_EQ(Field("Suppliers", "DUP", "Balance"), std::to_string(kRounds * (1000 - 300)) + "\n");
  LRunResult check = LRunKontavo({"check"});
  EXPECT_EQ(check.exitCode, 0) << check.out << check.err;
  // And the payable account holds exactly what the supplier is owed, as a credit.
  EXPECT_EQ(Field("Accounts", "401000", "TotalBalance"), "-" + std::to_string(kRounds * (1000 - 300)) + "\n");
}

}  // namespace
