// The printed cheque: on top the stub the business keeps (number, date, payee, amount, the
// accounts the amount went to and the memo), then, below a cut line, the cheque itself in the
// size of a French bank cheque: "Payez contre ce chèque" and the amount in words, the payee,
// the amount in figures in its box, the place and the date, the account it is drawn on. A void
// cheque is printed crossed with "ANNULÉ".
#pragma once

#include <string>
#include <string_view>

class LCheque;
class LProfile;

// "Chèque-NUMBER.pdf", as LFormPdfName makes it.
std::string LChequePdfName(const LCheque& cheque);

// The place a cheque is written at: the town of the business's address (its last line, without
// the postal code before it); empty when the business has no address.
std::string LChequePlace(std::string_view address);

// Prints cheque into pdf. false with a French message in error (may be null) when the PDF could
// not be made; pdf is then empty.
[[nodiscard]] bool LChequePdf(LProfile& profile, const LCheque& cheque, std::string& pdf, std::string* error);

// The cheque key (a reference, or a number of account when account is not empty and several
// accounts have that number) printed: false with "Le chèque n° N n'existe pas." (or why the PDF
// could not be made) in error. fileName gets the name the PDF is offered under.
[[nodiscard]] bool LPrintCheque(LProfile& profile, std::string_view key, std::string_view account, std::string& pdf,
                                std::string& fileName, std::string* error);
