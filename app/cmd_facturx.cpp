// kontavo facturx read FILE [--json]: what a received e-invoice says, before it becomes a bill.
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/cli.h"
#include "app/commands.h"
#include "invoice/shared/einvoiceread.h"
#include "llib/gen/jsontext.h"
#include "llib/gen/money.h"

namespace {

std::string Plain(long long cents) { return LFormatAmountPlain(cents, 2); }

nlohmann::ordered_json PartyJson(const LEInvoiceParty& party) {
  return {{"name", party.name},       {"siren", party.siren},     {"vatNumber", party.vatNumber},
          {"address", party.address}, {"country", party.country}, {"email", party.email}};
}

nlohmann::ordered_json InvoiceJson(const LEInvoice& invoice) {
  nlohmann::ordered_json lines = nlohmann::ordered_json::array();
  for (const LEInvoiceLine& line : invoice.lines) {
    lines.push_back({{"id", line.id}, {"code", line.code}, {"name", line.name}, {"quantity", line.quantity},
                     {"netPrice", line.netPrice}, {"category", line.category}, {"rate", line.rate},
                     {"amount", line.amount}});
  }
  nlohmann::ordered_json taxes = nlohmann::ordered_json::array();
  for (const LEInvoiceTax& tax : invoice.taxes) {
    taxes.push_back({{"category", tax.category}, {"rate", tax.rate}, {"basis", tax.basis}, {"amount", tax.amount}});
  }
  return {{"profile", invoice.profile},   {"number", invoice.number},
          {"typeCode", invoice.typeCode}, {"issueDate", invoice.issueDate},
          {"dueDate", invoice.dueDate},   {"deliveryDate", invoice.deliveryDate},
          {"currency", invoice.currency}, {"seller", PartyJson(invoice.seller)},
          {"buyer", PartyJson(invoice.buyer)}, {"lines", lines},
          {"taxes", taxes},               {"lineTotal", invoice.lineTotal},
          {"chargeTotal", invoice.chargeTotal}, {"allowanceTotal", invoice.allowanceTotal},
          {"taxBasisTotal", invoice.taxBasisTotal}, {"taxTotal", invoice.taxTotal},
          {"grandTotal", invoice.grandTotal}, {"prepaid", invoice.prepaid},
          {"duePayable", invoice.duePayable}};
}

void PrintParty(std::ostream& out, const char* label, const LEInvoiceParty& party) {
  out << label << " : " << party.name;
  if (!party.siren.empty()) out << ", SIREN " << party.siren;
  if (!party.vatNumber.empty()) out << ", TVA " << party.vatNumber;
  out << "\n";
}

void PrintInvoice(std::ostream& out, const LEInvoice& invoice) {
  out << (invoice.IsCreditNote() ? "Avoir " : "Facture ") << invoice.number << " (" << invoice.profile << ")\n";
  out << "Date : " << invoice.issueDate << "\n";
  if (!invoice.deliveryDate.empty()) out << "Livraison : " << invoice.deliveryDate << "\n";
  if (!invoice.dueDate.empty()) out << "Échéance : " << invoice.dueDate << "\n";
  PrintParty(out, "Vendeur", invoice.seller);
  PrintParty(out, "Acheteur", invoice.buyer);
  for (const LEInvoiceLine& line : invoice.lines) {
    out << "Ligne " << line.id << " : " << line.code << " | " << line.name << " | " << line.quantity << " | "
        << line.netPrice << " | " << line.category << " " << line.rate << " % | " << Plain(line.amount) << "\n";
  }
  for (const LEInvoiceTax& tax : invoice.taxes) {
    out << "TVA " << tax.category << " " << tax.rate << " % : base " << Plain(tax.basis) << ", montant "
        << Plain(tax.amount) << "\n";
  }
  out << "Total HT : " << Plain(invoice.taxBasisTotal) << " " << invoice.currency << "\n";
  out << "TVA : " << Plain(invoice.taxTotal) << " " << invoice.currency << "\n";
  out << "Total TTC : " << Plain(invoice.grandTotal) << " " << invoice.currency << "\n";
  out << "Net à payer : " << Plain(invoice.duePayable) << " " << invoice.currency << "\n";
}

}  // namespace

int LCmdFacturX(LCliContext& context, LCliArgs& args) {
  if (args.TakeVerb() != "read") return context.Usage();
  std::vector<std::string> words;
  std::string error;
  if (!context.FinishArgs(args, words, 1, 1)) return kExitUsage;
  LEInvoice invoice;
  if (!LEInvoiceReadFile(words[0], invoice, &error)) return context.Fail(error);
  if (context.json) context.out << LJsonDump(InvoiceJson(invoice)) << "\n";
  else PrintInvoice(context.out, invoice);
  return kExitOk;
}
