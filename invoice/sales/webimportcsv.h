// Route "importcsv": customers, items or suppliers from a CSV file, as `kontavo import csv`
// imports them (invoice/shared/csvimport.h), in three steps on one page:
//
//   1. the file is chosen and uploaded (with the upload's progress), with the kind of records;
//   2. "importcsv?file=ID&kind=WORD": each column of the header row with the field it fills
//      (as recognised from its header, or chosen in its list), and a dry run of the import:
//      the rows that would be created or updated and each refused row with its line and reason;
//   3. "Importer" imports for real and shows what was done, the refused rows again.
//
// The uploaded file waits in the application folder's "Import" folder under a random id (the
// only name the page accepts back) until it is imported.
#pragma once

#include "invoice/shared/webaccess.h"

class LWebImportCsvDialog : public LWebDialogEx {
 public:
  explicit LWebImportCsvDialog(LWebletForm& form);
  void Generate() override;
  bool CmOk() override;

 private:
  void GenerateUpload();
  void GenerateMapping(const std::string& bytes);
  bool Upload();
  // The map of the column lists ("3=Name,5=-"): the columns whose field was chosen.
  std::string ChosenMap(int nColumns) const;
};
