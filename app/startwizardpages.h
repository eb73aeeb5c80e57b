// The pages of the start wizard (app/startwizard.h). Each page asks its questions on a
// terminal, checks its answers with its own message, and writes them once the whole wizard is
// confirmed.
#pragma once

#include <string>

#include "app/startwizard.h"

// The currency page's answers with the country's currency where none was given.
void LStartWizardCurrencyDefaults(const LStartWizardAnswers& answers, std::string& symbol, std::string& name,
                                  std::string& subunit);
// The end of the fiscal year as "MM-DD": the answer, else the country's.
std::string LStartWizardFiscalYearEndText(const LStartWizardAnswers& answers);

class LStartWizardPage {
 public:
  virtual ~LStartWizardPage() = default;
  // Asks the page's questions, the current answers being the defaults. false: abandoned.
  virtual bool Ask(LStartWizardPrompter& prompter, const LProfile& profile, LStartWizardAnswers& answers) = 0;
  // true when the answers can be written; false with the page's message.
  virtual bool Check(const LProfile& profile, const LStartWizardAnswers& answers, std::string& message) = 0;
  // Writes the checked answers into the business; false when a record could not be written.
  [[nodiscard]] virtual bool Write(LProfile& profile, const LStartWizardAnswers& answers) = 0;
};

class LStartWizardCountryPage : public LStartWizardPage {
 public:
  bool Ask(LStartWizardPrompter& prompter, const LProfile& profile, LStartWizardAnswers& answers) override;
  bool Check(const LProfile& profile, const LStartWizardAnswers& answers, std::string& message) override;
  // "CountryCode" into "Options"; for Canada the province's tax rates.
  [[nodiscard]] bool Write(LProfile& profile, const LStartWizardAnswers& answers) override;
};

class LStartWizardPageCompanyInfo : public LStartWizardPage {
 public:
  bool Ask(LStartWizardPrompter& prompter, const LProfile& profile, LStartWizardAnswers& answers) override;
  // An empty name, a name another business carries, an impossible fiscal-year end, legal
  // mentions the company settings would refuse (LCompanyDetailsCheck).
  bool Check(const LProfile& profile, const LStartWizardAnswers& answers, std::string& message) override;
  [[nodiscard]] bool Write(LProfile& profile, const LStartWizardAnswers& answers) override;
};

class LStartWizardPageCurrencySettings : public LStartWizardPage {
 public:
  bool Ask(LStartWizardPrompter& prompter, const LProfile& profile, LStartWizardAnswers& answers) override;
  bool Check(const LProfile& profile, const LStartWizardAnswers& answers, std::string& message) override;
  [[nodiscard]] bool Write(LProfile& profile, const LStartWizardAnswers& answers) override;
};

class LStartWizardPageAccounting : public LStartWizardPage {
 public:
  bool Ask(LStartWizardPrompter& prompter, const LProfile& profile, LStartWizardAnswers& answers) override;
  // A checking account or credit card whose opening balance is missing (or not an amount).
  bool Check(const LProfile& profile, const LStartWizardAnswers& answers, std::string& message) override;
  // "ManualCreateAccounts", the default chart of accounts, then the opening balances.
  [[nodiscard]] bool Write(LProfile& profile, const LStartWizardAnswers& answers) override;
};

class LStartWizardPageBusinessUsage : public LStartWizardPage {
 public:
  bool Ask(LStartWizardPrompter& prompter, const LProfile& profile, LStartWizardAnswers& answers) override;
  bool Check(const LProfile& profile, const LStartWizardAnswers& answers, std::string& message) override;
  // Services billed by the hour: the invoice's text block goes bottom left
  // ("InvoiceStyle"/"TextBlockBottomRight" = 0) and its columns read "Hres" and "Code taux".
  [[nodiscard]] bool Write(LProfile& profile, const LStartWizardAnswers& answers) override;
};
