#include "invoice/shared/profile.h"

#include "invoice/shared/listindexes.h"
#include "invoice/shared/options.h"
#include "invoice/shared/taxoptions.h"
#include "llib/gen/file.h"
#include "llib/gen/log.h"
#include "llib/gen/locale.h"

namespace {

// The main document lists, made by Create in this order.
constexpr std::string_view kMainLists[] = {
    "Invoices",   "InvoicesRecurring", "InvoicesDrafts", "Orders",      "OrdersRecurring",
    "OrdersDrafts", "Quotes",          "QuotesDrafts",   "CreditNotes", "CreditNotesDrafts",
    "SalesPerson", "POrders",          "POrdersDrafts",  "Bills",       "BillsDrafts",
    "Checks",     "Budgets",           "Customers",      "Suppliers"};

constexpr std::string_view kNotesPayment =
    "Veuillez nous contacter pour plus d'informations sur les options de paiement.";
constexpr std::string_view kFooter = "Nous vous remercions de votre confiance.";

struct DocumentTexts {
  std::string_view record;
  std::string_view notes;
};

constexpr DocumentTexts kOtherDocumentTexts[] = {
    {"Quote", kNotesPayment},
    {"Receipt", "Veuillez nous contacter pour plus d'informations sur ce reçu."},
    {"CreditNote", "Veuillez nous contacter pour plus d'informations sur cet avoir."},
    {"PackingSlip", "Veuillez nous contacter pour plus d'informations sur ce bon."},
    {"POrder", kNotesPayment},
    {"Bill", "Veuillez nous contacter pour toute question sur cette facture."},
};

void SetNotesAndFooter(LRecord& record, std::string_view notes) {
  record.SetString("NotesText", notes);
  record.SetString("FooterText", kFooter);
}

}  // namespace

LProfile::LProfile() : LProfile(std::string_view()) {}

LProfile::LProfile(std::string_view folder) {
  TakeSystemRegionalSettings();
  databaseName_ = folder.empty() ? LFile::GetSharedDataFolderApp() : std::string(folder);
  Create();
  Reload();
}

void LProfile::TakeSystemRegionalSettings() {
  LSystemLocale locale = LGetSystemLocale();
  currency_.symbol = locale.currencySymbol;
  currency_.order = locale.currencyOrder;
  currency_.digits = locale.currencyDigits;
  currency_.decimal = locale.decimalSymbol;
  currency_.thousands = locale.thousandsSymbol;
  dateOrder_ = locale.dateOrder;
  measurementUnits_ = locale.metric ? 0 : 1;
}

void LProfile::SetDatabaseName(std::string_view folder) {
  Destroy();
  databaseName_ = folder.empty() ? LFile::GetSharedDataFolderApp() : std::string(LTruncated(folder, kMaxTextBytes));
  Create();
  Reload();
}

void LProfile::Create() {
  LFile::MakeFolder(databaseName_);
  dataStore_.SetFolder(databaseName_);
  LListIndexesDeclare(dataStore_.GetFolder());
  for (std::string_view name : kMainLists) {
    auto list = std::make_unique<LFileStoreListBase>(dataStore_, name);
    LFile::MakeFolder(list->GetFolder());  // the books' layout, there from their first opening
    mainLists_.emplace(std::string(name), std::move(list));
  }
}

void LProfile::Destroy() {
  mainLists_.clear();
  dataStore_.SetFolder("");
}

const LFileStoreListBase& LProfile::MainList(std::string_view listName) {
  auto it = mainLists_.find(listName);
  if (it == mainLists_.end())
    it = mainLists_.emplace(std::string(listName), std::make_unique<LFileStoreListBase>(dataStore_, listName)).first;
  return *it->second;
}

void LProfile::OptionsSetNotesAndFooterText() {
  LFileStoreListBase misc = List(kMiscList);
  for (const auto& texts : kOtherDocumentTexts) {
    LRecord record;
    misc.OpenAlways(record, texts.record);
    SetNotesAndFooter(record, texts.notes);
  }
}

void LProfile::Reload() {
  LFileStoreListBase misc = List(kMiscList);
  LOptions options;
  options.OpenFrom(*this);
  if (!options.GetBool("Init", false)) {
    {
      LRecord invoice;
      LRecord order;
      misc.OpenAlways(invoice, "Invoice");
      misc.OpenAlways(order, "Order");
      SetNotesAndFooter(invoice, kNotesPayment);
      SetNotesAndFooter(order, kNotesPayment);
    }
    OptionsSetNotesAndFooterText();
    if (currency_.symbol.empty()) currency_.symbol = "$";
    if (currency_.decimal.empty()) currency_.decimal = ".";
    if (currency_.thousands.empty()) currency_.thousands = ",";
    LSystemLocale locale = LGetSystemLocale();
    options.SetString("CurrencyType", locale.currencyCode);
    options.SetString("CurrencySymbol", currency_.symbol);
    options.SetInt("CurrencyOrder", currency_.order);
    options.SetInt("CurrencyDigits", currency_.digits);
    options.SetString("DecimalSymbol", currency_.decimal);
    options.SetString("ThousandsSymbol", currency_.thousands);
    options.SetInt("MeasurementUnits", locale.metric ? 0 : 1);
    options.SetString("CountryCode", locale.countryCode);
    LTaxOptions tax;
    LRecord invoice;
    LRecord order;
    misc.OpenAlways(tax, "Tax");
    misc.OpenAlways(invoice, "Invoice");
    misc.OpenAlways(order, "Order");
    LOptionsSetRegionalDefaults(*this, options, tax, invoice, order);
    options.SetInt("Init", 1);
    // Unwritten, the defaults are simply written again at the next opening.
    if (!options.Flush()) LLogWarning("Profile: the first options could not be stored in %s", databaseName_.c_str());
  }
  currency_.symbol = options.GetString("CurrencySymbol", "$");
  currency_.order = options.GetInt("CurrencyOrder", 0);
  currency_.digits = options.GetInt("CurrencyDigits", 2);
  currency_.decimal = options.GetString("DecimalSymbol", ".");
  currency_.thousands = options.GetString("ThousandsSymbol", ",");
  measurementUnits_ = options.GetInt("MeasurementUnits", 1);
}
