// The statement of a customer's account over a period: the balance brought forward from before
// the period, then every recorded invoice (a charge), credit note, payment and refund of the
// period in date order with the running balance, the balance at the end, and the aging of what
// is still owed at the statement date (current, 1–30, 31–60, 61–90 and over 90 days overdue, as
// the aging report reckons it). Its printed form is a PDF in the family of the other forms, the
// texts of the "Statement" options ("NotesText", "FooterText") at its end.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/date.h"

class LProfile;

struct LCustomerStatementEntry {
  std::string date;       // "YYYY-MM-DD"
  std::string document;   // "Facture 12", "Avoir 3", "Paiement 7", "Remboursement 8"
  long long charge = 0;   // what raised the balance (invoices, refunds), minor units
  long long credit = 0;   // what lowered it (credit notes, payments)
  long long balance = 0;  // the balance after this entry
};

struct LCustomerStatement {
  std::string customer;  // the customer's key
  std::string name;      // its "Name" (the key when it has none)
  std::string address;   // its "Address"
  LDate from;            // first day of the period
  LDate to;              // the statement date, last day of the period
  long long opening = 0; // balance brought forward from before from
  std::vector<LCustomerStatementEntry> entries;
  long long closing = 0; // balance at the end of to
  // Outstanding on invoices at the statement date: total, current, 1–30, 31–60, 61–90, over 90.
  long long aging[6] = {};
};

// The first day of a statement dated date when none is asked: the first day of its month.
LDate LStatementDefaultStart(const LDate& date);

// Builds the statement of customer from from to to. false with "Client introuvable : KEY."
// in error when there is no such customer; statement is then unspecified.
[[nodiscard]] bool LCustomerStatementBuild(LProfile& profile, std::string_view customer, const LDate& from,
                                           const LDate& to, LCustomerStatement& statement, std::string& error);

// "Relevé-KEY.pdf", as LFormPdfName makes it.
std::string LStatementPdfName(std::string_view customer);

// Prints statement into pdf; false with a French message in error (may be null) when the PDF
// could not be made. A logo that cannot be drawn is left out, the reason in warning (may be null).
[[nodiscard]] bool LCustomerStatementPdf(LProfile& profile, const LCustomerStatement& statement, std::string& pdf,
                                         std::string* error, std::string* warning);
