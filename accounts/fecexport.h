// Writing the FEC (accounts/fec.h) of one fiscal year from the books.
//
// The file opens with the à-nouveaux entry: on the first day of the year, every balance-sheet
// account (asset, liability, equity) with its balance carried from before, and the result of
// the earlier years (what income and expense accounts held before the year) on the account that
// balances opening balances ("Comptabilité historique"). Then every transaction of the year's
// day files in date order (within a day, in the order they were posted), each an entry of the
// journal its type belongs to:
//
//     "Recettes" VE Ventes   "Achats" AC Achats   "Reçus", "Paiements" BQ Banque
//     "General" OD Opérations diverses            à-nouveaux AN À-nouveaux
//
// any other type goes to BQ when one of its lines is on a bank or cash account, else to OD.
// Customer and supplier lines carry their auxiliary account and lettering (fecthirdparty.h).
// ValidDate is the day the entry was posted when the audit trail holds it (audittrail.h), else
// the closing date of the books when the entry lies in the closed period, else the entry's date.
//
// The file is ISO-8859-15 unless UTF-8 is asked for; characters that ISO-8859-15 lacks are
// written as "?" and counted. A "|" or a line break inside a text would break the line apart,
// so they are written as "/" and a blank.
#pragma once

#include <string>

class LProfile;

struct LFecExportOptions {
  int year = 0;            // the fiscal year that ends in this calendar year
  std::string folder;      // where the file goes; the current folder when empty
  bool utf8 = false;       // UTF-8 instead of ISO-8859-15
};

struct LFecExportResult {
  std::string path;               // the file written
  long long lineCount = 0;        // lines after the header
  long long entryCount = 0;       // entries (écritures), à-nouveaux included
  std::size_t replacedCount = 0;  // characters written as "?"
  long long debitTotal = 0;       // cents
  long long creditTotal = 0;      // cents
};

// Writes the file (through a temporary file, renamed when complete). false with *error set (in
// French) when the company has no nine-digit SIREN, the year is out of range, or the file cannot
// be written; no file is left then.
[[nodiscard]] bool LFecExport(LProfile& profile, const LFecExportOptions& options, LFecExportResult& result,
                              std::string* error);
