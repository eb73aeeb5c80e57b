// Spreadsheet tables: the shared sample files parse to the rows their own expected results give
// (quotes, embedded line ends, CR-only files, byte-order marks, UTF-16 both ways); encodings and
// separators found from the content; what is not a table refused with the line it fails on; and
// the writer read back to the same cells.
#include "llib/gen/csvtable.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>

namespace {

const std::string kData = std::string(KONTAVO_SHARED_DATA) + "/csv/";

LCsvTable Parsed(std::string_view bytes) {
  LCsvTable table;
  std::string error;
  EXPECT_TRUE(LCsvTableParse(bytes, table, &error)) << error;
  return table;
}

std::string Refusal(std::string_view bytes) {
  LCsvTable table;
  std::string error;
  EXPECT_FALSE(LCsvTableParse(bytes, table, &error));
  EXPECT_TRUE(table.rows.empty() && table.header.cells.empty());
  return error;
}

using Cells = std::vector<std::string>;

TEST(CsvTable, SampleFilesGiveTheRowsOfTheirExpectedResults) {
  int nCompared = 0;
  for (const auto& entry : std::filesystem::directory_iterator(kData)) {
    if (entry.path().extension() != ".json") continue;
    std::filesystem::path csv = entry.path();
    csv.replace_extension(".csv");
    SCOPED_TRACE(csv.filename().string());
    nlohmann::json expected = nlohmann::json::parse(std::ifstream(entry.path()));
    LCsvTable table;
    std::string error;
    ASSERT_TRUE(LCsvTableRead(csv.string(), table, &error)) << error;
    ASSERT_EQ(table.rows.size(), expected.size());
    for (std::size_t r = 0; r < expected.size(); ++r)
      for (std::size_t c = 0; c < table.header.cells.size(); ++c)
        EXPECT_EQ(table.rows[r].cells.at(c), expected[r][table.header.cells[c]].get<std::string>());
    ++nCompared;
  }
  EXPECT_GE(nCompared, 5);
}

TEST(CsvTable, EncodingsAndLineEndsOfTheSpreadsheetSamples) {
  struct Case {
    const char* file;
    LCsvEncoding encoding;
    Cells header;
    Cells last;
  };
  const Case cases[] = {
      {"csvkit_test_utf8_bom.csv", LCsvEncoding::kUtf8Bom, {"foo", "bar", "baz"}, {"4", "5", "ʤ"}},
      {"csvkit_test_utf16_little.csv", LCsvEncoding::kUtf16Le, {"a", "b", "c"}, {"4", "5", "ʤ"}},
      {"csvkit_test_utf16_big.csv", LCsvEncoding::kUtf16Be, {"a", "b", "c"}, {"4", "5", "ʤ"}},
      {"csvkit_test_latin1.csv", LCsvEncoding::kWindows1252, {"a", "b", "c"}, {"4", "5", "©"}},
      {"csvkit_mac_newlines.csv", LCsvEncoding::kUtf8, {"a", "b", "c"}, {"Once upon\ra time", "5", "6"}},
      {"csvkit_test_skip_lines.csv", LCsvEncoding::kUtf8, {"a", "b", "c"}, {"1", "2", "3"}},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.file);
    LCsvTable table;
    std::string error;
    ASSERT_TRUE(LCsvTableRead(kData + one.file, table, &error)) << error;
    EXPECT_EQ(table.encoding, one.encoding);
    EXPECT_EQ(table.header.cells, one.header);
    ASSERT_FALSE(table.rows.empty());
    EXPECT_EQ(table.rows.back().cells, one.last);
  }
  // The header after three empty lines is on line 4, its first row on line 5.
  LCsvTable skipped;
  ASSERT_TRUE(LCsvTableRead(kData + "csvkit_test_skip_lines.csv", skipped, nullptr));
  EXPECT_EQ(skipped.header.line, 4);
  EXPECT_EQ(skipped.rows.front().line, 5);
}

