// The printed receipt of a customer payment (a refund prints as a refund note): the seller's
// block with "Reçu" and the payment's number and date, the customer, and how the amount received
// was settled: each invoice it was applied to with that invoice's date, total and the part this
// payment settled, and what is left unapplied; then the notes and footer texts of the "Receipt"
// options.
#pragma once

#include <string>
#include <string_view>

class LPayment;
class LProfile;

// "Reçu-KEY.pdf" ("Remboursement-KEY.pdf" for a refund), as LFormPdfName makes it.
std::string LReceiptPdfName(const LPayment& payment);

// Prints payment into pdf. false with a French message in error (may be null) when the PDF could
// not be made; pdf is then empty. A logo that cannot be drawn is left out, the reason in warning
// (may be null).
[[nodiscard]] bool LReceiptPdf(LProfile& profile, LPayment& payment, std::string& pdf, std::string* error,
                               std::string* warning);
