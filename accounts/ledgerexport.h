// The books written out for other programs:
//   - the journal lines as CSV (`export csv ledger`): a header "Date,Reference,Type,Account,
//     Description,Amount,Document", then one row per line in date order and file order, amounts
//     in currency units with ".", debits positive;
//   - the whole books as a plain-text journal that ledger-cli and hledger read (`export journal`):
//     a first transaction "Soldes d'ouverture" with every account's opening balance, dated on
//     the first day of the ledger, then one transaction per ledger transaction,
//
//         2024-03-01 (SLS10000) Recette, C1
//             1210 Comptes clients    110.00
//             4110 Recettes générales    -100.00
//
//     accounts named "number description", amounts without a currency, debits positive. So the
//     balance those programs compute of each account is the trial balance's, to the cent.
// The ledger is read under its lock, so a posting is either whole in the export or absent.
#pragma once

#include <string>

#include "accounts/journalview.h"

class LProfile;

// filter: the lines of the journal view's filter alone (every line without one).
std::string LLedgerExportCsv(LProfile& profile, const LJournalViewFilter& filter = {});
std::string LLedgerExportJournal(LProfile& profile);
