#include "invoice/shared/partyfields.h"

#include <cctype>
#include <cmath>

#include "invoice/shared/customer.h"
#include "invoice/shared/item.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/textlimit.h"
#include "llib/gen/filestore.h"
#include "llib/gen/money.h"
#include "llib/gen/moneybounds.h"
#include "llib/gen/optionalerror.h"
#include "llib/gen/textnum.h"

namespace {

// ---- The kinds and their fields ----------------------------------------------------------------

constexpr LPartyKindInfo kKinds[] = {
    {LPartyKind::kCustomer, kCustomersList, "customers", "Code", "Le client"},
    {LPartyKind::kSupplier, kSuppliersList, "suppliers", "Code", "Le fournisseur"},
    {LPartyKind::kItem, kItemsList, "items", "Code", "L'article"},
    {LPartyKind::kSalesPerson, kSalesPersonList, "salespersons", "Code", "Le vendeur"},
    {LPartyKind::kGroup, kCustomerGroupsList, "groups", "Code", "Le groupe de clients"},
};

constexpr std::string_view kNameHeaders = "nom|raison sociale|societe|company|entreprise|denomination";
constexpr std::string_view kAddressHeaders = "adresse|adresse postale|rue";
constexpr std::string_view kContactHeaders = "interlocuteur|contact name|nom du contact|personne a contacter";
constexpr std::string_view kEmailHeaders = "e-mail|mail|courriel|adresse e-mail|adresse electronique|email address";
constexpr std::string_view kPhoneHeaders = "telephone|tel|phone number|mobile|portable";
constexpr std::string_view kSirenHeaders = "numero siren|n siren|siren number";
constexpr std::string_view kVatHeaders =
    "vat|vat number|vat id|tva|numero de tva|n tva|tva intracommunautaire|numero tva intracommunautaire";
constexpr std::string_view kTermsHeaders =
    "payment terms|delai de paiement|conditions de paiement|jours de paiement|echeance jours";

// What customers and suppliers both have, in this order.
#define KONTAVO_PARTY_CONTACT_FIELDS                                                                  \
  {"Name", LFieldType::kText, kNameHeaders}, {"Address", LFieldType::kText, kAddressHeaders},        \
      {"Contact", LFieldType::kText, kContactHeaders}, {"Email", LFieldType::kEmail, kEmailHeaders}, \
      {"Phone", LFieldType::kText, kPhoneHeaders}, {"SIREN", LFieldType::kSiren, kSirenHeaders},     \
      {"VATNumber", LFieldType::kVatNumber, kVatHeaders}

constexpr LPartyField kCustomerFields[] = {
    KONTAVO_PARTY_CONTACT_FIELDS,
    {"SalesPerson", LFieldType::kText, "sales person|vendeur|commercial|representant"},
    {"Group", LFieldType::kText, "groupe|customer group|groupe de clients|categorie de client"},
    {"PaymentTermsDays", LFieldType::kDays, kTermsHeaders},
};

constexpr LPartyField kSupplierFields[] = {
    KONTAVO_PARTY_CONTACT_FIELDS,
    {"ExpenseAccount", LFieldType::kText,
     "expense account|default expense account|compte de charges|compte de charge|compte"},
    {"PaymentTermsDays", LFieldType::kDays, kTermsHeaders},
};
#undef KONTAVO_PARTY_CONTACT_FIELDS

constexpr LPartyField kItemFields[] = {
    {"Description", LFieldType::kText, "designation|libelle|intitule|nom|name|produit|product name"},
    {"Price", LFieldType::kAmount,
     "prix|prix unitaire|prix de vente|prix ht|prix unitaire ht|tarif|unit price|sale price|sales price"},
    {"Cost", LFieldType::kAmount, "cout|cout unitaire|cout d'achat|prix d'achat|purchase price|unit cost"},
    {"PLAccount", LFieldType::kText, "compte|compte de produit|compte de vente|account|income account|sales account"},
    {"Kind", LFieldType::kItemKind, "type|type d'article|nature|item type"},
    {"ReorderLevel", LFieldType::kQuantity,
     "reorder level|reorder point|seuil|seuil de commande|seuil de reapprovisionnement|stock minimum|stock mini"},
    {"ReorderQty", LFieldType::kQuantity,
     "reorder quantity|reorder qty|quantite a commander|quantite de reapprovisionnement"},
};

constexpr LPartyField kSalesPersonFields[] = {
    {"Name", LFieldType::kText, "nom|nom du vendeur"},
    {"Email", LFieldType::kEmail, kEmailHeaders},
    {"CommissionRate", LFieldType::kPercent, "commission|taux de commission|commission rate|commission %"},
};

constexpr LPartyField kGroupFields[] = {
    {"Description", LFieldType::kText, "libelle|nom|name"},
    {"PriceLevel", LFieldType::kPercent, "price level|niveau de prix|remise|remise %|discount"},
};

constexpr std::string_view kComputed[] = {"Balance", "OldestDue", "Quantity", "AverageCost", "MoveCount"};

// ---- Typed text -------------------------------------------------------------------------------

// A number as typed in a spreadsheet: blanks (also no-break ones), "€" and "%" left out, and the
// last of "," and "." taken as the decimal point ("1.234,50" and "1,234.50" are 1234.50).
std::string PlainNumber(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned char c = static_cast<unsigned char>(text[i]);
    if (c == ' ' || c == '%' || c == '\t') continue;
    if (text.substr(i, 2) == "\xC2\xA0") { ++i; continue; }           // no-break space
    if (text.substr(i, 3) == "\xE2\x80\xAF" || text.substr(i, 3) == "\xE2\x82\xAC") {  // narrow space, €
      i += 2;
      continue;
    }
    out.push_back(static_cast<char>(c));
  }
  std::size_t point = out.find_last_of(".,");
  if (point == std::string::npos) return out;
  std::string plain;
  for (std::size_t i = 0; i < out.size(); ++i) {
    if (i == point) plain.push_back('.');
    else if (out[i] != '.' && out[i] != ',') plain.push_back(out[i]);
  }
  return plain;
}

