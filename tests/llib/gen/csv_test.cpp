#include "llib/gen/csv.h"

#include <sys/file.h>
#include <sys/stat.h>

#include <fcntl.h>

#include <chrono>
#include <cstring>
#include <memory>
#include <set>
#include <thread>
#include <utility>

#include "llib/gen/file.h"
#include "llib/gen/filelock.h"
#include "tests/support/envscope.h"
#include "tests/support/testhome.h"

namespace {

using Row = std::vector<std::string>;
using Rows = std::vector<Row>;
using Lines = std::vector<std::string>;

// Every column of a row, up to the one past its end.
Row Columns(std::string_view line) {
  LCSVReaderRow row(line);
  Row columns;
  while (!row.AtEnd()) columns.push_back(row.GetCol());
  return columns;
}

template <class Reader>
Rows ReadRows(const std::string& path) {
  Reader reader(path, 1000);
  Rows rows;
  for (; reader.HasRow(); reader.Next()) rows.push_back(Columns(reader.GetLine()));
  return rows;
}

Lines ReadLines(const std::string& path) {
  LCSVFileReader reader(path, 1000);
  Lines lines;
  for (; reader.HasRow(); reader.Next()) lines.push_back(reader.GetLine());
  return lines;
}

// The bytes of a UTF-16LE file with its mark.
std::string Utf16LeFile(std::u16string_view text) {
  std::string bytes = "\xFF\xFE";
  for (char16_t unit : text) {
    bytes.push_back(static_cast<char>(unit & 0xFF));
    bytes.push_back(static_cast<char>(unit >> 8));
  }
  return bytes;
}

// Each case gets its own application folder and its own temporary folder, so the UTF-8 copies
// and editor outputs a case leaves behind can be seen.
class Csv : public LHomeTest {
 protected:
  std::string PathOf(const std::string& name) const { return home_.Path() + "/" + name; }
  std::string Write(const std::string& name, const std::string& content) const {
    LWriteFile(PathOf(name), content);
    return PathOf(name);
  }
  std::vector<std::string> TempFiles() const { return LFile::ListFolder(tempFolder_); }

