// The ledger pages on a real `kontavo serve` in a French business: the chart of accounts with
// every rule and the renumbering followed as a job, the journal entry with its questions, the
// journal view, delete and export, cheques written and voided; and what every route does without
// a session, with keys and parameters it should not get, and for a user who may only look.
#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <regex>
#include <set>
#include <thread>

#include "tests/support/envscope.h"
#include "tests/support/webservertest.h"

namespace {

class WebLedgerTest : public LWebServerTest {
 protected:
  void SetUp() override {
    // The default chart, four-digit numbers: 1110 the bank, 6410 the rent.
    ASSERT_EQ(LRunKontavo({"init"}).exitCode, 0);
    ASSERT_EQ(LRunKontavo({"account", "defaults"}).exitCode, 0);
    LWebServerTest::SetUp();
    session_ = Session();
  }
  std::string Post(const std::string& route, const std::string& body, const std::string& session = {}) {
    return LHttpPost(port_, "/" + route, body, session.empty() ? session_ : session).body;
  }
  // The parameter that answers the question a script asks ("AskQuestion('q…', ...").
  static std::string QuestionParam(const std::string& script) {
    std::smatch match;
    static const std::regex ask("AskQuestion\\('(q[0-9a-f]+)'");
    return std::regex_search(script, match, ask) ? match[1].str() : "";
  }
  std::string Ledger() { return LRunKontavo({"ledger"}).out; }
  static std::string TodayText() {
    std::time_t now = std::time(nullptr);
    char text[16];
    std::strftime(text, sizeof text, "%Y-%m-%d", std::localtime(&now));
    return text;
  }