bool StoreNumber(const LPartyField& field, std::string_view text, const LCurrencyFormat& currency,
                 std::string& stored, std::string* error) {
  std::string plain = PlainNumber(text);
  if (field.type == LFieldType::kAmount) {
    long long cents = 0;
    if (!LParseAmount(plain, currency.digits, cents)) {
      return LFail(error, LAmountRefusal(field.name, text, plain, currency));
    }
    stored = std::to_string(cents);
    return true;
  }
  double value = 0;
  if (!LParseQuantity(plain, value)) {
    return LFail(error, "Nombre invalide pour " + std::string(field.name) + " : " + std::string(text) + ".");
  }
  if (field.type == LFieldType::kPercent && (value < 0 || value > 100)) {
    return LFail(error,
                 "Le taux " + std::string(field.name) + " doit être entre 0 et 100 : " + std::string(text) + ".");
  }
  stored = ftotl(value);
  return true;
}

bool StoreDays(const LPartyField& field, std::string_view text, std::string& stored, std::string* error) {
  if (text.empty() || text.size() > 4 || text.find_first_not_of("0123456789") != std::string_view::npos) {
    return LFail(error, "Nombre de jours invalide pour " + std::string(field.name) + " : " + std::string(text) + ".");
  }
  stored = std::to_string(LTextToInt(text));
  return true;
}

std::string WithoutBlanks(std::string_view text) {
  std::string out;
  for (char c : text)
    if (c != ' ' && c != '.' && c != '-' && c != '\t') out.push_back(c);
  return out;
}

bool StoreSiren(std::string_view text, std::string& stored, std::string* error) {
  std::string digits = WithoutBlanks(text);
  if (digits.size() != 9 || digits.find_first_not_of("0123456789") != std::string::npos) {
    return LFail(error, "Numéro SIREN invalide (9 chiffres) : " + std::string(text) + ".");
  }
  stored = digits;
  return true;
}

// An intra-community VAT number: two letters of the country, then 2 to 13 letters or digits.
bool StoreVatNumber(std::string_view text, std::string& stored, std::string* error) {
  std::string number;
  for (char c : WithoutBlanks(text)) number.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(c))));
  bool ok = number.size() >= 4 && number.size() <= 15 && std::isalpha(static_cast<unsigned char>(number[0])) &&
            std::isalpha(static_cast<unsigned char>(number[1]));
  for (char c : number) ok = ok && std::isalnum(static_cast<unsigned char>(c));
  if (!ok) return LFail(error, "Numéro de TVA intracommunautaire invalide : " + std::string(text) + ".");
  stored = number;
  return true;
}

