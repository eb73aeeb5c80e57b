// kontavo export fec on a year of real postings through the binary: invoices, a credit note,
// payments, a bill and its payment, journal entries, opening balances, an earlier year and a
// deleted entry. The file passes our checker, its lines add up to the trial balance of the year,
// its à-nouveaux carry the earlier balances, and lettering pairs invoices with what settles them.
#include <gtest/gtest.h>

#include <ctime>
#include <map>

#include "accounts/feccheck.h"
#include "tests/app/clitest.h"
#include "tests/support/envscope.h"

namespace {

using LFecLine = std::vector<std::string>;

std::vector<LFecLine> ReadFec(const std::string& content) {
  std::vector<LFecLine> lines;
  std::size_t from = 0;
  while (from < content.size()) {
    std::size_t end = content.find("\r\n", from);
    std::string line = content.substr(from, end - from);
    from = end + 2;
    LFecLine fields;
    std::size_t start = 0;
    for (std::size_t bar = line.find('|'); bar != std::string::npos; bar = line.find('|', start)) {
      fields.push_back(line.substr(start, bar - start));
      start = bar + 1;
    }
    fields.push_back(line.substr(start));
    lines.push_back(fields);
  }
  return lines;
}

long long Cents(const std::string& amount) {
  std::size_t comma = amount.find(',');
  return std::stoll(amount.substr(0, comma)) * 100 + std::stoll(amount.substr(comma + 1));
}

class FecCli : public LHomeTest {
 protected:
  void SetUp() override {
    Run({"init"});
    Run({"account", "defaults"});
    Run({"record", "set", "Misc", "Company", "Name=Atelier Ébène", "SIREN=732829320"});
    Run({"customer", "add", "C1", "Name=Dupont & Fils"});
    Run({"customer", "add", "C2", "Name=Łukasz Wójcik"});
    Run({"supplier", "add", "S1", "Name=Fournil"});
    Run({"account", "edit", "1110", "--opening", "1000"});
    // The earlier year: a cash sale, whose result the à-nouveaux carry.
    Run({"journal", "add", "--date", "2025-06-01", "--ref", "GJ1", "--desc", "Vente comptant", "dr:1110:500",
         "cr:4110:500"});
    // Invoices 1 and 2 settled by credit note 1 and payment 1; invoice 3 unpaid.
    Run({"invoice", "new", "--customer", "C1", "--date", "2026-01-10", "--untaxed", "--line", "|Table|1|100|Aucun|"});
    Run({"invoice", "new", "--customer", "C1", "--date", "2026-02-10", "--untaxed", "--line", "|Chaises|2|100|Aucun|"});
    Run({"creditnote", "new", "--customer", "C1", "--date", "2026-02-15", "--untaxed", "--line", "|Remise|1|50|Aucun|"});
    Run({"creditnote", "apply", "1", "2=50"});
    Run({"payment", "add", "--customer", "C1", "--amount", "250", "--date", "2026-03-01", "--apply", "1=100", "2=150"});
    Run({"invoice", "new", "--customer", "C2", "--date", "2026-04-01", "--untaxed", "--line", "|Buffet|1|80|Aucun|"});
    Run({"bill", "add", "--supplier", "S1", "--date", "2026-01-20", "6110:300"});
    Run({"billpayment", "add", "--supplier", "S1", "--amount", "300", "--date", "2026-02-20", "--apply", "PRC10000=300"});
    Run({"journal", "add", "--date", "2026-05-01", "--ref", "GJ2", "--desc", "Loyer | mai", "dr:6410:100",
         "cr:1110:100"});
    Run({"journal", "add", "--date", "2026-05-02", "--ref", "GJ3", "--desc", "Erreur", "dr:6410:7", "cr:1110:7"});
    Run({"ledger", "delete", "2026-05-02", "GJ3"});
    Run({"journal", "add", "--date", "2027-01-02", "--ref", "GJ4", "--desc", "Année suivante", "dr:6410:1",
         "cr:1110:1"});
  }
  static void Run(std::vector<std::string> args) {
    args.insert(args.begin(), "--yes");
    LRunResult run = LRunKontavo(args);
    ASSERT_EQ(run.exitCode, 0) << LCommandText(args) << "\n" << run.err;
  }
  // Exports 2026 (extra options added) into the home folder; the file's path.
  std::string Export(std::vector<std::string> extra = {}) {
    std::vector<std::string> args = {"export", "fec", "--year", "2026", "--out", home_.Path()};
    args.insert(args.end(), extra.begin(), extra.end());
    LRunResult run = LRunKontavo(args);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    std::string path = home_.Path() + "/732829320FEC20261231.txt";
    EXPECT_EQ(run.out, path + "\n");
    return path;
  }
  LEnvScope country_{"KONTAVO_COUNTRY", "FR"};
};

TEST_F(FecCli, AYearPassesTheCheckerAndAddsUpToTheTrialBalance) {
  std::string path = Export();
  LRunResult check = LRunKontavo({"export", "fec", "--check", path});
  EXPECT_EQ(check.exitCode, 0) << check.err;
  EXPECT_EQ(check.out, "Fichier conforme : 18 lignes, 9 écritures.\n");

  std::vector<LFecLine> lines = ReadFec(LReadFile(path));
  ASSERT_EQ(lines.size(), 19u);
  EXPECT_EQ(lines[0][0], "JournalCode");
  // À-nouveaux first: the opening balance and the earlier year's sale on the cash account,
  // balanced by the historical balance account.
  EXPECT_EQ(lines[1], (LFecLine{"AN", "\xC0-nouveaux", "1", "20260101", "1110", "Compte-ch\xE8que", "", "", "AN2026",
                                "20260101", "\xC0-nouveaux", "1500,00", "0,00", "", "", "20260101", "", ""}));
  EXPECT_EQ(lines[2][4], "3999");
  EXPECT_EQ(lines[2][12], "1500,00");

  // Per account, the year's lines (à-nouveaux aside) are the trial balance of the year.
  std::map<std::string, long long> fromFile;
  std::map<std::string, int> numbers;  // last EcritureNum of each journal
  std::string lastDate;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    const LFecLine& line = lines[i];
    EXPECT_GE(line[3], lastDate) << "line " << i << " out of date order";
    lastDate = line[3];
    int number = std::stoi(line[2]);
    EXPECT_TRUE(number == numbers[line[0]] || number == numbers[line[0]] + 1) << "line " << i;
    numbers[line[0]] = number;
    if (line[0] != "AN") fromFile[line[4]] += Cents(line[11]) - Cents(line[12]);
  }
  EXPECT_EQ(numbers, (std::map<std::string, int>{{"AC", 1}, {"AN", 1}, {"BQ", 2}, {"OD", 1}, {"VE", 4}}));
  nlohmann::json tb = LRunKontavoJson({"report", "tb", "--from", "2026-01-01", "--to", "2026-12-31"});
  std::map<std::string, long long> fromReport;
  for (const auto& row : tb["rows"]) {
    if (row["kind"] != "account") continue;
    std::string number = row["label"].get<std::string>().substr(0, 4);
    fromReport[number] = row["values"][0].is_null() ? -row["values"][1].get<long long>() : row["values"][0].get<long long>();
  }
  std::erase_if(fromFile, [](const auto& entry) { return entry.second == 0; });
  EXPECT_EQ(fromFile, fromReport);
  // ValidDate: the day each entry was posted, as the audit trail holds it (today, in UTC).
  std::time_t now = std::time(nullptr);
  char today[16];
  std::strftime(today, sizeof today, "%Y%m%d", std::gmtime(&now));
  for (std::size_t i = 3; i < lines.size(); ++i) EXPECT_EQ(lines[i][15], today) << "line " << i;
  // The deleted entry and the next year's are not there; a "|" in a text does not split its line.
  std::string content = LReadFile(path);
  EXPECT_EQ(content.find("Erreur"), std::string::npos);
  EXPECT_EQ(content.find("suivante"), std::string::npos);
  EXPECT_NE(content.find("|Loyer / mai|"), std::string::npos);
}

