// The records a user keeps about the parties and goods of the business, field by field: customers
// ("Customers"), suppliers ("Suppliers"), items ("Items"), sales persons ("SalesPerson") and
// customer groups ("CustomerGroups"). For each kind, the fields that forms, the command line and
// the CSV import and export carry, with their type (how typed text becomes the stored value and
// back) and the column headers, French and English, that name them in a spreadsheet.
//
// Stored values: amounts in cents ("Price" 1999), percentages and quantities as "%.6lf"
// ("12.500000"), days as integers, SIREN as 9 digits, VAT numbers upper case without blanks,
// an item's kind as its word ("stock", "product", "service"), any other field as typed.
//
// Fields that the system computes ("Balance" and "OldestDue" of customers and suppliers, the stock
// of items) are never set from outside: refused by the command line and the import.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "llib/gen/money.h"

class LProfile;

enum class LPartyKind { kCustomer, kSupplier, kItem, kSalesPerson, kGroup };

inline constexpr std::string_view kSuppliersList = "Suppliers";
inline constexpr std::string_view kSalesPersonList = "SalesPerson";
inline constexpr std::string_view kCustomerGroupsList = "CustomerGroups";

struct LPartyKindInfo {
  LPartyKind kind;
  std::string_view list;     // "Customers"
  std::string_view word;     // "customers": the word of `import csv` and `export csv`
  std::string_view keyName;  // "Code": the key's column in exports
  std::string_view the;      // "Le client": the French name that begins messages
};
const LPartyKindInfo& LPartyKindOf(LPartyKind kind);
// The kind whose word is word ("customers", "items", "suppliers", "salespersons", "groups");
// false otherwise, kind unchanged.
bool LPartyKindFromWord(std::string_view word, LPartyKind& kind);

enum class LFieldType { kText, kAmount, kPercent, kQuantity, kDays, kSiren, kVatNumber, kEmail, kItemKind };

struct LPartyField {
  std::string_view name;     // the record's field ("VATNumber")
  LFieldType type;
  std::string_view headers;  // other names of its column, "|" between them ("tva|vat number|...")
};

// The fields of a kind, in the order exports write them.
std::span<const LPartyField> LPartyFields(LPartyKind kind);
// The field of kind named name (exactly); null when kind has none.
const LPartyField* LPartyFieldNamed(LPartyKind kind, std::string_view name);
// The headers that name a record's key in a spreadsheet ("code|client|reference|...").
std::string_view LPartyKeyHeaders(LPartyKind kind);
// Whether the system computes the field (never set from outside).
bool LPartyFieldIsComputed(LPartyKind kind, std::string_view name);

// A header as compared: lower case, accents and everything but letters and digits left out
// ("N° TVA" -> "ntva", "E-mail" -> "email").
std::string LPartyNormalizeHeader(std::string_view header);

// Typed text to the stored value of the field. Amounts, percentages and quantities take "." or
// "," as decimal point, blanks and "€" are ignored ("1 234,50 €"). false with the reason in *error
// (stored unchanged); an amount beyond the money ceiling is refused naming the ceiling in the
// business's currency format. Empty text stores empty.
bool LPartyFieldStore(const LPartyField& field, std::string_view text, const LCurrencyFormat& currency,
                      std::string& stored, std::string* error);
// The stored value as typed text for an export, which LPartyFieldStore reads back to the same value.
std::string LPartyFieldText(const LPartyField& field, std::string_view stored, int currencyDigits);

enum class LPartySaveMode { kCreate, kUpdate, kCreateOrUpdate };

// Creates or updates the record key of kind with fields (name, typed text): the known fields go
// through LPartyFieldStore, others are kept as typed; an empty text leaves the field as it was.
// kCreate refuses a key that exists ("Le client « X » existe déjà."), kUpdate one that does not
// ("L'article « X » n'existe pas.").
// *created (when given) tells whether the record is new. false with the reason in *error; nothing
// is written then.
bool LPartySave(LProfile& profile, LPartyKind kind, std::string_view key,
                const std::vector<std::pair<std::string, std::string>>& fields, LPartySaveMode mode, bool* created,
                std::string* error);

// ---- What a customer brings to its documents ----------------------------------------------------

// The unit price of an item on a document of customer: listPrice less the "PriceLevel" percent of
// the customer's "Group" ("CustomerGroups"), rounded to the cent; listPrice when the customer has
// no group or the group no level.
long long LCustomerItemPrice(LProfile& profile, std::string_view customer, long long listPrice);
// The customer's "SalesPerson"; empty when none (or no such customer).
std::string LCustomerSalesPerson(LProfile& profile, std::string_view customer);
