// The FEC on the web, for administrators: the page "fecexport" chooses the fiscal year and the
// encoding, "fecdownload" (parameters "year", and "utf8" = "1" for UTF-8) answers with the file
// as an attachment named SIRENFECAAAAMMJJ.txt, written by the same routine as `kontavo export
// fec` (fecexport.h). Other users are shown that the export is for administrators only.
#pragma once

#include "accounts/webpagemainex.h"

class LWebFecPage : public LWebPageMainEx {
 public:
  explicit LWebFecPage(LWebletForm& form);
  void Generate() override;
};

// Route "fecdownload": the file, or the page with the export's refusal.
void WLFecDownload(LWebletForm& form);