TEST_F(FecCli, CustomerAndSupplierLinesCarryTheirAccountAndLettering) {
  // A second bill, partly paid; a cheque applied to it then voided pairs with its reversal.
  Run({"bill", "add", "--supplier", "S1", "--date", "2026-03-05", "6110:200"});
  Run({"billpayment", "add", "--supplier", "S1", "--amount", "80", "--date", "2026-03-15", "--apply", "PRC10001=80"});
  Run({"cheque", "add", "--account", "1110", "--payee", "Fournil", "--amount", "50", "--supplier", "S1", "--date",
       "2026-03-20", "--apply", "PRC10001=50"});
  Run({"cheque", "void", "1", "--date", "2026-03-25"});
  std::vector<LFecLine> lines = ReadFec(LReadFile(Export()));
  std::vector<std::string> receivables;  // "reference aux letter dateLet"
  for (std::size_t i = 1; i < lines.size(); ++i)
    if (const LFecLine& line = lines[i]; !line[6].empty()) receivables.push_back(line[8] + " " + line[6] + " " + line[7] + " " + line[13] + " " + line[14]);
  // The first bill is settled first (20 February), the customer's invoices 1 and 2 on 1 March,
  // the voided cheque by its reversal on 25 March; the second bill, its partial payment and
  // invoice 3 stay open. The customer's name lacks "Ł" in ISO-8859-15: it shows as "?".
  EXPECT_EQ(receivables, (std::vector<std::string>{
                             "SLS10000 C1 Dupont & Fils B 20260301",
                             "PRC10000 S1 Fournil A 20260220",
                             "SLS10001 C1 Dupont & Fils B 20260301",
                             "SLS10002 C1 Dupont & Fils B 20260301",
                             "PMT10000 S1 Fournil A 20260220",
                             "REC10000 C1 Dupont & Fils B 20260301",
                             "PRC10001 S1 Fournil  ",
                             "PMT10001 S1 Fournil  ",
                             "PMT10002 S1 Fournil C 20260325",
                             "PMT10002V S1 Fournil C 20260325",
                             "SLS10003 C2 ?ukasz W\xF3jcik  ",
                         }));
}

