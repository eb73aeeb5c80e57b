// Who stands behind the customer and supplier lines of the FEC, and which of those lines settle
// one another (lettering).
//
// Each document that the ledger knows by its identifier (the document column of its lines) is
// read once: invoices and credit notes ("Recettes"), customer payments ("Reçus"), bills
// ("Achats") and bill payments ("Paiements"). A document's third-party line is the first line of
// its transaction that carries the document's amount on the third party's side: the debit of an
// invoice's total, the credit of a credit note's, of a payment's amount (a refund: its debit),
// of a bill's total, and the debit of a bill payment (the credit of its reversal, when the cheque
// that made it was voided). That line gets the customer or supplier as auxiliary account
// (CompAuxNum: its key, CompAuxLib: its "Name").
//
// Lettering: invoices, credit notes and payments joined by the payments' and credit notes'
// applications form a group, as do bills and bill payments joined by the bill payments'
// applications, and a voided payment with its reversal; a group whose amounts cancel out is
// settled, and all its lines get one letter, dated (DateLet) with the latest of its documents.
// Only groups settled on or before the last day asked for are lettered. Letters are A, B, ... Z,
// AA, AB, ... in the order of settling.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "llib/gen/date.h"

class LProfile;

// What the FEC shows on a document's third-party line.
struct LFecThirdPartyLine {
  long long amount = 0;     // the line's amount (cents, debit-positive) that marks it
  std::string auxNumber;    // the customer's or supplier's key
  std::string auxName;      // its "Name" (the key when it has none)
  std::string letter;       // empty when not settled
  LDate letterDate;         // valid when letter is set
};

class LFecThirdParties {
 public:
  // Reads the documents and third parties of the business and letters what is settled on or
  // before lastLetteringDay.
  void Load(const LProfile& profile, const LDate& lastLetteringDay);

  // The third-party line of the document that posted a transaction of type with reference, or
  // null when the document is unknown or does not own that reference (then its lines carry no
  // auxiliary account).
  const LFecThirdPartyLine* Find(std::string_view type, std::string_view document, std::string_view reference) const;

 private:
  struct Document {
    std::string reference;  // the document's "JournalTxnRef", upper-cased
    LFecThirdPartyLine line;
  };
  // Keyed by a one-letter family ('I' invoice, 'C' credit note, 'R' payment, 'B' bill,
  // 'P' bill payment, 'V' the reversal of a voided bill payment) and the document's identifier.
  std::unordered_map<std::string, Document> documents_;
};

// The letter of the n-th settled group (0-based): "A" ... "Z", "AA", "AB", ...
std::string LFecLetterCode(std::size_t n);
