#include "invoice/shared/company.h"

#include "invoice/shared/options.h"
#include "invoice/shared/profile.h"

void LCompanyOptions::OpenFrom(const LProfile& profile) { profile.List(kMiscList).OpenAlways(*this, kCompanyRecord); }
