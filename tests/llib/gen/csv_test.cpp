#include "llib/gen/csv.h"

#include <sys/file.h>
#include <sys/stat.h>

#include <fcntl.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>
#include <thread>

#include "llib/gen/file.h"
#include "llib/gen/filelock.h"
#include "tests/support/testhome.h"

namespace {

using Row = std::vector<std::string>;
using Rows = std::vector<Row>;

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

std::vector<std::string> ReadLines(const std::string& path) {
  LCSVFileReader reader(path, 1000);
  std::vector<std::string> lines;
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
  void SetUp() override {
    tempFolder_ = home_.Path() + "/tmp";
    LFile::MakeFolder(tempFolder_);
    if (const char* previous = std::getenv("TMPDIR")) previousTmp_ = previous;
    ::setenv("TMPDIR", tempFolder_.c_str(), 1);
  }
  void TearDown() override {
    if (previousTmp_.empty()) ::unsetenv("TMPDIR");
    else ::setenv("TMPDIR", previousTmp_.c_str(), 1);
  }
  std::string PathOf(const std::string& name) const { return home_.Path() + "/" + name; }
  std::string Write(const std::string& name, const std::string& content) const {
    std::string path = PathOf(name);
    LWriteFile(path, content);
    return path;
  }
  std::vector<std::string> TempFiles() const { return LFile::ListFolder(tempFolder_); }

  std::string tempFolder_;
  std::string previousTmp_;
};

// ---------------------------------------------------------------------------------------------
// Row parser

TEST(CsvRow, BlanksAndQuotesOfOneLine) {
  EXPECT_EQ(Columns(" a , \"b\"\"c\" x, d "), (Row{"a", "b\"c", "d"}));
  EXPECT_EQ(Columns("\"  kept  \" ,\t\x01next\t\x1f"), (Row{"  kept  ", "next"}));
  // Bytes of 128 and above are text, not blanks.
  EXPECT_EQ(Columns("\xC3\xA9\xA0 ,x"), (Row{"\xC3\xA9\xA0", "x"}));
  // A quote inside an unquoted column is an ordinary byte.
  EXPECT_EQ(Columns("a\"b,c\""), (Row{"a\"b", "c\""}));
  // A quote after blanks still opens a quoted column, and its comma is text.
  EXPECT_EQ(Columns("x,   \"a,b\""), (Row{"x", "a,b"}));
}

TEST(CsvRow, QuotedColumnEdges) {
  // No closing quote: the value runs to the end of the line, commas included.
  EXPECT_EQ(Columns("\"abc, def"), (Row{"abc, def"}));
  EXPECT_EQ(Columns("1,\"ha \"\"x"), (Row{"1", "ha \"x"}));
  // Text between the closing quote and the comma is dropped; without a comma, the rest is.
  EXPECT_EQ(Columns("\"a\"junk\"more,b"), (Row{"a", "b"}));
  EXPECT_EQ(Columns("\"a\" tail"), (Row{"a"}));
  // An opening quote at once followed by a lone quote is an empty value.
  EXPECT_EQ(Columns("\"\"ha\"\" ,z"), (Row{"", "z"}));
  EXPECT_EQ(Columns("\"\"\"\""), (Row{"\""}));
  EXPECT_EQ(Columns("\"\",\"\""), (Row{"", ""}));
}

TEST(CsvRow, EmptyColumnsAndTheEnd) {
  EXPECT_EQ(Columns(",,"), (Row{"", ""}));
  EXPECT_EQ(Columns(""), Row{});
  EXPECT_EQ(Columns("   "), Row{});
  LCSVReaderRow row("a,");
  EXPECT_FALSE(row.AtEnd());
  EXPECT_EQ(row.GetCol(), "a");
  // A trailing comma and the end of the row read alike: empty, and at the end.
  EXPECT_TRUE(row.AtEnd());
  EXPECT_EQ(row.GetCol(), "");
  EXPECT_EQ(row.GetCol(), "");
  EXPECT_TRUE(row.AtEnd());
}

TEST(CsvRow, FixedBuffersCutAt259Bytes) {
  std::string longValue(300, 'v');
  std::string line = "\"" + longValue + "\",short," + longValue;
  LCSVReaderRow row(line);
  LTextBuffer first;
  row.GetCol(first);
  EXPECT_EQ(std::string(first), longValue.substr(0, 259));
  std::string whole;
  LCSVReaderRow again(line);
  again.GetCol(whole);
  EXPECT_EQ(whole, longValue);

  LCSVReaderRow cols(line);
  LTextBuffer a, b, c, d;
  std::memset(d, 'x', sizeof d);
  LCSVGetCols(cols, {a, b, c, d});
  EXPECT_EQ(std::string(a).size(), 259u);
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
  row.AddCol("x\ny");
  EXPECT_EQ(row.GetText(), "\"a\",\"\",\"x y\"");
  EXPECT_EQ(row.GetColumnCount(), 3);
  row.Clear();
  row.AddCol("b\"c");
  row.AddCol(std::string("\x01\t\r\x1f \x7f\xC3\xA9", 8));
  EXPECT_EQ(row.GetText(), "\"b\"\"c\",\"     \x7f\xC3\xA9\"");
  EXPECT_EQ(row.GetColumnCount(), 2);
}

// Every short text over the bytes that matter to the format survives a write and a read,
// with its bytes 1 to 32 turned into blanks.
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
    row.AddCol(text);
    row.AddCol(text);
    row.AddCol("end");
    std::string expected = text;
    for (char& c : expected)
      if (c == '\n' || c == '\t') c = ' ';
    LCSVReaderRow read(row.GetText());
    ASSERT_EQ(read.GetCol(), expected) << row.GetText();
    ASSERT_EQ(read.GetCol(), expected) << row.GetText();
    ASSERT_EQ(read.GetCol(), "end") << row.GetText();
    ASSERT_TRUE(read.AtEnd());
  }
}

