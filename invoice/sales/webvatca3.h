// The French VAT return's page ("vatreturn" for a business outside the United Kingdom): the CA3
// figures of a month or a quarter chosen in a list (or of two dates), each line with its sources,
// the net VAT due or the credit, and links to the report's CSV and PDF.
#pragma once

#include "invoice/sales/webvatpage.h"

class LWebVatCa3Page : public LWebVatPage {
 public:
  explicit LWebVatCa3Page(LWebletForm& form) : LWebVatPage(form, "Déclaration de TVA (CA3)") {}
  void Generate() override;
};
