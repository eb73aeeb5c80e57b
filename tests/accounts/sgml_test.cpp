// The SGML reader under the OFX statements: characters and line ends, names and quotes,
// entities, start tags, the content rules that close leaves without end tags, and input built to
// break it (unclosed tags, deep nesting, entities cut by the end of the text).
#include "accounts/sgml.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/accounts/ofxtestsupport.h"

namespace {

// A document loaded into its root, with the loader's first error.
struct Loaded {
  std::string text;
  std::string error;
  LSGMLElement root;
  explicit Loaded(std::string source) : text(std::move(source)) {
    LSGMLLoader loader(text, error);
    root.LoadData(loader);
  }
};

// The structure of an element as "NAME(child child)" and text nodes as 'text'.
std::string Shape(const LSGMLElement& element) {
  if (element.IsText()) return "'" + std::string(element.GetText()) + "'";
  std::string shape = element.GetName();
  if (element.HasChildren()) {
    shape += "(";
    for (const LSGMLElement* child = element.GetFirstChild(); child != nullptr; child = child->GetNextSibling()) {
      if (child != element.GetFirstChild()) shape += " ";
      shape += Shape(*child);
    }
    shape += ")";
  }
  return shape;
}

TEST(SGMLLoader, EveryLineEndIsOneLfAndMovesTheLineCount) {
  std::string error;
  std::string text = std::string("a\r\nb\n\rc\rd\ne") + '\0' + "hidden";
  LSGMLLoader loader(text, error);
  std::string read;
  std::vector<int> lines;
  for (char c = loader.GetChar(); c != 0; c = loader.GetChar()) {
    read.push_back(c);
    lines.push_back(loader.GetLine());
  }
  EXPECT_EQ(read, "a\nb\nc\nd\ne");  // the NUL ends the text
  EXPECT_EQ(lines, (std::vector<int>{1, 2, 2, 3, 3, 4, 4, 5, 5}));
  EXPECT_EQ(loader.GetColumn(), 2);
  EXPECT_EQ(loader.GetChar(), 0);  // and stays at the end
  EXPECT_EQ(loader.GetChar(), 0);
}

// A name ends at a blank, "/", "=" or ">" outside quotes, or at the end of the text (ending 0);
// a quote of the other kind is stored; entities are decoded; at most 259 bytes are kept.
TEST(SGMLLoadTag, NamesEndAtTheirDelimitersOutsideQuotes) {
  struct Row {
    std::string text;
    std::string name;
    char ending;
  } rows[] = {{"OFX>", "OFX", '>'},
              {"NAME rest", "NAME", ' '},
              {"NAME\trest", "NAME", '\t'},
              {"NAME\nrest", "NAME", '\n'},
              {"NAME/rest", "NAME", '/'},
              {"NAME=rest", "NAME", '='},
              {"\"a b/=>\"'c>'>", "a b/=>c>", '>'},
              {"\"it's\">", "it's", '>'},
              {"'say \"hi\"'>", "say \"hi\"", '>'},
              {"TRUNC", "TRUNC", 0},
              {"\"open quote never closed>", "open quote never closed>", 0},
              {"a&amp;b&lt;c>", "a&b<c", '>'},
              {std::string(1000, 'N') + ">", std::string(259, 'N'), '>'}};
  for (const Row& row : rows) {
    std::string error;
    LSGMLLoader loader(row.text, error);
    std::string name;
    EXPECT_EQ(SGMLLoadTag(loader, name), row.ending) << row.text;
    EXPECT_EQ(name, row.name);
  }
}

// Named and numeric entities (other characters in a number skipped, the value cut to a byte);
// unknown names (case matters) give "&" and one error; names not ended by ";" within 23
// characters give NUL and the other error.
TEST(SGMLAmpChar, EntitiesAndTheirTwoErrors) {
  struct Row {
    std::string text;
    char decoded;
    const char* error;
  } rows[] = {{"amp;", '&', ""},           {"gt;", '>', ""},           {"lt;", '<', ""},
              {"quot;", '"', ""},          {"apos;", '\'', ""},        {"#x41;", 'A', ""},
              {"#x6a;", 'j', ""},          {"#x6A;", 'j', ""},         {"#x4-1;", 'A', ""},
              {"#65;", 'A', ""},           {"#321;", 'A', ""},         {"#x141;", 'A', ""},
              {"#99999999999999999999;", static_cast<char>(0xFF), ""},  // 10^20 - 1 mod 256
              {"foo;", '&', kUnknownEntity},                           {"AMP;", '&', kUnknownEntity},
              {std::string(23, 'a') + ";", '&', kUnknownEntity},       {"amp", 0, kUnterminatedEntity},
              {"amp tail;", 0, kUnterminatedEntity},                   {"am\tp;", 0, kUnterminatedEntity},
              {"am\np;", 0, kUnterminatedEntity},                      {"am\rp;", 0, kUnterminatedEntity},
              {std::string(24, 'a') + ";", 0, kUnterminatedEntity}};
  for (const Row& row : rows) {
    std::string error;
    LSGMLLoader loader(row.text, error);
    EXPECT_EQ(SGMLAmpChar(loader), row.decoded) << row.text;
    EXPECT_EQ(error, row.error) << row.text;
  }
  Loaded twoErrors("<A>&foo; & x &bar;\n");
  EXPECT_EQ(twoErrors.error, kUnknownEntity);  // only the first error is kept
  std::string preset = "earlier";
  LSGMLLoader loader("&foo;", preset);
  SGMLAmpChar(loader);
  EXPECT_EQ(preset, "earlier");
}

// Leaves end at their line end or at the next tag (the rest of their lines skipped); any end tag,
// whatever its name, closes the element being loaded, so a leaf's own end tag closes its parent;
// a nameless tag ends the element too; blanks before a tag on the same line are text.
TEST(SGMLElement, ContentRulesCloseLeavesWithoutEndTags) {
  for (auto [source, shape] :
       {std::pair<std::string, std::string>{
            "<STMTTRN>\n\t<TRNTYPE>DEBIT\r\n    <TRNAMT>-12.50<FITID>42\n<NAME>first line\nsecond line is skipped\n"
            "<MEMO>a\tb &amp; c\n</STMTTRN>\n",
            "(STMTTRN(TRNTYPE('DEBIT') TRNAMT('-12.50') FITID('42') NAME('first line') MEMO('ab & c')))"},
        {"<BANKTRANLIST><STMTTRN><TRNAMT>1\n</BANKTRANLIST><STMTTRN><TRNAMT>2\n</X></BANKTRANLIST>",
         "(BANKTRANLIST(STMTTRN(TRNAMT('1')) STMTTRN(TRNAMT('2'))))"},
        {"<STATUS><CODE>0</CODE><SEVERITY>INFO</SEVERITY></STATUS>", "(STATUS(CODE('0')) SEVERITY('INFO'))"},
        {"<A><B>x\n<>y", "(A(B('x')) 'y')"},
        {"<OFX> <BANK>", "(OFX(' ') BANK)"}}) {
    Loaded loaded(source);
    EXPECT_EQ(loaded.error, "");
    EXPECT_EQ(Shape(loaded.root), shape);
  }
}

TEST(SGMLElement, AttributesSelfClosingAndDeclarations) {
  Loaded loaded(
      "<?xml version=\"1.0\" encoding='UTF-8'?>\n"
      "<!DOCTYPE ofx>\n"
      "<A id=\"x y\" flag checked=yes><BR/><HR /><C>t</C></A>");
  EXPECT_EQ(loaded.error, "");
  EXPECT_EQ(Shape(loaded.root), "(?xml !DOCTYPE A(BR HR C('t')))");
  const LSGMLElement* xml = loaded.root.GetElement("?xml");
  ASSERT_NE(xml, nullptr);
  EXPECT_STREQ(xml->GetAttributes().GetString("version", "-"), "1.0");
  EXPECT_STREQ(xml->GetAttributes().GetString("encoding", "-"), "UTF-8?");  // the "?" follows the quote
  const LSGMLElement* a = loaded.root.GetElement("A");
  ASSERT_NE(a, nullptr);
  EXPECT_STREQ(a->GetAttributes().GetString("id", "-"), "x y");
  EXPECT_STREQ(a->GetAttributes().GetString("flag", "-"), "");
  EXPECT_STREQ(a->GetAttributes().GetString("checked", "-"), "yes");
}

TEST(SGMLElement, TruncatedDocumentsKeepWhatWasReadAndReportWhatIsMissing) {
  Loaded loaded("<OFX><BANKMSGSRSV1 version=\"1");
  EXPECT_EQ(loaded.error, "La balise <BANKMSGSRSV1> n'a pas de '>' fermant");
  EXPECT_EQ(Shape(loaded.root), "(OFX(BANKMSGSRSV1))");
  EXPECT_EQ(Loaded("<OFX><STMTRS").error, "La balise <STMTRS> n'a pas de '>' fermant");
  EXPECT_EQ(Loaded("<" + std::string(400, 'N')).error.size(), 259u);  // the message is cut like every error text
  const std::string full = "<OFX><A><B>text &amp; more\n<C>1\n</A></OFX>";
  for (std::size_t length = 0; length <= full.size(); ++length) {
    Loaded cut(full.substr(0, length));  // must not crash, whatever the cut
    if (length >= 4) {
      EXPECT_NE(cut.root.GetElement("OFX"), nullptr) << length;
    }
  }
  Loaded entityAtEnd("<OFX><NAME>A &amp");
  EXPECT_EQ(entityAtEnd.error, kUnterminatedEntity);
  EXPECT_EQ(Shape(entityAtEnd.root), "(OFX(NAME('A ')))");  // the failed entity stored a NUL
  EXPECT_EQ(Loaded("<OFX><NAME>A&").error, kUnterminatedEntity);
}

TEST(SGMLElement, NestingIsBoundedSoDeepInputCannotExhaustTheStack) {
  std::string deep;
  for (int i = 0; i < 100000; ++i) deep += "<A>";
  Loaded loaded(deep);
  EXPECT_EQ(loaded.error, "La balise <A> est imbriquée trop profondément.");
  int depth = 0;
  for (const LSGMLElement* element = &loaded.root; element->GetFirstChild() != nullptr; element = element->GetFirstChild())
    ++depth;
  EXPECT_EQ(depth, kMaxSGMLDepth + 1);  // the elements below the bound became siblings
  EXPECT_EQ(Loaded(deep.substr(0, 3 * kMaxSGMLDepth) + "x").error, "");
}

TEST(SGMLElement, LongSiblingListsAreReleasedWithoutRecursion) {
  std::string many = "<LIST>";
  for (int i = 0; i < 300000; ++i) many += "<S>1\n";
  Loaded loaded(many);
  const LSGMLElement* list = loaded.root.GetElement("LIST");
  ASSERT_NE(list, nullptr);
  LSGMLElement::ConstNamedElementIterator it(*list, "S");
  int count = 0;
  while (it.Next() != nullptr) ++count;
  EXPECT_EQ(count, 300000);
}

TEST(SGMLElement, GetElementGetStringAndGetFloat) {
  Loaded loaded(
      "<R><EMPTY></EMPTY><NESTED><X>1\n</NESTED><AMT> -12.5e1xyz\n<AMT>7\n"
      "<BAD>abc\n<LONG>" + std::string(300, 'L') + "\n</R>");
  const LSGMLElement* r = loaded.root.GetElement("R");
  ASSERT_NE(r, nullptr);
  EXPECT_EQ(r->GetElement("r"), nullptr);  // names are compared exactly
  // Missing: the default; empty or holding an element first: ""; the first AMT; cut at 259.
  for (auto [name, expected] : {std::pair<const char*, std::string>{"MISSING", "default"}, {"EMPTY", ""}, {"NESTED", ""},
                                {"AMT", " -12.5e1xyz"}, {"LONG", std::string(259, 'L')}}) {
    std::string out = "stale";
    r->GetString(name, "default", out);
    EXPECT_EQ(out, expected) << name;
  }
  EXPECT_DOUBLE_EQ(r->GetFloat("AMT", 3), -125);
  EXPECT_DOUBLE_EQ(r->GetFloat("MISSING", 3), 3);
  EXPECT_DOUBLE_EQ(r->GetFloat("EMPTY", 3), 3);
  EXPECT_DOUBLE_EQ(r->GetFloat("BAD", 3), 0);
  // A text node answers to the empty name.
  Loaded text("just text");
  ASSERT_NE(text.root.GetElement(""), nullptr);
  EXPECT_EQ(text.root.GetElement("")->GetText(), "just text");
  // Loading again clears the earlier children.
  std::string error;
  std::string second = "<C>3\n";
  LSGMLLoader again(second, error);
  text.root.LoadData(again);
  EXPECT_EQ(Shape(text.root), "(C('3'))");
}

}  // namespace
