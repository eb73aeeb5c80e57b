// Factur-X e-invoices in: a received invoice read from its Cross Industry Invoice XML, bare or
// attached as "factur-x.xml" to a PDF/A-3. The reader keeps what the books need (seller and
// buyer, number, dates, lines, VAT per category and rate, totals) and checks the sums a sender
// must get right, so that a bill is only ever made of a coherent invoice.
//
// The XML comes from outside: it is parsed without the network, and a document that declares a
// DTD (the road of entity expansion attacks) is refused before parsing. Amounts are minor units
// of the invoice's currency (two decimals).
#pragma once

#include <string>
#include <string_view>
#include <vector>

struct LEInvoiceParty {
  std::string name;
  std::string siren;      // legal registration (SpecifiedLegalOrganization)
  std::string vatNumber;  // tax registration of scheme "VA"
  std::string address;    // street lines, then postcode and city, one a line
  std::string country;    // ISO 3166 code
  std::string email;
};

struct LEInvoiceLine {
  std::string id;
  std::string code;       // the seller's item code
  std::string name;
  double quantity = 0;
  std::string netPrice;   // as written ("3.5000")
  std::string category;   // VAT category code ("S", "Z", "E", ...)
  double rate = 0;        // percent
  long long amount = 0;   // line net amount
};

struct LEInvoiceTax {
  std::string category;
  double rate = 0;
  long long basis = 0;
  long long amount = 0;
};

struct LEInvoice {
  std::string profile;       // the guideline identifier ("urn:cen.eu:en16931:2017", ...)
  std::string number;
  std::string typeCode;      // "380" invoice, "381" credit note, ...
  std::string issueDate;     // "YYYY-MM-DD"
  std::string dueDate;       // "YYYY-MM-DD" or empty
  std::string deliveryDate;  // "YYYY-MM-DD" or empty
  std::string currency;
  LEInvoiceParty seller;
  LEInvoiceParty buyer;
  std::vector<LEInvoiceLine> lines;
  std::vector<LEInvoiceTax> taxes;
  long long lineTotal = 0;
  long long chargeTotal = 0;
  long long allowanceTotal = 0;
  long long taxBasisTotal = 0;
  long long taxTotal = 0;
  long long grandTotal = 0;
  long long prepaid = 0;
  long long duePayable = 0;
  bool IsCreditNote() const { return typeCode == "381"; }
};

// Reads a CII invoice from xml. false with a French message in error (may be null) when it is not
// well-formed XML, declares a DTD, is not a Cross Industry Invoice, lacks its number, date,
// seller or totals, or its totals do not add up; invoice is then left empty.
[[nodiscard]] bool LEInvoiceParseXml(std::string_view xml, LEInvoice& invoice, std::string* error);

// Reads a received file: a PDF (its attached "factur-x.xml") or a bare XML. false with a French
// message in error (may be null) as above, or when the file cannot be read or the PDF carries
// no e-invoice.
[[nodiscard]] bool LEInvoiceReadFile(const std::string& path, LEInvoice& invoice, std::string* error);
