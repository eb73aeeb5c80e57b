// The document totaller: turns the item lines, shipping and tax options of a sales-side
// document into its per-tax amounts and its "Total", all in minor currency units.
//
// Steps, each a function below so that tests can pin them one by one:
//   1. LFKExtractTaxNames: the document's tax table, one entry per tax name that a line or the
//      shipping uses, with its rates (or combined definition) and a base starting at 0.
//   2. LFKSumItems: line totals into the sub-total, each taxed line's total (less the
//      fixed-percentage discount, truncating) into its tax's base, the others into the untaxed
//      sum; the discount line's own amount is written back.
//   3. Shipping joins the base of its tax; it is always part of the total.
//   4. LApplyTaxes: a separate pass (amounts per single tax name) and a combined pass (amounts
//      per combined name); exclusive taxes are added to the total, inclusive ones are already
//      inside the prices.
//   5. The amounts are written sorted by name ("TaxAmount<n>", "TaxAmountName<n>", then the
//      "...Combined" fields), and "Total" only when it changed; a recorded invoice whose total
//      changed moves its customer's balance by the difference.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "invoice/shared/taxrate.h"

class LFKItemCollection;
class LProfile;
class LSalesDocument;
class LTaxOptions;

// One tax of a document.
struct LFKTaxEntry {
  std::string combinedName;  // "A+B" or "*A+B" when the tax is made of others; else empty
  LFKTaxRate rate;           // the rate of a single tax (rate2 > 0: a two-rate tax)
  long long base = 0;        // amount the tax is taken on, minor units
};
// Keyed by tax name, sorted by byte order.
using LFKTaxTable = std::map<std::string, LFKTaxEntry>;
using LFKTaxAmounts = std::map<std::string, long long>;

// What the document's lines are taxed with, decided once per document.
struct LFKTaxContext {
  const LTaxOptions* taxOptions = nullptr;
  int defaultTaxNumber = 0;     // "DefaultRate" when the document's "TaxRate" is 0, else 0
  std::string defaultTaxName;   // the name of that tax
  bool useOldTaxRates = true;   // rates stored on the document come before today's options
};

// The context of document under taxOptions (which must outlive it).
LFKTaxContext LFKMakeTaxContext(const LTaxOptions& taxOptions, const LSalesDocument& document);

// The tax name of line index: the name stored on the line when its tax index is negative,
// otherwise the name of tax number index - 1, or of the default tax for index 0; "Valeur/défaut"
// becomes the default tax's name.
std::string LFKLineTaxName(const LFKItemCollection& items, int index, const LFKTaxContext& context);

// Step 1. Names that are empty, "Aucun" or unknown (neither the document nor the tax options
// give a rate or a combination) get no entry. The parts of a combined name get entries of their
// own (rates from the tax options) so that their rates are known; a part that is not a defined
// tax gets none and is reported missing when taxes are applied. When a name is used several
// times the first definition met is kept. Rates stored on the document (a line's rate triple,
// "ShippingTaxRate", the combined names on the lines and on shipping) come first when
// "UseOldTaxRates" is true, today's tax options first otherwise.
LFKTaxTable LFKExtractTaxNames(const LSalesDocument& document, const LFKTaxContext& context);

// The total of line index as the totaller takes it: scaled by |line digits - currency digits|
// (a line stored with fewer digits than the currency is divided too: stored documents were so
// computed), line digits -1 meaning the currency's; line discounts ignored when ignoreDiscount.
long long LFKDocumentLineTotal(const LFKItemCollection& items, int index, bool ignoreDiscount, int currencyDigits);

struct LFKItemSums {
  long long subTotal = 0;  // every line but the discount line, before the fixed discount
  long long untaxed = 0;   // lines whose tax has no entry, after the fixed discount
};
// Step 2. Each line total is LFKDocumentLineTotal.
LFKItemSums LFKSumItems(LFKItemCollection& items, LFKTaxTable& table, const LFKTaxContext& context,
                        bool ignoreDiscount, int currencyDigits);

// Step 4, one pass. Adds each tax to amounts under its name (separate pass: every part under
// its own name; combined pass: under the combined name) and returns the sum of the taxes when
// exclusive, 0 when inclusive. Parts of combined names that have no entry in the table are
// appended to missing (when given) and contribute nothing.
long long LApplyTaxes(const LFKTaxTable& table, bool inclusive, bool combinedPass, LFKTaxAmounts& amounts,
                      std::vector<std::string>* missing = nullptr);

// The totals before and after one run of the totaller, and whether what it stored was written.
struct [[nodiscard]] LFKTotalsChange {
  long long oldTotal = 0;
  long long newTotal = 0;
  long long oldTaxTotal = 0;
  long long newTaxTotal = 0;
  long long oldSubTotal = 0;
  long long newSubTotal = 0;
  bool written = true;  // false: the document, the customer's balance or the VAT figures were not
  bool TotalChanged() const { return oldTotal != newTotal; }
};

// The whole totaller on one document. Missing fields read as 0 or empty; only a write can fail
// ("written" of the result). Writes the tax amount fields; stores "Total" and flushes only when
// the total changed; for LInvoiceSumTotals, a document whose key exists in "Invoices" then moves
// its customer's balance by the change.
LFKTotalsChange LInvoiceSumTotals(LProfile& profile, LSalesDocument& invoice);
LFKTotalsChange LOrderSumTotals(LProfile& profile, LSalesDocument& order);
LFKTotalsChange LQuoteSumTotals(LProfile& profile, LSalesDocument& quote);
LFKTotalsChange LCreditNoteSumTotals(LProfile& profile, LSalesDocument& creditNote);
LFKTotalsChange LPOrderSumTotals(LProfile& profile, LSalesDocument& purchaseOrder);

// Whether every amount the document would post stays within the money ceiling: each line and
// their running sum, each tax base and amount, and the total with its taxes, as the totaller
// computes them now; nothing is written to document.
[[nodiscard]] bool LFKDocumentWithinCeiling(LProfile& profile, const LSalesDocument& document);

// One tax of a document as printed: its name, rates, the base it was taken on and its amount
// (separate pass), all in minor units.
struct LFKTaxBreakdownLine {
  std::string name;
  LFKTaxRate rate;
  long long base = 0;
  long long amount = 0;
};
// The document's taxes in name order, as the totaller computes them now; nothing is written to
// document. A tax with neither base nor amount is left out; an untaxed document gives bases
// without amounts.
std::vector<LFKTaxBreakdownLine> LFKDocumentTaxBreakdown(LProfile& profile, const LSalesDocument& document);
