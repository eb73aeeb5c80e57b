// CSV import and export of customers, suppliers and items (and of sales persons and customer
// groups, which are kept the same way). A file is read whole (llib/gen/csvtable.h finds its
// encoding and separator); its header row is mapped to fields by name, French or English
// ("Nom", "Name", "N° TVA", "VATNumber", ...: partyfields.h), or by a map the user gives:
//
//     "Raison=Name,Numéro=Code,3=Email,Remarque=-"
//
// each pair a header (or a column number from 1) and the field it fills ("Code" is the key, "-"
// leaves the column out). A column the map does not name is still mapped by its header.
//
// Every row is checked before anything is written: a row refused (no key, a value that does not
// read) is reported in the import error list with its line number in the file and the reason,
// the other rows go in; a record whose key exists is updated, never duplicated. What makes the
// whole file unreadable (not a table, no column recognised, no key column) refuses it whole and
// writes nothing. A dry run checks and counts without writing.
//
// The export writes what the import reads: UTF-8, ",", a header "Code" then the field names,
// one row a record in key order, amounts in currency units with ".".
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "invoice/shared/partyfields.h"
#include "llib/gen/csvtable.h"
#include "llib/gen/importerrors.h"

class LProfile;
class LProcessInterface;

inline constexpr std::string_view kKeyColumn = "Code";  // the map's name of the key

struct LCsvImportReport {
  LCsvEncoding encoding = LCsvEncoding::kUtf8;
  char separator = ',';
  std::vector<std::string> mapping;  // one line a column: "Raison sociale -> Name", "Remarque : ignorée"
  int nRows = 0;                     // data rows read
  int nCreated = 0;                  // records created (or that would be, in a dry run)
  int nUpdated = 0;                  // records updated
  LImportErrorList errors;           // the refused rows
};

// Imports path into the records of kind. process (may be null) shows the progress and may stop
// the import between rows (the rows before stay in). false with the reason in *error when the
// file is refused whole or the map does not read; nothing is written then.
bool LCsvImport(LProfile& profile, LPartyKind kind, const std::string& path, std::string_view map, bool dryRun,
                LProcessInterface* process, LCsvImportReport& report, std::string* error);
// The same from bytes already read (the web upload).
bool LCsvImportBytes(LProfile& profile, LPartyKind kind, std::string_view bytes, std::string_view map, bool dryRun,
                     LProcessInterface* process, LCsvImportReport& report, std::string* error);

// The field each column of header fills (kKeyColumn for the key, "" when left out) and one note
// a column for the user ("Raison sociale -> Name", "Remarque : ignorée"). false with the reason
// when map does not read, no column is recognised or none gives the key.
bool LCsvImportMap(LPartyKind kind, const std::vector<std::string>& header, std::string_view map,
                   std::vector<std::string>& columns, std::vector<std::string>& notes, std::string* error);

// The records of kind as CSV text.
std::string LCsvExport(LProfile& profile, LPartyKind kind);
