// The item lines of a sales-side document (quote, order, invoice, credit note, purchase order).
// A line is a code, a description, a quantity, a unit price with its own number of decimals, a
// line discount and a tax, either by number or as explicit rates. The document record keeps its
// lines flattened into numbered fields, line n (from 1) under "Item<n>Code", "Item<n>Qty", ...,
// with "ItemCount" lines; LFKItemCollectionRecord is that view over a record, and the totalling
// code only sees the abstract LFKItemCollection.
//
// Indexes passed to these operations are 0-based: index i is stored as line i + 1.
#pragma once

#include <string>
#include <string_view>

#include "invoice/shared/taxrate.h"

class LRecord;

// The value GetFixedPercentageDiscountItem gives when the document has no discount line.
inline constexpr int kNoFixedDiscountItem = -2;

class LFKItemCollection {
 public:
  virtual ~LFKItemCollection() = default;

  virtual int GetItemCount() const = 0;
  virtual std::string GetItemCode(int index) const = 0;
  virtual std::string GetItemDescription(int index) const = 0;
  virtual double GetItemQty(int index) const = 0;
  // The unit price as stored: an integer scaled by GetItemUnitValueDigits.
  virtual long long GetItemUnitValue(int index) const = 0;
  // Decimals of the unit price; -1 means as many as the currency has.
  virtual int GetItemUnitValueDigits(int index) const = 0;
  // Parses the line's tax rate text. Empty: rates 0, 0, not compound, result -1. A text
  // without "/": its integer value (the tax number plus one, 0 for the document's default
  // tax); the rates are left as they were. A triple a/b/c: rates set, result -1.
  virtual int GetItemTaxRate(int index, double& rate1, double& rate2, bool& compound) const = 0;
  // The tax rate text as stored.
  virtual std::string GetItemTaxRate(int index) const = 0;
  virtual std::string GetItemTaxName(int index) const = 0;
  virtual std::string GetItemCombinedTaxName(int index) const = 0;
  // Line discount in percent.
  virtual double GetItemDiscount(int index) const = 0;
  // The 0-based index of the line that is a percentage discount over the whole document, or
  // kNoFixedDiscountItem when there is none.
  virtual int GetFixedPercentageDiscountItem() const = 0;
  // Writes a computed amount back into a line (the discount line's amount): the unit price
  // becomes unitValue in currency decimals, the quantity 1, and the line total total.
  virtual void UpdateItemUnitValueAndTotal(int index, long long unitValue, long long total) = 0;
};

// The item lines stored in a document record. The record must outlive the view. A view made
// from a const record only reads: its writers do nothing.
class LFKItemCollectionRecord : public LFKItemCollection {
 public:
  explicit LFKItemCollectionRecord(LRecord& record) : record_(record), writable_(&record) {}
  explicit LFKItemCollectionRecord(const LRecord& record) : record_(record) {}

  int GetItemCount() const override;
  std::string GetItemCode(int index) const override;
  std::string GetItemDescription(int index) const override;
  double GetItemQty(int index) const override;
  long long GetItemUnitValue(int index) const override;
  int GetItemUnitValueDigits(int index) const override;
  int GetItemTaxRate(int index, double& rate1, double& rate2, bool& compound) const override;
  std::string GetItemTaxRate(int index) const override;
  std::string GetItemTaxName(int index) const override;
  std::string GetItemCombinedTaxName(int index) const override;
  double GetItemDiscount(int index) const override;
  int GetFixedPercentageDiscountItem() const override;
  void UpdateItemUnitValueAndTotal(int index, long long unitValue, long long total) override;

  // "Item<n>Account".
  std::string GetItemAccount(int index) const;
  // "Item<n>VATAmount": its leading digits (at most 259), 0 when empty.
  long long GetItemVATAmount(int index) const;
  // "Item<n>VATPercentage" as printed.
  std::string GetItemVATPercentage(int index) const;
  // "Item<n>Total" as last written by UpdateItemUnitValueAndTotal; 0 when absent.
  long long GetItemTotal(int index) const;

  // Writers used when a document is built or converted.
  void SetItemCount(int count);
  void SetItemTaxRate(int index, const LFKTaxRate& rate);
  // The name of a line's field: ItemField(0, "Qty") == "Item1Qty".
  static std::string ItemField(int index, std::string_view suffix);
  // Removes every field of the line (used when lines are replaced). Deleted fields come back
  // with their old text if the same object is saved twice: save once, then reopen.
  void DeleteItem(int index);

 private:
  const LRecord& record_;        // the document record, owned by the caller
  LRecord* writable_ = nullptr;  // the same record when it may be written, else null
};

// The total of one line in minor currency units: unit value × quantity, less the line's
// discount (unless ignoreDiscount is set or the line is the fixed-percentage discount line),
// divided by the integer part of 10^scaleDigits when that is at least 1, rounded half up by
// floor(x + 0.5). The scale is passed by the caller; see the totaller for which one.
long long LFKGetItemTotal(const LFKItemCollection& items, int index, bool ignoreDiscount, int scaleDigits);
