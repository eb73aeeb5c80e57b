#include "invoice/shared/templateform.h"

#include <algorithm>
#include <cstdlib>

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/templatereportformdata.h"
#include "llib/gen/file.h"
#include "llib/gen/money.h"
#include "llib/gen/optionalerror.h"

namespace {

constexpr std::string_view kFormsFolder = "Forms";
constexpr std::string_view kExtension = ".form";
constexpr std::string_view kFormOption = "Form";

constexpr LSalesDocumentType kTypes[] = {LSalesDocumentType::kInvoice, LSalesDocumentType::kQuote,
                                         LSalesDocumentType::kOrder, LSalesDocumentType::kCreditNote,
                                         LSalesDocumentType::kPOrder};

struct Keyword {
  std::string_view word;
  LTemplateElementType type;
};
constexpr Keyword kKeywords[] = {
    {"entete", LTemplateElementType::kHeader},     {"client", LTemplateElementType::kParty},
    {"lignes", LTemplateElementType::kLines},      {"totaux", LTemplateElementType::kTotals},
    {"conditions", LTemplateElementType::kConditions}, {"texte", LTemplateElementType::kText},
    {"champ", LTemplateElementType::kField},       {"expression", LTemplateElementType::kExpression},
    {"image", LTemplateElementType::kImage},       {"trait", LTemplateElementType::kRule},
};

bool TakesValue(LTemplateElementType type) {
  return type == LTemplateElementType::kText || type == LTemplateElementType::kField ||
         type == LTemplateElementType::kExpression || type == LTemplateElementType::kImage;
}

bool TakesAttributes(LTemplateElementType type) { return TakesValue(type) || type == LTemplateElementType::kRule; }

// The words of a line: blanks separate them, a word in double quotes keeps its blanks
// ("Total HT"), and key="..." is one word. false when a quote is not closed.
bool SplitWords(std::string_view line, std::vector<std::string>& words) {
  std::size_t i = 0;
  while (i < line.size()) {
    if (line[i] == ' ' || line[i] == '\t') {
      ++i;
      continue;
    }
    std::string word;
    while (i < line.size() && line[i] != ' ' && line[i] != '\t') {
      if (line[i] == '"') {
        std::size_t close = line.find('"', i + 1);
        if (close == std::string_view::npos) return false;
        word += "\"" + std::string(line.substr(i + 1, close - i - 1));
        i = close + 1;
      } else {
        word += line[i++];
      }
    }
    words.push_back(std::move(word));
  }
  return true;
}

bool Unquote(const std::string& word, std::string& text) {
  if (word.empty() || word[0] != '"') return false;
  text = word.substr(1);
  return true;
}

bool ParseNumber(std::string_view text, double& value) {
  std::string copy(text);
  std::replace(copy.begin(), copy.end(), ',', '.');
  char* end = nullptr;
  value = std::strtod(copy.c_str(), &end);
  return !copy.empty() && end == copy.c_str() + copy.size() && value >= 0 && value <= 1000;
}

// One attribute; false with reason set.
bool ApplyAttribute(const std::string& word, LTemplateElement& element, std::string& reason) {
  if (word == "gras") return element.style.bold = true;
  if (word == "italique") return element.style.italic = true;
  if (word == "centre") return element.style.align = LTextAlign::kCenter, true;
  if (word == "droite") return element.style.align = LTextAlign::kRight, true;
  if (word == "montant") return element.money = true;
  std::size_t equals = word.find('=');
  if (equals == std::string::npos) {
    reason = "attribut inconnu « " + word + " »";
    return false;
  }
  std::string key = word.substr(0, equals), value = word.substr(equals + 1);
  if (key == "libelle") {
    if (!Unquote(value, element.label)) element.label = value;
    return true;
  }
  double number = 0;
  if (key != "x" && key != "y" && key != "largeur" && key != "hauteur" && key != "taille") {
    reason = "attribut inconnu « " + key + " »";
    return false;
  }
  if (!ParseNumber(value, number)) {
    reason = "la valeur de « " + key + " » n'est pas un nombre de 0 à 1000";
    return false;
  }
  if (key == "x") element.x = number;
  else if (key == "y") element.y = number;
  else if (key == "largeur") element.width = number;
  else if (key == "hauteur") element.height = number;
  else if (number < 4 || number > 72) return reason = "la taille va de 4 à 72 points", false;
  else element.style.sizePt = number;
  return true;
}

// An expression the form can compute: every name is one of the document's amounts and the
// arithmetic holds (with every amount at 1, so that a division by an amount is no fault here).
bool CheckExpression(const std::string& expression, const LCurrencyFormat& currency, std::string& reason) {
  KVTemplateReportFormManager manager(currency.digits, currency.decimal);
  long long one = 1;
  for (int i = 0; i < currency.digits; ++i) one *= 10;
  for (std::string_view name : LTemplateFormAmountNames()) manager.SetFieldValue(name, one);
  (void)manager.EvaluateSimpleExpression(expression, reason);
  return reason.empty();
}

bool ParseLine(std::string_view line, const LCurrencyFormat& currency, LTemplateElement& element, std::string& reason) {
  std::vector<std::string> words;
  if (!SplitWords(line, words)) return reason = "guillemet non fermé", false;
  const Keyword* keyword = nullptr;
  for (const Keyword& k : kKeywords)
    if (words[0] == k.word) keyword = &k;
  if (keyword == nullptr) return reason = "élément inconnu « " + words[0] + " »", false;
  element.type = keyword->type;
  bool hasValue = false;
  for (std::size_t i = 1; i < words.size(); ++i) {
    if (!TakesAttributes(element.type)) return reason = "« " + words[0] + " » ne prend pas d'attribut", false;
    if (TakesValue(element.type) && Unquote(words[i], element.value)) {
      if (hasValue) return reason = "une seule valeur entre guillemets par élément", false;
      hasValue = true;
    } else if (!ApplyAttribute(words[i], element, reason)) {
      return false;
    }
  }
  if (TakesValue(element.type) && !hasValue) return reason = "« " + words[0] + " » attend sa valeur entre guillemets", false;
  if (element.x.has_value() != element.y.has_value()) return reason = "x et y vont ensemble", false;
  if (element.type == LTemplateElementType::kExpression && !CheckExpression(element.value, currency, reason))
    return false;
  return true;
}

const LSalesDocumentKind* KindOfDefaultName(std::string_view name) {
  for (LSalesDocumentType type : kTypes)
    if (LTemplateFormDefaultName(LSalesDocumentKindOf(type)) == name) return &LSalesDocumentKindOf(type);
  return nullptr;
}

std::string FormPath(const LProfile& profile, std::string_view name) {
  return LTemplateFormsFolder(profile) + "/" + std::string(name) + std::string(kExtension);
}

// A name a form file can take: no folder separator, no leading dot, not empty.
bool IsPlainName(std::string_view name) {
  return !name.empty() && name.size() <= 64 && name[0] != '.' && name.find('/') == std::string_view::npos &&
         name.find('\\') == std::string_view::npos;
}

// The text of the form name: its file, or for a default form not written yet its text, written
// now so that the user finds it beside the others. false when there is no such form.
bool ReadForm(const LProfile& profile, std::string_view name, std::string& text) {
  if (!IsPlainName(name)) return false;
  if (LFile::ReadAll(FormPath(profile, name), text)) return true;
  const LSalesDocumentKind* kind = KindOfDefaultName(name);
  if (kind == nullptr) return false;
  text = LTemplateFormDefaultText(*kind);
  // A folder that refuses the file still prints: the default form is the same text.
  if (LFile::MakeFolder(LTemplateFormsFolder(profile)) || LFile::IsFolder(LTemplateFormsFolder(profile)))
    (void)LFile::WriteAllAtomic(FormPath(profile, name), text);
  return true;
}

}  // namespace