TEST_F(Csv, WriteRowAppendsQuotedRowsWithCrLf) {
  std::string path = PathOf("export.csv");
  ASSERT_TRUE(LCSVWriteRow(path, {"a", "", "x\r\ny"}));
  ASSERT_TRUE(LCSVWriteRow(path, {"b\"c"}));
  EXPECT_EQ(LReadFile(path), "\"a\",\"\",\"x  y\"\r\n\"b\"\"c\"\r\n");
  // A CR LF inside a value comes back as two blanks.
  EXPECT_EQ(ReadRows<LCSVFileReader>(path), (Rows{{"a", "", "x  y"}, {"b\"c"}}));
  EXPECT_FALSE(LCSVWriteRow(PathOf("missing/export.csv"), {"a"}));
}

// ---------------------------------------------------------------------------------------------
// Reader: lines and marks

TEST_F(Csv, LineEndsAndEmptyLines) {
  std::string path = Write("lines.csv", "\n\r\na\rb\r\n\r\n\nc\n\r\r d\n\"e\"");
  EXPECT_EQ(ReadLines(path), (std::vector<std::string>{"a", "b", "c", " d", "\"e\""}));
  LCSVFileReader reader(path, 1000);
  for (int i = 0; i < 5; ++i) EXPECT_TRUE(reader.HasRow());
  while (reader.Next()) {
  }
  EXPECT_FALSE(reader.HasRow());
  EXPECT_FALSE(reader.Next());
  EXPECT_EQ(reader.GetLine(), "");
  EXPECT_EQ(ReadLines(Write("empty.csv", "")), std::vector<std::string>{});
  EXPECT_EQ(ReadLines(Write("blank.csv", "\r\n\n\r")), std::vector<std::string>{});
}

TEST_F(Csv, LongLinesAreCutAt8191BytesAndTheirRestDropped) {
  std::string exact(8191, 'e'), over(8192, 'o'), huge(30000, 'h');
  std::string path = Write("long.csv", exact + "\n" + over + "\r\n" + huge + "\rnext\n" + huge);
  std::vector<std::string> lines = ReadLines(path);
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[0], exact);
  EXPECT_EQ(lines[1], over.substr(0, 8191));
  EXPECT_EQ(lines[2], huge.substr(0, 8191));
  EXPECT_EQ(lines[3], "next");
  EXPECT_EQ(lines[4], huge.substr(0, 8191));
}

// Lines that straddle the reader's 8 KB buffer come out whole, whatever their line end.
TEST_F(Csv, LinesAcrossBufferBoundaries) {
  std::string content;
  std::vector<std::string> expected;
  const char* ends[] = {"\n", "\r", "\r\n"};
  for (int i = 0; i < 300; ++i) {
    std::string line = std::to_string(i) + "," + std::string(static_cast<std::size_t>(i * 37 % 701), 'x');
    content += line + ends[i % 3];
    expected.push_back(line);
  }
  EXPECT_EQ(ReadLines(Write("many.csv", content)), expected);
}

