// The FEC checker: a sound file passes, and each rule is broken by a file that differs from the
// sound one in one place only, and found there.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "accounts/feccheck.h"

namespace {

const std::string kName = "732829320FEC20261231.txt";
const std::string kHeader =
    "JournalCode|JournalLib|EcritureNum|EcritureDate|CompteNum|CompteLib|CompAuxNum|CompAuxLib|PieceRef|"
    "PieceDate|EcritureLib|Debit|Credit|EcritureLet|DateLet|ValidDate|Montantdevise|Idevise";

// Two entries: a sale lettered with its customer, and a bank receipt.
std::vector<std::string> SoundLines() {
  return {
      "VE|Ventes|1|20260110|411000|Clients|C1|Dupont|SLS10000|20260110|Recette; C1|120,00|0,00|A|20260301|20260110||",
      "VE|Ventes|1|20260110|706000|Prestations de services|||SLS10000|20260110|Recette; C1|0,00|100,00|||20260110||",
      "VE|Ventes|1|20260110|445710|TVA collectée|||SLS10000|20260110|Recette; C1|0,00|20,00|||20260110||",
      "BQ|Banque|1|20260301|411000|Clients|C1|Dupont|REC10000|20260301|Encaissement; C1|0,00|120,00|A|20260301|"
      "20260301||",
      "BQ|Banque|1|20260301|512000|Banque|||REC10000|20260301|Encaissement; C1|120.00|0,00|||20260301||",
  };
}

std::string Join(const std::vector<std::string>& lines, const std::string& header = kHeader) {
  std::string text = header + "\r\n";
  for (const auto& line : lines) text += line + "\r\n";
  return text;
}

// Replaces field `field` (0-based) of line `line` (0-based, after the header).
std::string WithField(std::size_t line, std::size_t field, const std::string& value) {
  std::vector<std::string> lines = SoundLines();
  std::string& text = lines[line];
  std::size_t from = 0;
  for (std::size_t i = 0; i < field; ++i) from = text.find('|', from) + 1;
  std::size_t to = text.find('|', from);
  text.replace(from, to == std::string::npos ? std::string::npos : to - from, value);
  return Join(lines);
}

// The faults of a content as one text, for the failure message.
std::string FaultsOf(const LFecCheckReport& report) {
  std::string all;
  for (const auto& fault : report.faults) all += fault + "\n";
  return all;
}

void ExpectFault(const std::string& name, const std::string& content, const std::string& fault) {
  LFecCheckReport report = LFecCheckText(name, content);
  EXPECT_FALSE(report.Passed());
  bool found = false;
  for (const auto& text : report.faults) found = found || text.find(fault) != std::string::npos;
  EXPECT_TRUE(found) << "expected: " << fault << "\ngot:\n" << FaultsOf(report);
}

TEST(FecCheck, ASoundFilePassesWithItsTotals) {
  LFecCheckReport report = LFecCheckText(kName, Join(SoundLines()));
  EXPECT_TRUE(report.Passed()) << FaultsOf(report);
  EXPECT_EQ(report.lineCount, 5);
  EXPECT_EQ(report.entryCount, 2);
  EXPECT_EQ(report.debitTotal, 24000);
  EXPECT_EQ(report.creditTotal, 24000);
  // A tab is the other separator allowed, and a file without CR reads the same.
  std::string tabbed = Join(SoundLines());
  for (char& c : tabbed) c = c == '|' ? '\t' : c;
  std::erase(tabbed, '\r');
  EXPECT_TRUE(LFecCheckText(kName, tabbed).Passed());
}

TEST(FecCheck, FileNameMustBeSirenFecAndClosingDate) {
  for (const char* name : {"73282932FEC20261231.txt", "732829320FEC20261331.txt", "732829320fec20261231.txt",
                           "732829320FEC20261231.csv", "A32829320FEC20261231.txt"})
    ExpectFault(name, Join(SoundLines()), "Nom de fichier");
}

TEST(FecCheck, SeparatorHeaderAndFieldCount) {
  std::string noSeparator = kHeader;
  for (char& c : noSeparator) c = c == '|' ? ';' : c;
  ExpectFault(kName, Join(SoundLines(), noSeparator), "Ligne 1 : séparateur introuvable");

  std::vector<std::string> mixed = SoundLines();
  for (char& c : mixed[2]) c = c == '|' ? '\t' : c;
  ExpectFault(kName, Join(mixed), "Ligne 4 : séparateur différent de celui de l'en-tête.");

  std::string renamed = kHeader;
  renamed.replace(renamed.find("CompteLib"), 9, "CompteLibelle");
  ExpectFault(kName, Join(SoundLines(), renamed), "le champ 6 de l'en-tête est « CompteLibelle » au lieu de « CompteLib »");
  ExpectFault(kName, Join(SoundLines(), kHeader + "|Extra"), "l'en-tête compte 19 champs au lieu de 18");

  std::vector<std::string> shortLine = SoundLines();
  shortLine[1].erase(shortLine[1].rfind('|'));
  ExpectFault(kName, Join(shortLine), "Ligne 3 : 17 champs au lieu de 18.");
}

TEST(FecCheck, FieldTypes) {
  ExpectFault(kName, WithField(0, 3, "2026-01-10"), "Ligne 2 : EcritureDate « 2026-01-10 » n'est pas une date");
  ExpectFault(kName, WithField(0, 9, "20260230"), "PieceDate « 20260230 » n'est pas une date");
  ExpectFault(kName, WithField(0, 14, "1/3/2026"), "DateLet « 1/3/2026 » n'est pas une date");
  ExpectFault(kName, WithField(0, 15, "2026011"), "ValidDate « 2026011 » n'est pas une date");
  ExpectFault(kName, WithField(0, 11, "1 200,00"), "Debit « 1 200,00 » n'est pas un montant.");
  ExpectFault(kName, WithField(1, 12, "100,001"), "Credit « 100,001 » n'est pas un montant.");
  ExpectFault(kName, WithField(1, 16, "abc"), "Montantdevise « abc » n'est pas un montant.");
}

TEST(FecCheck, MandatoryFieldsAndTheirPairs) {
  const std::vector<std::pair<std::size_t, std::string>> mandatory = {
      {0, "JournalCode"}, {1, "JournalLib"}, {2, "EcritureNum"}, {3, "EcritureDate"}, {4, "CompteNum"},
      {5, "CompteLib"},   {8, "PieceRef"},   {9, "PieceDate"},   {10, "EcritureLib"}, {11, "Debit"},
      {12, "Credit"},     {15, "ValidDate"}};
  for (const auto& [field, name] : mandatory)
    ExpectFault(kName, WithField(1, field, ""), "Ligne 3 : le champ obligatoire " + name + " est vide.");
  ExpectFault(kName, WithField(0, 7, ""), "CompAuxLib est vide alors que CompAuxNum est renseigné.");
  ExpectFault(kName, WithField(0, 14, ""), "DateLet est vide alors que EcritureLet est renseigné.");
}

TEST(FecCheck, DebitAndCreditBothFilled) {
  ExpectFault(kName, WithField(1, 11, "0,01"), "Ligne 3 : Debit et Credit sont renseignés tous les deux.");
}

TEST(FecCheck, EachEntryAndTheWholeFileBalanced) {
  // One cent more on the sale's debit and on the receipt's credit: the file still balances, each
  // entry does not.
  std::vector<std::string> moved = SoundLines();
  moved[0].replace(moved[0].find("120,00"), 6, "120,01");
  moved[3].replace(moved[3].find("|120,00|"), 8, "|120,01|");
  LFecCheckReport report = LFecCheckText(kName, Join(moved));
  ASSERT_EQ(report.faults.size(), 2u) << FaultsOf(report);
  EXPECT_EQ(report.faults[0], "Écriture 1 du journal VE (ligne 2) déséquilibrée : écart de 0,01.");
  EXPECT_EQ(report.faults[1], "Écriture 1 du journal BQ (ligne 5) déséquilibrée : écart de 0,01.");
  // The same number in two journals is two entries: renumbering one side breaks both.
  ExpectFault(kName, WithField(2, 2, "2"), "Écriture 2 du journal VE (ligne 4) déséquilibrée");
  // A line taken away unbalances its entry and the file.
  std::vector<std::string> missing = SoundLines();
  missing.pop_back();
  ExpectFault(kName, Join(missing), "Fichier déséquilibré : total des débits 120,00, total des crédits 240,00.");
}

TEST(FecCheck, EmptyOrUnreadableFiles) {
  ExpectFault(kName, "", "Fichier vide");
  LFecCheckReport report = LFecCheckFile("/nonexistent/732829320FEC20261231.txt");
  ASSERT_EQ(report.faults.size(), 1u);
  EXPECT_EQ(report.faults[0], "Impossible de lire le fichier /nonexistent/732829320FEC20261231.txt.");
}

}  // namespace
