#include "app/startwizard.h"

#include <istream>
#include <memory>
#include <ostream>

#include "app/startwizardpages.h"
#include "invoice/shared/profile.h"
#include "llib/gen/locale.h"
#include "llib/gen/textcase.h"
#include "llib/gen/trim.h"

namespace {

}  // namespace

// ---- Prompter ------------------------------------------------------------------------------------

bool LStartWizardPrompter::Ask(std::string_view prompt, std::string_view def, std::string& answer) {
  out_ << prompt;
  if (!def.empty()) out_ << " [" << def << "]";
  out_ << " : " << std::flush;
  std::string line;
  if (!std::getline(in_, line)) {
    out_ << "\n";
    return false;
  }
  line = std::string(LTrim(line, kTrimSpaces));
  answer = line.empty() ? std::string(def) : line;
  return true;
}

bool LStartWizardPrompter::AskYesNo(std::string_view prompt, bool def, bool& answer) {
  for (;;) {
    std::string reply;
    if (!Ask(std::string(prompt) + " (o/n)", def ? "o" : "n", reply)) return false;
    reply = LLowerText(reply);
    if (reply == "o" || reply == "oui" || reply == "n" || reply == "non") {
      answer = reply[0] == 'o';
      return true;
    }
  }
}

void LStartWizardPrompter::Show(std::string_view message) { out_ << message << "\n"; }

// ---- Rules of the pages --------------------------------------------------------------------------

void LStartWizardFiscalYearEnd(std::string_view country, int& month, int& day) {
  if (country == "AU") {
    month = 6, day = 30;
  } else if (country == "CA" || country == "NZ" || country == "ZA") {
    month = 3, day = 31;
  } else if (country == "GB") {
    month = 4, day = 5;
  } else {
    month = 12, day = 31;
  }
}

// ---- The wizard ----------------------------------------------------------------------------------

bool LStartWizardRun(LProfile& profile, LStartWizardAnswers& answers, LStartWizardPrompter* prompter,
                     std::string& message) {
  message.clear();
  if (answers.country.empty()) answers.country = LGetSystemLocale().countryCode;
  std::unique_ptr<LStartWizardPage> pages[] = {
      std::make_unique<LStartWizardCountryPage>(),         std::make_unique<LStartWizardPageCompanyInfo>(),
      std::make_unique<LStartWizardPageCurrencySettings>(), std::make_unique<LStartWizardPageAccounting>(),
      std::make_unique<LStartWizardPageBusinessUsage>(),
  };
  for (auto& page : pages) {
    for (;;) {
      if (prompter != nullptr && !page->Ask(*prompter, profile, answers)) {
        message.clear();
        return false;
      }
      if (page->Check(profile, answers, message)) break;
      if (prompter == nullptr) return false;
      prompter->Show(message);  // the page stays open
    }
  }
  message.clear();
  for (auto& page : pages) {
    if (!page->Write(profile, answers)) {
      message = kRecordNotSavedMessage;
      profile.Reload();
      return false;
    }
  }
  profile.Reload();
  return true;
}
