#include "accounts/billimport.h"

#include <cctype>
#include <cmath>

#include "accounts/accounts.h"
#include "accounts/bills.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "invoice/shared/taxoptions.h"
#include "llib/gen/filestore.h"
#include "llib/gen/optionalerror.h"

namespace {

constexpr std::string_view kSuppliersList = "Suppliers";

std::string Normalized(std::string_view text) {
  std::string out;
  for (char c : text) {
    if (c != ' ') out += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return out;
}

// The supplier that is the seller: by VAT number, then by name; empty when none.
std::string FindSupplier(LProfile& profile, const LEInvoiceParty& seller) {
  const LFileStoreListBase& list = profile.MainList(kSuppliersList);
  std::string byName;
  std::string vat = Normalized(seller.vatNumber);
  std::string name = Normalized(seller.name);
  LRecord supplier;
  for (LFileStoreIteratorBase it(list, supplier); supplier.IsAttached(); it.Next(supplier)) {
    if (!vat.empty() && Normalized(supplier.GetString("VATNumber")) == vat) return supplier.GetPrimaryKey();
    if (byName.empty() && Normalized(supplier.GetString("Name")) == name) byName = supplier.GetPrimaryKey();
  }
  return byName;
}

// The bill already made of this invoice of this supplier; empty when none.
std::string FindImported(LProfile& profile, const std::string& supplierKey, const std::string& number) {
  LRecord bill;
  for (LFileStoreIteratorBase it(profile.List(kBillsList), bill); bill.IsAttached(); it.Next(bill)) {
    if (bill.GetString("Supplier") == supplierKey && bill.GetString("SupplierInvoiceNumber") == number)
      return bill.GetPrimaryKey();
  }
  return {};
}

// The business's tax of that rate, else its default tax.
int TaxNumberOfRate(const LTaxOptions& taxes, int nTaxes, double rate) {
  for (int k = 1; k <= nTaxes; ++k) {
    LFKTaxRate taxRate = taxes.GetTaxRate(k);
    if (std::fabs(taxRate.rate1 - rate) < 1e-6 && taxRate.rate2 <= 0) return k;
  }
  int fallback = taxes.GetDefaultRate();
  return fallback >= 1 && fallback <= nTaxes ? fallback : 1;
}

}  // namespace

bool LBillImportPrepare(LProfile& profile, const LEInvoice& invoice, std::string_view supplierKey, LBillImport& plan,
                        std::string* error) {
  plan = LBillImport();
  if (invoice.IsCreditNote()) return LFail(error, "Cet avoir reçu ne peut pas devenir une facture fournisseur.");
  LRecord supplier;
  if (!supplierKey.empty()) {
    if (!profile.MainList(kSuppliersList).Open(supplier, supplierKey))
      return LFail(error, "Le fournisseur « " + std::string(supplierKey) + " » n'existe pas.");
    plan.supplierKey = supplierKey;
  } else {
    plan.supplierKey = FindSupplier(profile, invoice.seller);
    if (!plan.supplierKey.empty()) (void)profile.MainList(kSuppliersList).Open(supplier, plan.supplierKey);
  }
  if (!plan.supplierKey.empty()) {
    std::string imported = FindImported(profile, plan.supplierKey, invoice.number);
    if (!imported.empty())
      return LFail(error, "La facture " + invoice.number + " de « " + invoice.seller.name + " » a déjà été importée (" +
                              imported + ").");
  }
  std::string account = supplier.GetString("ExpenseAccount");
  if (account.empty() || !LAccountIsLive(profile, account)) LOptions::GetDefAccountNumber(profile, 9, account);
  if (account.empty() || !LAccountIsLive(profile, account))
    return LFail(error, "Aucun compte de charges : indiquez le compte de charges par défaut (compte associé 9).");
  int nTaxes = LBillTaxCount(profile);
  if (invoice.taxTotal != 0 && nTaxes < 1)
    return LFail(error, "Aucune taxe n'est définie pour y porter la TVA de la facture.");

  plan.seller = invoice.seller;
  plan.date = invoice.issueDate;
  plan.invoiceNumber = invoice.number;
  plan.notes = "Facture " + invoice.number + " de " + invoice.seller.name;
  long long lines = 0;
  for (const LEInvoiceLine& line : invoice.lines) {
    plan.lines.emplace_back(account, line.amount);
    lines += line.amount;
  }
  if (invoice.taxBasisTotal != lines) plan.lines.emplace_back(account, invoice.taxBasisTotal - lines);
  LTaxOptions taxOptions;
  taxOptions.OpenFrom(profile);
  for (const LEInvoiceTax& tax : invoice.taxes) {
    if (tax.amount != 0) plan.taxes[TaxNumberOfRate(taxOptions, nTaxes, tax.rate)] += tax.amount;
  }
  plan.total = invoice.grandTotal;
  return true;
}

bool LBillImportPost(LProfile& profile, LBillImport& plan, std::string_view userName, std::string& reference,
                     std::string* error) {
  reference.clear();
  if (plan.supplierKey.empty()) {
    LRecord supplier;
    profile.MainList(kSuppliersList).CreateNewRecord(supplier);
    supplier.SetString("Name", plan.seller.name);
    if (!plan.seller.siren.empty()) supplier.SetString("SIREN", plan.seller.siren);
    if (!plan.seller.vatNumber.empty()) supplier.SetString("VATNumber", plan.seller.vatNumber);
    if (!plan.seller.address.empty()) supplier.SetString("Address", plan.seller.address);
    if (!plan.seller.email.empty()) supplier.SetString("Email", plan.seller.email);
    if (!supplier.Flush()) return LFail(error, "Impossible d'enregistrer le fournisseur.");
    plan.supplierKey = supplier.GetPrimaryKey();
  }
  LBill bill;  // detached until it has its reference
  bill.SetString("Supplier", plan.supplierKey);
  bill.SetString("Date", plan.date);
  bill.SetString("Notes", plan.notes);
  bill.SetString("SupplierInvoiceNumber", plan.invoiceNumber);
  for (const auto& [account, amount] : plan.lines) bill.AddItemLine(account, amount, "");
  for (const auto& [number, amount] : plan.taxes) bill.SetInt64("TaxAmount" + std::to_string(number), amount);
  if (!LBillSave(profile, bill, userName)) {
    return LFail(error, "Impossible d'écrire la facture fournisseur dans le grand livre.");
  }
  reference = bill.GetPrimaryKey();
  return true;
}
