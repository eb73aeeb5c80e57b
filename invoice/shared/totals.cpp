#include "invoice/shared/totals.h"

#include <cmath>
#include <cstdlib>
#include <optional>

#include "invoice/shared/customer.h"
#include "invoice/shared/itemcollection.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/salesdocument.h"
#include "invoice/shared/taxcalc.h"
#include "invoice/shared/taxoptions.h"
#include "invoice/shared/vatfigures.h"
#include "llib/gen/money.h"
#include "llib/gen/moneybounds.h"

namespace {

long long Truncate(double x) { return static_cast<long long>(std::trunc(x)); }

// Adds name to the table unless it is there already, empty, "Aucun" or unknown.
void AddTaxName(LFKTaxTable& table, const std::string& name, const std::optional<LFKTaxRate>& documentRate,
                const std::string& documentCombined, const LFKTaxContext& context) {
  if (name.empty() || name == kTaxNameNone || table.count(name) > 0) return;
  const LTaxOptions& taxOptions = *context.taxOptions;
  std::optional<LFKTaxRate> optionsRate;
  std::string optionsCombined;
  if (int number = taxOptions.GetTaxNumberFromName(name); number > 0) {
    optionsRate = taxOptions.GetTaxRate(number);
    optionsCombined = taxOptions.GetTaxCombined(number);
  }
  // A name written as a combination ("*A+B") defines itself.
  std::string ownCombined = !documentCombined.empty() ? documentCombined
                            : LFKIsCombinedName(name) ? name
                                                      : std::string();
  std::optional<LFKTaxRate> rate = context.useOldTaxRates ? (documentRate ? documentRate : optionsRate)
                                                          : (optionsRate ? optionsRate : documentRate);
  std::string combined = context.useOldTaxRates ? (!ownCombined.empty() ? ownCombined : optionsCombined)
                                                : (!optionsCombined.empty() ? optionsCombined : ownCombined);
  if (!rate && combined.empty()) return;
  LFKTaxEntry& entry = table[name];
  entry.rate = rate.value_or(LFKTaxRate{});
  entry.combinedName = combined;
  if (combined.empty()) return;
  for (const auto& part : LFKSplitCombinedName(combined).parts) AddTaxName(table, part, std::nullopt, {}, context);
}

std::optional<LFKTaxRate> StoredRate(std::string_view text) {
  if (!LFKIsTaxRateTriple(text)) return std::nullopt;
  return LFKParseTaxRate(text);
}

// The name that the shipping's tax goes under; empty when shipping is not taxed.
std::string ShippingTaxName(const LSalesDocument& document, const LFKTaxContext& context) {
  std::string name = document.GetString("ShippingTaxName");
  if (name == kTaxNameDefault) return context.defaultTaxName;
  if (name == kTaxNameNone) return {};
  return name;
}

// Writes the amounts sorted by name from 1. Amounts left from an earlier run beyond the new
// count are zeroed rather than deleted: the posting reads "TaxAmount<n>" by tax number whatever
// the count says, and a deleted field would come back on a later save of the same record.
void WriteAmounts(LSalesDocument& document, const LFKTaxAmounts& amounts, const char* countField,
                  const char* amountPrefix, const char* namePrefix) {
  int n = 0;
  for (const auto& [name, amount] : amounts) {
    ++n;
    document.SetInt64(amountPrefix + std::to_string(n), amount);
    document.SetString(namePrefix + std::to_string(n), name);
  }
  document.SetInt(countField, n);
  for (int stale = n + 1; document.TestFieldExists(amountPrefix + std::to_string(stale)); ++stale) {
    document.SetInt64(amountPrefix + std::to_string(stale), 0);
    document.SetString(namePrefix + std::to_string(stale), "");
  }
}

// Steps 1 to 4 on document: the tax table with its bases, the amounts of both passes and the
// total. Only the fixed discount line's own amount is written back to document.
struct DocumentTaxes {
  LFKTaxTable table;
  LFKTaxAmounts separate;
  LFKTaxAmounts combined;
  long long total = 0;
};

DocumentTaxes ComputeTaxes(LProfile& profile, LSalesDocument& document) {
  LOptions options;
  options.OpenFrom(profile);
  bool ignoreDiscount = options.GetBool("DontShowDiscountColumn", true);
  LTaxOptions taxOptions;
  taxOptions.OpenFrom(profile);
  int taxMode = document.GetDocumentTaxMode();
  LFKTaxContext context = LFKMakeTaxContext(taxOptions, document);

  DocumentTaxes taxes;
  taxes.table = LFKExtractTaxNames(document, context);
  LFKItemCollectionRecord items = document.Items();
  LFKItemSums sums = LFKSumItems(items, taxes.table, context, ignoreDiscount, profile.GetCurrencyDigits());

  taxes.total = sums.untaxed;
  for (const auto& entry : taxes.table) taxes.total = LMoneySum(taxes.total, entry.second.base);
  long long shipping = document.GetShippingCosts();
  if (shipping != 0) {
    auto taxed = taxes.table.find(ShippingTaxName(document, context));
    if (taxed != taxes.table.end()) taxed->second.base = LMoneySum(taxed->second.base, shipping);
  }
  taxes.total = LMoneySum(taxes.total, shipping);

  if (taxMode != kDocumentUntaxed) {
    bool inclusive = taxOptions.IsTaxInclusive();
    LApplyTaxes(taxes.table, inclusive, false, taxes.separate);
    taxes.total = LMoneySum(taxes.total, LApplyTaxes(taxes.table, inclusive, true, taxes.combined));
  }
  return taxes;
}

LFKTotalsChange SumTotals(LProfile& profile, LSalesDocument& document, bool isInvoice) {
  LFKTotalsChange change;
  change.oldTotal = document.GetTotal();
  change.oldTaxTotal = document.GetTaxTotal();
  change.oldSubTotal = document.GetSubTotal();

  DocumentTaxes taxes = ComputeTaxes(profile, document);
  const LFKTaxAmounts& separate = taxes.separate;
  const LFKTaxAmounts& combined = taxes.combined;
  long long total = taxes.total;
  WriteAmounts(document, separate, "TaxAmountCount", "TaxAmount", "TaxAmountName");
  WriteAmounts(document, combined, "TaxAmountCountCombined", "TaxAmountCombined", "TaxAmountNameCombined");

  change.newTotal = total;
  if (change.TotalChanged()) {
    document.SetInt64("Total", total);
    change.written = document.Flush();
    const std::string& key = document.GetPrimaryKey();
    if (change.written && isInvoice && !key.empty() && profile.MainList("Invoices").TestRecordExists(key)) {
      change.written = LCustomerChangeBalance(profile, document.GetCustomer(), change.newTotal - change.oldTotal) &&
                       FKAdjustVatRunningFigures(profile, document.GetTaxTotal() - change.oldTaxTotal,
                                                 document.GetSubTotal() - change.oldSubTotal);
    }
  }
  change.newTaxTotal = document.GetTaxTotal();
  change.newSubTotal = document.GetSubTotal();
  return change;
}

}  // namespace