TEST(CsvTable, SeparatorsEncodingsAndLineNumbersFoundFromTheContent) {
  // A French spreadsheet: semicolons, decimal commas, Windows-1252 accents.
  LCsvTable french = Parsed("Code;D\xE9signation;Prix\r\nA1;Caf\xE9 moulu;12,50\r\nA2;\x80uro;\"1 234,5\"\r\n");
  EXPECT_EQ(french.encoding, LCsvEncoding::kWindows1252);
  EXPECT_EQ(french.separator, ';');
  EXPECT_EQ(french.header.cells, (Cells{"Code", "Désignation", "Prix"}));
  EXPECT_EQ(french.rows[0].cells, (Cells{"A1", "Café moulu", "12,50"}));
  EXPECT_EQ(french.rows[1].cells, (Cells{"A2", "€uro", "1 234,5"}));

  LCsvTable tabs = Parsed("a\tb,c\n\n1\t\"x\ny\"\n2\t3\n");
  EXPECT_EQ(tabs.separator, '\t');
  EXPECT_EQ(tabs.header.cells, (Cells{"a", "b,c"}));
  ASSERT_EQ(tabs.rows.size(), 2u);
  EXPECT_EQ(tabs.rows[0].line, 3);
  EXPECT_EQ(tabs.rows[0].cells, (Cells{"1", "x\ny"}));
  EXPECT_EQ(tabs.rows[1].line, 5);  // the quoted line end counts

  // UTF-16 without a byte-order mark, as some programs save it.
  std::string utf16;
  for (char c : std::string("n,m\r\n1,2\r\n")) utf16 += std::string{c, '\0'};
  LCsvTable wide = Parsed(utf16);
  EXPECT_EQ(wide.encoding, LCsvEncoding::kUtf16Le);
  EXPECT_EQ(wide.rows.at(0).cells, (Cells{"1", "2"}));

  // Short rows, blanks around cells and text after a closing quote.
  LCsvTable loose = Parsed("a,b,c\n 1 ,\"q\"x\n");
  EXPECT_EQ(loose.rows.at(0).cells, (Cells{"1", "qx"}));
}

TEST(CsvTable, WhatIsNotATableIsRefusedWithItsLine) {
  EXPECT_EQ(Refusal(std::string("a,b\n1,2\n3,\0\n", 12)),
            "Ligne 3 : le fichier contient un octet nul ; ce n'est pas un fichier CSV texte.");
  EXPECT_EQ(Refusal("a,b\n1,2\n3,\"open\n4,5\n"), "Ligne 3 : un guillemet ouvert n'est jamais refermé.");
  std::string huge = "a,b\n1," + std::string(100u << 20, 'x') + "\n";
  EXPECT_EQ(Refusal(huge), "Ligne 2 : une ligne dépasse 1 Mo ; ce fichier n'est pas un tableau CSV.");
  std::string quotedHuge = "a\n\"" + std::string(kCsvTableMaxRowBytes + 10, '\n');
  EXPECT_EQ(Refusal(quotedHuge), "Ligne 2 : une ligne dépasse 1 Mo ; ce fichier n'est pas un tableau CSV.");
  LCsvTable table;
  std::string error;
  EXPECT_FALSE(LCsvTableRead("/nonexistent/file.csv", table, &error));
  EXPECT_EQ(error, "Impossible de lire le fichier /nonexistent/file.csv.");
  EXPECT_TRUE(Parsed("").header.cells.empty());
}

TEST(CsvTable, WrittenRowsReadBackToTheSameCells) {
  std::mt19937 random(24);
  const std::vector<std::string> alphabet = {"a", "b", " ", ",", ";", "\t", "\"", "\r", "\n", "é", "€", "x"};
  std::vector<Cells> rows = {{"Code", "Nom", "Note"}};
  for (int r = 0; r < 300; ++r) {
    Cells cells;
    for (int c = 0; c < 3; ++c) {
      std::string cell;
      for (int n = std::uniform_int_distribution<int>(0, 8)(random); n > 0; --n)
        cell += alphabet[std::uniform_int_distribution<std::size_t>(0, alphabet.size() - 1)(random)];
      cells.push_back(cell);
    }
    if (cells[0].empty()) cells[0] = "k";  // an all-empty row is not a row
    rows.push_back(cells);
  }
  std::string text;
  for (const Cells& cells : rows) LCsvTableAppendRow(text, cells);
  LCsvTable table = Parsed(text);
  EXPECT_EQ(table.separator, ',');
  EXPECT_EQ(table.header.cells, rows[0]);
  ASSERT_EQ(table.rows.size(), rows.size() - 1);
  for (std::size_t r = 1; r < rows.size(); ++r) EXPECT_EQ(table.rows[r - 1].cells, rows[r]) << r;
}

}  // namespace
