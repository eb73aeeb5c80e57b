#include "invoice/shared/options.h"

void LOptionsSetRegionalDefaults(LProfile&, LOptions&, LRecord&, LRecord&, LRecord&) {}
