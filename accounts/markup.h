// A forgiving reader of tagged text, for the statement formats built of tags: OFX in both its
// forms and camt.053. It makes one tree of elements, each with its name (any namespace prefix
// dropped), its text and its children, and it accepts what banks really send:
//   - leaf elements without end tags (OFX's SGML form): text followed by a start tag closes the
//     leaf, as does a line end after the text;
//   - end tags that close elements left open inside them, and end tags that match nothing
//     (ignored);
//   - "<?...?>" instructions, "<!...>" declarations and comments (skipped), CDATA sections (their
//     text kept), the five named entities and numeric ones, and a bare "&" kept as it is.
// Attributes are read past and not kept: no statement field lives in one that is needed here.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

class LMarkupElement {
 public:
  std::string name;   // without namespace prefix; empty for the root
  std::string text;   // the element's own text, blanks at both ends removed
  std::vector<std::unique_ptr<LMarkupElement>> children;  // in document order

  // The first child named name; null when none.
  const LMarkupElement* Child(std::string_view name) const;
  // The first element named name below this one, depth first, not looking inside elements named
  // stopAt; null when none. For leaves that an unclosed empty sibling may have taken in.
  const LMarkupElement* Find(std::string_view name, std::string_view stopAt = {}) const;
  // Every element named name below this one, depth first, not looking inside those found.
  void FindAll(std::string_view name, std::vector<const LMarkupElement*>& out) const;
  // The text of Find(name, stopAt), or "" when there is none.
  std::string FindText(std::string_view name, std::string_view stopAt = {}) const;
};

// Reads text into root (its children replaced). Never fails: whatever the text holds becomes
// some tree. Element nesting is capped (kMaxMarkupDepth) so that hostile input cannot exhaust
// the stack of the walks.
void LMarkupRead(std::string_view text, LMarkupElement& root);

inline constexpr std::size_t kMaxMarkupDepth = 200;