  LEnvScope locale_{"LC_ALL", "fr_FR.UTF-8"};
  std::string session_;
};

TEST_F(WebLedgerTest, ChartRefusesEachFaultThenAddsRenumbersAsAJobAndDeletesAfterTheQuestion) {
  std::string list = LHttpGet(port_, "/acclist", session_).body;
  EXPECT_NE(list.find("accedit?id=1110"), std::string::npos);
  EXPECT_NE(list.find("Nouveau compte"), std::string::npos);

  auto add = [&](const std::string& fields) { return Post("newacc", fields + "&submit=++OK++"); };
  EXPECT_NE(add("101=").find("ShowControlError('101', 'Veuillez entrer un nom pour ce nouveau compte.');"), std::string::npos);
  EXPECT_NE(add("101=Frais").find("Veuillez sélectionner le type de compte."), std::string::npos);
  EXPECT_NE(add("101=Frais&rbg2=205").find("Veuillez sélectionner le type de compte de charges."), std::string::npos);
  std::string subType = "&107=Charges+d%27exploitation";
  EXPECT_NE(add("101=Frais&rbg2=205" + subType + "&102=64").find("doit contenir 4 chiffres exactement"), std::string::npos);
  EXPECT_NE(add("101=Frais&rbg2=205" + subType + "&102=6410").find("Un compte avec ce numéro existe déjà."), std::string::npos);
  std::string opening = add("101=Frais&rbg2=205" + subType + "&102=6415&114=abc");
  EXPECT_NE(opening.find("Veuillez entrer un solde d\\'ouverture valide."), std::string::npos) << opening;
  EXPECT_EQ(LRunKontavo({"account", "list"}).out.find("6415"), std::string::npos);
  EXPECT_EQ(add("101=Frais+divers&rbg2=205" + subType + "&102=6415"), "window.location = 'acclist';\n");
  EXPECT_NE(LRunKontavo({"account", "list"}).out.find("6415\tFrais divers"), std::string::npos);

  // A new number: the renumbering runs as a job that the page follows; its question comes back
  // through the job, and the confirmed answer starts it anew to its end.
  std::string edit = "id=6415&101=Frais+divers&102=6416&103=Charges+d%27exploitation&115=---+Aucun+---&submit=++OK++";
  std::string jobId;
  auto follow = [&](const std::string& started) {
    std::smatch job;
    if (!std::regex_search(started, job, std::regex("PollJob\\('accedit', 190, '([0-9a-f]+)'"))) return started;
    jobId = job[1].str();
    std::string poll;
    for (int i = 0; i < 100; ++i) {
      poll = Post("accedit", "isComAJAX=1&MainControlId=190&job=" + jobId);
      if (poll.find("ShowJobProgress") == std::string::npos) break;
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return poll;
  };
  std::string asked = follow(Post("accedit", edit));
  std::string param = QuestionParam(asked);
  ASSERT_FALSE(param.empty()) << asked;
  EXPECT_NE(asked.find("Voulez-vous vraiment modifier le numéro de compte ?"), std::string::npos);
  EXPECT_EQ(LRunKontavo({"account", "list"}).out.find("6416"), std::string::npos);
  std::string done = follow(Post("accedit", edit + "&" + param + "=1"));
  EXPECT_NE(done.find("window.location = 'acclist';"), std::string::npos) << done;
  EXPECT_NE(LRunKontavo({"account", "list"}).out.find("6416\tFrais divers"), std::string::npos);
  // The job is forgotten once read.
  EXPECT_EQ(Post("accedit", "isComAJAX=1&MainControlId=190&job=" + jobId), "DisableSubmits(false);\n");

  // Delete: the chart's question with its "Ne plus afficher ce message", then the account hidden.
  LWebResponse question = LHttpGet(port_, "/accdelete?id=6416", session_);
  EXPECT_NE(question.body.find("Voulez-vous vraiment supprimer le compte &quot;Frais divers&quot; ?"), std::string::npos);
  EXPECT_NE(question.body.find("Ne plus afficher ce message"), std::string::npos);
  std::smatch hidden;
  ASSERT_TRUE(std::regex_search(question.body, hidden, std::regex("name='(q[0-9a-f]+)' value='1'")));
  EXPECT_EQ(LHttpGet(port_, "/accdelete?id=6416&" + hidden[1].str() + "=1", session_).headers["location"], "acclist");
  EXPECT_NE(LRunKontavo({"account", "list", "--all"}).out.find("6416"), std::string::npos);
  EXPECT_EQ(LRunKontavo({"account", "list"}).out.find("6416"), std::string::npos);
  // A used account is refused with the chart's message.
  ASSERT_EQ(LRunKontavo({"journal", "add", "--ref", "GJ[auto]", "--desc", "x", "dr:6410:1", "cr:1110:1"}).exitCode, 0);
  LWebResponse refused = LHttpGet(port_, "/accdelete?id=6410", session_);
  EXPECT_NE(refused.headers["location"].find("acclist?msg=Impossible%20de%20supprimer%20le%20compte"), std::string::npos);
}

TEST_F(WebLedgerTest, JournalEntryAsksItsQuestionsAndTheViewDeletesExportsAndVoidsCheques) {
  std::string today = TodayText();
  auto entry = [&](const std::string& date, const std::string& description, const std::string& credit,
                   const std::string& extra = {}) {
    return Post("rectranj", "101=" + date + "&102=General&103=GJ%5Bauto%5D&104=" + description +
                                "&jelines=6&1000=6410&1001=100%2C00&1010=1110&1012=" + credit + extra + "&submit=Enregistrer");
  };
  EXPECT_NE(entry(today, "Loyer", "90").find("ShowControlError('105', 'Vous ne pouvez enregistrer qu\\'une transaction "
                                             "équilibrée."),
            std::string::npos);
  EXPECT_NE(entry(today, "", "100").find("ShowControlError('104', 'Veuillez entrer une description de transaction.');"),
            std::string::npos);
  EXPECT_NE(entry(today, "Loyer", "1x").find("ShowControlError('1012', 'Montant invalide : 1x.');"), std::string::npos);
  // More than a year old: asked in the page; a confirmed answer saves.
  std::string asked = entry("2020-01-15", "Loyer", "100");
  std::string param = QuestionParam(asked);
  ASSERT_FALSE(param.empty()) << asked;
  EXPECT_NE(asked.find("qui date de plus d\\'un an"), std::string::npos);
  EXPECT_EQ(Ledger(), "");
  EXPECT_EQ(entry("2020-01-15", "Loyer", "100", "&" + param + "=1"), "window.location = 'journalentry?saved=GJ10000';\n");
  EXPECT_EQ(entry(today, "Loyer+courant", "100"), "window.location = 'journalentry?saved=GJ10001';\n");
  EXPECT_NE(LHttpGet(port_, "/journalentry?saved=GJ10001", session_).body.find("La transaction a été enregistrée."),
            std::string::npos);

  // The view by period and account, refiltered in place; the export of the same lines.
  std::string view = LHttpGet(port_, "/viewjournal?from=2020-01-01&to=2020-12-31", session_).body;
  EXPECT_NE(view.find("2 lignes"), std::string::npos);
  EXPECT_NE(view.find("journaldelete?date=2020-01-15&ref=GJ10000"), std::string::npos);
  std::string refiltered = Post("vjdatechange", "from=2020-01-01&to=" + today + "&account=6410&type=General");
  EXPECT_NE(refiltered.find("2 lignes"), std::string::npos) << refiltered;
  EXPECT_EQ(refiltered.find("ListFilterShow('custom', '2020-01-01', '" + today + "'"), 0u) << refiltered;
  std::string csv = LHttpGet(port_, "/jvexprt?from=2020-01-01&to=" + today + "&account=1110", session_).body;
  EXPECT_EQ(csv, "Date,Reference,Type,Account,Description,Amount,Document\r\n"
                 "2020-01-15,GJ10000,General,1110,Loyer,-100.00,\r\n" + today + ",GJ10001,General,1110,Loyer courant,-100.00,\r\n")
      << csv;

  // A cheque written on the page, then voided: the reversal lands on the void date.
  std::string cheque = Post("cashtxn", "rbg3=301&101=1110&102=" + today + "&103=50&104=Papeterie&1000=6420&1001=50&submit=Enregistrer");
  EXPECT_EQ(cheque, "window.location = 'checklist?account=1110';\n");
  EXPECT_NE(LHttpGet(port_, "/checklist", session_).body.find("Papeterie"), std::string::npos);
  EXPECT_EQ(Post("checkvoid", "id=PMT10000&102=" + today + "&submit=Annuler+le+ch%C3%A8que"), "window.location = 'checklist';\n");
  EXPECT_NE(Ledger().find("PMT10000V\tPaiements\t1110\tAnnulation du chèque n° 1\t50.00"), std::string::npos) << Ledger();

  // Delete from the journal after the question: the cheque's own transaction takes the cheque.
  std::string back = "from=2020-01-01&to=" + today;
  LWebResponse question = LHttpGet(port_, "/journaldelete?date=" + today + "&ref=PMT10000&" + back, session_);
  EXPECT_NE(question.body.find("est celle du document PMT10000"), std::string::npos) << question.body;
  std::smatch confirm;
  ASSERT_TRUE(std::regex_search(question.body, confirm, std::regex("name='(q[0-9a-f]+)' value='1'")));
  LWebResponse deleted = LHttpGet(port_, "/journaldelete?date=" + today + "&ref=PMT10000&" + back + "&" + confirm[1].str() + "=1", session_);
  EXPECT_EQ(deleted.headers["location"].find("viewjournal?prd=custom&from=2020-01-01"), 0u) << deleted.headers["location"];
  EXPECT_EQ(LRunKontavo({"cheque", "list"}).out, "");
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
  EXPECT_EQ(Ledger().find("PMT10000\t"), std::string::npos);
}

TEST_F(WebLedgerTest, RoutesRefuseMissingSessionsViewersAndGarbageLeavingTheBooksAlone) {
  for (const char* route : {"acclist", "newacc", "accedit?id=1110", "journalentry", "viewjournal", "jvrprt", "checklist",
                            "cashtxn", "journalperiod"}) {
    LWebResponse page = LHttpGet(port_, std::string("/") + route);
    EXPECT_EQ(page.status, 302) << route;
    EXPECT_EQ(page.headers["location"], "logon") << route;
  }
  for (const char* route : {"accdelete?id=1110", "journaldelete?date=2024-01-01&ref=GJ1", "checkdelete?id=PMT1",
                            "paymentdeletefi?id=1", "jvexprt"})
    EXPECT_NE(LHttpGet(port_, std::string("/") + route).body.find("Votre session a expiré"), std::string::npos) << route;
  for (const char* route : {"cbvjselchange", "vjdatechange", "cbjvpselchange"})
    EXPECT_EQ(LHttpPost(port_, std::string("/") + route, "prd=m").body, "window.location = 'logon';\n") << route;

  ASSERT_EQ(LRunKontavo({"journal", "add", "--ref", "GJ[auto]", "--desc", "x", "dr:6410:1", "cr:1110:1"}).exitCode, 0);
  ASSERT_EQ(LRunKontavo({"cheque", "add", "--account", "1110", "--payee", "P", "--amount", "2", "6420:2"}).exitCode, 0);
  std::string before = Ledger();
  std::string viewer = Session("--viewer");
  std::string refusal = "Votre compte permet seulement de consulter les données.";
  EXPECT_EQ(LHttpGet(port_, "/acclist", viewer).body.find("Nouveau compte"), std::string::npos);
  EXPECT_NE(LHttpGet(port_, "/viewjournal", viewer).status, 302);
  for (const auto& [route, body] : std::vector<std::pair<std::string, std::string>>{
           {"newacc", "101=X&rbg2=201&103=Immobilisations&110=Exploitation&102=1600&submit=++OK++"},
           {"accedit", "id=1110&101=X&102=1110&submit=++OK++"},
           {"rectranj", "101=2026-01-01&104=x&103=R&jelines=2&1000=6410&1001=1&1010=1110&1012=1&submit=Enregistrer"},
           {"cashtxn", "rbg3=302&101=1110&102=2026-01-01&103=1&1000=4110&1001=1&submit=Enregistrer"},
           {"checkvoid", "id=PMT10000&102=2026-01-01&submit=Annuler+le+ch%C3%A8que"}})
    EXPECT_NE(Post(route, body, viewer).find(refusal), std::string::npos) << route;
  for (const char* route : {"/accdelete?id=6420", "/journaldelete?date=2026-01-01&ref=GJ10000", "/checkdelete?id=PMT10000",
                            "/paymentdeletefi?id=1"})
    EXPECT_NE(LHttpGet(port_, route, viewer).headers["location"].find("msg=Votre%20compte"), std::string::npos) << route;
  EXPECT_EQ(Ledger(), before);

  // Keys that name nothing, or try to leave the business's folders; parameters that are not what
  // they should be.
  EXPECT_NE(LHttpGet(port_, "/accedit?id=..%2F..%2FShared", session_).body.find("Ce compte n&#39;existe pas."), std::string::npos);
  EXPECT_NE(LHttpGet(port_, "/accdelete?id=9999", session_).headers["location"].find("msg="), std::string::npos);
  EXPECT_NE(LHttpGet(port_, "/journaldelete?date=..%2F..%2Fx&ref=%00", session_).headers["location"].find("msg="),
            std::string::npos);
  EXPECT_NE(LHttpGet(port_, "/checkdelete?id=..%2FAccounts%2F1110", session_).headers["location"].find("msg="),
            std::string::npos);
  EXPECT_EQ(LHttpGet(port_, "/viewjournal?page=-7&from=garbage&to=2026-99-99&period=42", session_).status, 200);
  EXPECT_NE(Post("rectranj", "101=2026-02-30&jelines=100000&submit=Enregistrer").find("Date invalide"), std::string::npos);
  EXPECT_NE(Post("rectranj", "101=2026-01-01&103=R&104=x&jelines=99&1000=6410&1001=%E2%82%AC%E2%82%AC&submit=Enregistrer")
                .find("Montant invalide"),
            std::string::npos);
  EXPECT_NE(Post("cashtxn", "rbg3=301&101=6410&102=2026-01-01&103=5&104=P&1000=6420&1001=5&submit=Enregistrer")
                .find("Le compte 6410 n\\'est pas un compte de banque ou de caisse."),
            std::string::npos);
  EXPECT_EQ(Post("accedit", "isComAJAX=1&MainControlId=190&job=nothing"), "DisableSubmits(false);\n");
  EXPECT_EQ(Ledger(), before);
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
}

}  // namespace

namespace {

TEST_F(WebLedgerTest, WebEntriesAndCommandLineEntriesOnOneAccountAtOnceLoseNothing) {
  constexpr int kEach = 12;
  std::string today = TodayText();
  std::vector<std::string> webAnswers(kEach);
  std::thread web([&] {
    for (int i = 0; i < kEach; ++i)
      webAnswers[i] = Post("rectranj", "101=" + today + "&102=General&103=GJ%5Bauto%5D&104=Web&jelines=2&1000=6410"
                                       "&1001=1.00&1010=1110&1012=1.00&submit=Enregistrer");
  });
  int commandFailures = 0;
  for (int i = 0; i < kEach; ++i)
    if (LRunKontavo({"journal", "add", "--ref", "GJ[auto]", "--desc", "Bureau", "dr:6410:2", "cr:1110:2"}).exitCode != 0)
      ++commandFailures;
  web.join();
  EXPECT_EQ(commandFailures, 0);
  for (const std::string& answer : webAnswers) EXPECT_EQ(answer.find("window.location = 'journalentry?saved=GJ1"), 0u) << answer;
  // Every entry under a reference of its own, every cent in the balance.
  std::string ledger = Ledger();
  std::set<std::string> references;
  for (std::size_t at = 0; (at = ledger.find("\tGJ1", at)) != std::string::npos; ++at)
    references.insert(ledger.substr(at + 1, 7));
  EXPECT_EQ(references.size(), 2u * kEach);
  long long rent = -1;
  for (const auto& account : LRunKontavoJson({"account", "list"}))
    if (account["ID"] == "6410") rent = account["TotalBalance"].get<long long>();
  EXPECT_EQ(rent, kEach * 100 + kEach * 200);
  EXPECT_EQ(LRunKontavo({"check"}).exitCode, 0);
}

}  // namespace
