#include "accounts/sgml.h"

#include <cstdlib>
#include <cstring>

#include "llib/gen/text.h"

namespace {

constexpr std::string_view kErrorUnterminatedEntity =
    "Les chaînes commençant par une esperluette (&) doivent se terminer par un point-virgule (;). "
    "Remplacez '&' par '&amp;' ou ajoutez ';' à la fin de la chaîne de contrôle.";
constexpr std::string_view kErrorUnknownEntity =
    "Caractère esperluette d'échappement non valide. Assurez-vous d'utiliser la forme &amp; au lieu "
    "de tout caractère & !";

constexpr std::size_t kMaxEntityName = 23;  // longest entity name before its ";"

bool EndsName(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '/' || c == '=' || c == '>'; }

// Text kept as the C string it is: a NUL stored by a failed entity ends it.
void CutAtNul(std::string& text) { text.resize(std::strlen(text.c_str())); }

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The value of a numeric reference; characters that are not digits of the base are skipped.
// Computed modulo 2^32, so cutting to one byte gives the same byte as with exact arithmetic.
char NumericEntity(std::string_view digits, unsigned base) {
  unsigned value = 0;
  for (char c : digits) {
    int digit = base == 16 ? HexDigit(c) : (c >= '0' && c <= '9' ? c - '0' : -1);
    if (digit >= 0) value = value * base + static_cast<unsigned>(digit);
  }
  return static_cast<char>(value & 0xFF);
}

}  // namespace

// ---- Loader -----------------------------------------------------------------------------------

LSGMLLoader::LSGMLLoader(std::string_view text, std::string& error) : text_(text), error_(error) {}

char LSGMLLoader::GetChar() {
  if (position_ >= text_.size() || text_[position_] == '\0') return 0;
  char c = text_[position_++];
  if (c == '\r' || c == '\n') {
    char pair = c == '\r' ? '\n' : '\r';
    if (position_ < text_.size() && text_[position_] == pair) ++position_;
    ++line_;
    column_ = 1;
    return '\n';
  }
  ++column_;
  return c;
}

void LSGMLLoader::UngetChar() {
  if (position_ == 0) return;
  --position_;
  --column_;
}

void LSGMLLoader::SetError(std::string_view text) {
  if (error_.empty()) error_ = LTruncated(text, kMaxTextBytes);
}

// ---- Names and entities -----------------------------------------------------------------------

char SGMLLoadTag(LSGMLLoader& loader, std::string& out) {
  out.clear();
  char quote = 0;
  for (;;) {
    char c = loader.GetChar();
    if (c == 0) break;
    if (quote == 0 && EndsName(c)) {
      CutAtNul(out);
      return c;
    }
    if (c == '"' || c == '\'') {
      if (quote == 0) {
        quote = c;
        continue;
      }
      if (quote == c) {
        quote = 0;
        continue;
      }
    } else if (c == '&') {
      c = SGMLAmpChar(loader);
    }
    if (out.size() < kMaxTextBytes) out.push_back(c);
  }
  CutAtNul(out);
  return 0;
}

char SGMLAmpChar(LSGMLLoader& loader) {
  char name[kMaxEntityName + 1];
  std::size_t length = 0;
  for (;;) {
    char c = loader.GetChar();
    if (c == ';') break;
    if (c == 0 || c == '\t' || c == '\n' || c == '\r' || c == ' ' || length == kMaxEntityName) {
      loader.SetError(kErrorUnterminatedEntity);
      return 0;
    }
    name[length++] = c;
  }
  std::string_view entity(name, length);
  if (entity == "amp") return '&';
  if (entity == "gt") return '>';
  if (entity == "lt") return '<';
  if (entity == "quot") return '"';
  if (entity == "apos") return '\'';
  if (entity.substr(0, 2) == "#x") return NumericEntity(entity.substr(2), 16);
  if (entity.substr(0, 1) == "#") return NumericEntity(entity.substr(1), 10);
  loader.SetError(kErrorUnknownEntity);
  return '&';
}

// ---- Elements ---------------------------------------------------------------------------------

LSGMLElement::LSGMLElement(LSGMLLoader& loader, std::string name, char ending) : name_(std::move(name)) {
  bool closedByItself = false;
  ReadAttributes(loader, ending, closedByItself);
  if (closedByItself || name_[0] == '!' || name_[0] == '?') return;
  if (loader.depth_ >= kMaxSGMLDepth) {
    loader.SetError("La balise <" + name_ + "> est imbriquée trop profondément.");
    return;
  }
  ++loader.depth_;
  LoadData(loader);
  --loader.depth_;
}

