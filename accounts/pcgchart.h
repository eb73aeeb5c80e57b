// The French "Plan comptable général" (PCG) as a business's chart of accounts: six-digit
// numbers, a heading for each class (1 capitaux, 2 immobilisations, 3 stocks, 4 tiers,
// 5 financiers, 6 charges, 7 produits) and for its sub-classes, the usual accounts of a small
// business, the nine linked accounts (512000 Banque, 411000 Clients, 706000 Prestations de
// services, 708500 Ports et frais facturés, 445710 TVA collectée, 445660 TVA déductible,
// 401000 Fournisseurs, 624100 Transports sur achats, 607000 Achats de marchandises) and
// 890000 "Bilan d'ouverture", which balances opening balances.
//
// The generic chart (LAccountListCreateDefault) stays the default of businesses outside France
// and of existing books; the start wizard offers this one to a French business.
#pragma once

#include <string_view>

class LProfile;

inline constexpr int kPcgAccountDigits = 6;
inline constexpr std::string_view kPcgCheckingAccount = "512000";    // the bank account
inline constexpr std::string_view kPcgCreditCardAccount = "519000";  // bank overdraft and card debts
inline constexpr std::string_view kPcgVatCollected = "TVA collectée";
inline constexpr std::string_view kPcgVatDeductible = "TVA déductible";

// Sets "NumberOfDigits" to 6, creates the chart (live accounts of the same number left alone,
// the linked-account slots set), and points every tax's collected account ("TaxAccountPayable")
// at "TVA collectée" and its deductible account ("TaxAccountPaid") at "TVA déductible".
// false when a record could not be written.
[[nodiscard]] bool LAccountListCreatePCG(LProfile& profile);
