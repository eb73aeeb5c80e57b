#include "accounts/markup.h"

#include <cstdlib>

#include "accounts/statementtext.h"
#include "llib/gen/trim.h"

namespace {

std::string_view LocalName(std::string_view name) {
  std::size_t colon = name.rfind(':');
  return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

// Decodes entities of raw text; an "&" that starts no known entity stays as written.
void AppendDecoded(std::string_view raw, std::string& out) {
  for (std::size_t i = 0; i < raw.size(); ++i) {
    if (raw[i] != '&') {
      out += raw[i];
      continue;
    }
    std::size_t semi = raw.find(';', i);
    std::string_view name = semi == std::string_view::npos || semi - i > 10 ? "" : raw.substr(i + 1, semi - i - 1);
    const char* named = name == "amp" ? "&" : name == "lt" ? "<" : name == "gt" ? ">" : name == "quot" ? "\""
                      : name == "apos" ? "'" : nullptr;
    if (named != nullptr) {
      out += named;
    } else if (name.size() > 1 && name[0] == '#') {
      std::string digits(name.substr(name[1] == 'x' || name[1] == 'X' ? 2 : 1));
      char* end = nullptr;
      unsigned long code = std::strtoul(digits.c_str(), &end, digits.size() + 1 == name.size() ? 10 : 16);
      if (digits.empty() || *end != '\0') {
        out += '&';
        continue;
      }
      LAppendUtf8(code == 0 || code > 0x10FFFF ? 0xFFFD : static_cast<char32_t>(code), out);
    } else {
      out += '&';
      continue;
    }
    i = semi;
  }
}

class LMarkupParser {
 public:
  LMarkupParser(std::string_view text, LMarkupElement& root) : text_(text) { stack_.push_back(&root); }

  void Run() {
    while (position_ < text_.size()) {
      std::size_t open = text_.find('<', position_);
      if (open == std::string_view::npos) open = text_.size();
      AddText(text_.substr(position_, open - position_));
      position_ = open;
      if (position_ < text_.size()) ReadTag();
    }
  }

 private:
  LMarkupElement& Current() { return *stack_.back(); }

  // Text of a leaf in the SGML form ends at its line end; what follows up to the next tag is
  // layout.
  void AddText(std::string_view raw) {
    if (stack_.size() == 1) return;
    LMarkupElement& element = Current();
    if (!element.children.empty() || leafClosed_) return;
    std::size_t lineEnd =
        raw.find_first_of("\r\n", LTrim(raw).empty() ? raw.size() : raw.find_first_not_of(kTrimBlanks));
    std::string_view own = raw.substr(0, lineEnd);
    if (!LTrim(own).empty()) {
      AppendDecoded(own, pendingRaw_);
      if (lineEnd != std::string_view::npos) leafClosed_ = true;
    }
  }

  // Ends the text of the current element and, when it holds text (a leaf of the SGML form whose
  // end tag is missing), closes it.
  void SettleText(bool closeLeaf) {
    if (pendingRaw_.empty()) return;
    LMarkupElement& element = Current();
    element.text += std::string(LTrim(pendingRaw_));
    pendingRaw_.clear();
    if (closeLeaf && stack_.size() > 1) stack_.pop_back();
    leafClosed_ = false;
  }

  void ReadTag() {
    std::string_view rest = text_.substr(position_);
    if (rest.starts_with("<![CDATA[")) {
      std::size_t end = rest.find("]]>");
      std::string_view data = rest.substr(9, end == std::string_view::npos ? std::string_view::npos : end - 9);
      if (stack_.size() > 1 && Current().children.empty()) pendingRaw_ += std::string(data);
      position_ += end == std::string_view::npos ? rest.size() : end + 3;
      return;
    }
    if (rest.starts_with("<!--")) {
      std::size_t end = rest.find("-->");
      position_ += end == std::string_view::npos ? rest.size() : end + 3;
      return;
    }
    std::size_t close = rest.find('>');
    if (close == std::string_view::npos) close = rest.size();
    std::string_view tag = rest.substr(1, close > 0 ? close - 1 : 0);
    position_ += close + 1;
    if (tag.empty() || tag[0] == '?' || tag[0] == '!') return;
    if (tag[0] == '/') return EndTag(LocalName(LTrim(tag.substr(1))));
    bool selfClosed = tag.back() == '/';
    std::size_t nameEnd = tag.find_first_of(" \t\r\n/");
    std::string_view name = LocalName(tag.substr(0, nameEnd));
    if (name.empty()) return;
    SettleText(true);
    auto child = std::make_unique<LMarkupElement>();
    child->name = std::string(name);
    LMarkupElement* added = child.get();
    Current().children.push_back(std::move(child));
    if (!selfClosed && stack_.size() < kMaxMarkupDepth) stack_.push_back(added);
  }

  void EndTag(std::string_view name) {
    SettleText(false);
    for (std::size_t depth = stack_.size(); depth > 1; --depth) {
      if (stack_[depth - 1]->name == name) {
        stack_.resize(depth - 1);
        return;
      }
    }
  }

  std::string_view text_;
  std::size_t position_ = 0;
  std::vector<LMarkupElement*> stack_;  // open elements, the root first
  std::string pendingRaw_;              // decoded text of the current element, not yet stored
  bool leafClosed_ = false;             // the current element's text met its line end
};

}  // namespace

const LMarkupElement* LMarkupElement::Child(std::string_view wanted) const {
  for (const auto& child : children)
    if (child->name == wanted) return child.get();
  return nullptr;
}

const LMarkupElement* LMarkupElement::Find(std::string_view wanted, std::string_view stopAt) const {
  for (const auto& child : children) {
    if (child->name == wanted) return child.get();
    if (!stopAt.empty() && child->name == stopAt) continue;
    if (const LMarkupElement* found = child->Find(wanted, stopAt)) return found;
  }
  return nullptr;
}

void LMarkupElement::FindAll(std::string_view wanted, std::vector<const LMarkupElement*>& out) const {
  for (const auto& child : children) {
    if (child->name == wanted) out.push_back(child.get());
    else child->FindAll(wanted, out);
  }
}

std::string LMarkupElement::FindText(std::string_view wanted, std::string_view stopAt) const {
  const LMarkupElement* found = Find(wanted, stopAt);
  return found == nullptr ? std::string() : found->text;
}

void LMarkupRead(std::string_view text, LMarkupElement& root) {
  root.children.clear();
  root.text.clear();
  LMarkupParser(text, root).Run();
}
