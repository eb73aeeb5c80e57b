// Applications given on the command line: "INVOICE=AMOUNT" words, the amount in currency units
// ("12.50"), for payments (--apply) and credit notes (creditnote apply).
#pragma once

#include <string>
#include <vector>

#include "invoice/shared/payment.h"

class LProfile;

// Appends one entry per word; false (error names the word) for a word without "=", with an
// empty invoice or an amount that is not one; an amount beyond the ceiling is refused with the
// ceiling named ("Montant trop grand pour l'imputation sur 12 : … (plafond …).").
bool LCliParseApplications(const LProfile& profile, const std::vector<std::string>& words,
                           std::vector<LAppliedAmount>& applications, std::string& error);