LFKTaxContext LFKMakeTaxContext(const LTaxOptions& taxOptions, const LSalesDocument& document) {
  LFKTaxContext context;
  context.taxOptions = &taxOptions;
  context.defaultTaxNumber =
      document.GetDocumentTaxMode() == kDocumentTaxDefault ? taxOptions.GetDefaultRate() : 0;
  context.defaultTaxName = taxOptions.GetTaxName(context.defaultTaxNumber);
  context.useOldTaxRates = document.GetBool("UseOldTaxRates", true);
  return context;
}

std::string LFKLineTaxName(const LFKItemCollection& items, int index, const LFKTaxContext& context) {
  double rate1 = 0, rate2 = 0;
  bool compound = false;
  int taxIndex = items.GetItemTaxRate(index, rate1, rate2, compound);
  std::string name;
  if (taxIndex < 0) {
    name = items.GetItemTaxName(index);
  } else if (taxIndex == 0) {
    name = context.defaultTaxName;
  } else {
    name = context.taxOptions->GetTaxName(taxIndex - 1);
  }
  if (name == kTaxNameDefault) return context.defaultTaxName;
  return name;
}

LFKTaxTable LFKExtractTaxNames(const LSalesDocument& document, const LFKTaxContext& context) {
  LFKTaxTable table;
  LFKItemCollectionRecord items = document.Items();
  int count = items.GetItemCount();
  int fixed = items.GetFixedPercentageDiscountItem();
  for (int i = 0; i < count; ++i) {
    if (i == fixed) continue;
    AddTaxName(table, LFKLineTaxName(items, i, context), StoredRate(items.GetItemTaxRate(i)),
               items.GetItemCombinedTaxName(i), context);
  }
  if (document.GetShippingCosts() != 0) {
    AddTaxName(table, ShippingTaxName(document, context), StoredRate(document.GetString("ShippingTaxRate")),
               document.GetString("ShippingCombinedTaxName"), context);
  }
  return table;
}

long long LFKDocumentLineTotal(const LFKItemCollection& items, int index, bool ignoreDiscount, int currencyDigits) {
  int digits = items.GetItemUnitValueDigits(index);
  if (digits == -1) digits = currencyDigits;
  return LFKGetItemTotal(items, index, ignoreDiscount, std::abs(digits - currencyDigits));
}

LFKItemSums LFKSumItems(LFKItemCollection& items, LFKTaxTable& table, const LFKTaxContext& context,
                        bool ignoreDiscount, int currencyDigits) {
  LFKItemSums sums;
  int count = items.GetItemCount();
  int fixed = items.GetFixedPercentageDiscountItem();
  bool hasFixed = fixed >= 0 && fixed < count;
  double percent = hasFixed ? items.GetItemDiscount(fixed) : 0;
  for (int i = 0; i < count; ++i) {
    if (i == fixed) continue;
    long long amount = LFKDocumentLineTotal(items, i, ignoreDiscount, currencyDigits);
    sums.subTotal = LMoneySum(sums.subTotal, amount);
    auto entry = table.find(LFKLineTaxName(items, i, context));
    if (entry == table.end()) {
      sums.untaxed = LMoneySum(sums.untaxed, amount);
      continue;
    }
    if (hasFixed) amount -= Truncate(static_cast<double>(amount) * percent / 100);
    entry->second.base = LMoneySum(entry->second.base, amount);
  }
  if (hasFixed) {
    long long discount = -Truncate(static_cast<double>(sums.subTotal) * percent / 100);
    items.UpdateItemUnitValueAndTotal(fixed, discount, discount);
    sums.untaxed -= Truncate(percent * static_cast<double>(sums.untaxed) / 100);
  }
  return sums;
}