const std::vector<std::string_view>& LTemplateFormAmountNames() {
  static const std::vector<std::string_view> kNames = {"Total",         "TaxTotal", "AmountPaid",
                                                       "ShippingCosts", "Subtotal", "BalanceDue"};
  return kNames;
}

std::string LTemplateFormsFolder(const LProfile& profile) { return profile.GetDatabaseName() + "/" + std::string(kFormsFolder); }

std::string LTemplateFormDefaultName(const LSalesDocumentKind& kind) {
  switch (kind.type) {
    case LSalesDocumentType::kInvoice: return "facture";
    case LSalesDocumentType::kQuote: return "devis";
    case LSalesDocumentType::kOrder: return "commande";
    case LSalesDocumentType::kCreditNote: return "avoir";
    case LSalesDocumentType::kPOrder: return "commande-fournisseur";
  }
  return "facture";
}

std::string LTemplateFormDefaultText(const LSalesDocumentKind& kind) {
  return "# Formulaire « " + LTemplateFormDefaultName(kind) + " » (" + std::string(kind.title) +
         ") : une ligne par élément, dessinés dans cet ordre.\n"
         "# Copiez-le sous un autre nom (kontavo form copy), modifiez la copie et choisissez-la avec\n"
         "# --form NOM, ou pour toujours dans le champ \"Form\" des options du document.\n"
         "# Éléments : entete, client, lignes, totaux, conditions, texte \"...\", champ \"NOM\",\n"
         "# expression \"Total-AmountPaid\", image \"cachet.png\", trait. Attributs : x= y= largeur=\n"
         "# hauteur= (mm), taille= (points), gras, italique, centre, droite, libelle=\"...\", montant.\n"
         "entete\n"
         "client\n"
         "lignes\n"
         "totaux\n"
         "conditions\n";
}