TEST_F(Csv, ByteOrderMarks) {
  EXPECT_EQ(ReadRows<LCSVFileReader>(Write("bom.csv", "\xEF\xBB\xBF\"a\",\"b\"\n")),
            (Rows{{"a", "b"}}));
  // Only a mark at the very start counts.
  EXPECT_EQ(ReadLines(Write("later.csv", "x\n\xEF\xBB\xBFy\n")),
            (std::vector<std::string>{"x", "\xEF\xBB\xBFy"}));
  EXPECT_EQ(ReadLines(Write("short.csv", "\xEF\xBB")), std::vector<std::string>{"\xEF\xBB"});
  EXPECT_EQ(ReadLines(Write("onlymark.csv", "\xEF\xBB\xBF")), std::vector<std::string>{});
  EXPECT_EQ(ReadLines(Write("utf16mark.csv", "\xFF\xFE")), std::vector<std::string>{});
}

TEST_F(Csv, MissingFileHasNoRowsAndOpenMovesOn) {
  LCSVFileReader reader(PathOf("missing.csv"), 1000);
  EXPECT_FALSE(reader.HasRow());
  EXPECT_FALSE(reader.Next());
  EXPECT_TRUE(reader.Open(Write("one.csv", "1\n2\n"), 1000));
  EXPECT_EQ(reader.GetLine(), "1");
  EXPECT_TRUE(reader.Open(Write("two.csv", "3\n"), 1000));
  EXPECT_EQ(reader.GetLine(), "3");
  EXPECT_FALSE(reader.Next());
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
  std::u16string text(1023, u'a');
  text += u"\U0001F600,z\n";
  std::string bytes = Utf16LeFile(text);
  ASSERT_EQ(static_cast<unsigned char>(bytes[2 + 2046 + 1]), 0xD8u);
  std::string expected = std::string(1023, 'a') + "\xF0\x9F\x98\x80";
  EXPECT_EQ(ReadRows<LCSVFileReader>(Write("split.csv", bytes)), (Rows{{expected, "z"}}));
  // Lone halves become U+FFFD; an odd last byte is dropped.
  std::u16string lone = u"x";
  lone += static_cast<char16_t>(0xDC00);
  lone += u",";
  lone += static_cast<char16_t>(0xD800);
  lone += u"y,";
  lone += static_cast<char16_t>(0xD800);
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
  ::setenv("TMPDIR", PathOf("no-such-folder").c_str(), 1);
  LCSVFileReader reader;
  EXPECT_FALSE(reader.Open(path, 1000));
  EXPECT_FALSE(reader.HasRow());
}

TEST_F(Csv, ExcelReaderTabRuleIsDecidedByTheFirstBlock) {
  std::u16string tabbed = u"a\tb\tc\n";
  std::u16string late = u"\"x\tcomma\",y\n";
  std::u16string filler = std::u16string(1100, u'f') + u"\n";  // pushes `late` past block 1
  std::string withTab = Write("tab.csv", Utf16LeFile(tabbed + filler + late));
  EXPECT_EQ(ReadRows<ExcelCSVFileReader>(withTab),
            (Rows{{"a", "b", "c"}, {std::string(1100, 'f')}, {"x,comma", "y"}}));
  EXPECT_EQ(ReadRows<LCSVFileReader>(withTab),
            (Rows{{"a\tb\tc"}, {std::string(1100, 'f')}, {"x\tcomma", "y"}}));
  // No tab in the first block: later tabs stay tabs.
  std::string lateTab = Write("late.csv", Utf16LeFile(filler + late));
  EXPECT_EQ(ReadRows<ExcelCSVFileReader>(lateTab),
            (Rows{{std::string(1100, 'f')}, {"x\tcomma", "y"}}));
  // A tab after a NUL unit does not count.
  std::u16string afterNul = u"a";
  afterNul += char16_t{0};
  afterNul += u"\tb\n";
  EXPECT_EQ(ReadLines(Write("nul.csv", Utf16LeFile(afterNul))),
            (std::vector<std::string>{std::string("a\0\tb", 4)}));
  ExcelCSVFileReader excel(PathOf("nul.csv"), 1000);
  EXPECT_EQ(excel.GetLine(), std::string("a\0\tb", 4));
  // UTF-8 files are never converted, tabs or not.
  EXPECT_EQ(ReadRows<ExcelCSVFileReader>(Write("utf8tab.csv", "a\tb,c\n")), (Rows{{"a\tb", "c"}}));
}

// ---------------------------------------------------------------------------------------------
// Editor

