// Received e-invoices made bills. The supplier is the one of the given key, else the supplier
// whose "VATNumber" is the seller's (spaces and case aside), else the one of the seller's name,
// else a new supplier made from the seller (name, SIREN, VAT number, address, e-mail). Each
// invoice line becomes a bill line on the supplier's "ExpenseAccount" (an account number), or
// the business's default expense account (linked slot 9); document allowances and charges are
// one more line there; each VAT amount goes to the tax of the same rate (else the default tax),
// so to the tax-paid account. The bill keeps the seller's invoice number in
// "SupplierInvoiceNumber", which refuses a second import of the same invoice.
//
// Preparing writes nothing; posting creates the supplier when needed, posts the bill as
// `bill add` does and stores it.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "invoice/shared/einvoiceread.h"

class LProfile;

struct LBillImport {
  std::string supplierKey;                               // empty: a new supplier is made
  LEInvoiceParty seller;                                 // for the new supplier
  std::string date;                                      // "YYYY-MM-DD"
  std::string invoiceNumber;                             // the seller's
  std::string notes;
  std::vector<std::pair<std::string, long long>> lines;  // account number, amount
  std::map<int, long long> taxes;                        // tax number, amount
  long long total = 0;
};

// Prepares the bill of invoice. supplierKey, when not empty, names an existing supplier. false
// with a French message in error (may be null) for a credit note, an unknown supplier key, an
// invoice already imported, or a business without an expense account or taxes; nothing is
// written in any case.
[[nodiscard]] bool LBillImportPrepare(LProfile& profile, const LEInvoice& invoice, std::string_view supplierKey,
                                      LBillImport& plan, std::string* error);

// Writes what plan says; reference receives the bill's reference. false with a French message
// when the supplier or the ledger could not be written.
[[nodiscard]] bool LBillImportPost(LProfile& profile, LBillImport& plan, std::string_view userName,
                                   std::string& reference, std::string* error);