bool StoreEmail(std::string_view text, std::string& stored, std::string* error) {
  std::size_t at = text.find('@');
  bool ok = at != std::string_view::npos && at > 0 && text.find('@', at + 1) == std::string_view::npos &&
            text.find_first_of(" \t,;<>") == std::string_view::npos &&
            text.find('.', at + 2) != std::string_view::npos && text.back() != '.';
  if (!ok) return LFail(error, "Adresse e-mail invalide : " + std::string(text) + ".");
  stored.assign(text);
  return true;
}

bool StoreItemKind(std::string_view text, std::string& stored, std::string* error) {
  std::string word = LPartyNormalizeHeader(text);
  LItemKind kind;
  if (word == "produitstocke" || word == "stocked") kind = LItemKind::kStocked;
  else if (word == "produitnonstocke" || word == "nonstocked" || word == "nonstock") kind = LItemKind::kProduct;
  else if (word == "prestation") kind = LItemKind::kService;
  else if (!LItemKindParse(word == "stocke" ? std::string_view("stock") : std::string_view(word), kind)) {
    return LFail(error, "Type d'article invalide : " + std::string(text) + " (stock, product ou service).");
  }
  stored.assign(LItemKindWord(kind));
  return true;
}

// Header folding: the accented letters of French in UTF-8 to their base letter.
struct Fold {
  std::string_view utf8;
  char base;
};
constexpr Fold kFolds[] = {{"é", 'e'}, {"è", 'e'}, {"ê", 'e'}, {"ë", 'e'}, {"É", 'e'}, {"È", 'e'}, {"Ê", 'e'},
                           {"à", 'a'}, {"â", 'a'}, {"ä", 'a'}, {"À", 'a'}, {"Â", 'a'}, {"ç", 'c'}, {"Ç", 'c'},
                           {"î", 'i'}, {"ï", 'i'}, {"Î", 'i'}, {"ô", 'o'}, {"ö", 'o'}, {"Ô", 'o'}, {"ù", 'u'},
                           {"û", 'u'}, {"ü", 'u'}, {"Û", 'u'}, {"œ", 'o'}};

}  // namespace

const LPartyKindInfo& LPartyKindOf(LPartyKind kind) {
  for (const LPartyKindInfo& info : kKinds)
    if (info.kind == kind) return info;
  return kKinds[0];
}

bool LPartyKindFromWord(std::string_view word, LPartyKind& kind) {
  for (const LPartyKindInfo& info : kKinds)
    if (info.word == word) {
      kind = info.kind;
      return true;
    }
  return false;
}

std::span<const LPartyField> LPartyFields(LPartyKind kind) {
  switch (kind) {
    case LPartyKind::kCustomer: return kCustomerFields;
    case LPartyKind::kSupplier: return kSupplierFields;
    case LPartyKind::kItem: return kItemFields;
    case LPartyKind::kSalesPerson: return kSalesPersonFields;
    case LPartyKind::kGroup: return kGroupFields;
  }
  return {};
}

const LPartyField* LPartyFieldNamed(LPartyKind kind, std::string_view name) {
  for (const LPartyField& field : LPartyFields(kind))
    if (field.name == name) return &field;
  return nullptr;
}

std::string_view LPartyKeyHeaders(LPartyKind kind) {
  switch (kind) {
    case LPartyKind::kItem:
      return "code|code article|reference|ref|reference article|sku|article|item|item code|product code";
    case LPartyKind::kCustomer: return "code|code client|cle|key|id|client|numero client|customer|customer id";
    case LPartyKind::kSupplier:
      return "code|code fournisseur|cle|key|id|fournisseur|numero fournisseur|supplier|supplier id|vendor";
    default: return "code|cle|key|id";
  }
}

bool LPartyFieldIsComputed(LPartyKind kind, std::string_view name) {
  for (std::string_view computed : kComputed)
    if (name == computed) return true;
  return kind == LPartyKind::kItem && name.substr(0, 4) == "Move";
}

std::string LPartyNormalizeHeader(std::string_view header) {
  std::string out;
  for (std::size_t i = 0; i < header.size();) {
    bool folded = false;
    for (const Fold& fold : kFolds)
      if (header.substr(i, fold.utf8.size()) == fold.utf8) {
        out.push_back(fold.base);
        i += fold.utf8.size();
        folded = true;
        break;
      }
    if (folded) continue;
    unsigned char c = static_cast<unsigned char>(header[i++]);
    if (std::isalnum(c)) out.push_back(static_cast<char>(std::tolower(c)));
  }
  return out;
}

