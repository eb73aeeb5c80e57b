// The SGML reader under the OFX statements: characters and line ends, names and quotes,
// entities, start tags, the content rules that close leaves without end tags, and input built to
// break it (unclosed tags, deep nesting, entities cut by the end of the text).
#include "accounts/sgml.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

constexpr const char* kUnterminatedEntity =
    "Les chaînes commençant par une esperluette (&) doivent se terminer par un point-virgule (;). "
    "Remplacez '&' par '&amp;' ou ajoutez ';' à la fin de la chaîne de contrôle.";
constexpr const char* kUnknownEntity =
    "Caractère esperluette d'échappement non valide. Assurez-vous d'utiliser la forme &amp; au lieu "
    "de tout caractère & !";

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

std::string ReadTag(const std::string& text, char& ending, std::string* error = nullptr) {
  std::string ignored;
  LSGMLLoader loader(text, error != nullptr ? *error : ignored);
  std::string out;
  ending = SGMLLoadTag(loader, out);
  return out;
}

char Entity(const std::string& afterAmpersand, std::string& error) {
  LSGMLLoader loader(afterAmpersand, error);
  return SGMLAmpChar(loader);
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

TEST(SGMLLoadTag, NamesEndAtTheirDelimitersOutsideQuotes) {
  char ending = 'x';
  EXPECT_EQ(ReadTag("OFX>", ending), "OFX");
  EXPECT_EQ(ending, '>');
  for (char delimiter : {' ', '\t', '\n', '/', '=', '>'}) {
    EXPECT_EQ(ReadTag(std::string("NAME") + delimiter + "rest", ending), "NAME");
    EXPECT_EQ(ending, delimiter);
  }
  EXPECT_EQ(ReadTag("\"a b/=>\"'c>'>", ending), "a b/=>c>");
  EXPECT_EQ(ending, '>');
  EXPECT_EQ(ReadTag("\"it's\">", ending), "it's");  // a quote of the other kind is stored
  EXPECT_EQ(ReadTag("'say \"hi\"'>", ending), "say \"hi\"");
  EXPECT_EQ(ReadTag("TRUNC", ending), "TRUNC");  // the end of the text ends it
  EXPECT_EQ(ending, 0);
  EXPECT_EQ(ReadTag("\"open quote never closed>", ending), "open quote never closed>");
  EXPECT_EQ(ending, 0);
  EXPECT_EQ(ReadTag("a&amp;b&lt;c>", ending), "a&b<c");
}

TEST(SGMLLoadTag, KeepsAtMost259Bytes) {
  char ending = 0;
  std::string name = ReadTag(std::string(1000, 'N') + ">", ending);
  EXPECT_EQ(name, std::string(259, 'N'));
  EXPECT_EQ(ending, '>');
}

TEST(SGMLAmpChar, DecodesNamedAndNumericEntities) {
  std::string error;
  EXPECT_EQ(Entity("amp;", error), '&');
  EXPECT_EQ(Entity("gt;", error), '>');
  EXPECT_EQ(Entity("lt;", error), '<');
  EXPECT_EQ(Entity("quot;", error), '"');
  EXPECT_EQ(Entity("apos;", error), '\'');
  EXPECT_EQ(Entity("#x41;", error), 'A');
  EXPECT_EQ(Entity("#x6a;", error), 'j');
  EXPECT_EQ(Entity("#x6A;", error), 'j');
  EXPECT_EQ(Entity("#x4-1;", error), 'A');                     // other characters are skipped
  EXPECT_EQ(Entity("#65;", error), 'A');
  EXPECT_EQ(Entity("#321;", error), 'A');                      // 321 cut to one byte is 65
  EXPECT_EQ(Entity("#x141;", error), 'A');
  EXPECT_EQ(Entity("#99999999999999999999;", error), static_cast<char>(0xFF));  // 10^20 - 1 mod 256
  EXPECT_EQ(error, "");
}

TEST(SGMLAmpChar, UnknownNamesGiveTheAmpersandAndAnError) {
  std::string error;
  EXPECT_EQ(Entity("foo;", error), '&');
  EXPECT_EQ(error, kUnknownEntity);
  std::string caseMatters;
  EXPECT_EQ(Entity("AMP;", caseMatters), '&');
  EXPECT_EQ(caseMatters, kUnknownEntity);
}

TEST(SGMLAmpChar, EntitiesNotEndedBySemicolonGiveNul) {
  for (std::string text : std::vector<std::string>{"amp", "amp tail;", "am\tp;", "am\np;", "am\rp;", std::string(24, 'a') + ";"}) {
    std::string error;
    EXPECT_EQ(Entity(text, error), 0) << text;
    EXPECT_EQ(error, kUnterminatedEntity) << text;
  }
  std::string error;
  EXPECT_EQ(Entity(std::string(23, 'a') + ";", error), '&');  // 23 characters are still a name
  EXPECT_EQ(error, kUnknownEntity);
}

TEST(SGMLLoader, OnlyTheFirstErrorIsKept) {
  Loaded loaded("<A>&foo; & x &bar;\n");
  EXPECT_EQ(loaded.error, kUnknownEntity);
  std::string preset = "earlier";
  LSGMLLoader loader("&foo;", preset);
  SGMLAmpChar(loader);
  EXPECT_EQ(preset, "earlier");
}

TEST(SGMLElement, LeavesEndAtTheirLineEndOrAtTheNextTag) {
  Loaded loaded(
      "<STMTTRN>\n"
      "\t<TRNTYPE>DEBIT\r\n"
      "    <TRNAMT>-12.50<FITID>42\n"
      "<NAME>first line\n"
      "second line is skipped\n"
      "<MEMO>a\tb &amp; c\n"
      "</STMTTRN>\n");
  EXPECT_EQ(loaded.error, "");
  EXPECT_EQ(Shape(loaded.root),
            "(STMTTRN(TRNTYPE('DEBIT') TRNAMT('-12.50') FITID('42') NAME('first line') MEMO('ab & c')))");
}

TEST(SGMLElement, AnyEndTagClosesTheElementBeingLoaded) {
  // </BANKTRANLIST> closes STMTTRN: the end tag's name plays no part.
  Loaded loaded("<BANKTRANLIST><STMTTRN><TRNAMT>1\n</BANKTRANLIST><STMTTRN><TRNAMT>2\n</X></BANKTRANLIST>");
  EXPECT_EQ(Shape(loaded.root), "(BANKTRANLIST(STMTTRN(TRNAMT('1')) STMTTRN(TRNAMT('2'))))");
  // So a leaf's own end tag closes its parent, after the text has closed the leaf.
  Loaded closedLeaves("<STATUS><CODE>0</CODE><SEVERITY>INFO</SEVERITY></STATUS>");
  EXPECT_EQ(Shape(closedLeaves.root), "(STATUS(CODE('0')) SEVERITY('INFO'))");
  // A tag without a name ends the element too.
  Loaded nameless("<A><B>x\n<>y");
  EXPECT_EQ(Shape(nameless.root), "(A(B('x')) 'y')");
}

TEST(SGMLElement, BlanksBeforeATagOnTheSameLineAreTextThatClosesTheElement) {
  Loaded loaded("<OFX> <BANK>");
  EXPECT_EQ(Shape(loaded.root), "(OFX(' ') BANK)");
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

TEST(SGMLElement, TagsCutByTheEndOfTheTextReportAMissingBracket) {
  Loaded loaded("<OFX><BANKMSGSRSV1 version=\"1");
  EXPECT_EQ(loaded.error, "La balise <BANKMSGSRSV1> n'a pas de '>' fermant");
  EXPECT_EQ(Shape(loaded.root), "(OFX(BANKMSGSRSV1))");
  Loaded bare("<OFX><STMTRS");
  EXPECT_EQ(bare.error, "La balise <STMTRS> n'a pas de '>' fermant");
  Loaded longName("<" + std::string(400, 'N'));
  EXPECT_EQ(longName.error.size(), 259u);  // the message is cut like every error text
}

TEST(SGMLElement, TruncatedDocumentsKeepWhatWasRead) {
  const std::string full = "<OFX><A><B>text &amp; more\n<C>1\n</A></OFX>";
  for (std::size_t length = 0; length <= full.size(); ++length) {
    Loaded loaded(full.substr(0, length));  // must not crash, whatever the cut
    if (length >= 4) {
      EXPECT_NE(loaded.root.GetElement("OFX"), nullptr) << length;
    }
  }
  Loaded entityAtEnd("<OFX><NAME>A &amp");
  EXPECT_EQ(entityAtEnd.error, kUnterminatedEntity);
  EXPECT_EQ(Shape(entityAtEnd.root), "(OFX(NAME('A ')))");  // the failed entity stored a NUL
  Loaded ampersandLast("<OFX><NAME>A&");
  EXPECT_EQ(ampersandLast.error, kUnterminatedEntity);
}

TEST(SGMLElement, NestingIsBoundedSoDeepInputCannotExhaustTheStack) {
  std::string deep;
  for (int i = 0; i < 100000; ++i) deep += "<A>";
  Loaded loaded(deep);
  EXPECT_EQ(loaded.error, "La balise <A> est imbriquée trop profondément.");
  int depth = 0;
  const LSGMLElement* element = &loaded.root;
  while (element->GetFirstChild() != nullptr) {
    element = element->GetFirstChild();
    ++depth;
  }
  EXPECT_EQ(depth, kMaxSGMLDepth + 1);  // the elements below the bound became siblings

  std::string nested;
  for (int i = 0; i < kMaxSGMLDepth; ++i) nested += "<A>";
  Loaded atTheBound(nested + "x");
  EXPECT_EQ(atTheBound.error, "");
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
  std::string out = "stale";
  r->GetString("MISSING", "default", out);
  EXPECT_EQ(out, "default");
  r->GetString("EMPTY", "default", out);
  EXPECT_EQ(out, "");
  r->GetString("NESTED", "default", out);
  EXPECT_EQ(out, "");  // the first node is an element
  r->GetString("AMT", "", out);
  EXPECT_EQ(out, " -12.5e1xyz");  // the first AMT
  r->GetString("LONG", "", out);
  EXPECT_EQ(out, std::string(259, 'L'));
  EXPECT_DOUBLE_EQ(r->GetFloat("AMT", 3), -125);
  EXPECT_DOUBLE_EQ(r->GetFloat("MISSING", 3), 3);
  EXPECT_DOUBLE_EQ(r->GetFloat("EMPTY", 3), 3);
  EXPECT_DOUBLE_EQ(r->GetFloat("BAD", 3), 0);
  // A text node answers to the empty name.
  Loaded text("just text");
  ASSERT_NE(text.root.GetElement(""), nullptr);
  EXPECT_EQ(text.root.GetElement("")->GetText(), "just text");
}

TEST(SGMLElement, LoadDataClearsEarlierChildren) {
  std::string error;
  std::string first = "<A>1\n<B>2\n";
  std::string second = "<C>3\n";
  LSGMLElement root;
  LSGMLLoader loaderOne(first, error);
  root.LoadData(loaderOne);
  LSGMLLoader loaderTwo(second, error);
  root.LoadData(loaderTwo);
  EXPECT_EQ(Shape(root), "(C('3'))");
}

}  // namespace
