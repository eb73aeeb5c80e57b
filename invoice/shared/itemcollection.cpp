#include "invoice/shared/itemcollection.h"

#include "invoice/shared/itemfield.h"
#include "llib/gen/money.h"
#include "llib/gen/record.h"
#include "llib/gen/textnum.h"

std::string LFKItemCollectionRecord::ItemField(int index, std::string_view suffix) {
  return LItemField(index + 1, suffix);
}

int LFKItemCollectionRecord::GetItemCount() const { return record_.GetInt("ItemCount", 0); }

std::string LFKItemCollectionRecord::GetItemCode(int index) const { return record_.GetString(ItemField(index, "Code")); }

std::string LFKItemCollectionRecord::GetItemDescription(int index) const {
  return record_.GetString(ItemField(index, "Description"));
}

double LFKItemCollectionRecord::GetItemQty(int index) const { return record_.GetFloat(ItemField(index, "Qty"), 0); }

long long LFKItemCollectionRecord::GetItemUnitValue(int index) const {
  return record_.GetInt64(ItemField(index, "UnitValue"), 0);
}

int LFKItemCollectionRecord::GetItemUnitValueDigits(int index) const {
  return record_.GetInt(ItemField(index, "UnitValueDigits"), -1);
}

std::string LFKItemCollectionRecord::GetItemTaxRate(int index) const {
  return record_.GetString(ItemField(index, "TaxRate"));
}

int LFKItemCollectionRecord::GetItemTaxRate(int index, double& rate1, double& rate2, bool& compound) const {
  std::string text = GetItemTaxRate(index);
  if (text.empty()) {
    rate1 = rate2 = 0;
    compound = false;
    return -1;
  }
  if (!LFKIsTaxRateTriple(text)) return LTextToInt(text);
  LFKTaxRate rate = LFKParseTaxRate(text);
  rate1 = rate.rate1;
  rate2 = rate.rate2;
  compound = rate.compound;
  return -1;
}

std::string LFKItemCollectionRecord::GetItemTaxName(int index) const {
  return record_.GetString(ItemField(index, "TaxName"));
}

std::string LFKItemCollectionRecord::GetItemCombinedTaxName(int index) const {
  return record_.GetString(ItemField(index, "CombinedTaxName"));
}

double LFKItemCollectionRecord::GetItemDiscount(int index) const {
  return record_.GetFloat(ItemField(index, "Discount"), 0);
}

int LFKItemCollectionRecord::GetFixedPercentageDiscountItem() const {
  if (!record_.TestFieldExists("FixedPercentageDiscountItem")) return kNoFixedDiscountItem;
  return record_.GetInt("FixedPercentageDiscountItem", 0) - 1;
}

void LFKItemCollectionRecord::UpdateItemUnitValueAndTotal(int index, long long unitValue, long long total) {
  if (writable_ == nullptr) return;
  writable_->SetInt64(ItemField(index, "UnitValue"), unitValue);
  writable_->SetInt(ItemField(index, "UnitValueDigits"), -1);
  writable_->SetString(ItemField(index, "Qty"), ftotl(1.0));
  writable_->SetInt64(ItemField(index, "Total"), total);
}

std::string LFKItemCollectionRecord::GetItemAccount(int index) const {
  return record_.GetString(ItemField(index, "Account"));
}

long long LFKItemCollectionRecord::GetItemVATAmount(int index) const {
  LTextBuffer text;
  record_.GetString(ItemField(index, "VATAmount"), "", text);
  std::string digits;
  for (const char* p = text; *p >= '0' && *p <= '9'; ++p) digits.push_back(*p);
  return digits.empty() ? 0 : LTextToInt64(digits);
}

std::string LFKItemCollectionRecord::GetItemVATPercentage(int index) const {
  return record_.GetString(ItemField(index, "VATPercentage"));
}

long long LFKItemCollectionRecord::GetItemTotal(int index) const {
  return record_.GetInt64(ItemField(index, "Total"), 0);
}

void LFKItemCollectionRecord::SetItemCount(int count) {
  if (writable_ != nullptr) writable_->SetInt("ItemCount", count);
}

void LFKItemCollectionRecord::SetItemTaxRate(int index, const LFKTaxRate& rate) {
  if (writable_ != nullptr) writable_->SetString(ItemField(index, "TaxRate"), LFKFormatTaxRateTriple(rate));
}

void LFKItemCollectionRecord::DeleteItem(int index) {
  static constexpr std::string_view kSuffixes[] = {
      "Code",    "Description", "Qty",   "UnitValue",       "UnitValueDigits", "Discount",
      "TaxRate", "TaxName",     "Total", "CombinedTaxName", "Account",         "VATAmount",
      "VATPercentage"};
  if (writable_ == nullptr) return;
  for (std::string_view suffix : kSuffixes) writable_->DeleteField(ItemField(index, suffix));
}

long long LFKGetItemTotal(const LFKItemCollection& items, int index, bool ignoreDiscount, int scaleDigits) {
  bool discounted = !ignoreDiscount && index != items.GetFixedPercentageDiscountItem();
  return LLineAmount(items.GetItemUnitValue(index), items.GetItemQty(index),
                     discounted ? items.GetItemDiscount(index) : 0, scaleDigits);
}