bool LPartyFieldStore(const LPartyField& field, std::string_view text, const LCurrencyFormat& currency,
                      std::string& stored, std::string* error) {
  if (text.empty()) {
    stored.clear();
    return true;
  }
  switch (field.type) {
    case LFieldType::kText: {
      std::size_t count = 0;
      if (LTypedTextIsTooLong(text, count))
        return LFail(error, "Texte trop long pour " + std::string(field.name) + LTypedTextTooLongEnd(count));
      stored.assign(text);
      return true;
    }
    case LFieldType::kAmount:
    case LFieldType::kPercent:
    case LFieldType::kQuantity: return StoreNumber(field, text, currency, stored, error);
    case LFieldType::kDays: return StoreDays(field, text, stored, error);
    case LFieldType::kSiren: return StoreSiren(text, stored, error);
    case LFieldType::kVatNumber: return StoreVatNumber(text, stored, error);
    case LFieldType::kEmail: return StoreEmail(text, stored, error);
    case LFieldType::kItemKind: return StoreItemKind(text, stored, error);
  }
  return false;
}

std::string LPartyFieldText(const LPartyField& field, std::string_view stored, int currencyDigits) {
  if (stored.empty()) return {};
  switch (field.type) {
    case LFieldType::kAmount: return LFormatAmountPlain(LTextToInt64(stored), currencyDigits);
    case LFieldType::kPercent:
    case LFieldType::kQuantity: return LQuantityText(ttofl(stored));
    default: return std::string(stored);
  }
}

bool LPartySave(LProfile& profile, LPartyKind kind, std::string_view key,
                const std::vector<std::pair<std::string, std::string>>& fields, LPartySaveMode mode, bool* created,
                std::string* error) {
  const LPartyKindInfo& info = LPartyKindOf(kind);
  std::string the(info.the);
  if (key.empty()) return LFail(error, "La clé (" + std::string(info.keyName) + ") est vide.");
  std::vector<std::pair<std::string, std::string>> stored;
  for (const auto& [name, text] : fields) {
    if (LPartyFieldIsComputed(kind, name)) {
      return LFail(error, "Le champ " + name + " est calculé par Kontavo et ne peut pas être saisi.");
    }
    std::string value = text;
    const LPartyField* field = LPartyFieldNamed(kind, name);
    if (field != nullptr && !LPartyFieldStore(*field, text, profile.GetCurrencyFormat(), value, error)) return false;
    if (!value.empty()) stored.emplace_back(name, std::move(value));
  }
  const LFileStoreListBase& list = profile.MainList(info.list);
  bool exists = list.TestRecordExists(key);
  if (exists && mode == LPartySaveMode::kCreate) {
    return LFail(error, the + " « " + std::string(key) + " » existe déjà.");
  }
  if (!exists && mode == LPartySaveMode::kUpdate) {
    return LFail(error, the + " « " + std::string(key) + " » n'existe pas.");
  }
  LRecord record;
  if (exists) list.OpenAlways(record, key);
  else list.CreateNewRecord(record, key);  // created whole; one taken meanwhile is merged into
  for (const auto& [name, value] : stored) record.SetString(name, value);
  record.SetDirty(true);
  if (!record.Flush()) return LFail(error, "Impossible d'enregistrer « " + std::string(key) + " ».");
  if (created != nullptr) *created = !exists;
  return true;
}

namespace {

std::string CustomerField(LProfile& profile, std::string_view customer, std::string_view name) {
  LRecord record;
  if (customer.empty() || !profile.MainList(kCustomersList).Open(record, customer)) return {};
  std::string value = record.GetString(name);
  record.DetachWithoutSave();
  return value;
}

}  // namespace

long long LCustomerItemPrice(LProfile& profile, std::string_view customer, long long listPrice) {
  std::string group = CustomerField(profile, customer, "Group");
  LRecord record;
  if (group.empty() || !profile.MainList(kCustomerGroupsList).Open(record, group)) return listPrice;
  double level = record.GetFloat("PriceLevel", 0);
  record.DetachWithoutSave();
  return LRoundHalfAwayFromZero(static_cast<double>(listPrice) * (100 - level) / 100);
}

std::string LCustomerSalesPerson(LProfile& profile, std::string_view customer) {
  return CustomerField(profile, customer, "SalesPerson");
}
