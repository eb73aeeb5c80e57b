// The report centre on a real `kontavo serve`, for a business with books over two years: every
// report the centre links to renders, and its table equals the one `kontavo report --format json`
// gives, cell for cell, and its CSV download the command's CSV byte for byte, its PDF download the
// command's PDF; the choosers lead to the report with their named periods and refuse what does not
// read; a consolidated report totals the businesses the user may open, with their factors.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <regex>
#include <set>

#include "accounts/reportcatalog.h"
#include "tests/support/pdfreader.h"
#include "tests/support/webservertest.h"

namespace {

// One row of a report page's table, as the page shows it.
struct PageRow {
  std::string kind, label;
  std::vector<nlohmann::json> values;  // cents or null, from data-cents
  std::vector<std::string> texts;      // the cells' shown text
};

std::string Unescape(std::string text) {
  for (const auto& [entity, plain] : {std::pair<std::string, std::string>{"&lt;", "<"}, {"&gt;", ">"},
                                      {"&quot;", "\""}, {"&#39;", "'"}, {"&amp;", "&"}}) {
    for (std::size_t at = text.find(entity); at != std::string::npos; at = text.find(entity, at + plain.size()))
      text.replace(at, entity.size(), plain);
  }
  return text;
}

// The rows of the first report table of page.
std::vector<PageRow> PageRows(const std::string& page) {
  std::vector<PageRow> rows;
  std::size_t body = page.find("<table class=\"report\">");
  if (body == std::string::npos) return rows;
  std::string table = page.substr(body, page.find("</table>", body) - body);
  static const std::regex rowPattern(R"re(<tr class="(\w+)"><td class="label indent\d+">([^<]*)</td>(.*?)</tr>)re");
  static const std::regex cellPattern(R"re(<td class="amount[^"]*"(?: data-cents="(-?\d+)")?>([^<]*)</td>)re");
  for (std::sregex_iterator it(table.begin(), table.end(), rowPattern), end; it != end; ++it) {
    PageRow row{(*it)[1], Unescape((*it)[2]), {}, {}};
    std::string cells = (*it)[3];
    for (std::sregex_iterator cell(cells.begin(), cells.end(), cellPattern); cell != end; ++cell) {
      row.values.push_back((*cell)[1].matched ? nlohmann::json(std::stoll((*cell)[1])) : nlohmann::json());
      row.texts.push_back(Unescape((*cell)[2]));
    }
    rows.push_back(std::move(row));
  }
  return rows;
}

class WebReportsTest : public LWebServerTest {
 protected:
  void SetUp() override {
    LWebServerTest::SetUp();
    ASSERT_EQ(LRunKontavo({"account", "defaults"}).exitCode, 0);
    Run({"customer", "add", "C1", "Name=Dupont"});
    Run({"customer", "add", "C2", "Name=Martin & fils"});
    // Two years of books: sales, a payment, rent, capital, a customer in each year.
    Run({"journal", "add", "--date", "2024-01-02", "--type", "0", "--ref", "CAP", "--desc", "Capital", "dr:1110:5000",
         "cr:3010:5000"});
    const char* invoices[][3] = {{"2024-03-10", "C1", "1200"}, {"2024-11-20", "C2", "800"},
                                 {"2025-02-05", "C1", "450.50"}, {"2025-06-30", "C2", "2000"}};
    for (const auto& [date, customer, amount] : invoices)
      Run({"invoice", "new", "--customer", customer, "--date", date, "--untaxed", "--line",
           std::string("|Conseil|1|") + amount + "|Aucun|"});
    Run({"payment", "add", "--customer", "C1", "--amount", "1200", "--date", "2024-04-01", "--apply", "1=1200",
         "--account", "Compte-chèque"});
    Run({"journal", "add", "--date", "2024-05-31", "--type", "0", "--ref", "LOY1", "--desc", "Loyer", "dr:6410:700",
         "cr:1110:700"});
    Run({"journal", "add", "--date", "2025-05-31", "--type", "0", "--ref", "LOY2", "--desc", "Loyer", "dr:6410:750",
         "cr:1110:750"});
    Run({"creditnote", "new", "--customer", "C2", "--date", "2025-07-10", "--untaxed", "--line", "|Remise|1|100|Aucun|"});
    Run({"payment", "add", "--customer", "C2", "--amount", "500", "--date", "2025-08-01", "--apply", "2=500",
         "--account", "Compte-chèque"});
    // A vehicle's trips of both years: the mileage report has figures too.
    Run({"vehicle", "add", "Clio", "FiscalHorsepower=5"});
    Run({"mileage", "add", "Clio", "--date", "2024-06-01", "--km", "420", "--purpose", "Salon"});
    Run({"mileage", "add", "Clio", "--date", "2025-03-02", "--km", "180", "--origin", "Lyon", "--destination", "Paris"});
    session_ = Logon();
    ASSERT_FALSE(session_.empty());
  }
  static void Run(std::vector<std::string> args) {
    args.insert(args.begin(), "--yes");
    LRunResult run = LRunKontavo(args);
    ASSERT_EQ(run.exitCode, 0) << run.err;
  }
  LWebResponse Get(const std::string& path) { return LHttpGet(port_, path, session_); }
  LWebResponse Post(const std::string& path, const std::string& body) { return LHttpPost(port_, path, body, session_); }

  std::string session_;
};

TEST_F(WebReportsTest, EveryReportOfTheCentreEqualsTheCommandCellForCell) {
  std::string centre = Get("/reports").body;
  std::set<std::string> linked;
  static const std::regex link("href='reportredirect\\?report=([a-z0-9-]+)'");
  for (std::sregex_iterator it(centre.begin(), centre.end(), link), end; it != end; ++it) linked.insert((*it)[1]);
  std::set<std::string> catalogue;
  for (const LReportEntry& entry : LReportEntries()) catalogue.insert(std::string(entry.name));
  EXPECT_EQ(linked, catalogue);
  EXPECT_NE(centre.find("<h3>États financiers</h3>"), std::string::npos);

  // One set of choices for all: each report reads what it asks for.
  const std::string query =
      "from=2024-01-01&to=2025-12-31&date=2025-12-31&cfrom=2024-01-01&cto=2024-12-31&account=1110&customer=C2";
  const std::vector<std::string> options = {"--from", "2024-01-01", "--to", "2025-12-31", "--date", "2025-12-31",
                                            "--compare-from", "2024-01-01", "--compare-to", "2024-12-31",
                                            "--account", "1110", "--customer", "C2"};
  int compared = 0;
  for (const std::string& name : linked) {
    SCOPED_TRACE(name);
    LWebResponse page = Get("/generatereport?report=" + name + "&" + query);
    ASSERT_EQ(page.status, 200);
    std::vector<std::string> args = {"report", name, "--format", "json"};
    args.insert(args.end(), options.begin(), options.end());
    LRunResult command = LRunKontavo(args);
    if (command.exitCode != 0) {
      // A report the books cannot give (no reconciliation yet) is refused alike, in its words.
      std::string message = command.err.substr(0, command.err.find('\n'));
      EXPECT_NE(page.body.find("<p class=error id=errorTag>"), std::string::npos);
      EXPECT_NE(Unescape(page.body).find(message), std::string::npos) << message;
      continue;
    }
    nlohmann::json report = nlohmann::json::parse(command.out);
    std::vector<PageRow> rows = PageRows(page.body);
    ASSERT_EQ(rows.size(), report["rows"].size()) << page.body;
    EXPECT_NE(Unescape(page.body).find("<caption>" + report["title"].get<std::string>()), std::string::npos);
    for (const auto& column : report["columns"])
      EXPECT_NE(Unescape(page.body).find("<th class=\"amount\">" + column.get<std::string>() + "</th>"), std::string::npos);
    for (std::size_t r = 0; r < rows.size(); ++r) {
      const nlohmann::json& expected = report["rows"][r];
      EXPECT_EQ(rows[r].label, expected["label"]);
      EXPECT_EQ(rows[r].kind, expected["kind"]);
      ASSERT_EQ(rows[r].values.size(), expected["values"].size()) << rows[r].label;
      for (std::size_t c = 0; c < rows[r].values.size(); ++c) {
        if (expected["kind"] == "heading") continue;  // a heading shows no amount
        EXPECT_EQ(rows[r].values[c], expected["values"][c]) << rows[r].label << " column " << c;
        if (expected["values"][c].is_null() && expected.contains("texts") && expected["texts"][c].is_string()) {
          EXPECT_EQ(rows[r].texts[c], expected["texts"][c]) << rows[r].label << " column " << c;
        }
      }
    }
    // The download is the command's CSV.
    args[3] = "csv";
    LWebResponse csv = Get("/generatereport?report=" + name + "&" + query + "&format=csv");
    EXPECT_EQ(csv.headers["content-type"], "text/csv; charset=utf-8");
    EXPECT_NE(csv.headers["content-disposition"].find("attachment; filename=\"" + name + "-"), std::string::npos);
    EXPECT_EQ(csv.body, LRunKontavo(args).out);
    ++compared;
  }
  // The PDF link serves the PDF of `report NAME --format pdf`: the same text on the same pages.
  std::string pl = Get("/generatereport?report=pl&from=2024-01-01&to=2025-12-31").body;
  EXPECT_NE(pl.find("<a href='generatereport?report=pl&from=2024-01-01&to=2025-12-31&format=pdf' class=actionlink "
                    "download>Télécharger en PDF</a>"),
            std::string::npos)
      << pl;
  LWebResponse pdf = Get("/generatereport?report=pl&from=2024-01-01&to=2025-12-31&format=pdf");
  EXPECT_EQ(pdf.headers["content-type"], "application/pdf");
  EXPECT_EQ(pdf.headers["content-disposition"], "attachment; filename=\"Rapport-pl-2025-12-31.pdf\"");
  std::string served = home_.Path() + "/served.pdf", written = home_.Path() + "/written.pdf";
  LWriteFile(served, pdf.body);
  Run({"report", "pl", "--from", "2024-01-01", "--to", "2025-12-31", "--format", "pdf", "--out", written});
  std::string text = LPdfText(served);
  EXPECT_NE(text.find("Bénéfice net"), std::string::npos) << text;
  EXPECT_EQ(text, LPdfText(written));
  EXPECT_EQ(LPdfInfo(served, "Pages"), LPdfInfo(written, "Pages"));
  LKeepPdfRendering(served, "webreport-pl");

  // The figures are really there: the statements over both years.
  EXPECT_GE(compared, static_cast<int>(linked.size()) - 1);
  std::vector<PageRow> plRows = PageRows(pl);
  ASSERT_FALSE(plRows.empty());
  EXPECT_EQ(plRows.back().label, "Bénéfice net");
  EXPECT_EQ(plRows.back().values[0], 445050 - 10000 - 145000);
}

TEST_F(WebReportsTest, QuickLinksOnlyForReportsThatANamedPeriodOrDayCompletes) {
  std::string centre = Get("/reports").body;
  auto line = [&](const std::string& name) {
    std::size_t start = centre.find("href='reportredirect?report=" + name + "'");
    return start == std::string::npos ? std::string() : centre.substr(start, centre.find("</li>", start) - start);
  };
  EXPECT_NE(line("pl").find("generatereportperiod?report=pl&period=fy'>exercice en cours</a>"), std::string::npos);
  EXPECT_NE(line("bs").find("generatereportdate?report=bs&when=today'>aujourd&#39;hui</a>"), std::string::npos);
  // A customer's statement, a budget and a reconciliation need their customer, budget or account.
  for (const char* name : {"statement", "budget", "reconcile"}) {
    ASSERT_FALSE(line(name).empty()) << name;
    EXPECT_EQ(line(name).find("quicklinks"), std::string::npos) << line(name);
  }
}

// With a year ending on 31 March, what defaults to "this year" is the fiscal year: a report without
// a first day, the period chooser, a new budget's year and the FEC's last closed year.
TEST_F(WebReportsTest, WithAYearEndingInMarchTheDefaultsAreTheFiscalYear) {
  Run({"record", "set", "Misc", "Company", "FiscalYearEnd=3", "FiscalYearEndDay=31"});
  std::string pl = Unescape(Get("/generatereport?report=pl&to=2025-03-31").body);
  EXPECT_NE(pl.find("<th class=\"amount\">Du 2024-04-01 au 2025-03-31</th>"), std::string::npos) << pl;
  std::vector<PageRow> rows = PageRows(pl);
  ASSERT_FALSE(rows.empty());
  EXPECT_EQ(rows.back().values[0], 80000 + 45050 - 70000);  // November's and February's sales less May's rent

  LDate today = LDate::Today();
  int endYear = today.month > 3 ? today.year + 1 : today.year;  // the year the fiscal year in progress ends in
  std::string chooser = Get("/reportperiod?report=pl").body;
  EXPECT_NE(chooser.find("<option value='fy' selected>"), std::string::npos) << chooser;
  EXPECT_NE(chooser.find("id=202 name=202 type=text value='" + std::to_string(endYear - 1) + "-04-01'"), std::string::npos);
  EXPECT_NE(chooser.find("id=203 name=203 type=text value='" + std::to_string(endYear) + "-03-31'"), std::string::npos);
  EXPECT_NE(Get("/budgetnew").body.find("id=102 name=102 type=text value='" + std::to_string(endYear) + "'"),
            std::string::npos);
  std::string fec = Get("/fecexport").body;
  EXPECT_NE(fec.find("<option value='" + std::to_string(endYear - 1) + "' selected>"), std::string::npos) << fec;
}

TEST_F(WebReportsTest, ConsolidatedReportTotalsTheBusinessesTheUserMayOpenWithTheirFactors) {
  Run({"business", "add", "--name", "Filiale SAS"});
  Run({"--business", "1", "customer", "add", "C9", "Name=Client"});
  Run({"--business", "1", "invoice", "new", "--customer", "C9", "--date", "2024-06-01", "--untaxed", "--line",
       "|Conseil|1|1000|Aucun|"});
  // The choice: every business of an administrator, the open one ticked; then the report's chooser.
  std::string dialog = Get("/consolreport?report=pl").body;
  EXPECT_NE(dialog.find("<option value='pl' selected>Compte de résultat</option>"), std::string::npos) << dialog;
  EXPECT_EQ(dialog.find("<option value='statement'"), std::string::npos);
  EXPECT_NE(dialog.find("id=300 name=300 checked onclick='enablectls()'>Principale SARL"), std::string::npos) << dialog;
  EXPECT_NE(dialog.find(">Filiale SAS</label>"), std::string::npos);
  const std::string press = "&submit=Continuer";
  EXPECT_NE(Post("/consolreport", "201=pl&300=on&400=abc" + press).body.find("ShowControlError('400', 'Taux invalide"),
            std::string::npos);
  EXPECT_NE(Post("/consolreport", "201=pl" + press).body.find("Cochez au moins une entreprise."), std::string::npos);
  std::string ok = Post("/consolreport", "201=pl&300=on&400=1&301=on&401=0,5" + press).body;
  EXPECT_NE(ok.find("window.location = 'reportredirect?report=pl&cons=0%3D1%2C1%3D0.5';"), std::string::npos) << ok;
  EXPECT_EQ(Get("/reportredirect?report=pl&cons=0%3D1%2C1%3D0.5").headers["location"],
            "reportperiod?report=pl&cons=0%3D1%2C1%3D0.5");
  std::string chosen = Post("/reportperiod", "report=pl&chooser=reportperiod&cons=0%3D1%2C1%3D0.5&201=custom&"
                                             "202=2024-01-01&203=2024-12-31&submit=Afficher+le+rapport").body;
  EXPECT_NE(chosen.find("window.location = 'generateconsreport?report=pl&from=2024-01-01&to=2024-12-31&cons=0%3D1%2C1%3D0.5';"),
            std::string::npos)
      << chosen;

  // The report equals the command's consolidation cell for cell, the businesses named above it.
  std::string page = Get("/generateconsreport?report=pl&from=2024-01-01&to=2024-12-31&cons=0%3D1%2C1%3D0.5").body;
  EXPECT_NE(page.find("<li>Principale SARL <span class=factor>× 1</span></li><li>Filiale SAS <span "
                      "class=factor>× 0.5</span></li>"),
            std::string::npos)
      << page;
  nlohmann::json report = LRunKontavoJson(
      {"report", "pl", "--from", "2024-01-01", "--to", "2024-12-31", "--consolidate", "0=1,1=0.5"});
  std::vector<PageRow> rows = PageRows(page);
  ASSERT_EQ(rows.size(), report["rows"].size());
  for (std::size_t r = 0; r < rows.size(); ++r) {
    if (report["rows"][r]["kind"] == "heading") continue;
    EXPECT_EQ(rows[r].values, report["rows"][r]["values"].get<std::vector<nlohmann::json>>()) << rows[r].label;
  }
  EXPECT_EQ(rows.back().label, "Bénéfice net");
  EXPECT_EQ(rows.back().values[0], 200000 - 70000 + 50000);
  EXPECT_EQ(Get("/generateconsreport?report=pl").headers["location"], "consolreport?report=pl");
  EXPECT_NE(Get("/generateconsreport?report=coa&cons=0%3D1").body.find("Ce rapport ne peut pas être consolidé"),
            std::string::npos);

  // A user of the principal business alone is offered it alone, and refused the other.
  LRunResult added = LRunKontavo({"user", "add", "eve@example.fr", "--name", "Eve", "--user", "--profile",
                                  "Principale SARL", "--password-stdin"},
                                 "evesecret\n");
  ASSERT_EQ(added.exitCode, 0) << added.err;
  std::string eve = Logon("eve@example.fr", "evesecret");
  std::string offered = LHttpGet(port_, "/consolreport", eve).body;
  EXPECT_NE(offered.find("Principale SARL"), std::string::npos);
  EXPECT_EQ(offered.find("Filiale SAS"), std::string::npos);
  EXPECT_NE(LHttpGet(port_, "/generateconsreport?report=pl&cons=0%3D1%2C1%3D1", eve).body.find(
                "Vous n&#39;avez pas accès à l&#39;entreprise Filiale SAS."),
            std::string::npos);
  EXPECT_NE(LHttpGet(port_, "/generatereport?report=bs&cons=1%3D1&format=csv", eve).body.find("Vous n&#39;avez pas accès"),
            std::string::npos);
}

TEST_F(WebReportsTest, CustomerStatementBringsTheBalanceForwardAgesItAndLogsWhatIsIssued) {
  // The chooser asks for exactly one customer.
  std::string chooser = Get("/customstatement").body;
  EXPECT_EQ(chooser.find("Tous les clients"), std::string::npos);
  const std::string base = "report=statement&chooser=customstatement&201=custom&202=2025-01-01&203=2025-12-31";
  EXPECT_NE(Post("/customstatement", base + "&submit=Afficher+le+rapport").body.find(
                "ShowControlError('204', 'Choisissez un client.');"),
            std::string::npos);
  EXPECT_NE(Post("/customstatement", base + "&204=C2&submit=Afficher+le+rapport").body.find(
                "window.location = 'generateStatement?report=statement&from=2025-01-01&to=2025-12-31&customer=C2';"),
            std::string::npos);

  // 2024's invoice is brought forward; the year's invoice, credit note and payment follow in date
  // order with the running balance; the invoices still owed are aged as at the last day.
  const std::string query = "customer=C2&from=2025-01-01&to=2025-12-31";
  std::string page = Get("/generateStatement?" + query).body;
  std::vector<PageRow> rows = PageRows(page);
  std::vector<std::pair<std::string, nlohmann::json>> expected = {
      {"Solde reporté", 80000},  {"Facture 4", 280000},          {"Avoir 1", 270000},
      {"Paiement 2", 220000},     {"Total de la période", nullptr}, {"Solde au 2025-12-31", 220000},
      {"Ancienneté du solde", nullptr}, {"Courant", 0},            {"1 à 30 jours", 0},
      {"31 à 60 jours", 0},       {"61 à 90 jours", 0},          {"Plus de 90 jours", 230000}};
  ASSERT_EQ(rows.size(), expected.size()) << page;
  for (std::size_t r = 0; r < rows.size(); ++r) {
    EXPECT_EQ(rows[r].label, expected[r].first);
    if (rows[r].kind != "heading") {
      EXPECT_EQ(rows[r].values[3], expected[r].second) << rows[r].label;
    }
  }
  EXPECT_EQ(rows[1].texts[0], "2025-06-30");  // the date as a text cell
  EXPECT_EQ(rows[4].values[1], nlohmann::json(200000));  // the period's debits and credits
  EXPECT_EQ(rows[4].values[2], nlohmann::json(60000));

  // Downloading it issues it: the log shows it, for this customer only.
  EXPECT_NE(Get("/generatelog?customer=C2").body.find("Aucun relevé émis pour ce client."), std::string::npos);
  LWebResponse csv = Get("/generateStatement?" + query + "&format=csv");
  EXPECT_NE(csv.body.find("\"Solde au 2025-12-31\",\"2025-12-31\",\"\",\"\",\"2200.00\""), std::string::npos)
      << csv.body;
  std::string log = Get("/generatelog?customer=C2").body;
  EXPECT_NE(log.find("<td>2025-01-01</td><td>2025-12-31</td><td class=amount>$2,200.00</td><td>Alice Admin</td>"
                     "<td>CSV</td>"),
            std::string::npos)
      << log;
  EXPECT_NE(Get("/generatelog?customer=C1").body.find("Aucun relevé émis"), std::string::npos);
  EXPECT_NE(Get("/generateStatement?customer=C9").body.find("Client introuvable : C9"), std::string::npos);
}

TEST_F(WebReportsTest, ChoosersLeadToTheReportAndRefuseWhatDoesNotRead) {
  // Each report goes to the chooser of what it asks, its choices carried over.
  auto redirect = [&](const std::string& query) { return Get("/reportredirect?" + query).headers["location"]; };
  EXPECT_EQ(redirect("report=pl&from=2024-01-01"), "reportperiod?report=pl&from=2024-01-01");
  EXPECT_EQ(redirect("report=pl-compare"), "reportperiod1?report=pl-compare");
  EXPECT_EQ(redirect("report=bs"), "reportdate?report=bs");
  EXPECT_EQ(redirect("report=tb"), "reportdatef?report=tb");
  EXPECT_EQ(redirect("report=coa"), "generatereport?report=coa");
  EXPECT_EQ(redirect("report=nothing"), "reports");

  // The period chooser of a sales report, prefilled from the address, with its customers.
  std::string chooser = Get("/reportperiod?report=invoices&from=2024-01-01&to=2024-12-31&customer=C2").body;
  EXPECT_NE(chooser.find("<option value='custom' selected>Dates choisies</option>"), std::string::npos) << chooser;
  EXPECT_NE(chooser.find("id=202 name=202 type=text value='2024-01-01'"), std::string::npos);
  EXPECT_NE(chooser.find("<option value='C2' selected>C2 - Martin &amp; fils</option>"), std::string::npos);
  EXPECT_NE(chooser.find("ReportChoice('cbrpselchangeforcustomers', 201)"), std::string::npos);

  // A named period fills the dates; for a sales report the customers are those invoiced then.
  const std::string base = "report=invoices&chooser=reportperiod&";
  std::string year = Post("/cbrpselchange", base + "MainControlId=201&201=y").body;
  std::string thisYear = std::to_string(LDate::Today().year);
  EXPECT_NE(year.find("document.getElementById('202').value = '" + thisYear + "-01-01';"), std::string::npos) << year;
  EXPECT_NE(year.find("document.getElementById('203').value = '" + thisYear + "-12-31';"), std::string::npos);
  std::string narrowed = Post("/cbrpselchangeforcustomers", base + "MainControlId=201&201=y").body;
  EXPECT_NE(narrowed.find("innerHTML = '\\x3Coption value=\\'\\'\\x3ETous les clients\\x3C/option\\x3E';"),
            std::string::npos)
      << narrowed;  // nobody invoiced this year
  std::string days = Post("/cbdtselchange", "report=bs&chooser=reportdate&MainControlId=221&221=today").body;
  EXPECT_NE(days.find("document.getElementById('222').value = '" + LDate::Today().ToText() + "';"), std::string::npos);
  std::string start = Post("/cbdtfselchange", "report=tb&chooser=reportdatef&MainControlId=231&231=beginning").body;
  EXPECT_NE(start.find("document.getElementById('232').value = '';"), std::string::npos);

  // The count of lines follows the choices: the two invoices of 2024 and the total.
  std::string count = Post("/getreportitemcount", base + "201=custom&202=2024-01-01&203=2024-12-31").body;
  EXPECT_NE(count.find("Le rapport compte 3 lignes."), std::string::npos) << count;

  // OK shows the report; dates that do not read stay on the chooser with the reason.
  std::string bad = Post("/reportperiod", base + "201=custom&202=2024-02-30&203=2024-12-31&submit=Afficher+le+rapport").body;
  EXPECT_NE(bad.find("ShowControlError('202', 'Date invalide : 2024-02-30 (AAAA-MM-JJ).');"), std::string::npos);
  std::string reversed = Post("/reportperiod", base + "202=2024-12-31&203=2024-01-01&submit=Afficher+le+rapport").body;
  EXPECT_NE(reversed.find("ShowControlError('203', 'La date de fin précède la date de début.');"), std::string::npos);
  std::string ok = Post("/reportperiod", base + "202=2024-01-01&203=2024-12-31&204=C2&submit=Afficher+le+rapport").body;
  EXPECT_NE(ok.find("window.location = 'generatereport?report=invoices&from=2024-01-01&to=2024-12-31&customer=C2';"),
            std::string::npos)
      << ok;

  // A named period as of today: last calendar year.
  LWebResponse named = Get("/generatereportperiod?report=pl&period=py");
  std::string last = std::to_string(LDate::Today().year - 1);
  EXPECT_NE(named.body.find("Du " + last + "-01-01 au " + last + "-12-31"), std::string::npos);
  EXPECT_NE(Get("/generatereportperiod?report=pl&period=someday").body.find("Période inconnue : someday"),
            std::string::npos);
  EXPECT_NE(Get("/generatereport?report=pl&from=2024-13-01").body.find("Date invalide : 2024-13-01"), std::string::npos);

  // Without a session, the report is not shown.
  EXPECT_EQ(LHttpGet(port_, "/generatereport?report=pl").headers["location"], "logon");
}

}  // namespace
