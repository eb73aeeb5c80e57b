#include "accounts/closingdate.h"

#include "invoice/shared/company.h"
#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"
#include "llib/gen/date.h"

void LClosingDateLoad(const LProfile& profile, LClosingDate& closing) {
  LRecord company;
  profile.List(kMiscList).Open(company, kCompanyRecord);
  closing.enabled = company.GetBool("CTDEnabled", false);
  closing.date = company.GetString("CTDDate");
}

std::string LClosingDateCheck(const LClosingDate& closing) {
  LDate date;
  if (closing.date.empty() && !closing.enabled) return {};
  if (!LDate::Parse(closing.date, date)) return "Veuillez entrer la date de clôture au format AAAA-MM-JJ.";
  return {};
}

bool LClosingDateStore(LProfile& profile, const LClosingDate& closing) {
  LRecord company;
  if (!profile.List(kMiscList).OpenAlways(company, kCompanyRecord)) return false;
  company.SetBool("CTDEnabled", closing.enabled);
  if (closing.date.empty()) company.DeleteField("CTDDate");
  else company.SetString("CTDDate", closing.date);
  return company.Flush();
}
