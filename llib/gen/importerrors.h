// The error list of a row-wise import (customers, items, suppliers, statements from CSV files).
// Each row is imported as its own small process; the import hands each row's result to the list,
// which keeps one line per failed row, "Ligne #0012 : <error text>", counts the failures, and
// says when the import must end: a row that was cancelled adds "Ligne #0012 : Importation annulée
// par l'utilisateur" and ends it. The lines are shown to the user when the import is over.
//
//     LImportErrorList errors;
//     for (int row = 1; reader.ReadRow(columns); ++row) {
//       LProcessResult result = ImportOneRow(process, columns, errorText);
//       if (!errors.AddRowResult(row, result, errorText)) break;
//     }
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "llib/gen/process.h"

class LImportErrorList {
 public:
  // Records the result of row number row. kProcessFinished adds nothing; kProcessFailed adds
  // "Ligne #%04d : %s" with errorText and counts one error; kProcessCancelled adds
  // "Ligne #%04d : Importation annulée par l'utilisateur" (not counted as an error).
  // Returns false when the import must end (the row was cancelled), true to go on.
  bool AddRowResult(int row, LProcessResult result, std::string_view errorText);

  int GetErrorCount() const { return nErrors_; }
  bool WasCancelled() const { return cancelled_; }
  const std::vector<std::string>& GetLines() const { return lines_; }
  // The lines joined by line ends, each line ended ("" when there is none).
  std::string GetText() const;

 private:
  std::vector<std::string> lines_;  // in row order
  int nErrors_ = 0;                 // failed rows
  bool cancelled_ = false;          // a row was cancelled
};
