// The charts of the main page ("Accueil"): income and expenses per month of the current fiscal
// year as bars, and the cash at each month's end as a line, drawn on the server (llib/web/webchart)
// from LDashboardMonths, each followed by its figures as a table for screen readers.
#pragma once

#include <string>

#include "llib/gen/date.h"

class LProfile;

// The charts' HTML for the fiscal year that holds today.
std::string LWebDashboardCharts(LProfile& profile, const LDate& today);
