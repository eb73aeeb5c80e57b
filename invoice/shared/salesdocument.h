// Sales-side documents: invoices (LInvoice), sales orders (LOrder), quotes (LQuote), credit
// notes (LCreditNote) and purchase orders (LPOrder). All share one record layout: header fields
// ("Customer", "Date", "PaymentTerms", "ShippingCosts", "TaxRate", "Total", ...), the item lines
// of LFKItemCollectionRecord, and the tax amounts written by the totaller. Each kind lives in a
// recorded list and a drafts list ("Invoices" / "InvoicesDrafts", ...); drafts have keys that
// begin with "DFT".
//
// Money is in minor currency units (cents), signed 64-bit.
#pragma once

#include <ctime>
#include <string>
#include <string_view>

#include "invoice/shared/itemcollection.h"
#include "llib/gen/record.h"

class LProfile;

enum class LSalesDocumentType { kInvoice, kOrder, kQuote, kCreditNote, kPOrder };

// Where a kind of document lives and what it is called.
struct LSalesDocumentKind {
  LSalesDocumentType type;
  std::string_view command;        // "invoice", "order", ... (the command-line word)
  std::string_view recordedList;   // "Invoices"
  std::string_view draftsList;     // "InvoicesDrafts"
  std::string_view optionsRecord;  // "Invoice": the kind's record in "Misc"
  std::string_view title;          // "Facture": the French name shown to users
};
const LSalesDocumentKind& LSalesDocumentKindOf(LSalesDocumentType type);
// The kind whose command word is command; null when none.
const LSalesDocumentKind* LSalesDocumentKindFromCommand(std::string_view command);

// What a lookup of a document of any kind says when no recorded document or draft has that key:
// "Document introuvable : KEY."
std::string LSalesDocumentNotFoundMessage(std::string_view key);

inline constexpr std::string_view kDraftKeyPrefix = "DFT";

// The order of document keys: numbers in number order ("2" before "10"), then other keys in
// byte order.
bool LDocumentKeyLess(std::string_view a, std::string_view b);

// Document tax modes ("TaxRate" of a document).
inline constexpr int kDocumentTaxDefault = 0;  // lines without a tax of their own use "DefaultRate"
inline constexpr int kDocumentUntaxed = 1;     // no tax at all

// Invoice status (LInvoiceGetStatus).
enum LInvoiceStatus : int {
  kInvoiceUnpaid = 0,
  kInvoicePaid = 1,
  kInvoicePartlyPaid = 2,
  kInvoiceNothingDue = 3,  // total 0
};

class LSalesDocument : public LRecord {
 public:
  // The item lines of this record.
  LFKItemCollectionRecord Items() { return LFKItemCollectionRecord(*this); }
  LFKItemCollectionRecord Items() const { return LFKItemCollectionRecord(static_cast<const LRecord&>(*this)); }

  std::string GetCustomer() const { return GetString("Customer"); }
  std::string GetDate() const { return GetString("Date"); }
  long long GetTotal() const { return GetInt64("Total", 0); }
  long long GetShippingCosts() const { return GetInt64("ShippingCosts", 0); }
  // "TaxRate": the document tax mode, 0 when absent.
  int GetDocumentTaxMode() const { return GetInt("TaxRate", 0); }

  // Sum of "TaxAmount1" .. "TaxAmount<N>", N = "TaxAmountCount" (3 when absent); 0 when N < 1.
  long long GetTaxTotal() const;
  // "Total" - "ShippingCosts" - the tax total.
  long long GetSubTotal() const;
  // "IsDraft", defaulting to whether the key begins with "DFT".
  bool IsDraft() const;

  // ---- Amounts paid and refunded (invoices; payment.h applies payments to them) -----------
  // The cached amounts are read deliberately differently, as stored invoices expect:
  // 0 for a record without a key or a draft; otherwise "AmountPaid", recomputed by
  // UpdateAmountPaid only when the field does not exist (a stored -1 is returned as -1).
  long long GetAmountPaid(LProfile& profile);
  // 0 for a record without a key or a draft; otherwise "AmountRefunded", recomputed by
  // UpdateAmountRefunded when it reads -1, which is also what an absent field reads.
  long long GetAmountRefunded(LProfile& profile);
  // Sum of what the payments (not refunds) of the invoice's "Customer" hold for this key,
  // stored as "AmountPaid" and flushed; then RemoveExcessPayments. Returns "Total" when that
  // removed anything, else the sum.
  long long UpdateAmountPaid(LProfile& profile);
  // The same over the refunds and the credit notes of the customer, stored as "AmountRefunded";
  // then RemoveExcessCreditNotes.
  long long UpdateAmountRefunded(LProfile& profile);
  // When "AmountPaid" exceeds "Total", takes the excess off the payments applied to this
  // invoice, the latest payment first (earlier payments keep what they settled): a payment
  // holding more than the excess is re-applied with its amount less the excess, a smaller one
  // is unapplied and the walk goes on while an excess of 1 or more is left. true when a payment
  // was changed.
  bool RemoveExcessPayments(LProfile& profile);
  // The same for "AmountRefunded", over the refunds (latest first) and then the credit notes
  // (latest first).
  bool RemoveExcessCreditNotes(LProfile& profile);

  // The tax of one line (0-based) as the per-line calculator gives it: 0 when the document's
  // "TaxRate" is not 0; otherwise the line total (discounts per "DontShowDiscountColumn") taxed
  // at the line's rates: a tax number from "Item<n>TaxRate", an explicit triple, or, when
  // neither gives a rate, the tax named on the line (the default tax for an unknown name).
  long long CalculateTaxAmount(LProfile& profile, int index) const;
};

class LInvoice : public LSalesDocument {
 public:
  // Fill this new invoice from a quote or a sales order (documentconversion.h says what is
  // carried). false, with this record untouched, when the source does not exist.
  bool LoadFromQuote(LProfile& profile, std::string_view quoteKey);
  bool LoadFromOrder(LProfile& profile, std::string_view orderKey);
};
class LOrder : public LSalesDocument {};
class LQuote : public LSalesDocument {};
class LCreditNote : public LSalesDocument {};
class LPOrder : public LSalesDocument {};

// 3 when "Total" is 0; else 0 when nothing is paid, 1 when paid >= total, 2 otherwise (the
// amount paid as GetAmountPaid reads it).
int LInvoiceGetStatus(LProfile& profile, LSalesDocument& invoice);
// The French word of a status: "Non payée", "Payée", "Partiellement payée", "Aucun montant dû".
std::string_view LInvoiceStatusText(int status);

// The due moment: "Date" at 01:00:00 local time plus "PaymentTermsDays" (default 30) days, or
// no days when "PaymentTerms" (default 2) is 1 (due at once). An empty or unreadable "Date"
// gives the current time without adding days.
time_t LInvoiceCalculateDueDate(const LSalesDocument& invoice);
