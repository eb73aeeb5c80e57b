// The small SGML reader under the OFX statement reader. Banks send statements in the SGML form
// of OFX, where a leaf element has no end tag: ⟨<TRNAMT>-12.50⟩ ends at the line end or at the
// next "<". The loader walks one text held in memory; elements load their content as they are
// built, so a whole document is read by loading the content of one unnamed root element:
//
//   std::string error;
//   LSGMLLoader loader(text, error);
//   LSGMLElement root;
//   root.LoadData(loader);
//   const LSGMLElement* ofx = root.GetElement("OFX");
//
// The reader is tolerant on purpose: malformed input writes the first error text into the
// caller's error buffer and reading goes on with what was read. Its odd rules are the ones
// statements in the wild rely on, so they are kept exactly:
//   - a line end inside an element skips everything up to the next "<";
//   - text followed by "<" closes the element the text belongs to;
//   - any end tag "</...>" closes the element being loaded, whatever name it carries.
//
// Nesting is bounded (kMaxSGMLDepth): each level of elements is one level of recursion, so a
// file of a million "<A>" would otherwise exhaust the stack. An element met deeper than the
// bound does not load content of its own; what follows it is read by its parent, as siblings,
// and the error "La balise <NAME> est imbriquée trop profondément." is recorded.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "llib/gen/hashtable.h"

// Deepest element nesting that loads content. Statements nest about ten levels.
inline constexpr int kMaxSGMLDepth = 256;

// Where the reader stands in the text, and where its first error goes.
class LSGMLLoader {
 public:
  // Reads text, which must outlive the loader; a NUL byte inside it ends the text there. error
  // receives the first error text (at most 259 bytes) and is left alone after that, and also
  // when it already holds a text.
  LSGMLLoader(std::string_view text, std::string& error);

  // The next character. 0 at the end of the text (the position does not move). CR, LF, CR LF
  // and LF CR are each one LF, which adds one to the line and sets the column back to 1.
  char GetChar();
  // Gives back the "<" just read, for the element that reads it next.
  void UngetChar();
  // Records text as the error unless one was recorded before.
  void SetError(std::string_view text);

  int GetLine() const { return line_; }
  int GetColumn() const { return column_; }
  int GetDepth() const { return depth_; }
  bool HasError() const { return !error_.empty(); }

 private:
  friend class LSGMLElement;
  std::string_view text_;  // the whole text being parsed
  std::size_t position_ = 0;  // index of the next byte of text_
  int line_ = 1;              // current line, from 1
  int column_ = 1;            // current column, from 1
  int depth_ = 0;             // elements loading their content right now
  std::string& error_;        // the caller's error buffer
};

// Reads a tag name, an attribute name or an attribute value into out (at most 259 bytes kept,
// the rest read and dropped). Returns the character that ended it: blank, tab, LF, "/", "=" or
// ">" outside quotes; 0 at the end of the text. Quotes (double or single) are not stored; inside
// them the ending characters are ordinary. "&" starts an entity, stored decoded.
char SGMLLoadTag(LSGMLLoader& loader, std::string& out);

// Decodes the entity after an "&" up to its ";": amp, gt, lt, quot, apos, #x41 and #65 (cut to
// one byte). An entity that is not ended by ";" within 23 characters yields 0; an unknown name
// yields "&"; both record their error text on the loader.
char SGMLAmpChar(LSGMLLoader& loader);

// One element of the document, or a text node (which has no name). Children are kept in
// document order.
class LSGMLElement {
 public:
  // An unnamed, empty element: the root into which a document is loaded with LoadData.
  LSGMLElement() = default;
  // The element whose tag name was just read by SGMLLoadTag, with the character that ended it:
  // reads its attributes up to ">", then its content unless it closed itself ("/" in the tag)
  // or its name begins with "!" or "?".
  LSGMLElement(LSGMLLoader& loader, std::string name, char ending);
  ~LSGMLElement();
  LSGMLElement(const LSGMLElement&) = delete;
  LSGMLElement& operator=(const LSGMLElement&) = delete;

  // Loads the element's content from the loader (its children are cleared first), up to its end
  // tag, the "<" after its text, or the end of the text.
  void LoadData(LSGMLLoader& loader);

  // The first child named name exactly (a text node is named ""); null when there is none.
  const LSGMLElement* GetElement(std::string_view name) const;
  // The text of the child named name: def when the child is missing; "" when it has no content
  // or its first node is an element; otherwise the first node's text. out gets at most 259
  // bytes.
  void GetString(std::string_view name, std::string_view def, std::string& out) const;
  // GetString with an empty default; an empty text gives def, any other the leading number of
  // the text as strtod reads it (0 when there is none).
  double GetFloat(std::string_view name, double def) const;

  const std::string& GetName() const { return name_; }
  bool IsText() const { return isText_; }
  // A text node's text, up to its first NUL byte (an entity that failed stored one).
  std::string_view GetText() const;
  const LHashTable& GetAttributes() const { return attributes_; }
  const LSGMLElement* GetFirstChild() const { return firstChild_.get(); }
  const LSGMLElement* GetNextSibling() const { return next_.get(); }
  bool HasChildren() const { return firstChild_ != nullptr; }

  // The children of one element that carry one name, in document order:
  //   LSGMLElement::ConstNamedElementIterator it(list, "STMTTRN");
  //   while (const LSGMLElement* line = it.Next()) ...
  class ConstNamedElementIterator {
   public:
    ConstNamedElementIterator(const LSGMLElement& element, std::string_view name);
    // The next such child; null when there are no more.
    const LSGMLElement* Next();

   private:
    const LSGMLElement* next_;  // the child to examine next
    std::string name_;          // the name wanted
  };

 private:
  void AppendChild(std::unique_ptr<LSGMLElement> child);
  void AppendText(std::string text);
  void ClearChildren();
  void ReadAttributes(LSGMLLoader& loader, char ending, bool& closedByItself);

  std::string name_;                          // tag name; empty for the root and text nodes
  bool isText_ = false;                       // a text node rather than an element
  std::string text_;                          // a text node's text
  LHashTable attributes_;                     // attribute name -> value
  std::unique_ptr<LSGMLElement> firstChild_;  // children in document order
  LSGMLElement* lastChild_ = nullptr;         // the last of them, for appending
  std::unique_ptr<LSGMLElement> next_;        // the next sibling
};
