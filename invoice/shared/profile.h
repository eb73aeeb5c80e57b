// LProfile: the one open business of a process. It owns the business's data folder (the record
// store), its regional money and date settings, the objects of its main document lists, and four
// in-memory lists for temporary documents that never reach disk. Every business function gets
// it as LProfile& and reaches all records through it.
//
// List objects made from a profile are only valid until the next SetDatabaseName: callers make
// them locally and drop them before switching business.
#pragma once

#include <array>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "llib/gen/datastore.h"
#include "llib/gen/filestore.h"
#include "llib/gen/money.h"

class LProfile {
 public:
  // Opens the primary business ("Shared" of the application folder).
  LProfile();
  // Opens the business in folder (the primary one when empty).
  explicit LProfile(std::string_view folder);
  LProfile(const LProfile&) = delete;
  LProfile& operator=(const LProfile&) = delete;

  // Closes the open business and opens folder (the primary one when empty).
  void SetDatabaseName(std::string_view folder);
  void Create();
  void Destroy();
  // Reads the options, initialising the business on first use.
  void Reload();
  // Writes the default notes and footers of "Quote", "Receipt", "CreditNote", "PackingSlip",
  // "POrder" and "Bill".
  void OptionsSetNotesAndFooterText();

  const std::string& GetDatabaseName() const { return databaseName_; }
  const LFileStoreDataStore& GetDataStore() const { return dataStore_; }
  // A list of this business; its folder is created when missing.
  LFileStoreListBase List(std::string_view listName) const { return LFileStoreListBase(dataStore_, listName); }
  // One of the main document lists made by Create ("Invoices", "Customers", ...), else a new one.
  const LFileStoreListBase& MainList(std::string_view listName);

  // Regional settings.
  const LCurrencyFormat& GetCurrencyFormat() const { return currency_; }
  int GetCurrencyDigits() const { return currency_.digits; }
  int GetDateOrder() const { return dateOrder_; }
  int GetMeasurementUnits() const { return measurementUnits_; }

  // In-memory lists for temporary documents (index 0 to 3).
  LFKTempRecordStorage& TempList(int index) { return tempLists_[static_cast<std::size_t>(index)]; }

 private:
  LCurrencyFormat currency_;                     // symbol, order, digits, separators
  int dateOrder_ = 0;                            // LDateOrder of the system locale
  int measurementUnits_ = 1;                     // 0 metric, 1 imperial
  std::array<LFKTempRecordStorage, 4> tempLists_;
  LFileStoreDataStore dataStore_;                // the business data folder
  std::map<std::string, std::unique_ptr<LFileStoreListBase>, std::less<>> mainLists_;
  std::string databaseName_;                     // path of the business data folder
  void TakeSystemRegionalSettings();
};