// Reads the rest of the start tag up to ">". A tag that the text ends inside has no content:
// closedByItself is then set, so the element ends where the text does.
void LSGMLElement::ReadAttributes(LSGMLLoader& loader, char ending, bool& closedByItself) {
  std::string attribute, value;
  for (;;) {
    if (ending == '/') closedByItself = true;
    if (ending == '>') return;
    if (ending == 0) {
      loader.SetError("La balise <" + name_ + "> n'a pas de '>' fermant");
      closedByItself = true;
      return;
    }
    ending = SGMLLoadTag(loader, attribute);
    value.clear();
    if (ending == '=') ending = SGMLLoadTag(loader, value);
    if (!attribute.empty()) attributes_.SetString(attribute, value);
  }
}

LSGMLElement::~LSGMLElement() { ClearChildren(); }

// Siblings are released one after the other, not through the chain of next_ pointers, whose
// recursive destruction would run as deep as a statement is long.
void LSGMLElement::ClearChildren() {
  std::unique_ptr<LSGMLElement> child = std::move(firstChild_);
  while (child) child = std::move(child->next_);
  lastChild_ = nullptr;
}

void LSGMLElement::AppendChild(std::unique_ptr<LSGMLElement> child) {
  LSGMLElement* added = child.get();
  if (lastChild_ != nullptr) lastChild_->next_ = std::move(child);
  else firstChild_ = std::move(child);
  lastChild_ = added;
}

void LSGMLElement::AppendText(std::string text) {
  auto node = std::make_unique<LSGMLElement>();
  node->isText_ = true;
  node->text_ = std::move(text);
  AppendChild(std::move(node));
}

void LSGMLElement::LoadData(LSGMLLoader& loader) {
  ClearChildren();
  std::string pending;
  pending.reserve(32);
  for (;;) {
    char c = loader.GetChar();
    // The text of a leaf element ends at its line end; whatever follows up to the next tag is
    // layout (indentation, blank lines) or a continuation line, and is skipped.
    if (c == '\n') {
      do c = loader.GetChar();
      while (c != 0 && c != '<');
    }
    if (c == 0) {
      if (!pending.empty()) AppendText(std::move(pending));
      return;
    }
    if (c == '\t') continue;
    if (c == '&') {
      pending.push_back(SGMLAmpChar(loader));
      continue;
    }
    if (c != '<') {
      pending.push_back(c);
      continue;
    }
    // Text then a tag: the text was this leaf's content and the tag belongs to the parent.
    if (!pending.empty()) {
      AppendText(std::move(pending));
      loader.UngetChar();
      return;
    }
    std::string name;
    char ending = SGMLLoadTag(loader, name);
    if (name.empty()) {
      // "</NAME>" closes this element whatever NAME is; so does a tag without a name.
      if (ending == '/') {
        do c = loader.GetChar();
        while (c != 0 && c != '>');
      }
      return;
    }
    AppendChild(std::make_unique<LSGMLElement>(loader, std::move(name), ending));
  }
}

// ---- Lookups ----------------------------------------------------------------------------------

std::string_view LSGMLElement::GetText() const { return std::string_view(text_.c_str()); }

const LSGMLElement* LSGMLElement::GetElement(std::string_view name) const {
  for (const LSGMLElement* child = firstChild_.get(); child != nullptr; child = child->next_.get())
    if (child->name_ == name) return child;
  return nullptr;
}

void LSGMLElement::GetString(std::string_view name, std::string_view def, std::string& out) const {
  const LSGMLElement* child = GetElement(name);
  std::string_view text = def;
  if (child != nullptr) {
    const LSGMLElement* first = child->firstChild_.get();
    text = first != nullptr && first->isText_ ? first->GetText() : std::string_view();
  }
  out.assign(LTruncated(text, kMaxTextBytes));
}

double LSGMLElement::GetFloat(std::string_view name, double def) const {
  std::string text;
  GetString(name, "", text);
  if (text.empty()) return def;
  return std::strtod(text.c_str(), nullptr);
}

LSGMLElement::ConstNamedElementIterator::ConstNamedElementIterator(const LSGMLElement& element,
                                                                   std::string_view name)
    : next_(element.GetFirstChild()), name_(name) {}

const LSGMLElement* LSGMLElement::ConstNamedElementIterator::Next() {
  while (next_ != nullptr) {
    const LSGMLElement* child = next_;
    next_ = child->GetNextSibling();
    if (child->GetName() == name_) return child;
  }
  return nullptr;
}