TEST_F(FecCli, EncodingsAndRefusals) {
  LRunResult latin = LRunKontavo({"export", "fec", "--year", "2026", "--out", home_.Path()});
  EXPECT_EQ(latin.err, "1 caractère(s) sans équivalent ISO-8859-15 remplacé(s) par « ? » (--utf8 les conserve).\n");
  std::string utf8 = LReadFile(Export({"--utf8"}));
  EXPECT_NE(utf8.find("|Łukasz Wójcik|"), std::string::npos);
  EXPECT_NE(utf8.find("|À-nouveaux|"), std::string::npos);
  EXPECT_EQ(LRunKontavo({"export", "fec", "--check", home_.Path() + "/732829320FEC20261231.txt"}).exitCode, 0);

  LWriteFile(home_.Path() + "/broken.txt", "JournalCode|JournalLib\r\n");
  LRunResult broken = LRunKontavo({"export", "fec", "--check", home_.Path() + "/broken.txt"});
  EXPECT_EQ(broken.exitCode, 1);
  EXPECT_NE(broken.err.find("Nom de fichier « broken.txt » invalide"), std::string::npos) << broken.err;
  EXPECT_NE(broken.err.find("Ligne 1 : l'en-tête compte 2 champs au lieu de 18."), std::string::npos);

  LExpectUsageErrors({{"export", "fec"}, {"export", "fec", "--year", "26"}, {"export", "pdf"},
                      {"export", "fec", "--year", "2026", "--check", "x"}});
  Run({"record", "set", "Misc", "Company", "SIREN=12345"});
  LExpectRefused({"export", "fec", "--year", "2026", "--out", home_.Path()},
                 "Le numéro SIREN de l'entreprise (9 chiffres) est nécessaire pour nommer le fichier des écritures "
                 "comptables : renseignez le champ « SIREN » de la fiche de l'entreprise.");
}

}  // namespace