TEST_F(Csv, EditorKeepsAcceptedRowsWithLf) {
  std::string path = PathOf("day.csv");
  for (const char* value : {"1", "2", "3", "4"}) ASSERT_TRUE(LCSVWriteRow(path, {value, "x y"}));
  {
    LCSVFileEditor editor(path, 1000);
    for (; editor.HasRow(); editor.Next()) editor.RowAccept();
  }
  EXPECT_EQ(LReadFile(path), "\"1\",\"x y\"\n\"2\",\"x y\"\n\"3\",\"x y\"\n\"4\",\"x y\"\n");
  {
    LCSVFileEditor editor(path, 1000);
    for (; editor.HasRow(); editor.Next()) {
      LCSVReaderRow row(editor.GetLine());
      int value = std::stoi(row.GetCol());
      if (value % 2 == 0) editor.RowAccept();
    }
  }
  EXPECT_EQ(ReadRows<LCSVFileReader>(path), (Rows{{"2", "x y"}, {"4", "x y"}}));
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
  ::setenv("TMPDIR", PathOf("no-such-folder").c_str(), 1);
  {
    LCSVFileEditor editor(path, 1000);
    EXPECT_EQ(editor.GetLine(), "\"1\"");
    editor.RowAccept();
  }
  EXPECT_EQ(LReadFile(path), "");
}

TEST_F(Csv, EditorOverManyBlocks) {
  std::string path = PathOf("big.csv");
  std::string expected;
  std::string content;
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
}

// ---------------------------------------------------------------------------------------------
// Locks

// An append waits for the lock another holder has, and goes on as soon as it is released.
TEST_F(Csv, AppendWaitsForReadersAndEditors) {
  std::string path = Write("shared.csv", "\"old\"\r\n");
  using Clock = std::chrono::steady_clock;
  for (int holder = 0; holder < 2; ++holder) {
    Clock::time_point released;
    {
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
      released = Clock::now();
      appender.join();
    }
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
  for (int p = 0; p < nProcesses; ++p) {
    runners.emplace_back([&, p] {
      results[p] = LRunProgram(KONTAVO_PROGRAM_csvappender,
                               {path, "p" + std::to_string(p), std::to_string(nRows),
                                std::to_string(payloadBytes)});
    });
  }
  for (auto& runner : runners) runner.join();
  for (const auto& result : results) ASSERT_EQ(result.exitCode, 0) << result.err;

  std::set<std::string> seen;
  LCSVFileReader reader(path, 1000);
  for (; reader.HasRow(); reader.Next()) {
    Row row = Columns(reader.GetLine());
    ASSERT_EQ(row.size(), 4u) << reader.GetLine().substr(0, 80);
    std::string unit = row[0] + "-" + row[1] + ";";
    std::string payload;
    while (payload.size() < payloadBytes) payload += unit;
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

struct SampleFile {
  const char* name;
  Rows rows;
};

const SampleFile kSamples[] = {
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
  for (const SampleFile& sample : kSamples) {
    std::string path = LSharedDataPath(std::string("csv/") + sample.name);
    ASSERT_TRUE(LFile::Exists(path)) << path;
    EXPECT_EQ(ReadRows<LCSVFileReader>(path), sample.rows) << sample.name;
    EXPECT_EQ(ReadRows<ExcelCSVFileReader>(path), sample.rows) << sample.name;
  }
}

TEST(CsvSamples, RealWorldExportWithQuotedThousands) {
  std::string path = LSharedDataPath("csv/csvkit_FY09_EDU_Recipients_by_State.csv");
  for (const Rows& rows : {ReadRows<LCSVFileReader>(path), ReadRows<ExcelCSVFileReader>(path)}) {
    ASSERT_EQ(rows.size(), 54u);
    EXPECT_EQ(rows[0],
              (Row{"State Name", "State Abbreviate", "Code", "Montgomery GI Bill-Active Duty",
                   "Montgomery GI Bill- Selective Reserve", "Dependents' Educational Assistance",
                   "Reserve Educational Assistance Program",
                   "Post-Vietnam Era Veteran's Educational Assistance Program", "TOTAL"}));
    EXPECT_EQ(rows[1],
              (Row{"ALABAMA", "AL", "01", "6,718", "1,728", "2,703", "1,269", "8", "12,426"}));
    EXPECT_EQ(rows[2], (Row{"ALASKA", "AK", "02", "776", "154", "166", "60", "2", "1,158"}));
    EXPECT_EQ(rows[52], (Row{"PUERTO RICO", "PR", "72", "822", "1,107", "1,565", "927", "3", "4,424"}));
    EXPECT_EQ(rows[53], Row(9, ""));
    for (const Row& row : rows) EXPECT_EQ(row.size(), 9u) << row[0];
  }
}

}  // namespace
