#include "invoice/shared/company.h"

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"

void LCompany::OpenFrom(const LProfile& profile) {
  (void)profile.List(kMiscList).Open(*this, kCompanyRecord);  // absent: stays empty
}

std::string LCompany::GetLogoPath(const LProfile& profile) const {
  std::string logo = GetString("Logo");
  if (logo.empty() || logo.front() == '/') return logo;
  return profile.GetDatabaseName() + "/" + logo;
}
