// The base of the VAT return pages: a page of the report centre's section for administrators
// only, with the outcome of what it did shown above its content (HMRC's caption and message word
// for word, or a note of ours).
#pragma once

#include <string_view>

#include "accounts/webreports.h"
#include "invoice/shared/mtdvat.h"

class LWebVatPage : public LWebReportSectionPage {
 public:
  LWebVatPage(LWebletForm& form, std::string_view title);
  bool Authenticate() override;

 protected:
  void SetOutcome(FKVatAlert alert, bool success);
  // The outcome, when there is one: "<div id=vatalert role=alert>" with its caption and message.
  void WriteOutcome();

 private:
  FKVatAlert outcome_;
  bool success_ = false;
};