  const std::string tempFolder_ = [this] {
    LFile::MakeFolder(home_.Path() + "/tmp");
    return home_.Path() + "/tmp";
  }();
  LEnvScope tmpdir_{"TMPDIR", tempFolder_.c_str()};
};

// ---------------------------------------------------------------------------------------------
// Row parser

// Blanks (bytes 1 to 32, never bytes of 128 and above) around values are dropped; a quote
// opens a quoted column only as its first non-blank byte; an unclosed quote runs to the end of
// the line; text between a closing quote and the next comma is dropped.
TEST(CsvRow, ColumnsOfOneLine) {
  const std::pair<std::string, Row> cases[] = {
      {" a , \"b\"\"c\" x, d ", {"a", "b\"c", "d"}},
      {"\"  kept  \" ,\t\x01next\t\x1f", {"  kept  ", "next"}},
      {"\xC3\xA9\xA0 ,x", {"\xC3\xA9\xA0", "x"}},
      {"a\"b,c\"", {"a\"b", "c\""}},
      {"x,   \"a,b\"", {"x", "a,b"}},
      {"1,\"ha \"\"x, y", {"1", "ha \"x, y"}},
      {"\"a\"junk\"more,b", {"a", "b"}},
      {"\"a\" tail", {"a"}},
      {"\"\"ha\"\" ,z", {"", "z"}},  // an opening quote at once followed by a lone quote
      {"\"\"\"\"", {"\""}},
      {",,", {"", ""}},
      {"", {}},
      {"   ", {}},
  };
  for (const auto& [line, expected] : cases) EXPECT_EQ(Columns(line), expected) << line;

  // A trailing comma and the end of the row read alike: empty, and at the end.
  LCSVReaderRow row("a,");
  EXPECT_FALSE(row.AtEnd());
  EXPECT_EQ(row.GetCol(), "a");
  EXPECT_TRUE(row.AtEnd());
  EXPECT_EQ(row.GetCol(), "");
  EXPECT_TRUE(row.AtEnd());
}

TEST(CsvRow, FixedBuffersCutAt259Bytes) {
  std::string longValue(300, 'v');
  std::string line = "\"" + longValue + "\",short," + longValue;
  std::string whole;
  LCSVReaderRow(line).GetCol(whole);
  EXPECT_EQ(whole, longValue);

  LCSVReaderRow cols(line);
  LTextBuffer a, b, c, d;
  std::memset(d, 'x', sizeof d);
  LCSVGetCols(cols, {a, b, c, d});
  EXPECT_EQ(std::string(a), longValue.substr(0, 259));
  EXPECT_STREQ(b, "short");
  EXPECT_EQ(std::string(c).size(), 259u);
  EXPECT_STREQ(d, "");  // beyond the row's end
}

// ---------------------------------------------------------------------------------------------
// Writer

TEST(CsvWriter, QuotesEveryColumnAndBlanksControlBytes) {
  LCSVWriterRow row;
  row.AddCol("a");
  row.AddCol("");
  EXPECT_EQ(row.GetColumnCount(), 2);
  row.Clear();
  row.AddCol("b\"c");
  row.AddCol(std::string("\x01\t\r\n\x1f \x7f\xC3\xA9", 9));
  EXPECT_EQ(row.GetText(), "\"b\"\"c\",\"      \x7f\xC3\xA9\"");
  EXPECT_EQ(row.GetColumnCount(), 2);
}

// Every text of up to four bytes over the bytes that matter to the format survives a write and
// a read, with its bytes 1 to 32 turned into blanks.
TEST(CsvWriter, EveryShortColumnReadsBackAsWritten) {
  const std::string alphabet = "\",\n a\t";
  std::vector<std::string> texts{""};
  for (std::size_t from = 0, length = 1; length <= 4; ++length) {
    std::size_t to = texts.size();
    for (std::size_t i = from; i < to; ++i)
      for (char c : alphabet) texts.push_back(texts[i] + c);
    from = to;
  }
  ASSERT_EQ(texts.size(), 1555u);
  for (const std::string& text : texts) {
    LCSVWriterRow row;
    for (const std::string& column : {text, text, std::string("end")}) row.AddCol(column);
    std::string expected = text;
    for (char& c : expected)
      if (c == '\n' || c == '\t') c = ' ';
    ASSERT_EQ(Columns(row.GetText()), (Row{expected, expected, "end"})) << row.GetText();
  }
}

TEST_F(Csv, WriteRowAppendsQuotedRowsWithCrLf) {
  std::string path = PathOf("export.csv");
  ASSERT_TRUE(LCSVWriteRow(path, {"a", "", "x\r\ny"}));
  ASSERT_TRUE(LCSVWriteRow(path, {"b\"c"}));
  EXPECT_EQ(LReadFile(path), "\"a\",\"\",\"x  y\"\r\n\"b\"\"c\"\r\n");
  EXPECT_EQ(ReadRows<LCSVFileReader>(path), (Rows{{"a", "", "x  y"}, {"b\"c"}}));
  EXPECT_FALSE(LCSVWriteRow(PathOf("missing/export.csv"), {"a"}));
}

// ---------------------------------------------------------------------------------------------
// Reader: lines and marks

// Line ends of every kind, empty lines skipped, and a byte-order mark only at the very start.
TEST_F(Csv, LinesOfSmallFiles) {
  const std::pair<std::string, Lines> cases[] = {
      {"\n\r\na\rb\r\n\r\n\nc\n\r\r d\n\"e\"", {"a", "b", "c", " d", "\"e\""}},
      {"", {}},
      {"\r\n\n\r", {}},
      {"\xEF\xBB\xBF\"a\",\"b\"\n", {"\"a\",\"b\""}},
      {"x\n\xEF\xBB\xBFy\n", {"x", "\xEF\xBB\xBFy"}},
      {"\xEF\xBB", {"\xEF\xBB"}},
      {"\xEF\xBB\xBF", {}},
      {"\xFF\xFE", {}},
  };
  for (const auto& [content, expected] : cases)
    EXPECT_EQ(ReadLines(Write("small.csv", content)), expected) << content;

  LCSVFileReader reader(PathOf("small.csv"), 1000);
  EXPECT_FALSE(reader.HasRow());
  EXPECT_FALSE(reader.Next());
  EXPECT_EQ(reader.GetLine(), "");
}

TEST_F(Csv, LongLinesAreCutAt8191BytesAndTheirRestDropped) {
  std::string exact(8191, 'e'), over(8192, 'o'), huge(30000, 'h');
  std::string path = Write("long.csv", exact + "\n" + over + "\r\n" + huge + "\rnext\n" + huge);
  EXPECT_EQ(ReadLines(path), (Lines{exact, over.substr(0, 8191), huge.substr(0, 8191), "next",
                                    huge.substr(0, 8191)}));
}

// Lines that straddle the reader's 8 KB buffer come out whole, whatever their line end.
TEST_F(Csv, LinesAcrossBufferBoundaries) {
  std::string content;
  Lines expected;
  const char* ends[] = {"\n", "\r", "\r\n"};
  for (int i = 0; i < 300; ++i) {
    expected.push_back(std::to_string(i) + "," + std::string(static_cast<std::size_t>(i * 37 % 701), 'x'));
    content += expected.back() + ends[i % 3];
  }
  EXPECT_EQ(ReadLines(Write("many.csv", content)), expected);
}

TEST_F(Csv, MissingFileHasNoRowsAndOpenMovesOn) {
  LCSVFileReader reader(PathOf("missing.csv"), 1000);
  EXPECT_FALSE(reader.HasRow());
  EXPECT_TRUE(reader.Open(Write("one.csv", "1\n2\n"), 1000));
  EXPECT_TRUE(reader.Open(Write("two.csv", "3\n"), 1000));
  EXPECT_EQ(reader.GetLine(), "3");
  EXPECT_FALSE(reader.Open(PathOf("missing.csv"), 1000));
  EXPECT_FALSE(reader.HasRow());
}

// ---------------------------------------------------------------------------------------------
// Reader: UTF-16 little-endian files

TEST_F(Csv, Utf16FileReadsAsItsUtf8Equivalent) {
  std::string utf8 = "\"Café\",\"crème\"\r\nÅ,€ 12\r\n\r\n\"😀\"\n\"b\"\"c\" x,d";
  std::u16string utf16 = u"\"Café\",\"crème\"\r\nÅ,€ 12\r\n\r\n\"😀\"\n\"b\"\"c\" x,d";
  std::string path = Write("utf16.csv", Utf16LeFile(utf16));
  Rows expected = ReadRows<LCSVFileReader>(Write("utf8.csv", utf8));
  EXPECT_EQ(expected, (Rows{{"Café", "crème"}, {"Å", "€ 12"}, {"😀"}, {"b\"c", "d"}}));
  EXPECT_EQ(ReadRows<LCSVFileReader>(path), expected);
  EXPECT_EQ(ReadRows<ExcelCSVFileReader>(path), expected);
}

TEST_F(Csv, Utf16SurrogatesOddBytesAndBlocks) {
  // A pair split by the 2,048-byte block boundary: the high half is the block's last unit.
  std::u16string text = std::u16string(1023, u'a') + u"\U0001F600,z\n";
  std::string bytes = Utf16LeFile(text);
  ASSERT_EQ(static_cast<unsigned char>(bytes[2 + 2046 + 1]), 0xD8u);
  std::string expected = std::string(1023, 'a') + "\xF0\x9F\x98\x80";
  EXPECT_EQ(ReadRows<LCSVFileReader>(Write("split.csv", bytes)), (Rows{{expected, "z"}}));
  // Lone halves become U+FFFD; an odd last byte is dropped.
  std::u16string lone{u'x', 0xDC00, u',', 0xD800, u'y', u',', 0xD800};
  EXPECT_EQ(ReadRows<LCSVFileReader>(Write("lone.csv", Utf16LeFile(lone) + "Q")),
            (Rows{{"x\xEF\xBF\xBD", "\xEF\xBF\xBDy", "\xEF\xBF\xBD"}}));
}

TEST_F(Csv, Utf16CopyLivesInTheTemporaryFolderWhileTheReaderIsOpen) {
  std::string path = Write("utf16.csv", Utf16LeFile(u"a,b\n"));
  {
    LCSVFileReader reader(path, 1000);
    EXPECT_EQ(reader.GetLine(), "a,b");
    std::vector<std::string> temps = TempFiles();
    ASSERT_EQ(temps.size(), 1u);
    EXPECT_EQ(temps[0].size(), 7u);
    EXPECT_EQ(temps[0][0], '0');
    struct stat st;
    ASSERT_EQ(::stat((tempFolder_ + "/" + temps[0]).c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0666u);
    EXPECT_EQ(LReadFile(tempFolder_ + "/" + temps[0]), "a,b\n");
    reader.Open(path, 1000);
    EXPECT_EQ(TempFiles().size(), 1u);  // the first copy went with the first opening
    reader.Close();
    EXPECT_TRUE(TempFiles().empty());
    reader.Open(path, 1000);
  }
  EXPECT_TRUE(TempFiles().empty());
  // Without a temporary folder the file cannot be converted: it reads as having no rows.
  LEnvScope noTemp("TMPDIR", PathOf("no-such-folder").c_str());
  LCSVFileReader reader;
  EXPECT_FALSE(reader.Open(path, 1000));
  EXPECT_FALSE(reader.HasRow());
}

TEST_F(Csv, ExcelReaderTabRuleIsDecidedByTheFirstBlock) {
  std::u16string late = u"\"x\tcomma\",y\n";
  std::u16string filler = std::u16string(1100, u'f') + u"\n";  // pushes `late` past block 1
  std::string withTab = Write("tab.csv", Utf16LeFile(u"a\tb\tc\n" + filler + late));
  EXPECT_EQ(ReadRows<ExcelCSVFileReader>(withTab),
            (Rows{{"a", "b", "c"}, {std::string(1100, 'f')}, {"x,comma", "y"}}));
  EXPECT_EQ(ReadRows<LCSVFileReader>(withTab),
            (Rows{{"a\tb\tc"}, {std::string(1100, 'f')}, {"x\tcomma", "y"}}));
  // No tab in the first block: later tabs stay tabs.
  EXPECT_EQ(ReadRows<ExcelCSVFileReader>(Write("late.csv", Utf16LeFile(filler + late))),
            (Rows{{std::string(1100, 'f')}, {"x\tcomma", "y"}}));
  // A tab after a NUL unit does not count.
  ExcelCSVFileReader excel(Write("nul.csv", Utf16LeFile(std::u16string(u"a\0\tb\n", 5))), 1000);
  EXPECT_EQ(excel.GetLine(), std::string("a\0\tb", 4));
  // UTF-8 files are never converted, tabs or not.
  EXPECT_EQ(ReadRows<ExcelCSVFileReader>(Write("utf8tab.csv", "a\tb,c\n")), (Rows{{"a\tb", "c"}}));
}

// ---------------------------------------------------------------------------------------------
// Editor

// Only accepted rows stay, each ending with LF, over many read blocks; accepting none empties
// the file; no temporary file is left behind.
TEST_F(Csv, EditorKeepsAcceptedRowsWithLf) {
  std::string path = PathOf("big.csv");
  std::string expected, content;
  for (int i = 0; i < 3000; ++i) {
    std::string line = "\"" + std::to_string(i) + "\",\"" + std::string(40, 'p') + "\"";
    content += line + "\r\n";
    if (i % 3 != 0) expected += line + "\n";
  }
  LWriteFile(path, content);
  {
    LCSVFileEditor editor(path, 1000);
    for (int i = 0; editor.HasRow(); editor.Next(), ++i)
      if (i % 3 != 0) editor.RowAccept();
  }
  EXPECT_EQ(LReadFile(path), expected);
  { LCSVFileEditor editor(path, 1000); }
  EXPECT_EQ(LReadFile(path), "");
  EXPECT_TRUE(TempFiles().empty());
}

TEST_F(Csv, EditorCreatesAMissingFileAndLooksForNoMark) {
  std::string missing = PathOf("new.csv");
  {
    LCSVFileEditor editor(missing, 1000);
    EXPECT_FALSE(editor.HasRow());
  }
  EXPECT_TRUE(LFile::Exists(missing));
  EXPECT_EQ(LReadFile(missing), "");
  std::string marked = Write("marked.csv", "\xEF\xBB\xBF\"a\"\r\n\r\n\"b\"");
  {
    LCSVFileEditor editor(marked, 1000);
    for (; editor.HasRow(); editor.Next()) editor.RowAccept();
  }
  EXPECT_EQ(LReadFile(marked), "\xEF\xBB\xBF\"a\"\n\"b\"\n");
}

TEST_F(Csv, EditorWithoutTemporaryOutputEmptiesTheFile) {
  std::string path = Write("day.csv", "\"1\"\r\n\"2\"\r\n");
  LEnvScope noTemp("TMPDIR", PathOf("no-such-folder").c_str());
  {
    LCSVFileEditor editor(path, 1000);
    EXPECT_EQ(editor.GetLine(), "\"1\"");
    editor.RowAccept();
  }
  EXPECT_EQ(LReadFile(path), "");
}

// ---------------------------------------------------------------------------------------------
// Locks

// An append waits for the lock a reader or an editor holds, and goes on as soon as it is
// released.
TEST_F(Csv, AppendWaitsForReadersAndEditors) {
  std::string path = Write("shared.csv", "\"old\"\r\n");
  using Clock = std::chrono::steady_clock;
  for (int holder = 0; holder < 2; ++holder) {
    std::unique_ptr<LCSVFileReader> reader;
    std::unique_ptr<LCSVFileEditor> editor;
    if (holder == 0) reader = std::make_unique<LCSVFileReader>(path, 1000);
    else editor = std::make_unique<LCSVFileEditor>(path, 1000);
    std::string before = LReadFile(path);
    std::thread appender([&] { EXPECT_TRUE(LCSVWriteRow(path, {"new"})); });
    LSleepMs(400);
    EXPECT_EQ(LReadFile(path), before) << "holder " << holder;
    for (; editor && editor->HasRow(); editor->Next()) editor->RowAccept();
    reader.reset();
    editor.reset();
    Clock::time_point released = Clock::now();
    appender.join();
    EXPECT_LT(Clock::now() - released, std::chrono::milliseconds(2000));
  }
  // The editor's rewrite (LF ends) came before the append (CR LF) that waited for it.
  EXPECT_EQ(LReadFile(path), "\"old\"\n\"new\"\n\"new\"\r\n");
}

TEST_F(Csv, ReaderWaitsForAnEditorThenProceedsWithoutTheLock) {
  std::string path = Write("shared.csv", "\"1\"\r\n");
  LLockedFile holder(path, O_RDWR, LOCK_EX, 1000);
  ASSERT_TRUE(holder.Locked());
  auto start = std::chrono::steady_clock::now();
  LCSVFileReader reader(path, 300);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
  EXPECT_EQ(reader.GetLine(), "\"1\"");
}

// Several processes append at once; every row arrives whole, exactly once.
TEST_F(Csv, ConcurrentAppendsFromSeveralProcessesNeverTearARow) {
  const int nProcesses = 4, nRows = 150;
  const std::size_t payloadBytes = 6000;
  std::string path = PathOf("export.csv");
  std::vector<std::thread> runners;
  std::vector<LRunResult> results(nProcesses);
  for (int p = 0; p < nProcesses; ++p)
    runners.emplace_back([&, p] {
      results[p] = LRunProgram(KONTAVO_PROGRAM_csvappender,
                               {path, "p" + std::to_string(p), std::to_string(nRows),
                                std::to_string(payloadBytes)});
    });
  for (auto& runner : runners) runner.join();
  for (const auto& result : results) ASSERT_EQ(result.exitCode, 0) << result.err;

  std::set<std::string> seen;
  for (const Row& row : ReadRows<LCSVFileReader>(path)) {
    ASSERT_EQ(row.size(), 4u);
    std::string payload;
    while (payload.size() < payloadBytes) payload += row[0] + "-" + row[1] + ";";
    payload.resize(payloadBytes);
    ASSERT_EQ(row[2], payload);
    ASSERT_EQ(row[3], row[0] + ":" + row[1]);
    EXPECT_TRUE(seen.insert(row[3]).second) << row[3];
  }
  EXPECT_EQ(seen.size(), static_cast<std::size_t>(nProcesses * nRows));
}

// ---------------------------------------------------------------------------------------------
// Files from public CSV test suites. Where a suite expects a quoted line break to stay inside
// its value, here every line is a row: an unclosed quote runs to the end of its line.

const std::pair<const char*, Rows> kSamples[] = {
    {"csvspectrum_escaped_quotes.csv", {{"a", "b"}, {"1", "ha \"ha\" ha"}, {"3", "4"}}},
    {"csvspectrum_quotes_and_newlines.csv",
     {{"a", "b"}, {"1", "ha "}, {""}, {"ha\""}, {"3", "4"}}},
    {"csvspectrum_newlines_crlf.csv",
     {{"a", "b", "c"}, {"1", "2", "3"}, {"Once upon "}, {"a time\"", "5", "6"}, {"7", "8", "9"}}},
    {"csvspectrum_empty.csv", {{"a", "b", "c"}, {"1", "", ""}, {"2", "3", "4"}}},
    {"csvspectrum_empty_crlf.csv", {{"a", "b", "c"}, {"1", "", ""}, {"2", "3", "4"}}},
    {"csvkit_test_utf8_bom.csv", {{"foo", "bar", "baz"}, {"1", "2", "3"}, {"4", "5", "ʤ"}}},
    {"csvkit_test_utf16_little.csv", {{"a", "b", "c"}, {"1", "2", "3"}, {"4", "5", "ʤ"}}},
    // Big-endian UTF-16 is not recognised: its bytes are read as they are. NUL bytes are blanks
    // to the parser, so most columns survive; the first keeps the mark and a NUL, and the last
    // loses the high byte (02) of its character.
    {"csvkit_test_utf16_big.csv",
     {{std::string("\xFE\xFF\0a", 4), "b", "c"}, {"1", "2", "3"}, {"4", "5", "\xA4"}}},
    {"csvkit_test_latin1.csv", {{"a", "b", "c"}, {"1", "2", "3"}, {"4", "5", "\xA9"}}},
    {"csvkit_mac_newlines.csv",
     {{"a", "b", "c"}, {"1", "2", "3"}, {"Once upon"}, {"a time\"", "5", "6"}}},
    {"csvkit_test_skip_lines.csv", {{"a", "b", "c"}, {"1", "2", "3"}}},
    {"csvparser_option-skipEmptyLines.csv", {{"A"}, {"1"}, {"2"}, {"3"}}},
    // The last empty column and the row's end read alike.
    {"csvparser_empty-columns.csv", {{"2007-01-01", ""}, {"2007-01-02", ""}}},
    {"csvkit_bad.csv",
     {{"column_a", "column_b", "column_c"},
      {"1", "27", "", "I'm too long!"},
      {"", "I'm too short!"},
      {"0", "mixed types.... uh oh", "17"}}},
};

TEST(CsvSamples, EverySuiteFileGivesOurRows) {
  for (const auto& [name, rows] : kSamples) {
    std::string path = LSharedDataPath(std::string("csv/") + name);
    ASSERT_TRUE(LFile::Exists(path)) << path;
    EXPECT_EQ(ReadRows<LCSVFileReader>(path), rows) << name;
    EXPECT_EQ(ReadRows<ExcelCSVFileReader>(path), rows) << name;
  }
}

TEST(CsvSamples, RealWorldExportWithQuotedThousands) {
  std::string path = LSharedDataPath("csv/csvkit_FY09_EDU_Recipients_by_State.csv");
  for (const Rows& rows : {ReadRows<LCSVFileReader>(path), ReadRows<ExcelCSVFileReader>(path)}) {
    ASSERT_EQ(rows.size(), 54u);
    EXPECT_EQ(rows[0][7], "Post-Vietnam Era Veteran's Educational Assistance Program");
    EXPECT_EQ(rows[1],
              (Row{"ALABAMA", "AL", "01", "6,718", "1,728", "2,703", "1,269", "8", "12,426"}));
    EXPECT_EQ(rows[52], (Row{"PUERTO RICO", "PR", "72", "822", "1,107", "1,565", "927", "3", "4,424"}));
    EXPECT_EQ(rows[53], Row(9, ""));
    for (const Row& row : rows) EXPECT_EQ(row.size(), 9u) << row[0];
  }
}

}  // namespace