long long LApplyTaxes(const LFKTaxTable& table, bool inclusive, bool combinedPass, LFKTaxAmounts& amounts,
                      std::vector<std::string>* missing) {
  long long sum = 0;
  for (const auto& [name, entry] : table) {
    if (entry.base == 0) continue;
    if (!entry.combinedName.empty()) {
      LFKCombinedName combined = LFKSplitCombinedName(entry.combinedName);
      std::vector<double> rates;
      for (const auto& part : combined.parts) {
        auto partEntry = table.find(part);
        if (partEntry == table.end() && combinedPass && missing != nullptr) missing->push_back(part);
        rates.push_back(partEntry == table.end() ? 0 : partEntry->second.rate.rate1);
      }
      std::vector<long long> taxes = LFKCombinedTaxParts(rates, combined.compound, entry.base, inclusive);
      long long tax = 0;
      for (std::size_t i = 0; i < taxes.size(); ++i) {
        tax += taxes[i];
        if (!combinedPass && table.count(combined.parts[i]) > 0) amounts[combined.parts[i]] += taxes[i];
      }
      if (combinedPass) amounts[entry.combinedName] += tax;
      sum = LMoneySum(sum, tax);
      continue;
    }
    long long tax = 0;
    double rate = entry.rate.rate1;
    double base = static_cast<double>(entry.base);
    if (entry.rate.rate2 > 0) {
      tax = LFKTaxOnAmount(rate, entry.rate.rate2, entry.base, inclusive, entry.rate.compound);
    } else if (rate > 0) {
      tax = inclusive ? LRoundHalfUp(base / (100 / rate + 1)) : LRoundHalfUp(rate * base * 0.01);
    }
    amounts[name] += tax;
    sum = LMoneySum(sum, tax);
  }
  return inclusive ? 0 : sum;
}

LFKTotalsChange LInvoiceSumTotals(LProfile& profile, LSalesDocument& invoice) { return SumTotals(profile, invoice, true); }
LFKTotalsChange LOrderSumTotals(LProfile& profile, LSalesDocument& order) { return SumTotals(profile, order, false); }
LFKTotalsChange LQuoteSumTotals(LProfile& profile, LSalesDocument& quote) { return SumTotals(profile, quote, false); }
LFKTotalsChange LCreditNoteSumTotals(LProfile& profile, LSalesDocument& creditNote) {
  return SumTotals(profile, creditNote, false);
}
LFKTotalsChange LPOrderSumTotals(LProfile& profile, LSalesDocument& purchaseOrder) {
  return SumTotals(profile, purchaseOrder, false);
}

bool LFKDocumentWithinCeiling(LProfile& profile, const LSalesDocument& document) {
  LSalesDocument copy;  // detached, as for the breakdown below
  copy.CopyRecord(document);
  // The lines one by one and as running sums (a sum held at 64 bits stays beyond the ceiling).
  LFKItemCollectionRecord items = copy.Items();
  long long sum = 0;
  for (int i = 0; i < items.GetItemCount(); ++i) {
    long long line = LFKDocumentLineTotal(items, i, false, profile.GetCurrencyDigits());
    sum = LMoneySum(sum, line);
    if (!LMoneyIsWithinBounds(line) || !LMoneyIsWithinBounds(sum)) return false;
  }
  // Then what is posted: the total with its taxes (added to the prices, or inside them for a
  // tax-inclusive business), each tax base and each tax amount.
  DocumentTaxes taxes = ComputeTaxes(profile, copy);
  if (!LMoneyIsWithinBounds(taxes.total)) return false;
  for (const auto& [name, entry] : taxes.table)
    if (!LMoneyIsWithinBounds(entry.base)) return false;
  for (const LFKTaxAmounts* amounts : {&taxes.separate, &taxes.combined})
    for (const auto& [name, amount] : *amounts)
      if (!LMoneyIsWithinBounds(amount)) return false;
  return true;
}

std::vector<LFKTaxBreakdownLine> LFKDocumentTaxBreakdown(LProfile& profile, const LSalesDocument& document) {
  LSalesDocument copy;  // detached: the discount line written back by the totaller stays here
  copy.CopyRecord(document);
  DocumentTaxes taxes = ComputeTaxes(profile, copy);
  std::vector<LFKTaxBreakdownLine> lines;
  for (const auto& [name, entry] : taxes.table) {
    auto amount = taxes.separate.find(name);
    if (entry.base == 0 && amount == taxes.separate.end()) continue;
    lines.push_back({name, entry.rate, entry.base, amount == taxes.separate.end() ? 0 : amount->second});
  }
  return lines;
}