bool LTemplateFormParse(std::string_view text, const LCurrencyFormat& currency, LTemplateForm& form, std::string& error) {
  form.elements.clear();
  int number = 0;
  while (!text.empty() || number == 0) {
    std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    ++number;
    while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t')) line.remove_suffix(1);
    while (!line.empty() && (line.front() == ' ' || line.front() == '\t')) line.remove_prefix(1);
    if (line.empty() || line.front() == '#') {
      if (text.empty()) break;
      continue;
    }
    LTemplateElement element;
    element.line = number;
    std::string reason;
    if (!ParseLine(line, currency, element, reason)) {
      error = "ligne " + std::to_string(number) + " : " + reason;
      return false;
    }
    form.elements.push_back(std::move(element));
  }
  if (form.elements.empty()) {
    error = "le formulaire ne contient aucun élément";
    return false;
  }
  return true;
}

bool LTemplateFormLoad(const LProfile& profile, const LSalesDocumentKind& kind, std::string_view requested,
                       LTemplateForm& form, std::string* error, std::string& warning) {
  warning.clear();
  std::string defaultName = LTemplateFormDefaultName(kind);
  std::string name(requested);
  if (name.empty()) {
    LRecord options;
    if (profile.List(kMiscList).Open(options, kind.optionsRecord)) name = options.GetString(kFormOption);
    if (name.empty()) name = defaultName;
  }
  std::string text;
  if (!ReadForm(profile, name, text)) {
    if (!requested.empty()) return LFail(error, "Formulaire introuvable : " + name + ".");
    warning = "Formulaire introuvable : " + name + " ; le formulaire par défaut est utilisé.";
    name = defaultName;
    if (!ReadForm(profile, name, text)) text = LTemplateFormDefaultText(kind);
  }
  std::string reason;
  if (LTemplateFormParse(text, profile.GetCurrencyFormat(), form, reason)) {
    form.name = name;
    return true;
  }
  warning = "Le formulaire « " + name + " » est inutilisable (" + reason + ") ; le formulaire par défaut est utilisé.";
  form.name = defaultName;
  return LTemplateFormParse(LTemplateFormDefaultText(kind), profile.GetCurrencyFormat(), form, reason);
}

std::vector<std::string> LTemplateFormNames(const LProfile& profile) {
  std::vector<std::string> names;
  for (LSalesDocumentType type : kTypes) names.push_back(LTemplateFormDefaultName(LSalesDocumentKindOf(type)));
  for (const std::string& file : LFile::ListFolder(LTemplateFormsFolder(profile))) {
    if (file.size() <= kExtension.size() || file.compare(file.size() - kExtension.size(), kExtension.size(), kExtension) != 0)
      continue;
    names.push_back(file.substr(0, file.size() - kExtension.size()));
  }
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  return names;
}

bool LTemplateFormCopy(const LProfile& profile, std::string_view from, std::string_view to, std::string* error) {
  std::string text;
  if (!ReadForm(profile, from, text)) return LFail(error, "Formulaire introuvable : " + std::string(from) + ".");
  if (!IsPlainName(to)) return LFail(error, "Nom de formulaire non valide : « " + std::string(to) + " ».");
  std::string path = FormPath(profile, to);
  if (LFile::Exists(path) || KindOfDefaultName(to) != nullptr)
    return LFail(error, "Le formulaire « " + std::string(to) + " » existe déjà.");
  if ((!LFile::IsFolder(LTemplateFormsFolder(profile)) && !LFile::MakeFolder(LTemplateFormsFolder(profile))) ||
      !LFile::WriteAllAtomic(path, text))
    return LFail(error, "Impossible d'écrire le fichier « " + path + " ».");
  return true;
}
